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
beside this file; then wherever the system's loader looks.
"""

import ctypes
import enum
import errno
import operator
import os
import sys
import warnings
from ctypes import POINTER, byref, c_char_p, c_double, c_float, c_int32, c_uint32, c_void_p
from typing import NamedTuple

import numpy as np

__all__ = [
    "Cancelled", "CleanMesh", "Finding", "Info", "NoVertexError", "QuorError", "RefinedMesh",
    "RepeatedCornerError", "Report", "Solver", "TooLargeError", "UnprescribedPieceError",
    "UnprescribedPieceWarning", "UnusedVertexError", "Welded", "areas", "check", "clean", "colours",
    "decode_integer_from_sphere", "encode_integer_to_sphere", "refine", "weld", "write",
]
__version__ = "0.1.0"

_COUNT_LIMIT = 2**31 - 1  # counts are int32
_SOLVER_VERTEX_LIMIT = 1_431_655_765  # beyond these the library throws, see quorctorTagged
_SOLVER_TRIANGLE_LIMIT = 238_609_294


class QuorError(ValueError):
    """The library refused its arguments; `status` is the number that it gave as the reason."""

    def __init__(self, status, text):
        super().__init__(text)
        self.status = status


class NoVertexError(QuorError):
    """Status 1: a solver needs at least one vertex."""


class RepeatedCornerError(QuorError):
    """Status 23: a triangle has two equal corner indices."""


class UnusedVertexError(QuorError):
    """Status 24: a vertex that no triangle uses."""


class UnprescribedPieceError(QuorError):
    """A piece of the mesh has no prescribed vertex: nothing says what its field is."""


class UnprescribedPieceWarning(UserWarning):
    """The same, where the caller has asked for a warning."""


class TooLargeError(QuorError):
    """The result has no place in 32-bit indices."""


class Cancelled(Exception):
    """The progress function said so."""


class Info(enum.IntEnum):
    """What became of a solver's factorization."""

    SUCCESS = 0
    NUMERICAL_ISSUE = 1  # a pivot was exactly zero: solves give 0 at the free vertices
    NO_CONVERGENCE = 2  # does not occur
    INVALID_INPUT = 3  # does not occur


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


def _load():
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


class _CFinding(ctypes.Structure):
    _fields_ = [("count", c_int32), ("first", c_int32)]


class _CReport(ctypes.Structure):
    _fields_ = [(name, c_double) for name in Report._fields[:3]] + [
        (name, _CFinding) for name in Report._fields[3:]]


class _CMesh(ctypes.Structure):
    _fields_ = [("vertex_count", c_int32), ("triangle_count", c_int32),
                ("vertices", POINTER(c_double)), ("triangles", POINTER(c_int32)),
                ("triangle_origins", POINTER(c_int32)), ("vertex_origins", POINTER(c_int32)),
                ("vertex_map", POINTER(c_int32)), ("vertex_map_count", c_int32),
                ("longest_edge", c_double)]


class _CSolverInfo(ctypes.Structure):
    _fields_ = [("vertex_count", c_int32), ("triangle_count", c_int32),
                ("prescribed_count", c_int32), ("factorization", c_uint32),
                ("vertices", POINTER(c_double)), ("triangles", POINTER(c_int32)),
                ("order", POINTER(c_int32))]


_Progress = ctypes.CFUNCTYPE(c_int32, c_double, c_void_p)
_DONE, _BAD_ARGUMENT, _OUT_OF_MEMORY, _TOO_LARGE, _FILE, _CANCELLED = range(6)


def _declare(library):
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
        "quorkitCheck": (c_int32, *mesh, c_void_p, POINTER(_CReport)),
        "quorkitClean": (c_int32, *mesh, POINTER(POINTER(_CMesh))),
        "quorkitRefine": (c_int32, *mesh, c_double, POINTER(POINTER(_CMesh))),
        "quorkitRefineGraded": (c_int32, *mesh, c_double, read(real), POINTER(POINTER(_CMesh))),
        "quorkitRefineTo": (c_int32, *mesh, c_int32, POINTER(POINTER(_CMesh))),
        "quorkitFreeMesh": (None, POINTER(_CMesh)),
        "quorkitConstruct": (c_int32, *mesh, read(integer), _Progress, c_void_p,
                             POINTER(c_void_p)),
        "quorkitSolverInfo": (c_int32, c_void_p, POINTER(_CSolverInfo)),
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


