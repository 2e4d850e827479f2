"""What the tests of heatmap share: running it, small parts, and reading what it writes.

Each test file runs by itself: HEATMAP=PROGRAM HEATMAP_DATA=DIRECTORY python3 rules_test.py [NAME...]
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

HEATMAP = os.environ["HEATMAP"]
DATA = pathlib.Path(os.environ["HEATMAP_DATA"])
SINK = DATA / "heat_sink.stl"  # reaches from (-30, -25, -6) to (30, 25, 26)
BRACKET = DATA / "bracket.stl"  # a raw tessellation

MARGIN = 0.001  # by which the colours keep off the ends of the ramp


def obj_text(vertices, triangles):
    """An OBJ file; triangles are 0-based."""
    lines = ["v " + " ".join(repr(float(x)) for x in v) for v in vertices]
    lines += ["f " + " ".join(str(i + 1) for i in t) for t in triangles]
    return "\n".join(lines) + "\n"


def box_mesh(low, high):
    """The twelve triangles of a box, outward."""
    vertices = [[(low, high)[i >> axis & 1][axis] for axis in range(3)] for i in range(8)]
    quads = [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)]
    return vertices, [t for a, b, c, d in quads for t in ((a, b, c), (a, c, d))]


def merged(*meshes):
    """One mesh of several."""
    vertices, triangles = [], []
    for some, corners in meshes:
        triangles += [[i + len(vertices) for i in t] for t in corners]
        vertices += some
    return vertices, triangles


def box(low, high):
    return obj_text(*box_mesh(low, high))


class Result:
    """What heatmap wrote: the vertices, the triangles, one value per vertex, and the JSON."""

    def __init__(self, base):
        with open(f"{base}.json", encoding="utf-8") as file:
            self.json = json.load(file)
        self.vertices, shares, self.triangles = [], [], []
        with open(f"{base}.obj", encoding="utf-8") as file:
            for words in map(str.split, file):
                if words[0] == "v":
                    self.vertices.append(tuple(map(float, words[1:])))
                elif words[0] == "vt":
                    shares.append(float(words[1]))
                elif words[0] == "f":
                    self.triangles.append([int(word.split("/")[0]) - 1 for word in words[1:]])
        low, span = self.json["minimum"], self.json["maximum"] - self.json["minimum"]
        self.values = [low + span * ((1 - u) * (1 + 2 * MARGIN) - MARGIN) for u in shares]

    def at(self, predicate):
        """The values of the vertices whose coordinates satisfy the predicate."""
        return [u for p, u in zip(self.vertices, self.values) if predicate(*p)]


class Case(unittest.TestCase):
    def setUp(self):
        self.work = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.work, ignore_errors=True)

    def write(self, name, content):
        path = self.work / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def run_heatmap(self, *arguments, **settings):
        return subprocess.run([HEATMAP, *map(str, arguments)], cwd=self.work, capture_output=True,
                              timeout=300, check=False, **settings)

    def stdout_of(self, *arguments):
        """Runs heatmap, which must succeed, and returns what it printed."""
        done = self.run_heatmap(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout.decode()

    def solve(self, part, *arguments):
        """The result for the part; what was printed is its `stdout`, warnings its `stderr`."""
        done = self.run_heatmap(part, "--out", "out", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        name = arguments[arguments.index("--name") + 1] if "--name" in arguments else "heatmap"
        result = Result(self.work / "out" / name)
        result.stdout, result.stderr = (said.decode(errors="replace") for said in (done.stdout, done.stderr))
        return result

    def line(self, result, stage):
        """The line of a stage in what was printed."""
        found = re.search(f"^{stage} .*$", result.stdout, re.M)
        self.assertIsNotNone(found, result.stdout)
        return found[0]

    def refuses(self, status, words, *arguments, **settings):
        """heatmap exits with the status and says the words, a regular expression, in one line; if the
        command line is at fault also where help is. Nothing is written."""
        done = self.run_heatmap(*arguments, **settings)
        said = done.stderr.decode(errors="replace")
        self.assertEqual(done.returncode, status, said)
        lines = [line for line in said.splitlines() if not line.startswith("heatmap: warning: ")]
        self.assertRegex(lines[0], f"^heatmap: .*{words}")
        self.assertEqual(len(lines), 2 if status == 2 else 1, said)
        self.assertFalse((self.work / "o").exists(), "a refusal left results")
        return done

    def refuses_at_once(self, status, words, *arguments, **settings):
        """The same, before any work is done."""
        done = self.refuses(status, words, *arguments, **settings)
        self.assertEqual(done.stdout, b"")
