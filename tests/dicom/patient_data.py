#!/usr/bin/env python3
"""What a header says of the patient reaches nothing: two studies that differ in that alone give the same files and
the same words, and no file is made but those that were asked for.

    patient_data.py ZOX-MIP
"""
import os
import re
import shutil
import sys
import tempfile
import zlib
from pathlib import Path

import pydicom
from pydicom.uid import generate_uid

from helpers import Report, run
from make_series import make

SECRETS = {
    "PatientName": "Zebra^Quilted", "PatientID": "QX-4711-77", "PatientBirthDate": "19010203", "PatientSex": "F",
    "PatientAge": "093Y", "PatientAddress": "Thistledown Lane 17", "PatientComments": "Walrusbearer",
    "OtherPatientIDs": "QX-4712-78", "InstitutionName": "Hospital Umbrellavale", "StationName": "SCANNERZZ",
    "ReferringPhysicianName": "Oxcart^Maud", "PerformingPhysicianName": "Plover^Ned", "OperatorsName": "Teasel^Ina",
    "AccessionNumber": "ACC998877", "StudyID": "ST556677", "StudyDate": "20170809", "SeriesDate": "20170810",
    "AcquisitionDate": "20170811", "ContentDate": "20170812", "StudyTime": "132435", "ContentTime": "132536",
    "StudyDescription": "Quincewort protocol", "ProtocolName": "Hawksbeard", "DeviceSerialNumber": "SER00112233",
    "ImageComments": "Larkspurred", "RequestedProcedureDescription": "Moonseeded", "BodyPartExamined": "HEADZZ",
    "SeriesDescription": "Nightjarred"}
# The list of series and the sentence on which of several was taken are for telling them apart.
SHOWN_IN_LISTS = {"SeriesDescription"}
CALLS = {
    "picture": ["--marks", "--stats"],
    "numbers": ["--raw", "OUT/r.nrrd", "--depth", "OUT/d.png", "--window", "file"],
    "more-numbers": ["--raw", "OUT/r.npy", "--depth", "OUT/d.nrrd"],
    "turn": ["--frames", "3"],
    "in-parts": ["--memory", "30K"],
    "bad-view": ["--depth-range", "900,901"],
    "no-series": ["--series", "7"]}


def texts():
    return [text for value in SECRETS.values() for text in {value, value.replace("^", " "), *value.split("^")}
            if len(text) > 3]


def fill(folder, secret):
    make(folder, "--window", "100,2000", "--omit", "5", "--description", "")
    for path in folder.iterdir():
        data = pydicom.dcmread(path)
        for keyword, value in SECRETS.items():
            setattr(data, keyword, value if secret else "")
        if secret:
            data.add_new(0x00091001, "LO", "Privet hedge 5")
            data.StudyInstanceUID = generate_uid(entropy_srcs=["another"])
            data.FrameOfReferenceUID = generate_uid(entropy_srcs=["frame"])
        data.save_as(path, write_like_original=False)


def unpacked(content):
    """The bytes, and behind them what PNG chunks hold packed."""
    packed = b"".join(content[at.end():at.end() + int.from_bytes(content[at.start() - 4:at.start()], "big")]
                      for at in re.finditer(b"IDAT", content))
    try:
        return content + zlib.decompressobj().decompress(packed)
    except zlib.error:
        return content


def traced(program, log, *words, **more):
    """Like run; the files that any of its processes made or opened to write."""
    if not shutil.which("strace"):
        return run(program, *words, **more), set()
    calls = "trace=open,openat,creat,mkdir,mkdirat,rename,renameat,renameat2,link,linkat,symlink,symlinkat"
    done = run("strace", "-f", "-qq", "-o", log, "-e", calls, program, *words, **more)
    if done.returncode == 1 and "ptrace" in done.stderr:
        return run(program, *words, **more), set()
    made = set()
    for line in log.read_text(errors="replace").splitlines():
        if re.search(r"= -1 ", line) or not re.search(r"O_CREAT|O_WRONLY|O_RDWR|creat\(|mkdir|link|rename", line):
            continue
        made |= {name for name in re.findall(r'"([^"]*)"', line) if name != "/dev/null"}
    return done, made


def without_seconds(text):
    return re.sub(r'("seconds[a-z_]*":|in )[0-9.]+', r"\1", text)


def call(program, place, words):
    """All that one run says and writes, by name, and what it made elsewhere."""
    shutil.rmtree(place / "out", ignore_errors=True)
    (place / "out").mkdir()
    words = [str(word).replace("OUT", str(place / "out")) for word in words]
    home = place / "home"
    home.mkdir(exist_ok=True)
    environment = dict(os.environ, HOME=str(home), TMPDIR=str(home), XDG_CACHE_HOME=str(home))
    done, made = traced(program, place / "trace", place / "in", *words, cwd=home, env=environment)
    left = {path.name: path.read_bytes() for path in (place / "out").iterdir()}
    elsewhere = {name for name in made if not name.startswith(str(place / "out"))} | set(os.listdir(home))
    return {"status": done.returncode, "stdout": without_seconds(done.stdout), "stderr": done.stderr, **left}, elsewhere


def check_call(report, program, place, name, words):
    # How many threads take part depends on what else the machine does.
    words = [*words, "-o", "OUT/p.png", "--size", "64x64", "-j", "1"]
    results = {}
    for kind in ("secret", "plain"):
        (place / kind).rename(place / "in")
        results[kind], elsewhere = call(program, place, words)
        (place / "in").rename(place / kind)
        report.check(not elsewhere, f"{name}: made {elsewhere}")
    report.check(results["secret"] == results["plain"], f"{name}: differs with the patient")
    report.check((results["secret"]["status"] == 0) == ("p.png" in results["secret"]), f"{name}: {results['secret']}")
    for key, value in results["secret"].items():
        content = unpacked(value) if isinstance(value, bytes) else str(value).encode()
        told = [text for text in texts() + ["Privet"]
                if text.encode() in content or text.encode("utf-16-le") in content]
        report.check(not told, f"{name}: {key} tells {told}")


def check_lists(report, program, place):
    done = run(program, place / "secret", "--list-series")
    told = [key for key, value in SECRETS.items() if value in done.stdout + done.stderr]
    report.check(set(told) == SHOWN_IN_LISTS, f"the list of series tells {told}")


def main():
    report = Report()
    with tempfile.TemporaryDirectory() as place:
        place = Path(place)
        fill(place / "secret", True)
        fill(place / "plain", False)
        for name, words in CALLS.items():
            check_call(report, sys.argv[1], place, name, words)
        check_lists(report, sys.argv[1], place)
    report.finish("outputs and words tell nothing of the patient")


if __name__ == "__main__":
    main()
