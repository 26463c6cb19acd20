"""What other libraries define alike, they and volux read alike. Each may be missing."""

import numpy as np
import pytest
import volux

from .volumes import labels, placed, same_bits, volume

RANDOM = np.random.default_rng(14)
ARRAY = volume("float64", (9, 10, 11))
TO_LPS = np.diag([-1.0, -1.0, 1.0, 1.0])

# Turned about two axes, with unequal spacing: columns z, y, x.
TURN = np.array([[0.8, -0.6, 0.0], [0.48, 0.64, -0.6], [0.36, 0.48, 0.8]])
OBLIQUE = placed(np.column_stack([TURN * [3.0, 0.5, 0.75], [12.0, -30.0, 45.0]]))
# No position is half way between two voxels, where releases of scipy differ.
TO_INDEX = placed([[0.7, 0.2, 0.1, 0.81], [-0.1, 0.9, 0.3, 1.62], [0.2, -0.3, 0.8, 2.93]])


def agree(ours, theirs):
    """Whether readings agree within 1e-12 of the largest voxel."""
    return ours.shape == theirs.shape and np.abs(ours - theirs).max() <= 1e-12 * np.abs(ARRAY).max()


def inside(count, margin=0.5):
    """Points whose neighbours are all in the array, along its axes."""
    return RANDOM.uniform(margin, np.array(ARRAY.shape) - 1.0 - margin, (count, 3))


@pytest.mark.parametrize(("border", "mode"), [("edge", "nearest"), ("constant", "grid-constant")])
@pytest.mark.parametrize(("interpolation", "order"), [("nearest", 0), ("linear", 1)])
def test_scipy_reads_the_same_inside_and_outside(interpolation, order, border, mode):
    scipy = pytest.importorskip("scipy.ndimage")
    how = {"interpolation": interpolation, "border": border, "fill": 7}
    theirs = {"order": order, "mode": mode, "cval": 7}
    points = RANDOM.uniform(-5, 16, (1000, 3))
    assert agree(
        volux.sample(ARRAY, points, **how), scipy.map_coordinates(ARRAY, points.T, **theirs)
    )
    grid = volux.Grid((12, 13, 14), TO_INDEX)
    made = volux.resample(ARRAY, grid, outside="extend", **how)
    wanted = scipy.affine_transform(ARRAY, TO_INDEX, output_shape=grid.shape, **theirs)
    assert agree(made, wanted)


def resampled_by_sitk(image, grid, interpolator, transform=None):
    sitk = pytest.importorskip("SimpleITK")
    like = volux.Image(np.zeros(grid.shape), grid.affine).to_sitk()
    moved = transform or sitk.Transform(3, sitk.sitkIdentity)
    made = sitk.Resample(image.to_sitk(), like, moved, getattr(sitk, interpolator), 7.0)
    return sitk.GetArrayFromImage(made)


@pytest.mark.parametrize(
    ("interpolation", "interpolator"),
    [("nearest", "sitkNearestNeighbor"), ("linear", "sitkLinear")],
)
def test_sitk_reads_the_same_between_oblique_and_anisotropic_grids(interpolation, interpolator):
    image = volux.Image(ARRAY, OBLIQUE)
    steps = TURN @ TURN * [1.5, 0.75, 0.9]
    origin = (OBLIQUE @ [4.0123, 4.4711, 5.0319, 1.0])[:3] - steps @ [8.0, 6.0, 7.0]
    grid = volux.Grid((17, 13, 15), placed(np.column_stack([steps, origin])))
    made = volux.resample(image, grid, interpolation=interpolation, fill=7).array
    assert agree(made, resampled_by_sitk(image, grid, interpolator))


