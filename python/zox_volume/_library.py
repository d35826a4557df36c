"""Finds the shared libraries, loads them and checks that they are the ones this package was written for."""

from __future__ import annotations

import ctypes
import os
from pathlib import Path

_PATH_VARIABLE = "ZOX_VOLUME_LIBRARY_PATH"


def _folders() -> list[Path]:
    """Where the libraries may lie beside this package: in a wheel, or in the tree it was installed with."""
    package = Path(__file__).resolve().parent
    folders = [package / "lib"]
    if package.parent.name in ("dist-packages", "site-packages"):
        libraries = package.parents[2]  # lib of lib/python3/dist-packages/zox_volume
        folders += [
            libraries,
            libraries / "x86_64-linux-gnu",
            libraries.parent / "lib64",
        ]
    return folders


def _load_file(path: Path | str) -> ctypes.CDLL:
    try:
        return ctypes.CDLL(str(path))
    except OSError as error:
        raise ImportError(f"zox_volume cannot load {path}: {error}") from None


def load(name: str) -> ctypes.CDLL:
    """The library of this file name: where ZOX_VOLUME_LIBRARY_PATH says, else beside the package, else the
    system's."""
    named = [Path(folder) for folder in os.environ.get(_PATH_VARIABLE, "").split(os.pathsep) if folder]
    for folder in named or _folders():
        if (folder / name).is_file():
            return _load_file(folder / name)
    if named:
        raise ImportError(
            f"zox_volume finds no {name} in {os.environ[_PATH_VARIABLE]}, the value of {_PATH_VARIABLE}"
        )
    try:
        return ctypes.CDLL(name)
    except OSError:
        raise ImportError(
            f"zox_volume needs {name}: install ZOX Volume's libraries, "
            f"or set {_PATH_VARIABLE} to their folder"
        ) from None


def require(library: ctypes.CDLL, names: list[str]) -> None:
    """Raises ImportError unless the library exports all of these names."""
    for name in names:
        if not hasattr(library, name):
            raise ImportError(f"{library._name} is no library that this zox_volume can use: it has no {name}")
