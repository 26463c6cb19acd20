"""Other programs read what is written: the voxels, in their place. Each may be missing."""

import contextlib

import numpy as np
import pytest

from ..tool.runs import done
from .volumes import SCALE, TRANSLATION, made, save_ome, zarr

# Every level has whole voxels of the cube, whose middle is the same place in all.
CUBE = np.s_[16:24, 8:16, 24:32]
MIDDLE = np.array(TRANSLATION) + np.array(SCALE) * [19.5, 11.5, 27.5]


@pytest.fixture(scope="module")
def store(tmp_path_factory):
    """A result with levels."""
    array = np.zeros((40, 32, 48), np.uint16)
    array[CUBE] = 1000
    folder = tmp_path_factory.mktemp("read")
    with contextlib.chdir(folder):
        save_ome(array=array, unit="micrometer", factor=1000.0)
        made("--scale", 1, file="image.zarr")
        done("pyramid", "out.zarr", "--levels", 4)
    return str(folder / "out.zarr")


def apart(array, scale, translation):
    """How many voxels there are between the middle of the cube and where a reader has it."""
    array = np.asarray(array, float)
    index = [np.average(range(n), weights=array.sum(axis=_others(a))) for a, n in _axes(array)]
    place = np.array(translation) + np.array(scale) * index
    return np.abs((place - MIDDLE) / scale).max()


def _axes(array):
    return enumerate(array.shape)


def _others(axis):
    return tuple({0, 1, 2} - {axis})


def test_ome_zarr_py_has_the_cube_in_its_place_at_each_level(store):
    reader = pytest.importorskip("ome_zarr.reader")
    from ome_zarr.io import parse_url

    [node] = reader.Reader(parse_url(store))()
    steps = node.metadata["coordinateTransformations"]
    assert len(node.data) == 4
    for array, (scale, shift) in zip(node.data, steps, strict=True):
        assert apart(array, scale["scale"], shift["translation"]) < 1e-3
    assert [axis["unit"] for axis in node.metadata["axes"]] == ["millimeter"] * 3


def test_ngff_zarr_has_the_cube_in_its_place_at_each_level(store):
    ngff_zarr = pytest.importorskip("ngff_zarr")
    images = ngff_zarr.from_ngff_zarr(store).images
    assert len(images) == 4
    for image in images:
        scale, shift = ([part[axis] for axis in "zyx"] for part in (image.scale, image.translation))
        assert apart(image.data, scale, shift) < 1e-3


def test_it_is_ome_zarr_by_its_models(store):
    models = pytest.importorskip("ome_zarr_models.v05")
    image = models.Image.from_zarr(zarr.open_group(store, mode="r"))
    assert len(image.ome_attributes.multiscales[0].datasets) == 4
