"""The solver against dense algebra, and its memory."""

import gc
import os
import sys
import tempfile
import threading
import unittest
import weakref
from pathlib import Path

import numpy as np
import quor
from shared import RANDOM, bumpy_grid, run


def dense_stiffness(vertices, triangles):
    """K from the gradients of the hat functions: no cotangent anywhere."""
    k = np.zeros((len(vertices),) * 2)
    for corners in triangles:
        p = vertices[corners]
        edges = np.roll(p, -2, 0) - np.roll(p, -1, 0)  # opposite each corner
        area = np.linalg.norm(np.cross(edges[0], edges[1])) / 2
        k[np.ix_(corners, corners)] += edges @ edges.T / (4 * area)
    return k


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

    def test_singular_matrix_is_told(self):
        # Entries 1, 0.5 and 0 only: the elimination is exact and its last pivot is 0.
        solver = quor.Solver([[0, 0, 0], [1, 0, 0], [0, 1, 0]], [[0, 1, 2]], [0] * 3,
                             unprescribed="ignore")
        self.assertEqual(solver.info, quor.Info.NUMERICAL_ISSUE)
        # The weights of the free corners with the far one are lost in that with each other.
        far = [[0, 0, 0], [1e20, 0, 0], [1e20, 1, 0]], [[0, 1, 2]], [1, 0, 0]
        with self.assertRaises(quor.SingularMatrixError):
            quor.Solver(*far)
        with self.assertWarnsRegex(quor.UnprescribedPieceWarning, "singular"):
            quor.Solver(*far, unprescribed="warn")
        self.assertEqual(list(solver.solve([1.0] * 3)), [0] * 3)

    def test_pieces_without_a_prescribed_vertex(self):
        triangle = [[0., 0, 0], [1, 0, 0], [0, 1, 0]]
        two = (np.concatenate([triangle, np.add(triangle, 5)]), [[0, 1, 2], [3, 4, 5]])
        with self.assertRaisesRegex(quor.UnprescribedPieceError, "1 of 2 .* vertex 3"):
            quor.Solver(*two, [1, 0, 0, 0, 0, 0])
        with self.assertWarns(quor.UnprescribedPieceWarning):
            quor.Solver(*two, [1, 0, 0, 0, 0, 0], unprescribed="warn")
        with self.assertRaises(ValueError):
            quor.Solver(*two, [1, 0, 0, 1, 0, 0], unprescribed="maybe")
        two[0][4, 1] = np.inf
        for wish in ("raise", "warn"):
            with self.assertRaisesRegex(quor.QuorError, r"vertex 4 is at \(6, inf, 5\)") as caught:
                quor.Solver(*two, [1, 0, 0, 1, 0, 0], unprescribed=wish)
            self.assertEqual((caught.exception.argument, caught.exception.index), ("vertices", 4))
        quor.Solver(*two, [1, 0, 0, 1, 0, 0], unprescribed="ignore")

    def test_progress(self):
        mesh, told = bumpy_grid(), []
        quor.Solver(*mesh, progress=told.append)
        self.assertEqual((told[0], told[-1]), (0, 1))
        for answer in (True, np.bool_(True)):
            with self.assertRaises(quor.Cancelled):
                quor.Solver(*mesh, progress=lambda fraction: answer)
        for answer in (False, None, 12, "written"):
            quor.Solver(*mesh, progress=lambda fraction: answer)
        with self.assertRaises(ZeroDivisionError):
            quor.Solver(*mesh, progress=lambda fraction: 1 / 0)

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
        outcome = run(program)
        self.assertEqual(outcome.returncode, 0, outcome.stderr)
        self.assertIn("then built", outcome.stdout)

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


if __name__ == "__main__":
    unittest.main()
