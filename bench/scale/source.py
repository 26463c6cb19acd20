"""Writes a volume of uint16, smooth plus noise, as Zarr in chunks.
Usage: source.py OUTPUT CHUNK Z Y X"""
import sys

import numpy
import zarr


def plane(z, extents, generator):
    """A plane along y and x; a volume of floating point would not fit beside the result."""
    y, x = numpy.ogrid[:extents[0], :extents[1]]
    smooth = 1000 + 400 * numpy.sin(z / 37) * numpy.cos(y / 29) * numpy.sin(x / 23)
    return smooth + generator.integers(0, 16, extents)


def main(output, chunk, *extents):
    generator = numpy.random.default_rng(1)
    voxels = zarr.create_array(output, shape=extents, chunks=(chunk,) * 3, dtype="uint16",
                               compressors=zarr.codecs.ZstdCodec(level=1))
    for first in range(0, extents[0], chunk):
        voxels[first:first + chunk] = numpy.stack(
            [plane(z, extents[1:], generator) for z in range(first, first + chunk)]).astype("uint16")


if __name__ == "__main__":
    main(sys.argv[1], *map(int, sys.argv[2:]))
