"""Output: written beside its place, and renamed when it is whole."""

from __future__ import annotations

import os
import shutil
import tempfile
from collections.abc import Callable, Iterable, Iterator
from contextlib import ExitStack, contextmanager, suppress
from fcntl import LOCK_EX, LOCK_NB, flock
from functools import partial
from pathlib import Path

from volux.tool._errors import Misuse, Refusal

# Formats of a header and a file of voxels, which have one name but for the end.
_IN_PARTS = (".hdr", ".img", ".img.gz", ".mhd", ".nhdr", ".raw", ".raw.gz", ".zraw")

# The end of a folder that has an output before it takes its place.
_PARTIAL = ".partial"


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
    what it was. What nothing can clean up after, such as SIGKILL, the next block does.
    """
    path = Path(output)
    try:
        _remove_abandoned(path)
        folder, lock = _locked_folder(path)
    except OSError as error:
        raise Refusal(f"{output}: {error.strerror}; nothing was written") from None
    try:
        yield folder / path.name
        written = sorted(folder.iterdir(), key=lambda file: file.name == path.name)
        for file in written:
            flush(file)
        _rename(written, path.parent)
    except Refusal as refusal:  # of a file there, which nobody has named
        said = str(refusal).replace(f"{folder}/", output.removesuffix(path.name))
        raise type(refusal)(said) from None
    except OSError as error:
        if error.strerror is None:
            raise
        raise Refusal(f"{output}: {error.strerror}; nothing was written") from None
    finally:
        with suppress(OSError):  # of a folder that nothing was written through
            _remove(folder)
            os.close(lock)


def _rename(written: list[Path], folder: Path) -> None:
    """Rename files into a folder; if one fails, those before it are what they were.

    The one that was asked for comes last: it refers to the others.
    """
    with ExitStack() as undoing:
        for file in written:
            place = folder / file.name
            if file != written[-1]:
                undoing.callback(_kept(place, file.with_name(f"{file.name}.before")))
            os.replace(file, place)
        undoing.pop_all()


def _kept(place: Path, copy: Path) -> Callable[[], object]:
    """Keep what is in a place, if anything, and return what puts it there again."""
    if not os.path.lexists(place):
        return partial(place.unlink, missing_ok=True)
    try:
        os.link(place, copy, follow_symlinks=False)
    except OSError:  # a file system without hard links
        shutil.copy2(place, copy, follow_symlinks=False)
    return partial(os.replace, copy, place)


def _remove(folder: Path) -> None:
    """Remove a folder of files, without opening it as `shutil.rmtree` does, which may fail."""
    for name in os.listdir(folder):
        os.unlink(folder / name)
    os.rmdir(folder)


def _locked_folder(path: Path) -> tuple[Path, int]:
    """Make a folder beside an output; as long as this process lives, it is locked."""
    while True:
        made = tempfile.mkdtemp(prefix=f".{path.name}.", suffix=_PARTIAL, dir=path.parent)
        try:
            lock = os.open(made, os.O_RDONLY | os.O_DIRECTORY)
        except FileNotFoundError:  # or it is gone once it is locked: see below
            continue
        except OSError:
            os.rmdir(made)
            raise
        with suppress(OSError):  # a file system without locks, where no one else has any
            flock(lock, LOCK_EX)
        if os.path.exists(made):
            return Path(made), lock
        os.close(lock)


def _remove_abandoned(path: Path) -> None:
    """Remove the folders of processes that wrote the same output and are gone.

    One that has been made and is not locked yet looks abandoned, so its process looks again.
    """
    try:
        entries = os.scandir(path.parent)
    except PermissionError:  # one may write in a folder that one may not read
        return
    for entry in entries:
        if not (entry.name.startswith(f".{path.name}.") and entry.name.endswith(_PARTIAL)):
            continue
        with suppress(OSError):  # locked: its process lives
            lock = os.open(entry.path, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW)
            try:
                flock(lock, LOCK_EX | LOCK_NB)
                shutil.rmtree(entry.path)
            finally:
                os.close(lock)


def flush(file: Path) -> None:
    """Wait until a file is on the disk, which may say only now that it is full."""
    with file.open("rb") as opened:
        os.fsync(opened.fileno())
