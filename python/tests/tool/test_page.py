"""What the page about the tool prints is what its commands say.

As a program, ``python -m python.tests.tool.test_page`` in the folder of the clone, it writes the
page anew.
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import pytest

from .runs import PROGRAM

DOCS = Path(__file__).parents[3] / "docs"
PAGE = DOCS / "tool.md"
BLOCK = re.compile(r"^```(python|console)\n(.*?)^```$", re.MULTILINE | re.DOTALL)

pytestmark = pytest.mark.skipif(not PAGE.exists(), reason="the page is not beside the tests")


def shell(folder):
    """The environment of a shell in which `volux` is the command."""
    program = Path(folder) / "bin" / "volux"
    program.parent.mkdir()
    program.write_text(f'#!/bin/sh\nexec {" ".join(PROGRAM)} "$@"\n')
    program.chmod(0o755)
    path = f"{program.parent}:{os.environ['PATH']}"
    python = f"{DOCS / 'python'}:{os.environ.get('PYTHONPATH', '')}"
    return {**os.environ, "PATH": path, "PYTHONPATH": python, "COLUMNS": "80"}


def printed(block, folder, environment):
    """Run the commands of a block, and return it with what they print."""
    lines = []
    for command in re.findall(r"^\$ (.*)$", block, re.MULTILINE):
        ran = subprocess.run(
            ["bash", "-c", command],
            cwd=folder,
            env=environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            check=False,
        )
        lines += [f"$ {command}\n", ran.stdout]
    return "".join(lines)


def written(page):
    """The page with what its commands print now, but for memory, which depends on the machine."""
    with tempfile.TemporaryDirectory() as folder:
        environment = shell(folder)

        def again(found):
            kind, block = found.groups()
            if kind == "console":
                return f"```console\n{printed(block, folder, environment)}```"
            command = [sys.executable, "-c", block]
            subprocess.run(command, cwd=folder, env=environment, check=True)
            return found[0]

        return BLOCK.sub(again, page)


def without_memory(page):
    return re.sub(r"^(memory +)\d.*$", r"\1", page, flags=re.MULTILINE)


def test_the_page_prints_what_its_commands_say():
    page = PAGE.read_text()
    assert without_memory(page) == without_memory(written(page))


def test_the_page_links_to_what_is_there():
    for link in re.findall(r"\]\(([^)#]+)[^)]*\)", PAGE.read_text()):
        assert (DOCS / link).exists(), link


if __name__ == "__main__":
    PAGE.write_text(written(PAGE.read_text()))
