"""How many threads work."""

from __future__ import annotations

from collections.abc import Iterator
from contextlib import AbstractContextManager, contextmanager
from contextvars import ContextVar

from volux._numbers import whole

_default: ContextVar[int] = ContextVar("volux.threads", default=0)


def threads(n: int) -> AbstractContextManager[None]:
    """Set how many threads work in the calls of a with block.

    Parameters
    ----------
    n : int
        At least 1. The calls whose own ``threads=`` is None follow it. Outside of all such blocks
        there is one thread for each processor that the process may use. The bits of a result do
        not depend on it.

    Returns
    -------
    context manager
        It counts for this thread of Python's, or for this task of asyncio's.

    Raises
    ------
    TypeError, ValueError
        If `n` is not a whole number, or below 1.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> with volux.threads(2):
    ...     small = volux.resize(np.zeros((8, 8, 8)), shape=(4, 4, 4))
    """
    return _set(whole("n", n))


@contextmanager
def _set(n: int) -> Iterator[None]:
    token = _default.set(n)
    try:
        yield
    finally:
        _default.reset(token)


def threads_of(threads: int | None) -> int:
    """Return the number for a call; 0 is one for each processor."""
    return _default.get() if threads is None else whole("threads", threads)
