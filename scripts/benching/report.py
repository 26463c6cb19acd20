"""Writes docs/performance.md, and README's table, from the records in docs/performance: no figure in
them is typed.
"""
import re

from proof.common import ROOT

from . import bulk, counts, overhead, record, times

MEASUREMENTS = {
    "times": times,
    "bulk": bulk,
    "counts": counts,
    "overhead": overhead,
}
PAGE = ROOT / "docs" / "performance.md"
README = ROOT / "README.md"
MARKED = re.compile(r"(<!-- scripts/bench report -->\n).*?(<!-- end -->\n)", re.DOTALL)
HEAD = """# Performance

<!-- Written by `scripts/bench report` from the records in docs/performance; edit those scripts. -->

How fast the module and `volux_resample` are, beside other libraries and beside plain memory.
`scripts/bench --record` measures everything again and writes this page; `scripts/bench MEASUREMENT`
runs one part, and `--help` says how to make it longer or shorter. Lower is better everywhere. Each
part says when and on what it was measured; `sources` are the first digits of a SHA-256 over
the module's files in `include/` and `src/`, and for whole volumes over the companion's as well.

"""


def provenance(found):
    """When, on what and by what; nothing for a record that was not made by scripts/bench."""
    if record.KEY not in found:
        return []
    how = found[record.KEY]
    start, end = how["load"]
    return [f"`{how['command']}`, {how['when']}, sources {how['sources']}, {how['seconds']} s on "
            f"{how['machine']}, {how['kernel']}; {how['processor']}; {how['compiler']}, "
            f"`{how['flags']}`; load average {start} at the start and {end} at the end.", ""]


def section(name, measurement):
    found = record.kept(name)
    lines = [f"## {measurement.TITLE}", "", measurement.ABOUT.strip(), ""]
    if found is None:
        return [*lines, "**Not measured yet.**", ""]
    return [*lines, *provenance(found), *measurement.tables(found)]


def page():
    lines = [line for name, measurement in MEASUREMENTS.items()
             for line in section(name, measurement)]
    return HEAD + "\n".join(lines).rstrip("\n") + "\n"


def readme():
    """README with its table as the record has it."""
    found = record.kept("times")
    lines = [] if found is None else times.summary(found)[:-1]
    return MARKED.sub(lambda marks: marks[1] + "\n".join([*lines, ""]) + marks[2],
                      README.read_text(encoding="utf-8"))


def texts():
    return {PAGE: page(), README: readme()}


def write():
    for path, text in texts().items():
        path.write_text(text, encoding="utf-8")


def is_current():
    """Whether the page and README say what the records say, and nothing else."""
    return all(path.exists() and path.read_text(encoding="utf-8") == text
               for path, text in texts().items())
