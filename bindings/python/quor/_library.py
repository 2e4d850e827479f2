"""The shared library: where it is found, its functions and structures, its statuses."""

from __future__ import annotations

import ctypes
import errno
import os
import re
import sys
from ctypes import POINTER, c_char_p, c_double, c_float, c_int32, c_uint32, c_void_p

from typing import Any, Callable, List, Optional

import numpy as np

from ._errors import Cancelled, QuorError, RepeatedCornerError, TooLargeError, UnusedVertexError


def candidates() -> List[str]:
    """The paths and names under which the library may be, the best first. Each copy of this package
    prefers the library in its own folder, so that two do not meet. Only absolute paths on macOS: its
    loader looks for a bare name in the current directory too."""
    chosen = os.environ.get("QUOR_LIBRARY")
    names = {"win32": ["quorkit.dll"], "darwin": ["libquorkit.0.dylib", "libquorkit.dylib"]}.get(
        sys.platform, ["libquorkit.so.0", "libquorkit.so"])
    if chosen:
        return [os.path.abspath(chosen) if sys.platform == "darwin" else chosen]
    here = os.path.dirname(os.path.abspath(__file__))
    beside = [path for path in (os.path.join(here, name) for name in names) if os.path.exists(path)]
    if beside:
        return beside[:1]
    if sys.platform != "darwin":
        return names
    folders = [os.path.join(sys.prefix, "lib"), "/opt/homebrew/lib", "/usr/local/lib"]
    return [os.path.join(folder, name) for folder in folders for name in names]


def load() -> ctypes.CDLL:
    for name in candidates():
        try:
            return ctypes.CDLL(name)
        except OSError as error:
            reason = error
    raise ImportError(f"quor: cannot load the shared library ({reason}): install it, or set QUOR_LIBRARY "
                      "to its path")


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
                ("longest_edge", c_double), ("degenerate_count", c_int32)]


class CFaces(ctypes.Structure):
    _fields_ = [("face_count", c_int32), ("chain_count", c_int32), ("edge_count", c_int32),
                ("faces", POINTER(c_int32)), ("edges", POINTER(c_int32)), ("chains", POINTER(c_int32))]


class CProblem(ctypes.Structure):
    _fields_ = [("n", c_int32), ("vertices", c_void_p), ("m", c_int32), ("triangles", c_void_p),
                ("triangle_values", c_void_p), ("edge_count", c_int32), ("edges", c_void_p),
                ("edge_values", c_void_p), ("vertex_values", c_void_p), ("sources", c_void_p),
                ("faces", c_void_p), ("tolerance", c_double), ("is_share_of_span", c_int32),
                ("triangle_limit", c_int32)]


class CSolution(ctypes.Structure):
    _fields_ = [("outcome", c_int32), ("vertex", c_int32), ("vertex_count", c_int32),
                ("triangle_count", c_int32), ("vertices", POINTER(c_double)),
                ("triangles", POINTER(c_int32)), ("triangle_origins", POINTER(c_int32)),
                ("vertex_origins", POINTER(c_int32)), ("field", POINTER(c_double)),
                ("error", c_double), ("tolerance", c_double), ("is_reached", c_int32),
                ("rounds", c_int32), ("jump_count", c_int32), ("jumps", POINTER(c_int32)),
                ("jump_radius", c_double)]


class CSolverInfo(ctypes.Structure):
    _fields_ = [("vertex_count", c_int32), ("triangle_count", c_int32),
                ("prescribed_count", c_int32), ("factorization", c_uint32),
                ("vertices", POINTER(c_double)), ("triangles", POINTER(c_int32)),
                ("order", POINTER(c_int32))]


class CError(ctypes.Structure):
    _fields_ = [("status", c_int32), ("reason", c_int32), ("argument", c_char_p), ("index", c_int32),
                ("system", c_int32), ("text", ctypes.c_char * 512)]


Progress: Any = ctypes.CFUNCTYPE(c_int32, c_double, c_void_p)
DONE, BAD_ARGUMENT, OUT_OF_MEMORY, TOO_LARGE, FILE, CANCELLED = range(6)
REFUSALS = {23: RepeatedCornerError, 24: UnusedVertexError}  # by the reason of a bad argument


