"""volux.ndimage means what scipy.ndimage means, or says that it does not."""

import inspect
import re
from fractions import Fraction

import numpy as np
import pytest
import volux
from hypothesis import assume, given, settings
from hypothesis import strategies as st
from volux import ndimage

from .volumes import placed, same_bits, volume

scipy = pytest.importorskip("scipy.ndimage")

MODES = ("nearest", "grid-constant")
DTYPES = ("uint8", "int16", "uint16", "int32", "uint32", "float32", "float64")
ARRAY = volume("float64", (4, 5, 6))
quarters = st.integers(-12, 28).map(lambda number: number / 4)
steps = st.integers(-8, 8).map(lambda number: number / 4)
modes = st.sampled_from(MODES)


def agree(ours, theirs, scale=None):
    """Whether readings agree within 1e-12 of the largest voxel."""
    scale = np.abs(ARRAY).max() if scale is None else scale
    return ours.shape == theirs.shape and np.abs(ours - theirs).max() <= 1e-12 * scale


@pytest.mark.parametrize("name", ndimage.__all__)
def test_a_signature_is_that_of_scipy(name):
    ours, theirs = (
        [(p.name, p.kind, p.default) for p in inspect.signature(function).parameters.values()]
        for function in (getattr(ndimage, name), getattr(scipy, name))
    )
    assert ours == theirs[: len(ours)]


@settings(max_examples=100, deadline=None)
@given(places=st.lists(st.tuples(quarters, quarters, quarters), min_size=1, max_size=8), mode=modes)
def test_coordinates_at_halves_and_outside_read_the_voxels_of_scipy(places, mode):
    coordinates = np.transpose(places)
    how = {"order": 0, "mode": mode, "cval": 7.0}
    ours = ndimage.map_coordinates(ARRAY, coordinates, **how)
    assert same_bits(ours, scipy.map_coordinates(ARRAY, coordinates, **how))


@settings(max_examples=100, deadline=None)
@given(
    places=st.lists(st.tuples(*[st.floats(-9, 15)] * 3), min_size=1, max_size=8),
    mode=modes,
    order=st.sampled_from([0, 1]),
)
def test_coordinates_anywhere_read_what_scipy_reads(places, mode, order):
    coordinates = np.transpose(places)
    how = {"order": order, "mode": mode, "cval": -3.5}
    ours = ndimage.map_coordinates(ARRAY, coordinates, **how)
    assert agree(ours, scipy.map_coordinates(ARRAY, coordinates, **how))


@pytest.mark.parametrize("mode", MODES)
@pytest.mark.parametrize("order", [0, 1])
@pytest.mark.parametrize("dtype", DTYPES)
def test_readings_of_each_type_are_stored_as_scipy_stores_them(dtype, order, mode):
    array = volume(dtype)
    coordinates = np.random.default_rng(3).uniform(-2, 7, (3, 5, 7))
    how = {"order": order, "mode": mode, "cval": 3}
    ours = ndimage.map_coordinates(array, coordinates, **how)
    theirs = scipy.map_coordinates(array, coordinates, **how)
    assert ours.dtype == theirs.dtype
    if dtype == "float32":
        assert np.abs(ours - theirs).max() <= 1e-6 * np.abs(array).max()
    else:
        assert agree(ours.astype(float), theirs.astype(float), np.abs(array.astype(float)).max())


def is_invertible(matrix):
    with np.errstate(all="ignore"):  # numbers near 0 divide by 0 on the way
        return abs(np.linalg.det(matrix)) > 1e-6


@settings(max_examples=100, deadline=None)
@given(
    matrix=st.lists(st.tuples(steps, steps, steps), min_size=3, max_size=3),
    offset=st.tuples(quarters, quarters, quarters),
    mode=modes,
)
def test_an_affine_transform_with_halves_reads_the_voxels_of_scipy(matrix, offset, mode):
    assume(is_invertible(matrix))
    how = {"order": 0, "mode": mode, "cval": 7.0}
    ours = ndimage.affine_transform(ARRAY, matrix, offset, **how)
    assert same_bits(ours, scipy.affine_transform(ARRAY, matrix, offset, **how))


