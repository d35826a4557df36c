"""The package as such: its examples and types, what importing it needs, its wheel and sdist."""

import ctypes
import doctest
import importlib
import importlib.util
import inspect
import os
import pkgutil
import re
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest

import zox_volume
from zox_volume import _render, kernels

SOURCE = Path(zox_volume.__file__).parent
LIBRARIES = os.environ["ZOX_VOLUME_LIBRARY_PATH"]
HEADERS = SOURCE.parents[1] / "include"
MODULES = [zox_volume.__name__] + [
    module.name for module in pkgutil.walk_packages(zox_volume.__path__, "zox_volume.")
]


@pytest.mark.parametrize("name", MODULES)
def test_examples(name):
    assert doctest.testmod(importlib.import_module(name)).failed == 0


def test_types():
    if importlib.util.find_spec("mypy") is None:
        pytest.skip("mypy is not installed")
    command = [sys.executable, "-m", "mypy", "--strict", "--cache-dir", os.devnull, str(SOURCE)]
    config = ["--config-file", str(SOURCE.parent / "pyproject.toml")]
    result = subprocess.run([*command, *config], capture_output=True, text=True)
    assert result.returncode == 0, result.stdout


def test_every_operation_of_the_header_is_there():
    """32 functions, each under its own name but for the pair that allocates."""
    header = (HEADERS / "zox_volume.h").read_text()
    functions = set(re.findall(r"^\w[\w* ]*\b(zox_\w+)\(", header, re.MULTILINE))
    assert len(functions) == 32
    ours = {
        "zox_GetStringStatus": "get_string_status",
        "zox_GetVersion": "get_version",
        "zox_GetNumThreads": "get_num_threads",
        "zox_SetNumThreads": "set_num_threads",
        "zox_Malloc": "aligned_zeros",
        "zox_Free": "aligned_zeros",
        "zox_AlignPointer": "align_pointer",
        "zox_Volume_WindowLevel_16S_8U": "window_level_16s_8u",
    }
    for name in functions:
        short = name.removeprefix("zox_Volume_").lower()
        short = short.replace("raycast", "ray_cast").replace("findmax", "find_max_").replace("__", "_")
        assert ours.get(name, short) in kernels.__all__


def test_everything_public_is_documented():
    for module in (zox_volume, kernels):
        for name in module.__all__:
            thing = getattr(module, name)
            if callable(thing):
                assert inspect.getdoc(thing)
    for kind in (zox_volume.Volume, zox_volume.Picture, kernels.SliceStack, kernels.BlockedVolume):
        for name, member in vars(kind).items():
            if not name.startswith("_") and (
                callable(member) or isinstance(member, (property, staticmethod))
            ):
                assert inspect.getdoc(member), name


def imported(environment, code="import zox_volume"):
    """What importing it in another process says last; "" if it succeeds."""
    whole = {key: value for key, value in os.environ.items() if not key.startswith("ZOX_")} | environment
    result = subprocess.run([sys.executable, "-c", code], env=whole, capture_output=True, text=True)
    return result.stderr.strip().splitlines()[-1] if result.returncode else ""


def test_a_folder_without_libraries(tmp_path):
    said = imported({"ZOX_VOLUME_LIBRARY_PATH": str(tmp_path)})
    assert said.startswith(f"ImportError: zox_volume finds no libzox_volume.so in {tmp_path}")


def test_a_file_that_is_no_library(tmp_path):
    (tmp_path / "libzox_volume.so").write_text("no library")
    said = imported({"ZOX_VOLUME_LIBRARY_PATH": str(tmp_path)})
    assert said.startswith(f"ImportError: zox_volume cannot load {tmp_path}/libzox_volume.so: ")


