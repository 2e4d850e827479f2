"""Operations on meshes, and what is shown, against plain numpy."""

import os
import tempfile
import unittest
from pathlib import Path

import numpy as np
import quor
from shared import RANDOM, bumpy_grid

try:
    import resource
except ImportError:  # Windows
    resource = None


class Weld(unittest.TestCase):
    def test_agrees_with_comparing_all_pairs(self):
        points = RANDOM.integers(0, 12, (150, 3)) / 4
        triangles = RANDOM.integers(0, 150, (300, 3))
        for tolerance in (0, 0.3, 0.36, np.inf):
            near = ((points[:, None] - points) ** 2).sum(-1) < float(tolerance) ** 2
            near |= np.eye(150, dtype=bool)
            root = np.arange(150)
            for _ in range(150):  # the least index spreads along chains
                root = np.where(near, root, 150).min(1)
            kept, point_map = np.unique(root, return_inverse=True)
            seen, expected = set(), []
            for triangle in point_map[triangles]:
                if len(set(triangle)) == 3 and frozenset(triangle) not in seen:
                    seen.add(frozenset(triangle))
                    expected.append(triangle)
            mesh = quor.weld(points, triangles, tolerance)
            np.testing.assert_array_equal(mesh.vertices, points[kept])
            np.testing.assert_array_equal(mesh.triangles, np.reshape(expected, (-1, 3)))
            np.testing.assert_array_equal(mesh.point_map, point_map)
            self.assertEqual([a.dtype for a in mesh], [np.float64, np.int32, np.int32])

    def test_nothing_in_nothing_out(self):
        mesh = quor.weld(np.empty((0, 3)), np.empty((0, 3), int), 1)
        self.assertEqual([a.shape for a in mesh], [(0, 3), (0, 3), (0,)])


class Kit(unittest.TestCase):
    """What raw meshes need: looked at, mended, made finer."""

    FLAT = np.array([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [.5, .5, 0], [9, 9, 9]], float)
    CRACK = np.array([[0, 1, 2], [0, 2, 4], [0, 4, 3], [4, 2, 3]])

    def test_check(self):
        report = quor.check(self.FLAT, self.CRACK, [1, 0, 0, 0, 0, 2])
        self.assertEqual(report.flat_triangles, (1, 1))
        self.assertEqual(report.unused_vertices, (1, 5))
        self.assertEqual(report.prescribed_vertices, (2, 0))
        self.assertEqual(report.unprescribed_pieces, (0, -1))
        self.assertEqual(quor.check(self.FLAT, [[0, 1, 99], [-1, 0, 1]]).corners_out_of_range, (2, 0))
        self.assertEqual(quor.check([[0, np.nan, 0]], np.empty((0, 3), int)).not_finite, (1, 0))
        self.assertAlmostEqual(report.diagonal, 2**.5)

    def test_clean(self):
        mesh = quor.clean(self.FLAT, self.CRACK)
        report = quor.check(mesh.vertices, mesh.triangles)
        self.assertEqual((report.flat_triangles.count, report.unused_vertices.count), (0, 0))
        self.assertEqual(len(mesh.triangles), 4)
        np.testing.assert_array_equal(mesh.vertex_map, [0, 1, 2, 3, 4, -1])
        self.assertEqual(len(mesh.triangle_origins), 4)
        self.assertEqual(mesh.degenerate_count, 0)
        with self.assertRaises(ValueError):
            quor.clean(self.FLAT * np.nan, self.CRACK)
        # Three triangles at one edge, one of them without height: dropping it would open a crack.
        vertices = [[4, 1e-6, 0], [3, 0, 0], [3, 1e-6, 0], [4, 0, 0], [4, 2e-6, 0]]
        left = quor.clean(vertices, [[0, 4, 3], [3, 4, 1], [4, 3, 2], [2, 3, 1]])
        self.assertEqual(left.degenerate_count, 1)
        self.assertEqual(quor.check(left.vertices, left.triangles).flat_triangles.count, 1)

    def test_refine(self):
        vertices, triangles, _ = bumpy_grid()
        mesh = quor.refine(vertices, triangles, 0.3)
        np.testing.assert_array_equal(mesh.vertices[:len(vertices)], vertices)
        a, b = mesh.vertex_origins.T
        np.testing.assert_array_equal(mesh.vertices, (mesh.vertices[a] + mesh.vertices[b]) / 2)
        edges = mesh.vertices[mesh.triangles] - mesh.vertices[np.roll(mesh.triangles, 1, 1)]
        self.assertLessEqual((edges**2).sum(-1).max(), 0.3**2)
        self.assertAlmostEqual(quor.areas(mesh.vertices, mesh.triangles).sum(),
                               quor.areas(vertices, triangles).sum())
        self.assertTrue((np.diff(mesh.triangle_origins) >= 0).all())
        sizes = np.full(len(vertices), np.inf)
        sizes[7] = 0.01
        graded = quor.refine(vertices, triangles, 0.3, sizes=sizes)
        at = (graded.triangles == 7).any(1)
        edges = graded.vertices[graded.triangles] - graded.vertices[np.roll(graded.triangles, 1, 1)]
        self.assertLessEqual((edges[at]**2).sum(-1).max(), 0.02**2)
        self.assertGreater((edges[~at]**2).sum(-1).max(), 0.15**2)
        some = quor.refine(vertices, triangles, triangle_count=3000)
        self.assertTrue(2000 < len(some.triangles) <= 3000)
        for arguments in ({}, {"longest_edge": 1, "triangle_count": 9}, {"longest_edge": 0},
                          {"longest_edge": np.nan}, {"longest_edge": 1, "sizes": np.zeros_like(sizes)},
                          {"longest_edge": 1, "sizes": [1]}, {"triangle_count": 9, "sizes": sizes},
                          {"triangle_count": 0}, {"triangle_count": 2**40}):
            with self.subTest(arguments), self.assertRaises(ValueError):
                quor.refine(vertices, triangles, **arguments)
        with self.assertRaises(quor.TooLargeError):
            quor.refine(vertices, triangles, 1e-9)


