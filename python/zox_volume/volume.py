"""Volumes, and pictures of them."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Sequence
from typing import Any, Literal

import numpy as np
from numpy.typing import ArrayLike

from . import _rendering, _views, _voxels
from ._measures import Measures
from ._render import View, VolumeInfo, VolumeOptions, check, library
from ._run import Progress
from ._views import Interpolation, Projection, Reduction
from .kernels.frame import c_integer
from .picture import Picture

Layout = Literal["auto", "bricks", "stack"]
Precision = Literal["auto", "voxel", "fine"]


class Volume(Measures):
    """A volume of scalars, ready to be rendered.

    array       voxels [slice, row, column], up to 2048 along each axis: integers of up to 32 bits, floats or
                bool, in any memory order
    spacing     millimetres from voxel to voxel along columns, rows and slices: x, y, z, the reverse of the
                array's axes
    direction   3 x 3, column a being the direction of axis x, y or z in the patient's frame, where x grows to
                the patient's left, y to the back and z to the head; left out, that frame's own axes. Axes may
                be skewed and left-handed
    origin      the centre of voxel (0, 0, 0), in millimetres
    positions   of uneven slices: the place of each along the third axis in millimetres, ascending, instead of
                the third spacing
    slope, intercept    a value is voxel * slope + intercept
    layout, precision   how the library keeps the voxels: auto, bricks or stack; auto, voxel or fine
    copy        False lets the volume refer to the array where it can; the array must then stay unchanged
    threads     None: all processors
    progress    is called with the share done, 0 to 1; what it raises cancels

    >>> ball = np.fromfunction(lambda z, y, x: 100 - np.hypot(np.hypot(x - 20, y - 20), z - 15), (30, 40, 40))
    >>> volume = Volume(ball.astype(np.int16), spacing=(0.7, 0.7, 1.5))
    >>> volume
    <Volume of 40 x 40 x 30 voxels, values 67 to 100>
    >>> picture = volume.render(view="left", size=64)
    >>> picture.shape, int(picture.max())
    ((64, 64), 255)
    """

    def __init__(
        self,
        array: ArrayLike,
        *,
        spacing: ArrayLike = (1.0, 1.0, 1.0),
        direction: ArrayLike | None = None,
        origin: ArrayLike = (0.0, 0.0, 0.0),
        positions: ArrayLike | None = None,
        slope: float = 1.0,
        intercept: float = 0.0,
        layout: Layout = "auto",
        precision: Precision = "auto",
        copy: bool = True,
        threads: int | None = None,
        progress: Progress | None = None,
    ) -> None:
        voxels = _voxels.plain_voxels(array)
        record, kept = _voxels.build(voxels, spacing, direction, origin, positions, slope, intercept)
        options = VolumeOptions()
        library.zox_render_volume_options_init(ctypes.byref(options))
        options.layout = _views.choice(layout, "layout", ("auto", "bricks", "stack"))
        options.precision = _views.choice(precision, "precision", ("auto", "voxel", "fine"))
        options.copy = bool(copy)
        self._handle = ctypes.c_void_p()
        _rendering.create(self, record, options, None if copy else kept, threads, progress)
        self._info = VolumeInfo()
        library.zox_render_volume_info_init(ctypes.byref(self._info))
        check(library.zox_render_volume_get_info(self._handle, ctypes.byref(self._info)))

    @staticmethod
    def from_file(path: str | os.PathLike[str], **options: Any) -> Volume:
        """A volume of a file: DICOM (a folder with one series, or a file) by pydicom; NIfTI and what else
        nibabel reads by nibabel. options: layout, precision, threads and progress, as above. ImportError if
        the package that is needed is not installed; ValueError if the file holds no volume."""
        from . import files

        voxels, geometry = files.read(os.fspath(path))
        return Volume(voxels, **geometry, **options)

    def __repr__(self) -> str:
        columns, rows, slices = self._info.size
        low, high = self.lowest, self.highest
        return f"<Volume of {columns} x {rows} x {slices} voxels, values {low:g} to {high:g}>"

    def render(
        self,
        view: _views.Direction = "anterior",
        *,
        size: int | Sequence[int] = 512,
        slab: float | Sequence[float] | None = None,
        window: Sequence[float] | None = None,
        projection: Projection = "perspective",
        reduction: Reduction = "maximum",
        interpolation: Interpolation = "trilinear",
        roll: float = 0.0,
        zoom: float = 1.0,
        pixel_size: float | None = None,
        field_of_view: float = 30.0,
        center: Sequence[float] | None = None,
        step: float = 1.0,
        depth: bool = False,
        values: bool = False,
        threads: int | None = None,
        progress: Progress | None = None,
    ) -> Picture:
        """A picture of the volume: an array of display bytes [row, column] that a notebook shows.

        view          anterior, posterior, left, right, superior or inferior; or (azimuth, elevation) in
                      degrees: where the viewer stands, (0, 0) before the face, (90, 0) at the patient's left,
                      (0, 90) above the head; or three unit vectors: to the right of the picture, up in it, and
                      into it
        size          pixels, one number or (width, height), up to 8192
        slab          (near, far): only what lies so many millimetres behind the centre counts (negative:
                      before it); one number: the slice at that depth
        window        (centre, width) in values; left out, `default_window`
        projection    perspective or orthographic
        reduction     what becomes of the samples of a ray: maximum, minimum, mean or largest_magnitude
        interpolation trilinear or nearest
        roll          turns the picture's up clockwise, in degrees
        zoom          1 lets the volume just fit, 2 shows everything twice as large
        pixel_size    instead of zoom: millimetres a pixel
        field_of_view degrees that the longer side of the picture spans, in perspective
        center        millimetres, what stands in the middle; left out, the middle of the volume
        step          from sample to sample, in the smallest spacing
        depth, values give the picture its depth and values
        threads       None: all processors
        progress      is called with the share done, 0 to 1; what it raises cancels, as the interrupt key does

        ValueError tells what is wrong with an argument, also if the view holds no sample at all.

        >>> array = np.zeros((20, 20, 20), np.uint8)
        >>> array[5, 10, 15] = 200
        >>> picture = Volume(array).render("anterior", projection="orthographic", size=20, pixel_size=1,
        ...                                center=(10, 10, 10), window=(100, 200), depth=True, values=True)
        >>> row, column = np.unravel_index(picture.argmax(), picture.shape)
        >>> picture.values[row, column] <= 200
        True
        """
        names = {"projection": projection, "interpolation": interpolation, "reduction": reduction}
        numeric = {"zoom": zoom, "pixel_size": pixel_size, "field_of_view": field_of_view, "step": step}
        record = _views.build(view, roll, size, slab, window, center, names, numeric)
        return _rendering.render(self, record, bool(depth), bool(values), threads, progress)

    def spin(
        self,
        frames: int = 36,
        view: _views.Direction = "anterior",
        *,
        threads: int | None = None,
        progress: Progress | None = None,
        **options: Any,
    ) -> Picture:
        """Pictures [frame, row, column] of a whole turn about the patient's axis, beginning with view, a
        name or (azimuth, elevation); a notebook shows them as an animation. options: as in `render`, but
        depth and values.

        >>> Volume(np.arange(1000.0).reshape(10, 10, 10)).spin(4, size=(30, 20)).shape
        (4, 20, 30)
        """
        count = c_integer(frames, "frames", 1, 65535)
        named = View()
        library.zox_render_view_init(ctypes.byref(named))
        _views._set_direction(named, view)
        if named.use_orientation:
            raise ValueError("a spin begins with the name of a view or (azimuth, elevation)")
        if {"depth", "values"} & options.keys():
            raise TypeError("a spin gives neither depth nor values")
        pictures: list[Picture] = []

        def tell(share: float) -> None:
            if progress is not None:
                progress((len(pictures) + share) / count)

        for index in range(count):
            angles = (named.azimuth + 360.0 * index / count, named.elevation)
            pictures.append(self.render(angles, threads=threads, progress=progress and tell, **options))
        spin = np.stack([np.asarray(picture) for picture in pictures]).view(Picture)
        spin.window = pictures[0].window
        return spin
