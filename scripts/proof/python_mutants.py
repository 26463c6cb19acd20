"""Mutation of the Python package: its tests must notice each small mistake put into it."""
import collections
import dataclasses
import fnmatch
import json
import os
import random
import shutil
import subprocess
from pathlib import Path

from evidence import package
from evidence.commands import ROOT, Failure, output_of

from .mutant_rows import explanations, outcome, read, row_of, write
from .python_coverage import part_of
from .python_suite import SLOW, TESTS
from .results import Result, Table

TITLE = "Mutation of the Python package"
PROMISE = "Tests notice every small mistake in the Python package."
BREAKER = "A test that runs code and does not look at what it gives."
WITH_RESAMPLE = True
MORE_SOURCES = package.FOLDERS
NEEDS_PYPI = True
# In the package proper, whose tests take seconds and which a campaign has judged as a whole.
CI_RUN = ["--sample", "3", "--file", "_*"]
WHOLE_RUN = ["--sample", "12", "--file", "_*"]

SOURCES = ROOT / "python" / "volux"
PROGRAMS = ROOT / "tests" / "proof" / "python"
FOLDER = ROOT / "build" / "proof" / "python-mutants"
JOURNAL = FOLDER / "journal.tsv"
KEPT = ROOT / "docs" / "proof" / "python-mutants.tsv"
EXPLAINED = ROOT / "docs" / "proof" / "python-mutants-explained.tsv"
FEWEST = 300  # of a campaign

# Which tests meet a mistake in which files: the first row with a pattern that fits.
SUITE = (
    ("tool/_pictures/* tool/_viewing.py", "tool/test_view.py tool/test_pictures*"),
    ("tool/_transforms.py", "tool/test_transforms.py tool/test_failures.py"),
    ("tool/_bricks.py tool/_memory.py tool/_slabs.py tool/_finishing.py",
     "tool/test_memory.py tool/test_verbs.py tool/test_conduct.py"),
    ("tool/__main__.py tool/_cli.py tool/_errors.py tool/_output.py tool/_progress.py "
     "tool/_running.py tool/_texts.py tool/_version.py",
     "tool/test_help.py tool/test_failures.py tool/test_conduct.py tool/test_abandoned.py"),
    ("tool/_flat.py tool/_idle.py tool/_making.py tool/_sidecar.py",
     "tool/test_idle.py tool/test_types.py tool/test_conduct.py tool/test_verbs.py "
     "tool/test_failures.py tool/test_short_of_memory.py"),
    ("tool/_scal*", "scale/test_plans.py scale/test_conduct.py scale/test_pyramid.py"),
    ("tool/*", "tool/test_verbs.py tool/test_files.py tool/test_failures.py tool/test_names.py "
               "tool/test_help.py"),
    ("scale/*", "scale/test_plans.py scale/test_sources.py scale/test_pyramid.py "
                "scale/test_running.py"),
    ("dask.py", "scale/test_dask.py"),
    ("_threads.py", "test_running.py"),
    ("*", "test_*"),
)
NO_VERDICT = (3, 4, 5)  # what pytest exits with when it breaks down, or has no test to run
TOO_SLOW = "not 200_broken and not killed and not memory_behind and not signal and not processes"


