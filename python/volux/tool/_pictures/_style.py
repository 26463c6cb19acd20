"""What all parts of a sheet look like."""

from __future__ import annotations

from PIL import ImageFont

PAPER, INK, SIDE = (26, 27, 30), (235, 235, 235), (255, 184, 77)
LINE = 22  # pixels: the height of a line of text
MARGIN = 16
FONT = ImageFont.load_default(14)


def width_of(text: str) -> int:
    """Return how many pixels a text needs."""
    return round(FONT.getlength(text) + 0.5)