@settings(max_examples=100, deadline=None)
@given(
    matrix=st.lists(st.tuples(*[st.floats(-2, 2)] * 3), min_size=3, max_size=3),
    offset=st.tuples(*[st.floats(-4, 8)] * 3),
    shape=st.tuples(*[st.integers(1, 7)] * 3),
    mode=modes,
)
def test_any_affine_transform_reads_what_scipy_reads(matrix, offset, shape, mode):
    assume(is_invertible(matrix))
    how = {"order": 1, "mode": mode, "cval": 7.0, "output_shape": shape}
    ours = ndimage.affine_transform(ARRAY, matrix, offset, **how)
    assert agree(ours, scipy.affine_transform(ARRAY, matrix, offset, **how))


AFFINE = placed([[0.7, 0.2, 0.1, -0.8], [-0.1, 0.9, 0.3, 0.6], [0.2, -0.3, 1.1, 0.9]])


@pytest.mark.parametrize(
    ("matrix", "offset"),
    [(AFFINE, 9.0), (AFFINE[:3], 9.0), (AFFINE[:3, :3], 0.25), (np.array([0.5, 2, 1]), (1, 2, 0))],
    ids=["4 x 4", "3 x 4", "3 x 3", "3"],
)
@pytest.mark.filterwarnings("ignore:The behavior of affine_transform with a 1-D:UserWarning")
def test_each_form_of_a_matrix_means_what_it_means_in_scipy(matrix, offset):
    how = {"offset": offset, "order": 1, "mode": "nearest"}
    ours = ndimage.affine_transform(ARRAY, matrix, **how)
    assert agree(ours, scipy.affine_transform(ARRAY, matrix, **how))


@pytest.mark.parametrize("mode", MODES)
@pytest.mark.parametrize("order", [0, 1])
def test_zoom_between_outer_centres_reads_what_scipy_reads(order, mode):
    for extent in range(1, 13):
        line = volume("float64", (2, 1, extent))
        for wanted in range(1, 40):
            factors = (1, 3, wanted / extent)
            ours = ndimage.zoom(line, factors, order=order, mode=mode)
            theirs = scipy.zoom(line, factors, order=order, mode=mode)
            assert agree(ours, theirs), (extent, wanted)
            assert order == 1 or same_bits(ours, theirs), (extent, wanted)


@pytest.mark.parametrize("mode", MODES)
def test_zoom_between_outer_edges_reads_what_scipy_reads(mode):
    for extent in range(1, 13):
        line = volume("float64", (2, 1, extent))
        for wanted in range(1, 40):
            how = {"order": 1, "mode": mode, "grid_mode": True}
            ours = ndimage.zoom(line, (1, 3, wanted / extent), **how)
            assert agree(ours, scipy.zoom(line, (1, 3, wanted / extent), **how)), (extent, wanted)


def test_zoom_between_outer_edges_reads_the_voxels_of_scipy_but_at_halves():
    for extent in range(1, 25):
        line = np.arange(extent, dtype=float).reshape(1, 1, extent)
        for wanted in range(1, 61):
            how = {"order": 0, "mode": "nearest", "grid_mode": True}
            ours = ndimage.zoom(line, (1, 1, wanted / extent), **how)[0, 0]
            theirs = scipy.zoom(line, (1, 1, wanted / extent), **how)[0, 0]
            for i in np.flatnonzero(ours != theirs).tolist():
                upper = (2 * i + 1) * Fraction(extent, 2 * wanted)
                assert upper.denominator == 1, (extent, wanted, i)
                assert abs(ours[i] - theirs[i]) == 1, (extent, wanted, i)


@settings(max_examples=100, deadline=None)
@given(factors=st.tuples(*[st.floats(0.3, 3.0)] * 3), grid_mode=st.booleans())
def test_zoom_rounds_extents_as_scipy_does(factors, grid_mode):
    how = {"order": 1, "mode": "nearest", "grid_mode": grid_mode}
    assert agree(ndimage.zoom(ARRAY, factors, **how), scipy.zoom(ARRAY, factors, **how))


def test_zoom_rounds_half_an_extent_to_the_even_one():
    array = np.zeros((1, 3, 5))
    assert ndimage.zoom(array, (1, 0.5, 0.5), order=1, mode="nearest").shape == (1, 2, 2)


def test_an_output_is_written_and_returned():
    out = np.zeros((4, 5, 6), np.float32)[::-1]
    made = ndimage.affine_transform(ARRAY, np.eye(3), output=out, order=1, mode="nearest")
    assert made is out
    assert same_bits(out, ARRAY.astype(np.float32))


