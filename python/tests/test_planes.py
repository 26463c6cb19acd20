"""Planes and slabs, in the world."""

import pickle

import numpy as np
import pytest
import volux

from .volumes import placed, same_bits, volume

OBLIQUE = placed([[0.0, 0.25, 0.75, 10.0], [-0.5, 0.5, 0.0, -20.0], [1.5, 0.0, 0.25, 5.0]])
IMAGE = volux.Image(volume("float64", (8, 9, 10)), OBLIQUE)
MIDDLE = (OBLIQUE @ [4, 4, 5, 1])[:3]
PLANE = volux.Plane(MIDDLE, (1, 2, 3), (0, 0, 1), (6, 7), (3.0, 0.5, 0.25))


def steps(plane):
    """The steps from plane to plane, row to row and column to column."""
    return plane.grid.affine[:3, :3].T


def test_a_plane_has_its_centre_in_the_middle_of_the_picture():
    assert (PLANE.grid.affine @ [0, 2.5, 3, 1])[:3] == pytest.approx(MIDDLE, abs=1e-12)


def test_a_plane_has_its_spacing_between_planes_rows_and_columns():
    assert PLANE.spacing == pytest.approx((3.0, 0.5, 0.25), rel=1e-15)


def test_a_plane_is_at_right_angles_to_its_normal_and_right_handed():
    through, down, across = steps(PLANE)
    assert through / 3.0 == pytest.approx(np.array([1, 2, 3]) / np.sqrt(14), abs=1e-15)
    assert np.cross(across / 0.25, down / 0.5) == pytest.approx(through / 3.0, abs=1e-15)


def test_up_is_up_in_the_picture():
    _, down, across = steps(PLANE)
    assert down @ [0, 0, 1] < 0
    assert across @ [0, 0, 1] == pytest.approx(0, abs=1e-15)


def test_a_plane_through_points_begins_with_the_first_and_runs_to_the_second():
    plane = volux.Plane.through((1, 2, 3), (1, 2, 8), (4, 2, 9), (3, 4), 0.5)
    assert plane.grid.affine[:3, 3].tolist() == [1, 2, 3]
    _, down, across = steps(plane)
    assert across.tolist() == [0, 0, 0.5]
    assert down.tolist() == [0.5, 0, 0]


def test_a_stack_begins_with_its_plane_and_goes_on_along_the_normal():
    stack = PLANE.stack(5)
    assert stack.shape == (5, 6, 7)
    assert stack[0:1].affine == pytest.approx(PLANE.grid.affine, rel=1e-15)


def test_a_stack_may_go_on_along_another_direction():
    stack = PLANE.stack(5, distance=2.0, direction=(0, 0, 4))
    assert stack.affine[:3, 0].tolist() == [0, 0, 2]


def test_planes_along_a_curve_are_centred_on_it_and_at_right_angles():
    curve = np.array([(0, 0, 0), (0, 0, 1), (0, 1, 2), (1, 2, 2)], float)
    planes = volux.Plane.along(curve, (0, 1, 0), (5, 5), 1.0)
    tangents = [curve[1] - curve[0], *(curve[2:] - curve[:-2]), curve[-1] - curve[-2]]
    for plane, point, tangent in zip(planes, curve, tangents, strict=True):
        assert (plane.grid.affine @ [0, 2, 2, 1])[:3] == pytest.approx(point, abs=1e-12)
        assert steps(plane)[0] == pytest.approx(tangent / np.linalg.norm(tangent), abs=1e-12)


def test_a_plane_reads_where_its_pixels_are():
    made = volux.reslice(IMAGE, PLANE, border="constant", fill=-7.0)
    index = np.moveaxis(np.indices((1, 6, 7)), 0, -1)
    points = index @ PLANE.grid.affine[:3, :3].T + PLANE.grid.affine[:3, 3]
    found = volux.sample(IMAGE, points, space="world", border="constant", fill=-7.0)
    assert made.array == pytest.approx(found, rel=1e-11)


@pytest.mark.parametrize("image", [IMAGE, IMAGE.array], ids=["image", "array"])
@pytest.mark.parametrize("seed", range(10))
def test_planes_have_the_bits_of_their_grid(image, seed):
    random = np.random.default_rng(seed)
    middle = MIDDLE if isinstance(image, volux.Image) else (4, 4, 5)
    stack = volux.Grid((3, 7, 9), placed(np.column_stack([random.normal(size=(3, 3)), middle])))
    for kernel in ("nearest", "linear", "cubic"):
        cut = volux.reslice(image, stack, interpolation=kernel)
        whole = volux.resample(image, stack, interpolation=kernel, antialias=None)
        if isinstance(image, volux.Image):
            cut, whole = cut.array, whole.array
        assert same_bits(cut, whole), (seed, kernel)


