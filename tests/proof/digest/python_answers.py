"""Runs python_calls, answers its requests by the package volux, and hands on the results that it
digests.

What the public functions can say they answer: `resample`, `resize`, `sample` and `sample_gradient`
of arrays in their index space. The rest goes to the functions of the compiled part that those call:
maps, planes and fields that no affine gives to the last bit, numbers of sub-samples other than one
and as many as a step is long, and readings that wrap. At the end it writes to the standard error
how many requests went which way.
Usage: python_answers.py THREADS PROGRAM ARGUMENT ...
"""
import collections
import mmap
import subprocess
import sys

import numpy
import volux
from volux import _core

KERNELS = ("nearest", "linear", "cubic", "label")
BORDERS = ("constant", "edge")
TYPES = dict(enumerate(("int16", "int32", "uint8", "uint16", "uint32", "float32", "float64"), 1))
ONE, AS_LONG = [1, 1, 1], [0, 0, 0]  # sub-samples: as many along each axis as a step is long
UNWRITTEN = 77  # lies between the voxels of a result
MOST_FILLED = 1 << 24  # elements; a result with more has its pieces far apart
WITHOUT_SWAP = 0x4000  # MAP_NORESERVE


class Fields(dict):
    """What a line "NAME=NUMBER,... NAME=@BYTES ..." and the bytes after it say."""

    def __init__(self, line, stream):
        for word in line.split():
            name, value = word.split("=")
            is_bytes = value.startswith("@")
            self[name] = (stream.read(int(value[1:])) if is_bytes
                          else [float.fromhex(number) for number in value.split(",")])

    def number(self, name):
        return int(self[name][0])

    def matrix(self, name):
        """Returns three rows, in the order x, y, z and origin."""
        return numpy.array(self[name]).reshape(3, 4)


class Memory:
    """The voxels of a volume, in a block where they are so far apart."""

    def __init__(self, fields, name):
        self.dtype = numpy.dtype(TYPES[fields.number(f"{name}Type")])
        shape = [int(extent) for extent in fields[f"{name}Extents"][2::-1]]
        strides = [int(stride) for stride in fields[f"{name}Strides"][2::-1]]
        shape.append(int(fields[f"{name}Extents"][3]))
        strides.append(int(fields[f"{name}Strides"][3]))
        spans = [stride * (extent - 1) for stride, extent in zip(strides, shape, strict=True)]
        first = -sum(span for span in spans if span < 0)
        self.block = self.elements(first + sum(span for span in spans if span > 0) + 1)
        self.array = numpy.lib.stride_tricks.as_strided(
            self.block[first:], shape, [stride * self.dtype.itemsize for stride in strides])

    def elements(self, count):
        if count <= MOST_FILLED:
            return numpy.full(count, UNWRITTEN, self.dtype)
        size = count * self.dtype.itemsize
        far = mmap.mmap(-1, size, mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS | WITHOUT_SWAP)
        return numpy.frombuffer(far, self.dtype)

    def take(self):
        """The voxels, z, y, x and channel: nothing may have been written between them."""
        taken = self.array.astype(numpy.float64)
        self.array[...] = UNWRITTEN
        if self.block.size <= MOST_FILLED and not (self.block == UNWRITTEN).all():
            raise SystemExit("a call wrote between the voxels of its result")
        return taken


def source_of(fields, name="source"):
    memory = Memory(fields, name)
    memory.array[...] = numpy.frombuffer(fields[name], memory.dtype).reshape(memory.array.shape)
    return memory.array


def in_xyz(array):
    return array.transpose(2, 1, 0, 3)


def reversed_map(rows):
    """A map in the order of the axes of an array, z first."""
    affine = numpy.eye(4)
    affine[:3, :3], affine[:3, 3] = rows[::-1, 2::-1], rows[::-1, 3]
    return affine


