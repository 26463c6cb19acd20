"""Plans: what they hold, what they refuse, and that results have the bits of the whole."""

import itertools
import json
from pathlib import Path

import numpy as np
import pytest
import volux
from volux.scale._units import Units

from ..tool.runs import done, oblique, run, voxels
from .volumes import SHAPE, made, placed, planned, save_nifti, save_ome, zarr


def same(found, expected):
    return found.dtype == expected.dtype and np.array_equal(found, expected, equal_nan=True)


SIZES = {
    "--scale 2": {"scale": 2.0},
    "--scale 0.4 --antialias auto": {"scale": 0.4},
    "--spacing 1": {"spacing": 1.0},
    "--shape 41,20,17 --align centres": {"shape": (41, 20, 17), "align": "centres"},
    "--spacing 0.9,0.7,0.3 --interp cubic": {
        "spacing": (0.9, 0.7, 0.3),
        "interpolation": "cubic",
    },
    "--scale 0.3 --interp label": {"scale": 0.3, "interpolation": "label"},
    "--scale 1.7 --dtype float32 --border constant --fill 7": {
        "scale": 1.7,
        "dtype": "float32",
        "border": "constant",
        "fill": 7,
        "outside": "fill",
    },
}


@pytest.mark.parametrize("typed", SIZES)
def test_units_have_the_bits_of_the_whole_resized(typed):
    whole = volux.resize(placed(voxels(SHAPE)), **SIZES[typed])
    assert same(made(*typed.split()), whole.array)


TURN = "0.8 -0.6 0 4.5\n0.6 0.8 0.1 -3\n0 0.05 1 1\n0 0 0 1\n"
PLACES = {
    "--interp linear": {},
    "--interp cubic --fill -1000": {"interpolation": "cubic", "fill": -1000},
    "--interp nearest --dtype float64 --outside extend": {
        "interpolation": "nearest",
        "dtype": "float64",
        "outside": "extend",
    },
    "--antialias mean --border constant": {"antialias": "mean", "border": "constant"},
}


@pytest.mark.parametrize("typed", PLACES)
def test_units_have_the_bits_of_the_whole_resampled(typed):
    Path("turn.txt").write_text(TURN)
    affine = volux.Affine(np.loadtxt("turn.txt"))
    image = placed(voxels(SHAPE))
    whole = volux.resample(image, transform=affine, **{"antialias": None, **PLACES[typed]})
    assert same(made("-t", "turn.txt", *typed.split(), verb="resample"), whole.array)


def test_units_have_the_bits_of_the_whole_under_a_displacement_field():
    from ..tool.runs import sitk

    field = sitk.GetImageFromArray(np.random.default_rng(5).normal(0, 2, (6, 7, 8, 3)), True)
    field.SetSpacing((3.0, 4.0, 8.0))
    field.SetOrigin((-5.0, -8.0, -12.0))
    sitk.WriteImage(field, "field.nrrd")
    whole = volux.resample(
        placed(voxels(SHAPE)), transform=volux.Displacement.from_sitk(field), antialias=None
    )
    assert same(made("-t", "field.nrrd", verb="resample"), whole.array)


def test_a_result_is_on_the_grid_of_another_volume():
    save_ome("pet.zarr", voxels(SHAPE, seed=8))
    like = save_nifti(affine=[[-1, 0, 0, 14], [0, 1, 0, 5], [0, 0, 1.5, -9], [0, 0, 0, 1]])
    found = made("--like", like, file="pet.zarr", verb="resample")
    affine = np.zeros((4, 4))
    affine[[2, 1, 0, 3], [0, 1, 2, 3]] = 1.5, 1.0, 1.0, 1.0
    affine[:3, 3] = 14 - 32, 5, -9
    grid = volux.Grid((20, 27, 33), affine, axes="zyx")
    pet = placed(voxels(SHAPE, seed=8))
    assert same(found, volux.resample(pet, grid, antialias=None).array)


