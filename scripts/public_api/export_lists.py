"""What linkers are told of the exported functions."""

from __future__ import annotations

from collections.abc import Sequence

from public_api.prototypes import Prototype

# The type information of the exception classes must be one for the library and its callers.
_EXCEPTION_CLASSES = (
    "_ZT[ISV]N5xlatr??Converter*ExceptionE",
    "_ZN5xlatr??Converter*Exception[CDa]*",
    "_ZNK5xlatr??Converter*Exception4what*",
)


def names(functions: Sequence[Prototype]) -> str:
    """Return the names of the functions, one per line."""
    return "".join(f"{function.name}\n" for function in functions)


def version_script(functions: Sequence[Prototype], abi: str) -> str:
    """Return the version script: the functions and the exception classes are visible, nothing else is.

    Parameters
    ----------
    functions : Sequence[Prototype]
        The exported functions.
    abi : str
        The version of the ABI, which every symbol carries as "XLATR_<abi>".
    """
    visible = [function.name for function in functions] + list(_EXCEPTION_CLASSES)
    symbols = "".join(f"    {symbol};\n" for symbol in visible)
    return f"XLATR_{abi} {{\n  global:\n{symbols}  local:\n    *;\n}};\n"


def module_definition(functions: Sequence[Prototype]) -> str:
    """Return the module definition (.def) for linkers that take a list of exports and no version script."""
    symbols = "".join(f"    {function.name}\n" for function in functions)
    return f"LIBRARY xlatr\nEXPORTS\n{symbols}"
