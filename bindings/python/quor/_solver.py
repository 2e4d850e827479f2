"""The solver: a factorized mesh, its solves, and why one is refused."""

import ctypes
import enum
import warnings
from ctypes import byref, c_void_p

import numpy as np

from ._arrays import address, check_shape, integer, real
from ._errors import (NoVertexError, UnprescribedPieceError, UnprescribedPieceWarning,
                      UnusedVertexError)
from ._library import BAD_ARGUMENT, CSolverInfo, Progress, call, library
from ._meshes import check
from ._showing import write_files

VERTEX_LIMIT = 1_431_655_765  # beyond these none is built, see quorkitConstruct
TRIANGLE_LIMIT = 238_609_294


class Info(enum.IntEnum):
    """What became of a solver's factorization."""

    SUCCESS = 0
    NUMERICAL_ISSUE = 1  # a pivot was exactly zero: solves give 0 at the free vertices
    NO_CONVERGENCE = 2  # does not occur
    INVALID_INPUT = 3  # does not occur


class Handle(c_void_p):
    """The library's solver, released with the last reference: a solver's, a view's, a call's."""

    def __del__(self, release=library.quorkitFreeSolver):
        release(self)


class Memory:
    """An array inside a handle, as numpy's array interface takes it: read only, handle kept."""

    def __init__(self, handle, pointer, shape, dtype):
        self._handle = handle
        self.__array_interface__ = {"version": 3, "shape": shape, "typestr": np.dtype(dtype).str,
                                    "data": (ctypes.cast(pointer, c_void_p).value, True)}


