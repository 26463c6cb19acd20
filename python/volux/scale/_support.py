"""Which voxels of a source a unit reads."""

from __future__ import annotations

from typing import Any

import volux
from volux import Grid
from volux._displacement import Transform
from volux._types import Box

_THAT_COUNT = ("interpolation", "border", "outside", "antialias")


def support(
    source: Grid, target: Grid, box: Box, transform: Transform | None, options: dict[str, Any]
) -> Box:
    """Return which box of a source is read for a box of a result."""
    how: Any = {name: options[name] for name in _THAT_COUNT}
    return volux.support(target, box, image=source, transform=transform, **how)
