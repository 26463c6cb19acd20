"""Mutation: the suite must notice each small mistake that is put into volux_core."""
import collections
import fcntl
import fnmatch
import hashlib
import queue
import random
import shutil
import threading

from evidence import provenance
from evidence.commands import CORES, ROOT, Failure, install

from . import mutant_tree as tree
from .mutant_suite import programs
from .mutant_trial import SAME, Trial
from .mutator import Mutator
from .results import Result, Table

TITLE = "Mutation: no small mistake that the tests would miss"
PROMISE = "Tests notice every small mistake in `volux_core`."
BREAKER = "A test that runs code and does not look at what it gives."
CI_RUN = ["--sample", "6"]
WHOLE_RUN = ["--sample", "30"]

KEPT = ROOT / "docs/proof/mutants.tsv"
EXPLAINED = ROOT / "docs/proof/mutants-explained.tsv"
JOURNAL = tree.FOLDER / "journal.tsv"
COLUMNS = ["id", "file", "line", "kind", "change", "verdict", "by"]
SHARE, MINIMUM, SEED = 0.25, 15, "volux"


def add_arguments(parser):
    parser.add_argument("--sample", type=int, metavar="N", help="try N of them, which the sources "
                                                                "draw")
    parser.add_argument("--seed", help="draws the sample by this instead")
    parser.add_argument("--slice", metavar="I/N", help="only the Ith of N parts")
    parser.add_argument("--file", metavar="PATTERN", help="only files like this, as in '*Cubic*'")
    parser.add_argument("--afresh", action="store_true", help="try again what was decided before")
    parser.add_argument("--jobs", type=int, default=CORES, help="mutants at a time")


def drawn(file, known):
    """The mutants of a file that take part: those of the record first, then by a hash."""
    found = Mutator(file, (ROOT / file).read_text(encoding="utf-8")).mutants()
    found.sort(key=lambda mutant: (mutant.id not in known,
                                   hashlib.sha256(f"{SEED} {mutant.id}".encode()).digest()))
    count = max(MINIMUM, round(SHARE * len(found)))
    return sorted(found[:count], key=lambda mutant: mutant.start)


def all_mutants():
    known = read(KEPT)
    files = [str(path.relative_to(ROOT)) for folder in ("src", "include")
             for path in sorted((ROOT / folder).rglob("*")) if path.is_file()]
    files = [file for file in files if provenance.is_core(file)]
    return [mutant for file in files for mutant in drawn(file, known)]


def chosen(options):
    mutants = [mutant for mutant in all_mutants()
               if options.file is None or fnmatch.fnmatch(mutant.file, options.file)]
    if options.slice:
        try:
            part, parts = map(int, options.slice.split("/"))
        except ValueError:
            part = parts = 0
        if not 1 <= part <= parts:
            raise Failure(f"--slice wants I/N with I from 1 to N, not {options.slice}.")
        mutants = mutants[part - 1::parts]
    if not mutants:
        raise Failure("no mutant is like that.")
    return mutants


def read(path):
    """Rows of a table by their first column."""
    if not path.exists():
        return {}
    lines = path.read_text(encoding="utf-8").splitlines()[1:]
    return {line.split("\t")[0]: line.split("\t") for line in lines if line.count("\t")}


def row_of(mutant, verdict, by):
    return [mutant.id, mutant.file, str(mutant.line), mutant.kind, mutant.change, verdict, by]


def write(path, rows):
    path.parent.mkdir(parents=True, exist_ok=True)
    lines = ["\t".join(row) for row in [COLUMNS, *rows]]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def tried(mutants, known, journal, jobs):
    """Rows by id. The sanitizers come last, and only to survivors that nobody has explained."""
    rows = Campaign(mutants, known, journal).run(jobs)
    explained = read(EXPLAINED)
    left = [mutant for mutant in mutants
            if rows[mutant.id][5] == "survived" and mutant.id not in explained]
    return {**rows, **Campaign(left, known, journal, sanitized=True).run(jobs)}


class Campaign:
    """Mutants shared among workers, each with a tree of its own; rows are kept as they come."""

    def __init__(self, mutants, known, journal, sanitized=False):
        self.todo = queue.Queue()
        for mutant in mutants:
            self.todo.put(mutant)
        self.rows, self.known, self.journal, self.sanitized = {}, known, journal, sanitized
        self.suite = programs()
        self.kills = collections.defaultdict(collections.Counter)
        for row in known.values():
            self.learn(row)
        self.lock, self.failure = threading.Lock(), None

    def learn(self, row):
        """The tests that killed a file's mutants are the first to meet the next one."""
        if row[5] == "killed":
            self.kills[row[1]][row[6].partition(":")[0]] += 1

    def trial(self, own, mutant):
        verdict, by = self.known.get(mutant.id, [""] * 7)[5:7]
        namesake = mutant.file.rpartition("/")[2].partition(".")[0] + "Test"
        preferred = {namesake: 1, **self.kills[mutant.file], by.partition(":")[0]: 1 << 30}
        return Trial(own, mutant, self.suite, preferred, verdict)

    def work(self, name):
        try:
            own = tree.Tree(name)
            while not tree.stopping.is_set():
                mutant = self.todo.get_nowait()
                one = self.trial(own, mutant)
                found = one.sanitizers_verdict() if self.sanitized else one.verdict()
                self.keep(row_of(mutant, *found))
        except (queue.Empty, tree.Stopped):
            pass
        except BaseException as failure:  # of a worker: the run's
            self.failure = failure
            tree.stop()

    def keep(self, row):
        with self.lock:
            self.rows[row[0]] = row
            self.learn(row)
            if self.journal:
                with self.journal.open("a", encoding="utf-8") as file:
                    file.write("\t".join(row) + "\n")
            if row[5] == "survived" or len(self.rows) % 50 == 0:
                print(f"  {len(self.rows)} tried; {' '.join(row)}", flush=True)

    def run(self, jobs):
        workers = [threading.Thread(target=self.work, args=(f"worker-{n}",), daemon=True)
                   for n in range(1, jobs + 1)]
        try:
            for worker in workers:
                worker.start()
            for worker in workers:
                while worker.is_alive():
                    worker.join(0.2)
        except KeyboardInterrupt:
            tree.stop()
            for worker in workers:
                worker.join(5)
            raise
        if self.failure:
            raise self.failure
        return self.rows