def declare(library: ctypes.CDLL) -> ctypes.CDLL:
    """Gives every function its exact types, arrays included: a wrong one cannot be passed."""

    def read(dtype: Any) -> Any:
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED"))

    def write(dtype: Any) -> Any:
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED", "WRITEABLE"))

    real, integer = np.float64, np.int32
    mesh = (c_int32, read(real), c_int32, read(integer))
    signatures = {  # of functions that return a status, without their last argument, the error
        "quorkitWeld": (*mesh, write(real), write(integer), write(integer), POINTER(c_int32),
                        POINTER(c_int32), c_double),
        "quorkitWeldOrigins": (*mesh, write(real), write(integer), write(integer), write(integer),
                               POINTER(c_int32), POINTER(c_int32), c_double),
        "quorkitCheck": (*mesh, c_void_p, POINTER(CReport)),
        "quorkitCheckRegions": (*mesh, read(integer), c_void_p, POINTER(CReport)),
        "quorkitClean": (*mesh, POINTER(POINTER(CMesh))),
        "quorkitRefine": (*mesh, c_double, POINTER(POINTER(CMesh))),
        "quorkitRefineGraded": (*mesh, c_double, read(real), POINTER(POINTER(CMesh))),
        "quorkitRefineTo": (*mesh, c_int32, POINTER(POINTER(CMesh))),
        "quorkitFlip": (*mesh, c_void_p, POINTER(POINTER(CMesh))),
        "quorkitFaces": (*mesh, c_double, POINTER(POINTER(CFaces))),
        "quorkitConstruct": (*mesh, read(integer), Progress, c_void_p, POINTER(c_void_p)),
        "quorkitSolverInfo": (c_void_p, POINTER(CSolverInfo)),
        "quorkitSolve": (c_void_p, read(real), c_void_p, write(real)),
        "quorkitSolveMany": (c_void_p, c_int32, read(real), c_void_p, write(real)),
        "quorkitSolveWithin": (POINTER(CProblem), Progress, c_void_p, POINTER(POINTER(CSolution))),
        "quorkitAreas": (*mesh, write(real)),
        "quorkitFlow": (*mesh, read(real), read(integer), c_int32, write(real)),
        "quorkitGradients": (*mesh, read(real), write(real)),
        "quorkitColours": (c_int32, read(real), c_double, c_double, write(np.uint8)),
        "quorkitWrite": (c_int32, c_void_p, c_int32, c_void_p, read(real), c_char_p, c_char_p, c_double),
        "quorkitEncodeToSphere": (c_int32, POINTER(c_float), POINTER(c_float), POINTER(c_float)),
    }
    for name, arguments in signatures.items():
        function = getattr(library, name)
        function.restype, function.argtypes = c_int32, (*arguments, POINTER(CError))
    for name, owned in (("Mesh", POINTER(CMesh)), ("Faces", POINTER(CFaces)),
                        ("Solution", POINTER(CSolution)), ("Solver", c_void_p)):
        function = getattr(library, "quorkitFree" + name)
        function.restype, function.argtypes = None, (owned,)
    library.quorkitDecodeFromSphere.argtypes = c_float, c_float, c_float
    return library


library = declare(load())


def call(function: Any, *arguments: Any) -> None:
    """Calls a function that returns a status. Raises the exception that the status means."""
    error = CError()
    if function(*arguments, ctypes.byref(error)) != DONE:
        raise exception_of(error)


def exception_of(error: CError) -> Exception:
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


def snake_case(name: str) -> str:
    return re.sub("[A-Z]", lambda letter: "_" + letter[0].lower(), name).lstrip("_")


class Watch:
    """Calls a function with progress, and passes a progress function of the caller's on to it."""

    def __init__(self, progress: Optional[Callable[[float], object]]) -> None:
        self._progress = progress
        self._raised: Optional[BaseException] = None
        self.callback = Progress(self._report) if progress else Progress()

    def _report(self, fraction: float, _: object) -> int:
        """True itself cancels: what a function returns by the way, as print, append and write do, does
        not."""
        assert self._progress is not None
        try:
            answer = self._progress(fraction)
            return isinstance(answer, (bool, np.bool_)) and bool(answer)
        except BaseException as error:  # not to be lost in C
            self._raised = error
            return 1

    def call(self, function: Any, *arguments: Any) -> None:
        try:
            call(function, *arguments)
        except Cancelled:
            if self._raised is not None:
                raise self._raised from None
            raise
