"""The verbs make what the package makes of the same arguments."""

import csv
import io
import json
from pathlib import Path

import numpy as np
import pytest
import volux

from .runs import PROGRAM, done, nibabel, oblique, run, save, voxels


@pytest.fixture
def image(ct):
    return volux.Image.from_nibabel(nibabel.load(ct))


def made(name="x.nii.gz"):
    image = nibabel.load(name)
    return np.asarray(image.dataobj), image.affine


RESIZED = {
    "--spacing 1": {"spacing": 1.0},
    "--spacing 1,2,0.5": {"spacing": (1, 2, 0.5)},
    "--shape 5,7,9": {"shape": (5, 7, 9)},
    "--scale 0.5": {"scale": 0.5},
    "--scale 0.5 --antialias none": {"scale": 0.5, "antialias": None},
    "--scale 2 --interp cubic --border constant --fill 7": {
        "scale": 2,
        "interpolation": "cubic",
        "border": "constant",
        "fill": 7,
    },
    "--shape 5 --align centres --interp nearest": {
        "shape": (5, 5, 5),
        "align": "centres",
        "interpolation": "nearest",
    },
    "--scale 3 --dtype float64": {"scale": 3, "dtype": "float64"},
    "--scale 3 --interp cubic --overflow wrap": {
        "scale": 3,
        "interpolation": "cubic",
        "overflow": "wrap",
    },
}


@pytest.mark.parametrize("typed", RESIZED)
def test_resize_takes_the_words_of_the_package(image, ct, typed):
    done("resize", ct, "-o", "x.nii.gz", *typed.split())
    wanted = volux.resize(image, **RESIZED[typed])
    array, affine = made()
    np.testing.assert_array_equal(array, wanted.array)
    assert array.dtype == wanted.array.dtype
    np.testing.assert_allclose(affine, wanted.affine, atol=1e-5)


def test_vectors_follow_the_order_of_the_file_in_every_format(ct):
    done("convert", ct, "-o", "ct.nrrd")
    done("resize", "ct.nrrd", "-o", "x.nii.gz", "--shape", "5,7,9")
    assert made()[0].shape == (5, 7, 9)


def test_crop_keeps_voxels_and_their_places(image, ct):
    done("crop", ct, "-o", "x.nii.gz", "--box", "2:8,:,1:-2")
    array, affine = made()
    np.testing.assert_array_equal(array, image.array[2:8, :, 1:-2])
    np.testing.assert_allclose(affine @ [0, 0, 0, 1], image.affine @ [2, 0, 1, 1], atol=1e-5)


def test_resample_takes_the_grid_of_another_file(image, ct):
    save("like.nii.gz", voxels((5, 6, 7)), oblique((2, 2, 2)))
    done("resample", ct, "-o", "x.nii.gz", "--like", "like.nii.gz", "--antialias", "mean")
    like = volux.Image.from_nibabel(nibabel.load("like.nii.gz"))
    wanted = volux.resample(image, like=like, antialias="mean")
    np.testing.assert_array_equal(made()[0], wanted.array)


def test_resample_extends_the_edge_where_it_is_told_to(image, ct):
    save("like.nii.gz", voxels((30, 30, 30)))
    done("resample", ct, "-o", "x.nii.gz", "--like", "like.nii.gz", "--outside", "extend")
    like = volux.Image.from_nibabel(nibabel.load("like.nii.gz"))
    wanted = volux.resample(image, like=like, outside="extend")
    np.testing.assert_array_equal(made()[0], wanted.array)


SHAPE = ["--shape", "8,6", "--spacing", 0.5]


def test_reslice_cuts_by_centre_and_normal(image, ct):
    where = ["--centre", "15,0,10", "--normal", "0,1,1", "--up", "0,-1,1"]
    done("reslice", ct, "-o", "x.nii.gz", *where, *SHAPE)
    plane = volux.Plane((15, 0, 10), (0, 1, 1), (0, -1, 1), (6, 8), 0.5)
    np.testing.assert_array_equal(made()[0], volux.reslice(image, plane).array.T)


def test_reslice_cuts_through_three_points(image, ct):
    points = ["--through", "20,0,2", "--through", "10,0,2", "--through", "20,5,9"]
    done("reslice", ct, "-o", "x.nii.gz", *points, *SHAPE)
    plane = volux.Plane.through((20, 0, 2), (10, 0, 2), (20, 5, 9), (6, 8), 0.5)
    wanted = volux.reslice(image, plane)
    np.testing.assert_array_equal(made()[0], wanted.array.T)
    np.testing.assert_allclose(made()[1][:3, 3], wanted.affine[:3, 3], atol=1e-5)


def test_reslice_makes_slabs_and_stacks(image, ct):
    where = ["--centre", "15,0,10", "--normal", "0,0,-1", "--thickness", 3]
    slab = ["--slab", 5, "--projection", "maximum", "--count", 2]
    done("reslice", ct, "-o", "x.nii.gz", *where, *SHAPE, *slab)
    stack = volux.Plane((15, 0, 10), (0, 0, -1), (0, 1, 0), (6, 8), (3, 0.5, 0.5)).stack(2)
    wanted = volux.reslice(image, stack, slab=5, projection="maximum")
    np.testing.assert_array_equal(made()[0], wanted.array.T)


