"""Numeric geometry on triangle meshes: weld, harmonic fields, coloured export.

A thin layer over the C functions of the shared library quorkit; their manuals, with the exact rules,
are the headers quorkit.h and quor.h. From a raw tessellation to colours: weld, clean, refine, check,
Solver, colours or write. Arrays are numpy arrays:

    points, vertices   (n, 3) float64, lengths in any unit
    triangles          (m, 3) int32, 0-based indices
    tags               (n,)   int32; 1, 2 and 3 mean prescribed, everything else free
    values, fields     (n,)   float64

Other real and integer types, strides and byte orders are accepted and copied; an aligned and
contiguous array of the type above is passed as it is, and must not change during the call. In place
of vertices and triangles every function takes one mesh: what this package returns, or an object of
meshio, trimesh, PyVista or Open3D, whatever has vertices and triangles or faces, or points and cells
or faces. The arguments that follow are then named, as in refine(mesh, longest_edge=0.1).

Shapes, types and indices are checked before a call:

    TypeError     numbers of the wrong kind (complex values, fractional indices)
    ValueError    a wrong shape, a wrong size, a closed solver
    IndexError    CornerError: a triangle with an index that no vertex has
    QuorError     a ValueError of the library's: which argument and which entry; see its subclasses
    MemoryError   out of memory
    OSError       a file cannot be written, or the disk is full

Calls release the global interpreter lock. Any number of threads may use one solver at a time. Nothing
is thrown through Python: whatever happens inside the library comes back as one of these.

The library is looked for at the path in the environment variable QUOR_LIBRARY; if that is not set,
in the folder of this package; then wherever the system's loader looks.
"""

from ._errors import (Cancelled, CornerError, IsolatedVertexError, NoVertexError, QuorError,
                      RepeatedCornerError, SingularMatrixError, TooLargeError, UnprescribedPieceError,
                      UnprescribedPieceWarning, UnusedVertexError)
from ._meshes import (CleanMesh, Faces, Finding, FlippedMesh, RefinedMesh, Report, Welded,
                      WeldedWithOrigins, areas, check, check_regions, clean, faces, flip, flow,
                      gradients, refine, weld, weld_with_origins)
from ._showing import colours, write
from ._solver import Info, Solver
from ._sphere import decode_integer_from_sphere, encode_integer_to_sphere
from ._within import Solution, solve_within

__all__ = [
    "Cancelled", "CleanMesh", "CornerError", "Faces", "Finding", "FlippedMesh", "Info", "IsolatedVertexError",
    "NoVertexError", "QuorError", "RefinedMesh", "RepeatedCornerError", "Report",
    "SingularMatrixError", "Solution", "Solver", "TooLargeError", "UnprescribedPieceError",
    "UnprescribedPieceWarning", "UnusedVertexError", "Welded", "WeldedWithOrigins", "areas",
    "check", "check_regions", "clean", "colours", "decode_integer_from_sphere",
    "encode_integer_to_sphere", "faces", "flip", "flow", "gradients", "refine", "solve_within",
    "weld", "weld_with_origins", "write",
]
__version__ = "0.1.0"

for _name in __all__:  # help, tracebacks and pickles tell where a user finds it
    globals()[_name].__module__ = __name__
del _name
