"""Images, and those of nibabel and SimpleITK."""

import gc
import pickle
from types import SimpleNamespace

import numpy as np
import pytest
import volux

from .volumes import placed, same_bits, volume

nibabel = pytest.importorskip("nibabel")
sitk = pytest.importorskip("SimpleITK")

# Turned by a quarter and flipped, with spacings that doubles hold: files keep it exactly.
PLACE = placed([[0, -0.75, 0, 12.5], [0.5, 0, 0, -40], [0, 0, -3, 100.25]])


def test_an_image_refers_to_its_array():
    array = volume()
    assert volux.Image(array).array is array


def test_the_world_of_an_image_without_an_affine_is_its_index_space():
    assert np.array_equal(volux.Image(volume()).affine, np.eye(4))


def test_shape_and_spacing_are_along_the_axes_of_the_array():
    image = volux.Image(volume(shape=(4, 5, 6, 2)), PLACE, axes="xyz")
    assert image.shape == (4, 5, 6)
    assert image.spacing == (0.5, 0.75, 3.0)
    assert image.channels == 2
    assert image.axes == "xyz"
    assert image.grid == volux.Grid((4, 5, 6), PLACE, axes="xyz")


def test_an_array_of_three_axes_has_no_channels():
    assert volux.Image(volume()).channels is None


def test_a_number_of_channels_that_is_there_is_accepted():
    assert volux.Image(volume(shape=(2, 2, 2, 3)), channels=3).channels == 3


@pytest.mark.parametrize("name", ["array", "affine", "shape", "grid"])
def test_an_image_can_not_be_changed(name):
    with pytest.raises(AttributeError):
        setattr(volux.Image(volume()), name, None)


def test_an_image_pickles():
    image = volux.Image(volume(), PLACE, axes="xyz")
    again = pickle.loads(pickle.dumps(image))
    assert again.grid == image.grid
    assert same_bits(again.array, image.array)


def test_an_image_says_what_it_is():
    image = volux.Image(volume(shape=(4, 5, 6, 2)), PLACE, axes="xyz")
    assert repr(image) == (
        "<Image of int16, shape=(4, 5, 6), spacing=(0.5, 0.75, 3.0), axes='xyz', channels=2>"
    )


def test_an_image_of_nibabel_is_read_where_it_is():
    array = volume()
    image = volux.Image.from_nibabel(nibabel.Nifti1Image(array, PLACE))
    assert image.array is array
    assert image.axes == "xyz"
    assert np.array_equal(image.affine, PLACE)


def test_a_file_of_nibabel_that_is_not_compressed_stays_on_disk(tmp_path):
    nibabel.save(nibabel.Nifti1Image(volume(), PLACE), tmp_path / "scan.nii")
    image = volux.Image.from_nibabel(nibabel.load(tmp_path / "scan.nii"))
    assert isinstance(image.array.base, np.memmap)
    assert same_bits(np.ascontiguousarray(image.array), volume())


def test_voxels_that_a_file_scales_are_as_nibabel_scales_them(tmp_path):
    nifti = nibabel.Nifti1Image(volume(), PLACE)
    nifti.header.set_slope_inter(0.5, -10)
    nibabel.save(nifti, tmp_path / "scan.nii.gz")
    loaded = nibabel.load(tmp_path / "scan.nii.gz")
    assert np.array_equal(volux.Image.from_nibabel(loaded).array, loaded.get_fdata())


def test_vectors_of_nifti_become_channels():
    nifti = nibabel.Nifti1Image(volume("float32", (4, 5, 6, 1, 3)), PLACE)
    image = volux.Image.from_nibabel(nifti)
    assert image.shape == (4, 5, 6)
    assert image.channels == 3


def test_voxels_in_the_byte_order_of_another_machine_are_refused():
    nifti = nibabel.Nifti1Image(volume().astype(">i2"), PLACE)
    with pytest.raises(TypeError, match="newbyteorder"):
        volux.Image.from_nibabel(nifti)


@pytest.mark.parametrize("axes", ["xyz", "zyx", "yxz"])
def test_nibabel_and_back_returns_voxels_and_affine_exactly(axes):
    image = volux.Image(volume("float32"), PLACE, axes=axes)
    nifti = image.to_nibabel()
    again = volux.Image.from_nibabel(nifti)
    assert np.shares_memory(again.array, image.array)
    grid = image.grid
    order = ["xyz".index(axis) for axis in axes]
    assert np.array_equal(again.affine[:, [*order, 3]], grid.affine)
    assert volux.digest(again) == volux.digest(image)


@pytest.mark.parametrize(("step", "origin"), [(1e39, 0), (1e-39, 0), (1, -1e39), (1e300, 1e300)])
def test_a_place_that_nifti_cannot_keep_is_refused(step, origin):
    place = np.diag([1.0, step, 1.0, 1.0])
    place[2, 3] = origin
    with pytest.raises(ValueError, match="has numbers beyond float32, as NIfTI keeps it"):
        volux.Image(volume(), place).to_nibabel()