def test_another_library_of_that_name(tmp_path):
    for name in ("libzox_volume.so", "libzox_render.so"):
        shutil.copy(Path(LIBRARIES, "libzox_volume.so"), tmp_path / name)
    said = imported({"ZOX_VOLUME_LIBRARY_PATH": str(tmp_path)})
    assert (
        "ImportError" in said and "is no library that this zox_volume can use: it has no zox_render_" in said
    )


def test_a_library_of_another_release(monkeypatch):
    class Older(ctypes.Structure):
        _fields_ = [("record_size", ctypes.c_uint32)]

    monkeypatch.setitem(_render._INITS, "zox_render_view_init", Older)
    with pytest.raises(
        ImportError, match="of another release.*zox_render_view_init sets [0-9]+ bytes instead of 4"
    ):
        _render._load()


@pytest.mark.parametrize("libraries", ["lib", "lib/x86_64-linux-gnu", "lib64"])
def test_a_tree_that_was_installed_anywhere(tmp_path, libraries):
    package = tmp_path / "lib/python3/dist-packages/zox_volume"
    shutil.copytree(SOURCE, package)
    (tmp_path / libraries).mkdir(exist_ok=True)
    for name in ("libzox_volume.so", "libzox_render.so"):
        shutil.copy(Path(LIBRARIES, name), tmp_path / libraries)
    code = (
        "import zox_volume;"
        f"assert any({str(tmp_path / libraries)!r} in line for line in open('/proc/self/maps'))"
    )
    assert imported({"PYTHONPATH": str(package.parent)}, code) == ""


def build(folder, environment, *what):
    source = folder / "source"
    shutil.copytree(
        SOURCE.parent, source, ignore=shutil.ignore_patterns("__pycache__", ".*", "build", "dist")
    )
    command = [
        sys.executable,
        "-m",
        "build",
        "--no-isolation",
        *what,
        "--outdir",
        str(folder / "dist"),
        str(source),
    ]
    environment = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"} | environment
    result = subprocess.run(command, env=environment, capture_output=True, text=True)
    assert result.returncode == 0, result.stdout + result.stderr
    return sorted(path.name for path in (folder / "dist").iterdir())


NEEDS_BUILD = pytest.mark.skipif(
    any(importlib.util.find_spec(name) is None for name in ("build", "setuptools", "wheel")),
    reason="build, setuptools or wheel is not installed",
)
VERSION = zox_volume.__version__


@NEEDS_BUILD
def test_a_wheel_with_the_libraries_works_alone(tmp_path):
    made = build(tmp_path, {"ZOX_VOLUME_BUNDLE": LIBRARIES}, "--wheel")
    assert made == [f"zox_volume-{VERSION}-py3-none-linux_x86_64.whl"]
    with zipfile.ZipFile(tmp_path / "dist" / made[0]) as wheel:
        wheel.extractall(tmp_path / "installed")
    assert (tmp_path / "installed" / "zox_volume" / "py.typed").is_file()
    code = (
        "import numpy, zox_volume, sys;"
        f"assert zox_volume.__file__.startswith({str(tmp_path)!r});"
        "assert zox_volume.Volume(numpy.arange(27).reshape(3, 3, 3)).render(size=5).any();"
        f"assert all({LIBRARIES!r} not in line for line in open('/proc/self/maps'))"
    )
    assert imported({"PYTHONPATH": str(tmp_path / "installed")}, code) == ""


@NEEDS_BUILD
def test_an_sdist_and_the_wheel_of_it(tmp_path):
    made = build(tmp_path, {"ZOX_VOLUME_BUNDLE": ""})
    assert made == [f"zox-volume-{VERSION}.tar.gz", f"zox_volume-{VERSION}-py3-none-any.whl"]
    with zipfile.ZipFile(tmp_path / "dist" / made[1]) as wheel:
        names = wheel.namelist()
    assert "zox_volume/kernels/general.py" in names and not any(name.endswith(".so") for name in names)


def test_the_version_is_the_libraries():
    assert _render.library.zox_render_version().decode() == VERSION