@pytest.mark.parametrize("align", [True, False])
@pytest.mark.parametrize(
    ("interpolation", "mode"), [("nearest", "nearest"), ("linear", "bilinear")]
)
def test_torch_reads_the_same_in_the_interior(interpolation, mode, align):
    torch = pytest.importorskip("torch")
    points = inside(1000)
    extents = np.array(ARRAY.shape)
    scaled = 2 * points / (extents - 1) - 1 if align else (2 * points + 1) / extents - 1
    theirs = torch.nn.functional.grid_sample(
        torch.from_numpy(ARRAY)[None, None],
        torch.from_numpy(np.ascontiguousarray(scaled[:, ::-1])).reshape(1, 1, 1, -1, 3),
        mode=mode,
        align_corners=align,
    )
    ours = volux.sample(ARRAY, points, interpolation=interpolation)
    assert agree(ours, theirs.numpy().ravel())


@pytest.mark.parametrize("interpolation", ["nearest", "linear", "cubic", "label"])
def test_the_identity_keeps_every_byte(interpolation):
    image = volux.Image(ARRAY, OBLIQUE)
    for same in (
        volux.resample(image, like=image, interpolation=interpolation),
        volux.resample(image, transform=volux.Affine(np.eye(4)), interpolation=interpolation),
        volux.resize(image, scale=1, interpolation=interpolation),
        volux.resize(image, shape=image.shape, interpolation=interpolation),
    ):
        assert same_bits(same.array, ARRAY)
        assert same.affine.tobytes() == image.affine.tobytes()


@pytest.mark.parametrize("align", ["edges", "centres"])
def test_there_and_back_returns_shape_and_affine_exactly(align):
    image = volux.Image(ARRAY, OBLIQUE)
    there = volux.resample(image, volux.Grid.of_spacing(image, 0.7, align=align), antialias="auto")
    back = volux.resample(there, like=image, antialias=None)
    assert back.shape == image.shape
    assert back.affine.tobytes() == image.affine.tobytes()


@pytest.mark.parametrize("axis", [0, 1, 2])
@pytest.mark.parametrize("interpolation", ["linear", "cubic"])
def test_flipping_and_resizing_commute_exactly_where_sums_and_positions_are_exact(
    interpolation, axis
):
    array = volume("int16", (8, 4, 16))
    for shape in ((16, 8, 32), (4, 2, 8)):
        there = volux.resize(np.flip(array, axis), shape=shape, interpolation=interpolation)
        back = np.flip(volux.resize(array, shape=shape, interpolation=interpolation), axis)
        assert same_bits(there, np.ascontiguousarray(back))


@pytest.mark.parametrize("axis", [0, 1, 2])
@pytest.mark.parametrize("interpolation", ["linear", "cubic"])
def test_flipping_and_resizing_commute_up_to_rounding_elsewhere(interpolation, axis):
    how = {"shape": (7, 13, 17), "interpolation": interpolation}
    there = volux.resize(np.flip(ARRAY, axis), **how)
    assert agree(there, np.flip(volux.resize(ARRAY, **how), axis))


def affine_of_sitk(matrix, centre, translation):
    """An affine transform of SimpleITK, and the same as ours: of RAS."""
    sitk = pytest.importorskip("SimpleITK")
    theirs = sitk.AffineTransform(3)
    theirs.SetMatrix(np.ravel(matrix).tolist())
    theirs.SetCenter(centre)
    theirs.SetTranslation(translation)
    whole = placed(np.column_stack([matrix, theirs.TransformPoint((0.0, 0.0, 0.0))]))
    return theirs, volux.Affine(TO_LPS @ whole @ TO_LPS)


def field_of_sitk(millimetres=2.0):
    """An oblique, anisotropic field of displacements."""
    sitk = pytest.importorskip("SimpleITK")
    field = sitk.GetImageFromArray(RANDOM.normal(0.0, millimetres, (8, 9, 10, 3)), isVector=True)
    place = volux.Image(np.zeros((8, 9, 10)), OBLIQUE).to_sitk()
    field.SetSpacing(place.GetSpacing())
    field.SetDirection(place.GetDirection())
    field.SetOrigin(place.GetOrigin())
    return field


