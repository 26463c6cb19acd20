"""The way from the voxels of a result to those that are read for them."""

from __future__ import annotations

from typing import NamedTuple

import numpy as np

from volux import _core
from volux._axes import PLACES
from volux._displacement import IDENTITY, Displacement, Transform, parts_of
from volux._grid import INDEX_SPACE, Grid
from volux._types import Ints, Matrix

# Voxels of a result that are as long, in voxels of what is read, skip detail. A step that exceeds a
# whole number by less counts as that number, as in the library.
SKIPPING = 2.0 * (1.0 - 2.0**-20)


class Route(NamedTuple):
    """From voxels of one grid to voxels of another, both of which name their axes."""

    source: Grid
    target: Grid
    affine: Matrix  # to voxels of the source, or with a field to the space of its vectors
    field: Displacement | None
    to_voxels: Matrix  # from the space of the vectors to voxels of the source

    def warp(self) -> _core.Warp | None:
        """Return the field as the compiled part takes it."""
        if self.field is None:
            return None
        return self.field._warp(self.source._order, self.to_voxels)

    def longest_step(self) -> float:
        """How long a voxel of the target is, in voxels of the source."""
        straight = self.field is None
        steps = self.affine if straight else _core.composed(self.to_voxels, self.affine)
        return max(_core.spacing_of(steps))

    def region(self) -> tuple[Ints, Ints, Ints, Ints] | None:
        """Which parts of both grids are boxes of larger ones; None if neither is."""
        if not (self.source.is_box or self.target.is_box):
            return None
        image, brick = self.source.whole
        whole, start = self.target.whole
        return image._extents, whole._extents, whole._in_xyz(start), image._in_xyz(brick)


def route(source: Grid, target: Grid, transform: Transform | None) -> Route:
    """Return the way from a target, through a transform of the world, to a source."""
    image, rows = source.whole[0], target.whole[0]._rows
    if transform is None:
        return Route(source, target, between(rows, image), None, IDENTITY)
    before, field, after = parts_of(transform)
    moved = _core.composed(before, rows)
    if field is None:
        moved = _core.composed(after, moved)
        return Route(source, target, between(moved, image), None, IDENTITY)
    to_voxels = _core.composed(_core.inverse(image._rows), after)
    return Route(source, target, moved, field, to_voxels)


def between(rows: Matrix, image: Grid) -> Matrix:
    """Return the map from the voxels of a target in the world to those of an image."""
    # In an index space a grid says itself which voxels it reads, and to the last bit.
    if np.array_equal(image.affine, INDEX_SPACE):
        return np.ascontiguousarray(rows[list(PLACES[image._order])])
    return _core.between(rows, image._rows)
