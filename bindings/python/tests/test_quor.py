"""The module against plain numpy, and against everything that must not reach the library."""

import gc
import os
import subprocess
import sys
import tempfile
import threading
import unittest
import weakref
from pathlib import Path

import numpy as np
import quor

RANDOM = np.random.default_rng(7)


def bumpy_grid(nx=9, ny=7):
    """A mesh with its vertices shuffled, and tags of every kind."""
    x, y = np.meshgrid(np.arange(nx), np.arange(ny))
    vertices = np.stack([x, y, RANDOM.random(x.shape)], axis=-1).reshape(-1, 3).astype(float)
    a = (x + nx * y)[:-1, :-1].ravel()
    triangles = np.concatenate([np.stack([a, a + 1, a + nx + 1], 1),
                                np.stack([a, a + nx + 1, a + nx], 1)])
    place = RANDOM.permutation(nx * ny)
    vertices[place] = vertices.copy()
    tags = RANDOM.integers(-1, 6, nx * ny)
    return vertices, place[triangles], tags


def dense_stiffness(vertices, triangles):
    """K from the gradients of the hat functions: no cotangent anywhere."""
    k = np.zeros((len(vertices),) * 2)
    for corners in triangles:
        p = vertices[corners]
        edges = np.roll(p, -2, 0) - np.roll(p, -1, 0)  # opposite each corner
        area = np.linalg.norm(np.cross(edges[0], edges[1])) / 2
        k[np.ix_(corners, corners)] += edges @ edges.T / (4 * area)
    return k


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


