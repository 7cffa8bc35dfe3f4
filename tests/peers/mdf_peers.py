"""MF4 files, read by another program: mdf_peers.py LIBRARY TRACE RECORDINGS FOLDER

asammdf reads every form of file that the library writes, of a trace and of random frames, and must find the frames that
went in. The recordings' MF4 files, where that folder exists, are read by both. Ends with 77 if asammdf is not installed.
"""

from __future__ import annotations

import importlib.util
import logging
import random
import shutil
import sys
from collections.abc import Callable, Iterable
from pathlib import Path
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from frames_library import Frame, FramesLibrary

SKIPPED = 77

START_NS = 1_700_000_000_123_456_789
FD_LENGTHS = (0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64)
SEEN_TWICE = 0x123  # an identifier of frames on every bus
CHECKSUM_ERROR, NO_RESPONSE = 1, 32


class RandomFrames:
    """Frames of every kind that the files hold, on a few buses, in the order of their times."""

    def __init__(self, seed: int, fd_lengths: tuple[int, ...], payload_count: int = 0) -> None:
        """Make CAN FD frames of these lengths; with a count, their payloads come again after so many frames."""
        self._random = random.Random(seed)
        self._fd_lengths = fd_lengths
        self._payloads = [self._random.randbytes(self._random.choice(fd_lengths)) for _ in range(payload_count)]
        self._fd_count = 0
        self._time_ns = -5_000

    def take(self, count: int) -> list[Frame]:
        """Return the next frames."""
        kinds: list[Callable[[], Frame]] = [self._data, self._fd, self._remote, self._error, self._overload, self._lin]
        return [self._random.choices(kinds, [8, 4, 1, 1, 1, 2])[0]() for _ in range(count)]

    def _base(self, kind: str) -> Frame:
        from frames_library import RECEIVED, TRANSMITTED, Frame

        self._time_ns += self._random.randrange(2_000_000)
        direction = self._random.choice((RECEIVED, TRANSMITTED))
        return Frame(kind, self._time_ns, self._random.randint(1, 4), flags=direction)

    def _with_id(self, frame: Frame) -> Frame:
        from frames_library import EXTENDED

        if self._random.random() < 0.5:
            return frame._replace(id=self._random.choice((SEEN_TWICE, 0, 0x7FF)))
        return frame._replace(id=self._random.choice((0x18FEF100, 0x1FFFFFFF)), flags=frame.flags | EXTENDED)

    def _data(self) -> Frame:
        frame = self._with_id(self._base("data"))
        length = self._random.randint(0, 8)
        return frame._replace(dlc=length, data=self._random.randbytes(length))

    def _fd(self) -> Frame:
        from frames_library import BRS, ESI, FD

        frame = self._with_id(self._base("data"))
        data = self._random.randbytes(self._random.choice(self._fd_lengths))
        if self._payloads:
            data = self._payloads[self._fd_count % len(self._payloads)]
        self._fd_count += 1
        flags = frame.flags | FD | self._random.choice((0, BRS, ESI, BRS | ESI))
        return frame._replace(flags=flags, dlc=FD_LENGTHS.index(len(data)), data=data)

    def _remote(self) -> Frame:
        from frames_library import DLC_KNOWN

        frame = self._with_id(self._base("remote"))
        return frame._replace(flags=frame.flags | DLC_KNOWN, dlc=self._random.randint(0, 8))

    def _error(self) -> Frame:
        return self._base("error")

    def _overload(self) -> Frame:
        return self._base("overload")

    def _lin(self) -> Frame:
        length = self._random.randint(1, 8)
        return self._base("lin")._replace(
            id=self._random.randrange(64),
            dlc=length,
            data=self._random.randbytes(length),
            checksum=self._random.randrange(256),
            lin_errors=self._random.choice((0, 0, CHECKSUM_ERROR, NO_RESPONSE)),
        )


