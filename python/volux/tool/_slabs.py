"""NIfTI that is written some planes at a time, with the bytes of the whole."""

from __future__ import annotations

from typing import BinaryIO

import numpy as np

from volux import Grid, Image
from volux.tool._files import Scan, in_file_type
from volux.tool._nifti import image_with


class Slabs:
    """A file that gets planes along k, in any order.

    Parameters
    ----------
    file : binary file
        Empty, and open for writing.
    kind : Scan
        A voxel of the result, which has all but the extents.
    grid : Grid
        Of the whole result.
    """

    def __init__(self, file: BinaryIO, kind: Scan, grid: Grid) -> None:
        whole = kind.made(_empty(grid))
        zeros = np.broadcast_to(np.zeros((), kind.file_type), (*grid.shape, *kind.tail))
        image = image_with(zeros, whole, ".nii")
        image.update_header()
        header = image.header
        if not kind.is_scaled:
            header.set_slope_inter(1.0, 0.0)
        header.write_to(file)
        file.flush()
        self._file = file
        self._shape = grid.shape
        self._begin = header.get_data_offset()
        self._dtype = header.get_data_dtype()

    def write(self, first: int, planes: Scan) -> None:
        """Write planes, the first of which is plane `first` of the whole."""
        numbers = in_file_type(planes.made(planes.stored, tail=planes.tail[:1]))
        columns, rows, depth = self._shape
        for channel in range(planes.stored.channels or 1):
            slab = numbers[..., channel] if numbers.ndim == 4 else numbers
            place = (channel * depth + first) * rows * columns
            self._file.seek(self._begin + place * self._dtype.itemsize)
            self._file.write(np.ascontiguousarray(slab.T, dtype=self._dtype).data)


def _empty(grid: Grid) -> Image:
    return Image(np.broadcast_to(np.uint8(0), grid.shape), grid.affine, axes="xyz")
