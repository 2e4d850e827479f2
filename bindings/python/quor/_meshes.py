"""Operations on meshes that need no solver: weld, check, clean, refine, flip, faces, areas, flow."""

from __future__ import annotations

import operator
from ctypes import POINTER, byref, c_int32
from typing import TYPE_CHECKING, Any, Callable, NamedTuple, Optional, Tuple, TypeVar

import numpy as np

from ._arrays import (COUNT_LIMIT, address, any_integers, copy, given, integer, real)
from ._errors import CornerError
from ._inputs import arguments, mesh_arrays, two_arrays
from ._library import CFaces, CMesh, CReport, call, library

if TYPE_CHECKING:
    from numpy.typing import ArrayLike

    from ._arrays import Integers, MeshLike, Reals

Made = TypeVar("Made")


def brief(mesh: Any, *more: str) -> str:
    """What a mesh is, instead of the numbers in it."""
    counts = [f"{len(mesh.vertices):,} vertices", f"{len(mesh.triangles):,} triangles", *more]
    return f"<quor.{type(mesh).__name__}: {', '.join(counts)}>"


class Welded(NamedTuple):
    """A welded mesh: what `weld` returns."""

    vertices: Reals  # (n, 3) float64
    triangles: Integers  # (m, 3) int32, indices into vertices
    point_map: Integers  # (point count,) int32, the vertex that each point became

    def __repr__(self) -> str:
        return brief(self)


class WeldedWithOrigins(NamedTuple):
    """A welded mesh that knows its triangles: what `weld_with_origins` returns."""

    vertices: Reals  # (n, 3) float64
    triangles: Integers  # (m, 3) int32, indices into vertices
    point_map: Integers  # (point count,) int32, the vertex that each point became
    triangle_origins: Integers  # (m,) int32, the input triangle that each is

    def __repr__(self) -> str:
        return brief(self)


class Finding(NamedTuple):
    """How often something was found, and the index of the first one, -1 if there is none."""

    count: int  # type: ignore[assignment]  # takes the place of the tuple's method
    first: int


class Report(NamedTuple):
    """What is wrong with a mesh: what `check` returns. See quorkitCheck in quorkit.h."""

    longest_edge: float
    area: float
    diagonal: float
    corners_out_of_range: Finding  # triangles
    repeated_corners: Finding  # triangles
    not_finite: Finding  # vertices
    flat_triangles: Finding
    needles: Finding  # triangles
    unused_vertices: Finding
    prescribed_vertices: Finding
    pieces: Finding  # each by its first vertex
    unprescribed_pieces: Finding
    negative_weights: Finding  # edges of two or more triangles, each by its first triangle
    obtuse_borders: Finding  # edges of one triangle
    isolated_prescribed: Finding  # vertices
    touching_regions: Finding  # vertices


class CleanMesh(NamedTuple):
    """What `clean` returns."""

    vertices: Reals  # (n, 3) float64
    triangles: Integers  # (m, 3) int32
    triangle_origins: Integers  # (m,) int32: the input triangle that each is a part of
    vertex_map: Integers  # (input vertices,) int32: what each became, -1 if it was dropped
    degenerate_count: int  # degenerate triangles that could not be removed without a crack

    def __repr__(self) -> str:
        return brief(self)


class RefinedMesh(NamedTuple):
    """What `refine` returns. It begins with the vertices of the input."""

    vertices: Reals  # (n, 3) float64
    triangles: Integers  # (m, 3) int32
    triangle_origins: Integers  # (m,) int32: the input triangle that each is a part of
    vertex_origins: Integers  # (n, 2) int32: the vertices whose midpoint it is; twice itself
    longest_edge: float  # the length it was refined to

    def __repr__(self) -> str:
        return brief(self, f"no edge longer than {self.longest_edge:g}")


class FlippedMesh(NamedTuple):
    """What `flip` returns. Its vertices are those of the input."""

    vertices: Reals  # (n, 3) float64
    triangles: Integers  # (m, 3) int32
    triangle_origins: Integers  # (m,) int32: an input triangle of the same face

    def __repr__(self) -> str:
        return brief(self)


class Faces(NamedTuple):
    """The faces and feature edges of a part: what `faces` returns."""

    faces: Integers  # (m,) int32: the face of each triangle, from 0
    edges: Integers  # (e, 2) int32: the ends of each feature edge, the lower vertex first
    chains: Integers  # (e,) int32: the chain of each feature edge, from 0

    def __repr__(self) -> str:
        faces, chains = (int(labels.max(initial=-1)) + 1 for labels in (self.faces, self.chains))
        return f"<quor.Faces: {faces:,} faces, {len(self.edges):,} feature edges in {chains:,} chains>"


