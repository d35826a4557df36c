"""Window and level."""

from __future__ import annotations

import numpy as np
from numpy.typing import NDArray

from ._records import NO_ERROR, library
from .frame import c_integer


def window_level_16s_8u(
    src: NDArray[np.int16],
    center: int,
    width: int,
    outmin: int = 0,
    outmax: int = 255,
    out: NDArray[np.uint8] | None = None,
) -> NDArray[np.uint8]:
    """Maps signed 16-bit values to display bytes: outmin below the window, outmax above it, linear inside and
    truncated.

    src: contiguous int16 of any shape, up to 2147483647 values. center and width: the window, width at least
    2; its first and last value must fit int16. outmin <= outmax: 0 to 255. out: contiguous uint8 of as many
    values; it may share memory with src, values are converted one after the other.

    >>> window_level_16s_8u(np.array([-10, 0, 50, 100, 110], np.int16), center=50, width=100)
    array([  0,   0, 127, 255, 255], dtype=uint8)
    """
    if not isinstance(src, np.ndarray) or src.dtype != np.int16:
        raise TypeError("src must be an array of int16")
    values = np.asarray(src)
    if not values.flags.c_contiguous or not values.flags.aligned:
        raise ValueError("src must be contiguous")
    if values.size > 2**31 - 1:
        raise ValueError(f"src must hold at most 2147483647 values, not {values.size}")
    if out is None:
        out = np.empty(values.shape, np.uint8)
    elif not isinstance(out, np.ndarray) or out.dtype != np.uint8:
        raise TypeError("out must be an array of uint8")
    target = np.asarray(out)
    if target.size != values.size or not target.flags.c_contiguous or not target.flags.writeable:
        raise ValueError(f"out must be contiguous and writeable and hold {values.size} values")
    numbers = [
        c_integer(center, "center", -(2**15), 2**15 - 1),
        c_integer(width, "width", -(2**15), 2**15 - 1),
        c_integer(outmin, "outmin", 0, 255),
        c_integer(outmax, "outmax", 0, 255),
    ]
    status = library.zox_Volume_WindowLevel_16S_8U(
        values.ctypes.data, target.ctypes.data, values.size, *numbers
    )
    if status != NO_ERROR:
        raise ValueError(
            f"a window of center {center} and width {width} to {outmin}..{outmax} is not valid: "
            "the width must be 2 or more, the window within -32768 to 32767, outmin <= outmax"
        )
    return target
