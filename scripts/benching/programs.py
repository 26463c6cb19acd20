"""The programs that time: built, started, and asked for one case after the other."""
import collections
import contextlib
import json
import os
import re
import subprocess

from evidence import commands
from evidence.commands import LOGS, ROOT, Failure, install

from . import builds

PYTHON = "/usr/bin/python3"  # Debian's, which has Debian's packages

# Programs that take turns. target: what builds them; folder: where they are in bench; script: the
# one in Python; needs: what it imports; packages: groups of scripts/packages; peers: what each is
# called in the names of the cases, and its package; python: the interpreter.
Suite = collections.namedtuple("Suite", "target folder script needs packages peers python",
                               defaults=[PYTHON])
TIMES = Suite("bench_times", "times", "bench_numpy", "numpy", ("build", "bench"),
              {"CImg": "cimg-dev", "ITK": "libinsighttoolkit5-dev", "VTK": "libvtk9-dev",
               "numpy": "python3-numpy"})
BULK = Suite("bench_bulk", "bulk", "bulk_scipy", "scipy", ("build", "bench", "resample"),
             {"VTK": "libvtk9-dev", "ITK": "libinsighttoolkit5-dev", "CImg": "cimg-dev",
              "scipy": "python3-scipy"})
# Its packages are pip's, in an environment of their own.
PACKAGE = Suite("bench_python", "python", "volumes", "volux", ("build", "bench", "resample"),
                {"scipy": "scipy", "SimpleITK": "simpleitk", "nibabel": "nibabel",
                 "grid_sample": "torch", "interpolate": "torch"})


def install_packages(suite):
    """The peers may be missing: without them the library is measured alone."""
    install(*suite.packages)
    try:
        install("bench-peers")
    except Failure as failure:
        print(f"Going on, although {failure}", flush=True)


def build(suite):
    builds.build(suite.target)


class Program:
    """A running program, which measures what it is asked for."""

    def __init__(self, name, command):
        self.name = name
        LOGS.mkdir(parents=True, exist_ok=True)
        self.log = LOGS / f"{name}.log"
        with open(self.log, "w", encoding="utf-8") as said:
            # numpy asks for large pages, and so do the others then: where small ones happen to lie
            # makes a call up to twice as long.
            self.process = subprocess.Popen(
                command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=said, text=True,
                env={**os.environ, "GLIBC_TUNABLES": "glibc.malloc.hugetlb=1"})

    def ask(self, case):
        """What the program says of a case."""
        try:
            self.process.stdin.write(case + "\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            pass  # the end of its output says so, too
        answer = []
        for line in self.process.stdout:
            if line == "end\n":
                return json.loads("".join(answer))["benchmarks"][0]
            answer.append(line)
        last = self.log.read_text(encoding="utf-8").splitlines()[-1:] or ["it gave no reason"]
        raise Failure(f"{self.name} stopped at {case}: {last[0]}.")

    def stop(self):
        self.process.kill()
        self.process.communicate()


def command_lines(suite):
    """The programs that there are, by name."""
    built = builds.BUILD / "bench" / suite.folder
    names = (built / "programs").read_text(encoding="utf-8").split()
    found = {name: [str(built / name)] for name in names}
    if commands.run([suite.python, "-c", f"import {suite.needs}"]).returncode == 0:
        script = ROOT / "bench" / suite.folder / f"{suite.script}.py"
        found[suite.script] = [suite.python, str(script)]
    return found


def cases_of(name, command):
    done = commands.run([*command, "--benchmark_list_tests"])
    if done.returncode != 0:
        raise Failure(f"{name} does not tell its cases.")
    # Google Benchmark adds which clock is read.
    return re.sub(r"/(process|real)_time$", "", done.stdout, flags=re.MULTILINE).split("\n")[:-1]


def cases(suite):
    """For each row and each competitor in it the program that measures it."""
    rows = {}
    for name, command in command_lines(suite).items():
        for case in cases_of(name, command):
            row, _, competitor = case.rpartition("/")
            rows.setdefault(row, {})[competitor] = name
    return rows


@contextlib.contextmanager
def running(suite, names):
    """Some of the programs, started; by name."""
    started = {}
    try:
        for name, command in command_lines(suite).items():
            if name in names:
                started[name] = Program(name, command)
        yield started
    finally:
        for program in started.values():
            program.stop()


def release(package):
    found = commands.run(["dpkg-query", "-W", "-f", "${Version}", package])
    return found.stdout if found.returncode == 0 else "not Debian's"
