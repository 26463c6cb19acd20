"""From files to a PNG."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from volux import Image
from volux._types import Interpolation
from volux.tool._errors import SUCCESS, Misuse, needed, say
from volux.tool._files import Scan, read_aloud
from volux.tool._flat import is_said
from volux.tool._names import names_of
from volux.tool._options import Shown, place
from volux.tool._output import placed, refuse
from volux.tool._pictures._grey import Window, window_of
from volux.tool._planes import depth_of, middle_of, upwards

if TYPE_CHECKING:
    from volux.tool._pictures._planes import Look


def view(file: str, output: str, shown: Shown, *, force: bool, quiet: bool) -> int:
    """Write a picture of a volume."""
    needed("PIL")
    if not output.lower().endswith(".png"):
        raise Misuse(f"--output {output}: must end in .png")
    _check(shown)
    refuse(output, [file, shown.labels] if shown.labels else [file], force=force)
    scan = read_aloud(file, quiet=quiet)
    image = _one(scan, shown.volume, quiet)
    made = _picture(image, _look(scan, image, shown, quiet), shown)
    with placed(output) as path:
        made.save(path, format="PNG")
    if not quiet:
        say(f"{output}: {made.width} x {made.height} pixels written")
    return SUCCESS


def _check(shown: Shown) -> None:
    """Refuse options that do not go together, or whose values are not allowed."""
    if shown.size is not None and not 16 <= shown.size <= 8192:
        raise Misuse(f"--size {shown.size}: must be 16 to 8192")
    if shown.montage is not None and not 1 <= shown.montage <= 400:
        raise Misuse(f"--montage {shown.montage}: must be 1 to 400")
    if shown.slab is not None and not 0 < shown.slab < float("inf"):
        raise Misuse(f"--slab {shown.slab:g}: must be above 0")
    idle = [name for name in ("up", "slab", "projection") if is_said(name)]
    if shown.normal is None and idle:
        raise Misuse(f"--{idle[0]}: goes with --normal, which says what is looked along")
    if shown.montage is not None and (shown.normal is not None or shown.centre is not None):
        raise Misuse("--montage takes all the volume; leave out --centre and --normal")


def _look(scan: Scan, image: Image, shown: Shown, quiet: bool) -> Look:
    from volux.tool._pictures._planes import Look

    if (shown.interp or ("label" if scan.labels else "linear")) == "label":
        if shown.labels is not None:
            raise Misuse(f"--labels {shown.labels}: {scan.path} is drawn as labels itself")
        if shown.window is not None:
            raise Misuse(
                f"--window {shown.window}: {scan.path} is drawn as labels, which have colours; "
                "--interp linear draws greys"
            )
        _whole(image, scan.path)
        return Look(None, None, "label", names_of(scan, shown.volume or 0))
    window = None if shown.window is None else _window(shown.window)
    if window is None and not _is_slab(shown):
        window = window_of(image.array)
    labels = None if shown.labels is None else read_aloud(shown.labels, quiet=quiet)
    return Look(
        window,
        None if labels is None else _whole(_one(labels, None, quiet), f"--labels {labels.path}"),
        shown.interp or _kernel(shown),
        {} if labels is None else names_of(labels),
    )


def _kernel(shown: Shown) -> Interpolation:
    # Between voxels, linear readings are lower than both maxima beside them, which shows as rings.
    return "cubic" if _is_slab(shown) and shown.projection != "mean" else "linear"


def _is_slab(shown: Shown) -> bool:
    return shown.slab is not None or is_said("projection")


def _picture(image: Image, look: Look, shown: Shown) -> Any:
    from volux.tool._pictures._planes import montage, oblique, three

    if shown.montage is not None:
        return montage(image, look, shown.montage, shown.size or 200)
    centre = middle_of(image) if shown.centre is None else place(shown.centre, "--centre")
    try:
        if shown.normal is None:
            return three(image, look, centre, shown.size or 400)
        normal = place(shown.normal, "--normal")
        up = upwards(normal) if shown.up is None else place(shown.up, "--up")
        depth = shown.slab or (depth_of(image, centre, normal) if _is_slab(shown) else 0.0)
        how: dict[str, Any] = {"thickness": depth, "projection": shown.projection}
        return oblique(image, look, (centre, normal, up), size=shown.size or 400, **how)
    except ValueError as error:
        raise Misuse(f"the plane: {error}") from None


def _window(text: str) -> Window:
    try:
        level, width = (float(part) for part in text.split(","))
    except ValueError:
        level = width = float("nan")
    if not (np.isfinite(level) and np.isfinite(width) and width > 0):
        raise Misuse(f"--window {text}: must be LEVEL,WIDTH such as 40,400, the width above 0")
    return Window(level, width)


def _one(scan: Scan, volume: int | None, quiet: bool) -> Image:
    """Return one volume of several, the first one unless somebody says which."""
    image = scan.image
    count = image.channels or 1
    if volume is not None and not 0 <= volume < count:
        raise Misuse(f"--volume {volume}: {scan.path} has {count}, counted from 0")
    if image.channels is None:
        return image
    if count > 1 and volume is None and not quiet:
        say(
            f"{scan.path}: has {count} volumes or channels; the first one is shown (--volume "
            "chooses for INPUT)"
        )
    return Image(image.array[..., volume or 0], image.affine, axes=image.axes)


def _whole(image: Image, name: str) -> Image:
    if not (np.isfinite(image.array).all() and np.array_equal(image.array, np.floor(image.array))):
        raise Misuse(f"{name}: has values that are no whole numbers; labels are numbers")
    return image
