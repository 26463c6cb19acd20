"""What a call reads, and what it makes."""

from __future__ import annotations

from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from volux._arrays import array_of, checked_out, in_xyz, new_array, result_dtype
from volux._displacement import Displacement
from volux._grid import Grid
from volux._image import Image
from volux._types import Array, Axes, Matrix


class Subject(NamedTuple):
    """An image as a call reads it."""

    array: Array
    voxels: Array  # the same memory: x, y, z, channel
    grid: Grid  # which names the axes
    is_image: bool

    @property
    def axes(self) -> Axes:
        """What the axes of the array are called."""
        return self.grid.order

    @property
    def rows(self) -> Matrix:
        """Where its voxels lie: the columns for x, y, z and the origin."""
        return self.grid.rows

    @property
    def channels(self) -> int | None:
        """How many channels there are; None without an axis for them."""
        return None if self.array.ndim == 3 else int(self.array.shape[3])


def subject(image: object) -> Subject:
    """Return an image, or a plain array with its index space for a world."""
    if isinstance(image, Image):
        return Subject(image.array, in_xyz(image.array, image.axes), image.grid, True)
    array = array_of(image, "image")
    grid = Grid(array.shape[:3], np.eye(4), axes="zyx")
    return Subject(array, in_xyz(array, "zyx"), grid, False)


def whole_subject(image: object, function: str) -> Subject:
    """Return an image that is no box of a larger one."""
    given = subject(image)
    if given.grid.is_box:
        raise ValueError(
            f"image is a brick of a larger one; resample() alone takes those, and {function}() "
            "takes volux.Image(image.array, image.affine, axes=image.axes)"
        )
    return given


class Result(NamedTuple):
    """What a call writes."""

    array: Array
    voxels: Array  # the same memory: x, y, z, channel
    grid: Grid  # which names the axes
    is_image: bool

    @property
    def axes(self) -> Axes:
        """What the axes of the array are called."""
        return self.grid.order

    def handed_on(self) -> Image | Array:
        """Return it as the caller gave the image: with a place in the world, or as an array."""
        return Image._on(self.array, self.grid.alone()) if self.is_image else self.array


def result(
    source: Subject,
    grid: Grid,
    dtype: npt.DTypeLike | None,
    out: object,
    field: Displacement | None = None,
) -> Result:
    """Return the memory of a result on a grid that names its axes: the caller's, or new."""
    axes = grid.order
    wanted = result_dtype(dtype, source.array.dtype, out)
    if out is None:
        array = new_array(grid.extents, source.channels, wanted, axes)
    else:
        inputs = {"image": source.array}
        if field is not None:
            inputs["transform's vectors"] = field.vectors
        shape = (*grid.shape, *source.array.shape[3:])
        array = checked_out(out, shape, wanted, inputs)
    return Result(array, in_xyz(array, axes), grid, source.is_image)
