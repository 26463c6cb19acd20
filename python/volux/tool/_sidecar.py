"""Where a result comes from: a .json beside it, with the keys of BIDS."""

from __future__ import annotations

import json
from pathlib import Path
from typing import TYPE_CHECKING, Any

from volux.tool._files import STREAM, Scan, read, suffix_of

if TYPE_CHECKING:
    from volux.tool._making import Task


def name(output: str) -> str:
    """Return what the sidecar of an output is called."""
    suffix = suffix_of(output)
    return f"{output.removesuffix(output[len(output) - len(suffix) :])}.json"


def facts(task: Task, result: Scan) -> dict[str, Any]:
    """Return what a result is, and what it was made of."""
    from volux.tool._cli import version
    from volux.tool._looking import digest_of

    spacing = " x ".join(f"{value:.6g}" for value in result.stored.spacing)
    return {
        "Sources": [Path(path).name for path in task.inputs],
        "SpatialReference": Path(task.options.get("like") or task.inputs[0]).name,
        "Resolution": f"{spacing} mm, {' x '.join(map(str, result.stored.shape))} voxels",
        "GeneratedBy": [{"Name": "volux", "Version": version()}],
        "Verb": task.verb,
        "Options": {key: value for key, value in task.options.items() if value is not None},
        "InputDigests": {
            Path(path).name: digest_of(read(path)) for path in task.inputs if path != STREAM
        },
        "OutputDigest": digest_of(result),
    }


def write(found: dict[str, Any], output: Path) -> None:
    """Write the sidecar of an output beside it."""
    text = json.dumps(found, indent=2, sort_keys=True)
    Path(name(str(output))).write_text(text + "\n", encoding="utf-8")
