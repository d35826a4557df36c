"""Whether the calling thread's stack has the room that an operation takes."""

from __future__ import annotations

import ctypes
import threading
from ctypes import byref, c_size_t, c_ulong, c_void_p

# What the operations take (ZOX_STACK_...), and what the interpreter has beneath and above them.
GENERAL_NEAREST = 320 * 1024
GENERAL_TRILINEAR = 576 * 1024
_INTERPRETER = 192 * 1024

_libc = ctypes.CDLL(None)
_libc.pthread_self.restype = c_ulong
_libc.pthread_getattr_np.argtypes = [c_ulong, c_void_p]
_libc.pthread_attr_getstacksize.argtypes = [c_void_p, c_void_p]
_libc.pthread_attr_destroy.argtypes = [c_void_p]
_known = threading.local()


def _stack_size() -> int:
    """Of the calling thread, in bytes; 0 where the system does not tell."""
    attributes = (c_size_t * 16)()  # larger than any pthread_attr_t
    if _libc.pthread_getattr_np(_libc.pthread_self(), byref(attributes)):
        return 0
    size = c_size_t()
    _libc.pthread_attr_getstacksize(byref(attributes), byref(size))
    _libc.pthread_attr_destroy(byref(attributes))
    return size.value


def require(size: int) -> None:
    """Raises RuntimeError unless the calling thread has a stack for an operation of this size."""
    if not hasattr(_known, "size"):
        _known.size = _stack_size()
    needed = size + _INTERPRETER
    if 0 < _known.size < needed:
        raise RuntimeError(
            f"the calling thread's stack of {_known.size} bytes is too small, this operation needs {needed}: "
            "see threading.stack_size"
        )
