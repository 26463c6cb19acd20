"""How much memory a result will take at most."""

from __future__ import annotations

import re
import resource
import sys
from dataclasses import dataclass
from pathlib import Path

from volux.tool._errors import needed
from volux.tool._files import NIBABELS, STREAM, Scan, suffix_of

# What modules that are loaded later take, and threads: as measured, and a little more.
_LATER = 4 << 20


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


def predicted(scan: Scan, amount: Amount, output: str) -> int:
    """Return the bytes that the process will have at most, from now on."""
    by_itk = _is_itks(output)
    if by_itk:
        needed("SimpleITK")  # it takes a part itself, which counts from now on
    made, kept = amount.numbers * amount.computed, amount.numbers * amount.wanted
    casting = made + kept if amount.is_cast else made
    writing = 5 * kept // 2 if by_itk else kept  # as measured: its image, and what it buffers
    return at_most(mapped(scan) + max(casting, writing))


def at_most(more: int) -> int:
    """Return the bytes that the process will have had at most if it takes so many more."""
    return max(peak(), resident() + more + _LATER)


def _is_itks(output: str) -> bool:
    return output not in ("", STREAM) and suffix_of(output) not in NIBABELS


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
