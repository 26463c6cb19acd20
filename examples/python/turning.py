"""A skull that turns once about itself, as an animated GIF.

Usage: python turning.py CT PICTURE.gif
"""

from __future__ import annotations

from math import hypot

import volux
from paper import Tile, arguments, drawn, sheet, size_of
from PIL import Image
from surface import BONE, bones_of, shaded, view

PIXELS, FRAMES, MILLISECONDS = 300, 36, 100


def frames(image: volux.Image, count: int = FRAMES, pixels: int = PIXELS) -> list[Image.Image]:
    """Return the skull from so many sides; every frame is as wide as the widest needs."""
    skull = bones_of(image)
    x, y, z = size_of(skull).tolist()
    made = []
    for frame in range(count):
        degrees = 360 * frame / count
        seen = view(skull, degrees, z / pixels, hypot(x, y))
        caption = f"from {degrees:g}°, where 0° is the front and 90° the left"
        made.append(sheet(f"Bone at {BONE:g} HU", [Tile(shaded(skull, seen), caption, seen.plane)]))
    return made


def save(made: list[Image.Image], path: str) -> None:
    """Write frames as a GIF that never stops, in the colours of the first one."""
    first = made[0].quantize(128, Image.Quantize.MAXCOVERAGE)
    others = [frame.quantize(palette=first, dither=Image.Dither.NONE) for frame in made[1:]]
    first.save(path, save_all=True, append_images=others, duration=MILLISECONDS, loop=0)


if __name__ == "__main__":
    source, output = arguments(__doc__, 2)
    save(drawn(source, frames), output)
