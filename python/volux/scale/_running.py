"""Runs of plans: which tasks, on how many processes, and how far they are."""

from __future__ import annotations

import multiprocessing
import multiprocessing.connection
import multiprocessing.resource_tracker
import os
import signal
from collections import Counter
from collections.abc import Callable, Iterator, Sequence
from contextlib import contextmanager, suppress
from pathlib import Path
from typing import Any

from volux.scale import _memory, _store
from volux.scale._needed import zarr
from volux.scale._plan import Filed
from volux.scale._signals import held
from volux.scale._tasks import Record, Worker, is_done
from volux.tool._errors import INTERRUPTED, Misuse, Refusal

# How many processes may be killed that make the same unit, and how many in a row as they start.
_PATIENCE = 3
_STARTS = 12


class Interruption(Refusal):
    """What has been made stays, and another run goes on."""

    code = INTERRUPTED


def chosen(filed: Filed, shard: str | None, named: Sequence[str]) -> Sequence[int]:
    """Return the tasks that options choose, from 1."""
    tasks = filed.plan.units.tasks
    if named:
        if shard is not None:
            raise Misuse("--shard and --task exclude one another")
        texts = [text for several in named for text in several.split(",")]
        for text in texts:
            if not (text.isdecimal() and 1 <= int(text) <= tasks):
                raise Misuse(f"--task {text}: must be 1 to {tasks}, or several such as 1,5,9")
        return list(dict.fromkeys(map(int, texts)))
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
    _memory.give_back()
    try:
        if processes > 1:
            _Crew((filed, threads or 1, limit)).work(tasks, processes, told)
            return
        worker = Worker(filed, threads, limit)
        for task in tasks:
            told(worker.make(task))
    except KeyboardInterrupt:
        raise Interruption("interrupted; run it again to go on") from None


class _Crew:
    """Processes that make units. One that is killed is replaced, and its task is done again."""

    def __init__(self, setting: tuple[Filed, int, int | None]) -> None:
        self._setting = setting
        self._context = multiprocessing.get_context("spawn")
        # By connection: the process, its processors and its task.
        self._at_work: dict[Any, tuple[Any, list[int], int]] = {}
        self._deaths: Counter[int] = Counter()
        self._waiting: set[Any] = set()  # connections of processes that have not started yet
        self._unstarted = 0  # killed in a row

    def work(self, tasks: Iterator[int], processes: int, told: Callable[[Record], None]) -> None:
        """Share tasks out among so many processes."""
        try:
            for processors, task in zip(_shares(processes), tasks, strict=False):
                self._hire(processors, task)
            while self._at_work:
                for connection in multiprocessing.connection.wait(list(self._at_work)):
                    self._hear(connection, tasks, told)
        finally:
            for connection, (process, *_) in self._at_work.items():
                connection.close()  # it ends when it has made the unit at hand
                process.join()

    def _hire(self, processors: list[int], task: int) -> None:
        ours, theirs = self._context.Pipe()
        process = self._context.Process(target=_serve, args=(theirs, processors, *self._setting))
        with held(), _blocked():  # it begins with what is blocked here
            process.start()
            theirs.close()
            self._at_work[ours] = process, processors, task
            self._waiting.add(ours)

    def _hear(self, connection: Any, tasks: Iterator[int], told: Callable[[Record], None]) -> None:
        process, processors, task = at_work = self._at_work.pop(connection)
        is_new = connection in self._waiting
        self._waiting.discard(connection)
        try:
            answer = connection.recv()
        except (EOFError, ConnectionResetError):
            process.join()
            self._replace(processors, task, is_new)
            return
        if is_new:
            self._unstarted = 0
            self._ask(connection, at_work)
            return
        more = None if isinstance(answer, Exception) else next(tasks, None)
        if more is None:
            connection.close()
            process.join()
        else:
            self._ask(connection, (process, processors, more))
        if isinstance(answer, Exception):
            raise answer
        told(answer)

    def _ask(self, connection: Any, at_work: tuple[Any, list[int], int]) -> None:
        self._at_work[connection] = at_work
        with suppress(BrokenPipeError):  # it was killed already, as is found out next
            connection.send(at_work[-1])

    def _replace(self, processors: list[int], task: int, is_new: bool) -> None:
        self._deaths[task] += not is_new
        self._unstarted += is_new
        if self._deaths[task] == _PATIENCE or self._unstarted == _STARTS:
            killed = f"{_STARTS} processes were killed as they started"
            if self._deaths[task] == _PATIENCE:
                killed = f"task {task}: {_PATIENCE} processes were killed that made it"
            raise Refusal(
                f"{killed}, perhaps for want of memory; run fewer processes, or plan smaller units"
            )
        self._hire(processors, task)


def _shares(processes: int) -> list[list[int]]:
    """Return the processors of each process: its share of all that this one may use, or one."""
    if not hasattr(os, "sched_getaffinity"):  # it is Linux's
        return [[]] * processes
    allowed = sorted(os.sched_getaffinity(0))
    return [allowed[number % len(allowed) :: processes] for number in range(processes)]


@contextmanager
def _blocked() -> Iterator[None]:
    """Block Ctrl-C, which goes to the process that asks, from the first moment of another one."""
    multiprocessing.resource_tracker.ensure_running()  # it would unblock it
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


def _serve(
    connection: Any, processors: list[int], filed: Filed, threads: int, limit: int | None
) -> None:
    """Make units until nobody asks for more. Ctrl-C goes to the process that asks."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    if processors:  # its threads take turns, which costs a tenth more if they move about
        with suppress(OSError):  # some containers refuse it
            os.sched_setaffinity(0, processors)
    _memory.give_back()
    zarr().config.set({"threading.max_workers": 2})  # one reads while the other decodes
    worker = Worker(filed, threads, limit)
    with suppress(EOFError, BrokenPipeError, ConnectionResetError):
        connection.send(None)  # it has started
        while True:
            connection.send(_answer(worker, connection.recv()))


def _answer(worker: Worker, task: int) -> Record | Exception:
    try:
        return worker.make(task)
    except (OSError, Refusal) as error:
        return error
    except Exception as error:  # others may not reach the other process as they are
        return RuntimeError(f"{type(error).__name__}: {error}")


def undone(filed: Filed, tasks: range) -> Iterator[int]:
    """Return the tasks that have not been done."""
    return (task for task in tasks if not is_done(filed, task))


def state(filed: Filed) -> dict[str, Any]:
    """Return how many units there are, and the digests of the tree once it has been verified."""
    tasks = filed.plan.units.tasks
    return {
        "plan": filed.id,
        "tasks": tasks,
        "done": tasks - sum(1 for _ in undone(filed, range(1, tasks + 1))),
        "complete": _complete(filed),
    }


def _complete(filed: Filed) -> dict[str, Any] | None:
    path = complete_path(filed)
    if not path.exists():
        return None
    facts = _store.facts_of(path)
    if facts.get("plan") != filed.id or not all(
        isinstance(facts.get(name), str) for name in ("decoded", "stored")
    ):
        raise Refusal(f"{path}: is not what volux verify has written of this plan; verify again")
    return facts


def complete_path(filed: Filed) -> Path:
    """Return the file that says that a result is complete."""
    return filed.records / "complete.json"
