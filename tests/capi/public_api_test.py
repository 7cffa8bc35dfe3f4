"""What scripts/public_api reads and makes: public_api_test.py SCRIPTS_DIRECTORY [UNITTEST ARGUMENTS...]"""

from __future__ import annotations

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, sys.argv.pop(1))

from public_api import export_lists, frozen_list, object_calls, object_families
from public_api.prototypes import HeaderError, Prototype, read_headers

# Around what a case declares.
HEAD = """\
/* A header; XLATR_API in a comment counts for nothing. */
#ifndef XLATR_CASE_H
#define XLATR_CASE_H

#include "xlatr/export.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t TraceFormat;
typedef struct TrcInfo TrcInfo;
typedef struct TrcReader TrcReader;
typedef struct MessageCan MessageCan;
enum { XLATR_ONE = 1 /* one */, XLATR_TWO };
typedef struct Options {
  TraceFormat format; // the target's
  union { double version; char text[8]; } value;
} Options;
"""
TAIL = """
#ifdef __cplusplus
}
#endif
#endif
"""
FIRST_LINE = HEAD.count("\n") + 1


def read(declarations: str) -> list[Prototype]:
    """Return the functions of a header with these declarations."""
    with tempfile.TemporaryDirectory() as directory:
        header = Path(directory) / "case.h"
        header.write_text(HEAD + declarations + TAIL, encoding="utf-8")
        return read_headers([header])


def signatures(declarations: str) -> list[str]:
    """Return the functions of a header as prototypes in normal form."""
    return [function.signature for function in read(declarations)]


