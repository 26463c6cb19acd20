"""Volumes beyond memory: what a task costs beside the same work by hand, what a second process
gains, and what that comes to for volumes that no test can make."""
import json
import math
import os
import statistics
import tempfile
from pathlib import Path

from evidence import commands, package
from evidence.commands import ROOT, BadUse, output_of
from evidence.markdown import heading, table

from . import goals, times, tool

TITLE = "Beyond memory"
PROGRAMS = ROOT / "bench" / "scale"
EXTENTS, CHUNK = (1024, 1024, 1024), 64
ROWS = {  # the extent of a unit: who makes the result from units of it
    "shift/256": ("volux", "two processes", "copy"),
    "shift/64": ("volux", "shift", "copy"),
    "plan/512 units": ("volux",),
    "plan/10^9 units": ("volux",),
}
PAPER = [(voxels, workers) for voxels in (10**12, 10**15) for workers in (100, 10_000)]
PER_TASK = 2  # files that a task writes: the unit and its record


def add_arguments(parser):
    times.add_arguments(parser, rounds=5)


class Bench:
    """A folder with a source, plans and results."""

    def __init__(self, python, folder):
        self.python, self.folder = python, folder
        self.volux = f"{Path(python).parent}/volux"
        output_of([python, PROGRAMS / "source.py", folder / "in.zarr", CHUNK, *EXTENTS])
        half = [[1, 0, 0, 0.5], [0, 1, 0, 0.5], [0, 0, 1, 0.5], [0, 0, 0, 1]]
        (folder / "half.txt").write_text(
            "\n".join(" ".join(map(str, row)) for row in half), encoding="ascii")

    def plan_call(self, output, unit, verb, *options):
        return [self.volux, "plan", verb, self.folder / "in.zarr", "-o", self.folder / output,
                "--chunk", CHUNK, "--unit", unit, "--force", "--quiet", *options]

    def plan_of(self, unit):
        """Plans a shift anew, so that nothing of its result is there."""
        output_of(self.plan_call("out.zarr", unit, "resample", "--transform",
                                 self.folder / "half.txt", "--outside", "extend"))
        return self.folder / "out.plan.json"

    def nanoseconds(self, row, competitor):
        """What one of a row takes; all but two processes have one processor to themselves."""
        what, unit = row.split("/")
        if what == "plan":
            along = {"512 units": 8, "10^9 units": 1000}[unit]
            return tool.nanoseconds(alone(self.plan_call("plan.zarr", CHUNK, "resize", "--shape",
                                                         along * CHUNK)))
        plan = self.plan_of(unit)
        if competitor in ("copy", "shift"):
            return tool.nanoseconds(alone([self.python, PROGRAMS / "by_hand.py", competitor,
                                           self.folder / "in.zarr", self.folder / "out.zarr/0",
                                           unit]))
        if competitor == "volux":
            return tool.nanoseconds(alone([self.volux, "run", plan, "--quiet"]))
        return tool.nanoseconds([self.volux, "run", plan, "--processes", "2", "--quiet"])

    def task(self):
        """What a task of 256 x 256 x 256 takes, on average."""
        plan = self.plan_of(256)
        output_of(alone([self.volux, "run", plan, "--quiet"]))
        records = [json.loads(path.read_text(encoding="utf-8"))
                   for path in (self.folder / "out.volux").rglob("*.json")
                   if path.stem.isdecimal()]
        verify = tool.nanoseconds(alone([self.volux, "verify", plan, "--quiet"])) / 1e9
        said = output_of([self.python, PROGRAMS / "requests.py", self.plan_of(256)], text=True)
        requests, read = map(float, said.split())
        mean = {key: statistics.mean(record[key] for record in records)
                for key in ("seconds", "size")}
        return {"seconds": mean["seconds"], "read": read, "requests": requests,
                "written": mean["size"], "verify": verify / len(records)}


def alone(call):
    """A call that has the first of the processors and no other."""
    return ["taskset", "--cpu-list", min(os.sched_getaffinity(0)), *call]


def measure(rows, rounds, bench):
    """Nanoseconds by row and competitor, round by round."""
    found = {row: {} for row in rows}
    for number in range(rounds):
        for row, order in times.turns(rows, number):
            for competitor in order:
                taken = bench.nanoseconds(row, competitor)
                found[row].setdefault(competitor, []).append(float(f"{taken:.4g}"))
        print(f"round {number + 1} of {rounds}", flush=True)
    return found


