"""What rules select, and the values that they prescribe."""

import math
import re
import unittest

from case import BRACKET, SINK, Case, box_mesh, merged, obj_text

ROOF = obj_text([(0, -1, 0), (0, 1, 0), (4, -1, 0), (4, 1, 0), (0, 0, 3), (4, 0, 3)],
                [(0, 2, 5), (0, 5, 4), (1, 4, 5), (1, 5, 3), (0, 4, 1), (2, 3, 5)])
PEAK = obj_text([(0, 0, 0), (4, 0, 0), (0, 4, 0), (1, 1, 3)], [(0, 1, 3), (1, 2, 3), (2, 0, 3), (0, 2, 1)])
BOX = box_mesh((0, 0, 0), (10, 8, 4))


def plate(steps, size=20.0):
    """A square in z = 0, in so many steps each way."""
    n = steps + 1
    vertices = [(size * i / steps, size * j / steps, 0) for j in range(n) for i in range(n)]
    corners = [j * n + i for j in range(steps) for i in range(steps)]
    return vertices, [t for c in corners for t in ((c, c + 1, c + n + 1), (c, c + n + 1, c + n))]


def tube(sides=24, radius=3.0, height=10.0):
    """A cylinder with both ends."""
    ring = [(radius * math.cos(2 * math.pi * k / sides), radius * math.sin(2 * math.pi * k / sides))
            for k in range(sides)]
    vertices = [(x, y, z) for z in (0, height) for x, y in ring] + [(0, 0, 0), (0, 0, height)]
    triangles = []
    for a in range(sides):
        b = (a + 1) % sides
        triangles += [(a, b, b + sides), (a, b + sides, a + sides), (b, a, 2 * sides), (a + sides, b + sides, 2 * sides + 1)]
    return vertices, triangles


class Rules(Case):
    def setUp(self):
        super().setUp()
        self.write("box.obj", obj_text(*BOX))
        self.write("tube.obj", obj_text(*tube()))
        self.write("plate.obj", obj_text(*plate(1)))

    def selected(self, result, rule):
        """What is said of the rule: its value, and the rest of the line."""
        found = re.search(f"^ +(\\S+) +{re.escape(rule)}: (.*)$", result.stdout, re.M)
        self.assertIsNotNone(found, result.stdout)
        return float(found[1]), found[2]

    def area(self, result, rule):
        return float(re.search(r"(area|length) (\S+)$", self.selected(result, rule)[1])[2])

    def prescribes(self, part, rule, where, *arguments):
        """The rule prescribes 1 at the vertices for which `where` holds, and nowhere else."""
        result = self.solve(part, "--hot", rule, *arguments)
        hot = [p for p, u in zip(result.vertices, result.values) if u > 1 - 1e-6]
        self.assertGreater(len(hot), 1)
        self.assertEqual([p for p in hot if not where(*p)], [], rule)
        self.assertGreater(min(result.at(where)), 1 - 1e-6)
        return result


class Ends(Rules):
    def test_either_case_and_any_fraction(self):
        for rule, where in [("z+", lambda x, y, z: z == 4), ("Z+", lambda x, y, z: z == 4),
                            ("X-:0", lambda x, y, z: x == 0), ("y-:1e-3", lambda x, y, z: y == 0)]:
            with self.subTest(rule):
                self.prescribes("box.obj", rule, where, "--edge", "1")

    def test_the_ridge_of_a_roof_is_a_line(self):
        self.write("roof.obj", ROOF)
        for edge, least in (("none", 2), ("0.5", 9)):
            result = self.prescribes("roof.obj", "z+", lambda x, y, z: z == 3, "--edge", edge)
            self.assertGreaterEqual(len(result.at(lambda x, y, z: z == 3)), least)
        self.assertIn("length 4", self.selected(result, "z+")[1])

    def test_a_peak_is_refused(self):
        self.write("peak.obj", PEAK)
        self.refuses(1, r'--hot "z\+" selects the single vertex \(1, 1, 3\), which has no capacity: .*a ball: with a '
                     "radius around it", "peak.obj", "--out", "o", "--hot", "z+")
        self.solve("peak.obj", "--hot", "ball:1,1,3,0.5", "--cold", "z-", "--edge", "1")

    def test_sides_without_a_rule_get_the_other_end(self):
        for arguments, expected in [
                ([], [("x-", 1), ("x+", 0)]), (["--hot", "z+"], [("z+", 1), ("z-", 0)]),
                (["--cold", "y-:0.1"], [("y-:0.1", 0), ("y+", 1)]),
                (["--hot", "ball:30,0,0,5"], [("ball:30,0,0,5", 1), ("x-", 0)]),
                (["--hot", "x+=80", "--hot", "z-=80"], [("x+=80", 80), ("z-=80", 80), ("x-", 0)]),
                (["--hot", "x+=80", "--hot", "z-=20"], [("x+=80", 80), ("z-=20", 20)]),
                (["--cold", "x+=-5", "--hot-value", "7"], [("x+=-5", -5), ("x-", 7)])]:
            with self.subTest(arguments):
                result = self.solve(SINK, "--edge", "none", *arguments)
                said = re.findall(r"^ {10}(\S+) +(\S+): ", result.stdout, re.M)
                self.assertEqual([(rule, float(value)) for value, rule in said], expected)
                values = [value for _, value in expected]
                self.assertEqual((result.json["minimum"], result.json["maximum"]), (min(values), max(values)))


