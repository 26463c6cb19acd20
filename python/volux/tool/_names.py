"""What labels are called: by the file itself, or by a table beside it."""

from __future__ import annotations

import csv
import re
from pathlib import Path

from volux.tool._files import Scan, suffix_of

# A segment in the header of a .seg.nrrd.
_SEGMENT = re.compile(r"(Segment\d+)_LabelValue")


def names_of(scan: Scan, layer: int = 0) -> dict[int, str]:
    """Return the names of labels, as far as anything says them.

    A header of NRRD has them as segments, of which those of one layer are named. Else a table
    beside the file does: ``x.tsv`` with the columns index and name, as BIDS has it, or
    ``x.nii.txt`` with lines of a number and a name.
    """
    segments = _of_segments(scan.header, layer) if isinstance(scan.header, dict) else {}
    if segments:
        return segments
    name = scan.path.removesuffix(".gz")
    table, lines = Path(name.removesuffix(suffix_of(name)) + ".tsv"), Path(f"{name}.txt")
    if table.is_file():
        return _of_table(_text(table))
    return _of_lines(_text(lines)) if lines.is_file() else {}


def _text(path: Path) -> str:
    return path.read_text(encoding="utf-8-sig", errors="replace")


def _of_segments(header: dict[str, str], layer: int) -> dict[int, str]:
    found = ((match[1], value) for key, value in header.items() if (match := _SEGMENT.match(key)))
    named = (
        (value, header.get(f"{segment}_Name"))
        for segment, value in found
        if header.get(f"{segment}_Layer", "0") == str(layer)
    )
    return {int(value): name for value, name in named if name and _is_whole(value)}


def _of_table(text: str) -> dict[int, str]:
    rows = csv.DictReader(text.splitlines(), delimiter="\t", quoting=csv.QUOTE_NONE)
    pairs = ((row.get("index") or "", row.get("name") or "") for row in rows)
    return {int(index): name for index, name in pairs if _is_whole(index) and name}


def _of_lines(text: str) -> dict[int, str]:
    words = (line.split() for line in text.splitlines())
    return {int(pair[0]): pair[1] for pair in words if len(pair) > 1 and _is_whole(pair[0])}


def _is_whole(text: str) -> bool:
    return re.fullmatch(r"-?\d{1,20}", text) is not None
