"""The suite that meets a mutant: each file of tests as a program."""
import dataclasses
import os
import re
import subprocess
import threading
from pathlib import Path

from evidence.commands import ROOT, Failure, lock_of

from .mutant_module import Modules
from .mutant_tree import call, english

TESTS = ROOT / "tests"
# Where the tests and what they compile themselves are looked for.
FOLDERS = (TESTS, ROOT / "src")
ADDRESS_SPACE = 40 << 30  # a mutant can ask for any amount of memory
OWN_FLAGS = {"PoliciesWithoutRtti.cpp": "-fno-rtti"}


@dataclasses.dataclass(frozen=True)
class Suite:
    """The tests of a library, as programs, and how those are built."""

    folder: Path  # where
    modules: Modules  # the library
    folders: tuple  # of the tests
    last: tuple  # the longest, by name
    flags: dict  # of the programs, by kind of build
    processor_seconds: int  # a mutant can loop for ever; no program takes a quarter of it
    beside: tuple = ()  # what they link, too

    def sources(self):
        """The quick ones first."""
        sources = [path for part in self.folders for path in (TESTS / part).rglob("*Test.cpp")]
        return sorted(sources, key=lambda path: (path.stem in self.last, path.stem))

    def programs(self):
        return [Program(self, source) for source in self.sources()]

    def link(self, program, objects, kind, library):
        beside = [library.parent / word if word.endswith(".so") else word for word in self.beside]
        make(program, *self.flags[kind].split(), *objects, library, *beside, "-lgtest_main",
             "-lgtest", "-lpthread", "-ldl")

    def fault_of(self, command, library, scale, sanitized=False):
        """None if all tests of a program pass, else the one that fails first."""
        many = 10 if scale >= 1 or sanitized else 1
        limits = [f"--cpu={self.processor_seconds * many}"]
        if not sanitized:
            limits.append(f"--as={ADDRESS_SPACE}")
        # The tests that ask for too much memory expect to be refused it, not to end.
        environment = {**os.environ, "VOLUX_TEST_SAMPLES_SCALE": str(scale),
                       "ASAN_OPTIONS": "allocator_may_return_null=1",
                       "LD_LIBRARY_PATH": str(library.parent)}
        status, said = call(["prlimit", *limits, *command, "--gtest_fail_fast"], timeout=60,
                            env=environment, stderr=subprocess.DEVNULL)
        return None if status == 0 else failure_in(status, said)


def failure_in(status, said):
    """Names the test that fails first, or that runs when the program ends."""
    failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", said, re.MULTILINE)
    running = re.findall(r"^\[ RUN      \] (\S+)", said, re.MULTILINE)
    if failed:
        return failed[1]
    how = ("never ends" if -status in (9, 24) else
           "ends the program" if running else "does not start")
    return f"{running[-1]} ({how})" if running else how


class Program:
    """One file of tests as a program, with the sources of what it includes that is not of the
    library's interface."""

    def __init__(self, suite, source):
        self.suite, self.name = suite, source.stem
        self.sources = [source, *self.support(source)]
        self.lock = threading.Lock()
        self.sound = set()

    @staticmethod
    def support(source):
        seen, todo = set(), [source]
        while todo:
            including = todo.pop()
            text = including.read_text(encoding="utf-8")
            for name in re.findall(r'#include "([\w/]+\.h)"', text):
                for header in {folder / name for folder in (including.parent, *FOLDERS)} - seen:
                    if header.exists():
                        seen.add(header)
                        todo.append(header)
        return sorted(path for path in (header.with_suffix(".cpp") for header in seen)
                      if path.exists())

    def compiles(self, file):
        """Whether it has a source of the library, by its name in the repository, for its own."""
        return (ROOT / file).with_suffix(".cpp") in self.sources

    def in_base(self, kind):
        """The program as its sources have it, built when it is needed and out of date."""
        with self.lock:
            try:
                built = self.build(kind, self.suite.folder, ROOT, self.suite.modules.base(kind))
                self.prove_sound(kind, built[0])
                return built
            except Broken as broken:
                raise Failure(f"{self.name} does not build without a mutant either: "
                              f"{str(broken)[-300:]}") from None

    def prove_sound(self, kind, runnable):
        """It passes without a mutant; a program that can not run would kill them all."""
        if kind not in self.sound:
            fault = self.fault_of(runnable, self.suite.modules.base(kind), 0.1,
                                  sanitized=kind == "asan")
            if fault:
                raise Failure(f"{self.name} fails without a mutant too: {fault}.")
            self.sound.add(kind)

    def fault_of(self, runnable, library, scale, sanitized=False):
        return self.suite.fault_of([runnable], library, scale, sanitized)

    def with_mutant(self, tree, kind, library):
        """The program with a header that has a mistake in it."""
        return self.build(kind, tree.folder, tree.source, library, tree.mutated)

    def build(self, kind, folder, root, library, mutated=None):
        """Compiles what is not fresh, in a mutant's tree only what includes the mutated header."""
        base, folder = self.suite.folder / "tests" / kind, folder / "tests" / kind
        objects = []
        for source in self.sources:
            built = folder / f"{source.stem}.o"
            if mutated and ROOT / mutated not in dependencies(base / built.name):
                built = base / built.name
            else:
                with lock_of(built):  # programs share the objects of support files
                    if not is_fresh(built):
                        compile_source(source, built, root, self.suite.flags[kind])
            objects.append(built)
        if all(built.parent == base for built in objects):
            folder = base
        if folder != base or not is_newer(folder / self.name, objects):
            self.suite.link(folder / self.name, objects, kind, library)
        return folder / self.name, objects


def dependencies(built):
    listed = built.with_suffix(".d")
    text = listed.read_text(encoding="utf-8").replace("\\\n", " ") if listed.exists() else ""
    words = re.findall(r"(?:\\ |\S)+", text.partition(": ")[2])
    return [Path(word.replace("\\ ", " ")) for word in words]


def is_fresh(built):
    if not dependencies(built):
        return False
    return is_newer(built, dependencies(built))


def is_newer(built, sources):
    """Tells whether a file is there and was made after all that it is made of."""
    if not built.exists():
        return False
    age = built.stat().st_mtime_ns
    return all(path.exists() and path.stat().st_mtime_ns < age for path in sources)


class Broken(Exception):
    """A program of the suite does not build with the mutant; what the compiler or linker said."""


def make(target, *command):
    """Runs a compiler; the target appears only when it is whole."""
    target.parent.mkdir(parents=True, exist_ok=True)
    target.unlink(missing_ok=True)
    part = target.with_suffix(".part")
    status, said = call(["g++", *command, "-o", part], env=english())
    if status != 0:
        raise Broken(said)
    part.replace(target)


def compile_source(source, built, root, flags):
    """Compiles a source with the headers of a copy of the sources, which can be its own place."""
    if source.is_relative_to(ROOT / "src"):
        source = root / source.relative_to(ROOT)
    own = OWN_FLAGS.get(source.name, "")
    make(built, "-std=c++17", *flags.split(), *own.split(), "-ffp-contract=off",
         f"-I{root / 'include'}", f"-I{TESTS}", f"-I{root / 'src'}", "-MMD", "-MF",
         built.with_suffix(".d"), "-c", source)
