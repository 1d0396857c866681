"""Programs of somebody else's are built against an installation, and run on a real store."""

import pathlib
import shutil
import tempfile
import unittest

import installation
import surface

CONSUMER = pathlib.Path(__file__).resolve().parent / "consumer"
C11 = ["-std=c11", "-Wall", "-Wextra", "-Wpedantic", "-Werror"]
CPP20 = ["-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Werror"]


class Consumer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.installed = installation.in_place()
        cls.addClassCleanup(cls.installed.close)
        cls.libraries = next(cls.installed.top.rglob("libtwobject.so")).parent

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.store = self.folder / "store"
        surface.output(self.installed.top / "bin/twctl", "--quiet", "--store", self.store, "init",
                       "--ca-subject", "Example Node CA")

    def pkg_config(self, *words):
        # Of everything else only what the system has.
        environment = {"PATH": "/usr/bin:/bin", "PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")}
        return surface.output("pkg-config", *words, env=environment).split()

    def compile(self, compiler, standard, source, program, *packages):
        surface.output(compiler, *standard, CONSUMER / source, "-o", program,
                       *self.pkg_config("--cflags", "--libs", *packages), f"-Wl,-rpath,{self.libraries}")

    def check(self, folder):
        """What the two programs print, and what is then in the store."""
        self.assertEqual(surface.output(folder / "hostname", self.store, "rack-12", env={}), "rack-12\n")
        self.assertEqual(surface.output(folder / "enrol", self.store, "attic", env={}), "attic at 192.0.2.7\n")
        again = surface.output(self.installed.top / "bin/twctl", "--store", self.store, "system", "get", "hostname")
        self.assertEqual(again, "rack-12\n")

    def test_a_c11_and_a_cpp20_program_build_and_run_by_pkg_config(self):
        self.compile(surface.CC, C11, "hostname.c", self.folder / "hostname", "twobject")
        self.compile(surface.CXX, CPP20, "enrol.cpp", self.folder / "enrol", "twobject")
        self.check(self.folder)

    def build_by_cmake(self, prefix):
        tree = self.folder / "tree"
        # The build folder alone is new: nothing but the prefix may tell where the libraries are.
        surface.output("cmake", "-G", "Ninja", "-S", CONSUMER, "-B", tree, f"-DCMAKE_PREFIX_PATH={prefix}",
                       f"-DCMAKE_C_COMPILER={surface.CC}", f"-DCMAKE_CXX_COMPILER={surface.CXX}",
                       "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
        surface.output("cmake", "--build", tree)
        return tree

    def test_a_c11_and_a_cpp20_program_build_and_run_by_find_package(self):
        self.check(self.build_by_cmake(self.installed.top))

    def test_an_installation_that_was_moved_is_found_by_both(self):
        moved = self.folder / "moved"
        shutil.copytree(self.installed.top, moved, symlinks=True)
        self.libraries = moved / self.libraries.relative_to(self.installed.top)
        self.assertIn(f"-I{moved}/include", [str(pathlib.Path(word[:2] + str(pathlib.Path(word[2:]).resolve())))
                                            for word in self.pkg_config("--cflags", "twobject")])
        self.check(self.build_by_cmake(moved))

    def test_another_major_version_is_not_accepted(self):
        (self.folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(later LANGUAGES C)\nfind_package(twobject 2.0 REQUIRED)\n")
        refused = surface.run("cmake", "-G", "Ninja", "-S", self.folder, "-B", self.folder / "tree",
                              f"-DCMAKE_PREFIX_PATH={self.installed.top}")
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("compatible with requested version", " ".join(refused.stdout.split()))

    def test_each_installed_header_compiles_alone(self):
        folder = self.installed.top / "include"
        flags = self.pkg_config("--cflags", *surface.LIBRARIES)
        for compiler, language, options, pattern in ((surface.CC, "c", C11, "*.h"),
                                                     (surface.CXX, "cpp", CPP20, "*.h*")):
            headers = [path.relative_to(folder).as_posix() for path in sorted(folder.rglob(pattern))]
            self.assertGreater(len(headers), 30)
            for header in headers:
                source = self.folder / f"one.{language}"
                source.write_text(f"#include <{header}>\n")
                with self.subTest(header, language=language):
                    surface.output(compiler, *options, "-fsyntax-only", source, *flags)


if __name__ == "__main__":
    unittest.main()