_library = _declare(_load())


def _require(status, text=None):
    """Turns a status of the library into an exception, unless it is done."""
    if status == _DONE:
        return
    reason = _library.quorkitStatusText(status).decode()
    if status == _OUT_OF_MEMORY:
        raise MemoryError(reason)
    if status == _TOO_LARGE:
        raise TooLargeError(status, reason)
    if status == _CANCELLED:
        raise Cancelled(reason)
    raise QuorError(status, text or reason)


class _Handle(c_void_p):
    """The library's solver, released with the last reference: a solver's, a view's, a call's."""

    def __del__(self, release=_library.quorkitFreeSolver):
        release(self)


class _Memory:
    """An array inside a handle, as numpy's array interface takes it: read only, handle kept."""

    def __init__(self, handle, pointer, shape, dtype):
        self._handle = handle
        address = ctypes.cast(pointer, c_void_p).value
        self.__array_interface__ = {"version": 3, "shape": shape, "typestr": np.dtype(dtype).str,
                                    "data": (address, True)}


def _check_shape(name, array, shape, limit=_COUNT_LIMIT):
    """shape: the length of each axis, None for any up to the limit."""
    if array.ndim != len(shape) or any(want not in (None, have)
                                       for want, have in zip(shape, array.shape)):
        expected = ", ".join("any" if want is None else str(want) for want in shape)
        raise ValueError(f"{name}: expected shape ({expected}{',' * (len(shape) == 1)}), "
                         f"not {array.shape}")
    if array.shape[0] > limit:
        raise ValueError(f"{name}: {array.shape[0]} rows are more than {limit}")


def _real(name, values, shape, limit=_COUNT_LIMIT):
    array = np.asarray(values)
    if not np.can_cast(array.dtype, np.float64):
        raise TypeError(f"{name}: {array.dtype} does not fit into float64")
    _check_shape(name, array, shape, limit)
    return np.require(array, np.float64, ("C", "A"))


def _integer(name, values, shape, low, high, error, kinds="iu", limit=_COUNT_LIMIT):
    array = np.asarray(values)
    if array.size and array.dtype.kind not in kinds:
        raise TypeError(f"{name}: expected integers, not {array.dtype}")
    _check_shape(name, array, shape, limit)
    if array.size:
        for value in (array.min(), array.max()):
            if not low <= value <= high:
                raise error(f"{name}: {value} is not in {low} .. {high}")
    return np.require(array, np.int32, ("C", "A"))


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
    points = _real("points", points, (None, 3))
    triangles = _integer("triangles", triangles, (None, 3), 0, len(points) - 1, IndexError)
    vertices, kept = np.empty_like(points), np.empty_like(triangles)
    point_map = np.empty(len(points), np.int32)
    n, m = c_int32(), c_int32()
    _require(_library.quorkitWeld(len(points), points, len(triangles), triangles, vertices, kept,
                                  point_map, byref(n), byref(m), float(tolerance)),
             f"tolerance: {tolerance} is not 0 or more")
    vertices.resize((n.value, 3), refcheck=False)  # gives the unused room back, in place
    kept.resize((m.value, 3), refcheck=False)
    return Welded(vertices, kept, point_map)


