"""Writes the seeds of the fuzz target `objects` anew: `python3 -B fuzz/make_object_seeds.py`.

A seed is a source file and calls with their arguments, as objects_fuzz.cpp takes them from its input. The source files
of the seeds are kept; their calls are made here. What a call takes is read from the header that
scripts/public_api/object_calls.py makes.
"""

from __future__ import annotations

import re
import sys
from collections.abc import Iterable, Sequence
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "scripts"))

from public_api import object_calls
from public_api.prototypes import read_headers

ROOT = Path(__file__).resolve().parent.parent
MOST_CALLS = 200
SEEDS = ROOT / "fuzz" / "seeds" / "objects"

# The choices of call_arguments.hpp: paths, numbers and sizes of buffers.
SOURCES = {"trc": 0, "asc": 1, "btrc": 5, "mf4": 7, "ltrc": 9, "btr": 10, "blf": 11}
TARGET, NO_PLACE, EMPTY_PATH, NULL_PATH = 2, 4, 6, 12
NUMBERS = {1.0: 1, 1.1: 2, 1.2: 3, 2.0: 4, 2.1: 5, 3.0: 6, 4.1: 7, 4.2: 8, 8.1: 9}
ROOMY, CUT, NULL = 200, 3, 255

READERS = {
    "trc": "TrcReader",
    "asc": "AscReader",
    "btrc": "BtrcReader",
    "mf4": "MdfReader",
    "ltrc": "KorlReader",
    "btr": "BtrSessionReader",
}
WRITERS = {
    "TrcWriter": 2.1,
    "AscWriter": 8.1,
    "KorlWriter": 1.2,
    "CsvWriter": 1.0,
    "BtrcWriter": 1.0,
    "MdfWriter": 4.2,
    "BtrSessionWriter": 3.0,
}
VERSIONS = (1.0, 1.1, 1.2, 2.0, 2.1, 3.0, 4.1)
FORMATS = ("TrcInfo", "AscInfo", "KorlInfo", "BlfInfo", "BtrcInfo", "CsvInfo", "MdfInfo", "BtrInfo")
MESSAGES = ("MessageCan", "MessageAsc", "MessageLin", "BlfMessage", "MessageBinaryFD", "MdfCanMessage")
SESSION_PARTS = ("BtrSessionEntry", "SessionDescriptor", "SessionLocation", "SessionDateTime", "MsgEntry")

_TAKEN = re.compile(r"arguments\.(\w+)\(|(TextBuffer|Place|readNext)\b|\b((?:call|some)_\w+|getSession)\(objects, ")


class Calls:
    """The calls of one seed, in bytes. `source` is the kind of its source file."""

    def __init__(self, source: str) -> None:
        functions = read_headers(sorted((ROOT / "include" / "xlatr").glob("*.h")))
        header = object_calls.render(functions)
        self._bodies = dict(
            re.findall(r"^inline .*?(\w+)\(Objects&.*?\{\n(.*?)^\}\n", header, re.DOTALL | re.MULTILINE)
        )
        self._numbers = {name: int(number) for number, name in re.findall(r"\{(\d+), (\w+)\}", header)}
        self._source = source
        self.made = b""
        self.count = 0

    def call(self, name: str, *arguments: int) -> None:
        """Add a call with just these bytes as its arguments."""
        self.count += 1
        self.made += self._numbers[name].to_bytes(2, "little") + bytes(arguments)

    def knows(self, function: str) -> bool:
        """Return whether there is such a function."""
        return f"call_{function}" in self._numbers

    def do(self, function: str, **choices: int) -> None:
        """Add a call of a function with arguments that make sense, or those of `choices` by the kind of argument."""
        name = function if function in self._numbers else f"call_{function}"
        self.call(name, *self._arguments(self._bodies[name], choices))

    def family(self, family: str, but: Sequence[str] = (), **choices: int) -> None:
        """Add calls of all functions of a family that neither make nor destruct an object, except some."""
        for name in self._numbers:
            member = name.removeprefix(f"call_{family}_")
            if member != name and member not in ("Construct", "Construct_2", "Destruct", "CreateNew", *but):
                self.do(name, **choices)

    def _arguments(self, body: str, choices: dict[str, int]) -> Iterable[int]:
        defaults = {
            "path": SOURCES[self._source],
            "flag": 1,
            "number": 1,
            "days": 1,
            "byte": 1,
            "format": 0,
            "TextBuffer": ROOMY,
            "some": 1,
        }
        given = {**defaults, **choices}
        for kind, made, call in _TAKEN.findall(body):
            if call.startswith("some_"):
                count = self._bodies[call].count("case ")
                choice = min(given["some"], count)
                yield choice
                if choice > 0:
                    yield from self._arguments(
                        self._bodies[call].split("case ")[choice].partition("default")[0], choices
                    )
            elif call == "getSession":
                yield 0
            elif call:
                yield from self._arguments(self._bodies[call], choices)
            elif kind == "text":
                yield from (5, *b"hello")
            elif made == "Place":
                yield from (given["byte"], given["flag"])
            elif made == "readNext":
                yield 0
            elif kind != "directory":
                yield given[kind or made]


