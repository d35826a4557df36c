"""Pictures as PNG, and as animated PNG where there are several."""

from __future__ import annotations

import struct
import zlib

import numpy as np
from numpy.typing import NDArray

_SIGNATURE = b"\x89PNG\r\n\x1a\n"
_FRAME_MILLISECONDS = 80


def _chunk(kind: bytes, content: bytes) -> bytes:
    checksum = zlib.crc32(kind + content)
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", checksum)


def _compressed(pixels: NDArray[np.uint8]) -> bytes:
    """Rows as differences from the row above (filter 2), deflated."""
    height, width = pixels.shape
    rows = np.empty((height, width + 1), np.uint8)
    rows[:, 0] = 2
    rows[0, 1:] = pixels[0]
    np.subtract(pixels[1:], pixels[:-1], out=rows[1:, 1:])
    return zlib.compress(rows.tobytes(), 6)


def encode(pixels: NDArray[np.uint8]) -> bytes:
    """The file of a picture [row, column], or of an endless animation [frame, row, column]."""
    frames = pixels if pixels.ndim == 3 else pixels[None]
    count, height, width = frames.shape
    chunks = [_chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))]
    if count == 1:
        chunks.append(_chunk(b"IDAT", _compressed(frames[0])))
    else:
        chunks.append(_chunk(b"acTL", struct.pack(">II", count, 0)))
        number = 0
        for index, frame in enumerate(frames):
            control = (number, width, height, 0, 0, _FRAME_MILLISECONDS, 1000, 0, 0)
            chunks.append(_chunk(b"fcTL", struct.pack(">IIIIIHHBB", *control)))
            number += 1
            if index == 0:
                chunks.append(_chunk(b"IDAT", _compressed(frame)))
            else:
                chunks.append(_chunk(b"fdAT", struct.pack(">I", number) + _compressed(frame)))
                number += 1
    return _SIGNATURE + b"".join(chunks) + _chunk(b"IEND", b"")
