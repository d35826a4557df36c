"""Ray casting through blocked volumes.

Every function takes

    volume    a BlockedVolume, of uint8 for functions in _8u and of int16 for those in _16s
    starts    [ray, 3]: x, y, z of each ray's first sample, in voxels
    steps     the displacement from one sample to the next: [ray, 3], or 3 numbers that all rays share;
              the parallel functions take 3 numbers
    nsamples  the number of samples: one a ray, or one for all
    out       planes [sample, ray] to write instead of new ones, at least as large as needed

and returns the planes: sample k of ray r in planes[k, r]. Samples that a ray does not have are left as they
are (0 in new planes). No sample may leave the volume: nearest sampling takes -0.5 <= p < n - 0.5, trilinear
0 <= p < n - 1, n being volume.size in x and y and volume.depth in z. Otherwise, as wherever an argument is
not what it must be, ValueError or TypeError tells why, and nothing has been written.

>>> array = np.arange(27, dtype=np.uint8).reshape(3, 3, 3)
>>> volume = BlockedVolume.pack(array)
>>> ray_cast_blocked_divergent_nearest_8u(volume, [[0, 0, 0], [2, 1, 0]], [[1, 0, 0], [0, 0, 1]], 3).T
array([[ 0,  1,  2],
       [ 5, 14, 23]], dtype=uint8)
>>> ray_cast_blocked_parallel_trilinear_8u(volume, [[0.5, 0, 0]], [0, 0, 1], 3).T
array([[ 0,  9, 18]], dtype=uint8)
>>> ray_cast_blocked_parallel_nearest_8u(volume, [[0, 0, 0]], [-1, 0, 0], 3)
Traceback (most recent call last):
    ...
ValueError: ray 0 leaves the volume: x of its last sample must be nearest to a voxel 0 to 63
"""

from __future__ import annotations

from ctypes import byref
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._batch import Batch
from ._positions import accumulated, check_doubles, check_indices, truncated
from ._records import library
from .volumes import BlockedVolume

_ONE = 2.0**20  # one voxel in fixed point
_TOGETHER = 64  # batches up to this size may be walked sample by sample

U8 = NDArray[np.uint8]
I16 = NDArray[np.int16]


def _check_fixed(batch: Batch, sizes: list[int], nearest: bool) -> None:
    """Fixed-point positions: the first one truncated, the step truncated, no rounding after that."""
    with np.errstate(over="ignore"):
        first = truncated((batch.starts + (0.5 if nearest else 0.0)) * _ONE, "a start")
        step = truncated(batch.steps * _ONE, "a step")
    firsts = [first]
    if not nearest and batch.rays <= _TOGETHER:
        # Walked sample by sample, rays are offsets from ray 0, which may differ by one unit.
        firsts.append(first[0] + truncated(batch.starts * _ONE - first[0], "the distance of two starts"))
    many = np.maximum(batch.nsamples - 1, 0).astype(np.int64)[:, None]
    for position, what in [(one, "first") for one in firsts] + [
        (one + many * step, "last") for one in firsts
    ]:
        check_indices(position >> 20, batch.nsamples, sizes, not nearest, what)


def _check_accumulated(batch: Batch, sizes: list[int], nearest: bool, parallel: bool) -> None:
    """Positions in double, to which the step is added after every sample."""
    reach = np.array(sizes, np.float64) - (0.0 if nearest else 1.0)
    first = batch.starts + (0.5 if nearest else 0.0)
    check_doubles(first, batch.nsamples, sizes, not nearest, "first")
    last = accumulated(first, batch.steps, batch.nsamples, np.zeros(3), reach)
    check_doubles(last, batch.nsamples, sizes, not nearest, "last")
    if parallel and batch.rays <= _TOGETHER:
        # Walked sample by sample: ray 0's position with the ray's offset.
        offsets = batch.starts - batch.starts[0]
        check_doubles(offsets + first[0], batch.nsamples, sizes, not nearest, "first")
        first0 = np.broadcast_to(first[0], first.shape)
        ends = accumulated(first0, batch.steps, batch.nsamples, -offsets, reach - offsets)
        check_doubles(offsets + ends, batch.nsamples, sizes, not nearest, "last")


def _cast(
    name: str,
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: NDArray[Any] | None,
) -> NDArray[Any]:
    projection, sampling, voxels = name.split("_")
    if not isinstance(volume, BlockedVolume):
        raise TypeError(f"volume must be a BlockedVolume, not {type(volume).__name__}")
    if volume.dtype != (np.uint8 if voxels == "8U" else np.int16):
        raise TypeError(f"this operation takes volumes of {voxels}, not of {volume.dtype}")
    parallel, nearest = projection == "Parallel", sampling == "Nearest"
    batch = Batch(starts, steps, nsamples, parallel)
    planes = batch.planes(out, volume.dtype, [volume._data])
    if batch.longest == 0:
        return planes
    sizes = [volume.size, volume.size, volume.depth]
    if name in (
        "Divergent_Nearest_8U",
        "Divergent_Nearest_16S",
        "Parallel_Trilinear_8U",
    ):
        _check_fixed(batch, sizes, nearest)
    else:
        _check_accumulated(batch, sizes, nearest, parallel)
    record, _tables = batch.record(planes)
    getattr(library, f"zox_Volume_RayCast_Blocked_{name}")(byref(volume._record), byref(record))
    return planes


def ray_cast_blocked_divergent_nearest_8u(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest voxels. Positions are fixed point with 20 fraction bits, each ray on its own."""
    return _cast("Divergent_Nearest_8U", volume, starts, steps, nsamples, out)


def ray_cast_blocked_divergent_nearest_16s(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Copies the nearest voxels. Positions are fixed point with 20 fraction bits, each ray on its own."""
    return _cast("Divergent_Nearest_16S", volume, starts, steps, nsamples, out)


def ray_cast_blocked_divergent_trilinear_8u(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Interpolates in double precision and truncates toward zero."""
    return _cast("Divergent_Trilinear_8U", volume, starts, steps, nsamples, out)


def ray_cast_blocked_divergent_trilinear_16s(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Interpolates in double precision and truncates toward zero."""
    return _cast("Divergent_Trilinear_16S", volume, starts, steps, nsamples, out)


def ray_cast_blocked_parallel_nearest_8u(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Copies the nearest voxels. Positions are kept in double precision, so that now and then the voxel
    beside that of the divergent function is picked."""
    return _cast("Parallel_Nearest_8U", volume, starts, steps, nsamples, out)


def ray_cast_blocked_parallel_nearest_16s(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Copies the nearest voxels. Positions are kept in double precision, so that now and then the voxel
    beside that of the divergent function is picked."""
    return _cast("Parallel_Nearest_16S", volume, starts, steps, nsamples, out)


def ray_cast_blocked_parallel_trilinear_8u(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: U8 | None = None,
) -> U8:
    """Interpolates in integers: 20 fraction bits in x, 10 in y and z, floored. Over nearly black voxels the
    value can be -1, which is stored as 255."""
    return _cast("Parallel_Trilinear_8U", volume, starts, steps, nsamples, out)


def ray_cast_blocked_parallel_trilinear_16s(
    volume: BlockedVolume,
    starts: ArrayLike,
    steps: ArrayLike,
    nsamples: ArrayLike,
    out: I16 | None = None,
) -> I16:
    """Interpolates in double precision and truncates toward zero."""
    return _cast("Parallel_Trilinear_16S", volume, starts, steps, nsamples, out)
