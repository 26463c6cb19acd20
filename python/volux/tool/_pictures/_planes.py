"""Planes through a volume on one sheet."""

from __future__ import annotations

from math import ceil
from typing import Any, NamedTuple

import numpy as np
from PIL import Image as Pillow

from volux import Image, Plane, reslice
from volux._types import Array, Floats, Interpolation, Projection
from volux.tool._pictures._cuts import VIEWS, anatomical, fitted, view_plane
from volux.tool._pictures._grey import Window
from volux.tool._pictures._labels import coloured
from volux.tool._pictures._marks import Letters, letters_of, towards
from volux.tool._pictures._sheet import Tile, sheet

# How much wider than high a sheet of many pictures is, as screens are.
_WIDER = 1.6


class Look(NamedTuple):
    """How readings are shown.

    Parameters
    ----------
    window : Window
        Which readings are black and white.
    labels : Image, optional
        Whose labels lie in colour over the greys; in the same world, on any grid.
    interpolation : {"linear", "nearest", "cubic"}
        The kernel of the greys.
    """

    window: Window
    labels: Image | None = None
    interpolation: Interpolation = "linear"

    def read(self, image: Image, plane: Plane, **how: Any) -> Array:
        """Return the readings of a plane, with what `reslice` takes besides."""
        how = {"interpolation": self.interpolation, "antialias": "auto", "dtype": "float64"} | how
        readings: Array = reslice(image, plane, **how).array[0]
        return readings

    def tile(self, readings: Array, plane: Plane, name: str) -> Tile:
        """Return the picture of a plane."""
        named = np.zeros((1, 1)) if self.labels is None else _named(self.labels, plane)
        pixels = coloured(self.window.greys(readings), named)
        return Tile(pixels, f"{name}{_position(plane)}", letters_of(plane))

    def whole(self, image: Image, plane: Plane, name: str) -> Tile:
        """Return the picture of a plane that ends where the volume does, to the pixel."""
        return self.tile(self.read(image, plane, outside="extend"), plane, name)


def three(image: Image, look: Look, at: Floats, size: int = 400) -> Pillow.Image:
    """Return an axial, a coronal and a sagittal plane of a volume, beside one another.

    Parameters
    ----------
    image : Image
        The volume, of one channel.
    look : Look
        How it is shown.
    at : three floats
        A place in the world that the planes pass next to.
    size : int
        Pixels along the longest side of the volume.

    Returns
    -------
    PIL.Image.Image
        Red, green and blue.
    """
    edge = _edge(image, size)
    cuts = [(view_plane(image, name, at, edge), f"{name}, ") for name in VIEWS]
    return sheet([[look.whole(image, *cut) for cut in cuts]], edge)


def montage(image: Image, look: Look, count: int, size: int = 200) -> Pillow.Image:
    """Return axial planes of a volume at equal distances, from the feet up, in full rows."""
    edge, extent = _edge(image, size), image.shape[_axial_axis(image)]
    heights = (np.arange(count) + 0.5) / count * extent - 0.5
    cuts = [view_plane(image, "axial", _at_height(image, height), edge) for height in heights]
    tiles = [look.whole(image, cut, "") for cut in cuts]
    columns = _columns(count, *tiles[0].pixels.shape[:2])
    rows = [tiles[begin : begin + columns] for begin in range(0, count, columns)]
    return sheet(_with_letters_at_the_rim(rows), edge)


def oblique(
    image: Image,
    look: Look,
    place: tuple[Floats, Floats, Floats],
    *,
    thickness: float = 0.0,
    projection: Projection = "mean",
    size: int = 400,
) -> Pillow.Image:
    """Return a plane by its centre, its normal and what is up; or all of a slab, as one picture.

    What lies outside the volume does not count, and where nothing else is the picture is black;
    white, if the least reading of a slab is shown.
    """
    centre, normal, up = place
    edge = _edge(image, size)
    plane = fitted(image.grid, centre, np.array(normal), np.array(up), edge, thickness)
    paper = _paper(image, look.window, projection)
    if not thickness:
        readings = look.read(image, plane, fill=paper)
        return sheet([[look.tile(readings, plane, "oblique, ")]], edge)
    how = {"slab": ceil(thickness / min(image.spacing)), "projection": projection}
    readings = look.read(image, plane, fill=paper, **how)
    if projection == "mean":
        readings = _without(paper, readings, look.read(_ones(image), plane, **how))
    return sheet([[look.tile(readings, plane, f"{projection} of {thickness:g} mm, ")]], edge)


def _edge(image: Image, size: int) -> float:
    """Return the mm of a pixel."""
    return max(n * step for n, step in zip(image.shape, image.spacing, strict=True)) / size


def _axial_axis(image: Image) -> int:
    return anatomical(image)[1][VIEWS["axial"][2]]


def _at_height(image: Image, height: float) -> Floats:
    """Return the middle of a plane of voxels, counted from the feet."""
    axis = _axial_axis(image)
    index = [*((extent - 1) / 2 for extent in image.shape), 1.0]
    goes_up = image.affine[2, axis] >= 0
    index[axis] = height if goes_up else image.shape[axis] - 1 - height
    x, y, z = (image.affine @ index)[:3].tolist()
    return x, y, z


def _columns(count: int, rows: int, columns: int) -> int:
    """Return into how many columns a number of pictures goes, with no place left empty."""
    wanted = (_WIDER * count * rows / columns) ** 0.5
    divisors = [n for n in range(1, count + 1) if count % n == 0]
    return min(divisors, key=lambda n: abs(np.log(n / wanted)))


def _with_letters_at_the_rim(rows: list[list[Tile]]) -> list[list[Tile]]:
    last = len(rows) - 1, len(rows[0]) - 1
    return [
        [
            tile._replace(letters=_at_the_rim(tile.letters, (row, column), last))
            for column, tile in enumerate(tiles)
        ]
        for row, tiles in enumerate(rows)
    ]


def _at_the_rim(letters: Letters, place: tuple[int, int], last: tuple[int, int]) -> Letters:
    (row, column), (last_row, last_column) = place, last
    return Letters(
        left=letters.left if column == 0 else "",
        right=letters.right if column == last_column else "",
        top=letters.top if row == 0 else "",
        bottom=letters.bottom if row == last_row else "",
    )


def _paper(image: Image, window: Window, projection: str) -> float:
    """Return a number of the volume's type that does not count in a projection."""
    sign = 1 if projection == "minimum" else -1
    end = window.level + sign * window.width / 2
    if image.array.dtype.kind not in "iu":
        return end
    limits = np.iinfo(image.array.dtype)
    return int(np.clip(np.floor(end) if sign < 0 else np.ceil(end), limits.min, limits.max))


def _ones(image: Image) -> Image:
    return Image(np.broadcast_to(np.uint8(1), image.shape), image.affine, axes=image.axes)


def _without(paper: float, means: Array, shares: Array) -> Array:
    """Return the means of what is inside the volume, where shares of the slab are."""
    inside: Array = np.where(shares > 0, means - (1 - shares) * paper, paper)
    return np.divide(inside, shares, out=inside, where=shares > 0)


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
