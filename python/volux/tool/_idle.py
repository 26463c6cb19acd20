"""Options that would have no effect are refused, so that nobody relies on them."""

from __future__ import annotations

from typing import Any

import numpy as np

from volux.tool._errors import Misuse
from volux.tool._files import STREAM
from volux.tool._flat import is_said
from volux.tool._options import Conduct, PlaneOptions, Reading


def refuse_outside(how: Reading, outside: str) -> None:
    """Refuse what would count outside the volume, if something else does there."""
    if is_said("outside") and how.border == "constant":
        raise Misuse(
            f"--outside {outside}: goes with --border edge; with --border constant all that is "
            "outside reads --fill"
        )
    if is_said("fill") and how.border == "edge" and outside == "extend":
        raise Misuse(
            f"--fill {how.fill:g}: the edge goes on outside, which leaves nothing to fill; "
            "--border constant fills it"
        )


def refuse_overflow(overflow: str, kept: np.dtype[Any], *, is_view: bool) -> None:
    """Refuse to say what becomes of numbers that do not fit, where all of them do."""
    if not is_said("overflow"):
        return
    if kept.kind == "f":
        raise Misuse(
            f"--overflow {overflow}: counts for integers, and the result is {kept}; "
            "--dtype says another type"
        )
    if is_view and not is_said("dtype"):
        raise Misuse(f"--overflow {overflow}: no number changes; --dtype says another type")


def refuse_plane(where: PlaneOptions) -> None:
    """Refuse what a plane does not need."""
    if where.through and is_said("up"):
        raise Misuse(
            f"--up {where.up}: goes with --normal; the third point of --through says what is down"
        )
    if is_said("projection") and where.slab == 1:
        raise Misuse(
            f"--projection {where.projection}: goes with --slab, the number of planes that become "
            "one picture"
        )


def refuse_output(conduct: Conduct) -> None:
    """Refuse facts on the stdout that has voxels."""
    if conduct.json and conduct.output == STREAM and not conduct.dry_run:
        raise Misuse("--json and -o - both write to stdout; leave one of them out")
