"""Planes through a volume on one sheet."""

from __future__ import annotations

from collections.abc import Mapping
from math import ceil
from typing import Any, NamedTuple

import numpy as np
from PIL import Image as Pillow

from volux import Image, Plane, reslice
from volux._types import Array, Floats, Interpolation, Projection
from volux.tool._pictures._cuts import VIEWS, anatomical, fitted, view_plane
from volux.tool._pictures._grey import Window, spread_of
from volux.tool._pictures._labels import coloured, counted
from volux.tool._pictures._marks import Letters, letters_of, towards
from volux.tool._pictures._sheet import Tile, sheet

# How much wider than high a sheet of many pictures is, as screens are.
_WIDER = 1.6

# A grey that noise of the background stays below, and how much of the fullest slice a slice must
# show so that it is not empty: more than a table under the patient.
_DARK = 26
_LITTLE = 0.03


class Look(NamedTuple):
    """How readings are shown.

    Parameters
    ----------
    window : Window, optional
        Which readings are black and white; None: those of a slab say so themselves.
    labels : Image, optional
        Whose labels lie in colour over the greys; in the same world, on any grid.
    interpolation : {"linear", "nearest", "cubic", "label"}
        The kernel; "label" draws the volume's own labels in colour on black.
    names : mapping of int to str
        What labels are called.
    """

    window: Window | None
    labels: Image | None = None
    interpolation: Interpolation = "linear"
    names: Mapping[int, str] = {}

    def read(self, image: Image, plane: Plane, **how: Any) -> Array:
        """Return the readings of a plane, with what `reslice` takes besides."""
        how = {"interpolation": self.interpolation, "antialias": "auto", "dtype": "float64"} | how
        readings: Array = reslice(image, plane, **how).array[0]
        return readings

    def tile(self, readings: Array, plane: Plane, name: str) -> Tile:
        """Return the picture of a plane."""
        caption, letters = f"{name}{_position(plane)}", letters_of(plane)
        if self.interpolation == "label":
            black = np.zeros(readings.shape, np.uint8)
            pixels = coloured(black, readings, opacity=1.0)
            return Tile(pixels, caption, letters, counted(readings))
        greys = (self.window or spread_of(readings)).greys(readings)
        if self.labels is None:
            return Tile(np.repeat(greys[..., None], 3, axis=2), caption, letters)
        found = reslice(self.labels, plane, interpolation="label").array[0]
        return Tile(coloured(greys, found), caption, letters, counted(found))

    def whole(self, image: Image, plane: Plane, name: str) -> Tile:
        """Return the picture of a plane that ends where the volume does, to the pixel."""
        return self.tile(self.read(image, plane, outside="extend"), plane, name)

    def shows(self, readings: Array) -> int:
        """Return how many readings differ clearly from the background."""
        if self.window is None or self.interpolation == "label":
            return int(np.count_nonzero(readings))
        return int(np.count_nonzero(self.window.greys(readings) >= _DARK))


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
    return sheet([[look.whole(image, *cut) for cut in cuts]], edge, look.names)


def montage(image: Image, look: Look, count: int, size: int = 200) -> Pillow.Image:
    """Return axial planes of a volume at equal distances, from the feet up, in full rows.

    What is below the first slice and above the last one that shows something is left out.
    """
    edge, (first, end) = _edge(image, size), _filled(image, look)
    heights = first + (np.arange(count) + 0.5) / count * (end - first) - 0.5
    cuts = [view_plane(image, "axial", _at_height(image, height), edge) for height in heights]
    tiles = [look.whole(image, cut, "") for cut in cuts]
    columns = _columns(count, *tiles[0].pixels.shape[:2])
    rows = [tiles[begin : begin + columns] for begin in range(0, count, columns)]
    return sheet(_with_letters_at_the_rim(rows), edge, look.names)


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

    What lies outside the volume does not count, and where nothing else is the picture is black.
    """
    centre, normal, up = place
    edge = _edge(image, size)
    plane = fitted(image.grid, centre, np.array(normal), np.array(up), edge, thickness)
    how: dict[str, Any] = {}
    if thickness:
        # Half a voxel at a time: longer steps leave rings in maxima, where they pass by voxels.
        how = {"slab": ceil(2 * thickness / min(image.spacing)), "projection": projection}
    readings = _inside(image, look, plane, how)
    name = f"{projection} of {thickness:g} mm, " if thickness else "oblique, "
    return sheet([[look.tile(readings, plane, name)]], edge, look.names)


def _inside(image: Image, look: Look, plane: Plane, how: dict[str, Any]) -> Array:
    """Return the readings of what is inside the volume, and NaN where nothing is."""
    if look.interpolation == "label":
        return look.read(image, plane, **how)
    mean, paper = {**how, "projection": "mean"}, _paper(image, how.get("projection"))
    shares = look.read(_ones(image), plane, **mean)
    readings = look.read(image, plane, fill=paper, **how)
    if how.get("projection", "mean") == "mean":
        readings -= (1.0 - shares) * paper
        np.divide(readings, shares, out=readings, where=shares > 0)
    readings[shares == 0] = np.nan
    return readings


def _edge(image: Image, size: int) -> float:
    """Return the mm of a pixel."""
    return max(n * step for n, step in zip(image.shape, image.spacing, strict=True)) / size


def _axial_axis(image: Image) -> int:
    return anatomical(image)[1][VIEWS["axial"][2]]


def _filled(image: Image, look: Look) -> tuple[int, int]:
    """Return the first axial slice, from the feet, that shows something, and the one after all."""
    axis = _axial_axis(image)
    slices = np.moveaxis(image.array, axis, 0)
    shown = np.array([look.shows(voxels) for voxels in slices])
    if image.affine[2, axis] < 0:
        shown = shown[::-1]
    found = np.flatnonzero(shown > _LITTLE * shown.max())
    return (int(found[0]), int(found[-1]) + 1) if found.size else (0, len(shown))


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


def _paper(image: Image, projection: str | None) -> float:
    """Return a number of the volume's type that does not count in a projection."""
    extreme, of_some = (max, np.max) if projection == "minimum" else (min, np.min)
    finite = (plane[np.isfinite(plane)] for plane in image.array)
    number: float = extreme((of_some(some).item() for some in finite if some.size), default=0.0)
    return number


def _ones(image: Image) -> Image:
    return Image(np.broadcast_to(np.uint8(1), image.shape), image.affine, axes=image.axes)


def _position(plane: Plane) -> str:
    """Return how far the middle of a plane is along its normal, such as 'S 12 mm'."""
    rows, columns = plane.shape
    affine = plane.grid.affine
    through = affine[:3, 0] / plane.spacing[0]
    along = float((affine @ [0, (rows - 1) / 2, (columns - 1) / 2, 1.0])[:3] @ through)
    return f"{towards(through if along >= 0 else -through)} {abs(along):.1f} mm"
