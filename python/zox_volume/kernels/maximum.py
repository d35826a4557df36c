"""The largest sample of every ray.

Every function takes

    planes    [sample, ray], uint8 for functions in _8u and int16 for those in _16s, the rays side by side
    nsamples  the number of samples: one a ray, one for all, or None for all planes
    out       an array of one value a ray to write instead of a new one

and returns the maxima: 0 (8u) or -32768 (16s) for rays without a sample that counts. Where an argument is not
what it must be, ValueError or TypeError tells why, and nothing has been written.

>>> planes = np.array([[1, 5], [9, 2], [3, 7]], np.uint8)
>>> find_max_8u(planes)
array([9, 7], dtype=uint8)
>>> find_max_8u(planes, [1, 0])
array([1, 0], dtype=uint8)
>>> find_max_bmask_8u(planes, np.packbits([1, 0, 0]))
array([1, 5], dtype=uint8)
>>> find_max_cmask_8u(planes, np.array([0, 10, 20], np.uint8), 10)
array([3, 7], dtype=uint8)
"""

from __future__ import annotations

from ctypes import byref
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._batch import _sample_counts, addresses, check_output, check_planes
from ._records import RaysRecord, library
from .frame import c_integer

U8 = NDArray[np.uint8]
I16 = NDArray[np.int16]


def _mask_bytes(mask: object, needed: int) -> NDArray[np.uint8]:
    if not isinstance(mask, np.ndarray) or mask.dtype != np.uint8 or mask.ndim != 1:
        raise TypeError("mask must be an array of one axis of uint8")
    if len(mask) < needed:
        raise ValueError(f"mask must have at least {needed} bytes, not {len(mask)}")
    return np.array(mask, order="C")


def _find_max(
    name: str,
    planes: object,
    nsamples: ArrayLike | None,
    out: object,
    mask: object = None,
    threshold: int = 0,
) -> NDArray[Any]:
    dtype = np.dtype(np.uint8 if name.endswith("8U") else np.int16)
    if not isinstance(planes, np.ndarray):
        raise TypeError(f"planes must be a NumPy array, not {type(planes).__name__}")
    array = np.asarray(planes)
    check_planes(array, dtype, "planes")
    counts = _sample_counts(len(array) if nsamples is None else nsamples, array.shape[1])
    longest = int(counts.max()) if len(counts) else 0
    if longest > len(array):
        raise ValueError(f"nsamples must be at most {len(array)}, the number of planes, not {longest}")
    arguments: list[object] = []
    selection = None
    if "Mask" in name:
        selection = _mask_bytes(mask, -(-longest // 8) if "BMask" in name else longest)
        arguments.append(selection.ctypes.data)
    if "CMask" in name:
        arguments.append(c_integer(threshold, "threshold", 0, 255))
    maxima = np.empty(len(counts), dtype) if out is None else check_output(out, [array])
    if maxima.dtype != dtype or maxima.shape != counts.shape or not maxima.flags.carray:
        raise ValueError(f"out must be a contiguous array of {len(counts)} {dtype}")
    tables = addresses(array)
    record = RaysRecord(planes=tables.ctypes.data, nrays=len(counts), nsamples=counts.ctypes.data)
    getattr(library, f"zox_Volume_{name}")(byref(record), *arguments, maxima.ctypes.data)
    return maxima


def find_max_8u(planes: U8, nsamples: ArrayLike | None = None, out: U8 | None = None) -> U8:
    """The largest of each ray's samples."""
    return _find_max("FindMax_8U", planes, nsamples, out)


def find_max_16s(planes: I16, nsamples: ArrayLike | None = None, out: I16 | None = None) -> I16:
    """The largest of each ray's samples."""
    return _find_max("FindMax_16S", planes, nsamples, out)


def find_max_bmask_8u(planes: U8, mask: U8, nsamples: ArrayLike | None = None, out: U8 | None = None) -> U8:
    """The largest of the samples k whose bit in mask is set: bit 7 - k % 8 of mask[k // 8], as numpy.packbits
    packs them."""
    return _find_max("FindMaxBMask_8U", planes, nsamples, out, mask)


def find_max_bmask_16s(
    planes: I16, mask: U8, nsamples: ArrayLike | None = None, out: I16 | None = None
) -> I16:
    """The largest of the samples k whose bit in mask is set: bit 7 - k % 8 of mask[k // 8], as numpy.packbits
    packs them."""
    return _find_max("FindMaxBMask_16S", planes, nsamples, out, mask)


def find_max_cmask_8u(
    planes: U8,
    mask: U8,
    threshold: int,
    nsamples: ArrayLike | None = None,
    out: U8 | None = None,
) -> U8:
    """The largest of the samples k whose mask[k] is greater than threshold, 0 to 255."""
    return _find_max("FindMaxCMask_8U", planes, nsamples, out, mask, threshold)


def find_max_cmask_16s(
    planes: I16,
    mask: U8,
    threshold: int,
    nsamples: ArrayLike | None = None,
    out: I16 | None = None,
) -> I16:
    """The largest of the samples k whose mask[k] is greater than threshold, 0 to 255."""
    return _find_max("FindMaxCMask_16S", planes, nsamples, out, mask, threshold)
