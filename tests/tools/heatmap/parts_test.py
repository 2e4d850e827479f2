"""What heatmap reads, with which precision, and what it says of files that are no part."""

import io
import random
import struct
import unittest
import zipfile

from case import BRACKET, SINK, Case, box, box_mesh, merged, obj_text

BOX = box_mesh((0, 0, 0), (4, 2, 1))
# A notched plate of height 1: its outlines have a corner that points inward, and are not to be cut there.
OUTLINE = [(0, 0), (4, 0), (4, 3), (2, 0.5), (0, 3)]


def stl_binary(mesh, count=None, head=b"solid to deceive readers"):
    vertices, triangles = mesh
    data = head.ljust(80) + struct.pack("<I", len(triangles) if count is None else count)
    for t in triangles:
        data += struct.pack("<12fH", 0, 0, 0, *(x for i in t for x in vertices[i]), 0)
    return data


def stl_text(mesh, end="\n", margin="  "):
    vertices, triangles = mesh
    lines = ["solid any name"]
    for t in triangles:
        lines += ["facet normal 0 0 0", margin + "outer loop"]
        lines += [margin + "vertex " + " ".join(repr(float(x)) for x in vertices[i]) for i in t]
        lines += [margin + "endloop", "endfacet"]
    return end.join([*lines, "endsolid any name", ""])


def ply(mesh, form="ascii", coordinate="double", extra=True):
    """With properties and an element that a reader must step over."""
    vertices, triangles = mesh
    head = ["ply", f"format {form} 1.0", "comment of a writer", f"element vertex {len(vertices)}"]
    head += ["property uchar red"] * extra + [f"property {coordinate} {axis}" for axis in "xyz"]
    head += [f"element face {len(triangles)}", "property list uchar int vertex_indices"]
    head += ["property float quality", "element edge 1", "property list uint8 int16 ends"] * extra + ["end_header\n"]
    data = "\n".join(head).encode()
    if form == "ascii":
        rows = [" ".join(["255"] * extra + [repr(float(x)) for x in v]) for v in vertices]
        rows += [" ".join(map(str, (len(t), *t))) + " 0.5" * extra for t in triangles]
        return data + "\n".join(rows + ["2 0 1"] * extra).encode() + b"\n"
    order = "<" if "little" in form else ">"
    kind = {"float": "f", "double": "d"}[coordinate]
    for v in vertices:
        data += struct.pack(order + "B" * extra + 3 * kind, *[255] * extra, *v)
    for t in triangles:
        data += struct.pack(f"{order}B{len(t)}i", len(t), *t) + struct.pack(order + "f", 0.5) * extra
    return data + struct.pack(order + "B2h", 2, 0, 1) * extra


def off(mesh, head="OFF"):
    vertices, triangles = mesh
    lines = [head, "# a remark", f"{len(vertices)} {len(triangles)} 0", ""]
    lines += [" ".join(repr(float(x)) for x in v) for v in vertices]
    return "\n".join(lines + [f"{len(t)} " + " ".join(map(str, t)) + " 255 0 0" for t in triangles]) + "\n"


def moved(mesh, offset):
    return [[x + d for x, d in zip(v, offset)] for v in mesh[0]], mesh[1]


