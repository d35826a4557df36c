#!/usr/bin/env python3
"""A NumPy volume as a PNG: a spiral in a shell, its slices 1.5 mm apart.

    python3 numpy_to_png.py spiral.png
"""
import sys

import numpy as np

import zox_volume


def spiral() -> np.ndarray:
    """slice, row, column"""
    z, y, x = np.mgrid[-40:41, -60:61, -60:61].astype(np.float32)
    height = z * 1.5
    angle = height * 0.11
    wire = np.hypot(x - 35 * np.cos(angle), y - 35 * np.sin(angle))
    shell = np.abs(np.sqrt(x * x + y * y + height * height) - 56)
    return (900 * np.clip(6 - wire, 0, 4) / 4 + 250 * (shell < 2)).astype(np.int16)


def main() -> None:
    if len(sys.argv) != 2:
        sys.exit("usage: numpy_to_png.py PICTURE.png")
    volume = zox_volume.Volume(spiral(), spacing=(1, 1, 1.5))
    picture = volume.render((30, 20), size=(400, 400), window=(500, 1000), depth=True)
    picture.save(sys.argv[1])
    row, column = np.unravel_index(picture.argmax(), picture.shape)
    print(f"{volume.shape} voxels, the brightest pixel at {column}, {row}, {picture.depth[row, column]:.1f} mm deep")


main()
