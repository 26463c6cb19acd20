"""Calls whose results are compared where a process is not as usual: run in a process of its own.

`python surroundings.py WHAT`: what is unusual is a function below. The process must end with 0.
"""

import ctypes
import resource
import sys
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import volux

RANDOM = np.random.default_rng(7)
ARRAYS = [
    RANDOM.integers(0, 200, (15, 14, 13)).astype(np.uint8),
    RANDOM.integers(-900, 900, (15, 14, 13)).astype(np.int16),
    RANDOM.normal(0, 100, (15, 14, 13)).astype(np.float32),
    RANDOM.normal(0, 100, (15, 14, 13)),
]
GRID = volux.Grid(
    (17, 16, 15),
    [[0.9, 0.1, 0, 0.3], [-0.1, 0.8, 0.05, 0.2], [0, 0.02, 0.95, -0.4], [0, 0, 0, 1]],
)
PLANE = volux.Plane((6, 6, 6), (0.2, 0.1, 1), (0, 1, 0), (12, 13), 0.7)
POINTS = RANDOM.uniform(-1, 14, (200, 3))


def results(threads=None):
    """The bytes of a call of each kind."""
    made = []
    for array in ARRAYS:
        for kernel in ("nearest", "linear", "cubic", "label"):
            if kernel != "label" or array.dtype.kind in "iu":
                made.append(volux.resample(array, GRID, interpolation=kernel, threads=threads))
        made.append(volux.resize(array, scale=0.6, antialias="mean", threads=threads))
        made.append(volux.reslice(array, PLANE, slab=3, threads=threads))
        made.append(volux.sample(array, POINTS, threads=threads))
        made.append(volux.sample_gradient(array, POINTS, threads=threads)[1])
    return [np.asarray(one).tobytes() for one in made]


def a_thread_of_64_kib():
    wanted, found = results(), []
    threading.stack_size(64 << 10)
    for threads in (1, 2):
        thread = threading.Thread(target=lambda threads=threads: found.append(results(threads)))
        thread.start()
        thread.join()
    assert found == [wanted, wanted]


def denormals_that_another_library_flushes():
    wanted = results()
    ctypes.CDLL(sys.argv[2]).flush_denormals()
    assert np.float32(1e-40) * np.float32(0.5) == 0
    assert results(1) == results(2) == wanted


def threads_of_another_library_beside_ours():
    wanted, square = results(), RANDOM.normal(0, 1, (300, 300))
    with ThreadPoolExecutor(4) as pool:
        products = [pool.submit(lambda: square @ square) for _ in range(40)]
        found = [pool.submit(results, 2) for _ in range(4)]
    assert all(one.result() == wanted for one in found)
    assert len({product.result().tobytes() for product in products}) == 1


def little_address_space():
    """With less and less of it, a call is right or raises MemoryError; then all is right again."""
    large = volux.Grid((150, 150, 150), np.diag([0.1, 0.1, 0.1, 1]))
    calls = [
        lambda: volux.resample(ARRAYS[3], large, threads=4),
        lambda: volux.resize(ARRAYS[1], scale=12, threads=1),
        lambda: volux.sample(ARRAYS[2], np.full((2_000_000, 3), 3.25), threads=2),
    ]
    size = int(Path("/proc/self/statm").read_text().split()[0]) * resource.getpagesize()
    wanted = [np.asarray(call()).tobytes() for call in calls]
    ends = set()
    before = resource.getrlimit(resource.RLIMIT_AS)
    for more in range(0, 160, 8):
        resource.setrlimit(resource.RLIMIT_AS, (size + (more << 20), before[1]))
        made = [_right_or_memory_error(call) for call in calls]
        resource.setrlimit(resource.RLIMIT_AS, before)
        for one, right in zip(made, wanted, strict=True):
            assert one is None or np.asarray(one).tobytes() == right
            ends.add(one is None)
        del made, one
    assert ends == {True, False}
    assert [np.asarray(call()).tobytes() for call in calls] == wanted


def _right_or_memory_error(call):
    try:
        return call()
    except MemoryError:
        return None


if __name__ == "__main__":
    globals()[sys.argv[1]]()
