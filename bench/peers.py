#!/usr/bin/env python3
"""Times SciPy's map_coordinates on oblique 8x8-ray tiles of a 256-voxel cube: rows of a table."""

import statistics
import time

import numpy
import scipy
from scipy.ndimage import map_coordinates

EDGE, IMAGE, ROUNDS = 256, 512, 5
FORWARD, RIGHT, DOWN = map(numpy.array, ((0.48, 0.6, 0.64), (0.8, 0, -0.6), (-0.36, 0.8, -0.48)))


def tile_points(column, row):
    """All samples of one tile, one voxel apart, that lie inside the cube; as z, y, x."""
    middle, pixel = (EDGE - 1) / 2, (EDGE - 1) / IMAGE
    across, down, depth = numpy.meshgrid(numpy.arange(8) + column + 0.5, numpy.arange(8) + row + 0.5,
                                         numpy.arange(-EDGE, EDGE), indexing="ij")
    points = (middle + ((across - IMAGE / 2) * pixel)[..., None] * RIGHT +
              ((down - IMAGE / 2) * pixel)[..., None] * DOWN + depth[..., None] * FORWARD).reshape(-1, 3)
    inside = ((points >= 0) & (points < EDGE - 1)).all(axis=1)
    return points[inside][:, ::-1].T.copy()


def main():
    tiles = [tile_points(40 + 80 * i, 40 + 80 * j) for i in range(6) for j in range(6)]
    samples = sum(tile.shape[1] for tile in tiles)
    random = numpy.random.default_rng(1)
    for name, dtype in (("8U", numpy.uint8), ("16S", numpy.int16)):
        volume = random.integers(0, 256, (EDGE, EDGE, EDGE)).astype(dtype)
        for sampling, order in (("nearest", 0), ("trilinear", 1)):
            seconds = []
            for _ in range(ROUNDS):
                start = time.thread_time()
                for tile in tiles:
                    map_coordinates(volume, tile, order=order, prefilter=False)
                seconds.append(time.thread_time() - start)
            print(f"| {sampling} {name} | SciPy {scipy.__version__}, map_coordinates | "
                  f"{statistics.median(seconds) * 1e9 / samples:.3g} |")


if __name__ == "__main__":
    main()
