"""What the shipped libraries export."""

import pathlib
import re
import tempfile
import unittest

import surface
from surface import LIBRARIES, ROOT

NODES = {library: f"{library.upper()}_1.0" for library in LIBRARIES}


def exports(path):
    """What a shared library defines for others: {symbol: version node}, the version nodes themselves left out."""
    found = {}
    for line in surface.output("nm", "-D", "--defined-only", "--with-symbol-versions", path).splitlines():
        _, kind, symbol = line.split(maxsplit=2)
        name, _, version = symbol.partition("@")
        if kind != "A":
            found[name] = version.lstrip("@")
    return found


def listed():
    lines = (ROOT / "tests/surface/exports.txt").read_text().splitlines()
    return [line for line in lines if line and not line.startswith("#")]


class Exports(unittest.TestCase):
    maxDiff = None

    def test_twobject_exports_exactly_the_listed_functions(self):
        self.assertEqual(sorted(exports(LIBRARIES["twobject"])), sorted(listed()))

    def test_no_function_is_listed_twice(self):
        self.assertEqual(len(listed()), len(set(listed())))

    def test_each_library_exports_exactly_what_its_headers_declare(self):
        for library, path in LIBRARIES.items():
            with self.subTest(library):
                self.assertEqual(sorted(exports(path)), sorted(surface.declared(library)))

    def test_each_export_carries_the_version_of_its_library(self):
        for library, path in LIBRARIES.items():
            with self.subTest(library):
                self.assertEqual(set(exports(path).values()), {NODES[library]})

    def test_each_library_names_itself_with_its_major_version(self):
        for library, path in LIBRARIES.items():
            with self.subTest(library):
                name = re.search(r"Library soname: \[(.*)\]", surface.output("readelf", "-dW", path)).group(1)
                self.assertEqual(name, f"lib{library}.so.1")

    def test_each_library_has_a_version_script_that_hides_the_rest(self):
        """A library that is linked without one shows its std:: symbols: the check above would see them."""
        source = "#include <string>\nstd::string cfg_leak(int n) { std::string s; s.resize(n); return s; }\n"
        with tempfile.TemporaryDirectory() as folder:
            leaking = pathlib.Path(folder) / "leaking.so"
            surface.output(surface.CXX, "-x", "c++", "-shared", "-fPIC", "-O0", "-o", leaking, "-", input=source)
            self.assertTrue(any("basic_string" in name or "cfg_leak" in name for name in exports(leaking)))


if __name__ == "__main__":
    unittest.main()
