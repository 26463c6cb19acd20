"""Work that goes on beside other work."""

from __future__ import annotations

from collections.abc import Callable
from threading import Thread
from typing import Generic, TypeVar

T = TypeVar("T")


class Meanwhile(Generic[T]):
    """A call that has begun on a thread of its own.

    Parameters
    ----------
    call : callable
        What it raises is raised by `result`.
    """

    def __init__(self, call: Callable[[], T]) -> None:
        self._call = call
        self._error: BaseException | None = None
        self._thread = Thread(target=self._run, daemon=True)
        try:
            self._thread.start()
        except RuntimeError:  # there is no memory for a thread, or there are too many
            self._run()

    def _run(self) -> None:
        try:
            self._value = self._call()
        except BaseException as error:  # whoever waits for the result decides
            self._error = error

    def result(self) -> T:
        """Wait for the end of the call, and return what it returned."""
        if self._thread.ident is not None:
            self._thread.join()
        if self._error is not None:
            raise self._error
        return self._value
