"""Errors in words: the parameter, its value, what is allowed, and what was probably meant."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Mapping
from functools import wraps
from inspect import signature
from typing import Any, ParamSpec, TypeVar

from volux._peers import ELSEWHERE, KEYWORDS, VALUES

P = ParamSpec("P")
R = TypeVar("R")


def listed(words: Iterable[object]) -> str:
    """Alternatives as a phrase: 'a', 'b' or 'c'."""
    *others, last = [repr(word) for word in words]
    return f"{', '.join(others)} or {last}" if others else last


def chosen(name: str, value: object, allowed: Mapping[Any, int]) -> int:
    """Return the number that stands for a word of a closed set."""
    try:
        return allowed[value]
    except (KeyError, TypeError):
        raise _refused(name, value, allowed) from None


def _refused(name: str, value: object, allowed: Iterable[object]) -> Exception:
    error = ValueError if value is None or isinstance(value, str) else TypeError
    peer = VALUES.get((name, value)) if isinstance(value, (str, int)) else None
    if peer is not None:
        whose, ours = peer
        return error(f"{name}={value!r} is {whose}'s name for it; here it is {name}={ours!r}")
    return error(f"{name}={value!r}: allowed are {listed(allowed)}")


def in_our_words(function: Callable[P, R]) -> Callable[P, R]:
    """Let a function answer keywords that it does not take with what they are called here."""
    known = frozenset(signature(function).parameters)

    @wraps(function)
    def call(*args: P.args, **kwargs: P.kwargs) -> R:
        if not known.issuperset(kwargs):
            stranger = next(keyword for keyword in kwargs if keyword not in known)
            raise TypeError(_unknown(function.__name__, stranger, kwargs[stranger], known))
        return function(*args, **kwargs)

    return call


def _unknown(function: str, keyword: str, value: object, known: Iterable[str]) -> str:
    from difflib import get_close_matches

    said = f"{function}() takes no {keyword}={_short(value)}: {keyword} is"
    if keyword in KEYWORDS:
        return f"{said} {KEYWORDS[keyword]}"
    if keyword in ELSEWHERE:
        return f"{said} not its keyword; {ELSEWHERE[keyword]}"
    close = get_close_matches(keyword, known, 1)
    meant = f"; did you mean {close[0]}=?" if close else ""
    return f"{said} not one of its keywords{meant}"


def _short(value: object) -> str:
    text = repr(value)
    return text if len(text) <= 40 else f"<{type(value).__name__}>"


def one_of(given: Mapping[str, object], *, required: bool = True) -> str | None:
    """Return the one keyword that is not None of several that exclude one another."""
    names = [name for name, value in given.items() if value is not None]
    if len(names) > 1:
        values = ", ".join(f"{name}={_short(given[name])}" for name in names)
        raise ValueError(f"{values}: {' and '.join(names)} exclude one another")
    if not names and required:
        raise TypeError(f"one of {', '.join(f'{name}=' for name in given)} is required")
    return names[0] if names else None
