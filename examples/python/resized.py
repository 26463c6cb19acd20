"""Thick slices made into equal voxels: a coronal plane of a CT before and after.

Usage: python resized.py CT PICTURE.png
"""

from __future__ import annotations

import numpy as np
import numpy.typing as npt
import volux
from paper import Tile, cropped, greys, middle_of, run, sheet, size_of
from PIL import Image

PIXELS, PART = 460, 36.0  # along the longest side of a tile; mm of the magnified part
LOW, HIGH = -500.0, 1300.0  # the window of bone, in Hounsfield units
SKIN = -300.0


def resized(image: volux.Image) -> Image.Image:
    """Return the middle coronal plane of a head as stored and resized, and a part of it."""
    head = cropped(image, SKIN)
    equal = volux.resize(head, spacing=min(image.spacing), interpolation="cubic")
    width, _, height = size_of(head).tolist()
    edge = max(width, height) / PIXELS
    shape = round(height / edge), round(width / edge)
    front = volux.Plane(middle_of(head), (0, -1, 0), (0, 0, 1), shape, edge)
    vault = middle_of(head) + np.array([-0.2 * width, 0, 0.36 * height])
    part = volux.Plane(vault, (0, -1, 0), (0, 0, 1), (shape[0], shape[0]), PART / shape[0])
    names = {f"as stored: {voxels(head)}": head, f"resized, cubic: {voxels(equal)}": equal}
    tiles = [
        Tile(greys(drawn(volume, plane), LOW, HIGH), name, plane)
        for plane in (front, part)
        for name, volume in names.items()
    ]
    return sheet("Thick slices to equal voxels, each voxel drawn as it is", tiles)


def drawn(volume: volux.Image, plane: volux.Plane) -> npt.NDArray[np.int16]:
    """Return the voxels that a plane cuts, with their edges."""
    cut = volux.reslice(volume, plane, interpolation="nearest", outside="extend")
    readings: npt.NDArray[np.int16] = cut.array[0]
    return readings


def voxels(volume: volux.Image) -> str:
    """Return the size of a voxel in words."""
    lengths = sorted(round(length, 2) for length in volume.spacing)
    return "voxels of " + " x ".join(f"{length:g}" for length in lengths) + " mm"


if __name__ == "__main__":
    run(__doc__, resized)
