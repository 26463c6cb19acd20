"""Sheets of pictures: what is where."""

import numpy as np
import pytest
import volux
from volux.tool._pictures._grey import Window
from volux.tool._pictures._labels import colour_of
from volux.tool._pictures._marks import Letters

pytest.importorskip("PIL")

from volux.tool._pictures._planes import Look, montage, oblique, three
from volux.tool._pictures._sheet import _BAR, Tile, sheet
from volux.tool._pictures._style import INK, LINE, MARGIN, PAPER, SIDE

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
    assert runs(made, INK).count(40) == _BAR


def test_each_row_has_one_bar():
    tile = Tile(BRIGHT, "", Letters("R", "L", "A", "P"))
    made = sheet([[tile, tile], [tile]], edge=1.0)
    assert runs(made, INK).count(20) == 2 * _BAR


def test_letters_leave_every_pixel_of_a_picture_alone():
    made = sheet([[Tile(BRIGHT, "a caption", Letters("RA", "LP", "S", "I"))]], edge=1.0)
    assert runs(made, (200, 200, 200)).count(100) == 60


def test_paper_is_between_two_pictures():
    tile = Tile(BRIGHT, "", Letters("", "", "", ""))
    line = np.asarray(sheet([[tile, tile]], edge=1.0))[70]
    bright = np.flatnonzero((line == 200).all(axis=1))
    gap = line[bright[99] + 1 : bright[100]]
    assert len(gap) >= MARGIN
    assert (gap == PAPER).all()


def places_of(made, grey, least):
    """The rows and the columns in which at least so many pixels have a grey."""
    same = (np.asarray(made) == grey).all(axis=2)
    return [np.flatnonzero(same.sum(axis=axis) >= least) for axis in (1, 0)]


def test_shorter_pictures_are_in_the_middle_of_their_row():
    low = np.full((20, 40, 3), 99, np.uint8)
    letters = Letters("R", "L", "A", "P")
    made = np.asarray(sheet([[Tile(BRIGHT, "", letters), Tile(low, "", letters)]], edge=1.0))
    high, short = (
        np.flatnonzero((made == grey).all(axis=2).sum(axis=1) >= 40) for grey in (200, 99)
    )
    assert (len(high), len(short)) == (60, 20)
    assert short[0] - high[0] == high[-1] - short[-1] == 20


def test_letters_that_no_picture_of_a_row_has_take_no_room():
    lettered, plain = (
        sheet([[Tile(BRIGHT, "", Letters("", "", side, side))]], edge=1.0) for side in ("A", "")
    )
    assert lettered.height - plain.height == 2 * LINE
    assert plain.width == 100 + 2 * MARGIN


def test_labels_are_at_their_voxels_and_the_picture_is_the_same_twice():
    image = volux.Image(np.full((8, 8, 8), 50, np.int16))
    labels = volux.Image((np.indices((8, 8, 8))[0] >= 4) * np.uint8(5))  # the upper half
    made = [three(image, Look(Window(50, 2), labels), (3.5, 3.5, 3.5), 80) for _ in range(2)]
    assert made[0].tobytes() == made[1].tobytes()
    mixed = np.floor(0.55 * 128 + 0.45 * np.array(colour_of(5)) + 0.5)
    coronal, sagittal = 80, 80
    assert (np.asarray(made[0]) == mixed).all(axis=2).sum() >= (coronal + sagittal) * 40


def greys_of(made, least=60):
    """Which greys fill at least so many pixels; what the margins have is not among them."""
    pixels = np.asarray(made).astype(int)
    greys, counts = np.unique(pixels[np.ptp(pixels, axis=2) == 0][:, 0], return_counts=True)
    return set(greys[counts >= least].tolist()) - {INK[0]}


def corner_of(made, grey):
    """The row and the column of the first of 20 pixels of a grey side by side."""
    same = (np.asarray(made) == grey).all(axis=2)
    beside = np.lib.stride_tricks.sliding_window_view(same, 20, axis=1).all(axis=2)
    return tuple(np.argwhere(beside)[0].tolist())


@pytest.mark.parametrize("count", [1, 5, 6, 12])
def test_a_montage_shows_each_plane_once_from_the_feet_up(count):
    steps = np.arange(61, 121, dtype=np.uint8)
    image = volux.Image(np.broadcast_to(steps, (20, 20, 60)))
    made = montage(image, Look(Window(127.5, 255)), count, size=60)
    shown = [int((k + 0.5) / count * 60) + 61 for k in range(count)]
    assert [runs(made, grey).count(20) for grey in shown] == [20] * count
    corners = [corner_of(made, grey) for grey in shown]
    assert corners == sorted(corners)


