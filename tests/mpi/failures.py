#!/usr/bin/python3
"""Ranks that fail end all of them: one sentence that names rank and reason, no picture, nothing left behind.

    failures.py ZOX-MIP-MPI
"""
import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy

import runs
from runs import ENVIRONMENT, expect, mpirun, own_lines

PROGRAM = str(Path(sys.argv[1]).resolve())


def write_volume(place, slices=40, cut=0):
    place.mkdir(exist_ok=True)
    voxels = numpy.random.default_rng(1).integers(0, 1000, (slices, 200, 200)).astype("int16")
    data = voxels.tobytes()
    (place / "v.raw").write_bytes(data[:len(data) - cut])
    (place / "v.mhd").write_text(f"ObjectType = Image\nNDims = 3\nDimSize = 200 200 {slices}\nElementType = MET_SHORT\n"
                                 "ElementByteOrderMSB = False\nElementDataFile = v.raw\n")
    return voxels


def check(done, sentences, place, out):
    lines = own_lines(done)
    expect(done.returncode not in (0, None), f"{sentences}: status {done.returncode}")
    expect(len(lines) == 1 and all(part in lines[0] for part in sentences), f"{sentences}: said {done.stderr}")
    expect(not out.exists(), f"{sentences}: a picture was left")
    expect(not list(place.glob("out/*")), f"{sentences}: left {list(place.glob('out/*'))}")


def refuse(place, words, *sentences, ranks=3):
    out = place / "out" / "x.png"
    check(mpirun(ranks, PROGRAM, *words, "-o", out, "--quiet"), sentences, place, out)


def one_rank(place, before, words, *sentences):
    """Rank 1 starts in another way than the others: `before` is what mpirun takes for it."""
    out = place / "out" / "x.png"
    command = [PROGRAM, *map(str, words), "-o", str(out), "--quiet"]
    done = subprocess.run(["mpirun", "--oversubscribe", "-n", "1", *command, ":", "-n", "1", *before, *command, ":", "-n",
                           "1", *command], capture_output=True, text=True, env=ENVIRONMENT, timeout=600, cwd=place)
    check(done, sentences, place, out)


def inputs(place):
    voxels = write_volume(place)
    refuse(place, ["--phantom", "--reduction", "mean"], "mean")
    refuse(place, ["--phantom", "--size", "0x1"], "--size")
    refuse(place, ["none.nii"], "Rank 0: There is no file 'none.nii'")
    refuse(place, [place / "v.mhd", "--memory", "1000"], "Two slices")
    (place / "cut.nii").write_bytes(b"\0" * 100)
    refuse(place, [place / "cut.nii"], "Rank 0", "cut.nii")
    refuse(place, [place / "v.mhd", place / "v.mhd"], "name one")
    # A slice that only the last of the ranks reads.
    slices = place / "slices"
    slices.mkdir()
    for z, picture in enumerate(voxels):
        (slices / f"{z:02}.nrrd").write_bytes(b"NRRD0004\ntype: short\ndimension: 2\nsizes: 200 200\nendian: little\n"
                                              b"encoding: raw\n\n" + picture.tobytes())
    os.truncate(slices / "38.nrrd", 1000)
    refuse(place, [slices], "Rank 2", "38.nrrd", "cut short")
    own = place / "own.png"
    own.write_bytes((place / "v.raw").read_bytes())
    (place / "own.mhd").write_text((place / "v.mhd").read_text().replace("v.raw", "own.png"))
    done = mpirun(2, PROGRAM, place / "own.mhd", "-o", own)
    expect(done.returncode != 0 and "that is read" in done.stderr, f"output is input: {done.stderr}")
    expect(own.read_bytes() == (place / "v.raw").read_bytes(), "an input was written over")


