"""Planes of a volume that contain what it has, and no more."""

from __future__ import annotations

from itertools import permutations, product

import numpy as np

from volux import Grid, Image, Plane
from volux._types import Floats, Matrix

# Right in the picture, down in it, and what is looked through; 0, 1, 2 are R, A and S. Axial
# planes are seen from the feet, coronal ones from the front and sagittal ones from the left.
VIEWS = {"axial": (0, 1, 2), "coronal": (0, 2, 1), "sagittal": (1, 2, 0)}


def anatomical(image: Image) -> tuple[Matrix, tuple[int, int, int]]:
    """Return the volume's own directions next to R, A and S, in rows, and the axes they are of."""
    steps = image.affine[:3, :3] / np.linalg.norm(image.affine[:3, :3], axis=0)
    axes = max(permutations(range(3)), key=lambda p: sum(abs(steps[w, p[w]]) for w in range(3)))
    rows = [steps[:, axis] * np.copysign(1.0, steps[w, axis]) for w, axis in enumerate(axes)]
    return np.array(rows), (axes[0], axes[1], axes[2])


def view_plane(image: Image, view: str, at: Floats, edge: float) -> Plane:
    """Return an axial, coronal or sagittal plane of the volume through the voxels next to `at`."""
    across, down, through = VIEWS[view]
    directions, axes = anatomical(image)
    index = np.linalg.solve(image.affine, [*at, 1.0])
    axis = axes[through]
    index[axis] = np.floor(index[axis] + 0.5).clip(0, image.shape[axis] - 1)
    x, y, z = (image.affine @ index)[:3].tolist()
    normal = np.cross(-directions[across], -directions[down])
    return fitted(image.grid, (x, y, z), normal, directions[down], edge)


def fitted(
    grid: Grid, centre: Floats, normal: Matrix, up: Matrix, edge: float, thickness: float = 0.0
) -> Plane:
    """Return the plane through a point, as large as what it meets of a volume.

    Its pixels are `edge` mm wide. With a thickness it is as large as the slab needs.
    """
    whole = Plane(centre, normal, up, (1, 1), (1.0, 1.0, 1.0)).grid.affine
    place = np.linalg.solve(whole, _met(grid, whole, thickness).T)[1:3]
    low, high = place.min(axis=1), place.max(axis=1)
    x, y, z = (whole @ [0.0, *((low + high) / 2), 1.0])[:3].tolist()
    rows, columns = np.maximum(np.floor((high - low) / edge + 0.5), 1).astype(int).tolist()
    return Plane((x, y, z), normal, up, (rows, columns), (thickness or edge, edge, edge))


def _met(grid: Grid, plane: Matrix, thickness: float) -> Matrix:
    """Return the corners of what a plane or a slab meets of a volume, (n, 4) in the world."""
    ends = [(-0.5, extent - 0.5) for extent in grid.shape]
    corners = np.array([[*corner, 1.0] for corner in product(*ends)]) @ grid.affine.T
    depth = np.linalg.solve(plane, corners.T)[0]
    points = [corners[abs(depth) <= thickness / 2]]
    for one, other in product(range(8), range(8)):
        if (one ^ other).bit_count() != 1 or one > other:
            continue
        for face in (-thickness / 2, thickness / 2):
            if min(depth[one], depth[other]) <= face <= max(depth[one], depth[other]):
                step = depth[other] - depth[one]
                share = (face - depth[one]) / step if step else 0.0
                points.append([corners[one] + share * (corners[other] - corners[one])])
    met: Matrix = np.concatenate(points)
    if not len(met):
        raise ValueError("the plane misses the volume: its centre must be in it, or near it")
    return met
