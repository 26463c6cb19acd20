"""How samples are taken: the keywords that every call shares."""

from __future__ import annotations

from functools import lru_cache
from typing import Any, NamedTuple

import numpy as np

from volux import _core
from volux._threads import threads_of
from volux._types import Antialias, Border, Interpolation, Ints, Number, Outside, Overflow, Progress
from volux._words import chosen, short

KERNELS = {"nearest": 0, "linear": 1, "cubic": 2, "label": 3}
BORDERS = {"edge": 0, "constant": 1}
OUTSIDES = {"fill": 0, "extend": 1}
OVERFLOWS = {"saturate": 0, "wrap": 1}
ANTIALIASES = {None: 0, "mean": 1, "auto": 2}

_INTEGERS = ("uint8", "int16", "uint16", "int32", "uint32")
_LIMITS: dict[np.dtype[Any], tuple[int, int]] = {
    np.dtype(name): (int(np.iinfo(name).min), int(np.iinfo(name).max)) for name in _INTEGERS
}
_LIMITS[np.dtype(np.bool_)] = (0, 1)

# The subsamples of the compiled part: one, and as many as the step is long.
_ONE: Ints = (1, 1, 1)
_AS_LONG: Ints = (0, 0, 0)


class _Choices(NamedTuple):
    """The numbers that stand for words in the compiled part."""

    kernel: int
    border: int
    extends: bool
    overflow: int
    subsamples: Ints


@lru_cache
def _choices(
    interpolation: object, border: object, outside: object, antialias: object, overflow: object
) -> _Choices:
    kernel = chosen("interpolation", interpolation, KERNELS)
    number = chosen("antialias", antialias, ANTIALIASES)
    wanted = number == 1 or (number == 2 and kernel != KERNELS["nearest"])
    return _Choices(
        kernel,
        chosen("border", border, BORDERS),
        chosen("outside", outside, OUTSIDES) == 1,
        chosen("overflow", overflow, OVERFLOWS),
        _AS_LONG if wanted else _ONE,
    )


def _kept_choices(*words: object) -> _Choices:
    try:
        return _choices(*words)
    except TypeError:
        pass
    return _choices.__wrapped__(*words)  # in words also where one cannot be hashed


def reading(
    dtype: np.dtype[Any],
    interpolation: Interpolation,
    border: Border,
    fill: Number,
    outside: Outside = "extend",
    antialias: Antialias | None = None,
    overflow: Overflow = "saturate",
    threads: int | None = None,
    progress: Progress | None = None,
) -> _core.Reading:
    """Check the keywords for voxels of a type, and return them as the compiled part takes them."""
    choices = _kept_choices(interpolation, border, outside, antialias, overflow)
    if dtype.kind == "b" and interpolation in ("linear", "cubic"):
        raise ValueError(
            f"interpolation={short(interpolation)} of bools: allowed are 'nearest' and 'label'; "
            "image.astype('float32') gives fractions"
        )
    if progress is not None and not callable(progress):
        raise TypeError(f"progress={short(progress)} must be called with a fraction, or None")
    return _core.Reading(
        kernel=choices.kernel,
        border=choices.border,
        outside=_fill_of(fill, dtype),
        edge_extends=choices.extends,
        overflow=choices.overflow,
        subsamples=choices.subsamples,
        threads=threads_of(threads),
        progress=progress,
    )


def _fill_of(fill: Number, dtype: np.dtype[Any]) -> float:
    if not isinstance(fill, (int, float, np.integer, np.floating, np.bool_)):
        raise TypeError(f"fill={short(fill)} must be a number")
    if dtype.kind == "f":
        return float(fill)
    least, most = _LIMITS[dtype]
    if not (least <= fill <= most and float(fill).is_integer()):
        raise ValueError(f"fill={short(fill)}: {dtype} holds whole numbers from {least} to {most}")
    return float(fill)
