"""The checks against faults that are planted for them, in a copy of the repository: each must hold
there without the fault, and fail with it for the reason that it looks for."""
import dataclasses
import filecmp
import re
import shutil
import sys
from pathlib import Path

from evidence import commands
from evidence.commands import ROOT, BadUse, Failure

from .builds import BUILD
from .results import Result, Table

TITLE = "Planted faults"
PROMISE = "Each check would tell."
BREAKER = "A check that cannot fail."
WITH_RESAMPLE = True
CI_RUN = ["--fault", "sanitizers"]

TREE = BUILD / "planted"
LOG = "proof-planted"


@dataclasses.dataclass(frozen=True)
class Fault:
    """A mistake in one place of the repository, and the check that must find it."""

    what: str
    command: str  # of scripts/prove
    file: str
    before: str  # stands once in the file
    after: str
    finding: str  # a regular expression: what the check says of it

    @property
    def check(self):
        return self.command.split()[0]


FAULTS = [
    Fault("a sum in another order", "digest --small --rows ^x86-64.g[+][+]-12.-O2$",
          "src/exact/Rules.inc",
          "for (int k = 0; k < N; ++k) {\n        for (int j = 0; j < N; ++j) {",
          "for (int j = 0; j < N; ++j) {\n        for (int k = 0; k < N; ++k) {",
          r"differs in \d+ of 37 families of small"),
    Fault("an index one too high just below a whole number", "exhaustion --every 797",
          "src/exact/Rules.inc", "return lowerVoxel(position);",
          "return lowerVoxel(position + Number(1e-9));", r" [1-9][\d,]* different"),
    Fault("a product with the reciprocal for a quotient", "differential --seconds 5",
          "src/exact/Rules.h", "sums.second() / sums.first()",
          "sums.second() * (1.0 / sums.first())", r" [1-9][\d,]* different"),
    Fault("a block that is replaced by another of its size", "sequences --calls 3",
          "src/core/VxImage/Storage.ipp", "if (bufferBytes >= need) {",
          "if (bufferBytes > need) {", "but a program says: "),
    Fault("a branch that no test takes", "coverage", "src/core/Geometry.cpp",
          "    if (first > last) {\n        return 0;",
          "    if (last - first == 12345U) {\n        return 12346U;\n    }\n"
          "    if (first > last) {\n        return 0;", r"src/core/Geometry.cpp: line \d+"),
    Fault("tests that look at nothing", "mutants --sample 6 --file src/core/Geometry.cpp",
          "tests/core/GeometryTest.cpp", "namespace volux::test {\n",
          "#undef EXPECT_EQ\n#define EXPECT_EQ(a, b) static_cast<void>((a) == (b))\n"
          "#undef EXPECT_TRUE\n#define EXPECT_TRUE(a) static_cast<void>(a)\n"
          "#undef EXPECT_FALSE\n#define EXPECT_FALSE(a) static_cast<void>(a)\n"
          "namespace volux::test {\n", r" [1-9]\d* survived"),
    Fault("a read behind the last voxel", "fuzz --seconds 10 --target boxes",
          "src/core/VxImage/Fill.ipp", "{image.getWidth(), 0, to.strideX}",
          "{image.getWidth() + 1, 0, to.strideX}", r"one fails, "),
    Fault("a mark that silences a checker without a reason", "sanitizers reasons",
          "src/core/Geometry.cpp", "#include <cstdint>", "#include <cstdint>  // NOLINT",
          r"src/core/Geometry.cpp"),
    Fault("code that runs when the library is loaded", "boundary", "src/core/Geometry.cpp",
          "// Computes in 64 bits",
          "[[gnu::constructor]] void begin() { static volatile int begun; begun = 1; }\n\n"
          "// Computes in 64 bits", r"checks do not hold|do not +hold"),
    Fault("memory lost at each loading", "load --processes 8 --rounds 200",
          "src/core/Geometry.cpp", "// Computes in 64 bits",
          "[[gnu::constructor]] void lose() { static char* volatile lost;\n"
          "    lost = new char[8192]; }\n\n// Computes in 64 bits", r"[1-9]\d* faults"),
    Fault("a neighbour read in place of the next", "bulk --seconds 5 --no-large",
          "src/resample/vectors/Lines-inl.h", "kStep * (lowest_ + i) * kBytes<T>",
          "kStep * lowest_ * kBytes<T>", r" [1-9][\d,]* different"),
]


def files():
    """Yields the files of the repository."""
    for top in ROOT.iterdir():
        if top.name not in (".git", "build"):
            yield from filter(Path.is_file, [top, *top.rglob("*")])


def take_sources():
    """Brings the copy up to date; what is as it was keeps its age, and is not built again."""
    for original in files():
        copy = TREE / original.relative_to(ROOT)
        if not (copy.exists() and filecmp.cmp(original, copy, False)):
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(original, copy)


def planted(fault):
    """The text of a file with its fault."""
    text = (ROOT / fault.file).read_text(encoding="utf-8")
    if text.count(fault.before) != 1:
        raise Failure(f"{fault.file} has no one place for {fault.what}.")
    return text.replace(fault.before, fault.after)


def prove(fault):
    """The exit status of the check in the copy, and what it says."""
    done = commands.run([sys.executable, TREE / "scripts" / "prove", *fault.command.split()])
    with open(commands.LOGS / f"{LOG}.log", "a", encoding="utf-8") as log:
        log.write(done.stdout + done.stderr)
    return done.returncode, done.stdout


def holds_without(fault):
    take_sources()
    status, said = prove(fault)
    if status != 0:
        last = said.splitlines()[-1:]
        raise Failure(f"{fault.check} does not hold in a copy without a fault either: {last}.")


def is_found(fault):
    """Whether the check fails with its fault, and says what it must say of it."""
    holds_without(fault)
    (TREE / fault.file).write_text(planted(fault), encoding="utf-8")
    try:
        status, said = prove(fault)
    finally:
        take_sources()
    return status == 1 and re.search(fault.finding, said) is not None


def add_arguments(parser):
    parser.add_argument("--fault", metavar="CHECK", help="only the fault that is planted for it")


def run(options):
    faults = [fault for fault in FAULTS if options.fault in (None, fault.check)]
    if not faults:
        raise BadUse(f"no fault is planted for {options.fault}; there are "
                     f"{', '.join(fault.check for fault in FAULTS)}.")
    commands.LOGS.mkdir(parents=True, exist_ok=True)
    rows = []
    for fault in faults:
        found = is_found(fault)
        print(f"  {fault.check}: {fault.what} is {'' if found else 'NOT '}found", flush=True)
        rows.append([f"`scripts/prove {fault.command}`", fault.what, f"`{fault.file}`",
                     "found" if found else "**not found**"])
    missed = [row for row in rows if row[-1] != "found"]
    return Result(not missed, f"{len(rows) - len(missed)} of {len(rows)} checks find the fault "
                              "that is planted for them, and hold without it.",
                  [Table("What is planted", ["check", "fault", "where", ""], rows)],
                  complete=options.fault is None)