def test_what_is_written_is_ome_zarr_in_mm():
    made("--spacing", 1, file=save_ome(unit="micrometer", factor=1000.0))
    [image] = zarr.open_group("out.zarr", mode="r").attrs["ome"]["multiscales"]
    whole = volux.resize(placed(voxels(SHAPE)), spacing=1.0)
    assert [axis["unit"] for axis in image["axes"]] == ["millimeter"] * 3
    assert image["datasets"][0]["coordinateTransformations"] == [
        {"type": "scale", "scale": [1.0, 1.0, 1.0]},
        {"type": "translation", "translation": whole.affine[[2, 1, 0], 3].tolist()},
    ]


def test_a_unit_is_a_shard_of_chunks():
    planned("--scale", 2, chunk=8, unit="16,32,64")
    array = zarr.open_array("out.zarr/0", mode="r")
    assert (array.chunks, array.shards) == ((8, 8, 8), (16, 32, 64))


@pytest.mark.parametrize("codec", ["zstd", "blosc", "none"])
def test_codecs_keep_the_voxels(codec):
    whole = volux.resize(placed(voxels(SHAPE)), scale=1.5)
    assert same(made("--scale", 1.5, "--codec", codec, chunk=16), whole.array)


def test_the_plan_holds_all_that_voxels_depend_on_and_no_tasks():
    plan = json.loads(Path(planned("--scale", 2)).read_text())
    again = json.loads(Path(planned("--scale", 2, "--force")).read_text())
    other = json.loads(Path(planned("--scale", 2, "--interp", "cubic", "--force")).read_text())
    large = json.loads(Path(planned("--scale", 40, "--force", unit=8)).read_text())
    assert plan == again
    assert plan["id"] != other["id"]
    assert len(json.dumps(large)) - len(json.dumps(plan)) < 100


def test_planning_looks_at_no_more_units_of_a_larger_result(monkeypatch):
    from volux.scale import _support

    asked = []
    support = _support.volux.support
    monkeypatch.setattr(
        _support.volux, "support", lambda *a, **k: asked.append(1) or support(*a, **k)
    )
    planned("--shape", 30000, chunk=64, unit=64)
    assert len(asked) <= 27


@pytest.mark.parametrize("shape", [(1, 1, 1), (5, 3, 9), (16, 16, 16), (1, 40, 7)])
def test_every_unit_has_one_task(shape):
    units = Units(shape, (2, 2, 2))
    places = {units.place(task) for task in range(units.tasks)}
    assert places == set(itertools.product(*map(range, units.counts)))


def test_neighbouring_tasks_make_neighbouring_units():
    units = Units((32, 32, 32), (2, 2, 2))
    octant = [units.place(task) for task in range(8)]
    assert set(octant) == set(itertools.product((0, 1), repeat=3))


def an_output():
    save_ome("out.zarr")


def nothing():
    pass


def a_folder():
    Path("out.zarr").mkdir()


def a_compressed_file():
    save_nifti("x.nii.gz")


def an_oblique_file():
    save_nifti("x.nii", affine=oblique())


def a_series():
    save_nifti("x.nii", voxels((8, 8, 8, 2)))


def a_scaled_file():
    image = save_nifti("x.nii")
    data = bytearray(Path(image).read_bytes())
    data[112:120] = np.array([2.0, 1.0], "<f4").tobytes()
    Path(image).write_bytes(data)


def many_channels():
    save_ome("x.zarr", voxels((2, *SHAPE)), axes="czyx")


def an_unknown_unit():
    save_ome("x.zarr", unit="parsec")


def whole_numbers_of_64_bits():
    save_ome("x.zarr", voxels(SHAPE, np.int64))


def a_plain_group():
    zarr.open_group("x.zarr", mode="w")


RESIZE = "plan resize image.zarr -o out.zarr --scale 2"