class Solve(unittest.TestCase):
    def setUp(self):
        self.mesh = bumpy_grid()
        self.vertices, self.triangles, self.tags = self.mesh
        self.solver = quor.Solver(*self.mesh)
        self.n = len(self.tags)
        self.prescribed = np.isin(self.tags, (1, 2, 3))
        self.values, self.source = RANDOM.random((2, self.n))

    def test_agrees_with_a_dense_solve(self):
        k, free = dense_stiffness(self.vertices, self.triangles), ~self.prescribed
        self.assertEqual(self.solver.info, quor.Info.SUCCESS)
        for source in (None, self.source):
            load = -(0 if source is None else source[free])
            expected = self.values.copy()
            expected[free] = np.linalg.solve(
                k[np.ix_(free, free)], load - k[np.ix_(free, self.prescribed)] @ self.values[self.prescribed])
            field = self.solver.solve(self.values, source)
            np.testing.assert_allclose(field, expected, rtol=0, atol=1e-11)
            np.testing.assert_array_equal(field[self.prescribed], self.values[self.prescribed])

    def test_writes_where_it_is_told(self):
        expected = self.solver.solve(self.values, self.source)
        for out in (np.empty(self.n), self.values.copy(), self.source.copy()):
            values = out if np.array_equal(out, self.values) else self.values
            source = out if np.array_equal(out, self.source) else self.source
            self.assertIs(self.solver.solve(values, source, out=out), out)
            np.testing.assert_array_equal(out, expected)
        frozen = np.empty(self.n)
        frozen.flags.writeable = False
        for out in (frozen, np.empty(self.n, np.float32), np.empty(2 * self.n)[::2], [0.0] * self.n,
                    np.empty(8 * self.n + 1, np.uint8)[1:].view(np.float64)):
            with self.assertRaises(TypeError):
                self.solver.solve(self.values, out=out)
        with self.assertRaises(ValueError):
            self.solver.solve(self.values, out=np.empty(self.n + 1))

    def test_takes_any_layout(self):
        vertices, triangles, tags = self.mesh
        expected = self.solver.solve(self.values)
        misaligned = np.empty(8 * self.n + 1, np.uint8)[1:].view(np.float64)
        misaligned[:] = self.values
        for layout in ((np.asfortranarray(vertices), triangles.astype(">u8"), list(tags)),
                       (np.repeat(vertices, 2, 1)[:, ::2], np.asfortranarray(triangles, np.int32),
                        self.prescribed)):
            solver = quor.Solver(*layout)
            for values in (self.values.astype(">f8"), self.values[::-1].copy()[::-1], misaligned):
                np.testing.assert_array_equal(solver.solve(values), expected)

    def test_reads_back_its_mesh_in_solver_order(self):
        order = list(np.flatnonzero(self.prescribed)) + list(np.flatnonzero(~self.prescribed))[::-1]
        np.testing.assert_array_equal(self.solver.vertices, self.vertices[order])
        np.testing.assert_array_equal(self.solver.to_solver_order(self.values), self.values[order])
        np.testing.assert_array_equal(np.take(order, self.solver.triangles), self.triangles)
        self.assertEqual(self.solver.prescribed_count, self.prescribed.sum())

    def test_views_are_the_solvers_own_and_keep_it_alive(self):
        views = self.solver.vertices, self.solver.triangles
        self.assertEqual(self.solver.vertices.ctypes.data, views[0].ctypes.data)
        expected = [view.copy() for view in views]
        for view in views:
            with self.assertRaises(ValueError):
                view[0] = 0
            with self.assertRaises(ValueError):
                view.flags.writeable = True
        handle = weakref.ref(self.solver._handle)
        self.solver.close()
        for view, values in zip(views, expected):
            np.testing.assert_array_equal(view[::2], values[::2])
        part = views[0][3:]
        del views, view
        self.assertIsNotNone(handle())
        del part
        gc.collect()
        self.assertIsNone(handle())

    def test_closed_solver_answers_with_an_error(self):
        with self.solver as solver:
            pass
        solver.close()
        for use in (lambda: solver.info, lambda: solver.solve(self.values), lambda: solver.vertices,
                    lambda: solver.triangles, lambda: solver.write(self.values, "never")):
            with self.assertRaisesRegex(ValueError, "closed"):
                use()
        self.assertFalse(os.path.exists("never.obj"))

    def test_closing_during_solves_of_other_threads(self):
        mesh = bumpy_grid(60, 60)
        values = RANDOM.random(3600)
        for _ in range(5):
            solver, outcomes = quor.Solver(*mesh), []
            expected, started = solver.solve(values), threading.Barrier(4)

            def work():
                started.wait()
                try:
                    while True:
                        outcomes.append(np.array_equal(solver.solve(values), expected))
                except ValueError as error:
                    outcomes.append("closed" in str(error))

            threads = [threading.Thread(target=work) for _ in range(3)]
            for thread in threads:
                thread.start()
            started.wait()
            while len(outcomes) < 20 and any(thread.is_alive() for thread in threads):
                pass
            solver.close()
            for thread in threads:
                thread.join()
            self.assertGreaterEqual(len(outcomes), 20)
            self.assertTrue(all(outcomes))

    def test_memory_is_given_back(self):
        mesh = bumpy_grid(60, 60)

        def resident():
            return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")

        before = resident()
        kept = [quor.Solver(*mesh) for _ in range(20)]
        grown = resident() - before
        self.assertGreater(grown, 20e5)  # what solvers take is visible
        del kept
        before = resident()
        for _ in range(200):
            quor.Solver(*mesh)
        self.assertLess(resident() - before, grown)

    def test_write(self):
        field = self.solver.to_solver_order(self.solver.solve(self.values))
        with tempfile.TemporaryDirectory() as folder:
            base = Path(folder) / "Wärme"
            self.solver.write(field, base)
            lines = [line.split() for line in Path(f"{base}.obj").read_text().splitlines()]
            self.assertEqual(lines[:2], [["mtllib", "Wärme.mtl"], ["usemtl", "Heat"]])
            read = {key: np.array([[float(word.split("/")[0]) for word in words] for name, *words
                                   in lines[2:] if name == key]) for key in ("v", "vt", "f")}
            np.testing.assert_allclose(read["v"], self.solver.vertices, rtol=5e-6)
            np.testing.assert_array_equal(read["f"], self.solver.triangles + 1)
            u = 1 - (field - field.min()) / np.ptp(field)
            np.testing.assert_allclose(read["vt"][:, 0], u, atol=5e-6)
            self.assertIn("map_Kd viridis.PNG", Path(f"{base}.mtl").read_text())
            for bad in (Path(folder) / "missing" / "x", folder + "/a\0b"):
                with self.assertRaises((OSError, ValueError)):
                    self.solver.write(field, bad)


