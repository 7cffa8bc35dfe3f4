"""Reads the exported functions from the public headers.

The headers are plain C: type definitions, enumerations and prototypes marked XLATR_API, all on the top level. Anything
else is refused with its place, so that no function is lost because it is written in a way that this reader does not
know.
"""

from __future__ import annotations

import re
from collections.abc import Iterable, Iterator
from dataclasses import dataclass
from pathlib import Path

MARK = "XLATR_API"

_BASIC_TYPES = frozenset(
    ["void", "bool", "char", "float", "double", "size_t"]
    + [f"{sign}int{width}_t" for sign in ("", "u") for width in (8, 16, 32, 64)]
)
_KEYWORDS = frozenset(["const", "struct", "union", "enum", "typedef", "extern", "static", "inline"])

_TEXT = r"""\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])*'"""
_COMMENT_OR_TEXT = re.compile(rf"/\*.*?\*/|//[^\n]*|{_TEXT}", re.DOTALL)
_TOKEN = re.compile(rf"[A-Za-z_]\w*|{_TEXT}|\d[\w.]*|\.\.\.|\S")
_IDENTIFIER = re.compile(r"[A-Za-z_]\w*")


class HeaderError(Exception):
    """What a header says can't be read.

    Parameters
    ----------
    file : Path
        The header.
    line : int
        The line, counted from 1.
    reason : str
        What is wrong there.
    """

    def __init__(self, file: Path, line: int, reason: str) -> None:
        super().__init__(f"{file}:{line}: {reason}")


@dataclass(frozen=True)
class Parameter:
    """A parameter of a function: its type in normal form, as `const char*`, and its name."""

    type: str
    name: str


@dataclass(frozen=True)
class Prototype:
    """An exported function, and where it is declared."""

    name: str
    result: str
    parameters: tuple[Parameter, ...]
    file: Path
    line: int

    @property
    def signature(self) -> str:
        """The prototype in normal form, without the names of its parameters."""
        types = ", ".join(parameter.type for parameter in self.parameters) or "void"
        return f"{self.result} {self.name}({types})"

    @property
    def family(self) -> str:
        """The class that the function works on; empty for a function that belongs to none."""
        family, _, rest = self.name.partition("_")
        return family if rest and family[0].isupper() else ""

    def error(self, reason: str) -> HeaderError:
        """Return the error that `reason` is at this function."""
        return HeaderError(self.file, self.line, f"{self.name}: {reason}")


@dataclass(frozen=True)
class _Token:
    text: str
    line: int


def read_headers(files: Iterable[Path]) -> list[Prototype]:
    """Read headers and return their functions, sorted by name.

    Raises
    ------
    HeaderError
        At the first statement that is not understood, and at a function that is declared twice.
    """
    types = set(_BASIC_TYPES)
    headers = [_Header(file, types) for file in files]
    for header in headers:
        header.learn_types()
    prototypes: dict[str, Prototype] = {}
    for header in headers:
        for prototype in header.prototypes():
            if prototype.name in prototypes:
                raise prototype.error("declared twice")
            prototypes[prototype.name] = prototype
    return sorted(prototypes.values(), key=lambda prototype: prototype.name)


