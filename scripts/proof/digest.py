"""One digest of the sampled corpus, whatever the compiler, its flags and the processor."""
import concurrent.futures
import dataclasses
import hashlib
import itertools
import re
import shutil
import subprocess
import time

from evidence import commands, package
from evidence.commands import CORES, LOGS, ROOT, BadUse, Failure, install, version

from . import builds, digest_kept, sysroot
from .digest_rows import SIZES, SYSROOTS, THREADS, Row, all_rows, native_rows, sysroot_libraries
from .results import Result, Table

TITLE = "One digest on every compiler and processor"
PROMISE = "Every result has the same bits on every compiler and processor."
BREAKER = ("A compiler that fuses or reorders, a processor that rounds otherwise, a word "
           "that begins at its other end.")
WITH_RESAMPLE = True
PARTS = tuple(SIZES)
CI_RUN = ["--rows", " release|^s390x s390x-linux-gnu-g[+][+] -O2$", "--small"]

SOURCE = ROOT / "tests" / "proof" / "digest"
COMMITTED = SOURCE / "digests.txt"
WHEEL = "the instruction set that the wheel chooses"


@dataclasses.dataclass(frozen=True)
class Run:
    """One run of a program of a row."""

    corpus: str
    instructions: str = ""
    threads: int = 0

    def __str__(self):
        how = f" with {self.instructions} on {self.threads} threads" if self.threads else ""
        return self.corpus + how


@dataclasses.dataclass
class Outcome:
    """What the program of a row gave, or why it gave nothing."""

    row: Row
    found: dict  # corpus, and how it was run: {family: (digest, number of results)}
    fault: str = ""

    def differing(self, committed):
        """The families of each run that are not as committed."""
        return {run: [name for name in sorted(committed[run.corpus].keys() | families.keys())
                      if committed[run.corpus].get(name) != families.get(name, (None,))[0]]
                for run, families in self.found.items()}

    def passed(self, committed):
        """As committed; where products and sums are fused, other in nothing but what has any."""
        if self.fault or any(families.keys() != committed[run.corpus].keys()
                             for run, families in self.found.items()):
            return False
        names = [name for names in self.differing(committed).values() for name in names]
        if self.row.fused:
            return bool(names) and all("Linear" in name or "Cubic" in name
                                       or name in committed["world"] for name in names)
        return not names


def provide(rows):
    """Sees to it that the compilers and emulators of the rows are there."""
    install("build")
    if any(row.bulk or row.python for row in rows):
        install("resample")
    for target in {row.target for row in rows if row.bulk} & SYSROOTS.keys():
        sysroot.provide(SYSROOTS[target])
    for row in rows:
        for program in row.programs:
            if shutil.which(program):
                continue
            try:
                install("digest", row.group)
            except Failure:
                pass  # said below
            if shutil.which(program) is None:
                raise Failure(f"{program}, for the row {row.name}, is missing and cannot be "
                              "installed (is there a network?); scripts/packages names its "
                              f"package in the group digest or {row.group}.")


def build(row):
    """Builds the library and the programs of a row; gives the folder of the programs."""
    targets = sorted({row.program_of(corpus) for corpus in row.corpora})
    if row.release:
        return builds.release(*targets, compiler=row.compiler) / SOURCE.relative_to(ROOT)
    cross = [] if row.target == "x86-64" else [
        f"-DCMAKE_SYSTEM_NAME={'Generic' if row.target == 'wasm32' else 'Linux'}",
        f"-DCMAKE_SYSTEM_PROCESSOR={row.target}"]
    if row.bulk and cross:
        cross += [f"-Dhwy_DIR={sysroot_libraries(row.target) / 'cmake' / 'hwy'}"]
    return commands.build(row.folder, row.log, targets, "-DCMAKE_BUILD_TYPE=None",
                          f"-DCMAKE_CXX_COMPILER={row.compiler}",
                          f"-DCMAKE_CXX_FLAGS={row.flags}",
                          f"-DVOLUX_RESAMPLE={'ON' if row.bulk or row.python else 'OFF'}", *cross,
                          source=SOURCE, jobs=1)


def runs_of(row, folder):
    """How the programs of a row are run: each run with its command."""
    for corpus in row.corpora:
        program = [*row.runner, folder / row.program_of(corpus)]
        size = str(SIZES[corpus][1])
        if row.python:
            asked = [package.interpreter("run"), SOURCE / "python_answers.py"]
            yield from ((Run(corpus, WHEEL, threads), [*asked, str(threads), *program, size])
                        for threads in THREADS)
            continue
        if row.program_of(corpus) != "bulk_calls":
            yield Run(corpus), [*program, size]
            continue
        named = commands.run(program).stdout.split()
        if not named:
            raise Failure("names no instruction set")
        for instructions, threads in itertools.product(named, THREADS):
            yield Run(corpus, instructions, threads), [*program, size, instructions, str(threads)]


