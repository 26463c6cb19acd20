"""Memory: what a task needs at most, and what it has taken."""

from __future__ import annotations

import ctypes
import re
from contextlib import suppress
from math import prod
from pathlib import Path
from typing import Any

import numpy as np

from volux import Affine, Grid
from volux._displacement import Transform, parts_of
from volux._types import Ints
from volux.scale._support import support
from volux.scale._units import Units, extents
from volux.tool._memory import peak as tool_peak

# Python, NumPy, zarr and what their allocators keep.
_PROGRAM = 150 * 10**6
_MARGIN = 1.15

_ITK = 100 * 10**6  # SimpleITK, which reads fields

# Units of which each is looked at.
_FEW = 512

# Voxels along an axis of a volume in which a unit is far from any border.
_FAR = 1 << 20

# As malloc.h has them.
_TRIM_THRESHOLD, _MMAP_THRESHOLD = -1, -3
_LARGE = 1 << 22  # chunks are smaller: to map each of them takes longer than to encode it
_KEPT = 1 << 24  # of freed memory, which the next chunks take: to map it anew takes longer as well


def needed(support: Ints, unit: Ints, dtypes: tuple[Any, Any], at_once: int, padded: Ints) -> int:
    """Return the bytes for a support that is read and a unit that is made and encoded.

    Parameters
    ----------
    support, unit : three ints
        How many voxels are read and made.
    dtypes : tuple
        The type of what is read, and of what is made.
    at_once : int
        Bytes of chunks that are decoded whole, and of the transform.
    padded : three ints
        How many voxels are encoded, as chunks that stick out of the result are filled up.
    """
    read, made = (np.dtype(dtype).itemsize for dtype in dtypes)
    result = prod(unit) * made
    resampled = prod(support) * read + at_once + result
    return int(_MARGIN * (resampled + prod(padded) * made)) + _PROGRAM


def projected(
    source: Grid,
    target: Grid,
    unit: Ints,
    transform: Transform | None,
    options: dict[str, Any],
    dtypes: tuple[Any, Any],
    at_once: int,
) -> int:
    """Return the bytes that a task needs at most."""
    own = _smaller(unit, target.shape)
    support = _largest(source, target, Units(target.shape, own), transform, options)
    return needed(support, own, dtypes, at_once + of_transform(transform), unit)


def of_transform(transform: Transform | None) -> int:
    """Return the bytes of a displacement field, twice while it is read, and of what reads it."""
    field = None if transform is None else parts_of(transform)[1]
    return 0 if field is None else 2 * field.vectors.nbytes + _ITK


def _largest(
    source: Grid, target: Grid, units: Units, transform: Transform | None, options: dict[str, Any]
) -> Ints:
    """Return how many voxels along each axis are enough for any unit.

    Under a field of few units all are looked at. Else the unit is moved far from any border: it
    then reads as many voxels as anywhere, but for one that rounding adds, and for what the field
    moves differently in one place and another.
    """
    before, field, after = parts_of(Affine(np.eye(4)) if transform is None else transform)
    if field is not None and units.tasks <= _FEW:
        boxes = (units.box(units.place(task)) for task in range(units.tasks))
        each = [extents(support(source, target, box, transform, options)) for box in boxes]
        return max(each, key=prod)
    to_source = np.linalg.inv(source.affine) @ _square(after)
    moved = to_source @ _square(before) @ target.affine
    moved[:3, 3] = _FAR / 2 + 0.5
    far, place = Grid((_FAR,) * 3, np.eye(4), axes="zyx"), Grid(units.unit, moved, axes="zyx")
    box = support(far, place, units.box((0, 0, 0)), None, options)
    more = np.zeros(3) if field is None else _differences(to_source[:3, :3], field.vectors)
    a, b, c = (n + 1 + int(np.ceil(by)) for n, by in zip(extents(box), more, strict=True))
    return _smaller((a, b, c), source.shape)


def _differences(linear: Any, vectors: Any) -> Any:
    """Return how far apart a field moves voxels along each axis of the source; 0 outside of it."""
    least, most = np.zeros(3), np.zeros(3)
    for plane in vectors:
        moved = plane.reshape(-1, 3) @ linear.T
        least, most = np.minimum(least, moved.min(axis=0)), np.maximum(most, moved.max(axis=0))
    return most - least


def _square(rows: Any) -> Any:
    return np.vstack([np.asarray(rows)[:3], [0.0, 0.0, 0.0, 1.0]])


def _smaller(one: Ints, other: Ints) -> Ints:
    first, second, third = map(min, one, other)
    return first, second, third


def give_back() -> None:
    """Let glibc hand freed blocks of 4 MiB or more back at once; others do as they do.

    It would keep more and more of them between tasks, for blocks that no longer fit.
    """
    with suppress(AttributeError, OSError):
        mallopt = ctypes.CDLL(None).mallopt
        mallopt(_MMAP_THRESHOLD, _LARGE)
        mallopt(_TRIM_THRESHOLD, _KEPT)


def peak() -> int:
    """Return the bytes that this process has had at most."""
    status = Path("/proc/self/status")
    if status.exists():  # the other figure counts from before the program was loaded
        kilobytes = re.search(r"^VmHWM:\s*(\d+)", status.read_text(), re.MULTILINE)
        if kilobytes:
            return 1024 * int(kilobytes[1])
    return tool_peak()
