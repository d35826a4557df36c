"""How calls spread their work over threads, tell of it and are cancelled."""

from __future__ import annotations

import ctypes
import os
import signal
import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import FrameType
from typing import Any

from . import _stack_room
from ._render import PROGRESS, Run, check, library
from .kernels.frame import c_integer

Progress = Callable[[float], object]

_lock = threading.Lock()
_shared: list[ctypes.c_void_p] = []  # the pool of all processors, once it is wanted


def _new_pool(threads: int) -> ctypes.c_void_p:
    pool = ctypes.c_void_p()
    check(library.zox_render_pool_create(threads, ctypes.byref(pool)))
    return pool


def _shared_pool() -> ctypes.c_void_p:
    with _lock:
        if not _shared:
            _shared.append(_new_pool(0))
        return _shared[0]


def _after_fork() -> None:
    """A child has none of the pool's threads, and must make a pool of its own."""
    global _lock
    _lock = threading.Lock()
    _shared.clear()


os.register_at_fork(after_in_child=_after_fork)


@contextmanager
def _pool(threads: int | None) -> Iterator[ctypes.c_void_p | None]:
    """None: all processors, by a pool that lives as long as the process; 1: the calling thread alone."""
    if threads is None:
        yield _shared_pool()
    elif c_integer(threads, "threads", 1, 1024) == 1:
        yield None
    else:
        pool = _new_pool(threads)
        try:
            yield pool
        finally:
            library.zox_render_pool_destroy(pool)


class _Interrupts:
    """Notes the interrupt key, whose handler might raise where a callback begins and the exception would be
    lost; `answer` then calls the handler. Only the main thread is ever interrupted."""

    def __init__(self) -> None:
        self.noted = False
        self._before: Any = None

    def __enter__(self) -> _Interrupts:
        if self.possible():
            self._before = signal.signal(signal.SIGINT, self._note)
        return self

    def __exit__(self, *_: object) -> None:
        if self._before is not None:
            signal.signal(signal.SIGINT, self._before)
            self.answer()

    def answer(self) -> None:
        """Does what the interrupt key would have done."""
        if self.noted:
            self.noted = False
            self._before(signal.SIGINT, None)

    @staticmethod
    def possible() -> bool:
        """Whether the calling thread is the one that an interrupt would raise in."""
        return threading.current_thread() is threading.main_thread() and callable(
            signal.getsignal(signal.SIGINT)
        )

    def _note(self, _number: int, _frame: FrameType | None) -> None:
        self.noted = True


def call(function: Callable[[Run], int], threads: int | None, progress: Progress | None) -> None:
    """Calls a function of the library with a run. progress is told the share done, 0 to 1; what it raises,
    and an interrupt, cancels the call and is raised from here."""
    _stack_room.require(_stack_room.GENERAL_TRILINEAR)
    run, raised = Run(), []
    library.zox_render_run_init(ctypes.byref(run))
    with _pool(threads) as pool, _Interrupts() as interrupts:

        def tell(_user: object, share: float) -> int:
            try:
                interrupts.answer()
                if progress is not None:
                    progress(share)
                interrupts.answer()
            except BaseException as error:
                raised.append(error)
            return 1 if raised else 0

        callback = PROGRESS(tell)
        run.pool = pool
        if progress is not None or _Interrupts.possible():
            run.progress = callback
        status = function(run)
    if raised:
        raise raised[0]
    check(status)
