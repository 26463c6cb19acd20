"""Files in and out: nibabel reads and writes NIfTI, MGH and Analyze, SimpleITK all others."""

from __future__ import annotations

import sys
from collections.abc import Sequence
from dataclasses import dataclass, field, replace
from functools import cached_property
from mmap import MADV_DONTNEED, mmap
from pathlib import Path
from typing import Any

import numpy as np
import numpy.typing as npt

from volux import Grid, Image
from volux._arrays import SERVED
from volux._types import Array, Matrix
from volux.tool._errors import Refusal, is_short_of_memory, say

NIBABELS = (".nii", ".nii.gz", ".hdr", ".img", ".img.gz", ".mgh", ".mgz")
SINGLE = (".nii", ".nii.gz")
STREAM = "-"

# Types that volux does not serve, and one that may hold their numbers.
_HELD_BY = {"int8": "int16", "int64": "int32", "uint64": "uint32", "float16": "float32"}


@dataclass(frozen=True)
class Scan:
    """A volume of a file.

    Parameters
    ----------
    path : str
        As the user wrote it.
    stored : Image
        The numbers as they are in the file, with the axes "xyz"; further axes are one of channels.
    file_type : dtype
        The type of the numbers in the file; `stored` has another one only where volux does not
        serve it.
    kind : str
        What the file is, such as "NIfTI-1".
    labels : bool
        Whether the numbers are names of regions.
    slope, inter : float
        A value is ``stored * slope + inter``.
    tail : tuple of int
        Extents of the axes after the third.
    header : object
        What the reader's library knows besides; carried over to a file of the same kind.
    notes : tuple of str
        What the user should know about the file.
    """

    path: str
    stored: Image
    file_type: np.dtype[Any]
    kind: str
    labels: bool = False
    slope: float = 1.0
    inter: float = 0.0
    tail: tuple[int, ...] = ()
    header: Any = None
    notes: tuple[str, ...] = field(default=())

    @property
    def is_scaled(self) -> bool:
        """Whether a value differs from the number in the file."""
        return (self.slope, self.inter) != (1.0, 0.0)

    @cached_property
    def image(self) -> Image:
        """The values: scaled, if the file says so."""
        if not self.is_scaled:
            return self.stored
        return Image(self.values(slice(None)), self.stored.affine, axes="xyz")

    def values(self, planes: slice) -> Array:
        """Return the values of planes along k."""
        numbers = self.stored.array[:, :, planes]
        if not self.is_scaled:
            return numbers
        values = numbers * self.slope
        values += self.inter
        return values

    @property
    def voxel(self) -> Image:
        """The first voxel."""
        return Image(self.stored.array[:1, :1, :1], self.stored.affine, axes="xyz")

    @property
    def mapping(self) -> mmap | None:
        """The file, if its numbers are read from it only when they are needed."""
        part: Any = self.stored.array
        while isinstance(part, np.ndarray):
            part = part.base
        return part if isinstance(part, mmap) else None

    def release(self) -> None:
        """Let go of what has been read from a mapped file; it is read again when needed."""
        if self.mapping is not None:
            self.mapping.madvise(MADV_DONTNEED)

    def decoded(self, dtype: npt.DTypeLike | None = None) -> Scan:
        """Return a scan of the values themselves, of a type or of that which they have."""
        array = np.empty_like(self.stored.array, dtype=dtype or self.values(slice(1)).dtype)
        for k in range(array.shape[2]):  # one by one: a value takes eight bytes at first
            array[:, :, k] = self.values(slice(k, k + 1))[:, :, 0]
        image = Image(array, self.stored.affine, axes="xyz")
        return self.made(image, file_type=array.dtype, slope=1.0, inter=0.0)

    def made(self, image: Image, **changes: Any) -> Scan:
        """Return the same file with other numbers or in another place."""
        return replace(self, stored=image, **changes)


def read(path: str) -> Scan:
    """Read a file, a folder of DICOM slices, or NIfTI from stdin, ``-``."""
    try:
        return _read(path)
    except Exception as error:
        if not is_short_of_memory(error):
            raise
        raise Refusal(
            f"{path}: there is not enough memory to read all of it; a .nii that is not compressed "
            "is read from where it is"
        ) from None


def _read(path: str) -> Scan:
    if path == STREAM:
        from volux.tool import _nifti

        return _nifti.read_stream()
    refuse_missing(path)
    if Path(path).is_dir():
        from volux.tool import _dicom

        return _dicom.read(path)
    if suffix_of(path) in NIBABELS:
        from volux.tool import _nifti

        return _nifti.read(path)
    from volux.tool import _itk

    return _itk.read(path)


