"""What is known of a volume before it is rendered."""

from __future__ import annotations

import ctypes

import numpy as np
from numpy.typing import NDArray

from . import _views
from ._render import VolumeInfo, check, library
from .kernels.frame import c_integer


class Measures:
    """Shape, place, values and memory of a volume."""

    _handle: ctypes.c_void_p
    _info: VolumeInfo

    @property
    def shape(self) -> tuple[int, int, int]:
        """Of the array: slices, rows, columns."""
        columns, rows, slices = self._info.size
        return slices, rows, columns

    @property
    def lowest(self) -> float:
        """The smallest value."""
        return float(self._info.lowest)

    @property
    def highest(self) -> float:
        """The largest value."""
        return float(self._info.highest)

    @property
    def center(self) -> tuple[float, float, float]:
        """The middle of the volume, in millimetres."""
        x, y, z = self._info.center
        return x, y, z

    @property
    def corners(self) -> NDArray[np.float64]:
        """[8, 3]: the corner voxels' centres in millimetres, x fastest."""
        return np.array([list(corner) for corner in self._info.corners])

    @property
    def exact(self) -> bool:
        """Whether samples are kept without loss: values that do not fit 16 bits are kept in even steps."""
        return bool(self._info.exact)

    @property
    def layout(self) -> str:
        """How the voxels are kept: bricks or stack."""
        return ("auto", "bricks", "stack")[self._info.layout]

    @property
    def nbytes(self) -> int:
        """Memory that the volume takes, in bytes."""
        return int(self._info.voxel_bytes + self._info.bounds_bytes)

    def value_at(self, column: int, row: int, slice: int) -> float:
        """The value of a voxel.

        >>> from zox_volume import Volume
        >>> array = np.arange(60, dtype=np.uint8).reshape(3, 4, 5)
        >>> Volume(array, slope=2, intercept=-10).value_at(4, 0, 1)
        38.0
        """
        names = ("column", "row", "slice")
        voxel = [c_integer(place, name) for place, name in zip((column, row, slice), names)]
        value = ctypes.c_double()
        check(library.zox_render_voxel(self._handle, (ctypes.c_int32 * 3)(*voxel), ctypes.byref(value)))
        return value.value

    def histogram(self, bins: int = 256) -> tuple[NDArray[np.uint64], NDArray[np.float64]]:
        """Counts of the voxels in bins of equal width, and the bins' edges, as numpy.histogram gives them.

        >>> from zox_volume import Volume
        >>> counts, edges = Volume(np.arange(8).reshape(2, 2, 2)).histogram(4)
        >>> counts.tolist(), edges.tolist()
        ([2, 2, 2, 2], [0.0, 1.75, 3.5, 5.25, 7.0])
        """
        counts = np.zeros(c_integer(bins, "bins", 1, 65536), np.uint64)
        check(library.zox_render_histogram(self._handle, len(counts), counts.ctypes.data))
        return counts, np.linspace(self.lowest, self.highest, len(counts) + 1)

    def percentile(self, percent: float) -> float:
        """The smallest value that at least so many percent of the voxels do not exceed.

        >>> from zox_volume import Volume
        >>> Volume(np.arange(8).reshape(2, 2, 2)).percentile(50)
        3.0
        """
        value = ctypes.c_double()
        share = _views.number(percent, "percent") / 100
        check(library.zox_render_percentile(self._handle, share, ctypes.byref(value)))
        return value.value

    def default_window(self) -> tuple[float, float]:
        """Centre and width of a window for maxima, in values: black is what three quarters of the voxels do
        not exceed, white what all but one in ten thousand do not exceed."""
        center, width = ctypes.c_double(), ctypes.c_double()
        check(library.zox_render_default_window(self._handle, ctypes.byref(center), ctypes.byref(width)))
        return center.value, width.value
