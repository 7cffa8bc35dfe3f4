"""Drives the library from another language, by its names alone: each format is read message by message and written again,
and the file equals that of a whole conversion. ctypes_client.py LIBRARY SAMPLE.trc TRACEGEN"""
import ctypes
import os
import subprocess
import sys
import tempfile
import time

# source family, its message family, target family, target extension, target format flag, target version
CONVERSIONS = [
    ("Trc", "MessageCan", "Asc", ".asc", 4, 8.1),
    ("Asc", "MessageAsc", "Trc", ".trc", 1, 2.1),
    ("Trc", "MessageCan", "Csv", ".csv", 16, 1.0),
    ("Mdf", "MdfCanMessage", "Trc", ".trc", 1, 2.1),
    ("Btrc", "MessageBinaryFD", "Trc", ".trc", 1, 2.1),
    ("Trc", "MessageCan", "Btrc", ".btrc", 32, 1.0),
    ("Korl", "MessageLin", "Asc", ".asc", 4, 8.1),
]
EXTENSIONS = {"Trc": (".trc", 1, 2.1), "Asc": (".asc", 4, 8.1), "Mdf": (".mf4", 64, 4.2), "Btrc": (".btrc", 32, 1.0)}

LIN_TRACE = b";$FILEVERSION=1.2\r\n" + b"".join(
    b"%d) %d Pub 11 2 01 02 E9 EH\r\n" % (number, number * 1000) for number in range(1, 151)
)


class OptionValue(ctypes.Union):
    _fields_ = [("version", ctypes.c_double), ("bytes", ctypes.c_uint8 * 8)]


class Option(ctypes.Structure):
    _fields_ = [("tag", ctypes.c_int32), ("value", OptionValue)]


class Options(ctypes.Structure):
    _fields_ = [
        ("reserved", ctypes.c_int32),
        ("target_format", ctypes.c_int32),
        ("asynchronous", ctypes.c_uint8),
        ("progress", ctypes.c_void_p),
        ("option_count", ctypes.c_uint32),
        ("options", ctypes.POINTER(Option)),
    ]


class Library:
    """Every function by its name; objects and texts are plain pointers."""

    def __init__(self, path):
        self.loaded = ctypes.CDLL(path)

    def call(self, name, *arguments, result=None):
        function = getattr(self.loaded, name)
        function.restype = result
        return function(*arguments)

    def make(self, name, *arguments):
        made = self.call(name, *arguments, result=ctypes.c_void_p)
        assert made, name
        return ctypes.c_void_p(made)

    def text(self, name, owner):
        size = self.call(name + "Size", owner, result=ctypes.c_uint32)
        buffer = ctypes.create_string_buffer(size + 1)
        self.call(name, owner, buffer, ctypes.c_uint32(size + 1))
        return buffer.value

    def convert(self, source, target, target_format, version):
        option = Option(1, OptionValue(version=version))
        options = Options(0, target_format, 0, None, 1, ctypes.pointer(option))
        status = self.call("xlatr_convert", source.encode(), target.encode(), ctypes.byref(options), None,
                           result=ctypes.c_int32)
        assert status == 0, f"{source} to {target}: status {status}"

    def convert_by_objects(self, conversion, source, target):
        family, message_family, target_family, _, _, version = conversion
        file = self.make("TraceFileInfo_Construct", source.encode())
        info = self.make(f"{family}Info_Construct", file)
        self.call("TraceFileInfo_Destruct", file)
        reader = self.make(f"{family}Reader_Construct", info)
        writer = self.make(f"{target_family}Writer_Construct", target.encode(), ctypes.c_bool(True),
                           ctypes.c_double(version))
        self.call(f"{target_family}Writer_setActive", writer, ctypes.c_bool(True))
        self.call(f"{target_family}Writer_WriteHeader", writer, info)
        assert self.call(f"{family}Reader_setActive", reader, ctypes.c_bool(True), result=ctypes.c_bool)
        message = ctypes.c_void_p()
        count = 0
        while self.call(f"{family}Reader_ReadNextMessage", reader, ctypes.byref(message), result=ctypes.c_bool):
            if self.call(f"{message_family}_getValid", message, result=ctypes.c_bool):
                self.call(f"{target_family}Writer_WriteMessage", writer, message)
                count += 1
            elif message_family in ("MessageCan", "MessageAsc", "MessageLin"):
                text = self.text(f"{message_family}_getParsingText", message)
                self.call(f"{target_family}Writer_WriteComment", writer, text)
            self.call(f"{message_family}_Destruct", message)
        self.call(f"{target_family}Writer_Destruct", writer)
        self.call(f"{family}Reader_Destruct", reader)
        self.call(f"{family}Info_Destruct", info)
        return count

    def convert_session_by_objects(self, source, target, version):
        """The first session of a BTR file as a TRC trace."""
        info = self.make("BtrInfo_Construct", source.encode())
        session = self.make("BtrInfo_GetSession", info, ctypes.c_uint32(0))
        description = self.make("BtrSessionEntry_getDescription", session)
        date = self.make("SessionDescriptor_getDateAndTime", description)
        start = self.call("SessionDateTime_toDouble", date, result=ctypes.c_double)
        reader = self.make("BtrSessionReader_Construct", session, ctypes.c_bool(True))
        writer = self.make("TrcWriter_Construct", target.encode(), ctypes.c_bool(True), ctypes.c_double(version))
        self.call("TrcWriter_setActive", writer, ctypes.c_bool(True))
        self.call("TrcWriter_WriteHeader_2", writer, info, ctypes.c_double(start))
        messages = ctypes.POINTER(ctypes.c_void_p)()
        count, size = ctypes.c_uint32(), ctypes.c_uint32()
        total = 0
        while self.call("BtrSessionReader_ReadNextSector", reader, ctypes.byref(messages), ctypes.byref(count),
                        ctypes.byref(size), result=ctypes.c_bool):
            for index in range(count.value):
                message = ctypes.c_void_p(messages[index])
                self.call("TrcWriter_WriteMessage", writer, message)
                self.call("SessionMessage_Destruct", message)
            self.call("BtrSessionReader_DeleteSectors", messages)
            total += count.value
        self.call("TrcWriter_Destruct", writer)
        self.call("BtrSessionReader_Destruct", reader)
        self.call("BtrSessionEntry_Destruct", session)
        self.call("BtrInfo_Destruct", info)
        return total

    def convert_log_by_objects(self, source, folder, target):
        """A BLF log as a table, through its converter and its three phases."""
        file = self.make("TraceFileInfo_Construct", source.encode())
        info = self.make("BlfInfo_Construct", file)
        self.call("TraceFileInfo_Destruct", file)
        reader = self.make("BlfReader_Construct", info, folder.encode())
        assert self.call("BlfReader_setActive", reader, ctypes.c_bool(True), result=ctypes.c_bool)
        exit_code = ctypes.c_int32()
        while not self.call("BlfReader_InitializePhaseTwoWaitBlfToCsv", reader, ctypes.byref(exit_code),
                            result=ctypes.c_bool):
            time.sleep(0)
        self.call("BlfReader_InitializePhaseThreePrepareCsvReader", reader, exit_code)
        writer = self.make("CsvWriter_Construct", target.encode(), ctypes.c_bool(True), ctypes.c_double(1.0))
        self.call("CsvWriter_setActive", writer, ctypes.c_bool(True))
        start = self.call("BlfReader_getCSVInfoStartTime", reader, result=ctypes.c_double)
        self.call("CsvWriter_WriteHeader_2", writer, info, ctypes.c_double(start))
        message = ctypes.c_void_p()
        count = 0
        while self.call("BlfReader_ReadNextMessage", reader, ctypes.byref(message), result=ctypes.c_bool):
            if message and self.call("BlfMessage_getValid", message, result=ctypes.c_bool):
                self.call("CsvWriter_WriteMessage", writer, message)
                count += 1
            self.call("BlfMessage_Destruct", message)
        self.call("CsvWriter_Destruct", writer)
        self.call("BlfReader_Destruct", reader)
        self.call("BlfInfo_Destruct", info)
        return count


