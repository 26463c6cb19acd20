"""Levels of a store: each voxel the mean of eight of the level before, or what they vote for."""

from __future__ import annotations

import json
import os
import shutil
from collections.abc import Callable, Iterator
from contextlib import contextmanager, suppress
from dataclasses import dataclass
from fcntl import LOCK_EX, LOCK_NB, flock
from functools import cached_property
from pathlib import Path
from typing import Any

import numpy as np

from volux._types import Ints, Matrix
from volux.scale import (
    _levels,
    _memory,
    _planning,
    _raw,
    _running,
    _sources,
    _store,
    _verifying,
)
from volux.scale._plan import Filed, Plan, identity, index_places, read, relative, text_of
from volux.tool._errors import Refusal


@dataclass(frozen=True)
class Store:
    """An OME-Zarr 0.5 whose axes are z, y and x."""

    path: str

    @property
    def metadata(self) -> Path:
        """The file of the group's metadata."""
        return Path(self.path) / _store.METADATA

    @property
    def records(self) -> Path:
        """The folder beside it."""
        return _store.records_of(Path(self.path))

    def checked(self) -> Store:
        """Return the store, unless it is of another form or not complete."""
        found = _sources.opened(self.path)
        if not self.metadata.exists() or found.kind != "OME-Zarr 0.5":
            raise Refusal(f"{self.path}: is {found.kind}; levels are added to OME-Zarr 0.5")
        if [axis["name"] for axis in self.image["axes"]] != ["z", "y", "x"]:
            raise Refusal(f"{self.path}: its axes are not z, y and x alone")
        if (self.records / "0").is_dir() and not (self.records / "0" / "complete.json").exists():
            raise Refusal(
                f"{self.path}: is not complete; volux run and volux verify its plan first"
            )
        self._refuse_other_levels()
        return self

    @contextmanager
    def alone(self) -> Iterator[None]:
        """Refuse another process that adds levels, as long as this one does."""
        self.records.mkdir(exist_ok=True)
        lock = os.open(self.records, os.O_RDONLY | os.O_DIRECTORY)
        try:
            with suppress(OSError):  # a file system without locks, where no one else has any
                try:
                    flock(lock, LOCK_EX | LOCK_NB)
                except BlockingIOError:
                    raise Refusal(f"{self.path}: another process adds levels to it now") from None
            yield
        finally:
            os.close(lock)

    def _refuse_other_levels(self) -> None:
        # The next level is named by their number, and is stored as they are.
        if self.levels != [str(number) for number in range(len(self.levels))]:
            raise Refusal(
                f"{self.path}: its levels are called {', '.join(self.levels)}, and not 0, 1, ...; "
                "plan a copy of it"
            )
        arrays = [_sources.opened(f"{self.path}/{level}").array for level in self.levels]
        if len({(array.chunks, array.shards) for array in arrays}) > 1:
            raise Refusal(f"{self.path}: its levels have different chunks; plan a copy of it")

    @property
    def facts(self) -> dict[str, Any]:
        """What the metadata say."""
        return _store.facts_of(self.metadata)

    @property
    def image(self) -> dict[str, Any]:
        """What they say about the image."""
        image: dict[str, Any] = self.facts["attributes"]["ome"]["multiscales"][0]
        return image

    @property
    def levels(self) -> list[str]:
        """The paths of the levels, the finest first."""
        return [level["path"] for level in self.image["datasets"]]

    @cached_property
    def finest(self) -> dict[str, Any]:
        """The metadata of the finest level's array."""
        path = Path(self.path) / self.levels[0] / _store.METADATA
        found = _store.facts_of(path)
        encoding = found["chunk_key_encoding"]
        if encoding["name"] != "default" or encoding.get("configuration", {}) not in _SLASHES:
            raise Refusal(f"{self.path}: its chunks are not named c/0/0/0; plan a copy of it")
        return found

    def add(self, path: str, factors: Ints) -> None:
        """Write a level into the metadata, as long as `factors` of the last one's voxels."""
        facts = self.facts
        levels = facts["attributes"]["ome"]["multiscales"][0]["datasets"]
        levels.append(
            {"path": path, "coordinateTransformations": _levels.coarser(levels[-1], factors)}
        )
        _store.put(self.metadata, (json.dumps(facts, indent=2) + "\n").encode())


