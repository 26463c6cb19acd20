"""Runs of plans: they stop and go on, share out the tasks, and what is wrong is named."""

import contextlib
import json
import os
import random
import resource
import shutil
import signal
import subprocess
import time
from pathlib import Path

import numpy as np
import pytest
import volux

from ..tool.runs import done, run, spawned, started, voxels
from .volumes import SHAPE, made, placed, planned, save_ome, tree_of, unit_of, wrong_in, zarr


def records():
    return {path.stem: path.read_text() for path in Path("out.volux").rglob("[0-9]*.json")}


@pytest.fixture(scope="module")
def _once(tmp_path_factory):
    folder = tmp_path_factory.mktemp("finished")
    with contextlib.chdir(folder):
        made("--scale", 2)
    return folder


@pytest.fixture
def finished(_once):
    """A result that has been made and verified."""
    shutil.copytree(_once, ".", dirs_exist_ok=True)


@pytest.fixture
def whole():
    """The tree of a result that one process has made in one run, and a plan that is not run."""
    plan = planned("--scale", 2)
    done("run", plan)
    tree = tree_of()
    planned("--scale", 2, "--force", file="image.zarr")
    return tree


ORDERS = {
    "one shard after the other": ["--shard 1/3", "--shard 2/3", "--shard 3/3"],
    "shards in another order": ["--shard 4/5", "--shard 1/2", "--shard 2/2"],
    "more shards than tasks": [f"--shard {n}/40" for n in range(40, 0, -1)],
    "task by task": [f"--task {n}" for n in random.Random(3).sample(range(1, 19), 18)],
    "every task twice": ["--shard 1/1", *[f"--task {n}" for n in range(1, 19)]],
    "a shard on two processes, the rest on one": ["--processes 2 --shard 2/2", "--shard 1/2"],
    "threads": ["--threads 3"],
}


@pytest.mark.parametrize("order", ORDERS)
def test_any_order_on_any_number_of_processes_makes_one_tree(whole, order):
    for typed in ORDERS[order]:
        done("run", "out.plan.json", *typed.split())
    assert tree_of() == whole


def test_the_tree_is_that_of_the_whole_computed_in_memory(whole):
    from hashlib import sha256

    from volux.scale._plan import read

    array = volux.resize(placed(voxels(SHAPE)), scale=2.0).array
    units = read("out.plan.json").plan.units
    lines = [
        f"{task + 1} {volux.digest(array[units.box(units.place(task))])}\n"
        for task in range(units.tasks)
    ]
    assert sha256("".join(lines).encode()).hexdigest() == whole["decoded"]


def test_runs_at_the_same_time_make_one_tree(whole):
    runs = [started("run", "out.plan.json", "--quiet") for _ in range(2)]
    said = [running.communicate(timeout=100) for running in runs]
    assert [running.returncode for running in runs] == [0, 0], said
    assert tree_of() == whole


def test_a_shard_has_its_part_of_the_tasks():
    done("run", planned("--scale", 2), "--shard", "2/3")
    assert sorted(map(int, records())) == list(range(7, 13))


def test_what_is_there_is_not_made_again():
    done("run", planned("--scale", 2), "--shard", "1/2")
    first = records()
    facts = json.loads(done("run", "out.plan.json", "--json"))
    assert (facts["chosen"], facts["made"]) == (18, 9)
    assert first.items() <= records().items()


def killed(plan, patience):
    """Start a run of two processes and kill all of it a while after its first unit."""
    before = len(records())
    running = started("run", plan, "--processes", "2", "--quiet", start_new_session=True)
    while running.poll() is None and len(records()) == before:
        time.sleep(0.01)
    time.sleep(patience)
    os.killpg(running.pid, signal.SIGKILL)
    running.communicate()


def test_runs_that_are_killed_go_on_until_the_tree_is_whole():
    plan = planned("--scale", 3, "--interp", "cubic")
    done("run", plan)
    whole, tasks = tree_of(), len(records())
    planned("--scale", 3, "--interp", "cubic", "--force", file="image.zarr")
    for patience in (0.0, 0.02, 0.05):
        killed(plan, patience)
    there = len(records())
    assert 3 <= there < tasks
    facts = json.loads(done("run", plan, "--json"))
    assert facts["made"] == tasks - there
    assert tree_of() == whole


