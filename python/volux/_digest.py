"""A fingerprint of an image."""

from __future__ import annotations

from hashlib import sha256
from typing import Any

import numpy as np

from volux._grid import Grid
from volux._image import Image
from volux._subject import Subject
from volux._types import Array, DLPackProducer


def digest(image: Image | Array | DLPackProducer) -> str:
    """Return a fingerprint of the voxels of an image and of its place in the world.

    Parameters
    ----------
    image : Image, ndarray or DLPack producer
        Three axes, and a last one for channels.

    Returns
    -------
    str
        64 hexadecimal digits, the SHA-256 of the type, the extents, the affine and the voxels.
        Neither the order of the voxels in memory nor that of the axes counts, and every NaN is
        the same. An affine of other bits gives another digest.

    Raises
    ------
    TypeError, ValueError
        As of `Image`.

    Notes
    -----
    The text ``dtype x y z channels`` comes first, then the twelve numbers of the affine in the
    form of `float.hex`, row by row with the columns x, y, z and origin, all separated by single
    spaces and ended by a line feed. Then come the voxels, little-endian, x fastest, then y, then
    the channel, then z.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> voxels = np.zeros((2, 3, 4), np.int16)
    >>> volux.digest(voxels) == volux.digest(np.asfortranarray(voxels))
    True
    """
    given = Subject(image)
    made = Fingerprint(given.array.dtype, given.voxels.shape, given.grid)
    made.add(given.voxels)
    return made.hexdigest()


class Fingerprint:
    """The digest of an image whose planes come one after another.

    Parameters
    ----------
    dtype : dtype
        The type of the voxels.
    extents : four ints
        Along x, y, z and the channels.
    grid : Grid
        Where the voxels lie.
    """

    def __init__(self, dtype: np.dtype[Any], extents: tuple[int, ...], grid: Grid) -> None:
        numbers = [(float(number) + 0.0).hex() for number in grid._rows.flat]  # -0.0 is 0.0
        said = " ".join([dtype.name, *map(str, extents), *numbers]) + "\n"
        self._hashed = sha256(said.encode("ascii"))

    def add(self, voxels: Array) -> None:
        """Take the next planes: x, y, z, channel."""
        for z in range(voxels.shape[2]):
            self._hashed.update(_plain(voxels[:, :, z, :]).data)

    def hexdigest(self) -> str:
        """Return the digest, after all planes."""
        return self._hashed.hexdigest()


def _plain(slab: Array) -> Array:
    # A slab of one z: x, y, channel.
    numbers = np.ascontiguousarray(slab.T, dtype=slab.dtype.newbyteorder("<"))
    if slab.dtype.kind == "f" and np.isnan(numbers).any():
        numbers = np.where(np.isnan(numbers), numbers.dtype.type(np.nan), numbers)
    return numbers
