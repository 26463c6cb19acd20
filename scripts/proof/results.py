"""What a check found, and how it is kept."""
import dataclasses

from evidence import provenance
from evidence.commands import ROOT

KEPT = ROOT / "docs" / "proof"


@dataclasses.dataclass
class Table:
    caption: str
    columns: list
    rows: list


@dataclasses.dataclass
class Result:
    passed: bool
    summary: str  # one sentence, with the figure that counts
    tables: list = dataclasses.field(default_factory=list)
    campaign: bool = False  # a long one, kept beside the sample of it that every whole run takes
    complete: bool = True  # nothing was left out by an option, so that it can be recorded


def sources_today(check):
    """Returns the digest of the sources that a result of a check, a module, would hold for now."""
    return provenance.sources(getattr(check, "WITH_RESAMPLE", False),
                              getattr(check, "MORE_SOURCES", ()))


@dataclasses.dataclass
class Record:
    """A result with what is needed to repeat it."""

    check: str
    command: str
    when: str
    sources: str
    machine: str
    seconds: int
    result: Result

    @staticmethod
    def of(name, check, arguments, result, seconds):
        return Record(check=name, result=result, sources=sources_today(check),
                      **provenance.of_run("scripts/prove", arguments, seconds))

    @staticmethod
    def load(path):
        fields = provenance.load(path)
        found = fields.pop("result")
        tables = [Table(**table) for table in found.pop("tables")]
        return Record(result=Result(tables=tables, **found), **fields)

    @staticmethod
    def kept(name):
        """Returns the records of the campaign, where there is one, and of the latest whole run."""
        paths = (KEPT / f"{name}-campaign.json", KEPT / f"{name}.json")
        return [Record.load(path) for path in paths if path.exists()]

    def save(self):
        name = f"{self.check}-campaign" if self.result.campaign else self.check
        provenance.save(KEPT / f"{name}.json", dataclasses.asdict(self))

    def lacks(self, check):
        """Returns the parts of a check, as it is now, that this result has no row for."""
        covered = {str(row[0]).strip("`") for table in self.result.tables for row in table.rows}
        return [part for part in getattr(check, "PARTS", ()) if part not in covered]
