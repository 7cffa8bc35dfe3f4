"""Finds the places of a source that can be mutated, in the syntax tree that Clang prints."""

from __future__ import annotations

import json
import re
import subprocess
from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

Node = dict[str, Any]

# The function of mutants.hpp that stands for an operator, and what its mutants do.
BINARY: dict[str, tuple[str, tuple[str, ...]]] = {
    "<": ("less", ("< to <=", "< to >=")),
    "<=": ("lessEqual", ("<= to <", "<= to >")),
    ">": ("greater", ("> to >=", "> to <=")),
    ">=": ("greaterEqual", (">= to >", ">= to <")),
    "==": ("equal", ("== to !=",)),
    "!=": ("unequal", ("!= to ==",)),
    "+": ("plus", ("+ to -",)),
    "-": ("minus", ("- to +",)),
    "*": ("times", ("* to /",)),
    "/": ("divided", ("/ to *",)),
    "%": ("remainder", ("% to /",)),
    "&": ("bitAnd", ("& to |",)),
    "|": ("bitOr", ("| to &",)),
    "^": ("bitXor", ("^ to &",)),
    "<<": ("shiftLeft", ("<< to >>",)),
    ">>": ("shiftRight", (">> to <<",)),
    "+=": ("addTo", ("+= to -=",)),
    "-=": ("takeFrom", ("-= to +=",)),
    "*=": ("multiply", ("*= to /=",)),
    "/=": ("divide", ("/= to *=",)),
    "%=": ("reduce", ("%= to /=",)),
    "&=": ("clearBits", ("&= to |=",)),
    "|=": ("setBits", ("|= to &=",)),
    "^=": ("changeBits", ("^= to &=",)),
    "<<=": ("moveLeft", ("<<= to >>=",)),
    ">>=": ("moveRight", (">>= to <<=",)),
}
LOGICAL = {"&&": "&& to ||", "||": "|| to &&"}
UNARY = {"-": ("negative", "- dropped"), "~": ("inverted", "~ dropped")}
STEPS = {
    ("++", False): ("increased", "++ to --"),
    ("--", False): ("decreased", "-- to ++"),
    ("++", True): ("increasedAfter", "++ to --"),
    ("--", True): ("decreasedAfter", "-- to ++"),
}
FLIP = ("mutants::flip({}, static_cast<bool>(", "))")
COMPARISONS = {"<", "<=", ">", ">=", "==", "!="}

# What Clang works out itself: a mutant there would be another program, not another run.
CONSTANT_KINDS = {
    "ConceptDecl",
    "ConceptSpecializationExpr",
    "ConstantExpr",
    "CXXNoexceptExpr",
    "EnumConstantDecl",
    "NonTypeTemplateParmDecl",
    "RequiresExpr",
    "StaticAssertDecl",
    "TemplateArgument",
    "TemplateTemplateParmDecl",
    "TemplateTypeParmDecl",
    "UnaryExprOrTypeTraitExpr",
}
WRAPPERS = {"CXXBindTemporaryExpr", "ExprWithCleanups", "ImplicitCastExpr", "MaterializeTemporaryExpr", "ParenExpr"}
LITERALS = {"CharacterLiteral", "FloatingLiteral", "IntegerLiteral"}
CALLS = {"CallExpr", "CXXMemberCallExpr", "CXXOperatorCallExpr", "CompoundAssignOperator"}
FUNCTIONS = {"FunctionDecl", "CXXMethodDecl", "CXXConstructorDecl", "CXXConversionDecl", "CXXDestructorDecl"}


@dataclass(frozen=True)
class Wrap:
    """What is written around a part of a source. `{}` is the number of the site's first mutant."""

    begin: int
    end: int
    before: str
    after: str


@dataclass(frozen=True)
class Site:
    """A place in a file, in bytes, that is rewritten so that it can act as one of its mutants."""

    file: str
    begin: int
    end: int
    changes: tuple[str, ...]
    wraps: tuple[Wrap, ...]
    operator: tuple[int, int] | None = None  # what is replaced by `instead`
    instead: str = ""


class SyntaxError(Exception):
    """A source that Clang does not understand."""


def syntax_trees(root: Path, file: Path, flags: Sequence[str]) -> Iterator[Node]:
    """Return what a source and its headers declare in the project's namespace.

    Raises
    ------
    SyntaxError
        If the source does not compile.
    """
    printed = subprocess.run(
        ["clang++", *flags, "-w", "-fsyntax-only", "-Xclang", "-ast-dump=json", "-Xclang", "-ast-dump-filter=xlatr"]
        + [str(file)],
        cwd=root,
        capture_output=True,
        text=True,
        check=False,
    )
    if printed.returncode != 0:
        raise SyntaxError(f"{file}: {printed.stderr}")
    decoder = json.JSONDecoder()
    text = printed.stdout
    at = 0
    while at < len(text):
        tree, at = decoder.raw_decode(text, at)
        yield tree
        while at < len(text) and text[at].isspace():
            at += 1


