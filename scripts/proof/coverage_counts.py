"""What tests reach of a library, as llvm-cov says it."""
import collections
import re

from evidence import commands

MEASURES = ("lines", "branches", "conditions (MC/DC)", "instantiations")


class Coverage:
    """What has been seen of each file that a library covers, over some of its builds."""

    def __init__(self, covers):
        self.covers = covers
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
        for branch in record["branches"]:
            if files[branch[6]]:
                place = (build, record["name"], name, *branch[:4])
                self.branches[files[branch[6]]][place] = branch[4] > 0 and branch[5] > 0
        for *extent, file, _, decided in record["mcdc_records"]:
            for number, decides in enumerate(decided if files[file] else (), start=1):
                place = (build, record["name"], name, *extent, number)
                self.conditions[files[file]][place] = decides

    def of(self, file):
        """What has been seen of a file, by measure."""
        return [measure[file].values()
                for measure in (self.lines, self.branches, self.conditions, self.functions)]

    def uncovered(self):
        """(file, what) of everything that no test reaches."""
        for file, lines in self.lines.items():
            yield from ((file, f"line {line}") for line, count in lines.items() if not count)
        for kind, places in (("branch", self.branches), ("condition", self.conditions)):
            for file, seen in places.items():
                missed = collections.Counter(place[3:5] for place, both in seen.items() if not both)
                yield from ((file, f"{kind} at {line}:{column}, in {count} instantiations")
                            for (line, column), count in missed.items())
        for file, functions in self.functions.items():
            yield from ((file, f"`{name.split('(')[0]}`") for name, count in functions.items()
                        if not count)


def demangled(names):
    plain = commands.run(["llvm-cxxfilt-19"], input="\n".join(names)).stdout.splitlines()
    return dict(zip(names, plain))
