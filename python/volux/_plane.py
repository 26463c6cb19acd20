"""Planes in the world."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from volux import _core
from volux._axes import affine_of
from volux._fixed import Fixed
from volux._grid import Grid
from volux._numbers import extents, place, positive, steps, whole
from volux._points import listed, triples
from volux._types import Floats, Matrix, Number, Shape, Vector

_OF_A_PICTURE = "rows and columns"
_OF_PLANES = "between planes, between rows and between columns"


class Plane(Fixed):
    """A plane in the world, by its centre, its normal and what is up in the picture.

    The plane depends on no image: the same one cuts a CT and a PET of another pose. The normal
    points away from the viewer: the direction along a row, times that from row to row, is the
    normal.

    Parameters
    ----------
    centre : three floats
        The middle of the picture, (x, y, z) in mm, RAS+.
    normal : three floats
        At right angles to the plane; any length.
    up : three floats
        Up in the picture; any length. It may lean: only its part in the plane counts.
    shape : two ints
        Rows and columns of the picture.
    spacing : float or three floats
        World units between planes, between rows and between columns: the order of the axes of the
        result. The first is the thickness of a slab.

    Attributes
    ----------
    shape : two ints
        Rows and columns.
    spacing : three floats
        Between planes, rows and columns.
    grid : Grid
        One plane of this many rows and columns, with the axes "zyx".

    Raises
    ------
    TypeError, ValueError
        If an argument is of another kind or not allowed, or `up` parallel to `normal`.

    Examples
    --------
    >>> import volux
    >>> axial = volux.Plane((0, 0, 50), (0, 0, -1), (0, 1, 0), (3, 5), 2.0)
    >>> axial.grid.shape
    (1, 3, 5)
    >>> axial.grid.affine[:3, 3].tolist()
    [-4.0, 2.0, 50.0]
    """

    __slots__ = ("grid",)
    grid: Grid

    def __init__(
        self, centre: Vector, normal: Vector, up: Vector, shape: Shape, spacing: Number | Vector
    ) -> None:
        where = (place("centre", centre), place("normal", normal), place("up", up))
        size = _size(shape, spacing)
        words = f"normal={where[1]} must not be 0 and up={where[2]} not parallel to it"
        self.grid = _grid_at(_core.plane_at(*where, *size), size[0], words)

    @classmethod
    def through(
        cls, p: Vector, q: Vector, r: Vector, shape: Shape, spacing: Number | Vector
    ) -> Plane:
        """Return the plane through three points.

        Parameters
        ----------
        p : three floats
            The centre of the first pixel, (x, y, z) in mm, RAS+.
        q : three floats
            A point that the first row runs to.
        r : three floats
            A point on the side of the next rows.
        shape, spacing
            As of `Plane`.

        Returns
        -------
        Plane
            Its rows run from p towards q.

        Raises
        ------
        TypeError, ValueError
            As of `Plane`; also if the points are on one line.

        Examples
        --------
        >>> import volux
        >>> volux.Plane.through((0, 0, 0), (9, 0, 0), (0, 9, 1), (4, 4), 1.0).shape
        (4, 4)
        """
        where = (place("p", p), place("q", q), place("r", r))
        size = _size(shape, spacing)
        words = f"p={where[0]}, q={where[1]} and r={where[2]} must not be on one line"
        return cls._on(_grid_at(_core.plane_through(*where, *size), size[0], words))

    @classmethod
    def along(
        cls, points: npt.ArrayLike, up: Vector, shape: Shape, spacing: Number | Vector
    ) -> list[Plane]:
        """Return a plane at each point of a curve, at right angles to it.

        Parameters
        ----------
        points : array_like, (n, 3)
            In the world, two or more.
        up : three floats
            Up in the first picture. From there the picture turns as little as it can.
        shape, spacing
            As of `Plane`.

        Returns
        -------
        list of Plane
            One for each point, centred on it; the normal is the tangent.

        Raises
        ------
        TypeError, ValueError
            As of `Plane`; also if the curve has no tangent somewhere.

        Examples
        --------
        >>> import volux
        >>> curve = [(0, 0, 0), (0, 0, 1), (0, 1, 2)]
        >>> len(volux.Plane.along(curve, (0, 1, 0), (8, 8), 0.5))
        3
        """
        curve = listed(triples(points))
        size = _size(shape, spacing)
        planes = _core.planes_along([*map(tuple, curve.tolist())], place("up", up), *size)
        words = "points must go on from each to the next, and up must not run along the curve"
        return [cls._on(_grid_at(rows, size[0], words)) for rows in planes]

    def stack(
        self, count: int, *, distance: Number | None = None, direction: Vector | None = None
    ) -> Grid:
        """Return the grid of several planes that begin with this one.

        Parameters
        ----------
        count : int
            How many planes.
        distance : float, optional
            World units between the centres of successive planes; None: that of the plane.
        direction : three floats, optional
            Where the stack goes on; None: along the normal.

        Returns
        -------
        Grid
            For `reslice` and `resample`.

        Raises
        ------
        TypeError, ValueError
            If an argument is not allowed, or the direction in the plane.

        Examples
        --------
        >>> import volux
        >>> axial = volux.Plane((0, 0, 50), (0, 0, -1), (0, 1, 0), (3, 5), 2.0)
        >>> axial.stack(4).shape
        (4, 3, 5)
        """
        planes = whole("count", count)
        rows, columns = self.shape
        step = self.spacing[0] if distance is None else positive("distance", distance)
        along = self._normal() if direction is None else place("direction", direction)
        first = _core.stack_along(self.grid._rows, along, step)
        words = f"direction={along} must not be 0 and must leave the plane"
        return _grid_at(first, (columns, rows), words, planes)

    def _normal(self) -> Floats:
        x, y, z = self.grid.affine[:3, 0].tolist()
        return x, y, z

    @classmethod
    def _on(cls, grid: Grid) -> Plane:
        plane = cls.__new__(cls)
        plane.grid = grid
        return plane

    @property
    def shape(self) -> tuple[int, int]:
        """Rows and columns of the picture."""
        _, rows, columns = self.grid.shape
        return rows, columns

    @property
    def spacing(self) -> Floats:
        """World units between planes, between rows and between columns."""
        return self.grid.spacing

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Plane) and self.grid == other.grid

    def __hash__(self) -> int:
        return hash(self.grid)

    def __repr__(self) -> str:
        return f"<Plane of {self.grid!r}>"

    def __reduce__(self) -> tuple[Any, ...]:
        return Plane._on, (self.grid,)


def _size(shape: Shape, spacing: Number | Vector) -> tuple[tuple[int, int], Floats]:
    rows, columns = extents("shape", shape, 2, _OF_A_PICTURE)
    through, down, across = steps("spacing", spacing, _OF_PLANES)
    return (columns, rows), (across, down, through)


def _grid_at(rows: Matrix, extents: tuple[int, int], words: str, planes: int = 1) -> Grid:
    if not np.isfinite(rows).all():
        raise ValueError(words)
    columns, lines = extents
    return Grid((planes, lines, columns), affine_of(rows, "zyx"), axes="zyx")
