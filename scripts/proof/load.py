"""First calls by many threads, loading and unloading, and what loading alone costs."""
import os
import re

from evidence import commands
from evidence.callgrind import own_costs
from evidence.commands import BadUse, Failure

from . import builds
from .results import Result, Table
from .suite import CLANG

TITLE = "Load"
PROMISE = "Loading costs nothing, and unloading leaves nothing."
BREAKER = "Code that runs at start-up, memory or a thread that is left, first calls at once."
WITH_RESAMPLE = True
PARTS = ("volux_resample",)
CI_RUN = ["--processes", "48", "--rounds", "200"]

PAIRS = [(interpolator, border) for interpolator in range(3) for border in range(2)]
RESIDENT_SLACK = 256 * 1024
PLUGINS = {"volux_core": "core_plugin", "volux_resample": "resample_plugin"}
SILENT = ("volux_resample",)  # volux_core's exceptions print
# The C library keeps stacks and heaps of ended threads and blocks that were freed, how many depends
# on what happened to run at once: here it keeps none, so that what is left is somebody's.
KEEP_NOTHING = {"GLIBC_TUNABLES": "glibc.pthread.stack_cache_size=0:glibc.malloc.arena_max=1"
                                  ":glibc.malloc.tcache_count=0"}
# What each shared object has, whatever its sources.
COMPILERS_OWN = {"_init", "_fini", "frame_dummy", "register_tm_clones", "deregister_tm_clones",
                 "__do_global_dtors_aux"}


def first_calls(folder, processes):
    """Gives the number of trials and what the failed ones said."""
    program = folder / "tests" / "proof" / "load" / "first_call"
    failed = []
    for trial in range(processes):
        pair = PAIRS[trial % len(PAIRS)]
        done = commands.run([program, *map(str, pair)])
        if done.returncode != 0:
            failed.append(f"interpolator {pair[0]}, border {pair[1]}: "
                          f"{(done.stdout + done.stderr).strip()[:300]}")
    return failed


def load_rounds(folder, library, rounds):
    """Returns what the process held after a tenth of the rounds and after all, and the faults."""
    programs = folder / "tests" / "proof" / "load"
    done = commands.run([programs / "load_rounds", programs / f"lib{PLUGINS[library]}.so",
                         f"lib{library}.so", str(rounds)], env={**os.environ, **KEEP_NOTHING})
    said = done.stdout.splitlines()
    faults = [f"{library}: it prints {line}" for line in done.stderr.splitlines()[:1]
              if library in SILENT]
    if done.returncode != 0:
        return [], faults + [f"{library}: {said[-1] if said else ''} (status {done.returncode})"]
    held = [list(map(int, line.split())) for line in said]
    return ([[library, *counts] for counts in held],
            faults + [f"{library}: {change}" for change in changes(*held)])


def changes(early, late):
    """Tells what the process held late that it did not hold early, or the other way round."""
    for name, place, slack in (("the number of mappings", 3, 0), ("the heap in use", 4, 0),
                               ("the resident memory", 5, RESIDENT_SLACK)):
        if abs(late[place] - early[place]) > slack:
            yield f"{name} changed by {late[place] - early[place]}"


def all_rounds(folder, rounds):
    """Returns the rows of both libraries, and the faults: what counts must have something to count,
    objects of volux_core and threads of volux_resample."""
    rows, faults = [], []
    for library in PLUGINS:
        found, wrong = load_rounds(folder, library, rounds)
        rows, faults = rows + found, faults + wrong
    for library, place, what in (("volux_core", 2, "no object is seen to be destroyed"),
                                 ("volux_resample", 3, "its calls start no thread")):
        if any(row[0] == library and row[place] == 0 for row in rows):
            faults.append(f"{library}: {what}")
    return rows, faults


def instructions(program, output):
    """Instructions by (object, function), as callgrind counts them."""
    done = commands.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}",
                       "--dump-instr=no", program])
    if done.returncode != 0:
        raise Failure(f"callgrind cannot run {program.name}.")
    return own_costs(output.read_text(encoding="utf-8"), {})


