"""Labels in colour over greys."""

from __future__ import annotations

from colorsys import hls_to_rgb

import numpy as np
import numpy.typing as npt

from volux._types import Array

_GOLDEN = 0x9E3779B97F4A7C15  # 2^64 divided by the golden ratio
_LIGHTNESS = (0.55, 0.7, 0.42)


def colour_of(label: int) -> tuple[int, int, int]:
    """Return a colour that depends on the number alone; those of successive numbers differ most."""
    hue = (label * _GOLDEN % 2**64) / 2**64
    red, green, blue = hls_to_rgb(hue, _LIGHTNESS[label % len(_LIGHTNESS)], 0.9)
    return round(255 * red), round(255 * green), round(255 * blue)


def coloured(
    greys: npt.NDArray[np.uint8], labels: Array, opacity: float = 0.45
) -> npt.NDArray[np.uint8]:
    """Return greys, (rows, columns), as red, green and blue, with labels other than 0 over them."""
    picture = np.repeat(greys[..., None], 3, axis=2)
    for label in np.unique(labels).tolist():
        if label == 0:
            continue
        if label != int(label):
            raise ValueError(f"a label is {label}; labels must be whole numbers")
        here = labels == label
        mixed = (1 - opacity) * picture[here] + opacity * np.array(colour_of(int(label)))
        picture[here] = np.floor(mixed + 0.5).astype(np.uint8)
    return picture


def counted(labels: Array) -> dict[int, int]:
    """Return how many pixels each label other than 0 has."""
    found, counts = np.unique(labels[labels != 0], return_counts=True)
    return dict(zip(map(int, found.tolist()), counts.tolist(), strict=True))
