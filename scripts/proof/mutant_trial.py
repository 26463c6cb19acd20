"""Tries a mutant: builds volux_core with it and runs the suite against it."""
import filecmp
import re
from pathlib import Path

from evidence.commands import Failure

from .mutant_suite import CHECKS, DIFFERENTIAL, Broken, check_of, check_signatures, fault_of
from .mutant_tree import base_code, stripped

SAME = "same object code"


def is_in_module_alone(mutant):
    """Members of VxImage that are no templates: `extern template` keeps callers that do not
    optimise from compiling them, and the programs of the suite are not optimised."""
    text = mutant.paragraph[1]
    return mutant.file.endswith("core/VxImage.h") and "template" not in text and "{" in text


class Trial:
    """A mutant against the suite, in a worker's tree."""

    def __init__(self, tree, mutant, suite, preferred, expected=""):
        self.tree, self.mutant, self.expected = tree, mutant, expected
        self.suite = sorted(suite, key=lambda program: -preferred.get(program.name, 0))
        self.checks = sorted(CHECKS, key=lambda name: -preferred.get(name, 0))
        self.checks_first = any(preferred.get(name, 0) for name in CHECKS)
        self.in_header = mutant.file.startswith("include/")
        self.has_portable_part = "VOLUX_CORE_PORTABLE" in mutant.source
        self.callers_compile_it = self.in_header and not is_in_module_alone(mutant)
        self.built, self.same_tests, self.same_module = {}, True, None

    def sanitizers_verdict(self):
        """What the sanitizers see of a survivor of the others."""
        self.tree.apply(self.mutant)
        by = self.by_sanitizers()
        return ("killed", by) if by else ("survived", "")

    def verdict(self):
        """(verdict, by), without the sanitizers, whose builds take ten times as long"""
        self.tree.apply(self.mutant)
        library, said = self.tree.module("plain")
        if library is None:
            if "error: " not in said:
                raise Failure(f"a build breaks off without an error: {said[-300:]}")
            return "not compiled", ""
        if self.expected == SAME and not self.callers_compile_it and self.same_code():
            return SAME, ""  # without the tests, which see nothing
        try:
            by = self.killer(library)
        except Broken as broken:
            return self.of_broken(str(broken))
        if by:
            return "killed", by
        return (SAME if self.same_code() else "survived"), ""

    def of_broken(self, said):
        """A test that rejects the mutant kills it; a mutant that is no C++ does not count."""
        if "error: " not in said:
            raise Failure(f"a build breaks off without an error: {said[-300:]}")
        error = re.search(r"^(\S.*?):\d+:\d+: (?:fatal )?error: (.*)", said, re.MULTILINE)
        if error and Path(error[1]).is_relative_to(self.tree.source) and \
                "static assertion" not in error[2]:
            return "not compiled", ""
        return "killed", "the build of the tests"

    def killer(self, library):
        if self.in_header:
            check_signatures(self.tree)
        stages = [self.by_tests, self.by_checks, self.by_portable, self.by_differential,
                  self.by_optimised]
        if self.checks_first:
            stages[:2] = reversed(stages[:2])
        for stage in stages:
            by = stage(library)
            if by:
                return by
        return None

    def program(self, program, library):
        if program.name not in self.built:
            self.built[program.name] = self.build(program, library)
        return self.built[program.name]

    def build(self, program, library):
        plain, originals = program.in_base("plain")
        if not self.callers_compile_it:
            return plain
        mutated, objects = program.with_mutant(self.tree, "plain", library)
        if all(filecmp.cmp(*both, shallow=False) for both in zip(originals, objects)):
            return plain
        self.same_tests = False
        return mutated

    def by_tests(self, library, scale=0.1, suite=None):
        for program in suite or self.suite:
            fault = fault_of(self.program(program, library), library, scale)
            if fault:
                return f"{program.name}: {fault}"
        return None

    def by_checks(self, library):
        names = self.checks if self.in_header else ["check_boundary"]
        return next(filter(None, (check_of(name, self.tree, library) for name in names)), None)

    def by_portable(self, _):
        """What other processors compile there."""
        if not self.has_portable_part:
            return None
        library, _ = self.tree.module("portable")
        if library is None:
            return "the portable build"
        by = self.by_tests(library)
        return by and f"{by} (portable)"

    def by_differential(self, library):
        return self.by_tests(library, 1, [program for program in self.suite
                                          if program.name == DIFFERENTIAL])

    def by_optimised(self, _):
        """What an optimiser removes is not exported any more."""
        library, _ = self.tree.module("optimised")
        by = check_of("check_boundary", self.tree, library) if library else "the optimised build"
        return by and f"{by} (optimised)"

    def by_sanitizers(self):
        library, _ = self.tree.module("asan")
        for program in self.suite if library else ():
            runnable, _ = program.in_base("asan")
            if self.callers_compile_it:
                runnable, _ = program.with_mutant(self.tree, "asan", library)
            fault = fault_of(runnable, library, 0.1, sanitized=True)
            if fault:
                return f"{program.name}: {fault} (sanitizers)"
        return None

    def same_code(self):
        """Optimised, volux_core is the same, and so is every program that includes a header."""
        if self.same_module is None:
            self.same_module = self.has_same_module()
        return self.same_module and self.same_tests

    def has_same_module(self):
        kinds = ["optimised"]
        if self.has_portable_part:
            kinds.append("portable")
        for kind in kinds:
            library, _ = self.tree.module(kind)
            if library is None or stripped(library) != base_code(kind):
                return False
        return True
