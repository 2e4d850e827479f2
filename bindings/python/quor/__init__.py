"""Numeric geometry on triangle meshes: weld, harmonic fields, coloured export.

A thin layer over the C functions of the shared library quorkit; their manuals, with the exact rules,
are the headers quorkit.h and quor.h. From a raw tessellation to colours: weld, clean, refine, check,
Solver, colours or write. Arrays are numpy arrays:

    points, vertices   (n, 3) float64, lengths in any unit
    triangles          (m, 3) int32, 0-based indices
    tags               (n,)   int32; 1, 2 and 3 mean prescribed, everything else free
    values, fields     (n,)   float64

Other real and integer types, strides and byte orders are accepted and copied; an aligned and
contiguous array of the type above is passed as it is. Shapes, types and indices are checked before
a call:

    TypeError     numbers of the wrong kind (complex values, fractional indices)
    ValueError    a wrong shape, a wrong size, a closed solver
    IndexError    a triangle with an index that no vertex has
    QuorError     a ValueError with the library's own answer, see its subclasses
    MemoryError   memory ran out
    OSError       a file cannot be written, or the disk is full

Calls release the global interpreter lock. Any number of threads may use one solver at a time. Nothing
is thrown through Python: whatever happens inside the library comes back as one of these.

The library is looked for at the path in the environment variable QUOR_LIBRARY; if that is not set,
in the folder of this package; then wherever the system's loader looks.
"""

from ._errors import (Cancelled, NoVertexError, QuorError, RepeatedCornerError, TooLargeError,
                      UnprescribedPieceError, UnprescribedPieceWarning, UnusedVertexError)
from ._meshes import (CleanMesh, Finding, RefinedMesh, Report, Welded, areas, check, clean, refine,
                      weld)
from ._showing import colours, write
from ._solver import Info, Solver
from ._sphere import decode_integer_from_sphere, encode_integer_to_sphere

__all__ = [
    "Cancelled", "CleanMesh", "Finding", "Info", "NoVertexError", "QuorError", "RefinedMesh",
    "RepeatedCornerError", "Report", "Solver", "TooLargeError", "UnprescribedPieceError",
    "UnprescribedPieceWarning", "UnusedVertexError", "Welded", "areas", "check", "clean", "colours",
    "decode_integer_from_sphere", "encode_integer_to_sphere", "refine", "weld", "write",
]
__version__ = "0.1.0"

for _name in __all__:  # help, tracebacks and pickles tell where a user finds it
    globals()[_name].__module__ = __name__
del _name