def open_reader(calls: Calls, reader: str) -> None:
    """Make a reader of the source, with the objects that it is made of, and start it."""
    calls.do(f"make_{reader}")
    calls.do(f"{reader}_setActive")


def read(calls: Calls, reader: str) -> None:
    """Read the next message, or the messages of the next sector."""
    if reader == "BtrSessionReader":
        calls.call("readSector", 0)
    else:
        calls.do(f"{reader}_ReadNextMessage")


def open_writer(calls: Calls, writer: str) -> None:
    """Make a writer that may override the target."""
    calls.do(f"{writer}_Construct", path=TARGET, number=NUMBERS[WRITERS[writer]])
    calls.do(f"{writer}_setOverrideExistingFile")


def convert_all(calls: Calls, source: str) -> None:
    """Ask everything of a source and its first messages, and write them with every writer."""
    reader = READERS[source]
    open_reader(calls, reader)
    info, message = ("BtrInfo", "SessionMessage") if source == "btr" else _info_and_message(source)
    read(calls, reader)
    for family in (info, message):
        for choice in (0, 1):
            calls.family(family, but=_formats(family), some=choice)
    calls.family(message, TextBuffer=CUT)
    calls.do(f"{reader}_getPercentDone")
    if source == "btr":
        session(calls)
    if source == "mf4":
        calls.call("validateFile", ROOMY)
    for writer in WRITERS:
        open_reader(calls, reader)
        open_writer(calls, writer)
        calls.do(f"{writer}_setActive")
        calls.do(f"{writer}_WriteHeader")
        for _ in range(3):
            read(calls, reader)
            calls.do(f"{writer}_WriteMessage")
        calls.do(f"{writer}_setActive", flag=0)
    if source == "asc":
        calls.do("MessageAsc_AdjustTime", flag=0)
    if source == "trc":
        for version in VERSIONS:
            calls.do("MessageCan_ValidateForTargetVersion", number=NUMBERS[version])
    if source == "btrc":
        calls.do("BtrcReader_SkipCurrentBlock")
    calls.do(f"{reader}_setActive", flag=0)
    for format in range(8):
        convert_file(calls, SOURCES[source], format, version=2.0)
    for path in (TARGET, NO_PLACE):
        calls.do(f"make_{reader}", path=path)
        calls.do(f"{reader}_setActive")
        read(calls, reader)


def session(calls: Calls) -> None:
    """Ask everything of the parts of a session."""
    for part in SESSION_PARTS:
        calls.family(part)
    for choice in (1, 2, 3):
        calls.family("SessionLocation", some=choice)
    calls.call("compareDates", 0)
    calls.call("compareDates", NULL)
    calls.call("getSession", 0)
    calls.call("getSession", 9)


def _info_and_message(source: str) -> tuple[str, str]:
    messages = {
        "trc": "MessageCan",
        "asc": "MessageAsc",
        "btrc": "MessageBinaryFD",
        "mf4": "MdfCanMessage",
        "ltrc": "MessageLin",
    }
    return READERS[source].replace("Reader", "Info"), messages[source]


