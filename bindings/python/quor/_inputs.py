"""Meshes of other packages, and of this one, as two arrays."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional, Tuple

import numpy as np

from ._arrays import integer, real
from ._errors import CornerError

if TYPE_CHECKING:
    from numpy.typing import ArrayLike

    from ._arrays import Integers, MeshLike, Reals

# Attributes with the points and the triangles of a mesh, and who has them.
NAMES = (("vertices", "triangles"),  # this package, Open3D
         ("vertices", "faces"),  # trimesh
         ("points", "faces"),  # PyVista's surfaces
         ("points", "cells"))  # meshio, PyVista's grids
VTK_TRIANGLE = 5
WITHOUT_AREA = ("vertex", "line")  # meshio's types of cells that begin so


def arrays_of(mesh: MeshLike) -> Tuple[ArrayLike, ArrayLike]:
    """The points and triangles of a mesh, or TypeError if there are none."""
    for points, corners in NAMES:
        if hasattr(mesh, points) and hasattr(mesh, corners):
            return getattr(mesh, points), triangles_of(mesh, getattr(mesh, corners))
    raise TypeError(f"{type(mesh).__name__} has neither vertices and triangles or faces, nor points and "
                    "cells or faces: give two arrays")


def triangles_of(mesh: MeshLike, cells: Any) -> ArrayLike:
    if isinstance(cells, dict):  # meshio before version 4
        cells = list(cells.items())
    if isinstance(cells, (list, tuple)) and cells and is_block(cells[0]):
        return triangles_of_blocks(cells)
    array = np.asarray(cells)
    if array.ndim != 1:
        return array
    types = np.asarray(getattr(mesh, "celltypes", VTK_TRIANGLE))  # VTK: 3 a b c 3 a b c ...
    if array.size % 4 or (array[::4] != 3).any() or (types != VTK_TRIANGLE).any():
        raise ValueError("cells: some are no triangles: triangulate the mesh before")
    return array.reshape(-1, 4)[:, 1:]


def is_block(block: Any) -> bool:
    """Whether this is cells of one type: an object of meshio, or a pair in its old versions."""
    return hasattr(block, "type") and hasattr(block, "data") or (
        isinstance(block, tuple) and len(block) == 2 and isinstance(block[0], str))


def triangles_of_blocks(blocks: Any) -> ArrayLike:
    triangles = [np.empty((0, 3), np.int32)]
    for block in blocks:
        kind, data = block if isinstance(block, tuple) else (block.type, block.data)
        if kind == "triangle":
            triangles.append(np.asarray(data))
        elif not kind.startswith(WITHOUT_AREA):
            raise ValueError(f"cells: some are of type {kind}: triangulate the mesh before")
    return np.concatenate(triangles)


def is_mesh(thing: MeshLike) -> bool:
    return any(hasattr(thing, points) and hasattr(thing, corners) for points, corners in NAMES)


def two_arrays(vertices: MeshLike, triangles: Optional[ArrayLike]) -> Tuple[ArrayLike, ArrayLike]:
    """The two arrays as they were given, or those of the one mesh that was given."""
    if triangles is None:
        return arrays_of(vertices)
    if is_mesh(vertices):
        raise TypeError("triangles: the mesh has them already: name the arguments that follow it, as in "
                        "refine(mesh, longest_edge=0.1)")
    return vertices, triangles


def mesh_arrays(vertices: MeshLike, triangles: Optional[ArrayLike], name: str = "vertices",
                limit: int = 2**31 - 1, triangle_limit: int = 2**31 - 1) -> Tuple[Reals, Integers]:
    """Both, of a mesh that has every vertex its triangles name."""
    given_vertices, given_triangles = two_arrays(vertices, triangles)
    points = real(name, given_vertices, (None, 3), limit)
    return points, integer("triangles", given_triangles, (None, 3), 0, len(points) - 1, CornerError,
                           limit=triangle_limit)


def arguments(vertices: Reals, triangles: Integers) -> Tuple[int, Reals, int, Integers]:
    """A mesh as the library's functions begin with it."""
    return len(vertices), vertices, len(triangles), triangles
