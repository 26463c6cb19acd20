#!/usr/bin/python3
"""The container's operations by numpy, driven as the C++ programs of the bench are."""
import sys
import time
from pathlib import Path

import numpy

sys.path.insert(0, str(Path(__file__).parents[1]))
import driven  # noqa: E402  (the path comes first)

WIDTH, HEIGHT, DEPTH = 512, 512, 256
BOX = (slice(30, 230), slice(60, 460), slice(50, 450))
PLANES = range(200, 264)
FILL_VALUE = 0x0505
CHECKSUM_STRIDE = 1009


def made(*shape):
    """A volume of the same numbers as in the C++ programs."""
    size = int(numpy.prod(shape))
    numbers = (numpy.arange(size, dtype=numpy.int64) * 40503 % 65521 - 32760).astype(numpy.int16)
    return numbers.reshape(shape)


def checksum(array):
    some = array.reshape(-1)[::CHECKSUM_STRIDE].astype(numpy.uint16).astype(numpy.uint64)
    places = numpy.arange(1, some.size + 1, dtype=numpy.uint64)
    return int((some * places).sum() % 2**32)


VOLUME = made(DEPTH, HEIGHT, WIDTH)
TARGET = made(DEPTH, HEIGHT, WIDTH)
TWO_CHANNELS = made(DEPTH // 2, HEIGHT, WIDTH, 2)
SMALL = made(200, 400, 400)
GOT = {"xy": made(HEIGHT, WIDTH), "yz": made(DEPTH, HEIGHT), "zx": made(WIDTH, DEPTH)}
GIVEN = {name: plane.copy() for name, plane in GOT.items()}


def plane(volume, kind, index):
    """A view of a plane, in the order of rows that volux_core gives."""
    if kind == "xy":
        return volume[index]
    return volume[:, :, index] if kind == "yz" else volume[:, index].T


def planes(kind):
    return range(DEPTH) if kind == "xy" else PLANES


def fill():
    TARGET.fill(FILL_VALUE)
    return TARGET


def fill_channel():
    TWO_CHANNELS[..., 1] = FILL_VALUE
    return TWO_CHANNELS


def crop():
    return VOLUME[BOX].copy()


def draw():
    TARGET[BOX] = SMALL
    return TARGET


def deep_copy():
    return VOLUME.copy()


def getting(kind):
    def carry_out():
        for index in planes(kind):
            numpy.copyto(GOT[kind], plane(VOLUME, kind, index))
        return GOT[kind]
    return carry_out


def setting(kind):
    def carry_out():
        for index in planes(kind):
            numpy.copyto(plane(TARGET, kind, index), GIVEN[kind])
        return TARGET
    return carry_out


def cases():
    """Each case with the number of elements that it moves, and the memory that it writes to."""
    yield "E/fill", fill, TARGET.size, TARGET
    yield "E/fill a channel", fill_channel, TWO_CHANNELS.size // 2, TWO_CHANNELS
    yield "E/crop", crop, SMALL.size, None
    yield "E/draw", draw, SMALL.size, TARGET
    yield "E/deep copy", deep_copy, VOLUME.size, None
    for kind in GOT:
        elements = GOT[kind].size * len(planes(kind))
        yield f"E/get {kind}", getting(kind), elements, GOT[kind]
        yield f"E/set {kind}", setting(kind), elements, TARGET


CASES = {f"{name}/numpy": case for name, *case in cases()}


def measure(name):
    carry_out, elements, memory = CASES[name]
    passes, spent = driven.timed(carry_out, time.thread_time_ns)
    if memory is not None:
        memory.fill(0)
    return {"name": name, "items_per_second": elements * passes / spent * 1e9,
            "checksum": checksum(carry_out())}


if __name__ == "__main__":
    driven.drive(CASES, measure)
