"""The codec: voxels of a unit to the bytes of its file, and back."""

from __future__ import annotations

import json
import threading
from typing import Any

import numpy as np

from volux._types import Array, Ints
from volux.scale._needed import zarr
from volux.scale._store import METADATA
from volux.scale._units import key

_FIRST = key((0, 0, 0))
_NONE = 2**64 - 1  # where the index of a shard says that a chunk lies outside of the array


class Codec:
    """Makes the bytes of units and reads them, by zarr and arrays of one unit in memory.

    Threads may share it; each has arrays of its own.
    """

    def __init__(self, metadata: str) -> None:
        facts = json.loads(metadata)
        self._units = _Arrays(facts)
        self._shards = _Shards(facts) if _has_index_behind(facts) else None

    def encoded(self, voxels: Array) -> list[memoryview]:
        """Return the bytes of a unit, piece by piece."""
        if self._shards is not None:
            return self._shards.encoded(voxels)
        return [self._units.encoded(voxels)[_FIRST]]

    def decoded(self, data: bytes, shape: Ints) -> Array:
        """Return the voxels of a unit."""
        return self._units.decoded(data, shape)


class _Shards:
    """Makes shards: the bytes of chunks, and an index behind them that says where each begins.

    zarr makes the same, but holds the bytes of all chunks twice when it joins them.
    """

    def __init__(self, facts: dict[str, Any]) -> None:
        sharding, unit = facts["codecs"][0]["configuration"], _chunk_shape(facts)
        self._counts = [n // by for n, by in zip(unit, sharding["chunk_shape"], strict=True)]
        self._chunks = _Arrays(facts | _stored(sharding["chunk_shape"], sharding["codecs"]))
        self._index = _Arrays(
            {"zarr_format": 3, "node_type": "array", "data_type": "uint64", "fill_value": 0}
            | {"chunk_key_encoding": {"name": "default"}, "attributes": {}}
            | _stored([*self._counts, 2], sharding["index_codecs"])
        )

    def encoded(self, voxels: Array) -> list[memoryview]:
        """Return the bytes of each chunk, and those of the index."""
        chunks = self._chunks.encoded(voxels)
        index = np.full((*self._counts, 2), _NONE, np.uint64)
        pieces, end = [], 0
        for place in np.ndindex(*self._counts):
            piece = chunks.get(key(place))
            if piece is not None:
                index[place] = end, len(piece)
                pieces.append(piece)
                end += len(piece)
        return [*pieces, *self._index.encoded(index).values()]


def _has_index_behind(facts: dict[str, Any]) -> bool:
    """Whether units are shards as this package plans them; levels may have others."""
    first, *others = facts["codecs"]
    is_shard = first["name"] == "sharding_indexed" and not others
    return is_shard and first["configuration"].get("index_location", "end") == "end"


def _chunk_shape(facts: dict[str, Any]) -> list[int]:
    found: list[int] = facts["chunk_grid"]["configuration"]["chunk_shape"]
    return found


def _stored(chunk: list[int], codecs: list[Any]) -> dict[str, Any]:
    grid = {"name": "regular", "configuration": {"chunk_shape": chunk}}
    return {"chunk_grid": grid, "codecs": codecs}


class _Arrays:
    """Arrays in memory of the same metadata, one for each shape and thread."""

    def __init__(self, facts: dict[str, Any]) -> None:
        self._facts = facts
        self._of_thread = threading.local()

    def encoded(self, values: Array) -> dict[str, memoryview]:
        """Return the bytes of chunks by their names."""
        array, store = self._of(values.shape)
        array[...] = values
        names = store.keys() - {METADATA}
        return {name: memoryview(store.pop(name).as_numpy_array()).cast("B") for name in names}

    def decoded(self, data: bytes, shape: Ints) -> Array:
        """Return the values of the only chunk."""
        array, store = self._of(shape)
        store[_FIRST] = _buffer(data)
        try:
            return np.asarray(array[...])
        finally:
            del store[_FIRST]

    def _of(self, shape: Any) -> tuple[Any, dict[str, Any]]:
        arrays = vars(self._of_thread)
        if shape not in arrays:
            text = json.dumps(self._facts | {"shape": list(shape)})
            store = {METADATA: _buffer(text.encode())}
            arrays[shape] = _opened(store), store
        found: tuple[Any, dict[str, Any]] = arrays[shape]
        return found


def _buffer(data: bytes) -> Any:
    from zarr.buffer.cpu import Buffer

    return Buffer.from_bytes(data)


_setting = threading.Lock()


def _opened(store: dict[str, Any]) -> Any:
    # A unit of nothing but fill is written, too: it shows that it was made.
    with _setting, zarr().config.set({"array.write_empty_chunks": True}):
        return zarr().open_array(zarr().storage.MemoryStore(store), mode="r+")
