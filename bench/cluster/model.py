#!/usr/bin/python3
"""Measures zox-mip-mpi with 1 to 8 ranks on this machine, fits a model and predicts larger runs.

    model.py ZOX-MIP-MPI SCAN.mhd docs/cluster.md

writes the tables between the page's marks and the plot beside it. SCAN.mhd holds 16-bit integers in a raw file; each of
its voxels is made 2 x 2 x 4, so that rates are those of much work.

Ranks share this machine's few cores, so that wall time says nothing of scaling. What does is counted: the samples and
the voxels of each rank, its memory and the bytes that it gives to the reduction. Rates are those of one rank alone, by
the time of its processor.
"""
import json
import math
import os
import re
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy

import model_plot

RANKS = [1, 2, 3, 4, 6, 8]
PREDICTED = [64, 128, 256, 512, 1024, 2048, 4096]
LOOK = ["--size", "512x512", "--stats", "--quiet", "--threads", "1", "--view", "30,20"]
STEP = 0.5  # voxels from sample to sample, zox-mip's default
# What a cluster brings, not this machine.
RANK_DISK, ALL_DISKS = 1.0e9, 100.0e9  # bytes a second that a rank reads, and all of them together
NETWORK, LATENCY = 5.0e9, 5.0e-6  # bytes a second, and seconds a message
# What is predicted: 16 bits a voxel and a large picture.
EDGE, PICTURE, VOXEL_BYTES, LONGEST = 10_000, 4096, 2, 1024


def enlarged(scan, place):
    fields = dict(re.split(r"\s*=\s*", line, maxsplit=1) for line in scan.read_text().splitlines() if "=" in line)
    x, y, z = map(int, fields["DimSize"].split())
    voxels = numpy.fromfile(scan.parent / fields["ElementDataFile"], "<i2").reshape(z, y, x)
    voxels.repeat(4, 0).repeat(2, 1).repeat(2, 2).tofile(place / "v.raw")
    fields.update(DimSize=f"{2 * x} {2 * y} {4 * z}", ElementDataFile="v.raw")
    fields["ElementSpacing"] = " ".join(str(float(a) / b) for a, b in zip(fields["ElementSpacing"].split(), (2, 2, 4)))
    (place / "v.mhd").write_text("".join(f"{key} = {value}\n" for key, value in fields.items()))
    return place / "v.mhd", (2 * x, 2 * y, 4 * z)


