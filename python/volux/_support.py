"""Which voxels of an image a box of a grid reads."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, TypedDict

import numpy as np

from volux import _core
from volux._axes import from_xyz
from volux._displacement import Transform
from volux._grid import Grid, placed
from volux._image import Image
from volux._keywords import takes
from volux._reading import reading
from volux._route import route
from volux._types import Antialias, Array, Border, Box, DLPackProducer, Interpolation, Outside

if TYPE_CHECKING:
    from typing_extensions import Unpack


class SupportOptions(TypedDict, total=False):
    """How the call of resample() reads."""

    interpolation: Interpolation
    border: Border
    outside: Outside
    antialias: Antialias | None


@takes(interpolation="linear", border="edge", outside="fill", antialias=None)
def support(
    grid: Grid,
    box: slice | tuple[slice, ...],
    *,
    image: Image | Grid | Array | DLPackProducer,
    transform: Transform | None = None,
    **options: Unpack[SupportOptions],
) -> Box:
    """Return which box of an image is read for a box of a grid.

    With it, volumes that no memory holds are made box by box: see `Image.brick`.

    Parameters
    ----------
    grid : Grid
        The grid of the result.
    box : slices along the axes of the grid
        Which part of the result is made, such as ``numpy.s_[0:64, :, :]``.
    image : Grid, Image, ndarray or DLPack producer
        Where the voxels of the whole image lie; their values are not looked at.
    transform, interpolation, border, outside, antialias
        As of `resample`, with what it is called.

    Returns
    -------
    tuple of three slices
        Along the axes of the image; not empty. Under a displacement field a box that contains what
        is read, however the field folds.
    $raises

    Examples
    --------
    >>> import numpy, volux
    >>> fine = volux.Grid((200, 1, 1), numpy.diag([0.5, 1, 1, 1]))
    >>> volux.support(fine, numpy.s_[100:120], image=numpy.zeros((100, 1, 1)))
    (slice(50, 61, None), slice(0, 1, None), slice(0, 1, None))
    """
    if not isinstance(grid, Grid):
        raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid")
    return _box_read(placed(image), grid, box, transform, options)


def _box_read(image: Grid, grid: Grid, box: Any, transform: Any, options: Any) -> Box:
    source = image._named(image._order)
    part = grid._named(source._order)[box]
    way = route(source, part, transform)
    how = reading(np.dtype(np.float64), fill=0, **options)
    extents, (whole, start) = source.whole[0]._extents, part.whole
    first, count = _core.support(
        extents,
        whole._extents,
        way.affine,
        part._in_xyz(start),
        part._extents,
        how,
        warp=way.warp(),
    )
    ends = [slice(i, i + n) for i, n in zip(first, count, strict=True)]
    return from_xyz(ends, source._order)
