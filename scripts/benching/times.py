"""Times beside other libraries, round by round."""
import fnmatch
import math
import random
import statistics

from evidence.commands import BadUse, Failure
from evidence.markdown import heading, table

from . import goals, programs
from .goals import ALIKE, GOALS, goals_of

TITLE = "Times"
OURS = "volux_core"
LOOP = "loop"
# Rounds that a program lives for: where its memory happens to be is drawn anew with it.
LIFE = 4
VISITS = 3
ORDER = (OURS, "Sampler", "CImg", "ITK", "VTK", "memset", "memcpy", "raw", "numpy")
WORKLOADS = {
    "A": "A: an oblique volume",
    "B": "B: upsampling along the axes",
    "C": "C: random positions",
    "D": "D: a dependent chain",
    "E": "E: the container",
}


def positive_count(text):
    """argparse's own sentence for what is no whole number would name this function."""
    return int(text) if text.isdecimal() else 0


def add_arguments(parser, rounds=8):
    parser.add_argument("--rounds", type=positive_count, default=rounds, metavar="N",
                        help=f"how many rounds to measure ({rounds})")
    parser.add_argument("--only", metavar="PATTERN",
                        help="only the rows of that name, such as 'A/short/cubic/*' or 'E/get *'")


def chosen(rows, pattern):
    """The rows whose names match."""
    found = {row: competitors for row, competitors in rows.items()
             if pattern is None or fnmatch.fnmatchcase(row, pattern)}
    if not found:
        raise BadUse(f"no row is called '{pattern}'; there are {', '.join(sorted(rows)[:3])} and "
                     f"{len(rows) - 3} more.")
    return found


def check_goals(rows):
    goals.check([row for row, competitors in rows.items() if OURS in competitors], GOALS)


def turns(rows, number):
    """The rows of a round, in an order of its own, in each another competitor first."""
    order = sorted(rows)
    random.Random(number).shuffle(order)
    for row in order:
        competitors = sorted(rows[row])
        first = number % len(competitors)
        yield row, competitors[first:] + competitors[:first]


class Findings:
    """What the programs have said."""

    def __init__(self, rows):
        self.times = {row: {} for row in rows}
        self.agreement = {}
        self.checksums = {}

    def add(self, row, competitor, said):
        if "error_message" in said:
            raise Failure(f"{row}/{competitor}: {said['error_message']}.")
        nanoseconds = float(f"{1e9 / said['items_per_second']:.4g}")
        self.times[row].setdefault(competitor, []).append(nanoseconds)
        if "tolerance" in said:
            self.compare(row, competitor, said["difference"], said["tolerance"])
        if "checksum" in said:
            first = self.checksums.setdefault(row, said["checksum"])
            if first != said["checksum"]:
                raise Failure(f"{row}: {competitor} does not give what the others give.")

    def compare(self, row, competitor, difference, tolerance):
        _, voxels, kernel, _ = row.split("/")
        key = " ".join((competitor, voxels, kernel))
        before = self.agreement.get(key, {"largest": 0.0, "tolerance": 0.0})
        self.agreement[key] = {"largest": max(difference, before["largest"]),
                               "tolerance": max(tolerance, before["tolerance"])}


def fastest(ask, row, competitors, visits):
    """What each says of a row at its fastest; a failure counts as that."""
    said = [{competitor: ask(row, competitor) for competitor in competitors}
            for _ in range(visits)]
    return {competitor: max((answers[competitor] for answers in said),
                            key=lambda answer: answer.get("items_per_second", math.inf))
            for competitor in competitors}


def measure(suite, rows, rounds, visits=1, is_wanted=lambda times, competitor: True, life=LIFE):
    """Asks for each row and competitor in each round, as long as those before leave it wanted.
    Programs live for some rounds."""
    findings = Findings(rows)
    needed = {name for row in rows.values() for name in row.values()}
    for first in range(0, rounds, life):
        with programs.running(suite, needed) as started:
            def ask(row, competitor):
                return started[rows[row][competitor]].ask(f"{row}/{competitor}")
            for number in range(first, min(first + life, rounds)):
                for row, order in turns(rows, number):
                    wanted = [one for one in order if is_wanted(findings.times[row], one)]
                    for competitor, said in fastest(ask, row, wanted, visits).items():
                        findings.add(row, competitor, said)
                print(f"round {number + 1} of {rounds}", flush=True)
    return findings


def check_options(options):
    if options.rounds < 1:
        raise BadUse("--rounds takes a whole number above zero.")
    if options.record and options.only is not None:
        raise BadUse("only a run that leaves nothing out is recorded; leave out --only.")


def missing(suite, rows):
    """The peers that have no case."""
    present = {competitor for row in rows.values() for competitor in row}
    skipped = [peer for peer in suite.peers if peer not in present]
    for peer in skipped:
        print(f"{peer} is skipped: it is not installed.", flush=True)
    return skipped


def timed(suite, options, check, **how):
    """Measures a suite as the options say, once its rows have been checked; gives the record."""
    check_options(options)
    programs.install_packages(suite)
    programs.build(suite)
    rows = programs.cases(suite)
    check(rows)
    skipped = missing(suite, rows)
    findings = measure(suite, chosen(rows, options.only), options.rounds, **how)
    return {"rounds": options.rounds, "skipped": skipped,
            "peers": {peer: programs.release(package)
                      for peer, package in suite.peers.items() if peer not in skipped},
            "agreement": dict(sorted(findings.agreement.items())), "times": findings.times}


def run(options):
    return timed(programs.TIMES, options, check_goals, visits=VISITS)


