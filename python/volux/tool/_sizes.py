"""The verbs that keep the place: resize and convert."""

from __future__ import annotations

from dataclasses import asdict
from typing import Any

import numpy as np

from volux import Grid, Image
from volux._resize import target
from volux._types import Align
from volux.tool._bricks import onto, part_of
from volux.tool._errors import Misuse
from volux.tool._files import Scan
from volux.tool._finishing import finish
from volux.tool._making import Task, keywords, planned
from volux.tool._options import Conduct, Converting, Filling, Reading, counts, numbers

Size = tuple[str | None, str | None, str | None, Align]


def convert(file: str, filling: Converting, conduct: Conduct) -> int:
    """Write a volume in another format or type."""
    task = Task("convert", (file,), asdict(filling), conduct).checked()
    scan = task.read(file)
    plan = planned(task, scan, scan.stored.grid, filling, is_view=True, to_source=np.eye(4))
    return finish(task, plan, part_of(scan.stored), filling)


def resize(file: str, wanted: Size, reading: Reading, filling: Filling, conduct: Conduct) -> int:
    """Bring a volume to another number of voxels."""
    spacing, shape, scale, align = wanted
    sizes = {"spacing": spacing, "shape": shape, "scale": scale}
    options = {**sizes, "align": align, **asdict(reading), **asdict(filling)}
    task = Task("resize", (file,), options, conduct).checked()
    scan = task.read(file)
    given = {"outside": "extend", "antialias": "auto", **keywords(task, scan, reading, filling)}
    grid, voxels = _target(scan, _size(sizes), align)
    plan = planned(task, scan, grid, filling, to_source=np.eye(4))
    # In the space of the voxels the map is that of resize(), to the last bit.
    source = Image(scan.stored.array, axes="xyz")
    return finish(task, plan, onto(source, voxels, given, grid), filling)


def _size(given: dict[str, str | None]) -> dict[str, Any]:
    named = {name: value for name, value in given.items() if value is not None}
    if len(named) != 1:
        said = ", ".join(f"--{name} {value}" for name, value in named.items()) or "none"
        raise Misuse(f"give one of --spacing, --shape and --scale; found: {said}")
    [(name, text)] = named.items()
    return {name: counts(text, "--shape") if name == "shape" else numbers(text, f"--{name}")}


def _target(scan: Scan, size: dict[str, Any], align: Align) -> tuple[Grid, Grid]:
    """Return where the voxels of the result lie, in the world and among those of the input."""
    sizes = {"shape": None, "spacing": None, "scale": None, **size}
    try:
        grid, to_voxels = target(scan.stored.grid, **sizes, aligned=align)
    except ValueError as error:
        raise Misuse(f"--{error}") from None
    return grid, Grid(grid.shape, [*to_voxels, (0, 0, 0, 1)], axes="xyz")
