"""Volumes for tests, the same in every run."""

import numpy as np


def volume(dtype="int16", shape=(4, 5, 6), seed=1):
    """Random voxels over much of the range of a type, an array of the axes z, y, x."""
    random = np.random.default_rng(seed)
    dtype = np.dtype(dtype)
    if dtype.kind == "b":
        return random.integers(0, 2, shape).astype(bool)
    if dtype.kind == "f":
        return random.normal(0.0, 100.0, shape).astype(dtype)
    limits = np.iinfo(dtype)
    return random.integers(limits.min, limits.max, shape, dtype, endpoint=True)


def labels(dtype="uint8", shape=(4, 5, 6), seed=2):
    """Few labels, so that several voxels share one."""
    return np.random.default_rng(seed).integers(1, 5, shape).astype(dtype)


def placed(rows):
    """A 4 x 4 affine of three rows."""
    return np.vstack([np.asarray(rows, dtype=float), [0.0, 0.0, 0.0, 1.0]])


def same_bits(one, other):
    """Whether two arrays have one type, one shape and the same bytes."""
    return (
        one.dtype == other.dtype and one.shape == other.shape and one.tobytes() == other.tobytes()
    )
