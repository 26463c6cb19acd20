"""Planes and slabs out of volumes."""

from __future__ import annotations

from collections.abc import Sequence
from typing import TYPE_CHECKING, Any, overload

from volux import _core
from volux._grid import Grid
from volux._image import Image
from volux._keywords import FILLING, takes
from volux._numbers import whole
from volux._plane import Plane
from volux._reading import reading
from volux._route import between
from volux._subject import Result, Subject, result
from volux._types import (
    Array,
    DLPackProducer,
    FillingOptions,
    Projection,
)
from volux._words import chosen

if TYPE_CHECKING:
    from typing_extensions import Unpack

PROJECTIONS = {"mean": 0, "maximum": 1, "minimum": 2}


class SlabOptions(FillingOptions, total=False):
    """What reslice() takes besides."""

    slab: int | None
    projection: Projection


@overload
def reslice(image: Image, planes: Plane | Grid, **options: Unpack[SlabOptions]) -> Image: ...


@overload
def reslice(
    image: Image, planes: Sequence[Plane], **options: Unpack[SlabOptions]
) -> list[Image]: ...


@overload
def reslice(
    image: Array | DLPackProducer, planes: Plane | Grid, **options: Unpack[SlabOptions]
) -> Array: ...


@overload
def reslice(
    image: Array | DLPackProducer, planes: Sequence[Plane], **options: Unpack[SlabOptions]
) -> list[Array]: ...


@takes(**FILLING)
def reslice(
    image: Image | Array | DLPackProducer,
    planes: Plane | Grid | Sequence[Plane],
    *,
    slab: int | None = None,
    projection: Projection = "mean",
    **options: Any,
) -> Any:
    """Cut planes out of a volume.

    Parameters
    ----------
    $image
    planes : Plane, Grid or sequence of Plane
        Where to cut, in the world. A grid is a stack of planes, as `Plane.stack` makes it.
    slab : int, optional
        So many planes become one. They divide the distance to the next plane evenly, which is the
        first number of the plane's spacing, and the plane is in their middle.
    projection : {"mean", "maximum", "minimum"}
        How they become one; with "label" the mean is a vote.
    $filling

    Returns
    -------
    Image or ndarray, or a list of them
        As `image` is, one for each Plane of a sequence, which takes no `out`. A plane has the axes
        "zyx" and the shape (1, rows, columns); ``result.array[0]`` is its picture.
    $raises

    Examples
    --------
    >>> import numpy, volux
    >>> plane = volux.Plane((1, 1, 1), (-1, 0, 0), (0, -1, 0), (2, 3), 1.0)
    >>> volux.reslice(numpy.arange(27.0).reshape(3, 3, 3), plane)[0]
    array([[10.5, 11.5, 12.5],
           [13.5, 14.5, 15.5]])
    """
    source = Subject(image).refuse_brick("reslice")
    cuts = _cuts(source, planes, _slabs(slab, projection), **options)
    return cuts[0] if isinstance(planes, (Plane, Grid)) else cuts


def _slabs(slab: int | None, projection: str) -> dict[str, int]:
    count = 1 if slab is None else whole("slab", slab)
    return {"slab": count, "projection": chosen("projection", projection, PROJECTIONS)}


def _cuts(
    source: Subject, planes: object, slabs: dict[str, int], *, dtype: Any, out: Any, **options: Any
) -> list[Image | Array]:
    how = reading(source.array.dtype, **options)
    grids = _grids(planes, source, out)
    return [_cut(source, result(source, grid, dtype, out), how, slabs) for grid in grids]


def _cut(source: Subject, made: Result, how: _core.Reading, slabs: dict[str, int]) -> Image | Array:
    rows = made.grid._rows
    if slabs["slab"] == 1:
        affine_map = between(rows, source.grid)  # as of resample(), to the last bit
    else:
        affine_map = _core.planes_between(rows, source.grid._rows, slabs["slab"])
    _core.reslice(source.voxels, made.voxels, affine_map, how, **slabs)
    return made.handed_on()


def _grids(planes: object, source: Subject, out: object) -> list[Grid]:
    if isinstance(planes, Plane):
        return [planes.grid]
    if isinstance(planes, Grid):
        return [planes._alone()._named(source.axes)]
    if not isinstance(planes, Sequence) or not all(isinstance(plane, Plane) for plane in planes):
        raise TypeError(
            f"planes is a {type(planes).__name__}; allowed are a volux.Plane, a sequence of them "
            "and a volux.Grid"
        )
    if out is not None:
        raise ValueError("out= goes with one plane or grid; planes is a sequence")
    return [plane.grid for plane in planes]
