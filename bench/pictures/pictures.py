#!/usr/bin/env python3
"""Runs the comparison of whole pictures and writes its figures.

usage: pictures.py BUILD ROUNDS COMMAND [--docs DIRECTORY]

BUILD holds bench_pictures, bench_vtk_mip and zox-mip. The rows go to BUILD/pictures/pictures.csv, and
with --docs there and into pictures.md too.
"""

import argparse
import csv
import os
import pathlib
import statistics
import subprocess
import sys
import time

import numpy
from scipy import ndimage

HERE = pathlib.Path(__file__).parent
EDGE = 512
SCANS = ("head 16 bits", "head 8 bits", "brain")
BRAIN = "/usr/share/mricron/templates/ch2better.nii.gz"
COLUMNS = ("what", "volume", "projection", "threads", "contender", "median_ms", "least_ms")


def read_job(folder, volume):
    lines = (folder / f"{volume} orthographic job".replace(" ", "-")).read_text().split("\n")
    vectors = [numpy.array(line.split(), float) for line in lines[:5]]
    return vectors[:4], vectors[4]


def read_volume(folder, volume):
    """Voxels as z, y, x and their spacing as x, y, z."""
    name = volume.replace(" ", "-")
    header = dict(line.split(" = ") for line in (folder / f"{name}.mhd").read_text().splitlines())
    size = [int(number) for number in header["DimSize"].split()]
    dtype = numpy.uint8 if header["ElementType"] == "MET_UCHAR" else numpy.int16
    return (numpy.fromfile(folder / f"{name}.raw", dtype).reshape(size[::-1]),
            numpy.array(header["ElementSpacing"].split(), float))


def scipy_picture(voxels, spacing, vectors, numbers):
    """The maximum along the depth of the volume resampled on the grid of all samples."""
    (right, up, forward, center), (pixel, step, _, _) = vectors, numbers
    diagonal = numpy.linalg.norm((numpy.array(voxels.shape[::-1]) - 1) * spacing)
    reach = int(numpy.ceil(diagonal / 2 / step))
    # Columns of the matrix: what one slice of samples, one row and one column of pixels mean, in z, y, x.
    matrix = numpy.array([forward * step, -up * pixel, right * pixel]) / spacing
    corner = (EDGE - 1) / 2 * pixel
    origin = (center - corner * right + corner * up - reach * step * forward) / spacing
    samples = ndimage.affine_transform(voxels, matrix.T[::-1], origin[::-1], (2 * reach + 1, EDGE, EDGE),
                                       order=1, mode="constant", cval=voxels.min())
    return samples.max(axis=0)


