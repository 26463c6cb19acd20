"""What both commands share: how they end, install packages, and run and build programs."""
import argparse
import concurrent.futures
import functools
import math
import os
import re
import subprocess
import sys
import threading
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LOGS = ROOT / "build" / "logs"
CORES = os.cpu_count() or 1
LIBRARY = "libvolux_core.so"


class Failure(Exception):
    """Why a check or a measurement could not be carried out, as one sentence."""


class BadUse(Failure):
    """A command line that makes no sense."""


class OneSentence(argparse.ArgumentParser):
    """Answers a bad command line with one sentence instead of the whole usage."""

    def error(self, message):
        self.exit(2, f"{self.prog}: {message}; {self.prog} --help says what there is.\n")


def finish(name, main):
    """Runs main(arguments) and exits: 0 unless it returns False, 1 on a failure, 2 on bad use."""
    try:
        sys.exit(1 if main(sys.argv[1:]) is False else 0)
    except Failure as failure:
        print(f"{name}: {failure}", file=sys.stderr)
        sys.exit(2 if isinstance(failure, BadUse) else 1)
    except BrokenPipeError:  # whoever read the output has seen enough
        sys.exit(1)
    except KeyboardInterrupt:
        print(f"{name}: interrupted; what was under way is not recorded.", file=sys.stderr)
        sys.exit(130)


def positive(text):
    """Converts an argument that is a length of time, or any other number above zero."""
    try:
        number = float(text)
    except ValueError:
        number = 0.0
    if not 0.0 < number < math.inf:
        raise argparse.ArgumentTypeError(f"'{text}' is not a number above zero")
    return number


def install(*groups):
    """Installs those packages of the named groups of scripts/packages that are missing."""
    if run([ROOT / "scripts" / "install-packages", *groups]).returncode != 0:
        names = " and ".join(groups)
        raise Failure(f"the packages of the group {names} are missing and cannot be installed "
                      "(is there a network?); scripts/packages lists them.")


def run(command, log=None, **options):
    """Runs a command to its end; its output is appended to a log, or returned as text."""
    if log is None:
        return subprocess.run(command, capture_output=True, text=True, **options)
    LOGS.mkdir(parents=True, exist_ok=True)
    with open(LOGS / f"{log}.log", "a", encoding="utf-8") as file:
        return subprocess.run(command, stdout=file, stderr=subprocess.STDOUT, **options)


def at_once(function, *arguments):
    """Returns what a function gives for each argument, as many calls at once as there are cores."""
    with concurrent.futures.ThreadPoolExecutor(CORES) as pool:
        return list(pool.map(function, *arguments))


@functools.lru_cache(maxsize=None)
def lock_of(path):
    """Returns the lock of what is built in a place, where several want it at once."""
    return threading.Lock()


def build(folder, log, targets, *arguments, source=ROOT, jobs=CORES):
    """Configures a build folder, builds targets in it and returns it."""
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", *arguments]
    make = ["cmake", "--build", folder, "-j", str(jobs), "--target", *targets]
    with lock_of(folder):
        (LOGS / f"{log}.log").unlink(missing_ok=True)
        for command in (configure, make):
            if run(command, log).returncode != 0:
                raise Failure(f"the build in {folder.relative_to(ROOT)} fails; see "
                              f"{LOGS.relative_to(ROOT)}/{log}.log.")
    return folder


def output_of(command, **options):
    """Returns what a program writes; a program that fails ends the check."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, check=False,
                          **options)
    if done.returncode != 0:
        raise Failure(f"the program {Path(command[0]).name} stopped with status "
                      f"{done.returncode}.")
    return done.stdout


def version(program):
    """Names a program with its version, such as g++ 12.2.0."""
    found = re.search(r"\d+\.\d+(\.\d+)?", run([program, "--version"]).stdout)
    return f"{program} {found[0] if found else '?'}"
