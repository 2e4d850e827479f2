"""Operations on meshes that need no solver: weld, check, clean, refine, areas."""

import operator
from ctypes import POINTER, byref, c_int32
from typing import NamedTuple

import numpy as np

from ._arrays import COUNT_LIMIT, address, arguments, copy, integer, mesh_arrays, real
from ._library import CMesh, CReport, call, library


class Welded(NamedTuple):
    """A welded mesh: what `weld` returns."""

    vertices: np.ndarray  # (n, 3) float64
    triangles: np.ndarray  # (m, 3) int32, indices into vertices
    point_map: np.ndarray  # (point count,) int32, the vertex that each point became


class Finding(NamedTuple):
    """How often something was found, and the index of the first one, -1 if there is none."""

    count: int
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

    vertices: np.ndarray  # (n, 3) float64
    triangles: np.ndarray  # (m, 3) int32
    triangle_origins: np.ndarray  # (m,) int32: the input triangle that each is a part of
    vertex_map: np.ndarray  # (input vertices,) int32: what each became, -1 if it was dropped


class RefinedMesh(NamedTuple):
    """What `refine` returns. It begins with the vertices of the input."""

    vertices: np.ndarray  # (n, 3) float64
    triangles: np.ndarray  # (m, 3) int32
    triangle_origins: np.ndarray  # (m,) int32: the input triangle that each is a part of
    vertex_origins: np.ndarray  # (n, 2) int32: the vertices whose midpoint it is; twice itself
    longest_edge: float  # the length it was refined to


def weld(points, triangles, tolerance):
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
    points = real("points", points, (None, 3))
    triangles = integer("triangles", triangles, (None, 3), 0, len(points) - 1, IndexError)
    vertices, kept = np.empty_like(points), np.empty_like(triangles)
    point_map = np.empty(len(points), np.int32)
    n, m = c_int32(), c_int32()
    call(library.quorkitWeld, len(points), points, len(triangles), triangles, vertices, kept, point_map,
         byref(n), byref(m), float(tolerance))
    vertices.resize((n.value, 3), refcheck=False)  # gives the unused room back, in place
    kept.resize((m.value, 3), refcheck=False)
    return Welded(vertices, kept, point_map)


def check(vertices, triangles, tags=None):
    """Looks what is wrong with a mesh, and with its tags if there are any: a Report. Corners out of
    range and numbers that are not finite are found, not refused."""
    vertices = real("vertices", vertices, (None, 3))
    triangles = integer("triangles", triangles, (None, 3), -2**31, 2**31 - 1, IndexError)
    if tags is not None:
        tags = integer("tags", tags, (len(vertices),), -2**31, 2**31 - 1, ValueError, kinds="iub")
    report = CReport()
    call(library.quorkitCheck, *arguments(vertices, triangles), address(tags), byref(report))
    values = [getattr(report, name) for name in Report._fields]
    return Report(*values[:3], *(Finding(found.count, found.first) for found in values[3:]))


def derived(made, result, rest):
    """A mesh of the library as a result, which begins with the arrays that all of them have, copied;
    frees it. rest: a function that makes what follows in the result of the mesh."""
    try:
        mesh = made.contents
        n, m = mesh.vertex_count, mesh.triangle_count
        return result(copy(mesh.vertices, (n, 3), np.float64), copy(mesh.triangles, (m, 3), np.int32),
                      copy(mesh.triangle_origins, (m,), np.int32), *rest(mesh))
    finally:
        library.quorkitFreeMesh(made)


def clean(vertices, triangles):
    """Drops flat triangles without opening cracks, and vertices that no triangle uses: a CleanMesh. The
    vertices that triangles use must be finite."""
    vertices, triangles = mesh_arrays(vertices, triangles)
    made = POINTER(CMesh)()
    call(library.quorkitClean, *arguments(vertices, triangles), byref(made))
    return derived(made, CleanMesh,
                   lambda mesh: (copy(mesh.vertex_map, (mesh.vertex_map_count,), np.int32),))


def refine(vertices, triangles, longest_edge=None, triangle_count=None, sizes=None):
    """Splits edges at their midpoints until none is longer than longest_edge, or until there are about
    triangle_count triangles, never more: a RefinedMesh. Exactly one of them is given.

    A thirty-second part of the diagonal, check(...).diagonal / 32, is a length to begin with. With
    longest_edge, sizes (n,) makes edges shorter near some vertices: none at vertex v is longer than
    sizes[v], and from there they grow with the distance. numpy.inf is for vertices of no interest.

    Raises ValueError for coordinates that are not finite, triangles with two equal corners, and a length,
    size or number that makes no sense; TooLargeError beyond 238,609,294 triangles.
    """
    if (longest_edge is None) == (triangle_count is None):
        raise ValueError("refine: give either longest_edge or triangle_count")
    if sizes is not None and longest_edge is None:
        raise ValueError("refine: sizes go with longest_edge")
    vertices, triangles = mesh_arrays(vertices, triangles)
    made = POINTER(CMesh)()
    if sizes is not None:
        sizes = real("sizes", sizes, (len(vertices),))
        call(library.quorkitRefineGraded, *arguments(vertices, triangles), float(longest_edge), sizes,
             byref(made))
    elif longest_edge is not None:
        call(library.quorkitRefine, *arguments(vertices, triangles), float(longest_edge), byref(made))
    else:
        wanted = min(max(operator.index(triangle_count), 0), COUNT_LIMIT)
        call(library.quorkitRefineTo, *arguments(vertices, triangles), wanted, byref(made))
    return derived(made, RefinedMesh,
                   lambda mesh: (copy(mesh.vertex_origins, (mesh.vertex_count, 2), np.int32),
                                 mesh.longest_edge))


def areas(vertices, triangles):
    """(n,) float64: a third of the areas around each vertex, to multiply densities with."""
    vertices, triangles = mesh_arrays(vertices, triangles)
    result = np.empty(len(vertices))
    call(library.quorkitAreas, *arguments(vertices, triangles), result)
    return result
