"""Texts that are printed as they are kept: typer, which makes them, takes longer to read."""

import os

# What is kept is as wide; typer makes nothing wider.
COLUMNS = 80


def completion(shell: str) -> str:
    """Return the script by which a shell completes the command; nothing for another word."""
    return _kept(f"volux.{shell}")


def help_of(verb: str) -> str:
    """Return the help of a verb, or of all if it is empty; nothing in a narrower terminal."""
    return _kept(f"help-{verb}.txt" if verb else "help.txt") if _columns() >= COLUMNS else ""


def _kept(name: str) -> str:
    folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "texts")
    if name not in os.listdir(folder):
        return ""
    with open(os.path.join(folder, name), encoding="utf-8") as file:
        return file.read()


def _columns() -> int:
    try:
        return int(os.environ.get("COLUMNS", "")) or COLUMNS
    except ValueError:
        pass
    try:
        return os.get_terminal_size(1).columns or COLUMNS
    except OSError:
        return COLUMNS  # it is no terminal