FAILURES = {
    "no output": (nothing, "plan resize image.zarr --scale 2", 2, "Missing option --output"),
    "another format": (nothing, "plan resize image.zarr -o x.nii --scale 2", 2, "ends in .zarr"),
    "no size": (nothing, "plan resize image.zarr -o out.zarr", 2, "one of --spacing, --shape"),
    "a size of 0": (nothing, "plan resize image.zarr -o out.zarr --scale 0", 2, "above 0"),
    "no target": (nothing, "plan resample image.zarr -o out.zarr", 2, "give --like, --transform"),
    "options of resample": (nothing, f"{RESIZE} --like image.zarr", 2, "--like is not an option"),
    "options of resize": (
        nothing,
        "plan resample image.zarr -o out.zarr --like image.zarr --scale 2",
        2,
        "--scale is not an option of resample",
    ),
    "a missing file": (nothing, "plan resize x.zarr -o out.zarr --scale 2", 1, "no such file"),
    "a missing grid": (
        nothing,
        "plan resample image.zarr -o out.zarr --like x.nii",
        1,
        "x.nii: there is no such file",
    ),
    "a store that is there": (an_output, RESIZE, 1, "out.zarr: is there already; --force"),
    "a folder": (a_folder, f"{RESIZE} --force", 1, "out.zarr: is a folder, and no Zarr"),
    "output is input": (nothing, "plan resize image.zarr -o image.zarr --scale 2", 2, "an input"),
    "output in input": (
        nothing,
        "plan resize image.zarr -o image.zarr/x.zarr --scale 2",
        2,
        "an i",
    ),
    "output in no folder": (
        nothing,
        "plan resize image.zarr -o no/x.zarr --scale 2",
        1,
        "no folder",
    ),
    "units of no whole chunks": (nothing, f"{RESIZE} --chunk 8 --unit 12", 2, "whole multiples"),
    "chunks of 0": (nothing, f"{RESIZE} --chunk 0", 2, "--chunk 0: must be above 0"),
    "a type for a plan": (nothing, f"{RESIZE} --dtype uint8", 2, "allowed are int16, float32"),
    "a fill beyond the type": (
        nothing,
        f"{RESIZE} --border constant --fill 1e9",
        2,
        "fill=1000000000: int16",
    ),
    "a compressed file": (
        a_compressed_file,
        "plan resize x.nii.gz -o out.zarr --scale 2",
        1,
        "is compressed: volux convert writes .nii",
    ),
    "an oblique file": (
        an_oblique_file,
        "plan resize x.nii -o out.zarr --scale 2",
        1,
        "is oblique",
    ),
    "a series": (a_series, "plan resize x.nii -o out.zarr --scale 2", 1, "has several volumes"),
    "a scaled file": (a_scaled_file, "plan resize x.nii -o out.zarr --scale 2", 1, "scaled voxels"),
    "channels": (many_channels, "plan resize x.zarr -o out.zarr --scale 2", 1, "plans read one"),
    "an unknown unit": (an_unknown_unit, "plan resize x.zarr -o out.zarr --scale 2", 1, "parsec"),
    "a type that is not served": (
        whole_numbers_of_64_bits,
        "plan resize x.zarr -o out.zarr --scale 2",
        1,
        "its voxels are int64",
    ),
    "a group": (a_plain_group, "plan resize x.zarr -o out.zarr --scale 2", 1, "without OME-Zarr"),
    "too little memory": (nothing, f"{RESIZE} --memory 100MB", 1, "--memory allows"),
    "raw voxels of no type": (nothing, f"{RESIZE} --raw 3,4,5", 2, "must be a type and extents"),
    "a type of what says it": (nothing, f"{RESIZE} --raw uint8,3,4,5", 2, "--raw uint8,3,4,5: "),
    "a distance of what says it": (nothing, f"{RESIZE} --voxel 1", 2, "is OME-Zarr 0.5, which sa"),
    "a fill of nothing": (nothing, f"{RESIZE} --fill 3", 2, "leaves nothing to fill"),
    "an outside of nothing": (
        nothing,
        f"{RESIZE} --border constant --outside fill",
        2,
        "--outside fill: goes with --border edge",
    ),
    "an overflow of nothing": (
        nothing,
        f"{RESIZE} --dtype float32 --overflow wrap",
        2,
        "counts for integers",
    ),
    "an alignment of nothing": (
        nothing,
        "plan resample image.zarr -o out.zarr --like image.zarr --align centres",
        2,
        "--align is not an option of resample",
    ),
    "no plan": (nothing, "run no.json", 1, "no.json"),
    "no JSON": (nothing, "run image.zarr/zarr.json", 1, "is no plan that volux plan made"),
}


