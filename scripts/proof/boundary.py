"""What the built file shows outside: names, slots, types, and nothing of where it was built."""
import hashlib
import lzma
import re
import shutil
import sys
import tempfile
from pathlib import Path

from evidence import commands
from evidence.commands import LIBRARY, Failure

from . import builds
from .results import Result, Table

TITLE = "Boundary"
PROMISE = "Linked programs go on working, and a build is the same wherever it is made."
BREAKER = "A name, a slot or a type that changes; a path or a time in the file."

BASELINE = commands.ROOT / "tests" / "abi" / "interface.abi.xz"
COMPILERS = ("g++", "clang++")
PLACE = builds.BUILD / "boundary" / "another place/deeper"
SOURCES = ("CMakeLists.txt", "cmake", "include", "src")


def named_in(folder):
    """The library in a build's folder, by the name that has the version in it."""
    return (folder / LIBRARY).resolve()


def build_here(compiler):
    """Builds what ships from the sources themselves; gives the library."""
    return named_in(builds.build(f"boundary-{compiler}", compiler))


def build_copy(compiler):
    """Builds what ships from a copy of the sources; gives the library."""
    shutil.rmtree(PLACE, ignore_errors=True)  # or what was built from sources that looked newer
    sources = PLACE / "sources"
    sources.mkdir(parents=True)
    commands.output_of(["cp", "-r", *(commands.ROOT / name for name in SOURCES), sources])
    return named_in(commands.build(
        PLACE / compiler, "proof-boundary", ["all"], "-DCMAKE_BUILD_TYPE=Release",
        "-DVOLUX_DEVELOPER_MODE=OFF", "-DVOLUX_RESAMPLE=OFF",
        f"-DCMAKE_CXX_COMPILER={compiler}", source=sources))


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()[:16]


def check_names(library):
    check = commands.ROOT / "tests" / "abi" / "check_boundary.py"
    done = commands.run([sys.executable, check, library])
    found = re.search(r"^Ran (\d+) tests", done.stderr, re.MULTILINE)
    if done.returncode != 0:
        print(done.stderr)
    tests = int(found[1]) if found else 0
    return done.returncode == 0 and tests > 0, tests


def exported(library):
    return len(commands.run(["nm", "-D", "--defined-only", library]).stdout.splitlines())


def describe_interface(target):
    """Writes the interface, as g++'s debug information has it, to a file."""
    flags = f"-g -ffile-prefix-map='{commands.ROOT}'=."
    folder = builds.build("boundary-debug", "g++", flags, arguments=["-DVOLUX_PROGRAMS="])
    done = commands.run(["abidw", "--headers-dir", commands.ROOT / "include",
                         "--drop-private-types", "--no-corpus-path", "--no-comp-dir-path",
                         "--no-show-locs", "--no-elf-needed", "--no-architecture",
                         "--type-id-style", "hash", "--out-file", target, folder / LIBRARY])
    if done.returncode != 0:
        raise Failure("abidw cannot read the interface from the library.")


def accept():
    with tempfile.TemporaryDirectory() as folder:
        current = Path(folder) / "interface.abi"
        describe_interface(current)
        BASELINE.write_bytes(lzma.compress(current.read_bytes(), preset=9))
    return Result(True, f"The interface is now that of {BASELINE.relative_to(commands.ROOT)}.",
                  complete=False)


def compare_interface():
    """Whether the interface is the accepted one, and how many functions and variables it has."""
    if not BASELINE.exists():
        raise Failure(f"{BASELINE.relative_to(commands.ROOT)} is missing; "
                      "scripts/prove boundary --accept writes it.")
    with tempfile.TemporaryDirectory() as folder:
        accepted, current = Path(folder) / "accepted.abi", Path(folder) / "current.abi"
        accepted.write_bytes(lzma.decompress(BASELINE.read_bytes()))
        describe_interface(current)
        done = commands.run(["abidiff", "--harmless", "--no-show-locs", accepted, current])
        entities = accepted.read_text(encoding="utf-8").count("<elf-symbol ")
    if done.returncode != 0:
        print(done.stdout[:4000])
    changes = re.search(r"Functions changes summary: (.*)", done.stdout)
    return done.returncode == 0, entities, changes[1] if changes else "no difference"


def add_arguments(parser):
    parser.add_argument("--accept", action="store_true",
                        help="take the interface as it is now for the right one")


def run(options):
    commands.install("build", "test", "boundary")
    if options.accept:
        return accept()
    rows, held = [], True
    for compiler in COMPILERS:
        libraries = [build_here(compiler), build_copy(compiler)]
        named, tests = check_names(libraries[0])
        digests = [digest(library) for library in libraries]
        held = held and named and digests[0] == digests[1]
        rows.append([compiler, exported(libraries[0]),
                     f"{tests} checks {'' if named else 'do not '}hold", *digests,
                     "equal" if digests[0] == digests[1] else "differ"])
    same, entities, changes = compare_interface()
    held = held and same
    names = " and ".join(str(row[1]) for row in rows)
    equal = all(row[-1] == "equal" for row in rows)
    summary = (f"{' and '.join(COMPILERS)} export {names} names; the {entities} symbols of the "
               f"accepted interface and their types have {'not ' if same else ''}changed; builds "
               f"in two folders are {'' if equal else 'not '}equal.")
    return Result(held, summary, [
        Table("The library as it ships", ["compiler", "exported names", "check_boundary.py",
                                          "SHA-256 of a build here", "and elsewhere", ""],
              rows),
        Table("The interface against the accepted one", ["symbols", "abidiff"],
              [[entities, changes]])])