def run(program, volume, ranks):
    allowed = {**os.environ, "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}
    done = subprocess.run(["mpirun", "--oversubscribe", "-n", str(ranks), program, volume, "-o", volume.parent / "x.png",
                           *LOOK], capture_output=True, text=True, check=True, env=allowed)
    return json.loads(done.stdout)


def counted(stats):
    cast, voxels = stats["samples_cast_by_rank"], stats["voxels_by_rank"]
    return {"ranks": stats["ranks"], "cast": sum(cast) / stats["samples"],
            "balance": sum(cast) / len(cast) / max(cast), "voxels": max(voxels) / sum(voxels),
            "resident": max(stats["resident_bytes_by_rank"]), "reduced": stats["reduced_bytes"]}


def fit(rows, runs, size):
    """Of the run with one rank the rates; of all the growth of the samples cast, as a power of the ranks."""
    logs = [(math.log(row["ranks"]), math.log(row["cast"])) for row in rows]
    slope, start = numpy.polyfit(*zip(*logs), 1)
    rays_and_samples = 512 * 512 * max(size) / STEP
    return {"prepare": statistics.median(sum(r["voxels_by_rank"]) / r["processor_seconds_volume"] for r in runs),
            "cast": statistics.median(sum(r["samples_cast_by_rank"]) / r["processor_seconds_rendering"] for r in runs),
            "share": math.exp(start), "growth": max(slope, 0), "balance": min(row["balance"] for row in rows),
            "filled": runs[0]["samples"] / rays_and_samples}


def parts_of(ranks):
    """How many parts, each of a rank, the volume is cut into: a share of 0.9 of even work at least, if it can be."""
    across = math.ceil((EDGE - 1) / (LONGEST - 1)) ** 2
    least = max(math.ceil(ranks / across), math.ceil((EDGE - 1) / (LONGEST - 1)))
    for count in range(least, 4 * least + 1):
        if count * across >= 0.9 * math.ceil(count * across / ranks) * ranks:
            return count * across
    return least * across


def predict(ranks, fitted):
    parts = parts_of(ranks)
    even = parts / (math.ceil(parts / ranks) * ranks)
    voxels = EDGE**3 / ranks / even
    samples = fitted["filled"] * PICTURE**2 * EDGE / STEP * min(1, fitted["share"] * ranks**fitted["growth"])
    read = 2 * VOXEL_BYTES * voxels / min(RANK_DISK, ALL_DISKS / ranks)  # once to measure, once to keep
    compute = voxels / fitted["prepare"] + samples / ranks / fitted["cast"] / min(fitted["balance"], even)
    reduce = math.ceil(math.log2(ranks)) * (LATENCY + PICTURE**2 * 2 / NETWORK)
    return {"ranks": ranks, "parts": parts, "compute": compute, "read": read, "reduce": reduce,
            "memory": voxels * VOXEL_BYTES * 1.03}


def table(heads, rows):
    return "\n".join(["| " + " | ".join(heads) + " |", "|" + "---|" * len(heads)] +
                     ["| " + " | ".join(row) + " |" for row in rows])


def measured_table(rows):
    return table(["ranks", "samples cast, of those asked for", "balance of samples", "most voxels of a rank",
                  "most memory of a rank", "each gives to the reduction"],
                 [[str(row["ranks"]), f"{row['cast']:.3f}", f"{row['balance']:.2f}", f"{row['voxels']:.3f}",
                   f"{row['resident'] / 1e6:.0f} MB", f"{row['reduced'] / 1e6:.2f} MB"] for row in rows])


def predicted_table(rows):
    lines = []
    for row in rows:
        seconds = row["compute"] + row["read"] + row["reduce"]
        shares = [f"{100 * row[key] / seconds:.1f} %" for key in ("compute", "read", "reduce")]
        lines.append([f"{row['ranks']:,}", f"{row['parts']:,}", f"{row['memory'] / 1e9:.1f} GB", f"{seconds:,.0f} s", *shares])
    return table(["ranks", "parts", "memory a rank", "first picture", "compute", "read", "reduce"], lines)


def sentence(fitted):
    return (f"One rank on one core measured and kept {fitted['prepare'] / 1e6:.0f} million voxels a second and cast "
            f"{fitted['cast'] / 1e6:.0f} million samples a second. Of the samples of a ray's path of edge length / step, "
            f"{fitted['filled']:.2f} lie in the volume; the share cast is {fitted['share']:.3f} x ranks^{fitted['growth']:.3f}; "
            f"the least balance is {fitted['balance']:.2f}.")


def replace(page, mark, text):
    return re.sub(rf"(<!-- {mark} -->\n).*?(<!-- end of {mark} -->)", lambda m: f"{m[1]}{text}\n{m[2]}", page, flags=re.S)


def main():
    program, scan, page = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])
    with tempfile.TemporaryDirectory() as place:
        volume, size = enlarged(scan, Path(place))
        runs = [run(program, volume, 1) for _ in range(5)]
        rows = [counted(run(program, volume, ranks)) for ranks in RANKS]
    fitted = fit(rows, runs, size)
    predictions = [predict(ranks, fitted) for ranks in PREDICTED]
    text = page.read_text()
    for mark, part in (("measured", measured_table(rows)), ("fitted", sentence(fitted)),
                       ("predicted", predicted_table(predictions))):
        text = replace(text, mark, part)
    page.write_text(text)
    page.with_suffix(".svg").write_text(model_plot.draw(predictions))
    print(measured_table(rows), sentence(fitted), predicted_table(predictions), sep="\n\n")


if __name__ == "__main__":
    main()
