"""The solver: a factorized mesh, its solves, and why one is refused."""

from __future__ import annotations

import ctypes
import enum
import warnings
from ctypes import byref, c_void_p
from typing import TYPE_CHECKING, Any, Callable, NoReturn, Optional, Tuple

import numpy as np

from ._arrays import address, any_integers, check_shape, given, real, room_for
from ._errors import (NoVertexError, QuorError, SingularMatrixError, UnprescribedPieceError,
                      UnprescribedPieceWarning, UnusedVertexError)
from ._inputs import mesh_arrays
from ._library import BAD_ARGUMENT, CSolverInfo, Watch, call, library
from ._meshes import Report, check
from ._showing import write_files

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray

    from ._arrays import Integers, MeshLike, Reals
    from ._showing import Path

VERTEX_LIMIT = 1_431_655_765  # beyond these none is built, see quorkitConstruct
TRIANGLE_LIMIT = 238_609_294


class Info(enum.IntEnum):
    """What became of a solver's factorization."""

    SUCCESS = 0
    NUMERICAL_ISSUE = 1  # a pivot was exactly zero: solves give 0 at the free vertices
    NO_CONVERGENCE = 2  # does not occur
    INVALID_INPUT = 3  # does not occur


class Owner:
    """What owns memory of the library, which must be released once and is of this process alone."""

    def __reduce_ex__(self, protocol: object) -> NoReturn:  # what copy, deepcopy and pickle ask for
        raise TypeError("a quor.Solver owns memory of the library, so it can be neither copied nor pickled: "
                        "share the one between threads, or build another from the mesh")


class Handle(Owner, c_void_p):
    """The library's solver, released with the last reference: a solver's, a view's, a call's."""

    def __del__(self, release: Any = library.quorkitFreeSolver) -> None:
        release(self)


class Memory(Owner):
    """An array inside a handle, as numpy's array interface takes it: read only, handle kept."""

    def __init__(self, handle: Handle, pointer: Any, shape: Tuple[int, ...], dtype: Any) -> None:
        self._handle = handle
        self.__array_interface__ = {"version": 3, "shape": shape, "typestr": np.dtype(dtype).str,
                                    "data": (ctypes.cast(pointer, c_void_p).value, True)}


