"""The records and functions of libzox_render.so, as ctypes sees them."""

from __future__ import annotations

import ctypes
from ctypes import (
    CFUNCTYPE,
    POINTER,
    c_char_p,
    c_double,
    c_int,
    c_int32,
    c_int64,
    c_uint32,
    c_uint64,
    c_void_p,
)

from . import _library
from .kernels import _records as _kernels  # loads libzox_volume.so, on which the other stands

OK, BAD_ARGUMENT, NO_MEMORY, CANCELLED, EMPTY, FAILED = range(6)
NOTHING, NO_DEPTH = -32768, -(2**31)

PROGRESS = CFUNCTYPE(c_int, c_void_p, c_double)
_PARALLEL_FOR = c_void_p  # threads of the caller are not used here


class Run(ctypes.Structure):
    """zox_render_run."""

    _fields_ = [
        ("record_size", c_uint32),
        ("pool", c_void_p),
        ("parallel_for", _PARALLEL_FOR),
        ("parallel_for_user", c_void_p),
        ("progress", PROGRESS),
        ("progress_user", c_void_p),
    ]


class Array(ctypes.Structure):
    """zox_render_array."""

    _fields_ = [
        ("record_size", c_uint32),
        ("type", c_int32),
        ("size", c_int32 * 3),
        ("data", c_void_p),
        ("strides", c_int64 * 3),
        ("slices", c_void_p),
        ("axes", c_double * 3 * 3),
        ("origin", c_double * 3),
        ("positions", c_void_p),
        ("slope", c_double),
        ("intercept", c_double),
        ("whole_size", c_int32 * 3),
        ("first", c_int32 * 3),
        ("owned_first", c_int32 * 3),
        ("owned_size", c_int32 * 3),
        ("lowest", c_double),
        ("highest", c_double),
    ]


class VolumeOptions(ctypes.Structure):
    """zox_render_volume_options."""

    _fields_ = [
        ("record_size", c_uint32),
        ("layout", c_int32),
        ("precision", c_int32),
        ("copy", c_int32),
        ("bounds", c_int32),
        ("memory_limit", c_uint64),
    ]


class VolumeInfo(ctypes.Structure):
    """zox_render_volume_info."""

    _fields_ = [
        ("record_size", c_uint32),
        ("size", c_int32 * 3),
        ("layout", c_int32),
        ("bits", c_int32),
        ("copied", c_int32),
        ("regions", c_int32),
        ("sample_slope", c_double),
        ("sample_intercept", c_double),
        ("exact", c_int32),
        ("lowest", c_double),
        ("highest", c_double),
        ("center", c_double * 3),
        ("corners", c_double * 3 * 8),
        ("voxel_bytes", c_uint64),
        ("bounds_bytes", c_uint64),
    ]


class View(ctypes.Structure):
    """zox_render_view."""

    _fields_ = [
        ("record_size", c_uint32),
        ("width", c_int32),
        ("height", c_int32),
        ("azimuth", c_double),
        ("elevation", c_double),
        ("roll", c_double),
        ("use_orientation", c_int32),
        ("orientation", c_double * 3 * 3),
        ("projection", c_int32),
        ("field_of_view", c_double),
        ("zoom", c_double),
        ("pixel_size", c_double),
        ("use_center", c_int32),
        ("center", c_double * 3),
        ("step", c_double),
        ("interpolation", c_int32),
        ("reduction", c_int32),
        ("slab_near", c_double),
        ("slab_far", c_double),
        ("window_center", c_double),
        ("window_width", c_double),
        ("skip", c_int32),
    ]


class Geometry(ctypes.Structure):
    """zox_render_geometry."""

    _fields_ = [
        ("record_size", c_uint32),
        ("right", c_double * 3),
        ("up", c_double * 3),
        ("forward", c_double * 3),
        ("center", c_double * 3),
        ("pixel_size", c_double),
        ("eye_distance", c_double),
        ("step", c_double),
    ]


