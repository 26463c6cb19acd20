"""Volumes in dask have the bits of the whole, and small graphs."""

import pickle
from concurrent.futures import ThreadPoolExecutor
from functools import partial
from pathlib import Path

import numpy as np
import pytest
import volux

from ..tool.runs import voxels
from .volumes import SHAPE, placed, planned, wrong_in, zarr

da = pytest.importorskip("dask.array")

import volux.dask  # noqa: E402

TURN = np.array([[0.8, -0.6, 0, 4.5], [0.6, 0.8, 0.1, -3], [0, 0.05, 1, 1], [0, 0, 0, 1]])
IMAGE = placed(voxels(SHAPE))


def in_zarr():
    return zarr.create_array("image.zarr", data=IMAGE.array, chunks=(7, 8, 9))


def in_dask():
    return da.from_array(IMAGE.array, chunks=(7, (13, 1, 13), 9))


CALLS = [
    {"grid": volux.Grid.of_spacing(IMAGE, 0.9), "outside": "extend"},
    {"transform": volux.Affine(TURN), "interpolation": "cubic", "fill": -7},
    {"transform": volux.Affine(TURN), "dtype": "float64", "border": "constant"},
    {"grid": volux.Grid.of_size(IMAGE, (9, 9, 9)), "antialias": "mean"},
]


@pytest.mark.parametrize("image", [in_zarr, in_dask])
@pytest.mark.parametrize("call", CALLS, ids=range(len(CALLS)))
def test_chunks_have_the_bits_of_the_whole(image, call):
    found = volux.dask.resample(image(), place=IMAGE.grid, chunks=(8, 16, 10), **call)
    whole = volux.resample(IMAGE, **{"antialias": None, **call}).array
    assert (found.dtype, found.shape) == (whole.dtype, whole.shape)
    assert np.array_equal(found.compute(scheduler="threads"), whole)


@pytest.mark.parametrize("image", [in_zarr, in_dask])
def test_without_a_place_the_world_is_the_index_space(image):
    moved = volux.Affine(np.eye(4) + np.pad([[0.25], [0.5], [1.5]], ((0, 1), (3, 0))))
    whole = volux.resample(IMAGE.array, transform=moved, antialias=None)
    found = volux.dask.resample(image(), transform=moved)
    assert np.array_equal(found.compute(scheduler="sync"), whole)


@pytest.mark.parametrize("image", [in_zarr, in_dask])
def test_a_part_of_a_result_reads_and_makes_its_part_alone(image):
    found = volux.dask.resample(image(), place=IMAGE.grid, **CALLS[0], chunks=8)
    whole = volux.resample(IMAGE, **CALLS[0]).array
    assert np.array_equal(found[3:5, 20:, 9].compute(scheduler="sync"), whole[3:5, 20:, 9])


@pytest.mark.parametrize(("image", "others"), [(in_zarr, 2), (in_dask, 1)])
def test_the_graph_has_one_small_node_for_each_chunk(image, others):
    source = image()
    found = volux.dask.resample(source, place=IMAGE.grid, **CALLS[0], chunks=8)
    before = dict(getattr(source, "dask", {}))
    own = {key: node for key, node in dict(found.dask).items() if key not in before}
    assert len(own) == found.npartitions + others
    assert max(len(pickle.dumps(own[key])) for key in own if isinstance(key, tuple)) < 1000


@pytest.mark.parametrize("image", [in_zarr, in_dask])
def test_a_graph_can_be_sent_to_another_process(image):
    found = volux.dask.resample(image(), place=IMAGE.grid, **CALLS[0], chunks=16)
    again = pickle.loads(pickle.dumps(found))
    assert np.array_equal(again.compute(scheduler="sync"), found.compute(scheduler="sync"))


def test_tasks_of_a_plan_are_made_by_whatever_maps_numbers():
    plan = planned("--scale", 2)
    tasks = volux.dask.undone(plan)
    assert tasks == list(range(1, 19))
    with ThreadPoolExecutor(2) as client:
        sizes = list(client.map(partial(volux.dask.make, plan), tasks))
    assert min(sizes) > 0
    assert (volux.dask.undone(plan), wrong_in(plan)) == ([], {})


def test_a_plan_that_is_written_anew_is_read_anew():
    plan = planned("--scale", 2)
    volux.dask.make(plan, 1)
    planned("--scale", 2, "--interp", "cubic", "--force", file="image.zarr")
    for task in volux.dask.undone(plan):
        volux.dask.make(plan, task)
    assert (volux.dask.undone(plan), wrong_in(plan)) == ([], {})


def test_a_unit_that_is_made_again_takes_away_that_a_result_is_complete():
    plan = planned("--scale", 2)
    for task in volux.dask.undone(plan):
        volux.dask.make(plan, task)
    assert wrong_in(plan) == {}
    volux.dask.make(plan, 3)
    assert not Path("out.volux/0/complete.json").exists()


FAILURES = [
    (lambda: volux.dask.resample(IMAGE.array), TypeError, "image is a ndarray; allowed are arr"),
    (lambda: volux.dask.resample(in_dask()[0]), ValueError, "it must have three axes, z first"),
    (lambda: volux.dask.resample(in_dask().astype("i8")), TypeError, "image has the dtype int64; "),
    (lambda: volux.dask.resample(in_dask(), IMAGE), TypeError, "grid is a Image; it must be"),
    (lambda: volux.dask.resample(in_dask(), chunks=0), ValueError, "chunks=0 must be 1 or more"),
    (lambda: volux.dask.resample(in_dask(), interpolation="bspline"), ValueError, "bspline"),
    (lambda: volux.dask.resample(in_dask(), dtype="uint8"), ValueError, "dtype"),
    (lambda: volux.dask.resample(in_dask(), out=IMAGE.array), TypeError, "takes no out="),
    (
        lambda: volux.dask.resample(in_dask(), place=IMAGE.grid[1:]),
        ValueError,
        r"place has the shape \(19, 27, 33\)",
    ),
]


@pytest.mark.parametrize(("call", "error", "words"), FAILURES, ids=[f[2] for f in FAILURES])
def test_a_wrong_call_is_told_before_anything_is_computed(call, error, words):
    with pytest.raises(error, match=words):
        call()
