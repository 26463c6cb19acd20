"""The verbs for volumes beyond one machine's memory."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Annotated, Literal

import typer

from volux.tool._options import (
    Align,
    Filling,
    Force,
    Json,
    Quiet,
    Reading,
    Scale,
    Shape,
    Spacing,
    option,
)
from volux.tool._verbs import verb

PlanFile = Annotated[
    str, typer.Argument(metavar="PLAN", help="What volux plan wrote.", show_default=False)
]
Memory = Annotated[
    str | None,
    option("--memory", metavar="SIZE", text="Refuse tasks that need more memory, such as 4GiB."),
]

Processes = Annotated[
    int, option("--processes", metavar="N", text="Tasks at the same time.", default="1")
]
ThreadsEach = Annotated[
    int | None,
    option("--threads", text="Threads of a process.", default="all, or 1 with --processes"),
]


@dataclass(frozen=True)
class Stored:
    """How a result is stored, and what a file is that does not say it itself."""

    output: Annotated[
        str, option("--output", "-o", metavar="OUT.zarr", text="The store to write.")
    ] = ""
    plan: Annotated[
        str | None,
        option("--plan", metavar="FILE", text="The plan to write.", default="OUT.plan.json"),
    ] = None
    chunk: Annotated[
        str,
        option("--chunk", metavar="N", text="Voxels that are decoded at once.", default="64"),
    ] = "64"
    unit: Annotated[
        str | None,
        option(
            "--unit",
            metavar="N",
            text="Voxels that a task writes as one file, such as 256 or 128,256,256 (z, y, x).",
            default="--chunk",
        ),
    ] = None
    codec: Annotated[
        Literal["zstd", "blosc", "none"],
        option("--codec", text="What chunks are encoded by.", default="zstd"),
    ] = "zstd"
    raw: Annotated[
        str | None,
        option(
            "--raw",
            metavar="TYPE,I,J,K",
            text="INPUT has voxels alone, i fastest, such as uint16,512,512,400.",
        ),
    ] = None
    voxel: Annotated[
        str | None,
        option(
            "--voxel",
            metavar="MM",
            text="Distance between voxels of an INPUT that does not say it.",
            default="1",
        ),
    ] = None


@dataclass(frozen=True)
class Placed:
    """Where the result lies: the options of resize, and those of resample."""

    spacing: Spacing = None
    shape: Shape = None
    scale: Scale = None
    align: Align = "edges"
    like: Annotated[
        str | None,
        option("--like", metavar="FILE", text="A file whose grid the result gets (resample)."),
    ] = None
    transform: Annotated[
        list[str] | None,
        option("--transform", "-t", metavar="FILE", text="As of volux resample (resample)."),
    ] = None


@verb("volux plan resize ct.nii -o half.zarr --scale 0.5 --plan half.json")
def plan(
    what: Annotated[
        Literal["resize", "resample"],
        typer.Argument(metavar="VERB", help="resize or resample.", show_default=False),
    ],
    file: Annotated[
        str,
        typer.Argument(
            metavar="INPUT",
            help="OME-Zarr, Zarr, NIfTI that is not compressed, .npy, or raw voxels.",
            show_default=False,
        ),
    ],
    placed: Placed,
    stored: Stored,
    reading: Reading,
    filling: Filling,
    *,
    memory: Memory = None,
    force: Force = False,
    json: Json = False,
    quiet: Quiet = False,
) -> int:
    """Plan a result that is made unit by unit, by volux run, in OME-Zarr 0.5.

    --spacing, --shape and --scale follow INPUT's own index order: i, j, k of NIfTI, and z, y, x of
    OME-Zarr. --chunk and --unit follow z, y, x. Nothing is computed yet, and no voxel is read.
    """
    from volux.tool import _scaling

    given = _scaling.Given(what, file, placed, stored, reading, filling, memory)
    return _scaling.plan(given, force=force, as_json=json, quiet=quiet)


@verb("volux run half.json --processes 2")
def run(
    plan: PlanFile,
    *,
    processes: Processes = 1,
    shard: Annotated[
        str | None, option("--shard", metavar="I/N", text="Part I of N of the tasks, such as 1/8.")
    ] = None,
    task: Annotated[
        list[str] | None,
        option(
            "--task", metavar="I", text="Task I, or several such as 1,5,9, even if they are done."
        ),
    ] = None,
    threads: ThreadsEach = None,
    memory: Memory = None,
    json: Json = False,
    quiet: Quiet = False,
    progress: Annotated[
        Literal["auto", "plain", "none"],
        option("--progress", text="A bar or lines (auto), lines, or nothing.", default="auto"),
    ] = "auto",
) -> int:
    """Make the units of a plan that are not there yet.

    After an interruption, run it again: it goes on where it was. Any number of runs may work on a
    plan at the same time, on any number of machines that see the same folder.
    """
    from volux.tool import _scaling

    chosen = (shard, tuple(task or ()))
    how = "none" if quiet else progress
    conduct = (processes, threads, memory)
    return _scaling.run(plan, chosen, conduct, as_json=json, quiet=quiet, progress_as=how)


@verb("volux status half.json")
def status(plan: PlanFile, *, json: Json = False) -> int:
    """Print how many units of a plan there are, and whether the result is verified."""
    from volux.tool import _scaling

    return _scaling.status(plan, as_json=json)


@verb("volux verify half.json")
def verify(
    plan: PlanFile,
    *,
    check: Annotated[
        Literal["stored", "decoded"],
        option("--check", text="The bytes, or the voxels in them, too.", default="stored"),
    ] = "stored",
    store: Annotated[
        str | None,
        option("--store", metavar="OUT.zarr", text="A copy of the store.", default="that of PLAN"),
    ] = None,
    json: Json = False,
    quiet: Quiet = False,
) -> int:
    """Print the units that are wrong, and exit 1; or mark the result complete.

    A line has the task, the unit and what is wrong with it. volux run --task makes it anew.
    """
    from volux.tool import _scaling

    return _scaling.verify(plan, check=check, store=store, as_json=json, quiet=quiet)


@verb("volux pyramid half.zarr")
def pyramid(
    store: Annotated[
        str, typer.Argument(metavar="STORE", help="An OME-Zarr 0.5.", show_default=False)
    ],
    *,
    levels: Annotated[
        int | None,
        option(
            "--levels",
            metavar="N",
            text="Levels there shall be, with the finest.",
            default="until one is a chunk",
        ),
    ] = None,
    labels: Annotated[
        bool | None,
        option(
            "--labels/--no-labels",
            text="Treat voxels as labels, which vote.",
            default="as STORE says",
        ),
    ] = None,
    processes: Processes = 1,
    threads: ThreadsEach = None,
    memory: Memory = None,
    json: Json = False,
    quiet: Quiet = False,
) -> int:
    """Add levels to a store: each voxel the mean of 2 x 2 x 2 of the level before.

    Labels vote instead. An odd extent keeps its last voxel. After an interruption, give the same
    command again: it goes on where it was.
    """
    from volux.tool import _scaling

    wanted = (levels, labels)
    return _scaling.pyramid(store, wanted, (processes, threads, memory), as_json=json, quiet=quiet)
