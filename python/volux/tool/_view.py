"""The verb that makes pictures; what it imports is read when it is called."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Annotated, Literal

from volux.tool._options import Input, Quiet, option

EXAMPLE = "volux view ct.nii.gz -o ct.png"


@dataclass(frozen=True)
class Shown:
    """What of a volume is on the picture, and how."""

    window: Annotated[
        str | None,
        option("--window", metavar="LEVEL,WIDTH", text="Grey values.", default="by the voxels"),
    ] = None
    labels: Annotated[
        str | None,
        option("--labels", metavar="FILE", text="Labels to lay in colour over the volume."),
    ] = None
    montage: Annotated[
        int | None, option("--montage", metavar="N", text="So many axial planes instead of three.")
    ] = None
    centre: Annotated[
        str | None,
        option("--centre", metavar="X,Y,Z", text="Where the planes meet.", default="the middle"),
    ] = None
    normal: Annotated[
        str | None,
        option("--normal", metavar="X,Y,Z", text="One plane at right angles to this direction."),
    ] = None
    up: Annotated[
        str | None,
        option("--up", metavar="X,Y,Z", text="Up in that picture.", default="the head"),
    ] = None
    slab: Annotated[
        float | None,
        option("--slab", metavar="MM", text="How thick a slab is, with --normal; it becomes one."),
    ] = None
    projection: Annotated[
        Literal["mean", "maximum", "minimum"],
        option("--projection", text="How the slab becomes one picture.", default="mean"),
    ] = "mean"
    size: Annotated[
        int | None,
        option(
            "--size",
            metavar="N",
            text="Pixels along the longest side of the volume.",
            default="400, or 200 in a montage",
        ),
    ] = None


def view(
    file: Input,
    shown: Shown,
    *,
    output: Annotated[str, option("--output", "-o", metavar="OUTPUT", text="The PNG to write.")],
    force: Annotated[bool, option("--force", "-f", text="Replace an output that exists.")] = False,
    quiet: Quiet = False,
) -> int:
    """Draw an axial, a coronal and a sagittal plane of a volume; or others.

    Letters beside each plane say the sides of the patient. CT is shown by the window of soft
    tissue, other volumes from the background to nearly the brightest voxel. Places and directions
    are (x, y, z) in mm, RAS+.
    """
    from volux.tool import _viewing

    return _viewing.view(file, output, shown, force=force, quiet=quiet)
