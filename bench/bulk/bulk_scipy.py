#!/usr/bin/python3
"""scipy.ndimage in bulk, driven as the C++ programs of the bench are. Order 3 is a B-spline,
another kernel; its coefficients are computed before. What makes volumes smaller is a Gaussian whose
deviation is half the factor, and zoom."""
import math
import sys
import time
from pathlib import Path

import numpy
from scipy import ndimage

sys.path.insert(0, str(Path(__file__).parents[1]))
import driven  # noqa: E402  (the path comes first)

OUTSIDE = -77
COMPARED = 600
TYPES = {"short": numpy.int16, "float": numpy.float32, "double": numpy.float64}
ORDERS = {"nearest": 0, "linear": 1, "cubic": 3}
MODES = {"constant": "constant", "replication": "nearest"}


def scattered(counters):
    """splitmix64, as in bench/times/Workloads.h."""
    bits = (counters + numpy.uint64(1)) * numpy.uint64(0x9E3779B97F4A7C15)
    bits = (bits ^ (bits >> numpy.uint64(30))) * numpy.uint64(0xBF58476D1CE4E5B9)
    bits = (bits ^ (bits >> numpy.uint64(27))) * numpy.uint64(0x94D049BB133111EB)
    return bits ^ (bits >> numpy.uint64(31))


def voxels(extent, kind):
    """The cube of bench/times/Workloads.h, to the last bit."""
    wave = numpy.array([math.sin(0.07 * i) for i in range(extent)])  # numpy has a sine of its own
    noise = (scattered(numpy.arange(extent**3, dtype=numpy.uint64)) >> numpy.uint64(11)) * 2.0**-52
    smooth = 800.0 * wave * wave[:, None] + 400.0 * wave[:, None, None]
    return (smooth + 100.0 * (noise.reshape((extent,) * 3) - 1.0)).astype(kind)


def turned(x, y, z):
    def turn(a, b, degrees):
        angle = degrees * math.pi / 180
        cosine, sine = math.cos(angle), math.sin(angle)
        return cosine * a - sine * b, sine * a + cosine * b
    y, z = turn(y, z, 17)
    z, x = turn(z, x, 31)
    x, y = turn(x, y, 11)
    return numpy.array([z, y, x])


def oblique(scale, width, height, depth):
    """Matrix, offset and shape, in numpy's order of axes, to the bits of bench/bulk/Bulk.h."""
    matrix = numpy.column_stack([turned(0, 0, scale), turned(0, scale, 0), turned(scale, 0, 0)])
    corner = turned(*(-scale * (extent - 1) / 2 for extent in (width, height, depth)))
    return matrix, 127.5 + corner, (depth, height, width)


def slices(target, first, count):
    matrix, offset, shape = target
    step = matrix[:, 0] if matrix.ndim == 2 else matrix * (1, 0, 0)
    return matrix, offset + first * step, (count, *shape[1:])


def upsampling():
    scale = numpy.array([128 / 96, 128 / 384, 128 / 384])
    return scale, 0.5 * scale - 0.5, (96, 384, 384)


def random_positions():
    bits = scattered(numpy.arange(0, 4_000_000, 4, dtype=numpy.uint64))
    parts = [(bits >> numpy.uint64(shift)) & numpy.uint64(0x1FFFFF) for shift in (42, 21, 0)]
    return numpy.stack([part * (256 * 2.0**-21) - 0.5 for part in parts])


TARGETS = {
    "A": (256, slices(oblique(0.9, 256, 256, 128), 16, 32)),
    "B": (128, slices(upsampling(), 12, 24)),
    "C": (256, random_positions()),
    "plane": (256, oblique(0.45, 512, 512, 1)),
}
CASES = [f"{workload}/{kind}/{kernel}/{border}/scipy" for workload in TARGETS
         for kind in ("short", "float") for kernel in (ORDERS if workload != "plane" else ["linear"])
         for border in MODES]
SHRUNK = 256
FACTORS = (2, 4, 8)
CASES += [f"means/{kind}/{factor}/scipy" for kind in TYPES for factor in FACTORS]
MADE = {}


def source(extent, kind, order):
    """Voxels, or the coefficients of a B-spline."""
    if (extent, kind, order == 3) not in MADE:
        made = voxels(extent, TYPES[kind])
        if order == 3:
            made = ndimage.spline_filter(made, output=numpy.float64)
        MADE[extent, kind, order == 3] = made
    return MADE[extent, kind, order == 3]


def carry_out(target, cube, kind, order, mode):
    how = {"order": order, "mode": mode, "cval": OUTSIDE, "prefilter": False}
    if isinstance(target, tuple):
        matrix, offset, shape = target
        return ndimage.affine_transform(cube, matrix, offset, shape, output=TYPES[kind], **how)
    return ndimage.map_coordinates(cube, target, output=numpy.float64, **how)


def position(target, place):
    if not isinstance(target, tuple):
        return target[:, place]
    matrix, offset, shape = target
    index = numpy.unravel_index(place, shape)
    return (matrix @ index if matrix.ndim == 2 else matrix * index) + offset


def reading(cube, order, where):
    """What volux_core reads at a position well inside."""
    if order == 0:
        return float(cube[tuple(numpy.floor(where + 0.5).astype(int))])
    first = numpy.floor(where).astype(int)
    near = cube[tuple(slice(n, n + 2) for n in first)].astype(float)
    for part in where - first:
        near = near[0] * (1 - part) + near[1] * part
    return float(near)


def largest_difference(target, cube, order, result):
    """From volux_core's kernel, two voxels inside and away from ties."""
    largest = 0.0
    for place in scattered(numpy.arange(COMPARED, dtype=numpy.uint64)) % numpy.uint64(result.size):
        where = position(target, int(place))
        if ((where >= 2) & (where <= cube.shape[0] - 3)
                & (abs(where - numpy.floor(where) - 0.5) > 1e-6)).all():
            found = float(result.flat[int(place)])
            largest = max(largest, abs(found - reading(cube, order, where)))
    return largest


def shrink(cube, factor):
    blurred = ndimage.gaussian_filter(cube, factor / 2)
    return ndimage.zoom(blurred, 1 / factor, order=1, mode="nearest", grid_mode=True)


def measure_means(name):
    _, kind, factor, _ = name.split("/")
    cube = source(SHRUNK, kind, 1)
    passes, spent = driven.timed(lambda: shrink(cube, int(factor)), time.process_time_ns)
    return {"name": name, "items_per_second": cube.size * passes / spent * 1e9}


def measure(name):
    if name.startswith("means/"):
        return measure_means(name)
    workload, kind, kernel, border, _ = name.split("/")
    extent, target = TARGETS[workload]
    order = ORDERS[kernel]
    cube = source(extent, kind, order)
    result = carry_out(target, cube, kind, order, MODES[border])
    passes, spent = driven.timed(lambda: carry_out(target, cube, kind, order, MODES[border]),
                                 time.process_time_ns)
    said = {"name": name, "items_per_second": result.size * passes / spent * 1e9}
    if order != 3:
        # A short is rounded, and a float has 24 bits.
        tolerances = {"i2": 0.5 + 1e-9, "f4": 1300 * 2.0**-24, "f8": 1e-9}
        said["tolerance"] = tolerances[result.dtype.str[1:]]
        said["difference"] = largest_difference(target, cube, order, result)
        if said["difference"] > said["tolerance"]:
            said["error_message"] = f"it is {said['difference']} off what volux_core gives"
    return said


if __name__ == "__main__":
    driven.drive(CASES, measure)