class _Header:
    """The statements of one header. `types` holds the type names of all headers that are read together."""

    def __init__(self, file: Path, types: set[str]) -> None:
        self._file = file
        self._types = types
        self._statements = list(self._split(list(self._tokens(file.read_text(encoding="utf-8")))))

    def learn_types(self) -> None:
        for statement in self._statements:
            if statement[0].text == "typedef":
                self._types.add(self._defined_type(statement))
            elif statement[0].text == "struct":
                self._types.add(f"struct {self._struct_name(statement)}")

    def prototypes(self) -> Iterator[Prototype]:
        for statement in self._statements:
            if statement[0].text == MARK:
                yield self._prototype(statement)

    def _error(self, token: _Token, reason: str) -> HeaderError:
        return HeaderError(self._file, token.line, reason)

    # ---- from text to statements

    def _tokens(self, text: str) -> Iterator[_Token]:
        for number, line in self._declaration_lines(text):
            for match in _TOKEN.finditer(line):
                yield _Token(match.group(), number)

    def _declaration_lines(self, text: str) -> Iterator[tuple[int, str]]:
        """Drop comments and directives. A function that only some compilers see is refused."""

        def blank(match: re.Match[str]) -> str:
            found = match.group()
            return found if found[0] in "\"'" else " " + "\n" * found.count("\n")

        conditions = 0
        continued = False
        for number, line in enumerate(_COMMENT_OR_TEXT.sub(blank, text).splitlines(), start=1):
            if continued or line.lstrip().startswith("#"):
                if not continued:
                    directive = line.lstrip().lstrip("#").strip()
                    # The guard around the whole header is no condition.
                    if directive.startswith("if") and not re.fullmatch(r"ifndef \w+_H", directive):
                        conditions += 1
                    if directive.startswith("endif"):
                        conditions = max(0, conditions - 1)
                    if MARK in directive.split()[2:]:
                        raise HeaderError(self._file, number, f"another name for {MARK}")
                continued = line.rstrip().endswith("\\")
                continue
            if conditions > 0 and MARK in line:
                raise HeaderError(self._file, number, f"{MARK} between #if and #endif")
            yield number, line

    def _split(self, tokens: list[_Token]) -> Iterator[list[_Token]]:
        """Split at each `;` outside braces. The braces of `extern "C"` are no part of a statement."""
        statement: list[_Token] = []
        depth = 0
        linkage = False
        for token in tokens:
            if token.text == "}" and depth == 0 and linkage and not statement:
                linkage = False
                continue
            statement.append(token)
            if [part.text for part in statement] == ["extern", '"C"', "{"]:
                linkage = True
                statement = []
            elif token.text in "{}":
                depth += 1 if token.text == "{" else -1
            elif token.text == ";" and depth == 0:
                self._check(statement)
                yield statement
                statement = []
        if statement:
            raise self._error(statement[0], f"no end of what begins with {statement[0].text}")

    def _check(self, statement: list[_Token]) -> None:
        if statement[0].text not in (MARK, "typedef", "enum", "struct"):
            raise self._error(statement[0], f"neither a type nor a function that begins with {MARK}")
        for token in statement[1:]:
            if token.text == MARK:
                raise self._error(token, f"{MARK} in the middle of a statement")

    # ---- from statements to prototypes

    def _struct_name(self, statement: list[_Token]) -> str:
        name = statement[1]
        if not _IDENTIFIER.fullmatch(name.text) or statement[2].text not in ("{", ";"):
            raise self._error(name, "a struct without a name, or more than a struct")
        return name.text

    def _defined_type(self, statement: list[_Token]) -> str:
        # A pointer to a function has its name inside: typedef int (*name)(int);
        texts = [token.text for token in statement]
        if texts[-2] == ")" and "{" not in texts:
            opening = texts.index("(")
            if texts[opening + 1] != "*" or texts[opening + 3] != ")":
                raise self._error(statement[opening], "a type of functions; define one of pointers to them")
            return texts[opening + 2]
        name = statement[-2]
        if not _IDENTIFIER.fullmatch(name.text) or name.text in _KEYWORDS or len(statement) < 4:
            raise self._error(name, "a type definition that does not end with a name")
        return name.text

    def _prototype(self, statement: list[_Token]) -> Prototype:
        declaration = statement[1:-1]
        texts = [token.text for token in declaration]
        if "(" not in texts:
            raise self._error(statement[0], f"no function after {MARK}")
        opening = texts.index("(")
        if texts[-1] != ")":
            raise self._error(declaration[-1], f"{declaration[-1].text} after the parameters of a function")
        if texts[opening + 1] == "*":
            raise self._error(declaration[opening], "a pointer to a function; give it a type name")
        named = self._parameter(declaration[:opening], statement[0])
        name = declaration[opening - 1]
        return Prototype(
            name=named.name,
            result=named.type,
            parameters=tuple(self._parameters(declaration[opening + 1 : -1], name)),
            file=self._file,
            line=name.line,
        )

    def _parameters(self, tokens: list[_Token], function: _Token) -> Iterator[Parameter]:
        if [token.text for token in tokens] == ["void"]:
            return
        if not tokens:
            raise self._error(function, f"{function.text} says nothing of its parameters; write (void) for none")
        begin = 0
        for end in [index for index, token in enumerate(tokens) if token.text == ","] + [len(tokens)]:
            yield self._parameter(tokens[begin:end], function)
            begin = end + 1

    def _parameter(self, tokens: list[_Token], before: _Token) -> Parameter:
        """Return a type and the name after it. `before` tells the place of an empty one."""
        if not tokens:
            raise self._error(before, f"a comma too many after {before.text}")
        *kind, name = tokens
        for token in tokens:
            if token.text in ("(", ")"):
                raise self._error(token, "a pointer to a function; give it a type name")
            if token.text in ("[", "]"):
                raise self._error(token, "an array; take a pointer and a size")
            if token.text == "...":
                raise self._error(token, "a function with any number of arguments")
        if not _IDENTIFIER.fullmatch(name.text) or name.text in _KEYWORDS | self._types:
            raise self._error(name, f"no name after {' '.join(token.text for token in tokens)}")
        return Parameter(self._type(kind, name), name.text)

    def _type(self, tokens: list[_Token], name: _Token) -> str:
        """Return the type in normal form: a const in front of what it applies to, stars without blanks."""
        texts = [token.text for token in tokens]
        stars = texts.index("*") if "*" in texts else len(texts)
        base = [text for text in texts[:stars] if text != "const"]
        if base[:1] == ["struct"]:
            base = [" ".join(base)]
        if len(base) != 1 or base[0] not in self._types:
            raise self._error(name, f"{name.text} has no type that is known here: {' '.join(texts) or 'nothing'}")
        if any(text not in ("*", "const") for text in texts[stars:]):
            raise self._error(name, f"{name.text} has a type that can't be read: {' '.join(texts)}")
        constant = "const " if "const" in texts[:stars] else ""
        # A const of the parameter itself is nothing that a caller sees.
        pointers = "".join(texts[stars:]).removesuffix("const").replace("const", " const")
        return f"{constant}{base[0]}{pointers}"
