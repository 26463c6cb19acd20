"""What must hold of a call, whatever it is given.

It returns, or it raises one of a few errors with one line of words. It warns of nothing but
aliasing, and prints nothing. What it reads stays as it was, and so does what it would write if it
is refused, and what lies between the voxels of what it writes. One thread, three, and arrays in C
order give the same bits, unless the result is so large that there may not be memory for it again.
"""
import re
import traceback
import warnings

import numpy as np
import volux

from bits import Broken, bits
from draws import Draw
from keywords import Stopped

ERRORS = (ValueError, TypeError, MemoryError, OverflowError, BufferError)
VARIANTS = ({"threads": 1}, {"threads": 3}, {"is_plain": True})
LARGE = 64 << 20  # bytes


class Fault(Exception):
    """What does not hold, and what tells it from other faults."""

    def __init__(self, what, where=""):
        super().__init__(what)
        self.kind = re.sub(r"\d+|0x[0-9a-f]+", "0", f"{what.partition(':')[0]} {where}").strip()


def tried(call, seed):
    """Makes a call with the arguments of a seed; returns "result" or "refusal"."""
    draw, result, error = made(call, seed)
    if error is not None:
        judge_refusal(draw, error)
        return "refusal"
    wanted = bits(result)
    judge_memory(draw)
    if getattr(getattr(result, "array", result), "nbytes", 0) > LARGE:
        return "result"
    for variant in VARIANTS:
        again, result, error = made(call, seed, **variant)
        if error is not None:
            raise Fault(f"refused with {variant}: {said_of(error)}", place_of(error)) from error
        if bits(result) != wanted:
            raise Fault(f"other bits with {variant}")
        judge_memory(again)
    return "result"


def made(call, seed, **variant):
    """Makes a call; returns what was drawn, and the result or the error."""
    draw = Draw(seed, **variant)
    with warnings.catch_warnings(record=True) as warned:
        warnings.simplefilter("always")
        try:
            result, error = at_work(call, draw), None
        except Broken as broken:
            raise Fault(str(broken)) from broken
        except Exception as raised:
            if raised is not draw.raised:
                raise  # a mistake made here
            result, error = None, raised
    for warning in warned:
        if not issubclass(warning.category, volux.AliasingWarning):
            raise Fault(f"{warning.category.__name__}: {warning.message}",
                        f"{warning.filename.rpartition('/')[2]}, {warning.lineno}")
    return draw, result, error


def at_work(call, draw):
    if draw.threads is None:
        return call(draw)
    with volux.threads(draw.threads):
        return call(draw)


def judge_refusal(draw, error):
    if draw.is_stopped and isinstance(error, Stopped):
        judge_kept(draw)
        return
    if not isinstance(error, ERRORS):
        raise Fault(f"raises {type(error).__name__}: {error}", place_of(error)) from error
    words = str(error)
    if not words.strip():
        raise Fault(f"{type(error).__name__} without words", place_of(error)) from error
    if len(words.splitlines()) != 1:
        raise Fault(f"{type(error).__name__} in several lines: {words}",
                    place_of(error)) from error
    judge_kept(draw)
    for _, block, before in draw.outs:
        if block.tobytes() != before:
            raise Fault(f"out was written, though {said_of(error)}")


def judge_kept(draw):
    for block, before in draw.kept:
        if block.tobytes() != before:
            raise Fault("what is read was changed")


def judge_memory(draw):
    """What is read is as it was, and so is what lies between the voxels of a result."""
    judge_kept(draw)
    for out, block, before in draw.outs:
        wanted = np.frombuffer(before, np.uint8).copy()
        offset = out.ctypes.data - block.ctypes.data
        if out.size:  # what has no voxels may lie anywhere
            np.ndarray(out.shape, out.dtype, wanted, offset, out.strides)[...] = out
        if block.tobytes() != wanted.tobytes():
            raise Fault("what lies between the voxels of out was changed")


def said_of(error):
    return f"{type(error).__name__}: {error}"


def place_of(error):
    """Returns the line of the package that an error comes from."""
    frames = traceback.extract_tb(error.__traceback__)
    ours = [frame for frame in frames if "/volux/" in frame.filename]
    if not ours:
        return ""
    return f"{ours[-1].filename.rpartition('/volux/')[2]}, {ours[-1].name}"


def described(seed, call):
    """Returns the calls that a seed makes, one a line."""
    draw = Draw(seed)
    try:
        at_work(call, draw)
    except Exception:
        pass  # it was judged before
    return "\n".join(written(*one) for one in draw.made)


def written(function, arguments, keywords):
    words = [short(value) for value in arguments]
    words += [f"{name}={short(value)}" for name, value in keywords.items()]
    name = getattr(function, "__qualname__", getattr(function, "__name__", repr(function)))
    return f"{name}({', '.join(words)})"


def short(value):
    if isinstance(value, np.ndarray) and value.size > 16:
        return (f"<{value.dtype} {value.shape}, strides {value.strides}"
                f"{'' if value.flags.writeable else ', read-only'}>")
    text = " ".join(repr(value).split())
    return text if len(text) < 200 else f"{text[:200]}..."
