"""What a call reads, and what it makes."""

from __future__ import annotations

from typing import NamedTuple

import numpy.typing as npt

from volux._arrays import array_of, checked_out, in_xyz, new_array, result_dtype
from volux._displacement import Displacement
from volux._grid import Grid, unplaced
from volux._image import Image
from volux._types import Array, Axes


class Subject:
    """An image as a call reads it: an Image, or a plain array whose world is its index space."""

    __slots__ = ("array", "axes", "image", "voxels")
    array: Array
    axes: Axes
    image: Image | None
    voxels: Array  # the memory of the array: x, y, z, channel

    def __init__(self, image: object, name: str = "image") -> None:
        if isinstance(image, Image):
            self.image = image
            self.array, self.axes, self.voxels = image.array, image.axes, image._voxels
        else:
            self.image = None
            self.array, self.axes = array_of(image, name), "zyx"
            self.voxels = in_xyz(self.array, "zyx")

    @property
    def grid(self) -> Grid:
        """Where the voxels lie."""
        if self.image is not None:
            return self.image.grid
        return unplaced(self.array, "zyx")

    @property
    def channels(self) -> int | None:
        """How many channels there are; None without an axis for them."""
        return None if self.array.ndim == 3 else int(self.array.shape[3])

    def refuse_brick(self, function: str) -> Subject:
        """Return the subject, unless it is a box of a larger image."""
        if self.image is None or not self.image.grid.is_box:
            return self
        raise ValueError(
            f"image is a brick of a larger one; resample() alone takes those, and {function}() "
            "takes volux.Image(image.array, image.affine, axes=image.axes)"
        )


class Result(NamedTuple):
    """What a call writes."""

    array: Array
    voxels: Array  # the same memory: x, y, z, channel
    grid: Grid  # which names the axes
    is_image: bool

    def handed_on(self) -> Image | Array:
        """Return it as the caller gave the image: with a place in the world, or as an array."""
        return Image._on(self.array, self.grid._alone()) if self.is_image else self.array


def result(
    source: Subject,
    grid: Grid,
    dtype: npt.DTypeLike | None,
    out: object,
    field: Displacement | None = None,
) -> Result:
    """Return the memory of a result on a grid that names its axes: the caller's, or new."""
    axes = grid._order
    wanted = result_dtype(dtype, source.array.dtype, out)
    if out is None:
        array = new_array(grid._extents, source.channels, wanted, axes)
    else:
        inputs = {"image": source.array}
        if field is not None:
            inputs["transform's vectors"] = field.vectors
        shape = (*grid.shape, *source.array.shape[3:])
        array = checked_out(out, shape, wanted, inputs)
    return Result(array, in_xyz(array, axes), grid, source.image is not None)
