"""How much memory a result will take at most."""

from __future__ import annotations

import re
import resource
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

from volux.tool._errors import needed
from volux.tool._files import NIBABELS, SINGLE, STREAM, Scan, held_by, suffix_of

# What modules that are loaded later take, threads, and the rest of large pages: as measured, and a
# little more.
_LATER = 6 << 20
_LATER_BY_ITK = 6 << 20

# The system maps so much of a file around what is read.
_AROUND = 1 << 17


@dataclass(frozen=True)
class Amount:
    """What a verb makes.

    Parameters
    ----------
    plane, numbers : int
        How many there are in a plane along k, and in all.
    computed, cast : int
        Bytes of one when it is computed, and in an array for another type; 0 where there is none.
    kept : dtype
        The type of the numbers in the file.
    is_scaled : bool
        Whether the file scales them.
    """

    plane: int
    numbers: int
    computed: int
    cast: int
    kept: np.dtype[Any]
    is_scaled: bool

    @property
    def made(self) -> int:
        """Bytes of a number that is made."""
        return self.computed + self.cast


def predicted(scan: Scan, amount: Amount, output: str) -> int:
    """Return the bytes that the process will have at most, from now on."""
    suffix = ".nii" if output in ("", STREAM) else suffix_of(output)
    more = mapped(scan) + passing(scan, amount)
    if suffix not in NIBABELS:
        needed("SimpleITK")  # it takes a part itself, which counts from now on
        more += _LATER_BY_ITK
    written = (amount.cast or amount.computed) + _for_writing(scan, amount, suffix)
    return at_most(more + int(amount.numbers * max(amount.made, written)))


def passing(scan: Scan, amount: Amount) -> int:
    """Return the bytes of what is there for a moment: two copies of a plane, to hash or write."""
    numbers = scan.stored.array
    made = amount.plane * (8 if amount.is_scaled else amount.kept.itemsize)
    around = min(mapped(scan), (scan.stored.channels or 1) * _AROUND)  # each lies elsewhere in it
    return 2 * max(made, numbers[:, :, :1].nbytes) + around


def _for_writing(scan: Scan, amount: Amount, suffix: str) -> float:
    """Return the bytes for each number that is written, beside that number itself."""
    if suffix in SINGLE:
        return 0.0
    is_mgh, is_itks = suffix in (".mgh", ".mgz"), suffix not in NIBABELS
    is_decoded = amount.is_scaled and (is_mgh or is_itks)
    size = amount.kept.itemsize
    if is_decoded:
        size = 4 if is_mgh else scan.values(slice(1)).dtype.itemsize
    copy = size if is_decoded or held_by(amount.kept) != amount.kept else 0
    if is_itks:
        return copy + size  # the latter is its image
    volumes = next((extent for extent in scan.tail[::-1] if extent > 1), amount.numbers)
    copies = 1 + is_mgh + 1.25 * suffix.endswith("z")  # nibabel's, of a volume at a time
    return copy + copies * size / volumes


def at_most(more: int) -> int:
    """Return the bytes that the process will have had at most if it takes so many more."""
    return max(peak(), resident() + more + _LATER)


def mapped(scan: Scan) -> int:
    """Return the bytes of a file that are in memory only after they have been read."""
    return 0 if scan.mapping is None else scan.stored.array.nbytes


def resident() -> int:
    """Return the bytes that the process has in memory."""
    return _status("VmRSS") or peak()


def peak() -> int:
    """Return the bytes that the process has had at most."""
    own = _status("VmHWM")
    if own:
        return own
    most = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    return most if sys.platform == "darwin" else most * 1024


def _status(name: str) -> int:
    """Return the bytes that Linux says, or 0; those of `resource` may be of the parent."""
    status = Path("/proc/self/status")
    if not status.exists():
        return 0
    found = re.search(rf"^{name}:\s*(\d+) kB$", status.read_text(), re.MULTILINE)
    return int(found[1]) * 1024 if found else 0