@pytest.mark.parametrize(("number", "processes"), [(signal.SIGINT, 1), (signal.SIGTERM, 2)])
def test_a_signal_ends_a_run_and_leaves_no_partial_file(number, processes):
    plan = planned("--scale", 3, "--interp", "cubic")
    with started("run", plan, "--processes", processes, text=True) as running:
        while not records():
            time.sleep(0.01)
        running.send_signal(number)
        _, said = running.communicate(timeout=100)
    assert running.returncode == 130
    assert said.splitlines()[-1] == "volux: interrupted; run it again to go on"
    assert "Traceback" not in said
    assert list(Path().rglob("*.partial")) == []


def test_workers_end_with_the_run_that_has_started_them():
    plan = planned("--scale", 3, "--interp", "cubic")
    with started("run", plan, "--processes", "2", start_new_session=True) as running:
        while not records():
            time.sleep(0.01)
        running.kill()
    for _ in range(1000):
        if not _runs_in(running.pid):
            return
        time.sleep(0.02)
    pytest.fail("workers are still there")


def _runs_in(session):
    listed = subprocess.run(["ps", "-o", "pid=", "-s", str(session)], capture_output=True)
    return listed.stdout.split()


def test_a_disk_that_is_full_is_told_and_another_run_goes_on(whole):
    ran = spawned(
        "run",
        "out.plan.json",
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (3000, 3000)),
    )
    assert (ran.returncode, ran.stderr.count(b"\n")) == (1, 1)
    assert b"File too large" in ran.stderr
    assert list(Path().rglob("*.partial")) == []
    done("run", "out.plan.json")
    assert tree_of() == whole


