"""What the checks share: packages, builds, programs that are run."""
import argparse
import math
import os
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "proof"
LOGS = ROOT / "build" / "logs"
CORES = os.cpu_count() or 1
# The built file, by the version that its target is given.
LIBRARY = "libvolux_core.so." + re.search(
    r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]


class Failure(Exception):
    """Why a check could not be carried out, as one sentence."""


class BadUse(Failure):
    """A command line that makes no sense."""


class OneSentence(argparse.ArgumentParser):
    """Bad use gets one sentence instead of the whole usage."""

    def error(self, message):
        self.exit(2, f"{self.prog}: {message}; {self.prog} --help says what there is.\n")


def positive(text):
    """An argument that is a length of time, or any other number above zero."""
    try:
        number = float(text)
    except ValueError:
        number = 0.0
    if not 0.0 < number < math.inf:
        raise argparse.ArgumentTypeError(f"'{text}' is not a number above zero")
    return number


def install(*groups):
    """Installs the groups of scripts/packages that are named, as far as they are missing."""
    done = subprocess.run([ROOT / "scripts" / "install-packages", *groups], capture_output=True,
                          text=True)
    if done.returncode != 0:
        names = " and ".join(groups)
        raise Failure(f"the packages of the group {names} are missing and cannot be installed "
                      "(is there a network?); scripts/packages lists them.")


def run(command, log=None, **options):
    """Runs a command to its end; its output goes to a log of that name, or is returned as text."""
    if log is None:
        return subprocess.run(command, capture_output=True, text=True, **options)
    LOGS.mkdir(parents=True, exist_ok=True)
    with open(LOGS / f"{log}.log", "a", encoding="utf-8") as file:
        return subprocess.run(command, stdout=file, stderr=subprocess.STDOUT, **options)


def build(name, compiler="g++", flags="", kind="Release", targets=("volux_core",), arguments=()):
    """Configures build/proof/NAME with the programs of the proof and builds targets."""
    folder = BUILD / name
    log = f"proof-{name.replace('/', '-')}"
    (LOGS / f"{log}.log").unlink(missing_ok=True)
    configure = ["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DVOLUX_DEVELOPER_MODE=OFF",
                 "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=OFF", f"-DCMAKE_CXX_COMPILER={compiler}",
                 f"-DCMAKE_BUILD_TYPE={kind}", f"-DCMAKE_CXX_FLAGS={flags}", *arguments]
    for command in (configure, ["cmake", "--build", folder, "--target", *targets]):
        if run(command, log).returncode != 0:
            raise Failure(f"the build {name} fails; see {LOGS.relative_to(ROOT)}/{log}.log.")
    return folder


def output_of(command, **options):
    """What a program writes; a program that fails ends the check."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, check=False,
                          **options)
    if done.returncode != 0:
        raise Failure(f"the program {Path(command[0]).name} stopped with status "
                      f"{done.returncode}.")
    return done.stdout


def version(program):
    """A program as it names itself: g++ 12.2.0."""
    said = run([program, "--version"]).stdout
    found = re.search(r"\d+\.\d+(\.\d+)?", said)
    return f"{program} {found[0] if found else '?'}"
