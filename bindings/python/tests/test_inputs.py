"""What comes in: hostile arrays, and the meshes of other packages."""

import collections
import copy
import pickle
import sys
import types
import unittest

import numpy as np
import quor
from shared import RANDOM, bumpy_grid, run

try:
    import meshio
except ImportError:
    meshio = None


class Liar(np.ndarray):
    """An array that says of itself what it is not."""

    dtype = property(lambda self: np.dtype(np.float64))
    flags = property(lambda self: types.SimpleNamespace(carray=True, num=0x501))
    shape = property(lambda self: (9,))

    def min(self, *_, **__):
        return 0

    max = min


def misaligned(array):
    raw = np.empty(array.nbytes + 1, np.uint8)[1:].view(array.dtype).reshape(array.shape)
    raw[...] = array
    return raw


def frozen(array):
    array = array.copy()
    array.flags.writeable = False
    return array


LAYOUTS = {
    "of the other byte order": lambda a: a.astype(a.dtype.newbyteorder()),
    "in columns": np.asfortranarray,
    "backwards": lambda a: a[::-1].copy()[::-1],
    "with gaps": lambda a: np.repeat(a, 2, -1)[..., ::2],
    "misaligned": misaligned,
    "read only": frozen,
    "of a subclass": lambda a: a.view(Liar),
    "a masked array without a mask": np.ma.masked_array,
    "a memoryview": memoryview,
    "wider": lambda a: a.astype(np.int64 if a.dtype.kind == "i" else a.dtype),
}


class Layouts(unittest.TestCase):
    """Whatever an array looks like in memory, the numbers in it count, and nothing else."""

    def setUp(self):
        vertices, triangles, tags = bumpy_grid()
        self.vertices, self.triangles = vertices, triangles.astype(np.int32)
        self.tags = tags.astype(np.int32)
        self.values = RANDOM.random(len(vertices))

    def everything(self, wrap):
        """The arrays that all functions make of inputs in that layout."""
        v, t, tags, u = map(wrap, (self.vertices, self.triangles, self.tags, self.values))
        solver = quor.Solver(v, t, tags)
        yield from quor.weld_with_origins(v, t, 0.3)
        yield from quor.check(v, t, tags)
        yield from quor.check_regions(v, t, tags, u)
        yield from quor.clean(v, t)
        yield from quor.refine(v, t, 0.5, sizes=wrap(self.values + 0.2))
        yield from quor.flip(v, t, wrap(np.arange(len(self.triangles), dtype=np.int32) % 3))
        yield from quor.faces(v, t)
        yield quor.areas(v, t)
        yield quor.flow(v, t, u, tags)
        yield quor.gradients(v, t, u)
        yield quor.colours(u)
        yield solver.solve(u, u)
        yield solver.solve_many(wrap(np.stack([self.values] * 3)))
        yield from quor.solve_within(v, t, 0.1, vertex_values=u, share_of_span=True)

    def test_does_not_matter(self):
        expected = list(self.everything(lambda array: array))
        for layout, wrap in LAYOUTS.items():
            with self.subTest(layout):
                for have, want in zip(self.everything(wrap), expected):
                    np.testing.assert_array_equal(have, want)

    def test_strides_of_zero(self):
        n = len(self.vertices)
        one, five = np.broadcast_to(np.int32(1), n), np.broadcast_to(5.0, n)
        solver = quor.Solver(self.vertices, self.triangles, one)
        np.testing.assert_array_equal(solver.solve(five), np.full(n, 5.0))
        np.testing.assert_array_equal(quor.weld(np.broadcast_to([1., 2, 3], (9, 3)), [[0, 1, 2]], 1)[0],
                                      [[1, 2, 3]])
        with self.assertRaisesRegex(TypeError, "out"):
            solver.solve(five, out=np.broadcast_to(np.empty(1), n))

    def test_a_result_may_overlap_its_inputs(self):
        solver = quor.Solver(self.vertices, self.triangles, self.tags)
        values, source = RANDOM.random((2, 20, len(self.values)))
        rows, n = values.shape
        expected = solver.solve_many(values, source)
        for offset in (-n, -1, 0, 1, n):
            for overlapped in (0, 1):
                room = np.empty((rows + 2) * n)
                inputs, out = [values, source], room[n + offset:][:rows * n].reshape(rows, n)
                inputs[overlapped] = room[n:][:rows * n].reshape(rows, n)
                inputs[overlapped][:] = (values, source)[overlapped]
                self.assertIs(solver.solve_many(*inputs, out=out), out)
                np.testing.assert_array_equal(out, expected)

    def test_a_result_goes_nowhere_else(self):
        solver = quor.Solver(self.vertices[:9], [[0, 1, 2], [3, 4, 5], [6, 7, 8]], [1] * 9)
        memory = frozen(np.zeros(9))
        for out in (memory.view(Liar), np.zeros(5).view(Liar), np.zeros(9, np.int8).view(Liar),
                    np.ma.masked_array(np.zeros(9), [True] * 9)):
            with self.assertRaises((TypeError, ValueError)):
                solver.solve(np.ones(9), out=out)
        self.assertEqual(list(memory), [0] * 9)

    def test_no_numbers(self):
        v, t, tags, u = self.vertices, self.triangles, self.tags, self.values
        masked = np.ma.masked_array(v, np.arange(v.size).reshape(v.shape) == 4)

        class Faulty:
            def __array__(self, *_, **__):
                raise ZeroDivisionError("mine")

        for error, vertices, triangles in (
                (ValueError, masked, t), (ValueError, v, np.ma.masked_equal(t, 3)),
                (ZeroDivisionError, Faulty(), t), (TypeError, v.astype(object), t),
                (TypeError, v.astype(str), t), (TypeError, v.astype(np.longdouble), t),
                (TypeError, v.view("f8,f8,f8"), t), (TypeError, v.astype("M8[s]"), t),
                (TypeError, v, t.astype(object)), (TypeError, v, t.astype("m8[s]")),
                (ValueError, v, t[:0].reshape(0, 4)), (ValueError, v[None], t),
                (IndexError, v, t.astype(np.uint64) + 2**63)):
            with self.subTest(vertices=vertices, triangles=triangles), self.assertRaises(error):
                quor.clean(vertices, triangles)
        for missing in (lambda: quor.weld(v, t), lambda: quor.Solver(v, t),
                        lambda: quor.flow(v, t, u), lambda: quor.write(v, t, u)):
            with self.assertRaisesRegex(TypeError, "is missing"):
                missing()
        with self.assertRaises(ValueError):
            quor.flow(v, t, u, tags, region_count=2**32)

    @unittest.skipUnless(sys.platform == "linux", "limits the address space")
    def test_rows_beyond_the_memory(self):
        """Strides of zero make an array of any length of a few bytes; a copy of it has no room."""
        outcome = run("""if True:
            import resource, numpy as np, quor
            resource.setrlimit(resource.RLIMIT_AS, (2 << 30, -1))
            for call in (lambda rows: quor.clean(rows, [[0, 1, 2]]),
                         lambda rows: quor.check(np.eye(3), np.zeros_like(rows, int, subok=False)),
                         lambda rows: quor.colours(rows[:, 0], 0, 1)):
                try:
                    call(np.broadcast_to(np.zeros(3), (600_000_000, 3)))
                except MemoryError:
                    print("no memory")
        """)
        self.assertEqual((outcome.stdout, outcome.returncode), ("no memory\n" * 3, 0), outcome.stderr)


