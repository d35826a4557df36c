"""Random volumes and rays that stay inside of them, for hypothesis."""

import numpy as np
from hypothesis import strategies as st

DTYPES = {"8U": np.uint8, "16S": np.int16}
BLOCKED = [
    f"{projection}_{sampling}_{kind}"
    for projection in ("Divergent", "Parallel")
    for sampling in ("Nearest", "Trilinear")
    for kind in ("8U", "16S")
]
GENERAL = BLOCKED + ["Divergent_Nearest_Bit_8U", "Parallel_Nearest_Bit_8U"]


def voxels(seed, shape, dtype, kind):
    """Noise over the type's whole range, small steps, or extremes."""
    random = np.random.default_rng(seed)
    limits = np.iinfo(dtype)
    if kind == "any":
        return random.integers(limits.min, limits.max, shape, dtype, endpoint=True)
    if kind == "small":
        return random.integers(0, 2, shape, dtype, endpoint=True)
    return random.choice(np.array([limits.min, limits.max], dtype), shape)


def coordinate(low, high):
    """From low to below high: anywhere, or on whole, half and quarter voxels or fixed-point units."""
    anywhere = st.floats(low, high, exclude_max=True, allow_subnormal=False)
    grid = st.sampled_from([1.0, 0.5, 0.25, 2.0**-20, 2.0**-21])
    snapped = st.builds(lambda v, unit: max(low, np.floor(v / unit) * unit), anywhere, grid)
    return st.one_of(anywhere, snapped).map(float)


@st.composite
def rays(draw, lows, highs, parallel, most_rays=6, most_samples=12):
    """Starts, steps, counts: each sample lies between lows and highs but for what sums round."""
    number = draw(st.integers(1, most_rays))
    counts = draw(st.lists(st.integers(0, most_samples), min_size=number, max_size=number))
    point = st.tuples(*(coordinate(low, high) for low, high in zip(lows, highs)))
    starts = draw(st.lists(point, min_size=number, max_size=number))
    share = st.one_of(
        st.just(0.0),
        st.sampled_from([1.0, -1.0, 0.25, 1.5]),
        st.floats(-3, 3, allow_subnormal=False),
    )
    wishes = draw(st.lists(st.tuples(share, share, share), min_size=number, max_size=number))
    if parallel:
        wishes = [wishes[0]] * number
    steps = []
    for r in range(number):
        step = []
        for axis in range(3):
            wish = wishes[r][axis]
            group = range(number) if parallel else [r]
            for ray in group:
                many = max(counts[ray] - 1, 0)
                room = highs[axis] - 0.001 - starts[ray][axis] if wish > 0 else starts[ray][axis] - lows[axis]
                if many and abs(wish) * many > max(room, 0):
                    wish = 0.0
            step.append(wish)
        steps.append(tuple(step))
    return starts, steps, counts
