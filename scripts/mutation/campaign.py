"""Runs the tests that reach a mutant until one of them notices it."""

from __future__ import annotations

import json
import os
import re
import resource
import signal
import subprocess
import tempfile
import threading
from collections import Counter, defaultdict
from collections.abc import Iterator, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

from mutation.rewriting import Mutant

MEMORY = 8 << 30  # bytes of address space: a mutant that takes more is noticed
FILE_SIZE = 16 << 30  # bytes: likewise, and more than the file with a hole that tests make
FIRST_TESTS = 12  # that are asked in a run of their own, since most mutants end there
SLOWER = 8  # times the usual time are a hang, after
GRACE = 4  # seconds
LONGEST_TEST = 2000  # milliseconds: what takes longer tries many inputs, and is not asked
RANDOM_FRAMES = "200"  # of each kind, in the tests that take what XLATR_TEST_FRAMES says
LONGEST_FILTER = 100_000  # characters: the system takes 131,072 in an argument

KILLED, HUNG, SURVIVED, UNREACHED = "killed", "hung", "survived", "unreached"


@dataclass(frozen=True)
class Test:
    program: str
    name: str
    milliseconds: int


@dataclass(frozen=True)
class Outcome:
    key: str
    outcome: str
    by: str  # the test that noticed it

    @property
    def noticed(self) -> bool:
        return self.outcome in (KILLED, HUNG)


class TestsFail(Exception):
    """Tests that fail without any mutant: nothing can be learned from them."""


def _limit() -> None:
    os.setsid()
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def _run(command: Sequence[str], environment: dict[str, str], seconds: float | None) -> tuple[int | None, str]:
    """Run a program in a folder of its own. Returns its code, or None if it had to be ended, and what it printed."""
    with tempfile.TemporaryDirectory(prefix="mutant-") as folder, tempfile.TemporaryFile() as printed:
        process = subprocess.Popen(
            command,
            cwd=folder,
            env=os.environ | {"TZ": "UTC", "TMPDIR": folder, "XLATR_TEST_FRAMES": RANDOM_FRAMES} | environment,
            stdin=subprocess.DEVNULL,
            stdout=printed,
            stderr=subprocess.STDOUT,
            preexec_fn=_limit,
        )
        code: int | None
        try:
            code = process.wait(seconds)
        except subprocess.TimeoutExpired:
            code = None
        try:
            os.killpg(process.pid, signal.SIGKILL)  # and what it started
        except ProcessLookupError:
            pass
        process.wait()
        printed.seek(0)
        return code, printed.read(4 << 20).decode(errors="replace")


class Reach:
    """Which tests reach a mutant."""

    def __init__(self, folder: Path, programs: Sequence[str], count: int) -> None:
        self._tests: dict[int, list[Test]] = defaultdict(list)
        self.times: dict[str, int] = {}
        for program in programs:
            self._record(folder, program, count)

    def of(self, mutant: Mutant) -> list[Test]:
        return self._tests.get(mutant.number, [])

    def _record(self, folder: Path, program: str, count: int) -> None:
        with tempfile.TemporaryDirectory() as notes:
            reached, lines = Path(notes, "reached"), Path(notes, "tests")
            reached.write_bytes(bytes(count + 1))
            lines.touch()
            environment = {"XLATR_MUTANTS_REACHED": str(reached), "XLATR_MUTANTS_TESTS": str(lines)}
            code, printed = _run([str(folder / program), "--gtest_brief=1"], environment, None)
            if code != 0:
                raise TestsFail(f"{program} fails without a mutant:\n{printed[-3000:]}")
            always: set[int] = set()
            found: list[tuple[Test, list[int]]] = []
            for line in lines.read_text().splitlines():
                name, milliseconds, numbers = line.split("\t")
                reaches = [int(number) for number in numbers.split()]
                if name:
                    found.append((Test(program, name, int(milliseconds)), reaches))
                else:
                    always.update(reaches)
        self.times[program] = sum(test.milliseconds for test, _ in found)
        for test, reaches in found:
            if test.milliseconds > LONGEST_TEST:
                continue
            for number in always.union(reaches):
                self._tests[number].append(test)


class Campaign:
    """Decides mutants one after the other, on two processors at most, and keeps the outcomes in a file."""

    def __init__(self, folder: Path, reach: Reach, results: Path) -> None:
        self._folder = folder
        self._reach = reach
        self._results = results
        self._lock = threading.Lock()
        self._killers: dict[str, Counter[Test]] = defaultdict(Counter)  # by file: who noticed the mutants before

    def decide(self, mutants: Sequence[Mutant], jobs: int) -> Iterator[tuple[Mutant, Outcome]]:
        with ThreadPoolExecutor(jobs) as pool:
            for mutant, outcome in zip(mutants, pool.map(self._decide, mutants)):
                yield mutant, outcome

    def _decide(self, mutant: Mutant) -> Outcome:
        tests = self._reach.of(mutant)
        outcome = Outcome(mutant.key, SURVIVED if tests else UNREACHED, "")
        for batch in self._batches(mutant, tests):
            outcome = self._ask(mutant, batch)
            if outcome.noticed:
                break
        with self._lock, self._results.open("a") as results:
            results.write(json.dumps({"key": outcome.key, "outcome": outcome.outcome, "by": outcome.by}) + "\n")
        return outcome

    def _batches(self, mutant: Mutant, tests: list[Test]) -> Iterator[list[Test]]:
        """The tests in runs, each of one program: first those that are quick and noticed others of the file."""
        with self._lock:
            killers = self._killers[mutant.file].copy()
        first = sorted(tests, key=lambda test: (-killers[test], test.milliseconds))[:FIRST_TESTS]
        rest = [test for test in tests if test not in set(first)]
        for some in (first, rest):
            programs = sorted({test.program for test in some}, key=lambda program: self._reach.times[program])
            for program in programs:
                yield [test for test in some if test.program == program]

    def _ask(self, mutant: Mutant, tests: list[Test]) -> Outcome:
        seconds = GRACE + SLOWER * sum(test.milliseconds for test in tests) / 1000
        names = ":".join(test.name for test in tests)
        chosen = f"--gtest_filter={names}" if len(names) < LONGEST_FILTER else "--gtest_filter=*"
        command = [str(self._folder / tests[0].program), chosen, "--gtest_fail_fast", "--gtest_brief=1"]
        code, printed = _run(command, {"XLATR_MUTANT": str(mutant.number)}, seconds)
        if code is None:
            return Outcome(mutant.key, HUNG, tests[0].program)
        if code == 0:
            return Outcome(mutant.key, SURVIVED, "")
        failed = re.search(r"\[  FAILED  \] ([^\s,]+)", printed)
        name = failed.group(1) if failed else ""
        with self._lock:
            self._killers[mutant.file].update(test for test in tests if test.name == name)
        return Outcome(mutant.key, KILLED, f"{tests[0].program} {name}".strip())


def read_outcomes(results: Path) -> dict[str, Outcome]:
    """Return the last outcome of each mutant that an earlier run decided."""
    if not results.is_file():
        return {}
    read = (json.loads(line) for line in results.read_text().splitlines())
    return {entry["key"]: Outcome(entry["key"], entry["outcome"], entry["by"]) for entry in read}
