"""A synthetic head, made of ellipsoids and sines: as MR or CT shows it, or its labels.

It stands for a scan where there is none.

Usage: python head.py mr|ct|labels VOLUME.nii.gz
"""

from __future__ import annotations

import sys
from itertools import product

import nibabel
import numpy as np
import numpy.typing as npt
from paper import arguments

Floats = npt.NDArray[np.float64]
Mask = npt.NDArray[np.bool_]

SHAPE, SPACING = (160, 200, 116), (1.0, 1.0, 1.5)  # voxels and mm along x, y and z
AIR, FAT, BONE, FLUID, GREY, WHITE, MUSCLE = range(7)
READINGS = {  # of each tissue, in the order of the names above
    "mr": np.array([3, 190, 25, 45, 120, 175, 90], np.int16),
    "ct": np.array([-1000, -80, 1100, 8, 38, 28, 55], np.int16),
}
REGIONS = 12  # of the grey matter on each side, all of which have labels of their own


def head(kind: str, shape: tuple[int, int, int] = SHAPE) -> nibabel.Nifti1Image:
    """Return the head as a scan of a kind; a smaller `shape` has larger voxels."""
    spacing = np.array(SHAPE) * SPACING / shape
    affine = np.diag([*spacing, 1.0])
    affine[:3, 3] = -spacing * (np.array(shape) - 1) / 2
    if kind == "labels":
        return nibabel.Nifti1Image(_labels(*_places(shape, affine)), affine)
    total = np.zeros(shape, np.int32)
    for shift in product((-0.25, 0.25), repeat=3):  # a voxel shows the mean of what is in it
        total += READINGS[kind][_tissue(*_places(shape, affine, shift))]
    return nibabel.Nifti1Image((total // 8).astype(np.int16), affine)


def _places(
    shape: tuple[int, int, int], affine: Floats, shift: tuple[float, ...] = (0, 0, 0)
) -> list[Floats]:
    """Return x, y and z of voxels, moved by parts of one."""
    axes = [affine[a, 3] + affine[a, a] * (np.arange(shape[a]) + shift[a]) for a in range(3)]
    return list(np.meshgrid(*axes, indexing="ij", sparse=True))


def _labels(x: Floats, y: Floats, z: Floats) -> npt.NDArray[np.uint8]:
    """Return 1 and more for regions of grey matter; those on the left are even."""
    sector = np.floor(np.arctan2(abs(x), y) / np.pi * REGIONS).astype(np.uint8)
    is_grey = _tissue(x, y, z) == GREY
    labels: npt.NDArray[np.uint8] = np.where(is_grey, 1 + 2 * sector + (x < 0), 0).astype(np.uint8)
    return labels


def _tissue(x: Floats, y: Floats, z: Floats) -> npt.NDArray[np.uint8]:
    """Return what is at places in mm from the middle of the head."""
    depth = _radius(x, y + 4, z - 6, 70, 88, 78)
    shells = [depth > 0.96, depth > 0.88]
    brain = _brain(x, y, z, depth)
    inside = np.select(shells, [np.uint8(FAT), np.uint8(BONE)], brain)
    tissue: npt.NDArray[np.uint8] = np.where(depth < 1, inside, _outside(x, y, z))
    tissue[_radius(abs(x) - 30, y - 68, z + 22, 12, 13, 12) < 1] = FLUID  # the eyes
    return tissue


def _outside(x: Floats, y: Floats, z: Floats) -> npt.NDArray[np.uint8]:
    """Return neck, spine and nose."""
    neck = (z < -20) & (np.hypot(x / 46, (y + 18) / 54) < 1)
    spine = neck & (np.hypot(x / 14, (y + 30) / 14) < 1)
    nose = _radius(x, y - 82, z + 30, 11, 14, 20) < 1
    masks = [spine, neck, nose]
    return np.select(masks, [np.uint8(BONE), np.uint8(MUSCLE), np.uint8(FAT)], np.uint8(AIR))


def _brain(x: Floats, y: Floats, z: Floats, depth: Floats) -> npt.NDArray[np.uint8]:
    """Return folds of grey matter around white, and the fluid between and within."""
    folds = np.sin(x / 4 + 2 * np.sin(z / 9)) * np.sin(y / 5 + 2 * np.cos(x / 11))
    folds = folds * np.sin(z / 5 + 2 * np.cos(y / 12))
    fissure = (abs(x) < 1.5) & (depth > 0.68) & (z > -5)
    ventricle = _radius(abs(x) - 11, y + 2, z - 10, 6, 27, 11) < 1
    fluid = fissure | ventricle | (depth > 0.85 + 0.05 * folds)
    masks = [fluid, depth > 0.72 + 0.16 * folds]
    return np.select(masks, [np.uint8(FLUID), np.uint8(GREY)], np.uint8(WHITE))


def _radius(x: Floats, y: Floats, z: Floats, a: float, b: float, c: float) -> Floats:
    """Return 1 on the surface of an ellipsoid."""
    radius: Floats = np.sqrt((x / a) ** 2 + (y / b) ** 2 + (z / c) ** 2)
    return radius


if __name__ == "__main__":
    wanted, output = arguments(__doc__, 2)
    if wanted not in {*READINGS, "labels"}:
        sys.exit(f"{wanted}: must be mr, ct or labels")
    nibabel.save(head(wanted), output)
