#!/usr/bin/env python3
"""Writes DICOM series with known voxels and distances into a folder, for the tests.

    make_series.py FOLDER [--raw FILE --size X,Y,Z --spacing X,Y,Z] [options]

Without --raw the voxels follow a formula: value(x, y, z) = 100 z + 7 x + 3 y - 500. Rows lead to the
patient's left, columns to the back, slices to the head.
"""
import argparse
import random
import subprocess
import sys
from pathlib import Path

import numpy
import pydicom
from pydicom.dataset import FileDataset, FileMetaDataset
from pydicom.sequence import Sequence
from pydicom.uid import (CTImageStorage, EnhancedCTImageStorage, ExplicitVRBigEndian, ExplicitVRLittleEndian,
                         ImplicitVRLittleEndian, generate_uid)

GDCMCONV = {"rle": ["--rle"], "jpeg": ["--jpeg"], "jpegls": ["--jpegls"], "j2k": ["--j2k"]}


def numbers(text):
    return [float(part) for part in text.split(",")]


def arguments(words=None):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--raw", type=Path, help="signed 16-bit voxels, x fastest")
    parser.add_argument("--size", type=numbers, default=[24, 20, 16])
    parser.add_argument("--spacing", type=numbers, default=[1.0, 1.0, 1.5])
    parser.add_argument("--flip-rows", action="store_true", help="the rows of --raw run from the back to the front")
    parser.add_argument("--heights", type=numbers, help="millimetres of every slice along the normal")
    parser.add_argument("--omit", type=numbers, default=[], help="slices that are left out")
    parser.add_argument("--duplicate", type=numbers, default=[], help="slices that are written twice")
    parser.add_argument("--tilt", type=float, default=0, help="degrees the stack is slanted in y")
    parser.add_argument("--orientation", type=numbers, default=[1, 0, 0, 0, 1, 0])
    parser.add_argument("--syntax", default="explicit",
                        choices=["explicit", "implicit", "big", *GDCMCONV])
    parser.add_argument("--bits", type=int, default=16, choices=[8, 12, 16])
    parser.add_argument("--unsigned", action="store_true")
    parser.add_argument("--intercept", type=float, default=0, help="what is added to stored pixels")
    parser.add_argument("--slopes", action="store_true", help="another rescale slope in every slice")
    parser.add_argument("--window", type=numbers)
    parser.add_argument("--multiframe", action="store_true", help="one file of many frames")
    parser.add_argument("--seed", type=int, default=1, help="of names and instance numbers")
    parser.add_argument("--series", default="1", help="a name from which the series' UID is made")
    parser.add_argument("--number", type=int, default=1)
    parser.add_argument("--description", default="test")
    return parser.parse_args(words)


def voxels_of(options):
    x, y, z = (int(n) for n in options.size)
    if options.raw:
        volume = numpy.fromfile(options.raw, dtype="<i2").reshape(z, y, x)
        return volume[:, ::-1, :] if options.flip_rows else volume
    k, j, i = numpy.meshgrid(numpy.arange(z), numpy.arange(y), numpy.arange(x), indexing="ij")
    return 100 * k + 7 * i + 3 * j - 500


def heights_of(options, count):
    if options.heights:
        return options.heights
    return [k * options.spacing[2] for k in range(count)]


def base_dataset(path, options, syntax):
    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = EnhancedCTImageStorage if options.multiframe else CTImageStorage
    meta.MediaStorageSOPInstanceUID = generate_uid(entropy_srcs=[str(path)])
    meta.TransferSyntaxUID = syntax
    data = FileDataset(str(path), {}, file_meta=meta, preamble=b"\0" * 128)
    data.is_little_endian = syntax != ExplicitVRBigEndian
    data.is_implicit_VR = syntax == ImplicitVRLittleEndian
    data.SOPClassUID, data.SOPInstanceUID = meta.MediaStorageSOPClassUID, meta.MediaStorageSOPInstanceUID
    data.PatientName, data.PatientID = "Secret^Patient", "SECRET-ID-4711"
    data.PatientBirthDate, data.InstitutionName = "19010203", "Secret Hospital"
    data.Modality = "CT"
    data.SeriesDescription = options.description
    data.SeriesInstanceUID = generate_uid(entropy_srcs=["series", options.series])
    data.StudyInstanceUID = generate_uid(entropy_srcs=["study"])
    data.SeriesNumber = options.number
    return data


