"""Files of voxels alone, which are mapped."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

from volux._types import Array, Floats, Ints, Matrix
from volux.tool._errors import Misuse, Refusal, line_of
from volux.tool._options import counts, numbers


@dataclass(frozen=True)
class Layout:
    """What a user says about a file that does not say it itself."""

    dtype: str | None = None
    shape: Ints = (0, 0, 0)  # along i, j and k, i fastest
    voxel: Floats = (1.0, 1.0, 1.0)  # in mm along the file's own axes

    def mapped(self, path: str) -> Array:
        """Return the voxels of a raw file, which follow a header of any length."""
        dtype = np.dtype(self.dtype)
        needed, there = int(np.prod(self.shape)) * dtype.itemsize, Path(path).stat().st_size
        if there < needed:
            raise Refusal(f"{path}: has {there} bytes; {self.dtype} of {self.shape} are {needed}")
        return np.memmap(path, dtype, "r", there - needed, self.shape, order="F")

    def affine(self) -> Matrix:
        """Return where raw voxels lie: the first of them in the origin, and i along x."""
        return np.diag([*self.voxel, 1.0])

    def facts(self) -> dict[str, Any]:
        """Return the layout as JSON has it."""
        return {"dtype": self.dtype, "shape": list(self.shape), "voxel": list(self.voxel)}


UNKNOWN = Layout()


def layout(raw: str | None, voxel: str | None) -> Layout:
    """Return the layout of options such as uint16,512,512,400 and 0.1,0.1,0.5."""
    spacing = UNKNOWN.voxel if voxel is None else numbers(voxel, "--voxel")
    if min(spacing) <= 0:
        raise Misuse(f"--voxel {voxel}: must be above 0")
    if raw is None:
        return Layout(voxel=spacing)
    dtype, _, shape = raw.partition(",")
    try:
        extents, known = counts(shape, "--raw"), np.dtype(dtype)
    except (TypeError, ValueError, Misuse):
        raise Misuse(
            f"--raw {raw}: must be a type and extents, such as uint16,512,512,400"
        ) from None
    if min(extents) < 1:
        raise Misuse(f"--raw {raw}: extents must be 1 or more")
    return Layout(known.str, extents, spacing)


def numpys(path: str) -> Array:
    """Return the voxels of a file of NumPy's."""
    try:
        mapped = np.load(path, mmap_mode="r")
    except OSError:
        raise
    except Exception as error:  # of Python's own tokens, among others: the header is a literal
        raise Refusal(f"{path}: NumPy cannot map it: {line_of(error)}") from None
    return np.asarray(mapped)
