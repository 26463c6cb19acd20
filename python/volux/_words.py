"""Errors in words: the parameter, its value, what is allowed, and what was probably meant."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Mapping
from typing import Any

from volux._peers import ELSEWHERE, KEYWORDS, VALUES


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
        return error(f"{name}={short(value)} is {whose}'s name for it; here it is {name}={ours!r}")
    return error(f"{name}={short(value)}: allowed are {listed(allowed)}")


def unknown_keyword(
    function: str, given: Mapping[str, object], known: Collection[str]
) -> TypeError:
    """Return the answer to the first keyword that a function does not take."""
    keyword = next(name for name in given if name not in known)
    said = f"{function}() takes no {keyword}={short(given[keyword])}: {keyword} is"
    if keyword in KEYWORDS:
        return TypeError(f"{said} {KEYWORDS[keyword]}")
    if keyword in ELSEWHERE:
        return TypeError(f"{said} not its keyword; {ELSEWHERE[keyword]}")
    return TypeError(f"{said} not one of its keywords{_meant(keyword, known)}")


def _meant(keyword: str, known: Collection[str]) -> str:
    from difflib import get_close_matches

    close = get_close_matches(keyword, known, 1)
    return f"; did you mean {close[0]}=?" if close else ""


def short(value: object) -> str:
    """Return a value as it is written, or its type if that would not fit into a line of words."""
    text = repr(value)
    return text if len(text) <= 80 and "\n" not in text else f"<{type(value).__name__}>"


def one_of(given: Mapping[str, object], *, required: bool = True) -> str | None:
    """Return the one keyword that is not None of several that exclude one another."""
    names = [name for name, value in given.items() if value is not None]
    if len(names) > 1:
        values = ", ".join(f"{name}={short(given[name])}" for name in names)
        raise ValueError(f"{values}: {' and '.join(names)} exclude one another")
    if not names and required:
        raise TypeError(f"one of {', '.join(f'{name}=' for name in given)} is required")
    return names[0] if names else None
