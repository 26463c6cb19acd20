"""What the verbs that write a volume share: from the options to the plan."""

from __future__ import annotations

import sys
from collections.abc import Iterator
from dataclasses import dataclass, field
from itertools import product
from pathlib import Path
from typing import Any, NamedTuple

import numpy as np

from volux import Grid, Image
from volux._types import Array
from volux.tool import _sidecar
from volux.tool._errors import Misuse, Refusal, say
from volux.tool._files import STREAM, Scan, held_by, read_aloud
from volux.tool._idle import refuse_output, refuse_outside, refuse_overflow
from volux.tool._memory import Amount, predicted
from volux.tool._options import Conduct, Converting, Filling, Reading
from volux.tool._output import refuse
from volux.tool._plan import Plan

TYPES = ("uint8", "int8", "uint16", "int16", "uint32", "int32", "float32", "float64")
_FRACTIONS = ("float32", "float64")

# As many numbers get another type at a time.
_AT_A_TIME = 1 << 15

# A smooth kernel on so few integers is probably a mistake.
_FEW = 32


@dataclass(frozen=True)
class Task:
    """A verb with its inputs and options, as the user gave them."""

    verb: str
    inputs: tuple[str, ...]
    options: dict[str, Any]
    conduct: Conduct
    scans: dict[str, Scan] = field(default_factory=dict)

    def checked(self) -> Task:
        """Return the task, unless its output cannot be written."""
        output, threads = self.conduct.output, self.conduct.threads
        refuse_output(self.conduct)
        if threads is not None and threads < 1:
            raise Misuse(f"--threads {threads}: must be above 0")
        if not output and not self.conduct.dry_run:
            raise Misuse(f"Missing option --output: `volux {self.verb} --help` shows an example")
        if output not in ("", STREAM):
            refuse(output, self.inputs, force=self.conduct.force)
            if self.has_sidecar:
                self._refuse_sidecar(Path(_sidecar.name(output)))
        if output == STREAM and sys.stdout.isatty():
            raise Misuse("-o - writes voxels to stdout, which is a terminal; send it to a file")
        return self

    def _refuse_sidecar(self, path: Path) -> None:
        """Refuse a sidecar that is there; what a scanner said of an input is never replaced."""
        if path.exists() and any(Path(_sidecar.name(name)) == path for name in self.inputs):
            raise Refusal(f"{path}: describes an input; --no-sidecar leaves it as it is")
        if path.exists() and not self.conduct.force:
            raise Refusal(f"{path}: is there already; --force replaces it, --no-sidecar does not")

    @property
    def has_sidecar(self) -> bool:
        """Whether a .json is written beside the output."""
        return self.conduct.sidecar and self.conduct.output not in ("", STREAM)

    def read(self, path: str) -> Scan:
        """Read an input, and say what the user should know about it."""
        scan = self.scans[path] = read_aloud(path, quiet=self.conduct.quiet)
        return scan

    def tell(self, words: str) -> None:
        """Say something that is no error."""
        if not self.conduct.quiet:
            say(words)


def keywords(task: Task, scan: Scan, how: Reading, filling: Filling) -> dict[str, Any]:
    """Return the keywords of volux's calls for options."""
    refuse_outside(how, filling.outside or ("extend" if task.verb == "resize" else "fill"))
    given = {
        "interpolation": how.interp or ("label" if scan.labels else "linear"),
        "border": how.border,
        "fill": _stored(scan, how.fill),
        "outside": filling.outside,
        "antialias": None if filling.antialias == "none" else filling.antialias,
        "overflow": filling.overflow,
        "dtype": _computed(scan, filling.dtype),
        "threads": task.conduct.threads,
    }
    unsaid = {"outside"} if filling.outside is None else set()
    unsaid |= {"antialias"} if filling.antialias is None else set()
    _warn_of_labels(task, scan, str(given["interpolation"]))
    return {name: value for name, value in given.items() if name not in unsaid}


def _stored(scan: Scan, fill: float) -> float:
    number = (fill - scan.inter) / scan.slope
    is_whole = scan.stored.array.dtype.kind in "iu" and scan.is_scaled
    return float(np.rint(number)) if is_whole else number


def _computed(scan: Scan, dtype: str | None) -> str | None:
    if dtype is not None and dtype not in TYPES:
        raise Misuse(f"--dtype {dtype}: allowed are {', '.join(TYPES)}")
    if dtype is None or (dtype == scan.file_type and not scan.is_scaled):
        return None
    return dtype if dtype in _FRACTIONS and not scan.is_scaled else "float64"


