"""Affine maps of the world."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from volux import _core
from volux._axes import affine_of
from volux._fixed import Fixed
from volux._numbers import placing
from volux._points import PointMap
from volux._types import Matrix


class Affine(PointMap, Fixed):
    """An affine map from the world to the world.

    Parameters
    ----------
    matrix : array_like, 4 x 4
        Takes (x, y, z, 1) to (x, y, z, 1), in mm, RAS+. For plain arrays, whose world is their
        index space, the components are in the order of the array's axes. The matrix is copied.

    Attributes
    ----------
    matrix : ndarray, 4 x 4, float64
        Read-only.

    Raises
    ------
    TypeError
        If `matrix` is not made of numbers.
    ValueError
        If it is not 4 x 4, not finite or singular, or its last row is not (0, 0, 0, 1).

    Examples
    --------
    >>> import volux
    >>> shift = volux.Affine([[1, 0, 0, 10], [0, 1, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1]])
    >>> shift([1, 2, 3])
    array([11.,  2.,  3.])
    """

    __slots__ = ("matrix",)
    matrix: Matrix

    def __init__(self, matrix: npt.ArrayLike) -> None:
        self.matrix = placing("matrix", matrix)

    def _move(self, points: Matrix, results: Matrix) -> None:
        _core.apply(self._rows, points, results)

    def inverse(self) -> Affine:
        """Return the map that leads back.

        Returns
        -------
        Affine
            The inverse, rounded once for each product and sum.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> volux.Affine(np.diag([2, 4, 8, 1])).inverse()([2, 4, 8])
        array([1., 1., 1.])
        """
        return Affine(affine_of(_core.inverse(self._rows), "xyz"))

    @property
    def _rows(self) -> Matrix:
        """The upper three rows, as the compiled part takes them."""
        return self.matrix[:3]

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Affine) and np.array_equal(self.matrix, other.matrix)

    def __hash__(self) -> int:
        return hash(tuple(self.matrix.flat))

    def __repr__(self) -> str:
        return f"Affine({self.matrix.tolist()})"

    def __reduce__(self) -> tuple[Any, ...]:
        return Affine, (self.matrix,)
