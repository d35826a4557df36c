"""Nothing that is passed to the kernels touches memory that is not theirs: volumes and planes stand between
pages that cannot be read, so that a stray access ends this process. Rays are drawn to start and end at
borders, just inside and just outside, and to be anything at all."""

import subprocess
import sys
import threading

import numpy as np
import pytest
from guarded import guarded
from hypothesis import given, settings
from hypothesis import strategies as st
from scenes import BLOCKED, DTYPES, GENERAL, voxels

from zox_volume import kernels

REFUSED = (TypeError, ValueError, MemoryError)
TINY = [0.0, 2.0**-53, 2.0**-40, 2.0**-21, 2.0**-20, 1e-6, 0.25, 0.5]
WILD = st.one_of(
    st.floats(),
    st.sampled_from(
        [
            0.0,
            -0.0,
            1e300,
            -1e300,
            float("nan"),
            float("inf"),
            2.0**31,
            -(2.0**31),
            1e9,
            2048.0,
            1024.0,
        ]
    ),
)


@st.composite
def near_border(draw, size):
    """On a border of an axis of so many voxels, or beside it by little."""
    border = draw(st.sampled_from([0.0, -0.5, size - 1.0, size - 0.5, size - 2.0, size, size / 2]))
    return border + draw(st.sampled_from(TINY)) * draw(st.sampled_from([1.0, -1.0]))


@st.composite
def border_rays(draw, sizes, most=8):
    number = draw(st.sampled_from([1, 1, 2, 3, most]))
    at_border = [draw(st.booleans()) for _ in sizes]
    count = st.one_of(st.integers(0, 40), st.sampled_from([1000, 5000]))
    counts = [draw(count) for _ in range(number)]
    points = st.tuples(
        *(near_border(size) if border else st.floats(0, size - 1.5) for size, border in zip(sizes, at_border))
    )
    starts = [draw(points) for _ in range(number)]
    ends = [draw(points) for _ in range(number)]
    steps = [
        tuple((end - start) / max(count - 1, 1) for start, end in zip(starts[r], ends[r]))
        for r, count in enumerate(counts)
    ]
    if draw(st.integers(0, 9)) == 0:
        axis, ray = draw(st.integers(0, 2)), draw(st.integers(0, number - 1))
        place = draw(st.sampled_from([starts, steps]))
        place[ray] = tuple(draw(WILD) if a == axis else v for a, v in enumerate(place[ray]))
    return starts, steps, counts


def attempt(operation, volume, starts, steps, counts, parallel):
    """Whether the call was made."""
    out = guarded(np.zeros((max([*counts, 1]), max(len(starts), 1)), volume.dtype))
    try:
        operation(volume, starts, steps[0] if parallel else steps, counts, out)
    except REFUSED as error:
        assert str(error)
        return False
    return True


