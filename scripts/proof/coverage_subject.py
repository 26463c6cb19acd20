"""What coverage is measured of: a library, its builds, and the tests that run against them."""
import collections
import dataclasses
import json
from typing import Callable

from evidence import commands
from evidence.commands import Failure

from . import suite
from .coverage_counts import MEASURES, Coverage
from .coverage_exclusions import exclude_conditions, exclude_functions, exclude_places
from .results import Result, Table


@dataclasses.dataclass(frozen=True)
class Subject:
    """A library and all that its coverage needs."""

    library: str  # its file
    programs: tuple
    builds: dict  # the flags that each adds, by its name
    covers: Callable  # says whether a source, by its name in the repository, is the library's
    tests: Callable  # builds the test programs and the library without more flags; gives the folder
    module: Callable  # builds the library alone, given a build's name and its flags; likewise
    functions: list  # left out: a regular expression that matches their names, reason
    conditions: list  # left out: function, which of its decision (and so which branch), reason
    places: tuple = ()  # left out: file, what a line, branch or condition begins with, reason
    words: tuple = ()  # for the test programs
    apart: str = ""  # what the builds are, where each must be covered by itself,
    mark: str = ""  # and what names in each have, given its own
    together: bool = False  # whether any instantiation covers a branch for all

    def result(self):
        """Measures and judges it."""
        coverages, count = measure(self)
        found = [exclude(exclusions, coverages.values()) for exclude, exclusions in
                 ((exclude_functions, self.functions), (exclude_conditions, self.conditions),
                  (exclude_places, self.places))]
        excluded = [row for rows, _ in found for row in rows]
        stale = [["", remark] for _, remarks in found for remark in remarks]
        return judged(self, coverages, count, excluded, stale + missing(self, coverages))


def run_tests(subject, build, tests, module):
    """Gives the merged profile of all test programs and how many tests there were."""
    profiles, total = [], 0
    for program in subject.programs:
        profile = module / f"{program}.profraw"
        profile.unlink(missing_ok=True)
        passed, log = suite.run(tests, program, module, f"proof-coverage-{module.name}",
                                words=subject.words, LLVM_PROFILE_FILE=str(profile))
        if passed is None:
            raise Failure(f"{program} fails in the instrumented build ({build}); see {log}.")
        profiles.append(profile)
        total += passed
    merged = module / "all.profdata"
    if commands.run(["llvm-profdata-19", "merge", "-o", merged, *profiles]).returncode != 0:
        raise Failure("llvm-profdata-19 cannot merge the profiles.")
    return merged, total


def export(subject, tests, module, profile, *form):
    objects = [word for program in subject.programs
               for word in ("-object", tests / "tests" / program)]
    done = commands.run(["llvm-cov-19", "export", "-instr-profile", profile, *form,
                         module / subject.library, *objects, "-sources",
                         commands.ROOT / "include", commands.ROOT / "src"])
    if done.returncode != 0:
        raise Failure(f"llvm-cov-19 fails: {done.stderr.splitlines()[-1]}.")
    return done.stdout


def measure_build(subject, build, tests):
    """Gives how many tests there were, and what they reach, as an lcov listing and as JSON."""
    flags = subject.builds[build]
    module = subject.module(build, flags) if flags else tests
    profile, count = run_tests(subject, build, tests, module)
    return (count, export(subject, tests, module, profile, "-format=lcov", "-skip-branches"),
            export(subject, tests, module, profile))


def measure(subject):
    """Gives what the tests reach, over all builds or by build, and how many there were."""
    tests = subject.tests()
    found = commands.at_once(lambda build: measure_build(subject, build, tests), subject.builds)
    coverages = {}
    for build, (_, listing, exported) in zip(subject.builds, found):
        name = build if subject.apart else "all"
        coverage = coverages.setdefault(name, Coverage(subject.covers, subject.together))
        coverage.add_lines(listing)
        records = json.loads(exported)["data"][0]["functions"]
        if not any(subject.mark.format(build) in record["name"] for record in records):
            raise Failure(f"the build {build} is not what its flags were to make of it.")
        coverage.add_functions(build, records)
    return coverages, sum(count for count, _, _ in found)


def missing(subject, coverages):
    """[file, what] of everything that no test reaches, and in which builds."""
    places = collections.defaultdict(list)
    for build, coverage in coverages.items():
        for place in coverage.uncovered():
            places[place].append(build)
    return [[file, f"{what} ({', '.join(builds)})" if subject.apart else what]
            for (file, what), builds in sorted(places.items())]


def share(seen):
    """Covered of all."""
    return f"{sum(map(bool, seen))} of {len(seen)}"


def shares(coverages, files):
    """What is covered of all in some files, by measure."""
    found = [coverage.of(file) for coverage in coverages for file in files]
    return [share([seen for measures in found for seen in measures[number]])
            for number in range(len(MEASURES))]


def tables_of(subject, coverages):
    """What is reached by file, and by build where each counts by itself."""
    whole = coverages.values()
    files = sorted({file for coverage in whole for file in coverage.lines if coverage.lines[file]})
    rows = [[file, *shares(whole, [file])] for file in files] + [["all", *shares(whole, files)]]
    tables = [Table("What the tests reach", ["file", *MEASURES], rows)]
    if subject.apart:
        by_build = [[f"`{build}`", *shares([coverage], files)]
                    for build, coverage in coverages.items()]
        tables.append(Table(f"By {subject.apart}", [subject.apart, *MEASURES], by_build))
    return rows[-1][1:], tables


def judged(subject, coverages, count, excluded, left):
    """Gives the result, and says at once what is not covered."""
    (lines, branches, conditions, instantiations), tables = tables_of(subject, coverages)
    summary = (f"{lines} lines, {branches} branches, {conditions} conditions and {instantiations} "
               f"instantiations are covered by {count} test runs")
    if subject.apart:
        summary += f" with {', '.join(coverages)}"
    tables.append(Table("Exclusions", ["file", "place", "what it takes out", "reason"], excluded))
    if left:
        for file, what in left:
            print(f"  {file}: {what}")
        summary += f"; {len(left)} places are not"
        tables.append(Table("Not covered", ["file", "what"], left[:50]))
    return Result(not left, summary + ".", tables)