class Refused(unittest.TestCase):
    """What would be undefined behaviour, a cut-off number or a silent answer inside the library."""

    def test_arguments(self):
        vertices, triangles, tags = bumpy_grid(3, 3)
        solver = quor.Solver(vertices, triangles, [1] * 9)
        low, high, huge = triangles.copy(), triangles.copy(), triangles.astype(np.int64)
        low[4, 1], high[3, 2], huge[0, 0] = -1, 9, huge[0, 0] + 2**32

        def rows(count, dtype):
            return np.broadcast_to(np.zeros(3, dtype), (count, 3))

        for error, function, *arguments in (
                (IndexError, quor.weld, vertices, low, 1),
                (IndexError, quor.weld, vertices, high, 1),
                (IndexError, quor.Solver, vertices, low, tags),
                (IndexError, quor.Solver, vertices, high, tags),
                (IndexError, quor.Solver, vertices, huge, tags),
                (IndexError, quor.weld, np.empty((0, 3)), triangles, 1),
                (TypeError, quor.weld, vertices, triangles + 0.5, 1),
                (TypeError, quor.weld, vertices + 1j, triangles, 1),
                (ValueError, quor.weld, vertices.ravel(), triangles, 1),
                (ValueError, quor.weld, vertices[:, :2], triangles, 1),
                (ValueError, quor.weld, rows(2**31, float), triangles, 1),
                (ValueError, quor.weld, vertices, rows(2**31, int), 1),
                (ValueError, quor.Solver, rows(1_431_655_766, float), triangles, tags),
                (ValueError, quor.Solver, vertices, rows(238_609_295, int), tags),
                (ValueError, quor.Solver, vertices, triangles, tags[1:]),
                (ValueError, quor.Solver, vertices, triangles, tags + 2**32),
                (TypeError, quor.Solver, vertices, triangles, tags + 0.0),
                (ValueError, solver.solve, tags[1:]),
                (ValueError, solver.solve, tags, tags[1:]),
                (ValueError, solver.solve, tags[:, None]),
                (ValueError, solver.to_solver_order, tags[1:]),
                (ValueError, solver.write, tags[1:], "never"),
                (ValueError, quor.encode_integer_to_sphere, 2**32),
                (ValueError, quor.encode_integer_to_sphere, -2),
                (ValueError, quor.encode_integer_to_sphere, 65535)):
            with self.subTest(function=function, arguments=arguments), self.assertRaises(error):
                function(*arguments)

    def test_statuses(self):
        square, ones = np.eye(4, 3), [1] * 4
        for error, status, words, function, *arguments in (
                (quor.QuorError, 1, "nan is not 0 or more", quor.weld, square, [[0, 1, 2]], np.nan),
                (quor.QuorError, 1, "-1e-300", quor.weld, square, [[0, 1, 2]], -1e-300),
                (quor.NoVertexError, 1, "none", quor.Solver, square[:0], np.empty((0, 3), int), []),
                (quor.RepeatedCornerError, 23, "number 1 has", quor.Solver, square,
                 [[0, 1, 2], [3, 1, 3]], ones),
                (quor.UnusedVertexError, 24, "number 2 is", quor.Solver, square, [[0, 1, 3]], ones),
                (quor.UnusedVertexError, 24, "number 0 is", quor.Solver, square,
                 np.empty((0, 3), int), ones)):
            with self.assertRaisesRegex(error, words) as caught:
                function(*arguments)
            self.assertEqual(caught.exception.status, status)

    def test_singular_matrix_is_told(self):
        # Entries 1, 0.5 and 0 only: the elimination is exact and its last pivot is 0.
        solver = quor.Solver([[0, 0, 0], [1, 0, 0], [0, 1, 0]], [[0, 1, 2]], [0] * 3,
                             unprescribed="ignore")
        self.assertEqual(solver.info, quor.Info.NUMERICAL_ISSUE)
        self.assertEqual(list(solver.solve([1.0] * 3)), [0] * 3)


