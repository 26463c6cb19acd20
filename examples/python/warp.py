"""A displacement field, and the grid that it bends.

The field leads from a place of the result to the place that is read for it, as registrations
compute them.

Usage: python warp.py VOLUME PICTURE.png
"""

from __future__ import annotations

import numpy as np
import numpy.typing as npt
import volux
from paper import ACCENT, Tile, greys, middle_of, run, sheet, size_of, window
from PIL import Image, ImageDraw

PIXELS, LINES, SMOOTH = 520, 17, 3  # along the longest side; lines across; pixels in a drawn one
NODES, STRENGTH = (17, 17, 5), 0.055  # of the field; what it moves by, in shares of the volume


def warp(image: volux.Image) -> Image.Image:
    """Return an axial plane read through a field, beside the same plane without it."""
    low, high = window(image)
    size = size_of(image)
    edge = float(size.max()) / PIXELS
    columns, rows = (round(length / edge) for length in size[:2])
    plane = volux.Plane(middle_of(image), (0, 0, 1), (0, 1, 0), (rows, columns), edge)
    field = swirls(image)
    source = volux.reslice(image, plane, outside="extend").array[0]
    result = volux.resample(image, plane.grid, transform=field, outside="extend").array[0]
    straight = grid_of(plane)
    tiles = [
        Tile(
            drawn(greys(source, low, high), plane, [field(line) for line in straight]),
            "the volume, and where the result reads it",
            plane,
        ),
        Tile(
            drawn(greys(result, low, high), plane, straight),
            "the result, and its own grid",
            plane,
        ),
    ]
    return sheet("A plane read through a displacement field", tiles)


def swirls(image: volux.Image) -> volux.Displacement:
    """Return vectors that turn about four places and die out towards the faces."""
    size = size_of(image)
    x, y, z = np.meshgrid(*(np.linspace(0, np.pi, n) for n in NODES), indexing="ij")
    length = STRENGTH * size.max() * np.sin(x) * np.sin(y) * np.sin(z)
    vectors = np.stack([length * np.sin(2 * y), length * np.sin(2 * x), 0 * length], axis=-1)
    place = np.diag([*(size / (np.array(NODES) - 1)), 1.0])
    place[:3, 3] = middle_of(image) - size / 2
    return volux.Displacement(vectors, volux.Grid(NODES, place, axes="xyz"))


def grid_of(plane: volux.Plane) -> list[npt.NDArray[np.float64]]:
    """Return lines at equal distances across a plane and down, each as places of the world."""
    rows, columns = plane.shape
    step = max(rows, columns) / LINES
    across, down = np.arange(-0.5, columns), np.arange(-0.5, rows)
    lines = [(np.full_like(across, row), across) for row in np.arange(step / 2, rows, step)]
    lines += [(down, np.full_like(down, column)) for column in np.arange(step / 2, columns, step)]
    place = plane.grid.affine[:3]
    return [np.stack(line, axis=-1) @ place[:, 1:3].T + place[:, 3] for line in lines]


def drawn(
    picture: Image.Image, plane: volux.Plane, lines: list[npt.NDArray[np.float64]]
) -> Image.Image:
    """Return a picture of a plane with lines over it."""
    inverse = np.linalg.inv(plane.grid.affine)
    strokes = Image.new("L", (SMOOTH * picture.width, SMOOTH * picture.height))
    pen = ImageDraw.Draw(strokes)
    for line in lines:
        pixels = line @ inverse[1:3, :3].T + inverse[1:3, 3] + 0.5
        pen.line([(x * SMOOTH, y * SMOOTH) for y, x in pixels], fill=170, width=SMOOTH)
    strokes = strokes.resize(picture.size, Image.Resampling.BOX)
    return Image.composite(Image.new("RGB", picture.size, ACCENT), picture, strokes)


if __name__ == "__main__":
    run(__doc__, warp)
