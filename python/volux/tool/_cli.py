"""Where the command begins: what needs little, or all the rest."""

import sys

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Sequence


def main(arguments: "Sequence[str] | None" = None) -> int:
    """Run the command, and return its exit code.

    Parameters
    ----------
    arguments : sequence of str, optional
        What follows ``volux``; None: those of the process.

    Returns
    -------
    int
        0, 1 for a failure or a negative answer, 2 for wrong use, 130 after an interruption.
    """
    given = list(sys.argv[1:] if arguments is None else arguments)
    text = _known(given)
    if text:
        try:
            print(text, end="", flush=True)
        except OSError:
            pass  # the rest says why
        else:
            return 0
    from volux.tool._running import run

    return run(given)


def _known(given: "Sequence[str]") -> str:
    """Return what is printed without asking typer, which takes long to read; or nothing."""
    if given == ["--version"]:
        from volux.tool._version import version

        return f"volux {version()}\n"
    if len(given) == 2 and given[0] == "completion" and not given[1].startswith("-"):
        from volux.tool._texts import completion

        return completion(given[1])
    if given[-1:] in (["--help"], ["-h"]) and len(given) <= 2:
        from volux.tool._texts import help_of

        return help_of("".join(given[:-1]))
    return ""
