"""Arrays between pages that cannot be touched: a stray read or write ends the process."""

import ctypes
import mmap

import numpy as np

_libc = ctypes.CDLL(None, use_errno=True)
_libc.mprotect.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_int]


def guarded(array, at_end=True):
    """A copy of the array that ends (or begins) where a page begins that cannot be read."""
    array = np.ascontiguousarray(array)
    pages = -(-array.nbytes // mmap.PAGESIZE)
    memory = mmap.mmap(-1, (pages + 2) * mmap.PAGESIZE)
    whole = np.frombuffer(memory, np.uint8)
    for page in (0, pages + 1):
        if _libc.mprotect(whole.ctypes.data + page * mmap.PAGESIZE, mmap.PAGESIZE, 0):
            raise OSError(ctypes.get_errno(), "mprotect")
    first = mmap.PAGESIZE + (pages * mmap.PAGESIZE - array.nbytes if at_end else 0)
    copy = whole[first : first + array.nbytes].view(array.dtype).reshape(array.shape)
    copy[...] = array
    return copy
