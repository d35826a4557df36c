"""The operations as zox_volume.h describes them, sample by sample in plain Python numbers: a float is a
double, an int has any width. Slow, and nothing but the description."""

import math


def wrap32(value):
    return (value + 2**31) % 2**32 - 2**31


def wrap(value, bits, signed):
    value %= 2**bits
    return value - 2**bits if signed and value >= 2 ** (bits - 1) else value


def trunc(value):
    if math.isnan(value) or not -(2**31) - 1 < value < 2**31:
        return -(2**31)
    return math.trunc(value)


def round_half(value):
    return trunc(value + 0.5)


def double_value(voxel, position):
    """The sum of eight products of Blocked Divergent Trilinear."""
    i = [trunc(p) for p in position]
    (fx, fy, fz) = f = [p - n for p, n in zip(position, i)]
    gx, gy, gz = (1 - part for part in f)

    def v(a, b, c):
        return float(voxel(i[0] + a, i[1] + b, i[2] + c))

    total = ((gy * gx) * gz) * v(0, 0, 0)
    total = total + ((gy * fx) * gz) * v(1, 0, 0)
    total = total + ((gx * fy) * gz) * v(0, 1, 0)
    total = total + ((gy * gx) * fz) * v(0, 0, 1)
    total = total + ((fx * fy) * gz) * v(1, 1, 0)
    total = total + ((gy * fx) * fz) * v(1, 0, 1)
    total = total + ((gx * fy) * fz) * v(0, 1, 1)
    total = total + ((fx * fy) * fz) * v(1, 1, 1)
    return trunc(total)


def integer_value(voxel, x, y, z):
    """Of Blocked Parallel Trilinear 8U: positions with 20 fraction bits."""
    i, j, k = x >> 20, y >> 20, z >> 20
    fx, fy, fz = x & 0xFFFFF, (y & 0xFFFFF) >> 10, (z & 0xFFFFF) >> 10

    def row(b, c):
        a = voxel(i, j + b, k + c)
        return wrap32((a << 20) + (voxel(i + 1, j + b, k + c) - a) * fx)

    def layer(c):
        return wrap32(row(0, c) + (wrap32(row(1, c) - row(0, c)) >> 10) * fy)

    value = wrap32(layer(0) + (wrap32(layer(1) - layer(0)) >> 10) * fz) >> 20
    return value & 0xFF


def lerp_value(voxel, x, y, z):
    """Of General Trilinear 16S: x, then y, then z, with all 20 bits of each weight."""
    i, j, k = x >> 20, y >> 20, z >> 20
    fx, fy, fz = ((part & 0xFFFFF) * 2.0**-20 for part in (x, y, z))

    def mix(a, b, f):
        return a + (b - a) * f

    def row(b, c):
        return mix(float(voxel(i, j + b, k + c)), float(voxel(i + 1, j + b, k + c)), fx)

    layers = [mix(row(0, c), row(1, c), fy) for c in (0, 1)]
    return wrap(trunc(mix(layers[0], layers[1], fz)), 16, True)


def sample_by_sample(starts, step, weights, scale):
    """Whether a parallel blocked batch is walked in that order."""
    if len(starts) > 64:
        return False
    if scale == 1:
        offsets = [[a - b for a, b in zip(s, starts[0])] for s in starts]
    else:
        base = [trunc(v * scale) for v in starts[0]]
        offsets = [[float(trunc(v * scale - b)) for v, b in zip(s, base)] for s in starts]
    ms = max([0.0] + [abs(d) / w for d, w in zip(step, weights)])
    means = [0.0, 0.0, 0.0]
    for axis in range(3):
        total = 0.0
        for r in range(1, len(starts)):
            total += abs(offsets[r][axis] - offsets[r - 1][axis]) * (1.0 / scale)
        means[axis] = total / (len(starts) - 1) if len(starts) > 1 else 0.0
    return ms > max([0.0] + [m / w for m, w in zip(means, weights)])


def blocked_positions(name, starts, steps, counts):
    """{(sample, ray): position}: doubles, or fixed point with 20 fraction bits."""
    parallel, nearest, narrow = "Parallel" in name, "Nearest" in name, "8U" in name
    fixed = (nearest and not parallel) or (parallel and not nearest and narrow)
    bias = 0.5 if nearest else 0.0
    one = 2.0**20 if fixed else 1
    unit = trunc if fixed else float
    places = {}
    together = parallel and sample_by_sample(starts, steps[0], (12.0 if narrow else 6.0, 6.0, 1.0), one)
    for r, start in enumerate(starts):
        step = [unit(d * one) for d in (steps[0] if parallel else steps[r])]
        if together:
            p = [unit((s + bias) * one) for s in starts[0]]
            if fixed:
                offset = [trunc(s * one - b) for s, b in zip(start, p)]
            else:
                offset = [s - s0 for s, s0 in zip(start, starts[0])]
        else:
            p = [unit((s + bias) * one) for s in start]
            offset = [0, 0, 0]
        for k in range(counts[r]):
            places[k, r] = [o + v for o, v in zip(offset, p)]
            p = [v + d for v, d in zip(p, step)]
    return places, fixed


