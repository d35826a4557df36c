"""ZOX Volume: exact pictures of scalar volumes, and the ray casting beneath them, on NumPy arrays.

    Volume     a volume of an array or a file; render() and spin() make pictures of it
    Picture    a rendering: an array of display bytes that a notebook shows as a picture
    kernels    every operation of the kernel library, arrays in, planes out

>>> import numpy as np
>>> array = np.random.default_rng(1).integers(0, 1000, (40, 50, 60), np.int16)  # slice, row, column
>>> volume = Volume(array, spacing=(0.5, 0.5, 1.2))
>>> volume.render("left", slab=(-5, 5), size=(320, 240)).shape
(240, 320)
"""

from . import kernels
from ._version import VERSION as __version__
from .picture import Geometry, Picture, Stats
from .volume import Volume

__all__ = ["Geometry", "Picture", "Stats", "Volume", "__version__", "kernels"]
