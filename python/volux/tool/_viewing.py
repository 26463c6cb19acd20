"""From files to a PNG."""

from __future__ import annotations

import numpy as np

from volux import Image
from volux.tool._errors import SUCCESS, Misuse, needed, say
from volux.tool._files import Scan, read
from volux.tool._output import placed, refuse
from volux.tool._pictures._grey import Window, window_of


def view(
    file: str,
    output: str,
    window: str | None,
    labels: str | None,
    size: int,
    *,
    force: bool,
    quiet: bool,
) -> int:
    """Write the picture of three planes."""
    needed("PIL")
    from volux.tool._pictures._planes import planes

    if not output.lower().endswith(".png"):
        raise Misuse(f"--output {output}: must end in .png")
    if not 16 <= size <= 8192:
        raise Misuse(f"--size {size}: must be 16 to 8192")
    greys = None if window is None else _window(window)
    refuse(output, [file, labels] if labels else [file], force=force)
    image = _first(read(file), quiet)
    named = None if labels is None else _named(labels, quiet)
    made = planes(image, greys or window_of(image.array), size=size, labels=named)
    with placed(output) as path:
        made.save(path, format="PNG")
    return SUCCESS


def _window(text: str) -> Window:
    try:
        level, width = (float(part) for part in text.split(","))
    except ValueError:
        level = width = float("nan")
    if not (np.isfinite(level) and np.isfinite(width) and width > 0):
        raise Misuse(f"--window {text}: must be LEVEL,WIDTH such as 40,400, the width above 0")
    return Window(level, width)


def _first(scan: Scan, quiet: bool) -> Image:
    """Return the first channel of a volume, and say so."""
    for note in () if quiet else scan.notes:
        say(f"{scan.path}: {note}")
    image = scan.image
    if image.channels is None:
        return image
    if image.channels > 1 and not quiet:
        say(f"{scan.path}: has {image.channels} volumes or channels; the first one is shown")
    return Image(image.array[..., 0], image.affine, axes=image.axes)


def _named(path: str, quiet: bool) -> Image:
    image = _first(read(path), quiet)
    if not np.array_equal(image.array, np.floor(image.array)):
        raise Misuse(f"--labels {path}: has values that are no whole numbers; labels are numbers")
    return image
