"""Rewrites sources so that each site acts as the original or as the mutant that is chosen for the process."""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Sequence
from dataclasses import dataclass

from mutation.sites import Site


@dataclass(frozen=True)
class Mutant:
    """One change at one site. Its key stays the same while the line and what is before it on the line do."""

    number: int
    key: str
    file: str
    line: int
    text: str  # of the line
    change: str


def number_mutants(sites: Sequence[Site], texts: dict[str, bytes]) -> tuple[list[Mutant], dict[Site, int]]:
    """Number the mutants of all sites from 1 on. Also returns each site's first number."""
    mutants: list[Mutant] = []
    first: dict[Site, int] = {}
    used: dict[str, int] = defaultdict(int)
    for site in sites:
        first[site] = len(mutants) + 1
        text = texts[site.file]
        line = text.count(b"\n", 0, site.begin)
        start = text.rfind(b"\n", 0, site.begin) + 1
        shown = text.split(b"\n")[line].decode().strip()
        part = " ".join(text[site.begin : site.end].decode().split())
        column = site.begin - start
        for change in site.changes:
            key = f"{site.file} | {shown} | {part} | {column} | {change}"
            used[key] += 1
            key += f" | {used[key]}"
            mutants.append(Mutant(len(mutants) + 1, key, site.file, line + 1, shown, f"{part}: {change}"))
    return mutants, first


def rewrite(text: bytes, sites: Sequence[Site], first: dict[Site, int]) -> bytes:
    """Return the text with all sites rewritten. No line moves.

    Sites lie within each other or apart, so what a longer one writes before its place comes before what a shorter one
    does there, and the other way around after it.
    """
    # The place, what comes first there, what is replaced, what is written.
    edits: list[tuple[int, tuple[int, ...], int, str]] = []
    for order, site in enumerate(sites):
        number = str(first[site])
        # What replaces an operator must be next to its operands.
        nearness = 0 if site.operator is None else 1
        for wrap in site.wraps:
            size = wrap.end - wrap.begin
            edits.append((wrap.begin, (1, -size, nearness, order), 0, wrap.before.replace("{}", number)))
            edits.append((wrap.end, (0, size, -nearness, -order), 0, wrap.after))
        if site.operator is not None:
            begin, end = site.operator
            edits.append((begin, (2,), end - begin, site.instead))
    pieces: list[bytes] = []
    at = 0
    for place, _, length, written in sorted(edits):
        pieces += [text[at:place], written.encode()]
        at = place + length
    return b"".join([*pieces, text[at:]])
