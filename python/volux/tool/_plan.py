"""What a verb is about to do: the grid, the memory, and what the user should know before."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

import numpy as np

from volux import Grid
from volux._route import SKIPPING
from volux._types import Matrix
from volux.tool._files import Scan
from volux.tool._looking import aligned
from volux.tool._memory import Amount

_UNITS = ("KiB", "MiB", "GiB", "TiB")


@dataclass(frozen=True)
class Plan:
    """A result that is not there yet."""

    source: Scan
    grid: Grid
    amount: Amount
    memory: int  # bytes at most at a time
    to_source: Matrix | None = None  # the world's map to the source, if it is affine
    factors: tuple[float, ...] = ()  # how long a voxel is, in voxels of the source
    warnings: tuple[str, ...] = field(default=())
    planes: int | None = None  # so many are made at a time; None: all

    def _factors(self) -> tuple[float, ...]:
        return self.factors or factors_of(self.grid.affine, self.source.stored.affine)

    def outside(self) -> float | None:
        """Return which part of the grid, of 33 x 33 x 33 places in it, is outside the source."""
        if self.to_source is None:
            return None
        places = np.meshgrid(*[np.linspace(0, n - 1, 33) for n in self.grid.shape], indexing="ij")
        flat = np.stack([*map(np.ravel, places), np.ones(places[0].size)])
        index = np.linalg.solve(self.source.stored.affine, self.to_source @ self.grid.affine @ flat)
        extents = np.array(self.source.stored.shape)[:, np.newaxis]
        inside = ((index[:3] >= -0.5 - 1e-6) & (index[:3] < extents - 0.5 + 1e-6)).all(axis=0)
        return float(1.0 - inside.mean())

    def facts(self) -> dict[str, Any]:
        """Return the plan as JSON has it."""
        return {
            "input": self.source.path,
            "shape": list(self.grid.shape),
            "spacing": list(self.grid.spacing),
            "affine": self.grid.affine.tolist(),
            "factors": list(self._factors()),
            "memory": self.memory,
            "planes": self.planes or self.grid.shape[2],
            "outside": self.outside(),
            "warnings": list(self.warnings),
        }

    def text(self) -> str:
        """Return the plan as lines."""
        first, last = (self._place(index) for index in (np.zeros(3), np.array(self.grid.shape) - 1))
        outside = self.outside()
        rows = {
            "voxels": _product(self.source.stored.shape) + " -> " + _product(self.grid.shape),
            "spacing": _product(self.source.stored.spacing)
            + f" -> {_product(self.grid.spacing)} mm",
            "factors": _product(self._factors()),
            "first voxel": f"{first} mm (RAS+)",
            "last voxel": f"{last} mm (RAS+)",
            "outside": "unknown under a field" if outside is None else f"{100 * outside:.3g} %",
            "memory": size_text(self.memory),
        }
        if self.planes is not None:
            rows["at a time"] = f"{self.planes} planes of {self.grid.shape[2]}"
        return aligned(rows)

    def _place(self, index: Matrix) -> str:
        place = self.grid.affine @ [*index, 1.0]
        return ", ".join(f"{value:.6g}" for value in place[:3])


def factors_of(affine: Matrix, source: Matrix) -> tuple[float, ...]:
    """Return how long a voxel is, in voxels of a source."""
    steps = np.linalg.solve(source, affine)[:3, :3]
    return tuple(np.linalg.norm(steps, axis=0).tolist())


def aliasing(factors: tuple[float, ...]) -> tuple[str, ...]:
    """Return the warning about a result whose voxels skip detail."""
    longest = max(factors)
    if longest < SKIPPING:
        return ()
    return (
        f"voxels of the result are as long as {longest:.3g} of the input, and detail between them "
        "is skipped: --antialias mean takes means, --antialias none says that this is meant",
    )


def _product(values: Any) -> str:
    return " x ".join(f"{value:.6g}" for value in values)


def size_text(count: int) -> str:
    """Return a number of bytes as one reads it, with three digits or more."""
    if count < 2**10:
        return f"{count} byte" + "s" * (count != 1)
    power = min((count.bit_length() - 1) // 10, len(_UNITS))
    size = count / 2 ** (10 * power)
    return f"{size:.0f} {_UNITS[power - 1]}" if size >= 100 else f"{size:.3g} {_UNITS[power - 1]}"
