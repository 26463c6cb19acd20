"""Fingerprints of images."""

import hashlib

import numpy as np
import pytest
import volux

from .volumes import placed, volume

PLACE = placed([[0.5, 0, 0, 1], [0, 0.25, 0, 2], [0, 0, 3, 4]])


def test_a_digest_is_that_of_the_documented_bytes():
    array = np.arange(2 * 3 * 4 * 2, dtype=np.int16).reshape(2, 3, 4, 2)
    affine = "0x0.0p+0 0x0.0p+0 0x1.0000000000000p-1 0x1.0000000000000p+0"
    affine += " 0x0.0p+0 0x1.0000000000000p-2 0x0.0p+0 0x1.0000000000000p+1"
    affine += " 0x1.8000000000000p+1 0x0.0p+0 0x0.0p+0 0x1.0000000000000p+2"
    said = f"int16 4 3 2 2 {affine}\n".encode()
    voxels = b"".join(
        int(array[z, y, x, c]).to_bytes(2, "little")
        for z in range(2)
        for c in range(2)
        for y in range(3)
        for x in range(4)
    )
    wanted = hashlib.sha256(said + voxels).hexdigest()
    assert volux.digest(volux.Image(array, PLACE)) == wanted


@pytest.mark.parametrize("axes", ["xyz", "xzy", "yxz", "yzx", "zxy", "zyx"])
def test_neither_memory_nor_declared_order_counts(axes):
    image = volux.Image(volume("float32"), PLACE)
    order = ["zyx".index(axis) for axis in axes]
    turned = np.ascontiguousarray(image.array.transpose(order))
    again = volux.Image(turned, PLACE[:, [*order, 3]], axes=axes)
    assert volux.digest(again) == volux.digest(image)


def test_a_plain_array_is_an_image_of_its_index_space():
    assert volux.digest(volume()) == volux.digest(volux.Image(volume()))


def test_every_nan_is_the_same():
    array = volume("float64")
    other = array.copy()
    array.ravel()[7] = np.nan
    other.view(np.uint64).ravel()[7] = 0xFFF8000000000123
    assert volux.digest(other) == volux.digest(array)


def test_the_sign_of_zero_counts_in_voxels_and_not_in_the_affine():
    zero, minus = np.zeros((1, 1, 1)), -np.zeros((1, 1, 1))
    assert volux.digest(zero) != volux.digest(minus)
    negated = placed(-np.zeros((3, 4)) + np.where(PLACE[:3] == 0, -0.0, PLACE[:3]))
    assert volux.digest(volux.Image(zero, negated)) == volux.digest(volux.Image(zero, PLACE))


@pytest.mark.parametrize(
    "other",
    [
        volume("uint16"),
        volume(seed=2),
        volume(shape=(6, 5, 4)),
        volux.Image(volume(), PLACE),
        volux.Image(volume(), axes="xyz"),
    ],
    ids=["type", "voxels", "shape", "place", "axes"],
)
def test_another_image_has_another_digest(other):
    assert volux.digest(other) != volux.digest(volume())
