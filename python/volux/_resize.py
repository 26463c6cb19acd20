"""Volumes in the same place with more or fewer voxels."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, overload

import numpy.typing as npt

from volux import _core
from volux._grid import ALIGNS, Grid, sized, spaced
from volux._image import Image
from volux._numbers import steps
from volux._reading import reading
from volux._subject import Subject, result
from volux._types import (
    Align,
    Antialias,
    Array,
    Border,
    DLPackProducer,
    FillingOptions,
    Interpolation,
    Matrix,
    Number,
    Outside,
    Overflow,
    Progress,
    Shape,
    Vector,
)
from volux._words import chosen, in_our_words, one_of

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


@in_our_words
def resize(
    image: Image | Array | DLPackProducer,
    *,
    shape: Shape | None = None,
    spacing: Number | Vector | None = None,
    scale: Number | Vector | None = None,
    align: Align = "edges",
    antialias: Antialias | None = "auto",
    interpolation: Interpolation = "linear",
    border: Border = "edge",
    fill: Number = 0,
    outside: Outside = "extend",
    overflow: Overflow = "saturate",
    dtype: npt.DTypeLike | None = None,
    out: Array | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> Image | Array:
    """Bring a volume to another number of voxels, in the same place.

    Parameters
    ----------
    image : Image, ndarray or DLPack producer
        Three axes, and a last one for channels. It is read where it is.
    shape : three ints, optional
        Voxels of the result along each axis of the array.
    spacing : float or three floats, optional
        World units from a voxel of the result to the next, along each axis of the array; of a
        plain array, voxels. The result has exactly this spacing.
    scale : float or three floats, optional
        Divides the spacing: 2 gives twice as many voxels along an axis.
    align : {"edges", "centres"}
        What stays: the field of view, or the first and the last centre. (torch's
        ``align_corners=False`` and ``True``.)
    antialias : {"auto", "mean", None}
        "mean": each voxel of the result is the mean of as many samples as it is long; labels vote.
        "auto": so with every kernel but "nearest". None: one sample.
    interpolation : {"linear", "nearest", "cubic", "label"}
        The kernel; "label" for segmentations.
    border : {"edge", "constant"}
        What a kernel reads for voxels outside the image: the nearest one, or `fill`.
    fill : number
        For voxels outside; an integer image must be able to hold it.
    outside : {"extend", "fill"}
        What the border "edge" gives beyond the field of view, where rounding may put the last
        centre.
    overflow : {"saturate", "wrap"}
        What integers store for a reading that they cannot hold.
    dtype : dtype, optional
        Of the result: the image's, float32 or float64. None: that of `out`, or the image's.
    out : ndarray, optional
        Gets the result; any strides, but no overlap with the image.
    threads : int, optional
        How many work at most; None: as `threads` says. The bits are the same.
    progress : callable, optional
        Is called now and then with the fraction that is done; what it raises ends the call.

    Returns
    -------
    Image or ndarray
        As `image` is; an image lies where its voxels do.

    Raises
    ------
    TypeError
        If an argument is of another kind, or none of `shape`, `spacing` and `scale` is given.
    ValueError
        If a value is not allowed, or several of the three are given; nothing has been written.

    See Also
    --------
    Grid.of_spacing : Where the voxels of such a result lie.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> volux.resize(np.arange(4.0).reshape(1, 1, 4), scale=(1, 1, 0.5))
    array([[[0.5, 2.5]]])
    """
    source = Subject(image).refuse_brick("resize")
    target, affine_map = _target(source.grid, shape, spacing, scale, chosen("align", align, ALIGNS))
    kind = source.array.dtype
    how = reading(
        kind, interpolation, border, fill, outside, antialias, overflow, threads, progress
    )
    made = result(source, target, dtype, out)
    _core.fill(source.voxels, made.voxels, affine_map, how)
    return made.handed_on()


def _target(
    source: Grid, shape: object, spacing: Any, scale: Any, align: int
) -> tuple[Grid, Matrix]:
    given = one_of({"shape": shape, "spacing": spacing, "scale": scale})
    if given == "shape":
        return sized(source, shape, align)
    if given == "spacing":
        return spaced(source, steps("spacing", spacing), align)
    a, b, c = (now / by for now, by in zip(source.spacing, steps("scale", scale), strict=True))
    return spaced(source, (a, b, c), align)
