"""Writes Markdown: the rows, tables and pages of docs/proof.md and docs/performance.md."""
import re
import string

NUMBER = re.compile(r"[-+]?[\d.,]+(e[-+]\d+)?(?!\w)")  # how a cell of a column of them begins


def row(cells):
    return "| " + " | ".join(str(cell).replace("|", "\\|") for cell in cells) + " |"


def table(columns, rows):
    """Returns the lines of a table and a blank one; columns of numbers are aligned to the right."""
    rows = [[str(cell) for cell in cells] for cells in rows]
    marks = ["---:" if any(cells) and all(NUMBER.match(cell) for cell in filter(None, cells))
             else "---" for cells in zip(*rows)]
    return [row(columns), row(marks or ["---"] * len(columns)), *map(row, rows), ""]


def heading(level, text):
    return ["#" * level + " " + text, ""]


def provenance(how, sources_today, *details):
    """Returns the line that says how a result was found, from the fields of its record."""
    mark = "" if how["sources"] == sources_today else " (which have changed since)"
    place = "; ".join([how["machine"], *details])
    return [f"`{how['command']}`, {how['when']}, sources {how['sources']}{mark}, "
            f"{how['seconds']} s on {place}.", ""]


def filled(template, **fields):
    """Returns the text of a template file, its $fields replaced, ending in one newline."""
    text = string.Template(template.read_text(encoding="utf-8")).substitute(fields)
    return text.rstrip("\n") + "\n"


def page(lines):
    """Returns lines as a file's text, which ends in one newline."""
    return "\n".join(lines).rstrip("\n") + "\n"


def write(texts):
    """Writes files, given as a dictionary of path and text."""
    for path, text in texts.items():
        path.write_text(text, encoding="utf-8")


def are_current(texts):
    """Tells whether each file holds its text, and nothing else."""
    return all(path.exists() and path.read_text(encoding="utf-8") == text
               for path, text in texts.items())
