"""How the command runs and how it ends."""

from __future__ import annotations

import gc
import os
import signal
import sys
import warnings
from collections.abc import Iterator
from contextlib import contextmanager, suppress
from importlib.util import find_spec
from io import TextIOWrapper
from types import FrameType
from typing import Any

from volux.tool._errors import FAILURE, INSTALL, INTERRUPTED, MISUSE, SUCCESS, Refusal, say

# More than all modules make when they are imported.
_OBJECTS = 200_000


def run(given: list[str]) -> int:
    """Run the command, whatever happens, and return its exit code."""
    try:
        with _interruptible(), warnings.catch_warnings():
            warnings.showwarning = _warn
            if isinstance(sys.stdout, TextIOWrapper):  # names of files are any bytes
                sys.stdout.reconfigure(errors="surrogateescape")
            code = _run(given)
        print(end="", flush=True)  # what cannot be written any more is told now
    except Refusal as refusal:
        say(refusal)
        return refusal.code
    except KeyboardInterrupt:
        return _interrupted()
    except BrokenPipeError:
        _let_go_of_stdout()  # nobody reads any more
        return FAILURE
    except OSError as error:
        _let_go_of_stdout()
        say(_of_the_system(error))
        return FAILURE
    except Exception as error:  # whatever happens: a line for the user, and no traceback
        say(_described(error))
        return FAILURE
    return code


def _run(given: list[str]) -> int:
    if find_spec("typer") is None:
        raise Refusal(f"the package typer is not installed: {INSTALL}")
    with _seldom_collecting():
        return _parsed_and_run(given)


def _parsed_and_run(given: list[str]) -> int:
    from typer.exceptions import TyperException

    from volux.tool._verbs import command

    try:
        code = command(given)()
    except TyperException as error:
        say(_misused(error, given))
        return MISUSE
    if code == INTERRUPTED:
        return _interrupted()
    return int(code or SUCCESS)


@contextmanager
def _seldom_collecting() -> Iterator[None]:
    """Look for garbage seldom: what is imported stays, and to look takes a tenth of the time."""
    before = gc.get_threshold()
    gc.set_threshold(_OBJECTS, *before[1:])
    try:
        yield
    finally:
        gc.set_threshold(*before)


def _misused(error: Any, given: list[str]) -> str:
    from volux.tool._verbs import VERBS

    path = f"volux {given[0]}" if given and given[0] in VERBS else "volux"
    said = error.format_message().rstrip(".")
    return f"{said}: `{path} --help` shows what is allowed"


def _described(error: Exception) -> str:
    if isinstance(error, MemoryError):
        return "there is not enough memory; end other programs, or allow more (ulimit -v)"
    return f"failed, for a reason that it should have said itself: {type(error).__name__}: {error}"


def _interrupted() -> int:
    say("interrupted; no output was written")
    return INTERRUPTED


def _of_the_system(error: OSError) -> str:
    return f"{error.filename or 'stdin or stdout'}: {error.strerror or error}"


def _let_go_of_stdout() -> None:
    """Send what is still in the buffer nowhere; it would fail again at exit."""
    with suppress(OSError, ValueError):
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())


@contextmanager
def _interruptible() -> Iterator[None]:
    """Let SIGTERM and SIGHUP clean up as Ctrl-C does."""
    before = {}
    for number in (signal.SIGTERM, signal.SIGHUP):
        try:
            before[number] = signal.signal(number, _stop)
        except ValueError:  # not the main thread: whoever started this one takes care
            break
    try:
        yield
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)


def _warn(message: Warning | str, *_: Any, **__: Any) -> None:
    say(message)


def _stop(_number: int, _frame: FrameType | None) -> None:
    raise KeyboardInterrupt