class PeerFile:
    """An MF4 file as asammdf reads it."""

    KINDS = {
        "CAN_DataFrame": ("data", 0),
        "CAN_RemoteFrame": ("remote", 0),
        "CAN_ErrorFrame": ("error", 0),
        "CAN_OverloadFrame": ("overload", 0),
        "LIN_Frame": ("lin", 0),
        "LIN_ChecksumError": ("lin", CHECKSUM_ERROR),
        "LIN_TransmissionError": ("lin", NO_RESPONSE),
    }

    def __init__(self, path: Path) -> None:
        from asammdf import MDF

        self.mdf: Any = MDF(path)

    def __enter__(self) -> PeerFile:
        return self

    def __exit__(self, *failure: object) -> None:
        self.mdf.close()

    def frames(self) -> list[Frame]:
        """Return the frames of all groups, group by group."""
        found: list[Frame] = []
        for index, group in enumerate(self.mdf.groups):
            if group.channel_group.cycles_nr > 0 and any(channel.name in self.KINDS for channel in group.channels):
                found += self._frames_of(index, group)
        return found

    def _frames_of(self, index: int, group: Any) -> Iterable[Frame]:
        from frames_library import BRS, DLC_KNOWN, ESI, EXTENDED, FD, RECEIVED, TRANSMITTED, Frame

        name = next(channel.name for channel in group.channels if channel.name in self.KINDS)
        kind, errors = self.KINDS[name]
        bus = self.mdf.get(f"{name}.BusChannel", group=index)
        columns = {
            member: self.mdf.get(f"{name}.{member}", group=index).samples
            for member in ("ID", "IDE", "Dir", "EDL", "BRS", "ESI", "DLC", "DataLength", "DataBytes", "Checksum")
            if any(channel.name == f"{name}.{member}" for channel in group.channels)
        }
        # Some say more of overload frames than those have.
        has_id, has_data = kind in ("data", "remote", "lin"), kind in ("data", "lin")
        for row, seconds in enumerate(bus.timestamps):
            values = {member: column[row] for member, column in columns.items()}
            flags = TRANSMITTED if values.get("Dir", 0) else RECEIVED
            if has_id:
                flags |= EXTENDED if values.get("IDE", 0) else 0
                flags |= DLC_KNOWN if kind == "remote" else 0
            if has_data and values.get("EDL", 0):
                flags |= FD | (BRS if values["BRS"] else 0) | (ESI if values["ESI"] else 0)
            length = int(values["DataLength"]) if has_data else 0
            yield Frame(
                kind,
                round(seconds * 1e9),
                int(bus.samples[row]),
                int(values["ID"]) & 0x1FFFFFFF if has_id else 0,
                flags,
                int(values.get("DLC", length)) if has_id else 0,
                bytes(values["DataBytes"][:length]) if has_data else b"",
                int(values.get("Checksum", 0)),
                errors,
            )

    def stores_fd_apart(self) -> bool:
        """Whether a group keeps payloads as signal data."""
        variable_length = 1
        return any(channel.channel_type == variable_length for group in self.mdf.groups for channel in group.channels)

    def first_bytes(self, bus: int) -> list[int]:
        """Return the first data bytes of an identifier's frames on a bus, as a signal of a data base."""
        import canmatrix

        matrix = canmatrix.CanMatrix()
        message = canmatrix.Frame("Message", arbitration_id=canmatrix.ArbitrationId(SEEN_TWICE), size=8)
        message.add_signal(canmatrix.Signal("First", start_bit=0, size=8, is_signed=False))
        matrix.add_frame(message)
        signal = self.mdf.get_bus_signal("CAN", f"CAN{bus}.Message.First", database=matrix)
        return [int(value) for value in signal.samples]


def require_same(found: Iterable[Frame], expected: Iterable[Frame], what: str) -> None:
    """Compare frames in any order: groups are read one after the other."""
    left, right = sorted(found), sorted(expected)
    for one, other in zip(left, right, strict=False):
        assert one == other, f"{what}: {one} instead of {other}"
    assert len(left) == len(right), f"{what}: {len(left)} frames, not {len(right)}"


def check_written(library: FramesLibrary, folder: Path) -> None:
    """Every form of file, of random frames."""
    compact, zipped = {"compact": 1}, {"zipped": 1}
    forms: list[tuple[str, RandomFrames, dict[str, Any], bool]] = [
        ("plain", RandomFrames(1, FD_LENGTHS), {}, False),
        ("plain 4.10", RandomFrames(2, FD_LENGTHS), {"version": 4.1}, False),
        ("zipped", RandomFrames(3, FD_LENGTHS), zipped, False),
        ("compact with short FD", RandomFrames(4, FD_LENGTHS), compact, True),
        ("compact with long FD", RandomFrames(5, (48, 64)), compact, False),
        ("compact and zipped", RandomFrames(6, FD_LENGTHS), compact | zipped, False),
        ("compact and zipped, payloads that come again", RandomFrames(7, (16, 20), 1_000), compact | zipped, True),
    ]
    path = folder / "written.mf4"
    for name, source, options, stored in forms:
        frames = source.take(20_000)
        sink = library.create(path, START_NS, **options)
        sink.write(frames)
        sink.finish()
        require_same(library.read(path), frames, f"{name}, read back")
        with PeerFile(path) as peer:
            require_same(peer.frames(), frames, name)
            assert peer.stores_fd_apart() == stored, f"{name}: the other form of payloads"
            check_buses(peer, frames, name)
        print(f"{name}: {len(frames)} frames")


