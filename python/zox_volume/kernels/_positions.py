"""Where rays leave a volume: each operation's own arithmetic at the first and the last sample of each ray."""

from __future__ import annotations

import numpy as np
from numpy.typing import NDArray

Points = NDArray[np.float64]
Integers = NDArray[np.int64]
AXES = "xyz"

# A position on the lower border may come out below it by rounding; it is truncated to 0 all the same.
SLACK = 1e-9


def last_of(first: float, step: float, count: int) -> float:
    """first with step added count - 1 times, each sum rounded to double."""
    terms = np.full(count, step)
    terms[0] = first
    with np.errstate(over="ignore"):
        return float(np.add.accumulate(terms)[-1])


def accumulated(
    first: Points, step: Points, counts: NDArray[np.int32], lower: Points, upper: Points
) -> Points:
    """Where rays of first [ray, 3] end when step is added to the position sample by sample. The rounding of
    so many sums matters near the borders only: only there positions are summed up."""
    many = np.maximum(counts - 1, 0)[:, None]
    steps = np.broadcast_to(step, first.shape)
    with np.errstate(over="ignore", invalid="ignore"):
        last = first + many * steps
        doubt = (many + 2) * 2.0**-51 * (np.abs(first) + np.abs(last))
        near = ((np.abs(last - lower) <= doubt) | (np.abs(last - upper) <= doubt)) & (many > 0)
    for ray, axis in np.argwhere(near):
        last[ray, axis] = last_of(first[ray, axis], steps[ray, axis], counts[ray])
    return last


def truncated(values: NDArray[np.float64], what: str) -> Integers:
    """The values as integers, toward zero; they must fit 32 bits."""
    if values.size and not (np.abs(values) < 2.0**31).all():
        raise ValueError(f"{what} is too large: in fixed point it does not fit 32 bits")
    return values.astype(np.int64)


def rounded(values: NDArray[np.float64], what: str) -> Integers:
    """trunc(v + 0.5), for negative values too."""
    return truncated(values + 0.5, what)


def refuse_outside(
    outside: NDArray[np.bool_], counts: NDArray[np.int32], what: str, limits: list[str]
) -> None:
    """Raises ValueError naming the first ray with samples that is outside [ray, axis]."""
    wrong = outside & (counts > 0)[:, None]
    if not wrong.any():
        return
    ray, axis = (int(index) for index in np.argwhere(wrong)[0])
    raise ValueError(f"ray {ray} leaves the volume: {AXES[axis]} of its {what} sample must be {limits[axis]}")


def check_indices(
    indices: Integers,
    counts: NDArray[np.int32],
    sizes: list[int],
    trilinear: bool,
    what: str,
) -> None:
    """Raises unless the voxels [ray, axis], and in trilinear sampling their neighbours at + 1, exist."""
    reach = np.array(sizes[: indices.shape[1]]) - (1 if trilinear else 0)
    limits = [
        f"in 0 <= {AXES[a]} < {size - 1}" if trilinear else f"nearest to a voxel 0 to {size - 1}"
        for a, size in enumerate(sizes)
    ]
    refuse_outside((indices < 0) | (indices >= reach), counts, what, limits)


def check_doubles(
    positions: Points,
    counts: NDArray[np.int32],
    sizes: list[int],
    trilinear: bool,
    what: str,
) -> None:
    """The same for positions that the operation truncates."""
    inside = np.clip(np.nan_to_num(positions, nan=-1.0), -(2.0**31), 2.0**31)
    indices = np.where(inside < -SLACK, -1, np.trunc(inside)).astype(np.int64)
    check_indices(indices, counts, sizes, trilinear, what)