class PictureRecord(ctypes.Structure):
    """zox_render_picture."""

    _fields_ = [
        ("record_size", c_uint32),
        ("pixels", c_void_p),
        ("pixels_pitch", c_int64),
        ("samples", c_void_p),
        ("samples_pitch", c_int64),
        ("depths", c_void_p),
        ("depths_pitch", c_int64),
    ]


class Stats(ctypes.Structure):
    """zox_render_stats."""

    _fields_ = [
        ("record_size", c_uint32),
        ("samples", c_int64),
        ("samples_cast", c_int64),
        ("rays", c_int64),
        ("window_center", c_double),
        ("window_width", c_double),
        ("seconds", c_double),
        ("seconds_bounds", c_double),
        ("seconds_cast", c_double),
        ("seconds_window", c_double),
        ("threads", c_int32),
    ]


_INITS: dict[str, type[ctypes.Structure]] = {
    "zox_render_run_init": Run,
    "zox_render_array_init": Array,
    "zox_render_volume_options_init": VolumeOptions,
    "zox_render_volume_info_init": VolumeInfo,
    "zox_render_view_init": View,
    "zox_render_geometry_init": Geometry,
    "zox_render_picture_init": PictureRecord,
    "zox_render_stats_init": Stats,
}
_PROTOTYPES: dict[str, tuple[object, list[object]]] = {
    "zox_render_last_error": (c_char_p, []),
    "zox_render_version": (c_char_p, []),
    "zox_render_pool_create": (c_int, [c_int, POINTER(c_void_p)]),
    "zox_render_pool_destroy": (None, [c_void_p]),
    "zox_render_volume_create": (
        c_int,
        [POINTER(Array), POINTER(VolumeOptions), POINTER(Run), POINTER(c_void_p)],
    ),
    "zox_render_volume_destroy": (None, [c_void_p]),
    "zox_render_volume_get_info": (c_int, [c_void_p, POINTER(VolumeInfo)]),
    "zox_render_histogram": (c_int, [c_void_p, c_int, c_void_p]),
    "zox_render_percentile": (c_int, [c_void_p, c_double, POINTER(c_double)]),
    "zox_render_default_window": (c_int, [c_void_p, POINTER(c_double), POINTER(c_double)]),
    "zox_render_voxel": (c_int, [c_void_p, c_int32 * 3, POINTER(c_double)]),
    "zox_render_view_by_name": (c_int, [POINTER(View), c_char_p]),
    "zox_render_view_geometry": (c_int, [c_void_p, POINTER(View), POINTER(Geometry)]),
    "zox_render_locate": (
        c_int,
        [c_void_p, POINTER(View), c_double, c_double, c_int32, c_double * 3, c_double * 3],
    ),
    "zox_render": (c_int, [c_void_p, POINTER(View), POINTER(Run), POINTER(PictureRecord), POINTER(Stats)]),
}


def _load() -> ctypes.CDLL:
    library = _library.load("libzox_render.so")
    _library.require(library, [*_INITS, *_PROTOTYPES])
    for name, (result, arguments) in _PROTOTYPES.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    for name, record in _INITS.items():
        # Of a library with larger records, into room enough for any.
        room = (c_uint32 * 1024)()
        function = getattr(library, name)
        function.restype, function.argtypes = None, [c_void_p]
        function(room)
        if room[0] != ctypes.sizeof(record):
            raise ImportError(
                f"{library._name} is of another release than this zox_volume: "
                f"{name} sets {room[0]} bytes instead of {ctypes.sizeof(record)}"
            )
        function.argtypes = [POINTER(record)]
    return library


# Calls through it release the interpreter's lock.
library = _load()


def check(status: int) -> None:
    """Raises what a status other than OK stands for, with the library's sentence."""
    if status == OK:
        return
    sentence = library.zox_render_last_error().decode(errors="replace")
    kinds = {BAD_ARGUMENT: ValueError, EMPTY: ValueError, NO_MEMORY: MemoryError}
    raise kinds.get(status, RuntimeError)(sentence)