class Kit(unittest.TestCase):
    """What raw meshes need: looked at, mended, made finer, shown."""

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
        with self.assertRaises(ValueError):
            quor.clean(self.FLAT * np.nan, self.CRACK)

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

    def test_colours(self):
        rgba = quor.colours([0, 1, 2, np.nan])
        self.assertEqual(rgba.tolist(), [[68, 1, 84, 255], [32, 144, 140, 255], [253, 231, 36, 255],
                                         [128, 128, 128, 255]])
        self.assertEqual(quor.colours([5], 0, 10).tolist(), rgba[1:2].tolist())
        with self.assertRaises(ValueError):
            quor.colours([1], 0, np.inf)

    def test_pieces_without_a_prescribed_vertex(self):
        triangle = [[0, 0, 0], [1, 0, 0], [0, 1, 0]]
        two = (np.concatenate([triangle, np.add(triangle, 5)]), [[0, 1, 2], [3, 4, 5]])
        with self.assertRaisesRegex(quor.UnprescribedPieceError, "1 of 2 .* vertex 3"):
            quor.Solver(*two, [1, 0, 0, 0, 0, 0])
        with self.assertWarns(quor.UnprescribedPieceWarning):
            quor.Solver(*two, [1, 0, 0, 0, 0, 0], unprescribed="warn")
        with self.assertRaises(ValueError):
            quor.Solver(*two, [1, 0, 0, 1, 0, 0], unprescribed="maybe")

    def test_progress(self):
        mesh, told = bumpy_grid(), []
        quor.Solver(*mesh, progress=told.append)
        self.assertEqual((told[0], told[-1]), (0, 1))
        with self.assertRaises(quor.Cancelled):
            quor.Solver(*mesh, progress=lambda fraction: True)
        with self.assertRaises(ZeroDivisionError):
            quor.Solver(*mesh, progress=lambda fraction: 1 / 0)

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
            for error, bad in ((FileNotFoundError, Path(folder) / "missing" / "x"),
                               (OSError, "/dev/null/x"), (ValueError, folder + "/a\0b"),
                               (ValueError, folder + "/")):
                with self.assertRaises(error):
                    quor.write(vertices, triangles, field, bad)
            with self.assertRaises(FileNotFoundError):
                quor.write(vertices, triangles, field, path, Path(folder) / "none")
            if os.path.exists("/dev/full"):
                os.symlink("/dev/full", Path(folder) / "full.obj.part")
                with self.assertRaises(OSError):
                    quor.write(vertices, triangles, field, Path(folder) / "full")
            self.assertEqual([name for name in os.listdir(folder) if "part" in name], [])

    @unittest.skipUnless(sys.platform == "linux", "limits the address space")
    def test_memory_that_runs_out_is_an_exception(self):
        program = """if True:
            import resource, numpy as np, quor
            mesh = quor.refine([[0, 0, 0], [1, 0, 0], [0, 1, 0]], [[0, 1, 2]], triangle_count=400_000)
            tags = np.zeros(len(mesh.vertices), int)
            tags[0] = 1
            with open("/proc/self/statm") as file:
                used = int(file.read().split()[0]) * resource.getpagesize()
            for room in range(0, 600 << 20, 20 << 20):
                resource.setrlimit(resource.RLIMIT_AS, (used + room, -1))
                try:
                    quor.Solver(mesh.vertices, mesh.triangles, tags)
                    break
                except MemoryError:
                    failed = room
            print("failed", failed, "then built")
        """
        run = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True,
                             env={**os.environ, "PYTHONPATH": os.path.dirname(quor.__file__)})
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("then built", run.stdout)


class Module(unittest.TestCase):
    def test_all_integers_survive_the_sphere(self):
        for value in range(-1, 65535):
            x, y, z = quor.encode_integer_to_sphere(value)
            self.assertEqual(quor.decode_integer_from_sphere(x, y, z), value)
        self.assertEqual(quor.decode_integer_from_sphere(-x, -y, -z), value)

    def test_handles_and_addresses_keep_64_bits(self):
        # Another thread's heap lies high; the main one's may lie below 4 GB.
        solvers = []
        for _ in range(2):
            thread = threading.Thread(target=lambda: solvers.append(quor.Solver(*bumpy_grid())))
            thread.start()
            thread.join()
        for solver in solvers:
            self.assertGreater(solver.vertices.ctypes.data, 2**32)
            self.assertGreater(solver.triangles.ctypes.data, 2**32)
            np.testing.assert_allclose(solver.solve(np.ones(63)), 1, atol=1e-11)

    def test_missing_library_is_an_import_error(self):
        run = subprocess.run([sys.executable, "-c", "import quor"], capture_output=True, text=True,
                             env={**os.environ, "QUOR_LIBRARY": "/nowhere/libquorkit.so",
                                  "PYTHONPATH": os.path.dirname(quor.__file__)})
        self.assertIn("ImportError: quor: cannot load", run.stderr)


if __name__ == "__main__":
    unittest.main()