class Formats(Case):
    """The same box in every format is the same part."""

    def expect_box(self, name, content):
        self.write(name, content)
        result = self.solve(name, "--edge", "none", "--hot", "x-", "--cold", "x+")
        self.assertEqual(sorted(set(result.vertices)), sorted(map(tuple, BOX[0])), name)
        self.assertEqual(len(result.triangles), 12)
        return result

    def test_every_format(self):
        for name, content in [
                ("box.stl", stl_binary(BOX)), ("spelt.STL", stl_text(BOX)), ("tabs.stl", stl_text(BOX, "\r\n", "\t")),
                ("old.stl", stl_text(BOX, "\r")), ("loud.stl", stl_text(BOX).upper()),
                ("two.stl", stl_text((BOX[0], BOX[1][:4])) + stl_text((BOX[0], BOX[1][4:]))),
                ("box.obj", obj_text(*BOX)), ("marked.obj", "\ufeff" + obj_text(*BOX)),
                ("box.ply", ply(BOX)), ("plain.ply", ply(BOX, extra=False)),
                ("little.ply", ply(BOX, "binary_little_endian")), ("big.ply", ply(BOX, "binary_big_endian")),
                ("float.ply", ply(BOX, "binary_big_endian", "float")),
                ("box.off", off(BOX)), ("colors.off", off(BOX, "COFF")), ("named.txt", off(BOX))]:
            with self.subTest(name):
                self.expect_box(name, content)

    def test_obj_statements(self):
        vertices = "".join(f"v {x} {y} {z} 1 0 0 # red\n" for x, y, z in BOX[0])
        n = len(BOX[0])
        faces = "f " + "\nf ".join(" ".join(f"{i - n}/1/1" for i in t) for t in BOX[1][:6])
        faces += "\nf " + "\nf ".join(" \\\n".join(f"{i + 1}//2" for i in t) for t in BOX[1][6:])
        self.expect_box("all.obj", f"mtllib no.mtl\no box\nvt 0 0\nvn 0 0 1\n{vertices}s off\n{faces}\nl 1 2\np 1\n")
        first = "".join("f " + " ".join(str(i + 1) for i in t) + "\n" for t in BOX[1])
        self.expect_box("first.obj", first + vertices)

    def test_polygons_are_cut_inside(self):
        n = len(OUTLINE)
        vertices = [(x, y, z) for z in (0, 1) for x, y in OUTLINE]
        faces = [list(range(n))[::-1], list(range(n, 2 * n))]
        faces += [[i, (i + 1) % n, (i + 1) % n + n, i + n] for i in range(n)]
        for name, content in [("notch.obj", obj_text(vertices, faces)), ("notch.off", off((vertices, faces))),
                              ("notch.ply", ply((vertices, faces)))]:
            with self.subTest(name):
                self.write(name, content)
                result = self.solve(name, "--edge", "none", "--hot", "x-", "--cold", "x+")
                self.assertEqual(len(result.triangles), 2 * (n - 2) + 2 * n)
                area = 0.0
                for t in result.triangles:
                    (x0, y0, z0), (x1, y1, z1), (x2, y2, z2) = (result.vertices[i] for i in t)
                    if z0 == z1 == z2 == 1:
                        part = ((x1 - x0) * (y2 - y0) - (x2 - x0) * (y1 - y0)) / 2
                        self.assertGreater(part, 0)
                        area += part
                self.assertAlmostEqual(area, 12 - 4 * 2.5 / 2)

    def test_unused_vertices_are_no_part(self):
        far = [[0, 0, 0], *moved(BOX, (1e7, 0, 0))[0]]
        self.write("stray.obj", obj_text(far, [[i + 1 for i in t] for t in BOX[1]]) + "v nan 0 0\n")
        result = self.solve("stray.obj", "--edge", "none")
        self.assertEqual((len(result.vertices), result.json["origin"]), (8, [10000002, 0, 0]))

    def test_3mf_where_assimp_is_there(self):
        vertices, triangles = BOX
        model = ('<model unit="millimeter" xmlns="http://schemas.microsoft.com/3dmanufacturing/core/2015/02">'
                 '<resources><object id="1" type="model"><mesh><vertices>'
                 + "".join(f'<vertex x="{x}" y="{y}" z="{z}"/>' for x, y, z in vertices) + "</vertices><triangles>"
                 + "".join(f'<triangle v1="{a}" v2="{b}" v3="{c}"/>' for a, b, c in triangles)
                 + '</triangles></mesh></object></resources><build><item objectid="1"/></build></model>')
        kind = "http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel"
        packed = io.BytesIO()
        with zipfile.ZipFile(packed, "w") as archive:
            archive.writestr("_rels/.rels", '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/'
                             f'relationships"><Relationship Target="/3D/m.model" Id="r" Type="{kind}"/></Relationships>')
            archive.writestr("3D/m.model", model)
        self.write("box.3mf", packed.getvalue())
        done = self.run_heatmap("box.3mf", "--out", "out", "--edge", "none")
        if b"none of .stl" in done.stderr:
            self.skipTest("built without assimp")
        self.expect_box("box.3mf", packed.getvalue())


