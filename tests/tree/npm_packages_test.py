#!/usr/bin/python3
"""npm packages are those that somebody looked at: locked, with a checksum, and without scripts of their own.
npm_packages_test.py REPOSITORY"""

import json
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop())
LISTS = [path for folder in ("benchmarks", "bindings", "tools", "docs", "scripts", "plugins", "tests")
         for path in (ROOT / folder).rglob("package.json") if "node_modules" not in path.parts]
SCRIPTS = [path for path in (ROOT / "scripts").rglob("*") if path.is_file()]
INSTALLS = re.compile(r"\bnpm\s+(?:install|i|ci|add|update)\b.*|\bnpx\s.*")


class NpmPackages(unittest.TestCase):
    def test_are_locked_with_a_checksum_each(self):
        wanted = [path for path in LISTS
                  if {"dependencies", "devDependencies"} & json.loads(path.read_text()).keys()]
        self.assertGreaterEqual(len(wanted), 2)
        for path in wanted:
            lock = json.loads(path.with_name("package-lock.json").read_text())["packages"]
            own = json.loads(path.read_text())
            for kind in ("dependencies", "devDependencies"):
                self.assertEqual(lock[""].get(kind), own.get(kind), path)
                for version in own.get(kind, {}).values():
                    self.assertRegex(version, r"^[0-9.]+$", path)
            for name, package in lock.items():
                if name:
                    self.assertRegex(package.get("integrity", ""), r"^sha512-", f"{path}: {name}")

    def test_are_installed_as_locked_and_without_scripts(self):
        commands = [(path, command) for path in SCRIPTS for command in INSTALLS.findall(path.read_text())]
        self.assertGreaterEqual(len(commands), 2)
        for path, command in commands:
            self.assertRegex(command, r"^npm ci .*--ignore-scripts", path)


if __name__ == "__main__":
    unittest.main()
