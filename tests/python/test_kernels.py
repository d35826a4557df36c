"""Every ray caster against the description, on random volumes and rays."""

import functools

import numpy as np
import pytest
import reference
from hypothesis import given
from hypothesis import strategies as st
from scenes import BLOCKED, DTYPES, GENERAL, rays, voxels

from zox_volume import kernels

SEEDS = st.integers(0, 2**32 - 1)
KINDS = st.sampled_from(["any", "small", "extremes"])
UNTOUCHED = 77


def cast(layout, name, volume, starts, steps, counts):
    operation = getattr(kernels, f"ray_cast_{layout}_{name}".lower())
    longest = max(counts)
    out = np.full((longest + 1, len(starts) + 3), UNTOUCHED, volume.dtype)
    planes = operation(volume, starts, steps[0] if "Parallel" in name else steps, counts, out)
    assert planes.base is out or planes is out
    fresh = operation(volume, starts, steps[0] if "Parallel" in name else steps, counts)
    assert fresh.shape == (longest, len(starts))
    return out, fresh


def compare(values, out, fresh, counts):
    expected = np.full_like(out, UNTOUCHED)
    zeros = np.zeros_like(fresh)
    for (sample, ray), value in values.items():
        expected[sample, ray] = value
        zeros[sample, ray] = value
    assert np.array_equal(out, expected)
    assert np.array_equal(fresh, zeros)
    assert len(values) == sum(counts)


@functools.cache
def packed(size, voxel_type, kind):
    array = voxels(size, (32, size, size), DTYPES[voxel_type], kind)
    return array, kernels.BlockedVolume.pack(array)


@pytest.mark.parametrize("name", BLOCKED)
@given(data=st.data(), kind=KINDS, size=st.sampled_from([64, 128]))
def test_blocked(name, data, kind, size):
    array, volume = packed(size, name.split("_")[-1], kind)
    low, cut = (-0.5, 0.5) if "Nearest" in name else (0.0, 1.0)
    highs = [size - cut, size - cut, 32 - cut]
    starts, steps, counts = data.draw(rays([low] * 3, highs, "Parallel" in name))
    values = reference.blocked(name, lambda x, y, z: int(array[z, y, x]), starts, steps, counts)
    compare(values, *cast("blocked", name, volume, starts, steps, counts), counts)


@st.composite
def regions(draw, slices):
    """Tables of one to three regions over this many slices."""
    number = draw(st.integers(1, min(3, slices - 1)))
    cuts = sorted(draw(st.sets(st.integers(1, slices - 2), min_size=number - 1, max_size=number - 1)))
    edges = [0, *cuts, slices - 1]
    spacing = st.sampled_from([1.0, 0.5, 2.0, 0.75, 3.1])
    scale = [1.0 / draw(spacing) for _ in range(number)]
    bounds = [draw(st.sampled_from([0.0, -7.25, 100.1]))]
    for j in range(number):
        bounds.append(bounds[-1] + (edges[j + 1] - edges[j]) / scale[j])
    return edges[:number], bounds, scale


@pytest.mark.parametrize("name", GENERAL)
@given(data=st.data(), seed=SEEDS, kind=KINDS, upside_down=st.booleans())
def test_general(name, data, seed, kind, upside_down):
    slices = data.draw(st.integers(4, 9))
    array = voxels(seed, (slices, 11, 12), DTYPES[name.split("_")[-1]], kind)
    if upside_down:
        array = array[:, ::-1]
    bits = "Bit" in name
    columns = 24 if bits else 12
    array = array[:, :, :3] if bits else array

    def voxel(x, y, s):
        return reference.bit(array[s, y].tolist(), x) if bits else int(array[min(s, slices - 1), y, x])

    regslice, regbounds, regscale = data.draw(regions(slices))
    volume = kernels.SliceStack(list(array), regslice, regbounds, regscale, bits)
    stack = reference.Stack(voxel, slices, regslice, regbounds, regscale)
    # Offsets from ray 0 may round a position up by a unit of fixed point, so that 0.5 before the end is too far.
    low, cut = (-0.5, 0.501) if "Nearest" in name else (0.0, 1.001)
    lows, highs = [low, low, regbounds[0]], [columns - cut, 11 - cut, regbounds[-1]]
    starts, steps, counts = data.draw(rays(lows, highs, "Parallel" in name))
    values = reference.general(name, stack, starts, steps, counts)
    compare(values, *cast("general", name, volume, starts, steps, counts), counts)


@pytest.mark.parametrize("kind", ["8u", "16s"])
@given(
    seed=SEEDS,
    samples=st.integers(1, 20),
    number=st.integers(1, 40),
    threshold=st.integers(0, 255),
)
def test_maxima(kind, seed, samples, number, threshold):
    random = np.random.default_rng(seed)
    dtype = DTYPES[kind.upper()]
    lowest = np.iinfo(dtype).min if kind == "16s" else 0
    planes = voxels(seed, (samples, number), dtype, "any")
    counts = random.integers(0, samples + 1, number)
    mask = random.integers(0, 256, samples, np.uint8)
    every = np.ones(samples, bool)
    bits = np.unpackbits(np.packbits(mask > 100))[:samples].astype(bool)
    find = {name: getattr(kernels, f"find_max_{name}{kind}") for name in ("", "bmask_", "cmask_")}
    for selected, maxima in (
        (every, find[""](planes, counts)),
        (bits, find["bmask_"](planes, np.packbits(mask > 100), counts)),
        (mask > threshold, find["cmask_"](planes, mask, threshold, counts)),
    ):
        for ray in range(number):
            samples_of_ray = planes[: counts[ray], ray][selected[: counts[ray]]]
            assert maxima[ray] == max([lowest, *samples_of_ray.tolist()])


@given(
    seed=SEEDS,
    center=st.integers(-500, 500),
    width=st.integers(2, 2000),
    ends=st.tuples(*[st.integers(0, 255)] * 2),
)
def test_window_level(seed, center, width, ends):
    outmin, outmax = sorted(ends)
    src = np.random.default_rng(seed).integers(-2000, 2000, 200).astype(np.int16)
    expected = [reference.window_level(int(v), center, width, outmin, outmax) for v in src]
    assert kernels.window_level_16s_8u(src, center, width, outmin, outmax).tolist() == expected
    in_place = src.copy()
    out = in_place.view(np.uint8)[: src.size]
    kernels.window_level_16s_8u(in_place, center, width, outmin, outmax, out)
    assert out.tolist() == expected
