#!/usr/bin/python3
"""The index of functions names what there is: every function of the headers in C, and in the other languages
names that a caller can use. functions_test.py REPOSITORY"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop())
ROWS = [[re.findall(r"`([^`]+)`", cell) for cell in line.strip("|\n").split("|")]
        for line in (ROOT / "docs/functions.md").read_text().splitlines() if line.startswith("| `")]
KIT = [row for row in ROWS if len(row) == 4]


def text_of(*patterns):
    return "\n".join(path.read_text() for pattern in patterns for path in sorted(ROOT.glob(pattern)))


class Functions(unittest.TestCase):
    def expect(self, pattern, text, name):
        self.assertTrue(re.search(pattern, text, re.MULTILINE), f"{name} of docs/functions.md is nowhere")

    def test_in_c_are_those_of_the_headers(self):
        header = text_of("include/quorkit.h", "include/quor.h")
        declared = set(re.findall(r"QUOR(?:KIT)?_API[^;]*?\b(\w+)\s*\([^;]*\)\s*(?:QUOR\w+\s*)?;", header))
        self.assertGreater(len(declared), 30)
        self.assertEqual(declared, {name for row in ROWS for name in row[0]})

    def test_in_cpp_are_declared(self):
        header = text_of("include/*.hpp")
        for row in ROWS:
            for name in row[1]:
                *_, last = name.split("::")
                self.expect(rf"^(?:class|struct) {last}\b|^ *(?:inline )?[\w:<>, ]+ {last}\(", header, name)

    def test_in_python_are_exported(self):
        package = text_of("bindings/python/quor/*.py")
        exported = re.search(r"__all__ = \[(.*?)\]", package, re.DOTALL)[1]
        for row in KIT:
            for name in row[2]:
                first, _, method = re.sub(r"\(.*", "", name).partition(".")
                if first in ("OSError", "with"):  # Python's own
                    continue
                self.assertIn(f'"{first}"', exported, name)
                self.expect(rf"\bdef {method}\(" if method else rf"^(?:def|class) {first}\(", package, name)

    def test_in_c_sharp_are_public(self):
        source = text_of("bindings/csharp/*.cs")
        for row in KIT:
            for name in row[3]:
                if name in ("ArgumentException", "using"):  # of .NET
                    continue
                kind, _, member = name.partition(".")
                self.expect(rf"public (?:sealed |static |partial )*class {kind}\b", source, name)
                if member:
                    self.expect(rf"public [\w<>\[\] ]+ {member}\b *[({{=]", source, name)


if __name__ == "__main__":
    unittest.main()