class Solver:
    """The cotangent Laplacian of a mesh, factorized once for any number of solves.

    vertices   (n, 3) coordinates, n >= 1
    triangles  (m, 3) indices of vertices, m >= 1; every vertex is used
    tags       (n,) integers or booleans: 1, 2, 3 (True) prescribed, all others free

    progress   called now and then, on this thread, with the fraction that is done, 0 .. 1; returns
               a true value to cancel
    unprescribed  what becomes of a piece of the mesh without a prescribed vertex, whose field nothing
               defines: "raise", "warn" or "ignore"

    Raises NoVertexError, RepeatedCornerError, UnusedVertexError or UnprescribedPieceError; Cancelled,
    or what `progress` raised. Flat triangles are not refused: clean the mesh before.

    The solver copies what it needs. Values and fields are in the caller's order of vertices; only
    `vertices`, `triangles` and `write` speak solver order, to which `to_solver_order` brings a
    field: prescribed vertices first, then the free ones in reverse.

    Use it in a with statement, call close(), or leave it to be collected.
    """

    def __init__(self, vertices, triangles, tags, progress=None, unprescribed="raise"):
        vertices = _real("vertices", vertices, (None, 3), _SOLVER_VERTEX_LIMIT)
        n = len(vertices)
        triangles = _integer("triangles", triangles, (None, 3), 0, n - 1, IndexError,
                             limit=_SOLVER_TRIANGLE_LIMIT)
        tags = _integer("tags", tags, (n,), -2**31, 2**31 - 1, ValueError, kinds="iub")
        if unprescribed not in ("raise", "warn", "ignore"):
            raise ValueError(f'unprescribed: {unprescribed!r} is not "raise", "warn" or "ignore"')
        if unprescribed != "ignore":
            _look_for_unprescribed(check(vertices, triangles, tags), unprescribed)
        handle = _Handle()
        raised = []

        @_Progress
        def call(fraction, _):
            try:
                return bool(progress(fraction))
            except BaseException as error:  # not to be lost in C
                raised.append(error)
                return 1

        status = _library.quorkitConstruct(n, vertices, len(triangles), triangles, tags,
                                           call if progress else _Progress(), None, byref(handle))
        if raised:
            raise raised[0]
        if status == _BAD_ARGUMENT:
            raise _refusal(n, triangles)
        _require(status)
        prescribed = (tags >= 1) & (tags <= 3)
        #: (n,) for each place in solver order the caller's index of its vertex.
        self.order = np.concatenate([np.flatnonzero(prescribed), np.flatnonzero(~prescribed)[::-1]])
        self.order.flags.writeable = False
        #: The number of prescribed vertices; they come first in solver order.
        self.prescribed_count = int(np.count_nonzero(prescribed))
        self._handle = handle

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Gives the memory back as soon as no view and no call in another thread uses it. Every
        later use of the solver raises ValueError; closing it again is fine."""
        self._handle = None

    @property
    def _open_handle(self):
        handle = self._handle
        if handle is None:
            raise ValueError("the solver is closed")
        return handle

    @property
    def info(self):
        """Whether the factorization succeeded: an Info. A handle whose factorization failed works,
        but solves give 0 at the free vertices."""
        return Info(self._read_info(self._open_handle).factorization)

    @staticmethod
    def _read_info(handle):
        info = _CSolverInfo()
        _require(_library.quorkitSolverInfo(handle, byref(info)))
        return info

    def solve(self, prescribed, source=None, out=None):
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
        handle = self._open_handle
        shape = self.order.shape
        prescribed = _real("prescribed", prescribed, shape)
        if source is not None:
            source = _real("source", source, shape)
        if out is None:
            out = np.empty(shape)
        else:
            if not (isinstance(out, np.ndarray) and out.dtype == np.float64 and out.flags.carray):
                raise TypeError("out: expected a contiguous, writeable float64 array")
            _check_shape("out", out, shape)
        _require(_library.quorkitSolve(handle, prescribed, _address(source), out))
        return out

    @property
    def vertices(self):
        """(n, 3) float64 in solver order: the solver's own array, read only. It stays valid when
        the solver is closed."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(_Memory(handle, info.vertices, (info.vertex_count, 3), np.float64))

    @property
    def triangles(self):
        """(m, 3) int32, indices in solver order: the solver's own array, read only. It stays valid
        when the solver is closed. Triangles and corners are in the caller's order."""
        handle = self._open_handle
        info = self._read_info(handle)
        return np.asarray(_Memory(handle, info.triangles, (info.triangle_count, 3), np.int32))

    def to_solver_order(self, values):
        """Brings values in the caller's order, (n, ...) of any type, to solver order: a copy."""
        values = np.asarray(values)
        _check_shape("values", values, self.order.shape + (None,) * (values.ndim - 1))
        return values[self.order]

    def write(self, field, base_name):
        """Writes the solver's mesh and a field as base_name + ".obj" and base_name + ".mtl": the text
        of wobj, in solver order. The function `write` of the module does the same with any mesh,
        keeps the margin that most viewers need, and copies the ramp.

        field      (n,) values in SOLVER order: write(solver.to_solver_order(field), "plate")
        base_name  str, bytes or path

        Raises and writes as that does.
        """
        handle = self._open_handle
        info = self._read_info(handle)
        field = _real("field", field, self.order.shape)
        _write(info.vertex_count, info.vertices, info.triangle_count, info.triangles, field, base_name,
               None, 0.0)


