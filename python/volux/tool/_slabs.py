"""NIfTI that is written plane by plane, so that nothing of a volume is there twice."""

from __future__ import annotations

from io import BytesIO
from pathlib import Path
from typing import Any, BinaryIO

import numpy as np

from volux import Grid, Image
from volux.tool._errors import needed
from volux.tool._files import Scan
from volux.tool._nifti import image_with


class Slabs:
    """A file that gets planes along k, in any order.

    Parameters
    ----------
    file : binary file
        Empty, and open for writing. It is wound only where planes do not follow one another.
    kind : Scan
        A voxel of the result, or more, which has all but the extents.
    grid : Grid
        The grid of the whole result.
    """

    def __init__(self, file: BinaryIO, kind: Scan, grid: Grid) -> None:
        header = _header(kind, grid)
        self._file = file
        self._shape = grid.shape
        self._dtype = header.get_data_dtype()
        head = BytesIO()
        header.write_to(head)
        self._begin = self._next = header.get_data_offset()
        file.write(head.getvalue().ljust(self._begin, b"\0"))

    def write(self, first: int, planes: Scan) -> None:
        """Write planes, the first of which is plane `first` of the whole."""
        numbers = planes.stored.array
        columns, rows, depth = self._shape
        for channel in range(planes.stored.channels or 1):
            slab = numbers[..., channel] if numbers.ndim == 4 else numbers
            for k in range(slab.shape[2]):
                place = (channel * depth + first + k) * rows * columns
                self._write(self._begin + place * self._dtype.itemsize, slab[:, :, k])

    def _write(self, place: int, plane: np.ndarray[Any, Any]) -> None:
        if place != self._next:
            self._file.seek(place)
        numbers = np.ascontiguousarray(plane.T, dtype=self._dtype)
        self._file.write(numbers.data)
        self._next = place + numbers.nbytes


def write(scan: Scan, path: Path) -> None:
    """Write a volume, compressed if the name of the file says so."""
    with needed("nibabel").openers.ImageOpener(str(path), "wb") as file:
        write_to(file, scan)


def write_to(file: BinaryIO, scan: Scan) -> None:
    """Write a volume to an open file."""
    Slabs(file, scan, scan.stored.grid).write(0, scan)


def _header(kind: Scan, grid: Grid) -> Any:
    """Return nibabel's header of a whole result."""
    zeros = np.broadcast_to(np.zeros((), kind.file_type), (*grid.shape, *kind.tail))
    empty = Image(np.broadcast_to(np.uint8(0), grid.shape), grid.affine, axes="xyz")
    image = image_with(zeros, kind.made(empty), ".nii")
    image.update_header()
    header = image.header
    if not kind.is_scaled:
        header.set_slope_inter(1.0, 0.0)
    return header
