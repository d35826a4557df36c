"""What the tests of DICOM series share: plain volumes, runs of zox-mip, the phantom by its formula."""
import subprocess
import sys

import numpy

PHANTOM_SIZE, PHANTOM_SPACING = (160, 192, 112), (1.2, 1.0, 1.6)
SHAPES = [  # centre, radii, value at the surface, and how much more at the centre
    ((0, 4, 0), (74, 88, 84), 40, 0), ((0, -86, -18), (9, 9, 12), 40, 0),
    ((0, 4, 6), (67, 80, 74), 350, 0), ((0, 4, 6), (61, 74, 68), 100, 500),
    ((28, -74, -10), (14, 16, 12), 20, 0), ((-28, -74, -10), (14, 16, 12), 20, 0),
    ((73, 10, -15), (6, 6, 6), 1000, 0)]


def phantom(coarse=1):
    """Voxels [slice, row, column] of the phantom as docs/zox-mip.md tells it, and their spacing; `coarse`: larger ones."""
    sizes = [len(range(0, size, coarse)) for size in PHANTOM_SIZE]
    spacing = [mm * coarse for mm in PHANTOM_SPACING]
    x, y, z = ((numpy.arange(n) - (n - 1) / 2) * mm for n, mm in zip(sizes, spacing))
    z, y, x = numpy.meshgrid(z, y, x, indexing="ij")
    voxels = numpy.full(x.shape, -1000.0)
    for centre, radii, surface, rise in SHAPES:
        q = ((x - centre[0]) / radii[0]) ** 2 + ((y - centre[1]) / radii[1]) ** 2 + ((z - centre[2]) / radii[2]) ** 2
        voxels = numpy.where(q <= 1, numpy.trunc(surface + rise * (1 - q)), voxels)
    for phase, value in ((numpy.pi, 800), (0, 1000)):
        angle = 2 * numpy.pi * z / 54 + phase
        off = (x - 32 * numpy.cos(angle)) ** 2 + (y - 32 * numpy.sin(angle)) ** 2
        voxels = numpy.where((abs(z) <= 60) & (z >= -48) & (off <= 16), value, voxels)
    return voxels.astype("<i2"), spacing


def write_raw(path, voxels):
    voxels.astype("<i2").tofile(path)
    return path


def write_nrrd(path, voxels, axes, origin=(-50.0, -60.0, -70.0)):
    """A plain volume; axes[a]: millimetres from voxel to voxel."""
    def point(p):
        return "(" + ",".join(repr(float(c)) for c in p) + ")"
    slices, rows, columns = voxels.shape
    head = ("NRRD0004\ntype: short\ndimension: 3\nendian: little\nencoding: raw\nspace: left-posterior-superior\n"
            f"sizes: {columns} {rows} {slices}\nspace directions: {' '.join(point(axis) for axis in axes)}\n"
            f"space origin: {point(origin)}\n\n")
    path.write_bytes(head.encode() + voxels.astype("<i2").tobytes())
    return path


def straight(spacing):
    return numpy.diag(spacing)


def run(program, *words, **more):
    return subprocess.run([program, *map(str, words)], capture_output=True, text=True, errors="replace",
                          timeout=300, **more)


def picture(program, output, *words):
    """The bytes of the picture; a failure of the tool ends the test."""
    done = run(program, *words, "-o", output, "--quiet")
    if done.returncode != 0:
        sys.exit(f"zox-mip {' '.join(map(str, words))}: {done.stderr}")
    return output.read_bytes()


class Report:
    """Counts what holds, and says what does not."""

    def __init__(self):
        self.checked = self.failed = 0

    def check(self, holds, what):
        self.checked += 1
        if not holds:
            self.failed += 1
            print("FAILED " + what)

    def finish(self, of_what):
        print(f"{self.checked - self.failed} of {self.checked} {of_what}")
        sys.exit(1 if self.failed or not self.checked else 0)