def outcome(row, explained):
    if row[5] == "survived":
        return "explained" if row[0] in explained else "unexplained"
    return row[5]


FEWEST = 400  # of a campaign
OUTCOMES = ["killed", SAME, "explained", "unexplained"]


def tally(rows, column, name, explained):
    counts = collections.defaultdict(collections.Counter)
    for row in rows:
        for key in (row[column], "all"):
            counts[key][outcome(row, explained)] += 1
    order = sorted(key for key in counts if key != "all") + ["all"]
    lines = [[key, sum(counts[key][one] for one in OUTCOMES),
              *(counts[key][one] for one in OUTCOMES), counts[key]["not compiled"]]
             for key in order]
    columns = [name, "mutants", "killed", SAME, "explained", "survived unexplained",
               "(not compiled, not counted)"]
    return Table(f"Mutants by {name}", columns, lines)


def explanations(rows, explained):
    return Table("Explained survivors", ["mutant", "file", "line", "change", "why nobody can tell"],
                 [[row[0], row[1], row[2], f"`{row[4]}`", explained[row[0]][1]] for row in rows
                  if outcome(row, explained) == "explained"])


def result_of(rows, campaign, complete, wrong=()):
    explained = read(EXPLAINED)
    counts = collections.Counter(outcome(row, explained) for row in rows)
    counted = sum(counts[one] for one in OUTCOMES)
    same = counts[SAME] + counts["explained"]
    summary = (f"{counted} mutants: {counts['killed']} killed, {same} the same program "
               f"({counts[SAME]} by object code, {counts['explained']} explained), "
               f"{counts['unexplained']} survived")
    left = [row for row in rows if outcome(row, explained) == "unexplained"]
    if left:
        summary += (f" ({', '.join(row[0] for row in left)}: let a test kill it, or explain it in "
                    f"{EXPLAINED.relative_to(ROOT)})")
    if wrong:
        summary += f"; explained without need: {', '.join(wrong)}"
    tables = [tally(rows, 1, "file", explained), tally(rows, 3, "kind", explained)]
    if left:
        tables.append(Table("Survivors", COLUMNS[:5], [row[:5] for row in left]))
    if counts["explained"]:
        tables.append(explanations(rows, explained))
    enough = counted >= (FEWEST if campaign else 1)
    return Result(enough and not left and not wrong, summary + ".", tables, campaign,
                  complete=complete)


def run_campaign(options):
    mutants = chosen(options)
    if options.afresh:
        JOURNAL.unlink(missing_ok=True)
    explained = read(EXPLAINED)
    decided = {key: row for key, row in read(JOURNAL).items()
               if row[5] != "survived" or key in explained}
    if not JOURNAL.exists():
        write(JOURNAL, [])
    todo = [mutant for mutant in mutants if mutant.id not in decided]
    print(f"  {len(mutants)} mutants, {len(mutants) - len(todo)} decided before", flush=True)
    known = {**read(KEPT), **decided}
    found = tried(todo, known, JOURNAL, options.jobs)
    rows = []
    for mutant in mutants:  # the lines as they are now
        row = found.get(mutant.id) or decided[mutant.id]
        rows.append(row_of(mutant, *row[5:7]))
    whole = options.file is None and options.slice is None
    if getattr(options, "record", False) and whole:
        write(KEPT, rows)
    # An explanation of what a test kills is untrue; one of nothing is left from older sources.
    survivors = {row[0] for row in rows if row[5] == "survived"}
    idle = [key for key in read(EXPLAINED) if whole and key not in survivors]
    return result_of(rows, whole, whole, idle)


def run_sample(options):
    """Some of the mutants of today's sources, judged by running them: the record, which other
    sources may have made, only says which tests to run first."""
    known = read(KEPT)
    seed = options.seed or provenance.sources(with_resample=False)
    mutants = [mutant for mutant in chosen(options)
               if mutant.id not in known or known[mutant.id][5] != "not compiled"]
    sample = random.Random(seed).sample(mutants, min(options.sample, len(mutants)))
    print(f"  seed {seed}", flush=True)
    rows = tried(sorted(sample, key=lambda mutant: mutant.file), known, None, options.jobs)
    return result_of([rows[mutant.id] for mutant in sample], False,
                     options.file is None and options.slice is None)


def run(options):
    if options.jobs < 1 or (options.sample is not None and options.sample < 1):
        raise Failure("--jobs and --sample want a number from 1.")
    install("build", "test")
    for tool in ("prlimit", "ninja"):
        if shutil.which(tool) is None:
            raise Failure(f"{tool} is missing.")
    tree.FOLDER.mkdir(parents=True, exist_ok=True)
    with open(tree.FOLDER / "lock", "w", encoding="utf-8") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            raise Failure("mutants are being tried already, in the same folder.") from None
        return run_campaign(options) if options.sample is None else run_sample(options)
