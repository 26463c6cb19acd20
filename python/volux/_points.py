"""Points that come in, any array of triples, and what moves them."""

from __future__ import annotations

from abc import ABC, abstractmethod

import numpy as np
import numpy.typing as npt

from volux._types import Matrix


def triples(points: npt.ArrayLike) -> Matrix:
    """Return points as doubles, (..., 3); an array of aligned doubles stays where it is."""
    try:
        numbers = np.asarray(points)
        with np.errstate(over="ignore", invalid="ignore"):  # long doubles may be too large
            given: Matrix = numbers.astype(np.float64, casting="same_kind", copy=False)
    except (TypeError, ValueError):
        raise TypeError("points must be real numbers, three for each point") from None
    if given.ndim == 0 or given.shape[-1] != 3:
        hint = ": points.T, if these are coordinates for scipy" if given.shape[:1] == (3,) else ""
        raise ValueError(f"points have the shape {given.shape}; it must be (..., 3){hint}")
    return given if given.flags.aligned else given.copy()


def listed(points: Matrix) -> Matrix:
    """Return points one after the other, (n, 3)."""
    return points if points.ndim == 2 else points.reshape(-1, 3)


class PointMap(ABC):
    """What takes points of the world to others."""

    __slots__ = ()

    def __call__(self, points: npt.ArrayLike) -> Matrix:
        """Return where points of the world lead.

        Parameters
        ----------
        points : array_like, (..., 3)
            In the world.

        Returns
        -------
        ndarray, float64
            As many as `points`, in the same shape.
        """
        given = triples(points)
        results = np.empty(given.shape)
        self._move(listed(given), results.reshape(-1, 3))
        return results

    @abstractmethod
    def _move(self, points: Matrix, results: Matrix) -> None:
        """Write where points (n, 3) lead to an array of as many."""