def run(options):
    times.check_options(options)
    commands.install("bench")
    if options.record and os.cpu_count() < 2:
        raise BadUse("two processes want two processors.")
    python = package.interpreter("test", options.record)
    with tempfile.TemporaryDirectory() as name:
        bench = Bench(python, Path(name))
        found = measure(times.chosen(ROWS, options.only), options.rounds, bench)
        task = {key: float(f"{value:.4g}") for key, value in bench.task().items()}
    return {"rounds": options.rounds, "processors": os.cpu_count(), "times": found, "task": task}


def ratios(found):
    """Who is compared with whom: a row each."""
    if "shift/256" in found:
        one = found["shift/256"]
        yield ("a shift beside a copy", one["volux"], one["copy"], goals.SCALE["copy"])
        yield ("two processes beside one", one["two processes"], one["volux"],
               goals.SCALE["processes"])
    if {"plan/512 units", "plan/10^9 units"} <= found.keys():
        few, many = (found[row]["volux"] for row in ("plan/512 units", "plan/10^9 units"))
        yield ("a plan of 10^9 units beside one of 512", many, few, goals.SCALE["plan"])


def ratio_rows(found):
    for what, ours, theirs, most in ratios(found):
        each = [mine / other for mine, other in zip(ours, theirs)]
        yield [what, *(f"{statistics.median(one) / 1e9:.2f}" for one in (ours, theirs)),
               times.spread(each), times.limit(most), times.verdict(statistics.median(each), most)]


def overhead_rows(found):
    """What a task takes more than others take for its voxels."""
    if "shift/64" not in found:
        return
    tasks, most = math.prod(EXTENTS) // 64**3, goals.SCALE["overhead"]
    ours = found["shift/64"]["volux"]
    for name, what in (("shift", "a task of 64^3 beside a shift by hand, ms"),
                       ("copy", "a task of 64^3 beside a copy, ms")):
        theirs = found["shift/64"][name]
        each = [(mine - other) / tasks / 1e6 for mine, other in zip(ours, theirs)]
        yield [what, *(f"{statistics.median(one) / 1e9:.2f}" for one in (ours, theirs)),
               times.spread(each), times.limit(most),
               times.verdict(statistics.median(each), most)]


def hours(seconds):
    return f"{seconds / 3600:,.2f}" if seconds >= 360 else f"{seconds / 3600:.1g}"


def paper(kept):
    """What a task comes to for volumes that no test can make, each worker one processor."""
    task = kept["task"]
    for voxels, workers in PAPER:
        tasks = -(-voxels // 256**3)
        requests = (task["requests"] + PER_TASK) * workers / task["seconds"]
        yield [f"10^{len(str(voxels)) - 1}", f"{workers:,}", f"{tasks:,}",
               hours(tasks * task["seconds"] / workers),
               f"{tasks * task['read'] / 1e12:,.2f}", f"{tasks * task['written'] / 1e12:,.2f}",
               f"{requests:,.0f}",
               f"{workers * (task['read'] + task['written']) / task['seconds'] / 1e9:,.2f}",
               hours(tasks * task["verify"])]


def paper_table(kept):
    """The lines of a table for docs/scale.md."""
    return table(["voxels", "workers", "tasks", "hours", "read, TB", "written, TB",
                  "requests a second", "GB a second", "verify, hours of one process"],
                 paper(kept))


def tables(kept):
    """The record as Markdown."""
    task = kept["task"]
    rows = [*ratio_rows(kept["times"]), *overhead_rows(kept["times"])]
    return [f"{kept['rounds']} rounds on {kept['processors']} processors.", "",
            *table(["what", "s", "beside, s", "ratio, or ms", "at most", "holds"], rows),
            *heading(3, "A task of 256 x 256 x 256"),
            *table(["seconds", "requests", "read, MB", "written, MB", "verify, seconds"],
                   [[f"{task['seconds']:.2f}", f"{task['requests']:.1f}",
                     f"{task['read'] / 1e6:.2f}", f"{task['written'] / 1e6:.2f}",
                     f"{task['verify']:.3f}"]])]
