"""Finds the public headers of the libraries and the functions that they declare."""

import pathlib
import re
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parent.parent


class Function(NamedTuple):
    name: str
    line: int
    documented: bool


def public_headers(library):
    """The C headers of a library: "twobject", or the folder of a platform library such as "config"."""
    folder = ROOT / "include" if library == "twobject" else ROOT / "platform" / library / "include"
    return sorted(folder.rglob("*.h"))


def libraries():
    platform = sorted(path.parent.name for path in ROOT.glob("platform/*/include"))
    return ["twobject"] + platform


# What the text of a header is made of, as far as it matters here.
TOKEN = re.compile(
    r"""(?P<comment>/\*.*?\*/|//[^\n]*)
      | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])* | ^\w+_(?:BEGIN|END)$)
      | (?P<blank>\n(?:[ \t]*\n)+)
      | (?P<code>[^/#\n]+|.|\n)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

# A line such as /* ---- Lists ---- */ parts a header; it documents nothing.
RULER = re.compile(r"/\*\s*----.*----\s*\*/")
ATTRIBUTE = re.compile(r"__attribute__\s*\(\((?:[^()]|\([^()]*\))*\)\)")
FUNCTION_NAME = re.compile(r"(\w+)\s*\(")


def functions(text):
    """
    The functions that a C header declares. A function is documented by a comment directly above it, or directly
    above the group that it stands in: declarations without a blank line between them.
    """
    found = []
    statement = ""
    depth = 0
    line = 1
    start = 1
    documented = False
    for token in TOKEN.finditer(text):
        content = token.group()
        if token.lastgroup == "comment":
            if not statement.strip():
                documented = not RULER.fullmatch(content)
        elif token.lastgroup == "blank":
            if not statement.strip():
                documented = False
        elif token.lastgroup == "code":
            for offset, char in enumerate(content):
                if not statement.strip():
                    start = line + content.count("\n", 0, offset)
                statement += char
                if char == "{":
                    if statement.split()[:2] == ["extern", '"C"']:
                        statement = ""
                    else:
                        depth += 1
                elif char == "}":
                    depth = max(depth - 1, 0)
                    if depth == 0 and statement.strip() == "}":
                        statement = ""
                elif char == ";" and depth == 0:
                    name = declared_function(statement)
                    if name:
                        found.append(Function(name, start, documented))
                    statement = ""
        line += content.count("\n")
    return found


def declared_function(statement):
    """The name of the function that a statement declares, or None when it declares something else."""
    statement = ATTRIBUTE.sub(" ", statement)
    words = statement.split()
    if not words or words[0] in ("typedef", "struct", "enum", "union", "static") or "(" not in statement:
        return None
    return FUNCTION_NAME.search(statement).group(1)


def declared(library):
    """The names of all functions that the public headers of a library declare."""
    return {function.name for header in public_headers(library) for function in functions(header.read_text())}
