#!/usr/bin/env python3
"""check_schema.py PROGRAM SCHEMA SAMPLE LOGS: what the program prints with --json is what the schema says.

The schema lets properties be added. Here none may be there that it does not know, so that it is kept up to date.
"""

from __future__ import annotations

import json
import subprocess
import sys
import tempfile
from collections.abc import Iterator
from pathlib import Path
from typing import Any

try:
    import jsonschema
except ImportError:
    print("skipped: there is no Python module jsonschema (package python3-jsonschema)")
    sys.exit(77)

Json = Any


def closed(schema: Json) -> Json:
    """The schema, with no properties but those that it names."""
    if isinstance(schema, list):
        return [closed(part) for part in schema]
    if not isinstance(schema, dict):
        return schema
    result = {name: closed(part) for name, part in schema.items()}
    if isinstance(result.get("properties"), dict) and result.get("type") == "object":
        result.setdefault("additionalProperties", False)
    return result


class Program:
    """The program, in a folder with traces."""

    def __init__(self, path: str, folder: Path) -> None:
        self.path = path
        self.folder = folder

    def run(self, *words: str, code: int) -> str:
        ended = subprocess.run([self.path, *words], cwd=self.folder, capture_output=True, text=True, check=False)
        if ended.returncode != code:
            sys.exit(f"{words}: exit code {ended.returncode}, not {code}: {ended.stderr}")
        return ended.stdout


def outputs(program: Program, logs: Path) -> Iterator[tuple[str, str, Json]]:
    """Name of the definition, what was run, what it printed."""

    def take(definition: str, *words: str, code: int) -> tuple[str, str, Json]:
        return definition, " ".join(words), json.loads(program.run(*words, "--json", code=code))

    yield take("convert", "convert", "drive.trc", "drive.csv", code=0)
    yield take("convert", "convert", "drive.trc", "drive.mf4", code=3)
    yield take("convert", "convert", "drive.trc", "drive.btr", code=3)
    yield take("convert", "convert", "drive.trc", "drive.ltrc", code=3)
    yield take("convert", "convert", "drive.trc", "drive.mf4", code=4)
    yield take("convert", "convert", "drive.trc", "drive.mf4", "--strict", "-f", code=3)
    yield take("convert", "convert", "nothing.trc", "nothing.mf4", code=1)
    yield take("convert", "convert", "drive.trc", "part.trc", "--split-bus", "--bus", "1,2", code=0)
    yield take("convert", "convert", "drive.trc", "damaged.asc", "out/", "--to", "trc", code=3)
    yield take("convert", "convert", "drive.trc", "damaged.asc", "out/", "--to", "trc", "-n", code=0)
    yield take("convert", "merge", "drive.csv", "drive.mf4", "-o", "all.asc", code=3)
    for log in sorted(logs.iterdir()):
        words = ("convert", str(log), "log.csv", "-f", "--json")
        ended = subprocess.run([program.path, *words], cwd=program.folder, capture_output=True, text=True, check=False)
        yield "convert", " ".join(words), json.loads(ended.stdout)
    yield take("check", "check", "drive.trc", "damaged.asc", "drive.mf4", code=3)
    yield take("check", "check", "drive.trc", "nothing.trc", code=1)
    traces = ("drive.trc", "drive.csv", "drive.mf4", "drive.btr", "drive.ltrc", "damaged.asc")
    yield take("info", "info", *traces, code=0)
    yield take("info", "info", "--count", *traces, code=0)
    yield take("info", "info", "nothing.trc", code=1)
    yield take("formats", "formats", code=0)
    for trace in traces:
        lines = program.run("cat", trace, "--json", code=3 if trace == "damaged.asc" else 0).splitlines()
        for line in lines:
            yield "frame", f"cat {trace}", json.loads(line)


DAMAGED = """date Fri Mar 1 08:00:00.000 2024
base hex  timestamps absolute
   0.001000 1  123             Rx   d 2 01 02
   0.002000 1  123             Rx   d 2 01
   0.003000 Li 2A              Rx     2 01 02  checksum = D2
"""


def main() -> None:
    path, schema_path, sample, logs = sys.argv[1:]
    schema = json.loads(Path(schema_path).read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    strict = closed(schema)
    definitions = set()
    count = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "drive.trc").write_bytes(Path(sample).read_bytes())
        (folder / "damaged.asc").write_text(DAMAGED)
        (folder / "out").mkdir()
        validators = {}
        for definition, words, output in outputs(Program(path, folder), Path(logs)):
            root = {"$schema": schema["$schema"], "$defs": strict["$defs"], "$ref": f"#/$defs/{definition}"}
            validator = validators.setdefault(definition, jsonschema.Draft202012Validator(root))
            for error in validator.iter_errors(output):
                sys.exit(f"xlatr {words}: {error.json_path}: {error.message}")
            if definition == "convert":
                for each in output["conversions"]:
                    if each["read"] != each["written"] + each["dropped"] and each["error"] is None:
                        sys.exit(f"xlatr {words}: {each['read']} frames read, but not written or dropped")
            definitions.add(definition)
            count += 1
    if definitions != {"convert", "check", "info", "formats", "frame"}:
        sys.exit(f"only these were seen: {definitions}")
    print(f"{count} outputs are as the schema says")


if __name__ == "__main__":
    main()
