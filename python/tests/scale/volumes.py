"""Volumes in files, and plans of them, for the tests of volumes beyond one machine's memory."""

import json
from importlib.resources import files
from pathlib import Path

import numpy as np
import pytest
import volux

from ..tool.runs import done, nibabel, run, voxels

zarr = pytest.importorskip("zarr", reason="plans need the extra: pip install 'volux[scale]'")

SHAPE = (20, 27, 33)
SCALE = (2.0, 0.75, 0.5)
TRANSLATION = (-10.0, 4.0, 1.25)


def matches(name, printed):
    """Assert that JSON has a form that is committed."""
    jsonschema = pytest.importorskip("jsonschema")
    schema = json.loads((files("volux.tool") / "schemas" / f"{name}.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    jsonschema.validate(json.loads(printed), schema)


def multiscales(unit="millimeter", factor=1.0, axes="zyx", more=(), version=None):
    """The attributes of an OME-Zarr of one level, in a unit of which a mm has so many."""
    scale = [SCALE["zyx".index(axis)] * factor if axis in "zyx" else 1.0 for axis in axes]
    shift = [TRANSLATION["zyx".index(axis)] * factor if axis in "zyx" else 0.0 for axis in axes]
    image = {
        "name": "image",
        "axes": [
            {"name": axis, "type": "space", "unit": unit}
            if axis in "zyx"
            else {"name": axis, "type": {"t": "time", "c": "channel"}[axis]}
            for axis in axes
        ],
        "datasets": [
            {
                "path": "0",
                "coordinateTransformations": [
                    {"type": "scale", "scale": scale},
                    {"type": "translation", "translation": shift},
                ],
            }
        ],
    }
    image.update(more)
    if version is not None:
        image["version"] = version
    return image


def save_ome(name="image.zarr", array=None, version="0.5", shards=None, **place):
    """Save an OME-Zarr, 0.5 in Zarr 3 or 0.4 in Zarr 2."""
    array = voxels(SHAPE) if array is None else array
    group = zarr.open_group(name, mode="w", zarr_format=3 if version == "0.5" else 2)
    stored = group.create_array(
        "0", shape=array.shape, dtype=array.dtype, chunks=(7,) * array.ndim, shards=shards
    )
    stored[...] = array
    if version == "0.5":
        group.attrs["ome"] = {"version": version, "multiscales": [multiscales(**place)]}
    else:
        group.attrs["multiscales"] = [multiscales(version=version, **place)]
    return name


def placed(array):
    """The image of an array that `save_ome` saved."""
    affine = np.zeros((4, 4))
    affine[[2, 1, 0], [0, 1, 2]] = SCALE
    affine[[2, 1, 0, 3], 3] = [*TRANSLATION, 1.0]
    return volux.Image(array, affine, axes="zyx")


def planned(*options, file=None, verb="resize", chunk=8, unit="16,32,32"):
    """Plan a result, and return the plan's name."""
    file = save_ome() if file is None else file
    done("plan", verb, file, "-o", "out.zarr", "--chunk", chunk, "--unit", unit, *options)
    return "out.plan.json"


def made(*options, **how):
    """Plan a result, make it, verify it, and return its voxels."""
    plan = planned(*options, **how)
    done("run", plan)
    assert wrong_in(plan) == {}
    return zarr.open_array("out.zarr/0", mode="r")[...]


def wrong_in(plan="out.plan.json", *options):
    """What `volux verify` says is wrong: the task or the file, and why."""
    ended = run("verify", plan, "--quiet", *options)
    lines = [line.split("\t") for line in ended.out.splitlines()]
    assert ended.code == (1 if lines else 0), ended
    return {unit if task == "-" else int(task): what for task, unit, what in lines}


def tree_of(plan="out.plan.json"):
    """The digests of a complete result."""
    return json.loads(done("verify", plan, "--json"))["complete"]


def unit_of(task):
    """The file of a unit."""
    folder = Path("out.volux/0") / str(task // 1000)
    return Path("out.zarr") / json.loads((folder / f"{task}.json").read_text())["unit"]


def save_nifti(name="ct.nii", array=None, affine=None):
    """Save a NIfTI file whose axes run along those of the world."""
    array = voxels((33, 27, 20)) if array is None else array
    affine = np.diag([0.5, 0.75, 2.0, 1.0]) if affine is None else np.asarray(affine, float)
    nibabel.save(nibabel.Nifti1Image(array, affine), name)
    return name
