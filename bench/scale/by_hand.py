"""Brings a Zarr array to another of the same extents, unit by unit, as a script of ten lines would:
"copy" writes what it reads, "shift" moves it by half a voxel along each axis by volux.resample. No
unit is checked, flushed to the disk or recorded. Usage: by_hand.py copy|shift SOURCE TARGET UNIT"""
import itertools
import sys

import numpy
import volux
import zarr


def shifted(source, first, last):
    """A box of the result, from its voxels and one more along each axis."""
    read = source[tuple(slice(a, b + 1) for a, b in zip(first, last))]
    half = numpy.eye(4)
    half[:3, 3] = 0.5
    extents = tuple(b - a for a, b in zip(first, last))
    return volux.resample(read, volux.Grid(extents, half), outside="extend", antialias=None)


def main(what, source, target, unit):
    source, target = zarr.open_array(source, mode="r"), zarr.open_array(target, mode="r+")
    for first in itertools.product(*(range(0, extent, unit) for extent in target.shape)):
        last = [min(a + unit, extent) for a, extent in zip(first, target.shape)]
        box = tuple(map(slice, first, last))
        target[box] = shifted(source, first, last) if what == "shift" else source[box]


if __name__ == "__main__":
    main(*sys.argv[1:4], int(sys.argv[4]))
