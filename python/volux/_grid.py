"""Grids: how many voxels there are, and where they lie in the world."""

from __future__ import annotations

from collections.abc import Sequence
from functools import partial
from operator import getitem
from typing import TYPE_CHECKING, Any, TypeVar

import numpy as np
import numpy.typing as npt

from volux import _core
from volux._arrays import array_of
from volux._axes import affine_of, checked_axes, from_xyz, rows_of, to_xyz
from volux._fixed import Fixed
from volux._numbers import MOST_VOXELS, extents, placing, steps
from volux._types import (
    Align,
    Array,
    Axes,
    Box,
    DLPackProducer,
    Floats,
    Ints,
    Matrix,
    Number,
    Shape,
    Vector,
)
from volux._words import chosen, short

if TYPE_CHECKING:
    from volux._image import Image

T = TypeVar("T")

ALIGNS = {"edges": 0, "centres": 1}

INDEX_SPACE = placing("affine", np.eye(4))


class Grid(Fixed):
    """The voxels of a volume without their values: how many, and where in the world.

    Parameters
    ----------
    shape : three ints
        Voxels along each axis of the array, 1 to 2^31 - 1. Channels do not count.
    affine : array_like, 4 x 4
        Takes an index of the array to the world: (x, y, z) in mm, RAS+. It is copied.
    axes : str, optional
        What the array's axes are called, such as "zyx", if its last axis is x. None: as in the
        image that the grid is used with.

    Attributes
    ----------
    shape, affine, axes
        As given; `affine` is read-only.
    spacing : three floats
        World units from a voxel to the next along each axis of the array.

    Raises
    ------
    TypeError
        If an argument is of another kind.
    ValueError
        If an extent is out of bounds, or the affine is not finite or singular.

    See Also
    --------
    resample : Brings a volume onto a grid.

    Notes
    -----
    ``grid[10:20, :, :]`` is a box of a grid. Resampled onto a box, a volume has the voxels that
    the whole grid has there, to the last bit.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> grid = volux.Grid((60, 256, 256), np.diag([3.0, 0.5, 0.5, 1.0]))
    >>> grid.spacing
    (3.0, 0.5, 0.5)
    >>> grid[10:20].shape
    (10, 256, 256)
    """

    __slots__ = ("_whole", "affine", "axes", "shape")
    shape: Ints
    affine: Matrix
    axes: Axes | None
    _whole: tuple[Grid, Ints] | None

    def __init__(self, shape: Shape, affine: npt.ArrayLike, *, axes: Axes | None = None) -> None:
        self.shape = extents("shape", shape)
        self.affine = placing("affine", affine)
        self.axes = axes if axes is None else checked_axes(axes)
        self._whole = None

    @classmethod
    def _of(cls, shape: Ints, affine: Matrix, axes: Axes | None) -> Grid:
        """Return a grid of what is known to place voxels, without the checks of other numbers."""
        grid = cls.__new__(cls)
        grid.shape, grid.affine, grid.axes, grid._whole = shape, affine, axes, None
        return grid

    @classmethod
    def of_size(
        cls, image: Image | Grid | Array | DLPackProducer, shape: Shape, *, align: Align = "edges"
    ) -> Grid:
        """Return the grid of an image at another number of voxels.

        Parameters
        ----------
        image : Image, Grid, ndarray or DLPack producer
            Where the voxels lie now.
        shape : three ints
            How many voxels there shall be along each axis of the array.
        align : {"edges", "centres"}
            What stays: the field of view, or the first and the last centre.

        Returns
        -------
        Grid
            In the same place of the world.

        Raises
        ------
        TypeError, ValueError
            As of `Grid` and `resize`.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> volux.Grid.of_size(np.zeros((4, 4, 4)), (8, 4, 4)).spacing
        (0.5, 1.0, 1.0)
        """
        return sized(placed(image), shape, chosen("align", align, ALIGNS))[0]

    @classmethod
    def of_spacing(
        cls,
        image: Image | Grid | Array | DLPackProducer,
        spacing: Number | Vector,
        *,
        align: Align = "edges",
    ) -> Grid:
        """Return the grid of an image at another spacing.

        Parameters
        ----------
        image : Image, Grid, ndarray or DLPack producer
            Where the voxels lie now.
        spacing : float or three floats
            World units from a voxel to the next along each axis of the array.
        align : {"edges", "centres"}
            What stays: the edge before the first voxel, or the first centre.

        Returns
        -------
        Grid
            With exactly this spacing, and the whole number of voxels that fits best.

        Raises
        ------
        TypeError, ValueError
            As of `Grid` and `resize`.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> ct = volux.Image(np.zeros((60, 64, 64)), np.diag([3.0, 0.5, 0.5, 1.0]))
        >>> volux.Grid.of_spacing(ct, 1.0).shape
        (180, 32, 32)
        """
        return spaced(placed(image), steps("spacing", spacing), chosen("align", align, ALIGNS))[0]

    @property
    def whole(self) -> tuple[Grid, Ints]:
        """The grid that this one is a box of, or itself, and where the box begins there."""
        return self._whole or (self, (0, 0, 0))

    @property
    def is_box(self) -> bool:
        """Whether it is a box of a larger grid."""
        return self._whole is not None

    @property
    def spacing(self) -> Floats:
        """World units from a voxel to the next along each axis of the array."""
        first, second, third = _core.spacing_of(self.affine[:3])
        return first, second, third

    def __getitem__(self, box: slice | tuple[slice, ...]) -> Grid:
        """Return a box of the grid: slices along the axes of the array, without steps."""
        slices = box_of(box, self.shape)
        i, j, k = (along.start for along in slices)
        part = Grid(
            [along.stop - along.start for along in slices],
            self._beginning_at((i, j, k)),
            axes=self.axes,
        )
        whole, first = self.whole
        return part._as_box_of(whole, (first[0] + i, first[1] + j, first[2] + k))

    def _as_box_of(self, whole: Grid, start: Ints) -> Grid:
        object.__setattr__(self, "_whole", (whole, start))  # before anybody else has seen it
        return self

    def _beginning_at(self, start: Ints) -> Matrix:
        step = np.eye(3, 4)
        step[:, 3] = self._in_xyz(start)
        return affine_of(_core.composed(self._rows, step), self._order)

    # The following are for the other modules of the package.

    @property
    def _order(self) -> Axes:
        """What the axes are called; unless named, as those of a plain array."""
        return self.axes or "zyx"

    @property
    def _rows(self) -> Matrix:
        """The upper three rows of the affine, with the columns in the order x, y, z, origin."""
        return rows_of(self.affine, self._order)

    @property
    def _extents(self) -> Ints:
        """Voxels along x, y and z."""
        return self._in_xyz(self.shape)

    def _in_xyz(self, values: Sequence[T]) -> tuple[T, T, T]:
        """Return a triple in the order of the axes as one of x, y and z."""
        return to_xyz(values, self._order)

    def _alone(self) -> Grid:
        """Return the same voxels as a grid that is no box of another one."""
        return Grid._of(self.shape, self.affine, self.axes) if self.is_box else self

    def _named(self, axes: Axes) -> Grid:
        """Return the same grid with these axes, unless it names its own."""
        if self.axes is not None:
            return self
        named = Grid._of(self.shape, self.affine, axes)
        whole, start = self.whole
        return named._as_box_of(whole._named(axes), start) if self.is_box else named

    def _key(self) -> tuple[object, ...]:
        return (self.shape, tuple(self.affine.flat), self.axes, self._whole)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Grid) and self._key() == other._key()

    def __hash__(self) -> int:
        return hash(self._key())

    def __repr__(self) -> str:
        axes = "" if self.axes is None else f", axes={self.axes!r}"
        return f"Grid({self.shape}, {self.affine.tolist()}{axes})"

    def __reduce__(self) -> tuple[Any, ...]:
        if self._whole is None:
            return partial(Grid, axes=self.axes), (self.shape, self.affine)
        whole, start = self._whole
        box = tuple(slice(i, i + n) for i, n in zip(start, self.shape, strict=True))
        return getitem, (whole, box)


