"""Writes docs/proof.md from the results in docs/proof: no figure in it is typed by hand."""
import dataclasses
from pathlib import Path

from evidence import markdown
from evidence.commands import ROOT

from .results import Record, sources_today

PAGE = ROOT / "docs" / "proof.md"
TEMPLATES = Path(__file__).parent / "templates"


def listed(names):
    return ", ".join(f"`{name}`" for name in names)


@dataclasses.dataclass
class Standing:
    """What is kept of a check, beside the sources and the check as they are now."""

    name: str
    check: object
    records: list

    def is_old(self, record):
        return record.sources != sources_today(self.check)

    @property
    def old(self):
        return [record for record in self.records if self.is_old(record)]

    @property
    def lacking(self):
        """Returns the parts of the check that none of its results covers."""
        parts = getattr(self.check, "PARTS", ()) if self.records else ()
        return [part for part in parts
                if all(part in record.lacks(self.check) for record in self.records)]

    @property
    def is_proved(self):
        """Whether all that the check covers has held on today's sources."""
        return any(record.result.passed and not self.is_old(record)
                   and not record.lacks(self.check) for record in self.records)

    def verdict(self):
        if not self.records:
            return "**not run**"
        if not all(record.result.passed for record in self.records):
            return "**no**"
        parts = f", without {listed(self.lacking)}" if self.lacking else ""
        if not self.old:
            return "held" + parts
        how_far = " in part" if len(self.old) < len(self.records) else ""
        return f"held{how_far} on older sources{parts}"

    def row(self):
        sources = dict.fromkeys(record.sources + (", older" if self.is_old(record) else "")
                                for record in self.records)
        return [self.check.PROMISE, self.check.BREAKER,
                self.records[0].result.summary if self.records else "",
                f"`scripts/prove {self.name}`: {self.verdict()}", "; ".join(sources)]

    def remarks(self):
        """Returns a sentence for each way in which the page says less than the check would now."""
        for record in self.old:
            yield (f"{self.name}: the result of {record.when} was found on sources "
                   f"{record.sources}, which have changed since")
        if self.lacking:
            yield f"{self.name}: no result covers {listed(self.lacking)}"

    def section(self, number):
        lines = [*markdown.heading(2, f"{number}. {self.check.TITLE}"),
                 markdown.filled(TEMPLATES / f"{self.name}.md")]
        if not self.records:
            lines += ["**Not run yet.**", ""]
        for record in self.records:
            lines += self.found(record)
        return lines

    def found(self, record):
        verdict = "Held" if record.result.passed else "**Did not hold**"
        lines = [f"**{verdict}: {record.result.summary}**", "",
                 *markdown.provenance(dataclasses.asdict(record), sources_today(self.check))]
        if record.lacks(self.check):
            lines += [f"This result does not cover {listed(record.lacks(self.check))}, which the "
                      "check has covered since.", ""]
        return lines + [line for table in record.result.tables for line in table_lines(table)]


def table_lines(table):
    return [f"{table.caption}:", "", *markdown.table(table.columns, table.rows)]


def standings(checks):
    return [Standing(name, check, Record.kept(name)) for name, check in checks.items()]


def remarks(checks):
    return [remark for standing in standings(checks) for remark in standing.remarks()]


def summary(found):
    """Says how many checks have results of older sources, or of less than the check is now."""
    old = [standing.name for standing in found if standing.old]
    lacking = [standing.name for standing in found if standing.lacking]
    text = (f"**{len(old)} of the {len(found)} checks have results that were found on sources "
            f"which have changed since** ({listed(old)}): they say what held then." if old
            else f"All results of the {len(found)} checks were found on today's sources.")
    if lacking:
        text += (f" The results of {len(lacking)} ({listed(lacking)}) do not cover all that the "
                 "check covers now.")
    return text


def texts(checks):
    """Returns docs/proof.md as the results and today's sources make it."""
    found = standings(checks)
    overview = markdown.table(["what is promised", "what would break it", "how sure we are",
                               "who looks", "sources"], [each.row() for each in found])
    sections = [line for number, each in enumerate(found, start=1) for line in each.section(number)]
    return {PAGE: markdown.filled(TEMPLATES / "page.md", summary=summary(found),
                                  overview="\n".join(overview), sections=markdown.page(sections))}
