"""A task: what makes one unit, and the record of it."""

from __future__ import annotations

import json
import time
from dataclasses import asdict, dataclass
from functools import cached_property
from pathlib import Path

import numpy as np

import volux
from volux import Image
from volux._displacement import Transform
from volux._types import Array, Box
from volux.scale import _memory, _store
from volux.scale._codec import Codec
from volux.scale._plan import Filed
from volux.scale._signals import held
from volux.scale._sources import Source
from volux.scale._support import support
from volux.scale._units import extents, key
from volux.tool._errors import Refusal
from volux.tool._meanwhile import Meanwhile

_FOLDER = 1000  # records in a folder


@dataclass(frozen=True)
class Record:
    """What a task has done: the digests of its voxels and bytes, and what it took."""

    plan: str
    task: int
    unit: str
    decoded: str
    stored: str
    size: int
    seconds: float
    memory: int

    def text(self) -> str:
        """Return the text of its file."""
        return json.dumps(asdict(self), indent=2) + "\n"


def record_path(filed: Filed, task: int) -> Path:
    """Return where the record of a task is; tasks are counted from 1."""
    return filed.records / str(task // _FOLDER) / f"{task}.json"


def recorded(filed: Filed, task: int) -> Record | None:
    """Return the record of a task; None if there is none of this plan."""
    try:
        record = Record(**_store.parsed(record_path(filed, task).read_bytes()))
    except (FileNotFoundError, ValueError, TypeError):
        return None
    return record if (record.plan, record.task) == (filed.id, task) else None


def unit_path(filed: Filed, task: int) -> Path:
    """Return where the unit of a task is."""
    return filed.array / key(filed.plan.units.place(task - 1))


def is_done(filed: Filed, task: int) -> bool:
    """Whether a task has a record, and its unit is there."""
    record = recorded(filed, task)
    path = unit_path(filed, task)
    if record is None or path.with_name(path.name + _store.PARTIAL).exists():
        return False
    return path.is_file() and path.stat().st_size == record.size


class Worker:
    """Makes units of a plan, one after the other."""

    def __init__(self, filed: Filed, threads: int | None = None, limit: int | None = None) -> None:
        self.filed = filed
        self._threads = threads
        self._limit = limit
        self._plan = filed.plan
        self._source_grid, self._target = self._plan.source.grid, self._plan.target.grid
        self._codec = Codec(self._plan.metadata)

    @cached_property
    def _source(self) -> Source:
        return self.filed.source()

    @cached_property
    def _transform(self) -> Transform | None:
        return self.filed.transform()

    def make(self, task: int) -> Record:
        """Make a unit, write it, and then the record of it."""
        began = time.perf_counter()
        index = self._plan.units.place(task - 1)
        voxels = self.voxels(self._plan.units.box(index))
        decoded = Meanwhile(lambda: volux.digest(voxels))
        with held():
            pieces = self._codec.encoded(voxels)
        stored = Meanwhile(lambda: _store.digest_of(*pieces))
        path = self.filed.array / key(index)
        _store.put(path, *pieces)
        record = Record(
            plan=self.filed.id,
            task=task,
            unit=f"{self._plan.output['array']}/{key(index)}",
            decoded=decoded.result(),
            stored=stored.result(),
            size=sum(map(len, pieces)),
            seconds=round(time.perf_counter() - began, 6),
            memory=_memory.peak(),
        )
        _store.put(record_path(self.filed, task), record.text().encode(), is_kept=False)
        return record

    def voxels(self, box: Box) -> Array:
        """Return the voxels of a box of the result."""
        options = self._plan.options
        need = support(self._source_grid, self._target, box, self._transform, options)
        self._refuse_beyond(need, box)
        with held():
            read = self._source.read(need)
        brick = Image.brick(read, self._source_grid[need])
        made = np.empty(extents(box), self._plan.dtype)
        try:
            volux.resample(
                brick,
                self._target[box],
                transform=self._transform,
                out=made,
                threads=self._threads,
                **options,
            )
        except ValueError as error:
            raise Refusal(str(error)) from None
        return made

    def _refuse_beyond(self, need: Box, box: Box) -> None:
        if self._limit is None:
            return
        at_once = self._source.at_once + _memory.of_transform(self._transform)
        dtypes = self._source.dtype, self._plan.dtype
        amount = _memory.needed(extents(need), extents(box), dtypes, at_once, self._plan.unit)
        if amount > self._limit:
            raise Refusal(f"a task needs {amount} bytes, and --memory allows {self._limit}")
