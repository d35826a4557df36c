"""Views as the library takes them."""

from __future__ import annotations

import ctypes
from typing import Any, Literal, Sequence, Union

import numpy as np
from numpy.typing import ArrayLike

from ._render import BAD_ARGUMENT, View, library
from .kernels.frame import c_integer

Direction = Union[str, Sequence[float], ArrayLike]
Projection = Literal["perspective", "orthographic"]
Interpolation = Literal["trilinear", "nearest"]
Reduction = Literal["maximum", "minimum", "mean", "largest_magnitude"]

_NAMES = {
    "projection": ("perspective", "orthographic"),
    "interpolation": ("trilinear", "nearest"),
    "reduction": ("maximum", "minimum", "mean", "largest_magnitude"),
}


def number(value: Any, name: str) -> float:
    """The value as a float."""
    try:
        return float(value)
    except (TypeError, ValueError, OverflowError):
        raise TypeError(f"{name} must be a number, not {value!r:.80}") from None


def numbers(values: Any, name: str, shape: tuple[int, ...]) -> np.ndarray[Any, np.dtype[np.float64]]:
    """The values as floats of this shape."""
    try:
        array = np.asarray(values, np.float64)
    except (TypeError, ValueError, OverflowError):
        raise TypeError(f"{name} must be numbers") from None
    if array.shape != shape:
        raise ValueError(f"{name} must be {' x '.join(map(str, shape))} numbers, not of shape {array.shape}")
    return array


def choice(value: object, name: str, names: Sequence[str]) -> int:
    """The value's place among the names."""
    if not isinstance(value, str) or value not in names:
        raise ValueError(f"{name} must be {', '.join(names[:-1])} or {names[-1]}, not {value!r:.80}")
    return names.index(value)


def _set_direction(record: View, view: Any) -> None:
    if isinstance(view, str):
        name = view.encode(errors="replace")
        if b"\0" in name or library.zox_render_view_by_name(ctypes.byref(record), name) == BAD_ARGUMENT:
            raise ValueError(
                f"view {view!r:.80} is none of anterior, posterior, left, right, superior, inferior"
            )
        return
    if np.shape(view) == (2,):
        record.azimuth, record.elevation = numbers(view, "view", (2,))
        return
    if np.shape(view) != (3, 3):
        raise ValueError("view must be a name, (azimuth, elevation) in degrees, or three unit vectors")
    record.use_orientation = 1
    for row, vector in zip(record.orientation, numbers(view, "view", (3, 3))):
        row[:] = vector


def _set_size(record: View, size: Any) -> None:
    sides = (size, size) if isinstance(size, (int, np.integer)) else tuple(size)
    if len(sides) != 2:
        raise ValueError("size must be one number of pixels, or (width, height)")
    record.width, record.height = (c_integer(side, "size", 1, 8192) for side in sides)


def _set_slab(record: View, slab: Any) -> None:
    ends = (slab, slab) if np.ndim(slab) == 0 else tuple(slab)
    record.slab_near, record.slab_far = numbers(ends, "slab", (2,))


def build(
    view: Any,
    roll: Any,
    size: Any,
    slab: Any,
    window: Any,
    center: Any,
    names: dict[str, Any],
    numeric: dict[str, Any],
) -> View:
    """The record of a view; names and numeric are fields that need no more than a look. The library checks
    the ranges."""
    record = View()
    library.zox_render_view_init(ctypes.byref(record))
    _set_direction(record, view)
    _set_size(record, size)
    record.roll = number(roll, "roll")
    if slab is not None:
        _set_slab(record, slab)
    if window is not None:
        record.window_center, record.window_width = numbers(window, "window", (2,))
        if not record.window_width > 0:
            raise ValueError(f"the width of the window must be above 0, not {record.window_width}")
    if center is not None:
        record.use_center = 1
        record.center[:] = numbers(center, "center", (3,))
    for field, value in names.items():
        setattr(record, field, choice(value, field, _NAMES[field]))
    for field, value in numeric.items():
        if value is not None:
            setattr(record, field, number(value, field))
    return record
