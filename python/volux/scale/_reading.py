"""How boxes are read: whole chunks, of which some are kept, and parts of mapped files."""

from __future__ import annotations

import mmap
from collections import OrderedDict
from collections.abc import Iterator, Sequence
from itertools import product
from math import prod
from threading import Lock
from typing import Any, TypeAlias

import numpy as np

from volux._types import Array

Slices: TypeAlias = tuple[slice, ...]
_Spans: TypeAlias = tuple[range, ...]  # of chunks, along each axis

# What is asked of zarr at once, unless a chunk is larger; it has all of it encoded and decoded.
_BLOCK = 8 << 20

# What is kept of chunks that neighbouring boxes read, too: so much and a box, or at most so much.
_KEPT, _MOST = 32 << 20, 96 << 20


def in_flight(array: Any) -> int:
    """Return the bytes that zarr has at once of chunks too large for a block: three copies."""
    chunk = _chunk_bytes(array) if hasattr(array, "chunks") else 0
    return 3 * chunk if chunk > _BLOCK else 0


def _chunk_bytes(array: Any) -> int:
    return int(prod(array.chunks) * np.dtype(array.dtype).itemsize)


class Chunks:
    """An array in chunks. Threads may share it."""

    def __init__(self, array: Any) -> None:
        self._array = array
        self._dtype = np.dtype(array.dtype).newbyteorder("=")
        self._each = _chunk_bytes(array)
        self._kept: OrderedDict[tuple[int, ...], Array] = OrderedDict()
        self._limit = 0
        self._lock = Lock()

    def read(self, box: Slices) -> Array:
        """Return the voxels of a box in this machine's byte order."""
        made = np.empty([along.stop - along.start for along in box], self._dtype)
        self._limit = min(_MOST, _KEPT + made.nbytes)
        spans = tuple(
            range(along.start // by, -(-along.stop // by))
            for along, by in zip(box, self._array.chunks, strict=True)
        )
        for block in self._blocks(spans):
            self._fill(made, box, block)
        return made

    def _blocks(self, spans: _Spans) -> Iterator[_Spans]:
        left, counts = max(1, _BLOCK // self._each), []
        for span in reversed(spans):
            counts.append(min(len(span), left))
            left = max(1, left // counts[-1])
        parts = [
            [span[first : first + n] for first in range(0, len(span), n)]
            for span, n in zip(spans, reversed(counts), strict=True)
        ]
        return product(*parts)

    def _fill(self, made: Array, box: Slices, block: _Spans) -> None:
        missing = []
        for index in product(*block):
            kept = self._found(index)
            if kept is None:
                missing.append(index)
            else:
                _copy(kept, self._place([range(i, i + 1) for i in index]), made, box)
        if not missing:
            return
        around = [range(min(along), max(along) + 1) for along in zip(*missing, strict=True)]
        place = self._place(around)
        if self._each > _BLOCK:
            place = _shared(place, box)
        voxels = np.asarray(self._array[place])
        _copy(voxels, place, made, box)
        if self._each <= _BLOCK:
            self._keep(voxels, place, box, missing)

    def _place(self, spans: Sequence[range]) -> Slices:
        return tuple(
            slice(span.start * by, min(span.stop * by, n))
            for span, by, n in zip(spans, self._array.chunks, self._array.shape, strict=True)
        )

    def _found(self, index: tuple[int, ...]) -> Array | None:
        with self._lock:
            if index in self._kept:
                self._kept.move_to_end(index)
            return self._kept.get(index)

    def _keep(self, voxels: Array, place: Slices, box: Slices, missing: Any) -> None:
        """Keep the chunks that stick out of a box: its neighbours read them, too."""
        for index in missing:
            chunk = self._place([range(i, i + 1) for i in index])
            if _shared(chunk, box) == chunk:
                continue
            with self._lock:
                self._kept[index] = voxels[_seen_from(chunk, place)].copy()
                while len(self._kept) * self._each > self._limit:
                    self._kept.popitem(last=False)


def _shared(one: Slices, other: Slices) -> Slices:
    return tuple(
        slice(max(a.start, b.start), min(a.stop, b.stop)) for a, b in zip(one, other, strict=True)
    )


def _seen_from(box: Slices, whole: Slices) -> Slices:
    return tuple(
        slice(along.start - of.start, along.stop - of.start)
        for along, of in zip(box, whole, strict=True)
    )


def _copy(voxels: Array, place: Slices, made: Array, box: Slices) -> None:
    common = _shared(place, box)
    made[_seen_from(common, box)] = voxels[_seen_from(common, place)]


class Mapped:
    """An array in a file that is mapped."""

    def __init__(self, array: Any) -> None:
        self._array = np.asarray(array)
        self._mapping = _mapping_of(array)

    def read(self, box: Slices) -> Array:
        """Return the voxels of a box in this machine's byte order.

        The pages of a mapping count as memory of the process until it lets go of them.
        """
        part = self._array[box]
        made = np.empty_like(part, part.dtype.newbyteorder("="))
        slowest = int(np.argmax(np.abs(part.strides)))
        for to, of in zip(made.swapaxes(0, slowest), part.swapaxes(0, slowest), strict=True):
            to[...] = of
            self._mapping.madvise(mmap.MADV_DONTNEED)
        return made


def _mapping_of(array: Any) -> mmap.mmap:
    while not isinstance(array, mmap.mmap):
        array = array.base
    return array
