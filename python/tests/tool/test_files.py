"""What files say besides their voxels is kept, and what is wrong with them is told."""

import json
from pathlib import Path

import numpy as np
import pytest
import volux

from .runs import done, nibabel, oblique, run, save, sitk, spawned, voxels


def loaded(name):
    image = nibabel.load(name)
    return image, np.asarray(image.dataobj)


def test_a_sform_and_a_qform_that_differ_are_told_in_mm():
    image = nibabel.Nifti1Image(voxels(), np.diag([1, 1, 1, 1.0]))
    image.set_sform(np.diag([1, 1, 1, 1.0]), 1)
    moved = np.eye(4)
    moved[:3, 3] = 3, 0, 4
    image.set_qform(moved, 1)
    nibabel.save(image, "x.nii")
    ended = run("info", "x.nii", "--json")
    assert ended.err == (
        "volux: x.nii: sform and qform differ by 5 mm at the far corner; the sform is taken\n"
    )
    assert json.loads(ended.out)["affine"] == np.eye(4).tolist()


def test_nibabel_keeps_quiet_about_a_volume_that_only_gives_the_place():
    ct, odd = save("ct.nii"), Path("odd.nii")
    data = bytearray(Path(ct).read_bytes())
    data[108:112] = np.float32(356).tobytes()  # where voxels begin, which SPM wants at 16s
    odd.write_bytes(data[:352] + bytes(4) + data[352:])
    ended = spawned("resample", ct, "-o", "x.nii", "--like", odd, "--quiet", text=True)
    assert (ended.returncode, ended.stderr) == (0, "")


def test_a_file_without_a_place_is_told():
    image = nibabel.Nifti1Image(voxels(), None)
    image.header["pixdim"][1:4] = 1, 2, 3
    nibabel.save(image, "x.nii")
    assert "has neither sform nor qform" in run("info", "x.nii").err


PLACES = {
    "oblique and left-handed": oblique(),
    "right-handed": oblique() @ np.diag([-1, 1, 1, 1]),
    "far away": oblique(origin=(812.25, -523.5, 1234.75)),
}


def forms(name, affine, sform, qform):
    image = nibabel.Nifti1Image(voxels(), affine)
    image.set_sform(affine if sform else None, sform)
    image.set_qform(affine if qform else None, qform)
    nibabel.save(image, name)


@pytest.mark.parametrize(("sform", "qform"), [(1, 1), (2, 0), (0, 1)])
@pytest.mark.parametrize("place", PLACES)
def test_nibabel_and_simpleitk_find_a_result_where_volux_puts_it(place, sform, qform):
    forms("x.nii.gz", PLACES[place], sform, qform)
    done("resize", "x.nii.gz", "-o", "y.nii.gz", "--spacing", "0.8,1.5,2")
    affine = nibabel.load("x.nii.gz").affine
    wanted = volux.Grid.of_spacing(volux.Grid((12, 10, 8), affine, axes="xyz"), (0.8, 1.5, 2))
    found = nibabel.load("y.nii.gz").affine
    corner = np.array([*(n - 1 for n in wanted.shape), 1])
    # NIfTI keeps places as short floats: as many digits as those have.
    digits = 2 * np.spacing(np.float32(abs(wanted.affine).max()))
    np.testing.assert_allclose(found @ corner, wanted.affine @ corner, rtol=0, atol=digits)
    by_itk = sitk.ReadImage("y.nii.gz").TransformIndexToPhysicalPoint(corner[:3].tolist())
    np.testing.assert_allclose(by_itk * np.array([-1, -1, 1]), (found @ corner)[:3], atol=digits)


@pytest.mark.parametrize("place", PLACES)
@pytest.mark.parametrize("suffix", [".nrrd", ".mha"])
def test_formats_with_long_numbers_keep_places_to_a_millionth_of_a_mm(place, suffix):
    forms("x.nii.gz", PLACES[place], 1, 1)
    done("resize", "x.nii.gz", "-o", f"y{suffix}", "--spacing", "0.8,1.5,2")
    affine = nibabel.load("x.nii.gz").affine
    wanted = volux.Grid.of_spacing(volux.Grid((12, 10, 8), affine, axes="xyz"), (0.8, 1.5, 2))
    corner = [n - 1 for n in wanted.shape]
    by_itk = sitk.ReadImage(f"y{suffix}").TransformIndexToPhysicalPoint(corner)
    place = (wanted.affine @ [*corner, 1])[:3] * [-1, -1, 1]
    np.testing.assert_allclose(by_itk, place, rtol=0, atol=1e-6)


