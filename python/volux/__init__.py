"""Volumes of voxels, resampled with the same bits everywhere.

Index vectors follow the axes of the array; places in the world are (x, y, z) in mm, RAS+. Arrays
are read and written where they are, and every result has the same bits on every processor, with
any number of threads and in any layout of memory.
"""

from typing import TYPE_CHECKING

from volux._affine import Affine
from volux._digest import digest
from volux._displacement import Composite, Displacement, compose
from volux._grid import Grid
from volux._image import Image
from volux._plane import Plane
from volux._resample import AliasingWarning, resample
from volux._resize import resize
from volux._reslice import reslice
from volux._sample import sample, sample_gradient
from volux._support import support
from volux._threads import threads

if TYPE_CHECKING:
    from volux import ndimage

    __version__: str

__all__ = [
    "Affine",
    "AliasingWarning",
    "Composite",
    "Displacement",
    "Grid",
    "Image",
    "Plane",
    "compose",
    "digest",
    "ndimage",
    "resample",
    "resize",
    "reslice",
    "sample",
    "sample_gradient",
    "support",
    "threads",
]

if not TYPE_CHECKING:

    def __getattr__(name):
        # What takes long to read is read when it is asked for.
        if name == "__version__":
            from importlib.metadata import version

            return version("volux")
        if name == "ndimage":
            from importlib import import_module

            return import_module("volux.ndimage")
        raise AttributeError(f"module 'volux' has no attribute {name!r}")
