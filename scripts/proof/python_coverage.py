"""Which lines and branches of the Python package its tests reach, where it is installed."""
import collections
import json
import os
import re
import shutil

from evidence import commands, package
from evidence.commands import ROOT, Failure

from .python_suite import TESTS, quick_tests
from .results import Result, Table

TITLE = "Coverage of the Python package"
PROMISE = "Tests run all of the Python package."
BREAKER = "A line or a branch that was written and never tried."
WITH_RESAMPLE = True
MORE_SOURCES = package.FOLDERS
NEEDS_PYPI = True
CI_RUN = ["--quick"]

FOLDER = ROOT / "build" / "proof" / "python-coverage"
LOG = "proof-python-coverage"
# The package proper, the command, and volumes beyond one machine's memory; and how much of each the
# tests must reach, in per cent of its lines and branches.
PARTS = ("volux", "volux.tool", "volux.scale")
GOALS = {"volux": 100.0, "volux.tool": 95.0, "volux.scale": 95.0}
# On a full disk coverage could not write what it has counted, and it asks for memory itself.
NOT_MEASURED = "not disk_that_is_full and not request_for_memory"


def add_arguments(parser):
    parser.add_argument("--quick", action="store_true",
                        help="only the tests of the package proper, without the slow ones")


def part_of(file):
    """Returns the part of the package that a file of it is in, and its name in the package."""
    name = re.sub(r".*/volux/", "", file)
    folder, _, rest = name.rpartition("/")
    if folder.startswith("tool"):
        return "volux.tool", name
    return ("volux.scale" if folder or rest == "dask.py" else "volux"), name


def run_tests(python, words):
    """Returns how many tests there were; coverage writes beside one another what each process of
    theirs has counted."""
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    done = commands.run([python, "-m", "coverage", "run", "-m", "pytest", "-q", "-p",
                         "no:cacheprovider", "-k", NOT_MEASURED, *words],
                        env=environment(), cwd=ROOT)
    commands.LOGS.mkdir(parents=True, exist_ok=True)
    (commands.LOGS / f"{LOG}.log").write_text(done.stdout + done.stderr, encoding="utf-8")
    passed = re.search(r"^(\d+) passed", done.stdout, re.MULTILINE)
    if done.returncode != 0 or not passed:
        raise Failure(f"tests fail while what they reach is measured; see build/logs/{LOG}.log.")
    return int(passed[1])


def environment():
    return {**os.environ, "COVERAGE_FILE": str(FOLDER / "counts")}


def counted(python):
    """Returns what coverage has counted, by the name of each file."""
    report = FOLDER / "report.json"
    for words in (["combine", "-q"], ["json", "-q", "-o", report]):
        done = commands.run([python, "-m", "coverage", *words], env=environment(), cwd=ROOT)
        if done.returncode != 0:
            raise Failure(f"coverage {words[0]} fails: {done.stderr.strip().splitlines()[-1:]}.")
    return json.loads(report.read_text(encoding="utf-8"))["files"]


def reach(files):
    """Returns lines, those reached, branches and those reached, of each part."""
    sums = collections.defaultdict(collections.Counter)
    for file, found in files.items():
        part, _ = part_of(file)
        for name in ("num_statements", "covered_lines", "num_branches", "covered_branches"):
            sums[part][name] += found["summary"][name]
    return sums


def share(counts):
    """Returns the share of lines and branches that is reached, in per cent."""
    whole = counts["num_statements"] + counts["num_branches"]
    return 100.0 * (counts["covered_lines"] + counts["covered_branches"]) / whole


def unreached(files, parts):
    """Returns a row for each file that has lines or branches which no test reaches."""
    for file, found in sorted(files.items()):
        part, name = part_of(file)
        lines = ", ".join(map(str, found["missing_lines"]))
        branches = ", ".join(f"{a} to {b}" if b > 0 else f"{a} to the end"
                             for a, b in found["missing_branches"])
        if part in parts and (lines or branches):
            yield [f"`{name}`", lines, branches]


def result_of(files, tests, parts):
    """Judges what is reached of some parts."""
    sums, missed = reach(files), list(unreached(files, parts))
    rows = [[f"`{part}`", sum(part_of(file)[0] == part for file in files),
             *(sums[part][name] for name in ("num_statements", "covered_lines", "num_branches",
                                             "covered_branches")),
             f"{share(sums[part]):.1f} %", f"{GOALS[part]:g} %"] for part in parts]
    tables = [Table("What is reached", ["part", "files", "lines", "reached", "branches", "reached",
                                        "share", "goal"], rows)]
    if missed:
        tables.append(Table("What no test reaches", ["file", "lines", "branches"], missed))
    shares = ", ".join(f"{share(sums[part]):.1f} % of {part}" for part in parts)
    return Result(all(share(sums[part]) >= GOALS[part] for part in parts),
                  f"{tests} tests reach {shares}.", tables, complete=len(parts) == len(PARTS))


def run(options):
    python = package.interpreter("lint")
    tests = run_tests(python, quick_tests() if options.quick else [TESTS])
    return result_of(counted(python), tests, PARTS[:1] if options.quick else PARTS)
