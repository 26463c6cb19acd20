"""How far a call is: a bar on a terminal, lines elsewhere, or nothing."""

from __future__ import annotations

import sys
import time
from collections.abc import Callable, Iterator
from contextlib import contextmanager

from volux.tool._errors import say

# Who waits for less need not be told.
_PATIENCE = 1.0
_STEPS = 10


@contextmanager
def progress(how: str, title: str) -> Iterator[Callable[[float], object] | None]:
    """Yield what a call shall be given as ``progress=``."""
    if how == "none":
        yield None
    elif how == "auto" and sys.stderr.isatty():
        with _bar(title) as told:
            yield told
    else:
        yield _lines(title, 0.0 if how == "plain" else _PATIENCE)


@contextmanager
def _bar(title: str) -> Iterator[Callable[[float], object]]:
    from rich.console import Console
    from rich.progress import BarColumn, Progress, TaskProgressColumn, TextColumn

    columns = (TextColumn("{task.description}"), BarColumn(), TaskProgressColumn())
    with Progress(*columns, console=Console(stderr=True), transient=True) as bar:
        task = bar.add_task(title, total=1.0)
        yield lambda fraction: bar.update(task, completed=fraction)


def _lines(title: str, patience: float) -> Callable[[float], object]:
    began = time.monotonic()
    said = 0

    def tell(fraction: float) -> None:
        nonlocal said
        tenths = int(fraction * _STEPS)
        if tenths > said and time.monotonic() - began >= patience:
            said = tenths
            say(f"{title}: {100 * tenths // _STEPS} %")

    return tell
