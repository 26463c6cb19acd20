"""Options that several verbs share, and how their values are read."""

from __future__ import annotations

import re
from dataclasses import dataclass
from fractions import Fraction
from typing import Annotated, Any, Literal

import typer

from volux.tool._errors import Misuse

Triple = tuple[float, float, float]

_UNITS = {"": 1, "B": 1, "KiB": 2**10, "MiB": 2**20, "GiB": 2**30, "TiB": 2**40}
_UNITS |= {"kB": 10**3, "MB": 10**6, "GB": 10**9, "TB": 10**12}


def numbers(text: str, name: str) -> Triple:
    """Return three numbers of a text such as 1,1,2.5; a single one stands for all axes."""
    try:
        values = [float(part) for part in text.split(",")]
    except ValueError:
        values = []
    if len(values) == 1:
        values *= 3
    if len(values) != 3:
        raise Misuse(f"{name} {text}: must be one number or three, such as 1,1,2.5")
    first, second, third = values
    return first, second, third


def place(text: str, name: str) -> Triple:
    """Return the three numbers of a place or a direction, such as 0,10,-20."""
    if "," not in text:
        raise Misuse(f"{name} {text}: must be three numbers, such as 0,10,-20")
    return numbers(text, name)


def counts(text: str, name: str) -> tuple[int, int, int]:
    """Return three whole numbers of a text such as 256,256,60."""
    values = numbers(text, name)
    if not all(value.is_integer() for value in values):
        raise Misuse(f"{name} {text}: must be whole numbers, such as 256,256,60")
    first, second, third = (int(value) for value in values)
    return first, second, third


def size(text: str, name: str) -> int:
    """Return the bytes of a text such as 4GiB."""
    match = re.fullmatch(r"\s*(\d+(?:\.\d+)?)\s*([A-Za-z]*)\s*", text)
    units = {unit.lower(): factor for unit, factor in _UNITS.items()}
    if match is None or match[2].lower() not in units:
        raise Misuse(f"{name} {text}: must be a size, such as 4GiB or 500MB")
    return int(Fraction(match[1]) * units[match[2].lower()])


def option(*names: str, text: str, default: str | None = None, metavar: str | None = None) -> Any:
    """Return an option for Annotated, with the words of its help."""
    said = text if default is None else f"{text} [default: {default}]"
    return typer.Option(*names, help=said, metavar=metavar, show_default=False)


Input = Annotated[
    str,
    typer.Argument(
        metavar="INPUT",
        help="A file, a folder of DICOM slices, or - for NIfTI.",
        show_default=False,
    ),
]
Json = Annotated[bool, option("--json", text="Print JSON on stdout.")]
Quiet = Annotated[bool, option("--quiet", "-q", text="Print nothing but data and errors.")]
Threads = Annotated[
    int | None,
    option(
        "--threads",
        text="Threads at most; the result is the same with any number.",
        default="all processors",
    ),
]
Spacing = Annotated[
    str | None,
    option("--spacing", metavar="MM", text="Distance between voxels, such as 1 or 1,1,2.5."),
]
Shape = Annotated[
    str | None, option("--shape", metavar="N", text="Number of voxels, such as 256,256,60.")
]
Scale = Annotated[
    str | None,
    option("--scale", metavar="FACTOR", text="Factor; 2 gives twice as many voxels along an axis."),
]
Align = Annotated[
    Literal["edges", "centres"],
    option("--align", text="What stays: the field of view, or the outer centres.", default="edges"),
]
Output = Annotated[
    str,
    option("--output", "-o", metavar="OUTPUT", text="The file to write; - writes NIfTI to stdout."),
]


Force = Annotated[bool, option("--force", "-f", text="Replace an output that exists.")]
Projection = Annotated[
    Literal["mean", "maximum", "minimum"],
    option("--projection", text="How a slab becomes one picture.", default="mean"),
]
Normal = Annotated[
    str | None,
    option(
        "--normal",
        metavar="X,Y,Z",
        text="Direction at right angles to the plane, away from the viewer.",
    ),
]
Up = Annotated[
    str | None,
    option(
        "--up",
        metavar="X,Y,Z",
        text="Direction that is up in the picture.",
        default="the head, or the front in axial planes",
    ),
]


@dataclass(frozen=True)
class Reading:
    """How a volume is read between voxels and beyond them."""

    interp: Annotated[
        Literal["nearest", "linear", "cubic", "label"] | None,
        option("--interp", text="The kernel.", default="linear; label for label maps"),
    ] = None
    border: Annotated[
        Literal["edge", "constant"],
        option(
            "--border",
            text="What a kernel reads outside the volume: its edge, or --fill.",
            default="edge",
        ),
    ] = "edge"
    fill: Annotated[
        float,
        option("--fill", text="The value outside, where the edge does not go on.", default="0"),
    ] = 0.0


