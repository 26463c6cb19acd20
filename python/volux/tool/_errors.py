"""What a user is told when something cannot be done: one line, and an exit code."""

from __future__ import annotations

import re
import sys
from importlib import import_module
from typing import Any

SUCCESS = 0
FAILURE = 1
MISUSE = 2
INTERRUPTED = 130

# The extra of the package that brings what only the tool needs.
INSTALL = "pip install 'volux[tool]'"


class Refusal(Exception):  # noqa: N818 - what it says is an answer as often as an error
    """One line: what, which file, what was found, what to do."""

    code = FAILURE


class Misuse(Refusal):
    """One line about options that do not go together, or whose values are not allowed."""

    code = MISUSE


def misuse(error: Exception) -> Misuse:
    """Return what the package says of a keyword as what is said of the option."""
    return Misuse(re.sub(r"^(threads|fill|slab|count)=(\S+?):? ", r"--\1 \2: ", str(error)))


def say(text: object) -> None:
    """Write one line to stderr."""
    line = " ".join(str(text).split())
    print(f"volux: {line}", file=sys.stderr, flush=True)


def is_short_of_memory(error: Exception) -> bool:
    """Whether there was too little memory, as Python, ITK and the system's loader say it."""
    said = r"(?i)failed to (allocate memory|map segment)|cannot allocate memory"
    return isinstance(error, MemoryError) or re.search(said, str(error)) is not None


def needed(module: str, install: str = INSTALL) -> Any:
    """Import what an extra brings, or say what to install."""
    try:
        return import_module(module)
    except ModuleNotFoundError as error:
        if error.name != module.partition(".")[0]:
            raise
        raise Refusal(f"the package {error.name} is not installed: {install}") from None


def line_of(error: BaseException) -> str:
    """Return what an error says, in one line."""
    return " ".join(str(error).split()) or type(error).__name__