class Prototypes(unittest.TestCase):
    def test_reads_what_c_allows(self) -> None:
        cases = [
            ("XLATR_API void f(void);", "void f(void)"),
            ("XLATR_API\tuint32_t  f ( TraceFormat a ,bool b ) ;", "uint32_t f(TraceFormat, bool)"),
            ("XLATR_API const TrcInfo * f(const TrcReader *r);", "const TrcInfo* f(const TrcReader*)"),
            ("XLATR_API TrcInfo const*f(char const*path);", "const TrcInfo* f(const char*)"),
            ("XLATR_API bool f(TrcReader* r,\n    MessageCan** m,\n\n    double v);",
             "bool f(TrcReader*, MessageCan**, double)"),
            ("XLATR_API\nint32_t\nf\n(\nuint8_t\n*\nx\n)\n;", "int32_t f(uint8_t*)"),
            ("XLATR_API void f(const char* const* texts);", "void f(const char* const*)"),
            ("XLATR_API void f(const char* const text);", "void f(const char*)"),
            ("XLATR_API void f(/* what; (is) */ int32_t x /* y */, // not this, z\n bool b);",
             "void f(int32_t, bool)"),
            ("XLATR_API /* comment\nof two lines */ void f(const Options* o); /* XLATR_API */",
             "void f(const Options*)"),
            ('enum { XLATR_QUOTE = \'"\' }; XLATR_API void f(void); /* " */', "void f(void)"),
        ]  # fmt: skip
        for declaration, expected in cases:
            with self.subTest(declaration):
                self.assertEqual(signatures(declaration), [expected])

    def test_sorts_by_name_and_keeps_several_of_a_line(self) -> None:
        self.assertEqual(
            signatures("XLATR_API void b(void); XLATR_API void a(void);\nXLATR_API void A(void);"),
            ["void A(void)", "void a(void)", "void b(void)"],
        )

    def test_knows_names_places_and_families(self) -> None:
        function = read("\n\nXLATR_API bool\nTrcReader_setActive(TrcReader* reader, bool active);")[0]
        self.assertEqual(function.name, "TrcReader_setActive")
        self.assertEqual(function.family, "TrcReader")
        self.assertEqual([parameter.name for parameter in function.parameters], ["reader", "active"])
        self.assertEqual(function.line, FIRST_LINE + 3)
        self.assertEqual(read("XLATR_API void xlatr_free(void);")[0].family, "")

    def test_refuses_what_it_does_not_understand(self) -> None:
        cases = [
            ("XLATR_API void f();", "says nothing of its parameters"),
            ("XLATR_API void f(int32_t);", "no name after int32_t"),
            ("XLATR_API void f(const char*);", "no name after const char *"),
            ("XLATR_API void f(int32_t a,);", "a comma too many"),
            ("XLATR_API void f(int32_t a[4]);", "an array"),
            ("XLATR_API void f(void (*done)(int32_t code));", "a pointer to a function"),
            ("XLATR_API void (*f(void))(int32_t);", "a pointer to a function"),
            ("XLATR_API void f(const char* format, ...);", "any number of arguments"),
            ("XLATR_API void f(unsigned int a);", "a has no type that is known"),
            ("XLATR_API void f(Unknown* a);", "a has no type that is known"),
            ("XLATR_API void f(struct TrcInfo* a);", "a has no type that is known"),
            ("XLATR_API f(void);", "f has no type that is known"),
            ("XLATR_API XLATR_OLD void f(void);", "f has no type that is known"),
            ("XLATR_API void f(void) XLATR_OLD;", "XLATR_OLD after the parameters"),
            ("XLATR_API int32_t count;", "no function after XLATR_API"),
            ("XLATR_API;", "no function after XLATR_API"),
            ("XLATR_API void f(void)", "no end"),
            ("XLATR_API void f(void) { }", "no end"),
            ("extern XLATR_API void f(void);", "neither a type nor a function"),
            ("void f(void);", "neither a type nor a function"),
            ("typedef struct A { XLATR_API int32_t b; } A;", "in the middle of a statement"),
            ("XLATR_API void f(void) XLATR_API void g(void);", "in the middle of a statement"),
            ("typedef void Done(int32_t code);", "a type of functions"),
            ("struct { int32_t a; };", "a struct without a name"),
            ("struct A a;", "more than a struct"),
            ("#ifdef _WIN32\nXLATR_API void f(void);\n#endif", "between #if and #endif"),
            ("#define API XLATR_API", "another name for XLATR_API"),
            ("XLATR_API void f(void);\nXLATR_API bool f(int32_t a);", "f: declared twice"),
        ]
        for declaration, reason in cases:
            with self.subTest(declaration), self.assertRaises(HeaderError) as raised:
                read(declaration)
            with self.subTest(declaration):
                self.assertIn(reason, str(raised.exception))

    def test_tells_file_and_line(self) -> None:
        with self.assertRaises(HeaderError) as raised:
            read("/* two\nlines */\nXLATR_API void f(int32_t a,\n  int32_t b[2]);")
        self.assertRegex(str(raised.exception), rf"case\.h:{FIRST_LINE + 3}: an array")

    def test_types_may_come_from_another_header(self) -> None:
        with tempfile.TemporaryDirectory() as directory:
            first, second = Path(directory) / "a.h", Path(directory) / "b.h"
            first.write_text("XLATR_API void f(Later* x);", encoding="utf-8")
            second.write_text("typedef struct Later Later;", encoding="utf-8")
            self.assertEqual([function.name for function in read_headers([first, second])], ["f"])


class ExportLists(unittest.TestCase):
    functions = read("XLATR_API void b(void);\nXLATR_API void a(void);")

    def test_names(self) -> None:
        self.assertEqual(export_lists.names(self.functions), "a\nb\n")

    def test_version_script_hides_all_else(self) -> None:
        script = export_lists.version_script(self.functions, "7")
        self.assertRegex(script, r"(?s)^XLATR_7 \{\n  global:\n    a;\n    b;\n    _ZT.*;\n  local:\n    \*;\n\};\n$")
        self.assertEqual(script.count("Exception"), 3)

    def test_module_definition(self) -> None:
        self.assertEqual(export_lists.module_definition(self.functions), "LIBRARY xlatr\nEXPORTS\n    a\n    b\n")


