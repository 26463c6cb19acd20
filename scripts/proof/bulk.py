"""Whole volumes at once against volux_core's single calls."""
import collections
import secrets

from evidence.commands import CORES, BadUse, at_once, install, output_of, positive

from .builds import release
from .results import Result, Table

TITLE = "Whole volumes"
PROMISE = ("Whole volumes have the bits of single calls, on any instruction set and number of "
           "threads.")
BREAKER = "A vector that takes another step than one number does, a part of the work left out."
WITH_RESAMPLE = True
CI_RUN = ["--seconds", "10", "--no-large"]
WHOLE_RUN = ["--seconds", "60"]

CAMPAIGN = 10**9  # samples
KINDS = 1026  # operations with types of results, element types, kernels and borders
LARGE = 2  # results
APART = 2**40  # between the first seeds of programs that run at once

Count = collections.namedtuple("Count", "operation type kernel border compared different")


def add_arguments(parser):
    parser.add_argument("--seconds", type=positive, default=60.0,
                        help="how long to compare random volumes (60)")
    parser.add_argument("--seed", type=int,
                        help="the seed of the first volume (a new one each time)")
    parser.add_argument("--no-large", action="store_true",
                        help="leave out the large results, which take 5 GiB of memory")


def rows_of(program, *arguments):
    said = output_of([program, *arguments], text=True)
    return [line.split("\t") for line in said.splitlines()]


def compare(program, seconds, seed):
    """The number of volumes, and the counts of all processes added up. An instruction set is chosen
    for a whole process, so there is one for each core."""
    runs = at_once(lambda n: rows_of(program, seconds, seed + n * APART), range(CORES))
    sums = collections.Counter()
    for run in runs:
        for *kind, compared, different in run[1:]:
            sums[(*kind, "compared")] += int(compared)
            sums[(*kind, "different")] += int(different)
    kinds = sorted({key[:-1] for key in sums})
    counts = [Count(*kind, sums[(*kind, "compared")], sums[(*kind, "different")]) for kind in kinds]
    return sum(int(run[0][1]) for run in runs), counts


def by(counts, fields, caption):
    sums = collections.defaultdict(lambda: [0, 0])
    for count in counts:
        of = sums[tuple(getattr(count, field) for field in fields)]
        of[0] += count.compared
        of[1] += count.different
    return Table(caption, [*fields, "samples", "different"],
                 [[*names, f"{compared:,}", f"{different:,}"]
                  for names, (compared, different) in sums.items()])


def large_table(large):
    return Table("Large results", ["of what", "elements", "samples compared", "different"],
                 [[what, *(f"{int(number):,}" for number in numbers)] for what, *numbers in large])


def run(options):
    seed = secrets.randbelow(2**32) if options.seed is None else options.seed
    if not 0 <= seed < 2**62:
        raise BadUse("--seed takes a number from 0 to 2^62 - 1.")
    install("differential")
    folder = release("bulk_run", "large_results")
    programs = folder / "tests" / "proof" / "bulk"
    print(f"the first seed is {seed}", flush=True)
    volumes, counts = compare(programs / "bulk_run", options.seconds, seed)
    large = [] if options.no_large else rows_of(programs / "large_results")
    samples = sum(count.compared for count in counts)
    different = (sum(count.different for count in counts)
                 + sum(int(row[-1]) for row in large))
    tables = [Table("The run", ["first seed", "volumes", "seconds", "processes"],
                    [[seed, f"{volumes:,}", f"{options.seconds:g}", CORES]]),
              by(counts, ("operation",), "By operation"),
              by(counts, ("type", "kernel", "border"), "By element type, kernel and border")]
    if large:
        tables.append(large_table(large))
    complete = len(large) == (0 if options.no_large else LARGE)
    return Result(
        passed=complete and different == 0 and 0 < len(counts) <= KINDS and samples > 0,
        summary=f"{samples:,} samples of {volumes:,} volumes compared with single calls, and "
                f"{sum(int(row[2]) for row in large):,} of {len(large)} results of more than 2^31 "
                f"elements; {different:,} different.",
        tables=tables, campaign=samples >= CAMPAIGN, complete=not options.no_large)