@pytest.mark.parametrize("name", FAILURES)
def test_a_failure_is_one_line_and_leaves_nothing(name):
    prepare, typed, code, words = FAILURES[name]
    save_ome()
    prepare()
    before = sorted(map(str, Path().rglob("*")))
    ended = run(*typed.split())
    assert (ended.code, ended.out, ended.err.count("\n")) == (code, "", 1), ended
    assert words in ended.err
    assert sorted(map(str, Path().rglob("*"))) == before


def changed(plan, **facts):
    from volux.scale._plan import identity

    known = json.loads(Path(plan).read_text()) | facts
    known.pop("id")
    Path(plan).write_text(json.dumps({"id": identity(known), **known}))


def test_a_plan_that_was_changed_is_refused():
    plan = planned("--scale", 2)
    Path(plan).write_text(Path(plan).read_text().replace('"fill": 0', '"fill": 1'))
    assert "was changed after it was made" in run("run", plan).err


@pytest.mark.parametrize(
    ("facts", "words"),
    [
        ({"format": 2}, "is a plan of format 2; this volux reads 1"),
        ({"volux": "0.1"}, "was made with volux 0.1"),
        ({"codec": {"name": "zstd", "versions": {"zarr": "3.0", "numcodecs": "0"}}}, "zarr 3.0"),
    ],
)
def test_a_plan_of_other_versions_is_refused(facts, words):
    plan = planned("--scale", 2)
    changed(plan, **facts)
    ended = run("run", plan)
    assert (ended.code, words in ended.err) == (1, True)


def test_an_input_that_was_replaced_is_refused():
    plan = planned("--scale", 2)
    save_ome(array=voxels((9, 9, 9)))
    assert "image.zarr: is not the input that was planned" in run("run", plan).err


def test_a_field_that_was_replaced_is_refused():
    from ..tool.runs import sitk

    field = sitk.Image((4, 4, 4), sitk.sitkVectorFloat64, 3)
    sitk.WriteImage(field, "field.nrrd")
    plan = planned("-t", "field.nrrd", verb="resample")
    field[1, 1, 1] = (1.0, 2.0, 3.0)
    sitk.WriteImage(field, "field.nrrd")
    assert "field.nrrd: is not the transform that was planned" in run("run", plan).err


def test_a_folder_that_moves_with_plan_input_and_output_still_runs(monkeypatch):
    Path("here").mkdir()
    monkeypatch.chdir("here")
    planned("--scale", 2)
    monkeypatch.chdir("..")
    Path("here").rename("there")
    done("run", "there/out.plan.json")
    assert run("verify", "there/out.plan.json").code == 0


def test_a_plan_is_never_written_over_its_input():
    np.save("w.npy", np.ones((8, 8, 8), np.int16))
    before = Path("w.npy").read_bytes()
    ended = run(
        *("plan", "resize", "w.npy", "-o", "w.zarr", "--scale", "0.5"),
        *("--voxel", "1", "--plan", "w.npy", "--force"),
    )
    assert (ended.code, "is an input" in ended.err) == (2, True)
    assert Path("w.npy").read_bytes() == before
