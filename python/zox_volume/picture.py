"""Rendered pictures."""

from __future__ import annotations

import ctypes
import os
import tempfile
from dataclasses import dataclass
from typing import Any

import numpy as np
from numpy.typing import NDArray

from . import _png
from ._render import Geometry as _GeometryRecord
from ._render import View as _ViewRecord
from ._render import check, library
from .kernels.frame import c_integer

Points = NDArray[np.float64]


@dataclass(frozen=True)
class Geometry:
    """Where a view looks, in millimetres of the patient's frame (x to the left, y to the back, z to the
    head)."""

    right: tuple[float, float, float]
    """Unit vector to the right of the picture."""
    up: tuple[float, float, float]
    """Unit vector up in the picture."""
    forward: tuple[float, float, float]
    """Unit vector from the viewer into the picture."""
    center: tuple[float, float, float]
    """What stands in the middle of the picture."""
    pixel_size: float
    """Of a pixel; in perspective at the distance of the centre."""
    eye_distance: float
    """From the eye to the centre; 0 in orthographic views."""
    step: float
    """From sample to sample."""


@dataclass(frozen=True)
class Stats:
    """What a rendering took."""

    samples: int
    """Of all rays, as without skipping."""
    samples_cast: int
    """That were taken; the rest could not change the picture."""
    rays: int
    """That have samples."""
    seconds: float
    """Wall time of the call."""
    threads: int
    """That took part."""


def _vector(numbers: Any) -> tuple[float, float, float]:
    x, y, z = numbers
    return x, y, z


class Scene:
    """The volume and the view of a picture, by which its pixels are located."""

    def __init__(self, volume: Any, view: _ViewRecord) -> None:
        self.volume = volume
        self.view = view
        record = _GeometryRecord()
        library.zox_render_geometry_init(ctypes.byref(record))
        check(library.zox_render_view_geometry(volume._handle, ctypes.byref(view), ctypes.byref(record)))
        self.geometry = Geometry(
            _vector(record.right),
            _vector(record.up),
            _vector(record.forward),
            _vector(record.center),
            record.pixel_size,
            record.eye_distance,
            record.step,
        )

    def locate(self, column: float, row: float, sample: int) -> tuple[Points, Points]:
        """Of a sample: millimetres and voxels."""
        position, voxel = (ctypes.c_double * 3)(), (ctypes.c_double * 3)()
        view = ctypes.byref(self.view)
        check(library.zox_render_locate(self.volume._handle, view, column, row, sample, position, voxel))
        return np.array(position), np.array(voxel)


class Picture(np.ndarray[Any, np.dtype[np.uint8]]):
    """Display bytes [row, column], or [frame, row, column] of a spin: a NumPy array that a notebook shows
    as a picture (a spin as an animation). Parts and results of arithmetic are arrays like any other; what
    follows is known of whole renderings only, and None elsewhere.
    """

    scene: Scene | None = None
    """The volume and the view."""
    geometry: Geometry | None = None
    """Where the view looks."""
    window: tuple[float, float] | None = None
    """Centre and width of the window that was applied, in values."""
    stats: Stats | None = None
    """What the rendering took."""
    depth: Points | None = None
    """[row, column], if asked for: how far behind the centre the sample lies that won, in millimetres, the
    nearest to the viewer of equals. NaN where the ray has no sample."""
    values: Points | None = None
    """[row, column], if asked for: the reduced value of each ray. NaN where the ray has no sample."""

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes a PNG file, animated for a spin. A file of that name is replaced once the new one is
        whole."""
        content = self._content()
        if content is None:
            raise ValueError(f"no picture: an array of shape {self.shape} and type {self.dtype}")
        folder = os.path.dirname(os.path.abspath(path))
        with tempfile.NamedTemporaryFile(dir=folder, suffix=".png", delete=False) as file:
            try:
                file.write(content)
                file.flush()
                os.chmod(file.name, 0o666 & ~_umask())
                os.replace(file.name, path)
            except BaseException:
                os.unlink(file.name)
                raise

    def locate(self, column: float, row: float, sample: int | None = None) -> tuple[Points, Points]:
        """Where a sample of the pixel's ray lies: in millimetres, and in voxels (column, row, slice).
        sample: its number, 0 being at the depth of the centre; left out, the one that won, for which the
        picture must have been rendered with depth=True."""
        if self.scene is None or self.geometry is None or self.ndim != 2:
            raise ValueError("only whole renderings can be located, not parts or results of arithmetic")
        if sample is None:
            if self.depth is None:
                raise ValueError("render with depth=True to locate the sample that won, or say which sample")
            height, width = self.shape
            x, y = c_integer(int(column), "column", 0, width - 1), c_integer(int(row), "row", 0, height - 1)
            if np.isnan(self.depth[y, x]):
                raise ValueError(f"the ray of pixel ({x}, {y}) has no sample")
            sample = round(self.depth[y, x] / self.geometry.step)
        return self.scene.locate(float(column), float(row), c_integer(sample, "sample"))

    def _content(self) -> bytes | None:
        if self.dtype != np.uint8 or self.ndim not in (2, 3) or 0 in self.shape:
            return None
        return _png.encode(np.asarray(self))

    def _repr_png_(self) -> bytes | None:
        """For notebooks: the picture, where the array still is one."""
        return self._content()


def _umask() -> int:
    mask = os.umask(0o022)
    os.umask(mask)
    return mask
