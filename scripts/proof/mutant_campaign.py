"""Draws the mutants of a library and tries them: all in a campaign, some in a sample."""
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
from .mutant_rows import Journal, read, result_of, row_of, write
from .mutant_trial import Trial
from .mutator import Mutator

SEED = "volux"


def add_arguments(parser):
    parser.add_argument("--sample", type=int, metavar="N", help="try N of them, which the sources "
                                                                "draw")
    parser.add_argument("--seed", help="draws the sample by this instead")
    parser.add_argument("--slice", metavar="I/N", help="only the Ith of N parts")
    parser.add_argument("--file", metavar="PATTERN", help="only files like this, as in '*Cubic*'")
    parser.add_argument("--afresh", action="store_true", help="try again what was decided before")
    parser.add_argument("--jobs", type=int, default=CORES, help="mutants at a time")


def drawn(subject, file, known):
    """The mutants of a file that take part: those of the record first, then by a hash."""
    found = Mutator(file, (ROOT / file).read_text(encoding="utf-8")).mutants()
    found.sort(key=lambda mutant: (mutant.id not in known,
                                   hashlib.sha256(f"{SEED} {mutant.id}".encode()).digest()))
    count = max(subject.minimum, round(subject.share * len(found)))
    return sorted(found[:count], key=lambda mutant: mutant.start)


def all_mutants(subject):
    """Those of all files; functions that are the same in two have the same ones."""
    known = read(subject.kept)
    found = {}
    for file in subject.files():
        for mutant in drawn(subject, file, known):
            found.setdefault(mutant.id, mutant)
    return list(found.values())


def chosen(subject, options):
    mutants = [mutant for mutant in all_mutants(subject)
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


def tried(subject, mutants, known, journal, jobs):
    """Rows by id. The sanitizers come last, and only to survivors that nobody has explained."""
    rows = Campaign(subject, mutants, known, journal).run(jobs)
    explained = read(subject.explained)
    left = [mutant for mutant in mutants
            if rows[mutant.id][5] == "survived" and mutant.id not in explained]
    if "asan" not in subject.modules.kinds:
        return rows
    return {**rows, **Campaign(subject, left, known, journal, sanitized=True).run(jobs)}


class Campaign:
    """Mutants shared among workers, each with a tree of its own; rows are kept as they come."""

    def __init__(self, subject, mutants, known, journal, sanitized=False):
        self.todo = queue.Queue()
        for mutant in mutants:
            self.todo.put(mutant)
        self.rows, self.known, self.journal, self.sanitized = {}, known, journal, sanitized
        self.subject, self.suite = subject, subject.suite.programs()
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
        stem = mutant.file.rpartition("/")[2].partition(".")[0]
        namesake = stem.removesuffix("-inl") + "Test"
        preferred = {namesake: 1, **self.kills[mutant.file], by.partition(":")[0]: 1 << 30}
        return Trial(self.subject, own, mutant, self.suite, preferred, verdict)

    def work(self, name):
        try:
            own = tree.Tree(self.subject.folder / name)
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
                self.journal.add(row)
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


def run_campaign(subject, options):
    mutants, known = chosen(subject, options), read(subject.kept)
    explained = read(subject.explained)
    journal = Journal(subject.journal, options.afresh)
    decided = journal.decided(explained)
    todo = [mutant for mutant in mutants if mutant.id not in decided]
    print(f"  {len(mutants)} mutants, {len(mutants) - len(todo)} decided before", flush=True)
    found = tried(subject, todo, {**known, **decided}, journal, options.jobs)
    rows = []
    for mutant in mutants:  # the lines as they are now
        row = found.get(mutant.id) or decided[mutant.id]
        rows.append(row_of(mutant, *row[5:7]))
    whole = options.file is None and options.slice is None
    if getattr(options, "record", False) and whole:
        write(subject.kept, rows)
    # An explanation of what a test kills is untrue; one of nothing is left from older sources.
    survivors = {row[0] for row in rows if row[5] == "survived"}
    idle = [key for key in explained if whole and key not in survivors]
    return result_of(subject, rows, whole, whole, idle)


def run_sample(subject, options):
    """Some of the mutants of today's sources, judged by running them: the record, which other
    sources may have made, only says which tests to run first."""
    known = read(subject.kept)
    seed = options.seed or provenance.sources(subject.with_resample)
    mutants = [mutant for mutant in chosen(subject, options)
               if known.get(mutant.id, [""] * 6)[5] in subject.sampled]
    if not mutants:
        raise Failure("the record leaves nothing to sample.")
    sample = random.Random(seed).sample(mutants, min(options.sample, len(mutants)))
    print(f"  seed {seed}", flush=True)
    rows = tried(subject, sorted(sample, key=lambda mutant: mutant.file), known, None,
                 options.jobs)
    return result_of(subject, [rows[mutant.id] for mutant in sample], False,
                     options.file is None and options.slice is None)


def run(subject, options):
    if options.jobs < 1 or (options.sample is not None and options.sample < 1):
        raise Failure("--jobs and --sample want a number from 1.")
    install("build", "test")
    for tool in ("prlimit", "ninja"):
        if shutil.which(tool) is None:
            raise Failure(f"{tool} is missing.")
    subject.folder.mkdir(parents=True, exist_ok=True)
    with open(subject.folder / "lock", "w", encoding="utf-8") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            raise Failure("mutants are being tried already, in the same folder.") from None
        if options.sample is not None:
            return run_sample(subject, options)
        return run_campaign(subject, options)
