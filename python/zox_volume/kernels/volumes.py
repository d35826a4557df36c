"""The two kinds of volume that the ray casters take."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._records import VolumeRecord

MAX_BLOCKED_SIZE = 2048
_BRICK = 64 * 64 * 32
_BRICK_LAYERS = 32

Voxels = Union[NDArray[np.uint8], NDArray[np.int16]]


def _voxels(array: ArrayLike, name: str) -> NDArray[Any]:
    """The array, in one of the two types that voxels have."""
    voxels = np.asarray(array)
    if voxels.dtype not in (np.dtype(np.uint8), np.dtype(np.int16)):
        raise TypeError(f"{name} must be uint8 or int16, not {voxels.dtype}")
    return voxels


class BlockedVolume:
    """A volume in bricks of 64 x 64 x 32 voxels, for views from every side.

    data: the elements in the order of the layout, a contiguous array of one axis, uint8 or int16. It is
    referred to, not copied. size: the edge of the grid in x and y, a power of two from 64 to 2048. Use
    `pack` to make one of a plain array.

    >>> volume = BlockedVolume.pack(np.zeros((10, 100, 70), np.uint8))
    >>> volume.size, volume.depth, volume.dtype.name
    (128, 32, 'uint8')
    """

    __slots__ = ("_data", "_size", "_depth", "_record")

    def __init__(self, data: ArrayLike, size: int) -> None:
        voxels = _voxels(data, "data")
        if voxels.ndim != 1 or not voxels.flags.c_contiguous or not voxels.flags.aligned:
            raise ValueError("data must be a contiguous array of one axis")
        if size not in (64, 128, 256, 512, 1024, 2048):
            raise ValueError(f"size must be a power of two from 64 to {MAX_BLOCKED_SIZE}, not {size!r}")
        layer = (size // 64) ** 2 * _BRICK
        if voxels.size == 0 or voxels.size % layer or voxels.size > 2**32:
            raise ValueError(
                f"data of size {size} must hold a multiple of {layer} elements, up to 2**32,"
                f" not {voxels.size}"
            )
        self._data = voxels.view()
        self._size = int(size)
        self._depth = voxels.size // layer * _BRICK_LAYERS
        self._record = VolumeRecord(data=self._data.ctypes.data, size=self._size)

    @staticmethod
    def pack(array: ArrayLike) -> BlockedVolume:
        """A copy in bricks of array[slice, row, column], uint8 or int16. The space that the bricks have
        beyond the array repeats its border, so that trilinear samples may lie on the last voxels.
        """
        voxels = _voxels(array, "array")
        if voxels.ndim != 3 or 0 in voxels.shape or max(voxels.shape[1:]) > MAX_BLOCKED_SIZE:
            raise ValueError(
                f"array must be [slice, row, column] of up to 2048 rows and columns, not {voxels.shape}"
            )
        size = 64
        while size < max(voxels.shape[1:]):
            size *= 2
        depth = -(-voxels.shape[0] // _BRICK_LAYERS) * _BRICK_LAYERS
        if depth * size * size > 2**32:
            raise ValueError(f"array of shape {voxels.shape} is too deep for bricks")
        missing = [(0, whole - part) for whole, part in zip((depth, size, size), voxels.shape)]
        plain = np.pad(voxels, missing, mode="edge")
        edge = size // 64
        cells = plain.reshape(depth // 32, 16, 2, edge, 16, 4, edge, 16, 4)
        return BlockedVolume(cells.transpose(0, 3, 6, 1, 4, 7, 2, 5, 8).ravel(), size)

    def unpack(self) -> Voxels:
        """A plain copy [slice, row, column], the padding of the bricks included.

        >>> array = np.arange(24, dtype=np.int16).reshape(2, 3, 4)
        >>> bool((BlockedVolume.pack(array).unpack()[:2, :3, :4] == array).all())
        True
        """
        edge = self._size // 64
        cells = self._data.reshape(self._depth // 32, edge, edge, 16, 16, 16, 2, 4, 4)
        plain = cells.transpose(0, 3, 6, 1, 4, 7, 2, 5, 8)
        return plain.reshape(self._depth, self._size, self._size)

    @property
    def data(self) -> Voxels:
        """The elements, as a view."""
        return self._data.view()

    @property
    def size(self) -> int:
        """Columns and rows of the grid."""
        return self._size

    @property
    def depth(self) -> int:
        """Slices, those included that only pad the last bricks."""
        return self._depth

    @property
    def dtype(self) -> np.dtype[Any]:
        """Type of the voxels, uint8 or int16."""
        return self._data.dtype


def _slice_arrays(slices: ArrayLike | Sequence[ArrayLike]) -> list[NDArray[Any]]:
    arrays = [_voxels(one, "slices") for one in slices]  # type: ignore[union-attr]
    if not arrays:
        raise ValueError("slices must hold at least one slice")
    first = arrays[0]
    for index, one in enumerate(arrays):
        if one.ndim != 2 or 0 in one.shape:
            raise ValueError(f"slice {index} must be [row, column], not of shape {one.shape}")
        if (one.shape, one.dtype) != (first.shape, first.dtype) or one.strides[0] != first.strides[0]:
            raise ValueError(f"slice {index} differs from slice 0 in shape, type or distance of rows")
        if one.strides[1] != one.itemsize and one.shape[1] > 1:
            raise ValueError(f"the columns of slice {index} must lie side by side")
        if not one.flags.aligned:
            raise ValueError(f"slice {index} is not aligned to its type")
    return [one.view() for one in arrays]


def _table(values: ArrayLike, dtype: type, length: int, name: str) -> NDArray[Any]:
    wanted = np.asarray(values)
    table: NDArray[Any] = wanted.astype(dtype).reshape(-1)
    if len(table) != length or not np.array_equal(wanted.reshape(-1), table):
        raise ValueError(
            f"{name} must hold {length} {'finite numbers' if dtype is np.float64 else 'integers'}"
        )
    if not np.isfinite(table).all():
        raise ValueError(f"{name} must hold finite numbers")
    return table


class SliceStack:
    """A volume of slices at addresses of their own, cut along z into regions of uniform slice spacing.

    slices: arrays [row, column] of one shape and type (uint8 or int16) with the same distance from row to
    row, or one array [slice, row, column]; they are referred to, not copied. With bits, uint8 arrays
    [row, byte] of packed voxels: columns 0 to 7 are the first byte, most significant bit first, column 8 is
    bit 0 of the second byte; columns 9 to 35 read 0.

    z in region j, between regbounds[j] and regbounds[j + 1], is slice regslice[j] + (z - regbounds[j]) *
    regscale[j]. Left out, there is one region, and z counts slices.

    >>> stack = SliceStack(np.zeros((5, 4, 6), np.int16))
    >>> stack.nslices, stack.rows, stack.columns, stack.nregions
    (5, 4, 6, 1)
    """

    __slots__ = (
        "_slices",
        "_bits",
        "_addresses",
        "_rowoffs",
        "_regslice",
        "_regbounds",
        "_regscale",
        "_record",
    )

    def __init__(
        self,
        slices: ArrayLike | Sequence[ArrayLike],
        regslice: ArrayLike = (0,),
        regbounds: ArrayLike | None = None,
        regscale: ArrayLike = (1.0,),
        bits: bool = False,
    ) -> None:
        self._slices = _slice_arrays(slices)
        self._bits = bool(bits)
        first = self._slices[0]
        if self._bits and first.dtype != np.uint8:
            raise TypeError(f"slices of bits must be uint8, not {first.dtype}")
        offsets = np.arange(first.shape[0], dtype=np.int64) * first.strides[0]
        if abs(int(offsets[-1])) + first.shape[1] * first.itemsize > 2**31 - 1:
            raise ValueError("a slice must not span 2 GiB or more")
        regions = np.asarray(regslice).size
        if regions < 1:
            raise ValueError("regslice must name at least one region")
        if regbounds is None:
            if regions != 1 or len(self._slices) == 1:
                raise ValueError("regbounds must be given for several regions and for a single slice")
            regbounds = (0.0, len(self._slices) - 1.0)
        self._regslice = _table(regslice, np.int32, regions, "regslice")
        self._regbounds = _table(regbounds, np.float64, regions + 1, "regbounds")
        self._regscale = _table(regscale, np.float64, regions, "regscale")
        self._check_regions()
        # The last slice twice: trilinear operations look at one entry more.
        places = [one.ctypes.data for one in [*self._slices, self._slices[-1]]]
        self._addresses = np.array(places, dtype=np.uintp)
        self._rowoffs = offsets.astype(np.int32)
        self._record = VolumeRecord(
            data=self._addresses.ctypes.data,
            rowoffs=self._rowoffs.ctypes.data,
            nslices=len(self._slices),
            nregions=regions,
            regslice=self._regslice.ctypes.data,
            regbounds=self._regbounds.ctypes.data,
            regscale=self._regscale.ctypes.data,
        )

    def _check_regions(self) -> None:
        if not (np.diff(self._regbounds) > 0).all():
            raise ValueError("regbounds must ascend")
        if not (self._regscale > 0).all():
            raise ValueError("regscale must be above 0")
        if self._regslice.min() < 0 or self._regslice.max() >= len(self._slices):
            raise ValueError(f"regslice must name slices 0 to {len(self._slices) - 1}")
        if len(self._regslice) == 1 and self._regslice[0] != 0:
            raise ValueError("regslice must be 0 where there is one region")

    @property
    def nslices(self) -> int:
        """Number of slices."""
        return len(self._slices)

    @property
    def nregions(self) -> int:
        """Number of regions of uniform slice spacing."""
        return len(self._regslice)

    @property
    def rows(self) -> int:
        """Rows of a slice."""
        return int(self._slices[0].shape[0])

    @property
    def columns(self) -> int:
        """Columns of a slice: voxels, also where eight of them share a byte."""
        return int(self._slices[0].shape[1]) * (8 if self._bits else 1)

    @property
    def bits(self) -> bool:
        """Whether voxels are single bits."""
        return self._bits

    @property
    def dtype(self) -> np.dtype[Any]:
        """Type of the slices' elements, uint8 or int16."""
        return self._slices[0].dtype