def test_an_output_may_be_a_type():
    coordinates = np.array([[0.5], [0], [0]])
    made = ndimage.map_coordinates(volume(), coordinates, output="float32", order=1, mode="nearest")
    assert made.dtype == np.float32


def test_an_output_gives_the_shape_of_an_affine_transform():
    out = np.empty((2, 3, 4))
    ndimage.affine_transform(ARRAY, np.eye(3), output=out, order=0, mode="nearest")
    assert same_bits(out, ARRAY[:2, :3, :4].copy())


GIVEN = {"order": 1, "mode": "nearest"}
AT = np.zeros((3, 1))
ONE = np.eye(3)
REFUSED = [
    (lambda: ndimage.zoom(ARRAY, 2, mode="nearest"), "order=3: allowed are 0 and 1, for the other"),
    (lambda: ndimage.zoom(ARRAY, 2, order=True, mode="mirror"), "mode='mirror': allowed are 'near"),
    (lambda: ndimage.zoom(ARRAY, 2, order=-1), "order=-1: allowed are 0 and 1"),
    (
        lambda: ndimage.map_coordinates(ARRAY, AT, order=1),
        "mode='constant': allowed are 'nearest' ",
    ),
    (lambda: ndimage.map_coordinates(ARRAY[0], AT, **GIVEN), "input has the shape (5, 6); it must"),
    (lambda: ndimage.map_coordinates(ARRAY[None], AT, **GIVEN), "it must have three axes: volux."),
    (lambda: ndimage.map_coordinates([[[1]]], AT, **GIVEN), "input is a list; allowed are"),
    (lambda: ndimage.map_coordinates(volux.Image(ARRAY), AT, **GIVEN), "must be an array: input.a"),
    (
        lambda: ndimage.map_coordinates(ARRAY, AT * 1j, **GIVEN),
        "coordinates are complex; they must",
    ),
    (
        lambda: ndimage.map_coordinates(ARRAY, AT.T, **GIVEN),
        "coordinates have the shape (1, 3); it",
    ),
    (
        lambda: ndimage.map_coordinates(volume(), AT, order=1, mode="grid-constant", cval=0.5),
        "cval=0.5: int16 holds whole numbers from -32768 to 32767",
    ),
    (
        lambda: ndimage.map_coordinates(volume("bool"), AT, **GIVEN),
        "order=1 of bools: allowed are o",
    ),
    (lambda: ndimage.affine_transform(ARRAY, ONE * 0, **GIVEN), "matrix=[[0.0, 0.0, 0.0, 0.0]"),
    (
        lambda: ndimage.affine_transform(ARRAY, np.eye(2), **GIVEN),
        "matrix has the shape (2, 2); al",
    ),
    (lambda: ndimage.affine_transform(ARRAY, ONE, (1, 2), **GIVEN), "offset=(1, 2) must be a numb"),
    (lambda: ndimage.affine_transform(ARRAY, ONE, np.nan, **GIVEN), "must be finite"),
    (lambda: ndimage.affine_transform(ARRAY, ONE, output="int8", **GIVEN), "dtype='int8': allowed"),
    (
        lambda: ndimage.affine_transform(ARRAY, ONE, output=ARRAY, **GIVEN),
        "output overlaps input: t",
    ),
    (
        lambda: ndimage.zoom(ARRAY, 2, ARRAY[0], **GIVEN),
        "output has the shape (5, 6); the result h",
    ),
    (lambda: ndimage.zoom(ARRAY, 0.1, **GIVEN), "zoom=0.1 makes the shape [0, 0, 1] of (4, 5, 6)"),
    (lambda: ndimage.zoom(ARRAY, (1, 2), **GIVEN), "zoom=(1, 2) has 2 numbers; it must be 3"),
    (lambda: ndimage.zoom(ARRAY, 2, **GIVEN, grid_mode=1), "grid_mode=1 must be a bool"),
    (lambda: ndimage.zoom(ARRAY, 2, **GIVEN, prefilter="no"), "prefilter='no' must be a bool"),
]


@pytest.mark.parametrize(("call", "words"), REFUSED, ids=[words[:30] for _, words in REFUSED])
def test_what_means_something_else_is_refused_in_the_words_of_scipy(call, words):
    with pytest.raises((TypeError, ValueError), match=re.escape(words)):
        call()
