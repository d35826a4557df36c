"""Cases worked out by hand from the description."""

import re

import numpy as np
import pytest

from zox_volume import kernels

STEPS = np.arange(4 * 3 * 5, dtype=np.uint8).reshape(4, 3, 5)  # 15 a slice, 5 a row, 1 a column


def test_the_layout_of_bricks():
    """Index bits of (x, y, z): x 0-1 and 5-8, y 2-3 and 9-12, z 4 and 13-16, then brick x, y, z."""
    array = np.zeros((33, 100, 100), np.uint8)
    places = {
        (1, 0, 0): 1,
        (0, 1, 0): 4,
        (0, 0, 1): 16,
        (4, 0, 0): 32,
        (0, 4, 0): 512,
        (0, 0, 2): 8192,
        (64, 0, 0): 131072,
        (0, 64, 0): 2 * 131072,
        (0, 0, 32): 4 * 131072,
        (70, 5, 31): 131072 + (6 & 3) + ((6 >> 2) << 5) + (1 << 2) + (1 << 9) + (1 << 4) + (15 << 13),
    }
    for value, (x, y, z) in enumerate(places, 1):
        array[z, y, x] = value
    volume = kernels.BlockedVolume.pack(array)
    assert (volume.size, volume.depth, volume.data.size) == (128, 64, 2 * 4 * 131072)
    for value, index in enumerate(places.values(), 1):
        assert volume.data[index] == value
    plain = volume.unpack()
    assert np.array_equal(plain[:33, :100, :100], array)
    assert (plain[33:, :100, :100] == array[32]).all() and (plain[:, 100:, :] == plain[:, 99:100, :]).all()


def test_blocked_nearest_rounds_half_up():
    volume = kernels.BlockedVolume.pack(STEPS)
    planes = kernels.ray_cast_blocked_divergent_nearest_8u(
        volume, [[0, 0, 0], [4, 2, 3]], [[0.5, 0, 0], [-1, 0, -1]], 4
    )
    assert planes.T.tolist() == [[0, 1, 1, 2], [59, 43, 27, 11]]


def test_blocked_divergent_nearest_drops_what_lies_below_a_unit():
    """A step of 1/3 is 349525 units of 2^-20: three steps come to one unit less than a voxel."""
    volume = kernels.BlockedVolume.pack(STEPS)
    nearest = kernels.ray_cast_blocked_divergent_nearest_8u(volume, [[0.5, 0, 0]], [1 / 3, 0, 0], 4)
    # (0.5 + 0.5) * 2^20 + 3 * 349525 = 2097151: voxel 1, where exact thirds would have come to voxel 2.
    assert nearest.T.tolist() == [[1, 1, 1, 1]]


def test_trilinear_means():
    volume = kernels.BlockedVolume.pack(STEPS.astype(np.int16))
    middle = [[0.5, 0.5, 0.5]]
    # The mean of 0 1 5 6 15 16 20 21 is 10.5, truncated.
    for cast in (
        kernels.ray_cast_blocked_divergent_trilinear_16s,
        kernels.ray_cast_blocked_parallel_trilinear_16s,
    ):
        assert cast(volume, middle, [1, 1, 1], 2).T.tolist() == [[10, 31]]


def test_truncation_is_toward_zero_in_16s_and_a_floor_in_8u():
    negative = kernels.BlockedVolume.pack(np.array([[[-6, -7]]], np.int16))
    cast = kernels.ray_cast_blocked_divergent_trilinear_16s
    assert cast(negative, [[0.5, 0, 0]], [0, 0, 0], 1).item() == -6
    falling = kernels.BlockedVolume.pack(np.array([[[7, 6]]], np.uint8))
    assert kernels.ray_cast_blocked_parallel_trilinear_8u(falling, [[0.5, 0, 0]], [0, 0, 0], 1).item() == 6


def test_a_floor_below_black_is_white():
    """Rows 0 and 1 are (1, 0) and (0, 0): at x = 1 - 2^-20, row 0 is 1 in units of 2^-20 and row 1 is 0;
    their difference -1 >> 10 is -1, times fy = 512 gives 1 - 512 < 0, floored to -1."""
    array = np.zeros((2, 2, 2), np.uint8)
    array[:, 0, 0] = 1
    volume = kernels.BlockedVolume.pack(array)
    value = kernels.ray_cast_blocked_parallel_trilinear_8u(volume, [[1 - 2.0**-20, 0.5, 0]], [0, 0, 0], 1)
    assert value.item() == 255


