"""What tests with other programs need of the frames interface, through ctypes."""

from __future__ import annotations

import ctypes
from collections.abc import Iterator
from pathlib import Path
from typing import Any, NamedTuple

import numpy

KINDS = ("data", "remote", "error", "overload", "status", "counters", "lin", "lin_event", "event", "comment")
ATTRIBUTES = 17
CHECKSUM = 11
LIN_ERRORS = 13

EXTENDED, RECEIVED, TRANSMITTED, FD, BRS, ESI = 1, 2, 4, 8, 16, 32
DLC_KNOWN = 128


class Frame(NamedTuple):
    """One frame, with 0 in what its kind has not."""

    kind: str
    time_ns: int
    bus: int
    id: int = 0
    flags: int = 0
    dlc: int = 0
    data: bytes = b""
    checksum: int = 0
    lin_errors: int = 0


class _Batch(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint64),
        ("rows", ctypes.c_uint64),
        *[(name, ctypes.c_void_p) for name in ("time_ns", "kind", "bus", "id", "flags", "dlc")],
        *[(name, ctypes.c_void_p) for name in ("data_offsets", "data", "text_offsets", "text", "text_validity")],
        ("place", ctypes.c_void_p),
        ("attributes", ctypes.c_uint32),
        ("attribute", ctypes.c_void_p * ATTRIBUTES),
        ("attribute_validity", ctypes.c_void_p * ATTRIBUTES),
    ]


class _SinkOptions(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint64),
        ("format", ctypes.c_uint32),
        ("replace", ctypes.c_uint32),
        ("version", ctypes.c_double),
        ("zipped", ctypes.c_uint32),
        ("compact", ctypes.c_uint32),
        ("separator", ctypes.c_char_p),
    ]


class _Head(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint64),
        ("format", ctypes.c_uint32),
        ("start_known", ctypes.c_uint32),
        ("version", ctypes.c_double),
        ("start_ns", ctypes.c_int64),
        ("zone_known", ctypes.c_uint32),
        ("zone_minutes", ctypes.c_int32),
        ("frames_known", ctypes.c_uint32),
        ("places_are_records", ctypes.c_uint32),
        ("frames", ctypes.c_uint64),
        ("path", ctypes.c_char_p),
        ("producer", ctypes.c_char_p),
    ]


_COLUMNS = {
    "time_ns": numpy.int64,
    "kind": numpy.uint8,
    "bus": numpy.uint16,
    "id": numpy.uint32,
    "flags": numpy.uint16,
    "dlc": numpy.uint16,
}


def _bits(values: list[bool]) -> Any:
    return numpy.packbits(numpy.array(values, dtype=bool), bitorder="little")


def _array(address: int | None, dtype: Any, count: int) -> Any:
    """Return a copy of `count` values at an address."""
    if count == 0 or address is None:
        return numpy.zeros(0, dtype)
    size = count * numpy.dtype(dtype).itemsize
    return numpy.frombuffer(ctypes.string_at(address, size), dtype)


