"""How boxes are read: how often each chunk is decoded, and what is kept of a mapped file."""

import itertools

import numpy as np
import pytest
from volux.scale import _reading
from volux.scale._units import Units

from ..tool.runs import voxels
from .volumes import zarr

SHAPE = (37, 41, 64)


class Counted:
    """An array that counts how often each of its chunks is decoded."""

    def __init__(self, array):
        self.array, self.decoded = array, 0
        self.chunks, self.shape, self.dtype = array.chunks, array.shape, array.dtype

    def __getitem__(self, box):
        spans = zip(box, self.chunks, strict=True)
        self.decoded += int(np.prod([-(-s.stop // by) - s.start // by for s, by in spans]))
        return self.array[box]


def counted(chunks, shards=None):
    array = voxels(SHAPE)
    return array, Counted(
        zarr.create_array("a.zarr", data=array, chunks=chunks, shards=shards, overwrite=True)
    )


@pytest.mark.parametrize("block", [1, 5000, _reading._BLOCK])
@pytest.mark.parametrize("chunks", [(8, 8, 8), (37, 41, 64), (5, 41, 7)])
def test_boxes_in_any_order_are_those_of_the_whole(monkeypatch, block, chunks):
    monkeypatch.setattr(_reading, "_BLOCK", block)
    array, source = counted(chunks)
    reader = _reading.Chunks(source)
    generator = np.random.default_rng(4)
    for _ in range(60):
        ends = [np.sort(generator.choice(n + 1, 2, replace=False)) for n in SHAPE]
        box = tuple(slice(int(a), int(b)) for a, b in ends)
        assert np.array_equal(reader.read(box), array[box])


def test_hardly_a_chunk_is_decoded_again_for_the_units_that_share_it():
    _, source = counted((8, 8, 8), (8, 16, 32))
    units = Units(SHAPE, (8, 8, 8))
    reader = _reading.Chunks(source)
    for task in range(units.tasks):
        box = units.box(units.place(task))
        reader.read(
            tuple(slice(s.start, min(s.stop + 2, n)) for s, n in zip(box, SHAPE, strict=True))
        )
    assert units.tasks <= source.decoded < 1.01 * units.tasks


def test_what_is_kept_of_chunks_is_bounded(monkeypatch):
    monkeypatch.setattr(_reading, "_MOST", 3000)
    _, source = counted((8, 8, 8))
    reader = _reading.Chunks(source)
    for a, b, c in itertools.product(range(3), repeat=3):
        reader.read(np.s_[a : a + 20, b : b + 20, c : c + 20])
        assert sum(chunk.nbytes for chunk in reader._kept.values()) <= 3000


def test_a_mapped_file_does_not_stay_in_memory():
    np.save("x.npy", np.zeros((64, 1024, 1024), np.uint8))
    reader = _reading.Mapped(np.load("x.npy", mmap_mode="r"))
    before = _resident()
    for first in range(64):
        reader.read(np.s_[first : first + 1, :, :])
    assert _resident() - before < 20 << 20


def _resident():
    from volux.tool._memory import resident

    return resident()
