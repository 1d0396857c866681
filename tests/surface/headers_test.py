"""The public headers, as a user's compiler sees them."""

import pathlib
import tempfile
import unittest

import surface
from surface import ROOT, headers

STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only"]


def compiles(compiler, standard, language, include):
    """The complaint of a compiler about a source that includes one header twice; "" when it is content."""
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder) / f"one.{language}"
        line = f"#include \"{include}\"\n"
        source.write_text(line + line + "int main(void) { return 0; }\n")
        result = surface.run(compiler, f"-std={standard}", *STRICT, *surface.include_options(), source)
        return result.stdout if result.returncode else ""


def include_names(pattern):
    for folder in [ROOT / "include"] + sorted(ROOT.glob("platform/*/include")):
        for path in sorted(folder.rglob(pattern)):
            yield path.relative_to(folder).as_posix()


class PublicHeaders(unittest.TestCase):
    def test_each_header_compiles_alone_as_c11(self):
        for include in include_names("*.h"):
            with self.subTest(include):
                self.assertEqual(compiles(surface.CC, "c11", "c", include), "")

    def test_each_header_compiles_alone_as_cpp20(self):
        for include in list(include_names("*.h")) + list(include_names("*.hpp")):
            with self.subTest(include):
                self.assertEqual(compiles(surface.CXX, "c++20", "cpp", include), "")

    def test_the_umbrellas_include_every_header_beside_them(self):
        for library in headers.libraries():
            folder = ROOT / ("include" if library == "twobject" else f"platform/{library}/include")
            for umbrella in sorted(folder.glob("*.h*")):
                language = [surface.CC, "-std=c11"] if umbrella.suffix == ".h" else [surface.CXX, "-std=c++20"]
                reached = surface.output(*language, "-MM", *surface.include_options(), umbrella)
                for part in sorted((folder / umbrella.stem).glob("*" + umbrella.suffix)):
                    name = f"{umbrella.stem}/{part.name}"
                    with self.subTest(name):
                        self.assertIn(name, reached)

    def test_every_public_function_has_a_doc_block(self):
        checked = surface.run(ROOT / "scripts/check-docs")
        self.assertEqual(checked.returncode, 0, checked.stdout)


class DocumentedFunctions(unittest.TestCase):
    """The reader of headers that the check of the doc blocks and of the exports stands on."""

    def found(self, text):
        return [(function.name, function.documented) for function in headers.functions(text)]

    def test_a_doc_block_directly_above_documents_a_function(self):
        self.assertEqual(self.found("/** Doc. */\nAPI int f(int a);\n"), [("f", True)])

    def test_a_doc_block_documents_the_whole_group_below_it(self):
        self.assertEqual(self.found("/** Doc. */\nAPI int f(void);\nAPI int g(void);\n"),
                         [("f", True), ("g", True)])

    def test_a_blank_line_ends_what_a_doc_block_documents(self):
        self.assertEqual(self.found("/** Doc. */\nAPI int f(void);\n\nAPI int g(void);\n"),
                         [("f", True), ("g", False)])
        self.assertEqual(self.found("/** Doc. */\n\nAPI int f(void);\n"), [("f", False)])

    def test_a_remark_documents_nothing(self):
        self.assertEqual(self.found("/* Remark. */\nAPI int f(void);\n"), [("f", False)])

    def test_a_ruler_documents_nothing(self):
        self.assertEqual(self.found("/* ---- Lists ---- */\nAPI int f(void);\n"), [("f", False)])

    def test_only_functions_are_found(self):
        text = ("#define CALL(x) \\\n  f(x)\nX_BEGIN\n/** A. */\ntypedef int (*visitor)(void *context);\n"
                "enum { A = (1) };\nstruct s { int (*call)(int); };\n/** F. */\nAPI void *f(int (*g)(int)) QUIET\n"
                "    __attribute__((format(printf, 1, 2)));\nX_END\n")
        self.assertEqual(self.found(text), [("f", True)])

    def test_functions_within_extern_c_are_found(self):
        self.assertEqual(self.found('#ifdef __cplusplus\nextern "C" {\n#endif\n/** F. */\nint f(void);\n}\n'),
                         [("f", True)])


class BrokenHeaders(unittest.TestCase):
    """That a header which does not stand alone is noticed."""

    def test_a_header_that_lacks_an_include_does_not_compile(self):
        with tempfile.TemporaryDirectory() as folder:
            header = pathlib.Path(folder) / "lacking.h"
            header.write_text("size_t length(void);\n")
            self.assertIn("size_t", compiles(surface.CC, "c11", "c", header))


if __name__ == "__main__":
    unittest.main()