def ranks_alone(place):
    write_volume(place)
    short = place / "short"
    write_volume(short, cut=200 * 200 * 2 * 22)
    # The file of rank 1 is another one: half of what it maps is not there, or nothing.
    one_rank(place, ["-wdir", str(short)], ["v.mhd"], "Rank 1", "cut short")
    (short / "v.raw").unlink()
    one_rank(place, ["-wdir", str(short)], ["v.mhd"], "Rank 1", "No such file")
    # Enough to start MPI, too little for samples and depths of 33 million pixels.
    limit = ["bash", "-c", 'ulimit -v 600000; exec "$@"', "bash"]
    big = ["v.mhd", "--size", "8192x4000", "--memory", "40M", "--depth", str(place / "out" / "x.npy")]
    one_rank(place, limit, big, "Rank 1", "not enough memory")


def pids_of(parent):
    """By rank, the processes that mpirun has started."""
    found = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            stat = (folder / "stat").read_text().rsplit(")", 1)[1].split()
            if int(stat[1]) != parent or (folder / "comm").read_text().strip() != "zox-mip-mpi":
                continue
            for word in (folder / "environ").read_bytes().split(b"\0"):
                if word.startswith(b"OMPI_COMM_WORLD_RANK="):
                    found[int(word.split(b"=")[1])] = (int(folder.name), int(stat[11]) + int(stat[12]))
        except OSError:
            continue
    return found


def lives(pid):
    try:
        return Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def end_by(place, how, *sentences):
    """While all ranks work on a turn of many frames, which becomes one file at the end."""
    out = place / "out" / "x.png"
    job = subprocess.Popen(["mpirun", "--oversubscribe", "-n", "3", PROGRAM, str(place / "v.mhd"), "-o", str(out), "--frames",
                            "3600", "--size", "600x600", "--threads", "1", "--quiet"], env=ENVIRONMENT, stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE, text=True)
    ticks = os.sysconf("SC_CLK_TCK")
    ranks = {}
    while job.poll() is None and not (len(ranks) == 3 and all(time_ > ticks / 2 for _, time_ in ranks.values())):
        time.sleep(0.05)
        ranks = pids_of(job.pid)
    expect(job.poll() is None, f"{how}: ended before it was disturbed")
    how(job, ranks)
    _, said = job.communicate(timeout=120)
    expect(job.returncode != 0, f"{sentences}: status {job.returncode}")
    expect(all(part in said for part in sentences), f"{sentences}: said {said}")
    expect(not list(place.glob("out/*")), f"{sentences}: left {list(place.glob('out/*'))}")
    # mpirun may be gone a moment before those that it has ended.
    for pid, _ in ranks.values():
        for _ in range(1200):
            if not lives(pid):
                break
            time.sleep(0.05)
        expect(not lives(pid), f"{sentences}: process {pid} goes on")


def killed(place):
    write_volume(place)
    end_by(place, lambda job, ranks: os.kill(ranks[1][0], signal.SIGKILL), "process rank 1 ", "signal 9 (Killed)")
    end_by(place, lambda job, ranks: os.kill(ranks[0][0], signal.SIGKILL), "process rank 0 ", "signal 9 (Killed)")
    end_by(place, lambda job, ranks: job.send_signal(signal.SIGINT))


def progress(place):
    """Told once, however many there are."""
    write_volume(place)
    for ranks in (1, 3):
        done = mpirun(ranks, PROGRAM, place / "v.mhd", "-o", place / "out" / "{view}.png", "--view", "front", "--view", "left")
        wanted = ["zox-mip-mpi: reading 40 slices", "zox-mip-mpi: picture 1 of 2", "zox-mip-mpi: picture 2 of 2"]
        expect(done.returncode == 0 and own_lines(done) == wanted, f"{ranks} ranks told {done.stderr}")
        expect(done.stdout.count("\n") == 1 and done.stdout.startswith(f"{ranks} rank" + "s" * (ranks > 1)), f"{ranks} ranks reported {done.stdout}")
        helped = mpirun(ranks, PROGRAM, "--help")
        expect(helped.returncode == 0 and helped.stdout.count("Usage: zox-mip-mpi") == 1, f"help of {ranks}: {helped.stdout}")


def main():
    for step in (inputs, ranks_alone, killed, progress):
        with tempfile.TemporaryDirectory() as name:
            (Path(name) / "out").mkdir()
            step(Path(name))
    print(f"{runs.failed} failed")
    sys.exit(1 if runs.failed else 0)


if __name__ == "__main__":
    main()
