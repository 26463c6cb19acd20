"""Makes a resize with a result of so many bytes, and prints the bytes of the source, of the result,
and of all memory that the process had at most. Usage: memory.py BYTES"""
import re
import sys
from pathlib import Path

import numpy
import volux


def most_bytes():
    """Not ru_maxrss, which counts what the parent had when it started this process."""
    status = Path("/proc/self/status").read_text(encoding="ascii")
    return 1024 * int(re.search(r"VmHWM:\s*(\d+) kB", status)[1])


def main(wanted):
    extent = round((wanted / 2) ** (1 / 3) / 2)
    source = numpy.ones((extent,) * 3, numpy.int16)
    result = volux.resize(source, shape=(2 * extent,) * 3)
    print(source.nbytes, result.nbytes, most_bytes())


if __name__ == "__main__":
    main(int(sys.argv[1]))