@pytest.mark.parametrize("direction", [1.0, -1.0])
def test_a_montage_leaves_out_the_empty_slices_at_both_ends(direction):
    steps = np.zeros(60, np.uint8)
    steps[20:24] = 101, 102, 103, 104
    steps[40] = 5  # noise
    affine = np.diag([1.0, 1.0, direction, 1.0])
    image = volux.Image(np.broadcast_to(steps, (20, 20, 60)), affine, axes="xyz")
    made = montage(image, Look(Window(127.5, 255)), 4, size=60)
    assert greys_of(made) == {101, 102, 103, 104}


def test_a_montage_has_its_letters_at_the_rim():
    image = volux.Image(np.full((20, 20, 60), 100, np.uint8))
    made = np.asarray(montage(image, Look(Window(127.5, 255)), 6, size=60))
    rows, columns = np.nonzero((made == SIDE).all(axis=2))
    down, across = places_of(made, 100, least=20)
    beside = (columns < across[0]) | (columns > across[-1])
    above = (rows < down[0]) | (rows > down[-1])
    assert (beside | above).all()
    assert beside.any()
    assert above.any()


def test_a_label_map_is_drawn_in_colour_on_black():
    labels = np.zeros((8, 8, 8), np.uint8)
    labels[2:6, 2:6, 2:6] = 7
    made = np.asarray(three(volux.Image(labels), Look(None, None, "label"), (3.5,) * 3, 80))
    inside = (made == colour_of(7)).all(axis=2).sum() - 14 * 14  # of the legend
    assert 3 * 38 * 40 < inside <= 3 * 40 * 40
    assert (made == 0).all(axis=2).sum() == 3 * 80 * 80 - inside


def test_what_is_outside_an_oblique_plane_is_black():
    image = volux.Image(np.full((9, 9, 9), 100, np.int16))
    place = (4.0, 4.0, 4.0), (1.0, 1.0, 1.0), (0.0, 0.0, 1.0)
    assert greys_of(oblique(image, Look(Window(101, 20)), place, size=60)) == {0, 115}


@pytest.mark.parametrize("projection", ["mean", "maximum"])
def test_what_is_outside_a_slab_does_not_count(projection):
    image = volux.Image(np.full((9, 9, 9), 100, np.int16))
    place = (4.0, 4.0, 4.0), (1.0, 1.0, 1.0), (0.0, 0.0, 1.0)
    made = oblique(image, Look(Window(101, 20)), place, thickness=6.0, projection=projection)
    assert greys_of(made) == {0, 115}


@pytest.mark.parametrize(
    ("projection", "odd", "level"),
    [("maximum", -np.inf, -99), ("minimum", np.inf, 101), ("maximum", np.nan, -99)],
)
def test_one_voxel_that_is_not_finite_spoils_no_slab(projection, odd, level):
    voxels = np.full((9, 9, 9), level - 1, np.float32)
    place = (4.0, 4.0, 4.0), (1.0, 1.0, 1.0), (0.0, 0.0, 1.0)
    look = Look(Window(level, 20), interpolation="nearest")
    how = {"thickness": 6.0, "projection": projection}
    even = oblique(volux.Image(voxels), look, place, **how)
    voxels[4, 4, 4] = odd
    assert oblique(volux.Image(voxels), look, place, **how).tobytes() == even.tobytes()


@pytest.mark.parametrize(
    ("projection", "greys"),
    [("maximum", {100, 200}), ("minimum", {50, 100}), ("mean", {94, 100, 113})],
)
def test_a_slab_becomes_one_picture(projection, greys):
    voxels = np.full((8, 8, 8), 100, np.uint8)
    voxels[2, 2, 2], voxels[5, 5, 5] = 200, 50  # 100 pixels each
    place = (3.5, 3.5, 3.5), (0.0, 0.0, 1.0), (0.0, 1.0, 0.0)
    look = Look(Window(127.5, 255), interpolation="nearest")
    how = {"thickness": 8.0, "projection": projection, "size": 80}
    assert greys_of(oblique(volux.Image(voxels), look, place, **how)) == greys


def test_no_maximum_is_missed_by_more_than_a_quarter_of_a_voxel():
    voxels = np.zeros((9, 9, 9), np.uint8)
    voxels[:, :, 4] = 200
    place = (4.0, 4.0, 4.0), (0.0, 0.0, 1.0), (0.0, 1.0, 0.0)
    how = {"thickness": 8.0, "projection": "maximum", "size": 90}
    assert greys_of(oblique(volux.Image(voxels), Look(Window(127.5, 255)), place, **how)) == {150}


def test_a_slab_of_ct_has_greys_for_its_bones():
    voxels = np.full((8, 8, 8), -1000, np.int16)
    voxels[:4], voxels[6:] = 700, 1400
    place = (3.5, 3.5, 3.5), (0.0, 0.0, 1.0), (0.0, 1.0, 0.0)
    look = Look(None, interpolation="nearest")
    made = oblique(volux.Image(voxels), look, place, thickness=8.0, projection="maximum", size=80)
    assert len(greys_of(made) & set(range(100, 256))) == 2
