"""Includes go one way, and a file stays small enough to be one noun."""

import pathlib
import re
import tempfile
import unittest

from surface import ROOT

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.MULTILINE)
SOURCES = (".c", ".cpp", ".h", ".hpp")
LONGEST = 600


def sources(root, *tops):
    for top in tops:
        for path in sorted((root / top).rglob("*")):
            if path.suffix in SOURCES:
                yield path


def component(root, path):
    """The folder whose insides a file may see: platform/config, tools/twctl, src, include."""
    parts = path.relative_to(root).parts
    return root.joinpath(*parts[:2]) if parts[0] in ("platform", "tools", "services") else root / parts[0]


def family(root, path):
    """The part of src that a file belongs to: "record", a family's folder, or a family's own file name."""
    first = path.relative_to(root / "src").parts[0]
    return first.rsplit(".", 1)[0]


def resolve(root, path, kind, name):
    """The file of this tree that an include names, or None for one of the system's."""
    places = [path.parent] if kind == '"' else []
    places += [component(root, path), root / "include", *sorted(root.glob("platform/*/include"))]
    for place in places:
        if (place / name).is_file():
            return (place / name).resolve()
    return None


def public(root, target):
    return target.is_relative_to(root / "include") or any(
        target.is_relative_to(folder) for folder in root.glob("platform/*/include"))


def wrong_arrow(root, path, target):
    """Why a file must not include another, or None when it may."""
    top = path.relative_to(root).parts[0]
    if top in ("platform",) and target.is_relative_to(root / "include"):
        return "a platform library includes libtwobject"
    if top == "include" and not public(root, target):
        return "a public header includes a private one"
    if public(root, target):
        return None
    if not target.is_relative_to(component(root, path)):
        return "includes the inside of another component"
    if top == "src" and family(root, target) not in ("record", family(root, path)):
        return "includes the inside of another family"
    return None


def wrong_arrows(root):
    root = root.resolve()
    found = []
    for path in sources(root, "include", "src", "platform", "tools", "services"):
        for kind, name in INCLUDE.findall(path.read_text()):
            target = resolve(root, path, kind, name)
            if target is None and (kind == '"' or name.startswith("tw")):
                found.append(f"{path.relative_to(root)}: {name}: not found on the ways that are open to it")
            elif target is not None and (reason := wrong_arrow(root, path, target)):
                found.append(f"{path.relative_to(root)}: {name}: {reason}")
    return found


class Arrows(unittest.TestCase):
    def test_includes_go_one_way(self):
        self.assertEqual(wrong_arrows(ROOT), [])

    def test_no_source_is_longer_than_six_hundred_lines(self):
        long = [f"{path.relative_to(ROOT)}: {lines} lines"
                for path in sources(ROOT, "include", "src", "platform", "tools", "services")
                if (lines := path.read_text().count("\n")) > LONGEST]
        self.assertEqual(long, [])


class WrongArrows(unittest.TestCase):
    """That a wrong arrow is noticed, each kind of it."""

    TREE = {
        "include/twobject/node.h": "",
        "platform/config/include/twconfig/store.h": "",
        "platform/config/head.hpp": "",
        "platform/log/line.hpp": "",
        "src/record/row.hpp": "",
        "src/nodes/node.hpp": "",
        "src/nodes/ports/port.hpp": "",
        "src/certificate.hpp": "",
        "tools/twctl/text.hpp": "",
    }

    def complaints(self, path, text):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, content in {**self.TREE, path: text}.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(content)
            return wrong_arrows(root)

    def test_arrows_that_go_the_right_way_pass(self):
        for path, text in [
                ("src/nodes/load.cpp", '#include "nodes/node.hpp"\n#include "record/row.hpp"\n'
                                       '#include "ports/port.hpp"\n#include <twobject/node.h>\n#include <string>\n'),
                ("src/certificate.cpp", '#include "certificate.hpp"\n#include <twconfig/store.h>\n'),
                ("platform/config/head.cpp", '#include "head.hpp"\n#include <twconfig/store.h>\n'),
                ("tools/twctl/main.cpp", '#include "text.hpp"\n#include <twobject/node.h>\n')]:
            with self.subTest(path):
                self.assertEqual(self.complaints(path, text), [])

    def test_a_platform_library_that_includes_twobject_is_found(self):
        self.assertEqual(len(self.complaints("platform/config/a.cpp", "#include <twobject/node.h>\n")), 1)

    def test_a_platform_library_that_looks_into_another_is_found(self):
        self.assertEqual(len(self.complaints("platform/config/a.cpp", '#include "../log/line.hpp"\n')), 1)

    def test_a_family_that_looks_into_another_is_found(self):
        self.assertEqual(len(self.complaints("src/nodes/a.cpp", '#include "certificate.hpp"\n')), 1)
        self.assertEqual(len(self.complaints("src/system.cpp", '#include "nodes/node.hpp"\n')), 1)

    def test_the_record_kit_that_knows_a_family_is_found(self):
        self.assertEqual(len(self.complaints("src/record/a.cpp", '#include "nodes/node.hpp"\n')), 1)

    def test_the_library_that_looks_into_the_store_is_found(self):
        self.assertEqual(len(self.complaints("src/system.cpp", '#include "../platform/config/head.hpp"\n')), 1)

    def test_a_tool_that_looks_into_the_library_is_found(self):
        self.assertEqual(len(self.complaints("tools/twctl/a.cpp", '#include "../../src/nodes/node.hpp"\n')), 1)
        self.assertEqual(len(self.complaints("tools/twctl/a.cpp", '#include "nodes/node.hpp"\n')), 1)

    def test_a_public_header_that_includes_a_private_one_is_found(self):
        self.assertEqual(len(self.complaints("include/a.h", '#include "../src/nodes/node.hpp"\n')), 1)


if __name__ == "__main__":
    unittest.main()
