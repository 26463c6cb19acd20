"""Transforms: affine maps of the world, displacement fields, and both in a row."""

import pickle

import numpy as np
import pytest
import volux

from .volumes import placed, same_bits, volume

TURN = placed([[0, -1, 0, 5], [1, 0, 0, 7], [0, 0, 1, -3]])
SHEAR = placed([[1, 0.5, 0, 0], [0, 1, 0.25, 1], [0, 0, 2, 0]])
PLACE = placed([[0.0, 0.0, 1.0, -2.0], [0.0, 1.5, 0.0, 3.0], [2.0, 0.0, 0.0, 1.0]])
POINTS = np.random.default_rng(6).uniform(-3, 9, (20, 3))
RANDOM = np.random.default_rng(7).normal(0, 1.5, (5, 6, 7, 3))
FIELD = volux.Displacement(RANDOM, volux.Grid((5, 6, 7), PLACE, axes="zyx"))


def displaced(points):
    """Where the field leads, by its definition."""
    index = np.linalg.solve(PLACE, np.vstack([points.T, np.ones(len(points))]))[:3].T
    components = [volux.sample(RANDOM[..., c], index) for c in range(3)]
    seen = ((index >= -0.5) & (index < np.array([5, 6, 7]) - 0.5)).all(axis=1)
    return points + np.where(seen[:, None], np.stack(components, axis=1), 0.0)


def test_an_affine_leads_where_its_matrix_says():
    moved = volux.Affine(TURN)(POINTS)
    assert moved == pytest.approx(POINTS @ TURN[:3, :3].T + TURN[:3, 3], abs=1e-12)


@pytest.mark.parametrize("shape", [(3,), (2, 3), (2, 5, 3), (0, 3)])
def test_points_keep_their_shape(shape):
    assert volux.Affine(TURN)(np.zeros(shape)).shape == shape
    assert FIELD(np.zeros(shape)).shape == shape


def test_the_inverse_of_an_affine_leads_back():
    there = volux.Affine(SHEAR)
    assert there.inverse()(there(POINTS)) == pytest.approx(POINTS, abs=1e-12)


def test_a_displacement_leads_where_its_vectors_say_and_nowhere_beyond_its_grid():
    moved = FIELD(POINTS)
    assert moved == pytest.approx(displaced(POINTS), abs=1e-12)
    assert (moved == POINTS).all(axis=1).any()
    assert (moved != POINTS).all(axis=1).any()


@pytest.mark.parametrize("dtype", ["float32", "float64"])
def test_vectors_may_have_any_layout(dtype):
    vectors = np.asfortranarray(RANDOM.astype(dtype))[::-1]
    grid = volux.Grid((5, 6, 7), PLACE)
    moved, again = (volux.Displacement(v, grid)(POINTS) for v in (vectors, vectors.copy()))
    assert same_bits(moved, again)


def test_a_composite_of_affines_is_an_affine():
    both = volux.compose(volux.Affine(TURN), volux.Affine(SHEAR))
    assert isinstance(both, volux.Affine)
    assert both.matrix == pytest.approx(SHEAR @ TURN, abs=1e-12)


def test_a_composite_leads_through_the_first_and_then_the_second():
    first, then = volux.Affine(TURN), volux.Affine(SHEAR)
    both = volux.compose(volux.compose(first, FIELD), then)
    assert both(POINTS) == pytest.approx(then(FIELD(first(POINTS))), abs=1e-11)


def test_a_composite_may_have_several_affines_on_either_side():
    first, then = volux.Affine(TURN), volux.Affine(SHEAR)
    both = volux.compose(
        volux.compose(then, first), volux.compose(FIELD, volux.compose(first, then))
    )
    assert both(POINTS) == pytest.approx(then(first(FIELD(first(then(POINTS))))), abs=1e-11)


def test_a_composite_has_one_displacement_field_at_most():
    with pytest.raises(ValueError, match="resample through one and then through the other"):
        volux.compose(FIELD, volux.compose(FIELD, volux.Affine(TURN)))


def transforms():
    before = volux.compose(volux.Affine(TURN), FIELD)
    return {
        "affine": volux.Affine(SHEAR),
        "displacement": FIELD,
        "composite": volux.compose(before, volux.Affine(SHEAR)),
    }


