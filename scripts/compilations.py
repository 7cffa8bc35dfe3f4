"""How a build compiles its files, by the database that CMake writes."""

from __future__ import annotations

import json
import os
import re
import shlex
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


@dataclass(frozen=True)
class Compilation:
    """How a file is compiled, but for the names of the files, in a way that Clang understands."""

    folder: str
    arguments: tuple[str, ...]


def read_compilations(build: Path) -> Iterator[tuple[str, Compilation]]:
    """Return each file of a configured build once, and how it is compiled.

    Raises
    ------
    FileNotFoundError
        If the build is not configured.
    """
    seen = set()
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = os.path.realpath(os.path.join(entry["directory"], entry["file"]))
        if file not in seen:
            seen.add(file)
            yield file, _compilation_of(entry)


def _compilation_of(entry: dict[str, str]) -> Compilation:
    arguments = shlex.split(entry["command"])
    while not re.search(r"(\+\+|cc|clang|c89|c99)(-\d+)?$", arguments[0]):  # a launcher such as ccache
        del arguments[0]
    kept = []
    rest = iter(arguments[1:])
    for argument in rest:
        if argument in ("-o", "-c", "-MF", "-MT"):
            next(rest)
        elif argument == "-include":  # a precompiled header, which is another compiler's
            next(rest)
        # The build reports its warnings itself, and its compiler may have options that Clang lacks.
        elif not re.match(r"-W(?!,)|-M|-fprofile|-fcoverage|-fpch|-Xclang", argument):
            kept.append(argument)
    return Compilation(entry["directory"], (*kept, "-w"))
