"""Writes docs/performance.md and the tables of README and docs/scale.md from the records in
docs/performance: no figure in them is typed.
"""
import re
from pathlib import Path

from evidence import markdown
from evidence.commands import ROOT

from . import bulk, counts, overhead, python, record, scale, times, tool

MEASUREMENTS = {
    "times": times,
    "bulk": bulk,
    "counts": counts,
    "overhead": overhead,
    "python": python,
    "tool": tool,
    "scale": scale,
}
PAGE = ROOT / "docs" / "performance.md"
README = ROOT / "README.md"
PAPER = ROOT / "docs" / "scale.md"
TEMPLATES = Path(__file__).parent / "templates"
OLDER = "Some of these figures were measured on sources that have changed since."
MARKED = re.compile(r"(<!-- scripts/bench report -->\n).*?(<!-- end -->\n)", re.DOTALL)


def provenance(name, found):
    """Returns when, on what and by what; nothing for a record that scripts/bench did not make."""
    if record.KEY not in found:
        return []
    how = found[record.KEY]
    start, end = how["load"]
    return markdown.provenance(
        how, record.sources_today(name), how["kernel"], how["processor"],
        f"{how['compiler']}, `{how['flags']}`",
        f"load average {start} at the start and {end} at the end")


def section(name, measurement):
    found = record.kept(name)
    lines = [*markdown.heading(2, measurement.TITLE), markdown.filled(TEMPLATES / f"{name}.md")]
    if found is None:
        return [*lines, "**Not measured yet.**", ""]
    return [*lines, *provenance(name, found), *measurement.tables(found)]


def page():
    lines = [line for name, measurement in MEASUREMENTS.items()
             for line in section(name, measurement)]
    return markdown.filled(TEMPLATES / "page.md", sections=markdown.page(lines))


def is_older(name, found):
    """Returns whether a record is of other sources than today's."""
    return found.get(record.KEY, {}).get("sources") != record.sources_today(name)


def readme():
    """Returns README with its table as the record has it."""
    found = {name: record.kept(name) for name in ("times", "bulk")}
    lines = []
    if None not in found.values():
        lines = times.summary(found["times"], found["bulk"], bulk.SETS[0])[:-1]
        if any(is_older(name, kept) for name, kept in found.items()):
            lines += ["", OLDER]
    return between_marks(README, [*lines, ""])


def between_marks(page, lines):
    """Returns the text of a page that is written by hand, but for what is between two marks."""
    return MARKED.sub(lambda marks: marks[1] + "\n".join(lines) + marks[2],
                      page.read_text(encoding="utf-8"))


def paper():
    """Returns the page on volumes beyond memory with its table as the record has it."""
    found = record.kept("scale")
    lines = ["", *scale.paper_table(found)] if found else ["", "**Not measured yet.**", ""]
    return between_marks(PAPER, [*lines, ""])


def texts():
    """Returns the page and README as the records and today's sources make them."""
    return {PAGE: page(), README: readme(), PAPER: paper()}
