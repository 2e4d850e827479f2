"""Faces, regions, flow and fields within a tolerance, against what is known of a plate and a cube."""

import itertools
import unittest

import numpy as np
import quor
from shared import RANDOM, bumpy_grid


def plate(nx=9, ny=5):
    """nx by ny vertices at distance 1 of each other, in a plane; x of each."""
    x, y = np.meshgrid(np.arange(nx, dtype=float), np.arange(ny, dtype=float))
    vertices = np.stack([x, y, 0 * x], axis=-1).reshape(-1, 3)
    a = np.arange(nx * ny).reshape(ny, nx)[:-1, :-1].ravel()
    triangles = np.concatenate([np.stack([a, a + 1, a + nx + 1], 1), np.stack([a, a + nx + 1, a + nx], 1)])
    return vertices, triangles, vertices[:, 0]


def cube():
    vertices = np.array(list(itertools.product((0., 1), repeat=3)))
    quads = [(0, 1, 3, 2), (4, 6, 7, 5), (0, 4, 5, 1), (2, 3, 7, 6), (0, 2, 6, 4), (1, 5, 7, 3)]
    return vertices, np.array([[q[0], q[k], q[k + 1]] for q in quads for k in (1, 2)])


class Regions(unittest.TestCase):
    def test_weld_knows_its_triangles(self):
        vertices, triangles, _ = bumpy_grid()
        doubled = np.concatenate([triangles[:20], triangles[:, [1, 2, 0]]])  # the same, turned
        mesh = quor.weld_with_origins(vertices, doubled, 0)
        np.testing.assert_array_equal(mesh.triangle_origins, [*range(20), *range(40, 20 + len(triangles))])
        self.assertEqual(repr(mesh), f"<quor.WeldedWithOrigins: 63 vertices, {len(triangles)} triangles>")

    def test_faces_of_a_cube(self):
        faces = quor.faces(*cube())
        np.testing.assert_array_equal(faces.faces, np.repeat(np.arange(6), 2))
        self.assertEqual((faces.edges.shape, set(faces.chains)), ((12, 2), set(range(12))))
        self.assertEqual(repr(faces), "<quor.Faces: 6 faces, 12 feature edges in 12 chains>")
        with self.assertRaisesRegex(quor.QuorError, "angle is 90: give a number above 0 and below 90"):
            quor.faces(*cube(), 90)

    def test_flip_keeps_to_its_face(self):
        kite = [[-3, 0, 0], [0, -1, 0], [3, 0, 0], [0, 1, 0]]
        long_way = [[0, 1, 2], [0, 2, 3]]
        flipped = quor.flip(kite, long_way)
        self.assertEqual({frozenset(t) for t in flipped.triangles.tolist()},
                         {frozenset((0, 1, 3)), frozenset((1, 2, 3))})
        np.testing.assert_array_equal(quor.flip(kite, long_way, [4, 5]).triangles, long_way)

    def test_regions_that_touch_and_points(self):
        vertices, triangles, x = plate()
        regions = np.where(x < 3, 0, np.where(x < 6, 1, -1))
        regions[-1] = 2
        report = quor.check_regions(vertices, triangles, regions)
        self.assertEqual(report.touching_regions.count, 10)  # five rows, on both sides
        self.assertEqual(report.isolated_prescribed, (1, 44))
        alike = quor.check_regions(vertices, triangles, regions, np.full(len(x), 20.))
        self.assertEqual(alike.touching_regions.count, 0)


class Fields(unittest.TestCase):
    def test_flow_and_gradients_of_a_slope(self):
        vertices, triangles, x = plate()
        regions = np.where(x == 0, 0, np.where(x == 8, 1, -1))
        np.testing.assert_allclose(quor.flow(vertices, triangles, 7 * x, regions), [-28, 28])  # 4 wide
        np.testing.assert_allclose(quor.flow(vertices, triangles, 7 * x, regions, 4), [-28, 28, 0, 0])
        slope = quor.gradients(vertices, triangles, 7 * x - 2 * vertices[:, 1])
        np.testing.assert_allclose(slope, np.broadcast_to([7, -2, 0], slope.shape), atol=1e-12)
        with self.assertRaisesRegex(quor.QuorError, "regions: entry 8 is 1: give numbers below 1") as caught:
            quor.flow(vertices, triangles, x, regions, 1)
        self.assertEqual((caught.exception.argument, caught.exception.index), ("regions", 8))

    def test_many_fields_are_the_single_ones(self):
        solver = quor.Solver(*bumpy_grid())
        values, sources = RANDOM.random((2, 11, 63))
        for source in (None, sources):
            fields = solver.solve_many(values, source)
            for k in range(11):
                single = solver.solve(values[k], None if source is None else source[k])
                np.testing.assert_array_equal(fields[k], single)
        self.assertEqual(solver.solve_many(np.empty((0, 63))).shape, (0, 63))
        for bad in (values[0], values[:, 1:]):
            with self.assertRaises(ValueError):
                solver.solve_many(bad)

    def test_within_a_tolerance(self):
        vertices, triangles, x = plate()
        ends = np.where((x == 0) | (x == 8), 5 * x, np.nan)
        reported = []
        solution = quor.solve_within(vertices, triangles, 0.001, vertex_values=ends, share_of_span=True,
                                     progress=reported.append)
        np.testing.assert_allclose(solution.field, 5 * solution.vertices[:, 0], atol=1e-9)
        self.assertTrue(solution.is_reached)
        self.assertAlmostEqual(solution.tolerance, 0.04)
        self.assertEqual((reported[0], reported[-1]), (0, 1))
        self.assertIn("error about", repr(solution))
        bottom = [[k, k + 1] for k in range(8)]
        by_edges = quor.solve_within(vertices, triangles, 0.5, edges=bottom, edge_values=np.full(8, 3.),
                                     sources=np.full(len(triangles), -1.), faces=np.zeros(len(triangles), int))
        height = by_edges.vertices[:, 1]  # u'' = -1, u = 3 below, u' = 0 above, at 4
        np.testing.assert_allclose(by_edges.field, 3 + 4 * height - height**2 / 2, atol=0.5)
        self.assertGreater(np.ptp(by_edges.field), 7)

    def test_says_why_there_is_no_field(self):
        vertices, triangles, x = plate()
        point = np.full(len(x), np.nan)
        nothing = point.copy()
        point[22] = 1
        for error, index, values in ((quor.IsolatedVertexError, 22, point),
                                     (quor.UnprescribedPieceError, 0, nothing)):
            with self.assertRaisesRegex(error, f"vertex {index}") as caught:
                quor.solve_within(vertices, triangles, 1, vertex_values=values)
            self.assertEqual(caught.exception.index, index)
        with self.assertRaisesRegex(quor.QuorError, "edges: no edge of the mesh joins .* 0 and 30 of edge 1"):
            quor.solve_within(vertices, triangles, 1, edges=[[0, 1], [0, 30]], edge_values=[1., 1])
        with self.assertRaisesRegex(quor.QuorError, "tolerance is 0"):
            quor.solve_within(vertices, triangles, 0, vertex_values=x)
        with self.assertRaises(quor.Cancelled):
            quor.solve_within(vertices, triangles, 1, vertex_values=x, progress=lambda fraction: True)
        with self.assertRaises(KeyError):
            quor.solve_within(vertices, triangles, 1, vertex_values=x, progress=lambda fraction: {}[fraction])


if __name__ == "__main__":
    unittest.main()
