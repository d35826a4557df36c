#!/usr/bin/python3
"""A volume larger than the memory that a process may have is rendered in parts within that memory.

    memory_test.py ZOX-MIP

The limit is on address space (ulimit -v): it counts voxels that are mapped from the file as well as those that are
held, whether pages of them are resident or not, so that nothing of the volume is left out as it would be by the resident
set or a control group, from which the system may take mapped pages away.
"""
import resource
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy

PROGRAM = sys.argv[1]
SIZE = (512, 512, 800)  # 400 MB of 16 bits
LIMIT = 300 << 20
LOOK = ["--view", "35,25", "--size", "200x160", "--threads", "1", "--quiet"]


def volume(place):
    """Balls at places of their own over a slope, so that every part of the volume shows."""
    random = numpy.random.default_rng(3)
    balls = [(random.uniform(60, 452), random.uniform(60, 452), random.uniform(60, 740), random.uniform(15, 60))
             for _ in range(24)]
    y, x = numpy.mgrid[:SIZE[1], :SIZE[0]].astype("float32")
    with open(place / "v.raw", "wb") as file:
        for z in range(SIZE[2]):
            slice_ = ((x + 2 * y + 3 * z) / 40).astype("int16")
            for number, (bx, by, bz, r) in enumerate(balls):
                if abs(z - bz) < r:
                    slice_[(x - bx) ** 2 + (y - by) ** 2 + (z - bz) ** 2 < r * r] = 300 + 40 * number + z % 7
            file.write(slice_.tobytes())
    header = place / "v.mhd"
    header.write_text(f"ObjectType = Image\nNDims = 3\nDimSize = {SIZE[0]} {SIZE[1]} {SIZE[2]}\nElementType = MET_SHORT\n"
                      "ElementByteOrderMSB = False\nElementDataFile = v.raw\n")
    return header


def run(header, out, *words, limit=None):
    return subprocess.run([PROGRAM, header, "-o", out, *LOOK, *words], capture_output=True, text=True,
                          preexec_fn=limit and (lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit))))


def check(condition, what):
    if not condition:
        sys.exit(f"FAILED {what}")


def main():
    with tempfile.TemporaryDirectory() as name:
        place = Path(name)
        header = volume(place)
        size = (place / "v.raw").stat().st_size
        check(size > LIMIT, "the volume is no larger than the limit")
        for view in (["--depth", "{}.npy", "--raw", "{}.nrrd"], ["--depth", "{}.npy", "--reduction", "min"]):
            named = lambda stem: [word.format(place / stem) for word in view]
            whole = run(header, place / "whole.png", *named("whole"))
            check(whole.returncode == 0, whole.stderr)
            at_once = run(header, place / "never.png", *named("never"), limit=LIMIT)
            check(at_once.returncode == 1 and at_once.stderr.count("\n") == 1 and not (place / "never.png").exists(),
                  f"the limit does not bind: {at_once.stderr}")
            parts = run(header, place / "parts.png", "--memory", "96M", *named("parts"), limit=LIMIT)
            check(parts.returncode == 0, f"in parts: {parts.stderr}")
            for path in place.glob("whole.*"):
                check(path.read_bytes() == path.with_stem("parts").read_bytes(), f"{path.name} differs in parts")
    print(f"{size} bytes of voxels under a limit of {LIMIT}: the same files")


if __name__ == "__main__":
    main()
