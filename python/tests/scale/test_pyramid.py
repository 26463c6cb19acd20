"""Levels: means or votes of the level before, in their place."""

import json
from pathlib import Path

import numpy as np
import pytest

from ..tool.runs import done, run, voxels
from .volumes import SCALE, SHAPE, TRANSLATION, made, matches, planned, save_ome, zarr


def eights(array):
    """The voxels that each voxel of the next level stands for; the last ones stand twice."""
    odd = [(0, 0 if n == 1 else n % 2) for n in array.shape]
    padded = np.pad(array, odd, "edge")
    steps = [1 if n == 1 else 2 for n in array.shape]
    parts = [
        padded[a :: steps[0], b :: steps[1], c :: steps[2]]
        for a in range(steps[0])
        for b in range(steps[1])
        for c in range(steps[2])
    ]
    return np.stack(parts).astype(float)


def mean(array):
    found = eights(array).mean(axis=0)
    whole = np.trunc(found) + np.copysign(abs(found - np.trunc(found)) >= 0.5, found)
    return whole.astype(array.dtype)


def levels_of(store):
    group = zarr.open_group(store, mode="r")
    [image] = group.attrs["ome"]["multiscales"]
    return [(level, group[level["path"]][...]) for level in image["datasets"]]


@pytest.mark.parametrize("shape", [SHAPE, (16, 16, 16), (1, 33, 9), (5, 1, 1)])
def test_a_voxel_is_the_mean_of_eight_and_odd_extents_stay(shape):
    save_ome(array=voxels(shape))
    done("pyramid", "image.zarr", "--levels", 4)
    (_, finest), *coarser = levels_of("image.zarr")
    assert np.array_equal(finest, voxels(shape))
    for _, found in coarser:
        finest = mean(finest)
        assert np.array_equal(found, finest)
    assert len(coarser) == 3


@pytest.mark.parametrize("place", ["start", "end"])
def test_shards_may_have_their_index_at_either_end(place):
    save_ome(shards={"shape": (14, 14, 21), "index_location": place})
    done("pyramid", "image.zarr", "--levels", 2)
    (_, finest), (_, coarser) = levels_of("image.zarr")
    assert np.array_equal(coarser, mean(finest))


def test_levels_lie_where_the_voxels_they_stand_for_do():
    save_ome(unit="micrometer", factor=1000.0)
    done("pyramid", "image.zarr", "--levels", 3)
    for n, (level, _) in enumerate(levels_of("image.zarr")):
        scale, shift = level["coordinateTransformations"]
        long = np.array(SCALE) * 1000 * 2**n
        assert np.allclose(scale["scale"], long)
        first_edge = np.array(TRANSLATION) * 1000 - np.array(SCALE) * 500
        assert np.allclose(np.array(shift["translation"]) - long / 2, first_edge)


def test_labels_vote():
    labels = np.zeros((4, 4, 4), np.uint8)
    labels[:2, :2, :2].flat[:] = [7, 9, 7, 9, 9, 2, 9, 1]
    save_ome(array=labels)
    done("pyramid", "image.zarr", "--levels", 2, "--labels")
    assert levels_of("image.zarr")[1][1][0, 0, 0] == 9
    assert set(np.unique(levels_of("image.zarr")[1][1])) == {0, 9}


def test_labels_of_a_plan_are_labels_of_its_pyramid():
    save_ome(array=voxels(SHAPE).clip(0, 3))
    made("--scale", 1, "--interp", "label", file="image.zarr", chunk=8)
    done("pyramid", "out.zarr")
    coarse = levels_of("out.zarr")[1][1]
    assert set(np.unique(coarse)) <= {0, 1, 2, 3}
    assert not np.array_equal(coarse, mean(voxels(SHAPE).clip(0, 3)))


def test_there_are_levels_until_one_is_a_chunk():
    made("--scale", 1)
    done("pyramid", "out.zarr")
    shapes = [found.shape for _, found in levels_of("out.zarr")]
    assert shapes == [SHAPE, (10, 14, 17), (5, 7, 9), (3, 4, 5)]


def test_levels_are_stored_as_the_finest_is():
    made("--scale", 1, "--codec", "blosc")
    done("pyramid", "out.zarr", "--levels", 2)
    first, second = (zarr.open_array(f"out.zarr/{n}", mode="r").metadata.to_dict() for n in (0, 1))
    assert first | {"shape": None} == second | {"shape": None}