def describe_pixels(data, options, rows, columns):
    data.Rows, data.Columns, data.SamplesPerPixel = rows, columns, 1
    data.PhotometricInterpretation = "MONOCHROME2"
    data.BitsAllocated = 8 if options.bits == 8 else 16
    data.BitsStored, data.HighBit = options.bits, options.bits - 1
    data.PixelRepresentation = 0 if options.unsigned else 1


def stored(plane, slope, options):
    pixels = numpy.rint((plane - options.intercept) / slope)
    if options.bits == 12 and not options.unsigned:
        pixels = pixels.astype("<i2") & 0x0FFF
        return pixels.astype("<u2")
    kind = {8: "1", 12: "2", 16: "2"}[options.bits]
    return pixels.astype(("<u" if options.unsigned else "<i") + kind)


def to_bytes(pixels, data):
    return pixels.astype(pixels.dtype.newbyteorder("<" if data.is_little_endian else ">")).tobytes()


def add_pixels(data, raw):
    data.add_new(0x7FE00010, "OB" if data.BitsAllocated == 8 else "OW", raw + b"\0" * (len(raw) % 2))


def position(options, height):
    along_row, along_column = numpy.array(options.orientation[:3]), numpy.array(options.orientation[3:])
    normal = numpy.cross(along_row, along_column)
    sideways = numpy.tan(numpy.radians(options.tilt)) * height
    return [float(f"{c:.6f}") for c in numpy.array([-50.0, -60.0, -70.0]) + normal * height + along_column * sideways]


def write(data, path, options):
    data.save_as(path, write_like_original=False)
    if options.syntax in GDCMCONV:
        plain = path.with_suffix(".plain")
        path.rename(plain)
        subprocess.run(["gdcmconv", *GDCMCONV[options.syntax], plain, path], check=True)
        plain.unlink()


def write_slices(options, volume, heights, syntax):
    chosen = [k for k in range(len(volume)) if k not in options.omit]
    chosen += [int(k) for k in options.duplicate]
    numbers_, shuffle = list(range(len(chosen))), random.Random(options.seed)
    shuffle.shuffle(numbers_)
    for place, k in enumerate(chosen):
        path = options.folder / f"{shuffle.getrandbits(48):012x}"
        data = base_dataset(path, options, syntax)
        describe_pixels(data, options, *volume[k].shape)
        slope = 1.0 + 0.5 * (k % 3) if options.slopes else 1.0
        data.RescaleSlope, data.RescaleIntercept = slope, options.intercept
        data.PixelSpacing = [options.spacing[1], options.spacing[0]]
        data.ImageOrientationPatient = options.orientation
        data.ImagePositionPatient = position(options, heights[k])
        data.InstanceNumber = 1 + numbers_[place]
        if options.window:
            data.WindowCenter, data.WindowWidth = options.window
        add_pixels(data, to_bytes(stored(volume[k], slope, options), data))
        write(data, path, options)


def item(**elements):
    data = pydicom.Dataset()
    for name, value in elements.items():
        setattr(data, name, value)
    return data


def write_frames(options, volume, heights, syntax):
    path = options.folder / "frames.dcm"
    data = base_dataset(path, options, syntax)
    describe_pixels(data, options, *volume[0].shape)
    data.NumberOfFrames = len(volume)
    data.SharedFunctionalGroupsSequence = Sequence([item(
        PixelMeasuresSequence=Sequence([item(PixelSpacing=[options.spacing[1], options.spacing[0]])]),
        PlaneOrientationSequence=Sequence([item(ImageOrientationPatient=options.orientation)]),
        PixelValueTransformationSequence=Sequence([item(RescaleIntercept=options.intercept, RescaleSlope=1)]))])
    data.PerFrameFunctionalGroupsSequence = Sequence([
        item(PlanePositionSequence=Sequence([item(ImagePositionPatient=position(options, height))]))
        for height in heights])
    add_pixels(data, b"".join(to_bytes(stored(plane, 1.0, options), data) for plane in volume))
    write(data, path, options)


def make(*words):
    options = arguments([str(word) for word in words])
    options.folder.mkdir(parents=True, exist_ok=True)
    volume = voxels_of(options)
    syntax = {"implicit": ImplicitVRLittleEndian, "big": ExplicitVRBigEndian}.get(options.syntax, ExplicitVRLittleEndian)
    heights = heights_of(options, len(volume))
    if options.multiframe:
        write_frames(options, volume, heights, syntax)
    else:
        write_slices(options, volume, heights, syntax)


if __name__ == "__main__":
    make(*sys.argv[1:])