def test_a_boundary_belongs_to_the_region_that_a_ray_comes_from():
    """Slices 0 1 | 2 3: region 1 begins at z = 1 with slice 2. Rising, z = 1 is slice 1; falling, slice 2."""
    array = np.array([10, 20, 30, 40], np.uint8).repeat(4).reshape(4, 2, 2)
    stack = kernels.SliceStack(array, (0, 2), (0, 1, 2), (1, 1))
    cast = kernels.ray_cast_general_divergent_nearest_8u
    planes = cast(stack, [[0, 0, 0], [0, 0, 2]], [[0, 0, 1], [0, 0, -1]], 3)
    assert planes.T.tolist() == [[10, 20, 40], [40, 30, 10]]


def test_uneven_spacing():
    """Two slices a unit, then one a unit."""
    array = np.arange(5, dtype=np.int16).repeat(4).reshape(5, 2, 2) * 10
    stack = kernels.SliceStack(array, (0, 2), (0, 1, 3), (2, 1))
    cast = kernels.ray_cast_general_parallel_trilinear_16s
    assert cast(stack, [[0, 0, 0]], [0, 0, 0.5], 7).T.tolist() == [[0, 10, 20, 25, 30, 35, 40]]


def test_columns_of_bits():
    """Columns 0 to 7: the first byte, most significant bit first; column 8: bit 0 of the second; 9 on: 0."""
    stack = kernels.SliceStack(np.full((2, 1, 3), 0xFF, np.uint8), bits=True)
    cast = kernels.ray_cast_general_divergent_nearest_bit_8u
    assert cast(stack, [[0, 0, 0]], [1, 0, 0], 24).T.tolist() == [[1] * 9 + [0] * 15]
    stack = kernels.SliceStack(np.array([[[0b10010000, 1, 0]]] * 2, np.uint8), bits=True)
    for cast in (cast, kernels.ray_cast_general_parallel_nearest_bit_8u):
        assert cast(stack, [[0, 0, 0]], [1, 0, 0], 10).T.tolist() == [[1, 0, 0, 1, 0, 0, 0, 0, 1, 0]]


def test_maxima_of_nothing():
    planes = np.array([[-5, 3]], np.int16)
    assert kernels.find_max_16s(planes, [0, 1]).tolist() == [-32768, 3]
    assert kernels.find_max_cmask_16s(planes, np.array([255], np.uint8), 255).tolist() == [-32768, -32768]
    assert kernels.find_max_8u(np.zeros((0, 2), np.uint8)).tolist() == [0, 0]


def test_window_level_truncates():
    """width 4 around 2: lo 1, hi 3, slope 63.75, offset 0."""
    src = np.arange(-1, 6, dtype=np.int16)
    assert kernels.window_level_16s_8u(src, 2, 4).tolist() == [
        0,
        0,
        63,
        127,
        191,
        255,
        255,
    ]


def test_new_planes_lie_an_odd_number_of_cache_lines_apart():
    stack = kernels.SliceStack(np.zeros((4, 4, 4), np.int16))
    for rays in (1, 32, 33, 64):
        planes = kernels.ray_cast_general_divergent_nearest_16s(stack, np.zeros((rays, 3)), [0, 0, 1], 3)
        assert planes.strides[0] % 128 == 64 and planes.shape == (3, rays)


@pytest.mark.parametrize("status, text", [(0, "No error"), (7, "Unknown Status"), (-1, "Unknown Status")])
def test_status_texts(status, text):
    assert kernels.get_string_status(status) == text


def test_the_frame():
    version = kernels.get_version()
    assert re.fullmatch(r"ZOX:\d{4}:\d{8}:linux-x8664:svn:", version)
    assert kernels.identity() == "@(#)" + version
    kernels.set_num_threads(-5)
    assert kernels.get_num_threads() == -5
    kernels.set_num_threads(-1)
    assert kernels.align_pointer(0, 64) == 0 and kernels.align_pointer(65, 64) == 128
    block = kernels.aligned_zeros((3, 5), "int16")
    assert block.ctypes.data % 64 == 0 and not block.any() and block.flags.writeable
