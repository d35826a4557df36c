#!/usr/bin/env python3
"""Turns the results of bench_ratio into docs/performance.md, its plot and its complete figures."""

import argparse
import csv
import io
import os
import subprocess
import sys

import plot
import results
from results import FAMILIES, MEMORIES, SETS, mean, numbers, text

HEADS = {"base": "baseline", "avx2": "AVX2", "avx512": "AVX-512"}
VALUES = ("reference_ns", "lists_ns") + tuple(name + key for name in SETS for key in ("_ns", "_ratio", "_lists_ratio"))
LOADS = {"cached": "full tiles, cached", "warm": "full tiles, warm", "cold": "full tiles, cold",
         "ragged": "tiles cut at random", "short": "4 samples a ray", "rays1": "1 ray", "rays2": "2 rays",
         "rays3": "3 rays", "rays7": "7 rays", "full": "maximum and window/level"}


def ratio_cell(cases, name):
    """Mean and worst ratio of one set."""
    values = numbers(cases, name + "_ratio")
    return f"{mean(values):.2f} (worst {min(values):.2f})" if values else "–"


def markdown(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" * len(head) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows] + [""])


def family_rows(cases, fam):
    rows = []
    for load, size in MEMORIES:
        chosen = results.members(cases, fam, load, size)
        if chosen:
            name = "" if rows else f"{fam.name} (goal {fam.goal})"
            rows.append([name, f"{load} {size.replace('x', '²×') if 'x' in size else size + '³'}", str(len(chosen)),
                         text(mean(numbers(chosen, "reference_ns")))] + [ratio_cell(chosen, s) for s in SETS])
    return rows


def family_table(cases):
    head = ["family (goal of AVX-512, cold)", "memory", "cases", "scalar ns"] + [HEADS[name] for name in SETS]
    return markdown(head, [row for fam in FAMILIES for row in family_rows(cases, fam)])


def other_table(cases):
    """Maxima and window/level: the mean over their operations."""
    groups = {}
    for case in cases:
        if case.operation.startswith("find_max") and case.size == "256":
            groups.setdefault(f"maximum, {case.storage}, {case.view} planes, {case.load} counts", []).append(case)
        if case.operation.startswith("window"):
            groups.setdefault(f"window/level, {case.storage}", []).append(case)
    rows = [[name, text(mean(numbers(chosen, "reference_ns")))] +
            [f"{text(mean(numbers(chosen, s + '_ns')))} ({ratio_cell(chosen, s)})" for s in SETS]
            for name, chosen in groups.items()]
    return markdown(["work", "scalar ns"] + [HEADS[name] + " ns (ratio)" for name in SETS], rows)


def padding_table(cases):
    """The same cold volumes with and without a gap between the slices."""
    rows = []
    for view in ("z", "x", "oblique"):
        row = [view]
        for storage in ("packed", "1region"):
            chosen = [c for c in cases if (c.size, c.view, c.storage, c.load) == ("256", view, storage, "cold")]
            row += [text(mean(numbers(chosen, key))) for key in ("reference_ns", "avx512_ns")]
        rows.append(row)
    return markdown(["view", "packed, scalar ns", "packed, AVX-512 ns", "gap, scalar ns", "gap, AVX-512 ns"], rows)


def slower_table(cases):
    rows = []
    for load, name in LOADS.items():
        chosen = [case for case in cases if case.load == load]
        cells = []
        for s in SETS:
            ratios = numbers(chosen, s + "_ratio")
            slow = [ratio for ratio in ratios if ratio < 1]
            cells.append(f"{len(slow)} of {len(ratios)}" + (f", worst {min(slow):.2f}" if slow else ""))
        if chosen:
            rows.append([name] + cells)
    return markdown(["load"] + [HEADS[name] for name in SETS], rows)


def complete(cases):
    out = io.StringIO()
    table = csv.writer(out, lineterminator="\n")
    table.writerow(("operation", "size", "view", "storage", "load") + VALUES)
    for case in cases:
        values = [f"{case.values[key]:.4g}" if key in case.values else "" for key in VALUES]
        table.writerow([case.operation, case.size, case.view, case.storage, case.load] + values)
    return out.getvalue()


def first_line(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]


def text_kib(library):
    """Code and constants, as size counts them."""
    out = subprocess.run(["size", library], capture_output=True, text=True, check=True).stdout
    return round(int(out.splitlines()[1].split()[0]) / 1024)


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        facts = dict(line.split(":", 1) for line in file.read().split("\n\n")[0].splitlines() if ":" in line)
    facts = {key.strip(): value.strip() for key, value in facts.items()}
    return f"{facts['model name']} (family {facts['cpu family']}, model {facts['model']})"


def caches(context):
    parts = [f"L{c['level']} {c['type'].lower()} {c['size'] // 1024} KiB" for c in context["caches"]]
    return ", ".join(parts)


def page(context, cases, options):
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "performance.md.in"), encoding="utf-8") as file:
        template = file.read()
    fields = {
        "PROCESSOR": processor(), "CPUS": str(context["num_cpus"]), "CACHES": caches(context),
        "TEXT": str(text_kib(options.library)), "COMPILER": first_line(options.compiler, "--version"),
        "DATE": context["date"], "LOAD": f"{context['load_avg'][0]:.1f} to {os.getloadavg()[0]:.1f}", "COMMAND": options.command, "COUNT": str(len(cases)),
        "FAMILIES": family_table(cases), "OTHERS": other_table(cases), "PADDING": padding_table(cases),
        "SLOWER": slower_table(cases),
    }
    for key, value in fields.items():
        template = template.replace(f"@{key}@", value)
    return template


def replace(path, content):
    """The file is the old one or the whole new one."""
    with open(path + ".new", "w", encoding="utf-8") as file:
        file.write(content)
    os.replace(path + ".new", path)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", help="JSON file that bench_ratio wrote")
    parser.add_argument("--compiler", help="path of the compiler, for the page")
    parser.add_argument("--library", help="path of libzox_volume.so, for the page")
    parser.add_argument("--command", help="command that made the results, for the page")
    parser.add_argument("--docs", help="write performance.md, .csv and .svg into this directory")
    options = parser.parse_args()
    context, cases = results.read(options.results)
    print(family_table(cases))
    print(slower_table(cases))
    if options.docs:
        replace(os.path.join(options.docs, "performance.svg"), plot.draw(cases))
        replace(os.path.join(options.docs, "performance.csv"), complete(cases))
        replace(os.path.join(options.docs, "performance.md"), page(context, cases, options))


if __name__ == "__main__":
    sys.exit(main())
