"""Lets each request for memory of some calls fail once, and prints a line of JSON for each call.

Only requests between the beginning and the end of a call count, those of all its threads. The
library of faults must have been loaded before all others (LD_PRELOAD).
"""

import ctypes
import json
from collections import Counter

import numpy as np
import volux

ARRAY = np.random.default_rng(1).integers(-500, 1500, (9, 8, 7)).astype(np.int16)
IMAGE = volux.Image(ARRAY, np.diag([2.0, 1.0, 0.75, 1.0]))
GRID = volux.Grid((12, 11, 10), np.eye(4) + np.eye(4, k=1) * 0.125)
LARGE = volux.Grid((60, 60, 60), np.diag([0.25, 0.125, 0.125, 1.0]))
FIELD = volux.Displacement(np.full((5, 5, 5, 3), 0.25), GRID[:5, :5, :5])
PLANE = volux.Plane((3, 3, 3), (0, 0, 1), (0, 1, 0), (9, 9), 1.0)
POINTS = np.random.default_rng(2).uniform(0, 6, (500, 3))

CALLS = {
    "resample": lambda: volux.resample(IMAGE, GRID, threads=1),
    "resample on three threads": lambda: volux.resample(IMAGE, LARGE, threads=3),
    "resample through a field": lambda: volux.resample(IMAGE, GRID, transform=FIELD),
    "resize": lambda: volux.resize(IMAGE, scale=0.5, antialias="mean"),
    "resize labels": lambda: volux.resize(ARRAY, scale=0.5, interpolation="label"),
    "reslice": lambda: volux.reslice(IMAGE, PLANE, slab=3),
    "sample": lambda: volux.sample(ARRAY, POINTS.tolist()),
    "sample_gradient": lambda: volux.sample_gradient(IMAGE, POINTS, space="world")[1],
}

# What NumPy ends with where it does not say that a request of its own has failed.
UNSAID = "error return without exception set"
PASSES = 10

FAULTS = ctypes.CDLL(None)


class Heap(ctypes.Structure):
    """What mallinfo2() of glibc returns; `used` is in bytes."""

    _fields_ = [
        (name, ctypes.c_size_t) for name in ("a", "b", "c", "d", "e", "f", "g", "used", "h", "i")
    ]


FAULTS.mallinfo2.restype = Heap


def bytes_of(made):
    return np.asarray(made.array if isinstance(made, volux.Image) else made).tobytes()


def starved(call, at):
    """What a call ends with whose request for memory of this number fails, and how many it made."""
    FAULTS.faults_in_memory(at)
    try:
        made = call()
    except BaseException as error:
        count = FAULTS.faults_end_in_memory()
        return "MemoryError" if str(error) == UNSAID else type(error).__name__, count
    count = FAULTS.faults_end_in_memory()
    return bytes_of(made), count


def each_request(call, wanted):
    """Let one request after the other fail; count how the calls and those after them end."""
    before, ends = ARRAY.tobytes(), Counter()
    _, most = starved(call, 0)
    for at in range(1, most + 3):  # a thread more or less asks for more or less
        found, _ = starved(call, at)
        ends["right" if found == wanted else found if isinstance(found, str) else "wrong"] += 1
        ends["next one wrong"] += bytes_of(call()) != wanted or ARRAY.tobytes() != before
    return most, ends


def main():
    for name, call in CALLS.items():
        wanted = bytes_of(call())
        for _ in range(2):  # what is made once only
            each_request(call, wanted)
        before = FAULTS.mallinfo2().used
        for _ in range(PASSES):
            requests, ends = each_request(call, wanted)
        left = FAULTS.mallinfo2().used - before
        said = {"call": name, "requests": requests, "left": left, "ends": dict(+ends)}
        print(json.dumps(said), flush=True)


if __name__ == "__main__":
    main()
