"""Functions of scipy.ndimage by their own names and signatures, where both mean the same.

They take orders 0 and 1, and the modes "nearest" and "grid-constant". Everything else is another
function, and refused with the call that is nearest to it. Positions are those of scipy. Readings
of order 1 differ in the last bits, since the products are summed in another order: by at most 1e-12
of the largest voxel. Order 0 gives the voxels of scipy, but where a position is half way between
two voxels and rounds to one side or the other: in `affine_transform` with a diagonal of three
numbers, to which scipy adds ``offset / matrix`` before it multiplies (3 x 3 gives the same voxels),
and in `zoom` with `grid_mode`, where both round positions in formulas of their own.

As in scipy, nothing smooths where voxels become larger. A coordinate that is not a number, for
which scipy promises nothing, is outside.
"""

from __future__ import annotations

import re
from collections.abc import Callable, Sequence
from functools import wraps
from typing import Any, Literal, ParamSpec, TypeAlias

import numpy as np
import numpy.typing as npt

from volux._arrays import array_of
from volux._grid import Grid
from volux._image import Image
from volux._keywords import described
from volux._numbers import MOST_VOXELS, placing, steps
from volux._resample import resample
from volux._resize import resize
from volux._sample import sample
from volux._types import Array, DLPackProducer, Matrix, Number, Shape, Vector
from volux._words import short

__all__ = ["affine_transform", "map_coordinates", "zoom"]

P = ParamSpec("P")
Output: TypeAlias = Array | npt.DTypeLike | None

_ORDERS: tuple[Literal["nearest"], Literal["linear"]] = ("nearest", "linear")
_BORDERS: dict[str, Literal["edge", "constant"]] = {"nearest": "edge", "grid-constant": "constant"}
_REFUSED_MODES = {
    "constant": "; 'constant' gives cval as soon as a position is beyond the outer centres",
    "grid-mirror": "; numpy.pad(input, n, 'symmetric') makes such a border",
    "reflect": "; numpy.pad(input, n, 'symmetric') makes such a border",
    "mirror": "; numpy.pad(input, n, 'reflect') makes such a border",
    "grid-wrap": "; numpy.pad(input, n, 'wrap') makes such a border",
    "wrap": "; numpy.pad(input, n, 'wrap') is near it",
}

# What the functions underneath call a thing, and what it is called here.
_WORDS = {
    "affine": "matrix",
    "fill": "cval",
    "image": "input",
    "interpolation='linear'": "order=1",
    "'nearest' and 'label'": "order=0",
    "out": "output",
    "points": "coordinates",
    "(..., 3)": "(3, ...)",
}
_NAMES = re.compile("|".join(rf"(?<!\w){re.escape(word)}(?!\w)" for word in _WORDS))


def _in_scipys_words(function: Callable[P, Array]) -> Callable[P, Array]:
    """Let the errors of the functions underneath name the parameters of this one."""

    @wraps(described(function))
    def call(*args: P.args, **kwargs: P.kwargs) -> Array:
        try:
            return function(*args, **kwargs)
        except (TypeError, ValueError) as error:
            words = _NAMES.sub(lambda word: _WORDS[word[0]], str(error))
            raise type(error)(words).with_traceback(error.__traceback__) from None

    return call


@_in_scipys_words
def map_coordinates(
    input: Array | DLPackProducer,  # noqa: A002
    coordinates: npt.ArrayLike,
    output: Output = None,
    order: int = 3,
    mode: str = "constant",
    cval: Number = 0.0,
    prefilter: bool = True,
) -> Array:
    """Read an array at coordinates.

    Parameters
    ----------
    input : ndarray or DLPack producer, three axes
        It is read where it is.
    coordinates : array_like, (3, ...)
        The index along each axis of `input`, voxel centres at whole numbers.
    $scipys

    Returns
    -------
    ndarray
        The shape is that of `coordinates` without the first axis; `output` itself, if an array.
    $raises

    Examples
    --------
    >>> import numpy as np
    >>> from volux.ndimage import map_coordinates
    >>> image = np.arange(8.0).reshape(2, 2, 2)
    >>> map_coordinates(image, [[0.5, 0], [0, 0], [0, 0.25]], order=1, mode="nearest")
    array([2.  , 0.25])
    """
    source, how = _source(input, order, mode, cval, prefilter)
    return sample(source, _points(coordinates), **how, **_wanted(output))


def _points(coordinates: npt.ArrayLike) -> npt.NDArray[Any]:
    if np.iscomplexobj(coordinates):
        raise TypeError("coordinates are complex; they must be real")
    places = np.asarray(coordinates)
    if places.ndim == 0 or places.shape[0] != 3:
        raise ValueError(f"coordinates have the shape {places.shape}; it must be (3, ...)")
    return np.moveaxis(places, 0, -1)


@_in_scipys_words
def affine_transform(
    input: Array | DLPackProducer,  # noqa: A002
    matrix: npt.ArrayLike,
    offset: float | Vector = 0.0,
    output_shape: Shape | None = None,
    output: Output = None,
    order: int = 3,
    mode: str = "constant",
    cval: Number = 0.0,
    prefilter: bool = True,
) -> Array:
    """Read an array where an affine map takes the indices of the result.

    Parameters
    ----------
    input : ndarray or DLPack producer, three axes
        It is read where it is.
    matrix : array_like, 3 x 3, 3, 3 x 4 or 4 x 4
        Takes an index of the result to one of `input`; three numbers are a diagonal.
    offset : float or three floats
        Is added, unless `matrix` has a column for it.
    output_shape : three ints, optional
        The shape of the result; None: that of `output`, if it is an array, or of `input`.
    $scipys
    $scipys_result

    Examples
    --------
    >>> import numpy as np
    >>> from volux.ndimage import affine_transform
    >>> image = np.arange(4.0).reshape(1, 1, 4)
    >>> affine_transform(image, np.eye(3), (0, 0, 0.5), order=1, mode="nearest")
    array([[[0.5, 1.5, 2.5, 3. ]]])
    """
    source, how = _source(input, order, mode, cval, prefilter)
    if output_shape is None:
        output_shape = output.shape if isinstance(output, np.ndarray) else source.shape
    target = Grid(output_shape, _homogeneous(matrix, offset))
    return resample(source, target, outside="extend", antialias=None, **how, **_wanted(output))


