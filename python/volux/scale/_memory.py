"""Memory: what a task needs at most, and what it has taken."""

from __future__ import annotations

import ctypes
import re
from contextlib import suppress
from itertools import product
from math import prod
from pathlib import Path
from typing import Any

import numpy as np

from volux import Grid
from volux._displacement import Transform
from volux._types import Box, Ints
from volux.scale._support import support
from volux.scale._units import Units, extents
from volux.tool._memory import peak as tool_peak

# Python, NumPy, zarr and what their allocators keep.
_PROGRAM = 150 * 10**6
_MARGIN = 1.15

# As malloc.h has it.
_MMAP_THRESHOLD = -3


def needed(support: Ints, unit: Ints, read: Any, made: Any) -> int:
    """Return the bytes for a support that is read and a unit that is made and encoded."""
    voxels = prod(support) * np.dtype(read).itemsize
    result = prod(unit) * np.dtype(made).itemsize
    return int(_MARGIN * (voxels + 2 * result)) + _PROGRAM


def projected(
    source: Grid,
    target: Grid,
    unit: Ints,
    transform: Transform | None,
    options: dict[str, Any],
    dtypes: tuple[Any, Any],
) -> int:
    """Return the bytes that a task needs at most.

    Units at the ends and in the middle of each axis are looked at. Under an affine map all others
    read as many voxels, but for one that rounding adds.
    """
    units = Units(target.shape, unit)
    first, second, third = (sorted({0, n // 2, n - 1}) for n in units.counts)
    amounts = [
        needed(
            _grown(support(source, target, box, transform, options), source), extents(box), *dtypes
        )
        for box in map(units.box, product(first, second, third))
    ]
    return max(amounts)


def _grown(box: Box, source: Grid) -> Ints:
    first, second, third = (min(n + 1, m) for n, m in zip(extents(box), source.shape, strict=True))
    return first, second, third


def give_back() -> None:
    """Let glibc hand freed memory of 256 KiB or more back at once; others do as they do.

    It would keep more and more of it between tasks, for blocks that no longer fit.
    """
    with suppress(AttributeError, OSError):
        ctypes.CDLL(None).mallopt(_MMAP_THRESHOLD, 1 << 18)


def peak() -> int:
    """Return the bytes that this process has had at most."""
    status = Path("/proc/self/status")
    if status.exists():  # the other figure counts from before the program was loaded
        kilobytes = re.search(r"^VmHWM:\s*(\d+)", status.read_text(), re.MULTILINE)
        if kilobytes:
            return 1024 * int(kilobytes[1])
    return tool_peak()
