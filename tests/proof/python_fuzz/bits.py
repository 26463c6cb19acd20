"""What a result is to the last bit, and what must hold of it."""
import numpy as np
import volux


class Broken(Exception):
    """A result that is not what was promised."""


def promise(is_kept, words):
    if not is_kept:
        raise Broken(words)


def bits(value):
    """Returns what two results of the same call must have in common; every NaN is the same."""
    if isinstance(value, np.ndarray):
        if value.dtype.kind == "f":
            value = np.where(np.isnan(value), value.dtype.type(np.nan), value)
        return value.dtype.str, value.shape, value.tobytes()
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
