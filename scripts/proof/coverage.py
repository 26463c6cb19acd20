"""Which lines, branches, conditions and instantiations of volux_core the unit tests reach."""
from evidence import commands, provenance

from . import suite
from .coverage_subject import Subject

TITLE = "Coverage"
PROMISE = "Tests run all of `volux_core`."
BREAKER = "A line, a branch or a condition that was written and never tried."


def portable_module(build, flags):
    return suite.build_module(f"coverage-{build}", suite.CLANG, suite.COVERAGE + flags)


SUBJECT = Subject(
    library=commands.LIBRARY,
    programs=suite.PROGRAMS,
    builds={"as it is": "", "portable": " -DVOLUX_CORE_PORTABLE"},
    covers=provenance.is_core,
    tests=suite.covered_tests,
    module=portable_module,
    functions=[
        (r"\(volux::core::detail::ConstantInitialized",
         "evaluated by the compiler alone: the policy objects are constant-initialised"),
        (r"detail::(refuseUnless|byValue|byAddress)<",
         "evaluated by the compiler alone, in noexcept clauses; the test `refusals` looks at them"),
    ],
    conditions=[
        ("exact::truncateInRange<int>", 3,
         "a number that equals the lowest `int` is also above the lowest less one; only in 64 "
         "bits, where this condition is covered, do the two round to one number"),
        ("detail::fused", 1,
         "decides where a loop of 2^31 steps would follow; a second process begins one in "
         "`FillWithoutEnd`, and what it counts is lost when it is ended"),
    ])


def run(options):
    del options
    commands.install("build", "test", "coverage")
    return SUBJECT.result()
