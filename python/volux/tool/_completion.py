"""Scripts by which shells complete a command: shells read them whenever they start."""

import os


def script(shell: str) -> str:
    """Return the script for bash, zsh or fish; nothing for another word."""
    if shell not in ("bash", "zsh", "fish"):
        return ""
    folder = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(folder, "completions", f"volux.{shell}"), encoding="utf-8") as file:
        return file.read()
