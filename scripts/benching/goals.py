"""What the times must reach: the only place that has goals."""
import collections
import fnmatch

from evidence.commands import Failure

# rows: patterns of rows; against: competitors, of which the fastest in the row counts; ours: who is
# compared with them.
Goal = collections.namedtuple("Goal", "what rows against most aim ours", defaults=["volux_core"])

ALIKE = ("CImg", "ITK", "VTK")  # in the rows where their kernel is volux_core's
SAME_TRICUBIC = ("CImg", "VTK")
PLAIN = ("raw", "memset", "memcpy", "numpy")

GOALS = [
    Goal("nearest A, B, C, constant", ["[ABC]/*/nearest/constant"], ALIKE, 1.05, 0.90),
    Goal("nearest A, B, C, replication", ["[ABC]/*/nearest/replication"], ALIKE, 1.15, 1.00),
    Goal("trilinear A, B", ["[AB]/*/linear/*"], ALIKE, 1.00, 0.80),
    Goal("trilinear C", ["C/*/linear/*"], ALIKE, 0.85, 0.75),
    Goal("tricubic A, B", ["[AB]/*/cubic/*"], ("CImg",), 0.90, 0.65),
    Goal("tricubic A, B", ["[AB]/*/cubic/*"], ("VTK",), 1.40, 1.00),
    Goal("tricubic C", ["C/*/cubic/*"], SAME_TRICUBIC, None, None),
    Goal("nearest D", ["D/*/nearest/*"], ALIKE, 1.15, 1.00),
    Goal("trilinear D", ["D/*/linear/*"], ALIKE, 0.90, 0.80),
    Goal("tricubic D", ["D/*/cubic/*"], SAME_TRICUBIC, 1.25, 1.00),
    Goal("nearest A to D", ["[ABCD]/*/nearest/*"], ALIKE, 0.85, None, "Sampler"),
    Goal("trilinear A to D", ["[ABCD]/*/linear/*"], ALIKE, 0.75, None, "Sampler"),
    Goal("tricubic A to D", ["[ABCD]/*/cubic/*"], ("VTK",), 1.20, None, "Sampler"),
    Goal("tricubic A to D", ["[ABCD]/*/cubic/*"], ("CImg",), 0.60, None, "Sampler"),
    Goal("an element, read or written", ["E/read*", "E/write*"], ("raw",), 1.05, 1.00),
    Goal("fill of a dense image", ["E/fill"], ("memset",), 1.15, 1.00),
    Goal("fill of a channel", ["E/fill a channel"], PLAIN, None, None),
    Goal("crop, draw, deep copy", ["E/crop", "E/draw", "E/deep copy"], ("memcpy",), 1.15, 1.00),
    Goal("xy planes", ["E/?et xy"], PLAIN, 1.15, 1.00),
    Goal("yz planes", ["E/?et yz"], ("numpy",), 1.10, 0.95),
    Goal("zx planes", ["E/?et zx"], ("numpy",), 0.40, 0.06),
]


# Whole volumes.
BULK_ALIKE = ("VTK", "ITK", "CImg", "scipy")
WIDEST = "AVX-512"
MEANS = "volux"  # who adds up blocks of voxels, with the best instruction set

