#!/usr/bin/python3
"""Measures zox-mip-mpi with 1 to 8 ranks on this machine, fits a model and predicts larger runs.

    model.py ZOX-MIP-MPI VOLUME OUTPUT.csv

On a machine of few cores ranks share them, so that wall time says nothing of scaling. What does: how evenly
samples and voxels lie on the ranks (counted), the rates of one rank that has a core to itself (measured with one
rank), and the bytes of the reduction. The model is

    seconds(N) = bytes / N / disk + voxels / N / pack + samples * share / N / cast / balance(N)
                 + ceil(log2 N) * (latency + pixels * bytes_a_pixel / network)
"""
import csv
import json
import math
import os
import statistics
import subprocess
import sys
import tempfile

RANKS = [1, 2, 3, 4, 6, 8]
# What a cluster brings, not this machine: a parallel file system's share of a node, and a network.
DISK_BYTES = 1.0e9  # a second, for each rank
NETWORK_BYTES = 5.0e9  # a second
LATENCY = 5.0e-6
# The volume of the prediction: 16 bits a voxel, a picture as wide as half of its columns, a sample a voxel.
EDGE, PICTURE = 10_000, 4096


def run(program, volume, ranks):
    command = ["mpirun", "--oversubscribe", "-n", str(ranks), program, volume, "-o", f"{tempfile.gettempdir()}/zox-cluster.png"]
    command += ["--size", "512x512", "--stats", "--threads", "1", "--view", "30,20"]
    allowed = {**os.environ, "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}
    done = subprocess.run(command, capture_output=True, text=True, check=True, env=allowed)
    return json.loads(done.stdout)


def measured(program, volume):
    rows = []
    for ranks in RANKS:
        stats = run(program, volume, ranks)
        samples, voxels = stats["samples_cast_by_rank"], stats["voxels_by_rank"]
        rows.append({"ranks": ranks, "samples_asked": stats["samples"], "samples_cast": sum(samples),
                     "balance": sum(samples) / ranks / max(samples), "voxels": sum(voxels),
                     "most_voxels": max(voxels)})
    return rows


def rates(program, volume):
    runs = [run(program, volume, 1) for _ in range(5)]
    pack = statistics.median(sum(r["voxels_by_rank"]) / r["seconds_volume"] for r in runs)
    cast = statistics.median(sum(r["samples_cast_by_rank"]) / r["seconds_rendering"] for r in runs)
    share = runs[0]["samples_cast_by_rank"][0] / runs[0]["samples"]
    return pack, cast, share


def predict(ranks, pack, cast, share, balance):
    voxels, samples = EDGE**3, PICTURE**2 * EDGE
    read = 2 * voxels / ranks / DISK_BYTES
    packing = voxels / ranks / pack
    casting = samples * share / ranks / cast / balance
    reduction = math.ceil(math.log2(ranks)) * (LATENCY + PICTURE**2 * 2 / NETWORK_BYTES)
    return {"ranks": ranks, "read": read, "pack": packing, "cast": casting, "reduce": reduction,
            "seconds": read + packing + casting + reduction, "gigabytes_a_rank": 2.06 * voxels / ranks / 1e9}


def main():
    program, volume, output = sys.argv[1:]
    rows = measured(program, volume)
    pack, cast, share = rates(program, volume)
    balance = min(row["balance"] for row in rows)
    print(f"one rank: packs {pack / 1e6:.0f} million voxels a second, casts {cast / 1e6:.0f} million samples a second")
    for row in rows:
        print(f"{row['ranks']} ranks: balance {row['balance']:.2f}, {row['samples_cast'] / row['samples_asked']:.2f} "
              f"of the samples cast, {row['voxels'] / rows[0]['voxels']:.3f} of the voxels read")
    predictions = [predict(2**n, pack, cast, share, balance) for n in range(6, 13)]
    with open(output, "w", newline="") as file:
        writer = csv.DictWriter(file, predictions[0].keys())
        writer.writeheader()
        writer.writerows(predictions)
    for row in predictions:
        print(", ".join(f"{key} {value:.4g}" for key, value in row.items()))


if __name__ == "__main__":
    main()
