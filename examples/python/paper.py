"""What the pictures of these programs share: files, greys, captions, letters and scale bars.

The other programs in this folder import it. Nothing is written over a picture: captions stand
above it, the letters of the patient's sides around it, and a scale bar below.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Sequence
from itertools import pairwise
from pathlib import Path
from typing import NamedTuple, TypeVar

import nibabel
import numpy as np
import numpy.typing as npt
import SimpleITK
import volux
from PIL import Image, ImageDraw, ImageFont

T = TypeVar("T")

PAPER, INK, FAINT, ACCENT = (26, 27, 30), (235, 235, 235), (160, 160, 165), (255, 184, 77)
MARGIN, GAP = 20, 12  # pixels: around the sheet, between tiles
LINE, BESIDE = 20, 24  # from line to line, for the letters on a side
_TITLE, _TEXT = ImageFont.load_default(21), ImageFont.load_default(15)


class Tile(NamedTuple):
    """A picture of a plane and its caption."""

    picture: Image.Image
    caption: str
    plane: volux.Plane


class UnfitError(ValueError):
    """A volume that a program cannot draw; the words go on after the name of its file."""


def needs(is_so: bool, words: str) -> None:
    """Refuse a volume that is not so."""
    if not is_so:
        raise UnfitError(f"the volume must {words}")


def read(path: str) -> volux.Image:
    """Return the volume of a file: NIfTI by nibabel, all else by SimpleITK."""
    if not Path(path).exists():
        raise UnfitError("there is no such file")
    if path.endswith((".nii", ".nii.gz")):
        image = volux.Image.from_nibabel(nibabel.load(path))
    else:
        image = volux.Image.from_sitk(SimpleITK.ReadImage(path))
    needs(image.channels is None, "be one, not a series or several channels")
    return image


def run(program: str | None, draw: Callable[[volux.Image], Image.Image]) -> None:
    """Draw the volume that the command line names first, into the file that it names then."""
    source, output = arguments(program, 2)
    drawn(source, draw).save(output)


def drawn(source: str, draw: Callable[[volux.Image], T]) -> T:
    """Return what is drawn of a file; say in a line why it cannot be."""
    try:
        return draw(read(source))
    except UnfitError as error:
        sys.exit(f"{source}: {error}")


def arguments(program: str | None, count: int) -> list[str]:
    """Return what the command line says; without as much, say how a program is used."""
    if program is not None and len(sys.argv) != count + 1:
        sys.exit(program.splitlines()[-1])
    return sys.argv[1:]


def size_of(image: volux.Image) -> npt.NDArray[np.float64]:
    """Return how long, in mm, the box of the world is that holds a volume."""
    size: npt.NDArray[np.float64] = abs(image.affine[:3, :3]) @ image.shape
    return size


def middle_of(image: volux.Image) -> npt.NDArray[np.float64]:
    """Return the middle of a volume in the world."""
    middle = [*((extent - 1) / 2 for extent in image.shape), 1.0]
    place: npt.NDArray[np.float64] = (image.affine @ middle)[:3]
    return place


def cropped(image: volux.Image, threshold: float, margin: int = 0) -> volux.Image:
    """Return the box of a volume that has nearly all the voxels above a threshold."""
    above = image.array > threshold
    needs(bool(above.any()), f"have voxels above {threshold:g}")
    box = []
    for axis in range(3):
        counts = above.sum(axis=tuple({0, 1, 2} - {axis}))
        inside = np.flatnonzero(counts > 0.003 * counts.max())
        box.append(slice(max(int(inside[0]) - margin, 0), int(inside[-1]) + 1 + margin))
    return volux.Image(image.array[tuple(box)], image.grid[tuple(box)].affine, axes=image.axes)


def window(image: volux.Image) -> tuple[float, float]:
    """Return which readings are shown black and white: nearly all that is no background."""
    finite = image.array[np.isfinite(image.array)]
    low = float(np.percentile(finite, 1)) if finite.size else 0.0
    needs(bool((finite > low).any()), "have different values")
    return low, float(np.percentile(finite[finite > low], 99.5))


def greys(readings: npt.ArrayLike, low: float, high: float) -> Image.Image:
    """Return readings, (rows, columns), as a picture in colours that has only greys yet."""
    shares = (np.asarray(readings, np.float64) - low) / (high - low)
    return Image.fromarray((shares.clip(0, 1) * 255 + 0.5).astype(np.uint8)).convert("RGB")


def sheet(title: str, tiles: Sequence[Tile]) -> Image.Image:
    """Return tiles beside one another, with a bar below the first one of each scale."""
    captions = [_broken(tile.caption, tile.picture.width + BESIDE) for tile in tiles]
    top = MARGIN + 38 + LINE * max(map(len, captions)) + BESIDE
    lowest = top + max(tile.picture.height for tile in tiles) + BESIDE
    lefts = [MARGIN + BESIDE]
    for tile in tiles:
        lefts.append(lefts[-1] + tile.picture.width + 2 * BESIDE + GAP)
    wide = max(lefts[-1] - BESIDE - GAP + MARGIN, round(_TITLE.getlength(title)) + 2 * MARGIN)
    page = Image.new("RGB", (wide, lowest + LINE + MARGIN), PAPER)
    pen = ImageDraw.Draw(page)
    pen.text((lefts[0], MARGIN), title, INK, _TITLE)
    for tile, caption, left in zip(tiles, captions, lefts, strict=False):
        page.paste(tile.picture, (left, top))
        for line, words in enumerate(caption):
            pen.text((left, MARGIN + 38 + line * LINE), words, FAINT, _TEXT)
        _letter(pen, tile, left, top)
    scales = [0.0, *(tile.plane.spacing[1] for tile in tiles)]
    for tile, left, (before, here) in zip(tiles, lefts, pairwise(scales), strict=False):
        if abs(before - here) > 1e-6 * here:
            _bar(pen, left, lowest + LINE // 2, here, tile.picture.width)
    return page


def _broken(caption: str, width: int) -> list[str]:
    """Return lines that are no wider than a number of pixels, if their words are not."""
    lines = [""]
    for word in caption.split():
        longer = f"{lines[-1]} {word}".lstrip()
        if lines[-1] and _TEXT.getlength(longer) > width:
            lines.append(word)
        else:
            lines[-1] = longer
    return lines


def _letter(pen: ImageDraw.ImageDraw, tile: Tile, left: int, top: int) -> None:
    """Write what the patient has on the four sides of a picture."""
    width, height = tile.picture.size
    down, across = tile.plane.grid.affine[:3, 1], tile.plane.grid.affine[:3, 2]
    places = {
        (left - BESIDE / 2, top + height / 2): -across,
        (left + width + BESIDE / 2, top + height / 2): across,
        (left + width / 2, top - BESIDE / 2): -down,
        (left + width / 2, top + height + BESIDE / 2): down,
    }
    for place, direction in places.items():
        pen.text(place, side(direction), ACCENT, _TEXT, anchor="mm")


def side(direction: npt.NDArray[np.float64]) -> str:
    """Return R, L, A, P, S or I, or two of them, the one that counts most first."""
    parts = direction / np.linalg.norm(direction)
    order = sorted(range(3), key=lambda axis: -abs(parts[axis]))
    return "".join(
        "LPIRAS"[axis + 3 * (parts[axis] > 0)] for axis in order if abs(parts[axis]) > 0.26
    )


def _bar(pen: ImageDraw.ImageDraw, left: int, y: int, scale: float, width: int) -> None:
    """Draw the longest round length that is no longer than a third of a picture."""
    longest = scale * width / 3
    lengths = (n * 10.0**power for power in range(-3, 4) for n in (1, 2, 5))
    length = max(n for n in lengths if n <= longest)
    right = left + round(length / scale)
    pen.rectangle((left, y - 2, right, y + 1), INK)
    pen.text((right + 8, y), f"{length:g} mm", INK, _TEXT, anchor="lm")
