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
    "resample",
    "resize",
    "reslice",
    "sample",
    "sample_gradient",
    "support",
    "threads",
]


def __getattr__(name: str) -> str:
    # Looked up when it is asked for: the files about installed packages take long to read.
    if name == "__version__":
        from importlib.metadata import version

        return version("volux")
    raise AttributeError(f"module 'volux' has no attribute {name!r}")
