"""What is read outside a volume: a constant, or the edge that goes on.

Usage: python borders.py VOLUME PICTURE.png
"""

from __future__ import annotations

import numpy as np
import volux
from paper import ACCENT, Tile, greys, middle_of, run, sheet, size_of, window
from PIL import Image

ROWS, COLUMNS = 460, 560
NORMAL, UP = (-0.49, -0.80, -0.34), (0.0, 0.0, 1.0)


def borders(image: volux.Image) -> Image.Image:
    """Return an oblique plane that is larger than the volume, with both borders."""
    low, high = window(image)
    grey = round(low + 0.3 * (high - low))
    edge = 1.6 * float(size_of(image).max()) / COLUMNS
    centre = middle_of(image) - [0, 0, 0.12 * size_of(image)[2]]  # what goes on is below the head
    plane = volux.Plane(centre, NORMAL, UP, (ROWS, COLUMNS), edge)
    constant = volux.reslice(image, plane, border="constant", fill=grey)
    extended = volux.reslice(image, plane, border="edge", outside="extend")
    tiles = [
        Tile(framed(greys(cut.array[0], low, high), image, plane), caption, plane)
        for cut, caption in (
            (constant, f"border='constant', fill={grey}: all that is outside reads {grey}"),
            (extended, "border='edge', outside='extend': the outermost voxels go on"),
        )
    ]
    return sheet("The same plane beyond the volume, which ends at the line", tiles)


def framed(picture: Image.Image, image: volux.Image, plane: volux.Plane) -> Image.Image:
    """Return a picture with a line where its plane leaves the volume."""
    rows, columns = np.indices(plane.shape)
    pixels = np.stack([0 * rows, rows, columns, np.ones_like(rows)], axis=-1)
    voxels = (pixels @ (np.linalg.inv(image.affine) @ plane.grid.affine).T)[..., :3]
    inside = np.all((voxels >= -0.5) & (voxels < np.array(image.shape) - 0.5), axis=-1)
    line = np.zeros_like(inside)
    line[:-1] |= inside[:-1] != inside[1:]
    line[:, :-1] |= inside[:, :-1] != inside[:, 1:]
    colours = np.array(picture)
    colours[line] = ACCENT
    return Image.fromarray(colours)


if __name__ == "__main__":
    run(__doc__, borders)
