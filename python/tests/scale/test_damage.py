"""What is damaged is named, and what nobody can make sense of is told in one line."""

import errno
import fcntl
import json
import os
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
from volux.scale import _store

from ..tool.runs import done, run, voxels
from .volumes import SHAPE, made, matches, planned, save_ome, wrong_in, zarr


@pytest.fixture(scope="module")
def _once(tmp_path_factory):
    import contextlib

    folder = tmp_path_factory.mktemp("leveled")
    with contextlib.chdir(folder):
        made("--scale", 1)
        done("pyramid", "out.zarr", "--levels", 3)
    return folder


@pytest.fixture
def leveled(_once):
    """A result with levels."""
    import shutil

    shutil.copytree(_once, ".", dirs_exist_ok=True)


BROKEN = {
    "cut short": "{",
    "no JSON": "?",
    "a list": "[]",
    "another object": "{}",
    "no text": "\xff",
}


def edited(path, of, to):
    text = Path(path).read_text()
    assert of in text
    Path(path).write_text(text.replace(of, to, 1))


GROUPS = {
    "another unit": ("millimeter", "meter"),
    "another place": ('"translation": [\n', '"translation": [\n1, '),
    "another name": ('"name": "out"', '"name": "other"'),
    "another level": ('"path": "1"', '"path": "5"'),
}


@pytest.mark.parametrize("name", GROUPS)
@pytest.mark.usefixtures("leveled")
def test_other_metadata_of_the_group_are_named(name):
    assert wrong_in() == {}
    edited("out.zarr/zarr.json", *GROUPS[name])
    assert wrong_in()["zarr.json"] == "is not as planned"


@pytest.mark.parametrize("text", BROKEN.values(), ids=BROKEN)
@pytest.mark.parametrize("name", ["zarr.json", "0/zarr.json", "2/zarr.json"])
@pytest.mark.usefixtures("leveled")
def test_broken_metadata_are_named(name, text):
    Path("out.zarr", name).write_bytes(text.encode("latin-1"))
    assert wrong_in() == {name: "is not as planned"}


@pytest.mark.parametrize("text", BROKEN.values(), ids=BROKEN)
@pytest.mark.usefixtures("leveled")
def test_broken_files_end_in_one_sentence_that_names_them(text):
    Path("out.volux/0/complete.json").write_bytes(text.encode("latin-1"))
    Path("out.zarr/zarr.json").write_bytes(text.encode("latin-1"))
    for typed, name in (
        ("status out.plan.json", "out.volux/0/complete.json"),
        ("pyramid out.zarr", "out.zarr"),
        ("plan resize out.zarr -o x.zarr --scale 1", "out.zarr"),
    ):
        ended = run(*typed.split())
        assert (ended.code, ended.out, ended.err.count("\n")) == (1, "", 1)
        assert name in ended.err
        assert "reason that it should have said" not in ended.err


STRAYS = ["0/c/00/0/0", "0/c/0/0/00", "0/c/0/0/9", "0/c/0/0/0/0", "notes.txt", "7/zarr.json"]


@pytest.mark.parametrize("name", STRAYS)
@pytest.mark.usefixtures("leveled")
def test_strays_are_named(name):
    path = Path("out.zarr", name)
    if Path("out.zarr/0/c/0/0/0") in path.parents:
        Path("out.zarr/0/c/0/0/0").unlink()
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("{}")
    found = wrong_in()
    assert name in found or name.split("/")[0] in found


@pytest.mark.usefixtures("leveled")
def test_the_folder_where_the_user_is_may_be_a_store(monkeypatch):
    monkeypatch.chdir("out.zarr")
    done("pyramid", ".", "--levels", 4)
    assert wrong_in("../out.plan.json", "--store", ".") == {}
    assert Path("../out.volux/3/plan.json").exists()


@pytest.mark.usefixtures("leveled")
def test_a_store_is_no_plan():
    for verb in ("run", "status", "verify"):
        ended = run(verb, "out.zarr")
        assert (ended.code, ended.err.count("\n")) == (1, 1)
        assert "out.zarr: is a folder; name the file that volux plan has written" in ended.err


@pytest.mark.usefixtures("leveled")
def test_json_that_is_nested_too_deeply_is_damaged():
    Path("out.volux/0/0/1.json").write_text("[" * 100_000)
    assert wrong_in() == {1: "its record cannot be read"}
    for name in ("out.plan.json", "out.zarr/zarr.json"):
        Path(name).write_text("[" * 100_000)
        ended = run("status", "out.plan.json") if "plan" in name else run("pyramid", "out.zarr")
        assert (ended.code, ended.err.count("\n")) == (1, 1)
        assert "reason that it should have said" not in ended.err


