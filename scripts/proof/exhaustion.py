"""Every float there is, through whatever takes a float."""
import secrets

from evidence.commands import CORES, BadUse, install, output_of

from .builds import release
from .results import Result, Table

TITLE = "Exhaustion"
PROMISE = "Indices, conversions and kernels are right for every `float` there is."
BREAKER = "A rule that is wrong for a few numbers among billions, which no sample meets."
CI_RUN = ["--every", "797"]

ALL = 2**32


def add_arguments(parser):
    parser.add_argument("--every", type=int, default=1, metavar="N",
                        help="take every Nth float only (1)")
    parser.add_argument("--first", type=int,
                        help="the bits of the first float, from 0 to N - 1 (drawn at random)")


def first_of(options):
    if not 1 <= options.every <= ALL:
        raise BadUse("--every takes a number from 1 to 2^32.")
    if options.first is None:
        return secrets.randbelow(options.every)
    if not 0 <= options.first < options.every:
        raise BadUse("--first takes a number from 0 to N - 1 of --every N.")
    return options.first


def counts_of(folder, every, first):
    """Rows of kind, name, compared, different."""
    program = folder / "tests" / "proof" / "exhaustion" / "exhaustion"
    said = output_of([program, every, first, CORES], text=True)
    return [(kind, name, int(compared), int(different)) for kind, name, compared, different
            in (line.split("\t") for line in said.splitlines())]


def run(options):
    first = first_of(options)
    install("exhaustion")
    folder = release("exhaustion")
    print(f"one float in {options.every}, from 0x{first:08x} on", flush=True)
    counts = counts_of(folder, options.every, first)
    floats = len(range(first, ALL, options.every))
    compared = sum(row[2] for row in counts)
    different = sum(row[3] for row in counts)
    complete = len(counts) == 18 and all(row[2] == floats for row in counts)
    table = Table(f"One float in {options.every} by its bits, from 0x{first:08x} on"
                  if options.every > 1 else "Every float",
                  ["what", "of", "floats compared", "different"],
                  [[kind, name, f"{count:,}", f"{wrong:,}"] for kind, name, count, wrong in counts])
    return Result(passed=complete and different == 0,
                  summary=f"{floats:,} of the {ALL:,} floats through {len(counts)} rules, "
                          f"conversions and kernels: {compared:,} comparisons, {different:,} "
                          "different.",
                  tables=[table], complete=options.every == 1)
