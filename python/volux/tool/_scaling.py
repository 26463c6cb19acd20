"""Plans, their runs, and whether what they made is right."""

from __future__ import annotations

import json
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

from volux.scale import _planning, _pyramid, _raw, _running, _sources, _verifying
from volux.scale._plan import Filed, read, text_of
from volux.scale._sources import Source
from volux.scale._store import METADATA
from volux.scale._tasks import Record, is_done
from volux.tool import _output
from volux.tool._errors import FAILURE, SUCCESS, Misuse, Refusal, say
from volux.tool._flat import is_said
from volux.tool._idle import refuse_outside, refuse_overflow
from volux.tool._looking import aligned
from volux.tool._options import Filling, Reading, counts, numbers, size
from volux.tool._plan import aliasing, factors_of, size_text
from volux.tool._progress import progress
from volux.tool._scale_verbs import Placed, Stored

_ARRAY = "0"  # of a store, the finest level


@dataclass(frozen=True)
class Given:
    """A plan as the user asked for it."""

    verb: str
    file: str
    placed: Placed
    stored: Stored
    reading: Reading
    filling: Filling
    memory: str | None

    @property
    def path(self) -> str:
        """The file of the plan."""
        return self.stored.plan or str(Path(self.stored.output).with_suffix(".plan.json"))

    def layout(self) -> _planning.Layout:
        """Return how the result is stored."""
        chunk = counts(self.stored.chunk, "--chunk")
        if min(chunk) < 1:
            raise Misuse(f"--chunk {self.stored.chunk}: must be above 0")
        unit = chunk if self.stored.unit is None else counts(self.stored.unit, "--unit")
        return _planning.Layout(chunk, unit, self.stored.codec).checked()

    def options(self, source: Source) -> dict[str, Any]:
        """Return the keywords of volux.resample."""
        is_resize = self.verb == "resize"
        antialias = self.filling.antialias or ("auto" if is_resize else "none")
        fill = self.reading.fill
        return {
            "interpolation": self.reading.interp or ("label" if source.labels else "linear"),
            "border": self.reading.border,
            "fill": int(fill) if float(fill).is_integer() else fill,
            "outside": self.filling.outside or ("extend" if is_resize else "fill"),
            "antialias": None if antialias == "none" else antialias,
            "overflow": self.filling.overflow,
        }


def plan(given: Given, *, force: bool, as_json: bool, quiet: bool) -> int:
    """Write a plan, and a store without voxels."""
    if not given.stored.output:
        raise Misuse("Missing option --output: `volux plan --help` shows an example")
    _refuse_others(given)
    inputs = (given.file, *([given.placed.like] if given.placed.like else ()))
    _output.refuse(given.path, (*inputs, *(given.placed.transform or ())), force=True)
    layout = _raw.layout(given.stored.raw, given.stored.voxel)
    source = _sources.opened(given.file, layout)
    wanted = _wanted(given, source)
    _refuse_idle(given, source, wanted)
    files = (given.path, given.stored.output, _ARRAY)
    filed = _planning.planned(source, wanted, given.layout(), files, layout)
    _refuse_beyond(filed, given.memory)
    _planning.begun(filed, given.path, force=force)
    if not quiet:
        for warning in _warnings(given, wanted):
            say(warning)
        say(f"{given.path}: {_size(filed)}")
    if as_json:
        print(text_of(filed.plan), end="")
    return SUCCESS


def _size(filed: Filed) -> str:
    tasks, unit = filed.plan.units.tasks, " x ".join(map(str, filed.plan.unit))
    shape = " x ".join(map(str, filed.plan.target.shape))
    return f"{shape} voxels in {tasks} tasks of {unit}, each {size_text(filed.plan.memory)} at most"


def _refuse_others(given: Given) -> None:
    """Refuse options of the other verb."""
    placed = given.placed
    others: dict[str, object]
    others = {"--spacing": placed.spacing, "--shape": placed.shape, "--scale": placed.scale}
    if given.verb == "resize":
        others = {"--like": placed.like, "--transform": placed.transform}
    elif placed.like is None and not placed.transform:
        raise Misuse("give --like, --transform or both: they say where the result lies")
    for name, value in others.items():
        if value:
            raise Misuse(f"{name} is not an option of {given.verb}")


