"""The phantom by the formula in docs/zox-mip.md, and small volumes for tests."""
import gzip
import math
import struct

SIZE = (160, 192, 112)
SPACING = (1.2, 1.0, 1.6)
SHAPES = [  # centre, radii, value at the surface and how much more at the centre
    ((0, 4, 0), (74, 88, 84), 40, 0),
    ((0, -86, -18), (9, 9, 12), 40, 0),
    ((0, 4, 6), (67, 80, 74), 350, 0),
    ((0, 4, 6), (61, 74, 68), 100, 500),
    ((28, -74, -10), (14, 16, 12), 20, 0),
    ((-28, -74, -10), (14, 16, 12), 20, 0),
    ((73, 10, -15), (6, 6, 6), 1000, 0),
]


def voxel_position(voxel):
    return [(voxel[axis] - (SIZE[axis] - 1) / 2) * SPACING[axis] for axis in range(3)]


def value_at(point):
    value = -1000
    for centre, radii, surface, rise in SHAPES:
        q = sum(((point[axis] - centre[axis]) / radii[axis]) ** 2 for axis in range(3))
        if q <= 1:
            value = int(surface + rise * (1 - q))
    x, y, z = point
    for phase, vessel in ((math.pi, 800), (0, 1000)):
        angle = 2 * math.pi * z / 54 + phase
        if -48 <= z <= 60 and (x - 32 * math.cos(angle)) ** 2 + (y - 32 * math.sin(angle)) ** 2 <= 16:
            value = vessel
    return value


def voxel_value(voxel):
    return value_at(voxel_position(voxel))


def nrrd_head(side, encoding):
    return (f"NRRD0004\ntype: short\ndimension: 3\nsizes: {side} {side} {side}\nendian: little\n"
            f"encoding: {encoding}\nspace: left-posterior-superior\n"
            "space directions: (1,0,0) (0,1,0) (0,0,1)\nspace origin: (0,0,0)\n\n").encode()


def write_packed_zeros(path, side):
    """A cube of zeros that takes a while to unpack."""
    slices = gzip.compress(bytes(2 * side * side * 16), 6)
    with open(path, "wb") as file:
        file.write(nrrd_head(side, "gzip") + slices * (side // 16))


def write_nrrd(path, most, side=16):
    """A cube of 16-bit voxels that rise from 0 to `most`."""
    voxels = [most * i // (side ** 3 - 1) for i in range(side ** 3)]
    with open(path, "wb") as file:
        file.write(nrrd_head(side, "raw") + struct.pack(f"<{len(voxels)}h", *voxels))
