"""Pictures as arrays, as files and in notebooks."""

import io
import pickle
import struct
import zlib

import numpy as np
import pytest

from zox_volume import Picture, Volume

VOLUME = Volume(np.random.default_rng(3).integers(0, 255, (12, 13, 14), np.uint8))
PICTURE = VOLUME.render(size=(50, 40), depth=True)


def chunks(content):
    assert content[:8] == b"\x89PNG\r\n\x1a\n"
    found, at = [], 8
    while at < len(content):
        length, kind = struct.unpack_from(">I4s", content, at)
        body = content[at + 8 : at + 8 + length]
        assert struct.unpack_from(">I", content, at + 8 + length)[0] == zlib.crc32(kind + body)
        found.append((kind.decode(), body))
        at += 12 + length
    return found


def unfiltered(data, width):
    rows = np.frombuffer(zlib.decompress(data), np.uint8).reshape(-1, width + 1)
    assert (rows[:, 0] == 2).all()
    return np.cumsum(rows[:, 1:], axis=0, dtype=np.uint8)


def test_png():
    found = chunks(PICTURE._repr_png_())
    assert [kind for kind, _ in found] == ["IHDR", "IDAT", "IEND"]
    assert struct.unpack(">IIBBBBB", found[0][1]) == (50, 40, 8, 0, 0, 0, 0)
    assert np.array_equal(unfiltered(found[1][1], 50), PICTURE)


def test_png_as_another_program_reads_it():
    image = pytest.importorskip("PIL.Image")
    assert np.array_equal(np.asarray(image.open(io.BytesIO(PICTURE._repr_png_()))), PICTURE)
    spin = VOLUME.spin(5, size=(30, 20))
    with image.open(io.BytesIO(spin._repr_png_())) as animation:
        assert (animation.n_frames, animation.size) == (5, (30, 20))
        for index in range(5):
            animation.seek(index)
            assert np.array_equal(np.asarray(animation.convert("L")), spin[index])


def test_animation():
    spin = VOLUME.spin(3, size=(30, 20))
    found = chunks(spin._repr_png_())
    kinds = ["IHDR", "acTL", "fcTL", "IDAT", "fcTL", "fdAT", "fcTL", "fdAT", "IEND"]
    assert [kind for kind, _ in found] == kinds
    assert struct.unpack(">II", found[1][1]) == (3, 0)
    numbers = [struct.unpack(">I", body[:4])[0] for kind, body in found if kind in ("fcTL", "fdAT")]
    assert numbers == [0, 1, 2, 3, 4]
    assert np.array_equal(unfiltered(found[5][1][4:], 30), spin[1])


def test_parts_are_pictures_but_not_renderings():
    part = PICTURE[10:20, 5:]
    assert isinstance(part, Picture) and part.geometry is None and part.depth is None
    assert struct.unpack(">II", chunks(part._repr_png_())[0][1][:8]) == (45, 10)
    with pytest.raises(ValueError, match="only whole renderings"):
        part.locate(1, 1)
    assert (PICTURE / 2)._repr_png_() is None and PICTURE[0]._repr_png_() is None
    assert np.array_equal(pickle.loads(pickle.dumps(PICTURE)), PICTURE)


def test_locate_says_what_it_needs():
    with pytest.raises(ValueError, match="depth=True"):
        VOLUME.render(size=8).locate(1, 1)
    with pytest.raises(ValueError, match="has no sample"):
        PICTURE.locate(0, 0)
    with pytest.raises(ValueError, match="column must be 0 to 49, not 50"):
        PICTURE.locate(50, 0)


def test_save(tmp_path):
    path = tmp_path / "picture.png"
    path.write_bytes(b"before")
    PICTURE.save(path)
    assert path.read_bytes() == PICTURE._repr_png_()
    assert [file.name for file in tmp_path.iterdir()] == ["picture.png"]
    with pytest.raises(ValueError, match="no picture"):
        (PICTURE * 1.5).save(tmp_path / "other.png")
    with pytest.raises(FileNotFoundError):
        PICTURE.save(tmp_path / "nowhere" / "picture.png")
