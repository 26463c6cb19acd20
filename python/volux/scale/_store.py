"""The store that is written: its metadata, and its units one by one."""

from __future__ import annotations

import errno
import fcntl
import json
import math
import os
from hashlib import sha256
from importlib.metadata import version
from pathlib import Path
from typing import Any
from uuid import uuid4

import numpy as np

from volux._types import Ints
from volux.scale._needed import zarr
from volux.tool._errors import Refusal

PARTIAL = ".partial"
METADATA = "zarr.json"
RECORDS = ".volux"  # the folder beside a store

_NO_LOCKS = (errno.ENOSYS, errno.ENOLCK, errno.EOPNOTSUPP)


def records_of(store: Path) -> Path:
    """Return the folder beside a store that says what has been done."""
    if store.name in ("", ".."):  # it is . or the folder above, whose own name is needed
        store = Path(os.path.abspath(store))
    return store.with_name(store.stem + RECORDS)


def array_metadata(
    shape: Ints, dtype: str, chunk: Ints, unit: Ints, *, fill: float, codec: str
) -> str:
    """Return the metadata of an array as zarr writes them."""
    store: dict[str, Any] = {}
    zarr().create_array(
        zarr().storage.MemoryStore(store),
        shape=shape,
        dtype=dtype,
        chunks=chunk,
        shards=None if chunk == unit else unit,
        compressors=_compressor(codec),
        fill_value=np.dtype(dtype).type(fill).item(),
        dimension_names=("z", "y", "x"),
    )
    return str(store[METADATA].to_bytes().decode())


def _compressor(codec: str) -> Any:
    from zarr import codecs

    if codec == "zstd":
        return codecs.ZstdCodec(level=1)
    return None if codec == "none" else codecs.BloscCodec(cname="lz4", shuffle="shuffle")


def versions() -> dict[str, str]:
    """Return the versions of what encodes."""
    return {name: version(name) for name in ("numcodecs", "zarr")}


def group_metadata(attributes: dict[str, Any]) -> str:
    """Return the metadata of a group with attributes."""
    return _text({"zarr_format": 3, "node_type": "group", "attributes": attributes})


def _text(facts: dict[str, Any]) -> str:
    return json.dumps(facts, indent=2, allow_nan=False) + "\n"


def strict(number: float) -> float | str:
    """Return a number as JSON has it, in which Zarr spells those that are not finite."""
    if math.isfinite(number):
        return number
    return "NaN" if math.isnan(number) else "Infinity" if number > 0 else "-Infinity"


def loose(number: float | str) -> float:
    """Return the number that `strict` has spelt."""
    return float(number) if isinstance(number, str) else number


def parsed(text: str | bytes) -> Any:
    """Return what JSON says; ValueError for what is none, and for what is nested too deeply."""
    try:
        return json.loads(text)
    except RecursionError as error:
        raise ValueError(str(error)) from None


def facts_of(path: Path) -> dict[str, Any]:
    """Return the object in a file of JSON, or say that the file is damaged."""
    try:
        facts = parsed(path.read_bytes())
    except ValueError:
        facts = None
    if not isinstance(facts, dict):
        raise Refusal(f"{path}: is damaged: it is no object of JSON")
    return facts


def put(path: Path, *pieces: bytes | memoryview, is_kept: bool = True) -> None:
    """Write a file beside its place, and rename it when it is whole.

    Two that write the same file take turns by a lock, which goes with the process that holds it;
    so what a killed one has left is simply written again. On a file system without locks each has
    a file of its own, and what a killed one has left stays.

    Parameters
    ----------
    path : Path
        Its folder is made.
    pieces : bytes or memoryview
        All of it, one after the other.
    is_kept : bool
        Whether its bytes must outlive a failure of power wherever its name does. A name that is
        lost is found missing, and its task is done again.
    """
    path.parent.mkdir(parents=True, exist_ok=True)
    partial = path.with_name(path.name + PARTIAL)
    try:
        descriptor = _locked(partial)
    except _LocklessError:
        partial.unlink(missing_ok=True)
        partial = path.with_name(f"{path.name}.{uuid4().hex}{PARTIAL}")
        descriptor = _opened(partial)
    try:
        os.ftruncate(descriptor, 0)
        for piece in pieces:
            rest = memoryview(piece)
            while rest:
                rest = rest[os.write(descriptor, rest) :]
        if is_kept:
            os.fsync(descriptor)
        os.replace(partial, path)
    except BaseException:
        if _is_at(descriptor, partial):  # else it has its name, and another writes here
            partial.unlink()
        raise
    finally:
        os.close(descriptor)


class _LocklessError(Exception):
    """A file system, perhaps of a cluster, that has no locks."""


def _locked(partial: Path) -> int:
    while True:
        descriptor = _opened(partial)
        try:
            fcntl.flock(descriptor, fcntl.LOCK_EX)
            if _is_at(descriptor, partial):
                return descriptor
        except BaseException as error:
            os.close(descriptor)
            if isinstance(error, OSError) and error.errno in _NO_LOCKS:
                raise _LocklessError from error
            raise
        os.close(descriptor)  # the one before has renamed it meanwhile


def _opened(partial: Path) -> int:
    return os.open(partial, os.O_RDWR | os.O_CREAT, 0o666)


def _is_at(descriptor: int, path: Path) -> bool:
    """Whether a path still leads to an open file."""
    try:
        return os.path.samestat(os.fstat(descriptor), path.stat())
    except FileNotFoundError:
        return False


def digest_of(*pieces: bytes | memoryview) -> str:
    """Return the SHA-256 of bytes, one piece after the other."""
    found = sha256()
    for piece in pieces:
        found.update(piece)
    return found.hexdigest()
