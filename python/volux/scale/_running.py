"""Runs of plans: which tasks, on how many processes, and how far they are."""

from __future__ import annotations

import json
import multiprocessing
import multiprocessing.connection
import os
import signal
import threading
from collections.abc import Callable, Iterator
from concurrent.futures import FIRST_COMPLETED, Future, ProcessPoolExecutor, wait
from concurrent.futures.process import BrokenProcessPool
from itertools import islice
from pathlib import Path
from typing import Any

from volux.scale._needed import zarr
from volux.scale._plan import Filed
from volux.scale._tasks import Record, Worker, is_done
from volux.tool._errors import INTERRUPTED, Misuse, Refusal

# Tasks that a process has at hand, so that it need not wait for the next one.
_AT_HAND = 3


class Interruption(Refusal):
    """What has been made stays, and another run goes on."""

    code = INTERRUPTED


def chosen(filed: Filed, shard: str | None, task: int | None) -> range:
    """Return the tasks that options choose, from 1."""
    tasks = filed.plan.units.tasks
    if task is not None:
        if shard is not None:
            raise Misuse("--shard and --task exclude one another")
        if not 1 <= task <= tasks:
            raise Misuse(f"--task {task}: must be 1 to {tasks}")
        return range(task, task + 1)
    part, parts = _fraction(shard or "1/1")
    return range(tasks * (part - 1) // parts + 1, tasks * part // parts + 1)


def _fraction(shard: str) -> tuple[int, int]:
    part, _, parts = shard.partition("/")
    if part.isdecimal() and parts.isdecimal() and 1 <= int(part) <= int(parts):
        return int(part), int(parts)
    raise Misuse(f"--shard {shard}: must be a part of a number of parts, such as 1/8")


def run(
    filed: Filed,
    tasks: Iterator[int],
    *,
    processes: int,
    threads: int | None,
    limit: int | None,
    told: Callable[[Record], None],
) -> None:
    """Make the units of tasks, and tell the record of each."""
    complete_path(filed).unlink(missing_ok=True)  # until it is verified again
    if processes == 1:
        worker = Worker(filed, threads, limit)
        try:
            for task in tasks:
                told(worker.make(task))
        except KeyboardInterrupt:
            raise Interruption("interrupted; run it again to go on") from None
        return
    context = multiprocessing.get_context("spawn")
    setting = (filed, threads or 1, limit)
    with ProcessPoolExecutor(processes, context, _begin, setting) as pool:
        _shared_out(pool, tasks, processes * _AT_HAND, told)


def _shared_out(
    pool: ProcessPoolExecutor, tasks: Iterator[int], most: int, told: Callable[[Record], None]
) -> None:
    waiting: set[Future[Record]] = set()
    try:
        waiting = {pool.submit(_make, task) for task in islice(tasks, most)}
        while waiting:
            done, waiting = wait(waiting, return_when=FIRST_COMPLETED)
            for future in done:
                told(future.result())
                waiting |= {pool.submit(_make, task) for task in islice(tasks, 1)}
    except KeyboardInterrupt:
        raise Interruption("interrupted; run it again to go on") from None
    except BrokenProcessPool:
        raise Refusal(
            "a process was killed, perhaps for want of memory; run it again to go on"
        ) from None
    finally:
        for future in waiting:
            future.cancel()


_worker: Worker | None = None


def _begin(filed: Filed, threads: int, limit: int | None) -> None:
    """Prepare a process: Ctrl-C goes to the one that started it, and it ends with that one."""
    global _worker
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    parent = multiprocessing.parent_process()
    if parent is not None:
        threading.Thread(target=_end_with, args=(parent.sentinel,), daemon=True).start()
    zarr().config.set({"threading.max_workers": 1, "async.concurrency": 1})
    _worker = Worker(filed, threads, limit)


def _end_with(sentinel: int) -> None:
    multiprocessing.connection.wait([sentinel])
    os._exit(1)


def _make(task: int) -> Record:
    assert _worker is not None
    return _worker.make(task)


def undone(filed: Filed, tasks: range) -> Iterator[int]:
    """Return the tasks that have not been done."""
    return (task for task in tasks if not is_done(filed, task))


def state(filed: Filed) -> dict[str, Any]:
    """Return how many units there are, and the digests of the tree once it has been verified."""
    tasks = filed.plan.units.tasks
    complete = complete_path(filed)
    return {
        "plan": filed.id,
        "tasks": tasks,
        "done": tasks - sum(1 for _ in undone(filed, range(1, tasks + 1))),
        "complete": json.loads(complete.read_text()) if complete.exists() else None,
    }


def complete_path(filed: Filed) -> Path:
    """Return the file that says that a result is complete."""
    return filed.records / "complete.json"
