"""Volumes of files, by nibabel and pydicom: voxels, and where they lie in the patient's frame."""

from __future__ import annotations

import importlib
import os
from typing import Any

import numpy as np
from numpy.typing import NDArray

from . import _dicom

Geometry = dict[str, Any]

_MILLIMETRES = {"meter": 1000.0, "mm": 1.0, "micron": 0.001, "unknown": 1.0}


def _package(name: str, path: str) -> Any:
    try:
        return importlib.import_module(name)
    except ImportError:
        raise ImportError(f"zox_volume needs {name} to read {path}: install {name}") from None


def _is_dicom(path: str) -> bool:
    if os.path.isdir(path) or path.lower().endswith((".dcm", ".ima")):
        return True
    with open(path, "rb") as file:
        return file.read(132)[128:] == b"DICM"


def _of_nibabel(nibabel: Any, path: str) -> tuple[NDArray[Any], Geometry]:
    image = nibabel.load(path)
    shape = tuple(image.shape)
    while len(shape) > 3 and shape[-1] == 1:
        shape = shape[:-1]
    if len(shape) != 3:
        raise ValueError(f"it holds an array of shape {image.shape}, not one volume")
    stored, slope, intercept = image.dataobj, 1.0, 0.0
    if hasattr(stored, "get_unscaled"):
        slope, intercept = float(stored.slope), float(stored.inter)
        stored = stored.get_unscaled()
    voxels = np.asarray(stored).reshape(shape)
    if voxels.dtype.kind not in "biuf":
        raise ValueError(f"its voxels are {voxels.dtype}, not numbers")
    if image.affine is None:
        raise ValueError("it does not say where its voxels lie")
    unit = 1.0
    if hasattr(image.header, "get_xyzt_units"):
        unit = _MILLIMETRES.get(image.header.get_xyzt_units()[0], 1.0)
    # nibabel's x grows to the right and y to the front, the patient frame's to the left and to the back.
    to_patient = np.diag([-unit, -unit, unit]) @ np.asarray(image.affine, np.float64)[:3]
    lengths = np.linalg.norm(to_patient[:, :3], axis=0)
    if not (np.isfinite(to_patient).all() and (lengths > 0).all()):
        raise ValueError("its affine matrix is not valid")
    geometry = {
        "spacing": lengths,
        "direction": to_patient[:, :3] / lengths,
        "origin": to_patient[:, 3],
        "slope": slope,
        "intercept": intercept,
    }
    return voxels.transpose(2, 1, 0), geometry


def read(path: str) -> tuple[NDArray[Any], Geometry]:
    """Voxels [slice, row, column], and Volume's arguments that say where they lie and what they mean."""
    if not os.path.exists(path):
        raise FileNotFoundError(f"{path} does not exist")
    dicom = _is_dicom(path)
    package = _package("pydicom" if dicom else "nibabel", path)
    try:
        return _dicom.read(package, path) if dicom else _of_nibabel(package, path)
    except (PermissionError, MemoryError):
        raise
    except Exception as error:  # whatever a damaged file makes the readers raise
        raise ValueError(f"{path} cannot be read as a volume: {error}") from error