class Meshes(unittest.TestCase):
    def test_of_other_packages(self):
        v, t, _ = bumpy_grid()
        expected = quor.areas(v, t)
        Cells = collections.namedtuple("Cells", "type data")
        flat = np.insert(t, 0, 3, axis=1).ravel()
        mesh = types.SimpleNamespace
        grid = mesh(points=v, cells=flat, celltypes=np.full(len(t), 5, np.uint8))
        line = Cells("line", np.array([[0, 1]]))
        for given in (mesh(vertices=v, faces=t), mesh(vertices=v, triangles=t), mesh(points=v, faces=flat),
                      mesh(points=v, cells=[Cells("triangle", t[:5]), line, Cells("triangle", t[5:])]),
                      mesh(points=v, cells=[("triangle", t)]), mesh(points=v, cells={"triangle": t}), grid,
                      quor.Welded(v, t, None)):
            np.testing.assert_array_equal(quor.areas(given), expected)
        grid.celltypes[3] = 9
        for words, given in (
                ("triangulate", grid), ("triangulate", mesh(points=v, faces=flat[1:])),
                ("triangulate", mesh(points=v, faces=np.insert(t, 0, 4, axis=1).ravel())),
                ("type quad: triangulate", mesh(points=v, cells=[Cells("quad", t)])),
                ("type tetra: triangulate", mesh(points=v, cells=[("tetra", t)]))):
            with self.assertRaisesRegex(ValueError, words):
                quor.areas(given)
        for wrong in (lambda: quor.areas(v), lambda: quor.areas(mesh(points=v)),
                      lambda: quor.refine(mesh(vertices=v, faces=t), 0.1)):
            with self.assertRaises(TypeError):
                wrong()

    @unittest.skipIf(meshio is None, "meshio is not installed")
    def test_of_meshio(self):
        v, t, tags = bumpy_grid()
        mesh = meshio.Mesh(v, [("line", np.array([[0, 1]])), ("triangle", t)])
        np.testing.assert_array_equal(quor.Solver(mesh, tags=tags).solve(v[:, 0]),
                                      quor.Solver(v, t, tags).solve(v[:, 0]))

    def test_go_from_one_function_to_the_next(self):
        v, t, _ = bumpy_grid()
        soup = v[t].reshape(-1, 3)
        mesh = quor.refine(quor.clean(quor.weld(soup, np.arange(len(soup)).reshape(-1, 3), 1e-9)),
                           longest_edge=0.4)
        self.assertEqual(quor.check(mesh, tags=np.arange(len(mesh.vertices))).prescribed_vertices, (3, 1))
        self.assertEqual(repr(mesh), f"<quor.RefinedMesh: {len(mesh.vertices):,} vertices, "
                                     f"{len(mesh.triangles):,} triangles, no edge longer than 0.4>")


class Owners(unittest.TestCase):
    def test_what_owns_memory_is_not_copied(self):
        solver = quor.Solver(*bumpy_grid())
        vertices = solver.vertices
        for owner in (solver, solver._handle, vertices.base, {"in": [solver]}):
            for duplicate in (copy.deepcopy, pickle.dumps, copy.copy):
                if isinstance(owner, dict) and duplicate is copy.copy:
                    continue
                with self.subTest(owner=owner, duplicate=duplicate):
                    with self.assertRaisesRegex(TypeError, "build another from the mesh"):
                        duplicate(owner)
        for duplicate in (copy.copy, copy.deepcopy, lambda array: pickle.loads(pickle.dumps(array))):
            np.testing.assert_array_equal(duplicate(vertices), vertices)  # the numbers alone

    def test_solver_says_what_it_is(self):
        solver = quor.Solver(np.eye(3), [[0, 1, 2]], [1, 0, 0])
        self.assertEqual(repr(solver), "<quor.Solver: 3 vertices, 1 of them prescribed, 1 triangles>")
        solver.close()
        self.assertIn("closed", repr(solver))


if __name__ == "__main__":
    unittest.main()
