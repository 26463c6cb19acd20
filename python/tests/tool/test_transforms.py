"""Transforms of files, each beside what the tool that wrote it makes of it."""

import json
from pathlib import Path

import numpy as np
import pytest
import volux

from .runs import done, nibabel, run, save, sitk

TURN = np.diag([-1.0, -1.0, 1.0, 1.0])


@pytest.fixture
def scan():
    """A smooth volume as ITK has it, so that the edges of voxels do not matter."""
    z, y, x = np.mgrid[:16, :20, :24]
    values = 100 * np.sin(x / 5.0) + 50 * np.cos(y / 4.0) + 3.0 * z
    image = sitk.GetImageFromArray(values)
    image.SetSpacing((1.0, 1.25, 2.0))
    image.SetOrigin((5.0, -3.0, 8.0))
    image.SetDirection(rigid().GetMatrix())
    sitk.WriteImage(image, "scan.nrrd")
    return image


def rigid():
    transform = sitk.Euler3DTransform()
    transform.SetRotation(0.11, -0.07, 0.05)
    transform.SetTranslation((0.5, -0.75, 1.0))
    transform.SetCenter((10.0, 8.0, 20.0))
    return transform


def scaled():
    transform = sitk.AffineTransform(3)
    transform.Scale((1.05, 0.95, 1.1))
    transform.SetCenter((12.0, 10.0, 20.0))
    return transform


def versor():
    return sitk.VersorRigid3DTransform((0.0, 0.6, 0.8), 0.1, (0.3, 0.2, 0.1), (9.0, 9.0, 20.0))


def shifted():
    return sitk.TranslationTransform(3, (0.4, -0.3, 0.2))


def field(image):
    """A displacement field on a coarser grid of its own that contains the image."""
    coarse = sitk.Image([12, 12, 12], sitk.sitkFloat64)
    coarse.SetSpacing((4.0, 4.0, 5.0))
    coarse.SetOrigin(np.subtract(image.GetOrigin(), 8.0).tolist())
    coarse.SetDirection(image.GetDirection())
    k, j, i = np.mgrid[:12, :12, :12]
    vectors = np.stack([np.sin(i), np.cos(j), 0.5 * np.sin(k)], axis=-1)
    made = sitk.GetImageFromArray(vectors, isVector=True)
    made.CopyInformation(coarse)
    return made


def warp(image):
    return sitk.DisplacementFieldTransform(sitk.Image(field(image)))


def composite(image):
    return sitk.CompositeTransform([rigid(), warp(image), scaled()])


def resampled(image, transform):
    return sitk.Resample(image, image, transform, sitk.sitkLinear, -1e6, sitk.sitkFloat64)


def compared(expected, *arguments):
    """Compare where ITK reads within the volume: at its very edge the two round differently."""
    done("resample", "scan.nrrd", "-o", "moved.nrrd", "--fill", -1e6, "--no-sidecar", *arguments)
    made = sitk.GetArrayFromImage(sitk.ReadImage("moved.nrrd"))
    wanted = sitk.GetArrayFromImage(expected)
    inside = (wanted > -1e5) & (made > -1e5)
    assert inside.mean() > 0.5
    assert ((wanted > -1e5) & ~inside).mean() == 0.0
    np.testing.assert_allclose(made[inside], wanted[inside], rtol=0, atol=1e-8)


LINEAR = {"rigid": rigid, "scaled": scaled, "versor": versor, "shifted": shifted}


@pytest.mark.parametrize("suffix", [".tfm", ".txt", ".h5"])
@pytest.mark.parametrize("name", LINEAR)
def test_linear_transforms_of_itk_move_as_in_itk(scan, name, suffix):
    transform = LINEAR[name]()
    sitk.WriteTransform(transform, f"t{suffix}")
    compared(resampled(scan, transform), "--transform", f"t{suffix}")


@pytest.mark.parametrize("suffix", [".tfm", ".h5"])
def test_displacement_fields_in_transforms_of_itk_move_as_in_itk(scan, suffix):
    sitk.WriteTransform(warp(scan), f"t{suffix}")
    compared(resampled(scan, warp(scan)), "--transform", f"t{suffix}")


@pytest.mark.parametrize("suffix", [".tfm", ".h5"])
def test_composites_of_itk_move_as_in_itk(scan, suffix):
    sitk.WriteTransform(composite(scan), f"t{suffix}")
    compared(resampled(scan, composite(scan)), "--transform", f"t{suffix}")


@pytest.mark.parametrize("suffix", [".nrrd", ".mha"])
def test_displacement_fields_in_images_move_as_in_itk(scan, suffix):
    sitk.WriteImage(field(scan), f"u{suffix}")
    again = sitk.DisplacementFieldTransform(sitk.ReadImage(f"u{suffix}", sitk.sitkVectorFloat64))
    compared(resampled(scan, again), "--transform", f"u{suffix}")


@pytest.mark.parametrize("intent", [1007, 1006])
def test_displacement_fields_in_nifti_move_as_itk_reads_them(scan, intent):
    sitk.WriteImage(sitk.Cast(field(scan), sitk.sitkVectorFloat32), "u.nii.gz")
    image = nibabel.load("u.nii.gz")
    image.header.set_intent(intent)
    nibabel.save(image, "u.nii.gz")
    again = sitk.DisplacementFieldTransform(sitk.ReadImage("u.nii.gz", sitk.sitkVectorFloat64))
    compared(resampled(scan, again), "--transform", "u.nii.gz")


