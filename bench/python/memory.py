"""Makes a resize with a result of so many bytes, and prints the bytes of the source and of the
result. Usage: memory.py BYTES"""
import sys

import numpy
import volux


def main(wanted):
    extent = round((wanted / 2) ** (1 / 3) / 2)
    source = numpy.ones((extent,) * 3, numpy.int16)
    result = volux.resize(source, shape=(2 * extent,) * 3)
    print(source.nbytes, result.nbytes)


if __name__ == "__main__":
    main(int(sys.argv[1]))