BULK = [
    Goal("nearest A", ["A/*/nearest/*"], BULK_ALIKE, 0.95, None, "scalar"),
    Goal("nearest A", ["A/*/nearest/*"], BULK_ALIKE, 0.60, 0.35, WIDEST),
    Goal("trilinear A", ["A/*/linear/*"], BULK_ALIKE, 0.55, None, "AVX2"),
    Goal("trilinear A", ["A/*/linear/*"], BULK_ALIKE, 0.35, 0.25, WIDEST),
    Goal("tricubic A", ["A/*/cubic/*"], SAME_TRICUBIC, 1.00, None, "AVX2"),
    Goal("tricubic A", ["A/*/cubic/*"], SAME_TRICUBIC, 0.65, 0.45, WIDEST),
    Goal("nearest B", ["B/*/nearest/*"], BULK_ALIKE, 1.00, 0.60, WIDEST),
    Goal("trilinear B", ["B/*/linear/*"], BULK_ALIKE, 0.60, 0.40, WIDEST),
    Goal("tricubic B", ["B/*/cubic/*"], SAME_TRICUBIC, 0.55, 0.37, WIDEST),
    Goal("nearest C", ["C/*/nearest/*"], BULK_ALIKE, None, None, WIDEST),
    Goal("trilinear C", ["C/*/linear/*"], BULK_ALIKE, 0.55, 0.45, WIDEST),
    Goal("tricubic C", ["C/*/cubic/*"], SAME_TRICUBIC, None, None, WIDEST),
    Goal("trilinear W", ["W/*/linear/*"], ("ITK",), 0.50, None, WIDEST),
    Goal("trilinear plane", ["plane/*"], BULK_ALIKE, None, None, WIDEST),
    Goal("means of blocks", ["means/*"], ("ITK",), 1.30, None, MEANS),
    Goal("means of blocks", ["means/*"], ("scipy",), 0.20, None, MEANS),
]

# A reading with its derivatives.
GRADIENTS = Goal("derivatives", ["gradients/*"], ("reading",), 2.00, None, "gradient")

# Two threads' time to one's: 1.6 and 1.9 times as fast.
THREADS = Goal("two threads", ["threads/*"], ("one thread",), 1 / 1.6, 1 / 1.9, "two threads")

# Through Python. volux makes its results, as the peers do, unless it writes into memory of ours.
PYTHON = [
    Goal("A, B, into memory that is there", ["[AB]/*"], ("volux_resample",), 1.03, None,
         "volux into out"),
    Goal("A, B", ["[AB]/*/nearest/1", "[AB]/*/linear/1"], ("scipy",), 1 / 5, None, "volux"),
    Goal("A, B", ["[AB]/*/nearest/?", "[AB]/*/linear/?"], ("SimpleITK",), 1 / 2, None, "volux"),
    Goal("A, B", ["[AB]/*/nearest/1", "[AB]/*/linear/1"], ("nibabel",), None, None, "volux"),
    Goal("A", ["A/float/nearest/?", "A/float/linear/?"], ("grid_sample",), None, None, "volux"),
    Goal("B", ["B/float/nearest/?", "B/float/linear/?"], ("interpolate",), None, None, "volux"),
    Goal("A, B, by a B-spline", ["[AB]/*/cubic/1"], ("scipy",), None, None, "volux"),
    Goal("one point", ["point/*"], ("scipy",), 0.50, None, "volux"),
    Goal("one point", ["point/*"], ("SimpleITK",), None, None, "volux"),
    Goal("import", ["import"], ("numpy",), 1.50, None, "volux"),
]
TOOL = [
    Goal("CT to isotropic", ["linear/*"], ("mrgrid", "plastimatch", "SimpleITK", "scipy"), 1.00,
         None, "volux"),
    Goal("CT to isotropic", ["cubic/*"], ("mrgrid",), 1.00, None, "volux"),
    Goal("CT to isotropic, by a B-spline", ["cubic/*"], ("scipy",), None, None, "volux"),
]
# Ratios, and milliseconds beside the same work by hand.
SCALE = {"copy": 1.50, "processes": 1 / 1.8, "plan": 1.10, "overhead": 5.0}
MEMORY = 50  # MB, beside the source and the result of a resize
INTERRUPTED = {"median": 0.2, "longest": 0.5}  # seconds


def goals_of(row, goals=tuple(GOALS)):
    return [goal for goal in goals
            if any(fnmatch.fnmatchcase(row, pattern) for pattern in goal.rows)]


def check(rows, goals):
    """A name that is written otherwise in a program than among the goals would go unseen."""
    aimless = [row for row in rows if not goals_of(row, goals)]
    idle = [goal.what for goal in goals if not any(goals_of(row, [goal]) for row in rows)]
    if aimless or idle:
        raise Failure(f"no goal for {aimless}, no row for {idle}.")
