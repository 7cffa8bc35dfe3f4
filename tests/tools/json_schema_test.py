"""What xlatr prints as JSON is what the schemas in docs/ say: json_schema_test.py XLATR SCHEMAS SAMPLE."""

from __future__ import annotations

import json
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77

HEAD = ";$FILEVERSION=2.1\r\n;$STARTTIME=43894.5\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
TRACES = {
    "empty.trc": HEAD,
    "noise.trc": HEAD + "1 1.0 DT 1 0123 Rx - 2 01 02\r\nnoise\r\n",
    "events.trc": HEAD + "1 1.0 DT 1 0123 Rx - 2 01 03\r\n2 2.0 EV 1 \"quoted\" \\ text\r\n",
}


def output_of(*command: str) -> object:
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    assert run.returncode in (0, 3), f"{command} ended with {run.returncode}"
    return json.loads(run.stdout)


def main() -> int:
    try:
        import jsonschema
    except ImportError:
        print("skipped: there is no Python package jsonschema")
        return SKIPPED
    program, schemas, sample = sys.argv[1], Path(sys.argv[2]), sys.argv[3]

    def check(command: str, *arguments: str) -> None:
        schema = json.loads((schemas / f"{command}.schema.json").read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(schema)
        jsonschema.Draft202012Validator(schema).validate(output_of(program, command, "--json", *arguments))

    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for trace, text in TRACES.items():
            (folder / trace).write_bytes(text.encode())
        paths = [str(folder / trace) for trace in TRACES]
        check("stats", sample, *paths)
        check("stats", "--bitrate", "500k,2M", sample)
        for path in paths:
            check("compare", sample, path)
            check("compare", "--texts", "--kind", "data,event,comment", path, paths[1])
    return 0


if __name__ == "__main__":
    sys.exit(main())