def tests_of(file):
    """Returns the tests that meet a mistake in a file, those that are called like it first."""
    words = next(words for patterns, words in SUITE
                 if any(fnmatch.fnmatch(file, pattern) for pattern in patterns.split()))
    found = [path for word in words.split() for path in sorted(TESTS.glob(word))
             if word == path.relative_to(TESTS).as_posix() or path.name not in SLOW]
    stem = Path(file).stem.strip("_")[:6]
    return sorted(found, key=lambda path: stem not in path.name)


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One mistake, and the file with it."""

    id: str
    file: str
    line: int
    kind: str
    change: str
    source: str


class Tree:
    """A copy of the package that is mutated, and what runs the tests on it."""

    def __init__(self, interpreter, installed):
        self.package = FOLDER / "tree" / "volux"
        shutil.rmtree(self.package, ignore_errors=True)
        shutil.copytree(installed, self.package, ignore=shutil.ignore_patterns("__pycache__"))
        environment = {**os.environ, "PYTHONPATH": str(self.package.parent),
                       "PYTHONDONTWRITEBYTECODE": "1"}
        self.trials = subprocess.Popen([interpreter, PROGRAMS / "trials.py"], env=environment,
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                       cwd=ROOT)

    def test(self, file):
        """Runs the tests of a file; returns an exit code, and what failed."""
        words = ["-k", TOO_SLOW, *map(str, tests_of(file))]
        self.trials.stdin.write(json.dumps(words) + "\n")
        self.trials.stdin.flush()
        code, _, said = self.trials.stdout.readline().strip().partition(" ")
        if not code or int(code) in NO_VERDICT:
            raise Failure(f"pytest does not run the tests of {file}: {said or 'it has ended'}.")
        return int(code), said.removeprefix("python/tests/")

    def verdict(self, mutant):
        """Returns what becomes of a mistake, and the test that notices it."""
        path = self.package / mutant.file
        original = path.read_bytes()
        path.write_text(mutant.source, encoding="utf-8")
        try:
            code, said = self.test(mutant.file)
        finally:
            path.write_bytes(original)
        return ("survived", "") if code == 0 else ("killed", said)

    def prove_sound(self, files):
        """The tests pass without a mistake; those that fail would notice any."""
        for suite in {tuple(sorted(tests_of(file))): file for file in files}.values():
            code, said = self.test(suite)
            if code != 0:
                raise Failure(f"the tests of {suite} fail without a mistake, too: {said}.")


def files_like(pattern):
    """Returns the files of the package whose names a pattern fits, all without one."""
    found = sorted(path.relative_to(SOURCES).as_posix() for path in SOURCES.rglob("*.py"))
    files = [file for file in found if pattern is None or fnmatch.fnmatch(file, pattern)]
    if not files:
        raise Failure(f"--file {pattern} fits no file of the package.")
    return files


def mutants_of(files):
    """Returns the mistakes that are drawn of files."""
    said = output_of([package.environment("mutants"), PROGRAMS / "mutations.py", SOURCES, *files],
                     text=True)
    return [Mutant(**json.loads(line)) for line in said.splitlines()]


def tried(tree, todo, journal):
    """Tries mutants one after the other; returns their rows, which a journal keeps as they come."""
    rows = {}
    for mutant in todo:
        rows[mutant.id] = row = row_of(mutant, *tree.verdict(mutant))
        if journal:
            with journal.open("a", encoding="utf-8") as file:
                file.write("\t".join(row) + "\n")
        if row[5] == "survived":
            print(f"  {len(rows)} tried; {' '.join(row)}", flush=True)
    return rows


def decided(options):
    """Returns the rows that an earlier run has left, unless they are not wanted."""
    if options.afresh:
        JOURNAL.unlink(missing_ok=True)
    if not JOURNAL.exists():
        write(JOURNAL, [])
    explained = read(EXPLAINED)
    return {key: row for key, row in read(JOURNAL).items()
            if row[5] != "survived" or key in explained}


def run_campaign(options, tree):
    mutants = mutants_of(files_like(options.file))
    tree.prove_sound([mutant.file for mutant in mutants])
    known = decided(options)
    todo = [mutant for mutant in mutants if mutant.id not in known]
    print(f"  {len(mutants)} mutants, {len(mutants) - len(todo)} decided before", flush=True)
    found = {**known, **tried(tree, todo, JOURNAL)}
    rows = [row_of(mutant, *found[mutant.id][5:7]) for mutant in mutants]
    whole = options.file is None
    if getattr(options, "record", False) and whole:
        write(KEPT, rows)
    return result_of(rows, whole, whole)


def run_sample(options, tree):
    """Tries a mistake in each of some files."""
    seed = options.seed or package.sources()
    draw = random.Random(seed)
    files = files_like(options.file)
    drawn = [draw.choice(found) for file in draw.sample(files, min(options.sample, len(files)))
             if (found := mutants_of([file]))]
    print(f"  seed {seed}", flush=True)
    return result_of(list(tried(tree, drawn, None).values()), False, options.file is None)


def tally(rows, name, key, explained):
    """Returns how many mutants ended how, by what a key says of their rows."""
    counts = collections.defaultdict(collections.Counter)
    for row in rows:
        for group in (key(row), "all"):
            counts[group][outcome(row, explained)] += 1
    order = sorted(counts.keys() - {"all"}) + ["all"]
    outcomes = ("killed", "explained", "unexplained")
    return Table(f"Mutants by {name}", [name, "mutants", *outcomes],
                 [[group, counts[group].total(), *(counts[group][one] for one in outcomes)]
                  for group in order])


def result_of(rows, campaign, complete):
    explained = read(EXPLAINED)
    outcomes = [outcome(row, explained) for row in rows]
    left = [row for row in rows if outcome(row, explained) == "unexplained"]
    # An explanation of what a test kills is untrue; one of nothing is left from older sources.
    idle = sorted(explained.keys() - {row[0] for row in rows if row[5] == "survived"})
    wrong = idle if campaign else []
    summary = (f"{len(rows)} mutants: {outcomes.count('killed')} killed, "
               f"{outcomes.count('explained')} that nobody can tell, {len(left)} survived")
    if left:
        summary += (f" ({', '.join(row[0] for row in left)}: let a test kill it, or explain it in "
                    f"{EXPLAINED.relative_to(ROOT)})")
    if wrong:
        summary += f"; explained without need: {', '.join(wrong)}"
    tables = [tally(rows, "part", lambda row: part_of(row[1])[0], explained),
              tally(rows, "operator", lambda row: row[3], explained)]
    if left:
        tables.append(Table("Survivors", ["id", "file", "line", "kind", "change"],
                            [row[:5] for row in left]))
    if "explained" in outcomes:
        tables.append(explanations(rows, explained))
    enough = len(rows) >= (FEWEST if campaign else 1)
    return Result(enough and not left and not wrong, summary + ".", tables, campaign,
                  complete=complete)


def add_arguments(parser):
    parser.add_argument("--sample", type=int, metavar="N",
                        help="try one in each of N files, which the sources draw")
    parser.add_argument("--seed", help="draws the sample by this instead")
    parser.add_argument("--file", metavar="PATTERN", help="only files like this, as in 'tool/*'")
    parser.add_argument("--afresh", action="store_true", help="try again what was decided before")


def run(options):
    if options.sample is not None and options.sample < 1:
        raise Failure("--sample wants a number from 1.")
    interpreter = package.interpreter("lint")
    installed = output_of([interpreter, "-c", "import volux; print(*volux.__path__)"], text=True,
                          cwd="/").strip()
    tree = Tree(interpreter, installed)
    return run_campaign(options, tree) if options.sample is None else run_sample(options, tree)
