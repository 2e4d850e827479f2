"""Numeric geometry on triangle meshes: weld, harmonic fields, coloured export.

A thin layer over the eleven C functions of the shared library quor; their manual, with the exact
rules, is the header quor.h. Arrays are numpy arrays:

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

Calls release the global interpreter lock. Any number of threads may use one solver at a time.

When memory runs out, or a factor would need more than 2,147,483,647 entries, a C++ exception leaves
the library. ctypes cannot catch it: the process ends with the message of std::terminate.

The library is looked for at the path in the environment variable QUOR_LIBRARY; if that is not set,
beside this file; then wherever the system's loader looks.
"""

import ctypes
import enum
import operator
import os
import sys
from ctypes import POINTER, byref, c_char_p, c_double, c_float, c_int32, c_uint32, c_uint64
from ctypes import c_void_p
from typing import NamedTuple

import numpy as np

__all__ = [
    "Info", "NoVertexError", "QuorError", "RepeatedCornerError", "Solver", "UnusedVertexError",
    "Welded", "decode_integer_from_sphere", "encode_integer_to_sphere", "weld",
]
__version__ = "0.1.0"

_COUNT_LIMIT = 2**31 - 1  # counts are int32
_SOLVER_VERTEX_LIMIT = 1_431_655_765  # beyond these the library throws, see quorctorTagged
_SOLVER_TRIANGLE_LIMIT = 238_609_294
_WRITE_VERTEX_LIMIT = 715_827_882  # and wobj


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


def _load():
    names = {"win32": ["quor.dll"], "darwin": ["libquor.0.dylib", "libquor.dylib"]}.get(
        sys.platform, ["libquor.so.0", "libquor.so"])
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


