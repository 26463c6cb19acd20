"""Random calls of the installed Python package, and broken files through its command."""
import collections
import dataclasses
import json
import os
import secrets
import signal
import subprocess
import tempfile
from pathlib import Path

from evidence import package
from evidence.commands import CORES, LOGS, ROOT, BadUse, Failure, at_once, positive

from .results import Result, Table

TITLE = "Random calls and broken files of the Python package"
PROMISE = "Whatever Python calls are given, and whatever files: a result, or a line of words."
BREAKER = "Arguments and files that nobody would think of."
WITH_RESAMPLE = True
MORE_SOURCES = package.FOLDERS
NEEDS_PYPI = True
CI_RUN = ["--seconds", "10", "--seed", "c1"]  # drawn once: what fails has changed
WHOLE_RUN = ["--seconds", "60"]

WORKER = ROOT / "tests" / "proof" / "python_fuzz" / "worker.py"
LOG = "proof-python-fuzz"
KINDS = {"calls": "Calls by function", "files": "Broken files by verb",
         "stores": "Broken stores and plans by verb"}
EXITS = ("exit 0", "exit 1", "exit 2", "fault")
OUTCOMES = {"calls": ("result", "refusal", "fault"), "files": EXITS, "stores": EXITS}
NEVER_RIGHT = "`foreign`"  # a function that is given nothing but what it must refuse
CAMPAIGN_SECONDS = 20 * 60
MOST_CRASHES = 5  # of a worker, which then does not start again


@dataclasses.dataclass
class Tally:
    """What the workers have found so far."""

    counts: dict = dataclasses.field(
        default_factory=lambda: collections.defaultdict(collections.Counter))
    faults: dict = dataclasses.field(default_factory=dict)  # by their kind
    seconds: float = 0.0

    def add(self, counted):
        for group, outcomes in counted["counts"].items():
            self.counts[group].update(outcomes)
        for kind, fault in counted["faults"].items():
            self.add_fault(kind, **fault)
        self.seconds += sum(counted["spent"].values())

    def add_fault(self, kind, name, what, times=1):
        known = self.faults.setdefault(kind, {"name": name, "what": what, "times": 0})
        known["times"] += times

    def tried(self, kind):
        return sum(outcomes.total() for group, outcomes in self.counts.items()
                   if group.startswith(f"{kind} "))


def repeat(name):
    return f"scripts/prove python-fuzz --again {name}"


def counted_in(folder):
    path = folder / "counted.json"
    if not path.exists():
        return {"done": False, "spent": {}, "numbers": {}, "counts": {}, "faults": {}}
    counted = json.loads(path.read_text(encoding="utf-8"))
    path.unlink()
    return counted


def text_in(path):
    return path.read_text(encoding="utf-8", errors="replace").strip() if path.exists() else ""


def start(python, asked):
    """Runs a worker to its end; returns its exit code, and what it has counted."""
    folder = Path(asked["folder"])
    environment = {**os.environ, "NO_COLOR": "1", "PYTHONDONTWRITEBYTECODE": "1",
                   "TMPDIR": asked["folder"]}
    done = subprocess.run([python, WORKER, json.dumps(asked)], env=environment, cwd=folder,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True)
    if done.returncode > 0:
        said = f"{done.stderr}{text_in(folder / 'said')}"
        LOGS.mkdir(parents=True, exist_ok=True)
        (LOGS / f"{LOG}.log").write_text(said, encoding="utf-8")
        raise Failure(f"a worker breaks down at {text_in(folder / 'under-way') or 'its start'}: "
                      f"{said.strip().rpartition(chr(10))[2]}; see build/logs/{LOG}.log.")
    return done.returncode, counted_in(folder)


def crash_of(folder, code, tally):
    """Notes what was under way when a worker was killed, and returns its name."""
    name = text_in(folder / "under-way")
    if not name:
        raise Failure(f"a worker ends by {signal.Signals(-code).name} before it has begun.")
    how = signal.Signals(-code).name
    trace = text_in(folder / "crash")
    tally.add_fault(f"{name.partition(':')[0]}: the process ends by {how} {place_in(trace)}", name,
                    f"the process ends by {how}\n{trace}")
    return name


def place_in(trace):
    """Returns the innermost line of Python in the trace of a crash."""
    lines = [line.strip() for line in trace.splitlines() if line.strip().startswith("File ")]
    return lines[0].rpartition("/")[2] if lines else ""


def fuzz(python, seed, seconds, kinds, folder):
    """Lets one worker try things so long; returns what it has found. One that dies is replaced."""
    tally, numbers, crashes = Tally(), dict.fromkeys(kinds, 0), 0
    while tally.seconds < seconds and crashes < MOST_CRASHES:
        code, counted = start(python, {"folder": str(folder), "seed": seed, "numbers": numbers,
                                       "seconds": seconds - tally.seconds})
        tally.add(counted)
        if code == 0:
            return tally
        kind, _, crashed = crash_of(folder, code, tally).partition(":")
        numbers |= counted["numbers"]
        numbers[kind] = int(crashed.rpartition(".")[2]) + 1
        crashes += 1
    return tally


