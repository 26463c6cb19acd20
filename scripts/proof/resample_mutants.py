"""Mutation: the suite must notice each small mistake that is put into volux_resample."""
import dataclasses
import re
import sys

from evidence.commands import ROOT, install

from . import builds, mutant_campaign
from .builds import BUILD
from .mutant_campaign import add_arguments  # noqa: F401  (scripts/prove asks the check for it)
from .mutant_patched import PatchedModules, SharedModules, SharedSuite
from .mutant_subject import Subject
from .mutant_suite import TESTS, Suite

TITLE = "Mutation of volux_resample"
PROMISE = "Tests notice every small mistake in `volux_resample`."
BREAKER = "A test that runs code and does not look at what it gives."
WITH_RESAMPLE = True
CI_RUN = ["--sample", "3"]
WHOLE_RUN = ["--sample", "30"]

FOLDER = BUILD / "resample-mutants"
KEPT = ROOT / "docs/proof/resample-mutants.tsv"


def is_covered(file):
    return "/resample/" in file


def is_quick(file):
    """Whether a file is compiled in no time, and by no test."""
    return re.match(r"src/resample/(calls|rows/(?!Processors))", file)


def exports_words(_, library):
    return [sys.executable, TESTS / "resample/check_exports.py", library]


def refusals_words(source, _):
    return [sys.executable, TESTS / "compile/check_refusals.py", "g++", source / "include",
            TESTS / "compile/ResampleRefusals.cpp"]


# Highway would choose the widest instruction set of the machine: the others are not compiled.
FLAGS = {"plain": "-O1 -DHWY_COMPILE_ONLY_STATIC -march=native"}
# More than a second each.
SLOW = tuple(f"{name}Test" for name in (
    "Antialias", "EveryWay", "Gradient", "Guard", "LabelsVote", "Region", "Threads", "View",
    "ViewGuard", "WarpRegion", "Work"))

MODULES = PatchedModules("volux_resample", FOLDER, FLAGS)
SUITE = Suite(FOLDER, MODULES, ("resample",), SLOW, FLAGS, processor_seconds=25,
              beside=("libvolux_core.so", "-lhwy"))
SUBJECT = Subject(
    covers=is_covered,
    with_resample=True,
    share=0.08,
    minimum=10,
    fewest=1000,
    kept=KEPT,
    explained=ROOT / "docs/proof/resample-mutants-explained.tsv",
    journal=KEPT,  # a campaign takes days: it goes on where the record stops, on any machine
    modules=MODULES,
    suite=SUITE,
    checks={"check_exports": exports_words, "check_refusals": refusals_words},
    signatures=("ResampleLayout", "ResampleNames"))

SHARED_MODULES = SharedModules("volux_resample", FOLDER / "shared", {"plain": ""})
# What scripts/test has built: with all instruction sets, whose vectors take minutes to compile, and
# with tests that are not optimised, which take minutes to let a mutant survive.
SHARED = dataclasses.replace(
    SUBJECT,
    covers=is_quick,
    sampled=("killed",),
    modules=SHARED_MODULES,
    suite=SharedSuite(FOLDER / "shared", SHARED_MODULES, ("resample",), SLOW, {},
                      processor_seconds=100))


def run(options):
    install("resample")
    return mutant_campaign.run(SHARED if builds.shares else SUBJECT, options)
