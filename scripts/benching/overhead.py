"""What volux_core costs beside the work that it does: policies, loading, parsing, size."""
import os
import statistics
import tempfile
from pathlib import Path

from evidence import commands, markdown
from evidence.commands import BadUse, Failure

from . import builds
from .times import quartiles

TITLE = "Overhead"
COMPILERS = (builds.COMPILER, "clang++-14")
WAYS = ("compile-time", "run-time", "getValueVoxel", "operator()")
SOURCES = {"core": "#include <volux/core.h>\n",
           "standard": "#include <string>\n#include <exception>\n"}


def spread(values):
    """Lower quartile, median, upper quartile."""
    return [float(f"{value:.4g}") for value in quartiles(values)]


def medians(rounds):
    return [float(f"{statistics.median(column):.4g}") for column in zip(*rounds)]


def policies(folder, rounds):
    said = commands.output_of([folder / "overhead" / "policy_rounds", rounds]).decode()
    cases = {}
    for line in said.splitlines():
        name, *times = line.split("\t")
        cases.setdefault(name, []).append([float(each) for each in times])
    return {name: {**dict(zip(WAYS, medians(taken))),
                   "by address": spread([times[1] - times[0] for times in taken]),
                   "by member": spread([times[2] - times[3] for times in taken])}
            for name, taken in cases.items()}


def loading(folder, rounds):
    said = commands.output_of([folder / "overhead" / "module_rounds", rounds]).decode()
    load, unload = zip(*(map(float, line.split()) for line in said.splitlines()))
    return {"dlopen": spread([each / 1000 for each in load]),
            "dlclose": spread([each / 1000 for each in unload])}


def processor_seconds(command):
    """What a program that must succeed takes, its start among it."""
    # Without the fork of this process that subprocess may make, which costs more than the program.
    child = os.posix_spawnp(command[0], command, os.environ)
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        raise Failure(f"the command {' '.join(command)} fails.")
    return usage.ru_utime + usage.ru_stime


def processes(folder, rounds):
    programs = [folder / "overhead" / name for name in ("start_linked", "start_alone")]
    taken = [[1e6 * processor_seconds([str(program)]) for program in programs]
             for _ in range(rounds)]
    linked, alone = medians(taken)
    return {"linked": linked, "alone": alone,
            "difference": spread([with_it - without for with_it, without in taken])}


def parse_seconds(compiler, source):
    return processor_seconds([compiler, "-std=c++17", "-fsyntax-only",
                              f"-I{commands.ROOT / 'include'}", str(source)])


def parsing(compiler, rounds):
    with tempfile.TemporaryDirectory() as folder:
        sources = [Path(folder) / f"{name}.cpp" for name in SOURCES]
        for source, text in zip(sources, SOURCES.values()):
            source.write_text(text, encoding="utf-8")
        taken = [[parse_seconds(compiler, source) for source in sources] for _ in range(rounds)]
    return {**dict(zip(SOURCES, medians(taken))),
            "ratio": spread([core / standard for core, standard in taken])}


def size(library):
    said = commands.output_of(["size", "--format=berkeley", library]).decode().splitlines()
    text, data, bss = map(int, said[1].split()[:3])
    with tempfile.TemporaryDirectory() as folder:
        stripped = Path(folder) / "stripped.so"
        commands.output_of(["strip", "-o", stripped, library])
        return {"text": text, "data": data, "bss": bss, "file": library.stat().st_size,
                "stripped": stripped.stat().st_size}


def add_arguments(parser):
    parser.add_argument("--rounds", type=int, default=400,
                        help="how often each thing is timed; parsing, a tenth as often")


def run(options):
    if options.rounds < 20:
        raise BadUse("at least 20 rounds are needed.")
    commands.install("build", "overhead")
    folder = builds.build("policy_rounds", "module_rounds", "start_linked", "start_alone")
    programs = folder / "bench"
    return {
        "compilers": [commands.version(compiler) for compiler in COMPILERS],
        "rounds": options.rounds,
        "policies": policies(programs, options.rounds),
        "loading": loading(programs, options.rounds),
        "processes": processes(programs, options.rounds),
        "parsing": {compiler: parsing(compiler, options.rounds // 10) for compiler in COMPILERS},
        "size": size(folder / commands.LIBRARY)}


def shown(quartiles, unit="", sign=""):
    low, middle, high = (f"{each:{sign}.3g}" for each in quartiles)
    return f"{middle}{unit} ({low} to {high})"


def policy_rows(cases):
    for name, case in cases.items():
        kernel, border, kind, where = name.split("/")
        yield [f"{kernel}, {border}, `{kind}`, {where}", case["compile-time"],
               shown(case["by address"], sign="+"), case["operator()"],
               shown(case["by member"], sign="+")]


def load_rows(record):
    started = record["processes"]
    return [["`dlopen`", shown(record["loading"]["dlopen"])],
            ["`dlclose`", shown(record["loading"]["dlclose"])],
            ["a process that links it", started["linked"]],
            ["the same without it", started["alone"]],
            ["the difference", shown(started["difference"], sign="+")]]


def tables(record):
    sizes = record["size"]
    return [
        f"{record['rounds']} rounds; {' and '.join(record['compilers'])}.", "",
        "Nanoseconds per call:", "",
        *markdown.table(["case", "policies at compile time", "by address instead",
                        "the kernel's `operator()`", "`getValueVoxel` instead"],
                       policy_rows(record["policies"])),
        "Microseconds to load:", "", *markdown.table(["what", "µs"], load_rows(record)),
        "Seconds to parse:", "",
        *markdown.table(["compiler", "`<volux/core.h>`", "`<string>`, `<exception>`", "ratio"],
                       [[compiler, case["core"], case["standard"], shown(case["ratio"])]
                        for compiler, case in record["parsing"].items()]),
        "Bytes of volux_core:", "",
        *markdown.table(["text", "data", "bss", "file", "file, stripped"],
                       [[f"{sizes[name]:,}" for name in ("text", "data", "bss", "file",
                                                         "stripped")]])]
