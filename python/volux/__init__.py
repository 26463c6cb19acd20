"""Volumes of voxels, resampled with the same bits everywhere.

Index vectors follow the axes of the array; places in the world are (x, y, z) in mm, RAS+. Arrays
are read and written where they are, and every result has the same bits on every processor, with
any number of threads and in any layout of memory.
"""

TYPE_CHECKING = False  # typing reads it so, too, and takes time to import
if TYPE_CHECKING:
    from volux import ndimage
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
    # What takes long to read is read when it is asked for: NumPy, too, which the tool's help needs
    # as little as anybody who only looks for the version.
    _MODULES = {
        "Affine": "_affine",
        "digest": "_digest",
        "Composite": "_displacement",
        "Displacement": "_displacement",
        "compose": "_displacement",
        "Grid": "_grid",
        "Image": "_image",
        "Plane": "_plane",
        "AliasingWarning": "_resample",
        "resample": "_resample",
        "resize": "_resize",
        "reslice": "_reslice",
        "sample": "_sample",
        "sample_gradient": "_sample",
        "support": "_support",
        "threads": "_threads",
    }

    def __getattr__(name):
        from importlib import import_module

        if name == "__version__":
            from importlib.metadata import version

            return version("volux")
        if name == "ndimage":
            return import_module("volux.ndimage")
        if name not in _MODULES:
            raise AttributeError(f"module 'volux' has no attribute {name!r}")
        value = getattr(import_module(f"volux.{_MODULES[name]}"), name)
        globals()[name] = value
        return value

    def __dir__():
        return sorted({*globals(), *__all__})
