"""Volumes on other grids."""

from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any, overload

import numpy as np

from volux import _core
from volux._displacement import Transform
from volux._grid import Grid
from volux._image import Image
from volux._keywords import FILLING, takes
from volux._reading import reading
from volux._route import SKIPPING, Route, route
from volux._subject import Result, Subject, result
from volux._types import (
    Array,
    DLPackProducer,
    FillingOptions,
    NotGiven,
)
from volux._words import one_of

if TYPE_CHECKING:
    from typing_extensions import Unpack


# How the library begins to say that a brick lacks what is read.
_TOO_SMALL = "An index or an extent does not fit"


class AliasingWarning(UserWarning):
    """A result of larger voxels than its source, made without a decision about aliasing."""


class PlacingOptions(FillingOptions, total=False):
    """What resample() takes besides."""

    like: Image | Array | DLPackProducer | None
    transform: Transform | None


@overload
def resample(
    image: Image, grid: Grid | None = None, **options: Unpack[PlacingOptions]
) -> Image: ...


@overload
def resample(
    image: Array | DLPackProducer, grid: Grid | None = None, **options: Unpack[PlacingOptions]
) -> Array: ...


@takes(**FILLING | {"antialias": NotGiven.NOT_GIVEN})
def resample(
    image: Image | Array | DLPackProducer,
    grid: Grid | None = None,
    *,
    like: Image | Array | DLPackProducer | None = None,
    transform: Transform | None = None,
    **options: Any,
) -> Image | Array:
    """Bring a volume onto a grid.

    Parameters
    ----------
    $image
    grid : Grid, optional
        Where the voxels of the result lie in the world. A box of a grid, ``grid[10:20]``, gets
        the voxels that the whole has there.
    like : Image or ndarray, optional
        Gives its grid instead: an image for an image, an array for an array.
    transform : Affine, Displacement or what compose() made, optional
        Takes a point of the result to the point of the image that is read for it, both in the
        world. With neither `grid` nor `like` the result has the image's own grid.
    $filling

    Returns
    -------
    Image or ndarray
        As `image` is. Its axes are those that the grid names, or the image's.
    $raises
    $aliasing

    Examples
    --------
    >>> import numpy, volux
    >>> moved = volux.Affine([[1, 0, 0, 0], [0, 1, 0, 0], [0, 0, 1, 0.5], [0, 0, 0, 1]])
    >>> volux.resample(numpy.arange(4.0).reshape(1, 1, 4), transform=moved, outside="extend")
    array([[[0.5, 1.5, 2.5, 3. ]]])
    """
    source = Subject(image)
    way = route(source.grid, _target(source, grid, like, transform), transform)
    return _filled(source, way, **options)


def _filled(
    source: Subject, way: Route, *, dtype: Any, out: Any, antialias: Any, **options: Any
) -> Image | Array:
    if isinstance(antialias, NotGiven):
        antialias = None
        _warn_of_aliasing(way)
    how = reading(source.array.dtype, antialias=antialias, **options)
    made = result(source, way.target, dtype, out, way.field)
    _fill(source, made, way, how)
    return made.handed_on()


def _fill(source: Subject, made: Result, way: Route, how: _core.Reading) -> None:
    warp, region = way.warp(), way.region()
    try:
        _core.fill(source.voxels, made.voxels, way.affine, how, warp=warp, region=region)
    except ValueError as error:  # that of a progress callback, or of a signal's, among them
        if not (way.source.is_box and str(error).startswith(_TOO_SMALL)):
            raise
        raise ValueError(
            f"image is the brick {way.source.shape} at {way.source.whole[1]} of a larger one, and "
            "lacks what the grid reads: volux.support(grid, box, image=whole) says which box it is"
        ) from None


def _target(source: Subject, grid: object, like: object, transform: object) -> Grid:
    given = one_of({"grid": grid, "like": like}, required=transform is None)
    if given == "grid":
        return _checked(grid)._named(source.axes)
    return source.grid if given is None else _grid_like(source, like)


def _checked(grid: object) -> Grid:
    if isinstance(grid, Grid):
        return grid
    hint = ": like= takes images" if isinstance(grid, (Image, np.ndarray)) else ""
    raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid{hint}")


def _grid_like(source: Subject, like: object) -> Grid:
    if isinstance(like, Grid):
        raise TypeError("like is a Grid; it must be an image: grid= takes grids")
    other = Subject(like, "like")
    if (other.image is None) is not (source.image is None):
        raise TypeError(
            "like and image must both be a volux.Image or both a plain array, whose world is its "
            "index space: volux.Image(array, affine) says where one lies"
        )
    return other.grid


def _warn_of_aliasing(way: Route) -> None:
    longest = way.longest_step()
    if longest >= SKIPPING:
        warnings.warn(
            f"voxels of the result are as long as {longest:.3g} of the image, and detail between "
            "them is skipped: antialias='mean' takes means, antialias=None says that this is meant",
            AliasingWarning,
            stacklevel=5,
        )