def weld(points: MeshLike, triangles: Optional[ArrayLike] = None,
         tolerance: Optional[float] = None) -> Welded:
    """Welds points closer than a tolerance into one vertex and drops collapsed and repeated
    triangles; chains of close points become one vertex too.

    points     (p, 3) coordinates
    triangles  (t, 3) indices of points
    tolerance  absolute distance in the unit of the coordinates, 0 or more, may be infinite; points
               at exactly this distance stay apart, so 0 welds nothing

    Returns a Welded(vertices, triangles, point_map) of new arrays. A vertex has the coordinates of
    its point of lowest index; vertices and triangles keep the order of the input.

    Raises QuorError for a tolerance that is negative or NaN.
    """
    return Welded(*weld_with_origins(points, triangles, tolerance)[:3])


def weld_with_origins(points: MeshLike, triangles: Optional[ArrayLike] = None,
                      tolerance: Optional[float] = None) -> WeldedWithOrigins:
    """Welds as `weld` does, and also returns which input triangle each kept triangle is. What is known
    of the triangles survives the weld: new_faces = faces[mesh.triangle_origins]."""
    points, triangles = mesh_arrays(points, triangles, "points")
    distance = float(given("tolerance", tolerance))
    vertices, kept = np.empty_like(points), np.empty_like(triangles)
    point_map, origins = np.empty(len(points), np.int32), np.empty(len(triangles), np.int32)
    n, m = c_int32(), c_int32()
    call(library.quorkitWeldOrigins, *arguments(points, triangles), vertices, kept, point_map, origins,
         byref(n), byref(m), distance)
    vertices.resize((n.value, 3), refcheck=False)  # gives the unused room back, in place
    kept.resize((m.value, 3), refcheck=False)
    origins.resize(m.value, refcheck=False)
    return WeldedWithOrigins(vertices, kept, point_map, origins)


def any_mesh(vertices: MeshLike, triangles: Optional[ArrayLike]) -> Tuple[Reals, Integers]:
    """Both arrays, whatever indices the triangles have."""
    given_vertices, given_triangles = two_arrays(vertices, triangles)
    return (real("vertices", given_vertices, (None, 3)),
            integer("triangles", given_triangles, (None, 3), -2**31, 2**31 - 1, CornerError))


def report_of(report: CReport) -> Report:
    values = [getattr(report, name) for name in Report._fields]
    return Report(*values[:3], *(Finding(found.count, found.first) for found in values[3:]))


def check(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
          tags: Optional[ArrayLike] = None) -> Report:
    """Finds what is wrong with a mesh, and with its tags if there are any: a Report. Corners out of
    range and numbers that are not finite are found, not refused."""
    vertices, triangles = any_mesh(vertices, triangles)
    marks = None if tags is None else any_integers("tags", tags, len(vertices))
    report = CReport()
    call(library.quorkitCheck, *arguments(vertices, triangles), address(marks), byref(report))
    return report_of(report)


def check_regions(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
                  regions: Optional[ArrayLike] = None, values: Optional[ArrayLike] = None) -> Report:
    """Checks a mesh as `check` does, with regions in place of tags: sets of vertices that are prescribed
    together. It finds vertices that are alone in their region, and regions that touch.

    regions  (n,) region numbers; vertices with a negative one are free
    values   (n,) values: vertices of equal values count as one region; None: all regions differ
    """
    vertices, triangles = any_mesh(vertices, triangles)
    numbers = any_integers("regions", given("regions", regions), len(vertices))
    prescribed = None if values is None else real("values", values, (len(vertices),))
    report = CReport()
    call(library.quorkitCheckRegions, *arguments(vertices, triangles), numbers, address(prescribed),
         byref(report))
    return report_of(report)


def derived(made: Any, result: Callable[..., Made], rest: Callable[[Any], Tuple[Any, ...]]) -> Made:
    """A mesh of the library as a result, which begins with the arrays that all of them have, copied;
    frees it. rest: a function that makes what follows in the result of the mesh."""
    try:
        mesh = made.contents
        n, m = mesh.vertex_count, mesh.triangle_count
        return result(copy(mesh.vertices, (n, 3), np.float64), copy(mesh.triangles, (m, 3), np.int32),
                      copy(mesh.triangle_origins, (m,), np.int32), *rest(mesh))
    finally:
        library.quorkitFreeMesh(made)


def clean(vertices: MeshLike, triangles: Optional[ArrayLike] = None) -> CleanMesh:
    """Drops degenerate triangles without opening cracks, and vertices that no triangle uses. The vertices
    that triangles use must be finite."""
    vertices, triangles = mesh_arrays(vertices, triangles)
    made = POINTER(CMesh)()
    call(library.quorkitClean, *arguments(vertices, triangles), byref(made))
    return derived(made, CleanMesh,
                   lambda mesh: (copy(mesh.vertex_map, (mesh.vertex_map_count,), np.int32),
                                 mesh.degenerate_count))


