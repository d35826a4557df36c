"""Ray casting through slice stacks.

Every function takes at most 64 rays:

    volume    a SliceStack, of uint8 for functions in _8u, of int16 for those in _16s, of bits for _bit_8u
    starts    [ray, 3]: x and y of each ray's first sample in voxels, z in the unit of the regions' bounds
    steps     the displacement from one sample to the next: [ray, 3], or 3 numbers that all rays share;
              the parallel functions take 3 numbers
    nsamples  the number of samples: one a ray, or one for all
    out       planes [sample, ray] to write instead of new ones, at least as large as needed

and returns the planes: sample k of ray r in planes[k, r]. Samples that a ray does not have are left as they
are (0 in new planes). No sample may leave the volume: nearest sampling takes -0.5 <= p < n - 0.5 in x and y,
trilinear 0 <= p < n - 1, n being volume.columns and volume.rows; z lies within the first and the last bound
and within the slices. Coordinates stay below 1024 (nearest) or 2048 (trilinear), numbers of samples up to
4194303 or 2097151. The functions for bits, and parallel nearest sampling where it works with slice lists,
take at most 512 slices and 511 regions. Otherwise, as wherever an argument is not what it must be, ValueError
or TypeError tells why, and nothing has been written. RuntimeError: the calling thread's stack is too small.
MemoryError: scratch could not be had.

>>> array = np.arange(60, dtype=np.int16).reshape(4, 3, 5)  # z, y, x
>>> stack = SliceStack(array)
>>> steps = [[0, 0, 0.5], [0, 0, 1]]
>>> ray_cast_general_divergent_trilinear_16s(stack, [[1, 1, 0], [2.5, 1, 0]], steps, [7, 4]).T
array([[ 6, 13, 21, 28, 36, 43, 51],
       [ 7, 22, 37, 52,  0,  0,  0]], dtype=int16)
>>> ray_cast_general_parallel_nearest_16s(stack, [[0, 0, 0], [4, 2, 0]], [0, 0, 1], 4).T
array([[ 0, 15, 30, 45],
       [14, 29, 44, 59]], dtype=int16)
>>> ray_cast_general_parallel_nearest_16s(stack, [[0, 0, 0]], [0, 0, 1], 5)
Traceback (most recent call last):
    ...
ValueError: ray 0 leaves the volume: z of its last sample must be 0.0 to 3.0
"""

from __future__ import annotations

from ctypes import byref
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from .. import _stack_room
from ._batch import Batch
from ._records import NO_MEMORY, library
from ._stack_positions import Operation, check
from .volumes import SliceStack

U8 = NDArray[np.uint8]
I16 = NDArray[np.int16]


def _cast(
    name: str,
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: NDArray[Any] | None,
) -> NDArray[Any]:
    operation = Operation(name)
    if not isinstance(volume, SliceStack):
        raise TypeError(f"volume must be a SliceStack, not {type(volume).__name__}")
    if volume.bits != operation.bits or volume.dtype != (np.int16 if name.endswith("16S") else np.uint8):
        have = "bits" if volume.bits else volume.dtype
        raise TypeError(
            f"this operation takes {'bits' if operation.bits else name.split('_')[-1]}, not {have}"
        )
    batch = Batch(starts, steps, nsamples, operation.parallel)
    planes = batch.planes(out, volume.dtype, volume._slices)
    if batch.longest == 0:
        return planes
    check(operation, batch, volume)
    _stack_room.require(_stack_room.GENERAL_TRILINEAR if operation.trilinear else _stack_room.GENERAL_NEAREST)
    record, _tables = batch.record(planes)
    status = getattr(library, f"zox_Volume_RayCast_General_{name}")(byref(volume._record), byref(record))
    if status == NO_MEMORY:
        raise MemoryError(f"scratch for {batch.longest} samples a ray could not be had")
    return planes


def ray_cast_general_divergent_nearest_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest voxels."""
    return _cast("Divergent_Nearest_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_divergent_nearest_16s(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Copies the nearest voxels."""
    return _cast("Divergent_Nearest_16S", volume, starts, steps, nsamples, out)


def ray_cast_general_divergent_nearest_bit_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest bits, as 0 or 1."""
    return _cast("Divergent_Nearest_Bit_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_divergent_trilinear_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Interpolates in integers: 20 fraction bits in x, 10 in y and z, floored. Over nearly black voxels the
    value can be -1, which is stored as 255."""
    return _cast("Divergent_Trilinear_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_divergent_trilinear_16s(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Interpolates in double precision along x, then y, then z, and truncates toward zero."""
    return _cast("Divergent_Trilinear_16S", volume, starts, steps, nsamples, out)


def ray_cast_general_parallel_nearest_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest voxels. Where there is one region, deep beside the distance of the starts in z, rays
    are offsets from the first one and any number of slices will do."""
    return _cast("Parallel_Nearest_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_parallel_nearest_16s(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Copies the nearest voxels. Where there is one region, deep beside the distance of the starts in z, rays
    are offsets from the first one and any number of slices will do."""
    return _cast("Parallel_Nearest_16S", volume, starts, steps, nsamples, out)


def ray_cast_general_parallel_nearest_bit_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest bits, as 0 or 1, on the same paths as the other parallel nearest functions."""
    return _cast("Parallel_Nearest_Bit_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_parallel_trilinear_8u(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Interpolates in integers: 20 fraction bits in x, 10 in y and z, floored. Over nearly black voxels the
    value can be -1, which is stored as 255."""
    return _cast("Parallel_Trilinear_8U", volume, starts, steps, nsamples, out)


def ray_cast_general_parallel_trilinear_16s(
    volume: SliceStack,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Interpolates in double precision along x, then y, then z, and truncates toward zero."""
    return _cast("Parallel_Trilinear_16S", volume, starts, steps, nsamples, out)
