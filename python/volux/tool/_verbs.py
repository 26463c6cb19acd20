"""The verbs: what each of them takes, and where its work is done.

Nothing here reads NumPy or a reader of files: help and wrong use are answered without them.
"""

from __future__ import annotations

from collections.abc import Callable
from importlib import import_module
from importlib.util import find_spec
from inspect import cleandoc
from typing import Annotated, Any, TypeVar

import typer

from volux.tool._options import (
    Align,
    Conduct,
    Converting,
    Filling,
    Input,
    Json,
    Quiet,
    Reading,
    Scale,
    Shape,
    Spacing,
    flat,
)

F = TypeVar("F", bound=Callable[..., object])

app = typer.Typer(
    name="volux",
    help="Bring volumes onto other grids: the same bits on every machine.",
    add_completion=False,
    rich_markup_mode=None,
    pretty_exceptions_enable=False,
    no_args_is_help=True,
    context_settings={"help_option_names": ["-h", "--help"]},
)


@app.callback()
def _every(
    version: Annotated[bool, typer.Option("--version", help="Say the version.")] = False,
) -> None:
    if version:
        from volux.tool._cli import version as installed

        print(f"volux {installed()}")
        raise typer.Exit


def verb(example: str) -> Callable[[F], F]:
    """Make a function a verb, whose help begins with an example."""

    def add(function: F) -> F:
        words = cleandoc(function.__doc__ or "")
        summary = words.partition("\n")[0]
        said = f"\b\n    {example}\n\n{words}"
        app.command(function.__name__, help=said, short_help=summary)(flat(function))
        return function

    return add


def command() -> Callable[..., Any]:
    """Return the command with all its verbs."""
    if find_spec("volux.tool._view") is not None:
        view: Any = import_module("volux.tool._view")
        verb(view.EXAMPLE)(view.view)
    return typer.main.get_command(app)


@verb("volux info ct.nii.gz")
def info(file: Input, json: Json = False, quiet: Quiet = False) -> int:
    """Say what a file holds: extents, spacing, place, type and range.

    Lengths are in mm along i, j and k, the file's own index order; places are (x, y, z), RAS+.
    """
    from volux.tool import _looking

    return _looking.info(file, as_json=json, quiet=quiet)


@verb("volux digest ct.nii.gz")
def digest(file: Input, json: Json = False, quiet: Quiet = False) -> int:
    """Say the SHA-256 of the decoded voxels and their place.

    It is the same for the same volume in every format that holds it, and on every machine.
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
