#!/usr/bin/env python3
"""Prints a public header as doxygen wants to read it. The headers are written for people who read them as they are:

- the remark at the top, and every other that stands by itself, becomes the description of the file
- a ruler, /* ---- Lists ---- */, becomes the heading of a section
- the doc block of a group of declarations is repeated for each, with the parameters that this one has
- what documents several members that share a line is repeated, too
- the marks of the C interface are left out

usage: scripts/doxygen_filter.py HEADER
"""

import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import headers

# Marks of the C interface, in lines that are no directives.
LINE = re.compile(r"^(?![ \t]*#).*$", re.MULTILINE)
MARK = re.compile(r"\b[A-Z]+_(?:API|NOEXCEPT)\b|^\w+_(?:BEGIN|END)$|" + headers.ATTRIBUTE.pattern)
PARAMETER = re.compile(r"^ \* @param (\w+)(?:.*\n)(?: \*(?! @).*\n)*", re.MULTILINE)
# Members that share a line, and what documents them.
MEMBERS = re.compile(r"^( +[\w ]+ )(\*\w+(?:, \*\w+)+);( */\*\*<.*\*/)$", re.MULTILINE)
# Numbers of a list, which stand right-aligned.
NUMBER = re.compile(r"^ \* +(\d+\. )", re.MULTILINE)


def one_by_one(members):
    kind, names, doc = members.groups()
    return "\n".join(f"{kind}{name};{doc}" for name in names.split(", "))


def rewritten(code):
    """What stands between the comments that are replaced."""
    return MEMBERS.sub(one_by_one, LINE.sub(lambda line: MARK.sub("", line.group()), code))


def doc_for(declaration, group):
    """The doc block of a declaration, without the parameters that only others of its group have."""
    def kept(parameter):
        word = re.compile(rf"\b{parameter.group(1)}\b")
        elsewhere = any(word.search(other.statement) for other in group)
        return "" if elsewhere and not word.search(declaration.statement) else parameter.group()
    return PARAMETER.sub(kept, declaration.doc.group())


def heading(ruler):
    return f"/** @name {ruler.strip('/*- ')} */\n/** @{{ */"


def edits(text):
    """What is to be replaced: (start, end, what stands there instead)."""
    groups = {}
    for declaration in headers.declarations(text):
        if declaration.documented:
            groups.setdefault(declaration.doc.span(), []).append(declaration)
    for (start, end), group in groups.items():
        yield start, end, doc_for(group[0], group)
        for declaration in group[1:]:
            yield declaration.start, declaration.start, doc_for(declaration, group) + "\n"

    section = False
    for comment in headers.outer_comments(text):
        remark = comment.group()
        if headers.RULER.fullmatch(remark):
            yield comment.start(), comment.end(), ("/** @} */\n" if section else "") + heading(remark)
            section = True
        elif not remark.startswith("/**"):
            yield comment.start(), comment.end(), "/** @file\n *" + NUMBER.sub(r" * \1", remark[2:])
    if section:
        yield len(text), len(text), "/** @} */\n"


def for_doxygen(text):
    result = ""
    position = 0
    for start, end, instead in sorted(edits(text)):
        result += rewritten(text[position:start]) + instead
        position = end
    return result + rewritten(text[position:])


if __name__ == "__main__":
    sys.stdout.write(for_doxygen(pathlib.Path(sys.argv[1]).read_text()))