def test_a_volume_without_voxels_is_refused():
    zarr.create_array("empty.zarr", shape=(4, 0, 4), chunks=(4, 4, 4), dtype="u1")
    ended = run("plan", "resize", "empty.zarr", "-o", "out.zarr", "--scale", 2)
    said = "volux: empty.zarr: has the extents (4, 0, 4); plans read one volume\n"
    assert (ended.code, ended.err) == (1, said)


TRANSFORMATIONS = {
    "scale of 0": [{"type": "scale", "scale": [1, 0, 1]}],
    "scale below 0": [{"type": "scale", "scale": [1, -1, 1]}],
    "scale of NaN": [{"type": "scale", "scale": [1, float("nan"), 1]}],
    "long scale": [{"type": "scale", "scale": [1, 1, 1, 1]}],
    "short translation": [{"type": "translation", "translation": [1]}],
    "scale of a number": [{"type": "scale", "scale": 2}],
    "scale of words": [{"type": "scale", "scale": ["a", "b", "c"]}],
    "infinite translation": [{"type": "translation", "translation": [1, float("inf"), 1]}],
    "no list": 3,
}


@pytest.mark.parametrize("name", TRANSFORMATIONS)
def test_places_that_cannot_be_are_refused(name):
    save_ome()
    path = Path("image.zarr/zarr.json")
    facts = json.loads(path.read_text())
    dataset = facts["attributes"]["ome"]["multiscales"][0]["datasets"][0]
    dataset["coordinateTransformations"] = TRANSFORMATIONS[name]
    path.write_text(json.dumps(facts))
    ended = run("plan", "resize", "image.zarr", "-o", "out.zarr", "--scale", 2)
    assert (ended.code, ended.err.count("\n")) == (1, 1), ended
    assert "image.zarr: its OME-Zarr metadata" in ended.err


@pytest.mark.parametrize(("fill", "spelt"), [("nan", "NaN"), ("inf", "Infinity"), ("-inf", None)])
def test_fills_that_are_not_finite_are_strict_json(fill, spelt):
    save_ome(array=voxels(SHAPE).astype(np.float32))
    np.savetxt("move.txt", np.eye(4) + np.pad([[9.0]] * 3, ((0, 1), (3, 0))))
    printed = planned("-t", "move.txt", f"--fill={fill}", file="image.zarr", verb="resample")
    matches("unit_plan", Path(printed).read_text())
    for path in (Path(printed), Path("out.zarr/0/zarr.json")):
        json.loads(path.read_text(), parse_constant=pytest.fail)
    assert json.loads(Path(printed).read_text())["options"]["fill"] == (spelt or "-Infinity")
    done("run", printed)
    assert wrong_in() == {}
    array = zarr.open_array("out.zarr/0", mode="r")
    assert np.array_equal(array.fill_value, float(fill), equal_nan=True)
    assert np.array_equal(array[-1, -1, -1], float(fill), equal_nan=True)


def test_what_another_one_writes_beside_its_place_is_left_alone(monkeypatch):
    path = Path("unit")
    replace = os.replace

    def replaced(of, to):
        replace(of, to)
        Path(of).write_text("another's")
        raise KeyboardInterrupt

    monkeypatch.setattr(os, "replace", replaced)
    with pytest.raises(KeyboardInterrupt):
        _store.put(path, b"mine")
    assert (path.read_text(), Path("unit.partial").read_text()) == ("mine", "another's")


WRITING = """
import errno, fcntl, sys
from pathlib import Path
from volux.scale import _store
def refuse(*_):
    raise OSError(errno.ENOSYS, "")
if sys.argv[2] == "no locks":
    fcntl.flock = refuse
for _ in range(20):
    _store.put(Path("unit"), sys.argv[1].encode() * 5000)
"""


@pytest.mark.parametrize("locks", ["locks", "no locks"])
def test_processes_that_write_the_same_file_all_end_well(locks):
    writers = [subprocess.Popen([sys.executable, "-c", WRITING, digit, locks]) for digit in "0123"]
    assert [writer.wait() for writer in writers] == [0] * 4
    data = Path("unit").read_bytes()
    assert data == data[:1] * 5000
    assert os.listdir() == ["unit"]


def test_a_lock_that_fails_otherwise_is_told(monkeypatch):
    def fail(*_):
        raise OSError(errno.EIO, "Input/output error")

    monkeypatch.setattr(fcntl, "flock", fail)
    with pytest.raises(OSError, match="Input/output"):
        _store.put(Path("unit"), b"mine")
