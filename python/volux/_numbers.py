"""Numbers that come in: extents, spacings, places in the world, matrices."""

from __future__ import annotations

import math
from collections.abc import Sequence
from operator import index
from typing import Any, SupportsFloat, cast

import numpy as np

from volux import _core
from volux._types import Floats, Matrix
from volux._words import short

MOST_VOXELS = 2**31 - 1


def whole(name: str, value: Any, *, least: int = 1, most: int = MOST_VOXELS) -> int:
    """Return a whole number within bounds."""
    try:
        number = index(value)
    except TypeError:
        raise TypeError(f"{name}={short(value)} must be a whole number") from None
    if isinstance(value, bool):
        raise TypeError(f"{name}={short(value)} must be a whole number, not a bool")
    if not least <= number <= most:
        raise ValueError(f"{name}={number} must be from {least} to {most}")
    return number


def _entries(name: str, value: Any, count: int, what: str) -> Sequence[Any]:
    if isinstance(value, (str, bytes)) or not hasattr(value, "__len__"):
        raise TypeError(f"{name}={short(value)} must be {count} numbers: {what}")
    if len(value) != count:
        raise ValueError(
            f"{name}={short(value)} has {len(value)} numbers; it must be {count}: {what}"
        )
    return list(value)


def extents(name: str, value: Any, count: int = 3, what: str = "voxels along each axis") -> Any:
    """Return a tuple of whole numbers from 1 to 2^31 - 1."""
    numbers = _entries(name, value, count, what)
    return tuple(whole(f"{name}[{n}]", number) for n, number in enumerate(numbers))


def finite(name: str, value: Any) -> float:
    """Return a number that is neither infinite nor NaN."""
    is_number = isinstance(value, SupportsFloat) and not isinstance(value, (str, bytes))
    if not is_number or np.iscomplexobj(cast(Any, value)):  # NumPy would take the real part
        raise TypeError(f"{name}={short(value)} must be a number")
    number = float(value)
    if not math.isfinite(number):
        raise ValueError(f"{name}={number} must be finite")
    return number


def positive(name: str, value: Any) -> float:
    """Return a finite number above 0."""
    number = finite(name, value)
    if number <= 0.0:
        raise ValueError(f"{name}={number} must be above 0")
    return number


def place(name: str, value: Any) -> Floats:
    """Return three finite numbers: a place or a direction in the world."""
    x, y, z = _entries(name, value, 3, "x, y and z in the world")
    return finite(f"{name}[0]", x), finite(f"{name}[1]", y), finite(f"{name}[2]", z)


def steps(name: str, value: Any, what: str = "one for each axis of the array") -> Floats:
    """Return three finite numbers above 0, of three or of one that counts along each axis."""
    if np.ndim(value) == 0 and not isinstance(value, (str, bytes)):
        number = positive(name, value)
        return number, number, number
    first, second, third = _entries(name, value, 3, f"{what}, or a single number")
    return (
        positive(f"{name}[0]", first),
        positive(f"{name}[1]", second),
        positive(f"{name}[2]", third),
    )


def kept(values: Any) -> Matrix:
    """Return a matrix of our own that nobody can change."""
    if np.iscomplexobj(values):
        raise TypeError("numbers are complex")  # of which NumPy would take the real parts
    matrix = np.array(values, dtype=np.float64, order="C")
    matrix.flags.writeable = False
    return matrix


def placing(name: str, value: Any) -> Matrix:
    """Return a 4 x 4 affine that places voxels in the world."""
    try:
        matrix = kept(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} must be a 4 x 4 matrix of numbers, not {short(value)}") from None
    if matrix.shape != (4, 4):
        raise ValueError(f"{name} has the shape {matrix.shape}; it must be 4 x 4")
    if matrix[3].tolist() != [0.0, 0.0, 0.0, 1.0]:
        raise ValueError(f"{name} has the last row {matrix[3].tolist()}; it must be [0, 0, 0, 1]")
    if not np.isfinite(matrix).all():
        raise ValueError(f"{name}={matrix.tolist()} must be finite")
    refusal = _core.refusal(np.ascontiguousarray(matrix[:3]))
    if refusal is not None:
        raise ValueError(f"{name}={matrix.tolist()} is singular: {refusal}")
    return matrix
