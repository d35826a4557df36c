"""Draws the ratio of every operation to the scalar reference as an SVG file."""

import math

import results

COLOURS = {"base": "#9aa5b1", "avx2": "#3f7cbf", "avx512": "#d9822b"}
LABELS = {"base": "baseline (SSE2)", "avx2": "AVX2", "avx512": "AVX-512"}
LEFT, TOP, WIDTH, BAR, GAP = 240, 64, 620, 7, 8
TICKS = (0.5, 1, 2, 4, 8, 16, 32, 64)


def headline(cases):
    """The cases behind each bar: cold volumes of 256x256x256, and full maxima and pictures."""
    rows = {}
    for case in cases:
        real = case.load == "cold" and case.size == "256" and any(results.belongs(case, f) for f in results.FAMILIES)
        full = case.load == "full" and case.size in ("256", "512") and case.storage in ("64rays", "image")
        if real or full:
            rows.setdefault(case.operation, []).append(case)
    return dict(sorted(rows.items()))


def position(ratio):
    low, high = math.log2(TICKS[0]), math.log2(TICKS[-1])
    return LEFT + WIDTH * (min(max(math.log2(ratio), low), high) - low) / (high - low)


def label(x, y, text, anchor="start", size=11):
    return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{text}</text>'


def bar(y, name, ratio):
    start, end = sorted((position(1), position(ratio)))
    return (f'<rect x="{start:.1f}" y="{y:.1f}" width="{end - start:.1f}" height="{BAR}" '
            f'fill="{COLOURS[name]}"><title>{LABELS[name]}: {ratio:.2f}</title></rect>')


def draw(cases):
    rows = headline(cases)
    row_height = len(results.SETS) * BAR + GAP
    bottom = TOP + len(rows) * row_height
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 40}" height="{bottom + 36}" '
             'font-family="sans-serif">', '<rect width="100%" height="100%" fill="white"/>',
             label(LEFT, 20, "Speed of each operation, as a multiple of plain scalar code (logarithmic)", size=14)]
    for i, name in enumerate(results.SETS):
        x = LEFT + 150 * i
        parts += [f'<rect x="{x}" y="32" width="12" height="12" fill="{COLOURS[name]}"/>',
                  label(x + 18, 42, LABELS[name])]
    for tick in TICKS:
        x, stroke = position(tick), "#444" if tick == 1 else "#ddd"
        parts += [f'<line x1="{x:.1f}" y1="{TOP - 6}" x2="{x:.1f}" y2="{bottom}" stroke="{stroke}"/>',
                  label(x, bottom + 16, f"{tick}×", "middle")]
    for i, (operation, members) in enumerate(rows.items()):
        y = TOP + i * row_height
        parts.append(label(LEFT - 8, y + row_height / 2, operation, "end"))
        for j, name in enumerate(results.SETS):
            ratio = results.mean(results.numbers(members, name + "_ratio"))
            if ratio is not None:
                parts.append(bar(y + j * BAR, name, ratio))
    parts.append("</svg>\n")
    return "\n".join(parts)
