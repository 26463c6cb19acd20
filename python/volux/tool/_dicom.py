"""Folders of DICOM slices, which SimpleITK reads."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import numpy as np

from volux._types import Matrix
from volux.tool._errors import Refusal, is_short_of_memory
from volux.tool._files import Scan
from volux.tool._itk import FAULTS, named, reason, scan_of, sitk, unheard

_POSITION = "0020|0032"
_ORIENTATION = "0020|0037"

# By how much, of a distance between slices, another one may differ.
_EVEN = 0.01


def read(path: str) -> Scan:
    """Read the one series of a folder, with its slices in the order of their positions."""
    names = _sorted(path, _names(path))
    reader = sitk().ImageSeriesReader()
    reader.SetFileNames(names)
    try:
        with unheard():
            found = reader.Execute()
        return scan_of(path, found, "DICOM series")
    except FAULTS as error:
        if is_short_of_memory(error):
            raise
        raise Refusal(f"{path}: SimpleITK cannot read the series: {reason(error)}") from None


def _names(path: str) -> list[str]:
    reader = sitk().ImageSeriesReader
    series = reader.GetGDCMSeriesIDs(named(path))
    if not series:
        raise Refusal(f"{path}: the folder has no DICOM series; name a file or another folder")
    if len(series) > 1:
        counts = [f"{uid} ({len(reader.GetGDCMSeriesFileNames(path, uid))})" for uid in series]
        raise Refusal(
            f"{path}: the folder has {len(series)} series, {', '.join(counts)}; put the files of "
            "one of them into a folder of their own"
        )
    return list(reader.GetGDCMSeriesFileNames(path, series[0]))


def _sorted(path: str, names: list[str]) -> list[str]:
    slices = [_placed(path, name) for name in names]
    normal = np.cross(slices[0][1][0], slices[0][1][1])
    if any(not np.allclose(rows, slices[0][1], atol=1e-4) for _, rows in slices):
        raise Refusal(f"{path}: its slices are turned against each other; reformat the series")
    heights = np.array([position @ normal for position, _ in slices])
    order = np.argsort(heights, kind="stable")
    _refuse_gaps(path, heights[order], [Path(names[n]).name for n in order])
    return [names[n] for n in order]


def _placed(path: str, name: str) -> tuple[Matrix, Matrix]:
    reader: Any = sitk().ImageFileReader()
    reader.SetFileName(name)
    try:
        with unheard():
            reader.ReadImageInformation()
        position = np.array(reader.GetMetaData(_POSITION).split("\\"), dtype=float)
        rows = np.array(reader.GetMetaData(_ORIENTATION).split("\\"), dtype=float)
    except (*FAULTS, ValueError) as error:
        said = reason(error)
        raise Refusal(f"{path}: {Path(name).name} does not say where it lies: {said}") from None
    return position, rows.reshape(2, 3)


def _refuse_gaps(path: str, heights: Matrix, names: list[str]) -> None:
    if len(heights) < 2:
        return
    steps = np.diff(heights)
    usual = float(np.median(steps))
    worst = int(np.argmax(abs(steps - usual)))
    if usual <= 0.0 or steps.min() <= _EVEN * usual:
        twice = int(np.argmin(steps))
        raise Refusal(
            f"{path}: {names[twice]} and {names[twice + 1]} lie in the same place; "
            "keep one slice for each position"
        )
    if abs(steps[worst] - usual) <= _EVEN * usual:
        return
    missing = round(steps[worst] / usual) - 1
    what = f"{missing} missing" if missing > 0 else "uneven spacing"
    raise Refusal(
        f"{path}: {what} between {names[worst]} and {names[worst + 1]}, which are "
        f"{steps[worst]:.4g} mm apart where others are {usual:.4g}; complete the series"
    )
