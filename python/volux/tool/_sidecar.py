"""Where a result comes from: a .json beside it, with the keys of BIDS."""

from __future__ import annotations

import json
from hashlib import sha256
from pathlib import Path
from typing import TYPE_CHECKING, Any, BinaryIO

from volux import Grid
from volux.tool._files import suffix_of

if TYPE_CHECKING:
    from volux.tool._making import Task


def name(output: str) -> str:
    """Return what the sidecar of an output is called."""
    suffix = suffix_of(output)
    return f"{output.removesuffix(output[len(output) - len(suffix) :])}.json"


def facts(task: Task, grid: Grid, inputs: list[str], output: str) -> dict[str, Any]:
    """Return what a result is, and what it was made of, with the digests of all."""
    from volux.tool._version import version

    spacing = " x ".join(f"{value:.6g}" for value in grid.spacing)
    return {
        "Sources": [Path(path).name for path in task.inputs],
        "SpatialReference": Path(task.options.get("like") or task.inputs[0]).name,
        "Resolution": f"{spacing} mm, {' x '.join(map(str, grid.shape))} voxels",
        "GeneratedBy": [{"Name": "volux", "Version": version()}],
        "Verb": task.verb,
        "Options": {
            key: _named(key, value)
            for key, value in task.options.items()
            if value not in (None, [])
        },
        "InputDigests": inputs,
        "OutputDigest": output,
    }


def _named(key: str, value: Any) -> Any:
    if key == "transform":
        return [Path(path).name for path in value]
    return Path(value).name if key == "like" else value


def digests(task: Task) -> list[str]:
    """Return the digest of each input."""
    return [_digest(task, path) for path in task.inputs]


def _digest(task: Task, path: str) -> str:
    """Return the digest of the values of an image, or of the bytes of another file."""
    from volux.tool._looking import digest_of

    if path in task.scans:
        return digest_of(task.scans[path])
    with open(path, "rb") as file:
        return file_digest(file)


def file_digest(file: BinaryIO) -> str:
    """Return the SHA-256 of the bytes of a file."""
    hashed = sha256()
    while block := file.read(1 << 20):
        hashed.update(block)
    return hashed.hexdigest()


def write(found: dict[str, Any], output: Path) -> None:
    """Write the sidecar of an output beside it."""
    text = json.dumps(found, indent=2, sort_keys=True)
    Path(name(str(output))).write_text(text + "\n", encoding="utf-8")