@pytest.mark.parametrize(("sform", "qform"), [(1, 3), (2, 0), (0, 1)])
def test_the_codes_of_a_place_are_kept(sform, qform):
    forms("x.nii", oblique(), sform, qform)
    done("resize", "x.nii", "-o", "y.nii", "--scale", 2)
    header = nibabel.load("y.nii").header
    assert int(header["sform_code"]) == (sform or qform)
    done("convert", "x.nii", "-o", "z.nii")
    header = nibabel.load("z.nii").header
    assert (int(header["sform_code"]), int(header["qform_code"])) == (sform, qform)


def test_scale_factors_stay_and_values_with_them():
    image = nibabel.Nifti1Image(voxels(), oblique())
    image.header.set_slope_inter(0.5, 100.0)
    nibabel.save(image, "x.nii")
    done("resize", "x.nii", "-o", "y.nii", "--scale", 2, "--outside", "fill", "--fill", 100)
    made = nibabel.load("y.nii")
    assert (made.dataobj.slope, made.dataobj.inter) == (0.5, 100.0)
    assert made.get_data_dtype() == np.int16
    values = volux.Image(np.asarray(nibabel.load("x.nii").dataobj), oblique(), axes="xyz")
    wanted = volux.resize(values, scale=2).array
    np.testing.assert_allclose(np.asarray(made.dataobj), wanted, rtol=0, atol=0.25)


def test_a_type_that_is_asked_for_gets_the_values():
    image = nibabel.Nifti1Image(voxels(), oblique())
    image.header.set_slope_inter(0.5, 100.0)
    nibabel.save(image, "x.nii")
    done("convert", "x.nii", "-o", "y.nii", "--dtype", "float32")
    made, values = loaded("y.nii")
    assert made.get_data_dtype() == np.float32
    np.testing.assert_array_equal(values, np.asarray(nibabel.load("x.nii").dataobj))


@pytest.mark.parametrize("shape", [(6, 5, 4, 3), (6, 5, 4, 1, 3), (6, 5, 4, 2, 3), (6, 5)])
def test_all_volumes_of_a_file_are_resized(shape):
    save("x.nii", voxels(shape))
    done("resize", "x.nii", "-o", "y.nii", "--scale", 1)
    whole = (*shape, 1)[:3] if len(shape) < 3 else shape
    np.testing.assert_array_equal(loaded("y.nii")[1], voxels(shape).reshape(whole))
    done("resize", "x.nii", "-o", "z.nii", "--scale", "2,1,1")
    assert loaded("z.nii")[1].shape == (12, *whole[1:])
    one = volux.Image(voxels(shape).reshape(whole)[(..., *[-1] * (len(whole) - 3))], axes="xyz")
    last = loaded("z.nii")[1][(..., *[-1] * (len(whole) - 3))]
    np.testing.assert_array_equal(last, volux.resize(one, scale=(2, 1, 1)).array)


def test_the_time_between_volumes_and_the_intent_are_kept():
    image = nibabel.Nifti1Image(voxels((6, 5, 4, 3)), oblique())
    image.header["pixdim"][4] = 2.5
    image.header.set_intent("t test", (10,), name="contrast")
    image.header["descrip"] = b"measured"
    image.header.set_xyzt_units("mm", "sec")
    extension = nibabel.nifti1.Nifti1Extension("comment", b"kept")
    image.header.extensions.append(extension)
    nibabel.save(image, "x.nii.gz")
    done("resize", "x.nii.gz", "-o", "y.nii.gz", "--scale", 2)
    header = nibabel.load("y.nii.gz").header
    assert header["pixdim"][4] == 2.5
    assert header.get_intent() == ("t test", (10.0,), "contrast")
    assert header["descrip"].item() == b"measured"
    assert header.extensions.get_codes() == [6]
    assert header.get_xyzt_units() == ("mm", "sec")


def test_big_endian_files_stay_so():
    header = nibabel.Nifti1Header(endianness=">")
    image = nibabel.Nifti1Image(voxels(), oblique(), header)
    image.set_data_dtype(np.int16)
    nibabel.save(image, "x.nii")
    assert Path("x.nii").read_bytes()[:4] == b"\x00\x00\x01\x5c"
    done("resize", "x.nii", "-o", "y.nii", "--scale", 1)
    assert Path("y.nii").read_bytes()[:4] == b"\x00\x00\x01\x5c"
    np.testing.assert_array_equal(loaded("y.nii")[1], voxels())


