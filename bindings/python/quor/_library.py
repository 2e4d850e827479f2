"""The shared library: where it is found, its functions and structures, its statuses."""

import ctypes
import errno
import os
import re
import sys
from ctypes import POINTER, c_char_p, c_double, c_float, c_int32, c_uint32, c_void_p

import numpy as np

from ._errors import (Cancelled, QuorError, RepeatedCornerError, TooLargeError, UnusedVertexError)


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


class CError(ctypes.Structure):
    _fields_ = [("status", c_int32), ("reason", c_int32), ("argument", c_char_p), ("index", c_int32),
                ("system", c_int32), ("text", ctypes.c_char * 512)]


Progress = ctypes.CFUNCTYPE(c_int32, c_double, c_void_p)
DONE, BAD_ARGUMENT, OUT_OF_MEMORY, TOO_LARGE, FILE, CANCELLED = range(6)
REFUSALS = {23: RepeatedCornerError, 24: UnusedVertexError}  # by the reason of a bad argument


def declare(library):
    """Gives every function its exact types, arrays included: a wrong one cannot be passed."""

    def read(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED"))

    def write(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED", "WRITEABLE"))

    real, integer = np.float64, np.int32
    mesh = (c_int32, read(real), c_int32, read(integer))
    signatures = {  # of functions that return a status, without their last argument, the error
        "quorkitWeld": (*mesh, write(real), write(integer), write(integer), POINTER(c_int32),
                        POINTER(c_int32), c_double),
        "quorkitCheck": (*mesh, c_void_p, POINTER(CReport)),
        "quorkitClean": (*mesh, POINTER(POINTER(CMesh))),
        "quorkitRefine": (*mesh, c_double, POINTER(POINTER(CMesh))),
        "quorkitRefineGraded": (*mesh, c_double, read(real), POINTER(POINTER(CMesh))),
        "quorkitRefineTo": (*mesh, c_int32, POINTER(POINTER(CMesh))),
        "quorkitConstruct": (*mesh, read(integer), Progress, c_void_p, POINTER(c_void_p)),
        "quorkitSolverInfo": (c_void_p, POINTER(CSolverInfo)),
        "quorkitSolve": (c_void_p, read(real), c_void_p, write(real)),
        "quorkitAreas": (*mesh, write(real)),
        "quorkitColours": (c_int32, read(real), c_double, c_double, write(np.uint8)),
        "quorkitWrite": (c_int32, c_void_p, c_int32, c_void_p, read(real), c_char_p, c_char_p, c_double),
        "quorkitEncodeToSphere": (c_int32, POINTER(c_float), POINTER(c_float), POINTER(c_float)),
    }
    for name, arguments in signatures.items():
        function = getattr(library, name)
        function.restype, function.argtypes = c_int32, (*arguments, POINTER(CError))
    library.quorkitFreeMesh.restype, library.quorkitFreeMesh.argtypes = None, (POINTER(CMesh),)
    library.quorkitFreeSolver.restype, library.quorkitFreeSolver.argtypes = None, (c_void_p,)
    library.quorkitDecodeFromSphere.argtypes = c_float, c_float, c_float
    return library


library = declare(load())


def call(function, *arguments):
    """Calls a function that returns a status. Raises the exception that the status means."""
    error = CError()
    if function(*arguments, ctypes.byref(error)) != DONE:
        raise exception_of(error)


def exception_of(error):
    """What a failed call means to a Python caller, with Python's names for arguments and functions."""
    text = re.sub(r"\bquorkit([A-Z]\w*)", lambda found: "quor." + snake_case(found[1]),
                  error.text.decode("utf-8", "surrogateescape"))
    argument = error.argument.decode()
    if text.startswith(argument):
        text = snake_case(argument) + text[len(argument):]
    if error.status == OUT_OF_MEMORY:
        return MemoryError(text)
    if error.status == FILE:
        name, _, cause = text.rpartition(": ")
        return OSError(error.system or errno.EIO, cause, name or None)
    if error.status == CANCELLED:
        return Cancelled(text)
    if error.status == TOO_LARGE:
        return TooLargeError(error.status, text)
    kind = REFUSALS.get(error.reason, QuorError)
    status = error.reason if error.reason in REFUSALS else error.status
    return kind(status, text, snake_case(argument), error.index)


def snake_case(name):
    return re.sub("[A-Z]", lambda letter: "_" + letter[0].lower(), name).lstrip("_")
