"""What the verbs that write a volume share: from the options to the plan."""

from __future__ import annotations

import sys
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

import numpy as np

from volux import Grid, Image
from volux._types import Array
from volux.tool import _sidecar
from volux.tool._errors import Misuse, Refusal, say
from volux.tool._files import STREAM, Scan, read_aloud
from volux.tool._memory import Amount, predicted
from volux.tool._options import Conduct, Converting, Filling, Reading
from volux.tool._output import refuse
from volux.tool._plan import Plan

TYPES = ("uint8", "int8", "uint16", "int16", "uint32", "int32", "float32", "float64")
_FRACTIONS = ("float32", "float64")

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
        output = self.conduct.output
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
    if dtype is None:
        return None
    if dtype not in TYPES:
        raise Misuse(f"--dtype {dtype}: allowed are {', '.join(TYPES)}")
    if scan.is_scaled:
        return "float64"
    is_direct = dtype in (*_FRACTIONS, str(scan.stored.array.dtype))
    return dtype if is_direct else "float64"


def planned(
    task: Task, scan: Scan, grid: Grid, to: Converting, *, is_view: bool = False, **known: Any
) -> Plan:
    """Return the plan of a result on a grid, which may be a view of what the input has."""
    numbers = int(np.prod(grid.shape, dtype=np.int64)) * (scan.stored.channels or 1)
    dtype = _computed(scan, to.dtype)
    computed = np.dtype(dtype or scan.stored.array.dtype).itemsize
    wanted = computed if to.dtype is None else np.dtype(to.dtype).itemsize
    if is_view:
        computed, wanted = 0, 0 if to.dtype is None else wanted
    amount = Amount(numbers, computed, wanted)
    return Plan(scan, grid, amount, predicted(scan, amount, task.conduct.output), **known)


def _warn_of_labels(task: Task, scan: Scan, kernel: str) -> None:
    if kernel not in ("linear", "cubic") or scan.stored.array.dtype.kind not in "iu":
        return
    found: set[int] = set()
    for k in range(scan.stored.shape[2]):
        found.update(np.unique(scan.stored.array[:, :, k]).tolist())
        scan.release()
        if len(found) > _FEW:
            return
    if len(found) > 1:
        task.tell(
            f"{scan.path}: has {len(found)} integers, as labels do; {kernel} makes new ones, and "
            "--interp label none"
        )


def converted(scan: Scan, image: Image, to: Converting) -> Scan:
    """Return a result with the type that was asked for; its numbers are as stored in the input."""
    if to.dtype is None:
        return scan.made(image)
    wanted = np.dtype(to.dtype)
    held = np.dtype("int16") if wanted == np.int8 else wanted
    array = image.array
    if scan.is_scaled or array.dtype != wanted:
        array = np.empty_like(image.array, dtype=held)
        for k in range(array.shape[2]):  # plane by plane, so that little is there twice
            values = image.array[:, :, k]
            values = values * scan.slope + scan.inter if scan.is_scaled else values
            array[:, :, k] = _cast(values, wanted, to.overflow)
    made = Image(array, image.affine, axes="xyz")
    return scan.made(made, file_type=wanted, slope=1.0, inter=0.0)


def _cast(values: Array, wanted: np.dtype[Any], overflow: str) -> Array:
    """Return numbers in another type; a half goes away from 0, and NaN becomes 0."""
    if wanted.kind == "f" or values.dtype == wanted:
        return values.astype(wanted, copy=False)
    numbers = values.astype(np.float64)
    whole = np.trunc(numbers)
    whole += np.copysign(abs(numbers - whole) >= 0.5, numbers)
    whole[np.isnan(whole)] = 0.0
    limits = np.iinfo(wanted)
    if overflow == "saturate":
        return whole.clip(limits.min, limits.max).astype(wanted)
    return np.mod(whole, 2.0**limits.bits).astype(f"u{wanted.itemsize}").view(wanted)
