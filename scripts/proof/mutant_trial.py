"""Tries a mutant: builds the library with it and runs the suite against it."""
import filecmp
import re
from pathlib import Path

from evidence.commands import Failure

from .mutant_suite import Broken
from .mutant_subject import SAME


class Trial:
    """A mutant against the suite, in a worker's tree."""

    def __init__(self, subject, tree, mutant, suite, preferred, expected=""):
        self.subject, self.modules, self.expected = subject, subject.modules, expected
        self.tree, self.mutant = tree, mutant
        self.suite = sorted(suite, key=lambda program: -preferred.get(program.name, 0))
        self.checks = sorted(subject.checks, key=lambda name: -preferred.get(name, 0))
        self.checks_first = any(preferred.get(name, 0) for name in subject.checks)
        self.in_header = mutant.file.startswith("include/")
        self.has_portable_part = bool(subject.portable) and subject.portable in mutant.source
        self.callers_compile_it = (self.in_header and subject.is_inlined(mutant)) or \
            any(program.compiles(mutant.file) for program in suite)
        self.libraries, self.built, self.same_tests, self.same_module = {}, {}, True, None

    def sanitizers_verdict(self):
        """What the sanitizers see of a survivor of the others."""
        self.tree.apply(self.mutant)
        by = self.by_sanitizers()
        return ("killed", by) if by else ("survived", "")

    def verdict(self):
        """(verdict, by), without the sanitizers, whose builds take ten times as long"""
        self.tree.apply(self.mutant)
        library, said = self.module("plain")
        if library is None:
            if "error: " not in said:
                raise Failure(f"a build breaks off without an error: {said[-300:]}")
            return "not compiled", ""
        expects_same = self.expected == SAME or self.subject.compared == "plain"
        if expects_same and not self.callers_compile_it and self.same_code():
            return SAME, ""  # without the tests, which see nothing
        try:
            by = self.killer(library)
        except Broken as broken:
            return self.of_broken(str(broken))
        if by:
            return "killed", by
        return (SAME if self.same_code() else "survived"), ""

    def module(self, kind):
        if kind not in self.libraries:
            self.libraries[kind] = self.modules.module(self.tree, kind)
        return self.libraries[kind]

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
            self.subject.check_signatures(self.tree)
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
        for program in self.suite if suite is None else suite:
            fault = program.fault_of(self.program(program, library), library, scale)
            if fault:
                return f"{program.name}: {fault}"
        return None

    def by_checks(self, library):
        of_headers = not self.in_header and "check_refusals"
        return next(filter(None, (self.subject.check_of(name, self.tree, library)
                                  for name in self.checks if name != of_headers)), None)

    def by_portable(self, _):
        """What other processors compile there."""
        if not self.has_portable_part:
            return None
        library, _ = self.module("portable")
        if library is None:
            return "the portable build"
        by = self.by_tests(library)
        return by and f"{by} (portable)"

    def by_differential(self, library):
        return self.by_tests(library, 1, [program for program in self.suite
                                          if program.name == self.subject.differential])

    def by_optimised(self, _):
        """What an optimiser removes is not exported any more."""
        if "optimised" not in self.modules.kinds:
            return None
        library, _ = self.module("optimised")
        by = self.subject.check_of("check_boundary", self.tree, library) if library else \
            "the optimised build"
        return by and f"{by} (optimised)"

    def by_sanitizers(self):
        library, _ = self.module("asan")
        for program in self.suite if library else ():
            runnable, _ = program.in_base("asan")
            if self.callers_compile_it:
                runnable, _ = program.with_mutant(self.tree, "asan", library)
            fault = program.fault_of(runnable, library, 0.1, sanitized=True)
            if fault:
                return f"{program.name}: {fault} (sanitizers)"
        return None

    def same_code(self):
        """Optimised, the library is the same, and so is every program that includes a header."""
        if self.same_module is None:
            self.same_module = self.has_same_module()
        return self.same_module and self.same_tests

    def has_same_module(self):
        kinds = [self.subject.compared]
        if self.has_portable_part:
            kinds.append("portable")
        return all(self.modules.has_base_code(self.module(kind)[0], kind) for kind in kinds)