def _refuse_idle(given: Given, source: Source, wanted: _planning.Wanted) -> None:
    """Refuse options that would have no effect."""
    refuse_outside(given.reading, wanted.options["outside"])
    refuse_overflow(given.filling.overflow, np.dtype(wanted.dtype), is_view=False)
    if given.stored.raw is not None and source.kind != "raw":
        raise Misuse(f"--raw {given.stored.raw}: {given.file} is {source.kind}, which says it")
    if given.stored.voxel is not None and not source.is_bare:
        raise Misuse(f"--voxel {given.stored.voxel}: {given.file} is {source.kind}, which says it")
    if given.verb == "resample" and is_said("align"):
        raise Misuse("--align is not an option of resample")


def _wanted(given: Given, source: Source) -> _planning.Wanted:
    options, dtype = given.options(source), _planning.dtype_of(source, given.filling.dtype)
    placed = given.placed
    if given.verb == "resample":
        return _planning.resampled(source, placed.like, placed.transform or [], options, dtype)
    sizes = {"spacing": placed.spacing, "shape": placed.shape, "scale": placed.scale}
    named = {name: text for name, text in sizes.items() if text is not None}
    if len(named) != 1:
        raise Misuse("give one of --spacing, --shape and --scale")
    [(name, text)] = named.items()
    value = counts(text, "--shape") if name == "shape" else numbers(text, f"--{name}")
    if min(value) <= 0:
        raise Misuse(f"--{name} {text}: must be above 0")
    return _planning.resized(
        source, {name: source.in_order(value), "align": placed.align}, options, dtype
    )


def _warnings(given: Given, wanted: _planning.Wanted) -> tuple[str, ...]:
    if given.verb == "resize" or given.filling.antialias is not None:
        return ()
    transform = wanted.transform
    matrix = getattr(transform, "matrix", np.eye(4))
    return aliasing(factors_of(matrix @ wanted.place.affine, wanted.source.grid.affine))


def _refuse_beyond(filed: Filed, memory: str | None) -> int | None:
    limit = None if memory is None else size(memory, "--memory")
    needed = filed.plan.memory
    if limit is not None and needed > limit:
        raise Refusal(
            f"{filed.plan.output['path']}: a task needs {size_text(needed)}, and --memory allows "
            f"{size_text(limit)}; plan smaller units"
        )
    return limit


class _Tally:
    """Which of the tasks have been made, and how many were there before."""

    def __init__(self, tasks: Sequence[int], told: Callable[[float], object] | None) -> None:
        self.tasks, self._told = tasks, told
        self.there = 0
        self.records: list[tuple[float, int]] = []

    def undone(self, filed: Filed) -> Iterator[int]:
        """Yield the tasks that have not been done."""
        for task in self.tasks:
            if is_done(filed, task):
                self.there += 1
            else:
                yield task

    def tell(self, record: Record) -> None:
        """Count a task that has been made."""
        self.records.append((record.seconds, record.memory))
        if self._told is not None:
            self._told((self.there + len(self.records)) / len(self.tasks))

    def facts(self, plan: str) -> dict[str, Any]:
        """Return what a run has done."""
        return {
            "plan": plan,
            "chosen": len(self.tasks),
            "made": len(self.records),
            "seconds": round(sum(seconds for seconds, _ in self.records), 6),
            "memory": max((memory for _, memory in self.records), default=0),
        }


