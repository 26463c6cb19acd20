"""Random samples against the oracle, and beside those of other libraries."""
import collections
import secrets

from evidence import commands
from evidence.commands import CORES, ROOT, BadUse, install, output_of, positive

from .builds import release
from .results import Result, Table

TITLE = "Differential runs"
PROMISE = ("A sample is what its definition says, and what other libraries say where they mean the "
           "same.")
BREAKER = "A formula that was misread, or that was written down wrong twice alike."
CI_RUN = ["--seconds", "10"]
WHOLE_RUN = ["--seconds", "60"]

CAMPAIGN = 10**9  # samples
KINDS = 294  # of samples: types, forms, kernels and borders that go together
POSITIONS = 1_000_000  # for each comparison with an outsider
COMPARISONS = 12

Count = collections.namedtuple("Count", "policies type form kernel border compared different pairs "
                                        "different_pairs")
Outsider = collections.namedtuple("Outsider", "name what compared largest tolerance")


def add_arguments(parser):
    parser.add_argument("--seconds", type=positive, default=60.0,
                        help="how long to compare with the oracle (60)")
    parser.add_argument("--seed", type=int,
                        help="the seed of the first volume (a new one each time)")


def rows_of(text):
    return [line.split("\t") for line in text.decode().splitlines()]


def compare_with_oracle(folder, seconds, seed):
    """The number of volumes, and the counts of all threads added up."""
    rows = rows_of(output_of([folder / "differential_run", seconds, seed, CORES]))
    sums = collections.Counter()
    for *kind, compared, different, pairs, different_pairs in rows[1:]:
        for n, count in enumerate((compared, different, pairs, different_pairs)):
            sums[(*kind, n)] += int(count)
    kinds = dict.fromkeys(tuple(row[:5]) for row in rows[1:])
    return int(rows[0][1]), [Count(*kind, *(sums[(*kind, n)] for n in range(4))) for kind in kinds]


def compare_with_outsiders(folder, seed):
    cimg = rows_of(output_of([folder / "cimg_outsider", POSITIONS, seed]))
    samples = output_of([folder / "scipy_samples", POSITIONS, seed])
    scipy = rows_of(output_of([ROOT / "tests" / "proof" / "differential" / "compare_scipy"],
                              input=samples))
    return [Outsider(name, what, int(compared), float(largest), float(tolerance))
            for name, rows in (("`CImg<double>`", cimg), ("scipy.ndimage", scipy))
            for what, compared, largest, tolerance in rows]


def total(counts, field):
    return sum(getattr(count, field) for count in counts)


def by_family(counts, key, caption, heads):
    """Counts added up over all that have the same key."""
    families = collections.defaultdict(list)
    for count in counts:
        families[key(count)].append(count)
    fields = ("compared", "different", "pairs", "different_pairs")
    rows = [[*names, *(f"{total(of, field):,}" for field in fields)]
            for names, of in [*families.items(), (("all",) + ("",) * (len(heads) - 1), counts)]]
    return Table(caption, [*heads, "samples", "different from the oracle",
                           "run-time with compile-time pairs", "different in themselves"], rows)


def border_of(count):
    return "the user's own" if count.policies == "own" else count.border


def power_of_two(number):
    return f"2^{number.hex().rpartition('p')[2]}" if number else "0"


def outsiders_table(outsiders):
    return Table("Outsiders; differences and tolerances are parts of the largest voxel",
                 ["outsider", "what", "positions", "largest difference", "tolerance", "held"],
                 [[outsider.name, outsider.what, f"{outsider.compared:,}",
                   f"{outsider.largest:.2g}", power_of_two(outsider.tolerance),
                   "yes" if holds(outsider) else "no"] for outsider in outsiders])


def holds(outsider):
    return outsider.compared > 0 and outsider.largest <= outsider.tolerance


def packages():
    """The releases of the outsiders: what the tolerances were derived for."""
    found = commands.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", "cimg-dev",
                         "python3-scipy"])
    return " and ".join(found.stdout.split("\n")[:2])


def run_table(volumes, seed, seconds):
    return Table("The run", ["first seed", "volumes", "seconds", "threads", "outsiders"],
                 [[seed, f"{volumes:,}", f"{seconds:g}", CORES, packages()]])


def judge(options, seed, volumes, counts, outsiders):
    samples, different = total(counts, "compared"), total(counts, "different")
    pairs, different_pairs = total(counts, "pairs"), total(counts, "different_pairs")
    held = sum(holds(outsider) for outsider in outsiders)
    return Result(
        passed=len(counts) == KINDS and all(count.compared for count in counts) and pairs > 0
        and different + different_pairs == 0 and held == len(outsiders) == COMPARISONS,
        summary=f"{samples:,} samples compared with the oracle, {different:,} different; {pairs:,} "
                f"pairs of run-time and compile-time policies, {different_pairs:,} different; "
                f"{held} of {len(outsiders)} comparisons with outsiders within tolerance.",
        tables=[run_table(volumes, seed, options.seconds),
                by_family(counts, lambda count: (count.type, count.kernel),
                          "By element type and kernel", ["element type", "kernel"]),
                by_family(counts, lambda count: (count.form, border_of(count)),
                          "By form and border", ["form", "border"]),
                outsiders_table(outsiders)],
        campaign=samples >= CAMPAIGN)


def run(options):
    if options.seed is not None and not 0 <= options.seed < 2**63:
        raise BadUse("--seed takes a number from 0 to 2^63 - 1.")
    install("differential")
    folder = release("differential_run", "cimg_outsider", "scipy_samples")
    programs = folder / "tests" / "proof" / "differential"
    seed = secrets.randbelow(2**48) if options.seed is None else options.seed
    print(f"the first seed is {seed}", flush=True)
    volumes, counts = compare_with_oracle(programs, options.seconds, seed)
    return judge(options, seed, volumes, counts, compare_with_outsiders(programs, seed))
