#!/usr/bin/env python3
"""Turns the results of bench_ratio into the summary table, docs/performance.md and the plot."""

import argparse
import os
import subprocess
import sys

import plot
import results
from results import FAMILIES, SETS, mean, numbers, text

TO_REFERENCE = ("reference", "_ratio")
TO_LISTS = ("lists", "_lists_ratio")
HEADS = {"base": "baseline", "avx2": "AVX2", "avx512": "AVX-512"}


def ratio_cell(cases, name, suffix="_ratio"):
    """Mean and worst ratio of one set."""
    values = numbers(cases, name + suffix)
    return f"{mean(values):.2f} (worst {min(values):.2f})" if values else "–"


def markdown(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" * len(head) + "|"]
    return lines + ["| " + " | ".join(row) + " |" for row in rows] + [""]


def aligned(head, rows):
    widths = [max(len(row[i]) for row in [head] + rows) for i in range(len(head))]
    return ["  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in [head] + rows]


def family_rows(cases, scalar, suffix):
    """scalar names the scalar code that the ratios refer to; families that it cannot run are left out."""
    head = ["family", "cases", scalar + " ns"]
    for name in SETS:
        head += [HEADS[name] + " ns", HEADS[name] + " ratio", "goal"]
    rows = []
    for fam in FAMILIES:
        members = [case for case in cases if results.belongs(case, fam) and scalar + "_ns" in case.values]
        if not members:
            continue
        row = [fam.name, str(len(members)), text(mean(numbers(members, scalar + "_ns")))]
        for name in SETS:
            goal = f"{fam.goals[name]:g}" + (f" (worst {fam.worst:g})" if name != "base" else "")
            row += [text(mean(numbers(members, name + "_ns"))), ratio_cell(members, name, suffix), goal]
        rows.append(row)
    return head, rows


def case_rows(cases):
    head = ["operation", "view", "storage", "counts", "scalar ns", "lists ns"]
    head += [HEADS[name] + unit for name in SETS for unit in (" ns", " ratio")]
    rows = []
    for case in cases:
        values = case.values
        row = [case.operation, case.view, case.storage, case.load]
        row += [text(values.get(key)) for key in ("reference_ns", "lists_ns")]
        rows.append(row + [text(values.get(name + key)) for name in SETS for key in ("_ns", "_ratio")])
    return head, rows


def grouped_rows(cases):
    """One row an operation, size, storage and load, over its views."""
    groups = {}
    for case in cases:
        groups.setdefault((case.operation, case.size, case.storage, case.load), []).append(case)
    head = ["operation", "size", "storage", "load", "scalar ns"] + [HEADS[name] for name in SETS]
    rows = [[*key, text(mean(numbers(members, "reference_ns")))] +
            [ratio_cell(members, name) for name in SETS] for key, members in sorted(groups.items())]
    return head, rows


def slower_lines(cases):
    lines = []
    for case in cases:
        for name in SETS:
            ratio = case.values.get(name + "_ratio")
            if ratio is not None and ratio < 1:
                path = "/".join((case.operation, case.size, case.view, case.storage, case.load))
                lines.append(f"- `{path}`, {HEADS[name]}: {ratio:.2f}")
    return lines


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


def page(context, cases, compiler, library, command):
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "performance.md.in"), encoding="utf-8") as file:
        template = file.read()
    headline = [case for case in cases if any(results.belongs(case, fam) for fam in FAMILIES)]
    casts = [case for case in cases if case.operation.startswith(("blocked", "general"))]
    others = [case for case in cases if case not in casts]
    slower = slower_lines(cases)
    fields = {
        "PROCESSOR": processor(), "CPUS": str(context["num_cpus"]), "CACHES": caches(context),
        "TEXT": str(text_kib(library)), "COMPILER": first_line(compiler, "--version"), "DATE": context["date"], "COMMAND": command,
        "COUNT": str(len(cases)),
        "FAMILIES": "\n".join(markdown(*family_rows(cases, *TO_REFERENCE))),
        "LISTS": "\n".join(markdown(*family_rows(cases, *TO_LISTS))),
        "SLOWER": "\n".join(slower) if slower else "None.",
        "HEADLINE": "\n".join(markdown(*case_rows(headline))),
        "CASTS": "\n".join(markdown(*grouped_rows(casts))),
        "OTHERS": "\n".join(markdown(*case_rows(others))),
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
    parser.add_argument("--docs", help="write performance.md and performance.svg into this directory")
    options = parser.parse_args()
    context, cases = results.read(options.results)
    print("\n".join(aligned(*family_rows(cases, *TO_REFERENCE))))
    print("\nagainst scalar slice lists")
    print("\n".join(aligned(*family_rows(cases, *TO_LISTS))))
    slower = slower_lines(cases)
    print(f"\nslower than the scalar reference: {len(slower)} of {len(cases) * len(SETS)}")
    print("\n".join(slower[:12] + (["- …"] if len(slower) > 12 else [])))
    if options.docs:
        replace(os.path.join(options.docs, "performance.svg"), plot.draw(cases))
        replace(os.path.join(options.docs, "performance.md"),
                page(context, cases, options.compiler, options.library, options.command))


if __name__ == "__main__":
    sys.exit(main())