def run(
    path: str,
    chosen: tuple[str | None, Sequence[str]],
    conduct: tuple[int, int | None, str | None],
    *,
    as_json: bool,
    quiet: bool,
    progress_as: str,
) -> int:
    """Make the units that are not there yet."""
    processes, threads, memory = conduct
    _refuse_below_1({"--processes": processes, "--threads": threads})
    filed = _found(path)
    _refuse_other_store(filed, path)
    limit = _refuse_beyond(filed, memory)
    tasks = _running.chosen(filed, *chosen)
    with progress(progress_as, "run") as told:
        tally = _Tally(tasks, told)
        todo = iter(tasks) if chosen[1] else tally.undone(filed)
        how: dict[str, Any] = {"processes": processes, "threads": threads, "limit": limit}
        _running.run(filed, todo, told=tally.tell, **how)
    facts = tally.facts(filed.id)
    if as_json:
        print(json.dumps(facts, indent=2))
    if not (as_json or quiet):
        made = facts["made"]
        say(f"{path}: units made: {made}; there before: {len(tasks) - made}")
    return SUCCESS


def _refuse_below_1(given: dict[str, int | None]) -> None:
    for name, number in given.items():
        if number is not None and number < 1:
            raise Misuse(f"{name} {number}: must be 1 or more")


def _found(path: str) -> Filed:
    filed = read(path)
    if not (filed.array / METADATA).exists():
        raise Refusal(f"{filed.store}: is not there, and {path} writes into it; plan again")
    return filed


def _refuse_other_store(filed: Filed, path: str) -> None:
    if (filed.array / METADATA).read_bytes() != filed.plan.metadata.encode():
        raise Refusal(f"{filed.store}: is not the store that {path} has begun; plan again")


def status(path: str, *, as_json: bool) -> int:
    """Print how far a result is."""
    filed = _found(path)
    facts = _running.state(filed)
    if as_json:
        print(json.dumps(facts, indent=2))
        return SUCCESS
    done = f"{facts['done']} of {facts['tasks']}"
    rows = {"store": str(filed.store), "units": done, "verified": _said(facts["complete"])}
    print(aligned(rows))
    return SUCCESS


def _said(complete: dict[str, str] | None) -> str:
    return "no" if complete is None else f"yes, {complete['decoded']}"


def verify(path: str, *, check: str, store: str | None, as_json: bool, quiet: bool) -> int:
    """Print what is wrong with a result, or mark it complete."""
    filed = _found(path) if store is None else read(path).moved(store)
    with progress("none" if quiet else "auto", "verify") as told:
        found = _verifying.verified(filed, decode=check == "decoded", told=told)
    facts = {
        "plan": filed.id,
        "tasks": filed.plan.units.tasks,
        "checked": check,
        "wrong": [wrong._asdict() for wrong in found.wrong],
        "complete": None if found.wrong else found.digests(),
    }
    if as_json:
        print(json.dumps(facts, indent=2))
    else:
        for wrong in found.wrong:
            print(*("-" if part is None else part for part in wrong), sep="\t")
    if found.wrong:
        return FAILURE
    if not (quiet or as_json):
        say(f"{filed.store}: is complete, {found.decoded}")
    return SUCCESS


def pyramid(
    path: str,
    wanted: tuple[int | None, bool | None],
    conduct: tuple[int, int | None, str | None],
    *,
    as_json: bool,
    quiet: bool,
) -> int:
    """Add levels to a store."""
    processes, threads, memory = conduct
    _refuse_below_1({"--processes": processes, "--threads": threads, "--levels": wanted[0]})
    store = _pyramid.Store(path).checked()
    labels = _pyramid.says_labels(store) if wanted[1] is None else wanted[1]
    count = _pyramid.wanted(store, wanted[0])
    with store.alone():
        while len(store.levels) < count:
            filed, factors = _pyramid.planned(store, labels=labels)
            limit = _refuse_beyond(filed, memory)
            _pyramid.begun(filed)
            _pyramid.make(filed, processes=processes, threads=threads, limit=limit, told=_nothing)
            store.add(filed.plan.output["array"], factors)
            if not quiet:
                shape = " x ".join(map(str, filed.plan.target.shape))
                say(f"{path}: level {filed.plan.output['array']}, {shape} voxels")
    if as_json:
        print(json.dumps({"store": path, "levels": store.image["datasets"]}, indent=2))
    return SUCCESS


def _nothing(_record: object) -> None:
    pass
