"""An installation of the tested build, in a directory that is gone after the test."""

import pathlib
import os
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "surface"))

import surface  # noqa: E402  tests/surface/surface.py
from surface import BUILD, ROOT  # noqa: E402,F401


class Installation:
    """`root` is what an installed system would call "/", `prefix` is a path in it."""

    def __init__(self, prefix, staged):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name).resolve() if staged else pathlib.Path("/")
        self.prefix = prefix if staged else str(pathlib.Path(self.folder.name).resolve() / prefix.lstrip("/"))
        environment = dict(os.environ, DESTDIR=str(self.root) if staged else "")
        surface.output("cmake", "--install", BUILD, "--strip", "--prefix", self.prefix, env=environment)
        self.top = self.root / self.prefix.lstrip("/")

    def close(self):
        self.folder.cleanup()

    def files(self):
        """Every file, as a path below the prefix."""
        return sorted(path.relative_to(self.top).as_posix() for path in self.top.rglob("*") if not path.is_dir())


def staged():
    """An installation as a package is made: into DESTDIR, for the prefix /usr."""
    return Installation("/usr", staged=True)


def in_place():
    """An installation that is used where it was put, in a directory of one's own."""
    return Installation("/tw", staged=False)
