"""The programs of examples/part, on parts of a CAD system, far from zero, and on files that are none.

PART_C=PROGRAM PART_CPP=PROGRAM PART_DATA=DIRECTORY PART_RAMP=IMAGE python3 part_test.py [NAME...]
"""

import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

PROGRAMS = [os.environ["PART_C"], os.environ["PART_CPP"]]
DATA = pathlib.Path(os.environ["PART_DATA"])
RAMP = os.environ["PART_RAMP"]


def triangles_of(stl):
    return [t[3:12] for t in struct.iter_unpack("<12fH", stl.read_bytes()[84:])]


def text_of(triangles, margin="   ", end="\n"):
    lines = ["solid any name"]
    for t in triangles:
        lines += ["facet normal 0 0 0", margin + "outer loop"]
        lines += [f"{margin}vertex {t[k]!r} {t[k + 1]!r} {t[k + 2]!r}" for k in (0, 3, 6)]
        lines += [margin + "endloop", "endfacet"]
    return end.join([*lines, "endsolid", ""])


def binary_of(triangles):
    return bytes(80) + struct.pack("<I", len(triangles)) + b"".join(struct.pack("<12fH", 0, 0, 0, *t, 0) for t in triangles)


def moved(triangles, place):
    return [[x + place[k % 3] for k, x in enumerate(t)] for t in triangles]


class Part(unittest.TestCase):
    def setUp(self):
        self.work = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.work)

    def run_part(self, program, *arguments):
        return subprocess.run([program, *map(str, arguments)], cwd=self.work, capture_output=True, text=True, check=False)

    def results(self, stl):
        """What both programs write, which must be the same, and what was said."""
        written = []
        for program in PROGRAMS:
            done = self.run_part(program, stl, RAMP)
            self.assertEqual(done.returncode, 0, done.stderr)
            written.append([(self.work / f"part.{ending}").read_bytes() for ending in ("obj", "mtl", "json")])
        self.assertEqual(written[0], written[1])
        self.assertTrue((self.work / "viridis.PNG").stat().st_size)
        return written[0][0].decode(), json.loads(written[0][2]), done.stdout

    def numbers(self, obj, kind, count):
        return [tuple(map(float, line.split()[1:1 + count])) for line in obj.splitlines() if line.startswith(kind + " ")]

    def test_hot_where_x_is_least_and_cold_where_it_is_largest(self):
        for name in ("bracket", "fins"):
            obj, legend, said = self.results(DATA / f"{name}.stl")
            x = [p[0] for p in self.numbers(obj, "v", 3)]
            shares = [u[0] for u in self.numbers(obj, "vt", 2)]
            self.assertEqual(re.match(r"part.obj: (\d+) vertices, (\d+) triangles", said).groups(),
                             (str(len(x)), str(obj.count("\nf "))))
            self.assertEqual(len(x), len(shares))
            # A thousandth off the ends of the ramp.
            self.assertTrue(all(0.00099 <= u <= 0.99901 for u in shares))
            low, high = min(x), max(x)
            self.assertTrue(all(u <= 0.001 for p, u in zip(x, shares) if p == low))
            self.assertTrue(all(u >= 0.999 for p, u in zip(x, shares) if p == high))
            self.assertEqual((legend["minimum"], legend["maximum"], legend["origin"]), (30, 80, [0, 0, 0]))

    def test_text_is_the_same_part_whatever_its_blanks(self):
        expected = self.results(DATA / "fins.stl")
        for margin, end in (("   ", "\n"), ("\t", "\r\n")):
            (self.work / "text.stl").write_text(text_of(triangles_of(DATA / "fins.stl"), margin, end), newline="")
            self.assertEqual(self.results("text.stl"), expected)

    def test_a_part_far_from_zero_keeps_its_vertices(self):
        fins = triangles_of(DATA / "fins.stl")
        near = [[x / 1000 for x in t] for t in fins]  # metres
        (self.work / "near.stl").write_text(text_of(near))
        (self.work / "far.stl").write_text(text_of(moved(near, (500000, 4649776, -7000))))
        expected, _, _ = self.results("near.stl")
        obj, legend, _ = self.results("far.stl")
        vertices = self.numbers(obj, "v", 3)
        self.assertEqual(len(set(vertices)), len(set(self.numbers(expected, "v", 3))))
        for axis, place in enumerate((500000, 4649776, -7000)):
            low = min(x for t in near for x in t[axis::3])
            self.assertAlmostEqual(min(p[axis] for p in vertices) + legend["origin"][axis], low + place, delta=1e-6)

    def test_single_precision_far_from_zero_is_refused(self):
        near = [[x / 1000 for x in t] for t in triangles_of(DATA / "fins.stl")]
        (self.work / "far.stl").write_bytes(binary_of(moved(near, (500000, 4649776, 0))))
        self.refuses("far.stl", "most triangles have no area: export the part again, near zero or as text")

    def refuses(self, name, words):
        for program in PROGRAMS:
            done = self.run_part(program, name, RAMP)
            self.assertEqual(done.returncode, 1, name)
            self.assertRegex(done.stderr, f"^part: {words}.*\n$", name)
        self.assertEqual(list(self.work.glob("part.*")), [])

    def test_files_that_are_no_part(self):
        bracket, text = (DATA / "bracket.stl").read_bytes(), text_of(triangles_of(DATA / "fins.stl"))
        for name, content, words in [
                ("missing", None, "cannot open the part"), ("short", bracket[:3000], "the part is not an STL file"),
                ("head", bracket[:84], "the part is not an STL file"), ("none", bytes(84), "the part is not an STL file"),
                ("words", b"solid of words\n", "the part is not an STL file"), ("empty", b"", "the part is not an STL file"),
                ("cut", "\n".join(text.split("\n")[:700]).encode(), "the part is not an STL file, or damaged"),
                ("letters", re.sub("vertex .*", "vertex 1 2 x", text, count=1).encode(), "the part is damaged: a number"),
                ("nan", re.sub(r"vertex \S+", "vertex nan", text, count=1).encode(), "the part is damaged: a ")]:
            with self.subTest(name):
                if content is not None:
                    (self.work / f"{name}.stl").write_bytes(content)
                self.refuses(f"{name}.stl", words)

    def test_says_what_it_wants(self):
        for program in PROGRAMS:
            done = self.run_part(program, "words.stl")
            self.assertEqual(done.returncode, 1)
            self.assertIn("usage", done.stderr)


if __name__ == "__main__":
    unittest.main()
