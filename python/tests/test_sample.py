"""Readings and derivatives at points."""

import numpy as np
import pytest
import volux
from hypothesis import given, settings
from hypothesis import strategies as st

from . import oracle
from .volumes import labels, placed, same_bits, volume

coordinates = st.floats(-9.0, 15.0)


@settings(max_examples=150, deadline=None)
@given(
    point=st.tuples(coordinates, coordinates, coordinates),
    kernel=st.sampled_from(oracle.KERNELS),
    border=st.sampled_from(["edge", "constant"]),
    dtype=st.sampled_from(oracle.DTYPES),
)
def test_a_point_reads_what_the_kernel_says(point, kernel, border, dtype):
    array = labels(dtype) if kernel == "label" else volume(dtype)
    found = volux.sample(array, point, interpolation=kernel, border=border, fill=3)
    wanted = oracle.reading(array.T, point[::-1], kernel, border, 3)
    assert found.tobytes() == np.float64(wanted).tobytes()


@pytest.mark.parametrize("axes", ["xyz", "xzy", "yxz", "yzx", "zxy", "zyx"])
def test_points_follow_the_axes_of_the_array(axes):
    image = volux.Image(volume("float64"), axes=axes)
    points = np.argwhere(np.ones(image.shape))
    assert np.array_equal(volux.sample(image, points), image.array.ravel())


def test_points_of_the_world_are_x_y_and_z():
    image = volux.Image(
        volume("float64"), placed([[0, 0, 0.5, 10], [0, 0.5, 0, 20], [2, 0, 0, 30]])
    )
    found = volux.sample(image, [(11.5, 20.5, 34.0)], space="world")
    assert found.tolist() == [image.array[2, 1, 3]]


def test_the_world_of_a_plain_array_is_its_index_space():
    array = volume("float64")
    point = (1.25, 2.5, 3.75)
    assert volux.sample(array, point, space="world") == volux.sample(array, point)


@pytest.mark.parametrize("shape", [(3,), (1, 3), (7, 3), (2, 3, 4, 3), (0, 3)])
def test_readings_have_the_shape_of_the_points(shape):
    points = np.random.default_rng(3).uniform(0, 3, shape)
    found = volux.sample(volume("float64"), points)
    assert found.shape == shape[:-1]
    each = [volux.sample(volume("float64"), point) for point in points.reshape(-1, 3)]
    assert found.ravel().tolist() == [float(reading) for reading in each]


POINTS = np.random.default_rng(4).uniform(-1, 6, (50, 3))


@pytest.mark.parametrize(
    "points",
    [
        POINTS[::-1],
        np.asfortranarray(POINTS),
        np.hstack([POINTS, POINTS])[:, 3:],
        POINTS.tolist(),
        np.broadcast_to(POINTS[7], (50, 3)),
    ],
    ids=["backwards", "Fortran", "slice", "list", "repeated"],
)
def test_the_layout_of_points_changes_no_bit(points):
    plain = np.ascontiguousarray(points)
    array = volume("int16")
    assert same_bits(volux.sample(array, points), volux.sample(array, plain))


def test_points_of_another_type_are_converted():
    points = np.arange(9, dtype=np.int32).reshape(3, 3)
    array = volume("int16")
    assert same_bits(volux.sample(array, points), volux.sample(array, points.astype(float)))


def test_all_channels_come_last():
    array = volume("float64", (4, 5, 6, 3))
    found = volux.sample(array, POINTS)
    assert found.shape == (50, 3)
    for channel in range(3):
        alone = volux.sample(array, POINTS, channel=channel)
        assert np.array_equal(alone, found[:, channel])
        assert np.array_equal(alone, volux.sample(array[..., channel], POINTS))


@pytest.mark.parametrize("dtype", oracle.DTYPES)
def test_readings_of_the_type_of_the_image_are_rounded_and_saturated(dtype):
    array = volume(dtype)
    found = volux.sample(array, POINTS, interpolation="cubic", dtype=None)
    exact = volux.sample(array, POINTS, interpolation="cubic")
    assert same_bits(found, np.array([oracle.stored(reading, dtype) for reading in exact]))