@pytest.mark.parametrize("kind", transforms())
@pytest.mark.parametrize("axes", ["zyx", "xyz"])
def test_a_volume_is_read_where_the_transform_leads(kind, axes):
    transform = transforms()[kind]
    image = volux.Image(volume("float64", (6, 7, 8)), PLACE, axes=axes)
    grid = volux.Grid((4, 5, 6), placed([[0, 0, 1, 0], [0, 1, 0, 1], [1, 0, 0, 2]]), axes="zyx")
    made = volux.resample(image, grid, transform=transform, outside="extend", antialias=None)
    index = np.moveaxis(np.indices((4, 5, 6)), 0, -1)
    points = transform(index @ grid.affine[:3, :3].T + grid.affine[:3, 3])
    found = volux.sample(image, points, space="world")
    assert made.array == pytest.approx(found, rel=1e-9, abs=1e-9)


def test_the_identity_changes_no_bit():
    image = volux.Image(volume(), PLACE)
    grid = volux.Grid((4, 5, 6), SHEAR)
    made = volux.resample(image, grid, transform=volux.Affine(np.eye(4)), antialias=None)
    assert same_bits(made.array, volux.resample(image, grid, antialias=None).array)


def test_a_transform_alone_keeps_the_grid_of_the_image():
    image = volux.Image(volume(), PLACE)
    shift = volux.Affine(placed([[1, 0, 0, 0], [0, 1, 0, 1.5], [0, 0, 1, 0]]))
    made = volux.resample(image, transform=shift, fill=-1)
    assert made.grid == image.grid
    assert np.array_equal(made.array[:, :-1], image.array[:, 1:])
    assert (made.array[:, -1] == -1).all()


def test_a_plain_array_is_moved_in_its_index_space():
    array = volume()
    shift = volux.Affine(placed([[1, 0, 0, 2], [0, 1, 0, 0], [0, 0, 1, 0]]))
    assert np.array_equal(volux.resample(array, transform=shift)[:2], array[2:])


def test_vectors_of_a_plain_array_count_along_its_axes():
    array = volume()
    vectors = np.zeros((*array.shape, 3))
    vectors[..., 1] = 1.0
    field = volux.Displacement(vectors, volux.Grid(array.shape, np.eye(4)))
    made = volux.resample(array, transform=field)
    assert np.array_equal(made[:, :-1], array[:, 1:])


@pytest.mark.parametrize(
    ("vectors", "error", "words"),
    [
        (np.zeros((5, 6, 7, 2)), ValueError, r"the grid needs \(5, 6, 7, 3\)"),
        (np.zeros((5, 6, 8, 3)), ValueError, r"the grid needs \(5, 6, 7, 3\)"),
        (np.zeros((5, 6, 7, 3), np.int16), TypeError, r"vectors\.astype\('float32'\)"),
        ([1, 2, 3], TypeError, "vectors is a list"),
    ],
)
def test_vectors_that_fit_no_grid_are_refused(vectors, error, words):
    with pytest.raises(error, match=words):
        volux.Displacement(vectors, volux.Grid((5, 6, 7), PLACE))


def test_a_displacement_needs_a_grid():
    with pytest.raises(TypeError, match=r"grid is a ndarray; it must be a volux\.Grid"):
        volux.Displacement(RANDOM, PLACE)


@pytest.mark.parametrize("kind", transforms())
def test_a_transform_pickles(kind):
    transform = transforms()[kind]
    again = pickle.loads(pickle.dumps(transform))
    assert same_bits(again(POINTS), transform(POINTS))


def test_equal_affines_are_equal_and_hash_alike():
    assert volux.Affine(TURN) == volux.Affine(TURN.tolist())
    assert hash(volux.Affine(TURN)) == hash(volux.Affine(TURN.tolist()))
    assert volux.Affine(TURN) != volux.Affine(SHEAR)


def test_a_transform_says_what_it_is_when_it_is_printed():
    matrix = np.diag([2.0, 1.0, 0.5, 1.0])
    assert eval(repr(volux.Affine(matrix)), {"Affine": volux.Affine}) == volux.Affine(matrix)
    field = volux.Displacement(np.zeros((1, 1, 2, 3), "f4"), volux.Grid((1, 1, 2), np.eye(4)))
    assert repr(field) == f"<Displacement of float32, {field.grid!r}>"
    assert repr(volux.compose(field, volux.Affine(matrix))) == f"<Composite of {field!r}>"
