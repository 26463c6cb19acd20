"""Arrays that come in and go out: where they are, without a copy, or an error in words."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from volux._axes import PLACES, from_xyz
from volux._types import Array, Axes, Ints
from volux._words import listed, short

_NAMES = ("uint8", "int16", "uint16", "int32", "uint32", "float32", "float64")
SERVED = frozenset([np.dtype(np.bool_), *map(np.dtype, _NAMES)])

_FRACTIONS: dict[Any, np.dtype[Any]] = {name: np.dtype(name) for name in ("float32", "float64")}

# Which type holds the numbers of one that is not served.
_NEAREST = {"int8": "int16", "int64": "int32", "uint64": "uint32", "float16": "float32"}

# DLPack's devices whose memory the processor reads: its own, and what CUDA and ROCm pinned.
_ON_THE_CPU = frozenset([1, 3, 11])


def array_of(image: object, name: str) -> Array:
    """Return the array of an ndarray or a DLPack producer, where it is."""
    if type(image) is np.ndarray:
        return _served(image, name)
    if isinstance(image, np.ma.MaskedArray):
        raise TypeError(f"{name} is a masked array; {name}.filled(value) gives one without a mask")
    if isinstance(image, np.ndarray):
        return _served(np.asarray(image), name)
    if hasattr(image, "__dlpack__") and hasattr(image, "__dlpack_device__"):
        return _served(_produced(image, name), name)
    raise TypeError(_foreign(image, name))


def _produced(producer: Any, name: str) -> Array:
    device = int(producer.__dlpack_device__()[0])
    if device not in _ON_THE_CPU:
        raise TypeError(
            f"{name} is on a device (DLPack's number {device}); it must be in the memory of the "
            f"processor, for instance {name}.cpu() of torch"
        )
    try:
        return np.from_dlpack(producer)
    except (BufferError, RuntimeError, TypeError, ValueError) as error:
        raise TypeError(f"{name} gives no array through DLPack: {error}") from error


def _foreign(image: object, name: str) -> str:
    kind = type(image)
    package = kind.__module__.partition(".")[0]
    images = "a volux.Image, " if name in ("image", "like") else ""
    said = f"{name} is a {kind.__name__}; allowed are {images}a numpy array"
    said += " and an array that DLPack hands on"
    if package == "nibabel":
        return f"{said}: volux.Image.from_nibabel({name})"
    if package == "SimpleITK":
        return f"{said}: volux.Image.from_sitk({name})"
    return f"{said}: np.asarray({name})"


def _served(array: Array, name: str) -> Array:
    if not 3 <= array.ndim <= 4:
        raise ValueError(_of_other_axes(array, name))
    refuse_type(array.dtype, name)
    if array.size == 0:
        raise ValueError(f"{name} has the shape {array.shape}, and so no voxels")
    if not array.flags.aligned:
        raise ValueError(f"{name} is not aligned to its elements; {name}.copy() is")
    return array


def refuse_type(dtype: np.dtype[Any], name: str) -> None:
    """Say which types there are, unless it is one of them."""
    if dtype not in SERVED:
        raise TypeError(_of_other_type(dtype, name))


def _of_other_axes(array: Array, name: str) -> str:
    said = f"{name} has the shape {array.shape}; it must have three axes, and a fourth for channels"
    if array.ndim == 2:
        return f"{said}: {name}[np.newaxis] is a volume of one plane"
    if array.ndim > 4:
        return f"{said}: {name}.reshape(*shape, -1) joins the others to channels"
    return said


def _of_other_type(dtype: np.dtype[Any], name: str) -> str:
    said = f"{name} has the dtype {dtype}; allowed are {listed(_NAMES)}, and bool for labels"
    if not dtype.isnative and dtype.newbyteorder("=") in SERVED:
        native = f"{name}.astype({name}.dtype.newbyteorder('='))"
        return f"{said}, in the byte order of the machine: {native}"
    if dtype.kind == "c":
        return f"{said}: {name}.real and {name}.imag, one after the other"
    nearest = _NEAREST.get(dtype.newbyteorder("=").name, "float64")
    return f"{said}: {name}.astype({nearest!r}), if that holds its numbers"


def in_xyz(array: Array, axes: Axes) -> Array:
    """Return the same voxels with the axes x, y, z and channel; bools as bytes."""
    if array.dtype.kind == "b":
        array = array.view(np.uint8)
    ordered: Array
    if array.ndim == 3:
        ordered = array.transpose(PLACES[axes])[..., np.newaxis]
    else:
        ordered = array.transpose((*PLACES[axes], 3))
    return ordered


def new_array(shape: Ints, channels: int | None, dtype: np.dtype[Any], axes: Axes) -> Array:
    """Return memory for a result, x fastest, with these axes; `shape` is along x, y and z."""
    last = () if channels is None else (channels,)
    memory = np.empty((*shape[::-1], *last), dtype)
    return np.transpose(memory, (*from_xyz((2, 1, 0), axes), 3)[: memory.ndim])


def checked_out(
    out: object, shape: tuple[int, ...], dtype: np.dtype[Any], inputs: dict[str, Array]
) -> Array:
    """Return an array that may be written, or say what is wrong with it."""
    if not isinstance(out, np.ndarray):
        raise TypeError(f"out is a {type(out).__name__}; it must be a numpy array")
    if out.shape != shape:
        raise ValueError(f"out has the shape {out.shape}; the result has {shape}")
    if out.dtype != dtype:
        raise TypeError(f"out has the dtype {out.dtype}; the result has {dtype}")
    if not out.flags.writeable:
        raise ValueError("out is read-only; it must be writable")
    if not out.flags.aligned:
        raise ValueError("out is not aligned to its elements; np.empty(shape, dtype) is")
    if _is_folded(out):
        raise ValueError(f"out has the strides {out.strides}, by which its own voxels overlap")
    _refuse_overlap(out, inputs)
    return out


def _is_folded(array: Array) -> bool:
    # As the C++ library has it: each stride is at least what the smaller ones span.
    if array.size == 0:  # whose strides NumPy makes as it likes
        return False
    span = array.itemsize
    for stride, extent in sorted(zip(map(abs, array.strides), array.shape, strict=True)):
        if extent > 1:
            if stride < span:
                return True
            span += stride * (extent - 1)
    return False


def _refuse_overlap(out: Array, inputs: dict[str, Array]) -> None:
    for name, array in inputs.items():
        if np.may_share_memory(out, array):
            raise ValueError(
                f"out overlaps {name}: their memory, from the lowest to the highest byte, must be "
                "apart; without out= the result gets its own"
            )


def result_dtype(dtype: npt.DTypeLike | None, source: np.dtype[Any], out: object) -> np.dtype[Any]:
    """Return the type of a result: the source's, float32 or float64."""
    if dtype is None:
        wanted = out.dtype if isinstance(out, np.ndarray) else source
    else:
        wanted = _FRACTIONS.get(dtype) or _named_dtype(dtype)
    if wanted == source or wanted in _FRACTIONS.values():
        return wanted
    allowed = dict.fromkeys([str(source), *_FRACTIONS])
    name = "out.dtype" if dtype is None else "dtype"
    raise ValueError(
        f"{name}={str(wanted)!r}: allowed are {listed(allowed)}; "
        f"result.astype({str(wanted)!r}) converts further"
    )


def _named_dtype(dtype: npt.DTypeLike) -> np.dtype[Any]:
    try:
        return np.dtype(dtype)
    except TypeError:
        raise TypeError(f"dtype={short(dtype)} is no type of numpy's") from None
