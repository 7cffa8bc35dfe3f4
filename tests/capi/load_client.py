"""What the library keeps from the moment at which it was loaded: where it lies, by whatever path it was named, and the
version of the converter beside it. load_client.py LIBRARY"""
import ctypes
import os
import shutil
import sys
import tempfile

BLF = 128


def main():
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(sys.argv[1], os.path.join(folder, "libxlatr.so"))
        converter = os.path.join(folder, "BLF2CSV.exe")
        with open(converter, "w", encoding="ascii") as script:
            script.write("#!/bin/sh\necho 4070100\n")
        os.chmod(converter, 0o755)

        os.chdir(folder)
        library = ctypes.CDLL("./libxlatr.so")
        os.chdir("/")
        asked_now = library.BlfInfo_GetCurrentVersion
        kept = library.BaseTraceInfo_GetTraceCurrentVersion
        asked_now.restype = ctypes.c_double
        kept.restype = ctypes.c_double

        expected = 4 + 7 / 100 + 1 / 10000
        assert asked_now() == expected, asked_now()
        os.remove(converter)
        assert asked_now() == 0.0, asked_now()
        assert kept(BLF) == expected, kept(BLF)


main()
