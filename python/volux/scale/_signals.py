"""Signals, held back while zarr works."""

from __future__ import annotations

import signal
from collections.abc import Iterator
from contextlib import contextmanager, suppress

_ENDING = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


@contextmanager
def held() -> Iterator[None]:
    """Hold back what would interrupt the block until its end.

    zarr works by tasks of asyncio; an interruption would leave some behind, which asyncio and
    Python complain about when the process ends.
    """
    came: list[int] = []
    before = {}
    with suppress(ValueError):  # signals go to the main thread alone
        for number in _ENDING:
            before[number] = signal.signal(number, lambda number, _: came.append(number))
    try:
        yield
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)
        for first in came[:1]:
            signal.raise_signal(first)