def read(path):
    with open(path, "rb") as file:
        return file.read()


def check_plain_formats(library, sample, folder):
    for conversion in CONVERSIONS:
        family, _, target_family, extension, target_format, version = conversion
        if family == "Korl":  # nothing converts into a LIN trace
            source = os.path.join(folder, "source.ltrc")
            with open(source, "wb") as file:
                file.write(LIN_TRACE)
        else:
            source_extension, source_format, source_version = EXTENSIONS[family]
            source = os.path.join(folder, "source" + source_extension)
            library.convert(sample, source, source_format, source_version)
        target = os.path.join(folder, "target" + extension)
        library.convert(source, target, target_format, version)
        expected = read(target)
        os.remove(target)
        count = library.convert_by_objects(conversion, source, target)
        assert count > 100, f"{family} to {target_family}: {count} messages"
        assert read(target) == expected, f"{family} to {target_family}: the files differ"
        print(f"{family} to {target_family}: {count} messages")


def check_sessions(library, sample, folder):
    source = os.path.join(folder, "source.btr")
    library.convert(sample, source, 2, 3.0)
    library.convert(source, os.path.join(folder, "session.trc"), 1, 2.1)
    target = folder + "//session_S1.trc"  # as the conversion names it, and as the header says it
    expected = read(target)
    count = library.convert_session_by_objects(source, target, 2.1)
    assert count > 100, f"session: {count} messages"
    assert read(target) == expected, "session: the files differ"
    print(f"Btr to Trc: {count} messages")


def check_logs(library, tracegen, folder):
    source = os.path.join(folder, "source.blf")
    subprocess.run([tracegen, "--form", "blf", "--frames", "500", "--plain", source], check=True)
    target = os.path.join(folder, "by_objects.csv")
    count = library.convert_log_by_objects(source, folder, target)
    assert count == 500, f"log: {count} messages"
    rows = [line for line in read(target).splitlines() if line[:1].isdigit()]
    assert len(rows) == 500, f"log: {len(rows)} rows"
    assert not [name for name in os.listdir(folder) if name.startswith("BLF")], "log: the temporary table was left"
    print(f"Blf to Csv: {count} messages")


def main():
    library = Library(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        check_plain_formats(library, sys.argv[2], folder)
        check_sessions(library, sys.argv[2], folder)
        check_logs(library, sys.argv[3], folder)


main()
