"""Arrays on their way into the library, checked, and out of it."""

import numpy as np

COUNT_LIMIT = 2**31 - 1  # counts are int32


def check_shape(name, array, shape, limit=COUNT_LIMIT):
    """shape: the length of each axis, None for any up to the limit."""
    if array.ndim != len(shape) or any(want not in (None, have)
                                       for want, have in zip(shape, array.shape)):
        expected = ", ".join("any" if want is None else str(want) for want in shape)
        raise ValueError(f"{name}: expected shape ({expected}{',' * (len(shape) == 1)}), "
                         f"not {array.shape}")
    if array.shape[0] > limit:
        raise ValueError(f"{name}: {array.shape[0]} rows are more than {limit}")


def real(name, values, shape, limit=COUNT_LIMIT):
    """A float64 array as C has it: the very one, or a copy."""
    array = np.asarray(values)
    if not np.can_cast(array.dtype, np.float64):
        raise TypeError(f"{name}: {array.dtype} does not fit into float64")
    check_shape(name, array, shape, limit)
    return np.require(array, np.float64, ("C", "A"))


def integer(name, values, shape, low, high, error, kinds="iu", limit=COUNT_LIMIT):
    """Likewise int32, of numbers in low .. high, or that error. kinds: of types, as numpy has them."""
    array = np.asarray(values)
    if array.size and array.dtype.kind not in kinds:
        raise TypeError(f"{name}: expected integers, not {array.dtype}")
    check_shape(name, array, shape, limit)
    if array.size:
        for value in (array.min(), array.max()):
            if not low <= value <= high:
                raise error(f"{name}: {value} is not in {low} .. {high}")
    return np.require(array, np.int32, ("C", "A"))


def mesh_arrays(vertices, triangles):
    """Both, of a mesh that has every vertex its triangles name."""
    vertices = real("vertices", vertices, (None, 3))
    return vertices, integer("triangles", triangles, (None, 3), 0, len(vertices) - 1, IndexError)


def arguments(vertices, triangles):
    """A mesh as the library's functions begin with it."""
    return len(vertices), vertices, len(triangles), triangles


def address(array):
    """Of an array that may be missing."""
    return None if array is None else array.ctypes.data


def copy(pointer, shape, dtype):
    """Of what belongs to the library. A pointer to nothing may be null."""
    if 0 in shape:
        return np.empty(shape, dtype)
    return np.ctypeslib.as_array(pointer, shape).astype(dtype, copy=True)
