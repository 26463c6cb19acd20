"""Builds a library with a mutant in it, and without one."""
import functools
import threading

from evidence.commands import LIBRARY, Failure

from .mutant_tree import Tree, call, english


class Modules:
    """The libraries of one target, in several kinds of builds."""

    def __init__(self, target, folder, kinds):
        self.target, self.folder, self.kinds = target, folder, kinds
        self.lock, self.codes = threading.Lock(), {}

    def base_code(self, kind):
        """The object code without a mistake in it."""
        library = self.base(kind)
        with self.lock:
            if kind not in self.codes:
                self.codes[kind] = stripped(library)
            return self.codes[kind]

    def has_base_code(self, library, kind):
        return library is not None and stripped(library) == self.base_code(kind)


def stripped(library):
    bare = library.with_name("bare.so")
    call(["strip", "--strip-all", "--remove-section=.note.gnu.build-id",
          "--remove-section=.comment", library, "-o", bare])
    return bare.read_bytes()


class WholeModules(Modules):
    """volux_core, which each tree builds as a whole."""

    @functools.cached_property
    def base_tree(self):
        return Tree(self.folder / "base")

    @property
    def base_source(self):
        return self.base_tree.source

    def base(self, kind):
        with self.lock:
            library, said = self.module(self.base_tree, kind)
            if library is None:
                raise Failure(f"{self.target} does not build without a mutant either: "
                              f"{said[-300:]}")
            return library

    def module(self, tree, kind):
        """Builds the library of a tree; gives the file, or None and what the compiler said."""
        build = tree.folder / kind
        if not (build / "build.ninja").exists():
            status, said = call([
                "cmake", "-S", tree.source, "-B", build, "-G", "Ninja",
                "-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_BUILD_TYPE=None",
                "-DVOLUX_DEVELOPER_MODE=OFF", "-DVOLUX_RESAMPLE=OFF",
                f"-DCMAKE_CXX_FLAGS={self.kinds[kind]}"])
            if status != 0:
                raise Failure(f"cmake cannot configure {self.target} for mutants: {said[-300:]}")
        status, said = call(["ninja", "-C", build, "-j1", self.target], env=english())
        return (build / LIBRARY, "") if status == 0 else (None, said)