TYPES = ["int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64"]


@pytest.mark.parametrize("dtype", [*TYPES, "float32", "float64"])
def test_every_type_comes_back(dtype):
    array = voxels(dtype=np.uint8).astype(dtype)
    nibabel.save(nibabel.Nifti1Image(array, oblique(), dtype=dtype), "x.nii")
    done("resize", "x.nii", "-o", "y.nii", "--scale", 1)
    made, found = loaded("y.nii")
    assert made.get_data_dtype() == np.dtype(dtype)
    np.testing.assert_array_equal(found, array)


HELD = {"x.nii": "y.img", "x.img": "y.nii.gz", "x.nii.gz": "y.nii"}


@pytest.mark.parametrize("name", HELD)
def test_one_kind_of_nifti_becomes_another_with_all_that_it_says(name):
    image = (nibabel.Nifti1Pair if name == "x.img" else nibabel.Nifti1Image)(voxels(), oblique())
    image.set_sform(oblique(), 2)
    image.set_qform(oblique(), 3)
    image.header.set_slope_inter(2.0, 1.0)
    image.header.set_intent("t test", (10,), name="contrast")
    image.header["descrip"] = b"measured"
    nibabel.save(image, name)
    done("convert", name, "-o", HELD[name])
    header = nibabel.load(HELD[name]).header
    assert (int(header["sform_code"]), int(header["qform_code"])) == (2, 3)
    assert header.get_intent() == ("t test", (10.0,), "contrast")
    assert header["descrip"].item() == b"measured"
    made = nibabel.load(HELD[name]).dataobj
    assert (made.slope, made.inter) == (2.0, 1.0)
    np.testing.assert_array_equal(made.get_unscaled(), voxels())


FORMATS = ["x.nii", "x.nii.gz", "x.img", "x.mgz", "x.mgh", "x.nrrd", "x.mha", "x.mhd", "x.nhdr"]


# nibabel leaves a file of MGH open until it is collected.
@pytest.mark.filterwarnings("ignore::pytest.PytestUnraisableExceptionWarning")
@pytest.mark.parametrize("name", FORMATS)
def test_a_volume_goes_through_every_format(ct, name):
    done("convert", ct, "-o", name)
    done("convert", name, "-o", "back.nii.gz")
    np.testing.assert_array_equal(loaded("back.nii.gz")[1], loaded(ct)[1])
    compared = json.loads(run("compare", ct, "back.nii.gz", "--json").out)
    assert compared["different"] == 0
    assert compared["corners_mm"] < 1e-5


def test_nifti_2_stays_so():
    nibabel.save(nibabel.Nifti2Image(voxels(), oblique()), "x.nii")
    done("resize", "x.nii", "-o", "y.nii", "--scale", 2)
    assert isinstance(nibabel.load("y.nii"), nibabel.Nifti2Image)


def test_what_an_nrrd_says_besides_is_kept(ct):
    done("convert", ct, "-o", "x.nrrd")
    image = sitk.ReadImage("x.nrrd")
    image.SetMetaData("Segment0_Name", "liver")
    sitk.WriteImage(image, "x.nrrd")
    done("resize", "x.nrrd", "-o", "y.nrrd", "--scale", 2)
    assert sitk.ReadImage("y.nrrd").GetMetaData("Segment0_Name") == "liver"


def test_a_series_in_an_nrrd_is_resized_volume_by_volume():
    series = sitk.JoinSeries([sitk.GetImageFromArray(voxels((4, 5, 6), seed=n)) for n in range(3)])
    sitk.WriteImage(series, "x.nrrd")
    done("resize", "x.nrrd", "-o", "y.nii", "--scale", 2)
    last = volux.Image(voxels((4, 5, 6), seed=2))
    np.testing.assert_array_equal(loaded("y.nii")[1][..., 2], volux.resize(last, scale=2).array.T)


def test_what_a_reader_mends_is_told():
    data = bytearray(Path(save("x.nii")).read_bytes())
    data[80:84] = np.array(-1.0, "<f4").tobytes()  # the spacing along i
    Path("x.nii").write_bytes(data)
    ended = run("info", "x.nii")
    assert ended.code == 0
    assert ended.err.startswith("volux: x.nii: pixdim[1,2,3] should be positive")
    assert run("info", "x.nii", "--quiet").err == ""


def few(name, **header):
    return save(name, voxels(dtype=np.int16) % 4, **header)