_SLASHES: tuple[dict[str, str], ...] = ({}, {"separator": "/"})


def _to_source(factors: Ints) -> Matrix:
    """Return the map to voxels of the level before; its rows and columns are x, y and z."""
    to_source = np.zeros((3, 4))
    for row, factor in enumerate(reversed(factors)):
        to_source[row, row], to_source[row, 3] = factor, (factor - 1) / 2
    return to_source


_MEANS = {
    "interpolation": "linear",
    "border": "edge",
    "fill": 0,
    "outside": "extend",
    "antialias": "mean",
    "overflow": "saturate",
}


def planned(store: Store, *, labels: bool) -> tuple[Filed, Ints]:
    """Return the plan of the next level, and how much longer its voxels are."""
    path = str(len(store.levels))
    source = _sources.opened(f"{store.path}/{store.levels[-1]}")
    shape, factors = _levels.halved(source.grid.shape)
    folder = store.records / path
    own, target = index_places(source.grid, _to_source(factors), shape)
    options = _MEANS | ({"interpolation": "label"} if labels else {})
    unit, dtype = source.array.shards or source.array.chunks, source.dtype.name
    plan = Plan(
        verb="pyramid",
        input=_planning.input_of(source, folder, _raw.UNKNOWN),
        output={"path": relative(store.path, folder), "array": path},
        source=own,
        target=target,
        transform={"matrix": None, "files": []},
        options=options,
        dtype=dtype,
        chunk=tuple(source.array.chunks),
        unit=tuple(unit),
        codec={"name": "same", "versions": _store.versions()},
        metadata=json.dumps(store.finest | {"shape": list(shape), "attributes": {}}, indent=2),
        group="",
        memory=_memory.projected(
            own.grid, target.grid, unit, None, options, (dtype, dtype), source.at_once
        ),
    )
    return Filed(plan, identity(plan.facts()), folder), factors


def begun(filed: Filed) -> None:
    """Write the plan of a level and the metadata of its array, unless it has been begun before."""
    path, array = filed.folder / "plan.json", Path(os.path.normpath(filed.array))
    if array.exists() and not path.exists():
        raise Refusal(f"{array}: is there, but no level that volux has made; move it away")
    if (array / _store.METADATA).exists() and read(str(path)).id == filed.id:
        return
    for old in (array, filed.records):
        if old.exists():
            shutil.rmtree(old)
    _store.put(path, text_of(filed.plan).encode())  # first, so that what follows is known as ours
    _store.put(array / _store.METADATA, filed.plan.metadata.encode())


def make(
    filed: Filed,
    *,
    processes: int,
    threads: int | None,
    limit: int | None,
    told: Callable[[Any], None],
) -> None:
    """Make a level that is begun, and verify it."""
    tasks = _running.undone(filed, range(1, filed.plan.units.tasks + 1))
    _running.run(filed, tasks, processes=processes, threads=threads, limit=limit, told=told)
    wrong = _verifying.verified(filed, decode=False, told=None).wrong
    if wrong:
        raise Refusal(f"{filed.store}: {wrong[0].unit} {wrong[0].what}; remove {filed.folder}")


def wanted(store: Store, levels: int | None) -> int:
    """Return how many levels there shall be: until a level is one chunk, unless the user says."""
    if levels is not None:
        return levels
    source = _sources.opened(f"{store.path}/{store.levels[0]}")
    shape, count = source.grid.shape, 1
    while any(n > by for n, by in zip(shape, source.array.chunks, strict=True)):
        shape, count = _levels.halved(shape)[0], count + 1
    return count


def says_labels(store: Store) -> bool:
    """Whether the metadata say that the voxels are labels."""
    return "image-label" in store.facts["attributes"]["ome"]
