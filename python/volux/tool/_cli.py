"""Where the command begins: the version, which needs little, or all the rest."""

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
    if given == ["--version"]:
        from volux.tool._version import version

        given = []
        try:
            print(f"volux {version()}", flush=True)
        except OSError:
            given = ["--version"]  # the rest says why
        else:
            return 0
    from volux.tool._running import run

    return run(given)