def flipped_bit(unit):
    data = bytearray(unit.read_bytes())
    data[len(data) // 2] ^= 1
    unit.write_bytes(data)


def truncated(unit):
    unit.write_bytes(unit.read_bytes()[:-1])


def deleted(unit):
    unit.unlink()


def left_partial(unit):
    unit.with_name(unit.name + ".partial").write_bytes(b"half")


def record_of_another_plan(unit):
    path = next(path for path in Path("out.volux").rglob("5.json") if unit)
    path.write_text(json.dumps(json.loads(path.read_text()) | {"plan": 64 * "0"}))


def record_deleted(unit):
    next(path for path in Path("out.volux").rglob("5.json") if unit).unlink()


def record_cut_short(unit):
    path = next(path for path in Path("out.volux").rglob("5.json") if unit)
    path.write_text(path.read_text()[:40])


FAULTS = {
    flipped_bit: "has other bytes",
    truncated: "bytes instead of",
    deleted: "is missing",
    left_partial: "a partial file is beside it",
    record_of_another_plan: "its record is of another plan",
    record_deleted: "has no record",
    record_cut_short: "its record cannot be read",
}


@pytest.mark.parametrize("check", ["stored", "decoded"])
@pytest.mark.parametrize("fault", FAULTS, ids=lambda fault: fault.__name__)
@pytest.mark.usefixtures("finished")
def test_verify_names_the_unit_that_is_wrong(fault, check):
    fault(unit_of(5))
    found = wrong_in("out.plan.json", "--check", check)
    assert list(found) == [5]
    assert FAULTS[fault] in found[5]
    assert json.loads(done("status", "out.plan.json", "--json"))["complete"] is None


@pytest.mark.parametrize("fault", [fault for fault in FAULTS if fault is not flipped_bit])
@pytest.mark.usefixtures("finished")
def test_another_run_mends_what_is_wrong(fault):
    fault(unit_of(5))
    assert json.loads(done("run", "out.plan.json", "--json"))["made"] == 1
    assert wrong_in() == {}


@pytest.mark.usefixtures("finished")
def test_a_task_that_is_named_is_made_again():
    flipped_bit(unit_of(5))
    done("run", "out.plan.json", "--task", 5)
    assert wrong_in() == {}


@pytest.mark.usefixtures("finished")
def test_progress_of_another_run_begins_where_the_last_one_ended():
    deleted(unit_of(18))
    ended = run("run", "out.plan.json", "--progress", "plain")
    assert ended.err.startswith("volux: run: 100 %\n")


@pytest.mark.usefixtures("finished")
def test_several_tasks_are_made_again():
    for task in (2, 5, 9, 18):
        flipped_bit(unit_of(task))
    done("run", "out.plan.json", "--task", "5,2,2", "--task", 9, "--task", 18)
    assert wrong_in() == {}


def test_a_unit_of_nothing_but_fill_is_written_and_missed_when_it_is_deleted():
    save_ome(array=np.zeros(SHAPE, np.int16))
    made("--scale", 2, file="image.zarr")
    deleted(unit_of(7))
    assert wrong_in() == {7: "is missing"}


@pytest.mark.usefixtures("finished")
def test_bytes_that_another_record_describes_are_found_by_their_voxels():
    unit = unit_of(5)
    [path] = Path("out.volux").rglob("5.json")
    record = json.loads(path.read_text())
    path.write_text(json.dumps(record | {"decoded": 64 * "0"}))
    assert wrong_in() == {}
    assert wrong_in("out.plan.json", "--check", "decoded") == {5: "has other voxels"}
    assert unit.exists()


@pytest.mark.usefixtures("finished")
def test_files_that_are_no_units_are_named():
    Path("out.zarr/0/c/99").mkdir()
    for stray in ("c/99/0", "c/0/0/0.tmp", "notes.txt"):
        Path("out.zarr/0", stray).parent.mkdir(exist_ok=True)
        Path("out.zarr/0", stray).write_text("?")
    assert set(wrong_in()) == {"0/c/99/0", "0/c/0/0/0.tmp", "0/notes.txt"}


@pytest.mark.usefixtures("finished")
def test_other_metadata_are_named():
    metadata = Path("out.zarr/0/zarr.json")
    metadata.write_text(metadata.read_text().replace('"fill_value": 0', '"fill_value": 1'))
    assert set(wrong_in()) == {"0/zarr.json"}


@pytest.mark.usefixtures("finished")
def test_a_copy_of_a_store_is_verified_by_the_records_beside_it():
    shutil.copytree("out.zarr", "copy.zarr")
    shutil.copytree("out.volux", "copy.volux")
    assert wrong_in("out.plan.json", "--store", "copy.zarr") == {}
    flipped_bit(Path("copy.zarr") / unit_of(5).relative_to("out.zarr"))
    assert wrong_in("out.plan.json", "--store", "copy.zarr") == {5: "has other bytes"}
    assert wrong_in() == {}


@pytest.mark.usefixtures("finished")
def test_a_copy_without_records_is_verified_by_none():
    shutil.copytree("out.zarr", "copy.zarr")
    found = wrong_in("out.plan.json", "--store", "copy.zarr")
    assert set(found.values()) == {"has no record"}
    assert len(found) == 18


def test_a_result_is_complete_only_after_it_was_verified():
    plan = planned("--scale", 2)
    done("run", plan)
    assert json.loads(done("status", plan, "--json"))["complete"] is None
    tree = tree_of()
    assert tree.items() <= json.loads(done("status", plan, "--json"))["complete"].items()
    done("run", plan, "--task", 1)
    assert json.loads(done("status", plan, "--json"))["complete"] is None


def test_a_run_without_its_store_is_refused():
    plan = planned("--scale", 2)
    shutil.rmtree("out.zarr")
    assert "out.zarr: is not there" in run("run", plan).err


def test_a_run_into_the_store_of_another_plan_is_refused():
    save_ome()
    planned("--scale", 2, "--plan", "first.json", file="image.zarr")
    done("plan", "resize", "image.zarr", "-o", "out.zarr", "--shape", 9, "--force")
    assert "is not the store that first.json has begun" in run("run", "first.json").err


MISUSES = {
    "--shard 0/3": "must be a part of a number of parts, such as 1/8",
    "--shard 4/3": "such as 1/8",
    "--shard half": "such as 1/8",
    "--task 0": "must be 1 to 18",
    "--task 19": "must be 1 to 18",
    "--task 3,19": "--task 19: must be 1 to 18",
    "--task 3,": "must be 1 to 18",
    "--task 3-5": "or several such as 1,5,9",
    "--task 1 --shard 1/2": "exclude one another",
    "--processes 0": "must be 1 or more",
    "--memory much": "must be a size",
}


@pytest.mark.parametrize("typed", MISUSES)
def test_wrong_use_of_a_run_is_told(typed):
    ended = run("run", planned("--scale", 2), *typed.split())
    assert (ended.code, ended.err.count("\n"), MISUSES[typed] in ended.err) == (2, 1, True), ended


def test_a_source_that_is_broken_is_told():
    plan = planned("--scale", 2)
    chunk = Path("image.zarr/0/c/0/0/0")
    chunk.write_bytes(chunk.read_bytes()[:20])
    ended = run("run", plan)
    assert (ended.code, ended.err.count("\n")) == (1, 1)
    assert "image.zarr: zarr cannot read it" in ended.err
    assert zarr.open_array("out.zarr/0", mode="r").shape == (40, 54, 66)