class Answers:
    """What volux gives for a request; `ways` counts how."""

    def __init__(self, threads):
        self.threads = threads
        self.ways = collections.Counter()

    def reading(self, fields):
        """The keywords of every reading."""
        return {"interpolation": KERNELS[fields.number("kernel")],
                "border": BORDERS[fields.number("border")], "fill": fields["outside"][0],
                "threads": self.threads}

    def filling(self, fields):
        """The keywords of a call that fills a volume."""
        return {**self.reading(fields), "outside": ("fill", "extend")[fields.number("extends")],
                "overflow": ("saturate", "wrap")[fields.number("wraps")],
                "antialias": "mean" if fields["subsamples"] == AS_LONG else None}

    def compiled(self, fields):
        return _core.Reading(
            kernel=fields.number("kernel"), border=1 - fields.number("border"),
            outside=fields["outside"][0], edge_extends=bool(fields.number("extends")),
            overflow=fields.number("wraps"), subsamples=[int(n) for n in fields["subsamples"]],
            threads=self.threads, progress=None)

    def fill(self, fields):
        source, result = source_of(fields), Memory(fields, "result")
        rows = fields.matrix("map")
        if "field" not in fields and fields["subsamples"] in (ONE, AS_LONG):
            self.ways["resample"] += 1
            grid = volux.Grid(result.array.shape[:3], reversed_map(rows))
            volux.resample(source, grid, out=result.array, **self.filling(fields))
            return result.take()
        self.ways["resample, compiled"] += 1
        warp = warp_of(fields) if "field" in fields else None
        _core.fill(in_xyz(source), in_xyz(result.array), rows, self.compiled(fields), warp=warp)
        return result.take()

    def reslice(self, fields):
        self.ways["reslice, compiled"] += 1
        source, result = source_of(fields), Memory(fields, "result")
        _core.reslice(in_xyz(source), in_xyz(result.array), fields.matrix("map"),
                      self.compiled(fields), slab=fields.number("planes"),
                      projection=fields.number("projection"))
        return result.take()

    def resize(self, fields):
        self.ways["resize"] += 1
        source, result = source_of(fields), Memory(fields, "result")
        how = {**self.filling(fields), "outside": "extend"}
        volux.resize(source, shape=result.array.shape[:3], out=result.array,
                     align=("edges", "centres")[fields.number("centres")], **how)
        return result.take()

    def sample(self, fields):
        source, points = source_of(fields), positions_of(fields)
        if fields.number("physical"):
            points = points / fields["unit"]
        points = spread(points, fields.number("stride"))
        dtype = numpy.dtype(TYPES[fields.number("resultType")])
        wraps = fields.number("wraps") and dtype.kind in "iu"
        if "map" not in fields and not wraps:
            self.ways["sample"] += 1
            return volux.sample(source, points[:, ::-1], dtype=dtype, **self.reading(fields))
        self.ways["sample, compiled"] += 1
        results = numpy.empty((len(points), source.shape[3]), dtype)
        to_voxels = fields.matrix("map") if "map" in fields else None
        _core.sample(in_xyz(source), points, to_voxels, -1, results, self.compiled(fields))
        return results

    def readings(self, fields):
        self.ways["sample"] += 1
        points = positions_of(fields)[:, ::-1]
        return volux.sample(source_of(fields), points, channel=0, **self.reading(fields))

    def gradients(self, fields):
        self.ways["sample_gradient"] += 1
        values, slopes = volux.sample_gradient(source_of(fields), positions_of(fields)[:, ::-1],
                                               channel=0, **self.reading(fields))
        return numpy.column_stack([values, slopes[:, ::-1]])

    def lead(self, fields):
        self.ways["Displacement, compiled"] += 1
        led = numpy.empty((1, 3))
        warp_of(fields).apply(positions_of(fields), led)
        return led


def warp_of(fields):
    vectors = source_of(fields, "field")
    return _core.Warp(in_xyz(vectors), fields.matrix("toField"), fields.matrix("toVoxels"))


def positions_of(fields):
    return numpy.frombuffer(fields["positions"]).reshape(-1, 3)


def spread(points, stride):
    """The same points, so far apart in memory."""
    if stride == 0:
        return numpy.broadcast_to(points[0], points.shape)
    wide = numpy.full((len(points) * abs(stride), 3), 1e9)[::stride]
    wide[...] = points
    return wide


def serve(program, answers):
    """Answers each request, and hands on what is none."""
    for header in program.stdout:
        if not header.startswith(b"? "):
            sys.stdout.buffer.write(header)
            sys.stdout.buffer.write(program.stdout.read(int(header.split(b" ")[0])))
            continue
        operation, _, words = header.decode()[2:].partition(" ")
        answered = getattr(answers, operation)(Fields(words, program.stdout))
        program.stdin.write(numpy.ascontiguousarray(answered, numpy.float64).tobytes())
        program.stdin.flush()


def main(threads, *command):
    answers = Answers(int(threads))
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as program:
        serve(program, answers)
    for way, count in sorted(answers.ways.items()):
        print(f"{way}: {count} requests", file=sys.stderr)
    return program.returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
