"""Random keywords of the calls of volux: their own words, those of other libraries, and others."""
import math

import numpy as np

from bits import promise
from draws import OF_ZEROS, SERVED

KERNELS = ("nearest", "linear", "cubic", "label")
PEERS = ("order", "mode", "cval", "zoom", "align_corners", "output_shape", "fill_value", "reference",
         "target_affine", "referenceImage", "prefilter", "interpolate", "boarder", "shape", "grid",
         "slab", "space", "channel", "scale", "self", "")
WORDS = ("bilinear", "trilinear", "bspline", "replicate", "zeros", "corners", "max", "min",
         "centers", "reflect", "LINEAR", "lin\near", True, False)
MOST_VOXELS = 1 << 20  # of a result that is given memory
THREADS = (None, 1, 2, 3, 7, 2**31 - 1)


class Stopped(Exception):
    """What a callback of ours raises."""


def word(draw, *words):
    """Returns one of the words of a keyword, or that of another library."""
    return draw.or_stranger(lambda: draw.one(*WORDS) if draw.is_wrong() else draw.one(*words))


def threads(draw):
    """Returns the keyword: as it is drawn, or as this draw has it."""
    wanted, is_given = draw.or_stranger(lambda: draw.one(*THREADS)), draw.chance(0.5)
    if draw.threads is not None:
        return {"threads": draw.threads}
    return {"threads": wanted} if is_given else {}


def fill(draw, array):
    if draw.is_wrong():
        return draw.or_stranger(lambda: draw.one(-5, 70000, 0.5, 1e300, np.nan, np.inf, "0"))
    kind = getattr(getattr(array, "dtype", None), "kind", "")
    if kind == "f":
        return draw.one(0, 1.5, np.nan, -np.inf, 1e300, np.float32(2), np.int8(-3))
    return draw.one(0, 1) if kind == "b" else draw.one(0, 1, 200, np.uint8(3), 7.0, np.float64(2))


def reading(draw, array):
    """Returns some of the keywords of every reading."""
    how = {}
    if draw.chance(0.8):
        how["interpolation"] = word(draw, *KERNELS)
    if draw.chance(0.5):
        how["border"] = word(draw, "edge", "constant")
    if draw.chance(0.4):
        how["fill"] = fill(draw, array)
    if draw.is_wrong():
        how[draw.one(*PEERS)] = draw.stranger()
    return how | threads(draw)


def filling(draw, array):
    """Returns some of the keywords of every call that makes a volume."""
    how = reading(draw, array)
    for name, *words in (("outside", "fill", "extend"), ("antialias", None, "mean", "auto"),
                         ("overflow", "saturate", "wrap")):
        if draw.chance(0.4):
            how[name] = word(draw, *words)
    if draw.chance(0.1):
        wanted = draw.or_stranger(lambda: progress(draw))
        # What a callback that takes no fraction raises is its own affair.
        how["progress"] = None if wanted is object or wanted is len else wanted
    return how


def progress(draw):
    """Returns a callback that counts, or one that ends the call."""
    is_enough = draw.chance(0.3)

    def told(fraction):
        promise(isinstance(fraction, float) and 0.0 < fraction <= 1.0, f"progress is {fraction!r}")
        if is_enough:
            draw.is_stopped = True
            raise Stopped

    return told


def output(draw, shape, array, source=None):
    """Returns the keywords that say where a result goes, and of which type it is."""
    own = getattr(getattr(source, "dtype", None), "name", "")
    dtype = draw.one(own if own in (*SERVED, "bool") else "float64", "float32", "float64")
    if draw.is_wrong():
        dtype = draw.dtype()
    made = {}
    if draw.chance(0.3):
        made["dtype"] = draw.or_stranger(lambda: draw.one(dtype, np.dtype(dtype), None))
    if shape is None or math.prod(shape) > MOST_VOXELS or not draw.chance(0.4):
        return made
    if draw.is_wrong():
        shape = draw.one(shape[::-1], (*shape, 1), shape[:2], (), (0, *shape[1:]))
    if draw.is_wrong():
        made["out"] = wrong_out(draw, shape, dtype, array)
    else:
        made["out"] = draw.array(shape, dtype, is_out=True)
    return made


def wrong_out(draw, shape, dtype, array):
    """Returns what is no array, one whose voxels overlap, or one that overlaps what is read."""
    kind = draw.one("stranger", "folded", "overlap", "overlap")
    if kind == "stranger":
        return draw.stranger()
    made = draw.array(shape, dtype, is_out=True)
    if dtype in OF_ZEROS or not isinstance(array, np.ndarray):
        return made
    return folded(draw, made) if kind == "folded" else overlapping(draw, made, array)


def folded(draw, made):
    """Returns an array in the memory of another, each axis of which goes from element to element.
    """
    _, block, before = draw.outs.pop()
    out = np.ndarray(made.shape, made.dtype, block, strides=(made.itemsize,) * made.ndim)
    draw.outs.append((out, block, before))
    return out


def overlapping(draw, made, array):
    """Returns an array that begins where the memory of another does, if there is as much."""
    for block, _ in draw.kept:
        if np.may_share_memory(block, array):
            spans = [stride * (n - 1) for stride, n in zip(array.strides, array.shape)]
            first = array.ctypes.data - block.ctypes.data + sum(n for n in spans if n < 0)
            memory = block.reshape(-1).view(np.uint8)[first:first + made.nbytes]
            if memory.nbytes == made.nbytes > 0:
                return memory.view(made.dtype).reshape(made.shape)
    return made


def extents_of(array):
    return array.shape[:3] if isinstance(array, np.ndarray) and array.ndim >= 3 else None


def with_channels(extents, array):
    """Returns the shape of the result of a call on an array, if it is to have any."""
    is_volume = isinstance(array, np.ndarray) and array.ndim >= 3 and extents is not None
    return (*extents, *array.shape[3:]) if is_volume else None