def time_scipy(folder, volume, rounds):
    voxels, spacing = read_volume(folder, volume)
    vectors, numbers = read_job(folder, volume)
    seconds = []
    for _ in range(rounds):
        begin = time.process_time()
        picture = scipy_picture(voxels, spacing, vectors, numbers)
        seconds.append(time.process_time() - begin)
    black, white = numbers[2:]
    grey = numpy.clip((picture.astype(float) - black) / (white - black) * 255, 0, 255).astype(numpy.uint8)
    ours = numpy.frombuffer((folder / f"{volume}-orthographic-zox.pgm".replace(" ", "-")).read_bytes()[-EDGE * EDGE:],
                            numpy.uint8).reshape(EDGE, EDGE)
    lit = (grey > 0) | (ours > 0)
    difference = numpy.sort(numpy.abs(grey[lit].astype(int) - ours[lit]))
    (folder / f"{volume}-orthographic-scipy.pgm".replace(" ", "-")).write_bytes(
        b"P5\n%d %d\n255\n" % (EDGE, EDGE) + grey.tobytes())
    yield ("picture", volume, "orthographic", "1", "scipy", f"{1e3 * statistics.median(seconds):.3f}",
           f"{1e3 * min(seconds):.3f}")
    yield ("difference", volume, "orthographic", str(difference.size), "scipy",
           str(difference[difference.size * 99 // 100]), f"{difference.mean():.2f}")


def run_once(command):
    """Processor and wall seconds of a process."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - begin
    if status != 0:
        sys.exit(f"pictures.py: {' '.join(command)} ended with status {status}")
    return usage.ru_utime + usage.ru_stime, wall


def time_files(build, folder, rounds):
    """From a file to a PNG, whole processes, taking turns."""
    for volume in SCANS:
        _, (pixel, _, black, white) = read_job(folder, volume)
        brain = volume == "brain"
        file = BRAIN if brain else str(folder / f"{volume.replace(' ', '-')}.mhd")
        window = f"{(black + white) / 2},{white - black}"
        for projection in ("orthographic", "perspective"):
            for threads in (1, 2):
                commands = {
                    "zox": [str(build / "zox-mip"), file, "-o", str(folder / "file-zox.png"), "--view", "30,10",
                            "--projection", projection, "--step", "1", "--window", window, "--quiet",
                            "-j", str(threads)],
                    # VTK takes the file's columns and rows as they lie: this brain's run the other way.
                    "vtk": [str(build / "bench_vtk_mip"), file, str(folder / "file-vtk.png"), str(threads),
                            projection, "210" if brain else "30", "10", str(black), str(white), str(pixel)]}
                times = {name: [] for name in commands}
                for command in commands.values():
                    run_once(command)
                for _ in range(rounds):
                    for name, command in commands.items():
                        times[name].append(run_once(command)[threads - 1])
                for name, seconds in times.items():
                    yield ("file to PNG", volume, projection, str(threads), name,
                           f"{1e3 * statistics.median(seconds):.3f}", f"{1e3 * min(seconds):.3f}")


def page(rows, command):
    """The table of ratios, and the text around it."""
    medians = {tuple(row[:5]): float(row[5]) for row in rows if row[0] not in ("difference", "samples")}
    lines = ["| | volume | rays | threads | zox, ms | VTK, ms | VTK / zox | without skipping, ms | VTK / that |",
             "|---|---|---|---|---|---|---|---|---|"]
    for (what, volume, projection, threads, contender), ours in medians.items():
        if contender != "zox" or volume == "noise" or what == "picture beside ITK":
            continue
        key = (what, volume, projection, threads)
        vtk, every = medians[(*key, "vtk")], medians.get((*key, "zox without skipping"))
        last = f"{every:.1f} | {vtk / every:.1f}" if every else " | "
        lines.append(f"| {what} | {volume} | {projection} | {threads} | {ours:.1f} | {vtk:.1f} | "
                     f"**{vtk / ours:.1f}** | {last} |")
    others = ["| volume | zox, ms | ITK, ms | ITK / zox | SciPy, ms | SciPy / zox |", "|---|---|---|---|---|---|"]
    for volume in SCANS:
        key = (volume, "orthographic", "1")
        ours, itk = (medians[("picture beside ITK", *key, name)] for name in ("zox", "itk"))
        scipy_ms = medians[("picture", *key, "scipy")]
        others.append(f"| {volume} | {ours:.1f} | {itk:.0f} | {itk / ours:.0f} | {scipy_ms:.0f} | "
                      f"{scipy_ms / ours:.0f} |")
    noise = ["| rays | threads | zox, ms | without skipping, ms | the loss |", "|---|---|---|---|---|"]
    for (what, volume, projection, threads, contender), ours in medians.items():
        if volume == "noise" and contender == "zox":
            every = medians[(what, volume, projection, threads, "zox without skipping")]
            noise.append(f"| {projection} | {threads} | {ours:.1f} | {every:.1f} | {100 * (ours / every - 1):+.1f} % |")
    costs = ["| volume | rays | samples | VTK, ns | without skipping, ns | sampling alone, ns | VTK / sampling alone |",
             "|---|---|---|---|---|---|---|"]
    for _, volume, projection, threads, _, count, _ in (row for row in rows if row[0] == "samples"):
        vtk, every, alone = (medians[("picture", volume, projection, threads, name)]
                             for name in ("vtk", "zox without skipping", "sampling alone"))
        each = 1e6 / float(count)
        costs.append(f"| {volume} | {projection} | {float(count) / 1e6:.1f} million | {vtk * each:.1f} | "
                     f"{every * each:.1f} | {alone * each:.1f} | {vtk / alone:.1f} |")
    differences = ["| volume | rays | beside | mean difference | 99 of 100 pixels differ by at most |",
                   "|---|---|---|---|---|"]
    for _, volume, projection, _, contender, most, mean in (row for row in rows if row[0] == "difference"):
        differences.append(f"| {volume} | {projection} | {contender} | {mean} | {most} |")
    text = (HERE / "pictures.md.in").read_text()
    cpu = next(line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name"))
    for name, table in (("@VTK@", lines), ("@OTHERS@", others), ("@NOISE@", noise), ("@COSTS@", costs), ("@DIFFERENCES@", differences)):
        text = text.replace(name, "\n".join(table))
    where = (f"{cpu}, {os.cpu_count()} processors, load {os.getloadavg()[2]:.0f}, "
             f"{time.strftime('%F', time.gmtime())}")
    return text.replace("@COMMAND@", command).replace("@WHERE@", where)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("rounds", type=int)
    parser.add_argument("command")
    parser.add_argument("--docs", type=pathlib.Path)
    arguments = parser.parse_args()
    folder = arguments.build / "pictures"
    folder.mkdir(exist_ok=True)
    output = subprocess.run([str(arguments.build / "bench_pictures"), str(folder), str(arguments.rounds)],
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    rows = [tuple(row) for row in csv.reader(output.splitlines())]
    for volume in SCANS:
        rows += time_scipy(folder, volume, max(1, arguments.rounds // 4))
    rows += time_files(arguments.build, folder, arguments.rounds)
    for place in [folder] + ([arguments.docs] if arguments.docs else []):
        with open(place / "pictures.csv", "w", newline="", encoding="utf-8") as file:
            writer = csv.writer(file, lineterminator="\n")
            writer.writerow(COLUMNS)
            writer.writerows(rows)
    text = page(rows, arguments.command)
    (folder / "pictures.md").write_text(text)
    if arguments.docs:
        (arguments.docs / "pictures.md").write_text(text)
    print(text)


if __name__ == "__main__":
    main()
