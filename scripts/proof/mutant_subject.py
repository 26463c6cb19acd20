"""What mutants are made of: a library, how it is built, and what meets its mutants."""
import dataclasses
import functools
from pathlib import Path
from typing import Callable

from evidence.commands import ROOT, Failure

from .mutant_module import Modules
from .mutant_suite import TESTS, Broken, Suite
from .mutant_tree import call, english

SAME = "same object code"


@dataclasses.dataclass(frozen=True, eq=False)
class Subject:
    """A library and all that its mutants need."""

    covers: Callable  # says whether a source, by its name in the repository, is the library's
    with_resample: bool  # whether the sources of volux_resample decide which mutants a sample has
    share: float  # how many mutants of a file take part,
    minimum: int  # and how many at least
    fewest: int  # of a campaign
    kept: Path  # the table of all mutants
    explained: Path  # says of survivors why nobody can tell them from the original
    journal: Path  # the rows as they come; it can be the table itself
    modules: Modules
    suite: Suite
    checks: dict  # the words of each, given a folder of sources and the library
    signatures: tuple  # of tests/compile, which must compile
    sampled: tuple = ("killed", SAME, "survived", "")  # verdicts of the record; without one: ""
    differential: str = ""  # the program that runs once more at full length
    portable: str = ""  # the macro of sources that compile something else for other processors
    is_inlined: Callable = lambda _: True  # says of a mutant in a header whether callers compile it

    @property
    def folder(self):
        return self.modules.folder

    @property
    def compared(self):
        """The kind of build whose object code is compared."""
        return "optimised" if "optimised" in self.modules.kinds else "plain"

    def files(self):
        found = [path.relative_to(ROOT).as_posix() for folder in ("src", "include")
                 for path in sorted((ROOT / folder).rglob("*")) if path.is_file()]
        return [file for file in found if self.covers(file)]

    def check_signatures(self, tree):
        """Raises Broken unless the calls of tests/compile compile; this takes no time at all."""
        for name in self.signatures:
            status, said = call(["g++", "-std=c++17", "-fsyntax-only",
                                 f"-I{tree.source / 'include'}", TESTS / f"compile/{name}.cpp"],
                                env=english())
            if status != 0:
                raise Broken(said)

    def check_of(self, name, tree, library):
        """What a check beyond the unit tests says: None, or its name if it fails."""
        prove_check_sound(self, name)
        return None if self.passes(name, tree.source, library) else name

    def passes(self, name, source, library):
        return call(self.checks[name](source, library))[0] == 0


@functools.lru_cache
def prove_check_sound(subject, name):
    if not subject.passes(name, subject.modules.base_source, subject.modules.base("plain")):
        raise Failure(f"{name} fails without a mutant too.")