class Solver:
    """The cotangent Laplacian of a mesh, factorized once for any number of solves.

    vertices   (n, 3) coordinates, n >= 1
    triangles  (m, 3) indices of vertices, m >= 1; every vertex is used
    tags       (n,) integers or booleans: 1, 2, 3 (True) prescribed, all others free

    progress   called now and then, on this thread, with the fraction that is done, 0 .. 1; returns
               True to cancel, and anything else to go on
    unprescribed  what becomes of a piece of the mesh without a prescribed vertex, whose field nothing
               defines: "raise", "warn" or "ignore"

    Raises NoVertexError, RepeatedCornerError, UnusedVertexError or UnprescribedPieceError; Cancelled,
    or what `progress` raised. Flat triangles are not refused: clean the mesh before.

    The solver copies what it needs. Values and fields are in the caller's order of vertices; only
    `vertices`, `triangles` and `write` speak solver order, to which `to_solver_order` brings a
    field: prescribed vertices first, then the free ones in reverse.

    Use it in a with statement, call close(), or leave it to be collected.
    """

    def __init__(self, vertices, triangles, tags, progress=None, unprescribed="raise"):
        vertices = real("vertices", vertices, (None, 3), VERTEX_LIMIT)
        n = len(vertices)
        triangles = integer("triangles", triangles, (None, 3), 0, n - 1, IndexError,
                            limit=TRIANGLE_LIMIT)
        tags = integer("tags", tags, (n,), -2**31, 2**31 - 1, ValueError, kinds="iub")
        if unprescribed not in ("raise", "warn", "ignore"):
            raise ValueError(f'unprescribed: {unprescribed!r} is not "raise", "warn" or "ignore"')
        if unprescribed != "ignore":
            look_for_unprescribed(check(vertices, triangles, tags), unprescribed)
        if n == 0:
            raise NoVertexError(1, "vertices: there are none", "vertices")
        if len(triangles) == 0:
            raise UnusedVertexError(24, "vertices: no triangle uses vertex 0", "vertices", 0)
        handle = Handle()
        raised = []

        @Progress
        def report(fraction, _):
            try:
                return is_true(progress(fraction))
            except BaseException as error:  # not to be lost in C
                raised.append(error)
                return 1

        try:
            call(library.quorkitConstruct, n, vertices, len(triangles), triangles, tags,
                 report if progress else Progress(), None, byref(handle))
        finally:
            if raised:
                raise raised[0] from None
        prescribed = (tags >= 1) & (tags <= 3)
        #: (n,) for each place in solver order the caller's index of its vertex.
        self.order = np.concatenate([np.flatnonzero(prescribed), np.flatnonzero(~prescribed)[::-1]])
        self.order.flags.writeable = False
        #: The number of prescribed vertices; they come first in solver order.
        self.prescribed_count = int(np.count_nonzero(prescribed))
        self._handle = handle

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Gives the memory back as soon as no view and no call in another thread uses it. Every
        later use of the solver raises ValueError; closing it again is fine."""
        self._handle = None

    @property
    def _open_handle(self):
        handle = self._handle
        if handle is None:
            raise ValueError("the solver is closed")
        return handle

    @property
    def info(self):
        """Whether the factorization succeeded: an Info. A handle whose factorization failed works,
        but solves give 0 at the free vertices."""
        return Info(self._read_info(self._open_handle).factorization)

    @staticmethod
    def _read_info(handle):
        info = CSolverInfo()
        call(library.quorkitSolverInfo, handle, byref(info))
        return info

    def solve(self, prescribed, source=None, out=None):
        """Computes the field that has the given values at the prescribed vertices and is harmonic
        at the free ones.

        prescribed  (n,) values, of which those at prescribed vertices are read
        source      (n,) source values s, of which those at free vertices are read: there the field
                    x solves K x = -s with the stiffness matrix K. Not weighted by area; a positive
                    value lowers the field.
        out         (n,) float64, contiguous and writeable, for the result; may be the very array
                    prescribed or source

        Returns the field, (n,) in the caller's order: out if it was given.
        """
        handle = self._open_handle
        shape = self.order.shape
        prescribed = real("prescribed", prescribed, shape)
        if source is not None:
            source = real("source", source, shape)
        if out is None:
            out = np.empty(shape)
        else:
            if not (isinstance(out, np.ndarray) and out.dtype == np.float64 and out.flags.carray):
                raise TypeError("out: expected a contiguous, writeable float64 array")
            check_shape("out", out, shape)
        call(library.quorkitSolve, handle, prescribed, address(source), out)
        return out

    @property
    def vertices(self):
        """(n, 3) float64 in solver order: the solver's own array, read only. It stays valid when
        the solver is closed."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(Memory(handle, info.vertices, (info.vertex_count, 3), np.float64))

    @property
    def triangles(self):
        """(m, 3) int32, indices in solver order: the solver's own array, read only. It stays valid
        when the solver is closed. Triangles and corners are in the caller's order."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(Memory(handle, info.triangles, (info.triangle_count, 3), np.int32))

    def to_solver_order(self, values):
        """Brings values in the caller's order, (n, ...) of any type, to solver order: a copy."""
        values = np.asarray(values)
        check_shape("values", values, self.order.shape + (None,) * (values.ndim - 1))
        return values[self.order]

    def write(self, field, base_name):
        """Writes the solver's mesh and a field as base_name + ".obj" and base_name + ".mtl": the text
        of wobj, in solver order. The function `write` of the module does the same with any mesh,
        keeps the margin that most viewers need, and copies the ramp.

        field      (n,) values in SOLVER order: write(solver.to_solver_order(field), "plate")
        base_name  str, bytes or path

        Raises and writes as that does.
        """
        handle = self._open_handle
        info = self._read_info(handle)
        field = real("field", field, self.order.shape)
        write_files(info.vertex_count, info.vertices, info.triangle_count, info.triangles, field,
                    base_name, None, 0.0)


def look_for_unprescribed(report, wish):
    """Looks only at meshes that are otherwise sound: the constructor refuses the others."""
    refused = report.unused_vertices.count or report.repeated_corners.count
    if report.unprescribed_pieces.count and not refused:
        count, first = report.unprescribed_pieces
        text = (f"tags: {count} of {report.pieces.count} pieces have no prescribed vertex, so nothing says "
                f"what their field is; the first one is that of vertex {first}")
        if wish == "raise":
            raise UnprescribedPieceError(BAD_ARGUMENT, text, "tags", first)
        warnings.warn(text, UnprescribedPieceWarning, stacklevel=3)


def is_true(answer):
    """Whether a callback returned True itself: what it returns by the way, as print and append do, or
    a count of written characters, does not cancel."""
    return isinstance(answer, (bool, np.bool_)) and bool(answer)
