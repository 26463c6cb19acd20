"""Transforms in files, which lead from points of the output to points of the input."""

from __future__ import annotations

from collections.abc import Sequence
from pathlib import Path
from typing import Any

import numpy as np

from volux import Affine, Displacement, Grid, compose
from volux._displacement import Composite, Transform
from volux._types import Matrix
from volux.tool._errors import Refusal
from volux.tool._files import suffix_of
from volux.tool._itk import FAULTS, named, reason, sitk, unheard

_ITKS = (".tfm", ".h5", ".hdf5", ".xfm")
_ITKS_TEXT = b"#Insight Transform File"
_TURN = np.diag([-1.0, -1.0, 1.0, 1.0])


def read(paths: Sequence[str], grid: Grid) -> Transform | None:
    """Return one transform of files, the first of which is applied first.

    Several displacement fields become one, which is exact at the voxels of the grid.
    """
    parts = [part for path in paths for part in parts_of(path)]
    if not parts:
        return None
    if sum(isinstance(part, (Displacement, Composite)) for part in parts) > 1:
        return _sampled(parts, grid)
    joined = parts[0]
    for part in parts[1:]:
        joined = compose(joined, part)
    return joined


def _sampled(parts: Sequence[Transform], grid: Grid) -> Displacement:
    vectors = np.empty((*grid.shape, 3))
    i, j = np.meshgrid(*map(np.arange, grid.shape[:2]), indexing="ij")
    for k in range(grid.shape[2]):
        index = np.stack([i, j, np.full(i.shape, k), np.ones(i.shape)], axis=-1)
        points = moved = index @ grid.affine[:3].T
        for part in parts:
            moved = part(moved)
        vectors[:, :, k] = moved - points
    return Displacement(vectors, grid)


def parts_of(path: str) -> list[Transform]:
    """Return the transforms of a file in the order in which they are applied."""
    if not Path(path).is_file():
        raise Refusal(f"{path}: there is no such file; --transform needs one")
    with open(path, "rb") as file:
        begins = file.read(len(_ITKS_TEXT))
    suffix = suffix_of(path)
    if suffix in _ITKS or begins == _ITKS_TEXT or (suffix == ".mat" and b"\0" in begins):
        return _itks(path)
    if suffix == ".mat":
        raise Refusal(
            f"{path}: is text, as FSL writes it, which counts in scaled voxels of two images; "
            "convert it to a transform of ITK"
        )
    return [_text(path) if suffix in (".txt", ".csv") else _field(path)]


def _itks(path: str) -> list[Transform]:
    try:
        with unheard():
            found = sitk().ReadTransform(named(path))
    except FAULTS as error:
        raise Refusal(f"{path}: SimpleITK cannot read the transform: {reason(error)}") from None
    if found.GetDimension() != 3:
        raise Refusal(f"{path}: is a transform in {found.GetDimension()}-D; 3-D is needed")
    return _flat(path, found)


def _flat(path: str, transform: Any) -> list[Transform]:
    found = transform.Downcast()
    if found.GetName() == "CompositeTransform":
        nested = [found.GetNthTransform(n) for n in range(found.GetNumberOfTransforms())]
        return [part for inner in nested[::-1] for part in _flat(path, inner)]  # the last is first
    if found.IsLinear():
        return [Affine(_matrix(found))]
    if found.GetName() == "DisplacementFieldTransform":
        return [Displacement.from_sitk(found.GetDisplacementField())]
    raise Refusal(
        f"{path}: has a {found.GetName()}; allowed are linear transforms and displacement fields: "
        "SimpleITK.TransformToDisplacementField makes one of it"
    )


def _matrix(linear: Any) -> Matrix:
    matrix = np.eye(4)
    matrix[:3, 3] = linear.TransformPoint((0.0, 0.0, 0.0))
    for axis, unit in enumerate(np.eye(3).tolist()):
        matrix[:3, axis] = np.subtract(linear.TransformPoint(unit), matrix[:3, 3])
    return _TURN @ matrix @ _TURN + 0.0


def _text(path: str) -> Affine:
    try:
        delimiter = "," if suffix_of(path) == ".csv" else None
        return Affine(np.loadtxt(path, delimiter=delimiter, ndmin=2))
    except (ValueError, TypeError) as error:
        raise Refusal(
            f"{path}: is no 4 x 4 matrix from the output's world to the input's, RAS+ in mm: "
            f"{error}"
        ) from None


def _field(path: str) -> Transform:
    try:
        with unheard():
            found = sitk().ReadImage(named(path))
    except FAULTS as error:
        raise Refusal(f"{path}: is no transform that SimpleITK reads: {reason(error)}") from None
    if found.GetDimension() != 3 or found.GetNumberOfComponentsPerPixel() != 3:
        raise Refusal(
            f"{path}: has {found.GetNumberOfComponentsPerPixel()} numbers a voxel in "
            f"{found.GetDimension()}-D; a displacement field has 3 in 3-D"
        )
    return Displacement.from_sitk(found)