class FrozenList(unittest.TestCase):
    functions = read("XLATR_API void b(bool x);\nXLATR_API void a(void);")
    text = "# Head.\nvoid a(void)\nvoid b(bool)\n"

    def test_holds_what_is_declared(self) -> None:
        frozen = frozen_list.parse(self.text)
        self.assertEqual(frozen_list.broken(frozen, self.functions), [])
        self.assertEqual(frozen_list.added(frozen, self.functions), [])

    def test_sees_a_lost_function_and_another_type(self) -> None:
        frozen = frozen_list.parse("void a(int32_t)\nvoid b(bool)\nvoid c(void)\n")
        self.assertEqual(
            frozen_list.broken(frozen, self.functions),
            ["frozen as void a(int32_t), declared as void a(void)", "frozen but not declared: void c(void)"],
        )

    def test_takes_a_new_function_into_its_place(self) -> None:
        frozen = frozen_list.parse("void b(bool)\n")
        new = frozen_list.added(frozen, self.functions)
        self.assertEqual([function.name for function in new], ["a"])
        self.assertEqual(frozen_list.parse(frozen_list.render(frozen, new)), frozen_list.parse(self.text))

    def test_refuses_lines_that_are_none(self) -> None:
        for text in ("a\n", "a(void)\n", "void a(void);\n", "void b(void)\nvoid a(void)\n", "void a(void)\n" * 2):
            with self.subTest(text), self.assertRaises(ValueError):
                frozen_list.parse(text)


class ObjectCalls(unittest.TestCase):
    reader = """
XLATR_API TrcInfo* TrcInfo_Construct(const char* path);
XLATR_API void TrcInfo_Destruct(TrcInfo* info);
XLATR_API TrcReader* TrcReader_Construct(const TrcInfo* info);
XLATR_API void TrcReader_Destruct(TrcReader* reader);
XLATR_API bool TrcReader_ReadNextMessage(TrcReader* reader, MessageCan** message);
XLATR_API void MessageCan_Destruct(MessageCan* message);
"""

    def bodies(self, declarations: str) -> dict[str, str]:
        """Return what is made of the declarations: the body of each function by its name."""
        made = object_calls.render(read(self.reader + declarations))
        bodies = {}
        for part in made.split("inline ")[1:]:
            head, _, rest = part.partition(" {\n")
            bodies[head.partition("(")[0].split()[-1]] = rest.partition("\n}\n")[0]
        return bodies

    def test_joins_a_text_with_its_size(self) -> None:
        for size, text in (("getPathSize", "getPath"), ("getToStringSize", "ToString")):
            bodies = self.bodies(
                f"XLATR_API uint32_t TrcInfo_{size}(const TrcInfo* info);\n"
                f"XLATR_API void TrcInfo_{text}(const TrcInfo* info, char* buffer, uint32_t bufferSize);"
            )
            body = bodies[f"call_TrcInfo_{text}"]
            self.assertIn(f"size = TrcInfo_{size}(info);", body)
            self.assertIn("buffer.requireTextOf(size);", body)
            self.assertNotIn(f"call_TrcInfo_{size}", bodies)

    def test_checks_a_text_without_a_size_too(self) -> None:
        bodies = self.bodies("XLATR_API void TrcInfo_getName(TraceFormat format, char* buffer, uint32_t bufferSize);")
        self.assertIn("buffer.requireText();", bodies["call_TrcInfo_getName"])

    def test_joins_an_array_with_its_size(self) -> None:
        bodies = self.bodies(
            "XLATR_API const double* TrcInfo_GetSupportedVersions(void);\n"
            "XLATR_API uint32_t TrcInfo_GetSupportedVersionsSize(void);"
        )
        self.assertIn(
            "requireArray(TrcInfo_GetSupportedVersions(), size);", bodies["call_TrcInfo_GetSupportedVersions"]
        )

    def test_makes_objects_with_those_that_they_are_made_of(self) -> None:
        bodies = self.bodies("")
        self.assertEqual(
            bodies["make_TrcReader"].split(),
            ["call_TrcInfo_Construct(objects,", "arguments);", "call_TrcReader_Construct(objects,", "arguments);"],
        )
        self.assertNotIn("make_TrcInfo", bodies)

    def test_looks_at_borrowed_objects(self) -> None:
        bodies = self.bodies(
            "XLATR_API const TrcInfo* TrcReader_getTrace(const TrcReader* reader);\n"
            "XLATR_API bool TrcInfo_getValid(const TrcInfo* info);"
        )
        self.assertIn("return TrcReader_getTrace(objects.get<TrcReader>());", bodies["some_TrcInfo"])
        self.assertIn("info = some_TrcInfo(objects, arguments);", bodies["call_TrcInfo_getValid"])

    def test_every_function_has_a_call(self) -> None:
        functions = read(self.reader + "XLATR_API bool TrcInfo_getValid(const TrcInfo* info);")
        made = object_calls.render(functions)
        for function in functions:
            self.assertIn(f"{function.name}", made)
            self.assertRegex(made, rf"\{{\d+, call_{function.name}\}},")

    def test_refuses_what_it_can_give_nothing_for(self) -> None:
        cases = [
            ("XLATR_API void TrcInfo_load(const char* file);", r"nothing is known to give it for const char\* file"),
            ("XLATR_API void TrcInfo_take(const Options* options);", r"const Options\* options"),
            ("XLATR_API void TrcInfo_fill(uint64_t* sizes);", r"uint64_t\* sizes"),
            ("XLATR_API Options* TrcInfo_getOptions(const TrcInfo* info);", "a Options that nothing releases"),
            ("XLATR_API const double* TrcInfo_getTimes(const TrcInfo* info);", "no function TrcInfo_getTimesSize"),
            ("XLATR_API void TrcInfo_move(const char* path, const char* targetPath);", "two texts"),
            ("XLATR_API bool TrcInfo_tell(char* buffer, uint32_t bufferSize);", "a text and a result"),
            ("XLATR_API bool TrcInfo_ReadNextMessage(TrcInfo* info, bool active);", "not the form"),
        ]
        for declaration, reason in cases:
            with self.subTest(declaration), self.assertRaisesRegex(HeaderError, f"case.h:[0-9]+: TrcInfo_.*{reason}"):
                object_calls.render(read(self.reader + declaration))

    def test_numbers_stay_when_functions_are_added(self) -> None:
        before = object_calls.call_numbers(["call_b", "call_d"])
        after = object_calls.call_numbers(["call_a", "call_b", "call_c", "call_d"])
        self.assertEqual(before, {name: after[name] for name in before})
        self.assertEqual(len(set(after.values())), 4)


