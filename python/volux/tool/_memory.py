"""How much memory a result will take at most."""

from __future__ import annotations

import resource
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

from volux.tool._errors import needed
from volux.tool._files import NIBABELS, STREAM, Scan, suffix_of

_FLOAT64 = 8


@dataclass(frozen=True)
class Amount:
    """What a verb makes: how many numbers, of how many bytes at first and in the end."""

    numbers: int
    computed: int
    wanted: int

    @property
    def is_cast(self) -> bool:
        """Whether the numbers that are computed get another type."""
        return self.computed != self.wanted


def predicted(scan: Scan, amount: Amount, output: str, *, is_digested: bool) -> int:
    """Return the bytes that the process will have at most, from now on."""
    by_itk = _is_itks(output)
    if by_itk:
        needed("SimpleITK")  # it takes a part itself, which counts from now on
    made, kept = amount.numbers * amount.computed, amount.numbers * amount.wanted
    casting = made + kept if amount.is_cast else made
    writing = 5 * kept // 2 if by_itk else kept  # as measured: its image, and what it buffers
    digesting = kept + _decoded(scan, amount) if is_digested else 0
    return max(peak(), resident() + _mapped(scan) + max(casting, writing, digesting))


def _is_itks(output: str) -> bool:
    return output not in ("", STREAM) and suffix_of(output) not in NIBABELS


def _decoded(scan: Scan, amount: Amount) -> int:
    """Return what the values of both volumes take, if they are not the numbers in the files."""
    if not scan.is_scaled:
        return 0
    return _FLOAT64 * (scan.stored.array.size + amount.numbers)


def _mapped(scan: Scan) -> int:
    """Return the bytes of a file that are in memory only after they have been read."""
    array: Any = scan.stored.array
    while array is not None and not isinstance(array, np.memmap):
        array = getattr(array, "base", None)
    return 0 if array is None else scan.stored.array.nbytes


def resident() -> int:
    """Return the bytes that the process has in memory."""
    statm = Path("/proc/self/statm")
    if not statm.exists():
        return peak()
    return int(statm.read_text().split()[1]) * resource.getpagesize()


def peak() -> int:
    """Return the bytes that the process has had at most."""
    most = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    return most if sys.platform == "darwin" else most * 1024
