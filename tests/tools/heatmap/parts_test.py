"""What heatmap reads, and what it says of files that are no part."""

import unittest

from case import SINK, Case, obj_text


class Damaged(Case):
    def test_files_without_triangles(self):
        (self.work / "folder.stl").mkdir()
        self.refuses(1, "there is no such file", "missing.stl", "--out", "o")
        self.refuses(1, "is not a file", "folder.stl", "--out", "o")
        for name, content in [("empty.stl", "solid empty\n"), ("bad.obj", "nonsense\n"),
                              ("points.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n"),
                              ("truncated.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n"),
                              ("truncated.stl", SINK.read_bytes()[:3000])]:
            with self.subTest(name):
                self.write(name, content)
                self.refuses(1, f"{name} as a mesh of triangles: it has none", name, "--out", "o")

    def test_coordinates_without_a_meaning(self):
        self.write("nan.obj", "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        self.refuses(1, "triangle 1 of nan.obj has a coordinate that is not a finite", "nan.obj", "--out", "o")
        self.write("flat.obj", obj_text([(0, 0, 0), (1, 0, 0), (2, 0, 0)], [(0, 1, 2)]))
        self.refuses(1, "no triangle of the part has an area", "flat.obj", "--out", "o")

    def test_a_tolerance_that_eats_the_part(self):
        self.refuses(1, "nearer than 1000 became one", SINK, "--out", "o", "--tolerance", "1000")


if __name__ == "__main__":
    unittest.main()
