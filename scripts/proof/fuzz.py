"""Five programs for libFuzzer, each with a small corpus to start from."""
import os
import re
import subprocess
import tempfile
import time
from pathlib import Path

from evidence.commands import LOGS, ROOT, Failure, at_once, positive, version

from .builds import BUILD, fuzzers, fuzzers_folder
from .results import Result, Table

TITLE = "Fuzzing"
PROMISE = "No call reads, writes or loops where it must not, whatever it is given."
BREAKER = "Extents, strides and positions that nobody would think of."
WITH_RESAMPLE = True
CI_RUN = ["--seconds", "10"]
WHOLE_RUN = ["--seconds", "60"]

TARGETS = {
    "lifecycle": "programs of calls",
    "boxes": "crop, draw, planes, fill",
    "kernels": "sampling",
    "bulk": "whole volumes",
}
PARTS = tuple(TARGETS)
CAMPAIGN_SECONDS = 20 * 60
CORPUS = ROOT / "fuzz" / "corpus"
FOUND = BUILD / "fuzz-corpus"
CRASHES = BUILD / "fuzz-crashes"
LIMITS = ["-len_control=10", "-timeout=10", "-rss_limit_mb=1024", "-print_final_stats=1"]
LONGEST = {"lifecycle": 512, "boxes": 512, "kernels": 1024, "bulk": 1024}


class Tally:
    """What the runs of one target have come to so far."""

    def __init__(self, name):
        self.name = name
        self.cpu = 0.0
        self.executions = 0
        self.added = 0
        self.covered = self.edges = self.units = 0
        self.crash = None

    def add(self, text):
        done = re.findall(r"stat::number_of_executed_units:\s+(\d+)", text)
        new = re.findall(r"stat::new_units_added:\s+(\d+)", text)
        reached = re.findall(r"cov: (\d+) ft: \d+ corp: (\d+)", text)
        edges = re.search(r"Loaded \d+ modules?\s+\((\d+) inline", text)
        self.executions += int(done[-1]) if done else 0
        self.added += int(new[-1]) if new else 0
        if reached:
            self.covered, self.units = int(reached[-1][0]), int(reached[-1][1])
        if edges:
            self.edges = int(edges[1])

    def row(self):
        return [f"`{self.name}`", TARGETS[self.name], f"{self.cpu:.0f} s", f"{self.executions:,}",
                f"{self.executions / max(self.cpu, 1e-9):,.0f}", f"{self.covered} of {self.edges}",
                self.units, self.added, 0 if self.crash is None else 1]


def program(name):
    return fuzzers_folder() / "fuzz" / f"fuzz_{name}"


def repeat(name, crash):
    return f"{program(name).relative_to(ROOT)} {crash.relative_to(ROOT)}"


def spend(tally, seconds, temporary):
    """One run of so many seconds by the clock; adds what it took and found."""
    name = tally.name
    crashes = CRASHES / name
    command = [program(name), f"-max_total_time={max(1, round(seconds))}", *LIMITS,
               f"-max_len={LONGEST[name]}", f"-artifact_prefix={crashes}/", FOUND / name,
               CORPUS / name]
    log = LOGS / f"proof-fuzz-{name}.log"
    with open(log, "w+", encoding="utf-8", errors="replace") as file:
        with subprocess.Popen(command, stdout=file, stderr=subprocess.STDOUT,
                              env={**os.environ, "TMPDIR": temporary}) as child:
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
        file.seek(0)
        said = file.read()
    tally.add(said)
    tally.cpu += usage.ru_utime + usage.ru_stime
    if child.returncode == 0:
        return
    kept = re.findall(r"Test unit written to (.+)", said)
    if not kept:
        raise Failure(f"the fuzzer of {name} ends with status {child.returncode} and keeps no "
                      f"input; see {log.relative_to(ROOT)}.")
    tally.crash = Path(kept[-1])


def fuzz(name, seconds, temporary):
    if not any((CORPUS / name).iterdir()):
        raise Failure(f"{(CORPUS / name).relative_to(ROOT)} holds nothing to start from.")
    for folder in (FOUND / name, CRASHES / name):
        folder.mkdir(parents=True, exist_ok=True)
    tally = Tally(name)
    took = 0.0
    # The fuzzer stops by the clock; on a busy machine it has then had less of the processor.
    while tally.crash is None and tally.cpu < seconds:
        share = min(1.0, max(0.1, tally.cpu / took)) if took else 1.0
        start = time.monotonic()
        spend(tally, (seconds - tally.cpu) / share, temporary)
        took += time.monotonic() - start
    print(f"  {name}: {tally.cpu:.0f} s of processor in {took:.0f} s, {tally.executions} runs, "
          f"{tally.covered} of {tally.edges} edges, {tally.added} new units", flush=True)
    if tally.crash is not None:
        print(f"  {name}: an input fails: {tally.crash.relative_to(ROOT)}\n"
              f"    repeat it with: {repeat(name, tally.crash)}", flush=True)
    return tally


def fuzz_all(names, seconds):
    shared = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="volux-fuzz-", dir=shared) as temporary:
        return at_once(lambda name: fuzz(name, seconds, temporary), names)


def add_arguments(parser):
    length = parser.add_mutually_exclusive_group()
    length.add_argument("--minutes", type=positive, help="processor time for each target")
    length.add_argument("--seconds", type=positive, help="the same in seconds (60)")
    parser.add_argument("--target", choices=TARGETS, help="this one alone")


def run(options):
    seconds = options.minutes * 60 if options.minutes else options.seconds or 60.0
    names = [options.target] if options.target else list(TARGETS)
    fuzzers(*(f"fuzz_{name}" for name in names))
    tallies = fuzz_all(names, seconds)
    crashed = [tally for tally in tallies if tally.crash is not None]
    executions = sum(tally.executions for tally in tallies)
    minutes = sum(tally.cpu for tally in tallies) / 60
    summary = (f"{executions:,} inputs in {minutes:.1f} minutes of processor time, " +
               ("; ".join(f"one fails, `{repeat(tally.name, tally.crash)}`" for tally in crashed)
                if crashed else "none of which fails") + ".")
    table = Table(f"The targets of libFuzzer, {version('clang++')}",
                  ["target", "of what", "processor time", "executions", "a second",
                   "edges reached", "units", "new units", "failures"],
                  [tally.row() for tally in tallies])
    ran = all(tally.executions and tally.covered for tally in tallies)
    return Result(ran and not crashed, summary, [table], campaign=seconds >= CAMPAIGN_SECONDS,
                  complete=len(names) == len(TARGETS))
