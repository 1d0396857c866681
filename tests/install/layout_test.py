"""Which files an installation has, and that none of them leads back to where it was built."""

import pathlib
import re
import tempfile
import unittest

import installation
import surface
from installation import BUILD, ROOT

PROGRAMS = ["bin/twctl", "sbin/searchd", "sbin/unenrolld"]


def leaks(top, texts):
    """The files below a folder that hold one of the texts."""
    texts = [str(text).encode() for text in texts]
    return [str(path) for path in sorted(top.rglob("*"))
            if path.is_file() and any(text in path.read_bytes() for text in texts)]


def run_path(path):
    found = re.search(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", surface.output("readelf", "-dW", path))
    return found.group(1) if found else None


class Layout(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.installed = installation.staged()
        cls.addClassCleanup(cls.installed.close)
        cls.files = cls.installed.files()

    def folder_of_libraries(self):
        return next(path.parent for path in self.installed.top.rglob("libtwobject.so"))

    def test_every_public_header_is_there_unchanged_and_no_other(self):
        expected = {}
        for folder in [ROOT / "include"] + [ROOT / "platform" / name / "include"
                                            for name in surface.PLATFORM.values()]:
            for path in list(folder.rglob("*.h")) + list(folder.rglob("*.hpp")):
                expected[path.relative_to(folder).as_posix()] = path.read_bytes()
        found = {path.relative_to(self.installed.top / "include").as_posix(): path.read_bytes()
                 for path in (self.installed.top / "include").rglob("*") if path.is_file()}
        self.assertIn("twobject/node.h", found)
        self.assertEqual(sorted(found), sorted(expected))
        self.assertEqual(found, expected)

    def test_each_library_is_there_under_its_three_names(self):
        for library in surface.LIBRARIES:
            with self.subTest(library):
                plain = self.folder_of_libraries() / f"lib{library}.so"
                major = self.folder_of_libraries() / f"lib{library}.so.1"
                self.assertTrue(plain.is_symlink() and major.is_symlink())
                self.assertRegex(plain.resolve().name, rf"^lib{library}\.so\.1\.\d+\.\d+$")
                self.assertEqual(plain.resolve(), major.resolve())
                dynamic = surface.output("readelf", "-dW", plain)
                self.assertEqual(re.findall(r"soname: \[(.*)\]", dynamic), [f"lib{library}.so.1"])
                self.assertIn(f"{library.upper()}_1.0", surface.output("readelf", "-VW", plain))

    def test_the_programs_and_their_units_are_there(self):
        for file in PROGRAMS:
            self.assertIn(file, self.files)
        for file in ("lib/systemd/system/searchd.service", "lib/systemd/system/unenrolld.service",
                     "lib/sysusers.d/twobject.conf", "lib/tmpfiles.d/twobject.conf",
                     "share/bash-completion/completions/twctl", "share/man/man1/twctl.1"):
            self.assertIn(file, self.files)

    def test_each_library_has_a_pkg_config_file(self):
        found = [pathlib.Path(file).stem for file in self.files if file.endswith(".pc")]
        self.assertEqual(sorted(found), sorted(surface.LIBRARIES))

    def test_nothing_leads_back_to_the_build_or_to_the_sources(self):
        self.assertEqual(leaks(self.installed.top, [BUILD.resolve(), ROOT, self.installed.root]), [])

    def test_libraries_and_programs_find_each_other_from_where_they_stand(self):
        folder = self.folder_of_libraries()
        for library in surface.LIBRARIES:
            self.assertEqual(run_path(folder / f"lib{library}.so"), "$ORIGIN", library)
        for program in PROGRAMS:
            path = run_path(self.installed.top / program)
            self.assertTrue(path.startswith("$ORIGIN/"), path)
            origin = (self.installed.top / program).parent
            self.assertEqual((origin / path.removeprefix("$ORIGIN/")).resolve(), folder.resolve())

    def test_each_installed_program_runs_without_an_environment(self):
        for program in PROGRAMS:
            with self.subTest(program):
                said = surface.output(self.installed.top / program, "--version", env={})
                self.assertRegex(said, r"1\.0\.0\n$")


class Leaks(unittest.TestCase):
    """That a file which names the build is noticed."""

    def test_a_path_of_the_build_within_a_file_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "a.pc").write_text(f"libdir={BUILD.resolve()}/src\n")
            (pathlib.Path(folder) / "b.pc").write_text("libdir=/usr/lib\n")
            self.assertEqual(leaks(pathlib.Path(folder), [BUILD.resolve()]), [f"{folder}/a.pc"])

    def test_the_libraries_of_the_build_itself_would_be_found(self):
        self.assertIn(str(BUILD.resolve()), run_path(surface.LIBRARIES["twobject"]))


if __name__ == "__main__":
    unittest.main()