@dataclass(frozen=True)
class Converting:
    """Which type numbers get."""

    dtype: Annotated[
        str | None,
        option(
            "--dtype",
            metavar="TYPE",
            text="Type of the voxels, such as float32.",
            default="that of INPUT",
        ),
    ] = None
    overflow: Annotated[
        Literal["saturate", "wrap"],
        option(
            "--overflow",
            text="What becomes of numbers that the type cannot hold.",
            default="saturate",
        ),
    ] = "saturate"


@dataclass(frozen=True)
class Filling(Converting):
    """How the voxels of a new volume come about."""

    outside: Annotated[
        Literal["fill", "extend"] | None,
        option(
            "--outside",
            text="Beyond the field of view: --fill, or the edge extended.",
            default="extend for resize, else fill",
        ),
    ] = None
    antialias: Annotated[
        Literal["none", "mean", "auto"] | None,
        option(
            "--antialias",
            text="Means of samples where voxels become larger; auto does so except with nearest.",
            default="auto for resize, else none",
        ),
    ] = None


@dataclass(frozen=True)
class Conduct:
    """Where the result goes, and what is said meanwhile."""

    output: Output = ""
    force: Force = False
    dry_run: Annotated[
        bool, option("--dry-run", "-n", text="Print what would be done, and write nothing.")
    ] = False
    json: Json = False
    threads: Threads = None
    memory: Annotated[
        str | None,
        option(
            "--memory",
            metavar="SIZE",
            text="Take no more memory, such as 4GiB: work in parts, or refuse.",
        ),
    ] = None
    quiet: Quiet = False
    progress: Annotated[
        Literal["auto", "plain", "none"],
        option(
            "--progress",
            text="Show a bar on a terminal and lines elsewhere (auto), lines, or nothing.",
            default="auto",
        ),
    ] = "auto"
    sidecar: Annotated[
        bool,
        option(
            "--sidecar/--no-sidecar",
            text="Write a .json beside OUTPUT that says how it was made.",
            default="--sidecar",
        ),
    ] = True


@dataclass(frozen=True)
class PlaneOptions:
    """Where planes lie in the world, (x, y, z) in mm, RAS+."""

    centre: Annotated[
        str | None,
        option(
            "--centre", metavar="X,Y,Z", text="Middle of the picture.", default="that of the volume"
        ),
    ] = None
    normal: Normal = None
    up: Up = None
    through: Annotated[
        list[str] | None,
        option(
            "--through",
            metavar="X,Y,Z",
            text="Three points instead: the first pixel, one along its row, one further down.",
        ),
    ] = None
    shape: Annotated[
        str | None,
        option(
            "--shape",
            metavar="N",
            text="Columns and rows, such as 256,200.",
            default="all of the volume",
        ),
    ] = None
    spacing: Annotated[
        float | None,
        option(
            "--spacing",
            metavar="MM",
            text="Distance between pixels.",
            default="the smallest of INPUT",
        ),
    ] = None
    slab: Annotated[
        int,
        option(
            "--slab", metavar="N", text="Number of planes that become one picture.", default="1"
        ),
    ] = 1
    projection: Projection = "mean"
    thickness: Annotated[
        float | None,
        option(
            "--thickness",
            metavar="MM",
            text="Thickness of the slab, and distance between planes.",
            default="--spacing",
        ),
    ] = None
    count: Annotated[
        int,
        option("--count", metavar="N", text="Number of pictures along the normal.", default="1"),
    ] = 1


@dataclass(frozen=True)
class Shown:
    """What of a volume is on a picture, and how."""

    window: Annotated[
        str | None,
        option("--window", metavar="LEVEL,WIDTH", text="Grey values.", default="by the voxels"),
    ] = None
    interp: Annotated[
        Literal["nearest", "linear", "cubic", "label"] | None,
        option(
            "--interp",
            text="The kernel; label draws labels in colour.",
            default="linear; label for label maps, cubic for extremes of slabs",
        ),
    ] = None
    labels: Annotated[
        str | None,
        option("--labels", metavar="FILE", text="Labels to lay in colour over the volume."),
    ] = None
    volume: Annotated[
        int | None,
        option(
            "--volume",
            metavar="N",
            text="Which of several volumes, counted from 0.",
            default="the first",
        ),
    ] = None
    montage: Annotated[
        int | None, option("--montage", metavar="N", text="So many axial planes instead of three.")
    ] = None
    centre: Annotated[
        str | None,
        option("--centre", metavar="X,Y,Z", text="Where the planes meet.", default="the middle"),
    ] = None
    normal: Normal = None
    up: Up = None
    slab: Annotated[
        float | None,
        option(
            "--slab",
            metavar="MM",
            text="Thickness of a slab at right angles to --normal.",
            default="all of the volume if --projection is given, else none",
        ),
    ] = None
    projection: Projection = "mean"
    size: Annotated[
        int | None,
        option(
            "--size",
            metavar="N",
            text="Pixels along the longest side of the volume.",
            default="400, or 200 in a montage",
        ),
    ] = None
