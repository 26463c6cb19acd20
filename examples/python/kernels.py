"""What the kernels make of the same voxels: a part of an oblique plane, magnified by each.

Usage: python kernels.py VOLUME PICTURE.png
"""

from __future__ import annotations

from math import floor
from typing import Literal

import numpy as np
import volux
from paper import ACCENT, Tile, greys, middle_of, needs, run, sheet, size_of, window
from PIL import Image, ImageDraw

PIXELS, VOXELS = 340, 17  # of a tile, and along a side of the part that is magnified
NORMAL, UP = (-0.49, -0.80, -0.34), (0.0, 0.0, 1.0)
KERNELS: dict[Literal["nearest", "linear", "cubic"], str] = {
    "nearest": "nearest: the voxel that a pixel lies in",
    "linear": "linear: the 8 voxels around it",
    "cubic": "cubic: the 64 voxels around it",
}


def kernels(image: volux.Image) -> Image.Image:
    """Return an oblique plane, and the part of it that differs most between the kernels."""
    low, high = window(image)
    edge = 1.1 * float(size_of(image).max()) / PIXELS
    plane = volux.Plane(middle_of(image), NORMAL, UP, (PIXELS, PIXELS), edge)
    part, frame = telling(image, plane)
    whole = greys(volux.reslice(image, plane, fill=floor(low)).array[0], low, high)
    ImageDraw.Draw(whole).rectangle(frame, outline=ACCENT, width=2)
    tiles = [Tile(whole, "an oblique plane, and the part that is magnified", plane)]
    for kernel, words in KERNELS.items():
        readings = volux.reslice(image, part, interpolation=kernel, dtype="float64").array[0]
        tiles.append(Tile(greys(readings, low, high), words, part))
    title = f"One oblique plane, three kernels, {PIXELS // VOXELS} pixels to a voxel"
    return sheet(title, tiles)


def telling(
    image: volux.Image, plane: volux.Plane
) -> tuple[volux.Plane, tuple[float, float, float, float]]:
    """Return the square of a plane in which linear and cubic differ most, and its frame there."""
    length = VOXELS * min(image.spacing)
    half = max(1, round(length / plane.spacing[1] / 2))
    needs(2 * half < PIXELS, f"be {VOXELS} voxels long or longer")
    linear, cubic = (
        volux.reslice(image, plane, interpolation=kernel, dtype="float64").array[0]
        for kernel in ("linear", "cubic")
    )
    sums = np.pad(abs(cubic - linear).cumsum(0).cumsum(1), ((1, 0), (1, 0)))
    whole = sums[2 * half :] - sums[: -2 * half]
    squares = whole[:, 2 * half :] - whole[:, : -2 * half]
    around = squares.shape[0] * 3 // 8  # the middle of the plane lies well inside the volume
    inner = squares[around:-around, around:-around]
    row, column = np.unravel_index(inner.argmax(), inner.shape)
    x, y = float(column) + around + half, float(row) + around + half
    centre = (plane.grid.affine @ [0, y - 0.5, x - 0.5, 1])[:3]
    part = volux.Plane(centre, NORMAL, UP, (PIXELS, PIXELS), length / PIXELS)
    return part, (x - half, y - half, x + half, y + half)


if __name__ == "__main__":
    run(__doc__, kernels)
