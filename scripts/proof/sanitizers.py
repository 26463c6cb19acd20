"""`volux_core` under every sanitizer, valgrind and the static checkers."""
import dataclasses
import os
import re
import shutil

from evidence import commands
from evidence.commands import BadUse

from . import builds, suite
from .suite import CLANG
from .results import Result, Table

TITLE = "Sanitizers and friends"
PROMISE = "Nothing depends on what the language leaves undefined."
BREAKER = "An overflow, memory read before it was written, a race, a warning that was silenced."
WITH_RESAMPLE = True
CI_RUN = ["integer", "memory", "reasons"]

PLAIN = "-O0 -gdwarf-4 -gline-tables-only"
FRAMES = " -fno-omit-frame-pointer"
UNDEFINED = "undefined,float-cast-overflow"
INTEGER = UNDEFINED + ",integer,implicit-conversion,nullability,local-bounds"
SUITES = (*suite.PROGRAMS, "resample_tests")
# Tests of volux_resample that ask for everything with everything, or for gigabytes, many times.
LONG_RESAMPLE_TESTS = "EveryWay/*:Threads/*:Large/*"
# Tests that watch calloc and free, which valgrind keeps for itself, or that ask for more than there
# can be, which it reports; long ones, whose calls the other tests make as well; and those with
# voxels gigabytes apart, which take most of its time.
# SharedMemory keeps short alone: its other types take three quarters of all the tests' time.
NOT_UNDER_VALGRIND = {
    "container_tests": "HeapUse*:SizeLimits/*.TheSameExtentsCanFitOneElementSizeAndNotAnother"
                       ":*FarApart*:AccessBeyond32Bits*"
                       ":SharedMemory/U*:SharedMemory/I*:SharedMemory/F*:SharedMemory/D*",
    "sampling_tests": "Sampling*:EverySpelling*:*Differential*:FarNeighbours*",
}
# A checker's line that tells of something wrong, and where.
FINDING = re.compile(r"(\S+:\d+:\d+: runtime error: .*?)(?: \d.*)?$"
                     r"|((?:ERROR|WARNING): \w+Sanitizer: .*)$", re.MULTILINE)


@dataclasses.dataclass
class Outcome:
    compiler: str
    ran: str
    findings: list


def build_and_run(name, compiler, flags, programs):
    """The unit tests under a sanitizer. Gives the number of those that passed, and the findings."""
    tests = suite.build(f"sanitizers-{name}", compiler, flags, suite.RESAMPLE_ON, programs)
    return run_tests(tests, None, name, programs)


def run_tests(tests, module, name, programs):
    reports = builds.BUILD / f"sanitizers-{name}-reports"
    shutil.rmtree(reports, ignore_errors=True)
    reports.mkdir(parents=True)
    # To files, because the tests capture the error stream.
    option = f"log_path='{reports}/report'"
    passed, findings = 0, []
    for program in programs:
        words = [f"--gtest_filter=-{LONG_RESAMPLE_TESTS}"] if program == "resample_tests" else []
        count, log = suite.run(tests, program, module, f"proof-sanitizers-{name}", words=words,
                               ASAN_OPTIONS=option, UBSAN_OPTIONS=option, TSAN_OPTIONS=option)
        passed += count or 0
        if count is None:
            findings.append(f"{program} fails; see {log}")
    findings += found_in("".join(path.read_text(encoding="utf-8", errors="replace")
                                 for path in sorted(reports.iterdir())))
    return f"{passed} tests", findings


def found_in(text):
    found = {next(filter(None, match)) for match in FINDING.findall(text)}
    return sorted(finding.replace(f"{commands.ROOT}/", "").rstrip(":") for finding in found)


def address_by(compiler, name):
    flags = f"{PLAIN if compiler == CLANG else '-O0 -g1'}{FRAMES} -fsanitize=address,{UNDEFINED}"
    return Outcome(compiler, *build_and_run(name, compiler, flags, SUITES))


def address():
    return address_by(CLANG, "address")


def address_gcc():
    return address_by("g++", "address-gcc")


def integer():
    module = suite.build_module("sanitizers-integer", CLANG, f"{PLAIN} -fsanitize={INTEGER}")
    return Outcome(CLANG, *run_tests(suite.covered_tests(), module, "integer", suite.PROGRAMS))


def memory():
    flags = f"-O1 -gline-tables-only{FRAMES} -fsanitize=memory -fsanitize-memory-track-origins=2"
    folder = builds.build("sanitizers-memory", CLANG, flags, "None", ["memory_exercise"])
    done = commands.run([folder / "tests" / "proof" / "memory" / "memory_exercise"],
                      env={**os.environ, "MSAN_OPTIONS": "allocator_may_return_null=1"})
    log = suite.save_log("proof-sanitizers-memory", done.stdout + done.stderr)
    findings = found_in(done.stderr)
    if done.returncode != 0 or not re.match(r"[1-9]", done.stdout):
        findings.append(f"memory_exercise fails; see {log}")
    return Outcome(CLANG, done.stdout.strip() or "nothing", findings)