def test_bools_are_read_as_labels():
    mask = volume("bool")
    found = volux.sample(mask, POINTS, interpolation="label", dtype=None)
    numbers = volux.sample(mask.view(np.uint8), POINTS, interpolation="label")
    assert found.dtype == bool
    assert np.array_equal(found, numbers)


@pytest.mark.parametrize("count", [50, 70_000])
def test_an_out_with_gaps_gets_the_same_readings(count):
    array = volume("int16", (4, 5, 6, 2))
    points = np.random.default_rng(5).uniform(-1, 6, (count, 3))
    memory = np.full((2 * count, 4), -7.0)
    out = memory[::2, 1:3]
    assert volux.sample(array, points, out=out) is out
    assert np.array_equal(out, volux.sample(array, points))
    assert (memory[1::2] == -7.0).all()
    assert (memory[:, [0, 3]] == -7.0).all()


@pytest.mark.parametrize("shape", [(0, 3), (2, 0, 3)])
def test_an_out_without_elements_is_none_to_refuse(shape):
    out = np.empty(shape[:-1])
    assert volux.sample(volume(), np.empty(shape), out=out) is out


def test_points_beyond_doubles_are_infinitely_far():
    far = np.full((1, 3), np.finfo(np.longdouble).max)
    read = [
        volux.sample(volume(), points, interpolation="nearest") for points in (far, [[np.inf] * 3])
    ]
    assert same_bits(*read)


def test_an_out_without_gaps_is_written_where_it_is():
    array = volume("int16")
    out = np.zeros((5, 10), np.float32)
    points = POINTS.reshape(5, 10, 3)
    assert volux.sample(array, points, dtype=None, out=out) is out
    assert same_bits(out, volux.sample(array, points, dtype="float32"))


@pytest.mark.parametrize("kernel", ["nearest", "linear", "cubic"])
@pytest.mark.parametrize("border", ["edge", "constant"])
def test_readings_beside_derivatives_are_those_of_sample(kernel, border):
    array = volume("int16")
    values, _ = volux.sample_gradient(array, POINTS, interpolation=kernel, border=border)
    assert same_bits(values, volux.sample(array, POINTS, interpolation=kernel, border=border))


@pytest.mark.parametrize("axes", ["xyz", "zyx", "yxz"])
@pytest.mark.parametrize("kernel", ["linear", "cubic"])
def test_derivatives_follow_the_axes_of_the_array(kernel, axes):
    image = volux.Image(volume("float64"), axes=axes)
    point, h = np.array([1.3, 2.4, 1.6]), 1e-5
    _, gradient = volux.sample_gradient(image, point, interpolation=kernel)
    above = volux.sample(image, point + h * np.eye(3), interpolation=kernel)
    below = volux.sample(image, point - h * np.eye(3), interpolation=kernel)
    assert gradient == pytest.approx((above - below) / (2 * h), rel=1e-6)


def test_derivatives_by_the_world_are_along_x_y_and_z():
    z, y, x = np.indices((4, 5, 6), float)
    image = volux.Image(
        5 * x + 7 * y + 11 * z, placed([[0, 0, 0.5, 0], [0, 0.25, 0, 0], [2, 0, 0, 0]])
    )
    values, gradients = volux.sample_gradient(image, [(1.1, 0.6, 3.3)], space="world")
    assert gradients[0] == pytest.approx([10.0, 28.0, 5.5], rel=1e-12)
    assert values == pytest.approx([5 * 2.2 + 7 * 2.4 + 11 * 1.65], rel=1e-12)


def test_derivatives_of_all_channels_have_the_axis_of_channels_before_their_own():
    array = volume("float64", (4, 5, 6, 2))
    values, gradients = volux.sample_gradient(array, POINTS)
    assert (values.shape, gradients.shape) == ((50, 2), (50, 2, 3))
    alone, slopes = volux.sample_gradient(array, POINTS, channel=1)
    assert np.array_equal(values[:, 1], alone)
    assert np.array_equal(gradients[:, 1], slopes)