class Faces(Rules):
    def test_the_nearest_face(self):
        self.prescribes("box.obj", "face:5,4,100", lambda x, y, z: z == 4, "--edge", "1")
        self.prescribes("box.obj", "face:0.5,4,3", lambda x, y, z: x == 0, "--edge", "1")
        wall = self.prescribes("tube.obj", "face:5,0,5", lambda x, y, z: math.hypot(x, y) > 2.9 or z == 10, "--edge",
                               "0.5", "--cold", "ball:0,0,0,1")  # nothing cools the other end
        self.assertRegex(self.selected(wall, "face:5,0,5")[1], "^face [123], cylinder, 2 away, area 188")

    def test_points_that_are_far_or_as_near_to_another(self):
        far = self.solve("box.obj", "--hot", "face:5,4,100", "--cold", "edge:5,-3,-4", "--edge", "2")
        self.assertRegex(self.selected(far, "face:5,4,100")[1], "^face [1-6], plane, 96 away, area 80")
        self.assertEqual(self.selected(far, "edge:5,-3,-4")[1], "5 away, length 10")
        self.assertEqual(far.stderr, "")
        both = self.solve("box.obj", "--hot", "face:5,0,4", "--cold", "edge:0,0,0", "--edge", "2")
        self.assertRegex(both.stderr, '--hot "face:5,0,4" is as near to a second face: give a point that is nearer to the face')
        self.assertRegex(both.stderr, '--cold "edge:0,0,0" is as near to a second edge')

    def test_the_list_of_faces(self):
        for part, expected in [
                ("box.obj", [("plane", "80", "(5, 4, 0), normal (0, 0, -1)"), ("plane", "80", "(5, 4, 4), normal (0, 0, 1)"),
                             ("plane", "40", "(5, 0, 2), normal (0, -1, 0)"), ("plane", "40", "(5, 8, 2), normal (0, 1, 0)"),
                             ("plane", "32", "(0, 4, 2), normal (-1, 0, 0)"), ("plane", "32", "(10, 4, 2), normal (1, 0, 0)")]),
                ("tube.obj", [("cylinder", "188", "(0, 0, 5), axis (0, 0, 1), radius 3"),
                              ("plane", "27.95", "(0, 0, 0), normal (0, 0, -1)"),
                              ("plane", "27.95", "(0, 0, 10), normal (0, 0, 1)")])]:
            with self.subTest(part):
                lines = self.stdout_of(part, "--list-faces").splitlines()
                rows = [re.match(r"(\d+) +(\w+) +(\S+) +center (.*)$", line) for line in lines]
                rows = [row for row in rows if row]
                self.assertEqual([int(row[1]) for row in rows], list(range(1, len(expected) + 1)))
                self.assertEqual(sorted((row[2], row[3], row[4]) for row in rows), sorted(expected))
                top = next(row[1] for row in rows if "normal (0, 0, 1)" in row[4])
                height = {"box.obj": 4, "tube.obj": 10}[part]
                self.prescribes(part, f"face:{top}", lambda x, y, z, h=height: z == h, "--edge", "1")

    def test_kinds_of_faces(self):
        """A cone between two disks, and half a ball on a disk."""
        sides, rows = 48, 24
        ring = [(math.cos(2 * math.pi * k / sides), math.sin(2 * math.pi * k / sides)) for k in range(sides)]
        for name, profile, expected in [
                ("cone.obj", [(4, 0), (2, 6)], {"cone": r"axis \(0, 0, 1\)$"}),
                ("ball.obj", [(4 * math.cos(a), 4 * math.sin(a)) for a in
                              (math.pi / 2 * k / rows for k in range(rows))], {"sphere": r"radius 4$"})]:
            vertices = [(r * x, r * y, z) for r, z in profile for x, y in ring]
            quads = [(j * sides + k, j * sides + (k + 1) % sides) for j in range(len(profile) - 1) for k in range(sides)]
            triangles = [t for a, b in quads for t in ((a, b, b + sides), (a, b + sides, a + sides))]
            vertices += [(0, 0, profile[0][1]), (0, 0, 4 if "ball" in name else profile[-1][1])]
            last = (len(profile) - 1) * sides
            for k in range(sides):
                triangles += [((k + 1) % sides, k, len(vertices) - 2), (last + k, last + (k + 1) % sides, len(vertices) - 1)]
            self.write(name, obj_text(vertices, triangles))
            listed = self.stdout_of(name, "--list-faces")
            for kind, words in expected.items():
                with self.subTest(name):
                    rows_of_kind = [line for line in listed.splitlines() if f" {kind} " in line]
                    self.assertEqual(len(rows_of_kind), 1, listed)
                    self.assertRegex(rows_of_kind[0], words)

    def test_a_face_of_a_large_radius_is_no_cylinder(self):
        """Of 40 times its size it is one; of 60 times it might as well be anything round."""
        for radius, expected in ((40, r" cylinder .*radius (39\.99|40)"), (60, r"^1 +(?!cylinder)\w+ ")):
            arc = [(x, radius - math.sqrt(radius * radius - x * x)) for x in (0.1 * k - 1 for k in range(21))]
            vertices = [(x, y, z) for y in (0, 0.1) for x, z in arc]
            triangles = [t for k in range(20) for t in ((k, k + 1, k + 22), (k, k + 22, k + 21))]
            self.write("arc.obj", obj_text(vertices, triangles))
            with self.subTest(radius):
                self.assertRegex(self.stdout_of("arc.obj", "--list-faces"), re.compile(expected, re.M))

    def test_a_face_that_is_not_there(self):
        self.refuses(1, '--hot "face:7" names a face that is not there: the part has 6, numbered from 1; see --list-faces',
                     "box.obj", "--out", "o", "--hot", "face:7")

    def test_the_nearest_edge(self):
        straight = self.prescribes("box.obj", "edge:5,0.2,4.1", lambda x, y, z: y == 0 and z == 4, "--edge", "1")
        self.assertIn("length 10", self.selected(straight, "edge:5,0.2,4.1")[1])
        rim = self.prescribes("tube.obj", "edge:3,0,10", lambda x, y, z: z == 10, "--edge", "1", "--cold", "z-")
        self.assertIn("length 18.8", self.selected(rim, "edge:3,0,10")[1])


