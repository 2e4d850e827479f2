"""A field within a tolerance, without a solver."""

from __future__ import annotations

import operator
from ctypes import POINTER, byref
from typing import TYPE_CHECKING, Callable, NamedTuple, Optional

import numpy as np

from ._arrays import COUNT_LIMIT, address, any_integers, copy, given, integer, real
from ._errors import CornerError, IsolatedVertexError, SingularMatrixError, UnprescribedPieceError
from ._inputs import mesh_arrays
from ._library import BAD_ARGUMENT, CProblem, CSolution, Watch, library
from ._meshes import brief

if TYPE_CHECKING:
    from numpy.typing import ArrayLike

    from ._arrays import Integers, MeshLike, Reals

NO_FIELD = {  # by the outcome of the library
    1: (IsolatedVertexError, "vertex_values: vertex {} has a value, but no edge at it is prescribed: "
                             "prescribe an edge or a triangle"),
    2: (UnprescribedPieceError, "nothing is prescribed on the connected component of vertex {}"),
    3: (SingularMatrixError, "the equations have no finite solution: clean the mesh"),
}


class Solution(NamedTuple):
    """A field within a tolerance, on the mesh that was made for it: what `solve_within` returns."""

    vertices: Reals  # (n, 3) float64; those of the input come first
    triangles: Integers  # (m, 3) int32
    field: Reals  # (n,) float64
    error: float  # the estimated largest error, in the unit of the field
    tolerance: float  # what was asked for, in the unit of the field
    is_reached: bool  # whether the error is at most the tolerance
    rounds: int  # how often it was solved
    triangle_origins: Integers  # (m,) int32: an input triangle of the same face
    vertex_origins: Integers  # (n, 2) int32: the vertices whose midpoint each was made as
    jumps: Integers  # input vertices where regions of different values meet
    jump_radius: float  # no error is promised nearer to them than this

    def __repr__(self) -> str:
        return brief(self, f"error about {self.error:.3g} of {self.tolerance:.3g}")


def solve_within(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
                 tolerance: Optional[float] = None, *, triangle_values: Optional[ArrayLike] = None,
                 edges: Optional[ArrayLike] = None, edge_values: Optional[ArrayLike] = None,
                 vertex_values: Optional[ArrayLike] = None, sources: Optional[ArrayLike] = None,
                 faces: Optional[ArrayLike] = None, share_of_span: bool = False, triangle_limit: int = 0,
                 progress: Optional[Callable[[float], object]] = None) -> Solution:
    """Solves for a field and refines the mesh until the estimated error is at most a tolerance
    everywhere. What is prescribed is bound to the input mesh. See quorkitSolveWithin in quorkit.h.

    tolerance        the largest error, above 0; with share_of_span, as a share of the field's span
    triangle_values  (m,) values of prescribed triangles, NaN for free ones
    edges            (e, 2) ends of prescribed edges of the mesh, with edge_values (e,)
    vertex_values    (n,) values of vertices, NaN for free ones: prescribes the edges between two
    sources          (m,) source densities, per area; positive where they lower the field
    faces            (m,) face numbers; edges between two faces stay
    triangle_limit   the most triangles of the result, or 4m if that is more; 0: 4,000,000
    progress         as for Solver

    Raises IsolatedVertexError, UnprescribedPieceError or SingularMatrixError where there is no field;
    Cancelled, or what `progress` raised.
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    n, m = len(vertices), len(triangles)
    if (edges is None) != (edge_values is None):
        raise TypeError("edges and edge_values go together")
    ends = None if edges is None else integer("edges", edges, (None, 2), 0, n - 1, CornerError)
    limit = operator.index(triangle_limit)
    if not 0 <= limit <= COUNT_LIMIT:
        raise ValueError(f"triangle_limit: {limit} is not in 0 .. {COUNT_LIMIT}")

    def optional(name: str, values: Optional[ArrayLike], count: int) -> Optional[Reals]:
        return None if values is None else real(name, values, (count,))

    arrays = {  # the problem holds addresses only
        "vertices": vertices, "triangles": triangles, "edges": ends,
        "triangle_values": optional("triangle_values", triangle_values, m),
        "edge_values": optional("edge_values", edge_values, 0 if ends is None else len(ends)),
        "vertex_values": optional("vertex_values", vertex_values, n),
        "sources": optional("sources", sources, m),
        "faces": None if faces is None else any_integers("faces", faces, m),
    }
    problem = CProblem(n=n, m=m, edge_count=0 if ends is None else len(ends),
                       tolerance=float(given("tolerance", tolerance)), is_share_of_span=bool(share_of_span),
                       triangle_limit=limit, **{name: address(array) for name, array in arrays.items()})
    watch = Watch(progress)
    made = POINTER(CSolution)()
    watch.call(library.quorkitSolveWithin, byref(problem), watch.callback, None, byref(made))
    try:
        return solution_of(made.contents)
    finally:
        library.quorkitFreeSolution(made)


def solution_of(solution: CSolution) -> Solution:
    if solution.outcome in NO_FIELD:
        error, text = NO_FIELD[solution.outcome]
        raise error(BAD_ARGUMENT, text.format(solution.vertex), index=solution.vertex)
    n, m = solution.vertex_count, solution.triangle_count
    return Solution(
        copy(solution.vertices, (n, 3), np.float64), copy(solution.triangles, (m, 3), np.int32),
        copy(solution.field, (n,), np.float64), solution.error, solution.tolerance,
        bool(solution.is_reached), solution.rounds, copy(solution.triangle_origins, (m,), np.int32),
        copy(solution.vertex_origins, (n, 2), np.int32),
        copy(solution.jumps, (solution.jump_count,), np.int32), solution.jump_radius)
