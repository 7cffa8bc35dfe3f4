"""The calls of the fuzz target that calls every exported function: C++ made of the prototypes.

Each function becomes one call, a text or an array together with its size. Where an argument comes from follows from its
type and, where that says too little, from its name; fuzz/objects.hpp and fuzz/call_arguments.hpp have them. What needs
more than that is written by hand in fuzz/special_calls.hpp and named in `SPECIAL_CALLS`. A function that is neither is
an error.
"""

from __future__ import annotations

import zlib
from collections.abc import Iterator, Sequence

from public_api.prototypes import Parameter, Prototype

# The functions that fuzz/special_calls.hpp calls, and where it does.
SPECIAL_CALLS = {
    "BtrInfo_GetSession": "getSession",
    "BtrSessionReader_DeleteSectors": "readSector",
    "BtrSessionReader_ReadNextSector": "readSector",
    "DataSector_getSize": "compareSizes",
    "MdfReader_ValidateFile": "validateFile",
    "SessionDateTime_compareTo": "compareDates",
    "SessionDescriptor_getSize": "compareSizes",
    "xlatr_convert": "convert",
    "xlatr_free": "convert",
    "xlatr_get_formats_convertible_from": "convert",
    "xlatr_get_formats_convertible_to": "convert",
    "xlatr_get_progress": "convert",
}

# Handles of interfaces, and of what nothing makes. A CsvInfo can't be had, so its functions get another object, and
# refuse it.
_LENT_HANDLES = {
    "BaseTraceInfo": "reinterpret_cast<const BaseTraceInfo*>(objects.get<TraceFileInfo>())",
    "CsvInfo": "reinterpret_cast<const CsvInfo*>(objects.info())",
    "IMessage": "objects.message()",
    "ITraceInfo": "objects.info()",
}

_VALUES = {
    "TraceFormat": "arguments.format()",
    "bool": "arguments.flag()",
    "double": "arguments.number()",
    "int32_t": "arguments.byte() - 1",
    "uint32_t": "arguments.byte()",
}

# By name, since a text that is taken for no path could be the path of any file.
_TEXTS = {
    "path": "arguments.path()",
    "separator": "arguments.text()",
    "targetPath": "arguments.path()",
    "temporaryFolder": "arguments.directory()",
    "text": "arguments.text()",
}

_PLACES = frozenset(["double*", "int32_t*", "uint8_t*"])
_BUFFER = (Parameter("char*", "buffer"), Parameter("uint32_t", "bufferSize"))

# What moves things on is called more often than the many functions that only tell something: these, by the ends of
# their names, and some of them more than others.
_OFTEN = {
    "_Construct": 1,
    "_ReadNextMessage": 2,
    "_ReadNextSector": 2,
    "_WriteHeader": 1,
    "_WriteMessage": 2,
    "_setActive": 1,
    "xlatr_convert": 5,
}


def render(functions: Sequence[Prototype]) -> str:
    """Return the C++ header.

    Raises
    ------
    HeaderError
        For a function with an argument or a result that no rule is known for.
    """
    return _Calls(functions).render()


def call_numbers(names: Sequence[str]) -> dict[str, int]:
    """Return the number of each call, which is in the inputs of the target: two bytes that follow from the name.

    Inputs mean the same when functions are added, unless a new one takes the number of an old one.
    """
    numbers: dict[str, int] = {}
    taken: set[int] = set()
    for name in sorted(names):
        number = zlib.crc32(name.encode()) & 0xFFFF
        while number in taken:
            number = (number + 1) & 0xFFFF
        taken.add(number)
        numbers[name] = number
    return numbers


