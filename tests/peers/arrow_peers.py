"""Frames through the Arrow C stream interface, to and from other programs: arrow_peers.py LIBRARY TRACE FOLDER

Each of pyarrow, polars and duckdb that is installed reads the frames of a trace from the library, counts them, and hands
them back; what the library then writes must be what it writes of the trace itself. Ends with 77 if none is installed.
"""

from __future__ import annotations

import ctypes
import importlib.util
import sys
from pathlib import Path

SKIPPED = 77

# In lines of TRC 2.0 and above.
DATA_KINDS = (b"DT", b"FD", b"FB", b"FE", b"BI", b"XL")


class Stream(ctypes.Structure):
    """struct ArrowArrayStream."""

    _fields_ = [(name, ctypes.c_void_p) for name in ("get_schema", "get_next", "get_last_error", "release", "private")]


class Library:
    """What this test needs of frames.h."""

    def __init__(self, path: str) -> None:
        self._library = ctypes.CDLL(path)
        self._library.xlatr_sink_error.restype = ctypes.c_char_p
        self._library.xlatr_stream_error.restype = ctypes.c_char_p

    def open(self, path: Path) -> Stream:
        """Return the frames of a trace as an Arrow stream."""
        handle = ctypes.c_void_p()
        self._require(self._library.xlatr_stream_open(str(path).encode(), None, ctypes.byref(handle)))
        stream = Stream()
        attributes = (1 << 17) - 1
        self._require(self._library.xlatr_stream_export_arrow(handle, attributes, ctypes.byref(stream)))
        return stream

    def write(self, path: Path, address: int) -> bytes:
        """Write the frames of an Arrow stream and return the bytes of the file."""
        path.unlink(missing_ok=True)
        sink = ctypes.c_void_p()
        self._require(self._library.xlatr_sink_create(str(path).encode(), None, None, ctypes.byref(sink)))
        code = self._library.xlatr_sink_write_arrow(sink, ctypes.c_void_p(address))
        if code != 0:
            raise AssertionError(f"{code}: {self._library.xlatr_sink_error(sink).decode()}")
        self._require(self._library.xlatr_sink_finish(sink))
        self._require(self._library.xlatr_sink_close(sink))
        return path.read_bytes()

    @staticmethod
    def _require(code: int) -> None:
        if code != 0:
            raise AssertionError(f"the library answered {code}")


class Frames:
    """Frames with the Arrow PyCapsule interface, which every one of the programs reads."""

    def __init__(self, stream: Stream) -> None:
        self._stream = stream

    def __arrow_c_stream__(self, requested_schema: object = None) -> object:
        new_capsule = ctypes.pythonapi.PyCapsule_New
        new_capsule.restype = ctypes.py_object
        new_capsule.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p]
        return new_capsule(ctypes.addressof(self._stream), b"arrow_array_stream", None)


def address_of(frames: object) -> tuple[int, object]:
    """Return the address of the stream that an object of another program exports, and what keeps it alive."""
    capsule = frames.__arrow_c_stream__()  # type: ignore[attr-defined]
    get_pointer = ctypes.pythonapi.PyCapsule_GetPointer
    get_pointer.restype = ctypes.c_void_p
    get_pointer.argtypes = [ctypes.py_object, ctypes.c_char_p]
    return get_pointer(capsule, b"arrow_array_stream"), capsule


def through_pyarrow(frames: Frames) -> tuple[int, int, object]:
    import pyarrow

    table = pyarrow.table(frames)
    table.validate(full=True)
    assert table.schema.field("time_ns").type == pyarrow.int64()
    assert table.schema.field("data").type == pyarrow.binary()
    kinds = table.column("kind").to_pylist()
    return len(table), kinds.count("data"), table


def through_polars(frames: Frames) -> tuple[int, int, object]:
    import polars

    frame = polars.DataFrame(frames)
    return frame.height, frame.filter(polars.col("kind").cast(polars.String) == "data").height, frame


def through_duckdb(frames: Frames) -> tuple[int, int, object]:
    import duckdb

    connection = duckdb.connect()
    connection.register("frames", frames)
    table = connection.sql("select * from frames").to_arrow_table()
    connection.register("table_of_frames", table)
    counts = connection.sql("select count(*), count(*) filter (kind = 'data') from table_of_frames").fetchall()
    return *counts[0], table


PEERS = {"pyarrow": through_pyarrow, "polars": through_polars, "duckdb": through_duckdb}


def main() -> int:
    """Run the test with each program that is there."""
    library = Library(sys.argv[1])
    trace, folder = Path(sys.argv[2]), Path(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    frames = library.open(trace)
    expected = library.write(folder / "frames.trc", ctypes.addressof(frames))
    # Comments are frames too.
    lines = expected.rpartition(b";---+--")[2].splitlines()[1:]
    counts = (len(lines), sum(line.split()[2] in DATA_KINDS for line in lines if not line.startswith(b";")))
    needed = {"pyarrow": {"pyarrow"}, "polars": {"polars"}, "duckdb": {"duckdb", "pyarrow"}}
    found = 0
    for name, through in PEERS.items():
        if not all(importlib.util.find_spec(module) for module in needed[name]):
            print(f"{name} is not installed: skipped")
            continue
        found += 1
        rows, data, result = through(Frames(library.open(trace)))
        assert (rows, data) == counts, f"{name} counts {rows} rows and {data} data frames, not {counts}"
        address, keeper = address_of(result)
        assert library.write(folder / "frames.trc", address) == expected, f"{name} hands back other frames"
        del keeper
        print(f"{name}: {rows} frames there and back")
    return 0 if found else SKIPPED


if __name__ == "__main__":
    sys.exit(main())