def ratios(times, against, ours=OURS):
    """Our time to that of the fastest of some, round by round; None without any."""
    others = [times[name] for name in against if name in times]
    if ours not in times or not others:
        return None
    # One that was left out after some rounds does not count in the others.
    measured = ([theirs[number] for theirs in others if number < len(theirs)]
                for number in range(len(times[ours])))
    return [mine / min(theirs) for mine, theirs in zip(times[ours], measured) if theirs]


def quartiles(values):
    if len(values) == 1:
        return values * 3
    return statistics.quantiles(values, n=4, method="inclusive")


def spread(values):
    first, median, third = quartiles(values)
    return f"{median:.2f} ({first:.2f} to {third:.2f})"


def shown(nanoseconds):
    return f"{nanoseconds:.0f}" if nanoseconds >= 1000 else f"{nanoseconds:.3g}"


def verdict(value, goal):
    return "" if goal is None else "yes" if value <= goal else "**no**"


def limit(goal):
    return "" if goal is None else f"{goal:.2f}"


def names_of(against, times):
    there = [name for name in against if name in times]
    return there[0] if len(there) == 1 else "fastest of " + ", ".join(there)


def ratio_cells(times, goal):
    found = ratios(times, goal.against, goal.ours)
    if found is None:
        return ["not measured", "", limit(goal.most), "", limit(goal.aim), ""]
    median = statistics.median(found)
    return [names_of(goal.against, times), spread(found), limit(goal.most),
            verdict(median, goal.most), limit(goal.aim), verdict(median, goal.aim)]


RATIO_HEADS = ["against", "ratio (quartiles)", "at most", "holds", "aim", "holds"]


def row_lines(row, times, competitors, goals=tuple(GOALS)):
    """A line for each goal of a row; the first has the times."""
    figures = [shown(statistics.median(times[name])) if name in times else ""
               for name in competitors]
    heads = row.split("/")[1:] + figures
    for goal in goals_of(row, goals):
        ours = [] if goal.ours == OURS else [goal.ours]
        yield [*heads, *ours, *ratio_cells(times, goal)]
        heads = [""] * len(heads)


def workload(letter, record):
    rows = {row: times for row, times in record["times"].items() if row.startswith(letter + "/")}
    loop = rows.pop(f"{letter}/positions", None)
    if not rows:
        return []
    present = {name for times in rows.values() for name in times}
    competitors = [name for name in ORDER if name in present]
    what = ["what"] if letter == "E" else ["voxels", "kernel", "border"]
    lines = table([*what, *(f"{name}, ns" for name in competitors), *RATIO_HEADS],
                  [line for row, times in rows.items()
                   for line in row_lines(row, times, competitors)])
    if loop:
        spent = statistics.median(loop[LOOP])
        lines += [f"The loop alone takes {spent:.2g} ns for a position.", ""]
    return [*heading(3, WORKLOADS[letter]), *lines]


def goal_line(goal, record):
    """A goal over all its rows."""
    found = [(row, ratios(times, goal.against, goal.ours)) for row, times in record["times"].items()
             if goals_of(row, [goal])]
    medians = [statistics.median(values) for _, values in found if values is not None]
    what = goal.what if goal.ours == OURS else f"{goal.what}, {goal.ours}"
    if not medians:
        return [what, ", ".join(goal.against), "not measured", limit(goal.most), "",
                limit(goal.aim), ""]
    present = {name for row, _ in found for name in record["times"][row]}
    held = ["" if bound is None else
            f"{sum(median <= bound for median in medians)} of {len(medians)}"
            for bound in (goal.most, goal.aim)]
    return [what, names_of(goal.against, present),
            f"{min(medians):.2f} to {max(medians):.2f}", limit(goal.most), held[0],
            limit(goal.aim), held[1]]


def overview(record, goals=tuple(GOALS)):
    lines = [goal_line(goal, record) for goal in goals
             if goal.most is not None and any(goals_of(row, [goal]) for row in record["times"])]
    return table(["goal", "against", "medians of its rows", "at most", "held in", "aim",
                  "held in"], lines)


def agreement(record, title="Agreement with volux_core"):
    rows = [[*key.split(" "), f"{found['largest']:.2g}", f"{found['tolerance']:.2g}"]
            for key, found in record["agreement"].items()]
    return [*heading(3, title),
            "Voxels reach about 1300. The `short` of `volux_core` are rounded readings.", "",
            *table(["library", "voxels", "kernel", "largest difference", "tolerance"], rows)]


def summary(single, whole, whole_ours):
    """A few rows for whoever has not opened the page yet: single calls beside whole volumes, where
    `whole_ours` names this library's column."""
    rows = []
    for kernel in ("nearest", "linear", "cubic"):
        for record, ours, calls in ((single, OURS, "single calls"),
                                    (whole, whole_ours, "whole volume")):
            times = record["times"][f"A/short/{kernel}/constant"]
            rows.append([f"{kernel}, {calls}",
                         *(shown(statistics.median(times[name])) if name in times else ""
                           for name in (ours, *ALIKE))])
    return table(["`short`, oblique, ns a sample", "here", *ALIKE], rows)


def beside(record):
    """Who was measured, and how often."""
    peers = "; ".join(f"{peer} {version}" for peer, version in record["peers"].items())
    lines = [f"{record['rounds']} rounds. Beside volux_core: {peers or 'nobody'}."]
    if record["skipped"]:
        lines += [f"Skipped, since it was not installed: {', '.join(record['skipped'])}."]
    return [*lines, ""]


def tables(record):
    """The record as Markdown."""
    lines = [*beside(record), *overview(record)]
    for letter in WORKLOADS:
        lines += workload(letter, record)
    return lines + agreement(record)
