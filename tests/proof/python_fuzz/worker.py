"""Tries calls and broken files for some seconds of the processor, and counts what comes of them.

What is tried has a name, such as calls:5eed.0.17: what it is, and the seed of its arguments, which
ends with a number. The name is written to a file before each, for whoever finds the process dead;
what it has counted is written now and then. Its argument is an object of JSON: the folder in which
it works, the seed, the kinds of what is tried and the number of the first of each, and how long; or
the name of one thing to try.
"""
import collections
import faulthandler
import json
import os
import resource
import signal
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
sys.path.append(str(ROOT))  # for the tests of the package, whose files and verbs are used

from judging import Fault, described, tried  # noqa: E402  (the path comes first)

SHARES = {"calls": 3, "files": 1, "stores": 1}  # of the time
SECONDS_OF_ONE = 120  # by the clock: what takes longer hangs
MEMORY = {"calls": 512 << 20, "files": 2 << 30, "stores": 2 << 30}  # more than there is
EACH = 1.0  # seconds after which what was counted is written


class Calls:
    """The public calls of the package."""

    def __init__(self):
        from calls import TURNS

        self.turns = TURNS

    def name(self, turn):
        return turn.__name__

    def tried(self, turn, seed):
        return tried(turn, seed)

    def described(self, turn, seed):
        return described(seed, turn)


def kind_of(name):
    """Returns what tries the things of a kind; the folder of now is theirs."""
    if name == "calls":
        return Calls()
    if name == "files":
        from files import Files

        return Files()
    from stores import Stores

    return Stores()


class Said:
    """What comes to stdout and stderr, whoever writes it."""

    def __init__(self, path):
        self.descriptor = os.open(path, os.O_RDWR | os.O_CREAT | os.O_TRUNC | os.O_APPEND)
        for standard in (1, 2):
            os.dup2(self.descriptor, standard)

    def refuse_any(self):
        text = self.taken()
        if text:
            raise Fault(f"something is printed: {text}", text.strip()[:40])

    def taken(self):
        """Returns what has come, and forgets it."""
        sys.stdout.flush()
        sys.stderr.flush()
        if os.fstat(self.descriptor).st_size == 0:
            return ""
        text = os.pread(self.descriptor, 2000, 0).decode(errors="replace")
        os.ftruncate(self.descriptor, 0)
        return text


class Worker:
    """Tries one thing after the other."""

    def __init__(self, asked):
        self.asked = asked
        self.folder = Path(asked["folder"])
        self.numbers = asked["numbers"]
        self.spent = dict.fromkeys(self.numbers, 0.0)
        self.counts = collections.defaultdict(collections.Counter)
        self.faults = {}
        self.under_way = os.open(self.folder / "under-way", os.O_RDWR | os.O_CREAT | os.O_TRUNC)
        self.kinds = {name: self.made(name) for name in self.numbers}
        self.said = Said(self.folder / "said")

    def made(self, name):
        folder = self.folder / name
        folder.mkdir(exist_ok=True)
        os.chdir(folder)
        return kind_of(name)

    def work(self):
        """Tries things until the time is over, and writes what was counted."""
        written = 0.0
        while (spent := sum(self.spent.values())) < self.asked["seconds"]:
            if spent - written > EACH:
                self.write(False)
                written = spent
            kind = min(self.spent, key=lambda name: self.spent[name] / SHARES[name])
            began = time.process_time()
            self.try_next(kind)
            self.spent[kind] += time.process_time() - began
        signal.alarm(0)
        self.write(True)

    def try_next(self, kind):
        number = self.numbers[kind]
        self.numbers[kind] += 1
        self.try_one(kind, f"{self.asked['seed']}.{number}", number)

    def try_one(self, kind, seed, number):
        name, trying = f"{kind}:{seed}", self.kinds[kind]
        turn = trying.turns[number % len(trying.turns)]
        os.pwrite(self.under_way, name.ljust(100).encode(), 0)
        os.chdir(self.folder / kind)
        resource.setrlimit(resource.RLIMIT_AS, (address_space() + MEMORY[kind], -1))
        signal.alarm(SECONDS_OF_ONE)
        group = f"{kind} {trying.name(turn)}"
        try:
            outcome = trying.tried(turn, seed)
            self.said.refuse_any()
        except Fault as fault:
            outcome = "fault"
            self.said.taken()
            self.keep(fault, group, name)
        self.counts[group][outcome] += 1

    def keep(self, fault, group, name):
        """Keeps the first fault of each kind, and how often it came."""
        found = self.faults.setdefault(f"{group}: {fault.kind}",
                                       {"name": name, "what": str(fault)[:2000], "times": 0})
        found["times"] += 1

    def write(self, is_done):
        facts = {"done": is_done, "spent": self.spent, "numbers": self.numbers,
                 "counts": self.counts, "faults": self.faults}
        path = self.folder / "counted.json"
        path.with_suffix(".new").write_text(json.dumps(facts), encoding="utf-8")
        path.with_suffix(".new").replace(path)

    def try_again(self, name):
        """Tries one thing, and says which it is."""
        kind, seed = name.split(":")
        number = int(seed.rpartition(".")[2])
        self.try_one(kind, seed, number)
        signal.alarm(0)
        resource.setrlimit(resource.RLIMIT_AS, (-1, -1))
        trying = self.kinds[kind]
        text = trying.described(trying.turns[number % len(trying.turns)], seed)
        (self.folder / "described").write_text(text, encoding="utf-8")
        self.write(True)


def address_space():
    """Returns the bytes of addresses that the process has."""
    pages = Path("/proc/self/statm").read_text(encoding="utf-8").split()[0]
    return int(pages) * resource.getpagesize()


def main(text):
    asked = json.loads(text)
    with open(Path(asked["folder"]) / "crash", "w", encoding="utf-8") as crash:
        faulthandler.enable(crash)
        faulthandler.register(signal.SIGALRM, crash, chain=True)
        worker = Worker(asked)
        worker.try_again(asked["again"]) if "again" in asked else worker.work()


if __name__ == "__main__":
    main(sys.argv[1])
