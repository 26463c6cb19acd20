"""Which lines, branches, conditions and instantiations of volux_core the unit tests reach."""
import collections
import json
import re

from evidence import commands
from evidence.commands import Failure

from . import suite
from .results import Result, Table

TITLE = "Coverage"
PROMISE = "Tests run all of `volux_core`."
BREAKER = "A line, a branch or a condition that was written and never tried."

BUILDS = {"as it is": "", "portable": " -DVOLUX_CORE_PORTABLE"}

# Functions (a regular expression that matches their names), reason.
EXCLUDED_FUNCTIONS = [
    (r"\(volux::core::detail::ConstantInitialized",
     "evaluated by the compiler alone: the policy objects are constant-initialised"),
    (r"detail::(refuseUnless|byValue|byAddress)<",
     "evaluated by the compiler alone, in noexcept clauses; the test `refusals` looks at them"),
]

# Function, which condition of its decision (and so which branch), reason.
EXCLUDED_CONDITIONS = [
    ("exact::truncateInRange<int>", 3,
     "a number that equals the lowest `int` is also above the lowest less one; only in 64 bits, "
     "where this condition is covered, do the two round to one number"),
    ("detail::fused", 1,
     "decides where a loop of 2^31 steps would follow; a second process begins one in "
     "`FillWithoutEnd`, and what it counts is lost when it is ended"),
]


class Coverage:
    """What has been seen of each file, over all builds."""

    def __init__(self):
        self.lines = collections.defaultdict(collections.Counter)
        self.branches = collections.defaultdict(dict)
        self.conditions = collections.defaultdict(dict)
        self.functions = collections.defaultdict(collections.Counter)
        self.extents = collections.defaultdict(set)  # of each function, as (first, last) lines

    def add_lines(self, listing):
        """Reads the lines of an lcov listing."""
        for line in listing.splitlines():
            if line.startswith("SF:"):
                file = in_repository(line[3:])
            elif line.startswith("DA:"):
                number, count = line[3:].split(",")[:2]
                self.lines[file][int(number)] += int(count)

    def add_function(self, build, name, record):
        files = [in_repository(file) for file in record["filenames"]]
        if files[0] is None or "volux::test::" in name:
            return
        self.functions[files[0]][name] += record["count"]
        self.extents[files[0], name].update(
            (region[0], region[2]) for region in record["regions"] if region[5] == 0)
        for branch in record["branches"]:
            if files[branch[6]]:
                place = (build, record["name"], name, *branch[:4])
                self.branches[files[branch[6]]][place] = branch[4] > 0 and branch[5] > 0
        for decision in record["mcdc_records"]:
            for number, decided in enumerate(decision[6], start=1):
                place = (build, record["name"], name, *decision[:4], number)
                self.conditions[files[decision[4]]][place] = decided


def in_repository(file):
    """The name of a file of volux_core within the repository, or None."""
    relative = file.removeprefix(f"{commands.ROOT}/")
    return relative if relative.startswith(("include/", "src/")) else None


def demangled(names):
    plain = commands.run(["llvm-cxxfilt-19"], input="\n".join(names)).stdout.splitlines()
    return dict(zip(names, plain))


def run_tests(build, tests, module):
    """Gives the merged profile of all test programs and how many tests there were."""
    profiles, total = [], 0
    for program in suite.PROGRAMS:
        profile = module / f"{program}.profraw"
        profile.unlink(missing_ok=True)
        passed, log = suite.run(tests, program, module, f"proof-coverage-{module.name}",
                                LLVM_PROFILE_FILE=str(profile))
        if passed is None:
            raise Failure(f"{program} fails in the instrumented build ({build}); see {log}.")
        profiles.append(profile)
        total += passed
    merged = module / "all.profdata"
    if commands.run(["llvm-profdata-19", "merge", "-o", merged, *profiles]).returncode != 0:
        raise Failure("llvm-profdata-19 cannot merge the profiles.")
    return merged, total


def export(tests, module, profile, *form):
    objects = [word for program in suite.PROGRAMS
               for word in ("-object", tests / "tests" / program)]
    done = commands.run(["llvm-cov-19", "export", "-instr-profile", profile, *form,
                       module / "libvolux_core.so", *objects, "-sources",
                       commands.ROOT / "include", commands.ROOT / "src"])
    if done.returncode != 0:
        raise Failure(f"llvm-cov-19 fails: {done.stderr.splitlines()[-1]}.")
    return done.stdout


def measure_build(build, tests):
    """Gives how many tests there were, and what they reach, as an lcov listing and as JSON."""
    flag = BUILDS[build]
    module = (suite.build_module("coverage-portable", suite.CLANG, suite.COVERAGE + flag)
              if flag else tests)
    profile, count = run_tests(build, tests, module)
    return (count, export(tests, module, profile, "-format=lcov", "-skip-branches"),
            export(tests, module, profile))


