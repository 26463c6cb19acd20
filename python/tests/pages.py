"""Runs the programs of the pages about Python; as a program of its own, draws their pictures anew.

Usage: python python/tests/pages.py
"""

import contextlib
import io
import os
import re
import shutil
import struct
import sys
import tempfile
import zlib
from pathlib import Path

FOLDER = Path(__file__).parents[2] / "docs" / "python"
PICTURES = FOLDER / "pictures"
BLOCK = re.compile(r"^```python\n(.*?)^```$(?:\n+^```text\n(.*?)^```$)?", re.MULTILINE | re.DOTALL)


def ran(page):
    """Run the blocks of a page in one namespace; yield code, what it printed and what it should."""
    names = {"__name__": page.stem}
    text = page.read_text(encoding="utf-8")
    for block in BLOCK.finditer(text):
        line = text.count("\n", 0, block.start()) + 2
        code = compile("\n" * (line - 1) + block[1], str(page), "exec")
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(code, names)
        yield block[1], printed.getvalue(), block[2] or ""


def pixels(path):
    """The header and the lines of a PNG, however they were compressed."""
    data = path.read_bytes()
    (length,) = struct.unpack_from(">I", data, 33)
    return data[16:29], zlib.decompress(data[41 : 41 + length])


def draw():
    """Run every page and keep its pictures."""
    sys.path.insert(0, str(FOLDER))
    for page in sorted(FOLDER.glob("*.md")):
        with tempfile.TemporaryDirectory() as folder, contextlib.chdir(folder):
            for _, printed, expected in ran(page):
                if printed != expected:
                    print(f"{page.name} prints\n{printed}and not\n{expected}", file=sys.stderr)
            for picture in Path(folder).glob("*.png"):
                shutil.copy(picture, PICTURES)


if __name__ == "__main__":
    os.umask(0o022)
    draw()
