"""Reads the results of bench_ratio; says which cases stand for which family."""

import json
import math
from dataclasses import dataclass

SETS = ("base", "avx2", "avx512")


@dataclass
class Case:
    operation: str
    size: str  # of a volume its edge, and x its slices if these are not as many
    view: str
    storage: str
    load: str
    values: dict  # reference_ns, lists_ns, avx2_ns, avx2_ratio, avx2_lists_ratio, ...


@dataclass
class Family:
    name: str
    operations: tuple
    storages: tuple
    load: str
    goals: dict  # ratio to the reference: the geometric mean to reach
    worst: float = 1.0  # no case below this


def family(name, operations, storages, avx512, avx2, worst=1.0, load="cached"):
    goals = {"base": 1.3, "avx2": avx2, "avx512": avx512}
    return Family(name, tuple(operations.split()), tuple(storages.split()), load, goals, worst)


MAXIMA = ("find_max_8u find_max_16s find_max_bmask_8u find_max_bmask_16s "
          "find_max_cmask_8u find_max_cmask_16s")
FAMILIES = (
    family("blocked nearest",
           "blocked_divergent_nearest_8u blocked_divergent_nearest_16s "
           "blocked_parallel_nearest_8u blocked_parallel_nearest_16s", "bricks", 2.2, 2.0),
    family("blocked trilinear in double",
           "blocked_divergent_trilinear_8u blocked_divergent_trilinear_16s "
           "blocked_parallel_trilinear_16s", "bricks", 2.1, 1.9),
    family("blocked trilinear in integers", "blocked_parallel_trilinear_8u", "bricks", 2.8, 2.5),
    family("general nearest and bit, slice lists",
           "general_divergent_nearest_8u general_divergent_nearest_16s general_divergent_nearest_bit_8u "
           "general_parallel_nearest_8u general_parallel_nearest_16s general_parallel_nearest_bit_8u",
           "1region 3regions", 2.1, 2.0, worst=1.4),
    family("general trilinear 8U", "general_divergent_trilinear_8u general_parallel_trilinear_8u",
           "1region 3regions", 2.7, 2.5, worst=1.8),
    family("general trilinear 16S", "general_divergent_trilinear_16s general_parallel_trilinear_16s",
           "1region 3regions", 2.3, 2.2, worst=1.8),
    family("parallel nearest and bit, one region",
           "general_parallel_nearest_8u general_parallel_nearest_16s general_parallel_nearest_bit_8u",
           "1region", 1.6, 1.4),
    family("maximum, full counts", MAXIMA, "64rays", 14, 14, load="full"),
    family("maximum, ragged counts", MAXIMA, "64rays", 7, 7, load="ragged"),
    family("window/level", "window_level_16s_8u", "image", 3.4, 2.8, load="full"),
)


def one_region_path(case):
    """Sampled without slice lists."""
    return case.operation.startswith("general_parallel_nearest") and case.storage == "1region"


def belongs(case, fam):
    """The cases of a family's headline: falling rays and irregular stacks are in the long tables only."""
    if case.operation not in fam.operations or case.storage not in fam.storages or case.load != fam.load:
        return False
    if case.view == "falling" or case.size != ("512" if case.operation.startswith("window") else "256"):
        return False
    return one_region_path(case) == (fam.name == "parallel nearest and bit, one region")


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
