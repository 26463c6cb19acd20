"""Workers: those that are killed are replaced, and Ctrl-C ends all of them."""

import contextlib
import os
import re
import signal
import time
from pathlib import Path

import pytest
from volux.scale import _running

from ..tool.runs import started
from .test_running import records
from .volumes import planned, wrong_in


def workers_of(running):
    children = Path(f"/proc/{running.pid}/task/{running.pid}/children").read_text().split()
    for pid in map(int, children):
        with contextlib.suppress(OSError):
            if b"spawn_main" in Path(f"/proc/{pid}/cmdline").read_bytes():
                yield pid


def test_a_worker_that_is_killed_is_replaced():
    plan = planned("--scale", 3, "--interp", "cubic")
    with started("run", plan, "--processes", "2", "--quiet", text=True) as running:
        while not records():
            time.sleep(0.01)
        first = set(workers_of(running))
        os.kill(max(first), signal.SIGKILL)
        _, said = running.communicate(timeout=100)
    assert (running.returncode, len(first), said) == (0, 2, "")
    assert wrong_in() == {}


def test_workers_share_the_processors_out():
    plan = planned("--scale", 3, "--interp", "cubic")
    with started("run", plan, "--processes", "2", "--quiet", text=True) as running:
        while len(records()) < 4:
            time.sleep(0.01)
        shares = [os.sched_getaffinity(pid) for pid in workers_of(running)]
        allowed = os.sched_getaffinity(running.pid)
        running.communicate(timeout=100)
    assert set().union(*shares) == allowed
    assert sum(map(len, shares)) == max(2, len(allowed))


@pytest.mark.parametrize(
    ("allowed", "shares"),
    [([0, 1, 2, 5, 7], [[0, 5], [1, 7], [2]]), ([3, 4], [[3], [4], [3]]), ([6], [[6], [6], [6]])],
)
def test_three_workers_share_any_number_of_processors_out(monkeypatch, allowed, shares):
    monkeypatch.setattr(os, "sched_getaffinity", lambda _: set(allowed))
    assert _running._shares(3) == shares


def test_workers_are_free_where_processors_cannot_be_chosen(monkeypatch):
    monkeypatch.delattr(os, "sched_getaffinity")
    assert _running._shares(2) == [[], []]


def test_workers_that_are_killed_as_they_start_are_replaced():
    plan = planned("--scale", 2)
    killed = set()
    with started("run", plan, "--processes", "2", "--quiet", text=True) as running:
        while len(killed) < 8 and running.poll() is None:
            for pid in set(workers_of(running)) - killed:
                os.kill(pid, signal.SIGKILL)
                killed.add(pid)
        _, said = running.communicate(timeout=100)
    assert (running.returncode, said) == (0, "")
    assert wrong_in() == {}


@pytest.mark.parametrize("patience", [0.0, 0.05, 0.3])
def test_ctrl_c_while_workers_start_is_one_line(patience):
    plan = planned("--scale", 2)
    with started("run", plan, "--processes", "2", text=True, start_new_session=True) as running:
        while running.poll() is None and not set(workers_of(running)):
            time.sleep(0.001)
        time.sleep(patience)
        os.killpg(running.pid, signal.SIGINT)
        _, said = running.communicate(timeout=100)
    assert (running.returncode, said) == (130, "volux: interrupted; run it again to go on\n")


def test_a_task_whose_workers_are_killed_again_and_again_is_told():
    plan = planned("--scale", 3, "--interp", "cubic")
    with started("run", plan, "--processes", "2", text=True) as running:
        while running.poll() is None:
            for pid in workers_of(running) if running.poll() is None else ():
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, signal.SIGKILL)
            time.sleep(0.01)
        _, said = running.communicate(timeout=100)
    assert running.returncode == 1
    assert re.match(r"volux: (task \d+: 3|12) processes were killed", said)
    assert said.endswith("run fewer processes, or plan smaller units\n")
    assert said.count("\n") == 1