BRICKS = {
    (name, size): kernels.BlockedVolume(
        guarded(voxels(1, (size // 64) ** 2 * 131072, dtype, "any"), at_end=False), size
    )
    for name, dtype in DTYPES.items()
    for size in (64, 128)
}


@pytest.mark.parametrize("name", BLOCKED)
@given(data=st.data(), size=st.sampled_from([64, 128]))
def test_blocked(name, data, size):
    volume = BRICKS[name.split("_")[-1], size]
    starts, steps, counts = data.draw(border_rays([size, size, 32]))
    operation = getattr(kernels, f"ray_cast_blocked_{name}".lower())
    attempt(operation, volume, starts, steps, counts, "Parallel" in name)


@pytest.mark.parametrize("name", GENERAL)
@given(data=st.data(), at_end=st.booleans(), regions=st.integers(1, 2))
def test_general(name, data, at_end, regions):
    bits = "Bit" in name
    slices = [
        guarded(voxels(s, (7, 3 if bits else 9), DTYPES[name.split("_")[-1]], "any"), at_end)
        for s in range(6)
    ]
    top = data.draw(st.sampled_from([5.0, 5.5, 6.0, 20.0]))
    tables = ((0,), (0.0, top), (1.0,)) if regions == 1 else ((0, 3), (0.0, 3.0, top), (1.0, 1.0))
    volume = kernels.SliceStack(slices, *tables, bits=bits)
    starts, steps, counts = data.draw(border_rays([24 if bits else 9, 7, 6]))
    operation = getattr(kernels, f"ray_cast_general_{name}".lower())
    attempt(operation, volume, starts, steps, counts, "Parallel" in name)


@pytest.mark.parametrize("name", BLOCKED)
def test_blocked_rays_up_to_the_last_voxel_are_cast(name):
    """The checks are no stricter than the volume: border to border is cast, one step more is refused."""
    volume = BRICKS[name.split("_")[-1], 64]
    last = 63.0 if "Nearest" in name else 62.75
    operation = getattr(kernels, f"ray_cast_blocked_{name}".lower())
    step, more = ([last / 4, 0, 0], [0.25, 0, 0]) if "Trilinear" in name else ([15.75, 0, 0], [1, 0, 0])
    assert operation(volume, [[0, 0, 0]], step, 5).shape == (5, 1)
    with pytest.raises(ValueError, match="ray 0 leaves the volume: x of its last sample"):
        operation(volume, [[last, 0, 0]], more, 2)
    with pytest.raises(ValueError, match="ray 1 leaves the volume: z of its first sample"):
        operation(volume, [[0, 0, 0], [0, 0, 32]], step, 1)


@pytest.mark.parametrize("name", GENERAL)
def test_general_rays_up_to_the_last_voxel_are_cast(name):
    array = voxels(3, (6, 7, 2 if "Bit" in name else 9), DTYPES[name.split("_")[-1]], "any")
    volume = kernels.SliceStack(array, bits="Bit" in name)
    operation = getattr(kernels, f"ray_cast_general_{name}".lower())
    assert operation(volume, [[0, 0, 0]], [0, 0, 0.5], 11).shape == (11, 1)
    last = volume.columns - (1.0 if "Nearest" in name else 1.25)
    assert operation(volume, [[0, 0, 0]], [last, 0, 0], 2).shape == (2, 1)
    for start in (
        [last + 0.5, 0, 0],
        [-0.75, 0, 0],
        [0, 7, 0],
        [0, 0, 5.1],
        [0, 0, -0.1],
    ):
        with pytest.raises(ValueError, match="ray 0 leaves the volume: [xyz] of its first sample"):
            operation(volume, [start], [0, 0, 0], 1)


ANYTHING = st.one_of(
    st.none(),
    st.integers(-(2**70), 2**70),
    st.floats(),
    st.text(max_size=3),
    st.binary(max_size=3),
    st.lists(st.floats(), max_size=4),
    st.lists(st.tuples(WILD, WILD, WILD), max_size=3),
    st.lists(st.integers(-5, 2**33), max_size=3),
    st.sampled_from([object(), {}, np.zeros((2, 3)), np.zeros((0, 3)), np.array(["a"]), np.zeros(3, ">f8"),
                     np.zeros((2, 3), complex), np.zeros((2, 2), object), np.zeros((3, 2), np.int16)[::2],
                     np.zeros((3, 2), np.uint8).T, np.broadcast_to(np.uint8(3), (5, 2)), BRICKS["8U", 64]]),
)  # fmt: skip
OPERATIONS = [getattr(kernels, name) for name in kernels.__all__ if "free" not in name]


@settings(max_examples=10 * settings.default.max_examples)
@given(data=st.data(), operation=st.sampled_from(OPERATIONS), number=st.integers(1, 6))
def test_anything(data, operation, number):
    """Any operation with anything at all: it answers or refuses."""
    arguments = [data.draw(ANYTHING) for _ in range(number)]
    if operation is kernels.aligned_zeros:
        arguments = arguments[:1]
    try:
        operation(*arguments)
    except (TypeError, ValueError, MemoryError, AttributeError, OverflowError) as error:
        assert str(error)
    finally:
        kernels.set_num_threads(-1)


def stack(slices=4):
    return kernels.SliceStack(np.zeros((slices, 4, 4), np.int16))


NEAREST = kernels.ray_cast_general_divergent_nearest_16s
PARALLEL = kernels.ray_cast_general_parallel_nearest_16s
BRICK = kernels.BlockedVolume(np.zeros(131072, np.int16), 64)


@pytest.mark.parametrize(
    "call, error, words",
    [
        (lambda: NEAREST(stack(), np.zeros((65, 3)), [0, 0, 0], 1), ValueError, "at most 64 rays, not 65"),
        (lambda: NEAREST(stack(), [[0, 0, 0]], [0, 0, 0], 4194304), ValueError, "at most 4194303 here"),
        (lambda: NEAREST(stack(), [[0, 0, 0]], [0, 0, 0], -1), ValueError, "nsamples must be 0 to"),
        (lambda: NEAREST(stack(), [[0, 0, 0]], [0, 0, 0], 1.5), TypeError, "nsamples must be integers"),
        (lambda: NEAREST(stack(), [[0, 0, 0]], [0, 0, 0], [1, 1]), ValueError, "or 1, one a ray"),
        (lambda: NEAREST(stack(), [0, 0, 0], [0, 0, 0], 1), ValueError, "starts must be \\[ray, 3\\]"),
        (lambda: NEAREST(stack(), [[0, 0, np.nan]], [0, 0, 0], 1), ValueError, "starts must be finite"),
        (lambda: NEAREST(stack(), [["0", 0, 0]], [0, 0, 0], 1), TypeError, "starts must be numbers"),
        (lambda: PARALLEL(stack(), [[0, 0, 0]], [[0, 0, 0]], 1), ValueError, "3 numbers, which all rays share"),
        (lambda: PARALLEL(stack(513), [[0, 0, 0], [0, 0, 500]], [0, 0, 0], 1), ValueError, "at most 512 slices"),
        (lambda: NEAREST(BRICK, [[0, 0, 0]], [0, 0, 0], 1), TypeError, "must be a SliceStack, not BlockedVolume"),
        (lambda: kernels.ray_cast_general_divergent_nearest_8u(stack(), [[0, 0, 0]], [0, 0, 0], 1), TypeError,
         "takes 8U, not int16"),
        (lambda: kernels.BlockedVolume(np.zeros(131071, np.int16), 64), ValueError, "a multiple of 131072 elements"),
        (lambda: kernels.BlockedVolume(np.zeros(131072, np.int16), 100), ValueError, "power of two from 64 to 2048"),
        (lambda: kernels.BlockedVolume(np.zeros(131072, ">i2"), 64), TypeError, "uint8 or int16, not >i2"),
        (lambda: kernels.BlockedVolume(np.zeros(262144, np.int16)[::2], 64), ValueError, "contiguous"),
        (lambda: kernels.SliceStack(np.zeros((3, 4, 8), np.uint8)[:, :, ::2]), ValueError, "lie side by side"),
        (lambda: kernels.SliceStack(np.zeros((3, 4, 4), np.uint8), (0, 1), (0, 2, 1), (1, 1)), ValueError, "ascend"),
        (lambda: kernels.SliceStack(np.zeros((3, 4, 4), np.uint8), (1,)), ValueError, "must be 0 where there is one"),
        (lambda: kernels.SliceStack(np.zeros((3, 4, 4), np.uint8), (0,), (0, 2), (0,)), ValueError, "above 0"),
        (lambda: kernels.find_max_8u(np.zeros((3, 4), np.uint8), 4), ValueError, "at most 3, the number of planes"),
        (lambda: kernels.find_max_8u(np.zeros((3, 4), np.int16)), TypeError, "planes must be uint8, not int16"),
        (lambda: kernels.find_max_bmask_8u(np.zeros((9, 4), np.uint8), np.zeros(1, np.uint8)), ValueError,
         "at least 2 bytes, not 1"),
        (lambda: kernels.window_level_16s_8u(np.zeros(3, np.int16), 0, 1), ValueError, "width must be 2 or more"),
        (lambda: kernels.window_level_16s_8u(np.zeros(3, np.int16), 70000, 9), ValueError, "center must be -32768"),
        (lambda: kernels.align_pointer(5, 3), ValueError, "power of two, not 3"),
        (lambda: kernels.aligned_zeros(2**31 - 1), ValueError, "the size in bytes must be 1 to 2147483583"),
    ],
)  # fmt: skip
def test_refusals_say_why(call, error, words):
    with pytest.raises(error, match=words):
        call()


@pytest.mark.parametrize(
    "out, words",
    [
        (np.zeros((1, 2), np.int16), "must have 2 planes of 2 rays"),
        (np.zeros((2, 2), np.uint8), "out must be int16"),
        (np.zeros((2, 4), np.int16)[:, ::2], "side by side"),
        (np.broadcast_to(np.zeros(2, np.int16), (2, 2)), "writeable"),
        (
            np.lib.stride_tricks.as_strided(np.zeros(3, np.int16), (2, 2), (2, 2)),
            "overlap",
        ),
    ],
)
def test_planes_that_do_not_fit_are_refused(out, words):
    with pytest.raises((TypeError, ValueError), match=words):
        NEAREST(stack(), np.zeros((2, 3)), [0, 0, 1], 2, out)


def test_planes_within_the_volume_are_refused():
    array = np.zeros((4, 4, 4), np.int16)
    with pytest.raises(ValueError, match="share memory"):
        NEAREST(kernels.SliceStack(array), np.zeros((2, 3)), [0, 0, 1], 2, array[0])


def test_a_small_stack_is_refused_and_a_large_one_will_do():
    caught = []

    def cast():
        try:
            kernels.ray_cast_general_divergent_trilinear_16s(stack(), [[0, 0, 0]], [0, 0, 1], 2)
            caught.append(None)
        except RuntimeError as error:
            caught.append(error)

    before = threading.stack_size()
    try:
        for size in (256 * 1024, 1024 * 1024):
            threading.stack_size(size)
            thread = threading.Thread(target=cast)
            thread.start()
            thread.join()
    finally:
        threading.stack_size(before)
    assert "stack of 262144 bytes is too small" in str(caught[0]) and caught[1] is None


def test_arrays_may_go_while_volumes_live():
    """Volumes keep what they refer to; aligned blocks outlive whoever made them."""
    code = """
import gc, numpy as np
from zox_volume import kernels
block = kernels.aligned_zeros((3, 40, 50), np.int16)
block[...] = 7
stack = kernels.SliceStack(block)
del block
gc.collect()
assert (kernels.ray_cast_general_divergent_nearest_16s(stack, [[1, 1, 0]], [0, 0, 1], 3) == 7).all()
kept = kernels.aligned_zeros(10**6)[:10]
"""
    subprocess.run([sys.executable, "-c", code], check=True)
