"""The verbs that lead to other places: resample, crop and reslice."""

from __future__ import annotations

from dataclasses import asdict
from pathlib import Path
from typing import Any

import numpy as np

import volux
from volux import Affine, Grid, Image
from volux._displacement import Transform
from volux.tool import _planes, _transforms
from volux.tool._bricks import Told, Way, onto, part_of
from volux.tool._errors import Misuse
from volux.tool._files import STREAM, Scan, grid_of
from volux.tool._finishing import finish
from volux.tool._making import Task, keywords, planned
from volux.tool._options import Conduct, Converting, Filling, PlaneOptions, Reading
from volux.tool._plan import aliasing, factors_of


def resample(
    file: str,
    target: tuple[str | None, list[str]],
    reading: Reading,
    filling: Filling,
    conduct: Conduct,
) -> int:
    """Bring a volume onto the grid of another one, through transforms."""
    like, transforms = target
    if like is None and not transforms:
        raise Misuse("give --like, --transform or both: they say where the result lies")
    if file == like == STREAM:
        raise Misuse("INPUT and --like are both -; stdin is one of them at most")
    options = {"like": like, "transform": transforms, **asdict(reading), **asdict(filling)}
    inputs = (file, *([like] if like else []), *transforms)
    task = Task("resample", inputs, options, conduct).checked()
    scan = task.read(file)
    given = keywords(task, scan, reading, filling)
    grid = scan.stored.grid if like is None else _grid_like(task, like)
    transform = _transforms.read(transforms, grid)
    plan = planned(task, scan, grid, filling, **_known(scan, grid, transform, given, filling))
    given["transform"] = transform
    return finish(task, plan, onto(scan.stored, grid, given), filling)


def _grid_like(task: Task, like: str) -> Grid:
    if like == STREAM or Path(like).is_dir():  # there is no header to look at alone
        return task.read(like).stored.grid
    return grid_of(like)


def _known(
    scan: Scan, grid: Grid, transform: Transform | None, given: dict[str, Any], filling: Filling
) -> dict[str, Any]:
    """Return what the plan says about how voxels of the result lie to those of the input."""
    matrix = transform.matrix if isinstance(transform, Affine) else np.eye(4)
    factors = factors_of(matrix @ grid.affine, scan.stored.affine)
    is_said = filling.antialias is not None or given["interpolation"] == "nearest"
    return {
        "to_source": matrix if transform is None or isinstance(transform, Affine) else None,
        "factors": factors,
        "warnings": () if is_said else aliasing(factors),
    }


def crop(file: str, box: str, filling: Converting, conduct: Conduct) -> int:
    """Cut a box of voxels out of a volume."""
    task = Task("crop", (file,), {"box": box, **asdict(filling)}, conduct).checked()
    scan = task.read(file)
    slices = _slices(box, scan.stored.shape)
    grid = scan.stored.grid[slices]
    plan = planned(task, scan, grid, filling, is_view=True, to_source=np.eye(4))
    cut = Image(scan.stored.array[slices], grid.affine, axes="xyz")
    return finish(task, plan, part_of(cut), filling)


def _slices(box: str, shape: tuple[int, ...]) -> tuple[slice, ...]:
    try:
        ends = [[int(end) if end else None for end in part.split(":")] for part in box.split(",")]
    except ValueError:
        ends = []
    if len(ends) != 3 or any(len(pair) != 2 for pair in ends):
        raise Misuse(f"--box {box}: must be three ranges of voxels, such as 10:90,:,5:-5")
    slices = tuple(slice(*pair) for pair in ends)
    for axis, along, extent in zip("ijk", slices, shape, strict=True):
        start, stop, _ = along.indices(extent)
        if stop <= start or (along.stop or 0) > extent or (along.start or 0) < -extent:
            said = box.split(",")["ijk".index(axis)]
            raise Misuse(f"--box {box}: {said} along {axis} is not within 0:{extent}")
    return slices


def reslice(
    file: str, where: PlaneOptions, reading: Reading, filling: Filling, conduct: Conduct
) -> int:
    """Cut a plane or a slab out of a volume."""
    options = {**asdict(where), **asdict(reading), **asdict(filling)}
    task = Task("reslice", (file,), options, conduct).checked()
    scan = task.read(file)
    given = keywords(task, scan, reading, filling)
    grid = _planes.grid(where, scan.stored)
    place = _planes.in_index_order(grid)
    plan = planned(task, scan, place, filling, to_source=np.eye(4))
    if where.slab == 1:  # with the bits of resample()
        return finish(task, plan, onto(scan.stored, place, given), filling)
    given |= {"slab": where.slab, "projection": where.projection}

    def make(_all: slice | None, told: Told) -> Image:
        return _planes.turned(volux.reslice(scan.stored, grid, **given, progress=told))

    return finish(task, plan, Way(make), filling)
