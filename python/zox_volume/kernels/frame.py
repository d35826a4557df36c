"""Status texts, version, the thread-count setting, aligned memory."""

from __future__ import annotations

import ctypes
import operator
import weakref
from ctypes import byref, c_int

import numpy as np
from numpy.typing import DTypeLike, NDArray

from ._records import library

_MALLOC_LIMIT = 2147483583


def c_integer(value: int, name: str, lowest: int = -(2**31), highest: int = 2**31 - 1) -> int:
    """The value as an int, which must lie within the limits."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} must be an integer, not {type(value).__name__}") from None
    if not lowest <= number <= highest:
        raise ValueError(f"{name} must be {lowest} to {highest}, not {number}")
    return number


def get_string_status(status: int) -> str:
    """English text for a status code.

    >>> get_string_status(2)
    'Not enough memory for the function'
    >>> get_string_status(99)
    'Unknown Status'
    """
    text: bytes = library.zox_GetStringStatus(c_integer(status, "status"))
    return text.decode()


def get_version() -> str:
    """The kernel library's identity: tag, version, build date, platform and source control.

    >>> get_version().split(":")[0]
    'ZOX'
    """
    text: bytes = library.zox_GetVersion()
    return text.decode()


def identity() -> str:
    """The text of `zoxid`, which tools such as what(1) find in the library's file.

    >>> identity()[4:] == get_version()
    True
    """
    return (ctypes.c_char * 39).in_dll(library, "zoxid").value.decode()


def get_num_threads() -> int:
    """The thread-count setting of the process, -1 until one is stored. No operation consults it."""
    count = c_int()
    library.zox_GetNumThreads(byref(count))
    return count.value


def set_num_threads(count: int) -> None:
    """Stores the thread-count setting: any number, also 0 and negative ones.

    >>> set_num_threads(4)
    >>> get_num_threads()
    4
    >>> set_num_threads(-1)
    """
    library.zox_SetNumThreads(c_integer(count, "count"))


def aligned_zeros(shape: int | tuple[int, ...], dtype: DTypeLike = np.uint8) -> NDArray[np.generic]:
    """An array of zeros in a block of `zox_Malloc`, at an address divisible by 64. The block is released by
    `zox_Free` when the last array that stands in it is gone.

    >>> voxels = aligned_zeros((4, 64), "int16")
    >>> voxels.shape, voxels.dtype.name, voxels.ctypes.data % 64
    ((4, 64), 'int16', 0)
    """
    kind = np.dtype(dtype)
    if kind.hasobject or kind.itemsize == 0:
        raise TypeError(f"aligned_zeros needs a dtype of plain numbers, not {kind}")
    sizes = shape if isinstance(shape, tuple) else (shape,)
    count = 1
    for size in sizes:
        count *= c_integer(size, "a size in shape", 0)
    length = c_integer(count * kind.itemsize, "the size in bytes", 1, _MALLOC_LIMIT)
    address = library.zox_Malloc(length)
    if not address:
        raise MemoryError(f"zox_Malloc has no {length} bytes")
    block = (ctypes.c_uint8 * length).from_address(address)
    # Arrays may outlive the interpreter's last rites, so the block is not released at exit.
    weakref.finalize(block, library.zox_Free, address).atexit = False
    ctypes.memset(address, 0, length)
    plain: NDArray[np.generic] = np.frombuffer(memoryview(block), dtype=kind, count=count)
    return plain.reshape(sizes)


def align_pointer(address: int, alignment: int) -> int:
    """The address rounded up to a multiple of alignment, a power of two.

    >>> align_pointer(1000, 64)
    1024
    """
    place = c_integer(address, "address", 0, 2**63 - 1)
    size = c_integer(alignment, "alignment", 1)
    if size & (size - 1):
        raise ValueError(f"alignment must be a power of two, not {size}")
    return library.zox_AlignPointer(place, size) or 0