def read_aloud(path: str, *, quiet: bool) -> Scan:
    """Read a file, and say what the user should know about it."""
    scan = read(path)
    for note in () if quiet else scan.notes:
        say(f"{path}: {note}")
    return scan


def grid_of(path: str) -> Grid:
    """Return where the voxels of a file lie, without reading them."""
    refuse_missing(path)
    if suffix_of(path) in NIBABELS:
        from volux.tool import _nifti

        return _nifti.grid_of(path)
    from volux.tool import _itk

    return _itk.grid_of(path)


def placed_grid(path: str, shape: Sequence[int], affine: Matrix) -> Grid:
    """Return a grid of extents along i, j, k and further axes."""
    try:
        return Grid([*shape, 1, 1][:3], affine, axes="xyz")
    except ValueError as error:
        raise Refusal(f"{path}: its place in the world is not usable: {error}") from None


def write(scan: Scan, path: Path) -> None:
    """Write a volume in the format that the name of the file says."""
    suffix = suffix_of(path.name)
    if suffix in SINGLE:
        from volux.tool import _slabs

        _slabs.write(scan, path)
    elif suffix in NIBABELS:
        from volux.tool import _nifti

        _nifti.write(scan, path)
    else:
        from volux.tool import _itk

        _itk.write(scan, path)


def write_stream(scan: Scan) -> None:
    """Write a volume to stdout as NIfTI."""
    from volux.tool import _slabs

    _slabs.write_to(sys.stdout.buffer, scan)
    sys.stdout.buffer.flush()


def suffix_of(path: str) -> str:
    """Return the end of a file's name that says its format, with .gz, in small letters."""
    suffixes = [suffix.lower() for suffix in Path(path).suffixes]
    return "".join(suffixes[-2:] if suffixes[-1:] == [".gz"] else suffixes[-1:])


def is_segmentation(path: str) -> bool:
    """Whether the name of a file says that it holds labels."""
    name = Path(path).name.lower()
    return name.partition(".")[0].endswith("_dseg") or ".seg." in name


def image_of(path: str, array: Array, affine: Matrix) -> tuple[Image, tuple[int, ...]]:
    """Return an image of numbers along i, j, k and further axes, and the extents of those."""
    if array.ndim < 2 or array.size == 0:
        raise Refusal(f"{path}: has the extents {array.shape}, which make no volume")
    if array.ndim == 2:
        array = array[:, :, np.newaxis]
    tail = array.shape[3:]
    if len(tail) > 1:
        array = array.reshape((*array.shape[:3], -1), order="F")
    try:
        return Image(_served(path, array), affine, axes="xyz"), tail
    except ValueError as error:
        raise Refusal(f"{path}: its place in the world is not usable: {error}") from None


def _served(path: str, array: Array) -> Array:
    """Return the same numbers in the machine's byte order, in a type that volux serves."""
    native = array.dtype.newbyteorder("=")
    if native in SERVED:
        return array if array.dtype.isnative else array.astype(native)
    held = held_by(native)
    if held not in SERVED:
        raise Refusal(f"{path}: its voxels are {native}; convert them to numbers that are real")
    numbers = array.astype(held)
    if not np.array_equal(numbers, array, equal_nan=native.kind == "f"):
        raise Refusal(f"{path}: has {native} voxels that {held} cannot hold; convert them first")
    return numbers


def held_by(dtype: np.dtype[Any]) -> np.dtype[Any]:
    """Return a type that volux serves, and which may hold numbers of another one."""
    held: np.dtype[Any] = np.dtype(_HELD_BY.get(dtype.name, dtype.name))
    return held


def in_file_type(scan: Scan) -> Array:
    """Return the numbers as the file shall have them, with all its axes."""
    array = scan.stored.array
    if array.dtype != scan.file_type:
        array = array.astype(scan.file_type)
    if len(scan.tail) > 1:
        array = array.reshape((*array.shape[:3], *scan.tail), order="F")
    return array


def refuse_missing(path: str) -> None:
    where = Path(path)
    if not where.exists():
        raise Refusal(f"{path}: there is no such file{_near(where)}")
    if where.is_file() and where.stat().st_size == 0:
        raise Refusal(f"{path}: the file is empty; copy or convert it again")


def _near(path: Path) -> str:
    from difflib import get_close_matches

    names = [other.name for other in path.parent.iterdir()] if path.parent.is_dir() else []
    close = get_close_matches(path.name, names, 1)
    return f"; did you mean {path.parent / close[0]}?" if close else "; check its name"
