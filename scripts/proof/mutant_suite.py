"""The suite that meets a mutant: each file of tests as a program, and the other checks."""
import functools
import os
import re
import subprocess
import sys
import threading
from pathlib import Path

from evidence.commands import ROOT, Failure, lock_of

from .mutant_tree import FOLDER, KINDS, base, base_module, call, english

TESTS = ROOT / "tests"
PROCESSOR_SECONDS = 60  # a mutant can loop for ever; the longest program takes a tenth of it
ADDRESS_SPACE = 40 << 30  # and it can ask for any amount of memory
DIFFERENTIAL = "SamplingDifferentialTest"
CHECKS = ("check_boundary", "check_refusals")


class Program:
    """One file of tests as a program, with the files of tests/support that it includes."""

    def __init__(self, source):
        self.name = source.stem
        self.sources = [source, *self.support(source)]
        self.lock = threading.Lock()
        self.sound = set()

    @staticmethod
    def support(source):
        seen, todo = set(), [source]
        while todo:
            for name in re.findall(r'#include "(?:support/)?(\w+\.h)"',
                                   todo.pop().read_text(encoding="utf-8")):
                header = TESTS / "support" / name
                if header.exists() and header not in seen:
                    seen.add(header)
                    todo.append(header)
        return sorted(path for path in (header.with_suffix(".cpp") for header in seen)
                      if path.exists())

    def in_base(self, kind):
        """The program as its sources have it, built when it is needed and out of date."""
        with self.lock:
            try:
                built = self.build(kind, FOLDER, ROOT / "include", base_module(kind))
                self.prove_sound(kind, built[0])
                return built
            except Broken as broken:
                raise Failure(f"{self.name} does not build without a mutant either: "
                              f"{str(broken)[-300:]}") from None

    def prove_sound(self, kind, runnable):
        """It passes without a mutant; a program that can not run would kill them all."""
        if kind not in self.sound:
            fault = fault_of(runnable, base_module(kind), 0.1, sanitized=kind == "asan")
            if fault:
                raise Failure(f"{self.name} fails without a mutant too: {fault}.")
            self.sound.add(kind)

    def with_mutant(self, tree, kind, library):
        """The program with a header that has a mistake in it."""
        return self.build(kind, tree.folder, tree.source / "include", library, tree.mutated)

    def build(self, kind, folder, include, library, mutated=None):
        """Compiles what is not fresh, in a mutant's tree only what includes the mutated header."""
        base, folder = FOLDER / "tests" / kind, folder / "tests" / kind
        objects = []
        for source in self.sources:
            built = folder / f"{source.stem}.o"
            if mutated and ROOT / mutated not in dependencies(base / built.name):
                built = base / built.name
            else:
                with lock_of(built):  # programs share the objects of support files
                    if not is_fresh(built):
                        compile_source(source, built, include, KINDS[kind])
            objects.append(built)
        if all(built.parent == base for built in objects):
            folder = base
        if folder != base or not is_newer(folder / self.name, objects):
            link(folder / self.name, objects, KINDS[kind], library)
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


def compile_source(source, built, include, flags):
    make(built, "-std=c++17", *flags.split(), "-ffp-contract=off", f"-I{include}", f"-I{TESTS}",
         "-MMD", "-MF", built.with_suffix(".d"), "-c", source)


def link(program, objects, flags, library):
    make(program, *flags.split(), *objects, library, "-lgtest_main", "-lgtest", "-lpthread", "-ldl")


def programs():
    """The quick ones first."""
    sources = [path for part in ("base", "core") for path in (TESTS / part).rglob("*Test.cpp")]
    return [Program(source) for source in sorted(sources, key=lambda path: (
        path.stem == DIFFERENTIAL, path.stem))]


def fault_of(program, library, scale, sanitized=False):
    """None if all tests of the program pass, else the one that fails first."""
    limits = [f"--cpu={PROCESSOR_SECONDS * (10 if scale >= 1 or sanitized else 1)}"]
    if not sanitized:
        limits.append(f"--as={ADDRESS_SPACE}")
    # The tests that ask for too much memory expect to be refused it, not to end.
    environment = {**os.environ, "VOLUX_TEST_SAMPLES_SCALE": str(scale),
                   "ASAN_OPTIONS": "allocator_may_return_null=1",
                   "LD_LIBRARY_PATH": str(library.parent)}
    status, said = call(["prlimit", *limits, program, "--gtest_fail_fast"], env=environment,
                        stderr=subprocess.DEVNULL)
    if status == 0:
        return None
    failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", said, re.MULTILINE)
    running = re.findall(r"^\[ RUN      \] (\S+)", said, re.MULTILINE)
    if failed:
        return failed[1]
    how = ("never ends" if -status in (9, 24) else
           "ends the program" if running else "does not start")
    return f"{running[-1]} ({how})" if running else how


def check_signatures(tree):
    """Raises Broken unless the calls of tests/compile compile; this takes no time at all."""
    for name in ("ContainerSignatures", "SamplingSignatures"):
        status, said = call(["g++", "-std=c++17", "-fsyntax-only", f"-I{tree.source / 'include'}",
                             TESTS / f"compile/{name}.cpp"], env=english())
        if status != 0:
            raise Broken(said)


def check_of(name, tree, library):
    """What a check beyond the unit tests says: None, or its name if it fails."""
    prove_check_sound(name)
    return None if check_passes(name, tree, library) else name


@functools.lru_cache
def prove_check_sound(name):
    if not check_passes(name, base(), base_module("plain")):
        raise Failure(f"{name} fails without a mutant too.")


def check_passes(name, tree, library):
    commands = {
        # The name of the file itself carries the version; the one it was found by is a link.
        "check_boundary": [sys.executable, TESTS / "abi/check_boundary.py", library.resolve()],
        "check_refusals": [sys.executable, TESTS / "compile/check_refusals.py", "g++",
                           tree.source / "include", TESTS / "compile/Refusals.cpp"],
    }
    return call(commands[name])[0] == 0
