"""A field as colours: for hosts that colour vertices, and in files for viewers."""

from __future__ import annotations

import ctypes
import os
from ctypes import c_void_p
from typing import TYPE_CHECKING, Any, Optional, Union

import numpy as np

from ._arrays import given, real
from ._inputs import mesh_arrays
from ._library import call, library

if TYPE_CHECKING:
    from numpy.typing import ArrayLike

    from ._arrays import Bytes, MeshLike, Reals

    Path = Union[str, bytes, os.PathLike[str], os.PathLike[bytes]]


def colours(field: ArrayLike, low: Optional[float] = None, high: Optional[float] = None) -> Bytes:
    """(n, 4) uint8: red, green, blue and alpha of each value, from dark violet at low to yellow at
    high; by default the ends of the field. NaN is grey."""
    values = real("field", field, (None,))
    if low is None or high is None:
        finite = values[np.isfinite(values)]
        low = (finite.min() if finite.size else 0.0) if low is None else low
        high = (finite.max() if finite.size else 1.0) if high is None else high
    rgba = np.empty((len(values), 4), np.uint8)
    call(library.quorkitColours, len(values), values, float(low), float(high), rgba)
    return rgba


def write(vertices: MeshLike, triangles: Optional[ArrayLike] = None, field: Optional[ArrayLike] = None,
          path: Optional[Path] = None, ramp: Optional[Path] = None, margin: float = 0.001) -> None:
    """Writes a mesh and a field as an OBJ file and its material, which viewers show as colours: the
    largest value yellow, the smallest violet.

    field   (n,) finite values, in the order of the vertices
    path    str, bytes or path, with or without directories and ".obj"
    ramp    path of the image viridis.PNG, to be copied beside the files; None: no copy
    margin  how far the ends of the field stay away from those of the ramp, as a part of its range:
            viewers that repeat textures would mix the ends. All viewers are fine with the default.

    Numbers have six significant digits. Raises OSError with the file and the cause when a file cannot
    be written whole, a full disk included; what was there before is then as it was.
    """
    vertices, triangles = mesh_arrays(vertices, triangles)
    values = real("field", given("field", field), (len(vertices),))
    write_files(len(vertices), vertices.ctypes.data, len(triangles), triangles.ctypes.data, values,
                given("path", path), ramp, margin)


def write_files(n: int, vertices: Any, m: int, triangles: Any, field: Reals, path: Path,
                ramp: Optional[Path], margin: float) -> None:
    """Of arrays that are checked, by their addresses."""

    def utf8(path: Path) -> bytes:
        name = os.fsdecode(path)
        if "\0" in name:
            raise ValueError("write: a null character in a path")
        return name.encode() if os.name == "nt" else os.fsencode(name)

    call(library.quorkitWrite, n, ctypes.cast(vertices, c_void_p), m, ctypes.cast(triangles, c_void_p),
         field, utf8(path), None if ramp is None else utf8(ramp), float(margin))