class Shown(unittest.TestCase):
    def test_colours(self):
        rgba = quor.colours([0, 1, 2, np.nan])
        self.assertEqual(rgba.tolist(), [[68, 1, 84, 255], [32, 144, 140, 255], [253, 231, 36, 255],
                                         [128, 128, 128, 255]])
        self.assertEqual(quor.colours([5], 0, 10).tolist(), rgba[1:2].tolist())
        with self.assertRaises(ValueError):
            quor.colours([1], 0, np.inf)

    def test_write(self):
        vertices, triangles, _ = bumpy_grid()
        field = vertices[:, 0]
        with tempfile.TemporaryDirectory() as folder:
            ramp = Path(folder) / "ramp"
            ramp.write_bytes(b"ramp")
            (Path(folder) / "sub").mkdir()
            path = Path(folder) / "sub" / "a.obj"
            quor.write(vertices, triangles, field, path, ramp)
            self.assertEqual(sorted(os.listdir(path.parent)), ["a.mtl", "a.obj", "viridis.PNG"])
            u = [float(line.split()[1]) for line in path.read_text().splitlines() if line[:2] == "vt"]
            np.testing.assert_allclose([min(u), max(u)], [.001 / 1.002, 1.001 / 1.002], atol=1e-6)
            with self.assertRaises(FileNotFoundError) as caught:
                quor.write(vertices, triangles, field, Path(folder) / "missing" / "x")
            self.assertEqual(caught.exception.filename, str(Path(folder) / "missing" / "x.obj"))
            for error, bad in ((FileNotFoundError, Path(folder) / "missing" / "x"),
                               (OSError, "/dev/null/x"), (ValueError, folder + "/a\0b"),
                               (ValueError, folder + "/")):
                with self.assertRaises(error):
                    quor.write(vertices, triangles, field, bad)
            with self.assertRaises(FileNotFoundError):
                quor.write(vertices, triangles, field, path, Path(folder) / "none")
            if resource is not None:  # a disk that is full
                limits = resource.getrlimit(resource.RLIMIT_FSIZE)
                resource.setrlimit(resource.RLIMIT_FSIZE, (1000, limits[1]))
                try:
                    with self.assertRaises(OSError):
                        quor.write(vertices, triangles, field, Path(folder) / "full")
                finally:
                    resource.setrlimit(resource.RLIMIT_FSIZE, limits)
            self.assertEqual([name for name in os.listdir(folder) if "part" in name], [])

    def test_all_integers_survive_the_sphere(self):
        for value in range(-1, 65535):
            x, y, z = quor.encode_integer_to_sphere(value)
            self.assertEqual(quor.decode_integer_from_sphere(x, y, z), value)
        self.assertEqual(quor.decode_integer_from_sphere(-x, -y, -z), value)


if __name__ == "__main__":
    unittest.main()