class ObjectFamilies(unittest.TestCase):
    def test_gathers_the_functions_of_a_family(self) -> None:
        made = object_families.render(
            read(
                "XLATR_API TrcInfo* TrcInfo_Construct_2(const char* path);\n"
                "XLATR_API bool TrcInfo_getValid(const TrcInfo* info);\n"
                "XLATR_API void xlatr_free(void);\n"
            )
        )
        self.assertIn(
            "struct TrcInfoType {\n"
            '  static constexpr const char* kName = "TrcInfo";\n'
            "  using Object = TrcInfo;\n"
            "  static TrcInfo* construct2(const char* path) { return TrcInfo_Construct_2(path); }\n"
            "  static bool getValid(const TrcInfo* info) { return TrcInfo_getValid(info); }\n"
            "};\n",
            made,
        )
        self.assertNotIn("xlatr_free", made)

    def test_knows_what_a_reader_reads(self) -> None:
        made = object_families.render(read(ObjectCalls.reader))
        self.assertIn("  using InfoType = struct TrcInfoType;\n  using MessageType = struct MessageCanType;\n", made)

    def test_refuses_two_functions_for_a_member(self) -> None:
        with self.assertRaisesRegex(HeaderError, "the same member as TrcInfo_GetPath: getPath"):
            object_families.render(read("XLATR_API bool TrcInfo_GetPath(void);\nXLATR_API bool TrcInfo_getPath(void);"))


if __name__ == "__main__":
    unittest.main()
