"""A batch of rays and its planes, checked, in the form that the operations take."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._records import RaysRecord

LINE = 64  # bytes


def _numbers(values: ArrayLike, name: str) -> NDArray[np.float64]:
    """A copy of the values as double precision, which all must be finite."""
    given = np.asarray(values)
    if given.dtype.kind not in "iufb":
        raise TypeError(f"{name} must be numbers, not {given.dtype}")
    numbers = np.array(given, dtype=np.float64, order="C")
    if not np.isfinite(numbers).all():
        raise ValueError(f"{name} must be finite")
    return numbers


def _sample_counts(nsamples: ArrayLike, rays: int) -> NDArray[np.int32]:
    given = np.asarray(nsamples)
    if given.dtype.kind not in "iu" and given.size:
        raise TypeError(f"nsamples must be integers, not {given.dtype}")
    if given.shape not in ((), (rays,)):
        raise ValueError(f"nsamples must be one number or {rays}, one a ray, not of shape {given.shape}")
    if given.size and (given.min() < 0 or given.max() > 2**31 - 1):
        raise ValueError("nsamples must be 0 to 2147483647")
    return np.array(np.broadcast_to(given, (rays,)), dtype=np.int32, order="C")


def new_planes(samples: int, rays: int, dtype: np.dtype[Any]) -> NDArray[Any]:
    """Planes of zeros, the distance from one to the next an odd number of cache lines: planes a power of two
    apart slow the operations down several times."""
    lines = -(-rays * dtype.itemsize // LINE) | 1
    return np.zeros((samples, lines * LINE // dtype.itemsize), dtype)[:, :rays]


def check_planes(planes: NDArray[Any], dtype: np.dtype[Any], name: str) -> None:
    """Raises unless the array can serve as planes[sample, ray]."""
    if planes.dtype != dtype:
        raise TypeError(f"{name} must be {dtype}, not {planes.dtype}")
    if planes.ndim != 2:
        raise ValueError(f"{name} must be [sample, ray], not of {planes.ndim} axes")
    if planes.size and planes.shape[1] > 1 and planes.strides[1] != planes.itemsize:
        raise ValueError(f"the rays of {name} must lie side by side")
    if not planes.flags.aligned:
        raise ValueError(f"{name} is not aligned to its type")


def check_output(planes: object, read: list[NDArray[Any]], name: str = "out") -> NDArray[Any]:
    """The array, of which nothing may overlap itself nor what the operation reads."""
    if not isinstance(planes, np.ndarray):
        raise TypeError(f"{name} must be a NumPy array, not {type(planes).__name__}")
    if not planes.flags.writeable:
        raise ValueError(f"{name} must be writeable")
    if (
        planes.ndim == 2
        and planes.shape[0] > 1
        and abs(planes.strides[0]) < planes.shape[1] * planes.itemsize
    ):
        raise ValueError(f"the planes of {name} overlap")
    if any(np.may_share_memory(planes, array) for array in read):
        raise ValueError(f"{name} may share memory with what the operation reads")
    return np.asarray(planes)


def addresses(array: NDArray[Any]) -> NDArray[np.uintp]:
    """Of array[0], array[1] ..."""
    steps = np.arange(array.shape[0], dtype=np.int64) * array.strides[0]
    return (steps + array.ctypes.data).astype(np.uintp)


class Batch:
    """Rays of a cast. Rays and steps are copies, so that nothing can change them during the call."""

    def __init__(self, starts: ArrayLike, steps: ArrayLike, nsamples: ArrayLike, parallel: bool) -> None:
        self.starts = _numbers(starts, "starts")
        if self.starts.ndim != 2 or self.starts.shape[1] != 3:
            raise ValueError(f"starts must be [ray, 3], not of shape {self.starts.shape}")
        rays = len(self.starts)
        if rays > 2**31 - 1:
            raise ValueError(f"a batch holds at most 2147483647 rays, not {rays}")
        self.steps = _numbers(steps, "steps")
        shapes: list[tuple[int, ...]] = [(3,)] if parallel else [(3,), (rays, 3)]
        if self.steps.shape not in shapes:
            wanted = (
                "3 numbers, which all rays share"
                if parallel
                else f"[ray, 3], that is {(rays, 3)}, or 3 numbers"
            )
            raise ValueError(f"steps must be {wanted}, not of shape {self.steps.shape}")
        self.nsamples = _sample_counts(nsamples, rays)
        self.rays = rays
        self.longest = int(self.nsamples.max()) if rays else 0

    def ends(self) -> NDArray[np.float64]:
        """Where the last sample of each ray lies; of rays without samples, the start."""
        with np.errstate(over="ignore", invalid="ignore"):
            return self.starts + np.maximum(self.nsamples - 1, 0)[:, None] * self.steps

    def planes(self, out: object, dtype: np.dtype[Any], read: list[NDArray[Any]]) -> NDArray[Any]:
        """The planes to write: out if it fits, new ones if it is None."""
        if out is None:
            return new_planes(self.longest, self.rays, dtype)
        planes = check_output(out, read)
        check_planes(planes, dtype, "out")
        if planes.shape[0] < self.longest or planes.shape[1] < self.rays:
            raise ValueError(
                f"out must have {self.longest} planes of {self.rays} rays, not the shape {planes.shape}"
            )
        return planes

    def record(self, planes: NDArray[Any]) -> tuple[RaysRecord, list[NDArray[Any]]]:
        """The record, and the arrays that it points to."""
        steps = np.broadcast_to(self.steps, self.starts.shape)
        tables = [addresses(planes), addresses(self.starts), addresses(steps)]
        record = RaysRecord(
            planes=tables[0].ctypes.data,
            nrays=self.rays,
            starts=tables[1].ctypes.data,
            steps=tables[2].ctypes.data,
            nsamples=self.nsamples.ctypes.data,
        )
        return record, tables