@_in_scipys_words
def zoom(
    input: Array | DLPackProducer,  # noqa: A002
    zoom: float | Vector,
    output: Output = None,
    order: int = 3,
    mode: str = "constant",
    cval: Number = 0.0,
    prefilter: bool = True,
    *,
    grid_mode: bool = False,
) -> Array:
    """Bring an array to another number of voxels.

    Parameters
    ----------
    input : ndarray or DLPack producer, three axes
        It is read where it is.
    zoom : float or three floats
        Voxels for each one along each axis. The factors that count are the quotients of the
        extents, which are rounded to whole numbers, a half to the even one.
    $scipys
    grid_mode : bool
        What stays: the outer centres (False), or the outer edges (True).
    $scipys_result

    Examples
    --------
    >>> import numpy as np
    >>> from volux.ndimage import zoom
    >>> image = np.array([[[0.0, 30.0, 60.0, 90.0]]])
    >>> zoom(image, (1, 1, 7 / 4), order=1, mode="nearest")
    array([[[ 0., 15., 30., 45., 60., 75., 90.]]])
    """
    source, how = _source(input, order, mode, cval, prefilter)
    _check_bool("grid_mode", grid_mode)
    shape = _zoomed(source.shape, zoom)
    how |= {"shape": shape, "antialias": None} | _wanted(output)
    if grid_mode:
        return resize(source, **how)
    return resize(_without_ends(source, shape), align="centres", **how)


def _zoomed(extents: tuple[int, ...], zoom: float | Vector) -> list[int]:
    shape = [round(extent * by) for extent, by in zip(extents, steps("zoom", zoom), strict=True)]
    if not all(1 <= extent <= MOST_VOXELS for extent in shape):
        raise ValueError(f"zoom={short(zoom)} makes the shape {shape} of {extents}")
    return shape


def _source(
    given: Array | DLPackProducer, order: int, mode: str, cval: Number, prefilter: bool
) -> tuple[Array, dict[str, Any]]:
    """Return the array that is read, and how, in our own keywords."""
    if isinstance(given, Image):
        raise TypeError("input is a volux.Image; it must be an array: input.array")
    source = array_of(given, "input")
    if source.ndim != 3:
        raise ValueError(
            f"input has the shape {source.shape}; it must have three axes: volux.resample() and "
            "volux.sample() read a fourth as channels"
        )
    _check_bool("prefilter", prefilter)
    how = {"interpolation": _ORDERS[_checked_order(order)], "border": _checked_mode(mode)}
    return source, how | ({"fill": cval} if mode == "grid-constant" else {})


def _check_bool(name: str, value: object) -> None:
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name}={short(value)} must be a bool")


def _checked_order(order: object) -> int:
    if isinstance(order, (int, np.integer)) and order in (0, 1):
        return int(order)
    said = f"order={short(order)}: allowed are 0 and 1"
    if isinstance(order, (int, np.integer)) and 2 <= order <= 5:
        said += ", for the others are B-splines; interpolation='cubic' of volux.resample() and "
        said += "volux.sample() is cubic convolution"
    raise ValueError(said)


def _checked_mode(mode: object) -> Literal["edge", "constant"]:
    if isinstance(mode, str) and mode in _BORDERS:
        return _BORDERS[mode]
    hint = _REFUSED_MODES.get(mode, "") if isinstance(mode, str) else ""
    raise ValueError(f"mode={short(mode)}: allowed are 'nearest' and 'grid-constant'{hint}")


def _without_ends(source: Array, shape: Sequence[int]) -> Array:
    """Return what scipy reads where one centre is first and last: the first voxel throughout."""
    alone = [1 in pair for pair in zip(source.shape, shape, strict=True)]
    first = source[tuple(slice(1 if one else None) for one in alone)]
    whole = zip(source.shape, shape, alone, strict=True)
    return np.broadcast_to(first, [wanted if one else extent for extent, wanted, one in whole])


def _wanted(output: Output) -> dict[str, Any]:
    return {"out": output} if isinstance(output, np.ndarray) else {"dtype": output}


def _homogeneous(matrix: npt.ArrayLike, offset: float | Vector) -> Matrix:
    given = placed = np.asarray(matrix)
    if given.shape not in ((3,), (3, 3), (3, 4), (4, 4)):
        raise ValueError(
            f"matrix has the shape {given.shape}; allowed are (3, 3), (3,), (3, 4) and (4, 4)"
        )
    if given.shape != (4, 4):
        placed = np.eye(4)
        columns = 4 if given.shape == (3, 4) else 3
        placed[:3, :columns] = np.diag(given) if given.ndim == 1 else given
        if columns == 3:
            placed[:3, 3] = _checked_offset(offset)
    return placing("matrix", placed)


def _checked_offset(offset: Any) -> Any:
    if np.shape(offset) in ((), (3,)):
        return offset
    raise ValueError(f"offset={short(offset)} must be a number or three")
