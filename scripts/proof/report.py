"""Writes docs/proof.md from the results in docs/proof: no figure in it is typed by hand."""
from .common import ROOT
from .results import Record

PAGE = ROOT / "docs" / "proof.md"
HEAD = """# The proof

<!-- Written by `scripts/prove report` from the results in docs/proof; edit those scripts. -->

Every result of the library is promised to the last bit, on every compiler and processor; of a NaN,
only that it is one. These eleven checks are the evidence, and `scripts/prove` runs them all again;
`scripts/prove CHECK` runs one, and `scripts/prove CHECK --help` says how to make it longer. Each
result says when it was found, on what and with which command; `sources` are the first digits of a
SHA-256 over the module's files in `include/` and `src/`, and for whole volumes over the companion's
as well.

"""


def row(cells):
    return "| " + " | ".join(str(cell).replace("|", "\\|") for cell in cells) + " |\n"


def table(found):
    return (f"\n{found.caption}:\n\n" + row(found.columns) + row(["---"] * len(found.columns))
            + "".join(row(cells) for cells in found.rows))


def provenance(record):
    verdict = "Held" if record.result.passed else "**Did not hold**"
    return (f"\n**{verdict}: {record.result.summary}**\n\n"
            f"`{record.command}`, {record.when}, sources {record.sources}, {record.seconds} s on "
            f"{record.machine}.\n")


def section(number, name, check):
    text = f"## {number}. {check.TITLE}\n\n{check.ABOUT.strip()}\n"
    records = Record.kept(name)
    if not records:
        text += "\n**Not run yet.**\n"
    for record in records:
        text += provenance(record) + "".join(map(table, record.result.tables))
    return text


def overview(checks):
    rows = []
    for name, check in checks.items():
        records = Record.kept(name)
        held = bool(records) and all(record.result.passed for record in records)
        rows.append([f"`scripts/prove {name}`", "held" if held else "**no**",
                     records[0].result.summary if records else "not run yet",
                     " and ".join(dict.fromkeys(record.sources for record in records))])
    return (row(["check", "", "result", "sources"]) + row(["---"] * 4)
            + "".join(map(row, rows)))


def page(checks):
    sections = [section(number, name, check)
                for number, (name, check) in enumerate(checks.items(), start=1)]
    return HEAD + overview(checks) + "\n" + "\n".join(sections)


def write(checks):
    PAGE.write_text(page(checks), encoding="utf-8")


def is_current(checks):
    """Whether docs/proof.md says what the results say, and nothing else."""
    return PAGE.exists() and PAGE.read_text(encoding="utf-8") == page(checks)
