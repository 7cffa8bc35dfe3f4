"""What scripts/mutation makes of a source, and how it acts: mutation_test.py SCRIPTS_DIRECTORY [UNITTEST ARGUMENTS...]

Needs Clang, of any version that reads C++20; without it, ctest is told that all of this is skipped.
"""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(sys.argv.pop(1))
sys.path.insert(0, str(SCRIPTS))

from mutation.rewriting import Mutant, number_mutants, rewrite
from mutation.sites import SyntaxError, find_sites

SKIPPED = 77  # as tests/tools/CMakeLists.txt says
FLAGS = ("-std=c++20",)
# The program's code is the sum of the payload's first bytes, unless there are more than four.
SOURCE = """\
#include <cstdio>

namespace xlatr {

constexpr int kMost = 4;

#define XLATR_TWICE(value) ((value) + (value))

template <int Count>
constexpr int most() {
  static_assert(Count > 3);
  return Count;
}

int sum(const int* bytes, int count) {
  int result = 0;
  if (count > most<kMost + 0>() || bytes == nullptr) {
    return XLATR_TWICE(50);
  }
  for (int i = 0; i < count; ++i) {
    result += bytes[i];
  }
  return result;
}

}  // namespace xlatr

int main(int count, char**) {
  constexpr int kBytes[] = {1, 2, 4, 8, 16, 32};
  return xlatr::sum(kBytes, count);
}
"""


class Rewriting(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)

    def mutate(self, source: str) -> tuple[list[Mutant], str]:
        (self.root / "source.cpp").write_text(source)
        sites = find_sites(self.root, ["source.cpp"], FLAGS, ["source.cpp"])
        text = source.encode()
        mutants, first = number_mutants(sites, {"source.cpp": text})
        return mutants, rewrite(text, sites, first).decode()

    def compile(self, text: str) -> Path:
        (self.root / "source.cpp").write_text(text)
        program = self.root / "program"
        runtime = SCRIPTS / "mutation"
        subprocess.run(
            ["clang++", *FLAGS, "-w", "-include", runtime / "mutants.hpp"]
            + [self.root / "source.cpp", runtime / "runtime.cpp", "-o", program],
            check=True,
        )
        return program

    def changes(self, declarations: str) -> list[str]:
        mutants, _ = self.mutate(f"namespace xlatr {{\n{declarations}\n}}\n")
        return [mutant.change for mutant in mutants]

    def test_everyOperatorHasItsMutants(self) -> None:
        cases = {
            "bool f(int a) { return a < a; }": ["a < a: < to <=", "a < a: < to >="],
            "bool f(bool a) { return !a; }": ["!a: ! dropped"],
            "bool f(bool a) { return a; }": ["a: negated"],
            "bool f(bool a) { return a && a; }": ["a: negated", "a && a: && to ||", "a: negated"],
            "int f(int a) { return a++; }": ["a++: ++ to --"],
            "int f(int a) { return -a; }": ["-a: - dropped"],
            "int f() { return 1; }": ["1: 1 to 0"],
            "char f() { return 'x'; }": ["'x': 'x' to the next"],
            "bool f() { return true; }": ["true: true to false"],
            "void f(int& a) { a = 2; }": ["a = 2: deleted", "2: 2 + 1"],
            "void g(); void f() { g(); }": ["g(): deleted"],
            "void f(int& a) { a |= a; }": ["a |= a: deleted", "a |= a: |= to &="],
        }
        for source, expected in cases.items():
            with self.subTest(source):
                self.assertEqual(self.changes(source), expected)

    def test_constantExpressionsHaveNone(self) -> None:
        for source in (
            "constexpr int kA = 1 + 2;",
            "static_assert(1 < 2);",
            "enum A { kB = 3 };",
            "template <int Count = 3> struct S { char bytes[Count + 1]; };",
            "struct S { int bits : 3; };",
            "unsigned long f() { return sizeof(int[3]); }",
            "#define XLATR_ONE 1\nint f() { return XLATR_ONE; }",
            "int* f() { return 0; }",
            "void f(int a) { switch (a) { case 1: break; } }",
            "void f() { if constexpr (1 < 2) { } }",
        ):
            with self.subTest(source):
                self.assertEqual(self.changes(source), [])

    def test_aSourceThatDoesNotCompileIsRefused(self) -> None:
        with self.assertRaises(SyntaxError):
            self.changes("int f( {")

    def test_keysDifferOnEqualLines(self) -> None:
        mutants, _ = self.mutate("namespace xlatr {\nint f(int a) {\n  ++a;\n  ++a;\n  return a;\n}\n}\n")
        self.assertEqual(len({mutant.key for mutant in mutants}), 2)

    def test_noLineMoves(self) -> None:
        _, text = self.mutate(SOURCE)
        self.assertEqual(text.count("\n"), SOURCE.count("\n"))

    def test_aProgramActsAsTheChosenMutant(self) -> None:
        mutants, text = self.mutate(SOURCE)
        program = self.compile(text)
        codes = {"": 7}  # bytes 1, 2 and 4
        for mutant in mutants:
            codes[mutant.change] = self._code(program, str(mutant.number))
        self.assertEqual(self._code(program, ""), 7)
        self.assertEqual(
            codes,
            {
                "": 7,
                "0: 0 + 1": codes["0: 0 + 1"],  # two of them
                "count > most<kMost + 0>() || bytes == nullptr: || to &&": 7,
                "count > most<kMost + 0>(): > to >=": 7,
                "count > most<kMost + 0>(): > to <=": 100,
                "bytes == nullptr: == to !=": 100,
                "i < count: < to <=": 15,
                "i < count: < to >=": 0,
                "++i: ++ to --": codes["++i: ++ to --"],  # reads what is before the bytes
                "result += bytes[i]: deleted": 0,
                "result += bytes[i]: += to -=": 249,
            },
        )

    def test_whatRunsIsNoted(self) -> None:
        mutants, text = self.mutate(SOURCE.replace("int i = 0; i < count", "int i = 0; i < count - 3"))
        program = self.compile(text)
        notes = self.root / "notes"
        notes.write_bytes(bytes(len(mutants) + 1))
        self._code(program, "", XLATR_MUTANTS_REACHED=str(notes))
        reached = notes.read_bytes()
        unreached = [mutant.change for mutant in mutants if not reached[mutant.number]]
        self.assertEqual(unreached, ["++i: ++ to --", "result += bytes[i]: += to -=", "result += bytes[i]: deleted"])

    @staticmethod
    def _code(program: Path, mutant: str, **environment: str) -> int:
        done = subprocess.run(
            [program, "two", "three"],
            env=os.environ | {"XLATR_MUTANT": mutant} | environment,
            timeout=60,
            check=False,
        )
        return done.returncode


if __name__ == "__main__":
    if shutil.which("clang++") is None:
        print("skipped: there is no clang++")
        sys.exit(SKIPPED)
    unittest.main()
