"""Compiles the record that docs/adding-a-record.md makes, block after block."""

import pathlib
import re
import tempfile
import unittest

import surface
from surface import ROOT

PAGE = ROOT / "docs/adding-a-record.md"
BLOCK = re.compile(r"^```c(?:pp)? (\S+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
# What the page asks for in tables.hpp.
TABLES = '#include "record/tables.hpp"\nnamespace tw {\nextern const tables site_tables;\n}\n'


def compile_page(text):
    """What the compiler says to the files of a page; a file is all blocks of its name, in order."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, body in BLOCK.findall(text):
            file = root / name
            file.parent.mkdir(parents=True, exist_ok=True)
            with file.open("a") as out:
                out.write(body)
        (root / "tables.hpp").write_text(TABLES)
        return surface.run(surface.CXX, "-std=c++20", "-Wall", "-Wextra", "-Wshadow", "-Wconversion", "-Werror",
                           "-fsyntax-only", f"-I{root}/include", f"-I{ROOT}/src", *surface.include_options(),
                           "-include", root / "tables.hpp", root / "src/site.cpp")


class AddingARecord(unittest.TestCase):
    def test_the_record_of_the_page_compiles(self):
        result = compile_page(PAGE.read_text())
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_every_function_of_its_header_is_defined_on_the_page(self):
        blocks = BLOCK.findall(PAGE.read_text())
        declared = {name for file, body in blocks if file.endswith(".h") for name in re.findall(r"(cfg_\w+)\(", body)}
        source = "".join(body for file, body in blocks if file.endswith(".cpp"))
        self.assertGreater(len(declared), 8)
        self.assertEqual([name for name in sorted(declared) if not re.search(rf"\b{name}\([^;{{]*\{{", source)], [])

    def test_a_page_that_is_wrong_is_noticed(self):
        text = PAGE.read_text()
        wrong = text.replace("mandatory(name), note", "mandatory(name), nowhere")
        self.assertNotEqual(text, wrong)
        self.assertNotEqual(compile_page(wrong).returncode, 0)

    def test_every_file_of_the_tree_that_it_names_is_there(self):
        names = re.findall(r"`((?:src|tests|docs|include)/[\w./-]+\.\w+)`", PAGE.read_text())
        self.assertGreaterEqual(len(names), 5)
        self.assertEqual([name for name in names if "site" not in name and not (ROOT / name).exists()], [])


if __name__ == "__main__":
    unittest.main()
