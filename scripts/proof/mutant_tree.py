"""A mutant, and the copies of the libraries' sources that mutants are put into."""
import dataclasses
import filecmp
import hashlib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading
from pathlib import Path

from evidence.commands import ROOT

stopping = threading.Event()
_children = set()


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    kind: str
    start: int
    end: int
    text: str  # what replaces source[start:end]
    source: str = dataclasses.field(repr=False)

    @property
    def line(self):
        return self.source.count("\n", 0, self.start) + 1

    @property
    def change(self):
        before = " ".join(self.source[self.start:self.end].replace("\\\n", " ").split())
        return f"{before} -> {' '.join(self.text.split()) or 'nothing'}"

    @property
    def mutated(self):
        return self.source[:self.start] + self.text + self.source[self.end:]

    @property
    def paragraph(self):
        """Where the lines around it begin, a function as a rule, and what they are."""
        first = self.source.rfind("\n\n", 0, self.start) + 1
        return first, self.source[first:self.source.find("\n\n", self.end)]

    @property
    def id(self):
        """The same for as long as the code of the paragraph around it, a function as a rule, is the
        same, in whatever file and under whatever comments.
        """
        first, paragraph = self.paragraph
        code = code_of(paragraph)
        whole = (self.kind, code, code_of(self.source[:first]).count(code),
                 len(code_of(self.source[first:self.start])),
                 len(code_of(self.source[first:self.end])), self.text)
        return hashlib.sha256(repr(whole).encode()).hexdigest()[:10]


def code_of(source):
    """Returns source without its comments and line ends."""
    return " ".join(re.sub(r"//.*", "", source).split())


class Stopped(Exception):
    """The run was interrupted; what was under way decides nothing."""


def stop():
    stopping.set()
    for child in list(_children):
        kill(child)


def kill(child):
    """With what it has started: each child leads a session."""
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def processor_ticks(child):
    """How much time of processors it has taken."""
    fields = Path(f"/proc/{child.pid}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])


def status_of(child, timeout):
    """Ends what takes no time of processors for so long: one that waits its turn goes on, and what
    never ends has a limit of its own."""
    before = 0
    while True:
        try:
            return child.wait(timeout)
        except subprocess.TimeoutExpired:
            before, so_far = processor_ticks(child), before
            if before == so_far:
                kill(child)
                return child.wait()


def call(command, timeout=300, **options):
    """Exit status and output. Out of reach of Ctrl-C, which would look like a kill."""
    if stopping.is_set():
        raise Stopped()
    with tempfile.TemporaryFile() as out:
        options = {"stdout": out, "stderr": subprocess.STDOUT, **options}
        child = subprocess.Popen([str(word) for word in command], start_new_session=True, **options)
        _children.add(child)
        try:
            status = status_of(child, timeout)
        finally:
            _children.discard(child)
        if stopping.is_set():
            raise Stopped()
        out.seek(0)
        return status, out.read(1 << 22).decode(errors="replace")


class Tree:
    """A copy of the libraries' sources, and what is built of it; one worker's, or the untouched
    one."""

    def __init__(self, folder):
        self.folder = folder
        self.source = folder / "source"
        self.mutated = None
        for part in ("CMakeLists.txt", "cmake", "include", "src"):
            self.take(ROOT / part, self.source / part)

    def take(self, original, copy):
        """Copies what differs, so that nothing else is built again."""
        if original.is_file():
            if not copy.exists() or not filecmp.cmp(original, copy, shallow=False):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(original, copy)
            return
        if copy.is_dir():
            for path in copy.iterdir():
                if not (original / path.name).exists():
                    shutil.rmtree(path) if path.is_dir() else path.unlink()
        for path in original.iterdir():
            self.take(path, copy / path.name)

    def apply(self, mutant):
        if self.mutated is not None:
            self.take(ROOT / self.mutated, self.source / self.mutated)
        self.mutated = mutant.file
        (self.source / mutant.file).write_text(mutant.mutated, encoding="utf-8")


def english():
    return {**os.environ, "LC_ALL": "C"}
