"""Makes files of the public headers: `python3 scripts/public_api WHAT ... HEADER...`, see --help."""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from public_api import export_lists, frozen_list, object_calls, object_families
from public_api.prototypes import HeaderError, Prototype, read_headers


def _write_lists(functions: list[Prototype], arguments: argparse.Namespace) -> None:
    directory: Path = arguments.directory
    directory.mkdir(parents=True, exist_ok=True)
    (directory / "xlatr.exports").write_text(export_lists.names(functions), encoding="ascii")
    (directory / "xlatr.map").write_text(export_lists.version_script(functions, arguments.abi), encoding="ascii")
    (directory / "xlatr.def").write_text(export_lists.module_definition(functions), encoding="ascii")


def _write_calls(functions: list[Prototype], arguments: argparse.Namespace) -> None:
    output: Path = arguments.output
    output.write_text(object_calls.render(functions), encoding="ascii")


def _write_families(functions: list[Prototype], arguments: argparse.Namespace) -> None:
    output: Path = arguments.output
    output.write_text(object_families.render(functions), encoding="ascii")


def _freeze(functions: list[Prototype], arguments: argparse.Namespace) -> None:
    path: Path = arguments.list
    frozen = frozen_list.parse(path.read_text(encoding="ascii"))
    if problems := frozen_list.broken(frozen, functions):
        raise ValueError("\n".join([*problems, "what is frozen stays as it is"]))
    new = frozen_list.added(frozen, functions)
    path.write_text(frozen_list.render(frozen, new), encoding="ascii")
    for function in new:
        print(f"frozen: {function.signature}")


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="public_api", description="Makes files of the public headers.")
    commands = parser.add_subparsers(required=True)

    lists = commands.add_parser("lists", help="the names, the version script and the .def of the exported functions")
    lists.add_argument("--abi", required=True, help="the version of the ABI")
    lists.add_argument("--directory", required=True, type=Path, help="where the files go")
    lists.set_defaults(run=_write_lists)

    calls = commands.add_parser("calls", help="the calls of the fuzz target that calls every function")
    calls.add_argument("--output", required=True, type=Path, help="the C++ header to write")
    calls.set_defaults(run=_write_calls)

    families = commands.add_parser("families", help="the families as types, for tests that drive all of them")
    families.add_argument("--output", required=True, type=Path, help="the C++ header to write")
    families.set_defaults(run=_write_families)

    freeze = commands.add_parser("freeze", help="adds what is not frozen yet to the list of the frozen ABI")
    freeze.add_argument("--list", required=True, type=Path, help="the list")
    freeze.set_defaults(run=_freeze)

    for command in (lists, calls, families, freeze):
        command.add_argument("headers", nargs="+", type=Path, metavar="HEADER")
    return parser


def main() -> int:
    """Run the command line and return the exit code."""
    arguments = _parser().parse_args()
    try:
        arguments.run(read_headers(arguments.headers), arguments)
    except (HeaderError, ValueError) as failure:
        print(failure, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
