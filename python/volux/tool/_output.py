"""Output: written beside its place, and renamed when it is whole."""

from __future__ import annotations

import os
import shutil
import tempfile
from collections.abc import Iterable, Iterator
from contextlib import contextmanager, suppress
from pathlib import Path

from volux.tool._errors import Misuse, Refusal

# Formats of a header and a file of voxels, which have one name but for the end.
_IN_PARTS = (".hdr", ".img", ".img.gz", ".mhd", ".nhdr", ".raw", ".raw.gz", ".zraw")


def refuse(output: str, inputs: Iterable[str], *, force: bool) -> None:
    """Refuse an output that is an input, is there already or cannot be written."""
    path = Path(output)
    if path.is_dir():
        raise Refusal(f"{output}: is a folder; name a file in it")
    there = [part for part in _parts(path) if part.exists()]
    read = [part for name in inputs for part in _parts(Path(name)) if part.exists()]
    for part in there:
        if any(part.samefile(other) for other in read):
            raise Misuse(f"{part}: is an input, which is never overwritten; name another output")
    if there and not force:
        raise Refusal(f"{there[0]}: is there already; --force replaces it")
    if not path.parent.is_dir():
        raise Refusal(f"{output}: there is no folder {path.parent}; make it first")
    if not os.access(path.parent, os.W_OK | os.X_OK):
        raise Refusal(f"{output}: the folder {path.parent} cannot be written to; name another one")


def _parts(path: Path) -> list[Path]:
    """Return the files that a volume of this name may consist of."""
    end = next((end for end in _IN_PARTS if path.name.lower().endswith(end)), None)
    if end is None:
        return [path]
    stem = path.name[: -len(end)]
    return [path, *(path.with_name(stem + other) for other in _IN_PARTS if other != end)]


@contextmanager
def placed(output: str) -> Iterator[Path]:
    """Yield a path to write; what is written with it takes its place when the block has ended.

    The path is in a folder of its own beside the output, so that a format of several files finds
    all of them by their names. Whatever ends the block early, that folder goes and the output is
    what it was.
    """
    path = Path(output)
    try:
        folder = Path(tempfile.mkdtemp(prefix=f".{path.name}.", dir=path.parent))
    except OSError as error:
        raise Refusal(f"{output}: {error.strerror}; nothing was written") from None
    try:
        yield folder / path.name
        written = sorted(folder.iterdir(), key=lambda file: file.name == path.name)
        for file in written:
            _flush(file)
        for file in written:  # the one that was asked for comes last: it refers to the others
            os.replace(file, path.parent / file.name)
    except OSError as error:
        if error.strerror is None:
            raise
        raise Refusal(f"{output}: {error.strerror}; nothing was written") from None
    finally:
        with suppress(OSError):
            shutil.rmtree(folder)


def _flush(file: Path) -> None:
    # A full disk may say so only now; and the umask counts, not the folder's privacy.
    with file.open("rb") as opened:
        os.fsync(opened.fileno())