def blocked(name, voxel, starts, steps, counts):
    """{(sample, ray): value} of a RayCast_Blocked operation; voxel(x, y, z)."""
    places, fixed = blocked_positions(name, starts, steps, counts)
    values = {}
    for key, p in places.items():
        if "Nearest" in name:
            values[key] = voxel(*(v >> 20 if fixed else trunc(v) for v in p))
        elif fixed:
            values[key] = integer_value(voxel, *p)
        else:
            values[key] = wrap(double_value(voxel, p), 8 if "8U" in name else 16, "16S" in name)
    return values


class Stack:
    """A slice stack's tables; voxel(x, y, slice)."""

    def __init__(self, voxel, nslices, regslice, regbounds, regscale):
        self.voxel, self.nslices = voxel, nslices
        self.regslice, self.regbounds, self.regscale = regslice, regbounds, regscale


def one_region(stack, starts, step, counts):
    (x0, y0, z0), scale = starts[0], stack.regscale[0]
    origin = [x0, y0, scale * (z0 - stack.regbounds[0])]
    move = [step[0], step[1], step[2] * scale]
    values = {}
    for r, start in enumerate(starts):
        distance = [start[0] - x0, start[1] - y0, (start[2] - z0) * scale]
        offset = [wrap32(trunc(d * 2.0**21) + 2**20) for d in distance]
        p = list(origin)
        for k in range(counts[r]):
            x, y, s = (wrap32(o + trunc(v * 2.0**21)) >> 21 for o, v in zip(offset, p))
            values[k, r] = stack.voxel(x, y, s)
            p = [v + d for v, d in zip(p, move)]
    return values


def by_lists(name, stack, starts, steps, counts):
    nearest = "Nearest" in name
    one, shift = (2.0**21, 21) if nearest else (2.0**20, 20)
    regions = len(stack.regscale)

    def t(v):
        return trunc(v * one)

    def r(v):
        return trunc(v * one + 0.5)

    if nearest:
        start_xy = lambda v: t(v + 0.5)  # noqa: E731
        rounds = "Divergent" in name and "Bit" not in name and regions == 1
        step_xy, along_z, bound = (r if rounds else t), t, t
    else:
        start_xy, step_xy, along_z = r, r, r
        bound = t if name == "Divergent_Trilinear_16S" else r
    bounds = [bound(b) for b in stack.regbounds]
    values = {}
    for ray, start in enumerate(starts):
        step = steps[0] if "Parallel" in name else steps[ray]
        x, y, z = start_xy(start[0]), start_xy(start[1]), along_z(start[2])
        dx, dy, dz = step_xy(step[0]), step_xy(step[1]), along_z(step[2])
        rising = dz >= 1
        region, p = (0 if rising else regions - 1), None
        for k in range(counts[ray]):
            before = region
            if rising:
                while region < regions - 1 and bounds[region + 1] < z:
                    region += 1
            else:
                while region > 0 and z < bounds[region]:
                    region -= 1
            if p is None or region != before:
                p = trunc((z - bounds[region]) * stack.regscale[region])
            first = stack.regslice[region]
            s = first + ((p + 2**20) >> 21) if nearest else first + (p >> 20)
            if 0 <= s < stack.nslices:
                if nearest:
                    values[k, ray] = stack.voxel(x >> 21, y >> 21, s)
                else:
                    at = integer_value if name.endswith("8U") else lerp_value
                    values[k, ray] = at(stack.voxel, x, y, (s << 20) + (p & 0xFFFFF))
            x, y, z = x + dx, y + dy, z + dz
            p += trunc(dz * stack.regscale[region])
    return values


def general(name, stack, starts, steps, counts):
    """{(sample, ray): value} of a RayCast_General operation."""
    if name.startswith("Parallel_Nearest") and len(stack.regscale) == 1:
        spread = max(abs(s[2] - starts[0][2]) for s in starts)
        if (stack.regbounds[1] - stack.regbounds[0]) * 0.2 > spread:
            return one_region(stack, starts, steps[0], counts)
    return by_lists(name, stack, starts, steps, counts)


def bit(row, x):
    """Column x of a row of bytes."""
    place = 7 - (x - (x >> 3))
    place %= 32
    return (row[x >> 3] >> place) & 1 if place <= 7 else 0


def window_level(value, center, width, outmin, outmax):
    low, high = ((2 * center - width) >> 1) + 1, ((2 * center + width) >> 1) - 1
    slope = (outmax - outmin) / width
    offset = outmin - (center - 0.5 * width) * slope
    if value < low:
        return outmin
    return outmax if value > high else trunc(value * slope + offset)
