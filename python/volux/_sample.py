"""Readings at points."""

from __future__ import annotations

from collections.abc import Callable
from functools import wraps
from inspect import signature
from typing import TYPE_CHECKING, Any, NamedTuple, TypedDict

import numpy as np
import numpy.typing as npt

from volux import _core
from volux._arrays import checked_out, result_dtype
from volux._axes import PLACES, from_xyz
from volux._image import Image
from volux._keywords import READING, P, takes
from volux._numbers import whole
from volux._points import listed, triples
from volux._reading import BORDERS, KERNELS, reading
from volux._subject import Subject
from volux._types import Array, Axes, Border, DLPackProducer, Interpolation, Matrix, Number, Space
from volux._words import chosen

if TYPE_CHECKING:
    from typing_extensions import Unpack

SPACES = {"index": 0, "world": 1}

# So many points at once go through memory of our own to an `out` with gaps.
_AT_ONCE = 1 << 16


class SamplingOptions(TypedDict, total=False):
    """What both calls take."""

    interpolation: Interpolation
    border: Border
    fill: Number
    channel: int | None
    threads: int | None


def _shortened(function: Callable[P, Array]) -> Callable[P, Array]:
    # The checks take longer than a few points do, so the compiled part answers what needs none.
    @wraps(function)
    def call(*args: P.args, **kwargs: P.kwargs) -> Array:
        readings = _core.sample_plainly(_PLAIN, args, kwargs)
        return function(*args, **kwargs) if readings is None else readings

    return call


@_shortened
@takes(**READING, channel=None, dtype="float64", out=None, threads=None)
def sample(
    image: Image | Array | DLPackProducer,
    points: npt.ArrayLike,
    *,
    space: Space = "index",
    dtype: npt.DTypeLike | None = "float64",
    out: Array | None = None,
    **options: Unpack[SamplingOptions],
) -> Array:
    """Read an image at points; the edge extends however far.

    Parameters
    ----------
    $image
    $points
    $reading
    $channel
    dtype : dtype, optional
        The type of the readings: float64, float32 or the image's, as None is. Only float64 is the
        reading itself.
    out : ndarray, optional
        Gets the readings; any strides, but no overlap with what is read.
    $threads

    Returns
    -------
    ndarray
        The shape is that of `points` without the last axis. Channels come last if all are read.
    $raises

    Examples
    --------
    >>> import numpy, volux
    >>> volux.sample(numpy.arange(8.0).reshape(2, 2, 2), [(0.5, 0, 0), (0, 0, 0.25)])
    array([2.  , 0.25])
    """
    source = Subject(image).refuse_brick("sample")
    return _readings(source, _where(source, points, space), dtype, out, **options)


_PLAIN = (
    KERNELS,
    BORDERS,
    {p.name: p.default for p in signature(sample).parameters.values() if p.default is not p.empty},
    np.ndarray,
    np.float64,
    np.array,
    np.empty,
)


def _readings(
    source: Subject, where: _Places, dtype: Any, out: Any, *, channel: Any, **options: Any
) -> Array:
    one = _channel(channel, source)
    how = reading(source.array.dtype, **options)
    shape = (*where.shape, *(source.array.shape[3:] if one < 0 else ()))
    wanted = result_dtype(dtype, source.array.dtype, out)
    if out is None:
        results = np.empty(shape, wanted)
    else:
        inputs = {"image": source.array, "points": np.asarray(where.given)}
        results = checked_out(out, shape, wanted, inputs)
    _read(source, where, one, results, how)
    return results


@takes(**READING, channel=None, threads=None)
def sample_gradient(
    image: Image | Array | DLPackProducer,
    points: npt.ArrayLike,
    *,
    space: Space = "index",
    **options: Unpack[SamplingOptions],
) -> tuple[Matrix, Matrix]:
    """Read an image and its derivatives at points, by the formula itself and not by differences.

    Parameters
    ----------
    $image
    $points
    $reading
    $channel
    $threads

    Returns
    -------
    values : ndarray, float64
        The readings, as `sample` gives them.
    gradients : ndarray, float64, (..., 3)
        How fast the reading grows along each axis of the array, by voxels; or along x, y and z of
        the world, by its units. Those of "nearest" are 0; "label" has none and is refused.
    $raises

    Examples
    --------
    >>> import numpy, volux
    >>> volux.sample_gradient(numpy.arange(8.0).reshape(2, 2, 2), (0.5, 0.5, 0.5))
    (array(3.5), array([4., 2., 1.]))
    """
    source = Subject(image).refuse_brick("sample_gradient")
    return _gradients(source, _where(source, points, space), **options)


def _gradients(
    source: Subject, where: _Places, *, channel: Any, **options: Any
) -> tuple[Matrix, Matrix]:
    if options["interpolation"] == "label":
        raise ValueError("interpolation='label' has no derivatives; allowed are the other kernels")
    one = _channel(channel, source)
    how = reading(source.array.dtype, **options)
    count = source.voxels.shape[3] if one < 0 else 1
    results = np.empty((len(where.points), count, 4))
    _core.sample_gradient(source.voxels, where.points, where.map, one, results, how)
    last = source.array.shape[3:] if one < 0 else ()
    results = results.reshape(*where.shape, *last, 4)
    order = (1, 2, 3) if where.map is not None else from_xyz((1, 2, 3), source.axes)
    return results[..., 0].copy(), results[..., list(order)]


class _Places(NamedTuple):
    points: Matrix  # (n, 3): x, y, z
    map: Matrix | None  # from their space to voxels; None: they count in voxels
    shape: tuple[int, ...]
    given: npt.ArrayLike


def _where(source: Subject, points: npt.ArrayLike, space: Space) -> _Places:
    given = triples(points)
    flat = listed(given)
    in_world = chosen("space", space, SPACES) == 1
    if in_world and source.image is not None:
        return _Places(flat, _core.inverse(source.grid._rows), given.shape[:-1], points)
    return _Places(_in_xyz(flat, source.axes), None, given.shape[:-1], points)


def _in_xyz(points: Matrix, axes: Axes) -> Matrix:
    if axes == "xyz":
        return points
    return points[:, ::-1] if axes == "zyx" else points[:, list(PLACES[axes])]


def _channel(channel: int | None, source: Subject) -> int:
    # -1 is all of them; without an axis for channels, all is the only one.
    if channel is None:
        return 0 if source.channels is None else -1
    return whole("channel", channel, least=0, most=source.voxels.shape[3] - 1)


def _read(source: Subject, where: _Places, one: int, results: Array, how: _core.Reading) -> None:
    rows = (-1, *(source.array.shape[3:] if one < 0 else ()))
    if results.flags.c_contiguous:
        _core.sample(source.voxels, where.points, where.map, one, _numbers(results, rows), how)
        return
    channels = results.size // max(len(where.points), 1)
    for begin in range(0, len(where.points), _AT_ONCE):
        points = where.points[begin : begin + _AT_ONCE]
        block = np.empty(len(points) * channels, results.dtype)
        _core.sample(source.voxels, points, where.map, one, _numbers(block, rows), how)
        results.flat[begin * channels : begin * channels + block.size] = block


def _numbers(results: Array, rows: tuple[int, ...]) -> Array:
    numbers = results.view(np.uint8) if results.dtype.kind == "b" else results
    return numbers.reshape(rows)
