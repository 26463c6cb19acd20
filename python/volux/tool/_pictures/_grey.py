"""From readings to greys: windows, given or found."""

from __future__ import annotations

from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from volux._types import Array

# Hounsfield units begin at those of air, or a little below where scanners pad.
_AIR = (-3100.0, -900.0)
_TISSUE = 200.0  # what no scan of a patient stays below
_SOFT_TISSUE = (40.0, 400.0)

# As many voxels say well enough where the percentiles lie.
_MANY = 1 << 22


class Window(NamedTuple):
    """The reading in the middle of the greys, and how much lies between black and white."""

    level: float
    width: float

    def greys(self, readings: Array) -> npt.NDArray[np.uint8]:
        """Return 0 at the lower end and below, 255 at the upper end and above; NaN is black."""
        low = self.level - self.width / 2
        shares = np.nan_to_num((np.asarray(readings, np.float64) - low) / self.width, nan=0.0)
        return np.floor(shares.clip(0.0, 1.0) * 255.0 + 0.5).astype(np.uint8)


def window_of(voxels: Array) -> Window:
    """Return soft tissue for what seems to be CT, and else nearly all that is no background."""
    some = voxels.reshape(-1)[:: -(-voxels.size // _MANY)].astype(np.float64)
    some = some[np.isfinite(some)]
    if some.size and _AIR[0] <= some.min() <= _AIR[1] and some.max() > _TISSUE:
        return Window(*_SOFT_TISSUE)
    return spread_of(some)


def spread_of(readings: Array) -> Window:
    """Return nearly all that is no background."""
    some = readings[np.isfinite(readings)]
    if not some.size:
        return Window(0.0, 1.0)
    low = float(np.percentile(some, 1))
    shown = some[some > low]
    high = float(np.percentile(shown, 99.5)) if shown.size else low
    return Window((low + high) / 2, high - low) if high > low else Window(low, 1.0)
