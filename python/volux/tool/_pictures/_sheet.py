"""Pictures in rows on one sheet, with what is said about them in the margins."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping, Sequence
from itertools import zip_longest
from typing import NamedTuple

import numpy as np
import numpy.typing as npt
from PIL import Image, ImageDraw

from volux.tool._pictures._legend import legend
from volux.tool._pictures._marks import Letters, bar_of
from volux.tool._pictures._style import FONT, INK, LINE, MARGIN, PAPER, SIDE, width_of

_BAR = 4  # pixels: the height of a scale bar
_BESIDE = 5  # pixels between a picture and a letter
_LEGEND = 3  # a legend is no higher than the pictures divided by this


class Tile(NamedTuple):
    """A picture, (rows, columns, 3), its caption and the patient's sides around it.

    `labels` says how many of its pixels each label has.
    """

    pixels: npt.NDArray[np.uint8]
    caption: str
    letters: Letters
    labels: Mapping[int, int] = {}

    @property
    def left(self) -> int:
        """How many pixels the letter on the left of it needs."""
        return _beside(self.letters.left)

    @property
    def width(self) -> int:
        """Its pixels with those of the letters or the caption."""
        columns: int = self.pixels.shape[1]
        picture = max(columns, width_of(self.caption))
        return self.left + max(picture, columns + _beside(self.letters.right))


def _beside(letter: str) -> int:
    return width_of(letter) + 2 * _BESIDE if letter else 0


class Row(NamedTuple):
    """Pictures beside one another, and how wide the columns are that they stand in."""

    tiles: Sequence[Tile]
    widths: Sequence[int]

    @property
    def width(self) -> int:
        """The pixels of the columns, with a margin on each side of each."""
        return sum(self.widths) + MARGIN * (len(self.widths) + 1)

    @property
    def top(self) -> int:
        """What is above the highest picture: captions, and letters if there are any."""
        return LINE * (1 + any(tile.letters.top for tile in self.tiles))

    @property
    def highest(self) -> int:
        """The height of the highest picture."""
        highest: int = max(tile.pixels.shape[0] for tile in self.tiles)
        return highest

    @property
    def height(self) -> int:
        """All of it, with letters below and the bar."""
        below = any(tile.letters.bottom for tile in self.tiles)
        return self.top + self.highest + LINE * (1 + below) + MARGIN


def sheet(
    rows: Sequence[Sequence[Tile]], edge: float, names: Mapping[int, str] | None = None
) -> Image.Image:
    """Return rows of pictures, all of whose pixels are `edge` mm wide, with a bar for each row.

    A legend of their labels is below them, by number and by name where `names` has one.
    """
    laid = [Row(row, _columns(rows)) for row in rows]
    width, height = laid[0].width, sum(row.height for row in laid) + MARGIN
    paper = Image.new("RGB", (width, height), PAPER)
    top = MARGIN
    for row in laid:
        _draw_row(paper, row, top, edge)
        top += row.height
    labels: Counter[int] = Counter()
    for row in laid:
        for tile in row.tiles:
            labels.update(tile.labels)
    return _above(paper, legend(labels, names or {}, width, height // _LEGEND)) if labels else paper


def _columns(rows: Sequence[Sequence[Tile]]) -> list[int]:
    return [max(tile.width for tile in column if tile) for column in zip_longest(*rows)]


def _above(paper: Image.Image, strip: Image.Image) -> Image.Image:
    both = Image.new("RGB", (paper.width, paper.height + strip.height), PAPER)
    both.paste(paper, (0, 0))
    both.paste(strip, (0, paper.height))
    return both


def _draw_row(paper: Image.Image, row: Row, top: int, edge: float) -> None:
    left = MARGIN
    for tile, width in zip(row.tiles, row.widths, strict=False):
        centred = top + row.top + (row.highest - tile.pixels.shape[0]) // 2
        _draw_tile(paper, tile, left, centred, caption=centred - row.top)
        left += width + MARGIN
    bottom = top + row.height - MARGIN
    longest = max(0.4 * max(tile.pixels.shape[1] for tile in row.tiles), 1.0)
    _draw_bar(paper, MARGIN + row.tiles[0].left, bottom, edge, bar_of(longest * edge))


def _draw_tile(paper: Image.Image, tile: Tile, left: int, y: int, caption: int) -> None:
    draw = ImageDraw.Draw(paper)
    rows, columns = tile.pixels.shape[:2]
    x = left + tile.left
    paper.paste(Image.fromarray(tile.pixels), (x, y))
    draw.text((x, caption), tile.caption, INK, FONT)
    middle, centre = x + columns / 2, y + rows / 2
    draw.text((x - _BESIDE, centre), tile.letters.left, SIDE, FONT, anchor="rm")
    draw.text((x + columns + _BESIDE, centre), tile.letters.right, SIDE, FONT, anchor="lm")
    draw.text((middle, y - LINE / 2), tile.letters.top, SIDE, FONT, anchor="mm")
    draw.text((middle, y + rows + LINE / 2), tile.letters.bottom, SIDE, FONT, anchor="mm")


def _draw_bar(paper: Image.Image, left: int, bottom: int, edge: float, length: float) -> None:
    draw = ImageDraw.Draw(paper)
    pixels = max(round(length / edge), 1)
    middle = bottom - LINE // 2
    draw.rectangle((left, middle, left + pixels - 1, middle + _BAR - 1), INK)
    draw.text((left + pixels + 8, middle + _BAR / 2), f"{length:g} mm", INK, FONT, anchor="lm")
