"""What the tests of the shipped surface share: where things are, and how a program is run."""

import os
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import headers  # noqa: E402  scripts/headers.py

# Set by the build: the tree that is tested, and its compilers.
BUILD = pathlib.Path(os.environ.get("TW_BUILD", ROOT / "build/release"))
CC = os.environ.get("TW_CC", "cc")
CXX = os.environ.get("TW_CXX", "c++")

LIBRARIES = {
    "twobject": BUILD / "src/libtwobject.so",
    "twaction": BUILD / "platform/action/libtwaction.so",
    "twbeanstalk": BUILD / "platform/beanstalk/libtwbeanstalk.so",
    "twconfig": BUILD / "platform/config/libtwconfig.so",
    "twinfod": BUILD / "platform/infod/libtwinfod.so",
    "twlog": BUILD / "platform/log/libtwlog.so",
    "twmisc": BUILD / "platform/misc/libtwmisc.so",
}
# The folder below platform/ whose public headers belong to a library.
PLATFORM = {library: path.parent.name for library, path in LIBRARIES.items() if library != "twobject"}


def declared(library):
    return headers.declared(PLATFORM.get(library, library))


def run(*command, **options):
    """Runs a program to its end; its output is in the result's stdout."""
    return subprocess.run([str(part) for part in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False, **options)


def output(*command, **options):
    """The output of a program that must succeed."""
    result = run(*command, **options)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {result.returncode}:\n{result.stdout}")
    return result.stdout


def include_options():
    folders = [ROOT / "include"] + sorted(ROOT.glob("platform/*/include"))
    return [f"-I{folder}" for folder in folders]
