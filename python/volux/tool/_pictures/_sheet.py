"""Pictures in rows on one sheet, with what is said about them in the margins."""

from __future__ import annotations

from collections.abc import Sequence
from typing import NamedTuple

import numpy as np
import numpy.typing as npt
from PIL import Image, ImageDraw, ImageFont

from volux.tool._pictures._marks import Letters, bar_of

_PAPER, _INK, _SIDE = (26, 27, 30), (235, 235, 235), (255, 184, 77)
_LINE = 22  # pixels: the height of a line of text
_MARGIN = 16
_BAR = 4  # pixels: the height of a scale bar
_FONT = ImageFont.load_default(14)


class Tile(NamedTuple):
    """A picture, (rows, columns, 3), its caption and the patient's sides around it."""

    pixels: npt.NDArray[np.uint8]
    caption: str
    letters: Letters

    @property
    def side(self) -> int:
        """How many pixels the letters beside it need."""
        widest = max(_FONT.getlength(self.letters.left), _FONT.getlength(self.letters.right))
        return round(widest) + 10

    @property
    def width(self) -> int:
        """Its pixels with those of the letters or the caption."""
        columns: int = self.pixels.shape[1]
        return max(columns + 2 * self.side, round(_FONT.getlength(self.caption)))


def sheet(rows: Sequence[Sequence[Tile]], edge: float) -> Image.Image:
    """Return rows of pictures, all of whose pixels are `edge` mm wide, with a bar for each row."""
    width = max(_width(row) for row in rows)
    paper = Image.new("RGB", (width, sum(_height(row) for row in rows) + _MARGIN), _PAPER)
    top = _MARGIN
    for row in rows:
        _draw_row(paper, row, top, edge)
        top += _height(row)
    return paper


def _width(row: Sequence[Tile]) -> int:
    return sum(tile.width + _MARGIN for tile in row) + _MARGIN


def _height(row: Sequence[Tile]) -> int:
    # Lines for captions, the letters above and below, and the bar.
    highest: int = max(tile.pixels.shape[0] for tile in row)
    return 4 * _LINE + highest + _MARGIN // 2


def _draw_row(paper: Image.Image, row: Sequence[Tile], top: int, edge: float) -> None:
    left = _MARGIN
    for tile in row:
        _draw_tile(paper, tile, left, top)
        left += tile.width + _MARGIN
    bottom = top + _height(row) - _LINE
    longest = max(0.4 * max(tile.pixels.shape[1] for tile in row), 1.0)
    _draw_bar(paper, _MARGIN + row[0].side, bottom, edge, bar_of(longest * edge))


def _draw_tile(paper: Image.Image, tile: Tile, left: int, top: int) -> None:
    draw = ImageDraw.Draw(paper)
    rows, columns = tile.pixels.shape[:2]
    x, y = left + tile.side, top + 2 * _LINE
    paper.paste(Image.fromarray(tile.pixels), (x, y))
    draw.text((x, top), tile.caption, _INK, _FONT)
    middle, centre = x + columns / 2, y + rows / 2
    draw.text((x - 5, centre), tile.letters.left, _SIDE, _FONT, anchor="rm")
    draw.text((x + columns + 5, centre), tile.letters.right, _SIDE, _FONT, anchor="lm")
    draw.text((middle, y - _LINE / 2), tile.letters.top, _SIDE, _FONT, anchor="mm")
    draw.text((middle, y + rows + _LINE / 2), tile.letters.bottom, _SIDE, _FONT, anchor="mm")


def _draw_bar(paper: Image.Image, left: int, middle: int, edge: float, length: float) -> None:
    draw = ImageDraw.Draw(paper)
    pixels = max(round(length / edge), 1)
    draw.rectangle((left, middle - _BAR, left + pixels - 1, middle - 1), _INK)
    draw.text((left + pixels + 8, middle - _BAR / 2), f"{length:g} mm", _INK, _FONT, anchor="lm")
