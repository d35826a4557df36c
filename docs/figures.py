#!/usr/bin/env python3
"""Draws the figures of docs/guide.md: figure-layouts.svg and figure-ray.svg.

    docs/figures.py [FOLDER]        FOLDER: docs beside this script
"""
import pathlib
import sys

INK, SOFT, FILL, ACCENT = "#222", "#888", "#e8eef5", "#c0392b"


def svg(width, height, parts):
    head = (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" '
        'font-family="sans-serif" font-size="13">\n<rect width="100%" height="100%" fill="white"/>\n'
    )
    return head + "\n".join(parts) + "\n</svg>\n"


def text(x, y, words, color=INK, anchor="start", size=13):
    return f'<text x="{x}" y="{y}" fill="{color}" text-anchor="{anchor}" font-size="{size}">{words}</text>'


def box(x, y, width, height, fill="none", stroke=INK, thick=1.0):
    return f'<rect x="{x}" y="{y}" width="{width}" height="{height}" fill="{fill}" stroke="{stroke}" stroke-width="{thick}"/>'


def line(x1, y1, x2, y2, color=INK, thick=1.0, dash=""):
    dashes = f' stroke-dasharray="{dash}"' if dash else ""
    return f'<line x1="{x1}" y1="{y1}" x2="{x2}" y2="{y2}" stroke="{color}" stroke-width="{thick}"{dashes}/>'


def dot(x, y, color=INK, radius=4.0, fill=True):
    inside = color if fill else "white"
    return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{inside}" stroke="{color}"/>'


def cells(x, y, size, numbers):
    """A cell of 4 x 4 voxels, layer 0, with the element of each."""
    parts = []
    for row in range(4):
        for column in range(4):
            left, top = x + column * size, y + row * size
            parts += [box(left, top, size, size, FILL, SOFT)]
            if numbers:
                parts += [text(left + size / 2, top + size / 2 + 4, row * 4 + column, anchor="middle", size=11)]
    return parts


def layouts():
    parts = [text(30, 30, "Bricks: one buffer, read by Blocked operations", size=15)]
    for row in range(2):
        for column in range(2):
            parts += [box(30 + 90 * column, 50 + 90 * row, 90, 90, FILL if row + column == 0 else "white", INK, 1.5)]
            parts += [text(75 + 90 * column, 100 + 90 * row, f"brick {row * 2 + column}", anchor="middle")]
    parts += [text(30, 250, "64 x 64 x 32 voxels each,"), text(30, 268, "B x B bricks a slab, slabs along z")]
    for k in range(16):
        parts += [line(240 + k * 8, 50, 240 + k * 8, 178, SOFT, 0.5), line(240, 50 + k * 8, 368, 50 + k * 8, SOFT, 0.5)]
    parts += [box(240, 50, 128, 128, "none", INK, 1.5), box(240, 50, 8, 8, ACCENT, ACCENT)]
    parts += [text(240, 200, "a brick: 16 x 16 x 16 cells")]
    parts += cells(440, 50, 32, True) + [line(248, 54, 438, 60, ACCENT, 1, "4 3")]
    parts += [text(440, 200, "a cell: 4 x 4 x 2 voxels,"), text(440, 218, "the next layer: 16-31")]
    parts += [text(30, 320, "Slice stack: slices where they lie, read by General operations", size=15)]
    positions = [0, 1, 2, 3, 5.5, 8, 10.5, 13]
    for s, z in enumerate(positions):
        x = 60 + z * 40
        parts += [line(x, 350, x, 450, ACCENT if s == 3 else INK, 3), text(x, 470, s, anchor="middle")]
    parts += [text(30, 470, "s"), text(30, 492, "z")]
    parts += [text(60 + z * 40, 492, f"{z:g}", SOFT, "middle", 11) for z in positions]
    parts += [line(60, 510, 180, 510, INK, 2), text(120, 528, "region 0, scale 1", anchor="middle")]
    parts += [line(184, 510, 580, 510, INK, 2), text(380, 528, "region 1, scale 0.4: slices 2.5 apart", anchor="middle")]
    return svg(640, 545, parts)


def ray():
    scale, left, top, voxels = 60, 150, 90, 7
    parts = [text(30, 30, "A ray through a volume 7 voxels wide (voxel centres at 0 .. 6)", size=15)]
    for row in range(4):
        for column in range(voxels):
            x, y = left + column * scale, top + row * scale
            parts += [dot(x, y, SOFT, 3)]
            if row == 3:
                parts += [text(x, y + 45, column, SOFT, "middle", 11)]
    width, height = (voxels - 1) * scale, 3 * scale
    parts += [box(left - scale / 2, top - scale / 2, width + scale, height + scale, "none", INK, 1.2)]
    parts += [box(left, top, width, height, "none", ACCENT, 1.2)]
    start, step = (-1.35, -0.12), (0.62, 0.24)
    for k in range(14):
        x, y = start[0] + k * step[0], start[1] + k * step[1]
        trilinear = 0 <= x < voxels - 1 and 0 <= y < 3
        nearest = -0.5 <= x < voxels - 0.5 and -0.5 <= y < 3.5
        color = ACCENT if trilinear else INK if nearest else SOFT
        parts += [dot(left + x * scale, top + y * scale, color, 5, trilinear or nearest)]
        parts += [text(left + x * scale + 6, top + y * scale - 8, k, color, size=11)]
    bottom = top + height + 75
    parts += [dot(left, bottom, ACCENT, 5), text(left + 12, bottom + 4, "inside for Trilinear too: the next voxel is read as well", ACCENT)]
    parts += [dot(left, bottom + 24, INK, 5), text(left + 12, bottom + 28, "inside for Nearest only: half a voxel beyond the centres")]
    parts += [dot(left, bottom + 48, SOFT, 5, False), text(left + 12, bottom + 52, "outside: zox_clip leaves these samples out", SOFT)]
    return svg(640, bottom + 75, parts)


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent
    (folder / "figure-layouts.svg").write_text(layouts(), encoding="utf-8")
    (folder / "figure-ray.svg").write_text(ray(), encoding="utf-8")


main()
