#!/usr/bin/env python3
"""zox-mip-mpi gives zox-mip's files byte for byte, for every number of ranks; failures end all with one sentence.

    same_picture.py ZOX-MIP ZOX-MIP-MPI FORMULA-PROGRAM [VOLUME...]
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

RANKS = [1, 2, 3, 4, 7]
VIEWS = [
    ["--view", "35,25"],
    ["--view", "-70,10", "--projection", "orthographic", "--reduction", "min", "--depth", "{out}.npy"],
    ["--view", "left", "--interpolation", "nearest", "--depth", "{out}.npy", "--raw", "{out}.nrrd"],
    ["--view", "20,-40", "--reduction", "absmax", "--depth", "{out}.npy", "--slab", "60", "--layout", "blocked"],
]
failed = 0


def mpirun(ranks, *command):
    environment = {**os.environ, "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}
    return subprocess.run(["mpirun", "--oversubscribe", "-n", str(ranks), *map(str, command)], capture_output=True,
                          text=True, env=environment, timeout=600)


def expect(condition, what):
    global failed
    if not condition:
        failed += 1
        print(f"FAILED {what}")


def files(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


def compare(program, mpi, volume, view, place):
    one = place / "one"
    one.mkdir()
    words = [word.replace("{out}", str(one / "x")) for word in view]
    subprocess.run([program, *volume, "-o", one / "x.png", "--size", "160x120", "--quiet", *words], check=True)
    for ranks in RANKS:
        many = place / f"ranks{ranks}"
        many.mkdir()
        words = [word.replace("{out}", str(many / "x")) for word in view]
        done = mpirun(ranks, mpi, *volume, "-o", many / "x.png", "--size", "160x120", "--quiet", *words)
        expect(done.returncode == 0, f"{volume} {view} on {ranks} ranks: {done.stderr}")
        expect(files(many) == files(one), f"{volume} {view}: {ranks} ranks give other files than one process")


def refuse(mpi, words, sentence, place):
    done = mpirun(3, mpi, *words, "-o", place / "never.png")
    lines = [line for line in done.stderr.splitlines() if line.startswith("zox-mip-mpi:")]
    expect(done.returncode != 0, f"{words}: status {done.returncode}")
    expect(len(lines) == 1 and sentence in lines[0], f"{words}: said {done.stderr}")
    expect(not (place / "never.png").exists(), f"{words}: a picture was left")


def main():
    program, mpi, formula, *volumes = sys.argv[1:]
    for volume in [["--phantom"], *[[path] for path in volumes]]:
        for view in VIEWS:
            with tempfile.TemporaryDirectory() as place:
                compare(program, mpi, volume, view, Path(place))
    with tempfile.TemporaryDirectory() as name:
        place = Path(name)
        (place / "cut.nii").write_bytes(b"\0" * 100)
        refuse(mpi, [place / "cut.nii"], "cut.nii", place)
        refuse(mpi, ["--phantom", "--reduction", "mean"], "mean", place)
        refuse(mpi, ["--phantom", "--size", "0x1"], "--size", place)
        refuse(mpi, [place / "none.nii"], "none.nii", place)
    for ranks in RANKS:
        done = mpirun(ranks, formula, 700, 600, 130)
        expect(done.returncode == 0 and " 0 wrong" in done.stdout, f"formula on {ranks} ranks: {done.stdout}")
    print(f"{failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