class FarAway(Case):
    """Coordinates keep the precision of a double, and distinct vertices stay distinct."""
    PLACE = (500000, 4649776, 0)

    def test_millimetres_at_map_coordinates(self):
        part = merged(box_mesh((0, 0, 0), (0.2, 0.1, 0.05)), box_mesh((0.3, 0, 0), (0.302, 0.001, 0.001)))
        for name, content in [("far.stl", stl_text(moved(part, self.PLACE))),
                              ("far.obj", obj_text(*moved(part, self.PLACE))),
                              ("far.ply", ply(moved(part, self.PLACE))), ("far.off", off(moved(part, self.PLACE))),
                              ("bits.ply", ply(moved(part, self.PLACE), "binary_little_endian"))]:
            with self.subTest(name):
                self.write(name, content)
                result = self.solve(name, "--hot", "x-", "--cold", "ball:500000.302,4649776.001,0.001,0.001=0.5",
                                    "--cold", "ball:500000.2,4649776.1,0.05,0.03", "--edge", "0.01")
                self.assertEqual(result.json["origin"], [500000.2, 4649776.1, 0])
                self.assertEqual(len(set(result.vertices)), len(result.vertices))
                low = [min(p[axis] for p in result.vertices) for axis in range(3)]
                for axis, origin in enumerate(result.json["origin"]):
                    self.assertAlmostEqual(low[axis] + origin, self.PLACE[axis], delta=1e-6)

    def test_the_field_is_that_of_the_part_near_zero(self):
        self.write("near.obj", obj_text(*BOX))
        self.write("far.obj", obj_text(*moved(BOX, self.PLACE)))
        near = self.solve("near.obj", "--edge", "0.25", "--hot", "ball:4,2,1,0.5")
        far = self.solve("far.obj", "--edge", "0.25", "--hot", "ball:500004,4649778,1,0.5")
        self.assertEqual(len(near.values), len(far.values))
        for one, other in zip(near.values, far.values):
            self.assertAlmostEqual(one, other, delta=2e-6)

    def test_messages_name_places_in_the_file(self):
        self.write("far.obj", obj_text(*moved(BOX, (500000, 4649776.25, 0))))
        self.refuses(1, r"reaches from \(500000, 4649776.25, 0\) to \(500004, 4649778.25, 1\)", "far.obj",
                     "--out", "o", "--hot", "ball:0,0,0,1")

    def test_single_precision_that_is_not_enough(self):
        self.write("far.stl", stl_binary(moved(BOX, self.PLACE)))
        self.refuses(1, r"far.stl: the file holds single precision, in which neighbouring coordinates at 4.65e\+06 "
                     "are 0.55 apart, .* diagonal of 4.5.*: export it nearer to the origin, or as text", "far.stl",
                     "--out", "o")
        self.write("off.stl", stl_binary(moved(BOX, (5000, 0, 0))))
        self.assertIn("heatmap: warning: off.stl: the file holds single precision",
                      self.solve("off.stl", "--edge", "1").stderr)
        self.write("near.stl", stl_binary(moved(BOX, (100, 0, 0))))
        self.assertEqual(self.solve("near.stl", "--edge", "1").stderr, "")


