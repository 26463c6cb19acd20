"""What plans read: each format gives the voxels in their place."""

from pathlib import Path

import numpy as np
import pytest
import volux
from volux.scale import _ome, _raw, _sources
from volux.tool._errors import Refusal

from ..tool.runs import nibabel, oblique, voxels
from .volumes import SCALE, SHAPE, TRANSLATION, multiscales, placed, save_nifti, save_ome, zarr


def read(name, layout=_raw.UNKNOWN):
    """The source of a file, whose boxes must be those of the whole."""
    source = _sources.opened(str(name), layout)
    whole = source.read(tuple(slice(0, n) for n in source.grid.shape))
    assert source.dtype == whole.dtype
    assert whole.shape == source.grid.shape
    box = tuple(slice(n // 3, n // 3 + 2) for n in whole.shape)
    assert np.array_equal(source.read(box), whole[box])
    return source, whole


def lies_as(source, image):
    return np.allclose(source.grid.affine, image.affine, rtol=0, atol=1e-12)


@pytest.mark.parametrize("version", ["0.4", "0.5"])
@pytest.mark.parametrize(
    ("unit", "factor"),
    [("millimeter", 1.0), ("micrometer", 1e3), ("nanometer", 1e6), ("meter", 1e-3), (None, 1.0)],
)
def test_ome_zarr_is_read_in_mm(version, unit, factor):
    source, found = read(save_ome(version=version, unit=unit, factor=factor))
    assert source.kind == f"OME-Zarr {version}"
    assert np.array_equal(found, voxels(SHAPE))
    assert lies_as(source, placed(found))


@pytest.mark.parametrize("axes", ["tczyx", "czyx", "zcyx"])
def test_axes_of_extent_1_that_are_not_of_space_are_left_out(axes):
    shape = [SHAPE["zyx".index(axis)] if axis in "zyx" else 1 for axis in axes]
    source, found = read(save_ome(array=voxels(SHAPE).reshape(shape), axes=axes))
    assert np.array_equal(found, voxels(SHAPE))
    assert lies_as(source, placed(found))


@pytest.mark.parametrize("axes", ["xyz", "yzx"])
def test_axes_of_space_may_come_in_any_order(axes):
    order = ["zyx".index(axis) for axis in axes]
    source, found = read(save_ome(array=voxels(SHAPE).transpose(order), axes=axes))
    assert np.array_equal(found, voxels(SHAPE))
    assert lies_as(source, placed(found))
    assert source.in_order([axes.index(axis) for axis in axes]) == tuple(map(axes.index, "zyx"))


def test_transformations_of_the_whole_image_come_after_those_of_a_level():
    more = {
        "coordinateTransformations": [
            {"type": "scale", "scale": [2.0, 3.0, 4.0]},
            {"type": "translation", "translation": [1.0, 1.0, 1.0]},
        ]
    }
    source, _ = read(save_ome(more=more))
    scale, translation = _ome.parts(source.grid.affine)
    assert np.allclose(scale, np.multiply(SCALE, [2, 3, 4]))
    assert np.allclose(translation, np.multiply(TRANSLATION, [2, 3, 4]) + 1)


def test_a_level_is_read_by_its_own_name_and_place():
    save_ome()
    group = zarr.open_group("image.zarr", mode="r+")
    half = group.create_array("1", data=voxels((10, 13, 16)))
    image = multiscales()
    level = {"type": "scale", "scale": [4.0, 1.5, 1.0]}
    image["datasets"].append({"path": "1", "coordinateTransformations": [level]})
    group.attrs["ome"] = {"version": "0.5", "multiscales": [image]}
    source, found = read("image.zarr/1")
    assert np.array_equal(found, half[...])
    assert _ome.parts(source.grid.affine) == ((4.0, 1.5, 1.0), (0.0, 0.0, 0.0))
    assert read("image.zarr")[0].grid.shape == SHAPE


@pytest.mark.parametrize("version", [2, 3])
@pytest.mark.parametrize("dtype", ["uint8", ">i2", "<u4", ">f4", "float64"])
def test_a_plain_zarr_lies_where_voxel_says(version, dtype):
    array = voxels(SHAPE, np.dtype(dtype).newbyteorder("="))
    stored = zarr.create_array(
        "plain.zarr", shape=SHAPE, dtype=dtype, chunks=(9, 9, 9), zarr_format=version
    )
    stored[...] = array
    source, found = read("plain.zarr", _raw.layout(None, "3,2,1"))
    assert np.array_equal(found, array)
    assert found.dtype.isnative
    assert source.grid.spacing == (3.0, 2.0, 1.0)


FLIPS = {
    "RAS": [[1, 0, 0], [0, 1, 0], [0, 0, 1]],
    "LPS": [[-1, 0, 0], [0, -1, 0], [0, 0, 1]],
    "SLA": [[0, -1, 0], [0, 0, 1], [1, 0, 0]],
    "PIR": [[0, 0, 1], [-1, 0, 0], [0, -1, 0]],
}


@pytest.mark.parametrize("name", FLIPS)
def test_a_nifti_file_is_turned_so_that_its_axes_run_upwards(name):
    affine = np.eye(4)
    affine[:3, :3] = np.array(FLIPS[name]) * [0.5, 0.75, 2.0]
    affine[:3, 3] = [3, -4, 5]
    file = save_nifti(affine=affine)
    assert "".join(nibabel.aff2axcodes(affine)) == name
    source, found = read(file)
    turned = nibabel.as_closest_canonical(nibabel.load(file))
    expected = volux.Image.from_nibabel(turned)
    assert np.array_equal(found, np.asarray(turned.dataobj).T)
    assert np.allclose(source.grid.affine[:, [2, 1, 0, 3]], expected.affine, rtol=0, atol=1e-12)


def test_an_oblique_nifti_file_keeps_its_axes():
    source, found = read(save_nifti(affine=oblique()))
    assert np.array_equal(found, voxels((33, 27, 20)).T)
    assert np.allclose(source.grid.affine[:, [2, 1, 0, 3]], oblique(), rtol=0, atol=1e-6)


def test_numbers_along_the_axes_of_a_turned_file_are_turned_as_well():
    affine = np.zeros((4, 4))
    affine[[1, 2, 0, 3], [0, 1, 2, 3]] = 1  # i is y, j is z, k is x
    source, _ = read(save_nifti(affine=affine))
    assert source.in_order("ijk") == ("j", "i", "k")


def test_a_nifti_file_is_mapped_and_not_read():
    source, _ = read(save_nifti())
    array = source.array
    while not isinstance(array, np.memmap):
        array = array.base
    assert Path(array.filename).name == "ct.nii"


@pytest.mark.parametrize("dtype", ["uint8", "<i2", ">u2", "float32"])
def test_raw_voxels_follow_a_header_of_any_length(dtype):
    array = voxels((7, 6, 5), dtype)
    Path("x.raw").write_bytes(b"header!" + array.tobytes(order="F"))
    source, found = read("x.raw", _raw.layout(f"{dtype},7,6,5", "0.5,1,2"))
    assert np.array_equal(found, array.T)
    assert source.grid.spacing == (2.0, 1.0, 0.5)


@pytest.mark.parametrize("header", [b"{'descr': '<i2', 'shape': (2,", b'"""', b"[" * 200])
def test_a_file_of_numpys_with_a_broken_header_is_refused(header):
    header = header.ljust(118) + b"\n"
    Path("x.npy").write_bytes(b"\x93NUMPY\x01\x00" + len(header).to_bytes(2, "little") + header)
    with pytest.raises(Refusal, match=r"x\.npy: NumPy cannot map it: "):
        _sources.opened("x.npy")


def test_a_file_of_numpys_that_cannot_be_read_is_no_broken_one(monkeypatch):
    def load(*_, **__):
        raise PermissionError(13, "Permission denied", "x.npy")

    Path("x.npy").touch()
    monkeypatch.setattr(np, "load", load)
    with pytest.raises(PermissionError):
        _sources.opened("x.npy")


def test_a_file_of_numpys_is_mapped():
    np.save("x.npy", voxels(SHAPE))
    source, found = read("x.npy")
    assert np.array_equal(found, voxels(SHAPE))
    assert source.grid.spacing == (1.0, 1.0, 1.0)


@pytest.mark.parametrize(("name", "are"), [("x_dseg.nii", True), ("x.nii", False)])
def test_labels_are_known_by_the_name(name, are):
    assert read(save_nifti(name))[0].labels is are


def test_another_place_or_other_extents_are_another_source():
    digests = {read(save_ome(f"{n}.zarr", **how))[0].digest for n, how in enumerate(OTHERS)}
    assert len(digests) == len(OTHERS)
    assert read(save_ome("again.zarr"))[0].digest in digests


OTHERS = (
    {},
    {"factor": 2.0},
    {"unit": "micrometer"},
    {"array": voxels((20, 27, 32))},
    {"array": voxels(SHAPE, np.int32)},
    {"version": "0.4"},
)
