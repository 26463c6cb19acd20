"""Which voxels of an image a box of a grid reads."""

from __future__ import annotations

import numpy as np

from volux import _core
from volux._axes import from_xyz
from volux._displacement import Transform
from volux._grid import Grid, placed
from volux._image import Image
from volux._reading import reading
from volux._route import route
from volux._types import Antialias, Array, Border, Box, DLPackProducer, Interpolation, Outside
from volux._words import in_our_words


@in_our_words
def support(
    grid: Grid,
    box: slice | tuple[slice, ...],
    *,
    image: Image | Grid | Array | DLPackProducer,
    transform: Transform | None = None,
    interpolation: Interpolation = "linear",
    border: Border = "edge",
    outside: Outside = "fill",
    antialias: Antialias | None = None,
) -> Box:
    """Return which box of an image is read for a box of a grid.

    With it, volumes that no memory holds are made box by box: `resample` gives the same bits for
    ``Image.brick(voxels, whole[box])``, where `whole` is the grid of the image and `voxels` those
    of the box that is read, as for the whole image.

    Parameters
    ----------
    grid : Grid
        Of the result.
    box : slices along the axes of the grid
        Which part of the result is made, such as ``numpy.s_[0:64, :, :]``.
    image : Grid, Image, ndarray or DLPack producer
        Where the voxels of the whole image lie; their values are not looked at.
    transform, interpolation, border, outside, antialias
        As of `resample`, with what it is called.

    Returns
    -------
    tuple of three slices
        Along the axes of the image. Under a displacement field a box that contains what is read,
        however the field folds.

    Raises
    ------
    TypeError, ValueError
        As of `resample`; also if the box is empty.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> whole = volux.Grid((100, 64, 64), np.eye(4), axes="zyx")
    >>> fine = volux.Grid((200, 64, 64), np.diag([0.5, 1, 1, 1]), axes="zyx")
    >>> volux.support(fine, np.s_[100:120], image=whole)
    (slice(50, 61, None), slice(0, 64, None), slice(0, 64, None))
    """
    if not isinstance(grid, Grid):
        raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid")
    source = placed(image)
    source = source._named(source._order)
    part = grid._named(source._order)[box]
    way = route(source, part, transform)
    how = reading(np.dtype(np.float64), interpolation, border, 0, outside, antialias)
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
