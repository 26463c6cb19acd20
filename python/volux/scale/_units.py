"""Units: what is written at once, and in which order."""

from __future__ import annotations

from itertools import product
from math import prod
from typing import NamedTuple

from volux._types import Box, Ints


class Units(NamedTuple):
    """The parts of an array that are written at once. They are counted from 0 here."""

    shape: Ints
    unit: Ints

    @property
    def counts(self) -> Ints:
        """How many units there are along each axis."""
        first, second, third = (-(-n // by) for n, by in zip(self.shape, self.unit, strict=True))
        return first, second, third

    @property
    def tasks(self) -> int:
        """How many units there are."""
        return prod(self.counts)

    def place(self, task: int) -> Ints:
        """Return which unit a task writes, in Morton order: neighbours read the same voxels."""
        counts, corner = self.counts, (0, 0, 0)
        size = 1 << (max(counts) - 1).bit_length()
        while size > 1:
            size //= 2
            for octant in product((0, size), repeat=3):
                inside = _moved(corner, octant)
                units = prod(max(0, min(size, n - i)) for n, i in zip(counts, inside, strict=True))
                if task < units:
                    corner = inside
                    break
                task -= units
        return corner

    def box(self, index: Ints) -> Box:
        """Return which voxels a unit has."""
        first, second, third = (
            slice(i * by, min(n, (i + 1) * by))
            for i, by, n in zip(index, self.unit, self.shape, strict=True)
        )
        return first, second, third


def _moved(corner: Ints, by: tuple[int, ...]) -> Ints:
    return corner[0] + by[0], corner[1] + by[1], corner[2] + by[2]


def key(index: Ints) -> str:
    """Return the name of a unit in its array."""
    return "c/" + "/".join(map(str, index))


def extents(box: Box) -> Ints:
    """Return how many voxels a box has along each axis."""
    return box[0].stop - box[0].start, box[1].stop - box[1].start, box[2].stop - box[2].start