def families_of(command, log):
    """Runs a program; the digest of each of its families and the number of its results."""
    digests, counts = {}, {}
    with open(LOGS / f"{log}.log", "ab") as errors, \
            subprocess.Popen(command, stdout=subprocess.PIPE, stderr=errors) as program:
        for header in program.stdout:
            size, name = header.decode().rstrip("\n").split(" ", 1)
            results = program.stdout.read(int(size))
            digests.setdefault(name, hashlib.sha256()).update(results)
            counts[name] = counts.get(name, 0) + len(results) // 8
    if program.returncode != 0:
        raise Failure(f"ends with {program.returncode}; see {LOGS.relative_to(ROOT)}/{log}.log")
    return {name: (digest.hexdigest(), counts[name]) for name, digest in digests.items()}


def carry_out(row):
    start = time.monotonic()
    outcome = Outcome(row, {})
    try:
        for run, command in runs_of(row, build(row)):
            outcome.found[run] = families_of(command, row.log)
        digest_kept.keep(row, [[dataclasses.astuple(run), families]
                               for run, families in outcome.found.items()])
    except (Failure, OSError) as failure:
        outcome.fault = str(failure)
    return outcome, time.monotonic() - start


def carried_out(row, afresh):
    """Returns the outcome of a row and its seconds: those of before if nothing has changed."""
    found = None if afresh else digest_kept.known(row)
    if found is None:
        return carry_out(row)
    return Outcome(row, {Run(*run): {name: tuple(facts) for name, facts in families.items()}
                         for run, families in found}), 0.0


def over_all(families):
    """One digest over those of the families."""
    lines = "".join(f"{digest}  {name}\n" for name, digest in sorted(families.items()))
    return hashlib.sha256(lines.encode()).hexdigest()


def write_committed(outcome):
    text = ("# SHA-256 of the sampled corpora, of the small parts of them and of each family;\n"
            "# `scripts/prove digest` compares, and with --update it writes this file.\n")
    for run, families in outcome.found.items():
        corpus = run.corpus
        digests = {name: digest for name, (digest, _) in families.items()}
        text += f"{over_all(digests)}  {corpus}\n"
        text += "".join(f"{digest}  {corpus}: {name}\n" for name, digest in sorted(digests.items()))
    COMMITTED.write_text(text, encoding="utf-8")


def read_committed():
    if not COMMITTED.exists():
        raise Failure(f"{COMMITTED.relative_to(ROOT)} is missing; scripts/prove digest --update "
                      "writes it.")
    committed, text = {corpus: {} for corpus in SIZES}, COMMITTED.read_text(encoding="utf-8")
    for digest, corpus, name in re.findall(r"^([0-9a-f]{64})  ([\w-]+): (.+)$", text, re.MULTILINE):
        committed[corpus][name] = digest
    for corpus, digests in committed.items():
        if not digests or f"{over_all(digests)}  {corpus}\n" not in text:
            raise Failure(f"{COMMITTED.relative_to(ROOT)} contradicts itself about {corpus}.")
    return committed


def verdict(outcome, committed):
    if outcome.fault:
        return f"**{outcome.fault}**"
    differing = outcome.differing(committed)
    text = "; ".join(f"differs in {len(names)} of {len(outcome.found[run])} families of {run}"
                     for run, names in differing.items() if names) or "equal"
    if outcome.passed(committed):
        return text + (", as it must" if outcome.row.fused else "")
    return f"**{text}**"


def say(outcome, seconds, committed):
    word = "ok    " if outcome.passed(committed) else "FAILED"
    print(f"{word}  {outcome.row.name}: {verdict(outcome, committed)} ({seconds:.0f} s)",
          flush=True)
    if outcome.passed(committed):
        return
    differing = outcome.differing(committed)
    for name in sorted({name for names in differing.values() for name in names}):
        runs = " and ".join(str(run) for run, names in differing.items() if name in names)
        print(f"        {name} ({runs})", flush=True)


def carry_out_all(rows, committed, afresh):
    """Builds and runs as many rows at a time as there are cores; the outcomes in their order."""
    with concurrent.futures.ThreadPoolExecutor(CORES) as workers:
        jobs = [workers.submit(carried_out, row, afresh) for row in rows]
        try:
            for job in concurrent.futures.as_completed(jobs):
                say(*job.result(), committed)
        except BaseException:
            workers.shutdown(wait=False, cancel_futures=True)
            raise
    return [job.result()[0] for job in jobs]


