"""What a call does while it runs: threads, progress, signals, processes."""

import multiprocessing
import os
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
import volux
from volux import _core

from .volumes import same_bits, volume

ARRAY = volume("int16", (48, 48, 48))
GRID = volux.Grid((48, 48, 48), np.eye(4) + np.eye(4, k=1) * [[0.1], [0.1], [0.1], [0]])
LONG = volux.Grid((400, 400, 400), GRID.affine)
SLOW = {"interpolation": "cubic", "outside": "extend"}  # each voxel of it is computed


@pytest.fixture
def counted(monkeypatch):
    """The numbers of threads that the compiled part is asked for."""
    seen = []
    made = _core.Reading

    def reading(**options):
        seen.append(options["threads"])
        return made(**options)

    monkeypatch.setattr(_core, "Reading", reading)
    return seen


def test_threads_count_in_their_block_alone(counted):
    with volux.threads(2):
        with volux.threads(1):
            volux.resample(ARRAY, GRID)
        volux.resample(ARRAY, GRID)
        volux.resample(ARRAY, GRID, threads=3)
    volux.resample(ARRAY, GRID)
    assert counted == [1, 2, 3, 0]


def test_threads_of_one_thread_are_not_those_of_another(counted):
    with volux.threads(2):
        other = threading.Thread(target=volux.resample, args=(ARRAY, GRID))
        other.start()
        other.join()
    assert counted == [0]


def test_four_threads_at_once_get_the_same_bits():
    alone = volux.resample(ARRAY, GRID, interpolation="cubic")
    with ThreadPoolExecutor(4) as pool:
        calls = [pool.submit(volux.resample, ARRAY, GRID, interpolation="cubic") for _ in range(8)]
    assert all(same_bits(call.result(), alone) for call in calls)


def test_other_threads_of_python_go_on_during_a_call():
    seen = []
    ends = threading.Event()

    def watch():
        while not ends.wait(0.001):
            seen.append(time.perf_counter())

    watcher = threading.Thread(target=watch)
    watcher.start()
    begin = time.perf_counter()
    volux.resample(ARRAY, LONG, **SLOW, threads=1)
    end = time.perf_counter()
    ends.set()
    watcher.join()
    assert sum(begin < moment < end for moment in seen) > 10


def test_progress_grows_and_ends_with_the_whole():
    told = []
    volux.resample(ARRAY, LONG, **SLOW, progress=told.append)
    assert told == sorted(told)
    assert told[-1] == 1.0
    assert told[0] >= 0.0


def test_progress_is_told_on_the_thread_of_the_call():
    threads = set()
    volux.resample(ARRAY, LONG, progress=lambda _: threads.add(threading.get_ident()), threads=2)
    assert threads == {threading.get_ident()}


def test_what_progress_raises_ends_the_call():
    class EnoughError(Exception):
        pass

    def stop(_fraction):
        raise EnoughError

    with pytest.raises(EnoughError):
        volux.resample(ARRAY, LONG, **SLOW, progress=stop)


@pytest.mark.parametrize("threads", [1, 2])
def test_a_signal_ends_a_long_call_within_half_a_second_of_work(threads):
    asked = []

    def interrupt(number, _frame):
        asked.append(number)
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, interrupt)
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.1)
        begin = time.process_time()  # a busy machine takes longer by the clock
        with pytest.raises(KeyboardInterrupt):
            volux.resample(ARRAY, LONG, **SLOW, threads=threads)
        assert time.process_time() - begin < threads * (0.1 + 0.5)
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0.0)
        signal.signal(signal.SIGALRM, before)
    assert asked


def send_digest(pipe):
    pipe.send(volux.digest(volux.resample(ARRAY, GRID, threads=2)))
    pipe.close()


def test_a_fork_after_a_threaded_call_gives_the_same_bits():
    wanted = volux.digest(volux.resample(ARRAY, GRID, threads=2))
    context = multiprocessing.get_context("fork")
    for _ in range(5):
        ours, theirs = context.Pipe(duplex=False)
        child = context.Process(target=send_digest, args=(theirs,))
        child.start()
        assert ours.poll(20), "the child hangs"
        assert ours.recv() == wanted
        child.join()


EXITING = """
import threading, numpy, volux
array = numpy.zeros((64, 64, 64), numpy.int16)
grid = volux.Grid((400, 400, 400), numpy.eye(4))
call = lambda: volux.resample(array, grid, interpolation="cubic", outside="extend")
threading.Thread(target=call, daemon=True).start()
import time; time.sleep(0.1)
"""


def test_an_exit_during_a_call_is_clean():
    ended = subprocess.run(
        [sys.executable, "-W", "error", "-c", EXITING],
        capture_output=True,
        timeout=30,
        cwd=os.sep,
        check=False,
    )
    assert (ended.returncode, ended.stderr) == (0, b"")


def test_thousands_of_calls_leave_no_memory_behind():
    def kilobytes():
        with open("/proc/self/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("RssAnon"))

    small = volume(shape=(4, 4, 4))
    out = np.empty_like(small)

    def call():
        for _ in range(5000):
            volux.resize(small, shape=(4, 4, 4), out=out)
            volux.sample(small, (1, 1, 1))

    call()
    before = kilobytes()
    call()
    assert kilobytes() - before < 512
