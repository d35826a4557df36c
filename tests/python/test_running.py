"""Progress, cancelling, threads, forks; and that nothing that is passed to a volume ends the process.

Progress is told by the calling thread alone, after the shares of work that it does itself: with one thread,
all of them."""

import ctypes
import os
import signal
import threading

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from zox_volume import Volume, _render, _run, kernels

ARRAY = np.random.default_rng(5).integers(0, 255, (60, 70, 80), np.uint8)
VOLUME = Volume(ARRAY)


def test_progress_grows_to_one():
    shares = []
    VOLUME.render(size=400, progress=shares.append, threads=1)
    assert shares == sorted(shares) and len(shares) > 1 and 0 <= shares[0] and shares[-1] <= 1
    shares.clear()
    VOLUME.spin(3, size=100, progress=shares.append, threads=1)
    assert shares == sorted(shares) and shares[-1] > 2 / 3


def test_what_progress_raises_cancels():
    class Stop(Exception):
        pass

    def stop(share):
        raise Stop(share)

    for call in (
        lambda: VOLUME.render(progress=stop, threads=1),
        lambda: Volume(ARRAY, progress=stop, threads=1),
    ):
        with pytest.raises(Stop):
            call()
    assert VOLUME.render(size=20).any()


def test_the_interrupt_key_cancels(monkeypatch):
    calls, statuses, call = [], [], _run.call

    def watched(function, threads, progress):
        call(lambda run: statuses.append(function(run)) or statuses[-1], threads, progress)

    monkeypatch.setattr(_run, "call", watched)

    def interrupt(share):
        calls.append(share)
        signal.raise_signal(signal.SIGINT)

    before = signal.getsignal(signal.SIGINT)
    with pytest.raises(KeyboardInterrupt):
        VOLUME.render(size=2000, progress=interrupt, threads=1)
    assert len(calls) == 1 and statuses == [_render.CANCELLED]
    assert signal.getsignal(signal.SIGINT) is before


def test_a_handler_that_does_not_raise_cancels_nothing():
    seen, shares = [], []

    def interrupt(share):
        shares.append(share)
        signal.raise_signal(signal.SIGINT)

    before = signal.signal(signal.SIGINT, lambda number, frame: seen.append(number))
    try:
        assert VOLUME.render(size=100, progress=interrupt, threads=1).any()
    finally:
        signal.signal(signal.SIGINT, before)
    assert shares and len(seen) == len(shares)


def test_the_interrupt_key_after_the_last_progress():
    with pytest.raises(KeyboardInterrupt):
        _run.call(lambda run: signal.raise_signal(signal.SIGINT) or _render.OK, None, None)


def test_the_interrupt_key_from_outside():
    """Sooner or later a rendering is interrupted in its midst, or the loop is."""
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        while True:
            VOLUME.render(size=1500, step=0.1)
    timer.join()


