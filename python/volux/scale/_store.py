"""The store that is written: its metadata, and its units one by one."""

from __future__ import annotations

import fcntl
import json
import math
import os
import threading
from hashlib import sha256
from importlib.metadata import version
from pathlib import Path
from typing import Any

import numpy as np

from volux._types import Array, Ints
from volux.scale._needed import zarr
from volux.tool._errors import Refusal

PARTIAL = ".partial"
METADATA = "zarr.json"
RECORDS = ".volux"  # the folder beside a store
_ONLY = "c/0/0/0"


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


def facts_of(path: Path) -> dict[str, Any]:
    """Return the object in a file of JSON, or say that the file is damaged."""
    try:
        facts = json.loads(path.read_bytes())
    except ValueError:
        facts = None
    if not isinstance(facts, dict):
        raise Refusal(f"{path}: is damaged: it is no object of JSON")
    return facts


def _buffer(data: bytes) -> Any:
    from zarr.buffer.cpu import Buffer

    return Buffer.from_bytes(data)


class Codec:
    """Makes the bytes of units and reads them, by zarr and an array of one unit in memory.

    Threads may share it; each has arrays of its own.
    """

    def __init__(self, metadata: str) -> None:
        self._metadata = json.loads(metadata)
        self._of_thread = threading.local()

    def encoded(self, voxels: Array) -> memoryview:
        """Return the bytes of a unit."""
        array, store = self._of(voxels.shape)
        array[...] = voxels
        return memoryview(store.pop(_ONLY).as_numpy_array()).cast("B")

    def decoded(self, data: bytes, shape: Ints) -> Array:
        """Return the voxels of a unit."""
        array, store = self._of(shape)
        store[_ONLY] = _buffer(data)
        try:
            return np.asarray(array[...])
        finally:
            del store[_ONLY]

    def _of(self, shape: Any) -> tuple[Any, dict[str, Any]]:
        arrays = vars(self._of_thread)
        if shape not in arrays:
            text = json.dumps(self._metadata | {"shape": list(shape)})
            store = {METADATA: _buffer(text.encode())}
            arrays[shape] = _opened(store), store
        found: tuple[Any, dict[str, Any]] = arrays[shape]
        return found


_setting = threading.Lock()


def _opened(store: dict[str, Any]) -> Any:
    # A unit of nothing but fill is written, too: it shows that it was made.
    with _setting, zarr().config.set({"array.write_empty_chunks": True}):
        return zarr().open_array(zarr().storage.MemoryStore(store), mode="r+")


def put(path: Path, data: bytes | memoryview, *, is_kept: bool = True) -> None:
    """Write a file beside its place, and rename it when it is whole.

    Two that write the same file take turns by a lock, which goes with the process that holds it;
    so what a killed one has left is simply written again.

    Parameters
    ----------
    path : Path
        Its folder is made.
    data : bytes or memoryview
        All of it.
    is_kept : bool
        Whether its bytes must outlive a failure of power wherever its name does. A name that is
        lost is found missing, and its task is done again.
    """
    partial = path.with_name(path.name + PARTIAL)
    descriptor = _locked(partial)
    try:
        os.ftruncate(descriptor, 0)
        rest = memoryview(data)
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


def _locked(partial: Path) -> int:
    partial.parent.mkdir(parents=True, exist_ok=True)
    while True:
        descriptor = os.open(partial, os.O_RDWR | os.O_CREAT, 0o666)
        try:
            fcntl.flock(descriptor, fcntl.LOCK_EX)
            if _is_at(descriptor, partial):
                return descriptor
        except BaseException:
            os.close(descriptor)
            raise
        os.close(descriptor)  # the one before has renamed it meanwhile


def _is_at(descriptor: int, path: Path) -> bool:
    """Whether a path still leads to an open file."""
    try:
        return os.path.samestat(os.fstat(descriptor), path.stat())
    except FileNotFoundError:
        return False


def digest_of(data: bytes | memoryview) -> str:
    """Return the SHA-256 of bytes."""
    return sha256(data).hexdigest()
