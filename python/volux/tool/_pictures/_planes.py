"""Three planes through a volume on one sheet."""

from __future__ import annotations

import numpy as np
from PIL import Image as Pillow

from volux import Image, Plane, reslice
from volux._types import Array, FillingOptions, Floats, Interpolation
from volux.tool._pictures._cuts import VIEWS, view_plane
from volux.tool._pictures._grey import Window
from volux.tool._pictures._labels import coloured
from volux.tool._pictures._marks import letters_of, towards
from volux.tool._pictures._sheet import Tile, sheet


def planes(
    image: Image,
    window: Window,
    *,
    at: Floats | None = None,
    size: int = 400,
    labels: Image | None = None,
    interpolation: Interpolation = "linear",
) -> Pillow.Image:
    """Return an axial, a coronal and a sagittal plane of a volume, beside one another.

    Parameters
    ----------
    image : Image
        The volume, of one channel.
    window : Window
        Which readings are black and white.
    at : three floats, optional
        A place in the world that the planes pass next to; None: the middle of the volume.
    size : int
        Pixels along the longest side of the volume.
    labels : Image, optional
        Whose labels lie in colour over the greys; in the same world, on any grid.
    interpolation : {"linear", "nearest", "cubic"}
        The kernel of the greys.

    Returns
    -------
    PIL.Image.Image
        Red, green and blue.
    """
    edge = max(n * step for n, step in zip(image.shape, image.spacing, strict=True)) / size
    middle = image.affine @ [*((n - 1) / 2 for n in image.shape), 1.0]
    x, y, z = middle[:3].tolist() if at is None else at
    cuts = [(name, view_plane(image, name, (x, y, z), edge)) for name in VIEWS]
    return sheet([[_tile(image, window, labels, interpolation, *cut) for cut in cuts]], edge)


def _tile(
    image: Image,
    window: Window,
    labels: Image | None,
    interpolation: Interpolation,
    name: str,
    plane: Plane,
) -> Tile:
    # The planes end where the volume does, but for a part of a pixel.
    how: FillingOptions = {
        "interpolation": interpolation,
        "antialias": "auto",
        "outside": "extend",
        "dtype": "float64",
    }
    seen = reslice(image, plane, **how)
    greys = window.greys(seen.array[0])
    named = np.zeros((1, 1)) if labels is None else _named(labels, plane)
    return Tile(coloured(greys, named), f"{name}, {_position(plane)}", letters_of(plane))


def _named(labels: Image, plane: Plane) -> Array:
    named: Array = reslice(labels, plane, interpolation="label").array[0]
    return named


def _position(plane: Plane) -> str:
    """Return how far the middle of a plane is along its normal, such as 'S 12 mm'."""
    rows, columns = plane.shape
    affine = plane.grid.affine
    through = affine[:3, 0] / plane.spacing[0]
    along = float((affine @ [0, (rows - 1) / 2, (columns - 1) / 2, 1.0])[:3] @ through)
    return f"{towards(through if along >= 0 else -through)} {abs(along):.1f} mm"
