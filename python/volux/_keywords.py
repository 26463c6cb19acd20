"""Keywords that several calls share: their defaults and their words, each in one place."""

from __future__ import annotations

import re
from collections.abc import Callable
from functools import wraps
from inspect import Parameter, Signature, signature
from textwrap import indent
from typing import Any, ParamSpec, TypeVar

from volux._words import unknown_keyword

P = ParamSpec("P")
R = TypeVar("R")

READING: dict[str, Any] = {
    "interpolation": "linear",
    "border": "edge",
    "fill": 0,
}
FILLING: dict[str, Any] = {
    **READING,
    "outside": "fill",
    "antialias": None,
    "overflow": "saturate",
    "dtype": None,
    "out": None,
    "threads": None,
    "progress": None,
}

_READING = """\
interpolation : {"linear", "nearest", "cubic", "label"}
    The kernel; "label" for segmentations: it reads the label that "linear" would weigh most.
border : {"edge", "constant"}
    What a kernel reads for voxels outside the image: the nearest one, or `fill`.
fill : number
    For voxels outside; an integer image must be able to hold it."""

_THREADS = """\
threads : int, optional
    How many work at most; None: as `threads` says. The bits are the same."""

_RAISES = """\

Raises
------
TypeError
    If an argument is of another kind.
ValueError
    If a value is not allowed; then nothing has been written."""

# What stands for a line "$name" of a docstring.
SHARED = {
    "image": """\
image : Image, ndarray or DLPack producer
    Three axes, and a last one for channels. It is read where it is. The world of a plain array
    is its index space, component by component in the order of its axes.""",
    "points": """\
points : array_like, (..., 3)
    In the order of the array's axes, voxel centres at whole numbers, or (x, y, z) in the
    world. Doubles with the axes (n, 3) are read where they are; other numbers, and axes that
    cannot be joined, are converted first.
space : {"index", "world"}
    What the points count in. The world of a plain array is its index space.""",
    "channel": """\
channel : int, optional
    Which one to read; None reads all.""",
    "reading": _READING,
    "filling": f"""\
{_READING}
outside : {{"fill", "extend"}}
    What the border "edge" gives farther than half a voxel beyond the outer centres. A change of
    size goes there by rounding alone, and extends the edge.
antialias : {{None, "mean", "auto"}}, optional
    "mean": each voxel of the result is the mean of as many samples as it is long; labels vote.
    "auto": so with every kernel but "nearest". None: one sample.
overflow : {{"saturate", "wrap"}}
    What integers store for a reading that they cannot hold.
dtype : dtype, optional
    The type of the result: the image's, float32 or float64. None: that of `out`, or the image's.
    Integers round half away from zero; float64 is the reading itself.
out : ndarray, optional
    Gets the result; any strides, but no overlap with what is read.
{_THREADS}
progress : callable, optional
    Is called now and then with the fraction that is done; what it raises ends the call.""",
    "threads": _THREADS,
    "raises": _RAISES,
    "aliasing": """\

Warns
-----
AliasingWarning
    If voxels of the result are as long as two of the image, or longer, and `antialias` was not
    given.""",
    "scipys": """\
output : ndarray or dtype, optional
    Gets the readings, or says their type: that of `input`, float32 or float64. None: that of
    `input`; integers round half away from zero.
order : {0, 1}
    0 reads the nearest voxel, a half goes up; 1 is linear. It must be given: 3, which is
    scipy's default, is a B-spline.
mode : {"nearest", "grid-constant"}
    What lies outside: the nearest voxel, or `cval`. It must be given as well.
cval : number
    For voxels outside; an integer array must be able to hold it.
prefilter : bool
    Counts for no order that is served.""",
    "scipys_result": f"""\

Returns
-------
ndarray
    The result; `output` itself, if it is an array.
{_RAISES}""",
}


def described(function: Callable[P, R]) -> Callable[P, R]:
    """Complete a docstring by the words that it shares with others."""
    words = function.__doc__ or ""
    function.__doc__ = re.sub(
        r"^( *)\$(\w+)$", lambda line: indent(SHARED[line[2]], line[1]), words, flags=re.MULTILINE
    )
    return function


def takes(**defaults: Any) -> Callable[[Callable[P, R]], Callable[P, R]]:
    """Give a function keywords with defaults, shared words, and answers to keywords of others."""

    def complete(function: Callable[P, R]) -> Callable[P, R]:
        parameters = _parameters(function, defaults)
        known = frozenset(parameter.name for parameter in parameters)

        @wraps(described(function))
        def call(*args: P.args, **kwargs: P.kwargs) -> R:
            if not known.issuperset(kwargs):
                raise unknown_keyword(function.__name__, kwargs, known)
            return function(*args, **{**defaults, **kwargs})

        call.__signature__ = Signature(parameters)  # type: ignore[attr-defined]
        return call

    return complete


def _parameters(function: Callable[..., Any], defaults: dict[str, Any]) -> list[Parameter]:
    own = signature(function).parameters.values()
    taken = [p for p in own if p.kind != Parameter.VAR_KEYWORD and p.name not in defaults]
    return taken + [
        Parameter(name, Parameter.KEYWORD_ONLY, default=default)
        for name, default in defaults.items()
    ]