class Welding(Case):
    def test_gaps_of_rounding_close(self):
        noisy = random.Random(1)
        vertices, triangles = BOX
        soup = ([[x + noisy.uniform(-1e-7, 1e-7) for x in vertices[i]] for t in triangles for i in t],
                [[3 * t, 3 * t + 1, 3 * t + 2] for t in range(len(triangles))])
        self.write("torn.obj", obj_text(*soup))
        self.assertEqual(len(self.solve("torn.obj", "--edge", "none").vertices), 8)

    def test_details_that_go_are_said(self):
        part = merged(BOX, box_mesh((5, 0, 0), (5.2, 0.2, 0.2)))
        self.write("small.obj", obj_text(*part))
        done = self.run_heatmap("small.obj", "--out", "o", "--tolerance", "0.25", "--largest", "--edge", "none")
        self.assertRegex(done.stderr.decode(), r"nearer than 0.25 \(--tolerance\) took 0.85 % of the area away, "
                         r"12 triangles, the first at \(5.*: give a smaller --tolerance")
        self.assertEqual(self.run_heatmap("small.obj", "--out", "o", "--largest", "--edge", "none").stderr, b"")

    def test_a_tolerance_that_eats_the_part(self):
        self.refuses(1, "nearer than 1000 became one vertex, and the part reaches from .*: give a smaller --tolerance",
                     SINK, "--out", "o", "--tolerance", "1000")


