"""Windows, colours, letters, bars and planes of pictures."""

import numpy as np
import pytest
import volux
from volux.tool._pictures._cuts import fitted, view_plane
from volux.tool._pictures._grey import Window, window_of
from volux.tool._pictures._labels import colour_of, coloured
from volux.tool._pictures._marks import bar_of, letters_of, towards


def image(steps, shape=(8, 10, 12)):
    """A volume with these steps in its columns, its middle near the origin of the world."""
    affine = np.eye(4)
    affine[:3, :3] = np.array(steps, float).T
    affine[:3, 3] = -affine[:3, :3] @ ((np.array(shape) - 1) / 2)
    return volux.Image(np.zeros(shape, np.int16), affine, axes="xyz")


RAS = [(1, 0, 0), (0, 1, 0), (0, 0, 2)]
LPS = [(-1, 0, 0), (0, -1, 0), (0, 0, 2)]
LEFT_HANDED = [(-1, 0, 0), (0, 1, 0), (0, 0, 2)]
PERMUTED = [(0, 0, -2), (1, 0, 0), (0, 1, 0)]
LEANING = [(0.96, 0, 0.28), (0, 1, 0), (-0.56, 0, 1.92)]


def test_the_ends_of_a_window_are_black_and_white():
    greys = Window(40, 400).greys(np.array([-1e9, -160, 40, 240, 1e9, np.nan]))
    assert greys.tolist() == [0, 0, 128, 255, 255, 0]


def test_ct_is_shown_by_the_window_of_soft_tissue():
    assert window_of(np.array([[[-1000, 0, 40, 1200]]], np.int16)) == Window(40, 400)


def test_other_volumes_are_shown_from_the_background_to_nearly_the_brightest():
    voxels = np.concatenate([np.zeros(1000), np.arange(1000)]).reshape(20, 10, 10)
    level, width = window_of(voxels)
    assert level - width / 2 == 0
    assert level + width / 2 == pytest.approx(994, abs=1)


@pytest.mark.parametrize("voxels", [np.full((2, 2, 2), 7.0), np.full((2, 2, 2), np.nan)])
def test_a_volume_of_one_value_has_a_window(voxels):
    assert window_of(voxels).width == 1


def test_colours_of_labels_differ_and_need_no_list():
    labels = [*range(1, 151), -1, -2, 10**6, 2**40]
    assert len({colour_of(label) for label in labels}) == len(labels)


def test_labels_lie_over_greys_and_zero_shows_them():
    made = coloured(np.full((1, 2), 100, np.uint8), np.array([[0, 3]]), opacity=1.0)
    assert made[0].tolist() == [[100, 100, 100], [*colour_of(3)]]


def test_labels_that_are_no_whole_numbers_are_refused():
    with pytest.raises(ValueError, match=r"a label is 1\.5"):
        coloured(np.zeros((1, 1), np.uint8), np.array([[1.5]]))


@pytest.mark.parametrize("steps", [RAS, LPS, LEFT_HANDED, PERMUTED])
@pytest.mark.parametrize(
    ("view", "letters"), [("axial", "RLAP"), ("coronal", "RLSI"), ("sagittal", "APSI")]
)
def test_views_show_the_patient_alike_however_the_file_stores_it(steps, view, letters):
    assert "".join(letters_of(view_plane(image(steps), view, (0, 0, 0), 1.0))) == letters


def test_sides_of_an_oblique_volume_have_two_letters():
    letters = letters_of(view_plane(image(LEANING), "coronal", (0, 0, 0), 1.0))
    assert letters == ("RS", "LI", "SL", "IR")


@pytest.mark.parametrize(
    ("direction", "letters"),
    [((1, 0, 0), "R"), ((0, -3, 0.1), "P"), ((0.5, 0, -1), "IR"), ((-3, 2, 1), "LAS")],
)
def test_letters_begin_with_the_side_that_counts_most(direction, letters):
    assert towards(np.array(direction, float)) == letters


@pytest.mark.parametrize(("longest", "bar"), [(73, 50), (49, 20), (10, 10), (0.37, 0.2)])
def test_a_bar_has_a_round_length(longest, bar):
    assert bar_of(longest) == pytest.approx(bar)


def test_a_plane_of_a_view_is_the_field_of_view_and_goes_through_voxels():
    plane = view_plane(image(LPS), "axial", (0, 0, 0.4), 0.5)
    assert plane.shape == (20, 16)
    assert plane.grid.affine[2, 3] == pytest.approx(1.0)


def test_an_oblique_plane_is_as_large_as_what_it_meets():
    grid = volux.Grid((10, 10, 10), np.eye(4), axes="xyz")
    up = np.array([0.0, 0.0, 1.0])
    plane = fitted(grid, (4.5, 4.5, 4.5), np.array([1.0, 1.0, 0.0]), up, 0.1)
    assert plane.shape == (100, 141)


def test_a_slab_is_as_large_as_all_its_planes():
    grid = volux.Grid((10, 10, 10), np.eye(4), axes="xyz")
    up, normal = np.array([0.0, 0.0, 1.0]), np.array([1.0, 1.0, 0.0])
    corner = (9.0, 9.0, 4.5)
    assert fitted(grid, corner, normal, up, 0.1, 20.0).shape == (100, 141)


def test_a_plane_that_misses_the_volume_is_refused():
    grid = volux.Grid((4, 4, 4), np.eye(4), axes="xyz")
    up = np.array([0.0, 1.0, 0.0])
    with pytest.raises(ValueError, match="misses the volume"):
        fitted(grid, (0.0, 0.0, 90.0), np.array([0.0, 0.0, 1.0]), up, 1.0)
