"""Instructions per call, which are the same on every run and so can be compared by CI."""
import platform
import re
import tempfile
from pathlib import Path

from proof import common
from proof.callgrind import own_costs
from proof.common import Failure

from . import figures, record

TITLE = "Instruction counts"
ABOUT = """
Callgrind counts the instructions of N calls of each kind and those of 2N; the difference, divided
by the number of calls, is the figure. It has the caller's loop in it: reading a position and adding
up the results takes a few instructions. Counted are the instructions in the library and in the
program that calls it, not those in the C and C++ libraries: which `memcpy`, `memset` or `round`
runs there depends on the processor. An operation that ends in one of them costs almost nothing
here, and shows its cost in the times.

A sampling call is made at seeded positions whose neighbours all lie inside, and at others up to
half a voxel beyond one face, where the nearest voxel and some of the other kernels' neighbours lie
outside. A figure of the container is for an element, of a volume of 50 x 44 x 36 that no block of
voxels fits.

The figures hold for the compiler with which they were recorded; it, its Release flags and plain
x86-64 make the same instructions everywhere. One that differs by more than 2 % from the record
fails.
"""
TOLERANCE = 0.02
SAMPLES = 512
PASSES = 2
# The objects whose instructions are the same on every processor.
COUNTED = ("count_calls", common.LIBRARY)


def compiler():
    target = common.run([figures.COMPILER, "-dumpmachine"]).stdout.strip()
    return f"{common.version(figures.COMPILER)} for {target}"


def counted_costs(dumps):
    """For each dump the case that it names, and the instructions of the objects that count."""
    names = {}
    for dump in dumps:
        text = dump.read_text(encoding="utf-8")
        costs = own_costs(text, names)
        trigger = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
        if trigger:
            yield trigger[1], sum(cost for (object_file, _), cost in costs.items()
                                  if Path(object_file).name in COUNTED)


def per_call(divisors, dumps):
    """The difference of each case's two dumps, for one call or element."""
    costs = {}
    for name, cost in counted_costs(dumps):
        costs.setdefault(name, []).append(cost)
    if {name: 2 for name in divisors} != {name: len(pair) for name, pair in costs.items()}:
        raise Failure("callgrind did not write what it counted twice for every case.")
    counts = {name: (twice - once) / divisors[name] for name, (once, twice) in costs.items()}
    for name, count in counts.items():
        if count <= 0:
            raise Failure(f"callgrind sees no instruction of {name}.")
    return {name: float(f"{count:.6g}") for name, count in counts.items()}


def measure():
    program = figures.build("count_calls") / "bench" / "counts" / "count_calls"
    with tempfile.TemporaryDirectory() as folder:
        output = Path(folder) / "dump"
        said = common.output_of(["valgrind", "--quiet", "--tool=callgrind",
                                 f"--callgrind-out-file={output}", program, SAMPLES, PASSES])
        divisors = {name: int(divisor) for name, divisor in
                    (line.split("\t") for line in said.decode().splitlines())}
        dumps = sorted(Path(folder).glob("dump.*"), key=lambda path: int(path.suffix[1:]))
        return per_call(divisors, dumps)


def changes(recorded, counts):
    """What is not as recorded, a sentence each."""
    for name in sorted(recorded.keys() ^ counts.keys()):
        yield f"{name} is {'recorded but not counted' if name in recorded else 'not recorded'}"
    for name in recorded.keys() & counts.keys():
        growth = counts[name] / recorded[name] - 1
        if abs(growth) > TOLERANCE:
            yield (f"{name} {'grew' if growth > 0 else 'shrank'} by {abs(growth):.1%}, "
                   f"from {recorded[name]:g} to {counts[name]:g} instructions")


def compare(now):
    recorded = record.kept("counts")
    if recorded is None:
        raise Failure("there is no record to compare with; --record makes one.")
    if recorded["compiler"] != now["compiler"]:
        print(f"Nothing is compared, which is no failure: the record was made by "
              f"{recorded['compiler']}, and {now['compiler']} chooses other instructions.")
        return
    found = sorted(changes(recorded["counts"], now["counts"]))
    for change in found:
        print(f"  {change}")
    if found:
        more = f", and {len(found) - 1} more" if found[1:] else ""
        raise Failure(f"{found[0]}{more}; mend what grew, record anew (--record) what was meant.")
    print(f"{len(now['counts'])} instruction counts are within {TOLERANCE:.0%} of the record.")


def add_arguments(parser):
    del parser  # there is nothing to choose


def run(options):
    if platform.machine() != "x86_64":
        raise Failure("instructions are counted on x86-64 alone.")
    common.install("build", "counts")
    now = {"compiler": compiler(), "counts": measure()}
    if not options.record:
        compare(now)
    return now


def sampling_rows(counts):
    samples = [name.split("/") for name in counts if "-time/" in name]
    for kernel, border in dict.fromkeys((kernel, border) for _, kernel, border, _, _ in samples):
        for where in ("inside", "border"):
            yield [f"{kernel}, {border}, {where}",
                   *(f"{counts[f'{when}/{kernel}/{border}/{kind}/{where}']:.0f}"
                     for kind in ("short", "float") for when in ("compile-time", "run-time"))]


def other_rows(counts):
    for name, count in counts.items():
        if name.startswith(("access/", "container/")):
            yield [f"`{name.split('/')[1]}`" if "access" in name else name.split("/")[1],
                   f"{count:.2f}"]


def tables(found):
    counts = found["counts"]
    return [f"By {found['compiler']}. Instructions per call:", "",
            *figures.table(["kernel, border, positions", "`short` `getValueVoxel`", "by address",
                            "`float` `getDoubleValueReal`", "by address"], sampling_rows(counts)),
            "Instructions per element of a `short` volume:", "",
            *figures.table(["operation", "instructions"], other_rows(counts))]

