"""What must not reach the library, and how the package finds it."""

import importlib.metadata
import pickle
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import numpy as np
import quor
from shared import bumpy_grid, run


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

    def test_refusals_name_argument_and_entry(self):
        vertices, triangles, tags = bumpy_grid(3, 3)
        low, huge = triangles.copy(), triangles.astype(np.uint64)
        low[4, 1], low[6, 0], huge[2, 2] = -1, 99, 2**63
        far, wide = vertices.copy(), tags.astype(np.int64)
        far[5, 2], wide[7] = np.nan, -2**40
        for words, argument, index, function, *arguments in (
                ("triangles: -1 in row 4 is not in 0 .. 8", "triangles", 4, quor.clean, vertices, low),
                ("9223372036854775808 in row 2", "triangles", 2, quor.areas, vertices, huge),
                ("tags: -1099511627776 in row 7", "tags", 7, quor.Solver, vertices, triangles, wide),
                ("vertices", "vertices", 5, quor.refine, far, triangles, 1),
                ("edges: 9 in row 1", "edges", 1, lambda *mesh: quor.solve_within(
                    *mesh, 1, edges=[[0, 1], [9, 0]], edge_values=[1, 1]), vertices, triangles)):
            with self.subTest(words), self.assertRaisesRegex(quor.QuorError, words) as caught:
                function(*arguments)
            self.assertEqual((caught.exception.argument, caught.exception.index), (argument, index))

    def test_statuses(self):
        square, ones = np.eye(4, 3), [1] * 4
        for error, status, words, function, *arguments in (
                (quor.QuorError, 1, "tolerance is nan: give 0 or more", quor.weld, square, [[0, 1, 2]], np.nan),
                (quor.QuorError, 1, "-1e-300", quor.weld, square, [[0, 1, 2]], -1e-300),
                (quor.NoVertexError, 1, "none", quor.Solver, square[:0], np.empty((0, 3), int), []),
                (quor.RepeatedCornerError, 23, "triangle 1 has the corners 3, 1, 3: drop it with quor.clean", quor.Solver, square,
                 [[0, 1, 2], [3, 1, 3]], ones),
                (quor.UnusedVertexError, 24, "no triangle uses vertex 2", quor.Solver, square, [[0, 1, 3]], ones),
                (quor.UnusedVertexError, 24, "no triangle uses vertex 0", quor.Solver, square,
                 np.empty((0, 3), int), ones)):
            with self.assertRaisesRegex(error, words) as caught:
                function(*arguments)
            self.assertEqual(caught.exception.status, status)
            there = pickle.loads(pickle.dumps(caught.exception))  # as from a worker process
            self.assertEqual((type(there), there.status, str(there)),
                             (error, status, str(caught.exception)))


class Package(unittest.TestCase):
    def test_missing_library_is_an_import_error(self):
        outcome = run("import quor", QUOR_LIBRARY="/nowhere/libquorkit.so")
        self.assertIn("ImportError: quor: cannot load", outcome.stderr)

    def test_a_mac_loads_no_library_of_the_current_directory(self):
        """Its loader looks there for a bare name; every name that is tried is a whole path."""
        for chosen in ("", "libquorkit.dylib"):
            outcome = run("""if True:
                import ctypes, sys, numpy
                tried = []
                def load(name, *_):
                    tried.append(name)
                    raise OSError("none")
                ctypes.CDLL, sys.platform = load, "darwin"
                try:
                    import quor
                except ImportError:
                    print(len(tried) > 0 and all(name.startswith("/") for name in tried), tried)
            """, QUOR_LIBRARY=chosen)
            self.assertTrue(outcome.stdout.startswith("True"), outcome)

    def test_metadata_stand_alone(self):
        """A wheel has no files beside its description that a link could lead to."""
        try:
            metadata = importlib.metadata.metadata("quor")
        except importlib.metadata.PackageNotFoundError:
            self.skipTest("not installed, only imported")
        text = metadata.get_payload() or metadata["Description"]
        self.assertIn("quor.refine", text)
        self.assertEqual(re.findall(r"\]\((?!https?:)[^)]*\)", text), [])
        self.assertTrue((Path(quor.__file__).parent / "py.typed").exists())

    def test_all_names_are_met_as_quors_own(self):
        for name in quor.__all__:
            self.assertEqual(getattr(quor, name).__module__, "quor", name)

    @unittest.skipUnless(sys.platform == "linux", "knows how the library is called there")
    def test_plug_ins_bring_a_copy_each(self):
        """Each as a part of itself, with the library inside; there is no other."""
        program = """if True:
            import ctypes, pickle, numpy, one.quor, two.quor
            corners, tags = [[0, 0, 0], [1, 0, 0], [0, 1, 0]], [1, 0, 0]
            addresses = set()
            for package in (one.quor, two.quor):
                function = package._library.library.quorkitCheck
                addresses.add(ctypes.cast(function, ctypes.c_void_p).value)
                solver = package.Solver(corners, [[0, 1, 2]], tags)
                numpy.testing.assert_allclose(solver.solve([5, 0, 0]), 5)
                for thing in (package.weld, package.Info.SUCCESS, package.Finding(2, 7)):
                    there = pickle.loads(pickle.dumps(thing))
                    assert there == thing and type(there) is type(thing), thing
                try:
                    package.Solver(corners, [[0, 1, 1]], tags)
                except package.RepeatedCornerError:
                    continue
                raise AssertionError("another copy's error")
            assert len(addresses) == 2, "both have one library"
        """
        with tempfile.TemporaryDirectory() as folder:
            for name in ("one", "two"):
                copy = Path(folder) / name / "quor"
                shutil.copytree(Path(quor.__file__).parent, copy)
                shutil.copy(quor._library.library._name, copy / "libquorkit.so.0")
                (copy.parent / "__init__.py").write_text("from . import quor\n")
            outcome = run(program, folder, QUOR_LIBRARY="")
        self.assertEqual(outcome.returncode, 0, outcome.stderr)


if __name__ == "__main__":
    unittest.main()