def placed(image: Image | Grid | Array | DLPackProducer) -> Grid:
    """Return where an image lies."""
    grid = image if isinstance(image, Grid) else getattr(image, "grid", None)
    if isinstance(grid, Grid):
        return grid
    return unplaced(array_of(image, "image"), None)


def unplaced(array: Array, axes: Axes | None) -> Grid:
    """Return the grid of a plain array, whose world is its index space."""
    return Grid._of(extents("shape", array.shape[:3]), INDEX_SPACE, axes)


def sized(place: Grid, shape: Any, align: int) -> tuple[Grid, Matrix]:
    """Return the grid of another number of voxels, and the map from its voxels to those of now."""
    wanted = extents("shape", shape)
    affine_map, rows = _core.size_grid(place._rows, place._extents, place._in_xyz(wanted), align)
    return _resized(place, wanted, affine_map, rows), affine_map


def spaced(place: Grid, spacing: Floats, align: int) -> tuple[Grid, Matrix]:
    """Return the grid of another spacing, and the map from its voxels to those of now."""
    wanted = place._in_xyz(spacing)
    shape, affine_map, rows = _core.spacing_grid(place._rows, place._extents, wanted, align)
    if 0 in shape:
        raise ValueError(f"spacing={spacing} makes more than {MOST_VOXELS} voxels along an axis")
    return _resized(place, from_xyz(shape, place._order), affine_map, rows), affine_map


def _resized(place: Grid, shape: Ints, affine_map: Matrix, rows: Matrix) -> Grid:
    # The same voxels keep their place to the last bit, which is rounded in all others.
    is_same = np.array_equal(affine_map, np.eye(3, 4))
    affine = place.affine if is_same else affine_of(rows, place._order)
    return Grid(shape, affine, axes=place.axes)


def box_of(box: slice | tuple[slice, ...], shape: Ints) -> Box:
    """Return slices along all three axes, with whole numbers for their ends."""
    given = box if isinstance(box, tuple) else (box,)
    if len(given) > 3:
        raise ValueError(f"box={short(box)} has {len(given)} slices; the grid has 3 axes")
    slices = [*given, *[slice(None)] * (3 - len(given))]
    first, second, third = (_bounded(*pair) for pair in zip(slices, shape, strict=True))
    return first, second, third


def _bounded(along: slice, extent: int) -> slice:
    if not isinstance(along, slice):
        raise TypeError(f"box has {short(along)}; it must be made of slices, such as 10:20")
    start, stop, step = along.indices(extent)
    if step != 1 or stop <= start:
        raise ValueError(
            f"box has {short(along)} of {extent} voxels; it must have one or more, step 1"
        )
    return slice(start, stop)