def _formats(family: str) -> tuple[str, ...]:
    """Return what an information family says of its format, for which it needs no object."""
    members = ("getFormatDescription", "GetAllowedConvertions", "GetSupportedVersions", "GetCurrentVersion")
    return (*members, "GetExtension") if family in FORMATS else ()


def ask_formats(calls: Calls) -> None:
    """Call everything that needs no object."""
    for family in FORMATS:
        for member in _formats(family):
            calls.do(f"{family}_{member}", TextBuffer=CUT if family == "TrcInfo" else ROOMY)
    for format in range(10):
        calls.family("BaseTraceInfo", but=("getFormat", "getFormatDescription"), format=format)
    calls.do("ConverterLastError_GetText", byte=0)
    calls.call("compareSizes")
    calls.family("CsvInfo", but=_formats("CsvInfo"))


def ask_files(calls: Calls) -> None:
    """Ask for a file, for what is known of it, and for the head of a binary trace."""
    for path in (SOURCES["btrc"], SOURCES["trc"], EMPTY_PATH, NULL_PATH):
        calls.do("TraceFileInfo_Construct", path=path)
        calls.family("TraceFileInfo")
    calls.do("TraceFileInfo_Construct")
    calls.family("BaseTraceInfo")
    calls.do("TrcInfo_Construct_2", path=SOURCES["trc"])
    calls.family("TrcInfo", but=_formats("TrcInfo"), some=0)
    calls.do("BtrcFileHeader_Construct")
    calls.family("BtrcFileHeader", some=0)
    calls.do("make_BtrcReader")
    calls.family("BtrcFileHeader", some=1)
    for room in (0, CUT, NULL):
        calls.do("BtrcFileHeader_getRTCRawDataString", some=0, TextBuffer=room)
    calls.do("BtrcFileHeader_Destruct")
    calls.family("CsvInfo", but=_formats("CsvInfo"))
    calls.do("BtrcInfo_Destruct")
    calls.family("CsvInfo", but=_formats("CsvInfo"))
    calls.do("TraceFileInfo_Destruct")


def read_log(calls: Calls) -> None:
    """Go through the phases of a log in order, and out of order."""
    calls.do("make_BlfReader")
    calls.family("BlfInfo", but=_formats("BlfInfo"), some=0)
    calls.family("BlfInfo", but=_formats("BlfInfo"), some=1)
    calls.do("BlfReader_setActive")
    calls.do("BlfReader_InitializePhaseTwoWaitBlfToCsv")
    calls.do("BlfReader_InitializePhaseTwoWaitBlfToCsv", flag=0)
    calls.do("BlfReader_InitializePhaseThreePrepareCsvReader", byte=0)
    calls.do("BlfReader_InitializePhaseThreePrepareCsvReader", byte=1)
    calls.family("BlfReader", but=("setActive",))
    calls.family("BlfMessage")
    calls.do("BlfReader_setActive", flag=0)


def use_writer(calls: Calls, writer: str) -> None:
    """Call everything of a writer that is not active, of an active one, and of one made from it."""
    open_reader(calls, "TrcReader")
    read(calls, "TrcReader")
    open_writer(calls, writer)
    calls.family(writer, but=("setTargetPath", "setTargetVersion", "setActive"))
    calls.do(f"{writer}_setTargetPath", path=TARGET)
    calls.do(f"{writer}_setTargetVersion", number=NUMBERS[WRITERS[writer]])
    calls.do(f"{writer}_setActive")
    calls.do(f"{writer}_WriteHeader_2")
    calls.family(writer, but=("WriteHeader", "WriteHeader_2", "setActive"))
    calls.do(f"{writer}_setActive", flag=0)
    for version in VERSIONS:
        calls.do(f"{writer}_setTargetVersion", number=NUMBERS[version])
        calls.do(f"{writer}_setActive")
        calls.do(f"{writer}_WriteHeader")
        calls.do(f"{writer}_WriteMessage")
        calls.do(f"{writer}_setActive", flag=0)
    calls.do(f"{writer}_setActive")
    calls.do(f"{writer}_CreateNew")
    for room in (0, CUT, NULL):
        calls.do(f"{writer}_getTargetPath", TextBuffer=room)
    calls.do(f"{writer}_setActive")  # while the one before it was
    calls.do("make_TrcInfo", path=NO_PLACE)  # which is not valid
    calls.do(f"{writer}_WriteHeader")
    calls.do(f"{writer}_Destruct")