class _Files:
    """The tree names a file only where it changes, in the order in which it is printed."""

    def __init__(self) -> None:
        self.last = ""

    def resolve(self, node: Any) -> None:
        if isinstance(node, list):
            for item in node:
                self.resolve(item)
        elif isinstance(node, dict):
            if "offset" in node:
                self.last = node.get("file", self.last)
                node["file"] = self.last
            for key, value in node.items():
                if key != "includedFrom" and isinstance(value, (dict, list)):
                    self.resolve(value)


def _children(node: Node) -> list[Node]:
    children: list[Node] = node.get("inner", [])
    return children


def _bare(node: Node) -> Node:
    while node.get("kind") in WRAPPERS and len(_children(node)) == 1:
        node = _children(node)[0]
    return node


def _called_operator(node: Node) -> str:
    """The operator that an overloaded one is, as `==`."""
    if node.get("kind") != "CXXOperatorCallExpr" or not _children(node):
        return ""
    callee = _bare(_children(node)[0])
    name: str = callee.get("referencedDecl", {}).get("name", "") or callee.get("name", "")
    return name.removeprefix("operator")


class Finder:
    """Collects the sites of the wanted files, each once, however many sources include its file."""

    def __init__(self, root: Path, wanted: Sequence[str]) -> None:
        self._root = root
        self._texts = {name: (root / name).read_bytes() for name in wanted}
        self._sites: dict[tuple[str, int, int, tuple[str, ...]], Site] = {}

    def sites(self) -> list[Site]:
        return [self._sites[key] for key in sorted(self._sites)]

    def search(self, tree: Node, files: _Files) -> None:
        files.resolve(tree)
        self._walk(tree, constant=False)

    # Where a node stands in a wanted file, if it was not made by a macro or by the compiler.
    def _place(self, node: Node) -> tuple[str, int, int] | None:
        span = node.get("range", {})
        begin, end = span.get("begin", {}), span.get("end", {})
        if "offset" not in begin or "offset" not in end or begin["file"] != end["file"]:
            return None
        if begin["file"] not in self._texts:
            return None
        return begin["file"], begin["offset"], end["offset"] + end["tokLen"]

    def _add(
        self,
        node: Node,
        changes: tuple[str, ...],
        before: str,
        after: str,
        operator: tuple[int, int] | None = None,
        instead: str = "",
        parts: tuple[Wrap, ...] = (),
    ) -> None:
        place = self._place(node)
        if place is not None and place[1] < place[2]:
            file, begin, end = place
            wraps = (Wrap(begin, end, before, after), *parts)
            self._sites.setdefault((*place, changes), Site(file, begin, end, changes, wraps, operator, instead))

    def _walk(self, node: Node, constant: bool) -> None:
        kind = node.get("kind", "")
        if kind in CONSTANT_KINDS or node.get("isImplicit") or node.get("isBitfield"):
            return
        if "range" in node and any("expansionLoc" in node["range"].get(end, {}) for end in ("begin", "end")):
            return
        if kind == "LambdaExpr":  # what it does is not constant, even where the function itself is
            for child in _children(node):
                if child.get("kind") != "CXXRecordDecl":
                    self._walk(child, constant and child.get("kind") != "CompoundStmt")
            return
        if kind == "VarDecl" and node.get("constexpr"):
            constant = True
        if not constant:
            self._mutate(node, kind)
        for child in self._relevant(node, kind):
            self._walk(child, constant)

    def _relevant(self, node: Node, kind: str) -> list[Node]:
        """The children that were written, without instances of templates and what the compiler adds to a loop."""
        children = _children(node)
        if kind == "FunctionTemplateDecl":
            return [child for child in children if child.get("kind") in FUNCTIONS][:1]
        if kind == "ClassTemplateDecl":
            return [child for child in children if child.get("kind") == "CXXRecordDecl"]
        if kind == "CXXForRangeStmt":
            return [children[0], children[1], *children[-2:]]
        if kind in ("CaseStmt", "IfStmt") and (kind == "CaseStmt" or node.get("isConstexpr")):
            return children[1:]
        if kind == "ImplicitCastExpr" and node.get("castKind") == "NullToPointer":
            return []
        if kind == "UserDefinedLiteral":
            return []
        return children

    def _mutate(self, node: Node, kind: str) -> None:
        if kind in ("BinaryOperator", "CompoundAssignOperator"):
            self._binary(node)
        elif kind == "UnaryOperator":
            self._unary(node)
        elif kind in LITERALS:
            self._literal(node)
        elif kind == "CXXBoolLiteralExpr":
            self._flip(node, "true to false" if node.get("value") else "false to true")
        elif _called_operator(node) in ("==", "!=") or kind == "CXXRewrittenBinaryOperator":
            self._flip(node, "negated")
        elif kind == "ReturnStmt" and _children(node):
            self._condition(_children(node)[0])
        for condition in self._conditions(node, kind):
            self._condition(condition)
        for statement in self._statements(node, kind):
            self._statement(statement)

    def _binary(self, node: Node) -> None:
        operator = node["opcode"]
        left, right = _children(node)
        between = self._between(left, right, operator)
        if between is None:
            return
        if operator in LOGICAL:
            # By negating the operands and the result, so that each is still evaluated only where it would be.
            parts = tuple(
                Wrap(place[1], place[2], *FLIP) for operand in (left, right) if (place := self._place(operand))
            )
            self._add(node, (LOGICAL[operator],), *FLIP, parts=parts)
        elif operator in BINARY:
            if operator == "-" and all(self._is_pointer(operand) for operand in (left, right)):
                return
            name, changes = BINARY[operator]
            self._add(node, changes, f"mutants::{name}({{}}, ", ")", between, ",")

    @staticmethod
    def _is_pointer(node: Node) -> bool:
        name: str = node.get("type", {}).get("desugaredQualType", node.get("type", {}).get("qualType", ""))
        return name.rstrip().endswith("*")

    def _between(self, left: Node, right: Node, operator: str) -> tuple[int, int] | None:
        """Where the operator stands, if nothing else does between its operands."""
        places = self._place(left), self._place(right)
        if places[0] is None or places[1] is None:
            return None
        file, end, begin = places[0][0], places[0][2], places[1][1]
        text = self._texts[file][end:begin].decode()
        found = re.sub(r"//[^\n]*", lambda comment: " " * len(comment.group()), text)
        if found.strip() != operator:
            return None
        at = end + found.index(operator)
        return at, at + len(operator)

    def _unary(self, node: Node) -> None:
        operator = node["opcode"]
        place = self._place(node)
        if place is None:
            return
        file, begin, end = place
        text = self._texts[file][begin:end].decode()
        if operator == "!" and text.startswith("!"):
            self._flip(node, "! dropped")
        elif operator in UNARY and text.startswith(operator):
            name, change = UNARY[operator]
            self._add(node, (change,), f"mutants::{name}({{}}, ", ")", (begin, begin + 1))
        elif (step := STEPS.get((operator, bool(node.get("isPostfix"))))) is not None:
            at = end - 2 if node.get("isPostfix") else begin
            if self._texts[file][at : at + 2].decode() == operator:
                self._add(node, (step[1],), f"mutants::{step[0]}({{}}, ", ")", (at, at + 2))

    def _literal(self, node: Node) -> None:
        place = self._place(node)
        if place is None:
            return
        text = self._texts[place[0]][place[1] : place[2]].decode()
        if not re.match(r"[0-9.']", text):
            return
        if text.startswith("'"):
            self._add(node, (f"{text} to the next",), "mutants::constant({}, ", ")")
        elif re.fullmatch(r"1[uUlLzZ]*", text):
            self._add(node, ("1 to 0",), "mutants::one({}, ", ")")
        else:
            self._add(node, (f"{text} + 1",), "mutants::constant({}, ", ")")

    def _flip(self, node: Node, change: str) -> None:
        self._add(node, (change,), *FLIP)

    def _conditions(self, node: Node, kind: str) -> list[Node]:
        children = _children(node)
        if kind == "IfStmt" and not node.get("hasVar") and not node.get("isConstexpr"):
            return [children[1 if node.get("hasInit") else 0]]
        if kind == "WhileStmt" and not node.get("hasVar"):
            return [children[0]]
        if kind == "DoStmt":
            return [children[1]]
        if kind == "ForStmt":
            return [children[2]]
        if kind == "ConditionalOperator":
            return [children[0]]
        if kind == "BinaryOperator" and node["opcode"] in LOGICAL:
            return children
        return []

    def _condition(self, node: Node) -> None:
        """Negates what is true or false, unless the operator that says so has mutants of its own."""
        bare = _bare(node)
        kind = bare.get("kind")
        kind_of_type = node.get("type", {}).get("qualType", "")
        if kind in ("CXXBoolLiteralExpr", "CXXRewrittenBinaryOperator") or _called_operator(bare) in ("==", "!="):
            return
        if kind == "BinaryOperator" and (bare["opcode"] in LOGICAL or bare["opcode"] in COMPARISONS):
            return
        if kind == "UnaryOperator" and bare["opcode"] == "!":
            return
        if kind_of_type == "bool":
            self._flip(node, "negated")

    def _statements(self, node: Node, kind: str) -> list[Node]:
        children = _children(node)
        if kind in ("CompoundStmt", "DefaultStmt"):
            return children
        if kind == "CaseStmt":
            return children[-1:]
        if kind == "IfStmt":
            return children[-2:] if node.get("hasElse") else children[-1:]
        if kind in ("ForStmt", "WhileStmt", "CXXForRangeStmt"):
            return children[-1:]
        return []

    def _statement(self, node: Node) -> None:
        bare = _bare(node)
        kind = bare.get("kind")
        if kind in CALLS or (kind == "BinaryOperator" and bare["opcode"] == "="):
            self._add(node, ("deleted",), "(mutants::on({}) ? void() : static_cast<void>(", "))")


def find_sites(root: Path, sources: Sequence[str], flags: Sequence[str], wanted: Sequence[str]) -> list[Site]:
    """Return the sites of the wanted files, which are among the sources or included by them."""
    finder = Finder(root, wanted)
    for source in sources:
        files = _Files()
        for tree in syntax_trees(root, Path(source), flags):
            finder.search(tree, files)
    return finder.sites()
