"""Drives the library from another language, by its names alone: each format is read message by message and written again,
and the file equals that of a whole conversion. ctypes_client.py LIBRARY SAMPLE.trc"""
import ctypes
import os
import sys
import tempfile

# source family, its message family, target family, target extension, target format flag, target version
CONVERSIONS = [
    ("Trc", "MessageCan", "Asc", ".asc", 4, 8.1),
    ("Asc", "MessageAsc", "Trc", ".trc", 1, 2.1),
    ("Trc", "MessageCan", "Csv", ".csv", 16, 1.0),
    ("Mdf", "MdfCanMessage", "Trc", ".trc", 1, 2.1),
]
EXTENSIONS = {"Trc": (".trc", 1, 2.1), "Asc": (".asc", 4, 8.1), "Mdf": (".mf4", 64, 4.2)}


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
        self.library = ctypes.CDLL(path)

    def call(self, name, *arguments, result=None):
        function = getattr(self.library, name)
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
            elif message_family in ("MessageCan", "MessageAsc"):
                text = self.text(f"{message_family}_getParsingText", message)
                self.call(f"{target_family}Writer_WriteComment", writer, text)
            self.call(f"{message_family}_Destruct", message)
        self.call(f"{target_family}Writer_Destruct", writer)
        self.call(f"{family}Reader_Destruct", reader)
        self.call(f"{family}Info_Destruct", info)
        return count


def read(path):
    with open(path, "rb") as file:
        return file.read()


def main():
    library = Library(sys.argv[1])
    sample = sys.argv[2]
    with tempfile.TemporaryDirectory() as folder:
        for conversion in CONVERSIONS:
            family, _, target_family, extension, target_format, version = conversion
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


main()
