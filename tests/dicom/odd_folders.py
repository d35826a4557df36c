#!/usr/bin/env python3
"""zox-mip on broken and odd DICOM folders: one true sentence, the right status, nothing left behind.

    odd_folders.py ZOX-MIP [NAME...]
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import pydicom

from make_series import make

CASES = []


def case(status, *sentences):
    """A function that fills a folder, the exit status and what stderr must say (regular expressions)."""
    def add(function):
        CASES.append((function.__name__, function, status, sentences))
        return function
    return add


def files(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def edit(path, change):
    data = pydicom.dcmread(path, force=True)
    change(data)
    data.save_as(path, write_like_original=True)


def edit_all(folder, change):
    for path in files(folder):
        edit(path, change)


def series(folder, *words):
    make(folder, *words)
    return files(folder)


def without(folder, keyword):
    series(folder)
    edit(files(folder)[3], lambda data: delattr(data, keyword))


def with_value(folder, keyword, value):
    series(folder)
    edit(files(folder)[3], lambda data: setattr(data, keyword, value))


def cut(path, left):
    path.write_bytes(path.read_bytes()[:left])


# ---- what can be shown all the same ----------------------------------------------------------------

@case(0, r"2 files are no DICOM and were passed over")
def other_files_lie_between(folder):
    series(folder)
    (folder / "README.txt").write_text("hello")
    (folder / "empty").write_bytes(b"")


@case(0)
def slices_lie_in_folders_below(folder):
    for number, path in enumerate(series(folder)):
        below = folder / f"DIR{number % 3}"
        below.mkdir(exist_ok=True)
        path.rename(below / path.name)


@case(0)
def names_hold_newlines_and_escapes(folder):
    for number, path in enumerate(series(folder)):
        path.rename(folder / f"a\nb\x1b[2J{number}")


@case(0, r"seems to be missing, the first between a\?b")
def names_with_newlines_are_told_in_one_line(folder):
    for number, path in enumerate(series(folder, "--omit", "5")):
        path.rename(folder / f"a\nb\x1b[2J{number}")


@case(0, r"1 slice seems to be missing")
def a_slice_is_missing(folder):
    series(folder, "--omit", "6")


@case(0, r"3 slices seem to be missing")
def slices_are_missing_twice(folder):
    series(folder, "--omit", "3,9,10")


@case(0, r"was left out")
def a_position_comes_twice(folder):
    series(folder, "--duplicate", "4")


@case(0, r"16 slices lie where others do")
def every_position_comes_twice(folder):
    series(folder, "--duplicate", ",".join(str(k) for k in range(16)))


@case(0, r"not evenly spaced")
def the_spacing_changes(folder):
    series(folder, "--heights", ",".join(str(1.5 * k if k < 8 else 12 + 3 * (k - 8)) for k in range(16)))


@case(0, r"slanted by 15 degrees")
def the_gantry_is_tilted(folder):
    series(folder, "--tilt", "15")


@case(0, r"Of 2 series the largest is shown")
def a_localiser_lies_in_the_series(folder):
    series(folder)
    make(folder, "--size", "30,30,1", "--orientation", "0,1,0,0,0,-1", "--seed", "9")


@case(0, r"Of 2 series the largest is shown")
def slices_of_another_size(folder):
    series(folder)
    make(folder, "--size", "30,30,3", "--seed", "9")


@case(0, r"Of 2 series the largest is shown, 2: CT, 16 slices")
def two_studies_are_mixed(folder):
    series(folder, "--number", "7", "--series", "a")
    make(folder, "--number", "3", "--series", "b", "--size", "12,12,8", "--seed", "9")


@case(0)
def old_files_without_a_preamble(folder):
    for path in series(folder, "--syntax", "implicit"):
        data = pydicom.dcmread(path)
        path.unlink()
        bare = pydicom.Dataset(data)
        bare.is_little_endian = bare.is_implicit_VR = True
        pydicom.filewriter.dcmwrite(path, bare, write_like_original=True)


@case(0)
def many_frames_in_one_file(folder):
    series(folder, "--multiframe")


@case(0)
def twelve_bits_with_an_overlay_above(folder):
    series(folder, "--bits", "12", "--unsigned", "--intercept", "-1024")

    def overlay(data):
        pixels = bytearray(data.PixelData)
        for k in range(1, len(pixels), 2):
            pixels[k] |= 0xF0
        data.PixelData = bytes(pixels)
    edit_all(folder, overlay)


@case(0)
def a_link_back_to_the_folder(folder):
    series(folder)
    (folder / "again").symlink_to(folder)


@case(0, r"DICOM file holds no slice")
def a_report_among_the_slices(folder):
    path = series(folder)[0]
    target = folder / "report"
    shutil.copy(path, target)

    def strip(data):
        for keyword in ["PixelData", "Rows", "Columns", "BitsAllocated"]:
            delattr(data, keyword)
        data.SeriesInstanceUID = "1.2.3"
        data.Modality = "SR"
    edit(target, strip)


@case(0, r"DICOM file holds no slice: DICOMDIR is damaged")
def a_damaged_index_of_a_disk(folder):
    series(folder)
    (folder / "DICOMDIR").write_bytes(b"\0" * 128 + b"DICM" + b"\x02\0\0\0UL" + b"\xff" * 40)


@case(0)
def every_slice_has_another_slope(folder):
    series(folder, "--slopes")


@case(0)
def ten_thousand_files(folder):
    series(folder)
    for number in range(10_000):
        (folder / f"x{number:05}").write_bytes(b"DICOM? no, nothing of the kind; but more than 132 bytes " * 4)


# ---- what cannot be shown --------------------------------------------------------------------------

@case(1, r"holds no files")
def nothing(folder):
    pass


@case(1, r"holds no DICOM files")
def text_only(folder):
    (folder / "README.txt").write_text("hello")


@case(1, r"single slice")
def one_slice(folder):
    series(folder, "--size", "24,20,1")


@case(1, r"does not say where its slice lies")
def no_position(folder):
    without(folder, "ImagePositionPatient")


@case(1, r"does not say how its slice is oriented")
def no_orientation(folder):
    without(folder, "ImageOrientationPatient")


@case(1, r"does not say how far apart its pixels are")
def no_spacing(folder):
    without(folder, "PixelSpacing")


@case(1, r"pixel spacing that is not two lengths")
def spacing_of_zero(folder):
    with_value(folder, "PixelSpacing", [0, 1])


@case(1, r"pixel spacing that is not two lengths")
def spacing_below_zero(folder):
    with_value(folder, "PixelSpacing", [-1, 1])


@case(1, r"position that is not three numbers")
def position_of_two_numbers(folder):
    with_value(folder, "ImagePositionPatient", [1, 2])


@case(1, r"position that is not three numbers")
def position_far_out(folder):
    with_value(folder, "ImagePositionPatient", [1, 2, 1e30])


@case(1, r"orientation .*not at right angles")
def rows_and_columns_are_not_at_right_angles(folder):
    with_value(folder, "ImageOrientationPatient", [1, 0, 0, 0.6, 0.8, 0])


@case(1, r"orientation .*not at right angles")
def orientation_of_zeros(folder):
    with_value(folder, "ImageOrientationPatient", [0, 0, 0, 0, 0, 0])


@case(1, r"orientation that is not six numbers")
def orientation_of_five_numbers(folder):
    with_value(folder, "ImageOrientationPatient", [1, 0, 0, 0, 1])


@case(1, r"single slice")
def all_positions_are_equal(folder):
    series(folder)
    edit_all(folder, lambda data: setattr(data, "ImagePositionPatient", [0, 0, 0]))


@case(1, r"beside the line of the other slices")
def a_slice_is_shifted_sideways(folder):
    series(folder)
    path = sorted(files(folder), key=lambda p: pydicom.dcmread(p).ImagePositionPatient[2])[7]

    def shift(data):
        data.ImagePositionPatient[0] += 5
    edit(path, shift)


@case(1, r"is in colour")
def colour(folder):
    with_value(folder, "SamplesPerPixel", 3)


@case(1, r"colours of a palette")
def palette(folder):
    with_value(folder, "PhotometricInterpretation", "PALETTE COLOR")


@case(1, r"negative")
def inverted_grey(folder):
    with_value(folder, "PhotometricInterpretation", "MONOCHROME1")


@case(1, r"does not say that its pixels are grey")
def no_photometric(folder):
    without(folder, "PhotometricInterpretation")


@case(1, r"pixels of 12 bits")
def packed_twelve_bits(folder):
    with_value(folder, "BitsAllocated", 12)


@case(1, r"pixels of 32 bits")
def thirty_two_bits(folder):
    with_value(folder, "BitsAllocated", 32)


@case(1, r"contradicts itself on the bits")
def more_bits_stored_than_allocated(folder):
    with_value(folder, "BitsStored", 17)


@case(1, r"contradicts itself on the bits")
def high_bit_below_the_others(folder):
    with_value(folder, "HighBit", 3)


@case(1, r"rescale slope")
def slope_of_zero(folder):
    with_value(folder, "RescaleSlope", 0)


@case(1, r"holds no picture")
def no_rows(folder):
    without(folder, "Rows")


@case(1, r"holds no picture")
def no_columns(folder):
    with_value(folder, "Columns", 0)


@case(1, r"cut short")
def rows_that_are_not_there(folder):
    series(folder)
    edit_all(folder, lambda data: setattr(data, "Rows", 65535))


@case(1, r"cut short|holds no pixels")
def no_pixels(folder):
    without(folder, "PixelData")


@case(1, r"cut short")
def pixels_are_cut(folder):
    path = series(folder)[3]
    cut(path, path.stat().st_size - 200)


@case(1, r"damaged or cut short|holds no picture|cut short")
def the_header_is_cut(folder):
    path = series(folder)[3]
    cut(path, 1200)


def add_cut_stream(syntax, share):
    def cut_stream(folder):
        path = series(folder, "--syntax", syntax)[3]
        cut(path, int(path.stat().st_size * share))
    cut_stream.__name__ = f"{syntax}_stream_cut_at_{int(share * 100)}_percent"
    case(1, r"damaged|cut short|cannot be read|holds no picture")(cut_stream)


for name in ["rle", "jpeg", "jpegls", "j2k"]:
    for part in [0.85, 0.97]:
        add_cut_stream(name, part)


def add_scrambled_stream(syntax):
    def scrambled(folder):
        path = series(folder, "--syntax", syntax)[3]
        data = bytearray(path.read_bytes())
        end = len(data) - 60
        data[end:end + 24] = b"\xFF\xD9" * 12
        path.write_bytes(data)
    scrambled.__name__ = f"{syntax}_stream_with_an_early_end"
    case(1, r"damaged|cut short|cannot be read")(scrambled)


for name in ["jpegls", "jpeg"]:
    add_scrambled_stream(name)


@case(1, r"no DICOM files|damaged")
def all_zeros(folder):
    (folder / "zeros").write_bytes(b"\0" * 5000)


@case(1, r"no DICOM files|damaged|holds no picture|holds no slice")
def the_mark_alone(folder):
    (folder / "mark").write_bytes(b"\0" * 128 + b"DICM")


@case(1, r"damaged|holds no slice")
def noise_behind_the_mark(folder):
    import random
    (folder / "noise").write_bytes(b"\0" * 128 + b"DICM" + random.Random(1).randbytes(4000))


@case(1, r"frames")
def more_frames_than_places(folder):
    path = series(folder, "--multiframe")[0]
    edit(path, lambda data: setattr(data, "NumberOfFrames", 99))


@case(1, r"several frames and does not say where each lies")
def frames_without_places(folder):
    path = series(folder, "--multiframe")[0]
    edit(path, lambda data: delattr(data, "PerFrameFunctionalGroupsSequence"))


@case(1, r"frames")
def frames_below_zero(folder):
    path = series(folder, "--multiframe")[0]
    edit(path, lambda data: setattr(data, "NumberOfFrames", -3))


@case(1, r"does not say where its slice lies")
def a_frame_without_a_place(folder):
    path = series(folder, "--multiframe")[0]
    edit(path, lambda data: delattr(data.PerFrameFunctionalGroupsSequence[5], "PlanePositionSequence"))


@case(1, r"cut short")
def frames_are_cut(folder):
    path = series(folder, "--multiframe")[0]
    cut(path, path.stat().st_size - 5000)


def add_cut_frames(syntax):
    def cut_frames(folder):
        path = series(folder, "--multiframe", "--syntax", syntax)[0]
        cut(path, int(path.stat().st_size * 0.8))
    cut_frames.__name__ = f"{syntax}_frames_are_cut"
    case(1, r"damaged|cut short")(cut_frames)


for name in ["rle", "jpeg", "jpegls", "j2k"]:
    add_cut_frames(name)


@case(1, r"deflated")
def a_deflated_file(folder):
    path = series(folder)[3]
    data = pydicom.dcmread(path)
    data.file_meta.TransferSyntaxUID = pydicom.uid.DeflatedExplicitVRLittleEndian
    data.save_as(path, write_like_original=False)


@case(1, r"holds no DICOM files|[Pp]ermission denied|holds no files")
def unreadable_files(folder):
    series(folder)
    for path in files(folder):
        path.chmod(0)


@case(0)
def more_columns_than_a_whole_volume_may_have(folder):
    series(folder, "--size", "2100,150,40")


@case(1, r"There is no series 3")
def a_series_that_is_not_there(folder):
    series(folder)


@case(1, r"There is no series x")
def a_series_that_is_no_number(folder):
    series(folder)


OPTIONS = {"a_series_that_is_not_there": ["--series", "3"], "a_series_that_is_no_number": ["--series", "x"]}
# The superuser reads what nobody else may.
ROOT_SKIPS = {"unreadable_files"}


def run(program, name, fill, status, sentences):
    with tempfile.TemporaryDirectory() as place:
        folder, out = Path(place) / "in", Path(place) / "out"
        folder.mkdir()
        out.mkdir()
        fill(folder)
        before = sorted(os.listdir(folder))
        begin = time.monotonic()
        done = subprocess.run([program, str(folder), "-o", out / "x.png", "--size", "64x64", *OPTIONS.get(name, [])],
                              capture_output=True, text=True, errors="replace", timeout=120)
        wrong = []
        if done.returncode != status:
            wrong.append(f"status {done.returncode}, not {status}")
        wrong += [f"no word of '{sentence}'" for sentence in sentences if not re.search(sentence, done.stderr)]
        if sorted(os.listdir(out)) != (["x.png"] if status == 0 else []):
            wrong.append(f"left behind: {os.listdir(out)}")
        if sorted(os.listdir(folder)) != before:
            wrong.append("the input folder has changed")
        if status != 0 and done.stderr.count("\n") != 1:
            wrong.append("not one line")
        if "Secret" in done.stderr + done.stdout or "SECRET" in done.stderr + done.stdout:
            wrong.append("tells of the patient")
        if time.monotonic() - begin > 60:
            wrong.append("took more than 60 s")
        return wrong, done.stderr


def main():
    program, wanted = sys.argv[1], sys.argv[2:]
    ran = failed = 0
    for name, fill, status, sentences in CASES:
        if wanted and name not in wanted or os.geteuid() == 0 and name in ROOT_SKIPS:
            continue
        ran += 1
        wrong, said = run(program, name, fill, status, sentences)
        if wrong:
            failed += 1
            print(f"FAILED {name}: {'; '.join(wrong)}\n    it said: {said.strip()}")
    print(f"{ran - failed} of {ran} odd folders are answered as they should be")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
