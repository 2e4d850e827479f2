"""A field as colours: for hosts that colour vertices, and in files for viewers."""

import ctypes
import os
from ctypes import c_void_p

import numpy as np

from ._arrays import mesh_arrays, real
from ._library import call, library


def colours(field, low=None, high=None):
    """(n, 4) uint8: red, green, blue and alpha of each value, from dark violet at low to yellow at
    high; by default the ends of the field. NaN is grey."""
    field = real("field", field, (None,))
    if low is None or high is None:
        finite = field[np.isfinite(field)]
        low = (finite.min() if finite.size else 0.0) if low is None else low
        high = (finite.max() if finite.size else 1.0) if high is None else high
    rgba = np.empty((len(field), 4), np.uint8)
    call(library.quorkitColours, len(field), field, float(low), float(high), rgba)
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
    vertices, triangles = mesh_arrays(vertices, triangles)
    field = real("field", field, (len(vertices),))
    write_files(len(vertices), vertices.ctypes.data, len(triangles), triangles.ctypes.data, field,
                path, ramp, margin)


def write_files(n, vertices, m, triangles, field, path, ramp, margin):
    """Of arrays that are checked, by their addresses."""

    def utf8(name):
        name = os.fsdecode(name)
        if "\0" in name:
            raise ValueError("write: a null character in a path")
        return name.encode() if os.name == "nt" else os.fsencode(name)

    call(library.quorkitWrite, n, ctypes.cast(vertices, c_void_p), m, ctypes.cast(triangles, c_void_p),
         field, utf8(path), None if ramp is None else utf8(ramp), float(margin))