class Solver(Owner):
    """The cotangent Laplacian of a mesh, factorized once for any number of solves.

    vertices   (n, 3) coordinates, n >= 1
    triangles  (m, 3) indices of vertices, m >= 1; every vertex is used
    tags       (n,) integers or booleans: 1, 2, 3 (True) prescribed, all others free

    progress   called now and then, on this thread, with the fraction that is done, 0 .. 1; returns
               True to cancel, and anything else to go on
    unprescribed  what becomes of a connected component of the mesh without a prescribed vertex, whose
               field nothing defines, and of a singular matrix: "raise", "warn" or "ignore". With "ignore"
               coordinates need not be finite either

    Raises NoVertexError, RepeatedCornerError, UnusedVertexError, UnprescribedPieceError or
    SingularMatrixError; QuorError for a coordinate that is not finite; Cancelled, or what `progress`
    raised. Degenerate triangles are not refused: clean the mesh before.

    The solver copies what it needs. Values and fields are in the caller's order of vertices; only
    `vertices`, `triangles` and `write` speak solver order, to which `to_solver_order` brings a
    field: prescribed vertices first, then the free ones in reverse.

    Use it in a with statement, call close(), or leave it to be collected.
    """

    order: NDArray[np.intp]  #: (n,) for each place in solver order the caller's index of its vertex
    prescribed_count: int  #: the number of prescribed vertices; they come first in solver order

    def __init__(self, vertices: MeshLike, triangles: Optional[ArrayLike] = None,
                 tags: Optional[ArrayLike] = None,
                 progress: Optional[Callable[[float], object]] = None,
                 unprescribed: str = "raise") -> None:
        vertices, triangles = mesh_arrays(vertices, triangles, "vertices", VERTEX_LIMIT, TRIANGLE_LIMIT)
        n = len(vertices)
        marks = any_integers("tags", given("tags", tags), n)
        if unprescribed not in ("raise", "warn", "ignore"):
            raise ValueError(f'unprescribed: {unprescribed!r} is not "raise", "warn" or "ignore"')
        if n == 0:
            raise NoVertexError(1, "vertices: there are none", "vertices")
        if len(triangles) == 0:
            raise UnusedVertexError(24, "vertices: no triangle uses vertex 0", "vertices", 0)
        is_warned = False
        if unprescribed != "ignore":
            is_warned = require_a_field(vertices, check(vertices, triangles, marks), unprescribed)
        handle = Handle()
        watch = Watch(progress)
        watch.call(library.quorkitConstruct, n, vertices, len(triangles), triangles, marks, watch.callback,
                   None, byref(handle))
        prescribed = (marks >= 1) & (marks <= 3)
        self.order = np.concatenate([np.flatnonzero(prescribed), np.flatnonzero(~prescribed)[::-1]])
        self.order.flags.writeable = False
        self.prescribed_count = int(np.count_nonzero(prescribed))
        self._triangle_count = len(triangles)
        self._handle: Optional[Handle] = handle
        if self.info != Info.SUCCESS and unprescribed != "ignore" and not is_warned:
            text = "triangles: the matrix is singular, a pivot is exactly zero: clean the mesh"
            if unprescribed == "raise":
                raise SingularMatrixError(BAD_ARGUMENT, text, "triangles")
            warnings.warn(text, UnprescribedPieceWarning, stacklevel=2)

    def __repr__(self) -> str:
        state = "closed" if self._handle is None else f"{self.prescribed_count:,} of them prescribed"
        return (f"<quor.Solver: {len(self.order):,} vertices, {state}, "
                f"{self._triangle_count:,} triangles>")

    def __enter__(self) -> Solver:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Gives the memory back as soon as no view and no call in another thread uses it. Every
        later use of the solver raises ValueError; closing it again is fine."""
        self._handle = None

    @property
    def _open_handle(self) -> Handle:
        handle = self._handle
        if handle is None:
            raise ValueError("the solver is closed")
        return handle

    @property
    def info(self) -> Info:
        """Whether the factorization succeeded: an Info. A handle whose factorization failed works,
        but solves give 0 at the free vertices."""
        return Info(self._read_info(self._open_handle).factorization)

    @staticmethod
    def _read_info(handle: Handle) -> CSolverInfo:
        info = CSolverInfo()
        call(library.quorkitSolverInfo, handle, byref(info))
        return info

    def solve(self, prescribed: ArrayLike, source: Optional[ArrayLike] = None,
              out: Optional[Reals] = None) -> Reals:
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
        values = real("prescribed", prescribed, self.order.shape)
        sources = None if source is None else real("source", source, self.order.shape)
        return self._solve(library.quorkitSolve, (), values, sources, out)

    def solve_many(self, prescribed: ArrayLike, source: Optional[ArrayLike] = None,
                   out: Optional[Reals] = None) -> Reals:
        """Computes several fields at once, in less time than one after the other. Each row has every
        bit that solve gives for that row.

        prescribed, source, out  (k, n) as for solve, a row for each field
        """
        shape = (None, len(self.order))
        values = real("prescribed", prescribed, shape)
        sources = None if source is None else real("source", source, values.shape)
        return self._solve(library.quorkitSolveMany, (len(values),), values, sources, out)

    def _solve(self, function: Any, count: Tuple[int, ...], values: Reals, sources: Optional[Reals],
               out: Optional[Reals]) -> Reals:
        handle = self._open_handle
        given_inputs = [values] if sources is None else [values, sources]
        result, inputs = room_for(out, values.shape, given_inputs)
        call(function, handle, *count, inputs[0], None if sources is None else address(inputs[1]), result)
        return result if out is None else out

    @property
    def vertices(self) -> Reals:
        """(n, 3) float64 in solver order: the solver's own array, read only. It stays valid when
        the solver is closed."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(Memory(handle, info.vertices, (info.vertex_count, 3), np.float64))

    @property
    def triangles(self) -> Integers:
        """(m, 3) int32, indices in solver order: the solver's own array, read only. It stays valid
        when the solver is closed. Triangles and corners are in the caller's order."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(Memory(handle, info.triangles, (info.triangle_count, 3), np.int32))

    def to_solver_order(self, values: ArrayLike) -> NDArray[Any]:
        """Brings values in the caller's order, (n, ...) of any type, to solver order: a copy."""
        array = np.asarray(values)
        check_shape("values", array, self.order.shape + (None,) * (array.ndim - 1))
        return np.asarray(array[self.order])

    def write(self, field: ArrayLike, base_name: Path) -> None:
        """Writes the solver's mesh and a field as base_name + ".obj" and base_name + ".mtl": the text
        of wobj, in solver order. The function `write` of the module does the same with any mesh,
        keeps the margin that most viewers need, and copies the ramp.

        field      (n,) values in SOLVER order: write(solver.to_solver_order(field), "plate")
        base_name  str, bytes or path

        Raises and writes as that does.
        """
        handle = self._open_handle
        info = self._read_info(handle)
        values = real("field", field, self.order.shape)
        write_files(info.vertex_count, info.vertices, info.triangle_count, info.triangles, values,
                    base_name, None, 0.0)


def require_a_field(vertices: Reals, report: Report, wish: str) -> bool:
    """Refuses a mesh that has no field, or warns; looks only at meshes that are otherwise sound, because
    the constructor refuses the others. Returns whether it has warned."""
    if report.unused_vertices.count or report.repeated_corners.count:
        return False
    if report.not_finite.count:
        first = report.not_finite.first
        x, y, z = vertices[first]
        raise QuorError(BAD_ARGUMENT, f"vertices: vertex {first} is at ({x:g}, {y:g}, {z:g}): give finite "
                                      "coordinates", "vertices", first)
    if not report.unprescribed_pieces.count:
        return False
    count, first = report.unprescribed_pieces
    text = (f"tags: {count} of {report.pieces.count} connected components have no prescribed vertex; the first "
            f"one is that of vertex {first}: tag one of its vertices 1, 2 or 3")
    if wish == "raise":
        raise UnprescribedPieceError(BAD_ARGUMENT, text, "tags", first)
    warnings.warn(text, UnprescribedPieceWarning, stacklevel=3)
    return True
