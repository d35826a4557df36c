"""Where rays leave a slice stack, and the limits of the operations on it."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from ._batch import Batch
from ._positions import check_indices, refuse_outside, rounded, truncated
from .volumes import SliceStack

MAX_RAYS = 64
MAX_FIXED_SLICES, MAX_FIXED_REGIONS = 512, 511
_EDGE = 2.0**-20  # what rounding may put z beside the border


@dataclass(frozen=True)
class Operation:
    """What the operations differ in."""

    name: str

    @property
    def parallel(self) -> bool:
        """Whether all rays share a step."""
        return self.name.startswith("Parallel")

    @property
    def trilinear(self) -> bool:
        """Whether it interpolates."""
        return "Trilinear" in self.name

    @property
    def bits(self) -> bool:
        """Whether voxels are single bits."""
        return "Bit" in self.name

    @property
    def one(self) -> float:
        """One voxel in fixed point."""
        return 2.0 ** (20 if self.trilinear else 21)

    @property
    def coordinates(self) -> float:
        """Coordinates stay below this in magnitude."""
        return 2048.0 if self.trilinear else 1024.0

    @property
    def samples(self) -> int:
        """The largest number of samples."""
        return 2097151 if self.trilinear else 4194303

    def rounds_steps(self, regions: int) -> bool:
        """Whether steps in x and y are rounded, not truncated."""
        return self.trilinear or (not self.parallel and not self.bits and regions == 1)


def _takes_one_region_path(batch: Batch, volume: SliceStack) -> bool:
    bounds, z = volume._regbounds, batch.starts[:, 2]
    return volume.nregions == 1 and bool((bounds[1] - bounds[0]) * 0.2 > np.abs(z - z[0]).max())


def _check_depth(operation: Operation, batch: Batch, volume: SliceStack) -> None:
    """Of every ray: z within the bounds, the slices that it passes within the stack."""
    bounds, scale = volume._regbounds, volume._regscale
    lengths = np.diff(bounds)
    if max(np.abs(bounds).max(), lengths.max(), (lengths * scale).max()) >= operation.coordinates:
        raise ValueError(
            f"the bounds of the volume must stay below {operation.coordinates:g}, in z and in slices"
        )
    step = np.abs(np.atleast_2d(batch.steps)[:, 2]) * (batch.nsamples > 1)
    if (step * max(1.0, scale.max()) >= operation.coordinates).any():
        raise ValueError(f"steps must stay below {operation.coordinates:g}, in z and in slices")
    first, last = batch.starts[:, 2], batch.ends()[:, 2]
    limits = ["", "", f"{bounds[0]} to {bounds[-1]}"]
    for z, what in ((first, "first"), (last, "last")):
        outside = np.zeros((batch.rays, 3), np.bool_)
        outside[:, 2] = ~((z >= bounds[0] - _EDGE) & (z <= bounds[-1] + _EDGE))
        refuse_outside(outside, batch.nsamples, what, limits)
    low, high = np.minimum(first, last)[:, None], np.maximum(first, last)[:, None]
    visits = (batch.nsamples > 0)[:, None] & (high >= bounds[:-1]) & (low <= bounds[1:])
    deepest = volume._regslice + (np.minimum(high, bounds[1:]) - bounds[:-1]) * scale
    reach = volume.nslices - (1.0 if operation.trilinear else 0.5) + scale * _EDGE
    if (visits & (deepest > reach)).any():
        ray, region = (int(index) for index in np.argwhere(visits & (deepest > reach))[0])
        raise ValueError(f"ray {ray} leaves the volume: in region {region} it passes the last slice")


def _check_lists(operation: Operation, batch: Batch, volume: SliceStack) -> None:
    """x and y where samples are sorted by slice; samples whose slice is not there are then left out."""
    if operation.bits or (operation.parallel and not operation.trilinear):
        if volume.nslices > MAX_FIXED_SLICES or volume.nregions > MAX_FIXED_REGIONS:
            raise ValueError(
                f"this operation takes at most {MAX_FIXED_SLICES} slices and {MAX_FIXED_REGIONS} regions"
            )
    convert = rounded if operation.trilinear else truncated
    bias = 0.0 if operation.trilinear else 0.5
    with np.errstate(over="ignore"):
        first = convert((batch.starts[:, :2] + bias) * operation.one, "a start")
        in_fixed_point = rounded if operation.rounds_steps(volume.nregions) else truncated
        step = in_fixed_point(np.atleast_2d(batch.steps)[:, :2] * operation.one, "a step")
    last = first + np.maximum(batch.nsamples - 1, 0).astype(np.int64)[:, None] * step
    shift = 20 if operation.trilinear else 21
    for position, what in ((first, "first"), (last, "last")):
        check_indices(
            position >> shift,
            batch.nsamples,
            [volume.columns, volume.rows],
            operation.trilinear,
            what,
        )


def _check_one_region(batch: Batch, volume: SliceStack) -> None:
    """The path that does not sort: ray 0's position in double, to which the other rays have an offset."""
    one, scale = 2.0**21, np.array([1.0, 1.0, volume._regscale[0]])
    origin = batch.starts[0] - [0.0, 0.0, volume._regbounds[0]]
    offsets = (
        truncated((batch.starts - batch.starts[0]) * scale * one, "the distance of two starts") + 2**20
    )
    used = np.maximum(batch.nsamples - 1, 0)
    sizes = [volume.columns, volume.rows, volume.nslices]
    indices = np.empty((2, batch.rays, 3), np.int64)
    for axis in range(3):
        terms = np.full(batch.longest, batch.steps[axis] * scale[axis])
        terms[0] = origin[axis] * scale[axis]
        positions = np.add.accumulate(terms)
        ends = np.stack((np.broadcast_to(positions[0], used.shape), positions[used]))
        indices[:, :, axis] = (offsets[:, axis] + truncated(ends * one, "a position")) >> 21
    check_indices(indices[0], batch.nsamples, sizes, False, "first")
    check_indices(indices[1], batch.nsamples, sizes, False, "last")


def check(operation: Operation, batch: Batch, volume: SliceStack) -> None:
    """Raises ValueError unless the batch keeps the limits and no sample leaves the volume."""
    if batch.rays > MAX_RAYS:
        raise ValueError(f"a batch for slice stacks holds at most {MAX_RAYS} rays, not {batch.rays}")
    if batch.longest > operation.samples:
        raise ValueError(f"nsamples must be at most {operation.samples} here, not {batch.longest}")
    used = batch.nsamples > 0
    bias = 0.0 if operation.trilinear else 0.5
    for points in (batch.starts[used], batch.ends()[used]):
        if not (np.abs(points) + [bias, bias, 0.0] < operation.coordinates).all():
            raise ValueError(f"the coordinates of samples must stay below {operation.coordinates:g}")
    _check_depth(operation, batch, volume)
    if operation.parallel and not operation.trilinear and _takes_one_region_path(batch, volume):
        _check_one_region(batch, volume)
    else:
        _check_lists(operation, batch, volume)
