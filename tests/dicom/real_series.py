#!/usr/bin/env python3
"""Series that scanners wrote, of the packages python3-pydicom and python3-nibabel: their pictures are those of the
volumes that pydicom and NumPy make of them.

    real_series.py ZOX-MIP
"""
import gzip
import importlib.util
import json
import re
import shutil
import sys
import tempfile
from pathlib import Path

import numpy
import pydicom

from helpers import Report, picture, run, write_nrrd

PYDICOM = Path(pydicom.__file__).parent / "data/test_files/dicomdirtests"
FOUND = importlib.util.find_spec("nibabel")
NIBABEL = Path(FOUND.origin).parent / "nicom/tests/data" if FOUND else Path("/nowhere")
WINDOW = ["--window", "1100,1200", "--size", "120x120", "--marks"]
VIEWS = (["--view", "30,20"], ["--view", "left"], ["--view", "top", "--projection", "orthographic"])


def volume_of(slices):
    """Voxels, and the millimetres of axes and origin, of pydicom's slices: (pixels, position, orientation, spacing).
    A slant of less than a twentieth of a pixel over the whole stack is none."""
    _, _, orientation, spacing = slices[0]
    # Directions are texts of six decimals: of length 1 but for these.
    row, column = (part / numpy.linalg.norm(part) for part in numpy.array(orientation, float).reshape(2, 3))
    normal = numpy.cross(row, column)
    normal /= numpy.linalg.norm(normal)
    slices = sorted(slices, key=lambda one: numpy.dot(one[1], normal))
    places = numpy.array([one[1] for one in slices], float)
    last = (places[-1] - places[0]) / (len(slices) - 1)
    sideways = last - normal * numpy.dot(last, normal)
    if numpy.linalg.norm(sideways) * (len(slices) - 1) < 0.05 * float(min(spacing)):
        last = last - sideways
    axes = [row * float(spacing[1]), column * float(spacing[0]), last]
    return numpy.stack([one[0] for one in slices]), axes, places[0]


def of_files(paths):
    data = [pydicom.dcmread(path) for path in paths]
    return volume_of([(one.pixel_array * int(one.get("RescaleSlope", 1)) + int(one.get("RescaleIntercept", 0)),
                       one.ImagePositionPatient, one.ImageOrientationPatient, one.PixelSpacing) for one in data])


def compare(report, program, place, name, inputs, volume, views=VIEWS):
    voxels, axes, origin = volume
    plain = write_nrrd(place / "plain.nrrd", voxels, axes, origin)
    for number, view in enumerate(views):
        one, two = (picture(program, place / out, *what, *WINDOW, *view)
                    for out, what in (("one.png", inputs), ("two.png", [plain])))
        report.check(one == two, f"{name}, {' '.join(view)}: the pictures differ")


def check_ct(report, program, place):
    """Five slices 2.5 mm apart; and four of which the first lies 202.5 mm away."""
    even = PYDICOM / "98892001/CT5N"
    compare(report, program, place, "even CT", [even], of_files(sorted(even.iterdir())))
    gapped = PYDICOM / "77654033/CT2"
    # From above every slice lies in the way of every ray, wherever it is.
    compare(report, program, place, "gapped CT", [gapped], of_files(sorted(gapped.iterdir())),
            [["--view", "top", "--projection", "orthographic", "--interpolation", "nearest"]])
    done = run(program, gapped, "-o", place / "x.png")
    report.check("161 slices seem to be missing, the first between 17106 and 17136" in done.stderr, done.stderr)


def check_disk(report, program, place):
    """A disk as it comes, with its index and several patients: every series is listed."""
    disk = place / "disk"
    disk.mkdir()
    for name in ("77654033", "98892001", "98892003"):
        shutil.copytree(PYDICOM / name, disk / name)
    shutil.copy(PYDICOM / "DICOMDIR", disk)
    kinds = {}
    for path in sorted(disk.rglob("*")):
        if path.is_file() and path.name != "DICOMDIR":
            data = pydicom.dcmread(path)
            if data.PhotometricInterpretation == "MONOCHROME2":
                directions = tuple(round(float(c), 2) for c in data.ImageOrientationPatient)
                kinds.setdefault((data.SeriesInstanceUID, directions), []).append(path)
    done = run(program, disk, "--list-series")
    counts = sorted(int(n) for n in re.findall(r", (\d+) slices? of 16 x 16", done.stdout))
    report.check(counts == sorted(len(paths) for paths in kinds.values()), f"{counts} slices are listed")
    largest = [str(disk / "98892001/CT5N")]
    report.check(picture(program, place / "one.png", disk, *WINDOW) ==
                 picture(program, place / "two.png", *largest, *WINDOW), "the largest series is not shown")


def check_mr(report, program, place):
    """Two slices of an oblique MR series, and 176 frames in one file, whose voxels were set to 0."""
    oblique = [NIBABEL / "0.dcm", NIBABEL / "1.dcm"]
    compare(report, program, place, "oblique MR", oblique, of_files(oblique))
    frames = place / "frames.dcm"
    frames.write_bytes(gzip.decompress((NIBABEL / "philips_mprage.dcm.gz").read_bytes()))
    data = pydicom.dcmread(frames)
    shared = data.SharedFunctionalGroupsSequence[0]
    volume = volume_of([(pixels, own.PlanePositionSequence[0].ImagePositionPatient,
                         (own if "PlaneOrientationSequence" in own else shared)
                         .PlaneOrientationSequence[0].ImageOrientationPatient,
                         (own if "PixelMeasuresSequence" in own else shared).PixelMeasuresSequence[0].PixelSpacing)
                        for pixels, own in zip(data.pixel_array, data.PerFrameFunctionalGroupsSequence)])
    # Its voxels tell nothing, its marks where it lies.
    compare(report, program, place, "frames of MR", [frames], volume)
    told = json.loads(run(program, frames, "-o", place / "x.png", "--stats").stdout)
    spacing = [numpy.linalg.norm(axis) for axis in volume[1]]
    report.check(told["size"] == [256, 256, 176] and numpy.allclose(told["spacing"], spacing, atol=1e-4), str(told))


def main():
    report = Report()
    with tempfile.TemporaryDirectory() as place:
        if PYDICOM.is_dir():
            check_ct(report, sys.argv[1], Path(place))
            check_disk(report, sys.argv[1], Path(place))
        if NIBABEL.is_dir():
            check_mr(report, sys.argv[1], Path(place))
    if not report.checked:
        print("Neither package's series are here.")
        sys.exit(77)
    report.finish("pictures of real series are right")


if __name__ == "__main__":
    main()
