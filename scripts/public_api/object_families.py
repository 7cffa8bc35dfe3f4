"""The exported families as types, so that one test drives all of them: C++ made of the prototypes.

Each family, `TrcReader` say, becomes a struct `TrcReaderType` whose static functions call the exported ones and have
the rest of their names: `readNextMessage` calls `TrcReader_ReadNextMessage`. Beside them stand the family's name, the
type of its objects, and for a reader the families of its file and of its messages.
"""

from __future__ import annotations

from collections.abc import Iterator, Sequence

from public_api.prototypes import Prototype

# The functions of a family by the names of the members that call them.
_Members = dict[str, Prototype]


def render(functions: Sequence[Prototype]) -> str:
    """Return the C++ header.

    Raises
    ------
    HeaderError
        For two functions of a family whose names differ only where the names of members don't.
    """
    families: dict[str, _Members] = {}
    for function in functions:
        if not function.family:
            continue
        members = families.setdefault(function.family, {})
        name = member_name(function)
        if name in members:
            raise function.error(f"the same member as {members[name].name}: {name}")
        members[name] = function
    types = {_handle(parameter.type) for function in functions for parameter in function.parameters}
    structs = [_struct(family, members, family in types, families) for family, members in families.items()]
    return (
        "// Made from the public headers; see scripts/public_api/object_families.py.\n"
        "#pragma once\n\n"
        '#include "xlatr/objects.h"\n\n'
        "namespace xlatr::test {\n\n" + "\n".join(structs) + "\n}  // namespace xlatr::test\n"
    )


def member_name(function: Prototype) -> str:
    """Return the name of the member that calls a function: `writeHeader2` for `TrcWriter_WriteHeader_2`."""
    name = function.name.removeprefix(f"{function.family}_").replace("_", "")
    return name[0].lower() + name[1:]


def _struct(family: str, members: _Members, has_objects: bool, families: dict[str, _Members]) -> str:
    lines = [f'static constexpr const char* kName = "{family}";']
    if has_objects:
        lines.append(f"using Object = {family};")
    lines += _related(members, families)
    lines += [_member(name, function) for name, function in members.items()]
    return f"struct {family}Type {{\n" + "".join(f"  {line}\n" for line in lines) + "};\n"


def _related(members: _Members, families: dict[str, _Members]) -> Iterator[str]:
    """Return the families that a reader reads: what it is made of, and what it gives."""
    read = members.get("readNextMessage")
    if read is None:
        return
    for alias, function, position in (("InfoType", members.get("construct"), 0), ("MessageType", read, 1)):
        if function is not None and len(function.parameters) > position:
            handle = _handle(function.parameters[position].type)
            # Declared, since families stand in the order of their names.
            if handle in families:
                yield f"using {alias} = struct {handle}Type;"


def _member(name: str, function: Prototype) -> str:
    declared = ", ".join(f"{parameter.type} {parameter.name}" for parameter in function.parameters)
    given = ", ".join(parameter.name for parameter in function.parameters)
    return f"static {function.result} {name}({declared}) {{ return {function.name}({given}); }}"


def _handle(type_name: str) -> str:
    return type_name.removeprefix("const ").rstrip("*")
