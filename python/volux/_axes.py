"""The orders of an array's axes, and triples and columns brought from one order to another."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any, TypeVar, cast

import numpy as np

from volux._types import Axes, Matrix
from volux._words import listed, short

T = TypeVar("T")

# Where an array of these axes has its x, y and z.
PLACES: dict[Any, tuple[int, int, int]] = {
    "xyz": (0, 1, 2),
    "xzy": (0, 2, 1),
    "yxz": (1, 0, 2),
    "yzx": (2, 0, 1),
    "zxy": (1, 2, 0),
    "zyx": (2, 1, 0),
}


def checked_axes(axes: object) -> Axes:
    """Return the axes, or say which there are."""
    if isinstance(axes, str) and axes in PLACES:
        return cast(Axes, axes)
    error = ValueError if isinstance(axes, str) else TypeError
    raise error(
        f"axes={short(axes)}: allowed are {listed(PLACES)}, the first axis of the array first"
    )


def to_xyz(values: Sequence[T], axes: Axes) -> tuple[T, T, T]:
    """Return a triple in the order of the array's axes as one of x, y and z."""
    x, y, z = PLACES[axes]
    return values[x], values[y], values[z]


def from_xyz(values: Sequence[T], axes: Axes) -> tuple[T, T, T]:
    """Return a triple of x, y and z in the order of the array's axes."""
    first, second, third = ("xyz".index(axis) for axis in axes)
    return values[first], values[second], values[third]


def rows_of(affine: Matrix, axes: Axes) -> Matrix:
    """Return the upper three rows of a 4 x 4 affine with the columns in the order x, y, z."""
    return np.ascontiguousarray(affine[:3, [*PLACES[axes], 3]])


def affine_of(rows: Matrix, axes: Axes) -> Matrix:
    """Return the 4 x 4 affine of three rows whose columns are x, y, z and the origin."""
    affine = np.eye(4)
    affine[:3, [*PLACES[axes], 3]] = rows
    return affine
