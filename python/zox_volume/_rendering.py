"""The calls that make volumes and pictures."""

from __future__ import annotations

import ctypes
import weakref
from typing import Any

import numpy as np

from . import _run
from ._render import NO_DEPTH, NOTHING, Array, PictureRecord, Run, View, VolumeOptions, library
from ._render import Stats as _StatsRecord
from ._run import Progress
from .picture import Picture, Scene, Stats


def _destroy(handle: ctypes.c_void_p, _kept: object) -> None:
    library.zox_render_volume_destroy(handle)


def create(
    volume: Any,
    array: Array,
    options: VolumeOptions,
    kept: object,
    threads: int | None,
    progress: Progress | None,
) -> None:
    """Makes volume._handle, which goes when the volume does; kept stays as long."""

    def call(run: Run) -> int:
        pointers = [ctypes.byref(one) for one in (array, options, run, volume._handle)]
        status: int = library.zox_render_volume_create(*pointers)
        if status == 0:
            weakref.finalize(volume, _destroy, volume._handle, kept).atexit = False
        return status

    _run.call(call, threads, progress)


def render(
    volume: Any, view: View, depth: bool, values: bool, threads: int | None, progress: Progress | None
) -> Picture:
    """A picture of volume, with what was asked for."""
    shape = view.height, view.width
    scene = Scene(volume, view)
    picture = np.empty(shape, np.uint8).view(Picture)
    samples = np.empty(shape, np.int16) if values else None
    depths = np.empty(shape, np.int32) if depth else None
    record, stats = PictureRecord(), _StatsRecord()
    library.zox_render_picture_init(ctypes.byref(record))
    library.zox_render_stats_init(ctypes.byref(stats))
    record.pixels = picture.ctypes.data
    record.samples = None if samples is None else samples.ctypes.data
    record.depths = None if depths is None else depths.ctypes.data

    def call(run: Run) -> int:
        pointers = [ctypes.byref(one) for one in (view, run, record, stats)]
        status: int = library.zox_render(volume._handle, *pointers)
        return status

    _run.call(call, threads, progress)
    picture.scene, picture.geometry = scene, scene.geometry
    picture.window = stats.window_center, stats.window_width
    picture.stats = Stats(stats.samples, stats.samples_cast, stats.rays, stats.seconds, stats.threads)
    if depths is not None:
        picture.depth = np.where(depths == NO_DEPTH, np.nan, depths * scene.geometry.step)
    if samples is not None:
        of_values = samples * volume._info.sample_slope + volume._info.sample_intercept
        picture.values = np.where(samples == NOTHING, np.nan, of_values)
    return picture