def use_nothing(calls: Calls, families: Iterable[str]) -> None:
    """Call everything of families without an object."""
    for family in families:
        calls.family(family, but=_formats(family), some=0)
        for member in ("Construct", "CreateNew", "Destruct"):
            if calls.knows(f"{family}_{member}"):
                calls.do(f"{family}_{member}")


def convert_file(
    calls: Calls, path: int, format: int, asynchronous: int = 0, reported: int = 1, version: float = 2.1
) -> None:
    """Convert a file into a format, with options, a place for the progress and one for the result."""
    session = (2, 1) if path == SOURCES["btr"] else (3, ord(","))
    options = (1, NUMBERS[version], *session, 4, 1)
    progress = () if asynchronous else (1,)
    calls.call("convert", 0, path, format % 5, *options, format, asynchronous, *progress, 3, 1, reported)


def convert(calls: Calls) -> None:
    """Convert the source into each format, at once and beside other calls, and files that are no source."""
    for format in (*range(9), 11):
        convert_file(calls, SOURCES["trc"], format)
        convert_file(calls, SOURCES["trc"], format, asynchronous=1)
        for step in (1, 2):
            calls.call("convert", step)
        calls.call("convert", 3, format)
    for path in (NULL_PATH, SOURCES["asc"], EMPTY_PATH):
        convert_file(calls, path, 2, reported=0)
        convert_file(calls, path, 2, asynchronous=1)
        calls.call("convert", 1)
    convert_file(calls, SOURCES["trc"], 0, asynchronous=1, reported=0)


def source_of(seed: str) -> bytes:
    """Return how a seed begins: the kind of its source file, the size in units of 8 bytes, and the file."""
    written = (SEEDS / seed).read_bytes()
    return written[: 2 + 8 * written[1]]


def write(seed: str, source: bytes, calls: Calls) -> None:
    """Write a seed.

    Raises
    ------
    ValueError
        For one with more calls than the target makes.
    """
    if calls.count > MOST_CALLS:
        raise ValueError(f"{seed} has {calls.count} calls, more than {MOST_CALLS}")
    (SEEDS / seed).write_bytes(source + calls.made)


def main() -> None:
    """Write all seeds."""
    trace, empty = source_of("trc_to_all"), bytes(2)
    for source in READERS:
        calls = Calls(source)
        convert_all(calls, source)
        write(f"{source}_to_all", source_of(f"{source}_to_all"), calls)
    for seed, kind, begin, make in (
        ("conversions", "trc", trace, convert),
        ("files_and_heads", "btrc", source_of("files_and_heads"), ask_files),
        ("log_phases", "blf", source_of("log_phases"), read_log),
        ("no_objects", "trc", trace, ask_formats),
    ):
        calls = Calls(kind)
        make(calls)
        write(seed, begin, calls)
    for writer in WRITERS:
        calls = Calls("trc")
        use_writer(calls, writer)
        write(re.sub(r"\B(?=[A-Z])", "_", writer).lower(), trace, calls)
    for seed, families in (
        ("null_parts", ("TraceFileInfo", "BlfReader", "BtrcFileHeader", *SESSION_PARTS)),
        ("null_readers", (*READERS.values(), *FORMATS, *MESSAGES, "SessionMessage")),
        ("null_writers_1", tuple(WRITERS)[:4]),
        ("null_writers_2", tuple(WRITERS)[4:]),
    ):
        calls = Calls("trc")
        use_nothing(calls, families)
        write(seed, empty, calls)


if __name__ == "__main__":
    main()
