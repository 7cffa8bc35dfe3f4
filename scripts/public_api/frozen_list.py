"""The frozen ABI: the functions that callers may have linked, as a committed list of prototypes.

The list has a comment at the top and one prototype per line in normal form, sorted by name. A line is added on purpose
and never changed or removed.
"""

from __future__ import annotations

from collections.abc import Mapping, Sequence

from public_api.prototypes import Prototype

_HEAD = """\
# Every exported function, one per line, sorted by name: frozen as callers link it, odd spellings included. A line is
# added by scripts/freeze-exports once a new function is final; none is changed or removed.
"""


def parse(text: str) -> dict[str, str]:
    """Return the frozen prototypes by the name of the function.

    Raises
    ------
    ValueError
        For a line that is no prototype, a second one of a name, and one out of order.
    """
    frozen: dict[str, str] = {}
    for number, line in enumerate(text.splitlines(), start=1):
        if not line or line.startswith("#"):
            continue
        declared, parenthesis, _ = line.partition("(")
        if not parenthesis or not line.endswith(")") or " " not in declared:
            raise ValueError(f"line {number} is no prototype: {line}")
        name = declared.rpartition(" ")[2]
        if frozen and name <= max(frozen):
            raise ValueError(f"line {number} is a second one for {name} or out of order")
        frozen[name] = line
    return frozen


def broken(frozen: Mapping[str, str], declared: Sequence[Prototype]) -> list[str]:
    """Return one line for each frozen function that the headers no longer declare, or declare in another form."""
    signatures = {function.name: function.signature for function in declared}
    found = []
    for name, signature in frozen.items():
        if name not in signatures:
            found.append(f"frozen but not declared: {signature}")
        elif signatures[name] != signature:
            found.append(f"frozen as {signature}, declared as {signatures[name]}")
    return found


def added(frozen: Mapping[str, str], declared: Sequence[Prototype]) -> list[Prototype]:
    """Return the functions that are declared and not frozen yet."""
    return [function for function in declared if function.name not in frozen]


def render(frozen: Mapping[str, str], new: Sequence[Prototype]) -> str:
    """Return the text of the list with the new functions in their places."""
    signatures = {**frozen, **{function.name: function.signature for function in new}}
    return _HEAD + "".join(f"{signatures[name]}\n" for name in sorted(signatures))
