"""Which lines, branches, conditions and instantiations of volux_resample its tests reach, with each
instruction set."""
import dataclasses
import re
from pathlib import Path

from evidence import commands, provenance

from . import suite
from .coverage_subject import Subject

TITLE = "Coverage of volux_resample"
PROMISE = "Tests run all of `volux_resample`, with each instruction set."
BREAKER = "A line, a branch or a condition that was written and never tried."
WITH_RESAMPLE = True
LEFT_OUT_OF_CI = "compiling it with counters takes minutes"

# Highway would compile all of them and choose the widest of the machine.
FLAGS = f"-O1 {suite.COUNTERS} -DHWY_COMPILE_ONLY_STATIC"
# What adds an instruction set to what every x86-64 has, and what Linux calls what it needs.
SETS = {
    "EMU128": ("", ""),
    "SSSE3": ("-mssse3", "ssse3"),
    "SSE4": ("-msse4.2 -maes -mpclmul", "sse4_2 aes pclmulqdq"),
    "AVX2": ("-march=haswell -maes", "avx2 fma bmi2 f16c aes pclmulqdq"),
    "AVX3": ("-march=skylake-avx512", "avx2 avx512f avx512bw avx512dq avx512vl"),
}
PARTS = tuple(SETS)


def is_covered(file):
    return not provenance.is_core(file) or file.startswith("src/exact/")


def tests():
    return suite.build("resample-coverage", suite.CLANG, FLAGS, suite.RESAMPLE_ON,
                       ("resample_tests",))


def module(build, flags):
    return suite.build_module(f"resample-coverage-{build}", suite.CLANG, f"{FLAGS} {flags}",
                              suite.RESAMPLE_ON, "volux_resample")


def here():
    """The flags of each instruction set that this processor has."""
    known = set(Path("/proc/cpuinfo").read_text(encoding="utf-8").split())
    return {name: flags for name, (flags, needed) in SETS.items() if set(needed.split()) <= known}


SUBJECT = Subject(
    library="libvolux_resample.so",
    programs=("resample_tests",),
    builds={},
    covers=is_covered,
    tests=tests,
    module=module,
    functions=[],
    conditions=[],
    apart="instruction set",
    mark="N_{}",  # the namespace that Highway compiles it in
    together=True)


def run(options):
    del options
    commands.install("build", "test", "coverage", "resample")
    return dataclasses.replace(SUBJECT, builds=here()).result()
