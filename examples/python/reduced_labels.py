"""A label map made four times smaller: by votes, by single voxels, and by means of numbers.

Usage: python reduced_labels.py LABELS PICTURE.png
"""

from __future__ import annotations

from colorsys import hls_to_rgb
from typing import Any

import numpy as np
import numpy.typing as npt
import volux
from paper import Tile, cropped, middle_of, needs, run, sheet, size_of
from PIL import Image

FACTOR, PIXELS = 4, 400  # PIXELS along the longest side
GOLDEN = 0.61803398875  # successive labels are as different in hue as they can be
WAYS: dict[str, dict[str, Any]] = {
    "one voxel of each block, 'nearest'": {"interpolation": "nearest", "antialias": None},
    "the vote of each block, 'label'": {"interpolation": "label", "antialias": "mean"},
    "the mean of each block, 'linear'": {"interpolation": "linear", "antialias": "mean"},
}


def reduced_labels(image: volux.Image) -> Image.Image:
    """Return an axial plane of labels as they are, and made smaller in three ways."""
    labels = whole_blocks(image)
    edge = float(size_of(labels).max()) / PIXELS
    columns, rows = (round(length / edge) for length in size_of(labels)[:2])
    plane = volux.Plane(middle_of(labels), (0, 0, 1), (0, 1, 0), (rows, columns), edge)
    tiles = [Tile(coloured(labels, plane), "as it is", plane)]
    for words, how in WAYS.items():
        small = volux.resize(labels, shape=[n // FACTOR for n in labels.shape], **how)
        wrong = invented(labels, small)
        caption = f"{words}: {share(wrong)} invented"
        tiles.append(Tile(coloured(small, plane, wrong), caption, plane))
    title = f"A label for each {FACTOR} x {FACTOR} x {FACTOR} voxels; white: none of them has it"
    return sheet(title, tiles)


def whole_blocks(image: volux.Image) -> volux.Image:
    """Return the labelled part of a volume, as far as whole blocks go."""
    part = cropped(image, 0)
    needs(min(part.shape) >= FACTOR, f"have labels over {FACTOR} voxels along each axis")
    box = tuple(slice(n // FACTOR * FACTOR) for n in part.shape)
    return volux.Image(part.array[box], part.affine, axes=part.axes)


def invented(labels: volux.Image, small: volux.Image) -> npt.NDArray[np.bool_]:
    """Return where a small map has a label that no voxel of its block has."""
    i, j, k = small.shape
    blocks = labels.array.reshape(i, FACTOR, j, FACTOR, k, FACTOR)
    made = small.array[:, None, :, None, :, None]
    wrong: npt.NDArray[np.bool_] = ~(blocks == made).any(axis=(1, 3, 5))
    return wrong


def share(wrong: npt.NDArray[np.bool_]) -> str:
    """Return how many are true, in per cent."""
    return f"{100 * wrong.mean():.2g} %" if wrong.any() else "none"


def coloured(
    labels: volux.Image, plane: volux.Plane, white: npt.NDArray[np.bool_] | None = None
) -> Image.Image:
    """Return the labels that a plane cuts in colours, and some voxels in white."""
    cut = volux.reslice(labels, plane, interpolation="nearest").array[0]
    numbers, places = np.unique(cut, return_inverse=True)
    colours = np.array([colour_of(int(number)) for number in numbers], np.uint8)
    picture = colours[places.reshape(cut.shape)]
    if white is not None:
        marks = volux.Image(white.astype(np.uint8), labels.affine, axes=labels.axes)
        picture[volux.reslice(marks, plane, interpolation="nearest").array[0] > 0] = 255
    return Image.fromarray(picture)


def colour_of(label: int) -> tuple[int, int, int]:
    """Return a colour for a label, and black for the background."""
    lightness = (0.0, 0.5, 0.62, 0.4)[label and 1 + label % 3]
    red, green, blue = hls_to_rgb(label * GOLDEN % 1, lightness, 0.7)
    return round(255 * red), round(255 * green), round(255 * blue)


if __name__ == "__main__":
    run(__doc__, reduced_labels)
