"""Series of DICOM, by pydicom."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any

import numpy as np
from numpy.typing import NDArray

_EVEN = 1e-3  # share of the spacing by which slices may be beside their even places
_STRAIGHT = 0.05  # millimetres by which slices may be beside their common line


@dataclass
class _Slice:
    voxels: NDArray[Any]
    origin: NDArray[np.float64]
    orientation: NDArray[np.float64]  # along a row, along a column
    spacing: tuple[float, float]  # from column to column, from row to row
    thickness: float
    rescale: tuple[float, float]


def _tag(datasets: list[Any], name: str) -> Any:
    """The element of the first of the datasets that has it."""
    for dataset in datasets:
        if dataset is not None and name in dataset and dataset[name].value not in (None, ""):
            return dataset[name].value
    raise ValueError(f"it has no {name}")


def _optional(datasets: list[Any], name: str, default: float) -> float:
    try:
        return float(_tag(datasets, name))
    except ValueError:
        return default


def _slice(voxels: NDArray[Any], datasets: list[Any]) -> _Slice:
    orientation = np.array(_tag(datasets, "ImageOrientationPatient"), np.float64)
    if orientation.shape != (6,):
        raise ValueError("its ImageOrientationPatient is not six numbers")
    rows, columns = (float(value) for value in _tag(datasets, "PixelSpacing"))
    return _Slice(
        voxels,
        np.array(_tag(datasets, "ImagePositionPatient"), np.float64),
        orientation.reshape(2, 3),
        (columns, rows),
        _optional(datasets, "SliceThickness", 1.0),
        (_optional(datasets, "RescaleSlope", 1.0), _optional(datasets, "RescaleIntercept", 0.0)),
    )


def _group_items(groups: Any) -> list[Any]:
    """The first item of each sequence in a frame's functional groups."""
    if groups is None:
        return []
    return [element.value[0] for element in groups if element.VR == "SQ" and len(element.value)]


def _frames(dataset: Any) -> list[_Slice]:
    """Of a file with several frames."""
    per_frame = dataset.get("PerFrameFunctionalGroupsSequence")
    shared = dataset.get("SharedFunctionalGroupsSequence")
    if not per_frame:
        raise ValueError("it has several frames, but does not say where each lies")
    voxels = dataset.pixel_array
    if len(per_frame) != len(voxels):
        raise ValueError(f"it says where {len(per_frame)} of its {len(voxels)} frames lie")
    common = _group_items(shared[0] if shared else None)
    return [
        _slice(frame, [*_group_items(groups), *common, dataset]) for frame, groups in zip(voxels, per_frame)
    ]


def _datasets(pydicom: Any, path: str) -> list[Any]:
    if not os.path.isdir(path):
        return [pydicom.dcmread(path)]
    found = []
    for name in sorted(os.listdir(path)):
        file = os.path.join(path, name)
        if not os.path.isfile(file):
            continue
        try:
            dataset = pydicom.dcmread(file)
        except pydicom.errors.InvalidDicomError:
            continue
        if "PixelData" in dataset:
            found.append(dataset)
    if not found:
        raise ValueError("it holds no DICOM pictures")
    return found


def _slices(datasets: list[Any]) -> list[_Slice]:
    series = {str(dataset.get("SeriesInstanceUID", "")) for dataset in datasets}
    if len(series) > 1:
        raise ValueError(f"it holds {len(series)} series: give a folder with one")
    slices: list[_Slice] = []
    for dataset in datasets:
        if dataset.get("SamplesPerPixel", 1) != 1:
            raise ValueError("its pictures are in colour")
        if int(dataset.get("NumberOfFrames", 1) or 1) > 1:
            slices += _frames(dataset)
        else:
            slices.append(_slice(dataset.pixel_array, [dataset]))
    first = slices[0]
    for one in slices:
        if one.voxels.shape != first.voxels.shape or one.spacing != first.spacing:
            raise ValueError("its slices differ in size or spacing")
        if np.abs(one.orientation - first.orientation).max() > 1e-3:
            raise ValueError("its slices are not parallel")
    return slices


def _along(slices: list[_Slice]) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    """The third axis, a unit vector from the first slice to the last, and the slices' places along it."""
    first, last = slices[0], slices[-1]
    if len(slices) == 1:
        return np.cross(*first.orientation), np.zeros(1)
    axis = last.origin - first.origin
    axis /= np.linalg.norm(axis)
    offsets = np.array([one.origin - first.origin for one in slices])
    places = offsets @ axis
    if np.abs(offsets - np.outer(places, axis)).max() > _STRAIGHT:
        raise ValueError("its slices do not lie on a line")
    return axis, places


def _values(slices: list[_Slice]) -> tuple[NDArray[Any], float, float]:
    """Voxels, slope and intercept; where slices differ in these, their values."""
    rescales = {one.rescale for one in slices}
    if len(rescales) == 1:
        return np.stack([one.voxels for one in slices]), *rescales.pop()
    return np.stack([one.voxels * one.rescale[0] + one.rescale[1] for one in slices]), 1.0, 0.0


def read(pydicom: Any, path: str) -> tuple[NDArray[Any], dict[str, Any]]:
    """As files.read."""
    slices = _slices(_datasets(pydicom, path))
    normal = np.cross(*slices[0].orientation)
    slices.sort(key=lambda one: float(one.origin @ normal))
    heights = np.array([one.origin @ normal for one in slices])
    if len(slices) > 1 and np.diff(heights).min() < 1e-3:
        raise ValueError("several of its slices lie at one place")
    axis, places = _along(slices)
    voxels, slope, intercept = _values(slices)
    spacing = places[-1] / (len(slices) - 1) if len(slices) > 1 else slices[0].thickness or 1.0
    even = np.abs(places - spacing * np.arange(len(slices))).max() <= _EVEN * spacing
    return voxels, {
        "spacing": (*slices[0].spacing, spacing),
        "direction": np.stack([*slices[0].orientation, axis], axis=1),
        "origin": slices[0].origin,
        "positions": None if even else places,
        "slope": slope,
        "intercept": intercept,
    }
