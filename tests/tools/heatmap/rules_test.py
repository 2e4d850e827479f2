"""Which vertices are hot and cold."""

import re
import unittest

from case import BRACKET, SINK, Case, obj_text

TWO = obj_text([(0, 0, 0), (1, 0, 0), (0, 1, 0), (9, 0, 0), (8, 0, 0), (9, 1, 0)], [(0, 1, 2), (3, 4, 5)])
ROOF = obj_text([(0, -1, 0), (0, 1, 0), (4, -1, 0), (4, 1, 0), (0, 0, 3), (4, 0, 3)],
                [(0, 2, 5), (0, 5, 4), (1, 4, 5), (1, 5, 3), (0, 4, 1), (2, 3, 5)])
# A flat one with a small top whose corners reach into its sides.
WEDGE = obj_text([(0, 0, 0), (60, 0, 0), (60, 40, 0), (0, 40, 0),
                  (20, 10, 20), (30, 10, 20), (30, 15, 20), (20, 15, 20)],
                 [(0, 2, 1), (0, 3, 2), (4, 5, 6), (4, 6, 7), (0, 1, 5), (0, 5, 4), (1, 2, 6), (1, 6, 5),
                  (2, 3, 7), (2, 7, 6), (3, 0, 4), (3, 4, 7)])


class Missing(Case):
    def test_sides_without_a_rule_get_the_other_end(self):
        for chosen, arguments in [(r"hot \(x-\), .* cold \(x\+\)", []),
                                  (r"cold \(z-\)", ["--hot", "z+"]),
                                  (r"hot \(y\+\)", ["--cold", "y-:0.1"]),
                                  (r"cold \(x-\)", ["--hot", "ball:30,0,0,5"])]:
            with self.subTest(arguments):
                self.assertRegex(self.line(self.solve(SINK, *arguments), "tag"), chosen)


class Refusals(Case):
    def test_rules_that_select_nothing(self):
        self.refuses(1, r"selects no vertex: the part reaches from \(-30, -25, -6\) to \(30, 25, 26\)", SINK,
                     "--out", "o", "--hot", "ball:900,0,0,1")

    def test_rules_that_overlap(self):
        self.refuses(1, r'"x\+" \(hot\) and "x\+:0.5" \(cold\) both select the vertex at \(', SINK, "--out", "o",
                     "--hot", "x+", "--cold", "x+:0.5")
        self.refuses(1, r'"x-:1" \(hot\) and "x\+" \(cold, taken because there is no --cold\) both select', SINK,
                     "--out", "o", "--hot", "x-:1")

    def test_pieces_without_a_value(self):
        self.write("two.obj", TWO)
        self.refuses(1, r"loose piece at \(9, 0, 0\) has neither", "two.obj", "--out", "o",
                     "--hot", "nearest:0,0,0", "--cold", "nearest:1,0,0")
        self.solve("two.obj", "--largest", "--hot", "nearest:0,0,0", "--cold", "nearest:1,0,0")


class Refining(Case):
    """What is prescribed belongs to the part, and does not depend on how fine the mesh is."""

    def triangles(self, *arguments):
        self.result = self.solve(BRACKET, *arguments)
        return len(self.result.triangles)

    def test_edge_lengths(self):
        before = self.triangles("--edge", "none")
        self.assertEqual(before, int(re.search(r"(\d+) triangles", self.line(self.result, "read"))[1]))
        self.assertGreater(self.triangles(), 2 * before)
        self.assertIn("1/32 of the diagonal", self.line(self.result, "refine"))
        self.assertGreater(self.triangles("--edge", "2"), 3 * before)
        self.assertIn("edges up to 2 ", self.line(self.result, "refine"))
        self.refuses(1, "more triangles than fit", BRACKET, "--out", "o", "--edge", "1e-9")

    def test_the_ridge_of_a_roof_is_a_line(self):
        self.write("roof.obj", ROOF)
        for edge, least in (("none", 2), ("0.5", 9)):
            result = self.solve("roof.obj", "--hot", "z+", "--cold", "z-", "--edge", edge)
            ridge = result.at(lambda x, y, z: z == 3)
            self.assertGreaterEqual(len(ridge), least)
            self.assertGreater(min(ridge), 1 - 1e-5)
            self.assertLess(max(result.at(lambda x, y, z: z < 3)), 1 - 1e-3)

    def test_field_is_that_of_a_finer_mesh(self):
        self.write("wedge.obj", WEDGE)
        coarse, fine = (self.solve("wedge.obj", "--hot", "z+", "--cold", "z-", "--edge", edge)
                        for edge in ("2.32", "0.58"))
        there = dict(zip(fine.vertices, fine.values))
        common = [abs(there[p] - u) for p, u in zip(coarse.vertices, coarse.values) if p in there]
        self.assertGreater(len(common), 100)
        self.assertLess(max(common), 0.01)


if __name__ == "__main__":
    unittest.main()
