"""What tests reach of a library, as llvm-cov says it."""
import collections
import re

from evidence import commands

MEASURES = ("lines", "branches", "conditions (MC/DC)", "instantiations")


class Outcomes:
    """How often a branch was taken and how often not; true where it has been both."""

    def __init__(self):
        self.true = self.false = 0

    def add(self, true, false):
        self.true += true
        self.false += false

    def __bool__(self):
        return self.true > 0 and self.false > 0


class Coverage:
    """What has been seen of each file that a library covers, over some of its builds. A branch is
    the two outcomes that it has had; where instantiations count together, in any of them."""

    def __init__(self, covers, together=False):
        self.covers, self.together = covers, together
        self.lines = collections.defaultdict(collections.Counter)
        self.branches = collections.defaultdict(dict)
        self.conditions = collections.defaultdict(dict)
        self.functions = collections.defaultdict(collections.Counter)
        self.extents = collections.defaultdict(set)  # of each function, as (first, last) lines

    def in_library(self, file):
        """The name of a file of the library within the repository, or None."""
        relative = file.removeprefix(f"{commands.ROOT}/")
        covered = relative.startswith(("include/", "src/")) and self.covers(relative)
        return relative if covered else None

    def add_lines(self, listing):
        """Reads the lines of an lcov listing."""
        for line in listing.splitlines():
            if line.startswith("SF:"):
                file = self.in_library(line[3:])
            elif line.startswith("DA:") and file:
                number, count = line[3:].split(",")[:2]
                self.lines[file][int(number)] += int(count)

    def add_functions(self, build, records):
        # The name of an internal function begins with its source.
        names = demangled([re.sub(r"^[^:]*:", "", record["name"]) for record in records])
        for record in records:
            self.add_function(build, names[re.sub(r"^[^:]*:", "", record["name"])], record)

    def add_function(self, build, name, record):
        files = [self.in_library(file) for file in record["filenames"]]
        if files[0] is None or "volux::test::" in name:
            return
        self.functions[files[0]][name] += record["count"]
        self.extents[files[0], name].update(
            (region[0], region[2]) for region in record["regions"] if region[5] == 0)
        instance = (build, "", "") if self.together else (build, record["name"], name)
        for *extent, true, false, file, _, _ in record["branches"]:
            if files[file]:
                branch = self.branches[files[file]].setdefault((*instance, *extent), Outcomes())
                branch.add(true, false)
        for *extent, file, _, decided in record["mcdc_records"]:
            seen = self.conditions[files[file]] if files[file] else {}
            for number, decides in enumerate(decided, start=1):
                place = (*instance, *extent, number)
                seen[place] = seen.get(place, False) or decides

    def of(self, file):
        """What has been seen of a file, by measure."""
        return [measure[file].values()
                for measure in (self.lines, self.branches, self.conditions, self.functions)]

    def uncovered(self):
        """(file, what) of everything that no test reaches."""
        for file, lines in self.lines.items():
            yield from ((file, f"line {line}") for line, count in lines.items() if not count)
        for places in (self.branches, self.conditions):
            for file, seen in places.items():
                missed = collections.Counter(map(described, (
                    place for place, covered in seen.items() if not covered)))
                yield from ((file, what if self.together else f"{what}, in {count} instantiations")
                            for what, count in missed.items())
        for file, functions in self.functions.items():
            yield from ((file, f"`{name.split('(')[0]}`") for name, count in functions.items()
                        if not count)


def described(place):
    """Says what is at the place of a branch, or of a condition, which has a number."""
    line, column, *_ = place[3:]
    kind = f"condition {place[7]}" if len(place) > 7 else "branch"
    return f"{kind} at {line}:{column}"


def demangled(names):
    plain = commands.run(["llvm-cxxfilt-19"], input="\n".join(names)).stdout.splitlines()
    return dict(zip(names, plain))
