"""Writes the reference of the Python package from its docstrings.

Usage: python python/tests/reference.py
"""

import inspect
import re
from pathlib import Path
from textwrap import dedent, fill, indent

import volux

FOLDER = Path(__file__).parents[2] / "docs" / "python" / "reference"
COMMAND = "python python/tests/reference.py"
GROUPS = {
    "Volumes and their place": [volux.Image, volux.Grid],
    "On other grids": [volux.resample, volux.resize, volux.AliasingWarning],
    "Planes": [volux.reslice, volux.Plane],
    "At points": [volux.sample, volux.sample_gradient],
    "Transforms": [volux.Affine, volux.Displacement, volux.compose, volux.Composite],
    "How calls run": [volux.support, volux.threads, volux.digest],
    "Calls of scipy": [getattr(volux.ndimage, name) for name in volux.ndimage.__all__],
}
OPERATORS = {"__call__": "transform(points)", "__getitem__": "grid[box]"}
HEAD = f"""\
# Reference of the Python package

Every public name, as `help()` describes it. `{COMMAND}`
makes these pages from the docstrings.
"""


def pages():
    """The text of each page by the name of its file."""
    made = {f"{_anchor(group)}.md": _page(group) for group in GROUPS}
    return {"index.md": f"{HEAD}\n{_contents()}"} | made


def _page(group):
    parts = [f"# {group}\n"]
    if group == "Calls of scipy":
        parts.append(_body(inspect.getdoc(volux.ndimage)))
    for thing in GROUPS[group]:
        parts.extend(_described(thing))
    return "\n".join(parts)


def _contents():
    lines = []
    for group, things in GROUPS.items():
        file = f"{_anchor(group)}.md"
        names = [_name(thing) for thing in things]
        links = [f"[`{name}`]({file}#{_anchor(name)})" for name in names]
        lines.append(_wrapped(f"[{group}]({file}): {', '.join(links)}", "- "))
    return "\n".join(lines) + "\n"


def _anchor(title):
    return re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")


def _name(thing):
    return f"{thing.__module__.partition('._')[0]}.{thing.__qualname__}"


def _described(thing):
    """A function, or a class and what it offers."""
    yield f"## {_name(thing)}\n"
    if thing not in (volux.AliasingWarning, volux.Composite):  # which nobody makes by a call
        yield _fenced(_signature(thing.__qualname__, thing))
    yield _body(inspect.getdoc(thing))
    if inspect.isclass(thing) and not issubclass(thing, Warning):
        yield from _properties(thing)
        yield from _methods(thing)


def _properties(kind):
    """The properties that the docstring of the class does not list itself."""
    listed = _sections(inspect.getdoc(kind)).get("Attributes", "")
    members = [(n, m) for n, m in inspect.getmembers(kind) if isinstance(m, property)]
    new = [(n, m) for n, m in members if n[0] != "_" and not re.search(rf"\b{n}\b", listed)]
    if new:
        items = [_wrapped(f"`{name}`: {_joined(inspect.getdoc(m))}", "- ") for name, m in new]
        yield "**More attributes**\n\n" + "\n".join(items) + "\n"


def _methods(kind):
    for name, member in inspect.getmembers(kind, inspect.isroutine):
        is_ours = (getattr(member, "__module__", None) or "").startswith("volux")
        if is_ours and (name[0] != "_" or name in ("__call__", "__getitem__")):
            yield f"### `{kind.__name__}.{name}`\n"
            yield _fenced(OPERATORS.get(name) or _signature(f"{kind.__name__}.{name}", member))
            yield _body(inspect.getdoc(member))


def _signature(name, call):
    parameters = inspect.signature(call).parameters.values()
    own = [p.replace(annotation=p.empty) for p in parameters if p.name != "self"]
    text = str(inspect.Signature(own)).replace("'", '"')
    return fill(f"{name}{text}", 96, subsequent_indent="    ")


def _fenced(text, language=""):
    return f"```{language}\n{text}\n```\n"


def _sections(text):
    """The parts of a docstring by their titles; what comes first is None's."""
    first, *others = re.split(r"^(\w[\w ]*)\n-+\n", text, flags=re.MULTILINE)
    return {None: first} | dict(zip(others[::2], others[1::2], strict=True))


def _body(text):
    parts = []
    for title, part in _sections(text).items():
        words = part.strip().replace("``", "`")
        if title is None:
            parts.append(words)
        elif title == "Examples":
            parts.append(_fenced(part.strip(), "pycon").rstrip())
        else:
            made = words if title == "Notes" else _entries(words, title)
            parts.append(f"**{title}**\n\n{made}")
    return "\n\n".join(parts) + "\n"


def _entries(text, title):
    """The list of what a section defines: a line for each, and its indented description."""
    return "\n".join(_wrapped(_entry(entry, title), "- ") for entry in re.split(r"\n(?=\S)", text))


def _entry(text, title):
    head, _, rest = text.partition("\n")
    names, _, kind = head.partition(" : ")
    if title == "See Also":
        return f"`{names}`: {kind}"
    code = re.sub(r"[\w.]+", r"`\g<0>`", names) if kind or title != "Returns" else names
    return f"{code}{f' ({kind})' if kind else ''}: {_joined(rest)}"


def _joined(text):
    return " ".join(dedent(text).split())


def _wrapped(text, bullet):
    # A line must not begin with a hyphen, which would be an item of its own.
    kept = text.replace(" - ", "\N{NO-BREAK SPACE}- ")
    lines = fill(kept, 98, break_on_hyphens=False, break_long_words=False)
    return (bullet + indent(lines, "  ")[2:]).replace("\N{NO-BREAK SPACE}", " ")


if __name__ == "__main__":
    FOLDER.mkdir(exist_ok=True)
    for name, text in pages().items():
        (FOLDER / name).write_text(text)
