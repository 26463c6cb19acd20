"""The Python package beside the C++ library that it calls and beside other packages, round by
round; what its import costs, the memory of a large result, and how soon Ctrl-C ends a call."""
import json
import statistics

from evidence import commands, package
from evidence.commands import ROOT, BadUse, output_of
from evidence.markdown import heading, table

from . import goals, overhead, programs, times

TITLE = "Python"
PROGRAMS = ROOT / "bench" / "python"
COMPETITORS = ("volux", "volux into out", "volux_resample", *programs.PACKAGE.peers)
GIB = 4.0
INTERRUPTS = 50
IMPORTS = 10  # for each round
# volux imports what it needs when it is first asked for something.
FIRST_USES = {"volux": "import volux; volux.resample", "numpy": "import numpy"}
WORKLOADS = {
    "A": "Python, A: oblique",
    "B": "Python, B: upsampling along the axes",
    "point": "Python, one point",
}
RATIO_HEADS = ["ratio of", "median (quartiles)", "of the fastest", "at most", "holds"]


def add_arguments(parser):
    times.add_arguments(parser, rounds=7)
    parser.add_argument("--peers", action="store_true",
                        help="beside torch as well, which is some gigabytes to install")
    parser.add_argument("--gib", type=commands.positive, default=GIB, metavar="SIZE",
                        help=f"how large the result is whose memory is measured ({GIB:g})")


def check_options(options):
    times.check_options(options)
    if options.record and options.gib != GIB:
        raise BadUse("only a run that leaves nothing out is recorded; leave out --gib.")


def versions(python):
    """Of Python and of each package that is there."""
    said = output_of([python, "-c", "import importlib.metadata as m, json, platform; print("
                      "json.dumps({d.metadata['Name'].lower(): d.version "
                      "for d in m.distributions()} | {'python': platform.python_version()}))"])
    return json.loads(said)


def imports(python, rounds):
    """Nanoseconds of processor time of processes that import a package and end, in turns."""
    taken = {name: [] for name in FIRST_USES}
    for program in FIRST_USES.values():
        output_of([python, "-I", "-c", program])  # what it reads is in memory then
    for _ in range(rounds):
        for name, program in FIRST_USES.items():
            seconds = overhead.processor_seconds([python, "-I", "-c", program])
            taken[name].append(float(f"{1e9 * seconds:.4g}"))
    return taken


def memory(python, gib):
    """Bytes of the source and of the result of a resize, and the most that its process had."""
    said = output_of([python, PROGRAMS / "memory.py", round(gib * 2**30)], text=True)
    return dict(zip(("source", "result", "most"), map(int, said.split())))


def interrupts(python):
    """Seconds from SIGINT to KeyboardInterrupt, by the number of threads."""
    found = {}
    for threads in ("1", "2"):
        said = output_of([python, PROGRAMS / "interrupts.py", INTERRUPTS, threads], text=True)
        found[threads] = [float(f"{float(line):.3g}") for line in said.splitlines()]
    return found


def whole(python, options, found):
    """Adds what is no row of calls in turns."""
    found["times"]["import"] = imports(python, IMPORTS * options.rounds)
    found["memory"] = memory(python, options.gib)
    found["interrupts"] = interrupts(python)


def run(options):
    check_options(options)
    commands.install(*programs.PACKAGE.packages)
    python = package.interpreter("peers" if options.peers else "bench", options.record)
    suite = programs.PACKAGE._replace(python=python)
    programs.build(suite)
    rows = programs.cases(suite)
    goals.check([*rows, "import"], goals.PYTHON)
    skipped = times.missing(suite, rows)
    there = versions(python)
    # Which pages a program happens to get makes a call a tenth faster or slower, for as long as it
    # lives; each round has programs of its own.
    measured = times.measure(suite, times.chosen(rows, options.only), options.rounds, times.VISITS,
                             life=1)
    found = {"rounds": options.rounds, "skipped": skipped,
             "python": {name: there[name] for name in ("python", "numpy")},
             "peers": {peer: there[its] for peer, its in suite.peers.items()
                       if peer not in skipped},
             "agreement": dict(sorted(measured.agreement.items())), "times": measured.times}
    if options.only is None:
        whole(python, options, found)
    return found


def ratio_lines(row, found, names):
    """A line for each goal of a row whose competitors are there; the first has the times."""
    heads = [*row.split("/")[1:], *(times.shown(statistics.median(found[name]))
                                    if name in found else "" for name in names)]
    for goal in goals.goals_of(row, goals.PYTHON):
        ratios = times.ratios(found, goal.against, goal.ours)
        if ratios is None:
            continue
        fastest = min(found[goal.ours]) / min(found[goal.against[0]])
        yield [*heads, f"{goal.ours} to {goal.against[0]}", times.spread(ratios),
               f"{fastest:.2f}", times.limit(goal.most),
               times.verdict(statistics.median(ratios), goal.most)]
        heads = [""] * len(heads)


def workload(name, kept):
    rows = {row: found for row, found in kept["times"].items() if row.startswith(name + "/")}
    names = [each for each in COMPETITORS if any(each in found for found in rows.values())]
    if not rows:
        return []
    lines = [line for row, found in rows.items() for line in ratio_lines(row, found, names)]
    return [*heading(3, WORKLOADS[name]),
            *table(["voxels", "kernel", "threads", *(f"{each}, ns" for each in names), *RATIO_HEADS],
                   lines)]


def import_table(kept):
    if "import" not in kept["times"]:
        return []
    found = {name: [nanoseconds / 1e6 for nanoseconds in taken]
             for name, taken in kept["times"]["import"].items()}
    return [*heading(3, "Import"), *table(["volux, ms", "numpy, ms", *RATIO_HEADS],
                                          ratio_lines("import", found, ("volux", "numpy")))]


def memory_table(kept):
    if "memory" not in kept:
        return []
    found = kept["memory"]
    beside = (found["most"] - found["source"] - found["result"]) / 1e6
    return [*heading(3, "Memory of a resize"),
            *table(["source, MB", "result, MB", "most, MB", "beside both, MB", "at most", "holds"],
                   [[*(f"{found[name] / 1e6:,.1f}" for name in ("source", "result", "most")),
                     f"{beside:.1f}", goals.MEMORY, times.verdict(beside, goals.MEMORY)]])]


def interrupt_table(kept):
    rows = []
    for threads, found in kept.get("interrupts", {}).items():
        for what, value in (("median", statistics.median(found)), ("longest", max(found))):
            most = goals.INTERRUPTED[what]
            rows.append([threads, len(found), what, f"{value:.3f}", f"{most:.1f}",
                         times.verdict(value, most)])
    if not rows:
        return []
    return [*heading(3, "From Ctrl-C to KeyboardInterrupt"),
            *table(["threads", "calls", "", "seconds", "at most", "holds"], rows)]


def beside(kept):
    """Who was measured, and how often."""
    packages = "; ".join(f"{name} {version}" for name, version in kept["peers"].items())
    lines = [f"{kept['rounds']} rounds by Python {kept['python']['python']} with numpy "
             f"{kept['python']['numpy']}. Beside volux: {packages or 'nobody'}."]
    if kept["skipped"]:
        lines += [f"Skipped, since it was not installed: {', '.join(kept['skipped'])}."]
    return [*lines, ""]


def tables(kept):
    """The record as Markdown."""
    lines = [*beside(kept), *times.overview(kept, goals.PYTHON)]
    for name in WORKLOADS:
        lines += workload(name, kept)
    return [*lines, *import_table(kept), *memory_table(kept), *interrupt_table(kept),
            *times.agreement(kept, "Python: agreement with volux_core")]