class Bodies(Rules):
    def test_what_is_inside_is_cut_out(self):
        """Of a plate of two triangles, with vertices nowhere near."""
        for rule, area in [("ball:11,8,0,3", math.pi * 9), ("ball:11,8,2,3", math.pi * 5),
                           ("box:13,2,-1,5,4,1", 16), ("cyl:11,8,-1,11,8,1,3", math.pi * 9),
                           ("cyl:4,5,0,14,5,0,2", 40), ("box:-1,-1,-1,5,30,1", 100), ("ball:0,0,0,4", math.pi * 4)]:
            with self.subTest(rule):
                result = self.solve("plate.obj", "--hot", rule, "--edge", "5")
                self.assertAlmostEqual(self.area(result, rule), area, delta=2e-3 * area)

    def test_the_region_does_not_depend_on_the_mesh(self):
        for steps in (1, 2, 7, 30):
            self.write(f"plate{steps}.obj", obj_text(*plate(steps)))
        fields = []
        for steps in (1, 2, 7, 30):
            result = self.solve(f"plate{steps}.obj", "--hot", "ball:11.3,8.1,0,2.5", "--cold", "x-", "--edge", "0.25")
            self.assertAlmostEqual(self.area(result, "ball:11.3,8.1,0,2.5"), math.pi * 2.5**2, delta=0.03)
            corner = [u for (x, y, z), u in zip(result.vertices, result.values) if (x, y) == (20, 20)]
            fields.append(corner[0])
        self.assertLess(max(fields) - min(fields), 1e-3)

    def test_a_wall_of_exactly_its_radius(self):
        result = self.solve("tube.obj", "--hot", "cyl:0,0,2,0,0,10,3", "--cold", "z-", "--edge", "1")
        self.assertGreater(min(result.at(lambda x, y, z: z >= 2 - 1e-5)), 1 - 1e-6)
        self.assertLess(max(result.at(lambda x, y, z: z < 1.9)), 1 - 1e-3)

    def test_planes(self):
        self.prescribes("box.obj", "plane:0,0,4,0,0,-2", lambda x, y, z: z == 4, "--edge", "1")
        section = self.prescribes("box.obj", "plane:5,4,1,0,0,3", lambda x, y, z: z <= 1, "--edge", "1", "--cold", "z+")
        self.assertIn("length 36", self.selected(section, "plane:5,4,1,0,0,3")[1])
        tilted = self.solve("box.obj", "--hot", "plane:5,4,2,1,0,1", "--cold", "x-", "--edge", "2")
        self.assertAlmostEqual(self.area(tilted, "plane:5,4,2,1,0,1"), 2 * 8 + 2 * 4 * 2**0.5, delta=0.01)

    def test_rules_do_not_depend_on_their_order(self):
        for rules in (["x-=0", "ball:5,4,4,2=80", "face:10,4,2=20"], ["face:10,4,2=20", "ball:5,4,4,2=80", "x-=0"]):
            result = self.solve("box.obj", *(word for rule in rules for word in ("--hot", rule)), "--edge", "1")
            self.assertEqual((result.json["minimum"], result.json["maximum"]), (0, 80))
            self.assertAlmostEqual(min(result.at(lambda x, y, z: x == 10)), 20, delta=1e-3)
            self.assertAlmostEqual(max(result.at(lambda x, y, z: x == 10)), 20, delta=1e-3)
            self.assertAlmostEqual(self.area(result, "ball:5,4,4,2=80"), 4 * math.pi, delta=0.05)
            self.assertIn("area 32", self.selected(result, "x-=0")[1])

    def test_refusals(self):
        for words, rule in [
                (r'--hot "ball:900,0,0,1" selects nothing: the part reaches from \(0, 0, 0\) to \(10, 8, 4\); face:X,Y,Z',
                 "ball:900,0,0,1"),
                ('"box:11,0,0,12,1,1" selects nothing', "box:11,0,0,12,1,1"),
                ('"plane:0,0,5,0,0,1" selects nothing', "plane:0,0,5,0,0,1"),
                # Inside, and nothing of the surface there.
                ('"ball:5,4,2,1" selects nothing', "ball:5,4,2,1"),
                (r"selects the single vertex \(10, 8, 4\), which has no capacity", "plane:10,8,4,1,1,1"),
                (r"selects the single vertex \(10, 8, 4\)", "box:10,8,4,12,12,12"),
                ("has the radius 0.001, and the part a diagonal of 13.4.: give a radius of at least a ten-thousandth of "
                 "it, 0.0013", "ball:5,4,4,0.001")]:
            with self.subTest(rule):
                self.refuses(1, words, "box.obj", "--out", "o", "--hot", rule)


