"""The verbs: what each of them takes, and where its work is done.

Nothing here reads NumPy or a reader of files: help and wrong use are answered without them.
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from inspect import cleandoc
from typing import Annotated, Any, Literal, TypeVar

import typer

from volux.tool._flat import flat
from volux.tool._options import (
    Align,
    Conduct,
    Converting,
    Filling,
    Force,
    Input,
    Json,
    PlaneOptions,
    Quiet,
    Reading,
    Scale,
    Shape,
    Shown,
    Spacing,
    Threads,
    option,
)

F = TypeVar("F", bound=Callable[..., object])

_PLAIN: dict[str, Any] = {
    "rich_markup_mode": None,
    "pretty_exceptions_enable": False,
    "context_settings": {"help_option_names": ["-h", "--help"]},
}

app = typer.Typer(
    name="volux",
    help="Bring volumes onto other grids: the same bits on every machine.",
    add_completion=False,
    **_PLAIN,
)


# Each verb with its example.
VERBS: dict[str, tuple[Callable[..., object], str]] = {}


@app.callback(invoke_without_command=True)
def _every(
    version: Annotated[bool, option("--version", text="Print the version.")] = False,
) -> None:
    if version:
        from volux.tool._version import version as installed

        print(f"volux {installed()}")
        raise typer.Exit


def verb(example: str) -> Callable[[F], F]:
    """Make a function a verb, whose help begins with an example."""

    def add(function: F) -> F:
        VERBS[function.__name__] = function, example
        return function

    return add


def command(given: Sequence[str]) -> Callable[[], Any]:
    """Return what runs arguments: the verb alone that they name, or what lists all verbs."""
    if given and given[0] in VERBS:
        alone = typer.Typer(add_completion=False, **_PLAIN)
        _add(alone, given[0], flat(VERBS[given[0]][0]))
        return _called(alone, given[1:], f"volux {given[0]}")
    for name in VERBS:
        _add(app, name, _listed)  # which need not be taken apart
    return _called(app, given or ["--help"], "volux")


def _add(to: typer.Typer, name: str, function: Callable[..., object]) -> None:
    verb, example = VERBS[name]
    words = cleandoc(verb.__doc__ or "")
    summary = words.partition("\n")[0]
    to.command(name, help=f"\b\n    {example}\n\n{words}", short_help=summary)(function)


def _called(of: typer.Typer, given: Sequence[str], name: str) -> Callable[[], Any]:
    made = typer.main.get_command(of)
    return lambda: made(list(given), prog_name=name, standalone_mode=False)


def _listed() -> None:
    pass


@verb("volux info ct.nii.gz")
def info(file: Input, json: Json = False, quiet: Quiet = False) -> int:
    """Print what a file holds: extents, spacing, place, type and range.

    Lengths are in mm along i, j and k, the file's own index order; places are (x, y, z), RAS+.
    """
    from volux.tool import _looking

    return _looking.info(file, as_json=json, quiet=quiet)


@verb("volux digest ct.nii.gz")
def digest(file: Input, json: Json = False, quiet: Quiet = False) -> int:
    """Print the SHA-256 of the decoded voxels and their place.

    The same values of the same type in the same place have the same digest, whatever file holds
    them and on every machine.
    """
    from volux.tool import _looking

    return _looking.digest(file, as_json=json, quiet=quiet)


@verb("volux convert ct.nii.gz -o ct.nrrd")
def convert(file: Input, filling: Converting, conduct: Conduct) -> int:
    """Write a volume in another format, or with another type.

    The name of the output says the format: .nii, .nii.gz, .img, .mgz, .nrrd, .mha, .mhd, ...
    """
    from volux.tool import _sizes

    return _sizes.convert(file, filling, conduct)


@verb("volux resize ct.nii.gz -o isotropic.nii.gz --spacing 1")
def resize(
    file: Input,
    reading: Reading,
    filling: Filling,
    conduct: Conduct,
    *,
    spacing: Spacing = None,
    shape: Shape = None,
    scale: Scale = None,
    align: Align = "edges",
) -> int:
    """Bring a volume to another number of voxels, in the same place.

    Give one of --spacing, --shape and --scale, along i, j and k; one number counts for all three.
    """
    from volux.tool import _sizes

    return _sizes.resize(file, (spacing, shape, scale, align), reading, filling, conduct)


@verb("volux resample pet.nii.gz -o on_ct.nii.gz --like ct.nii.gz -t to_pet.tfm")
def resample(
    file: Input,
    reading: Reading,
    filling: Filling,
    conduct: Conduct,
    *,
    like: Annotated[
        str | None,
        option(
            "--like", metavar="FILE", text="A file whose grid the result gets.", default="INPUT"
        ),
    ] = None,
    transform: Annotated[
        list[str] | None,
        option(
            "--transform",
            "-t",
            metavar="FILE",
            text="A transform of ITK, a 4 x 4 matrix as text in RAS+, or a displacement field.",
        ),
    ] = None,
) -> int:
    """Bring a volume onto the grid of another one, through transforms.

    A transform leads from a point of the output to the point of INPUT that is read for it, as those
    of registrations do. Several are applied to a point in the order in which they are given.
    """
    from volux.tool import _places

    return _places.resample(file, (like, transform or []), reading, filling, conduct)


@verb("volux crop ct.nii.gz -o lungs.nii.gz --box 40:210,:,5:-5")
def crop(
    file: Input,
    filling: Converting,
    conduct: Conduct,
    *,
    box: Annotated[
        str,
        option("--box", metavar="I,J,K", text="Ranges of voxels along i, j and k."),
    ],
) -> int:
    """Cut a box of voxels out of a volume; what is left keeps its place.

    A range is FIRST:END, counted from 0 and without END itself; negative numbers count from the
    end, and : is all.
    """
    from volux.tool import _places

    return _places.crop(file, box, filling, conduct)


@verb("volux reslice ct.nii.gz -o plane.nii.gz --centre 0,10,-20 --normal 0,1,1")
def reslice(
    file: Input, where: PlaneOptions, reading: Reading, filling: Filling, conduct: Conduct
) -> int:
    """Cut a plane, a slab or a stack of planes out of a volume.

    The plane lies in the world: places and directions are (x, y, z) in mm, RAS+. The file that is
    written has columns along i, rows along j and planes along k.
    """
    from volux.tool import _places

    return _places.reslice(file, where, reading, filling, conduct)


@verb("volux sample ct.nii.gz points.csv")
def sample(
    file: Input,
    points: Annotated[str, typer.Argument(metavar="POINTS", help="A CSV file, or - for stdin.")],
    reading: Reading,
    *,
    output: Annotated[
        str,
        option("--output", "-o", metavar="OUTPUT", text="The CSV file to write.", default="stdout"),
    ] = "",
    force: Force = False,
    threads: Threads = None,
    quiet: Quiet = False,
) -> int:
    """Read a volume at the points of a CSV file.

    What is written is the same file with a column of values. The first line names the columns:
    x, y and z are places in mm, RAS+, and i, j and k voxels. Several channels, such as times,
    become value0, value1, ...
    """
    from volux.tool import _points

    return _points.sample(
        (file, points), reading, output=output, force=force, threads=threads, quiet=quiet
    )


@verb("volux view ct.nii.gz -o ct.png")
def view(
    file: Input,
    shown: Shown,
    *,
    output: Annotated[str, option("--output", "-o", metavar="OUTPUT", text="The PNG to write.")],
    force: Force = False,
    quiet: Quiet = False,
) -> int:
    """Draw an axial, a coronal and a sagittal plane of a volume; or others.

    Letters beside each plane say the sides of the patient. CT is shown by the window of soft
    tissue, other volumes and slabs from the background to nearly the brightest voxel. Labels have a
    legend, with names where the file or a table beside it has any. Places and directions are
    (x, y, z) in mm, RAS+.
    """
    from volux.tool import _viewing

    return _viewing.view(file, output, shown, force=force, quiet=quiet)


@verb("volux compare ct.nii.gz other.nii.gz")
def compare(
    file: Input,
    other: Annotated[str, typer.Argument(metavar="OTHER", help="Another file.")],
    *,
    tolerance: Annotated[
        float, option("--tolerance", text="How far values may be apart.", default="0")
    ] = 0.0,
    tolerance_mm: Annotated[
        float, option("--tolerance-mm", text="How far corners may be apart, in mm.", default="0")
    ] = 0.0,
    json: Json = False,
    quiet: Quiet = False,
) -> int:
    """Print how two volumes differ, and exit 1 if they do.

    Extents are compared first, then where the corners lie, then the values, all of them as the
    files scale them. Types and formats do not count.
    """
    from volux.tool import _comparing

    return _comparing.compare((file, other), (tolerance, tolerance_mm), as_json=json, quiet=quiet)


@verb("volux completion bash")
def completion(
    shell: Annotated[
        Literal["bash", "zsh", "fish"], typer.Argument(metavar="SHELL", help="The shell.")
    ],
) -> int:
    """Print the script that completes commands in a shell.

    For bash, put eval "$(volux completion bash)" into ~/.bashrc, and likewise for zsh; for fish,
    put volux completion fish | source into config.fish.
    """
    from volux.tool._texts import completion as script

    print(script(shell), end="")
    return 0


# The verbs of another module, which takes `verb` from here.
from volux.tool import _scale_verbs as _scale_verbs  # noqa: E402
