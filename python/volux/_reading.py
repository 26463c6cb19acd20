"""How samples are taken: the keywords that every call shares."""

from __future__ import annotations

from typing import Any

import numpy as np

from volux import _core
from volux._threads import threads_of
from volux._types import Antialias, Border, Interpolation, Ints, Number, Outside, Overflow, Progress
from volux._words import chosen

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
    kernel = chosen("interpolation", interpolation, KERNELS)
    if dtype.kind == "b" and interpolation in ("linear", "cubic"):
        raise ValueError(
            f"interpolation={interpolation!r} of bools: allowed are 'nearest' and 'label'; "
            "image.astype('float32') gives fractions"
        )
    if progress is not None and not callable(progress):
        raise TypeError(f"progress={progress!r} must be called with a fraction, or None")
    return _core.Reading(
        kernel=kernel,
        border=chosen("border", border, BORDERS),
        outside=_fill_of(fill, dtype),
        edge_extends=chosen("outside", outside, OUTSIDES) == 1,
        overflow=chosen("overflow", overflow, OVERFLOWS),
        subsamples=_subsamples(antialias, kernel),
        threads=threads_of(threads),
        progress=progress,
    )


def _subsamples(antialias: Antialias | None, kernel: int) -> Ints:
    number = chosen("antialias", antialias, ANTIALIASES)
    wanted = number == 1 or (number == 2 and kernel != KERNELS["nearest"])
    return _AS_LONG if wanted else _ONE


def _fill_of(fill: Number, dtype: np.dtype[Any]) -> float:
    if not isinstance(fill, (int, float, np.integer, np.floating, np.bool_)):
        raise TypeError(f"fill={fill!r} must be a number")
    if dtype.kind == "f":
        return float(fill)
    least, most = _LIMITS[dtype]
    if not (least <= fill <= most and float(fill).is_integer()):
        raise ValueError(f"fill={fill!r}: {dtype} holds whole numbers from {least} to {most}")
    return float(fill)