class Overlaps(Rules):
    def test_regions_that_overlap(self):
        for hot, cold, words in [
                ("x+", "x+:1", r'--hot "x\+" and --cold "x\+:1" both select the surface at \(10, .*, with the values 1 and 0: '
                 r"give rules that keep apart; the part reaches from \(0, 0, 0\) to \(10, 8, 4\)"),
                ("ball:5,4,4,3", "face:5,4,4", "both select the surface at"),
                ("edge:5,0,4", "edge:6,0,4", r"both select the surface at \(5, 0, 4\)"),
                ("plane:5,4,2,1,0,0", "face:5,4,4", r"both select the surface at \(5, [0-9.]+, 4\)")]:
            with self.subTest(hot):
                self.refuses(1, words, "box.obj", "--out", "o", "--hot", hot, "--cold", cold)
        self.refuses(1, r'--hot "x-:1" and "x\+", taken by default, both select', "box.obj", "--out", "o", "--hot", "x-:1")

    def test_regions_of_one_value_may_overlap(self):
        self.solve("box.obj", "--hot", "z+", "--hot", "face:5,4,4", "--hot", "edge:5,0,4", "--cold", "z-", "--edge", "2")
        # An edge between a face of its own value and one of another touches that one, and no more.
        self.solve("box.obj", "--hot", "face:5,4,4", "--hot", "edge:5,0,4", "--cold", "face:5,0,2", "--edge", "2")


