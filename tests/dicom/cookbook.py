#!/usr/bin/env python3
"""The twelve commands of the cookbook in docs/zox-mip.md, as they stand there, on small volumes.

    cookbook.py ZOX-MIP PAGE
"""
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import nibabel
import numpy
from PIL import Image

from helpers import Report, phantom, straight, write_nrrd, write_raw
from make_series import make


def commands_of(page):
    section = re.search(r"^## Cookbook\n(.*?)^## ", page.read_text(), re.S | re.M).group(1)
    return [line for block in re.findall(r"```\n(.*?)```", section, re.S) for line in block.splitlines()]


def fill(place):
    voxels, spacing = phantom(coarse=4)
    raw = write_raw(place / "voxels.raw", voxels)
    words = ["--raw", raw, "--size", ",".join(map(str, reversed(voxels.shape))), "--spacing", ",".join(map(str, spacing))]
    make(place / "study", "--size", "30,30,1", "--orientation", "0,1,0,0,0,-1", "--seed", 9, "--series", "localiser")
    make(place / "study", *words, "--number", 2)
    for number, name in enumerate(("one", "two")):
        make(place / "studies" / name, *words, "--series", name, "--number", number)
    # Of the patient's axes NIfTI's first and second lead the other way.
    size = numpy.array(voxels.shape[::-1])
    affine = numpy.diag([-spacing[0], -spacing[1], spacing[2], 1])
    affine[:3, 3] = numpy.array([1, 1, -1]) * (size - 1) / 2 * spacing
    nibabel.save(nibabel.Nifti1Image(voxels.transpose(2, 1, 0), affine), place / "head.nii.gz")
    x, y, z = numpy.meshgrid(*(numpy.linspace(-3, 3, n) for n in (20, 24, 18)), indexing="ij")
    activation = 6 * numpy.exp(-((x - 1) ** 2 + y ** 2 + z ** 2)) - 5 * numpy.exp(-((x + 1) ** 2 + y ** 2 + z ** 2))
    nibabel.save(nibabel.Nifti1Image(activation.astype("float32"), numpy.diag([-3, -3, 3, 1])), place / "map.nii.gz")
    write_nrrd(place / "scan.nrrd", voxels, straight(spacing))


def run(program, command, place):
    return subprocess.run(["bash", "-c", f'zox-mip() {{ "{program}" "$@"; }}; {command}'], cwd=place, text=True,
                          capture_output=True, timeout=300)


def value_of(words, option, otherwise=None):
    return words[words.index(option) + 1] if option in words else otherwise


def png(path):
    """Width, height, frames (0: no animation) and how many values the packed bytes have."""
    content = path.read_bytes()
    if not content.startswith(b"\x89PNG\r\n\x1a\n") or b"IEND" not in content[-12:]:
        return None
    frames = content.find(b"acTL")
    count = int.from_bytes(content[frames + 4:frames + 8], "big") if frames > 0 else 0
    return int.from_bytes(content[16:20], "big"), int.from_bytes(content[20:24], "big"), count


def check_numbers(report, command, words, place, size):
    """Files of --raw and --depth hold an array of the picture's size with samples in it."""
    for option in ("--raw", "--depth"):
        name = value_of(words, option)
        if not name:
            continue
        path = place / name
        if path.suffix == ".npy":
            array = numpy.load(path)
            report.check(array.shape == (size[1], size[0]) and array.min() < array.max(), f"{command}: {name}")
        else:
            head = path.read_bytes().split(b"\n\n")[0].decode()
            report.check(head.startswith("NRRD") and f"sizes: {size[0]} {size[1]}" in head, f"{command}: {name}: {head}")


def check_pictures(report, command, words, place, told):
    """What --stats tells of is there, of the right size, with as many frames as were asked for."""
    width, height = (int(n) for n in value_of(words, "--size", "512x512").split("x"))
    frames, output = int(value_of(words, "--frames", 0)), value_of(words, "-o")
    volumes = [json.loads(line) for line in told.splitlines() if '"pictures":[' in line]
    names = {picture["output"] for volume in volumes for picture in volume["pictures"]}
    expected = 2 if "studies" in command else 1
    report.check(len(volumes) == expected, f"{command}: {len(volumes)} volumes")
    views = max(words.count("--view"), 1)
    report.check(len(names) == expected * views * (frames if "{frame}" in output else 1), f"{command}: made {names}")
    for name in names:
        animated = frames if "{frame}" not in output else 0
        report.check(png(place / name) == (width, height, animated), f"{command}: {name} is {png(place / name)}")
    if "diverging" in words:
        # Neither below nor above: outside of the volume there is nothing.
        report.check(Image.open(place / output).convert("RGB").getpixel((0, 0)) == (0, 0, 0), f"{command}: the edge")
    for volume in volumes:
        cast = sum(picture["samples_cast"] for picture in volume["pictures"])
        report.check(cast > 1000, f"{command}: {cast} samples were cast")
    check_numbers(report, command, words, place, (width, height))


def check_command(report, program, command, place):
    words = shlex.split(command)
    report.check(words[0] == "zox-mip", f"{command}: is another program's")
    before = set(os.listdir(place))
    done = run(program, command, place)
    report.check(done.returncode == 0, f"{command}: {done.stderr}")
    if "--list-series" in words:
        report.check(re.fullmatch(r"1: CT, 1 slice of 30 x 30.*\n2: CT, 28 slices of 40 x 48, 6.4 mm apart.*\n",
                                  done.stdout), f"{command}: {done.stdout}")
        return
    made = set(os.listdir(place)) - before
    told = done if "--stats" in words else run(program, command + " --stats", place)
    report.check(set(os.listdir(place)) - before == made, f"{command}: made other files the second time")
    check_pictures(report, command, words, place, told.stdout)
    if keep := os.environ.get("ZOX_COOKBOOK"):
        for name in made:
            shutil.copy(place / name, keep)


def main():
    report = Report()
    commands = commands_of(Path(sys.argv[2]))
    report.check(len(commands) == len(set(commands)) == 12, f"the cookbook has {len(commands)} commands")
    with tempfile.TemporaryDirectory() as place:
        fill(Path(place))
        for command in commands:
            check_command(report, sys.argv[1], command, Path(place))
    report.finish("things are as the cookbook says")


if __name__ == "__main__":
    main()
