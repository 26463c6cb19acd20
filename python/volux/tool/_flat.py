"""Verbs as typer takes them: groups of options one by one, and which of them somebody gave."""

from __future__ import annotations

import inspect
from collections.abc import Callable
from contextvars import ContextVar
from dataclasses import fields, is_dataclass
from typing import Any, TypeVar, get_type_hints

import typer

from volux.tool._errors import Refusal, is_short_of_memory

T = TypeVar("T")

# Names of the options that are on the command line; all others have their defaults.
_SAID: ContextVar[frozenset[str]] = ContextVar("said", default=frozenset())


def is_said(name: str) -> bool:
    """Whether an option is on the command line, where it may say what its default says."""
    return name in _SAID.get()


def signature_of(verb: Callable[..., object]) -> inspect.Signature:
    """Return the parameters of a verb one by one."""
    return inspect.Signature(_parameters(verb, get_type_hints(verb, include_extras=True)))


def flat(verb: Callable[..., T]) -> Callable[..., T]:
    """Return a verb whose groups of options are parameters one by one, as typer takes them."""
    hints = get_type_hints(verb, include_extras=True)
    groups: dict[str, Any] = {name: hint for name, hint in hints.items() if is_dataclass(hint)}

    def call(context: typer.Context, **given: Any) -> T:
        sources = {name: context.get_parameter_source(name) for name in given}
        said = (name for name, source in sources.items() if source and source.name == "COMMANDLINE")
        _SAID.set(frozenset(said))
        made = {
            name: group(**{part.name: given.pop(part.name) for part in fields(group)})
            for name, group in groups.items()
        }
        try:
            return verb(**given, **made)
        except Exception as error:
            if not is_short_of_memory(error):
                raise
            raise _short_of_memory(context.params) from None

    call.__name__, call.__doc__ = verb.__name__, verb.__doc__
    options = signature_of(verb).parameters.values()
    parameters = [_keyword("context", inspect.Parameter.empty, typer.Context), *options]
    call.__signature__ = inspect.Signature(parameters)  # type: ignore[attr-defined]
    call.__annotations__ = {}
    return call


def _short_of_memory(given: dict[str, Any]) -> Refusal:
    if "dry_run" in given:
        what = "--dry-run says how much a result needs"
    else:
        what = "crop it first" if "file" in given else "plan smaller units"
    subject = next((given[name] for name in ("file", "plan", "store") if name in given), "volux")
    return Refusal(f"{subject}: there is not enough memory; {what}")


def _parameters(verb: Callable[..., object], hints: dict[str, Any]) -> list[inspect.Parameter]:
    own, shared = [], []
    for name, parameter in inspect.signature(verb).parameters.items():
        if is_dataclass(hints[name]):
            inside = get_type_hints(hints[name], include_extras=True)
            shared += [_keyword(p.name, p.default, inside[p.name]) for p in fields(hints[name])]
        else:
            own.append(_keyword(name, parameter.default, hints[name]))
    return own + shared


def _keyword(name: str, default: Any, hint: Any) -> inspect.Parameter:
    kind = inspect.Parameter.KEYWORD_ONLY
    return inspect.Parameter(name, kind, default=default, annotation=hint)
