"""Every operation of libzox_volume.so on NumPy arrays: arrays in, planes out.

Arguments are checked before the call, and wherever one is not what it must be, TypeError, ValueError or
another exception tells why: nothing that is passed here reads or writes beyond an array. The interpreter's
lock is released while an operation runs, so that threads can cast rays at the same time.

    volumes    BlockedVolume, SliceStack: the two kinds of volume
    blocked    ray_cast_blocked_...: 8 operations on blocked volumes
    general    ray_cast_general_...: 10 operations on slice stacks
    maximum    find_max_...: 6 operations that reduce planes to one value a ray
    display    window_level_16s_8u
    frame      get_string_status, get_version, get_num_threads, set_num_threads, align_pointer, and
               aligned_zeros, which stands on zox_Malloc and zox_Free

>>> import numpy as np
>>> array = np.arange(60, dtype=np.uint8).reshape(4, 3, 5)  # slice, row, column
>>> stack = SliceStack(array)
>>> planes = ray_cast_general_parallel_trilinear_8u(stack, [[1, 1, 0], [2.5, 1, 0]], [0, 0, 0.5], [6, 5])
>>> find_max_8u(planes, [6, 5])
array([43, 37], dtype=uint8)
"""

from .blocked import (
    ray_cast_blocked_divergent_nearest_8u,
    ray_cast_blocked_divergent_nearest_16s,
    ray_cast_blocked_divergent_trilinear_8u,
    ray_cast_blocked_divergent_trilinear_16s,
    ray_cast_blocked_parallel_nearest_8u,
    ray_cast_blocked_parallel_nearest_16s,
    ray_cast_blocked_parallel_trilinear_8u,
    ray_cast_blocked_parallel_trilinear_16s,
)
from .display import window_level_16s_8u
from .frame import (
    align_pointer,
    aligned_zeros,
    get_num_threads,
    get_string_status,
    get_version,
    identity,
    set_num_threads,
)
from .general import (
    ray_cast_general_divergent_nearest_8u,
    ray_cast_general_divergent_nearest_16s,
    ray_cast_general_divergent_nearest_bit_8u,
    ray_cast_general_divergent_trilinear_8u,
    ray_cast_general_divergent_trilinear_16s,
    ray_cast_general_parallel_nearest_8u,
    ray_cast_general_parallel_nearest_16s,
    ray_cast_general_parallel_nearest_bit_8u,
    ray_cast_general_parallel_trilinear_8u,
    ray_cast_general_parallel_trilinear_16s,
)
from .maximum import (
    find_max_8u,
    find_max_16s,
    find_max_bmask_8u,
    find_max_bmask_16s,
    find_max_cmask_8u,
    find_max_cmask_16s,
)
from .volumes import BlockedVolume, SliceStack

__all__ = [
    "BlockedVolume",
    "SliceStack",
    "align_pointer",
    "aligned_zeros",
    "find_max_16s",
    "find_max_8u",
    "find_max_bmask_16s",
    "find_max_bmask_8u",
    "find_max_cmask_16s",
    "find_max_cmask_8u",
    "get_num_threads",
    "get_string_status",
    "get_version",
    "identity",
    "ray_cast_blocked_divergent_nearest_16s",
    "ray_cast_blocked_divergent_nearest_8u",
    "ray_cast_blocked_divergent_trilinear_16s",
    "ray_cast_blocked_divergent_trilinear_8u",
    "ray_cast_blocked_parallel_nearest_16s",
    "ray_cast_blocked_parallel_nearest_8u",
    "ray_cast_blocked_parallel_trilinear_16s",
    "ray_cast_blocked_parallel_trilinear_8u",
    "ray_cast_general_divergent_nearest_16s",
    "ray_cast_general_divergent_nearest_8u",
    "ray_cast_general_divergent_nearest_bit_8u",
    "ray_cast_general_divergent_trilinear_16s",
    "ray_cast_general_divergent_trilinear_8u",
    "ray_cast_general_parallel_nearest_16s",
    "ray_cast_general_parallel_nearest_8u",
    "ray_cast_general_parallel_nearest_bit_8u",
    "ray_cast_general_parallel_trilinear_16s",
    "ray_cast_general_parallel_trilinear_8u",
    "set_num_threads",
    "window_level_16s_8u",
]
