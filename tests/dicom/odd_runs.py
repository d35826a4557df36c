#!/usr/bin/env python3
"""Several studies, lists of slices, and what strangers do with them.

    odd_runs.py ZOX-MIP
"""
import os
import shutil
import sys
import tempfile
from pathlib import Path

import pydicom

from helpers import Report, run
from make_series import make

SMALL = ["--size", "48x40"]
NOBODY = 65534


class Place:
    def __init__(self, program, folder, report):
        self.program, self.folder, self.report = program, folder, report
        self.out = folder / "out"
        self.out.mkdir()

    def series(self, name, *words):
        make(self.folder / name, "--series", name, *words)
        return sorted((self.folder / name).iterdir())

    def run(self, *words, **more):
        return run(self.program, *words, *SMALL, cwd=self.folder, **more)

    def expect(self, what, done, status, says=(), pictures=()):
        """The status, nothing else than the pictures in out/, and on stderr a line for each of `says`."""
        self.report.check(done.returncode == status, f"{what}: status {done.returncode}: {done.stderr}")
        lines = done.stderr.splitlines()
        self.report.check(len(lines) == len(says), f"{what}: said {lines}")
        for words, line in zip(says, lines):
            self.report.check(words in line and line.startswith("zox-mip: "), f"{what}: no '{words}' in '{line}'")
        self.report.check(sorted(os.listdir(self.out)) == sorted(pictures), f"{what}: {sorted(os.listdir(self.out))}")

    def clear(self):
        for path in self.out.iterdir():
            path.unlink()


def lists_and_studies(place):
    a, b = place.series("a"), place.series("b", "--number", "2", "--size", "20,24,12")
    place.expect("a list is one volume", place.run(*a, "-o", "out/x.png"), 0, [], ["x.png"])
    whole = (place.out / "x.png").read_bytes()
    place.run("a", "-o", "out/x.png")
    place.report.check((place.out / "x.png").read_bytes() == whole, "a list is not its folder")
    place.clear()
    mixed = [path for pair in zip(a, b) for path in pair]
    place.expect("two lists, mixed", place.run(*mixed, *a[len(b):], "-o", "out/{name}.png"), 0, [], ["a.png", "b.png"])
    place.report.check((place.out / "a.png").read_bytes() == whole, "a mixed list is not its folder")
    place.clear()
    place.expect("no name", place.run(*a, *b, "-o", "out/x.png"), 2, ["are no slices of one series"])
    done = place.run(*a[:7], "b", "--list-series")
    place.expect("lists of series", done, 0)
    place.report.check("  1: CT, 7 slices of 24 x 20" in done.stdout and "  1: CT, 12 slices" in done.stdout, done.stdout)
    place.expect("a file for its series, twice", place.run(a[0], b[0], "-o", "out/{name}.png"), 0, [],
                 [f"{a[0].name}.png", f"{b[0].name}.png"])
    place.clear()


def bad_slices(place):
    """A slice that nobody can read must not be missing in silence."""
    a = place.series("c")
    place.series("d", "--number", "2")
    damaged = a[4].read_bytes()
    a[4].write_bytes(damaged[:400])
    done = place.run(*a, "d", "-o", "out/{name}.png")
    place.expect("a damaged slice of a list", done, 1, [f"{a[4].name} is damaged or cut short"], ["d.png"])
    place.report.check("/c/" in done.stderr, "does not name the study: " + done.stderr)
    place.clear()
    place.expect("a damaged slice beside", place.run(a[0], "-o", "out/x.png"), 1, ["is damaged or cut short"])
    a[4].write_bytes(damaged[:-40])
    place.expect("a cut slice beside", place.run(a[0], "-o", "out/x.png"), 1, ["cut short"])
    a[4].write_bytes(damaged)


