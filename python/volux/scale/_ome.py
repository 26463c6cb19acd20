"""OME-Zarr: where its voxels lie.

It has a scale and a translation for each axis. Axes run as they are called, x, y and z, without a
side of the patient, and lengths in the file's unit become mm.
"""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy as np

from volux._types import Floats, Matrix
from volux.tool._errors import Refusal

# How many there are in a mm.
_PER_MM = {
    "angstrom": 1e7,
    "nanometer": 1e6,
    "micrometer": 1e3,
    "millimeter": 1.0,
    "centimeter": 0.1,
    "decimeter": 0.01,
    "meter": 0.001,
}
UNIT = "millimeter"


class Level(NamedTuple):
    """One of the arrays of an image."""

    path: str
    axes: tuple[str, ...]
    scale: tuple[float, ...]  # in mm along the axes of space
    translation: tuple[float, ...]


def levels(attributes: dict[str, Any], path: str) -> list[Level]:
    """Return the levels that the attributes of a group name, the finest first; perhaps none."""
    try:
        found = attributes.get("ome", attributes).get("multiscales")
        if not found:
            return []
        image = found[0]
        axes = tuple(str(axis["name"]) for axis in image["axes"])
        per_mm = [_per_mm(axis, path) for axis in image["axes"]]
        return [_level(image, data, axes, per_mm) for data in image["datasets"]]
    except ValueError as error:
        raise Refusal(f"{path}: its OME-Zarr metadata have {error}") from None
    except (KeyError, TypeError, IndexError, AttributeError) as error:
        raise Refusal(
            f"{path}: its OME-Zarr metadata are not those of 0.4 or 0.5: {error!r}"
        ) from None


def _per_mm(axis: dict[str, Any], path: str) -> float:
    if axis.get("type") != "space":
        return 1.0
    unit = axis.get("unit") or UNIT
    if unit not in _PER_MM:
        raise Refusal(f"{path}: its unit is {unit}; allowed are {', '.join(_PER_MM)}")
    return _PER_MM[unit]


def _level(
    image: dict[str, Any], data: dict[str, Any], axes: tuple[str, ...], per_mm: Sequence[float]
) -> Level:
    scale, translation = np.ones(len(axes)), np.zeros(len(axes))
    steps = [*data["coordinateTransformations"], *image.get("coordinateTransformations", [])]
    for step in steps:
        kind = step["type"]
        if kind == "scale":
            factors = _numbers(step, axes)
            if min(factors) <= 0:
                raise ValueError(f"a scale of {step['scale']}; each must be above 0")
            scale, translation = scale * factors, translation * factors
        elif kind == "translation":
            translation = translation + _numbers(step, axes)
        elif kind != "identity":
            raise ValueError(f"a transformation of type {kind}")
    return Level(
        str(data["path"]),
        axes,
        tuple((scale / per_mm).tolist()),
        tuple((translation / per_mm).tolist()),
    )


def _numbers(step: dict[str, Any], axes: Sequence[str]) -> Any:
    kind = step["type"]
    found = np.array(step[kind], float)
    if found.shape != (len(axes),) or not np.isfinite(found).all():
        raise ValueError(f"a {kind} of {step[kind]}; it must be {len(axes)} finite numbers")
    return found


def attributes(name: str, placed: Sequence[tuple[str, Matrix]], *, labels: bool) -> dict[str, Any]:
    """Return the attributes of an image: its levels are at paths, and lie by affines of zyx."""
    axes = [{"name": axis, "type": "space", "unit": UNIT} for axis in "zyx"]
    image = {"name": name, "axes": axes, "datasets": [_dataset(*level) for level in placed]}
    about: dict[str, Any] = {"version": "0.5", "multiscales": [image]}
    if labels:
        about["image-label"] = {}
    return {"ome": about}


def _dataset(path: str, affine: Matrix) -> dict[str, Any]:
    scale, translation = parts(affine)
    return {
        "path": path,
        "coordinateTransformations": [
            {"type": "scale", "scale": list(scale)},
            {"type": "translation", "translation": list(translation)},
        ],
    }


def affine_of(scale: Sequence[float], translation: Sequence[float]) -> Matrix:
    """Return the affine of an array of axes zyx."""
    affine = np.zeros((4, 4))
    affine[[2, 1, 0], [0, 1, 2]] = scale
    affine[[2, 1, 0], 3] = translation
    affine[3, 3] = 1.0
    return affine


def parts(affine: Matrix) -> tuple[Floats, Floats]:
    """Return scale and translation along z, y and x."""
    scale, translation = affine[[2, 1, 0], [0, 1, 2]].tolist(), affine[[2, 1, 0], 3].tolist()
    return tuple(scale), tuple(translation)


def is_straight(affine: Matrix) -> bool:
    """Whether scale and translation say all of an affine of axes zyx."""
    scale, translation = parts(affine)
    return min(scale) > 0 and np.array_equal(affine, affine_of(scale, translation))
