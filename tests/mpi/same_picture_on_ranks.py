#!/usr/bin/python3
"""zox-mip-mpi gives zox-mip's files byte for byte, for every number of ranks and every cut, and so does
zox-mip --memory. With no volumes, of the phantom alone.

    same_picture_on_ranks.py ZOX-MIP ZOX-MIP-MPI FORMULA-PROGRAM [VOLUME...]
"""
import subprocess
import sys
import tempfile
from pathlib import Path

import runs
from runs import expect, mpirun

RANKS = [1, 2, 3, 4, 7]
# Smaller parts for each rank, so that the volume is cut in other places.
CUTS = [(2, "1M"), (3, "3M"), (7, "2M")]
ALONE = ["1M", "5M", "40M"]
VIEWS = [
    ["--view", "35,25"],
    ["--view", "-70,10", "--projection", "orthographic", "--reduction", "min", "--depth", "{out}.npy"],
    ["--view", "left", "--interpolation", "nearest", "--depth", "{out}.npy", "--raw", "{out}.nrrd"],
    ["--view", "20,-40", "--reduction", "absmax", "--depth", "{out}.npy", "--slab", "60", "--layout", "blocked"],
]


def render(place, start, volume, view, *more):
    place.mkdir()
    words = [word.replace("{out}", str(place / "x")) for word in view]
    done = start(*volume, "-o", place / "x.png", "--size", "160x120", "--quiet", *words, *more)
    expect(done.returncode == 0, f"{volume} {view} {more}: {done.stderr}")
    return {path.name: path.read_bytes() for path in place.iterdir()}


def compare(program, mpi, volume, view, place):
    alone = lambda *words: subprocess.run([program, *words], capture_output=True, text=True)
    wanted = render(place / "one", alone, volume, view)
    expect(len(wanted) == 1 + sum("{out}" in word for word in view), f"{volume} {view}: wrote {list(wanted)}")
    # What is packed must fit the memory as a whole before it is cut.
    for memory in ALONE[-1:] if volume[0].endswith(".gz") else ALONE:
        files = render(place / f"alone{memory}", alone, volume, view, "--memory", memory)
        expect(files == wanted, f"{volume} {view}: other files in parts of {memory}")
    for ranks, memory in [(ranks, None) for ranks in RANKS] + CUTS:
        many = lambda *words: mpirun(ranks, mpi, *words)
        files = render(place / f"{ranks}-{memory}", many, volume, view, *(["--memory", memory] if memory else []))
        expect(files == wanted, f"{volume} {view}: {ranks} ranks, parts of {memory}: other files than one process")


def main():
    program, mpi, formula, *volumes = sys.argv[1:]
    for volume in [[path] for path in volumes] or [["--phantom"]]:
        for view in VIEWS:
            with tempfile.TemporaryDirectory() as place:
                compare(program, mpi, volume, view, Path(place))
    for ranks in RANKS:
        done = mpirun(ranks, formula, 700, 600, 130)
        expect(done.returncode == 0 and " 0 wrong" in done.stdout, f"formula on {ranks} ranks: {done.stdout}")
    print(f"{runs.failed} failed")
    sys.exit(1 if runs.failed else 0)


if __name__ == "__main__":
    main()
