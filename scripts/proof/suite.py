"""The unit tests as the checks use them: built with flags of their own, run against any module."""
import os
import re

from evidence import commands

from . import builds

PROGRAMS = ("container_tests", "sampling_tests", "thread_tests")
CLANG = "clang++-19"
# Atomic, or threads lose counts, and what is computed from two counts comes out wrong.
COUNTERS = ("-fprofile-instr-generate -fprofile-update=atomic -fcoverage-mapping "
            "-fcoverage-mcdc")
COVERAGE = f"-O0 {COUNTERS}"
RESAMPLE_ON = ("-DVOLUX_RESAMPLE=ON",)


def build(name, compiler, flags, arguments=(), programs=PROGRAMS):
    """Builds the test programs and volux_core beside them; gives the folder. What counts calls does
    not see those of functions that came precompiled."""
    return builds.build(name, compiler, flags, kind="None", targets=programs,
                        arguments=["-DVOLUX_DEVELOPER_MODE=ON", "-DVOLUX_PROGRAMS=",
                                   "-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON", *arguments])


def covered_tests():
    """Builds the test programs that coverage counts and that other checks run with libraries of
    their own, which need the run-time library of the sanitizer; gives the folder."""
    return build("coverage", CLANG, COVERAGE, ["-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=undefined"])


def build_module(name, compiler, flags, arguments=(), library="volux_core"):
    """Builds a library alone; gives the folder."""
    return builds.build(name, compiler, flags, kind="None", targets=[library],
                        arguments=["-DVOLUX_PROGRAMS=", *arguments])


def save_log(name, text):
    """Keeps what a program said; gives the file as it is named to a reader."""
    commands.LOGS.mkdir(parents=True, exist_ok=True)
    path = commands.LOGS / f"{name}.log"
    path.write_text(text, encoding="utf-8")
    return path.relative_to(commands.ROOT)


def run(folder, program, module=None, log="proof-tests", wrapper=(), words=(), **environment):
    """Runs a test program with another folder's volux_core, if one is named. Gives the number of
    tests that passed, or None if there were none or not all did, and the log."""
    environment = {**os.environ, "LLVM_PROFILE_FILE": os.devnull, **environment,
                   "LD_LIBRARY_PATH": str(module or folder)}
    done = commands.run([*wrapper, folder / "tests" / program, "--gtest_brief=1", *words],
                      env=environment, errors="replace")
    saved = save_log(f"{log}-{program}", done.stdout + done.stderr)
    passed = re.search(r"^\[  PASSED  \] (\d+) tests?\.$", done.stdout, re.MULTILINE)
    return (int(passed[1]) or None if passed and done.returncode == 0 else None), saved
