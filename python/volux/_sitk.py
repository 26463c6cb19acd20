"""Images of SimpleITK, whose world is LPS: x and y point the other way than in RAS."""

from __future__ import annotations

from importlib import import_module
from typing import Any

import numpy as np

from volux import _core
from volux._axes import PLACES, affine_of, rows_of
from volux._types import Array, Axes, Matrix
from volux._words import short


class _Held:
    """Memory of an image, which lives as long as an array refers to it."""

    def __init__(self, owner: Any, view: Array) -> None:
        self.owner = owner
        self.__array_interface__ = {**view.__array_interface__, "version": 3}


def read(image: Any) -> tuple[Array, Matrix]:
    """Return the voxels of an image where they are, z first, and its affine in RAS."""
    sitk: Any = import_module("SimpleITK")
    if not isinstance(image, sitk.Image):
        raise TypeError(f"image is a {type(image).__name__}; it must be an image of SimpleITK")
    if image.GetDimension() != 3:
        raise ValueError(
            f"image has {image.GetDimension()} dimensions; it must have 3: "
            "SimpleITK.JoinSeries(image) makes a volume of a picture"
        )
    view = sitk.GetArrayViewFromImage(image)
    return np.asarray(_Held(image, view)), turned(affine_of(_rows(image), "zyx"))


def _rows(image: Any) -> Matrix:
    rows = np.empty((3, 4))
    rows[:, :3] = np.reshape(image.GetDirection(), (3, 3)) * image.GetSpacing()
    rows[:, 3] = image.GetOrigin()
    return rows


def turned(affine: Matrix) -> Matrix:
    """Return a 4 x 4 affine of RAS in LPS, or one of LPS in RAS: exactly, so twice is nothing."""
    return affine * [[-1.0], [-1.0], [1.0], [1.0]] + 0.0  # no -0.0


def made(array: Array, affine: Matrix, axes: Axes) -> Any:
    """Return an image of SimpleITK with a copy of the voxels."""
    sitk: Any = import_module("SimpleITK")
    z_first = PLACES[axes][::-1]
    voxels = array.view(np.uint8) if array.dtype.kind == "b" else array
    order = z_first if array.ndim == 3 else (*z_first, 3)
    image = sitk.GetImageFromArray(voxels.transpose(order), isVector=array.ndim == 4)
    rows = rows_of(turned(affine), axes)
    spacing = _core.spacing_of(rows)
    try:
        image.SetSpacing(spacing)
        image.SetDirection((rows[:, :3] / spacing).ravel().tolist())
    except RuntimeError:  # ITK inverts their product
        raise ValueError(f"affine={short(affine.tolist())} is singular for SimpleITK") from None
    image.SetOrigin(rows[:, 3].tolist())
    return image