def _address(array):
    """Of an array that may be missing."""
    return None if array is None else array.ctypes.data


def _mesh(vertices, triangles, limit=_COUNT_LIMIT):
    vertices = _real("vertices", vertices, (None, 3))
    return vertices, _integer("triangles", triangles, (None, 3), 0, len(vertices) - 1, IndexError,
                              limit=limit)


def _arguments(vertices, triangles):
    return len(vertices), vertices, len(triangles), triangles


def check(vertices, triangles, tags=None):
    """Looks what is wrong with a mesh, and with its tags if there are any: a Report. Corners out of
    range and numbers that are not finite are found, not refused."""
    vertices = _real("vertices", vertices, (None, 3))
    triangles = _integer("triangles", triangles, (None, 3), -2**31, 2**31 - 1, IndexError)
    if tags is not None:
        tags = _integer("tags", tags, (len(vertices),), -2**31, 2**31 - 1, ValueError, kinds="iub")
    report = _CReport()
    _require(_library.quorkitCheck(*_arguments(vertices, triangles), _address(tags), byref(report)))
    values = [getattr(report, name) for name in Report._fields]
    return Report(*values[:3], *(Finding(found.count, found.first) for found in values[3:]))


def _copy(pointer, shape, dtype):
    if 0 in shape:
        return np.empty(shape, dtype)
    return np.ctypeslib.as_array(pointer, shape).astype(dtype, copy=True)


def clean(vertices, triangles):
    """Drops flat triangles without opening cracks, and vertices that no triangle uses: a CleanMesh. The
    vertices that triangles use must be finite."""
    vertices, triangles = _mesh(vertices, triangles)
    made = POINTER(_CMesh)()
    _require(_library.quorkitClean(*_arguments(vertices, triangles), byref(made)),
             "vertices: a coordinate that a triangle uses is not finite")
    try:
        mesh = made.contents
        n, m = mesh.vertex_count, mesh.triangle_count
        return CleanMesh(_copy(mesh.vertices, (n, 3), np.float64),
                         _copy(mesh.triangles, (m, 3), np.int32),
                         _copy(mesh.triangle_origins, (m,), np.int32),
                         _copy(mesh.vertex_map, (mesh.vertex_map_count,), np.int32))
    finally:
        _library.quorkitFreeMesh(made)


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
    vertices, triangles = _mesh(vertices, triangles)
    made = POINTER(_CMesh)()
    if sizes is not None:
        sizes = _real("sizes", sizes, (len(vertices),))
        status = _library.quorkitRefineGraded(*_arguments(vertices, triangles), float(longest_edge),
                                              sizes, byref(made))
    elif longest_edge is not None:
        status = _library.quorkitRefine(*_arguments(vertices, triangles), float(longest_edge),
                                        byref(made))
    else:
        wanted = min(max(operator.index(triangle_count), 0), _COUNT_LIMIT)
        status = _library.quorkitRefineTo(*_arguments(vertices, triangles), wanted, byref(made))
    _require(status, "refine: coordinates must be finite, corners different, lengths above 0 and the "
                     "number in 1 .. 238,609,294")
    try:
        mesh = made.contents
        n, m = mesh.vertex_count, mesh.triangle_count
        return RefinedMesh(_copy(mesh.vertices, (n, 3), np.float64),
                           _copy(mesh.triangles, (m, 3), np.int32),
                           _copy(mesh.triangle_origins, (m,), np.int32),
                           _copy(mesh.vertex_origins, (n, 2), np.int32), mesh.longest_edge)
    finally:
        _library.quorkitFreeMesh(made)


def areas(vertices, triangles):
    """(n,) float64: a third of the areas around each vertex, to multiply densities with."""
    vertices, triangles = _mesh(vertices, triangles)
    result = np.empty(len(vertices))
    _require(_library.quorkitAreas(*_arguments(vertices, triangles), result))
    return result


