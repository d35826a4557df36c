"""Draws the predicted seconds of a picture over the number of ranks as an SVG file, both logarithmic."""
import math

COLOURS = {"compute": "#3f7cbf", "read": "#d9822b", "reduce": "#5a9e5a", "all": "#444"}
LEFT, TOP, WIDTH, HEIGHT = 70, 60, 560, 300


def label(x, y, text, anchor="start", size=12):
    return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{text}</text>'


def draw(rows):
    series = {key: [row[key] for row in rows] for key in ("compute", "read", "reduce")}
    series["all"] = [sum(values) for values in zip(*series.values())]
    first, last = math.log2(rows[0]["ranks"]), math.log2(rows[-1]["ranks"])
    low = math.floor(math.log10(min(min(values) for values in series.values())))
    high = math.ceil(math.log10(max(series["all"])))

    def place(ranks, seconds):
        return (LEFT + WIDTH * (math.log2(ranks) - first) / (last - first),
                TOP + HEIGHT * (high - math.log10(seconds)) / (high - low))

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 110}" height="{TOP + HEIGHT + 60}" '
             'font-family="sans-serif">', '<rect width="100%" height="100%" fill="white"/>',
             label(LEFT, 26, "Predicted seconds of the first picture of 10,000³ voxels", size=15)]
    for power in range(low, high + 1):
        _, y = place(rows[0]["ranks"], 10**power)
        parts += [f'<line x1="{LEFT}" y1="{y:.1f}" x2="{LEFT + WIDTH}" y2="{y:.1f}" stroke="#ddd"/>',
                  label(LEFT - 8, y + 4, f"{10**power:,g} s", "end")]
    for row in rows:
        x, _ = place(row["ranks"], 10**low)
        parts.append(label(x, TOP + HEIGHT + 20, f"{row['ranks']:,}", "middle"))
    parts.append(label(LEFT + WIDTH / 2, TOP + HEIGHT + 44, "ranks, a core each", "middle"))
    for key, values in series.items():
        points = [place(row["ranks"], seconds) for row, seconds in zip(rows, values)]
        line = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        parts.append(f'<polyline points="{line}" fill="none" stroke="{COLOURS[key]}" stroke-width="2"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{COLOURS[key]}"/>' for x, y in points]
        dy = {"all": -8, "compute": 12}.get(key, 4)
        parts.append(label(points[-1][0] + 10, points[-1][1] + dy, key))
    return "\n".join(parts + ["</svg>\n"])
