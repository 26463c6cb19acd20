"""Which colour is which label: a strip of swatches with numbers and names."""

from __future__ import annotations

from collections.abc import Mapping

from PIL import Image, ImageDraw

from volux.tool._pictures._labels import colour_of
from volux.tool._pictures._style import FONT, INK, LINE, MARGIN, PAPER, width_of

_SWATCH = 14  # pixels: the sides of a patch of colour
_BESIDE = 8  # and what is between it and the text


def legend(
    pixels: Mapping[int, int], names: Mapping[int, str], width: int, height: int
) -> Image.Image:
    """Return a strip of labels in the order of their numbers, column after column.

    Parameters
    ----------
    pixels : mapping of int to int
        How many pixels each label has. Those of the most pixels are shown if not all fit, and the
        last entry says how many more there are.
    names : mapping of int to str
        What labels are called; one that is not here has its number alone.
    width, height : int
        How wide the strip is, and how high it may be; two lines are the least.
    """
    texts = {label: f"{label}  {names.get(label, '')}".rstrip() for label in sorted(pixels)}
    room = width - 2 * MARGIN
    columns = max(room // (max(map(width_of, texts.values())) + _SWATCH + _BESIDE + MARGIN), 1)
    across = room // columns
    most = columns * max(height // LINE, 2)
    shown = _shown(pixels, most)
    left_out = len(texts) - len(shown)
    lines = -(-(len(shown) + bool(left_out)) // columns)
    strip = Image.new("RGB", (width, lines * LINE + MARGIN), PAPER)
    for place, label in enumerate(shown):
        corner = _corner(place, lines, across)
        _draw_entry(strip, corner, colour_of(label), _cut(texts[label], across - MARGIN))
    if left_out:
        x, y = _corner(len(shown), lines, across)
        _draw_text(strip, (x, y), f"and {left_out} more")
    return strip


def _shown(pixels: Mapping[int, int], most: int) -> list[int]:
    """Return the labels that are shown, with room for how many are not."""
    if len(pixels) <= most:
        return sorted(pixels)
    by_size = sorted(pixels, key=lambda label: (-pixels[label], label))
    return sorted(by_size[: most - 1])


def _corner(place: int, lines: int, across: int) -> tuple[int, int]:
    column, line = divmod(place, lines)
    return MARGIN + column * across, line * LINE


def _cut(text: str, room: int) -> str:
    """Return a text, or as much of it as there is room for."""
    room -= _SWATCH + _BESIDE
    if width_of(text) <= room:
        return text
    ends = (text[:end] + "..." for end in range(len(text) - 1, 0, -1))
    return next((cut for cut in ends if width_of(cut) <= room), "")


def _draw_entry(
    strip: Image.Image, corner: tuple[int, int], colour: tuple[int, int, int], text: str
) -> None:
    x, y = corner
    top = y + (LINE - _SWATCH) // 2
    draw = ImageDraw.Draw(strip)
    draw.rectangle((x, top, x + _SWATCH - 1, top + _SWATCH - 1), colour)
    _draw_text(strip, (x + _SWATCH + _BESIDE, y), text)


def _draw_text(strip: Image.Image, corner: tuple[int, int], text: str) -> None:
    x, y = corner
    ImageDraw.Draw(strip).text((x, y + LINE / 2), text, INK, FONT, anchor="lm")
