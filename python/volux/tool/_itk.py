"""Files that SimpleITK reads and writes: NRRD, MetaImage and the rest."""

from __future__ import annotations

import os
import re
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any

import numpy as np

from volux import Grid, Image
from volux._sitk import turned
from volux._types import Array, Matrix
from volux.tool._errors import Refusal, is_short_of_memory, needed
from volux.tool._files import (
    Scan,
    image_of,
    in_file_type,
    is_segmentation,
    placed_grid,
    suffix_of,
)

# What SimpleITK raises: the second one where the text of the first is not readable.
FAULTS = (RuntimeError, UnicodeDecodeError)

# Keys of ITK's own, which it writes anew.
_ITKS_KEYS = ("ITK_", "NRRD_")


def sitk() -> Any:
    """Return SimpleITK, which writes nothing to the terminal itself."""
    module = needed("SimpleITK")
    module.ProcessObject.SetGlobalWarningDisplay(False)
    return module


@contextmanager
def unheard() -> Iterator[None]:
    """Send nowhere what libraries below SimpleITK print: its exceptions say what has failed."""
    try:
        stderr = os.dup(2)
    except OSError:  # it is closed
        yield
        return
    nowhere = os.open(os.devnull, os.O_WRONLY)
    try:
        os.dup2(nowhere, 2)
        yield
    finally:
        os.dup2(stderr, 2)
        os.close(stderr)
        os.close(nowhere)


def named(path: str) -> str:
    """Return the name of a file, unless SimpleITK would end the process because of it."""
    try:
        path.encode()
    except UnicodeEncodeError:
        raise Refusal(
            f"{path}: SimpleITK takes names in UTF-8 alone; rename it, or set LC_ALL to C.UTF-8"
        ) from None
    return path


def read(path: str) -> Scan:
    """Read a file by SimpleITK."""
    module = sitk()
    try:
        with unheard():
            found = module.ReadImage(named(path))
    except FAULTS as error:
        raise _unreadable(path, error) from None
    return scan_of(path, found, suffix_of(path).lstrip(".") or "unknown")


def grid_of(path: str) -> Grid:
    """Return where the voxels of a file lie."""
    reader = sitk().ImageFileReader()
    reader.SetFileName(named(path))
    try:
        with unheard():
            reader.ReadImageInformation()
    except FAULTS as error:
        raise _unreadable(path, error) from None
    return placed_grid(path, reader.GetSize(), _affine(reader))


def _unreadable(path: str, error: Exception) -> Exception:
    if is_short_of_memory(error):
        return error
    return Refusal(f"{path}: SimpleITK cannot read it: {reason(error)}; name a file of a volume")


def scan_of(path: str, found: Any, kind: str) -> Scan:
    """Return what SimpleITK has read."""
    array, affine = _numbers(path, found)
    image, tail = image_of(path, array, affine)
    return Scan(
        path=path,
        stored=image,
        file_type=array.dtype,
        kind=kind,
        labels=is_segmentation(path),
        tail=tail,
        header={
            key: found.GetMetaData(key)
            for key in found.GetMetaDataKeys()
            if not key.startswith(_ITKS_KEYS) and "|" not in key  # tags of DICOM: the patient's
        },
    )


def _numbers(path: str, found: Any) -> tuple[Array, Matrix]:
    module = sitk()
    dimensions = found.GetDimension()
    if dimensions not in (2, 3, 4) or "complex" in found.GetPixelIDTypeAsString():
        what = f"{dimensions}-D of {found.GetPixelIDTypeAsString()}"
        raise Refusal(f"{path}: is {what}; allowed are volumes of real numbers, and series of them")
    array = module.GetArrayViewFromImage(found)
    axes = tuple(range(dimensions))[::-1]
    channels = (dimensions,) if array.ndim > dimensions else ()
    return np.asarray(array.transpose(*axes, *channels)).copy(order="K"), _affine(found)


def _affine(found: Any) -> Matrix:
    dimensions = found.GetDimension()
    few = min(dimensions, 3)
    affine = np.eye(4)
    directions = np.reshape(found.GetDirection(), (dimensions, dimensions))[:few, :few]
    affine[:few, :few] = directions * found.GetSpacing()[:few]
    affine[:few, 3] = found.GetOrigin()[:few]
    return turned(affine)


def write(scan: Scan, path: Path) -> None:
    """Write a file by SimpleITK."""
    module = sitk()
    image = _image(scan)
    for key, value in (scan.header if isinstance(scan.header, dict) else {}).items():
        image.SetMetaData(key, value)
    try:
        with unheard():
            module.WriteImage(image, named(str(path)))
    except FAULTS as error:
        if is_short_of_memory(error):
            raise
        said = f"SimpleITK cannot write it: {reason(error)}; .nii.gz holds all"
        raise Refusal(f"{path}: {said}") from None


def _image(scan: Scan) -> Any:
    array = in_file_type(scan.decoded() if scan.is_scaled else scan)
    array = array.reshape((*array.shape[:3], -1), order="F") if scan.tail else array
    # A voxel says where all lie; a pattern of all would take a byte of memory for each.
    pattern = Image(np.zeros((1, 1, 1), np.uint8), scan.stored.affine, axes="xyz").to_sitk()
    axes = (2, 1, 0, 3)[: array.ndim]
    image = sitk().GetImageFromArray(array.transpose(axes), isVector=array.ndim == 4)
    image.SetOrigin(pattern.GetOrigin())
    image.SetSpacing(pattern.GetSpacing())
    image.SetDirection(pattern.GetDirection())
    return image


def reason(error: Exception) -> str:
    """Return the sentence of an exception of ITK's that says why."""
    lines = [line.strip() for line in str(error).splitlines() if line.strip()]
    said = lines[-1] if lines else type(error).__name__
    said = said.removeprefix("sitk::ERROR:").strip().rstrip(".")
    return re.sub(r"^ITK ERROR: \w+\(0x[0-9a-f]+\): ", "", said)
