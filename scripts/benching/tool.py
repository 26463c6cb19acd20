"""The command volux beside other commands that bring a volume to equal voxels, as whole
processes: what a user waits for."""
import json
import os
import statistics
import tempfile
import time
from pathlib import Path

from evidence import commands, package
from evidence.commands import ROOT, Failure, output_of
from evidence.markdown import heading, table

from . import goals, programs, times

TITLE = "The command"
PROGRAMS = ROOT / "bench" / "tool"
SPACING = 0.9  # mm, finer than the CT along each axis: commands smooth differently where it is not
SHAPE = (272, 272, 180)
ORDERS = {"linear": "1", "cubic": "3"}
PACKAGES = {"mrgrid": "mrtrix3", "plastimatch": "plastimatch"}  # Debian's
PEERS = (*PACKAGES, "SimpleITK", "scipy")
ROWS = {"linear/.nii": PEERS, "linear/.nii.gz": PEERS, "cubic/.nii": ("mrgrid", "scipy")}


def add_arguments(parser):
    times.add_arguments(parser, rounds=10)


def call_of(name, python, kernel, files):
    """The command line that brings one file to the other."""
    spacing = f"{SPACING:g}"
    return {
        "volux": [f"{Path(python).parent}/volux", "resize", files[0], "-o", files[1], "--spacing",
                  spacing, "--interp", kernel, "--force", "--quiet"],
        "mrgrid": ["mrgrid", files[0], "regrid", files[1], "-voxel", spacing, "-interp", kernel,
                   "-datatype", "int16le", "-force", "-quiet"],
        "plastimatch": ["plastimatch", "resample", "--input", files[0], "--output", files[1],
                        "--spacing", " ".join([spacing] * 3), "--interpolation", kernel,
                        "--output-type", "short"],
        "SimpleITK": [python, f"{PROGRAMS}/resize_simpleitk.py", *files, spacing],
        "scipy": [python, f"{PROGRAMS}/resize_scipy.py", *files, spacing, ORDERS[kernel]],
    }[name]


def nanoseconds(call):
    """What a process takes by the wall clock, since several threads may work."""
    start = time.perf_counter_ns()
    output_of(call)
    return time.perf_counter_ns() - start


def check(python, name, target):
    """Whether a command has made what the others make, of one voxel more or less."""
    said = json.loads(output_of([f"{Path(python).parent}/volux", "info", target, "--json"]))
    if said["type"] != "int16" or any(abs(mine - wanted) > 1
                                      for mine, wanted in zip(said["shape"], SHAPE)):
        raise Failure(f"{name} makes {said['shape']} of {said['type']}.")


def timed(row, names, python, folder):
    """Nanoseconds of each command, in this order."""
    kernel, tail = row.split("/")
    taken = {}
    for name in names:
        files = [str(folder / f"{stem}{tail}") for stem in ("ct", f"by_{name}")]
        taken[name] = nanoseconds(call_of(name, python, kernel, files))
        check(python, name, files[1])
    return taken


def scan(python, folder):
    """The CT head as NIfTI, plain and compressed."""
    commands.install("skull")
    packed = next(Path("/usr/share/doc/invesalius-examples").rglob("Cranium.inv3"))
    output_of(["tar", "-xf", packed, "-C", folder, "--strip-components=1"])
    for tail in (".nii", ".nii.gz"):
        output_of([python, PROGRAMS / "scan.py", folder / "matrix.dat", folder / f"ct{tail}"])


def measure(rows, rounds, python):
    """Nanoseconds by row and command, round by round."""
    found = {row: {} for row in rows}
    with tempfile.TemporaryDirectory() as name:
        scan(python, Path(name))
        for number in range(-1, rounds):  # the first one brings files to memory
            for row, order in times.turns(rows, number):
                for command, taken in timed(row, order, python, Path(name)).items():
                    if number >= 0:
                        found[row].setdefault(command, []).append(float(f"{taken:.4g}"))
    return found


def run(options):
    times.check_options(options)
    goals.check(ROWS, goals.TOOL)
    commands.install("bench-tools")
    python = package.interpreter("bench", options.record)
    rows = {row: ("volux", *peers) for row, peers in ROWS.items()}
    found = measure(times.chosen(rows, options.only), options.rounds, python)
    return {"rounds": options.rounds, "processors": os.cpu_count(),
            "peers": {name: programs.release(deb) for name, deb in PACKAGES.items()},
            "times": found}


def lines_of(row, found):
    """A line for each goal of a row; the first has the times, in seconds."""
    heads = [*row.split("/"), *(f"{statistics.median(found[name]) / 1e9:.2f}"
                                if name in found else "" for name in ("volux", *PEERS))]
    for goal in goals.goals_of(row, goals.TOOL):
        yield [*heads, *times.ratio_cells(found, goal)[:4]]
        heads = [""] * len(heads)


def tables(kept):
    """The record as Markdown."""
    packages = "; ".join(f"{name} {version}" for name, version in kept["peers"].items())
    return [f"{kept['rounds']} rounds on {kept['processors']} processors. Beside volux, SimpleITK "
            f"and scipy of the environment: {packages}.", "",
            *heading(3, "CT to isotropic voxels"),
            *table(["kernel", "files", *(f"{name}, s" for name in ("volux", *PEERS)),
                    *times.RATIO_HEADS[:4]],
                   [line for row, found in kept["times"].items()
                    for line in lines_of(row, found)])]