def fuzz_all(python, seed, seconds, kinds):
    """Returns what all workers together have found, one for each core."""
    whole = Tally()
    with temporary() as folder:
        def one(number):
            own = Path(folder) / str(number)
            own.mkdir()
            return fuzz(python, f"{seed}.{number}", seconds, kinds, own)
        for tally in at_once(one, range(CORES)):
            whole.add({"counts": tally.counts, "faults": tally.faults,
                       "spent": {"all": tally.seconds}})
    return whole


def temporary(**how):
    shared = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    return tempfile.TemporaryDirectory(prefix="volux-python-fuzz-", dir=shared, **how)


def rows_of(tally, kind):
    """Returns a row for each function or verb: how often it was tried, and how that ended."""
    rows = []
    for group, outcomes in sorted(tally.counts.items()):
        if group.startswith(f"{kind} "):
            name = group.partition(" ")[2]
            rows.append([f"`{name}`", outcomes.total(),
                         *(outcomes[outcome] for outcome in OUTCOMES[kind])])
    return rows


def tables_of(tally, kinds):
    tables = [Table(KINDS[kind], ["function" if kind == "calls" else "verb", "tried",
                                  *OUTCOMES[kind]], rows_of(tally, kind)) for kind in kinds]
    if tally.faults:
        rows = [[kind, found["times"], f"`{repeat(found['name'])}`"]
                for kind, found in sorted(tally.faults.items())]
        tables.append(Table("Faults", ["fault", "times", "repeat the first one with"], rows))
    return tables


def has_looked(tally, kinds):
    """Whether each kind was tried, and each function of the package has given a result."""
    rows = rows_of(tally, "calls") if "calls" in kinds else []
    return (all(tally.tried(kind) for kind in kinds)
            and all(row[2] for row in rows if row[0] != NEVER_RIGHT))


def result_of(tally, kinds, complete, seconds):
    tried = ", ".join(f"{tally.tried(kind):,} {words}" for kind, words in
                      (("calls", "calls"), ("files", "broken files"),
                       ("stores", "broken stores and plans")) if kind in kinds)
    found = f"{len(tally.faults)} kinds of faults" if tally.faults else "no fault"
    summary = f"{tried} in {tally.seconds / 60:.1f} minutes of processor time: {found}."
    return Result(has_looked(tally, kinds) and not tally.faults, summary, tables_of(tally, kinds),
                  campaign=seconds >= CAMPAIGN_SECONDS, complete=complete)


def say_faults(tally):
    for kind, found in sorted(tally.faults.items()):
        print(f"  {kind}: {found['times']} times\n    {found['what']}\n"
              f"    repeat it with: {repeat(found['name'])}", flush=True)


def try_again(python, name):
    """Tries one thing, and says what it is; its folder stays."""
    folder = Path(tempfile.mkdtemp(prefix="volux-python-fuzz-"))
    tally = Tally()
    kind = name.partition(":")[0]
    code, counted = start(python, {"folder": str(folder), "seed": "", "numbers": {kind: 0},
                                   "seconds": 0, "again": name})
    tally.add(counted)
    if code != 0:
        crash_of(folder, code, tally)
    print(text_in(folder / "described"))
    say_faults(tally)
    return Result(not tally.faults, f"{name}: {len(tally.faults)} faults.", complete=False)


def add_arguments(parser):
    length = parser.add_mutually_exclusive_group()
    length.add_argument("--minutes", type=positive, help="processor time of each worker")
    length.add_argument("--seconds", type=positive, help="the same in seconds (60)")
    parser.add_argument("--seed", help="draws what is tried by this; else by chance")
    parser.add_argument("--only", choices=KINDS, help="this kind alone")
    parser.add_argument("--again", metavar="NAME", help="try one thing, as faults are named")


def is_name(text):
    kind, _, seed = text.partition(":")
    return kind in KINDS and seed.count(".") >= 1 and seed.rpartition(".")[2].isdecimal()


def run(options):
    if options.again and not is_name(options.again):
        raise BadUse(f"--again {options.again} is no name of a fault, such as calls:5eed.0.17.")
    python = package.interpreter("test")
    if options.again:
        return try_again(python, options.again)
    seconds = options.minutes * 60 if options.minutes else options.seconds or 60.0
    seed = options.seed or secrets.token_hex(8)
    kinds = [options.only] if options.only else list(KINDS)
    print(f"  seed {seed}", flush=True)
    tally = fuzz_all(python, seed, seconds, kinds)
    say_faults(tally)
    return result_of(tally, kinds, not options.only, seconds)
