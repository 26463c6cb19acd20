"""What stands beside a picture: letters of the patient's sides, and how long the scale bar is."""

from __future__ import annotations

from math import floor, log10
from typing import NamedTuple

import numpy as np

from volux import Plane
from volux._types import Matrix
from volux.tool._looking import SIDES

# A direction that leans by less than some 15 degrees has one letter.
_LEANS = 0.26


class Letters(NamedTuple):
    """The sides of the patient on the four sides of a picture."""

    left: str
    right: str
    top: str
    bottom: str


def letters_of(plane: Plane) -> Letters:
    """Return what is on each side of a plane's picture."""
    down, across = (plane.grid.affine[:3, axis] for axis in (1, 2))
    return Letters(towards(-across), towards(across), towards(-down), towards(down))


def towards(direction: Matrix) -> str:
    """Return R, L, A, P, S or I, or several of them, the one that counts most first."""
    parts = np.asarray(direction, np.float64) / np.linalg.norm(direction)
    order = sorted(range(3), key=lambda axis: -abs(parts[axis]))
    return "".join(SIDES[axis][int(parts[axis] > 0)] for axis in order if abs(parts[axis]) > _LEANS)


def bar_of(longest: float) -> float:
    """Return the greatest round length, 1, 2 or 5 times a power of ten, that is not longer."""
    power = 10.0 ** floor(log10(longest))
    return max(n * power for n in (1, 2, 5) if n * power <= longest)
