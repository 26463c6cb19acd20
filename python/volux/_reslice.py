"""Planes and slabs out of volumes."""

from __future__ import annotations

from collections.abc import Sequence
from typing import TYPE_CHECKING, Any, overload

import numpy.typing as npt

from volux import _core
from volux._grid import Grid
from volux._image import Image
from volux._numbers import whole
from volux._plane import Plane
from volux._reading import reading
from volux._subject import Result, Subject, result
from volux._types import (
    Antialias,
    Array,
    Border,
    DLPackProducer,
    FillingOptions,
    Interpolation,
    Number,
    Outside,
    Overflow,
    Progress,
    Projection,
)
from volux._words import chosen, in_our_words

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


@in_our_words
def reslice(
    image: Image | Array | DLPackProducer,
    planes: Plane | Grid | Sequence[Plane],
    *,
    slab: int | None = None,
    projection: Projection = "mean",
    interpolation: Interpolation = "linear",
    border: Border = "edge",
    fill: Number = 0,
    outside: Outside = "fill",
    antialias: Antialias | None = None,
    overflow: Overflow = "saturate",
    dtype: npt.DTypeLike | None = None,
    out: Array | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> Any:
    """Cut planes out of a volume.

    Parameters
    ----------
    image : Image, ndarray or DLPack producer
        Three axes, and a last one for channels. It is read where it is.
    planes : Plane, Grid or sequence of Plane
        Where to cut, in the world. A grid is a stack of planes, as `Plane.stack` makes it.
    slab : int, optional
        So many planes become one. They divide the distance to the next plane evenly, which is the
        first number of the plane's spacing, and the plane is in their middle.
    projection : {"mean", "maximum", "minimum"}
        How they become one; with "label" the mean is a vote.
    interpolation : {"linear", "nearest", "cubic", "label"}
        The kernel; "label" for segmentations.
    border : {"edge", "constant"}
        What a kernel reads for voxels outside the image: the nearest one, or `fill`.
    fill : number
        For voxels outside; an integer image must be able to hold it.
    outside : {"fill", "extend"}
        What the border "edge" gives farther than half a voxel beyond the outer centres.
    antialias : {None, "mean", "auto"}
        "mean": each voxel of each plane is the mean of as many samples as it is long and thick.
    overflow : {"saturate", "wrap"}
        What integers store for a reading that they cannot hold.
    dtype : dtype, optional
        Of the result: the image's, float32 or float64. None: that of `out`, or the image's.
    out : ndarray, optional
        Gets the result of one plane or grid; any strides, but no overlap with the image.
    threads : int, optional
        How many work at most; None: as `threads` says. The bits are the same.
    progress : callable, optional
        Is called now and then with the fraction that is done of each plane or grid; what it raises
        ends the call.

    Returns
    -------
    Image or ndarray, or a list of them
        As `image` is, one for each Plane of a sequence. A plane has the axes "zyx" and the shape
        (1, rows, columns); ``result.array[0]`` is its picture.

    Raises
    ------
    TypeError
        If an argument is of another kind.
    ValueError
        If a value is not allowed; then nothing has been written.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> ct = volux.Image(np.arange(27.0).reshape(3, 3, 3))
    >>> plane = volux.Plane((1, 1, 1), (-1, 0, 0), (0, -1, 0), (3, 3), 1.0)
    >>> volux.reslice(ct, plane).array[0]
    array([[ 9., 10., 11.],
           [12., 13., 14.],
           [15., 16., 17.]])
    """
    source = Subject(image).refuse_brick("reslice")
    kind = source.array.dtype
    how = reading(
        kind, interpolation, border, fill, outside, antialias, overflow, threads, progress
    )
    slabs = {
        "slab": 1 if slab is None else whole("slab", slab),
        "projection": chosen("projection", projection, PROJECTIONS),
    }
    grids = _grids(planes, source, out)
    cuts = [_cut(source, result(source, grid, dtype, out), how, slabs) for grid in grids]
    return cuts[0] if isinstance(planes, (Plane, Grid)) else cuts


def _cut(source: Subject, made: Result, how: _core.Reading, slabs: dict[str, int]) -> Image | Array:
    affine_map = _core.planes_between(made.grid._rows, source.grid._rows, slabs["slab"])
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
