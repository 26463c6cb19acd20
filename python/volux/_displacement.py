"""Displacement fields, and transforms in a row."""

from __future__ import annotations

from typing import Any, TypeAlias, overload

import numpy as np

from volux import _core, _sitk
from volux._affine import Affine
from volux._arrays import array_of, in_xyz
from volux._axes import affine_of
from volux._fixed import Fixed
from volux._grid import Grid
from volux._points import PointMap
from volux._types import Array, Axes, DLPackProducer, Matrix

IDENTITY = np.eye(3, 4)


class Displacement(PointMap, Fixed):
    """A displacement field: takes a point p of the world to p + u(p).

    Parameters
    ----------
    vectors : ndarray or DLPack producer, float32 or float64, (..., ..., ..., 3)
        u at each voxel of the grid: (x, y, z) in mm, RAS+. It stays where it is.
    grid : Grid
        Where the voxels of the field lie; u is zero beyond, and linear between them.

    Attributes
    ----------
    vectors, grid
        As given.

    Raises
    ------
    TypeError
        If `vectors` is no such array, or `grid` no grid.
    ValueError
        If the array does not have the shape of the grid and three components.

    Notes
    -----
    Registrations of ITK, ANTs and elastix write such fields, in LPS: `Displacement.from_sitk`.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> vectors = np.full((4, 4, 4, 3), 0.5)
    >>> warp = volux.Displacement(vectors, volux.Grid((4, 4, 4), np.eye(4)))
    >>> warp([1, 2, 3])
    array([1.5, 2.5, 3.5])
    >>> warp([7, 2, 3])
    array([7., 2., 3.])
    """

    __slots__ = ("grid", "vectors")
    vectors: Array
    grid: Grid

    def __init__(self, vectors: Array | DLPackProducer, grid: Grid) -> None:
        if not isinstance(grid, Grid):
            raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid")
        self.vectors = array_of(vectors, "vectors")
        self.grid = grid._alone()
        if self.vectors.dtype.kind != "f":
            raise TypeError(
                f"vectors have the dtype {self.vectors.dtype}; allowed are 'float32' or 'float64': "
                "vectors.astype('float32')"
            )
        if self.vectors.shape != (*grid.shape, 3):
            raise ValueError(
                f"vectors have the shape {self.vectors.shape}; the grid needs {(*grid.shape, 3)}"
            )

    @classmethod
    def from_sitk(cls, field: Any) -> Composite:
        """Return the transform of a displacement field of SimpleITK's, in LPS, without a copy.

        Parameters
        ----------
        field : SimpleITK.Image
            Three-dimensional, of vectors of float32 or float64, as registrations write it.

        Returns
        -------
        Composite
            The same in our world, RAS: to LPS, along the field, and back.

        Raises
        ------
        TypeError, ValueError
            As of `Displacement`.

        Examples
        --------
        >>> import SimpleITK
        >>> import volux
        >>> field = SimpleITK.Image([4, 4, 4], SimpleITK.sitkVectorFloat64, 3)
        >>> field[2, 2, 2] = (1.0, 0.0, 0.0)
        >>> volux.Displacement.from_sitk(field)([-2, -2, 2])
        array([-3., -2.,  2.])
        """
        vectors, affine = _sitk.read(field)
        turn = Affine(np.diag([-1.0, -1.0, 1.0, 1.0]))
        in_lps = cls(vectors, Grid(vectors.shape[:3], _sitk.turned(affine), axes="zyx"))
        return Composite(turn._rows, in_lps, turn._rows)

    def _move(self, points: Matrix, results: Matrix) -> None:
        self._warp("zyx", IDENTITY).apply(points, results)

    def _warp(self, axes: Axes, to_voxels: Matrix) -> _core.Warp:
        """Return the field as the compiled part takes it, to voxels of a source."""
        grid = self.grid._named(axes)
        vectors = in_xyz(self.vectors, grid._order)
        return _core.Warp(vectors, _core.inverse(grid._rows), to_voxels)

    def __repr__(self) -> str:
        return f"<Displacement of {self.vectors.dtype}, {self.grid!r}>"

    def __reduce__(self) -> tuple[Any, ...]:
        return Displacement, (self.vectors, self.grid)


class Composite(PointMap):
    """A displacement field with affine maps before and after it, as `compose` makes it.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> field = volux.Displacement(np.full((4, 4, 4, 3), 0.5), volux.Grid((4, 4, 4), np.eye(4)))
    >>> double = volux.Affine(np.diag([2.0, 2.0, 2.0, 1.0]))
    >>> volux.compose(field, double)([1, 2, 3])
    array([3., 5., 7.])
    """

    __slots__ = ("after", "before", "field")

    def __init__(self, before: Matrix, field: Displacement, after: Matrix) -> None:
        self.before = before
        self.field = field
        self.after = after

    def _move(self, points: Matrix, results: Matrix) -> None:
        entered = np.empty(points.shape)
        _core.apply(self.before, points, entered)
        self.field._warp("zyx", self.after).apply(entered, results)

    def __repr__(self) -> str:
        return f"<Composite of {self.field!r}>"


Transform: TypeAlias = Affine | Displacement | Composite


def parts_of(
    transform: Transform, name: str = "transform"
) -> tuple[Matrix, Displacement | None, Matrix]:
    """Return the maps before and after the field of a transform, and the field."""
    if isinstance(transform, Affine):
        return transform._rows, None, IDENTITY
    if isinstance(transform, Displacement):
        return IDENTITY, transform, IDENTITY
    if isinstance(transform, Composite):
        return transform.before, transform.field, transform.after
    raise TypeError(
        f"{name} is a {type(transform).__name__}; allowed are a volux.Affine, a volux.Displacement "
        "and what compose() makes of them"
    )


@overload
def compose(first: Affine, then: Affine) -> Affine: ...


@overload
def compose(first: Transform, then: Transform) -> Affine | Composite: ...


def compose(first: Transform, then: Transform) -> Affine | Composite:
    """Return the transform that takes a point through one and then through another.

    Parameters
    ----------
    first, then : Affine, Displacement or what compose() made
        Both map the world to the world. One of them at most has a displacement field.

    Returns
    -------
    Affine or Composite
        ``compose(first, then)(p)`` is ``then(first(p))``, but for rounding.

    Raises
    ------
    TypeError, ValueError
        If one is no transform, or both have a displacement field.

    Examples
    --------
    >>> import volux
    >>> shift = volux.Affine([[1, 0, 0, 10], [0, 1, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1]])
    >>> double = volux.Affine([[2, 0, 0, 0], [0, 2, 0, 0], [0, 0, 2, 0], [0, 0, 0, 1]])
    >>> volux.compose(shift, double)([1, 2, 3])
    array([22.,  4.,  6.])
    """
    before, field, between = parts_of(first, "first")
    following, second, after = parts_of(then, "then")
    if field is not None and second is not None:
        raise ValueError(
            "first and then both have a displacement field; a transform has one at most: "
            "resample through one and then through the other"
        )
    if second is not None:
        before = _core.composed(_core.composed(following, between), before)
        return Composite(before, second, after)
    if field is not None:
        return Composite(before, field, _core.composed(after, _core.composed(following, between)))
    return Affine(affine_of(_core.composed(following, before), "xyz"))
