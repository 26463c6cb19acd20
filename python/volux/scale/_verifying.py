"""Whether a result is what its plan made, unit by unit."""

from __future__ import annotations

import json
import os
from collections.abc import Callable, Iterator
from hashlib import sha256
from pathlib import Path
from typing import Any, NamedTuple

import volux
from volux.scale import _levels, _store
from volux.scale._codec import Codec
from volux.scale._plan import Filed
from volux.scale._running import complete_path
from volux.scale._tasks import Record, record_path
from volux.scale._units import extents, key
from volux.tool._errors import Refusal

# What opening says of a file that is not there; any other failure is no answer.
_ABSENT = (FileNotFoundError, NotADirectoryError, IsADirectoryError)


class Wrong(NamedTuple):
    """A unit that is not as its record says; or a file that is none."""

    task: int | None
    unit: str
    what: str


class Verified(NamedTuple):
    """What was found."""

    wrong: list[Wrong]
    decoded: str  # of the digests of all voxels
    stored: str  # of the digests of all bytes, and of the metadata

    def digests(self) -> dict[str, str]:
        """Return the digests of the tree."""
        return {"decoded": self.decoded, "stored": self.stored}


def verified(filed: Filed, *, decode: bool, told: Callable[[float], object] | None) -> Verified:
    """Compare a store with its records, and mark it complete if nothing is wrong."""
    array = filed.plan.output["array"]
    units = filed.plan.units
    codec = Codec(filed.plan.metadata)
    decoded, stored = sha256(), sha256(filed.plan.metadata.encode())
    wrong = list(_strays(filed))
    for task in range(1, units.tasks + 1):
        found = _checked(filed, task, codec if decode else None)
        if isinstance(found, str):
            wrong.append(Wrong(task, f"{array}/{key(units.place(task - 1))}", found))
        else:
            decoded.update(f"{task} {found.decoded}\n".encode())
            stored.update(f"{task} {found.stored} {found.size}\n".encode())
        if told is not None:
            told(task / units.tasks)
    return _marked(filed, Verified(wrong, decoded.hexdigest(), stored.hexdigest()))


def _checked(filed: Filed, task: int, codec: Codec | None) -> Record | str:
    """Return the record of a unit, or what is wrong."""
    index = filed.plan.units.place(task - 1)
    path = filed.array / key(index)
    try:
        record = Record(**_store.parsed(record_path(filed, task).read_bytes()))
    except FileNotFoundError:
        return "has no record"
    except (ValueError, TypeError):
        return "its record cannot be read"
    if record.plan != filed.id or record.task != task:
        return "its record is of another plan"
    if path.with_name(path.name + _store.PARTIAL).exists():
        return "a partial file is beside it"
    try:
        data = path.read_bytes()
    except _ABSENT:
        return "is missing"
    if len(data) != record.size:
        return f"has {len(data)} bytes instead of {record.size}"
    if _store.digest_of(data) != record.stored:
        return "has other bytes"
    if codec is not None and not _has_voxels(codec, data, filed, index, record):
        return "has other voxels"
    return record


def _has_voxels(codec: Codec, data: bytes, filed: Filed, index: Any, record: Record) -> bool:
    shape = extents(filed.plan.units.box(index))
    try:
        return volux.digest(codec.decoded(data, shape)) == record.decoded
    except Exception:  # whatever a codec says of bytes that are not its own
        return False


def _strays(filed: Filed) -> Iterator[Wrong]:
    """Yield what is neither a unit nor the metadata of the plan."""
    array = filed.plan.output["array"]
    if not _has(filed.array / _store.METADATA, filed.plan.metadata):
        yield Wrong(None, f"{array}/{_store.METADATA}", "is not as planned")
    if filed.plan.group:
        yield from _strays_of_group(filed)
    counts = filed.plan.units.counts
    for folder, _, files in os.walk(filed.array):
        for name in files:
            path = (Path(folder) / name).relative_to(filed.array)
            if not _is_known(path.as_posix().removesuffix(_store.PARTIAL), counts):
                yield Wrong(None, f"{filed.plan.output['array']}/{path}", "is no unit of the plan")


def _is_known(name: str, counts: tuple[int, int, int]) -> bool:
    first, *numbers = name.split("/")
    if first == _store.METADATA and not numbers:
        return True
    return (
        first == "c"
        and len(numbers) == 3
        and all(
            text.isdecimal() and text == str(int(text)) and int(text) < n
            for text, n in zip(numbers, counts, strict=True)
        )
    )


def _has(path: Path, text: str) -> bool:
    try:
        return path.read_bytes() == text.encode()
    except _ABSENT:
        return False


def _strays_of_group(filed: Filed) -> Iterator[Wrong]:
    """Yield what is wrong in a store beside its finest level."""
    levels = _levels_of(filed)
    if levels is None:
        yield Wrong(None, _store.METADATA, "is not as planned")
        return
    for level in levels:
        plan = _store.records_of(filed.store) / level / "plan.json"
        try:
            metadata = str(_store.facts_of(plan)["metadata"])
        except (*_ABSENT, KeyError, Refusal):
            yield Wrong(None, level, "is a level whose plan cannot be read")
            continue
        if not _has(filed.store / level / _store.METADATA, metadata):
            yield Wrong(None, f"{level}/{_store.METADATA}", "is not as planned")
    known = {_store.METADATA, _store.METADATA + _store.PARTIAL, filed.plan.output["array"], *levels}
    for path in filed.store.iterdir():
        if path.name not in known and not _is_begun(filed, path.name):
            yield Wrong(None, path.name, "is no part of the plan")


def _is_begun(filed: Filed, level: str) -> bool:
    return (_store.records_of(filed.store) / level / "plan.json").is_file()


def _levels_of(filed: Filed) -> list[str] | None:
    """Return the levels beside the finest; None if the metadata are not those of the plan."""
    planned = json.loads(filed.plan.group)
    try:
        found = _store.facts_of(filed.store / _store.METADATA)
        datasets = found["attributes"]["ome"]["multiscales"][0]["datasets"]
        finest, more = planned["attributes"]["ome"]["multiscales"][0]["datasets"][0], datasets[1:]
        del datasets[1:]
    except (*_ABSENT, Refusal, KeyError, IndexError, TypeError):
        return None
    if found != planned or more != _levels.of(finest, filed.plan.target.shape, len(more)):
        return None
    return [level["path"] for level in more]


def _marked(filed: Filed, found: Verified) -> Verified:
    path = complete_path(filed)
    if found.wrong:
        path.unlink(missing_ok=True)
        return found
    facts = {"plan": filed.id, "tasks": filed.plan.units.tasks, **found.digests()}
    _store.put(path, (json.dumps(facts, indent=2) + "\n").encode())
    return found
