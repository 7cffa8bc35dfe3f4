"""Holds the public headers, the frozen ABI, the built library and its module definition against each other.

check_exports.py LIBRARY MODULE_DEFINITION SOURCE_DIRECTORY
"""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

# What is visible besides the functions: the exception classes, and the version of the ABI itself.
_EXCEPTION = r"5xlatr\d+Converter(Generic|Parsing|Processing)Exception"
_CLASSES = re.compile(rf"XLATR_\d+|_ZN?K?[A-Z]*{_EXCEPTION}.*|_ZT[ISV]N{_EXCEPTION}E")


def visible_names(library: Path) -> set[str]:
    """Return the names of the functions that the library shows."""
    listed = subprocess.run(
        ["nm", "-D", "--defined-only", str(library)], check=True, capture_output=True, text=True
    ).stdout
    names = {line.split()[-1].partition("@")[0] for line in listed.splitlines()}
    return {name for name in names if not _CLASSES.fullmatch(name)}


def difference(left: str, left_names: set[str], right: str, right_names: set[str]) -> list[str]:
    """Return a line for each name that only one side has."""
    return [f"{left} but not {right}: {name}" for name in sorted(left_names - right_names)] + [
        f"{right} but not {left}: {name}" for name in sorted(right_names - left_names)
    ]


def main() -> int:
    """Print what does not fit, and return whether there is such."""
    library, definition, source = (Path(argument) for argument in sys.argv[1:])
    sys.dont_write_bytecode = True
    sys.path.insert(0, str(source / "scripts"))
    from public_api import frozen_list
    from public_api.prototypes import read_headers

    functions = read_headers(sorted((source / "include" / "xlatr").glob("*.h")))
    declared = {function.name for function in functions}
    frozen = frozen_list.parse((source / "abi" / "exports.txt").read_text(encoding="ascii"))
    defined = set(definition.read_text(encoding="ascii").partition("EXPORTS\n")[2].split())

    problems = frozen_list.broken(frozen, functions)
    problems += [f"not frozen yet: {function.signature}" for function in frozen_list.added(frozen, functions)]
    if problems:
        problems.append("scripts/freeze-exports adds a new function to abi/exports.txt; an old one never changes")
    problems += difference("declared", declared, "visible", visible_names(library))
    problems += difference("declared", declared, "in the .def", defined)
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
