"""The field, how exact it is, and what is said of that."""

import math
import re
import subprocess
import unittest

from case import BRACKET, HEATMAP, Case, box_mesh, merged, obj_text

BOX = box_mesh((0, 0, 0), (10, 8, 4))


def ring(inner, outer, sides=360):
    """A flat ring in z = 0, of two triangles per side, as a CAD system would draw it."""
    vertices = [(r * math.cos(2 * math.pi * k / sides), r * math.sin(2 * math.pi * k / sides), 0)
                for r in (inner, outer) for k in range(sides)]
    triangles = []
    for a in range(sides):
        b = (a + 1) % sides
        triangles += [(a, a + sides, b + sides), (a, b + sides, b)]
    return vertices, triangles


class Within(Case):
    def setUp(self):
        super().setUp()
        self.write("ring.obj", obj_text(*ring(1, 10)))
        self.write("box.obj", obj_text(*BOX))

    def ring_error(self, result, low=0.0, high=1.0):
        """The largest difference from the logarithm, at all vertices. That of the polygons is 1e-4 of the span."""
        exact = [high - (high - low) * math.log(math.hypot(x, y)) / math.log(10) for x, y, _ in result.vertices]
        return max(abs(a - b) for a, b in zip(exact, result.values))

    def test_error_is_that_of_a_known_field(self):
        for arguments, tolerance in [([], 0.01), (["--within", "0.2%"], 0.002), (["--within", "0.05"], 0.05)]:
            with self.subTest(arguments):
                result = self.solve("ring.obj", "--hot", "edge:1,0,0", "--cold", "edge:10,0,0", *arguments)
                self.assertLessEqual(result.json["error"], tolerance)
                self.assertLessEqual(self.ring_error(result), result.json["error"] + 2e-4)
                self.assertEqual(result.stderr, "")

    def test_tolerances_and_errors_are_in_the_unit_of_the_field(self):
        for within, tolerance in [("0.3", 0.3), ("0.5%", 0.3), ("0.5 %", 0.3)]:
            result = self.solve("ring.obj", "--hot", "edge:1,0,0=80", "--cold", "edge:10,0,0=20", "--unit", "°C",
                                "--within", within)
            self.assertLessEqual(result.json["error"], tolerance)
            self.assertGreater(result.json["error"], tolerance / 100)
            self.assertLessEqual(self.ring_error(result, 20, 80), result.json["error"] + 0.01)
            said = float(re.search("temperature from 20 to 80 °C, ± ([0-9.]+) °C$", result.stdout, re.M)[1])
            self.assertGreaterEqual(said, result.json["error"])
            self.assertLess(said, 1.1 * result.json["error"])

    def test_the_error_is_that_of_the_file(self):
        """A field that is linear on each triangle is solved exactly, but its values have six digits as text."""
        arguments = ("box.obj", "--hot", "x+=1", "--cold", "x-=0")
        for more, span in [([], 1), (["--range", "-50", "50"], 100)]:
            result = self.solve(*arguments, *more)
            self.assertGreaterEqual(result.json["error"], 5e-7 * span)
            self.assertLess(result.json["error"], 6e-7 * span)
        self.refuses_at_once(2, "--within asks for 5e-05, and the six digits of the values in the file may be off by 5.1e-05: "
                             "give a larger tolerance", *arguments, "--out", "o", "--range", "-50", "50", "--within", "5e-5")

    def test_degenerate_triangles_that_must_stay(self):
        """Three triangles at one edge, one of them without height: dropping it would open a crack."""
        self.write("fan.obj", obj_text([(4, 1e-6, 0), (3, 0, 0), (3, 1e-6, 0), (4, 0, 0), (4, 2e-6, 0)],
                                       [(0, 4, 3), (3, 4, 1), (4, 3, 2), (2, 3, 1)]))
        arguments = ("fan.obj", "--tolerance", "0", "--hot", "edge:3,0,0", "--cold", "edge:4,1e-6,0", "--out", "o")
        left = r"cleaning left 1 degenerate triangle, the first at \(4, 1e-06, 0\), because .* crack"
        self.refuses(1, left + ", and with them no error can be estimated: repair the part there, .* larger --tolerance",
                     *arguments)
        done = self.run_heatmap(*arguments, "--edge", "none")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stderr.decode(), f"warning: {left}; the field near them may be wrong: repair the part there")
        self.assertRegex(done.stdout.decode(), "clean +dropped 1 degenerate triangle ")

    def test_values_are_whole_and_inside_their_range(self):
        result = self.solve(BRACKET, "--hot", "x+", "--cold", "face:0,25,30", "--within", "2%")
        text = (self.work / "out/heatmap.json").read_text()
        self.assertIn('"minimum": 0,', text)
        self.assertIn('"maximum": 1,', text)
        self.assertGreaterEqual(min(result.values), -1e-6)
        self.assertLessEqual(max(result.values), 1 + 1e-6)
        self.assertLess(max(result.at(lambda x, y, z: x == 0)), 1e-5)

    def test_what_is_prescribed_belongs_to_the_part(self):
        """However often the mesh is refined, the region stays."""
        result = self.solve("box.obj", "--hot", "ball:5,4,4,1=3", "--cold", "edge:10,4,0", "--within", "1%")
        inside = result.at(lambda x, y, z: math.hypot(x - 5, y - 4) < 0.999 and z == 4)
        self.assertGreater(len(inside), 100)
        self.assertGreater(min(inside), 3 - 1e-5)
        self.assertLess(max(result.at(lambda x, y, z: math.hypot(x - 5, y - 4) > 1.05 or z < 4)), 3 - 1e-2)

    def test_a_limit_that_comes_first(self):
        result = self.solve("ring.obj", "--hot", "edge:1,0,0", "--cold", "edge:10,0,0", "--within", "1e-6",
                            "--triangle-limit", "20000")
        self.assertLessEqual(len(result.triangles), 20000)
        self.assertGreater(result.json["error"], 1e-6)
        self.assertLessEqual(self.ring_error(result), result.json["error"] + 2e-4)
        self.assertRegex(result.stderr, "^heatmap: warning: the error is [0-9.e-]+, not within 1e-06: the next mesh would have "
                         "more triangles than --triangle-limit 20000. Give a larger --within or --triangle-limit, or larger regions\n$")

    def test_regions_that_touch(self):
        """Along an edge, and at a point of two edges."""
        for hot, cold, first in [("face:5,4,4", "face:5,0,2", r"\(0, 0, 4\)"), ("edge:5,0,4", "edge:10,4,4", r"\(10, 0, 4\)")]:
            with self.subTest(hot):
                result = self.solve("box.obj", "--hot", hot, "--cold", cold)
                where = f"within 0.1342 of where regions of different values touch, first at {first}"
                self.assertRegex(result.stderr, f"^heatmap: warning: nothing is promised {where}: no continuous field has both "
                                 "values there; keep the regions apart\n$")
                self.assertRegex(result.json["errorExcept"], f"^{where}$")
                self.assertRegex(result.stdout, f", ± [0-9.e-]+, except {where}")
                self.assertLessEqual(result.json["error"], 0.01)
        edges = self.solve("box.obj", "--hot", "face:5,4,4", "--cold", "face:5,0,2", "--edge", "1")
        self.assertRegex(edges.stderr, r"^heatmap: warning: nothing is promised near where regions of different values touch, "
                         r"first at \(0, 0, 4\): no continuous field has both values there; keep the regions apart\n$")
        where_both_are = edges.at(lambda x, y, z: y == 0 and z == 4)
        self.assertEqual([u for u in where_both_are if abs(u - 0.5) > 1e-3], [])
        self.assertGreater(len(where_both_are), 10)
        apart = self.solve("box.obj", "--hot", "face:5,4,4", "--cold", "face:5,4,0")
        self.assertNotIn("errorExcept", apart.json)

    def test_solving_on_edges_claims_no_error(self):
        result = self.solve("ring.obj", "--hot", "edge:1,0,0", "--cold", "edge:10,0,0", "--edge", "0.2")
        self.assertNotIn("error", result.json)
        self.assertIn("temperature from 0 to 1; no error is estimated with --edge\n", result.stdout)

    def test_the_default_is_the_same_bits_twice(self):
        files = []
        for name in ("one", "two"):
            self.solve(BRACKET, "--hot", "x+", "--cold", "ball:4,25,45,6", "--name", name)
            files.append((self.work / f"out/{name}.obj").read_bytes().replace(name.encode(), b""))
        self.assertEqual(*files)

    def test_many_triangles_are_said_before_the_wait(self):
        n = 520
        vertices = [(i, j, 0) for j in range(n) for i in range(n)]
        corners = [j * n + i for j in range(n - 1) for i in range(n - 1)]
        self.write("plate.obj", obj_text(vertices, [t for c in corners for t in ((c, c + 1, c + n), (c + 1, c + n + 1, c + n))]))
        with subprocess.Popen([HEATMAP, "plate.obj", "--out", "o"], cwd=self.work, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True) as process:
            said = process.stderr.readline()
            process.kill()
        self.assertRegex(said, "^heatmap: warning: the part has 0.54 million triangles, and solving within a tolerance takes four "
                         "times as many at least, .*: --edge none solves on them as they are\n$")


class Cuts(Case):
    """Borders of bodies leave triangles that can be solved on, wherever they are."""

    def test_bodies_anywhere_on_a_part(self):
        sink = merged(BOX, box_mesh((12, 1, 1), (15, 3, 3)))
        self.write("two.obj", obj_text(*sink))
        for k in range(12):
            x, y, r = 0.37 * k + 1, 0.53 * k + 1, 0.2 + 0.17 * k
            rules = [f"ball:{x},{y},4,{r}", f"box:{x},{y},3,{x + r},{y + r},5", f"cyl:{x},{y},4,{x + r},{y},4,{r / 2}",
                     f"plane:{x},{y},2,0.05,{0.02 * k},1"]
            with self.subTest(rules[k % 4]):
                result = self.solve("two.obj", "--hot", rules[k % 4] + "=2", "--cold", "face:5,4,0", "--cold",
                                    "face:13,2,1", "--hot", "face:13,2,3", "--within", "2%")
                self.assertLessEqual(result.json["error"], 0.04)


if __name__ == "__main__":
    unittest.main()
