"""The records and functions of libzox_volume.so, as ctypes sees them."""

from __future__ import annotations

import ctypes
from ctypes import POINTER, c_char_p, c_int, c_int32, c_void_p

from .. import _library


class VolumeRecord(ctypes.Structure):
    """zox_Volume: 56 bytes."""

    _fields_ = [
        ("data", c_void_p),  # or slices
        ("size", c_int32),
        ("rowoffs", c_void_p),
        ("nslices", c_int32),
        ("nregions", c_int32),
        ("regslice", c_void_p),
        ("regbounds", c_void_p),
        ("regscale", c_void_p),
    ]


class RaysRecord(ctypes.Structure):
    """zox_Rays: 40 bytes."""

    _fields_ = [
        ("planes", c_void_p),
        ("nrays", c_int32),
        ("starts", c_void_p),
        ("steps", c_void_p),
        ("nsamples", c_void_p),
    ]


assert ctypes.sizeof(VolumeRecord) == 56 and ctypes.sizeof(RaysRecord) == 40

NO_ERROR, BAD_PARAM, NO_MEMORY = 0, 1, 2

RAY_CASTERS = [
    f"zox_Volume_RayCast_{layout}_{projection}_{sampling}"
    for layout in ("Blocked", "General")
    for projection in ("Divergent", "Parallel")
    for sampling in (
        "Nearest_8U",
        "Nearest_16S",
        "Trilinear_8U",
        "Trilinear_16S",
        "Nearest_Bit_8U",
    )
    if layout == "General" or sampling != "Nearest_Bit_8U"
]

_rays = [POINTER(RaysRecord)]
_PROTOTYPES: dict[str, tuple[object, list[object]]] = {
    "zox_GetStringStatus": (c_char_p, [c_int]),
    "zox_GetVersion": (c_char_p, []),
    "zox_GetNumThreads": (c_int, [POINTER(c_int)]),
    "zox_SetNumThreads": (c_int, [c_int]),
    "zox_Malloc": (c_void_p, [c_int]),
    "zox_Free": (None, [c_void_p]),
    "zox_AlignPointer": (c_void_p, [c_void_p, c_int]),
    "zox_Volume_WindowLevel_16S_8U": (
        c_int,
        [c_void_p, c_void_p, c_int, c_int, c_int, c_int, c_int],
    ),
}
for _name in RAY_CASTERS:
    _PROTOTYPES[_name] = (c_int, [POINTER(VolumeRecord), POINTER(RaysRecord)])
for _type in ("8U", "16S"):
    _PROTOTYPES[f"zox_Volume_FindMax_{_type}"] = (c_int, [*_rays, c_void_p])
    _PROTOTYPES[f"zox_Volume_FindMaxBMask_{_type}"] = (
        c_int,
        [*_rays, c_void_p, c_void_p],
    )
    _PROTOTYPES[f"zox_Volume_FindMaxCMask_{_type}"] = (
        c_int,
        [*_rays, c_void_p, c_int, c_void_p],
    )


def _load() -> ctypes.CDLL:
    library = _library.load("libzox_volume.so")
    _library.require(library, [*_PROTOTYPES, "zoxid", "zox_nthreads"])
    for name, (result, arguments) in _PROTOTYPES.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


# Calls through it release the interpreter's lock.
library = _load()