def measure():
    coverage = Coverage()
    tests = suite.covered_tests()
    found = commands.at_once(lambda build: measure_build(build, tests), BUILDS)
    for build, (_, listing, exported) in zip(BUILDS, found):
        coverage.add_lines(listing)
        records = json.loads(exported)["data"][0]["functions"]
        # The name of an internal function begins with its source.
        names = demangled([re.sub(r"^[^:]*:", "", record["name"]) for record in records])
        for record in records:
            name = names[re.sub(r"^[^:]*:", "", record["name"])]
            coverage.add_function(build, name, record)
    return coverage, sum(count for count, _, _ in found)


def excluded_in(file, coverage, pattern):
    """Takes the functions of a file that a pattern finds out of the figures; gives how many lines
    and functions there were, or None if a test executes one of them."""
    functions, lines = coverage.functions[file], coverage.lines[file]
    found = [name for name in functions if re.search(pattern, name)]
    if any(functions[name] for name in found):
        return None
    unseen = {line for name in found for first, last in coverage.extents[file, name]
              for line in range(first, last + 1) if lines.get(line) == 0}
    for line in unseen:
        del lines[line]
    for name in found:
        del functions[name]
    return len(unseen), len(found)


def exclude_functions(coverage):
    """Takes excluded functions out of the figures; gives the table's rows and what is stale."""
    rows, stale = [], []
    for pattern, reason in EXCLUDED_FUNCTIONS:
        taken = {file: excluded_in(file, coverage, pattern) for file in list(coverage.functions)}
        found = {file: counts for file, counts in taken.items() if counts is None or counts[1]}
        if not found or None in found.values():
            stale.append(["", f"a stale exclusion: `{pattern}`"])
        rows += [[file, f"functions `{pattern}`", "{} lines, {} functions".format(*counts), reason]
                 for file, counts in found.items() if counts]
    return rows, stale


def branch_of(branches, condition):
    """The place of the branch that a condition is, by its place within the decision."""
    *function, first_line, first, last_line, last, number = condition
    inside = sorted(place for place in branches if list(place[:3]) == function
                    and (first_line, first) <= place[3:5] and place[5:7] <= (last_line, last))
    return inside[number - 1]


def exclude_conditions(coverage):
    """Likewise for single conditions, with their branches."""
    rows, stale = [], []
    for function, number, reason in EXCLUDED_CONDITIONS:
        found = [(file, place, branch_of(coverage.branches[file], place))
                 for file, conditions in coverage.conditions.items() for place in conditions
                 if function in place[2] and place[-1] == number]
        if not found or any(coverage.conditions[file][place] or coverage.branches[file][branch]
                            for file, place, branch in found):
            stale.append(["", f"a stale exclusion: condition {number} of `{function}`"])
            continue
        for file, place, branch in found:
            del coverage.conditions[file][place], coverage.branches[file][branch]
        files = ", ".join(dict.fromkeys(file for file, _, _ in found))
        rows.append([files, f"condition {number} of `{function}`",
                     f"{len(found)} condition and branch", reason])
    return rows, stale


def uncovered(coverage):
    """(file, what) of everything that no test reaches."""
    for file, lines in coverage.lines.items():
        yield from ([file, f"line {line}"] for line, count in lines.items() if not count)
    for kind, places in (("branch", coverage.branches), ("condition", coverage.conditions)):
        for file, seen in places.items():
            missed = collections.Counter(place[3:5] for place, both in seen.items() if not both)
            yield from ([file, f"{kind} at {line}:{column}, in {count} instantiations"]
                        for (line, column), count in missed.items())
    for file, functions in coverage.functions.items():
        yield from ([file, f"`{name.split('(')[0]}`"] for name, count in functions.items()
                    if not count)


def share(seen):
    """Covered of all."""
    return f"{sum(map(bool, seen))} of {len(seen)}"


def figures(coverage):
    measures = (coverage.lines, coverage.branches, coverage.conditions, coverage.functions)
    files = sorted(file for file in coverage.lines if coverage.lines[file])
    rows = [[file, *(share(measure[file].values()) for measure in measures)] for file in files]
    totals = [share([seen for file in files for seen in measure[file].values()])
              for measure in measures]
    return rows + [["all", *totals]]


def run(options):
    del options
    commands.install("build", "test", "coverage")
    coverage, count = measure()
    excluded, stale = exclude_functions(coverage)
    more_excluded, more_stale = exclude_conditions(coverage)
    missing = stale + more_stale + sorted(uncovered(coverage))
    rows = figures(coverage)
    lines, branches, conditions, instantiations = rows[-1][1:]
    summary = (f"{lines} lines, {branches} branches, {conditions} conditions and {instantiations} "
               f"instantiations are covered by {count} test runs")
    tables = [Table("What the tests reach", ["file", "lines", "branches", "conditions (MC/DC)",
                                             "instantiations"], rows),
              Table("Exclusions", ["file", "place", "what it takes out", "reason"],
                    excluded + more_excluded)]
    if missing:
        for file, what in missing:
            print(f"  {file}: {what}")
        summary += f"; {len(missing)} places are not"
        tables.append(Table("Not covered", ["file", "what"], missing[:50]))
    return Result(not missing, summary + ".", tables)
