"""Arrays on their way into the library, checked, and out of it."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional, Sequence, Tuple, Type

import numpy as np

from ._errors import QuorError
from ._library import BAD_ARGUMENT

if TYPE_CHECKING:
    from numpy.typing import ArrayLike, NDArray

    Reals = NDArray[np.float64]
    Integers = NDArray[np.int32]
    Bytes = NDArray[np.uint8]
    MeshLike = Any  # an array of points, or an object that meshes.arrays_of takes

COUNT_LIMIT = 2**31 - 1  # counts are int32
Shape = Tuple[Optional[int], ...]


def check_shape(name: str, array: NDArray[Any], shape: Shape, limit: int = COUNT_LIMIT) -> None:
    """shape: the length of each axis, None for any up to the limit."""
    if array.ndim != len(shape) or any(want not in (None, have)
                                       for want, have in zip(shape, array.shape)):
        expected = ", ".join("any" if want is None else str(want) for want in shape)
        raise ValueError(f"{name}: expected shape ({expected}{',' * (len(shape) == 1)}), "
                         f"not {array.shape}")
    if array.shape[0] > limit:
        raise ValueError(f"{name}: {array.shape[0]} rows are more than {limit}")


def plain(name: str, values: ArrayLike) -> NDArray[Any]:
    """An array without the wishes of a subclass. A mask would be lost without a word: it must be
    empty."""
    if isinstance(values, np.ma.MaskedArray) and np.any(values.mask):
        raise ValueError(f"{name}: some entries are masked: fill them before, {name}.filled(...)")
    return np.asarray(values)


def real(name: str, values: ArrayLike, shape: Shape, limit: int = COUNT_LIMIT) -> Reals:
    """A float64 array as C has it: the very one, or a copy."""
    array = plain(name, values)
    if not np.can_cast(array.dtype, np.float64):
        raise TypeError(f"{name}: {array.dtype} does not fit into float64")
    check_shape(name, array, shape, limit)
    return np.require(array, np.float64, ("C", "A"))


def integer(name: str, values: ArrayLike, shape: Shape, low: int, high: int,
            error: Type[QuorError], kinds: str = "iu", limit: int = COUNT_LIMIT) -> Integers:
    """The same for int32, of numbers in low .. high, or that error with the first row of another. kinds: of
    types, as numpy has them."""
    array = plain(name, values)
    if array.size and array.dtype.kind not in kinds:
        raise TypeError(f"{name}: expected integers, not {array.dtype}")
    check_shape(name, array, shape, limit)
    if array.size:
        if not (low <= array.min() and array.max() <= high):
            entry = int(np.flatnonzero((array < low) | (array > high))[0])
            row = entry * len(array) // array.size
            raise error(BAD_ARGUMENT, f"{name}: {array.flat[entry]} in row {row} is not in {low} .. {high}", name,
                        row)
    return np.require(array, np.int32, ("C", "A"))


def any_integers(name: str, values: ArrayLike, count: int) -> Integers:
    """One int32 per vertex or triangle, of any value; booleans too."""
    return integer(name, values, (count,), -2**31, 2**31 - 1, QuorError, kinds="iub")


def room_for(out: Optional[Reals], shape: Shape, inputs: Sequence[Reals]) -> Tuple[Reals, Sequence[Reals]]:
    """The caller's array for a result, or a new one, and the inputs. Those that overlap it are copied,
    unless they begin where it does, which the library allows."""
    if out is None:
        return np.empty(shape), inputs  # type: ignore[arg-type]  # no None in it
    is_array = isinstance(out, np.ndarray) and not isinstance(out, np.ma.MaskedArray)
    array = np.asarray(out)  # without the wishes of a subclass
    if not (is_array and array.dtype == np.float64 and array.flags.carray):
        raise TypeError("out: expected a contiguous, writeable float64 array")
    check_shape("out", array, shape)
    return array, [values.copy() if np.may_share_memory(values, array)
                   and values.ctypes.data != array.ctypes.data else values for values in inputs]


def address(array: Optional[NDArray[Any]]) -> Optional[int]:
    """Of an array that may be missing."""
    return None if array is None else array.ctypes.data


def copy(pointer: Any, shape: Tuple[int, ...], dtype: Any) -> NDArray[Any]:
    """Of what belongs to the library. A pointer to nothing may be null."""
    if 0 in shape:
        return np.empty(shape, dtype)
    return np.ctypeslib.as_array(pointer, shape).astype(dtype, copy=True)


def given(name: str, value: Any) -> Any:
    """An argument that may only be left out where a mesh takes the place of two arrays."""
    if value is None:
        raise TypeError(f"{name} is missing")
    return value
