"""The rows of mutants: how each ended, the tables of them and what they prove."""
import collections

from evidence.commands import ROOT

from .mutant_subject import SAME
from .results import Result, Table

COLUMNS = ["id", "file", "line", "kind", "change", "verdict", "by"]
OUTCOMES = ["killed", SAME, "explained", "unexplained"]


def read(path):
    """Rows of a table by their first column."""
    if not path.exists():
        return {}
    lines = path.read_text(encoding="utf-8").splitlines()[1:]
    return {line.split("\t")[0]: line.split("\t") for line in lines if line.count("\t")}


def row_of(mutant, verdict, by):
    return [mutant.id, mutant.file, str(mutant.line), mutant.kind, mutant.change, verdict, by]


def write(path, rows):
    """Writes a table, which is never there in part."""
    path.parent.mkdir(parents=True, exist_ok=True)
    part = path.with_suffix(".part")
    lines = ["\t".join(row) for row in [COLUMNS, *rows]]
    part.write_text("\n".join(lines) + "\n", encoding="utf-8")
    part.replace(path)


class Journal:
    """Rows that are kept as they come, so that a run that is cut loses none."""

    def __init__(self, path, afresh):
        self.path = path
        self.rows = {} if afresh else read(path)
        write(path, self.rows.values())

    def decided(self, explained):
        """The rows that need not be found again."""
        return {key: row for key, row in self.rows.items()
                if row[5] != "survived" or key in explained}

    def add(self, row):
        self.rows[row[0]] = row
        write(self.path, self.rows.values())


def outcome(row, explained):
    if row[5] == "survived":
        return "explained" if row[0] in explained else "unexplained"
    return row[5]


def tally(rows, column, name, explained):
    counts = collections.defaultdict(collections.Counter)
    for row in rows:
        for key in (row[column], "all"):
            counts[key][outcome(row, explained)] += 1
    order = sorted(key for key in counts if key != "all") + ["all"]
    lines = [[key, sum(counts[key][one] for one in OUTCOMES),
              *(counts[key][one] for one in OUTCOMES), counts[key]["not compiled"]]
             for key in order]
    columns = [name, "mutants", "killed", SAME, "explained", "survived unexplained",
               "(not compiled, not counted)"]
    return Table(f"Mutants by {name}", columns, lines)


def explanations(rows, explained):
    return Table("Explained survivors", ["mutant", "file", "line", "change", "why nobody can tell"],
                 [[row[0], row[1], row[2], f"`{row[4]}`", explained[row[0]][1]] for row in rows
                  if outcome(row, explained) == "explained"])


def result_of(subject, rows, campaign, complete, wrong=()):
    explained = read(subject.explained)
    counts = collections.Counter(outcome(row, explained) for row in rows)
    counted = sum(counts[one] for one in OUTCOMES)
    same = counts[SAME] + counts["explained"]
    summary = (f"{counted} mutants: {counts['killed']} killed, {same} the same program "
               f"({counts[SAME]} by object code, {counts['explained']} explained), "
               f"{counts['unexplained']} survived")
    left = [row for row in rows if outcome(row, explained) == "unexplained"]
    if left:
        summary += (f" ({', '.join(row[0] for row in left)}: let a test kill it, or explain it in "
                    f"{subject.explained.relative_to(ROOT)})")
    if wrong:
        summary += f"; explained without need: {', '.join(wrong)}"
    tables = [tally(rows, 1, "file", explained), tally(rows, 3, "kind", explained)]
    if left:
        tables.append(Table("Survivors", COLUMNS[:5], [row[:5] for row in left]))
    if counts["explained"]:
        tables.append(explanations(rows, explained))
    enough = counted >= (subject.fewest if campaign else 1)
    return Result(enough and not left and not wrong, summary + ".", tables, campaign,
                  complete=complete)
