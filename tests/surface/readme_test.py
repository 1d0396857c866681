"""Runs every code block of the README as a reader would paste it.

The word behind a fence says what a block is:

    ```c FILE      a source: written to FILE
    ```sh          commands: run in the order of the page, in one directory and one shell environment
    ```text        what the commands right above it print, to the letter
"""

import pathlib
import re
import shlex
import tempfile
import unittest

import surface
from surface import BUILD, ROOT

BLOCK = re.compile(r"^```([^\n]*)\n(.*?)^```[ \t]*$", re.MULTILINE | re.DOTALL)
README = ROOT / "README.md"


def blocks(text):
    return [(info.split(), body) for info, body in BLOCK.findall(text)]


class Page:
    """Follows a page in a directory that looks like a fresh clone whose build is the one that is tested."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.home = self.folder / "home"
        self.clone = self.folder / "clone"
        self.environment = self.folder / "environment"
        self.home.mkdir()
        (self.clone / "build").mkdir(parents=True)
        (self.clone / "scripts").symlink_to(ROOT / "scripts")
        (self.clone / "build/release").symlink_to(BUILD)
        self.environment.write_text("")
        self.printed = ""

    def follow(self, info, body):
        if info[:1] == ["c"] and len(info) == 2:
            (self.clone / info[1]).write_text(body)
        elif info == ["sh"]:
            self.printed = self.shell(body)
        elif info == ["text"]:
            if self.printed != body:
                raise AssertionError(f"the page promises\n{body}\nbut this is printed\n{self.printed}")
        else:
            raise AssertionError(f"a block that nobody runs: ```{' '.join(info)}")

    def shell(self, commands):
        """Runs commands; exported variables stay for the next block."""
        kept = shlex.quote(str(self.environment))
        script = f"set -e\n. {kept}\n{commands}\nexport -p > {kept}\n"
        variables = {"HOME": str(self.home), "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin", "NO_COLOR": "1"}
        return surface.output("bash", "-c", script, cwd=self.clone, env=variables)


class Readme(unittest.TestCase):
    maxDiff = None

    def test_every_block_does_what_the_page_says(self):
        page_blocks = blocks(README.read_text())
        self.assertGreaterEqual(len(page_blocks), 3)
        with tempfile.TemporaryDirectory() as folder:
            page = Page(folder)
            for info, body in page_blocks:
                page.follow(info, body)

    def test_every_script_and_page_it_names_is_there(self):
        text = README.read_text()
        names = re.findall(r"`(scripts/[\w-]+)", text) + re.findall(r"\]\(([^)#:]+)\)", text)
        self.assertGreater(len(names), 3)
        self.assertEqual([name for name in names if not (ROOT / name).exists()], [])


class FollowedPages(unittest.TestCase):
    """That a page which promises what is not so is noticed."""

    def follow(self, text):
        with tempfile.TemporaryDirectory() as folder:
            page = Page(folder)
            for info, body in blocks(text):
                page.follow(info, body)

    def test_a_command_that_fails_is_noticed(self):
        with self.assertRaises(AssertionError):
            self.follow("```sh\nfalse\ntrue\n```\n")

    def test_other_output_than_promised_is_noticed(self):
        self.follow("```sh\necho one\n```\n```text\none\n```\n")
        with self.assertRaises(AssertionError):
            self.follow("```sh\necho one\n```\n```text\ntwo\n```\n")

    def test_a_program_that_does_not_compile_is_noticed(self):
        with self.assertRaises(AssertionError):
            self.follow("```c bad.c\nint main(void) { return missing(); }\n```\n```sh\ncc -Werror bad.c\n```\n")

    def test_a_block_of_an_unknown_kind_is_refused(self):
        with self.assertRaises(AssertionError):
            self.follow("```python\npass\n```\n")

    def test_exported_variables_stay_for_the_next_block(self):
        self.follow("```sh\nexport GREETING=hello\n```\n```sh\necho $GREETING\n```\n```text\nhello\n```\n")


if __name__ == "__main__":
    unittest.main()
