"""Readings by their definitions: plain loops in double precision, and nothing of the package's.

Arrays are (x, y, z), positions are x, y and z in voxels.
"""

import math

import numpy as np

KERNELS = ("nearest", "linear", "cubic", "label")
DTYPES = ("uint8", "int16", "uint16", "int32", "uint32", "float32", "float64")


def lower(position):
    """The voxel at or below a position; one lower still at negative whole numbers."""
    return math.trunc(position) if position >= 0.0 else math.trunc(position) - 1


def cubic_weight(distance):
    d = abs(distance)
    d2 = d * d
    if d < 1.0:
        return (1.0 - d2 * 2.5) + (d2 * 1.5) * d
    if d < 2.0:
        return (((d * 8.0 - 4.0) - d2 * 5.0) + d2 * d) * -0.5
    return 0.0


def neighbours(kernel, position):
    """The indices along one axis, and their weights."""
    if kernel == "nearest":
        return [(lower(position + 0.5), 1.0)]
    base = lower(position)
    if kernel == "cubic":
        return [(i, cubic_weight(position - i)) for i in range(base - 1, base + 3)]
    fraction = position - base
    return [(base, 1.0 - fraction), (base + 1, fraction)]


def voxel(array, index, border, fill):
    inside = all(0 <= i < n for i, n in zip(index, array.shape, strict=True))
    if not inside and border == "constant":
        return float(array.dtype.type(fill))
    clamped = tuple(min(max(i, 0), n - 1) for i, n in zip(index, array.shape, strict=True))
    return float(array[clamped])


def is_in_view(array, position):
    return all(-0.5 <= p < n - 0.5 for p, n in zip(position, array.shape, strict=True))


def reading(array, position, kernel="linear", border="edge", fill=0.0, outside="extend"):
    """What a kernel reads at a position, as a double."""
    if border == "edge" and outside == "fill" and not is_in_view(array, position):
        return float(array.dtype.type(fill))
    xs, ys, zs = (neighbours(kernel, p) for p in position)
    voxels = [
        (voxel(array, (i, j, k), border, fill), (x * y) * z)
        for k, z in zs
        for j, y in ys
        for i, x in xs
    ]
    if kernel == "nearest":
        return voxels[0][0]
    if kernel == "label":
        nearest = voxel(array, tuple(lower(p + 0.5) for p in position), border, fill)
        return elected(voxels, nearest)
    total = 0.0 if kernel == "cubic" else -0.0
    for value, weight in voxels:
        total += value * weight
    if kernel == "linear":
        return total
    weights = 0.0
    for _, weight in voxels:
        weights += weight
    return total / weights


def elected(votes, nearest):
    """The label of the greatest score; the nearest one or the lowest of several."""
    scores = {}
    for label, weight in votes:
        scores[label] = scores[label] + weight if label in scores else weight
    best = [label for label, score in scores.items() if score == max(scores.values())]
    return nearest if nearest in best else min(best)


def stored(value, dtype, overflow="saturate"):
    """What a result of a type stores for a reading."""
    dtype = np.dtype(dtype)
    if dtype.kind == "f":
        return dtype.type(value)
    whole = math.floor(abs(value))
    whole += abs(value) - whole >= 0.5
    whole = -whole if value < 0 else whole
    limits = np.iinfo(dtype)
    if overflow == "saturate":
        return dtype.type(min(max(whole, limits.min), limits.max))
    bits = 8 * dtype.itemsize
    wrapped = whole % 2**bits
    return dtype.type(wrapped - 2**bits if wrapped > limits.max else wrapped)


def position_of(rows, i, j, k):
    """Where three rows of an affine map take an index."""
    return tuple(((row[3] + row[2] * k) + row[1] * j) + row[0] * i for row in rows)


def resampled(array, rows, extents, dtype=None, overflow="saturate", **how):
    """A volume (x, y, z) on a grid whose voxels are read where three rows say."""
    result = np.empty(extents, dtype or array.dtype)
    for index in np.ndindex(*extents):
        value = reading(array, position_of(rows, *index), **how)
        result[index] = stored(value, result.dtype, overflow)
    return result


def mean_of_subsamples(array, rows, index, counts, **how):
    """The mean of as many samples along each axis, each in the middle of its part of a voxel."""
    rows = np.asarray(rows, dtype=float)
    columns = [rows[:, c] / counts[c] for c in range(3)]
    origin = rows[:, 3]
    for column, count in zip(columns, counts, strict=True):
        origin = origin + column * ((1 - count) / 2)
    finer = np.column_stack([*columns, origin]).tolist()
    samples = []
    for z, y, x in np.ndindex(*counts[::-1]):
        at = [i * n + sub for i, n, sub in zip(index, counts, (x, y, z), strict=True)]
        samples.append(reading(array, position_of(finer, *at), **how))
    total = samples[0]
    for sample in samples[1:]:
        total += sample
    return min(max(total / len(samples), min(samples)), max(samples))
