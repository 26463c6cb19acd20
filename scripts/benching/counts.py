"""Instructions per call, which are the same on every run and so can be compared by CI."""
import platform
import re
import tempfile
from pathlib import Path

from evidence import commands, markdown
from evidence.callgrind import own_costs
from evidence.commands import Failure

from . import builds, record

TITLE = "Instruction counts"
TOLERANCE = 0.02
SAMPLES = 512
PASSES = 2
# How the names of the objects begin whose instructions are the same on every processor.
COUNTED = ("count_calls", commands.LIBRARY)


def compiler():
    target = commands.run([builds.COMPILER, "-dumpmachine"]).stdout.strip()
    return f"{commands.version(builds.COMPILER)} for {target}"


def counted_costs(dumps):
    """For each dump the case that it names, and the instructions of the objects that count."""
    names = {}
    for dump in dumps:
        text = dump.read_text(encoding="utf-8")
        costs = own_costs(text, names)
        trigger = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
        if trigger:
            yield trigger[1], sum(cost for (object_file, _), cost in costs.items()
                                  if Path(object_file).name.startswith(COUNTED))


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
    program = builds.build("count_calls") / "bench" / "counts" / "count_calls"
    with tempfile.TemporaryDirectory() as folder:
        output = Path(folder) / "dump"
        said = commands.output_of(["valgrind", "--quiet", "--tool=callgrind",
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


def run(options):
    if platform.machine() != "x86_64":
        raise Failure("instructions are counted on x86-64 alone.")
    commands.install("build", "counts")
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
            *markdown.table(["kernel, border, positions", "`short` `getValueVoxel`", "by address",
                            "`float` `getDoubleValueReal`", "by address"], sampling_rows(counts)),
            "Instructions per element of a `short` volume:", "",
            *markdown.table(["operation", "instructions"], other_rows(counts))]

