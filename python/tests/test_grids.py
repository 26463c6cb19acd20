"""Grids, and volumes brought onto them."""

import pickle

import numpy as np
import pytest
import volux

from .volumes import placed, same_bits, volume

OBLIQUE = placed([[0.5, 0.25, 0.0, 10.0], [-0.25, 0.5, 0.0, -20.0], [0.0, 0.0, 2.0, 5.0]])
SHEARED = placed([[1.5, 0.25, 0.5, 1.0], [0.0, 0.75, 0.5, 2.0], [0.5, 0.0, 2.5, 3.0]])


def test_a_grid_of_a_spacing_fits_the_field_of_view():
    image = volux.Image(volume(shape=(60, 4, 4)), np.diag([3.0, 0.5, 0.5, 1.0]))
    grid = volux.Grid.of_spacing(image, (1.0, 0.25, 1.0))
    assert grid.shape == (180, 8, 2)
    assert grid.spacing == (1.0, 0.25, 1.0)
    assert grid.affine[:3, 3].tolist() == [-1.0, -0.125, 0.25]


def test_a_grid_of_a_size_keeps_the_edges():
    image = volux.Image(volume(shape=(4, 4, 4)), np.diag([3.0, 1.0, 1.0, 1.0]))
    grid = volux.Grid.of_size(image, (2, 8, 4))
    assert grid.spacing == (6.0, 0.5, 1.0)
    assert grid.affine[:3, 3].tolist() == [1.5, -0.25, 0.0]


def test_a_grid_of_a_size_may_keep_the_outer_centres():
    image = volux.Image(volume(shape=(4, 4, 4)), np.diag([3.0, 1.0, 1.0, 1.0]))
    grid = volux.Grid.of_size(image, (2, 7, 4), align="centres")
    assert grid.spacing == (9.0, 0.5, 1.0)
    assert grid.affine[:3, 3].tolist() == [0.0, 0.0, 0.0]


def test_a_grid_is_made_of_a_grid_as_of_its_image():
    image = volux.Image(volume(), OBLIQUE, axes="xyz")
    assert volux.Grid.of_spacing(image.grid, 0.3) == volux.Grid.of_spacing(image, 0.3)


def test_a_grid_of_a_plain_array_is_that_of_any_axes():
    assert volux.Grid.of_size(volume(), (2, 2, 2)).axes is None


@pytest.mark.parametrize("axes", ["xyz", "zyx", "yxz"])
def test_resizing_lands_where_the_grid_of_that_size_lies(axes):
    image = volux.Image(volume(), OBLIQUE, axes=axes)
    made = volux.resize(image, shape=(3, 9, 2))
    assert made.grid == volux.Grid.of_size(image, (3, 9, 2))


def test_a_result_has_the_shape_and_affine_of_its_grid_exactly():
    image = volux.Image(volume(), OBLIQUE)
    other = volux.Image(volume(shape=(3, 3, 3)), SHEARED)
    there = volux.resample(image, like=other, antialias=None)
    back = volux.resample(there, like=image, antialias=None)
    assert there.affine.tobytes() == other.affine.tobytes()
    assert back.affine.tobytes() == image.affine.tobytes()
    assert (there.shape, back.shape) == (other.shape, image.shape)


def test_a_result_has_the_axes_that_its_grid_names():
    image = volux.Image(volume(), axes="zyx")
    grid = volux.Grid((6, 5, 4), placed([[0, 0, 1, 0], [0, 1, 0, 0], [1, 0, 0, 0]]), axes="xyz")
    made = volux.resample(image, grid)
    assert made.axes == "xyz"
    assert np.array_equal(made.array, image.array.T)


def test_a_grid_without_names_has_the_axes_of_the_image():
    image = volux.Image(volume(), axes="yxz")
    assert volux.resample(image, volux.Grid((4, 5, 6), np.eye(4))).axes == "yxz"


@pytest.mark.parametrize("axes", ["xyz", "xzy", "yxz", "yzx", "zxy", "zyx"])
def test_the_declared_order_of_axes_changes_no_bit(axes):
    image = volux.Image(volume(), OBLIQUE, axes="zyx")
    order = ["zyx".index(axis) for axis in axes]
    turned = volux.Image(image.array.transpose(order), image.affine[:, [*order, 3]], axes=axes)
    grid = volux.Grid((5, 5, 5), SHEARED, axes="zyx")
    made, again = (volux.resample(i, grid, antialias="mean") for i in (image, turned))
    assert same_bits(made.array, again.array)


def test_a_flipped_array_with_a_flipped_affine_gives_the_same_volume():
    image = volux.Image(volume(), np.diag([2.0, 1.0, 0.5, 1.0]))
    flip = placed([[-1, 0, 0, 3], [0, 1, 0, 0], [0, 0, 1, 0]])
    flipped = volux.Image(image.array[::-1], image.affine @ flip)
    grid = volux.Grid((9, 9, 9), np.diag([0.75, 0.5, 0.25, 1.0]))
    made, again = (volux.resample(i, grid, dtype="float64") for i in (image, flipped))
    assert np.array_equal(made.array, again.array)