def test_many_threads_at_once():
    wanted, caught = VOLUME.render((20, 30), size=100), []

    def render():
        for _ in range(5):
            caught.append(np.array_equal(VOLUME.render((20, 30), size=100), wanted))

    threads = [threading.Thread(target=render) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert caught == [True] * 20


def test_the_interpreters_lock_is_released():
    held = ctypes.pythonapi._func_flags_ & 4  # the flag of functions that keep the lock
    assert held
    for library in (_render.library, kernels._records.library):
        assert not library._func_flags_ & held


def test_a_forked_child_renders():
    """With a pool of its own: the parent's threads are not in the child."""
    VOLUME.render(size=20)
    child = os.fork()
    if child == 0:
        fresh = not _run._shared
        os._exit(0 if fresh and VOLUME.render(size=300).any() else 1)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0


REFUSALS = [
    ({"view": "sideways"}, "none of anterior"),
    ({"view": (1, 2, 3)}, "view must be a name"),
    ({"size": 0}, "size must be 1 to 8192"),
    ({"size": (3, 4, 5)}, "size must be one number"),
    ({"window": (5, 0)}, "width of the window must be above 0"),
    ({"projection": "flat"}, "projection must be perspective or orthographic"),
    ({"reduction": "sum"}, "reduction must be maximum, minimum, mean or largest_magnitude"),
    ({"threads": 0}, "threads must be 1 to 1024"),
    ({"slab": (5, -5)}, ""),
    ({"zoom": -1.0}, ""),
    ({"step": float("nan")}, ""),
    ({"field_of_view": 500}, ""),
    ({"reduction": "mean", "depth": True}, ""),
]


@pytest.mark.parametrize("options, words", REFUSALS)
def test_refusals(options, words):
    with pytest.raises(ValueError, match=words) as caught:
        VOLUME.render(**options)
    assert str(caught.value)


VOLUME_REFUSALS = [
    ((np.zeros((3, 3)),), {}, ValueError, "slice, row, column"),
    ((np.zeros((3, 0, 3)),), {}, ValueError, "slice, row, column"),
    ((np.zeros((3, 3, 3), complex),), {}, TypeError, "voxels must be numbers"),
    ((np.full((3, 3, 3), 2**40),), {}, ValueError, "must fit 32 bits"),
    ((ARRAY,), {"spacing": (1, 1, 0)}, ValueError, "spacing must be above 0"),
    ((ARRAY,), {"spacing": (1, 1)}, ValueError, "spacing must be 3 numbers"),
    ((ARRAY,), {"direction": np.zeros((3, 3))}, ValueError, ""),
    ((ARRAY,), {"positions": [1, 2]}, ValueError, "positions must be 60 numbers"),
    ((ARRAY,), {"positions": [0] * 60}, ValueError, ""),
    ((ARRAY,), {"slope": 0}, ValueError, ""),
    ((ARRAY,), {"layout": "heap"}, ValueError, "layout must be auto, bricks or stack"),
    ((np.broadcast_to(np.uint8(1), (1, 1, 4096)),), {}, ValueError, ""),
]


@pytest.mark.parametrize("arguments, options, error, words", VOLUME_REFUSALS)
def test_refusals_of_volumes(arguments, options, error, words):
    with pytest.raises(error, match=words) as caught:
        Volume(*arguments, **options)
    assert str(caught.value)


NUMBER = st.one_of(
    st.floats(), st.integers(-(2**70), 2**70), st.sampled_from([0, 1, 2, 0.5, -1, 30, 1e-300, 1e300])
)
JUNK = st.one_of(
    NUMBER, st.none(), st.text(max_size=4), st.binary(max_size=2), st.tuples(NUMBER, NUMBER),
    st.tuples(NUMBER, NUMBER, NUMBER), st.just(np.eye(3)), st.just(object()), st.booleans(),
)  # fmt: skip
OPTIONS = st.fixed_dictionaries(
    {"size": st.one_of(st.integers(1, 40), st.tuples(st.integers(1, 40), st.integers(1, 40)))},
    optional={
        "view": st.one_of(st.sampled_from(["left", "superior"]), st.tuples(NUMBER, NUMBER), JUNK),
        "roll": JUNK,
        "slab": JUNK,
        "window": JUNK,
        "projection": st.one_of(st.sampled_from(["perspective", "orthographic"]), JUNK),
        "reduction": st.one_of(st.sampled_from(["maximum", "mean"]), JUNK),
        "interpolation": st.one_of(st.sampled_from(["nearest", "trilinear"]), JUNK),
        "zoom": JUNK,
        "pixel_size": JUNK,
        "field_of_view": JUNK,
        "center": JUNK,
        "step": st.one_of(st.floats(0.05, 64), JUNK),
        "depth": st.booleans(),
        "values": st.booleans(),
        "threads": st.one_of(st.none(), st.integers(-1, 3)),
    },
)
REFUSED = (ValueError, TypeError, MemoryError)


@settings(max_examples=5 * settings.default.max_examples)
@given(options=OPTIONS)
def test_any_view(options):
    try:
        picture = VOLUME.render(**options)
        assert picture.dtype == np.uint8
    except REFUSED as error:
        assert str(error)


@settings(max_examples=3 * settings.default.max_examples)
@given(
    shape=st.tuples(*[st.integers(0, 9)] * 3),
    strides=st.tuples(*[st.integers(-2, 2)] * 3),
    kind=st.sampled_from(["u1", "i1", "u2", "i2", "u4", "i4", "f4", "f8", "?", ">u2", "i8", "c8", "O", "S3"]),
    options=st.fixed_dictionaries(
        {},
        optional={
            "spacing": JUNK,
            "direction": JUNK,
            "origin": JUNK,
            "positions": st.one_of(st.lists(st.floats(), max_size=9), JUNK),
            "slope": NUMBER,
            "intercept": NUMBER,
            "layout": st.one_of(st.sampled_from(["stack", "bricks"]), JUNK),
            "precision": st.one_of(st.sampled_from(["voxel", "fine"]), JUNK),
            "copy": st.booleans(),
        },
    ),
    wild=st.floats(),
)
def test_any_volume(shape, strides, kind, options, wild):
    whole = np.zeros([max(2 * size, 1) for size in shape], kind)
    if whole.dtype.kind == "f":
        whole.flat[0] = wild
    steps = tuple(slice(None, None, stride or 1) for stride in strides)
    array = whole[steps][: shape[0], : shape[1], : shape[2]]
    try:
        picture = Volume(array, **options).render(size=9)
        assert picture.shape == (9, 9)
    except REFUSED as error:
        assert str(error)


WHOLE = VOLUME.render(size=30, depth=True, values=True)


def short_spin(frames, view="left"):
    return VOLUME.spin(min(frames, 3) if isinstance(frames, int) else frames, view, size=5)


QUESTIONS = [VOLUME.value_at, VOLUME.histogram, VOLUME.percentile, WHOLE.locate, WHOLE.save, Volume.from_file]


@settings(max_examples=5 * settings.default.max_examples)
@given(ask=st.sampled_from([*QUESTIONS, short_spin]), arguments=st.lists(JUNK, min_size=1, max_size=3))
def test_any_question(ask, arguments):
    if ask in (WHOLE.save, Volume.from_file):
        arguments = ["/nowhere/at/all", *arguments[1:]]
    try:
        ask(*arguments)
    except (*REFUSED, OSError, OverflowError) as error:
        assert str(error)