def check_buses(peer: PeerFile, frames: list[Frame], name: str) -> None:
    """What asammdf knows of the buses: their identifiers, and the signals of each."""
    identifiers: dict[int, set[int]] = {}
    for frame in frames:
        if frame.kind == "data":
            identifiers.setdefault(frame.bus, set()).add(frame.id)
    found = {int(bus): set(ids) for bus, ids in peer.mdf.bus_logging_map["CAN"].items()}
    assert found == identifiers, f"{name}: identifiers {found}"
    if "compact" in name:
        return  # classic and FD frames of one identifier are in two groups, of which asammdf looks at one
    for bus in identifiers:
        expected = [
            frame.data[0] if frame.data else 0
            for frame in frames
            if frame.kind == "data" and frame.bus == bus and frame.id == SEEN_TWICE
        ]
        assert peer.first_bytes(bus) == expected, f"{name}: signals of bus {bus}"


def check_unfinished(library: FramesLibrary, folder: Path) -> None:
    """A file whose writer was stopped holds what it wrote until then."""
    for name, count, options in (("unfinished", 70_000, {}), ("unfinished and compact", 200_000, {"compact": 1})):
        frames = RandomFrames(99, (1, 2)).take(count)
        # The file has another name until it is finished.
        shutil.rmtree(folder / "open", ignore_errors=True)
        (folder / "open").mkdir()
        sink = library.create(folder / "open" / "target.mf4", START_NS, **options)
        sink.write(frames)
        path = folder / "unfinished.mf4"
        shutil.copyfile(next((folder / "open").iterdir()), path)
        sink.close()
        own = library.read(path)
        assert 0 < len(own) < len(frames), f"{name}: {len(own)} frames"
        require_same(own, frames[: len(own)], f"{name}, read back")
        with PeerFile(path) as peer:
            require_same(peer.frames(), own, name)
        print(f"{name}: {len(own)} of {len(frames)} frames")


def check_trace(library: FramesLibrary, trace: Path, folder: Path) -> None:
    """The frames of a trace."""
    held = [frame for frame in library.read(trace) if frame.kind in ("data", "remote", "error", "overload", "lin")]
    path = folder / "trace.mf4"
    sink = library.create(path, START_NS)
    sink.write(held)
    sink.finish()
    with PeerFile(path) as peer:
        require_same(peer.frames(), held, trace.name)
        start = peer.mdf.start_time.replace(tzinfo=None)
        assert start.isoformat() == "2023-11-14T22:13:20.123457", f"starts at {start}"
    print(f"{trace.name}: {len(held)} frames")


def check_recordings(library: FramesLibrary, folder: Path) -> None:
    """Files of other producers, read by both."""
    for path in sorted(folder.glob("*.mf4")):
        try:
            with PeerFile(path) as peer:
                expected = peer.frames()
        except Exception as failure:
            print(f"{path.name}: skipped, asammdf can't read it: {failure}")
            continue
        require_same(library.read(path), expected, path.name)
        print(f"{path.name}: {len(expected)} frames")


def main() -> int:
    """Run all comparisons."""
    if importlib.util.find_spec("asammdf") is None:
        print("asammdf is not installed: skipped")
        return SKIPPED
    from frames_library import FramesLibrary

    # It tells of every file that is not finished.
    logging.getLogger("asammdf").setLevel(logging.CRITICAL)
    library = FramesLibrary(sys.argv[1])
    trace, recordings, folder = Path(sys.argv[2]), Path(sys.argv[3]), Path(sys.argv[4])
    folder.mkdir(parents=True, exist_ok=True)
    check_trace(library, trace, folder)
    check_written(library, folder)
    check_unfinished(library, folder)
    if (recordings / "mf4").is_dir():
        check_recordings(library, recordings / "mf4")
    else:
        print("no recordings: skipped")
    return 0


if __name__ == "__main__":
    sys.exit(main())
