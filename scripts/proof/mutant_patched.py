"""Builds a library with a mutant in it out of the objects of a build without one."""
import collections
import json
import re
import shlex
from pathlib import Path

from evidence.commands import ROOT, Failure, output_of

from . import builds
from .mutant_module import Modules
from .mutant_suite import Program, Suite
from .mutant_tree import call, english

Part = collections.namedtuple("Part", "output words dependencies")


class Recipe:
    """A build folder of ninja with the library of a target in it, and how that was built."""

    def __init__(self, folder, target):
        self.folder, self.target = folder, target
        self.library = folder / f"lib{target}.so"
        self.parts = list(self.read_parts())
        self.link_words = self.read_link_words()
        soname = next(word for word in self.link_words if word.startswith("-Wl,-soname,"))
        self.name = soname.rpartition(",")[2]  # under which programs look for it

    def ninja(self, *words):
        return output_of(["ninja", "-C", self.folder, "--quiet", *words], text=True)

    def read_parts(self):
        dependencies = dependencies_in(self.ninja("-t", "deps"), self.folder)
        listed = json.loads((self.folder / "compile_commands.json").read_text(encoding="utf-8"))
        for entry in listed:
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            if f"/{self.target}.dir/" in f"/{output}":
                yield Part(output, words, dependencies[output])

    def read_link_words(self):
        said = self.ninja("-t", "commands", "-s", self.library.resolve().name)
        return [word for word in shlex.split(said) if word not in (":", "&&")]

    def parts_with(self, file):
        """The parts that compile a source or include it."""
        return [part for part in self.parts if ROOT / file in part.dependencies]

    def compile(self, part, source, built):
        """Compiles a part of the copy of the sources that is in a folder; a mistake that only makes
        the compiler warn is one that a test must notice."""
        words = [re.sub(rf"{re.escape(str(ROOT))}/(?=(src|include)\b)", f"{source}/", word)
                 for word in part.words]
        return self.call([*(str(built) if word == part.output else word for word in words),
                          "-Wno-error"])

    def link(self, objects, folder):
        """Links the library into a folder, with some objects in place of its own, and puts what it
        is loaded with beside it; gives the file, or None and what the linker said."""
        library = folder / self.name
        words = [str(objects.get(word, word)) for word in self.link_words]
        words[words.index("-o") + 1] = str(library)
        status, said = self.call(words)
        for path in self.folder.glob("lib*.so*"):
            link = folder / path.name
            if self.target not in path.name and not link.is_symlink():
                link.symlink_to(path)
        return (library, "") if status == 0 else (None, said)

    def call(self, words):
        return call(words, cwd=self.folder, env=english())


def dependencies_in(said, folder):
    """What each object was compiled from, as `ninja -t deps` says it."""
    found = {}
    for group in said.strip().split("\n\n"):
        head, *paths = group.splitlines()
        found[head.partition(":")[0]] = {Path(folder, path.strip()) for path in paths}
    return found


class PatchedModules(Modules):
    """volux_resample, of which a tree compiles only what includes the mutated file."""

    base_source = ROOT

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.recipes = {}

    def base(self, kind):
        return self.recipe(kind).library

    def recipe(self, kind):
        with self.lock:
            if kind not in self.recipes:
                self.recipes[kind] = Recipe(self.build(kind), self.target)
            return self.recipes[kind]

    def build(self, kind):
        name = (self.folder / kind).relative_to(builds.BUILD).as_posix()
        return builds.build(
            name, flags=self.kinds[kind], kind="None", targets=("volux_core", self.target),
            arguments=("-DVOLUX_RESAMPLE=ON", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"))

    def module(self, tree, kind):
        """Builds the library of a tree; gives the file, or None and what the compiler said."""
        recipe, folder = self.recipe(kind), tree.folder / kind
        folder.mkdir(parents=True, exist_ok=True)
        objects = {}
        for part in recipe.parts_with(tree.mutated):
            objects[part.output] = folder / part.output.replace("/", "-")
            status, said = recipe.compile(part, tree.source, objects[part.output])
            if status != 0:
                return None, said
        return recipe.link(objects, folder)


class SharedModules(PatchedModules):
    """The library as scripts/test has built it."""

    def build(self, kind):
        return builds.release(self.target, "resample_tests")


class SharedSuite(Suite):
    """The tests as scripts/test has built them, in one program."""

    def programs(self):
        return [SharedProgram(self, source) for source in self.sources()]


class SharedProgram(Program):
    """The tests of one file among those of a program."""

    def __init__(self, suite, source):
        super().__init__(suite, source)
        self.filter = filter_of(source)

    def in_base(self, kind):
        with self.lock:
            runnable = self.suite.modules.recipe(kind).folder / "tests" / "resample_tests"
            self.prove_sound(kind, runnable)
            return runnable, []

    def fault_of(self, runnable, library, scale, sanitized=False):
        return self.suite.fault_of([runnable, self.filter], library, scale, sanitized)


def filter_of(source):
    """What chooses the tests of a file, also those for each type or value."""
    text = source.read_text(encoding="utf-8")
    names = sorted(set(re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),", text, re.MULTILINE)))
    if not names:
        raise Failure(f"{source.name} has no test.")
    return "--gtest_filter=" + ":".join(
        pattern for name in names
        for pattern in (f"{name}.*", f"{name}/*", f"*/{name}.*", f"*/{name}/*"))