@pytest.mark.parametrize("name", ["scaled", "rigid"])
def test_affines_of_ants_move_as_in_itk(scan, name):
    transform = LINEAR[name]()
    affine = sitk.AffineTransform(3)
    affine.SetMatrix(transform.GetMatrix())
    affine.SetTranslation(transform.GetTranslation())
    affine.SetCenter(transform.GetCenter())
    sitk.WriteTransform(affine, "0GenericAffine.mat")  # in MATLAB's form, as ANTs writes it
    compared(resampled(scan, transform), "--transform", "0GenericAffine.mat")


@pytest.mark.parametrize("suffix", [".txt", ".csv"])
def test_matrices_lead_from_output_to_input_in_ras(scan, suffix):
    linear = scaled()
    matrix = np.eye(4)
    matrix[:3, :3] = np.reshape(linear.GetMatrix(), (3, 3))
    matrix[:3, 3] = linear.TransformPoint((0.0, 0.0, 0.0))
    np.savetxt(f"m{suffix}", TURN @ matrix @ TURN, delimiter="," if suffix == ".csv" else " ")
    compared(resampled(scan, linear), "--transform", f"m{suffix}")


def test_the_first_transform_is_applied_first(scan):
    sitk.WriteTransform(rigid(), "first.tfm")
    sitk.WriteTransform(scaled(), "then.tfm")
    both = sitk.CompositeTransform([scaled(), rigid()])  # the last one is applied first
    compared(resampled(scan, both), "-t", "first.tfm", "-t", "then.tfm")


def test_two_displacement_fields_are_joined_at_the_voxels_of_the_result(scan):
    sitk.WriteImage(field(scan), "u.nrrd")
    sitk.WriteTransform(rigid(), "between.tfm")
    both = sitk.CompositeTransform([warp(scan), rigid(), warp(scan)])
    compared(resampled(scan, both), "-t", "u.nrrd", "-t", "between.tfm", "-t", "u.nrrd")


def test_a_grid_and_a_transform_go_together(scan):
    like = sitk.Image([10, 12, 14], sitk.sitkUInt8)
    like.SetSpacing((2.0, 2.0, 1.5))
    like.SetOrigin((8.0, 0.0, 12.0))
    like.SetDirection(scan.GetDirection())
    sitk.WriteImage(like, "like.nrrd")
    sitk.WriteTransform(rigid(), "t.tfm")
    wanted = sitk.Resample(scan, like, rigid(), sitk.sitkLinear, -1e6, sitk.sitkFloat64)
    compared(wanted, "--like", "like.nrrd", "--transform", "t.tfm", "--antialias", "none")


def test_the_grid_of_a_nifti_serves_an_nrrd(scan):
    save("like.nii.gz")
    done("resample", "scan.nrrd", "-o", "x.nii.gz", "--like", "like.nii.gz")
    np.testing.assert_array_equal(
        nibabel.load("x.nii.gz").affine, nibabel.load("like.nii.gz").affine
    )
    assert scan.GetDimension() == 3


def test_the_tool_makes_what_the_package_makes(ct):
    matrix = np.eye(4)
    matrix[0, 3] = 2.5
    np.savetxt("m.txt", matrix)
    done("resample", ct, "-o", "x.nii.gz", "--transform", "m.txt", "--interp", "cubic")
    image = volux.Image.from_nibabel(nibabel.load(ct))
    wanted = volux.resample(image, transform=volux.Affine(matrix), interpolation="cubic")
    np.testing.assert_array_equal(np.asarray(nibabel.load("x.nii.gz").dataobj), wanted.array)


def test_transforms_are_named_and_digested_in_the_sidecar(ct):
    np.savetxt("m.txt", np.eye(4))
    done("resample", ct, "-o", "x.nii.gz", "--transform", Path("m.txt").resolve())
    said = Path("x.json").read_text()
    assert '"m.txt"' in said
    assert str(Path.cwd()) not in said


def test_a_transform_is_never_the_output(ct):
    sitk.WriteTransform(rigid(), "t.h5")
    ended = run("resample", ct, "-o", "t.h5", "--transform", "t.h5", "--force")
    assert (ended.code, "t.h5: is an input" in ended.err) == (2, True)


def test_under_a_field_the_plan_does_not_guess_what_lies_outside(scan):
    sitk.WriteImage(field(scan), "u.nrrd")
    typed = ("resample", "scan.nrrd", "--transform", "u.nrrd", "--dry-run")
    assert json.loads(done(*typed, "--json"))["outside"] is None
    assert "unknown under a field" in done(*typed)


def test_through_an_affine_the_plan_says_what_lies_outside(ct):
    matrix = np.eye(4)
    matrix[0, 3] = -6.0  # half of the twelve voxels of 1 mm along x
    np.savetxt("m.txt", matrix)
    plan = json.loads(done("resample", ct, "--transform", "m.txt", "--dry-run", "--json"))
    assert plan["outside"] == pytest.approx(0.5, abs=0.05)
    np.testing.assert_allclose(plan["factors"], 1.0, rtol=1e-6)
