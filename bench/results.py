"""Reads the results of bench_ratio; says which cases stand for which family."""

import json
import math
from dataclasses import dataclass

SETS = ("base", "avx2", "avx512")
# What the caches hold before a run: the rows of every family in the table. Others are in the csv only.
MEMORIES = (
    ("cached", "256"),
    ("warm", "256"),
    ("cold", "256"), ("cold", "512x300"), ("cold", "512"),
)


@dataclass
class Case:
    operation: str
    size: str  # of a volume its edge, and x its slices if these are not as many
    view: str
    storage: str
    load: str
    values: dict  # reference_ns, lists_ns, avx2_ns, avx2_ratio, avx2_lists_ratio, ...

    def path(self):
        return "/".join((self.operation, self.size, self.view, self.storage, self.load))


@dataclass
class Family:
    name: str
    operations: tuple
    goal: str  # of AVX-512, mean over the views of cold volumes
    lists: bool = True  # parallel nearest operations: where they use slice lists


def family(name, operations, goal, lists=True):
    return Family(name, tuple(operations.split()), goal, lists)


FAMILIES = (
    family("General nearest and bit, slice lists",
           "general_divergent_nearest_8u general_divergent_nearest_16s general_divergent_nearest_bit_8u "
           "general_parallel_nearest_8u general_parallel_nearest_16s general_parallel_nearest_bit_8u",
           "4, worst view 3"),
    family("General parallel nearest and bit, one region",
           "general_parallel_nearest_8u general_parallel_nearest_16s general_parallel_nearest_bit_8u",
           "3, worst view 1.8", lists=False),
    family("General trilinear 8U", "general_divergent_trilinear_8u general_parallel_trilinear_8u", "3.5"),
    family("General trilinear 16S", "general_divergent_trilinear_16s general_parallel_trilinear_16s", "3.4"),
    family("Blocked nearest",
           "blocked_divergent_nearest_8u blocked_divergent_nearest_16s "
           "blocked_parallel_nearest_8u blocked_parallel_nearest_16s", "3.8"),
    family("Blocked trilinear in integers, 8U", "blocked_parallel_trilinear_8u", "4"),
    family("Blocked trilinear in double, 8U", "blocked_divergent_trilinear_8u", "3.2"),
    family("Blocked trilinear in double, 16S",
           "blocked_divergent_trilinear_16s blocked_parallel_trilinear_16s", "3.8"),
)


def one_region_path(case):
    """Sampled without slice lists."""
    return case.operation.startswith("general_parallel_nearest") and case.storage in ("1region", "packed")


def belongs(case, fam):
    """Falling rays and irregular stacks are in the complete figures only."""
    if case.operation not in fam.operations or case.view == "falling" or one_region_path(case) == fam.lists:
        return False
    storages = ("1region", "3regions", "bricks") if case.load == "cached" else ("packed", "bricks")
    return case.storage in storages


def members(cases, fam, load, size):
    return [case for case in cases if case.load == load and case.size == size and belongs(case, fam)]


def read(path):
    """The context of the run and its cases; a failed case ends the program."""
    with open(path, encoding="utf-8") as file:
        document = json.load(file)
    cases = []
    for run in document["benchmarks"]:
        operation, size, view, storage, load = run["run_name"].split("/")[:5]
        if run.get("error_occurred"):
            raise SystemExit(f"{run['run_name']}: {run['error_message']}")
        cases.append(Case(operation, size, view, storage, load, run))
    return document["context"], cases


def numbers(cases, key):
    return [case.values[key] for case in cases if key in case.values]


def mean(values):
    """The geometric mean, which treats twice as fast and half as fast alike."""
    return math.exp(sum(map(math.log, values)) / len(values)) if values else None


def text(value):
    return "–" if value is None else f"{value:.3g}"
