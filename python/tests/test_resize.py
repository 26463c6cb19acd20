"""Other numbers of voxels in the same place."""

import numpy as np
import pytest
import volux

from . import oracle
from .volumes import placed, same_bits, volume


@pytest.mark.parametrize("kernel", oracle.KERNELS)
@pytest.mark.parametrize("align", ["edges", "centres"])
def test_an_enlarged_volume_reads_where_its_convention_says(align, kernel):
    array = volume("float64", (1, 1, 5))
    made = volux.resize(array, shape=(1, 1, 9), align=align, interpolation=kernel)
    edges = [(i + 0.5) * (5 / 9) - 0.5 for i in range(9)]
    positions = edges if align == "edges" else [i * 0.5 for i in range(9)]
    wanted = [oracle.reading(array.T, (x, 0.0, 0.0), kernel) for x in positions]
    assert made.ravel().tolist() == pytest.approx(wanted, abs=1e-11)


@pytest.mark.parametrize("kernel", oracle.KERNELS)
def test_a_volume_of_twice_the_voxels_has_the_bits_of_the_definition(kernel):
    array = volume("int16", (3, 2, 4))
    made = volux.resize(array, shape=(6, 4, 8), interpolation=kernel)
    rows = [[0.5, 0, 0, -0.25], [0, 0.5, 0, -0.25], [0, 0, 0.5, -0.25]]
    assert same_bits(made, oracle.resampled(array.T, rows, (8, 4, 6), kernel=kernel).T)


def test_a_volume_of_half_the_voxels_has_the_means_of_blocks():
    array = volume("float64", (4, 6, 2))
    made = volux.resize(array, scale=0.5)
    wanted = np.zeros((2, 3, 1))
    for z, y, x in np.ndindex(2, 2, 2):
        wanted += array[z::2, y::2, x::2]
    assert np.array_equal(made, wanted / 8)


def test_shape_spacing_and_scale_are_along_the_axes_of_the_array():
    image = volux.Image(volume(shape=(4, 6, 8)), np.diag([3.0, 2.0, 1.0, 1.0]), axes="yxz")
    by_shape = volux.resize(image, shape=(8, 3, 8))
    by_spacing = volux.resize(image, spacing=(1.5, 4.0, 1.0))
    by_scale = volux.resize(image, scale=(2, 0.5, 1))
    assert by_shape.spacing == (1.5, 4.0, 1.0)
    assert by_shape.grid == by_spacing.grid == by_scale.grid
    assert same_bits(by_shape.array, by_spacing.array)
    assert same_bits(by_shape.array, by_scale.array)


def test_one_spacing_counts_along_every_axis():
    image = volux.Image(volume(shape=(4, 6, 8)), np.diag([3.0, 0.5, 0.5, 1.0]))
    assert volux.resize(image, spacing=1.0).shape == (12, 3, 4)


def test_a_scale_that_fits_no_whole_number_keeps_the_factor():
    assert volux.resize(volume(shape=(5, 5, 5)), scale=(0.5, 1, 1)).shape == (3, 5, 5)


def test_channels_stay_the_last_axis():
    array = volume("uint8", (4, 4, 4, 3))
    made = volux.resize(array, shape=(2, 8, 4))
    assert made.shape == (2, 8, 4, 3)
    assert same_bits(
        np.ascontiguousarray(made[..., 1]), volux.resize(array[..., 1], shape=(2, 8, 4))
    )


def test_a_type_of_numbers_is_rounded_half_away_from_zero():
    row = np.array([-1, -2, 1, 2], np.int16).reshape(1, 1, 4)
    assert volux.resize(row, shape=(1, 1, 2), antialias="mean").ravel().tolist() == [-2, 2]


def test_constant_shows_around_voxels_that_are_made_of_one():
    one = np.full((1, 1, 1), 5.0)
    made = volux.resize(one, shape=(1, 1, 3), align="centres", border="constant", fill=-1)
    assert made.ravel().tolist() == [-1.0, 5.0, -1.0]


def test_an_edge_may_end_with_the_field_of_view():
    one = np.full((1, 1, 1), 5.0)
    made = volux.resize(one, shape=(1, 1, 3), align="centres", outside="fill", fill=-1)
    assert made.ravel().tolist() == [-1.0, 5.0, -1.0]


def test_a_volume_that_keeps_its_size_keeps_its_place_exactly():
    oblique = placed([[0.3, 0.4, -0.1, 10], [-0.5, 0.2, 0.7, 20], [0.1, 0.6, 2.1, 30]])
    image = volux.Image(volume(), oblique)
    for wanted in ({"shape": image.shape}, {"spacing": image.spacing}, {"scale": 1}):
        made = volux.resize(image, interpolation="cubic", **wanted)
        assert made.affine.tobytes() == oblique.tobytes()
        assert same_bits(made.array, image.array)


@pytest.mark.parametrize("seed", range(8))
def test_a_volume_of_the_same_voxels_stays_in_its_place_to_the_last_bit(seed):
    turned = placed(np.random.default_rng(seed).normal(0.0, 3.0, (3, 4)))
    image = volux.Image(volume(), turned)
    for same in ({"scale": 1}, {"shape": image.array.shape}, {"spacing": image.spacing}):
        assert volux.resize(image, **same).affine.tolist() == turned.tolist()