def refine(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
           longest_edge: Optional[float] = None, triangle_count: Optional[int] = None,
           sizes: Optional[ArrayLike] = None) -> RefinedMesh:
    """Splits edges at their midpoints until none is longer than longest_edge, or until there are about
    triangle_count triangles, never more. Exactly one of them is given.

    A thirty-second part of the diagonal, check(...).diagonal / 32, is a length to begin with. With
    longest_edge, sizes (n,) makes edges shorter near some vertices: none at vertex v is longer than
    sizes[v], and from there they grow with the distance. numpy.inf is for vertices of no interest.

    Raises ValueError for coordinates that are not finite, triangles with two equal corners, and a length,
    size or number that makes no sense; TooLargeError beyond 238,609,294 triangles.
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    if (longest_edge is None) == (triangle_count is None):
        raise ValueError("refine: give either longest_edge or triangle_count")
    if sizes is not None and longest_edge is None:
        raise ValueError("refine: sizes go with longest_edge")
    mesh = arguments(vertices, triangles)
    made = POINTER(CMesh)()
    if triangle_count is not None:
        wanted = min(max(operator.index(triangle_count), 0), COUNT_LIMIT)
        call(library.quorkitRefineTo, *mesh, wanted, byref(made))
    elif sizes is not None:
        lengths = real("sizes", sizes, (len(vertices),))
        call(library.quorkitRefineGraded, *mesh, float(given("longest_edge", longest_edge)), lengths,
             byref(made))
    else:
        call(library.quorkitRefine, *mesh, float(given("longest_edge", longest_edge)), byref(made))
    return derived(made, RefinedMesh,
                   lambda refined: (copy(refined.vertex_origins, (refined.vertex_count, 2), np.int32),
                                    refined.longest_edge))


def flip(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
         faces: Optional[ArrayLike] = None) -> FlippedMesh:
    """Flips edges inside flat faces until the triangles there are as well shaped as their vertices allow.
    The surface stays what it is. Finite vertices, and no triangle with two equal corners.

    faces  (m,) face numbers of the triangles; edges between two faces stay. None: all are one face
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    labels = None if faces is None else any_integers("faces", faces, len(triangles))
    made = POINTER(CMesh)()
    call(library.quorkitFlip, *arguments(vertices, triangles), address(labels), byref(made))
    return derived(made, FlippedMesh, lambda mesh: ())


def faces(vertices: MeshLike, triangles: Optional[ArrayLike] = None, angle: float = 30.0) -> Faces:
    """Finds the faces and feature edges of a part, as its CAD system would call them. Finite vertices, and
    no triangle with two equal corners.

    angle  in degrees, above 0 and below 90: where normals differ by more, a curved face ends
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    made = POINTER(CFaces)()
    call(library.quorkitFaces, *arguments(vertices, triangles), float(angle), byref(made))
    try:
        found = made.contents
        return Faces(copy(found.faces, (len(triangles),), np.int32),
                     copy(found.edges, (found.edge_count, 2), np.int32),
                     copy(found.chains, (found.edge_count,), np.int32))
    finally:
        library.quorkitFreeFaces(made)


def areas(vertices: MeshLike, triangles: Optional[ArrayLike] = None) -> Reals:
    """(n,) float64: a third of the areas around each vertex, to multiply densities with."""
    vertices, triangles = mesh_arrays(vertices, triangles)
    result = np.empty(len(vertices))
    call(library.quorkitAreas, *arguments(vertices, triangles), result)
    return result


def flow(vertices: MeshLike, triangles: Optional[ArrayLike] = None, field: Optional[ArrayLike] = None,
         regions: Optional[ArrayLike] = None, region_count: Optional[int] = None) -> Reals:
    """(region_count,) float64: the total flow through each region, such as the heat that a hot face gives
    off; positive where the region feeds the surface.

    field         (n,) values
    regions       (n,) region numbers of the vertices; a negative one is in no region. Tags will do
    region_count  above the largest region number; None: one more than that
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    values = real("field", given("field", field), (len(vertices),))
    numbers = any_integers("regions", given("regions", regions), len(vertices))
    if region_count is None:
        region_count = int(numbers.max(initial=-1)) + 1
    count = operator.index(region_count)
    if not 0 <= count <= COUNT_LIMIT:
        raise ValueError(f"region_count: {count} is not in 0 .. {COUNT_LIMIT}")
    result = np.empty(count)
    call(library.quorkitFlow, *arguments(vertices, triangles), values, numbers, count, result)
    return result


def gradients(vertices: MeshLike, triangles: Optional[ArrayLike] = None,
              field: Optional[ArrayLike] = None) -> Reals:
    """(m, 3) float64: the gradient of a field in each triangle. Heat flows against it. NaN in a triangle
    without area.

    field  (n,) values
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    values = real("field", given("field", field), (len(vertices),))
    result = np.empty(triangles.shape)
    call(library.quorkitGradients, *arguments(vertices, triangles), values, result)
    return result
