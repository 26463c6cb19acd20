"""The verbs that keep the place: resize and convert."""

from __future__ import annotations

from dataclasses import asdict
from typing import Any

import numpy as np

import volux
from volux import Grid
from volux.tool._errors import Misuse
from volux.tool._files import Scan
from volux.tool._making import Task, converted, finish, item_of, keywords
from volux.tool._options import Conduct, Converting, Filling, Reading, counts, numbers
from volux.tool._plan import Plan

Size = tuple[str | None, str | None, str | None, str]


def convert(file: str, filling: Converting, conduct: Conduct) -> int:
    """Write a volume in another format or type."""
    task = Task("convert", (file,), asdict(filling), conduct).checked()
    scan = task.read(file)
    plan = Plan(scan, scan.stored.grid, scan.file_type.itemsize, to_source=np.eye(4))
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
    plan = Plan(scan, _grid(scan, size), item_of(scan, given), to_source=np.eye(4))
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
