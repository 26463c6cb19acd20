"""Levels: how many voxels each has, and where they lie."""

from __future__ import annotations

from typing import Any

import numpy as np

from volux._types import Ints


def halved(shape: Ints) -> tuple[Ints, Ints]:
    """Return the extents of the next level, which keep an odd voxel at the end, and the factors."""
    first, second, third = (1 if n == 1 else 2 for n in shape)
    factors = (first, second, third)
    a, b, c = (-(-n // by) for n, by in zip(shape, factors, strict=True))
    return (a, b, c), factors


def coarser(level: dict[str, Any], factors: Ints) -> list[dict[str, Any]]:
    """Return where the next level lies, as OME-Zarr says it."""
    scale, translation = np.ones(3), np.zeros(3)
    for step in level["coordinateTransformations"]:
        if step["type"] == "scale":
            scale = np.array(step["scale"], float)
        else:
            translation = np.array(step["translation"], float)
    translation = translation + scale * (np.array(factors) - 1) / 2
    return [
        {"type": "scale", "scale": (scale * factors).tolist()},
        {"type": "translation", "translation": translation.tolist()},
    ]


def of(level: dict[str, Any], shape: Ints, count: int) -> list[dict[str, Any]]:
    """Return what OME-Zarr says of so many levels after a level of a shape."""
    found = []
    for number in range(1, count + 1):
        shape, factors = halved(shape)
        level = {"path": str(number), "coordinateTransformations": coarser(level, factors)}
        found.append(level)
    return found
