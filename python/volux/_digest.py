"""A fingerprint of an image."""

from __future__ import annotations

from hashlib import sha256

import numpy as np

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
    hashed = sha256(_said(given).encode("ascii"))
    for z in range(given.voxels.shape[2]):
        hashed.update(_plain(given.voxels[:, :, z, :]).data)
    return hashed.hexdigest()


def _said(given: Subject) -> str:
    numbers = [(float(number) + 0.0).hex() for number in given.grid._rows.flat]  # -0.0 is 0.0
    return " ".join([given.array.dtype.name, *map(str, given.voxels.shape), *numbers]) + "\n"


def _plain(slab: Array) -> Array:
    # A slab of one z: x, y, channel.
    numbers = np.ascontiguousarray(slab.T, dtype=slab.dtype.newbyteorder("<"))
    if slab.dtype.kind == "f" and np.isnan(numbers).any():
        numbers = np.where(np.isnan(numbers), numbers.dtype.type(np.nan), numbers)
    return numbers
