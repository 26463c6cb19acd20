"""From a plan to the file: at once, or some planes at a time where memory is short."""

from __future__ import annotations

import json
import warnings
from collections.abc import Callable
from functools import partial
from pathlib import Path
from typing import Any

import volux
from volux import Grid, Image
from volux.tool import _sidecar
from volux.tool._bricks import Told, Way, fitted, planes, short_of_memory
from volux.tool._errors import SUCCESS, is_short_of_memory, misuse
from volux.tool._files import STREAM, Scan, grid_of, write, write_stream
from volux.tool._looking import digest_of, fingerprint, hash_planes
from volux.tool._making import Task, converted
from volux.tool._meanwhile import Meanwhile
from volux.tool._options import Converting, size
from volux.tool._output import flush, placed
from volux.tool._plan import Plan
from volux.tool._progress import progress
from volux.tool._slabs import Slabs


def finish(task: Task, plan: Plan, way: Way, to: Converting) -> int:
    """Show the plan, or compute the result and write it."""
    conduct = task.conduct
    limit = None if conduct.memory is None else size(conduct.memory, "--memory")
    plan = fitted(plan, way, limit, conduct.output)
    for warning in plan.warnings:
        task.tell(warning)
    if conduct.dry_run:
        print(json.dumps(plan.facts(), indent=2) if conduct.json else plan.text())
        return SUCCESS
    write_result = _at_once if plan.planes is None else _by_planes
    try:
        facts = write_result(task, plan, way, to)
    except Exception as error:
        if not is_short_of_memory(error):
            raise
        raise short_of_memory(plan, way, conduct.output) from None
    if conduct.output == STREAM:
        return SUCCESS
    if conduct.json:
        print(json.dumps(facts, indent=2))
    else:
        shape = " x ".join(map(str, plan.grid.shape))
        task.tell(f"{conduct.output}: {shape} voxels written")
    return SUCCESS


def _at_once(task: Task, plan: Plan, way: Way, to: Converting) -> dict[str, Any]:
    with progress(_how(task), task.verb) as told:
        result = _computed(plan.source, way, to, None, told)
    if task.conduct.output == STREAM:
        write_stream(result)
        return {}
    digests: Callable[[], list[str]] = partial(_sidecar.digests, task)
    if _is_told(task) and plan.amount.made:  # else what is written is the input, page by page
        digests = Meanwhile(digests).result
    with placed(task.conduct.output) as path:
        write(result, path)
        if not _is_told(task):
            return {}
        # The place as the file has it: NIfTI keeps it in short numbers.
        there = Image(result.stored.array, grid_of(str(path)).affine, axes="xyz")
        flushed = Meanwhile(partial(flush, path))  # which waits for the disk
        digest = digest_of(result.made(there))
        flushed.result()
        return _told(task, plan.grid, (digests(), digest), path)


def _by_planes(task: Task, plan: Plan, way: Way, to: Converting) -> dict[str, Any]:
    scan, grid = plan.source, plan.grid
    kind = converted(scan, scan.voxel, to)
    with (
        progress(_how(task), task.verb) as told,
        placed(task.conduct.output) as path,
        path.open("wb") as file,
    ):
        slabs = Slabs(file, kind, grid)
        file.flush()
        digest = fingerprint(kind, Grid(grid.shape, grid_of(str(path)).affine, axes="xyz"))
        for part in planes(plan.planes or grid.shape[2], grid.shape[2]):
            made = _computed(scan, way, to, part, _share(told, part, grid))
            slabs.write(part.start, made)
            if _is_told(task):
                hash_planes(digest, made)
            del made  # there is no room for the next one beside it
            scan.release()
        if not _is_told(task):
            return {}
        return _told(task, grid, (_sidecar.digests(task), digest.hexdigest()), path)


def _computed(scan: Scan, way: Way, to: Converting, part: slice | None, told: Told) -> Scan:
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", volux.AliasingWarning)  # the plan has said it
        try:
            return converted(scan, way.make(part, told), to)
        except (TypeError, ValueError) as error:
            raise misuse(error) from None


def _share(told: Told, part: slice, grid: Grid) -> Told:
    """Return what planes are given as ``progress=``, which are a share of all."""
    if told is None:
        return None
    return lambda done: told((part.start + done * (part.stop - part.start)) / grid.shape[2])


def _how(task: Task) -> str:
    return "none" if task.conduct.quiet else task.conduct.progress


def _is_told(task: Task) -> bool:
    return task.has_sidecar or task.conduct.json


def _told(task: Task, grid: Grid, digests: tuple[list[str], str], path: Path) -> dict[str, Any]:
    """Return what a result is, in a sidecar, too, if there is one."""
    facts = _sidecar.facts(task, grid, *digests)
    if task.has_sidecar:
        _sidecar.write(facts, path)
    return facts
