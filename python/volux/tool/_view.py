"""The verb that makes pictures; what it imports is read when it is called."""

from __future__ import annotations

from typing import Annotated

from volux.tool._options import Input, Quiet, option

EXAMPLE = "volux view ct.nii.gz -o ct.png"


def view(
    file: Input,
    *,
    output: Annotated[str, option("--output", "-o", metavar="OUTPUT", text="The PNG to write.")],
    window: Annotated[
        str | None,
        option("--window", metavar="LEVEL,WIDTH", text="Grey values.", default="by the voxels"),
    ] = None,
    labels: Annotated[
        str | None,
        option("--labels", metavar="FILE", text="Labels to lay in colour over the volume."),
    ] = None,
    size: Annotated[
        int, option("--size", text="Pixels along the longest side of the volume.", default="400")
    ] = 400,
    force: Annotated[bool, option("--force", "-f", text="Replace an output that exists.")] = False,
    quiet: Quiet = False,
) -> int:
    """Draw an axial, a coronal and a sagittal plane through the middle of a volume.

    Letters beside each plane say the sides of the patient. CT is shown by the window of soft
    tissue, other volumes from the background to nearly the brightest voxel.
    """
    from volux.tool import _viewing

    return _viewing.view(file, output, window, labels, size, force=force, quiet=quiet)
