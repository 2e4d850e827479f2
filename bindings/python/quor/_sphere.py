"""Integers carried in directions."""

from __future__ import annotations

import operator
from ctypes import byref, c_float
from typing import Tuple

from ._library import call, library


def encode_integer_to_sphere(value: int) -> Tuple[float, float, float]:
    """Packs an integer in -1 .. 65534 into a unit vector around +z: three floats that single
    precision holds exactly. Raises ValueError for another integer."""
    value = operator.index(value)
    if not -1 <= value <= 65534:  # ctypes would cut a large one to its low 32 bits
        raise ValueError(f"value: {value} is not in -1 .. 65534")
    x, y, z = c_float(), c_float(), c_float()
    call(library.quorkitEncodeToSphere, value, byref(x), byref(y), byref(z))
    return x.value, y.value, z.value


def decode_integer_from_sphere(x: float, y: float, z: float) -> int:
    """Unpacks the integer from a vector that encode_integer_to_sphere made, or from its mirror
    image (-x, -y, -z). Any other vector gives some integer in -1 .. 65534."""
    return int(library.quorkitDecodeFromSphere(float(x), float(y), float(z)))
