"""The surface of what is dense, seen along parallel rays; rays.py and turning.py draw it.

A ray goes through the middle of each pixel. A stack of planes that face the observer says between
which two of them it first crosses the threshold, halving finds the place, and the gradient there is
at right angles to the surface.
"""

from __future__ import annotations

from itertools import product
from math import cos, radians, sin
from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt
import volux
from paper import PAPER, cropped, middle_of, needs, size_of
from PIL import Image

AIR = -1024
BONE, COMPACT = 350.0, 650.0  # Hounsfield units
FLATTEST = 8  # how much wider than high a skull may be
READING: dict[str, Any] = {"interpolation": "cubic", "border": "constant", "fill": AIR}
IVORY = np.array([1.0, 0.96, 0.88])
AMBIENT, DIFFUSE, GLOSS = 0.16, 0.80, 0.15


class View(NamedTuple):
    """What somebody sees: the nearest plane, and how far the rays go from there."""

    plane: volux.Plane
    depth: float


def bones_of(image: volux.Image) -> volux.Image:
    """Return the part of a CT around its compact bone, without what lies farther away."""
    part = cropped(image, COMPACT, margin=4)
    size = size_of(part)
    needs(size.max() <= FLATTEST * size[2], f"have bone {FLATTEST} times as wide as high at most")
    compact = volux.Image((part.array > COMPACT).astype("f4"), part.affine, axes=part.axes)
    coarse = volux.resize(compact, spacing=6.0, antialias="mean")
    near = volux.resample(coarse, like=part, outside="extend").array > 0.02
    bones = np.where(near, part.array, part.array.dtype.type(AIR))
    return volux.Image(bones, part.affine, axes=part.axes)


def view(image: volux.Image, degrees: float, edge: float, width: float | None = None) -> View:
    """Return what is seen upright from `degrees`: 0 from the front, 90 from the left.

    The picture is as wide as the volume, or `width` mm; its pixels are `edge` mm wide.
    """
    c, s = cos(radians(degrees)), sin(radians(degrees))
    x, y, z = size_of(image)
    across, depth = abs(c) * x + abs(s) * y, abs(s) * x + abs(c) * y
    gaze = np.array([s, -c, 0.0])
    shape = round(z / edge), round((width or across) / edge)
    near = middle_of(image) - gaze * depth / 2
    return View(volux.Plane(near, gaze, (0, 0, 1), shape, edge), depth)


def surface(
    image: volux.Image, seen: View, threshold: float
) -> tuple[npt.NDArray[np.bool_], npt.NDArray[np.float64]]:
    """Return which rays cross a threshold, (rows, columns), and where each of them does, (n, 3)."""
    step = min(image.spacing)
    stack = seen.plane.stack(round(seen.depth / step), distance=step)
    dense: npt.NDArray[np.bool_] = volux.reslice(image, stack, fill=AIR).array > threshold
    met: npt.NDArray[np.bool_] = np.any(dense, axis=0)
    rows, columns = np.nonzero(met)
    far = dense.argmax(axis=0)[met].astype(float)
    near = far - 1
    for _ in range(6):
        between = (near + far) / 2
        places = _places(stack, between, rows, columns)
        crossed = volux.sample(image, places, space="world", **READING) > threshold
        far, near = np.where(crossed, between, far), np.where(crossed, near, between)
    return met, _places(stack, far, rows, columns)


def _places(
    stack: volux.Grid, planes: npt.NDArray[np.float64], *pixels: npt.NDArray[np.intp]
) -> npt.NDArray[np.float64]:
    """Return places in the world of voxels of a stack, between planes too."""
    places: npt.NDArray[np.float64] = np.stack([planes, *pixels], axis=1) @ stack.affine[:3, :3].T
    return places + stack.affine[:3, 3]


def shaded(image: volux.Image, seen: View, threshold: float = BONE) -> Image.Image:
    """Return the surface in the light of a lamp above the observer's left shoulder."""
    met, places = surface(image, seen, threshold)
    normals = _normals(image, places)
    gaze, down, right = (seen.plane.grid.affine[:3, :3] / seen.plane.spacing).T
    lamp = -0.75 * gaze - 0.4 * right - 0.53 * down
    gloss = ((normals @ (lamp - gaze)) / np.linalg.norm(lamp - gaze)).clip(0, 1) ** 24
    light = AMBIENT + DIFFUSE * (normals @ lamp).clip(0, 1)
    away = (places - seen.plane.grid.affine[:3, 3]) @ gaze / seen.depth
    light *= 1.1 - 0.5 * away  # what is farther away is darker
    colours = np.full((*met.shape, 3), PAPER, np.uint8)
    colours[met] = ((light[:, None] * IVORY + GLOSS * gloss[:, None]).clip(0, 1) * 255).astype(int)
    return Image.fromarray(colours)


def _normals(image: volux.Image, places: npt.NDArray[np.float64]) -> npt.NDArray[np.float64]:
    """Return what leads out of the surface: against the mean gradient of the voxel around."""
    thirds = np.array([*product((-2 / 3, 0, 2 / 3), repeat=3)])
    around = places[:, None] + thirds @ image.affine[:3, :3].T
    _, gradients = volux.sample_gradient(image, around, space="world", **READING)
    outwards: npt.NDArray[np.float64] = -gradients.mean(axis=1)
    outwards /= np.linalg.norm(outwards, axis=1, keepdims=True).clip(1e-9)
    return outwards
