"""Planes from options: by a centre and a normal, or through three points."""

from __future__ import annotations

from collections.abc import Callable
from itertools import product

import numpy as np

from volux import Grid, Image, Plane
from volux._types import Floats, Matrix
from volux.tool._errors import Misuse
from volux.tool._idle import refuse_plane
from volux.tool._options import PlaneOptions, counts, place

_HEAD, _FRONT = (0.0, 0.0, 1.0), (0.0, 1.0, 0.0)

# What is that little over a whole number of pixels is rounding.
_ROUNDING = 1e-3

# As many pixels along a row as anybody looks at.
_MOST = 8192


def grid(where: PlaneOptions, image: Image) -> Grid:
    """Return the plane, or the stack of planes, that options describe."""
    refuse_plane(where)
    try:
        return _plane(where, image).stack(where.count)
    except ValueError as error:
        raise Misuse(f"the plane: {error}") from None


def _plane(where: PlaneOptions, image: Image) -> Plane:
    spacing = _spacing(where, image)
    if where.through:
        if len(where.through) != 3 or where.centre or where.normal:
            raise Misuse("give --through three times, or --centre and --normal")
        p, q, r = (place(text, "--through") for text in where.through)
        return _sized(where, image, lambda shape: Plane.through(p, q, r, shape, spacing))
    if where.normal is None:
        raise Misuse("give --normal, or --through three times: they say where the plane lies")
    normal = place(where.normal, "--normal")
    centre = middle_of(image) if where.centre is None else place(where.centre, "--centre")
    up = upwards(normal) if where.up is None else place(where.up, "--up")
    return _sized(where, image, lambda shape: Plane(centre, normal, up, shape, spacing))


def _spacing(where: PlaneOptions, image: Image) -> Floats:
    """Return what is between planes, rows and columns."""
    finest = min(image.spacing)
    across = finest if where.spacing is None else where.spacing
    return (across if where.thickness is None else where.thickness, across, across)


def _sized(where: PlaneOptions, image: Image, plane: Callable[[tuple[int, int]], Plane]) -> Plane:
    """Return a plane of the extents that were asked for, or of those that the volume needs."""
    if where.shape is not None:
        columns, rows = _across(where.shape)
        return plane((rows, columns))
    place = plane((1, 1)).grid.affine
    across = np.linalg.solve(place, _corners(image).T)[[2, 1]]
    # It begins with the middle of a pixel, or has as much on both sides of its own middle.
    reach = across.max(axis=1) + 0.5 if where.through else 2 * abs(across).max(axis=1)
    columns, rows = np.ceil(reach - _ROUNDING).clip(1, _MOST).astype(int).tolist()
    return plane((rows, columns))


def _across(shape: str) -> tuple[int, int]:
    """Return columns and rows; a single number counts for both."""
    if shape.count(",") > 1:
        raise Misuse(f"--shape {shape}: must be columns and rows, such as 256,200")
    columns, rows, _ = counts(f"{shape},1" if "," in shape else shape, "--shape")
    return columns, rows


def _corners(image: Image) -> Matrix:
    ends = [(-0.5, extent - 0.5) for extent in image.shape]
    corners: Matrix = np.array([[*corner, 1.0] for corner in product(*ends)]) @ image.affine.T
    return corners


def middle_of(image: Image) -> Floats:
    """Return the middle of a volume in the world."""
    x, y, z = _corners(image).mean(axis=0)[:3].tolist()
    return x, y, z


def depth_of(image: Image, centre: Floats, normal: Floats) -> float:
    """Return how thick a slab about a place must be to have all of a volume."""
    away = (_corners(image)[:, :3] - centre) @ normal
    return 2.0 * float(abs(away).max()) / (float(np.linalg.norm(normal)) or 1.0)


def upwards(normal: Floats) -> Floats:
    """Return what is up unless somebody says it: the head, or the front seen from there."""
    steep = abs(normal[2]) > 0.9 * float(np.linalg.norm(normal))
    return _FRONT if steep else _HEAD


def in_index_order(planes: Grid) -> Grid:
    """Return a grid with the axes x, y, z: columns, rows and planes."""
    return Grid(planes.shape[::-1], planes.affine[:, [2, 1, 0, 3]], axes="xyz")


def turned(image: Image) -> Image:
    """Return planes with the axes x, y, z."""
    axes = (2, 1, 0, 3)[: image.array.ndim]
    return Image(image.array.transpose(axes), image.affine[:, [2, 1, 0, 3]], axes="xyz")
