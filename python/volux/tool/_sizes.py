"""The verbs that keep the place: resize and convert."""

from __future__ import annotations

from dataclasses import asdict
from typing import Any

import numpy as np

import volux
from volux import Grid
from volux.tool._errors import Misuse
from volux.tool._files import Scan
from volux.tool._making import Task, converted, finish, keywords, planned
from volux.tool._options import Conduct, Converting, Filling, Reading, counts, numbers

Size = tuple[str | None, str | None, str | None, str]


def convert(file: str, filling: Converting, conduct: Conduct) -> int:
    """Write a volume in another format or type."""
    task = Task("convert", (file,), asdict(filling), conduct).checked()
    scan = task.read(file)
    plan = planned(task, scan, scan.stored.grid, filling, is_view=True, to_source=np.eye(4))
    return finish(task, plan, lambda _told: converted(scan, scan.stored, filling))


def resize(file: str, wanted: Size, reading: Reading, filling: Filling, conduct: Conduct) -> int:
    """Bring a volume to another number of voxels."""
    spacing, shape, scale, align = wanted
    sizes = {"spacing": spacing, "shape": shape, "scale": scale}
    options = {**sizes, "align": align, **asdict(reading), **asdict(filling)}
    task = Task("resize", (file,), options, conduct).checked()
    scan = task.read(file)
    given = keywords(task, scan, reading, filling)
    size = {**_size(sizes), "align": align}
    plan = planned(task, scan, _grid(scan, size), filling, to_source=np.eye(4))
    return finish(
        task,
        plan,
        lambda told: converted(
            scan, volux.resize(scan.stored, **size, **given, progress=told), filling
        ),
    )


def _size(given: dict[str, str | None]) -> dict[str, Any]:
    named = {name: value for name, value in given.items() if value is not None}
    if len(named) != 1:
        said = ", ".join(f"--{name} {value}" for name, value in named.items()) or "none"
        raise Misuse(f"give one of --spacing, --shape and --scale; found: {said}")
    [(name, text)] = named.items()
    return {name: counts(text, "--shape") if name == "shape" else numbers(text, f"--{name}")}


def _grid(scan: Scan, size: dict[str, Any]) -> Grid:
    place = scan.stored.grid
    try:
        if "shape" in size:
            return Grid.of_size(place, size["shape"], align=size["align"])
        spacing = size.get("spacing")
        if spacing is None:
            if min(size["scale"]) <= 0:
                raise ValueError(f"scale={size['scale']} must be above 0")
            spacing = [now / by for now, by in zip(place.spacing, size["scale"], strict=True)]
        return Grid.of_spacing(place, spacing, align=size["align"])
    except ValueError as error:
        raise Misuse(f"--{error}") from None
