"""The texts that the command keeps: its help, and the scripts by which shells complete it, which
start no program while one types.

As a program, ``python -m python.tests.tool.texts`` in the folder of the clone, it writes them anew.
"""

from __future__ import annotations

import os
from collections.abc import Callable, Mapping
from contextlib import redirect_stdout
from io import StringIO
from pathlib import Path
from typing import Any, Literal, get_args, get_origin
from unittest import mock

import volux.tool
from volux.tool import _texts
from volux.tool._flat import signature_of
from volux.tool._verbs import VERBS, command

FOLDER = Path(volux.tool.__file__).parent / "texts"
SHELLS = ("bash", "zsh", "fish")

# The words of an option, by its names; none where it takes a file or a number.
Options = dict[str, tuple[str, ...]]

_BASH = """\
_volux() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} words=
    case "${{COMP_WORDS[1]}} ${{COMP_WORDS[COMP_CWORD - 1]}}" in
        *" volux") words="{verbs} --help --version" ;;
{values}
        *) [[ $word != -* ]] || case "${{COMP_WORDS[1]}}" in
{options}
        esac ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "$word"))
}}
complete -o bashdefault -o default -F _volux volux
"""


def script(shell: str) -> str:
    """Return the script for bash, zsh or fish."""
    verbs = {name: function for name, (function, _) in VERBS.items()}
    table = {name: _options(verb) for name, verb in verbs.items()}
    if shell == "fish":
        return _fish(table, verbs)
    begin = "autoload -U +X bashcompinit && bashcompinit\n" if shell == "zsh" else ""
    return begin + _bash(table)


def _options(verb: Callable[..., object]) -> Options:
    found: Options = {"--help": ()}
    for parameter in signature_of(verb).parameters.values():
        hint, info = get_args(parameter.annotation)[:2]
        declared = [info.default, *(info.param_decls or ())]
        names = [name for text in declared if isinstance(text, str) for name in text.split("/")]
        found |= dict.fromkeys(names, _words(hint))
    return found


def _words(hint: Any) -> tuple[str, ...]:
    kinds = (hint, *get_args(hint))
    return next((get_args(kind) for kind in kinds if get_origin(kind) is Literal), ())


def _bash(table: Mapping[str, Options]) -> str:
    values = [
        f'        "{verb} {name}") words="{" ".join(words)}" ;;'
        for verb, options in table.items()
        for name, words in options.items()
        if words
    ]
    options = [f'            {verb}) words="{" ".join(names)}" ;;' for verb, names in table.items()]
    return _BASH.format(verbs=" ".join(table), values="\n".join(values), options="\n".join(options))


def _fish(table: Mapping[str, Options], verbs: Mapping[str, Callable[..., object]]) -> str:
    lines = []
    for verb, options in table.items():
        summary = (verbs[verb].__doc__ or "").partition("\n")[0].replace("'", "\\'")
        lines.append(f"complete -c volux -n __fish_use_subcommand -a {verb} -d '{summary}'")
        for name, words in options.items():
            flag = f"-l {name[2:]}" if name.startswith("--") else f"-s {name[1:]}"
            choice = f" -x -a '{' '.join(words)}'" if words else ""
            lines.append(
                f"complete -c volux -n '__fish_seen_subcommand_from {verb}' {flag}{choice}"
            )
    return "\n".join(lines) + "\n"


def help_of(verb: str) -> str:
    """Return the help of a verb, or of all if it is empty, as typer makes it."""
    with (
        redirect_stdout(StringIO()) as printed,
        mock.patch.dict(os.environ, {"COLUMNS": str(_texts.COLUMNS)}),
    ):
        assert command([verb, "--help"] if verb else ["--help"])() == 0
    return printed.getvalue()


def texts() -> dict[str, str]:
    """Return each text by the name of its file."""
    help_texts = {f"help-{verb}.txt": help_of(verb) for verb in VERBS} | {"help.txt": help_of("")}
    return help_texts | {f"volux.{shell}": script(shell) for shell in SHELLS}


if __name__ == "__main__":
    for name, text in texts().items():
        (FOLDER / name).write_text(text)