@pytest.mark.parametrize("axes", [None, "yzx"])
def test_a_box_of_a_grid_has_the_voxels_of_the_whole(axes):
    image = volux.Image(volume("float64", (9, 8, 7)), OBLIQUE, axes="xyz")
    grid = volux.Grid((10, 11, 12), SHEARED, axes=axes)
    whole = volux.resample(image, grid, interpolation="cubic", antialias="mean")
    box = np.s_[3:7, 2:11, 5:6]
    part = volux.resample(image, grid[box], interpolation="cubic", antialias="mean")
    assert same_bits(part.array, np.ascontiguousarray(whole.array[box]).reshape(4, 9, 1))


def test_a_box_of_a_box_is_that_of_the_whole():
    grid = volux.Grid((10, 11, 12), SHEARED, axes="zyx")
    assert grid[2:9, 3:][1:4, :, 5:7] == grid[3:6, 3:, 5:7]


def test_a_box_lies_where_its_voxels_do():
    grid = volux.Grid((10, 11, 12), np.diag([2.0, 0.5, 1.0, 1.0]))
    assert grid[3:, 4:].affine[:3, 3].tolist() == [6.0, 2.0, 0.0]


def test_the_image_of_a_box_is_an_image_by_itself():
    image = volux.Image(volume())
    part = volux.resample(image, image.grid[1:3])
    assert not part.grid.is_box


@pytest.mark.parametrize(
    "grid",
    [
        volux.Grid((2, 3, 4), OBLIQUE),
        volux.Grid((2, 3, 4), OBLIQUE, axes="xyz"),
        volux.Grid((8, 9, 10), SHEARED, axes="zyx")[2:4, 3:8],
    ],
    ids=["plain", "named", "box"],
)
def test_a_grid_pickles(grid):
    again = pickle.loads(pickle.dumps(grid))
    assert again == grid
    assert hash(again) == hash(grid)
    assert again.whole == grid.whole
    assert not again.affine.flags.writeable


def test_the_affine_of_a_grid_can_not_be_changed():
    mine = np.eye(4)
    grid = volux.Grid((2, 2, 2), mine)
    mine[0, 3] = 7.0
    assert grid.affine[0, 3] == 0.0
    with pytest.raises(ValueError, match="read-only"):
        grid.affine[0, 3] = 7.0


@pytest.mark.parametrize("name", ["shape", "affine", "axes", "spacing"])
def test_a_grid_can_not_be_changed(name):
    with pytest.raises(AttributeError, match=f"{name} of a Grid cannot be changed"):
        setattr(volux.Grid((2, 2, 2), np.eye(4)), name, None)


def test_a_grid_is_printed_as_it_is_made():
    grid = volux.Grid((2, 3, 4), OBLIQUE, axes="xyz")
    assert eval(repr(grid), {"Grid": volux.Grid}) == grid


def test_no_warning_of_aliasing_comes_below_factor_2():
    volux.resample(volume(), volux.Grid((2, 2, 2), np.diag([1.99, 1, 1, 1])))


@pytest.mark.parametrize("factor", [2.0, 2.0 * (1.0 - 2.0**-20)], ids=["2", "2 but for rounding"])
def test_a_warning_of_aliasing_comes_from_factor_2_on(factor):
    with pytest.warns(volux.AliasingWarning, match="as long as 2 of the image") as caught:
        volux.resample(volume(), volux.Grid((2, 2, 2), np.diag([factor, 1, 1, 1])))
    assert caught[0].filename == __file__


@pytest.mark.parametrize("antialias", [None, "mean", "auto"])
def test_no_warning_of_aliasing_comes_after_a_decision(antialias):
    volux.resample(volume(), volux.Grid((2, 2, 2), np.diag([2.0, 1, 1, 1])), antialias=antialias)


def test_auto_takes_means_of_amounts_and_none_of_nearest_voxels():
    array = volume("float64", (4, 4, 4))
    grid = volux.Grid((2, 4, 4), placed([[2, 0, 0, 0.5], [0, 1, 0, 0], [0, 0, 1, 0]]))
    means = volux.resample(array, grid, antialias="auto")
    assert np.array_equal(means, (array[::2] + array[1::2]) / 2)
    skipped = volux.resample(array, grid, antialias="auto", interpolation="nearest")
    assert np.array_equal(skipped, array[1::2])


def test_labels_vote_where_a_volume_becomes_smaller():
    row = np.array([2, 8, 2, 2, 8, 8, 5, 8], np.uint8).reshape(1, 1, 8)
    made = volux.resize(row, shape=(1, 1, 2), interpolation="label")
    assert made.tolist() == [[[2, 8]]]