def what_ran(outcome):
    instructions = dict.fromkeys(run.instructions for run in outcome.found if run.instructions)
    how = (f": {', '.join(instructions)}, each on {', '.join(map(str, THREADS))} threads"
           if instructions else "")
    return ", ".join(outcome.row.corpora) + how


def rows_table(outcomes, committed):
    versions = {compiler: version(compiler) for compiler in {o.row.compiler for o in outcomes}}
    rows = []
    for outcome in outcomes:
        row = outcome.row
        rows.append([row.target, versions[row.compiler],
                     f"`{row.flags}`" + (", fused" if row.fused else "")
                     + (", release" if row.release else "")
                     + (", bulk" if row.bulk else "") + (", Python" if row.python else ""),
                     row.runner[0] if {"qemu", "node"} & set(
                         "".join(row.runner[:1]).split("-")) else "the processor",
                     what_ran(outcome), verdict(outcome, committed)])
    return Table("Each build, compared with the committed digests",
                 ["target", "compiler", "flags", "run by", "corpus", "digest"], rows)


def corpora_table(outcomes, committed):
    measured = {run.corpus: families for outcome in outcomes
                if not outcome.row.fused and outcome.passed(committed)
                for run, families in outcome.found.items()}
    return Table("The digests over all families",
                 ["corpus", "results", "families", "SHA-256"],
                 [[corpus, f"{sum(count for _, count in families.values()):,}", len(families),
                   f"`{over_all({name: digest for name, (digest, _) in families.items()})}`"]
                  for corpus, families in sorted(measured.items())])


def families_table(outcomes, committed):
    fused = [outcome for outcome in outcomes if outcome.row.fused and not outcome.fault]
    changed = {name for outcome in fused
               for names in outcome.differing(committed).values() for name in names}
    digests = {name: digest for corpus in ("full", "bulk", "world")
               for name, digest in committed[corpus].items()}
    return Table("The families: the first digits of their digest over `full`, `bulk` or "
                 "`world`, and whether fused products and sums change it",
                 ["family", "SHA-256", "fused"],
                 [[name, f"`{digest[:16]}`",
                   "not run" if not fused else "differs" if name in changed else "equal"]
                  for name, digest in sorted(digests.items())])


def update():
    row = next(row for row in native_rows() if row.name == "x86-64 g++-12 -O2")
    provide([row])
    outcome, _ = carry_out(row)
    if outcome.fault:
        raise Failure(f"the row {row.name} {outcome.fault}.")
    write_committed(outcome)
    return Result(True, f"{COMMITTED.relative_to(ROOT)} was written from {row.compiler} "
                        f"{row.flags}; look at what changed in it.", complete=False)


def chosen_rows(pattern):
    try:
        rows = [row for row in all_rows() if re.search(pattern, row.name)]
    except re.error as error:
        raise BadUse(f"--rows {pattern} is not a regular expression: {error}.") from error
    if not rows:
        raise BadUse(f"no row matches {pattern}; scripts/prove digest --list names them.")
    return rows


def add_arguments(parser):
    parser.add_argument("--rows", metavar="PATTERN", default="",
                        help="only the rows whose name this regular expression finds")
    parser.add_argument("--small", action="store_true",
                        help="the small parts of the corpora instead of the whole ones")
    parser.add_argument("--afresh", action="store_true",
                        help="run again what was run before in the same circumstances")
    parser.add_argument("--list", action="store_true", help="name the rows, and run none")
    parser.add_argument("--update", action="store_true",
                        help="write the committed digests anew, from g++-12 at -O2")


def run(options):
    if options.update:
        return update()
    rows = chosen_rows(options.rows)
    if options.list:
        print("\n".join(row.name for row in rows))
        return Result(True, f"{len(rows)} rows are named, none was run.", complete=False)
    committed = read_committed()
    provide(rows)
    rows = chosen_rows(options.rows)  # what runs them may have come with a compiler
    if options.small:
        rows = [row.with_small_corpora() for row in rows]
    outcomes = carry_out_all(rows, committed, options.afresh)
    return judged(outcomes, committed, not options.rows and not options.small)


def judged(outcomes, committed, complete):
    plain = [outcome for outcome in outcomes if not outcome.row.fused]
    fused = [outcome for outcome in outcomes if outcome.row.fused]
    equal = sum(outcome.passed(committed) for outcome in plain)
    changed = sum(outcome.passed(committed) for outcome in fused)
    targets = ", ".join(dict.fromkeys(outcome.row.target for outcome in plain))
    summary = (f"{equal} of {len(plain)} builds ({targets}) give the committed digest, and "
               f"{changed} of {len(fused)} with fused products and sums give another.")
    tables = [corpora_table(outcomes, committed), rows_table(outcomes, committed),
              families_table(outcomes, committed)]
    return Result(all(outcome.passed(committed) for outcome in outcomes), summary, tables,
                  complete=complete)
