"""What a result is to the last bit, and what must hold of it."""
import hashlib

import numpy as np
import volux

AT_ONCE = 1 << 16  # voxels: a result may be nearly as large as the memory there is
IN_ORDER = ["external_loop", "buffered", "zerosize_ok"]


class Broken(Exception):
    """A result that is not what was promised."""


def promise(is_kept, words):
    if not is_kept:
        raise Broken(words)


def bits(value):
    """Returns what two results of the same call must have in common; every NaN is the same."""
    if isinstance(value, np.ndarray):
        return value.dtype.str, value.shape, digest_of(value)
    if isinstance(value, volux.Image):
        return bits(value.array), bits(value.grid)
    if isinstance(value, volux.Grid):
        whole, start = value.whole
        return value.shape, bits(value.affine), value.axes, whole.shape, bits(whole.affine), start
    if isinstance(value, volux.Plane):
        return bits(value.grid)
    if isinstance(value, volux.Affine):
        return bits(value.matrix)
    if isinstance(value, (tuple, list)):
        return tuple(map(bits, value))
    return repr(value)


def digest_of(array):
    digest = hashlib.sha256()
    for part in np.nditer(array, IN_ORDER, order="C", buffersize=AT_ONCE):
        if array.dtype.kind == "f":
            part = np.where(np.isnan(part), part.dtype.type(np.nan), part)
        digest.update(part.tobytes())
    return digest.digest()