class _Calls:
    def __init__(self, functions: Sequence[Prototype]) -> None:
        self._functions = functions
        self._by_name = {function.name: function for function in functions}
        self._owned = {name.removesuffix("_Destruct") for name in self._by_name if name.endswith("_Destruct")}

    def render(self) -> str:
        bodies: list[str] = []
        calls: list[str] = []
        often: list[str] = []
        for function in self._functions:
            if function.name in SPECIAL_CALLS:
                call = SPECIAL_CALLS[function.name]
            elif self._is_size_of_another(function):
                continue
            else:
                call = f"call_{function.name}"
                bodies.append(self._call(function))
            if call not in calls:
                calls.append(call)
            for end, weight in _OFTEN.items():
                often += [call] * weight if function.name.endswith(end) else []
        chains = {f"make_{name}": chain for name in sorted(self._owned) if (chain := self._chain(name))}
        for name, chain in chains.items():
            bodies.append(_function(name, [f"{call}(objects, arguments);" for call in chain]))
        # The longest chains alone: they have the others in them.
        links = {call for chain in chains.values() for call in chain}
        partial = {name for name, chain in chains.items() if any(chain == other[:-1] for other in chains.values())}
        often = [call for call in often if call not in links] + [name for name in chains if name not in partial]
        calls += chains
        numbers = call_numbers(calls)
        rows = [f"    {{{numbers[call]}, {call}}},\n" for call in sorted(calls, key=numbers.__getitem__)]
        return (
            "// Made from the public headers; see scripts/public_api/object_calls.py.\n"
            "#pragma once\n\n"
            "#include <array>\n\n"
            '#include "special_calls.hpp"\n\n'
            "namespace fuzz {\n\n"
            + "".join(f"{self._sources(name)}\n" for name in self._borrowed_names())
            + "".join(f"{body}\n" for body in bodies)
            + "// Sorted by number.\n"
            + f"inline constexpr auto kCalls = std::to_array<NumberedCall>({{\n{''.join(rows)}}});\n\n"
            + "inline constexpr auto kOftenCalled = std::to_array<Call>({\n"
            + "".join(f"    {call},\n" for call in often)
            + "});\n\n}  // namespace fuzz\n"
        )

    # ---- one function

    def _call(self, function: Prototype) -> str:
        name = f"call_{function.name}"
        if function.name.endswith("_Destruct"):
            return _function(name, [f"{function.name}(objects.release<{function.family}>());"])
        lines, arguments = self._arguments(function)
        if function.parameters[-2:] == _BUFFER:
            return _function(name, lines + self._text(function, arguments))
        call = f"{function.name}({', '.join(arguments)})"
        if function.name.endswith("_ReadNextMessage"):
            return _function(name, lines + self._read(function))
        if function.result in ("const double*", "const TraceFormat*"):
            return _function(name, lines + self._array(function, arguments))
        if function.result.endswith("*") and not function.result.startswith("const "):
            return _function(name, [*lines, self._put(function, call)])
        if function.name.endswith("_getPercentDone"):
            return _function(name, [*lines, f"require(!({call} < 0.0));"])
        return _function(name, [*lines, f"{call};" if function.result == "void" else f"static_cast<void>({call});"])

    def _arguments(self, function: Prototype) -> tuple[list[str], list[str]]:
        """Return what makes the arguments, line by line, and the arguments themselves."""
        parameters = function.parameters
        if parameters[-2:] == _BUFFER:
            parameters = parameters[:-2]
        lines = []
        arguments = []
        texts = 0
        for parameter in parameters:
            texts += parameter.type == "const char*"
            if self._is_message_place(function, parameter):
                continue
            if parameter.type in _PLACES:
                lines.append(f"Place<{parameter.type.removesuffix('*')}> {parameter.name}(arguments);")
                arguments.append(f"{parameter.name}.get()")
                continue
            lines.append(f"const auto {parameter.name} = {self._value(function, parameter)};")
            arguments.append(parameter.name)
        if texts > 1:
            raise function.error("two texts, of which Arguments keeps one")
        return lines, arguments

    def _value(self, function: Prototype, parameter: Parameter) -> str:
        if parameter.type == "const char*" and parameter.name in _TEXTS:
            return _TEXTS[parameter.name]
        if parameter.name == "startTime" and parameter.type == "double":
            return "arguments.days()"
        if parameter.type in _VALUES:
            return _VALUES[parameter.type]
        handle = parameter.type.removeprefix("const ").removesuffix("*")
        constant = parameter.type.startswith("const ")
        if handle in self._owned and (not constant or "_Construct" in function.name or not self._lenders(handle)):
            return f"objects.get<{handle}>()"
        if constant and handle in _LENT_HANDLES:
            return _LENT_HANDLES[handle]
        if constant and self._lenders(handle):
            return f"some_{handle}(objects, arguments)"
        raise function.error(
            f"nothing is known to give it for {parameter.type} {parameter.name}; "
            "say so in scripts/public_api/object_calls.py"
        )

    def _is_message_place(self, function: Prototype, parameter: Parameter) -> bool:
        return function.name.endswith("_ReadNextMessage") and parameter.type.removesuffix("**") in self._owned

    # ---- what becomes of a result

    def _size_of(self, function: Prototype) -> str | None:
        """Return the name of the function for the size of what this one returns or copies."""
        family, _, member = function.name.partition("_")
        for name in (f"{function.name}Size", f"{family}_get{member}Size"):
            if name in self._by_name:
                return name
        return None

    def _is_size_of_another(self, function: Prototype) -> bool:
        return any(
            self._size_of(other) == function.name
            for other in self._functions
            if other.family == function.family and other.name not in SPECIAL_CALLS
        )

    def _text(self, function: Prototype, arguments: list[str]) -> list[str]:
        if function.result != "void":
            raise function.error("a text and a result; call it in fuzz/special_calls.hpp")
        lines = ["TextBuffer buffer(arguments);"]
        size = self._size_of(function)
        if size is not None:
            lines.append(f"const auto size = {size}({', '.join(arguments)});")
        lines.append(f"{function.name}({', '.join([*arguments, 'buffer.data()', 'buffer.size()'])});")
        lines.append("buffer.requireText();" if size is None else "buffer.requireTextOf(size);")
        return lines

    def _array(self, function: Prototype, arguments: list[str]) -> list[str]:
        size = self._size_of(function)
        if size is None:
            raise function.error(f"an array, but no function {function.name}Size")
        given = ", ".join(arguments)
        return [f"const auto size = {size}({given});", f"requireArray({function.name}({given}), size);"]

    def _read(self, function: Prototype) -> list[str]:
        if len(function.parameters) != 2 or not self._is_message_place(function, function.parameters[1]):
            raise function.error("not the form of the functions of that name")
        message = function.parameters[1].type.removesuffix("**")
        reader = function.parameters[0].name
        return [f"readNext<{function.name}, {message}_Destruct>({reader}, objects, arguments);"]

    def _put(self, function: Prototype, call: str) -> str:
        kind = function.result.removesuffix("*")
        if kind not in self._owned:
            raise function.error(f"a {kind} that nothing releases")
        offers = kind.endswith("Info") and kind != "TraceFileInfo"
        return f"objects.{'putInfo' if offers else 'put'}<{kind}_Destruct>({call});"

    # ---- where objects come from

    def _lenders(self, handle: str) -> list[Prototype]:
        """Return the functions that show an object which belongs to another one."""
        return [function for function in self._functions if function.result == f"const {handle}*"]

    def _borrowed_names(self) -> Iterator[str]:
        """Return the types of such objects, each after those that it is borrowed from."""
        done: list[str] = []

        def visit(handle: str) -> Iterator[str]:
            if handle in done:
                return
            done.append(handle)
            for lender in self._lenders(handle):
                for parameter in lender.parameters:
                    yield from visit(parameter.type.removeprefix("const ").removesuffix("*"))
            if self._lenders(handle):
                yield handle

        for function in self._functions:
            if function.result.startswith("const ") and function.result not in ("const double*", "const TraceFormat*"):
                yield from visit(function.result.removeprefix("const ").removesuffix("*"))

    def _sources(self, handle: str) -> str:
        """Return the function that gives an object of a type that is borrowed, or no object."""
        sources = []
        for lender in self._lenders(handle):
            given = ", ".join(self._value(lender, parameter) for parameter in lender.parameters)
            sources.append(f"{lender.name}({given})")
        own = f"objects.get<{handle}>()" if handle in self._owned else "nullptr"
        cases = "".join(
            f"    case {number}:\n      return {source};\n" for number, source in enumerate(sources, start=1)
        )
        return (
            f"inline const {handle}* some_{handle}(Objects& objects, Arguments& arguments) {{\n"
            f"  switch (arguments.choice({len(sources) + 1})) {{\n{cases}    default:\n      return {own};\n  }}\n}}\n"
        )

    def _maker(self, handle: str) -> Prototype | None:
        if construct := self._by_name.get(f"{handle}_Construct"):
            return construct
        makers = [function for function in self._functions if function.result == f"{handle}*"]
        return makers[0] if len(makers) == 1 else None

    def _chain(self, handle: str) -> list[str]:
        """Return the calls that make an object together with those that it is made of; empty when it needs none."""
        chain: list[str] = []
        maker = self._maker(handle)
        while maker is not None:
            chain.insert(0, SPECIAL_CALLS.get(maker.name, f"call_{maker.name}"))
            handles = [
                parameter.type.removeprefix("const ").removesuffix("*")
                for parameter in maker.parameters
                if parameter.type.endswith("*") and parameter.type != "const char*"
            ]
            maker = self._maker(handles[0]) if len(handles) == 1 else None
        return chain if len(chain) > 1 else []


def _function(name: str, lines: list[str]) -> str:
    objects = "objects" if any("objects" in line for line in lines) else "/*objects*/"
    arguments = "arguments" if any("arguments" in line for line in lines) else "/*arguments*/"
    body = "".join(f"  {line}\n" for line in lines)
    return f"inline void {name}(Objects& {objects}, Arguments& {arguments}) {{\n{body}}}\n"
