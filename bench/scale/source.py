"""Writes a cube of uint16, smooth plus noise, as Zarr in chunks. Usage: source.py OUTPUT EXTENT CHUNK"""
import sys

import numpy
import zarr


def plane(z, extent, generator):
    """A plane along y and x; a cube of floating point would not fit beside the result."""
    y, x = numpy.ogrid[:extent, :extent]
    smooth = 1000 + 400 * numpy.sin(z / 37) * numpy.cos(y / 29) * numpy.sin(x / 23)
    return smooth + generator.integers(0, 16, (extent, extent))


def main(output, extent, chunk):
    generator = numpy.random.default_rng(1)
    voxels = zarr.create_array(output, shape=(extent,) * 3, chunks=(chunk,) * 3, dtype="uint16",
                               compressors=zarr.codecs.ZstdCodec(level=1))
    for first in range(0, extent, chunk):
        voxels[first:first + chunk] = numpy.stack(
            [plane(z, extent, generator) for z in range(first, first + chunk)]).astype("uint16")


if __name__ == "__main__":
    main(sys.argv[1], *map(int, sys.argv[2:]))