class Components(Rules):
    def test_components_without_a_value(self):
        self.write("two.obj", obj_text(*merged(BOX, box_mesh((12, 0, 0), (13, 1, 1)))))
        self.refuses(1, r"the connected component at \(12, 0, 0\) has no prescribed value: prescribe one there "
                     r"\(--hot face:X,Y,Z\), keep the largest component only \(--largest\), or close gaps", "two.obj",
                     "--out", "o", "--hot", "face:5,4,0", "--cold", "face:0,4,2")
        self.assertEqual(self.solve("two.obj", "--largest", "--edge", "none").stderr, "")

    def test_components_with_one_value_are_constant(self):
        self.write("two.obj", obj_text(*merged(BOX, box_mesh((12, 0, 0), (13, 1, 1)))))
        result = self.solve("two.obj", "--hot", "x+=80", "--cold", "x-=20", "--cold", "face:10,4,2=30", "--edge", "1")
        self.assertRegex(result.stderr, r"^heatmap: warning: the connected component at \(12, 0, 0\) has the single value "
                         "80, so that its field is constant: prescribe a second one there\n$")
        self.assertAlmostEqual(min(result.at(lambda x, y, z: x > 11)), 80, delta=1e-3)

    def test_solids_that_touch(self):
        """Corner in face, edge across edge, face in face, one through the other, and a gap of rounding."""
        for name, other in [("corner", box_mesh((10, 2, 1), (12, 3, 2))), ("cross", box_mesh((-1, 3, 4), (11, 5, 6))),
                            ("face", box_mesh((2, 2, 4), (4, 4, 6))), ("through", box_mesh((4, 3, -1), (6, 5, 6))),
                            ("gap", box_mesh((10.0001, 2, 1), (12, 3, 2)))]:
            with self.subTest(name):
                self.write("touch.obj", obj_text(*merged(BOX, other)))
                self.refuses(1, "has no prescribed value: components touch at .* without a common vertex, which a larger "
                             "--tolerance does not change. Unite the solids", "touch.obj", "--out", "o", "--hot",
                             "face:5,0,0", "--cold", "face:0,4,0.5")
                at = [sum(axis) / 2 for axis in zip(min(other[0]), max(other[0]))]
                rule = f"ball:{at[0]},{at[1]},{max(other[0])[2]},0.4=7"
                result = self.solve("touch.obj", "--hot", "edge:5,0,0", "--cold", rule, "--edge", "2")
                self.assertIn("connected components touch at ", result.stderr)
        self.write("apart.obj", obj_text(*merged(BOX, box_mesh((10.001, 2, 1), (12, 3, 2)))))
        self.assertEqual(self.solve("apart.obj", "--hot", "x-", "--hot", "x+=3", "--cold", "face:10,4,1", "--cold",
                                    "face:10.001,2.5,1.5=4", "--edge", "2").stderr, "")


class Refining(Rules):
    def test_edge_lengths(self):
        def triangles(*arguments):
            self.result = self.solve(BRACKET, *arguments)
            return len(self.result.triangles)

        before = triangles("--edge", "none")
        self.assertEqual(before, int(re.search(r"(\d+) triangles", self.line(self.result, "read"))[1]))
        self.assertGreater(triangles("--edge", "2"), 3 * before)
        self.assertIn("edges up to 2 ", self.line(self.result, "refine"))
        self.assertNotIn("error", self.result.json)
        self.assertIn("no error is estimated with --edge", self.result.stdout)
        done = self.refuses(1, "--edge 1e-09 would make more triangles than fit: give a larger length", BRACKET, "--out",
                            "o", "--edge", "1e-9")
        self.assertRegex(done.stderr.decode(), "warning: --edge 1e-09 makes more than .* million triangles")


if __name__ == "__main__":
    unittest.main()
