"""What must never fail: kills, full disks, any shards, hosts of their own, and large sources.

With VOLUX_LONG=1 there are 4,096 tasks and a source of 8 GiB, which takes minutes.
"""

import contextlib
import json
import os
import random
import resource
import signal
import subprocess
import time
from hashlib import sha256
from pathlib import Path

import numpy as np
import pytest
import volux

from ..tool.runs import PROGRAM, done, spawned, started, voxels
from .test_running import records
from .test_workers import workers_of
from .volumes import SHAPE, placed, planned, save_ome, tree_of, wrong_in, zarr

LONG = os.environ.get("VOLUX_LONG") == "1"
ALONG = 16 if LONG else 4  # units along each axis
PROCESSES = 8 if LONG else 2
SECONDS = 100 if LONG else 6  # for which processes are killed
PAUSE = 0.5 if LONG else 0.1
SIZES = ("12m", "22m", "80m") if LONG else ("250k", "400k", "4m")


def many(*options):
    """Plan a result of many tiny units."""
    typed = ("--shape", 8 * ALONG, "--interp", "cubic")
    return planned(*typed, *options, file="image.zarr", chunk=8, unit=8)


def without_record():
    """How many units there are, or have been begun, whose record is not there."""
    units = {path.name.removesuffix(".partial") + str(path.parent) for path in _units()}
    return len(units) - len(records())


def _units():
    return [path for path in Path("out.zarr/0/c").rglob("*") if path.is_file()]


def killed_at_random(plan, generator):
    """Run a plan, kill processes until time is up, and count kills and tasks that were lost."""
    kills = lost = 0
    end = time.monotonic() + SECONDS
    while time.monotonic() < end:
        typed = ("run", plan, "--processes", PROCESSES, "--quiet")
        running = started(*typed, start_new_session=True)
        while not kills and not list(workers_of(running)):
            time.sleep(0.001)  # so that one at least is killed however fast they are
        while running.poll() is None and time.monotonic() < end and generator.random() < 0.9:
            time.sleep(bool(kills) * PAUSE * generator.uniform(0.5, 1.5))
            workers = list(workers_of(running)) if running.poll() is None else []
            for pid in workers[:1] if generator.random() < 0.5 else workers[1:]:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, signal.SIGKILL)
                    kills += 1
        if running.poll() is None:
            kills += len(list(workers_of(running)))
            os.killpg(running.pid, signal.SIGKILL)
        running.communicate()
        lost += without_record()
        if len(records()) == ALONG**3:
            break
    return kills, lost


def _mounted(size, *more):
    typed = ["mount", "-t", "tmpfs", "-o", ",".join([*more, f"size={size}"]), "tmpfs", "disk"]
    return subprocess.run(typed, capture_output=True, check=False).returncode == 0


@pytest.fixture
def disk():
    """A folder that is on a small disk, if one can be made."""
    Path("disk").mkdir()
    has_disk = _mounted(SIZES[0])
    yield has_disk
    if has_disk:
        subprocess.run(["umount", "--lazy", "disk"], check=True)


def test_a_run_that_is_killed_at_random_loses_no_more_than_the_tasks_at_hand(capsys):
    save_ome()
    plan = many()
    done("run", plan)
    whole = tree_of()
    many("--force")
    kills, lost = killed_at_random(plan, random.Random(1))
    left = ALONG**3 - len(records())
    facts = json.loads(done("run", plan, "--processes", PROCESSES, "--json"))
    assert kills > 0
    assert lost <= kills
    assert facts["made"] == left
    assert tree_of() == whole
    with capsys.disabled():
        print(f" {kills} kills, {lost} tasks lost, {left} of {ALONG**3} left;", end="")


def test_a_disk_that_is_full_twice_loses_nothing(disk):
    if not disk:
        pytest.skip("no disk can be made: it takes root")
    save_ome()
    done("run", many())
    whole = tree_of()
    typed = ("--shape", 8 * ALONG, "--interp", "cubic", "--chunk", 8)
    done("plan", "resize", "image.zarr", "-o", "disk/out.zarr", *typed)
    plan, there = "disk/out.plan.json", []
    for size in SIZES[1:]:
        ended = spawned("run", plan, "--processes", PROCESSES, "--quiet")
        assert (ended.returncode, ended.stderr.count(b"\n")) == (1, 1), ended
        assert b"No space left" in ended.stderr
        there.append(json.loads(done("status", plan, "--json"))["done"])
        assert _mounted(size, "remount")
    assert 0 < there[0] < there[1] < ALONG**3
    done("run", plan)
    assert tree_of(plan)["decoded"] == whole["decoded"]


def of_the_whole(plan):
    """The digest of a tree by the whole computed in memory."""
    from volux.scale._plan import read

    array = volux.resize(placed(voxels(SHAPE)), scale=2.0).array
    units = read(plan).plan.units
    digests = (volux.digest(array[units.box(units.place(n))]) for n in range(units.tasks))
    lines = "".join(f"{n} {digest}\n" for n, digest in enumerate(digests, 1))
    return sha256(lines.encode()).hexdigest()


@pytest.mark.parametrize("seed", range(20 if LONG else 4))
def test_any_shards_in_any_order_with_every_task_twice_make_the_whole(seed):
    generator = random.Random(seed)
    parts = generator.randint(1, 25)
    plan = planned("--scale", 2)
    shards = generator.sample(range(1, parts + 1), parts)
    for part in shards:
        done("run", plan, "--shard", f"{part}/{parts}", "--quiet")
    again = ",".join(map(str, generator.sample(range(1, 19), 18)))
    done("run", plan, "--task", again, "--quiet")
    assert tree_of()["decoded"] == of_the_whole(plan)


def test_hosts_that_share_a_folder_alone_make_the_whole():
    alone = ("unshare", "--net", "--uts")
    try:
        subprocess.run([*alone, "true"], capture_output=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        pytest.skip("no host of its own can be made: it takes root")
    plan = planned("--scale", 2)
    typed = [*PROGRAM, "run", plan, "--quiet", "--shard"]
    hosts = [subprocess.Popen([*alone, *typed, f"{part}/3"]) for part in (1, 2, 3)]
    assert [host.wait(timeout=100) for host in hosts] == [0, 0, 0]
    assert tree_of()["decoded"] == of_the_whole(plan)


def test_a_source_larger_than_the_memory_that_is_allowed_is_reduced():
    planes, limit = (4096, 1 << 30) if LONG else (512, 3 << 28)
    with Path("x.raw").open("wb") as file:
        file.truncate(planes * 1024 * 1024 * 2)
        file.seek((planes - 8) * 1024 * 1024 * 2)
        file.write(np.full((8, 1024, 1024), 700, np.uint16).tobytes())
    shape = f"--shape=128,128,{planes // 8}"
    typed = (shape, "--raw", f"uint16,1024,1024,{planes}", "--memory", "512MB", "--unit", 64)
    done("plan", "resize", "x.raw", "-o", "out.zarr", *typed, "--codec", "none")
    bounds = (resource.RLIMIT_DATA, (limit, limit))
    ran = spawned(
        *("run", "out.plan.json", "--quiet"),
        preexec_fn=lambda: resource.setrlimit(*bounds),
        timeout=900,
    )
    assert ran.returncode == 0, ran.stderr
    assert wrong_in() == {}
    assert max(json.loads(record)["memory"] for record in records().values()) < 512 * 10**6
    made = zarr.open_array("out.zarr/0", mode="r")[...]
    assert (made[:-2].max(), made[-1].min() > 300) == (0, True)
    Path("x.raw").unlink()