class Sink:
    """A file that frames are written to."""

    def __init__(self, library: Any, path: Path, start_ns: int, options: dict[str, Any]) -> None:
        self._library = library
        self._handle = ctypes.c_void_p()
        head = _Head(size=ctypes.sizeof(_Head), start_known=1, start_ns=start_ns)
        record = _SinkOptions(size=ctypes.sizeof(_SinkOptions), replace=1, **options)
        self._require(
            library.xlatr_sink_create(
                str(path).encode(), ctypes.byref(head), ctypes.byref(record), ctypes.byref(self._handle)
            )
        )

    def write(self, frames: list[Frame]) -> None:
        """Write frames, in batches."""
        for begin in range(0, len(frames), 10_000):
            self._write_batch(frames[begin : begin + 10_000])

    def finish(self) -> None:
        """Finish and close the file."""
        self._require(self._library.xlatr_sink_finish(self._handle))
        self.close()

    def close(self) -> None:
        """Close the file; it is gone if it was not finished."""
        self._require(self._library.xlatr_sink_close(self._handle))

    def _write_batch(self, frames: list[Frame]) -> None:
        batch = _Batch(size=ctypes.sizeof(_Batch), rows=len(frames))
        columns = {
            "time_ns": [frame.time_ns for frame in frames],
            "kind": [KINDS.index(frame.kind) for frame in frames],
            "bus": [frame.bus for frame in frames],
            "id": [frame.id for frame in frames],
            "flags": [frame.flags for frame in frames],
            "dlc": [frame.dlc for frame in frames],
        }
        arrays = {name: numpy.array(values, dtype=_COLUMNS[name]) for name, values in columns.items()}
        lengths = [0, *(len(frame.data) for frame in frames)]
        arrays["data_offsets"] = numpy.cumsum(lengths, dtype=numpy.int32)
        arrays["data"] = numpy.frombuffer(b"".join(frame.data for frame in frames) + b"\0", numpy.uint8)
        arrays["text_offsets"] = numpy.zeros(len(frames) + 1, numpy.int32)
        arrays["text"] = numpy.zeros(1, numpy.uint8)
        arrays["text_validity"] = _bits([False] * len(frames))
        for name, array in arrays.items():
            setattr(batch, name, array.ctypes.data)
        attributes = {
            CHECKSUM: ([frame.checksum for frame in frames], [frame.kind == "lin" for frame in frames]),
            LIN_ERRORS: ([frame.lin_errors for frame in frames], [frame.lin_errors != 0 for frame in frames]),
        }
        keep = []
        for attribute, (values, valid) in attributes.items():
            keep += [numpy.array(values, numpy.uint32), _bits(valid)]
            batch.attributes |= 1 << attribute
            batch.attribute[attribute] = keep[-2].ctypes.data
            batch.attribute_validity[attribute] = keep[-1].ctypes.data
        self._require(self._library.xlatr_sink_write(self._handle, ctypes.byref(batch)))

    def _require(self, code: int) -> None:
        if code != 0:
            raise AssertionError(f"{code}: {self._library.xlatr_sink_error(self._handle).decode()}")


class FramesLibrary:
    """The library."""

    def __init__(self, path: str) -> None:
        self._library = ctypes.CDLL(path)
        self._library.xlatr_sink_error.restype = ctypes.c_char_p
        self._library.xlatr_stream_error.restype = ctypes.c_char_p

    def create(self, path: Path, start_ns: int, **options: Any) -> Sink:
        """Create a file; the options are those of `xlatr_sink_options`."""
        return Sink(self._library, path, start_ns, options)

    def read(self, path: Path) -> list[Frame]:
        """Return the frames of a file."""
        handle = ctypes.c_void_p()
        code = self._library.xlatr_stream_open(str(path).encode(), None, ctypes.byref(handle))
        if code != 0:
            raise AssertionError(f"{code}: {self._library.xlatr_stream_error(handle).decode()}")
        batch = _Batch(size=ctypes.sizeof(_Batch))
        frames: list[Frame] = []
        while self._library.xlatr_stream_next(handle, ctypes.byref(batch)) == 0:
            frames += _frames_of(batch)
        self._library.xlatr_stream_close(handle)
        return frames


def _frames_of(batch: _Batch) -> Iterator[Frame]:
    columns = {name: _array(getattr(batch, name), dtype, batch.rows) for name, dtype in _COLUMNS.items()}
    offsets = _array(batch.data_offsets, numpy.int32, batch.rows + 1)
    data = _array(batch.data, numpy.uint8, int(offsets[-1])).tobytes()
    # Of an attribute that no frame has there is no column.
    attributes = {
        attribute: _array(batch.attribute[attribute], numpy.uint32, batch.rows)
        if batch.attributes >> attribute & 1
        else numpy.zeros(batch.rows, numpy.uint32)
        for attribute in (CHECKSUM, LIN_ERRORS)
    }
    for row in range(batch.rows):
        time_ns, kind, bus, identifier, flags, dlc = (int(columns[name][row]) for name in _COLUMNS)
        yield Frame(
            KINDS[kind],
            time_ns,
            bus,
            identifier,
            flags,
            dlc,
            data[offsets[row] : offsets[row + 1]],
            int(attributes[CHECKSUM][row]),
            int(attributes[LIN_ERRORS][row]),
        )