def planned(
    task: Task, scan: Scan, grid: Grid, to: Converting, *, is_view: bool = False, **known: Any
) -> Plan:
    """Return the plan of a result on a grid, which may be a view of what the input has."""
    plane = int(np.prod(grid.shape[:2], dtype=np.int64)) * (scan.stored.channels or 1)
    stored, computed = scan.stored.array.dtype, _computed(scan, to.dtype)
    first = stored if is_view or computed is None else np.dtype(computed)
    change = _change(scan, to, first, is_view)
    refuse_overflow(to.overflow, change.kept, is_view=is_view)
    amount = Amount(
        plane=plane,
        numbers=plane * grid.shape[2],
        computed=0 if is_view else first.itemsize,
        cast=change.held.itemsize if change.copies else 0,
        kept=change.kept,
        is_scaled=scan.is_scaled and to.dtype is None,
    )
    return Plan(scan, grid, amount, predicted(scan, amount, task.conduct.output), **known)


class Change(NamedTuple):
    """What becomes of numbers once they are computed.

    Parameters
    ----------
    kept, held : dtype
        The types of the numbers in the file, and of those that hold them before.
    changes, copies : bool
        Whether numbers change, and whether that takes memory.
    """

    kept: np.dtype[Any]
    held: np.dtype[Any]
    changes: bool
    copies: bool


def _change(scan: Scan, to: Converting, first: np.dtype[Any], is_view: bool) -> Change:
    kept = scan.file_type if to.dtype is None else np.dtype(to.dtype)
    held = held_by(kept)
    is_held = first == kept or (is_view and kept == scan.file_type)
    changes = not is_held or (scan.is_scaled and to.dtype is not None)
    return Change(kept, held, changes, changes and (is_view or first != held))


def _warn_of_labels(task: Task, scan: Scan, kernel: str) -> None:
    if kernel not in ("linear", "cubic") or scan.stored.array.dtype.kind not in "iu":
        return
    found: set[int] = set()
    for k in range(scan.stored.shape[2]):
        numbers = np.sort(scan.stored.array[:, :, k], axis=None)
        found.update([int(numbers[0]), *numbers[1:][numbers[1:] != numbers[:-1]].tolist()])
        scan.release()
        if len(found) > _FEW:
            return
    if len(found) > 1:
        task.tell(
            f"{scan.path}: has {len(found)} integers, as labels do; {kernel} makes new ones, and "
            "--interp label none"
        )


def converted(scan: Scan, image: Image, to: Converting) -> Scan:
    """Return a result with the type that was asked for; its numbers are as stored in the input.

    An image that shares no memory with the input may be changed.
    """
    is_view = np.may_share_memory(image.array, scan.stored.array)
    change = _change(scan, to, image.array.dtype, is_view)
    is_decoded = scan.is_scaled and to.dtype is not None
    array = np.empty_like(image.array, dtype=change.held) if change.copies else image.array
    for part in _parts(array.shape) if change.changes else ():
        values = image.array[part]
        values = values * scan.slope + scan.inter if is_decoded else values
        array[part] = _cast(values, change.kept, to.overflow)
    scaling = {"slope": 1.0, "inter": 0.0} if is_decoded else {}
    return scan.made(Image(array, image.affine, axes="xyz"), file_type=change.kept, **scaling)


def _parts(shape: tuple[int, ...]) -> Iterator[tuple[slice, slice, int]]:
    """Yield parts of an array that are so small that copies of them hardly take memory."""
    rows = max(1, _AT_A_TIME // (shape[0] * int(np.prod(shape[3:]))))
    for k, first in product(range(shape[2]), range(0, shape[1], rows)):
        yield slice(None), slice(first, first + rows), k


def _cast(values: Array, wanted: np.dtype[Any], overflow: str) -> Array:
    """Return numbers in another type.

    Integers round half away from 0 and are the nearest that the type holds, or wrap; NaN becomes 0,
    and so does what is infinite and would wrap.
    """
    if wanted.kind == "f" or values.dtype == wanted:
        with np.errstate(over="ignore"):  # to infinity, as C++ has it
            return values.astype(wanted, copy=False)
    is_wrapped, limits = overflow == "wrap", np.iinfo(wanted)
    numbers = values.astype(np.float64)
    numbers[~np.isfinite(numbers) if is_wrapped else np.isnan(numbers)] = 0.0
    if not is_wrapped:
        numbers = numbers.clip(limits.min, limits.max)
    whole = np.trunc(numbers)
    whole += np.copysign(abs(numbers - whole) >= 0.5, numbers)
    if is_wrapped:
        return np.mod(whole, 2.0**limits.bits).astype(f"u{wanted.itemsize}").view(wanted)
    return whole.astype(wanted)