class Damaged(Case):
    def test_what_is_wrong_and_what_to_do(self):
        (self.work / "folder.stl").mkdir()
        triangle = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
        for name, content, words in [
                ("missing.stl", None, "no such file: give the path"),
                ("folder.stl", None, "it is not a file: give the path"),
                ("empty.stl", "", "the file is empty: export the part again"),
                ("short.stl", "solid", "begins 0 facets and ends 0, without \"endsolid\": the file is cut off"),
                ("none.stl", stl_text(([], [])), "it holds 0 vertices and no triangle: export the part as a mesh"),
                ("bytes.stl", b"\0" * 50, "it has 50 bytes, too few for an STL file"),
                ("cut.stl", BRACKET.read_bytes()[:3000], r"announces 11256 triangles and holds 58 \(3000 bytes\): the "
                 "file is cut off or damaged; export it again"),
                ("cut_text.stl", stl_text(BOX)[:650], r"begins 6 facets and ends 5, without \"endsolid\""),
                ("corner.stl", stl_text(BOX).replace("  vertex", "", 1), "line 8: a facet has 2 corners instead of three"),
                ("four.stl", stl_text(BOX).replace("  endloop", "  vertex 0 0 0\n  endloop", 1),
                 "line 7: a facet has more than three corners"),
                ("comma.stl", stl_text(BOX).replace("4.0", "4,0", 1), 'line [0-9]+: "4,0" is not a number'),
                ("words.obj", "nonsense\n", "it holds 0 vertices and no triangle"),
                ("points.obj", obj_text(triangle, []), "it holds 3 vertices and no triangle"),
                ("lacking.obj", "v 1 2\nf 1 1 1\n", "line 1: a number is missing"),
                ("letters.obj", "v 1 2 x\n", 'line 1: "x" is not a number'),
                ("range.obj", obj_text(triangle, [(0, 1, 3)]), "line 4: a face has vertex 4, and there are 3"),
                ("zero.obj", obj_text(triangle, [(0, 1, -1)]), "line 4: a face has vertex 0, and there are 3"),
                ("before.obj", obj_text(triangle, []) + "f -1 -2 -4\n", "a face has vertex -4, and there are 3"),
                ("digon.obj", obj_text(triangle, [(0, 1)]), "line 4: a face has 2 corners"),
                ("name.obj", obj_text(triangle, []) + "f a b c\n", '"a" is not the number of a vertex'),
                ("cut.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n", "announces 3 vertices and holds 2: the file is cut off"),
                ("faces.off", off((triangle, [(0, 1, 2)])).replace("3 1 0", "3 2 0"), "announces 2 faces and holds 1"),
                ("count.off", "OFF\nmany 1 0\n", "line 2: the number of vertices is missing"),
                ("huge.off", "OFF\n99999999999 1 0\n", "not between 0 and 2147483647"),
                ("least.off", "OFF\n-3 1 0\n", "the number of vertices is missing"),
                ("four.off", "4OFF\n3 1 0\n", "more than three dimensions"),
                ("binary.off", "OFF BINARY\n", "binary OFF is not read: export OFF in text"),
                ("range.off", off((triangle, [(0, 1, 3)])), "a face has vertex 3, and there are 3, from 0 on"),
                ("minus.off", off((triangle, [(0, 1, 2)])).replace("\n3 0", "\n-3 0"), "a face has -3 corners"),
                ("cut.ply", ply(BOX)[:300], 'announces 8 of "vertex" and holds [0-7]: the file is cut off'),
                ("cut_bits.ply", ply(BOX, "binary_little_endian")[:-60], 'announces 12 of "face" and holds [0-9]+:'),
                ("head.ply", "ply\nformat ascii 1.0\n", "its head has no end: the file is cut off"),
                ("form.ply", "ply\nformat xml 1.0\n", 'line 2: "xml" is no format of PLY'),
                ("type.ply", "ply\nelement vertex 3\nproperty real x\n", 'line 3: "real" is no type of PLY'),
                ("list.ply", "ply\nelement face 3\nproperty list float int x\n", "the length of a list is no integer"),
                ("orphan.ply", "ply\nproperty float x\n", "line 2: a property before the first element"),
                ("least.ply", "ply\nelement vertex -1\n", "not between 0 and 2147483647"),
                ("minus.ply", ply((triangle, [(0, 1, 2)]), extra=False).replace(b"\n3 0", b"\n-3 0"), "a list has -3 entries"),
                ("range.ply", ply((triangle, [(0, 1, 3)])), "a face has vertex 3, and there are 3 before it"),
                ("axis.ply", ply((triangle, [(0, 1, 2)])).replace(b"double z", b"double w"), "corner at .*nan.*not finite"),
                ("nan.obj", "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", r"triangle 1 has a corner at \(nan, 0, 0\), which "
                 "is not finite: export the part again"),
                ("large.obj", "v 1e999 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", r"triangle 1 has a corner at \(inf"),
                ("flat.obj", obj_text([(0, 0, 0), (1, 0, 0), (2, 0, 0)], [(0, 1, 2)]), "no triangle of the part has an area"),
                ("part.step", "ISO-10303-21;\nHEADER;\n", "it is STEP, which holds curved faces instead of triangles: "
                 "export STL from the CAD system"),
                ("part.stl", "ISO-10303-21;\nHEADER;\n", "it is STEP"), ("part.IGS", "x", "it is IGES"),
                ("part.FCStd", "PK", "it is FreeCAD's own format"), ("part.brep", "x", "it is BREP")]:
            with self.subTest(name):
                if content is not None:
                    self.write(name, content)
                self.refuses(1, words, name, "--out", "o")

    def test_bytes_behind_the_triangles_are_said(self):
        self.write("more.stl", stl_binary(BOX) + b"colors")
        self.assertIn("more.stl: it announces 12 triangles and has 6 bytes behind them, which were ignored",
                      self.solve("more.stl", "--edge", "none").stderr)

    def test_hostile_bytes_never_crash(self):
        """Each file with bytes changed, cut and repeated: heatmap refuses or solves, whatever they say."""
        noise = random.Random(7)
        for ending, content in [("stl", stl_binary(BOX)), ("stl", stl_text(BOX).encode()), ("obj", box((0, 0, 0), (4, 2, 1)).encode()),
                                ("ply", ply(BOX)), ("ply", ply(BOX, "binary_big_endian")), ("off", off(BOX).encode())]:
            for _ in range(25):
                damaged = bytearray(content)
                for _ in range(noise.randint(1, 6)):
                    damaged[noise.randrange(len(damaged))] = noise.choice([0, 10, 32, 45, 48, 57, 101, 255, noise.randrange(256)])
                del damaged[noise.randrange(len(damaged)):noise.randrange(2 * len(damaged))]
                self.write("hostile." + ending, bytes(damaged))
                done = self.run_heatmap("hostile." + ending, "--out", "out", "--edge", "none")
                self.assertIn(done.returncode, (0, 1), (bytes(damaged), done.stderr))
                self.assertRegex(done.stderr.decode(errors="replace"), "^(heatmap: .*\n)*$")


if __name__ == "__main__":
    unittest.main()