def points_of_the_world(count):
    """Points inside the field and far beyond, in RAS."""
    index = np.concatenate([RANDOM.uniform(0, (7, 8, 9), (count, 3)), [[-40, 4, 4], [4, 60, 4]]])
    return index @ OBLIQUE[:3, :3].T + OBLIQUE[:3, 3]


def lead_alike(ours, theirs, points):
    """Whether two transforms, of RAS and of LPS, lead to the same places within 1e-9 mm."""
    flip = np.array([-1.0, -1.0, 1.0])
    places = [theirs.TransformPoint(point) for point in (points * flip).tolist()]
    return np.abs(ours(points) - np.array(places) * flip).max() <= 1e-9


def test_a_displacement_field_of_sitk_leads_to_the_same_places():
    sitk = pytest.importorskip("SimpleITK")
    field = field_of_sitk()
    ours = volux.Displacement.from_sitk(field)
    theirs = sitk.DisplacementFieldTransform(sitk.Image(field))
    assert lead_alike(ours, theirs, points_of_the_world(200))


@pytest.mark.parametrize("dtype", ["float32", "float64"])
def test_a_composite_of_sitk_leads_to_the_same_places(dtype):
    sitk = pytest.importorskip("SimpleITK")
    first, ours_first = affine_of_sitk(np.eye(3) + 0.02 * TURN, (5, 6, 7), (0.1, -0.2, 0.3))
    last, ours_last = affine_of_sitk(TURN, (1, -2, 3), (4, 5, 6))
    field = field_of_sitk()
    if dtype == "float32":
        field = sitk.Cast(field, sitk.sitkVectorFloat32)
    ours = volux.compose(ours_first, volux.Displacement.from_sitk(field))
    ours = volux.compose(ours, ours_last)
    # SimpleITK applies what was added last first; its fields are of doubles.
    doubles = sitk.Cast(field, sitk.sitkVectorFloat64)
    theirs = sitk.CompositeTransform([last, sitk.DisplacementFieldTransform(doubles), first])
    assert lead_alike(ours, theirs, points_of_the_world(200))


def test_a_volume_warped_by_a_field_is_that_of_sitk():
    sitk = pytest.importorskip("SimpleITK")
    field = field_of_sitk(millimetres=0.4)
    image = volux.Image(ARRAY, OBLIQUE)
    inner = placed(np.column_stack([np.diag([0.6, 0.9, 0.7]), [1.5, 1.5, 1.5]]))
    grid = volux.Grid((8, 6, 9), OBLIQUE @ inner)
    warp = volux.Displacement.from_sitk(field)
    made = volux.resample(image, grid, transform=warp).array
    theirs = sitk.DisplacementFieldTransform(sitk.Image(field))
    assert agree(made, resampled_by_sitk(image, grid, "sitkLinear", theirs))


def test_one_file_through_nibabel_and_sitk_gives_identical_voxels(tmp_path):
    nibabel = pytest.importorskip("nibabel")
    sitk = pytest.importorskip("SimpleITK")
    path = tmp_path / "scan.nii.gz"
    nibabel.save(volux.Image(labels("int16", (9, 10, 11)), OBLIQUE).to_nibabel(), path)
    fortran = volux.Image.from_nibabel(nibabel.load(path))
    c_order = volux.Image.from_sitk(sitk.ReadImage(str(path)))
    assert (fortran.axes, c_order.axes) == ("xyz", "zyx")
    # SimpleITK takes the place apart into spacing and directions, which rounds it.
    c_order = volux.Image(c_order.array, fortran.affine[:, [2, 1, 0, 3]], axes="zyx")
    grid = volux.Grid((12, 13, 14), OBLIQUE @ TO_INDEX, axes="zyx")
    for interpolation in ("nearest", "linear", "cubic", "label"):
        made, again = (
            volux.resample(image, grid, interpolation=interpolation) for image in (fortran, c_order)
        )
        assert same_bits(made.array, again.array)
        made, again = (
            volux.resize(image, spacing=0.9, interpolation=interpolation)
            for image in (fortran, c_order)
        )
        assert volux.digest(made) == volux.digest(again)
