"""Finds the public headers of the libraries and the functions that they declare."""

import pathlib
import re
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parent.parent


class Declaration(NamedTuple):
    name: str | None  # of the function that is declared
    line: int
    statement: str  # as it is written
    start: int  # where it begins in the text of the header
    doc: re.Match | None  # the comment that documents it, by itself or with the group that it stands in

    @property
    def documented(self):
        return self.doc is not None


def public_headers(library):
    """The C headers of a library: "twobject", or the folder of a platform library such as "config"."""
    folder = ROOT / "include" if library == "twobject" else ROOT / "platform" / library / "include"
    return sorted(folder.rglob("*.h"))


def include_folders():
    """The folders that the names in #include lines begin at."""
    return [ROOT / "include"] + sorted(ROOT.glob("platform/*/include"))


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
    """The functions that a C header declares."""
    return [declaration for declaration in declarations(text) if declaration.name]


def declarations(text):
    """
    What a C header declares. A declaration is documented by a doc block, a comment that begins with two stars,
    directly above it or directly above the group that it stands in: declarations without a blank line between
    them.
    """
    found = []
    statement = ""
    depth = 0
    line = 1
    start = 1
    begin = 0
    doc = None
    for token in TOKEN.finditer(text):
        content = token.group()
        if token.lastgroup == "comment":
            if not statement.strip():
                doc = token if content.startswith("/**") else None
        elif token.lastgroup == "blank":
            if not statement.strip():
                doc = None
        elif token.lastgroup == "code":
            for offset, char in enumerate(content):
                if not statement.strip():
                    start = line + content.count("\n", 0, offset)
                    begin = token.start() + offset
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
                    found.append(Declaration(declared_function(statement), start, statement, begin, doc))
                    statement = ""
        line += content.count("\n")
    return found


def outer_comments(text):
    """The comments that stand between declarations, not within one."""
    depth = 0
    inside = False
    for token in TOKEN.finditer(text):
        if token.lastgroup == "code":
            code = token.group().replace('extern "C" {', "")
            depth = max(depth + code.count("{") - code.count("}"), 0)
            inside = code.strip() != "" and not code.rstrip().endswith((";", "}")) or inside and not code.strip()
        elif token.lastgroup == "comment" and depth == 0 and not inside:
            yield token


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
