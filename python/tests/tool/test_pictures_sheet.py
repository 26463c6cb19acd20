"""Sheets of pictures: what is where."""

import numpy as np
import pytest
import volux
from volux.tool._pictures._grey import Window
from volux.tool._pictures._labels import colour_of
from volux.tool._pictures._marks import Letters

pytest.importorskip("PIL")

from volux.tool._pictures._planes import planes
from volux.tool._pictures._sheet import _BAR, _INK, _MARGIN, _PAPER, Tile, sheet

BRIGHT = np.full((60, 100, 3), 200, np.uint8)


def runs(made, colour):
    """How long the longest run of a colour is in each line that has it."""
    same = (np.asarray(made) == colour).all(axis=2)
    found = []
    for line in same:
        ends = np.flatnonzero(np.diff(np.concatenate([[0], line.astype(int), [0]])))
        found.append(int((ends[1::2] - ends[::2]).max()) if ends.size else 0)
    return found


def test_a_bar_is_as_long_as_it_says():
    tile = Tile(BRIGHT, "", Letters("R", "L", "A", "P"))
    made = sheet([[tile]], edge=0.5)  # 40 % of 50 mm: 20 mm
    assert runs(made, _INK).count(40) == _BAR


def test_each_row_has_one_bar():
    tile = Tile(BRIGHT, "", Letters("R", "L", "A", "P"))
    made = sheet([[tile, tile], [tile]], edge=1.0)
    assert runs(made, _INK).count(20) == 2 * _BAR


def test_letters_leave_every_pixel_of_a_picture_alone():
    made = sheet([[Tile(BRIGHT, "a caption", Letters("RA", "LP", "S", "I"))]], edge=1.0)
    assert runs(made, (200, 200, 200)).count(100) == 60


def test_paper_is_between_two_pictures():
    tile = Tile(BRIGHT, "", Letters("", "", "", ""))
    line = np.asarray(sheet([[tile, tile]], edge=1.0))[90]
    bright = np.flatnonzero((line == 200).all(axis=1))
    gap = line[bright[99] + 1 : bright[100]]
    assert len(gap) >= _MARGIN
    assert (gap == _PAPER).all()


def test_labels_are_at_their_voxels_and_the_picture_is_the_same_twice():
    image = volux.Image(np.full((8, 8, 8), 50, np.int16))
    labels = volux.Image((np.indices((8, 8, 8))[0] >= 4) * np.uint8(5))  # the upper half
    made = [planes(image, Window(50, 2), size=80, labels=labels) for _ in range(2)]
    assert made[0].tobytes() == made[1].tobytes()
    mixed = np.floor(0.55 * 128 + 0.45 * np.array(colour_of(5)) + 0.5)
    coronal, sagittal = 80, 80
    assert (np.asarray(made[0]) == mixed).all(axis=2).sum() >= (coronal + sagittal) * 40