def named(function, library):
    """The name of a function that callgrind knows by its address alone."""
    if not function.startswith("0x"):
        return re.sub(r"'.*", "", function)
    for line in commands.run(["nm", "-C", "--defined-only", library]).stdout.splitlines():
        fields = line.split(maxsplit=2)
        if len(fields) == 3 and int(fields[0], 16) == int(function, 16):
            return fields[2]
    return function


def relocations(program):
    done = commands.run([program], env={**os.environ, "LD_DEBUG": "statistics", "LD_BIND_NOW": "1"})
    found = re.findall(r"number of relocations(?: from cache)?: (\d+)", done.stderr)
    relative = re.findall(r"number of relative relocations: (\d+)", done.stderr)
    if not found or not relative:
        raise Failure("the loader does not say how many relocations it processes.")
    return int(found[0]), int(relative[0])


def idle_cost(folder):
    """Rows about the program with and without the library, and the library's functions that ran."""
    rows, foreign = [], []
    for name in ("idle", "idle_alone"):
        program = folder / "tests" / "proof" / "load" / name
        counts = instructions(program, folder / f"{name}.callgrind")
        inside = {named(function, file): count for (file, function), count in counts.items()
                  if "libvolux_core" in file}
        foreign += [function for function in inside if function not in COMPILERS_OWN]
        rows.append([name, sum(counts.values()), sum(inside.values()),
                     ", ".join(f"`{function}`" for function in sorted(inside)) or "none",
                     *relocations(program)])
    if not rows[0][2]:  # the start-up files' own functions run in every library
        raise Failure("callgrind does not tell what runs inside the library.")
    if "libvolux_core" not in commands.run(["ldd", folder / "tests/proof/load/idle"]).stdout:
        raise Failure("the idle program does not load the library.")
    return rows, foreign


def add_arguments(parser):
    parser.add_argument("--processes", type=int, default=240,
                        help="how many processes make first calls; sanitized: a quarter as many")
    parser.add_argument("--rounds", type=int, default=1000, help="how often each library is loaded")


def run(options):
    if options.processes < len(PAIRS) or options.rounds < 100:
        raise BadUse(f"at least {len(PAIRS)} processes and 100 rounds are needed.")
    commands.install("coverage", "sanitizers")
    plain = builds.release("first_call", "load_rounds", "idle", "idle_alone", *PLUGINS.values())
    sanitized = builds.build("load-thread", CLANG, "-O1 -gline-tables-only -fsanitize=thread",
                             "None", ["first_call"])
    under_sanitizer = max(options.processes // 4, len(PAIRS))
    failed = first_calls(plain, options.processes)
    raced = first_calls(sanitized, under_sanitizer)
    held, growth = all_rounds(plain, options.rounds)
    cost, foreign = idle_cost(plain)
    faults = (failed + raced + growth
              + [f"`{function}` of the library runs in a program that never calls it"
                 for function in foreign])
    tables = [
        Table("First calls by sixteen threads at once", ["build", "processes", "failed"],
              [[f"{commands.version('g++')}, -O3", options.processes, len(failed)],
               [f"{commands.version(CLANG)}, thread sanitizer", under_sanitizer, len(raced)]]),
        Table("Loaded, used and unloaded",
              ["library", "rounds", "objects destroyed in each", "threads started in each",
               "mappings", "heap in use, bytes", "resident, bytes"], held),
        Table("A program that never calls it", ["program", "instructions", "inside the library",
                                                "its functions", "relocations",
                                                "relative relocations"], cost)]
    if faults:
        print("\n".join(f"  {fault}" for fault in faults[:20]))
        tables.append(Table("Faults", ["what"], [[fault] for fault in faults[:20]]))
    summary = (f"{options.processes + under_sanitizer} processes made first calls by sixteen "
               f"threads, each library was loaded and unloaded {options.rounds} times, "
               f"{cost[0][2]} instructions of volux_core run in a program that never calls it; "
               f"{len(faults)} faults.")
    return Result(not faults, summary, tables)
