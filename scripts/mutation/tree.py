"""A copy of the tree whose sources are rewritten, and its build."""

from __future__ import annotations

import hashlib
import pickle
import re
import shutil
import subprocess
from collections import defaultdict
from collections.abc import Sequence
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

from mutation.groups import Group
from mutation.rewriting import Mutant, number_mutants, rewrite
from mutation.sites import Site, find_sites

HERE = Path(__file__).resolve().parent
FLAGS = ("-std=c++20", "-Isrc", "-Iinclude", "-DXLATR_HAS_LIBDEFLATE")
# A function whose end a mutant reaches without a return goes on somewhere, instead of never being that mutant.
COMPILED_WITH = "-O1 -g0 -w -fno-strict-return -std=c++20 -Wno-c++11-narrowing"


class BuildFails(Exception):
    """The copy can't be configured, compiled or linked."""


def _write(path: Path, text: bytes) -> None:
    """Write what is new, so that only that is built again."""
    if not path.is_file() or path.read_bytes() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)


def _call(command: Sequence[str | Path]) -> None:
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        raise BuildFails(f"{' '.join(map(str, command))}:\n{done.stdout[-6000:]}")


class MutatedTree:
    """The copy in a folder. The numbers of mutants are those of the sources as they are now."""

    def __init__(self, root: Path, folder: Path, groups: Sequence[Group]) -> None:
        self._root = root
        self._copy = folder / "tree"
        self._build = folder / "build"
        self._folder = folder
        self._paths = {path: group for group in groups for path in group.paths(root)}
        self._texts = {path: (root / path).read_bytes() for path in self._paths}
        self._sites: list[Site] = []
        self._mutants: list[Mutant] = []
        # Lines that would not compile if they were rewritten. Their mutants keep their numbers, so that a line that
        # joins them changes one file.
        self._unmutated: set[tuple[str, int]] = set()
        self.programs = self._build / "bin"

    @property
    def count(self) -> int:
        return len(self._mutants)

    def mutants_of(self, group: Group) -> list[Mutant]:
        return [
            mutant
            for mutant in self._mutants
            if self._paths[mutant.file] == group and (mutant.file, mutant.line) not in self._unmutated
        ]

    def make(self) -> None:
        """Copy the tree, with the sources rewritten."""
        self._sites = self._found_sites()
        listed = subprocess.run(
            ["git", "-c", "safe.directory=*", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=self._root,
            capture_output=True,
            text=True,
            check=True,
        )
        for path in filter(None, listed.stdout.split("\0")):
            source = self._root / path
            if path == "tests/support/main.cpp":
                _write(self._copy / path, _listening(source.read_bytes()))
            elif path not in self._texts and source.is_file():
                _write(self._copy / path, source.read_bytes())
                shutil.copymode(source, self._copy / path)
        for name in ("mutants.hpp", "listener.hpp", "runtime.cpp"):
            _write(self._folder / name, (HERE / name).read_bytes())

    def build(self, programs: Sequence[str], jobs: int) -> None:
        """Build programs. A place that does not compile when it is rewritten stays as it was."""
        self._rewrite()
        runtime = self._folder / "runtime.o"
        _call(["clang++", "-std=c++20", "-O2", "-fPIC", "-c", self._folder / "runtime.cpp", "-o", runtime])
        if not (self._build / "build.ninja").is_file():
            _call(
                ["cmake", "-S", self._copy, "-B", self._build, "-G", "Ninja"]
                + ["-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_C_COMPILER=clang", "-DCMAKE_BUILD_TYPE="]
                + [f"-DCMAKE_CXX_FLAGS={COMPILED_WITH} -include {self._folder / 'mutants.hpp'}"]
                + [f"-DCMAKE_CXX_STANDARD_LIBRARIES={runtime}", "-DXLATR_UNITY=TESTS"]
                + ["-DXLATR_BUILD_BENCH=OFF", "-DXLATR_BUILD_FUZZ=OFF", "-DXLATR_BUILD_TOOLS=OFF"]
            )
        command = ["cmake", "--build", str(self._build), f"-j{jobs}", "--target", *programs, "--", "-k", "0"]
        while True:
            done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
            if done.returncode == 0:
                return
            if not self._drop(done.stdout):
                raise BuildFails(done.stdout[-6000:])
            self._rewrite()

    def _found_sites(self) -> list[Site]:
        """The sites of all files, from the last run if no source of the library has changed."""
        if self._kept("unmutated").is_file():
            self._unmutated = pickle.loads(self._kept("unmutated").read_bytes())
        if self._kept("sites").is_file():
            sites: list[Site] = pickle.loads(self._kept("sites").read_bytes())
            return sites
        with ProcessPoolExecutor(2) as pool:
            jobs = [pool.submit(find_sites, self._root, [one], FLAGS, list(self._texts)) for one in self._sources()]
            unique = {(site.file, site.begin, site.end, site.changes): site for job in jobs for site in job.result()}
        sites = [unique[key] for key in sorted(unique)]
        _write(self._kept("sites"), pickle.dumps(sites))
        return sites

    def _kept(self, what: str) -> Path:
        """A file with what is known of the sources as they are now."""
        state = hashlib.sha256((HERE / "sites.py").read_bytes())
        for path in sorted(self._root.glob("src/**/*.[ch]pp")):
            state.update(path.read_bytes())
        return self._folder / f"{what}-{state.hexdigest()[:16]}"

    def _sources(self) -> list[str]:
        """The sources whose trees have all files in them: a header without a source is in those of others."""
        return [path for path in self._paths if path.endswith(".cpp")]

    def _rewrite(self) -> None:
        self._mutants, first = number_mutants(self._sites, self._texts)
        rewritten: dict[str, list[Site]] = defaultdict(list)
        for site in self._sites:
            if (site.file, self._mutants[first[site] - 1].line) not in self._unmutated:
                rewritten[site.file].append(site)
        for path, text in self._texts.items():
            _write(self._copy / path, rewrite(text, rewritten[path], first))

    def _drop(self, printed: str) -> bool:
        """Leave the lines with errors as they were from now on. Returns whether there are new ones."""
        error = rf"^{re.escape(str(self._copy))}/(\S+?):(\d+):\d+: (?:fatal )?error"
        lines = {(file, int(line)) for file, line in re.findall(error, printed, re.MULTILINE) if file in self._texts}
        new = lines - self._unmutated
        for file, line in sorted(new):
            print(f"not mutated, since it would not compile: {file}:{line}", flush=True)
        self._unmutated |= lines
        self._kept("unmutated").write_bytes(pickle.dumps(self._unmutated))
        return bool(new)


def _listening(main: bytes) -> bytes:
    """The tests' main function, which also notes what each test reaches."""
    return b'#include "../../../mutants.hpp"\n#include "../../../listener.hpp"\n' + main.replace(
        b"return RUN_ALL_TESTS();", b"mutants::listen();\n  return RUN_ALL_TESTS();"
    )
