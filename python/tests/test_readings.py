"""Every voxel of a result is what the definition says, bit for bit."""

import numpy as np
import pytest
import volux
from hypothesis import given, settings
from hypothesis import strategies as st

from . import oracle
from .volumes import labels, placed, same_bits, volume

# From voxels of a result, z y x, to voxels of the array, z y x: turned, sheared, partly outside.
OBLIQUE = placed([[0.7, 0.2, 0.1, -0.8], [-0.1, 0.9, 0.3, 0.6], [0.2, -0.3, 1.1, 0.9]])


def in_xyz(affine):
    """Three rows by which the oracle, (x, y, z), reads what an affine of (z, y, x) means."""
    return affine[[2, 1, 0]][:, [2, 1, 0, 3]].tolist()


def expected(array, affine, shape, **how):
    return oracle.resampled(array.T, in_xyz(affine), shape[::-1], **how).T


@pytest.mark.parametrize("border", ["edge", "constant"])
@pytest.mark.parametrize("kernel", oracle.KERNELS)
@pytest.mark.parametrize("dtype", oracle.DTYPES)
def test_a_voxel_on_any_grid_is_what_the_kernel_reads_there(dtype, kernel, border):
    array = labels(dtype) if kernel == "label" else volume(dtype)
    made = volux.resample(
        array, volux.Grid((4, 5, 6), OBLIQUE), interpolation=kernel, border=border, fill=7
    )
    how = {"kernel": kernel, "border": border, "fill": 7, "outside": "fill"}
    assert same_bits(made, expected(array, OBLIQUE, (4, 5, 6), **how))


@pytest.mark.parametrize("kernel", oracle.KERNELS)
def test_an_edge_that_extends_is_read_however_far_outside(kernel):
    array = volume("float64")
    far = placed([[2.5, 0, 0, -3.25], [0, 2.0, 0.5, -2.75], [0.25, 0, 3.0, -4.0]])
    made = volux.resample(
        array, volux.Grid((3, 4, 5), far), interpolation=kernel, outside="extend", antialias=None
    )
    assert same_bits(made, expected(array, far, (3, 4, 5), kernel=kernel))


@pytest.mark.parametrize("overflow", ["saturate", "wrap"])
@pytest.mark.parametrize("dtype", ["uint8", "int16", "uint16"])
def test_an_overshoot_is_stored_as_overflow_says(dtype, overflow):
    limits = np.iinfo(dtype)
    array = np.where(volume("bool"), limits.max, limits.min).astype(dtype)
    made = volux.resample(
        array, volux.Grid((4, 5, 6), OBLIQUE), interpolation="cubic", overflow=overflow
    )
    how = {"kernel": "cubic", "overflow": overflow, "outside": "fill"}
    assert same_bits(made, expected(array, OBLIQUE, (4, 5, 6), **how))


@pytest.mark.parametrize("wanted", ["float32", "float64"])
@pytest.mark.parametrize("dtype", oracle.DTYPES)
def test_a_result_of_floats_keeps_the_fraction(dtype, wanted):
    array = volume(dtype)
    made = volux.resample(array, volux.Grid((4, 5, 6), OBLIQUE), dtype=wanted)
    assert same_bits(made, expected(array, OBLIQUE, (4, 5, 6), dtype=wanted, outside="fill"))


def test_each_channel_is_read_by_itself():
    array = volume("int16", (4, 5, 6, 3))
    made = volux.resample(array, volux.Grid((4, 5, 6), OBLIQUE))
    alone = [expected(array[..., c], OBLIQUE, (4, 5, 6), outside="fill") for c in range(3)]
    assert same_bits(made, np.stack(alone, axis=-1))


numbers = st.floats(-2.0, 2.0).map(lambda number: round(number, 3))


@settings(max_examples=40, deadline=None)
@given(
    steps=st.lists(numbers, min_size=9, max_size=9),
    origin=st.lists(st.floats(-4.0, 8.0), min_size=3, max_size=3),
    kernel=st.sampled_from(oracle.KERNELS),
    border=st.sampled_from(["edge", "constant"]),
    outside=st.sampled_from(["fill", "extend"]),
)
def test_any_grid_of_an_array_reads_where_its_matrix_says(steps, origin, kernel, border, outside):
    affine = placed(np.column_stack([np.reshape(steps, (3, 3)) + 3 * np.eye(3), origin]))
    if abs(np.linalg.det(affine)) < 1e-6:
        return
    array = labels("int16") if kernel == "label" else volume("int16")
    how = {"border": border, "outside": outside, "fill": -3}
    made = volux.resample(
        array, volux.Grid((2, 3, 2), affine), interpolation=kernel, antialias=None, **how
    )
    assert same_bits(made, expected(array, affine, (2, 3, 2), kernel=kernel, **how))


@pytest.mark.parametrize("kernel", ["nearest", "linear", "cubic"])
def test_a_mean_is_that_of_the_samples_inside_the_voxel(kernel):
    array = volume("float64")
    coarse = placed([[1.75, 0, 0, 0.5], [0, 2.5, 0, 0.75], [0, 0, 1.0, 0.25]])
    made = volux.resample(
        array, volux.Grid((2, 2, 4), coarse), interpolation=kernel, antialias="mean"
    )
    wanted = np.empty((4, 2, 2))
    for index in np.ndindex(4, 2, 2):
        wanted[index] = oracle.mean_of_subsamples(
            array.T, in_xyz(coarse), index, (1, 3, 2), kernel=kernel, outside="fill"
        )
    assert same_bits(made, wanted.T)


@pytest.mark.parametrize("kernel", oracle.KERNELS)
@pytest.mark.parametrize("dtype", oracle.DTYPES)
def test_a_volume_on_its_own_grid_keeps_every_byte(dtype, kernel):
    array = volume(dtype)
    assert same_bits(volux.resample(array, like=array, interpolation=kernel), array)


@pytest.mark.parametrize("threads", [1, 2, 3])
def test_the_number_of_threads_changes_no_bit(threads):
    array = volume("int16", (40, 50, 60))
    grid = volux.Grid((60, 60, 60), OBLIQUE)
    alone = volux.resample(array, grid, interpolation="cubic", threads=1)
    assert same_bits(volux.resample(array, grid, interpolation="cubic", threads=threads), alone)
