#!/usr/bin/env python3
"""A series gives the picture of its plain volume, byte for byte, however it is stored, named, ordered, tilted or
gapped.

    same_picture.py ZOX-MIP [--raw FILE --size X,Y,Z --spacing X,Y,Z --flip-rows] [--keep FOLDER]

Without --raw the volume is the phantom in voxels twice as large. --keep leaves the pictures in a folder.
"""
import argparse
import random
import tempfile
from pathlib import Path

import numpy

from helpers import Report, phantom, picture, run, straight, write_nrrd, write_raw
from make_series import make

# Storage and naming: the picture cannot depend on it.
STORED = {
    "shuffled": [], "other-names": ["--seed", "7"], "implicit": ["--syntax", "implicit"],
    "big-endian": ["--syntax", "big"], "rle": ["--syntax", "rle"], "jpeg-lossless": ["--syntax", "jpeg"],
    "jpeg-ls": ["--syntax", "jpegls"], "jpeg-2000": ["--syntax", "j2k"], "multi-frame": ["--multiframe"],
    "multi-frame-rle": ["--multiframe", "--syntax", "rle"], "duplicated": ["--duplicate", "0,3,20,21"],
    "twelve-bits": ["--bits", "12", "--unsigned", "--intercept", "-1100"]}
VIEWS = {"front": ["--view", "front"], "oblique": ["--view", "30,20"],
         "above": ["--view", "top", "--projection", "orthographic"]}


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--raw", type=Path)
    parser.add_argument("--size", type=lambda text: [int(n) for n in text.split(",")])
    parser.add_argument("--spacing", type=lambda text: [float(n) for n in text.split(",")])
    parser.add_argument("--flip-rows", action="store_true")
    parser.add_argument("--keep", type=Path)
    return parser.parse_args()


def volume_of(options):
    if not options.raw:
        return phantom(coarse=2)
    x, y, z = options.size
    voxels = numpy.fromfile(options.raw, dtype="<i2").reshape(z, y, x)
    return (voxels[:, ::-1] if options.flip_rows else voxels), options.spacing


class Comparison:
    def __init__(self, options, place):
        self.program, self.place, self.report = options.program, place, Report()
        self.voxels, self.spacing = volume_of(options)
        self.pictures = options.keep or place / "pictures"
        self.pictures.mkdir(parents=True, exist_ok=True)
        self.window = ["--window", "skull" if options.raw else "500,1000"]

    def series(self, name, voxels, *words):
        raw = write_raw(self.place / "voxels.raw", voxels)
        folder = self.place / name
        size = ",".join(str(n) for n in reversed(voxels.shape))
        make(folder, "--raw", raw, "--size", size, "--spacing", ",".join(map(str, self.spacing)), *words)
        return folder

    def compare(self, name, inputs, plain, views=None, more=()):
        for view, words in (views or VIEWS).items():
            words = ["--size", "200x200", *self.window, *words, *more]
            one = picture(self.program, self.pictures / f"{name}-{view}.png", *inputs, *words)
            two = picture(self.program, self.pictures / f"{name}-{view}-plain.png", plain, *words)
            self.report.check(one == two, f"{name}, {view}: the pictures differ")

    def plain(self, name, voxels, axes=None):
        return write_nrrd(self.place / f"{name}.nrrd", voxels, straight(self.spacing) if axes is None else axes)


def compare_stored(compared):
    plain = compared.plain("plain", compared.voxels)
    for name, words in STORED.items():
        # Rescaled, samples between voxels are rounded elsewhere: there voxels themselves are compared.
        more = ["--interpolation", "nearest"] if name == "twelve-bits" else []
        kept = numpy.maximum(compared.voxels, -1100) if name == "twelve-bits" else compared.voxels
        kept = numpy.minimum(kept, 2900) if name == "twelve-bits" else kept
        folder = compared.series(name, kept, *words)
        volume = plain if kept is compared.voxels else compared.plain(name, kept)
        compared.compare(name, [folder], volume, more=more)
    files = sorted((compared.place / "shuffled").iterdir())
    random.Random(3).shuffle(files)
    compared.compare("list", files, plain, {"oblique": VIEWS["oblique"]})
    compared.compare("file-of-a-series", files[:1], plain, {"oblique": VIEWS["oblique"]})


def compare_tilted(compared):
    """The slices of a tilted gantry are those of a volume with a skewed third axis."""
    apart, tilt = compared.spacing[2], 17.5
    folder = compared.series("tilted", compared.voxels, "--tilt", tilt)
    # Positions have six decimals; the axis leads from the first slice to the last.
    last = (len(compared.voxels) - 1) * apart
    y = round(numpy.tan(numpy.radians(tilt)) * last, 6)
    axes = straight(compared.spacing)
    axes[2] = numpy.array([0, y, last]) / (len(compared.voxels) - 1)
    compared.compare("tilted", [folder], compared.plain("tilted", compared.voxels, axes))


def compare_gapped(compared):
    """Of a gap of three distances the nearest slice shows one and a half on either side: two slices are missing,
    and the plain volume has its neighbours twice. From above every slice counts, however wide its gap."""
    filled, missing = compared.voxels.copy(), []
    for first in (len(filled) // 5, len(filled) // 2, len(filled) - 6):
        filled[first], filled[first + 1] = filled[first - 1], filled[first + 2]
        missing += [first, first + 1]
    folder = compared.series("gapped", compared.voxels, "--omit", ",".join(map(str, missing)))
    done = run(compared.program, folder, "-o", compared.place / "told.png", "--size", "20x20")
    compared.report.check("6 slices seem to be missing" in done.stderr, "gapped: said " + done.stderr)
    compared.compare("gapped", [folder], compared.plain("gapped", filled),
                     {"left": ["--view", "left"], "oblique": ["--view", "30,20"], "above": ["--view", "top"]},
                     ["--interpolation", "nearest", "--projection", "orthographic"])


def compare_twice_as_wide(compared):
    """Every second slice, told as slices twice as far apart."""
    axes = straight(compared.spacing)
    axes[2] *= 2
    omitted = ",".join(str(k) for k in range(1, len(compared.voxels), 2))
    folder = compared.series("wide", compared.voxels, "--omit", omitted)
    compared.compare("wide", [folder], compared.plain("wide", compared.voxels[::2], axes))


def main():
    options = arguments()
    with tempfile.TemporaryDirectory() as place:
        compared = Comparison(options, Path(place))
        compare_stored(compared)
        compare_tilted(compared)
        compare_gapped(compared)
        compare_twice_as_wide(compared)
        compared.report.finish("pictures of series are those of plain volumes")


if __name__ == "__main__":
    main()