def colours(field, low=None, high=None):
    """(n, 4) uint8: red, green, blue and alpha of each value, from dark violet at low to yellow at
    high; by default the ends of the field. NaN is grey."""
    field = _real("field", field, (None,))
    if low is None or high is None:
        finite = field[np.isfinite(field)]
        low = (finite.min() if finite.size else 0.0) if low is None else low
        high = (finite.max() if finite.size else 1.0) if high is None else high
    rgba = np.empty((len(field), 4), np.uint8)
    _require(_library.quorkitColours(len(field), field, float(low), float(high), rgba),
             "low, high: must be finite")
    return rgba


def write(vertices, triangles, field, path, ramp=None, margin=0.001):
    """Writes a mesh and a field as an OBJ file and its material, which viewers show as colours: the
    largest value yellow, the smallest violet.

    field   (n,) finite values, in the order of the vertices
    path    str, bytes or path, with or without directories and ".obj"
    ramp    path of the image viridis.PNG, to be copied beside the files; None: no copy
    margin  how far the ends of the field stay away from those of the ramp, as a part of its range:
            viewers that repeat textures would mix the ends. All viewers are fine with the default.

    Numbers have six significant digits. Raises OSError when a file cannot be written whole, a full disk
    included; what was there before is then as it was.
    """
    vertices, triangles = _mesh(vertices, triangles)
    field = _real("field", field, (len(vertices),))
    _write(len(vertices), vertices.ctypes.data, len(triangles), triangles.ctypes.data, field, path, ramp,
           margin)


def _write(n, vertices, m, triangles, field, path, ramp, margin):
    def utf8(name):
        name = os.fsdecode(name)
        if "\0" in name:
            raise ValueError("write: a null character in a path")
        return name.encode() if os.name == "nt" else os.fsencode(name)

    status = _library.quorkitWrite(n, ctypes.cast(vertices, c_void_p), m,
                                   ctypes.cast(triangles, c_void_p), field, utf8(path),
                                   None if ramp is None else utf8(ramp), float(margin))
    if status == _FILE:
        name = os.fsdecode(path)
        part = (name[:-4] if name.endswith(".obj") else name) + ".obj.part"
        with open(part, "wb"):  # tells why, if opening was what failed
            pass
        os.remove(part)
        if ramp is not None:
            with open(ramp, "rb"):
                pass
        raise OSError(errno.EIO, "cannot be written, or the disk is full", name)
    _require(status, "write: coordinates and field must be finite, the path must name a file and the "
                     "margin be in 0 .. 1")


def _look_for_unprescribed(report, wish):
    """Looks only at meshes that are otherwise sound: the constructor refuses the others."""
    refused = report.unused_vertices.count or report.repeated_corners.count
    if report.unprescribed_pieces.count and not refused:
        count, first = report.unprescribed_pieces
        text = (f"tags: {count} of {report.pieces.count} pieces have no prescribed vertex, so nothing says "
                f"what their field is; the first one is that of vertex {first}")
        if wish == "raise":
            raise UnprescribedPieceError(_BAD_ARGUMENT, text)
        warnings.warn(text, UnprescribedPieceWarning, stacklevel=3)


def _refusal(n, triangles):
    """The exception for what the constructor refuses, with the status of quor.h, naming the first
    culprit."""
    if n == 0:
        return NoVertexError(1, "vertices: there are none")
    a, b, c = triangles.T
    repeated = np.flatnonzero((a == b) | (b == c) | (c == a))
    if repeated.size:
        return RepeatedCornerError(23, f"triangles: number {repeated[0]} has two equal indices")
    unused = np.setdiff1d(np.arange(n), triangles)[0]
    return UnusedVertexError(24, f"vertices: number {unused} is used by no triangle")


def encode_integer_to_sphere(value):
    """Packs an integer in -1 .. 65534 into a unit vector around +z: three floats that single
    precision holds exactly. Raises ValueError for another integer."""
    value = operator.index(value)
    if not -1 <= value <= 65534:  # ctypes would cut a large one to its low 32 bits
        raise ValueError(f"value: {value} is not in -1 .. 65534")
    x, y, z = c_float(), c_float(), c_float()
    _library.quorkitEncodeToSphere(value, byref(x), byref(y), byref(z))
    return x.value, y.value, z.value


def decode_integer_from_sphere(x, y, z):
    """Unpacks the integer from a vector that encode_integer_to_sphere made, or from its mirror
    image (-x, -y, -z). Any other vector gives some integer in -1 .. 65534."""
    return _library.quorkitDecodeFromSphere(float(x), float(y), float(z))
