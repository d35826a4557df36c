"""Arrays of voxels and where they lie, as the library takes them."""

from __future__ import annotations

import ctypes
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._render import Array, library
from ._views import number, numbers

_TYPES = {"uint8": 1, "int16": 2, "uint16": 3, "int32": 4, "uint32": 5, "float32": 6, "int8": 7, "float64": 8}


def _in_a_known_type(array: NDArray[Any]) -> NDArray[Any]:
    """The array in one of the library's types, without a change of values."""
    if array.dtype.kind not in "biuf":
        raise TypeError(f"voxels must be numbers, not {array.dtype}")
    if array.dtype.kind == "b":
        return array.view(np.uint8)
    if array.dtype == np.float16:
        return array.astype(np.float32)
    if array.dtype.itemsize == 8 and array.dtype.kind in "iu":
        low, high = (int(array.min()), int(array.max())) if array.size else (0, 0)
        for name in ("int32", "uint32"):
            limits = np.iinfo(name)
            if limits.min <= low and high <= limits.max:
                return array.astype(name)
        raise ValueError(f"voxels of {array.dtype} must fit 32 bits, not {low} to {high}")
    native = array.astype(array.dtype.newbyteorder("="), copy=False)
    if native.dtype.name not in _TYPES:
        raise TypeError(f"voxels of {array.dtype} are not supported: convert them to float64")
    return native


def plain_voxels(array: ArrayLike) -> NDArray[Any]:
    """The array [slice, row, column] in a type and a place that the library can read."""
    voxels = np.asarray(array)
    if voxels.ndim != 3 or 0 in voxels.shape:
        raise ValueError(f"array must be [slice, row, column], not of shape {voxels.shape}")
    voxels = _in_a_known_type(voxels)
    # All strides 0 mean packed to the library, where NumPy means one voxel for all.
    if not voxels.flags.aligned or not any(voxels.strides):
        voxels = np.array(voxels, order="C")
    return voxels.view()


def _positions(positions: ArrayLike | None, slices: int) -> NDArray[np.float64] | None:
    if positions is None:
        return None
    return np.array(numbers(positions, "positions", (slices,)), order="C")


def build(
    voxels: NDArray[Any],
    spacing: ArrayLike,
    direction: ArrayLike | None,
    origin: ArrayLike,
    positions: ArrayLike | None,
    slope: float,
    intercept: float,
) -> tuple[Array, list[Any]]:
    """The record of an array, and what it points to. The library checks the ranges."""
    record = Array()
    library.zox_render_array_init(ctypes.byref(record))
    record.type = _TYPES[voxels.dtype.name]
    if max(voxels.shape) > 2**31 - 1:
        raise ValueError(f"an array of shape {voxels.shape} is too large")
    record.size[:] = voxels.shape[::-1]
    record.data = voxels.ctypes.data
    record.strides[:] = voxels.strides[::-1]
    matrix = np.eye(3) if direction is None else numbers(direction, "direction", (3, 3))
    lengths = numbers(spacing, "spacing", (3,))
    if not (lengths > 0).all():
        raise ValueError("spacing must be above 0")
    for axis in range(3):
        record.axes[axis][:] = matrix[:, axis] * lengths[axis]
    record.origin[:] = numbers(origin, "origin", (3,))
    places = _positions(positions, voxels.shape[0])
    if places is not None:
        record.positions = places.ctypes.data
    record.slope, record.intercept = number(slope, "slope"), number(intercept, "intercept")
    return record, [voxels, places]
