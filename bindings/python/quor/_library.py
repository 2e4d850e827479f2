"""The shared library: where it is found, its functions and structures, its statuses."""

import ctypes
import os
import sys
from ctypes import POINTER, c_char_p, c_double, c_float, c_int32, c_uint32, c_void_p

import numpy as np

from ._errors import Cancelled, QuorError, TooLargeError


def load():
    """Each copy of this package prefers the library in its own folder, so that two do not meet."""
    names = {"win32": ["quorkit.dll"], "darwin": ["libquorkit.0.dylib", "libquorkit.dylib"]}.get(
        sys.platform, ["libquorkit.so.0", "libquorkit.so"])
    here = os.path.dirname(os.path.abspath(__file__))
    beside = [path for path in (os.path.join(here, name) for name in names) if os.path.exists(path)]
    chosen = os.environ.get("QUOR_LIBRARY")
    for name in [chosen] if chosen else beside[:1] or names:
        try:
            return ctypes.CDLL(name)
        except OSError as error:
            reason = error
    raise ImportError(f"quor: cannot load the shared library ({reason}); "
                      "set QUOR_LIBRARY to its path")


class CFinding(ctypes.Structure):
    _fields_ = [("count", c_int32), ("first", c_int32)]


class CReport(ctypes.Structure):
    _fields_ = [(name, c_double) for name in ("longest_edge", "area", "diagonal")] + [
        (name, CFinding) for name in (
            "corners_out_of_range", "repeated_corners", "not_finite", "flat_triangles", "needles",
            "unused_vertices", "prescribed_vertices", "pieces", "unprescribed_pieces",
            "negative_weights", "obtuse_borders", "isolated_prescribed", "touching_regions")]


class CMesh(ctypes.Structure):
    _fields_ = [("vertex_count", c_int32), ("triangle_count", c_int32),
                ("vertices", POINTER(c_double)), ("triangles", POINTER(c_int32)),
                ("triangle_origins", POINTER(c_int32)), ("vertex_origins", POINTER(c_int32)),
                ("vertex_map", POINTER(c_int32)), ("vertex_map_count", c_int32),
                ("longest_edge", c_double)]


class CSolverInfo(ctypes.Structure):
    _fields_ = [("vertex_count", c_int32), ("triangle_count", c_int32),
                ("prescribed_count", c_int32), ("factorization", c_uint32),
                ("vertices", POINTER(c_double)), ("triangles", POINTER(c_int32)),
                ("order", POINTER(c_int32))]


Progress = ctypes.CFUNCTYPE(c_int32, c_double, c_void_p)
DONE, BAD_ARGUMENT, OUT_OF_MEMORY, TOO_LARGE, FILE, CANCELLED = range(6)


def declare(library):
    """Gives every function its exact types, arrays included: a wrong one cannot be passed."""

    def read(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED"))

    def write(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED", "WRITEABLE"))

    real, integer = np.float64, np.int32
    mesh = (c_int32, read(real), c_int32, read(integer))
    signatures = {
        "quorkitWeld": (c_int32, *mesh, write(real), write(integer), write(integer),
                        POINTER(c_int32), POINTER(c_int32), c_double),
        "quorkitCheck": (c_int32, *mesh, c_void_p, POINTER(CReport)),
        "quorkitClean": (c_int32, *mesh, POINTER(POINTER(CMesh))),
        "quorkitRefine": (c_int32, *mesh, c_double, POINTER(POINTER(CMesh))),
        "quorkitRefineGraded": (c_int32, *mesh, c_double, read(real), POINTER(POINTER(CMesh))),
        "quorkitRefineTo": (c_int32, *mesh, c_int32, POINTER(POINTER(CMesh))),
        "quorkitFreeMesh": (None, POINTER(CMesh)),
        "quorkitConstruct": (c_int32, *mesh, read(integer), Progress, c_void_p,
                             POINTER(c_void_p)),
        "quorkitSolverInfo": (c_int32, c_void_p, POINTER(CSolverInfo)),
        "quorkitSolve": (c_int32, c_void_p, read(real), c_void_p, write(real)),
        "quorkitFreeSolver": (None, c_void_p),
        "quorkitAreas": (c_int32, *mesh, write(real)),
        "quorkitColours": (c_int32, c_int32, read(real), c_double, c_double, write(np.uint8)),
        "quorkitWrite": (c_int32, c_int32, c_void_p, c_int32, c_void_p, read(real), c_char_p,
                         c_char_p, c_double),
        "quorkitEncodeToSphere": (c_int32, c_int32, POINTER(c_float), POINTER(c_float),
                                  POINTER(c_float)),
        "quorkitDecodeFromSphere": (c_int32, c_float, c_float, c_float),
        "quorkitStatusText": (c_char_p, c_int32),
    }
    for name, (result, *arguments) in signatures.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


library = declare(load())


def require(status, text=None):
    """Turns a status of the library into an exception, unless it is done."""
    if status == DONE:
        return
    reason = library.quorkitStatusText(status).decode()
    if status == OUT_OF_MEMORY:
        raise MemoryError(reason)
    if status == TOO_LARGE:
        raise TooLargeError(status, reason)
    if status == CANCELLED:
        raise Cancelled(reason)
    raise QuorError(status, text or reason)
