"""Whole volumes by volux_resample beside the bulk operations of other libraries, round by round."""
import statistics

from proof.common import Failure

from . import goals, programs, times
from .figures import table

TITLE = "Whole volumes"
SETS = ("AVX-512", "AVX2", "SSE4", "scalar")  # the best first
PEERS = tuple(programs.BULK.peers)
MEMORY = "rows"
THREADS = ("one thread", "two threads")
FRAME = 1e3 / 60  # ms
# A peer this many times slower than the fastest in the first round is not asked again.
HOPELESS = 2
WORKLOADS = {
    "A": "Whole volumes, A: oblique",
    "B": "Whole volumes, B: upsampling along the axes",
    "C": "Whole volumes, C: random positions",
}
ABOUT = """
`volux_resample` beside what each library has for whole volumes: VTK's `vtkImageReslice`, ITK's
`ResampleImageFilter`, `affine_transform` and `map_coordinates` of `scipy.ndimage`, and, for CImg, a
loop of the caller's over its templates, since its own `resize` rounds after each axis. At random
positions VTK and ITK are called in such a loop, too. One thread each. A time is that of one sample.

- **A**: the 32 slices from the 17th on of the oblique volume above, side by side, all of them filled.
- **B**: the 24 slices from the 13th on of the upsampling above.
- **C**: a million of the random positions above, held in an array, read into an array of `double`.
  *rows* only adds up the first voxels of the four rows that `linear` reads at each: the lines of
  memory that a sample waits for, and next to nothing besides.
- **Plane**: 512 x 512 pixels through the middle of the volume of A, turned as A, by the linear kernel,
  beside the sixtieth of a second that a viewer has.
- **Threads**: A and B with replication, `short`, on one thread and on two, by the clock on the wall.
- **Growth**: cubes of `short` onto as many voxels (of large ones, slices in the middle), with
  replication, by the clock on the wall, beside `memcpy` of as many voxels: no operation that reads
  every voxel and writes every voxel can be faster.

How it is measured: as the times above, in rounds and rows, once in each, with the processor time of
the process.
The library uses no instruction set but the named one (`scalar`: no SIMD); by itself it takes the best
that the processor has. A peer that takes more than twice the fastest one's time in the first round is
not asked again, and its time is that one. Each result, of every library, is compared with the module
at 600 samples, two voxels inside and away from ties; VTK computes with the weights of a `float`, and
ITK cuts the fraction of a `short` off. ITK is left out of *cubic*, where it has a B-spline of another
shape; scipy's, on coefficients computed before, is shown and is no peer in the ratios.

What keeps a goal out of reach, where it is missed:

- **C**: most of the time of the widest instruction set is that of *rows*.
- **Nearest A, scalar**: beside reading the voxel there are three products and sums for its position,
  as the map defines it, and three tests; nothing is carried from one sample to the next.
"""


def add_arguments(parser):
    times.add_arguments(parser, rounds=7)


def is_wanted(measured, competitor):
    if competitor not in PEERS or competitor not in measured:
        return True
    fastest = min(measured[peer][0] for peer in PEERS if peer in measured)
    return measured[competitor][0] <= HOPELESS * fastest


def check_goals(rows):
    """A name that is written otherwise in a program than among the goals would go unseen."""
    judged = (*goals.BULK, goals.THREADS)
    aimless = [row for row in rows
               if not row.startswith("growth/") and not times.goals_of(row, judged)]
    idle = [goal.what for goal in judged if not any(times.goals_of(row, [goal]) for row in rows)]
    if aimless or idle:
        raise Failure(f"no goal for {aimless}, no row for {idle}.")


def run(options):
    suite = programs.BULK
    times.check_options(options)
    programs.install_packages(suite)
    programs.build(suite)
    rows = programs.cases(suite)
    check_goals(rows)
    skipped = times.missing(suite, rows)
    findings = times.measure(suite, times.chosen(rows, options.only), options.rounds,
                             is_wanted=is_wanted)
    return times.found_by(suite, findings, options.rounds, skipped)


def begins(record, word):
    return {row: measured for row, measured in record["times"].items()
            if row.startswith(word + "/")}


def median(measured, name):
    return statistics.median(measured[name]) if name in measured else None


def workload(letter, record):
    rows = begins(record, letter)
    if not rows:
        return []
    names = [name for name in (*SETS, MEMORY, *PEERS)
             if any(name in found for found in rows.values())]
    lines = [line for row, found in rows.items()
             for line in times.row_lines(row, found, names, goals.BULK)]
    return [f"### {WORKLOADS[letter]}", "",
            *table(["voxels", "kernel", "border", *(f"{name}, ns" for name in names), "ours",
                    *times.RATIO_HEADS], lines)]


def plane(record):
    pixels = 512 * 512
    rows = []
    for row, found in begins(record, "plane").items():
        _, voxels, _, border = row.split("/")
        for name in (*SETS, *PEERS):
            if name in found:
                spent = median(found, name) * pixels / 1e6
                rows.append([voxels, border, name, f"{spent:.2f}", f"{spent / FRAME:.0%}"])
    if not rows:
        return []
    return ["### An oblique plane of 512 x 512", "",
            *table(["voxels", "border", "by", "ms", "of 1/60 s"], rows)]


def threads(record):
    rows = []
    for row, found in begins(record, "threads").items():
        gains = times.ratios(found, [THREADS[1]], THREADS[0])
        if gains is None:
            continue
        gain = statistics.median(gains)
        rows.append([*row.split("/")[1:], *(times.shown(median(found, name)) for name in THREADS),
                     times.spread(gains),
                     *(cell for bound in (goals.THREADS.most, goals.THREADS.aim)
                       for cell in (f"{1 / bound:.2f}", "yes" if gain * bound >= 1 else "**no**"))])
    if not rows:
        return []
    return ["### Two threads", "",
            *table(["workload", "kernel", "one, ns", "two, ns", "times as fast (quartiles)",
                    "at least", "holds", "aim", "holds"], rows)]


def growth(record):
    """A line for each size, from the rows growth/WHAT/SIZE."""
    cells = {}
    for row, found in begins(record, "growth").items():
        _, what, size = row.split("/")
        for name in found:
            heading = what if name == "memcpy" else f"{what}, {name}"
            cells.setdefault(int(size), {})[heading] = times.shown(median(found, name))
    if not cells:
        return []
    heads = list(dict.fromkeys(head for line in cells.values() for head in line))
    return ["### Growth", "", "Nanoseconds for a sample.", "",
            *table(["voxels", *heads],
                   [[f"{size}^3", *(line.get(head, "") for head in heads)]
                    for size, line in sorted(cells.items())])]


def tables(record):
    """The record as Markdown."""
    lines = [*times.beside(record), *times.overview(record, goals.BULK)]
    for letter in WORKLOADS:
        lines += workload(letter, record)
    return [*lines, *plane(record), *threads(record), *growth(record),
            *times.agreement(record, "### Whole volumes: agreement with the module")]
