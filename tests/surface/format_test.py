"""The sources are formatted as .clang-format says, where clang-format is installed."""

import shutil
import sys
import unittest

import surface
from surface import ROOT

SKIPPED = 77  # what ctest shows as "Skipped"


class Format(unittest.TestCase):
    def test_clang_format_would_change_nothing(self):
        checked = surface.run(ROOT / "scripts/format")
        self.assertEqual(checked.returncode, 0, checked.stdout)


if __name__ == "__main__":
    if not shutil.which("clang-format") or not (ROOT / ".git").exists():
        print("skipped: clang-format is not installed, or this is no clone")
        sys.exit(SKIPPED)
    unittest.main()