def thread():
    return Outcome(CLANG, *build_and_run("thread", CLANG, f"{PLAIN}{FRAMES} -fsanitize=thread",
                                         programs=["thread_tests"]))


def valgrind():
    tests, module = suite.covered_tests(), suite.build_module("sanitizers-plain", CLANG, PLAIN)
    wrapper = ["valgrind", "--quiet", "--error-exitcode=9", "--leak-check=full",
               "--errors-for-leak-kinds=definite,indirect,possible"]

    def run_without(program, left_out):
        return suite.run(tests, program, module, "proof-sanitizers-valgrind", wrapper,
                         [f"--gtest_filter=-{left_out}"])
    outcomes = commands.at_once(run_without, *zip(*NOT_UNDER_VALGRIND.items()))
    return Outcome("valgrind", f"{sum(count or 0 for count, _ in outcomes)} tests",
                   [f"a test fails or errs; see {log}" for count, log in outcomes if count is None])


def lint():
    done = commands.run([commands.ROOT / "scripts" / "lint", builds.BUILD / "lint"])
    log = suite.save_log("proof-sanitizers-lint", done.stdout + done.stderr)
    tools = " and ".join(map(commands.version, ("clang-tidy", "cppcheck")))
    return Outcome(tools, "include/, src/",
                   [] if done.returncode == 0 else [f"scripts/lint fails; see {log}"])


# What silences a checker: with the checks it names in brackets, and the reason behind a colon or in
# the comment above.
MARK = re.compile(r"NOLINT(?!END)|cppcheck-suppress|no_sanitize|diagnostic ignored|LCOV_EXCL|GCOVR")
REASONED = re.compile(r"NOLINT(NEXTLINE|BEGIN)?\([\w,-]+\)(: \w+ \w+)?")
COMMENT = re.compile(r"\s*// \w+ \w+")


def has_reason(line, above):
    named = REASONED.search(line)
    return named is not None and (named[2] is not None or COMMENT.match(above) is not None)


def reasons():
    marks, findings = 0, []
    for folder in ("include", "src", "tests", "fuzz", "examples", "docs"):
        for path in sorted((commands.ROOT / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".ipp", ".inc"):
                continue
            lines = ["", *path.read_text(encoding="utf-8").splitlines()]
            for number, (above, line) in enumerate(zip(lines, lines[1:]), start=1):
                if MARK.search(line):
                    marks += 1
                    if not has_reason(line, above):
                        findings.append(f"{path.relative_to(commands.ROOT)}:{number}: no reason")
    for line in (commands.ROOT / ".clang-tidy").read_text(encoding="utf-8").splitlines():
        if re.match(r"\s+-[a-z]", line):
            marks += 1
            if not re.search(r"# \w+ \w+", line):
                findings.append(f".clang-tidy: no reason for {line.strip()}")
    return Outcome("-", f"{marks} marks", findings)


RUNS = {
    "address": ("address, undefined behaviour", address),
    "address-gcc": ("address, undefined behaviour", address_gcc),
    "integer": ("undefined behaviour, integer", integer),
    "memory": ("memory", memory),
    "thread": ("thread", thread),
    "valgrind": ("valgrind memcheck", valgrind),
    "lint": ("clang-tidy, cppcheck", lint),
    "reasons": ("reasons of suppressions", reasons),
}


def add_arguments(parser):
    parser.add_argument("tools", nargs="*", metavar="TOOL",
                        help=f"which to run, of {', '.join(RUNS)}; all if none is named")


def run(options):
    unknown = [tool for tool in options.tools if tool not in RUNS]
    if unknown:
        raise BadUse(f"there is no tool {unknown[0]}; there are {', '.join(RUNS)}.")
    commands.install("build", "test", "coverage", "sanitizers", "resample")
    rows, found = [], []
    names = options.tools or list(RUNS)
    for name, outcome in zip(names, commands.at_once(lambda name: RUNS[name][1](), names)):
        title = RUNS[name][0]
        rows.append([title, outcome.compiler, outcome.ran, len(outcome.findings)])
        found += [[title, finding] for finding in outcome.findings]
        print(f"  {title}: {outcome.ran}, {len(outcome.findings)} findings", flush=True)
    tables = [Table("What ran", ["tool", "compiler", "what ran", "findings"], rows)]
    if found:
        tables.append(Table("Findings", ["tool", "finding"], found[:50]))
    return Result(not found, f"{len(rows)} tools have {len(found)} findings.", tables,
                  complete=len(rows) == len(RUNS))
