"""The verb sample: points in, readings out."""

from __future__ import annotations

import csv
import sys
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from pathlib import Path
from typing import Any, TextIO

import numpy as np

import volux
from volux._types import Matrix
from volux.tool._errors import SUCCESS, Misuse, Refusal, misuse
from volux.tool._files import STREAM, Scan, read_aloud
from volux.tool._idle import refuse_outside
from volux.tool._options import Reading
from volux.tool._output import placed, refuse

_SPACES = {"world": ("x", "y", "z"), "index": ("i", "j", "k")}


def sample(
    files: tuple[str, str],
    how: Reading,
    *,
    output: str,
    force: bool,
    threads: int | None,
    quiet: bool,
) -> int:
    """Read a volume at points."""
    file, points = files
    refuse_outside(how, "extend")
    if file == points == STREAM:
        raise Misuse("INPUT and POINTS are both -; stdin is one of them at most")
    if output not in ("", STREAM):
        refuse(output, files, force=force)
    names, rows = _table(points)
    where, space = _places(points, names, rows)
    scan = read_aloud(file, quiet=quiet)
    values = _values(scan, where, how, {"space": space, "threads": threads})
    with _opened(output) as stream:
        _write(stream, names, rows, values)
    return SUCCESS


def _table(path: str) -> tuple[list[str], list[list[str]]]:
    if path != STREAM and not Path(path).is_file():
        raise Refusal(f"{path}: there is no such file; POINTS is a CSV file")
    try:
        if path == STREAM:
            lines = list(csv.reader(sys.stdin))
        else:
            with open(path, newline="", encoding="utf-8-sig") as file:
                lines = list(csv.reader(file))
    except (UnicodeDecodeError, csv.Error) as error:
        raise Refusal(f"{path}: is no CSV file: {error}; INPUT comes before POINTS") from None
    lines = [line for line in lines if line]
    if not lines:
        raise Refusal(f"{path}: is empty; its first line names the columns, such as x,y,z")
    return [name.strip() for name in lines[0]], lines[1:]


def _places(path: str, names: list[str], rows: list[list[str]]) -> tuple[Matrix, str]:
    for space, wanted in _SPACES.items():
        if set(wanted) <= set(names):
            columns = [names.index(name) for name in wanted]
            return _numbers(path, rows, columns), space
    raise Refusal(
        f"{path}: its first line is {','.join(names)!r}; it must name the columns x, y and z (mm) "
        "or i, j and k (voxels)"
    )


def _numbers(path: str, rows: list[list[str]], columns: Sequence[int]) -> Matrix:
    points = np.empty((len(rows), 3))
    for n, row in enumerate(rows):
        try:
            points[n] = [float(row[column]) for column in columns]
        except (ValueError, IndexError):
            said = ",".join(row)
            raise Refusal(f"{path}: line {n + 2} is {said!r}; it must have three numbers") from None
    return points


def _values(scan: Scan, where: Matrix, how: Reading, given: dict[str, Any]) -> Matrix:
    kernel = how.interp or ("label" if scan.labels else "linear")
    reading: dict[str, Any] = {"interpolation": kernel, "border": how.border, "fill": how.fill}
    try:
        values = volux.sample(scan.image, where, **reading, **given)
    except (TypeError, ValueError) as error:
        raise misuse(error) from None
    return values.reshape(len(where), scan.image.channels or 1)


@contextmanager
def _opened(output: str) -> Iterator[TextIO]:
    if output in ("", STREAM):
        yield sys.stdout
        return
    with placed(output) as path, Path(path).open("w", newline="", encoding="utf-8") as file:
        yield file


def _write(stream: TextIO, names: list[str], rows: list[list[str]], values: Matrix) -> None:
    count = values.shape[1]
    added = ["value"] if count == 1 else [f"value{n}" for n in range(count)]
    writer = csv.writer(stream, lineterminator="\n")
    writer.writerow(names + added)
    writer.writerows(row + _said(numbers) for row, numbers in zip(rows, values, strict=True))


def _said(numbers: Matrix) -> list[str]:
    return [repr(number).removesuffix(".0") for number in numbers.tolist()]