def _declare(library):
    """Gives every function its exact types, arrays included: a wrong one cannot be passed."""

    def read(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED"))

    def write(dtype):
        return np.ctypeslib.ndpointer(dtype, flags=("C_CONTIGUOUS", "ALIGNED", "WRITEABLE"))

    real, integer = np.float64, np.int32
    signatures = {
        "quorWeld": (c_int32, c_int32, read(real), c_int32, read(integer), write(real),
                     write(integer), write(integer), POINTER(c_int32), POINTER(c_int32), c_double),
        "quorctorTagged": (c_uint32, c_int32, read(real), c_int32, read(integer), read(integer),
                           POINTER(c_uint32), POINTER(c_uint32), POINTER(c_void_p)),
        "quorinfo": (c_uint32, c_void_p),
        "quorsolveTagged": (None, c_void_p, read(real), write(real), POINTER(c_uint32)),
        "quorsolvePTagged": (None, c_void_p, read(real), read(real), write(real),
                             POINTER(c_uint32)),
        "quoverts": (c_uint64, c_void_p, POINTER(POINTER(c_double))),
        "quotris": (c_uint64, c_void_p, POINTER(POINTER(c_int32))),
        "wobj": (None, c_void_p, read(real), c_char_p),
        "quorfree": (None, c_void_p),
        "encode_integer_to_sphere": (c_int32, c_int32, POINTER(c_float), POINTER(c_float),
                                     POINTER(c_float)),
        "decode_integer_from_sphere": (c_int32, c_float, c_float, c_float),
    }
    for name, (result, *arguments) in signatures.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


_library = _declare(_load())


class _Handle(c_void_p):
    """The library's handle, released with the last reference: a solver's, a view's, a call's."""

    def __del__(self, release=_library.quorfree):
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
    status = _library.quorWeld(len(points), points, len(triangles), triangles, vertices, kept,
                               point_map, byref(n), byref(m), float(tolerance))
    if status:
        raise QuorError(status, f"tolerance: {tolerance} is not 0 or more")
    vertices.resize((n.value, 3), refcheck=False)  # gives the unused room back, in place
    kept.resize((m.value, 3), refcheck=False)
    return Welded(vertices, kept, point_map)


class Solver:
    """The cotangent Laplacian of a mesh, factorized once for any number of solves.

    vertices   (n, 3) coordinates, n >= 1
    triangles  (m, 3) indices of vertices, m >= 1; every vertex is used
    tags       (n,) integers or booleans: 1, 2, 3 (True) prescribed, all others free

    Raises NoVertexError, RepeatedCornerError or UnusedVertexError. Flat triangles and free vertices
    that no edges connect to a prescribed one are not refused: look at `info` before solving.

    The solver copies what it needs. Values and fields are in the caller's order of vertices; only
    `vertices`, `triangles` and `write` speak solver order, to which `to_solver_order` brings a
    field: prescribed vertices first, then the free ones in reverse.

    Use it in a with statement, call close(), or leave it to be collected.
    """

    def __init__(self, vertices, triangles, tags):
        vertices = _real("vertices", vertices, (None, 3), _SOLVER_VERTEX_LIMIT)
        n = len(vertices)
        triangles = _integer("triangles", triangles, (None, 3), 0, n - 1, IndexError,
                             limit=_SOLVER_TRIANGLE_LIMIT)
        tags = _integer("tags", tags, (n,), -2**31, 2**31 - 1, ValueError, kinds="iub")
        status, handle = c_uint32(), _Handle()
        _library.quorctorTagged(n, vertices, len(triangles), triangles, tags, None, byref(status),
                                byref(handle))
        if status.value:
            raise _refusal(status.value, n, triangles)
        prescribed = (tags >= 1) & (tags <= 3)
        #: (n,) for each place in solver order the caller's index of its vertex.
        self.order = np.concatenate([np.flatnonzero(prescribed), np.flatnonzero(~prescribed)[::-1]])
        self.order.flags.writeable = False
        #: The number of prescribed vertices; they come first in solver order.
        self.prescribed_count = int(np.count_nonzero(prescribed))
        self._triangle_count = len(triangles)
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
        return Info(_library.quorinfo(self._open_handle))

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
        inputs = [_real("prescribed", prescribed, shape)]
        if source is not None:
            inputs.append(_real("source", source, shape))
        if out is None:
            out = np.empty(shape)
        else:
            if not (isinstance(out, np.ndarray) and out.dtype == np.float64 and out.flags.carray):
                raise TypeError("out: expected a contiguous, writeable float64 array")
            _check_shape("out", out, shape)
        status = c_uint32()
        solve = _library.quorsolveTagged if source is None else _library.quorsolvePTagged
        solve(handle, *inputs, out, byref(status))
        if status.value:
            raise QuorError(status.value, f"the solve answered {status.value}")
        return out

    @property
    def vertices(self):
        """(n, 3) float64 in solver order: the solver's own array, read only. It stays valid when
        the solver is closed."""
        handle, pointer = self._open_handle, POINTER(c_double)()
        count = _library.quoverts(handle, byref(pointer))
        return np.asarray(_Memory(handle, pointer, (count, 3), np.float64))

    @property
    def triangles(self):
        """(m, 3) int32, indices in solver order: the solver's own array, read only. It stays valid
        when the solver is closed. Triangles and corners are in the caller's order."""
        handle, pointer = self._open_handle, POINTER(c_int32)()
        _library.quotris(handle, byref(pointer))
        return np.asarray(_Memory(handle, pointer, (self._triangle_count, 3), np.int32))

    def to_solver_order(self, values):
        """Brings values in the caller's order, (n, ...) of any type, to solver order: a copy."""
        values = np.asarray(values)
        _check_shape("values", values, self.order.shape + (None,) * (values.ndim - 1))
        return values[self.order]

    def write(self, field, base_name):
        """Writes the mesh and a field as base_name + ".obj" and base_name + ".mtl", which show the
        field as colours: the smallest value at the right end of the image viridis.PNG, the largest
        at the left end. Put that image beside the files.

        field      (n,) values in SOLVER order: write(solver.to_solver_order(field), "plate")
        base_name  str, bytes or path without extension. The OBJ names its material by the same
                   text, so a viewer finds it only when base_name has no directory: change to the
                   directory first, or move both files afterwards.

        Raises OSError when a file cannot be opened. A disk that runs full is not noticed. Numbers
        have six significant digits; if all values are equal every texture coordinate is NaN.
        """
        handle = self._open_handle
        field = _real("field", field, self.order.shape, _WRITE_VERTEX_LIMIT)
        base_name = os.fsdecode(base_name)
        for extension in (".obj", ".mtl"):
            with open(base_name + extension, "ab"):  # the library would only print a line
                pass
        # The library opens files by narrow names, which on Windows are in the ANSI code page.
        _library.wobj(handle, field,
                      base_name.encode("mbcs") if os.name == "nt" else os.fsencode(base_name))


def _refusal(status, n, triangles):
    """The exception for a status of the constructor, naming the first culprit."""
    if status == 1:
        return NoVertexError(status, "vertices: there are none")
    if status == 23:
        a, b, c = triangles.T
        bad = np.flatnonzero((a == b) | (b == c) | (c == a))[0]
        return RepeatedCornerError(status, f"triangles: number {bad} has two equal indices")
    if status == 24:
        unused = np.setdiff1d(np.arange(n), triangles)[0]
        return UnusedVertexError(status, f"vertices: number {unused} is used by no triangle")
    return QuorError(status, f"the constructor answered {status}")


def encode_integer_to_sphere(value):
    """Packs an integer in -1 .. 65534 into a unit vector around +z: three floats that single
    precision holds exactly. Raises ValueError for another integer."""
    value = operator.index(value)
    if not -1 <= value <= 65534:  # ctypes would cut a large one to its low 32 bits
        raise ValueError(f"value: {value} is not in -1 .. 65534")
    x, y, z = c_float(), c_float(), c_float()
    _library.encode_integer_to_sphere(value, byref(x), byref(y), byref(z))
    return x.value, y.value, z.value


def decode_integer_from_sphere(x, y, z):
    """Unpacks the integer from a vector that encode_integer_to_sphere made, or from its mirror
    image (-x, -y, -z). Any other vector gives some integer in -1 .. 65534."""
    return _library.decode_integer_from_sphere(float(x), float(y), float(z))