LABELLED = {
    "by intent": (lambda: few("x.nii", intent_code=1002), []),
    "by name": (lambda: few("sub-1_dseg.nii.gz"), []),
    "by word": (lambda: few("x.nii"), ["--interp", "label"]),
}


@pytest.mark.parametrize("how", LABELLED)
def test_labels_are_recognised(how):
    make, words = LABELLED[how]
    name = make()
    ended = run("resize", name, "-o", "y.nii.gz", "--scale", 1.5, *words)
    assert (ended.code, ended.err.count("\n")) == (0, 1)
    image = volux.Image.from_nibabel(nibabel.load(name))
    wanted = volux.resize(image, scale=1.5, interpolation="label").array
    np.testing.assert_array_equal(loaded("y.nii.gz")[1], wanted)


def test_a_smooth_kernel_on_few_integers_is_warned_about():
    said = run("resize", few("x.nii"), "-o", "y.nii", "--scale", 2).err
    assert "has 4 integers, as labels do; linear makes new ones, and --interp label none" in said


def test_a_smooth_kernel_on_many_integers_is_not(ct):
    assert "label" not in run("resize", ct, "-o", "y.nii", "--scale", 2).err


def slices(heights, uid="1.2.3", folder="series", first=0):
    """DICOM slices at heights, whose names do not follow their order."""
    Path(folder).mkdir(exist_ok=True)
    for n, height in enumerate(heights):
        image = sitk.GetImageFromArray(np.full((1, 6, 5), int(height * 10), np.int16))
        image.SetSpacing((0.5, 0.75, 2.0))
        image.SetOrigin((10.0, 20.0, height))
        tags = {"0020|000e": uid, "0020|000d": "1.2", "0008|0060": "CT"}
        tags |= {"0020|0032": f"10\\20\\{height}", "0020|0037": "1\\0\\0\\0\\1\\0"}
        tags |= {"0020|0013": str(n), "0008|0018": f"{uid}.{n + 1}"}
        for key, value in tags.items():
            image.SetMetaData(key, value)
        writer = sitk.ImageFileWriter()
        writer.KeepOriginalImageUIDOn()
        writer.SetFileName(f"{folder}/{(first + 7 * n) % 101:03}.dcm")
        writer.Execute(image)
    return folder


def test_slices_are_sorted_by_their_positions():
    slices([8.0, 2.0, 6.0, 4.0])
    done("convert", "series", "-o", "x.nii.gz")
    image, values = loaded("x.nii.gz")
    assert values[0, 0].tolist() == [20, 40, 60, 80]
    np.testing.assert_allclose(
        image.affine, [[-0.5, 0, 0, -10], [0, -0.75, 0, -20], [0, 0, 2, 2], [0, 0, 0, 1]]
    )


def test_a_series_gives_its_grid_to_others(ct):
    slices([8.0, 2.0, 6.0, 4.0])
    done("resample", ct, "-o", "x.nii.gz", "--like", "series")
    image, values = loaded("x.nii.gz")
    assert (values.shape, image.affine[2, 3]) == ((5, 6, 4), 2.0)


def test_what_a_slice_says_of_a_patient_goes_nowhere():
    folder = slices([2.0])
    image = sitk.ReadImage(f"{folder}/000.dcm")
    image.SetMetaData("0010|0010", "Doe^Jane")
    sitk.WriteImage(image, "one.dcm")
    assert b"Doe^Jane" in Path("one.dcm").read_bytes()
    done("convert", "one.dcm", "-o", "x.nrrd")
    assert b"Doe" not in Path("x.nrrd").read_bytes()


def test_a_missing_slice_is_refused():
    ended = run("info", slices([2.0, 4.0, 8.0, 10.0]))
    assert (ended.code, ended.out) == (1, "")
    assert "series: 1 missing between 007.dcm and 014.dcm, which are 4 mm apart" in ended.err


def test_uneven_slices_are_refused():
    ended = run("info", slices([2.0, 4.0, 6.5, 8.5]))
    assert "series: uneven spacing between 007.dcm and 014.dcm" in ended.err


def test_two_slices_in_one_place_are_refused():
    ended = run("info", slices([2.0, 4.0, 4.0, 6.0]))
    assert "007.dcm and 014.dcm lie in the same place" in ended.err


def test_two_series_in_a_folder_are_refused():
    slices([2.0, 4.0])
    slices([2.0, 4.0, 6.0], uid="1.2.4", first=50)
    ended = run("info", "series")
    assert "the folder has 2 series, 1.2.3 (2), 1.2.4 (3)" in ended.err
