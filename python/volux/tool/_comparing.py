"""The verb compare: how two volumes differ."""

from __future__ import annotations

import json
from itertools import product
from typing import Any

import numpy as np

from volux._types import Array
from volux.tool._errors import FAILURE, SUCCESS, Misuse
from volux.tool._files import STREAM, Scan, read_aloud


def compare(
    files: tuple[str, str], tolerances: tuple[float, float], *, as_json: bool, quiet: bool
) -> int:
    """Say how two volumes differ, beyond tolerances of the values and in mm."""
    tolerance, tolerance_mm = tolerances
    if files == (STREAM, STREAM):
        raise Misuse("both files are -; stdin is one of them at most")
    for name, given in (("--tolerance", tolerance), ("--tolerance-mm", tolerance_mm)):
        if not given >= 0:
            raise Misuse(f"{name} {given:g}: must be 0 or above")
    one, other = (read_aloud(file, quiet=quiet) for file in files)
    facts = differences(one, other, tolerance)
    apart = facts["corners_mm"]
    is_equal = not (facts["different"] or apart is None or apart > tolerance_mm)
    facts["equal"] = is_equal
    print(json.dumps(facts, indent=2) if as_json else _text(facts))
    return SUCCESS if is_equal else FAILURE


def differences(one: Scan, other: Scan, tolerance: float) -> dict[str, Any]:
    """Return how far two volumes are apart, in values and in mm."""
    shapes = [[*scan.image.shape, *scan.tail] for scan in (one, other)]
    facts: dict[str, Any] = {
        "files": [one.path, other.path],
        "shapes": shapes,
        "corners_mm": None,
        "different": None,
        "largest": None,
        "mean": None,
        "first": None,
    }
    if shapes[0] != shapes[1]:
        return facts
    return facts | {"corners_mm": _apart(one, other)} | _of_values(one, other, tolerance)


def _apart(one: Scan, other: Scan) -> float:
    corners = product(*[(0, extent - 1) for extent in one.image.shape])
    index = np.array([[*corner, 1] for corner in corners])
    apart = index @ (one.image.affine - other.image.affine)[:3].T
    return float(np.linalg.norm(apart, axis=1).max())


def _of_values(one: Scan, other: Scan, tolerance: float) -> dict[str, Any]:
    """Compare plane by plane: the differences of a whole volume need not fit into memory."""
    different, largest, total = 0, 0.0, 0.0
    first = None
    for k in range(one.image.shape[2]):
        apart = _distances(one.image.array[:, :, k], other.image.array[:, :, k])
        is_other = apart > tolerance
        if first is None and is_other.any():
            i, j = np.argwhere(is_other)[0, :2].tolist()
            first = [i, j, k]
        different += int(is_other.sum())
        largest = max(largest, float(apart.max()))
        total += float(apart.sum())
    mean = total / one.image.array.size
    said: dict[str, Any] = {"largest": largest, "mean": mean}
    said |= {name: "infinite" for name, value in said.items() if not np.isfinite(value)}
    return {"different": different, "first": first, **said}


def _distances(one: Array, other: Array) -> Array:
    """Return how far values are apart; NaN is like NaN, and infinitely far from all others."""
    with np.errstate(invalid="ignore"):
        apart = abs(one.astype(np.float64) - other.astype(np.float64))
    same = (one == other) | ((one != one) & (other != other))
    return np.where(same, 0.0, np.nan_to_num(apart, nan=np.inf, posinf=np.inf))


def _text(facts: dict[str, Any]) -> str:
    if facts["different"] is None:
        one, other = (" x ".join(map(str, shape)) for shape in facts["shapes"])
        return f"extents differ: {one} and {other}"
    lines = [f"places differ by {facts['corners_mm']:.6g} mm at most"]
    if facts["different"]:
        first = ", ".join(map(str, facts["first"]))
        lines += [
            f"values differ in {facts['different']} numbers, first at ({first})",
            f"by {facts['largest']} at most, by {facts['mean']} in the mean",
        ]
    else:
        lines.append("values are equal" if facts["largest"] == 0 else "values are within tolerance")
    return "\n".join(lines)
