#!/usr/bin/env python3
"""Slices at known millimetres, right to the pixel: the picture's rows and columns are millimetres too, and what
each must show follows from the two alone.

    known_distances.py ZOX-MIP
"""
import sys
import tempfile
from pathlib import Path

import numpy

from helpers import Report, run, write_raw
from make_series import make

ROWS, COLUMNS = 96, 6
FIRST = numpy.array([-50.0, -60.0, -70.0])  # where make_series.py puts the first pixel
SIDE = 400
NO_SAMPLE = -32768

CASES = {  # millimetres of every slice along the normal, degrees of tilt, further words
    "1.5 mm": (1.5 * numpy.arange(24), 0, []),
    "3 mm": (3.0 * numpy.arange(14), 0, []),
    "1.5 mm, then 3 mm": (numpy.r_[1.5 * numpy.arange(9), 12 + 3.0 * numpy.arange(1, 8)], 0, []),
    "3 mm, then 1.5 mm": (numpy.r_[3.0 * numpy.arange(7), 18 + 1.5 * numpy.arange(1, 10)], 0, []),
    "a slice missing": (numpy.delete(1.5 * numpy.arange(24), 9), 0, []),
    "slices missing at both ends": (numpy.delete(1.5 * numpy.arange(24), [1, 2, 21]), 0, []),
    "tilted": (1.5 * numpy.arange(24), 15, []),
    "tilted the other way": (1.5 * numpy.arange(24), -22.5, []),
    "tilted, a slice missing": (numpy.delete(1.5 * numpy.arange(24), 12), 15, []),
    "duplicated": (1.5 * numpy.arange(24), 0, ["--duplicate", "0,7,8"])}


def series(folder, heights, tilt, voxels, words):
    raw = write_raw(folder.with_suffix(".raw"), voxels)
    make(folder, "--raw", raw, "--size", f"{COLUMNS},{ROWS},{len(heights)}", "--spacing", "1,1,1.5",
         "--heights", ",".join(map(str, heights)), "--tilt", tilt, *words)
    return folder


def seen_from_the_left(program, folder, heights, interpolation, pixel):
    """Samples before the window, the y of its columns and the z of its rows, in millimetres."""
    middle = FIRST + [2.5, 47.3, heights[-1] / 2]
    out = folder.with_suffix(".npy")
    done = run(program, folder, "-o", folder.with_suffix(".png"), "--raw", out, "--view", "left", "--projection",
               "orthographic", "--interpolation", interpolation, "--size", f"{SIDE}x{SIDE}", "--quiet",
               "--step", "0.5", "--center=" + ",".join(map(str, middle)))
    if done.returncode != 0:
        sys.exit(done.stderr)
    off = (numpy.arange(SIDE) + 0.5 - SIDE / 2) * pixel
    return numpy.load(out), middle[1] + off, middle[2] - off


def pixel_size(heights, tilt):
    """The box, half a voxel and half a slice more on either side, just fits: its width counts, since it is wider than high."""
    slant = abs(numpy.tan(numpy.radians(tilt))) * (heights[-1] + 1.5)
    return (ROWS + slant) / SIDE


def slice_and_row(y, z, heights, tilt):
    """Of each pixel the nearest slice and row, and whether they are so by more than a thousandth of a voxel."""
    height = (z - FIRST[2])[:, None] + 0 * y[None, :]
    row = y[None, :] - FIRST[1] - numpy.tan(numpy.radians(tilt)) * height
    distance = abs(height[..., None] - heights)
    nearest = distance.argmin(-1)
    two = numpy.sort(distance, -1)[..., :2]
    clear = (two[..., 1] - two[..., 0] > 2e-3) & (abs(row - numpy.floor(row) - 0.5) > 1e-3)
    inside = (height > 1e-3) & (height < heights[-1] - 1e-3) & (row > 1e-3) & (row < ROWS - 1 - 1e-3)
    return nearest, numpy.floor(row + 0.5).astype(int), clear & inside


def check_markers(report, program, place, name, heights, tilt, words):
    """One bright voxel in every slice, each in another row."""
    voxels = numpy.zeros((len(heights), ROWS, COLUMNS))
    rows = (17 * numpy.arange(len(heights)) + 5) % ROWS
    for k, row in enumerate(rows):
        voxels[k, row, 2 + k % 3] = 100 + k
    folder = series(place / "markers", heights, tilt, voxels, words)
    shown, y, z = seen_from_the_left(program, folder, heights, "nearest", pixel_size(heights, tilt))
    nearest, row, sure = slice_and_row(y, z, heights, tilt)
    expected = numpy.where(rows[nearest] == row, 100 + nearest, 0)
    wrong = int((shown[sure] != expected[sure]).sum())
    seen = len(set(shown[sure]) - {0})
    report.check(wrong == 0, f"{name}: {wrong} of {int(sure.sum())} pixels do not show what lies there")
    report.check(seen >= len(heights) - 2 and sure.sum() > 5000, f"{name}: {seen} of {len(heights)} markers seen")


def check_ramp(report, program, place, name, heights, tilt, words, axis):
    """Voxels that say where they are, in tenths of a millimetre: between them too, since all is linear."""
    slices, rows = numpy.meshgrid(heights, numpy.arange(ROWS), indexing="ij")
    along = slices if axis == "z" else rows + numpy.tan(numpy.radians(tilt)) * slices
    voxels = numpy.repeat(numpy.rint(10 * along)[..., None], COLUMNS, -1)
    folder = series(place / f"ramp-{axis}", heights, tilt, voxels, words)
    shown, y, z = seen_from_the_left(program, folder, heights, "trilinear", pixel_size(heights, tilt))
    _, _, sure = slice_and_row(y, z, heights, tilt)
    there = (z - FIRST[2])[:, None] + 0 * y if axis == "z" else (y - FIRST[1])[None, :] + 0 * z[:, None]
    off = abs(shown - 10 * there)[sure].max()
    # Voxels are rounded to a twentieth of a millimetre, samples to a tenth.
    report.check(off <= 1.6, f"{name}: the ramp along {axis} is off by {off / 10:.2f} mm")


def main():
    report = Report()
    for name, (heights, tilt, words) in CASES.items():
        with tempfile.TemporaryDirectory() as place:
            case = (report, sys.argv[1], Path(place), name, heights, tilt, words)
            check_markers(*case)
            check_ramp(*case, "z")
            check_ramp(*case, "y")
    report.finish("pictures show slices where they are")


if __name__ == "__main__":
    main()
