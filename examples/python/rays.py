"""The surface of a skull, seen along parallel rays from three sides.

Usage: python rays.py CT PICTURE.png
"""

from __future__ import annotations

import volux
from paper import Tile, run, sheet, size_of
from PIL import Image
from surface import BONE, bones_of, shaded, view

PIXELS = 440  # along the height of the skull
SIDES = {0: "from the front", 40: "from the front and left", 90: "from the left"}


def rays(image: volux.Image) -> Image.Image:
    """Return where rays first meet bone, lit by a lamp."""
    skull = bones_of(image)
    edge = float(size_of(skull)[2]) / PIXELS
    views = {words: view(skull, degrees, edge) for degrees, words in SIDES.items()}
    tiles = [Tile(shaded(skull, seen), words, seen.plane) for words, seen in views.items()]
    return sheet(f"Where parallel rays first meet {BONE:g} HU", tiles)


if __name__ == "__main__":
    run(__doc__, rays)