@pytest.mark.parametrize("normal", ["1,0,0", "0,1,0", "0,0,1", "1,2,3"])
def test_a_plane_without_extents_shows_the_whole_volume(normal):
    save("ones.nii.gz", np.ones((12, 10, 8), np.int16))
    done("reslice", "ones.nii.gz", "-o", "x.nii.gz", "--normal", normal)
    done("reslice", "ones.nii.gz", "-o", "large.nii.gz", "--normal", normal, "--shape", "99,99")
    shown, everything = (int(made(name)[0].sum()) for name in ("x.nii.gz", "large.nii.gz"))
    assert made()[0].size < 99 * 99
    assert shown == pytest.approx(everything, rel=0.1)


def rows_of(text):
    return list(csv.reader(io.StringIO(text)))


def test_sample_adds_a_column_of_readings(image, ct):
    Path("p.csv").write_text("name,x,y,z\na,15,0,10\nb,16.5,1,9.25\n")
    header, *rows = rows_of(done("sample", ct, "p.csv"))
    assert header == ["name", "x", "y", "z", "value"]
    wanted = volux.sample(image, [(15, 0, 10), (16.5, 1, 9.25)], space="world")
    assert [float(row[4]) for row in rows] == wanted.tolist()
    assert rows[1][:4] == ["b", "16.5", "1", "9.25"]


def test_sample_takes_voxels_too_and_writes_a_file(image, ct):
    Path("p.csv").write_text("k,j,i\n1,2,3.5\n")
    assert done("sample", ct, "p.csv", "-o", "out.csv", "--interp", "cubic") == ""
    _, row = rows_of(Path("out.csv").read_text())
    assert float(row[3]) == volux.sample(image, (3.5, 2, 1), interpolation="cubic")


def test_sample_reads_every_channel():
    save("x.nii", voxels((4, 4, 4, 2)))
    Path("p.csv").write_text("i,j,k\n1,2,3\n")
    header, row = rows_of(done("sample", "x.nii", "p.csv"))
    assert header[3:] == ["value0", "value1"]
    assert [float(value) for value in row[3:]] == voxels((4, 4, 4, 2))[1, 2, 3].tolist()


def test_sample_of_no_points_is_a_line_of_names(ct):
    Path("p.csv").write_text("i,j,k\n")
    assert done("sample", ct, "p.csv") == "i,j,k,value\n"


def test_equal_volumes_compare_as_such_whatever_holds_them(ct):
    done("convert", ct, "-o", "x.nii", "--dtype", "float64")
    ended = run("compare", ct, "x.nii")
    assert (ended.code, ended.out) == (0, "places differ by 0 mm at most\nvalues are equal\n")


def test_differences_are_counted_and_placed(ct):
    other = voxels()
    other[3, 2, 1] += 5
    save("other.nii.gz", other)
    ended = run("compare", ct, "other.nii.gz", "--json")
    facts = json.loads(ended.out)
    assert ended.code == 1
    assert (facts["different"], facts["largest"], facts["first"]) == (1, 5.0, [3, 2, 1])
    assert run("compare", ct, "other.nii.gz", "--tolerance", 5).code == 0


def test_places_are_compared_in_mm(ct):
    save("moved.nii.gz", affine=oblique(origin=(20.0, -3.5, 1.75)))
    ended = run("compare", ct, "moved.nii.gz")
    assert ended.code == 1
    assert ended.out.startswith("places differ by 0.5 mm at most\n")
    assert run("compare", ct, "moved.nii.gz", "--tolerance-mm", 0.51).code == 0


def test_nan_is_like_nan_alone():
    values = np.array([np.nan, 1.0, np.inf], np.float32).reshape(3, 1, 1)
    save("a.nii", values)
    save("b.nii", np.nan_to_num(values, nan=2.0, posinf=np.inf))
    assert run("compare", "a.nii", "a.nii").code == 0
    facts = json.loads(run("compare", "a.nii", "b.nii", "--json").out)
    assert (facts["different"], facts["largest"]) == (1, "infinite")


def test_volumes_of_other_extents_differ(ct):
    save("b.nii", voxels((3, 3, 3)))
    ended = run("compare", ct, "b.nii")
    assert (ended.code, ended.out) == (1, "extents differ: 12 x 10 x 8 and 3 x 3 x 3\n")


def test_the_digest_is_that_of_the_package(image, ct):
    assert done("digest", ct) == f"{volux.digest(image)}  {ct}\n"


def test_info_says_what_a_file_holds(ct):
    facts = json.loads(done("info", ct, "--json"))
    assert facts["shape"] == [12, 10, 8]
    assert (facts["type"], facts["orientation"], facts["format"]) == ("int16", "LAS", "NIfTI-1")
    assert (facts["minimum"], facts["maximum"]) == (voxels().min(), voxels().max())


def test_the_program_is_a_module_too():
    assert PROGRAM[1:] == ("-m", "volux.tool")
