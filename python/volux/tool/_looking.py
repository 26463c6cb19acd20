"""The verbs that say something about a file: info and digest."""

from __future__ import annotations

import json
from typing import Any

import numpy as np

from volux import Grid
from volux._digest import Fingerprint
from volux._types import Matrix
from volux.tool._errors import SUCCESS
from volux.tool._files import Scan, read_aloud

# The sides of the patient in the order of the world's axes, from negative to positive.
SIDES = (("L", "R"), ("P", "A"), ("I", "S"))


def info(file: str, *, as_json: bool, quiet: bool) -> int:
    """Say what a file holds."""
    scan = read_aloud(file, quiet=quiet)
    facts = facts_of(scan)
    print(json.dumps(facts, indent=2) if as_json else _table(facts))
    return SUCCESS


def digest(file: str, *, as_json: bool, quiet: bool) -> int:
    """Say the digest of the values of a file and of their place."""
    scan = read_aloud(file, quiet=quiet)
    found = digest_of(scan)
    print(json.dumps({"file": file, "sha256": found}) if as_json else f"{found}  {file}")
    return SUCCESS


def digest_of(scan: Scan) -> str:
    """Return the digest of the values, whatever types and scales the file holds them by."""
    made = fingerprint(scan, scan.stored.grid)
    hash_planes(made, scan)
    return made.hexdigest()


def hash_planes(made: Fingerprint, scan: Scan) -> None:
    """Add planes one by one, so that no more is in memory."""
    for k in range(scan.stored.shape[2]):
        values = scan.values(slice(k, k + 1))
        made.add(values if values.ndim == 4 else values[..., np.newaxis])
        scan.release()


def fingerprint(scan: Scan, grid: Grid) -> Fingerprint:
    """Return the digest of the values of a scan, before any of them, on a grid."""
    dtype = scan.values(slice(0, 1)).dtype
    return Fingerprint(dtype, (*grid.shape, scan.stored.channels or 1), grid)


def facts_of(scan: Scan) -> dict[str, Any]:
    """Return what a file holds."""
    image = scan.image
    least, most = _range(image.array)
    return {
        "file": scan.path,
        "format": scan.kind,
        "shape": [*image.shape, *scan.tail],
        "spacing": list(image.spacing),
        "type": str(scan.file_type),
        "slope": scan.slope,
        "inter": scan.inter,
        "labels": scan.labels,
        "orientation": orientation(image.affine),
        "affine": image.affine.tolist(),
        "minimum": least,
        "maximum": most,
        "notes": list(scan.notes),
    }


def _range(array: Any) -> tuple[float | None, float | None]:
    least, most = np.fmin.reduce(array, axis=None), np.fmax.reduce(array, axis=None)
    return _number(least), _number(most)


def _number(value: Any) -> float | None:
    number = value.item()
    return number if np.isfinite(number) else None


def orientation(affine: Matrix) -> str:
    """Return where i, j and k run to, such as RAS."""
    directions = affine[:3, :3] / np.linalg.norm(affine[:3, :3], axis=0)
    places = np.argmax(abs(directions), axis=0).tolist()
    return "".join(SIDES[at][int(directions[at, axis] > 0)] for axis, at in enumerate(places))


def _table(facts: dict[str, Any]) -> str:
    rows = {
        "file": facts["file"],
        "format": facts["format"],
        "voxels": " x ".join(map(str, facts["shape"])),
        "spacing": " x ".join(f"{value:.6g}" for value in facts["spacing"]) + " mm",
        "axes run to": facts["orientation"],
        "first voxel": ", ".join(f"{row[3]:.6g}" for row in facts["affine"][:3]) + " mm (RAS+)",
        "type": _type(facts),
        "values": f"{facts['minimum']} to {facts['maximum']}",
    }
    return aligned(rows)


def aligned(rows: dict[str, str]) -> str:
    """Return names and what is said about them, as lines of two columns."""
    width = max(map(len, rows))
    return "\n".join(f"{name:<{width}}  {value}" for name, value in rows.items())


def _type(facts: dict[str, Any]) -> str:
    scaled = (facts["slope"], facts["inter"]) != (1.0, 0.0)
    scale = f" * {facts['slope']:.6g} + {facts['inter']:.6g}" if scaled else ""
    return str(facts["type"]) + scale + (", labels" if facts["labels"] else "")
