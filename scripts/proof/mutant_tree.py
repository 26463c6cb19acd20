"""A mutant, and the copies of volux_core's sources that mutants are put into and built in."""
import dataclasses
import filecmp
import functools
import hashlib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading

from evidence.commands import LIBRARY, ROOT, Failure

from .builds import BUILD

FOLDER = BUILD / "mutants"
KINDS = {  # how volux_core is built
    "plain": "-O0",
    "portable": "-O0 -DVOLUX_CORE_PORTABLE",
    "optimised": "-O2",
    "asan": "-O0 -g1 -fno-omit-frame-pointer -fno-sanitize-recover=all"
            " -fsanitize=address,undefined,float-cast-overflow",
}

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


def call(command, timeout=300, **options):
    """Exit status and output. Out of reach of Ctrl-C, which would look like a kill."""
    if stopping.is_set():
        raise Stopped()
    with tempfile.TemporaryFile() as out:
        options = {"stdout": out, "stderr": subprocess.STDOUT, **options}
        child = subprocess.Popen([str(word) for word in command], start_new_session=True, **options)
        _children.add(child)
        try:
            status = child.wait(timeout)
        except subprocess.TimeoutExpired:
            kill(child)
            status = child.wait()
        finally:
            _children.discard(child)
        if stopping.is_set():
            raise Stopped()
        out.seek(0)
        return status, out.read(1 << 22).decode(errors="replace")


class Tree:
    """A copy of volux_core's sources and the builds of it; one worker's, or the untouched one."""

    def __init__(self, name):
        self.folder = FOLDER / name
        self.source = self.folder / "source"
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

    def module(self, kind):
        """Builds volux_core; gives the file, or None and what the compiler said."""
        build = self.folder / kind
        if not (build / "build.ninja").exists():
            status, said = call([
                "cmake", "-S", self.source, "-B", build, "-G", "Ninja",
                "-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_BUILD_TYPE=None",
                "-DVOLUX_DEVELOPER_MODE=OFF", "-DVOLUX_RESAMPLE=OFF",
                f"-DCMAKE_CXX_FLAGS={KINDS[kind]}"])
            if status != 0:
                raise Failure(f"cmake cannot configure volux_core for mutants: {said[-300:]}")
        status, said = call(["ninja", "-C", build, "-j1", "volux_core"], env=english())
        return (build / LIBRARY, "") if status == 0 else (None, said)


def english():
    return {**os.environ, "LC_ALL": "C"}


@functools.lru_cache(maxsize=1)
def base():
    """volux_core without a mistake in it."""
    return Tree("base")


_base_lock = threading.Lock()


def base_module(kind):
    with _base_lock:
        library, said = base().module(kind)
        if library is None:
            raise Failure(f"volux_core does not build without a mutant either: {said[-300:]}")
        return library


def stripped(library):
    bare = library.with_name("bare.so")
    call(["strip", "--strip-all", "--remove-section=.note.gnu.build-id",
          "--remove-section=.comment", library, "-o", bare])
    return bare.read_bytes()


@functools.lru_cache(maxsize=None)
def base_code(kind):
    return stripped(base_module(kind))