def test_the_first_level_is_still_right_when_others_are_there():
    made("--scale", 1)
    done("pyramid", "out.zarr", "--processes", 2)
    assert run("verify", "out.plan.json").code == 0
    assert run("verify", "out.volux/1/plan.json").code == 0


def test_the_same_command_goes_on_where_it_was():
    made("--scale", 1)
    done("pyramid", "out.zarr", "--levels", 2)
    level = Path("out.zarr/1/c/0/0/0").stat().st_mtime_ns
    done("pyramid", "out.zarr", "--levels", 3)
    assert Path("out.zarr/1/c/0/0/0").stat().st_mtime_ns == level
    assert len(levels_of("out.zarr")) == 3


def test_a_level_that_was_begun_is_finished(monkeypatch):
    from volux.scale import _tasks

    made("--scale", 1, unit=8)
    make = _tasks.Worker.make
    monkeypatch.setattr(_tasks.Worker, "make", lambda self, task: make(self, 1 // (task < 3)))
    assert run("pyramid", "out.zarr", "--levels", 2).code == 1
    monkeypatch.setattr(_tasks.Worker, "make", make)
    assert len(levels_of("out.zarr")) == 1
    done("pyramid", "out.zarr", "--levels", 2)
    assert np.array_equal(levels_of("out.zarr")[1][1], mean(voxels(SHAPE)))


def test_json_has_the_form_that_is_committed():
    save_ome()
    printed = done("pyramid", "image.zarr", "--levels", 2, "--json", "--quiet")
    matches("pyramid", printed)
    assert json.loads(printed)["levels"] == [level for level, _ in levels_of("image.zarr")]


def not_verified():
    done("run", planned("--scale", 1))


def old():
    save_ome("out.zarr", version="0.4")


def plain():
    zarr.create_array("out.zarr", data=voxels(SHAPE))


def channels():
    save_ome("out.zarr", voxels((1, *SHAPE)), axes="czyx")


def dots():
    save_ome("out.zarr")
    path = Path("out.zarr/0/zarr.json")
    path.write_text(path.read_text().replace('"separator": "/"', '"separator": "."'))


REFUSALS = {
    not_verified: (1, "is not complete; volux run and volux verify its plan first"),
    old: (1, "is OME-Zarr 0.4; levels are added to OME-Zarr 0.5"),
    plain: (1, "is Zarr 3; levels are added"),
    channels: (1, "its axes are not z, y and x alone"),
    dots: (1, "its chunks are not named c/0/0/0"),
}


@pytest.mark.parametrize("prepare", REFUSALS, ids=lambda prepare: prepare.__name__)
def test_what_levels_cannot_be_added_to_is_refused(prepare):
    prepare()
    before = Path("out.zarr/zarr.json").exists() and Path("out.zarr/zarr.json").read_text()
    ended = run("pyramid", "out.zarr")
    code, words = REFUSALS[prepare]
    assert (ended.code, ended.err.count("\n"), words in ended.err) == (code, 1, True), ended
    after = Path("out.zarr/zarr.json").exists() and Path("out.zarr/zarr.json").read_text()
    assert after == before


def test_two_processes_at_once_are_refused_and_the_first_goes_on():
    from volux.scale._pyramid import Store

    save_ome()
    with Store("image.zarr").alone():
        ended = run("pyramid", "image.zarr", "--levels", 2)
    assert (ended.code, ended.err.count("\n")) == (1, 1)
    assert "image.zarr: another process adds levels to it now" in ended.err
    assert len(levels_of("image.zarr")) == 1
    done("pyramid", "image.zarr", "--levels", 2)


def test_levels_that_are_not_called_0_1_2_are_refused_and_stay(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    store = zarr.open_group("one.zarr", mode="w", zarr_format=3)
    array = store.create_array("1", shape=(8, 8, 8), chunks=(4, 4, 4), dtype="uint8")
    array[...] = 7
    axes = [{"name": name, "type": "space", "unit": "millimeter"} for name in "zyx"]
    scale = [{"type": "scale", "scale": [1.0, 1.0, 1.0]}]
    datasets = [{"path": "1", "coordinateTransformations": scale}]
    store.attrs["ome"] = {"version": "0.5", "multiscales": [{"axes": axes, "datasets": datasets}]}
    ended = run("pyramid", "one.zarr", "--levels", "2")
    assert (ended.code, "its levels are called 1" in ended.err) == (1, True)
    assert (zarr.open_array("one.zarr/1", mode="r")[...] == 7).all()
