"""Results in parts: as many planes at a time as there is memory for, with the bits of the whole."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from dataclasses import dataclass, replace
from typing import Any

import volux
from volux import Grid, Image
from volux.tool._errors import Refusal
from volux.tool._files import suffix_of
from volux.tool._memory import at_most, mapped, passing
from volux.tool._plan import Plan, size_text

Told = Callable[[float], object] | None

# What decides which voxels are read.
_READING = ("interpolation", "border", "outside", "antialias", "transform")


@dataclass(frozen=True)
class Way:
    """How a result comes about.

    Parameters
    ----------
    make : callable
        Returns planes along k of the result, or all of them for None.
    reads : callable, optional
        Returns which planes of the input some planes of the result need. None: the result is made
        as a whole.
    """

    make: Callable[[slice | None, Told], Image]
    reads: Callable[[slice], slice] | None = None


def onto(source: Image, grid: Grid, given: dict[str, Any], place: Grid | None = None) -> Way:
    """Return how `resample` brings a source onto a grid, whose place may be another one."""
    reading = {name: value for name, value in given.items() if name in _READING}

    def make(planes: slice | None, told: Told) -> Image:
        target, at = (
            whole if planes is None else whole[:, :, planes] for whole in (grid, place or grid)
        )
        made = volux.resample(source, target, **given, progress=told)
        return Image(made.array, at.affine, axes="xyz")

    def reads(planes: slice) -> slice:
        return volux.support(grid, (slice(None), slice(None), planes), image=source, **reading)[2]

    return Way(make, reads)


def part_of(source: Image) -> Way:
    """Return how the planes of an image become a result as they are."""

    def make(planes: slice | None, _told: Told) -> Image:
        if planes is None:
            return source
        return Image(source.array[:, :, planes], source.grid[:, :, planes].affine, axes="xyz")

    return Way(make, lambda planes: planes)


def planes(depth: int, count: int) -> Iterator[slice]:
    """Yield so many planes at a time."""
    return (slice(first, min(first + depth, count)) for first in range(0, count, depth))


def fitted(plan: Plan, way: Way, limit: int | None, output: str) -> Plan:
    """Return a plan that needs no more bytes than a limit, or refuse the result."""
    if limit is None or plan.memory <= limit:
        return plan
    scan, allowed = plan.source, f"--memory allows {size_text(limit)}"
    why = _why_whole(way, output)
    if why:
        raise Refusal(
            f"{scan.path}: the result needs {size_text(plan.memory)}, and {allowed}; {why}"
        )
    depth, memory = _deepest(plan, way, limit)
    if memory > limit:
        raise Refusal(
            f"{scan.path}: plane by plane the result needs {size_text(memory)}, and {allowed}; "
            + ("gunzip it first" if scan.path.endswith(".gz") else "crop it first")
        )
    return replace(plan, memory=memory, planes=depth)


def short_of_memory(plan: Plan, way: Way, output: str) -> Refusal:
    """Return what is said when the system has less memory than a result needs."""
    what = _why_whole(way, output)
    if not what and plan.planes is None:
        what = "--memory, with less than there is, makes it some planes at a time"
    need = f"the result needs {size_text(plan.memory)}, and there is less memory"
    return Refusal(f"{plan.source.path}: {need}; {what or 'give a smaller --memory'}")


def _why_whole(way: Way, output: str) -> str:
    """Return why a result is not made in parts, and what to do about it; or nothing."""
    if way.reads is None:
        return "a slab is made at once: crop first, or make fewer pixels"
    if suffix_of(output) == ".nii":
        return ""
    return "name an output .nii, which --memory makes some planes at a time"


def _deepest(plan: Plan, way: Way, limit: int) -> tuple[int, int]:
    """Return how many planes at a time a limit allows, at least 1, and the bytes they need."""
    low, high = 1, plan.grid.shape[2]
    memory = _needed(low, plan, way)
    while high - low > 1:
        middle = (low + high) // 2
        more = _needed(middle, plan, way)
        if more > limit:
            high = middle
        else:
            low, memory = middle, more
    return low, memory


def _needed(depth: int, plan: Plan, way: Way) -> int:
    """Return the bytes that the process will have at most, with so many planes at a time."""
    scan, amount, count = plan.source, plan.amount, plan.grid.shape[2]
    read = max(_length(way.reads(part)) for part in planes(depth, count)) if way.reads else 0
    made = amount.plane * depth * amount.made
    return at_most(mapped(scan) * read // scan.stored.shape[2] + made + passing(scan, amount))


def _length(part: slice) -> int:
    length: int = part.stop - part.start
    return length
