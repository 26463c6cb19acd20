"""Images of nibabel, whose axes are x, y and z, and whose world is ours."""

from __future__ import annotations

from importlib import import_module
from typing import Any

import numpy as np

from volux import _core
from volux._axes import PLACES, affine_of, rows_of
from volux._types import Array, Axes, Matrix
from volux._words import short


def read(image: Any) -> tuple[Array, Matrix]:
    """Return the voxels of an image where they are, and its affine."""
    if not hasattr(image, "dataobj") or getattr(image, "affine", None) is None:
        raise TypeError(f"image is a {type(image).__name__}; it must be an image of nibabel")
    array = np.asanyarray(image.dataobj)
    if array.ndim == 5 and array.shape[3] == 1:
        array = array[..., 0, :]  # vectors: NIfTI keeps its fourth axis for time
    return array, image.affine


def made(array: Array, affine: Matrix, axes: Axes) -> Any:
    """Return an image of nibabel that shares the memory of the array."""
    nibabel: Any = import_module("nibabel")
    voxels = array.view(np.uint8) if array.dtype.kind == "b" else array
    order = PLACES[axes] if array.ndim == 3 else (*PLACES[axes], 3)
    place = affine_of(rows_of(affine, axes), "xyz")
    _refuse_beyond_float32(place)
    return nibabel.Nifti1Image(voxels.transpose(order), place)


def _refuse_beyond_float32(affine: Matrix) -> None:
    limits = np.finfo(np.float32)
    tiny, most = float(limits.tiny), float(limits.max)
    least = min(_core.spacing_of(np.ascontiguousarray(affine[:3])))
    if least < tiny or np.abs(affine).max() > most:
        raise ValueError(
            f"affine={short(affine.tolist())} has numbers beyond float32, as NIfTI keeps it"
        )