def permissions(place):
    """A folder, a folder below and a file that may not be read; the superuser steps down for it."""
    as_nobody = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
    for name in ("closed", "inner", "slice", "open"):
        place.series(name, "--number", "3")
    (place.folder / "inner/below").mkdir()
    shutil.move(sorted((place.folder / "inner").glob("[0-9a-f]*[0-9a-f]"))[3], place.folder / "inner/below/x")
    hidden = [place.folder / "closed", place.folder / "inner/below", sorted((place.folder / "slice").iterdir())[2]]
    place.out.chmod(0o777)
    for path in hidden:
        path.chmod(0)
    done = place.run("closed", "inner", "slice", "open", "-o", "out/{name}.png", **as_nobody)
    place.expect("closed studies", done, 1, ["'closed' cannot be searched: Permission denied.",
                                             "'inner/below' cannot be searched: Permission denied.",
                                             f"'slice/{hidden[2].name}' may not be read: Permission denied."],
                 ["open.png"])
    place.clear()
    place.expect("closed alone", place.run("closed", "-o", "out/x.png", **as_nobody), 1,
                 ["'closed' cannot be searched: Permission denied."])
    beside = next(path for path in sorted((place.folder / "slice").iterdir()) if path != hidden[2])
    done = place.run(beside, "-o", "out/x.png", **as_nobody)
    place.expect("a closed slice beside", done, 0, ["seems to be missing", "1 file beside it may not be read"], ["x.png"])
    place.clear()
    for path in hidden:
        path.chmod(0o755)


def odd_names(place):
    names = ["a\nb", "%s%n", "{name}", "{view}", "...", "a b", "-x", "é", "\udcff"]
    for number, name in enumerate(names):
        place.series(f"odd/plain{number}", "--number", number, "--omit", number + 2)
        (place.folder / f"odd/plain{number}").rename(place.folder / "odd" / name)
    done = place.run(*(f"odd/{name}" for name in names), "-o", "out/{name}-{view}.png")
    expected = ["a_b", *names[1:4], "___", *names[5:]]
    place.expect("odd names", done, 0, ["seems to be missing"] * len(names), [f"{name}-anterior.png" for name in expected])
    place.report.check("odd/a?b: 24 x 20" in done.stdout, done.stdout)
    place.clear()
    place.expect("here and above", place.run(".", "odd/..", "-o", "out/{name}.png"), 2, ["would have pictures of one name"])


def outputs_beside_inputs(place):
    """Into the folder that is read: again and again, but never over a slice."""
    slices = place.series("e")
    before = [path.read_bytes() for path in slices]
    for times in range(2):
        place.expect("into the folder", place.run("e", "-o", "e/{name}.png"), 0,
                     ["1 file is no DICOM"] if times else [])
    renamed = slices[0].rename(slices[0].with_name("e-left.png"))
    done = place.run("a", "e", "-o", "e/{name}-{view}.png", "--view", "left")
    place.expect("over a slice", done, 1, ["it is the file 'e/e-left.png' that is read"])
    done = place.run("a", *slices[1:], renamed, "-o", "e/{name}-{view}.png", "--view", "left")
    place.expect("over a slice of a list", done, 1, ["that is read"])
    place.report.check(renamed.read_bytes() == before[0] and not (place.folder / "e/a-left.png").exists(),
                       "a slice was written over")


def same_study_twice(place):
    (place.folder / "link").symlink_to("a")
    place.expect("twice", place.run("a", "a", "-o", "out/{name}.png"), 2, ["would have pictures of one name"])
    place.expect("twice by another name", place.run("a", "link/", "-o", "out/{name}.png"), 2, ["pictures of one name"])
    slices = sorted((place.folder / "a").iterdir())
    place.expect("slices twice", place.run(*slices, slices[0], "-o", "out/x.png"), 0, ["was left out"], ["x.png"])
    place.clear()


def nothing_usable(place):
    (place.folder / "empty").mkdir()
    (place.folder / "text").mkdir()
    (place.folder / "text/README").write_text("hello")
    os.mkfifo(place.folder / "pipe")
    series = sorted((place.folder / "a").iterdir())
    data = pydicom.dcmread(series[0])
    data.SeriesInstanceUID = "1.2.3.4"
    data.save_as(place.folder / "single")
    done = place.run("empty", "text", "pipe", "single", "none", "-o", "out/{name}.png")
    place.expect("nothing usable", done, 1, ["empty holds no files", "text holds no DICOM files", "'pipe' is not a file",
                                             "'single': It holds a single slice", "There is no file 'none'"])


def main():
    report = Report()
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        place = Place(sys.argv[1], Path(folder), report)
        for check in (lists_and_studies, bad_slices, permissions, odd_names, outputs_beside_inputs, same_study_twice,
                      nothing_usable):
            check(place)
    report.finish("odd runs end as they should")


if __name__ == "__main__":
    main()
