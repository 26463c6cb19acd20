"""Mutation: the suite must notice each small mistake that is put into volux_core."""
import sys

from evidence import provenance
from evidence.commands import ROOT

from . import mutant_campaign
from .builds import BUILD
from .mutant_campaign import add_arguments  # noqa: F401  (scripts/prove asks the check for it)
from .mutant_module import WholeModules
from .mutant_subject import Subject
from .mutant_suite import TESTS, Suite

TITLE = "Mutation: no small mistake that the tests would miss"
PROMISE = "Tests notice every small mistake in `volux_core`."
BREAKER = "A test that runs code and does not look at what it gives."
CI_RUN = ["--sample", "6"]
WHOLE_RUN = ["--sample", "30"]

FOLDER = BUILD / "mutants"
KINDS = {
    "plain": "-O0",
    "portable": "-O0 -DVOLUX_CORE_PORTABLE",
    "optimised": "-O2",
    "asan": "-O0 -g1 -fno-omit-frame-pointer -fno-sanitize-recover=all"
            " -fsanitize=address,undefined,float-cast-overflow",
}
DIFFERENTIAL = "SamplingDifferentialTest"


def is_inlined(mutant):
    """Not so members of VxImage that are no templates: `extern template` keeps callers that do not
    optimise from compiling them, and the programs of the suite are not optimised."""
    text = mutant.paragraph[1]
    return not mutant.file.endswith("core/VxImage.h") or "template" in text or "{" not in text


def boundary_words(_, library):
    # The name of the file itself carries the version; the one it was found by is a link.
    return [sys.executable, TESTS / "abi/check_boundary.py", library.resolve()]


def refusals_words(source, _):
    return [sys.executable, TESTS / "compile/check_refusals.py", "g++", source / "include",
            TESTS / "compile/Refusals.cpp"]


MODULES = WholeModules("volux_core", FOLDER, KINDS)
SUBJECT = Subject(
    covers=provenance.is_core,
    with_resample=False,
    share=0.25,
    minimum=15,
    fewest=400,
    kept=ROOT / "docs/proof/mutants.tsv",
    explained=ROOT / "docs/proof/mutants-explained.tsv",
    journal=FOLDER / "journal.tsv",
    modules=MODULES,
    suite=Suite(FOLDER, MODULES, ("base", "core"), (DIFFERENTIAL,), KINDS, processor_seconds=60),
    checks={"check_boundary": boundary_words, "check_refusals": refusals_words},
    signatures=("ContainerSignatures", "SamplingSignatures"),
    differential=DIFFERENTIAL,
    portable="VOLUX_CORE_PORTABLE",
    is_inlined=is_inlined)


def run(options):
    return mutant_campaign.run(SUBJECT, options)