def test_a_plane_is_a_picture_whatever_the_axes_of_the_image():
    turned = volux.Image(IMAGE.array.T, OBLIQUE[:, [2, 1, 0, 3]], axes="xyz")
    made, again = volux.reslice(IMAGE, PLANE), volux.reslice(turned, PLANE)
    assert again.axes == "zyx"
    assert same_bits(made.array, again.array)
    assert made.grid == PLANE.grid


def test_a_slab_is_made_of_planes_that_divide_its_thickness():
    made = volux.reslice(IMAGE, PLANE, slab=3, dtype="float64")
    thin = [
        volux.reslice(
            IMAGE,
            volux.Plane(MIDDLE + steps(PLANE)[0] * k, (1, 2, 3), (0, 0, 1), (6, 7), (3, 0.5, 0.25)),
        ).array
        for k in (-1 / 3, 0, 1 / 3)
    ]
    assert made.array == pytest.approx(np.mean(thin, axis=0), rel=1e-9)


@pytest.mark.parametrize(("projection", "combine"), [("maximum", np.max), ("minimum", np.min)])
def test_a_slab_may_be_a_projection(projection, combine):
    array = volume("int16", (6, 4, 5))
    slabs = volux.Grid((2, 4, 5), placed([[3, 0, 0, 1], [0, 1, 0, 0], [0, 0, 1, 0]]))
    made = volux.reslice(array, slabs, slab=3, projection=projection)
    assert np.array_equal(made, combine(array.reshape(2, 3, 4, 5), axis=1))


def test_a_slab_of_labels_is_a_vote():
    array = np.array([3, 9, 9], np.uint8).reshape(3, 1, 1)
    slab = volux.Grid((1, 1, 1), placed([[3, 0, 0, 1], [0, 1, 0, 0], [0, 0, 1, 0]]))
    assert volux.reslice(array, slab, slab=3, interpolation="label").item() == 9


def test_a_sequence_of_planes_gives_a_list_of_pictures():
    planes = [PLANE, volux.Plane(MIDDLE, (0, 0, 1), (0, 1, 0), (3, 3), 1.0)]
    made = volux.reslice(IMAGE, planes)
    assert [image.shape for image in made] == [(1, 6, 7), (1, 3, 3)]
    assert same_bits(made[0].array, volux.reslice(IMAGE, PLANE).array)


def test_a_picture_is_written_to_out():
    out = np.zeros((7, 6, 1)).T
    assert volux.reslice(IMAGE, PLANE, out=out).array is out
    assert np.array_equal(out, volux.reslice(IMAGE, PLANE).array)


def test_an_out_does_not_go_with_a_sequence():
    with pytest.raises(ValueError, match="out= goes with one plane or grid"):
        volux.reslice(IMAGE, [PLANE], out=np.zeros((1, 6, 7)))


@pytest.mark.parametrize(
    ("make", "words"),
    [
        (
            lambda: volux.Plane((0, 0, 0), (0, 0, 0), (0, 1, 0), (2, 2), 1.0),
            r"normal=\(0\.0, 0\.0, 0\.0\) must not be 0 and up=\(0\.0, 1\.0, 0\.0\)",
        ),
        (lambda: volux.Plane((0, 0, 0), (0, 2, 0), (0, 1, 0), (2, 2), 1.0), "up=.* not parallel"),
        (lambda: volux.Plane((0, 0), (0, 0, 1), (0, 1, 0), (2, 2), 1.0), "x, y and z in the world"),
        (lambda: volux.Plane((0, 0, 0), (0, 0, 1), (0, 1, 0), (2, 2, 2), 1.0), "rows and columns"),
        (lambda: volux.Plane((0, 0, 0), (0, 0, 1), (0, 1, 0), (2, 2), (1, 1)), "between planes"),
        (
            lambda: volux.Plane.through((0, 0, 0), (1, 0, 0), (2, 0, 0), (2, 2), 1),
            r"p=\(0\.0, .*, q=\(1\.0, .* and r=\(2\.0, .* must not be on one line",
        ),
        (
            lambda: volux.Plane.through((0, 0, 0), (1, 0), (2, 1, 0), (2, 2), 1),
            r"^q=.* has 2",
        ),
        (lambda: volux.Plane.along([(0, 0, 0)], (0, 1, 0), (2, 2), 1), "points must go on"),
        (lambda: PLANE.stack(2, direction=(0, 0, 0)), "direction=.* must not be 0"),
        (lambda: PLANE.stack(2, direction=steps(PLANE)[1]), "must leave the plane"),
    ],
)
def test_a_plane_that_does_not_exist_is_refused(make, words):
    with pytest.raises(ValueError, match=words):
        make()


def test_a_plane_pickles():
    again = pickle.loads(pickle.dumps(PLANE))
    assert again == PLANE
    assert hash(again) == hash(PLANE)


def test_a_plane_says_where_it_lies_when_it_is_printed():
    assert repr(PLANE) == f"<Plane of {PLANE.grid!r}>"
