"""The reference that is made from the public headers."""

import importlib.machinery
import importlib.util
import pathlib
import re
import shutil
import sys
import tempfile
import unittest

import surface
from surface import LIBRARIES, ROOT, headers

if not shutil.which("doxygen"):
    print("left out: doxygen is not installed (scripts/setup test)")
    sys.exit(77)

LOADER = importlib.machinery.SourceFileLoader("docs", str(ROOT / "scripts/docs"))
docs = importlib.util.module_from_spec(importlib.util.spec_from_loader("docs", LOADER))
LOADER.exec_module(docs)


def every_function():
    listed = (ROOT / "tests/surface/exports.txt").read_text().split("\n")
    return {name for library in LIBRARIES for name in surface.declared(library)} | {
        name for name in listed if name and not name.startswith("#")}


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.made = surface.run(ROOT / "scripts/docs", cls.folder)
        cls.pages = cls.folder / "man/man3"

    def test_it_is_made_without_a_warning(self):
        self.assertEqual(self.made.returncode, 0, self.made.stdout)
        self.assertNotIn("warning", self.made.stdout)

    def test_every_function_has_a_man_page_that_tells_of_it(self):
        functions = every_function()
        self.assertGreater(len(functions), 800)
        for name in sorted(functions):
            page = (self.pages / f"{name}.3tw").read_text()
            header = re.fullmatch(r"\.so man3/(.*)\n*", page)
            self.assertIsNotNone(header, name)
            self.assertIn(f"\\fB{name}\\fP", (self.pages / header.group(1)).read_text())

    def test_every_function_has_an_entry_in_the_html_pages(self):
        text = "".join(page.read_text() for page in (self.folder / "html").glob("*_8h.html"))
        found = set(re.findall(r'<td class="memname">[^<]*(?:<a [^>]*>[^<]*</a>[^<]*)*?\b(\w+) </td>', text))
        self.assertEqual(sorted(every_function() - found), [])

    def test_functions_that_share_a_doc_block_have_it_each(self):
        text = (self.pages / "system.h.3tw").read_text()
        self.assertEqual(text.count("MTU of the appliance's own VPN server: 'services\\&.fhvpn\\&.server\\&.mtu'"), 4)

    def test_the_man_pages_can_be_shown(self):
        if not shutil.which("man"):
            self.skipTest("man is not installed")
        for page in sorted(self.pages.glob("*.h.3tw")):
            with self.subTest(page.name):
                shown = surface.run("sh", "-c", 'man --warnings -E UTF-8 -l "$0" 2>&1 >/dev/null', page,
                                    env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"})
                self.assertEqual(shown.stdout, "")


class Complaints(unittest.TestCase):
    """That what a reader would miss is noticed."""

    def complaint(self, text):
        with tempfile.TemporaryDirectory() as folder:
            header = pathlib.Path(folder) / "one.h"
            header.write_text("/* One. */\n" + text)
            return docs.make(pathlib.Path(folder) / "out", [header])

    def test_a_header_that_tells_all_draws_none(self):
        self.assertEqual(self.complaint("/**\n * Does it.\n * @param a what\n */\nTW_API int f(int a);\n"), "")

    def test_a_function_without_a_doc_block_is_noticed(self):
        self.assertIn("not documented", self.complaint("/** F. */\nTW_API int f(int a);\n\nTW_API int g(int a);\n"))

    def test_a_parameter_that_no_function_has_is_noticed(self):
        self.assertIn("'b'", self.complaint("/**\n * Does it.\n * @param b what\n */\nTW_API int f(int a);\n"))

    def test_a_member_without_a_meaning_is_noticed(self):
        self.assertIn("not documented", self.complaint("/** S. */\nstruct s {\n  int a;\n};\n"))


class Filter(unittest.TestCase):
    """What doxygen is given to read."""

    def filtered(self, text):
        import doxygen_filter  # scripts/doxygen_filter.py
        return doxygen_filter.for_doxygen(text)

    def test_a_shared_doc_block_is_repeated_with_the_parameters_that_a_function_has(self):
        self.assertEqual(self.filtered("/**\n * Both.\n * @param a one\n *        more\n * @param b two\n */\n"
                                       "TW_API int f(int a);\nTW_API int g(int b);\n"),
                         "/**\n * Both.\n * @param a one\n *        more\n */\n int f(int a);\n"
                         "/**\n * Both.\n * @param b two\n */\n int g(int b);\n")

    def test_a_remark_describes_the_file_and_a_ruler_begins_a_section(self):
        self.assertEqual(self.filtered("/* Top. */\n\n/* ---- Part ---- */\n"),
                         "/** @file\n * Top. */\n\n/** @name Part */\n/** @{ */\n/** @} */\n")

    def test_members_that_share_a_line_are_told_apart(self):
        self.assertEqual(self.filtered("struct s {\n  const char *a, *b; /**< texts */\n};\n"),
                         "struct s {\n  const char *a; /**< texts */\n  const char *b; /**< texts */\n};\n")

    def test_every_header_keeps_its_functions(self):
        for library in headers.libraries():
            for header in headers.public_headers(library):
                text = header.read_text()
                names = [function.name for function in headers.functions(text)]
                self.assertEqual([function.name for function in headers.functions(self.filtered(text))], names)


if __name__ == "__main__":
    unittest.main(verbosity=2)