def test_a_place_that_is_singular_for_sitk_is_refused():
    place = np.diag([1e-200, 1e-200, 1e-200, 1.0])
    with pytest.raises(ValueError, match=r"affine=.* is singular for SimpleITK"):
        volux.Image(volume(), place).to_sitk()


def test_bools_become_bytes_for_nibabel_and_sitk():
    image = volux.Image(volume("bool"))
    assert image.to_nibabel().get_data_dtype() == np.uint8
    assert image.to_sitk().GetPixelID() == sitk.sitkUInt8


def of_sitk():
    scan = sitk.GetImageFromArray(volume())
    scan.SetSpacing((0.5, 0.75, 3.0))
    scan.SetOrigin((-12.5, 40.0, 100.25))
    scan.SetDirection((0, 1, 0, -1, 0, 0, 0, 0, -1))
    return scan


def test_an_image_of_sitk_is_read_where_it_is_and_kept_alive():
    scan = of_sitk()
    address = sitk.GetArrayViewFromImage(scan).__array_interface__["data"][0]
    image = volux.Image.from_sitk(scan)
    del scan
    gc.collect()
    assert image.array.__array_interface__["data"][0] == address
    assert not image.array.flags.writeable
    assert same_bits(image.array.copy(), volume())


def test_the_world_of_sitk_is_turned_to_ours():
    scan = of_sitk()
    image = volux.Image.from_sitk(scan)
    for index in ((0, 0, 0), (5, 0, 0), (0, 4, 0), (0, 0, 3), (1, 2, 3)):
        x, y, z = scan.TransformIndexToPhysicalPoint(index)
        assert (image.affine @ [*index[::-1], 1])[:3].tolist() == [-x, -y, z]


@pytest.mark.parametrize("axes", ["xyz", "zyx", "yxz"])
@pytest.mark.parametrize("shape", [(4, 5, 6), (4, 5, 6, 3)])
def test_sitk_and_back_returns_voxels_and_affine_exactly(axes, shape):
    image = volux.Image(volume("float32", shape), PLACE, axes=axes)
    again = volux.Image.from_sitk(image.to_sitk())
    assert again.axes == "zyx"
    assert volux.digest(again) == volux.digest(image)


def test_an_oblique_place_survives_sitk_up_to_rounding():
    oblique = placed([[0.3, 0.4, -0.1, 10], [-0.5, 0.2, 0.7, 20], [0.1, 0.6, 2.0, 30]])
    again = volux.Image.from_sitk(volux.Image(volume(), oblique).to_sitk())
    assert again.affine == pytest.approx(oblique, rel=1e-15, abs=1e-15)


def test_one_file_through_nibabel_and_sitk_gives_identical_voxels(tmp_path):
    path = tmp_path / "scan.nii"
    nibabel.save(nibabel.Nifti1Image(volume(), PLACE), path)
    fortran = volux.Image.from_nibabel(nibabel.load(path))
    c_order = volux.Image.from_sitk(sitk.ReadImage(str(path)))
    assert volux.digest(fortran) == volux.digest(c_order)
    grid = volux.Grid.of_spacing(c_order, (1.1, 0.4, 0.7))
    for kernel in ("nearest", "linear", "cubic", "label"):
        made, again = (
            volux.resample(image, grid, interpolation=kernel) for image in (fortran, c_order)
        )
        assert same_bits(made.array, again.array)


def test_a_picture_of_sitk_is_refused_with_the_call_that_makes_a_volume():
    with pytest.raises(ValueError, match=r"2 dimensions; it must have 3: SimpleITK\.JoinSeries"):
        volux.Image.from_sitk(sitk.Image(4, 4, sitk.sitkInt16))


@pytest.mark.parametrize("convert", [volux.Image.from_nibabel, volux.Image.from_sitk])
def test_what_is_no_image_of_the_library_is_refused(convert):
    with pytest.raises(TypeError, match="image is a ndarray; it must be an image of"):
        convert(volume())


def test_an_image_of_nibabel_has_an_affine():
    with pytest.raises(TypeError, match="is a SimpleNamespace; it must be an image of nibabel"):
        volux.Image.from_nibabel(SimpleNamespace(dataobj=volume()))


def test_a_displacement_field_of_sitk_leads_where_it_leads_there():
    random = np.random.default_rng(9)
    field = sitk.GetImageFromArray(random.normal(0, 2, (6, 7, 8, 3)), isVector=True)
    field.SetSpacing((1.5, 0.75, 2.0))
    field.SetOrigin((-5.0, 3.0, 20.0))
    turn = 0.3
    field.SetDirection((np.cos(turn), -np.sin(turn), 0, np.sin(turn), np.cos(turn), 0, 0, 0, 1))
    transform = volux.Displacement.from_sitk(field)
    theirs = sitk.DisplacementFieldTransform(sitk.Image(field))
    index = random.uniform((0, 0, 0), (7, 6, 5), (50, 3))
    for point in index:
        lps = field.TransformContinuousIndexToPhysicalPoint(point.tolist())
        x, y, z = theirs.TransformPoint(lps)
        found = transform((-lps[0], -lps[1], lps[2]))
        assert found == pytest.approx([-x, -y, z], abs=1e-9)
