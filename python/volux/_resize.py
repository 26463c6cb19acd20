"""Volumes in the same place with more or fewer voxels."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

from volux import _core
from volux._grid import ALIGNS, Grid, sized, spaced
from volux._image import Image
from volux._keywords import FILLING, takes
from volux._numbers import steps
from volux._reading import reading
from volux._subject import Subject, result
from volux._types import (
    Align,
    Array,
    DLPackProducer,
    FillingOptions,
    Matrix,
    Number,
    Shape,
    Vector,
)
from volux._words import chosen, one_of

if TYPE_CHECKING:
    from typing_extensions import Unpack


class SizingOptions(FillingOptions, total=False):
    """What resize() takes besides."""

    shape: Shape | None
    spacing: Number | Vector | None
    scale: Number | Vector | None
    align: Align


@overload
def resize(image: Image, **options: Unpack[SizingOptions]) -> Image: ...


@overload
def resize(image: Array | DLPackProducer, **options: Unpack[SizingOptions]) -> Array: ...


@takes(**FILLING | {"outside": "extend", "antialias": "auto"})
def resize(
    image: Image | Array | DLPackProducer,
    *,
    shape: Shape | None = None,
    spacing: Number | Vector | None = None,
    scale: Number | Vector | None = None,
    align: Align = "edges",
    **options: Any,
) -> Image | Array:
    """Bring a volume to another number of voxels, in the same place.

    Parameters
    ----------
    $image
    shape : three ints, optional
        Voxels of the result along each axis of the array.
    spacing : float or three floats, optional
        World units from a voxel of the result to the next, along each axis of the array; of a
        plain array, voxels. The result has exactly this spacing.
    scale : float or three floats, optional
        Divides the spacing: 2 gives twice as many voxels along an axis.
    align : {"edges", "centres"}
        What stays: the field of view, or the first and the last centre.
    $filling

    Returns
    -------
    Image or ndarray
        As `image` is; an image lies where its voxels do.
    $raises

    Examples
    --------
    >>> import numpy, volux
    >>> volux.resize(numpy.arange(4.0).reshape(1, 1, 4), scale=(1, 1, 0.5))
    array([[[0.5, 2.5]]])
    """
    source = Subject(image).refuse_brick("resize")
    return _filled(source, target(source.grid, shape, spacing, scale, align), **options)


def _filled(
    source: Subject, place: tuple[Grid, Matrix], *, dtype: Any, out: Any, **options: Any
) -> Image | Array:
    target, affine_map = place
    how = reading(source.array.dtype, **options)
    made = result(source, target, dtype, out)
    _core.fill(source.voxels, made.voxels, affine_map, how)
    return made.handed_on()


def target(
    source: Grid, shape: object, spacing: Any, scale: Any, aligned: Align
) -> tuple[Grid, Matrix]:
    """Return the grid of another size, and the map from its voxels to those of now."""
    align = chosen("align", aligned, ALIGNS)
    given = one_of({"shape": shape, "spacing": spacing, "scale": scale})
    if given == "shape":
        return sized(source, shape, align)
    if given == "spacing":
        return spaced(source, steps("spacing", spacing), align)
    a, b, c = (now / by for now, by in zip(source.spacing, steps("scale", scale), strict=True))
    return spaced(source, (a, b, c), align)
