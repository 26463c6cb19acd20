"""A wrong call is refused before anything is written, in words that say what to write instead."""

import inspect
from functools import partial

import numpy as np
import pytest
import volux

from .volumes import volume

ARRAY = volume("int16", (4, 4, 4))
IMAGE = volux.Image(ARRAY)
GRID = volux.Grid((2, 2, 2), np.eye(4))
SINGULAR = np.diag([1.0, 1.0, 0.0, 1.0])
resample = partial(volux.resample, ARRAY, GRID)
resize = partial(volux.resize, ARRAY, shape=(2, 2, 2))
sample = partial(volux.sample, ARRAY, (0, 0, 0))


def spoken(cases):
    """What the errors of a table say, for the names of its tests."""
    return [words for _, _, words in cases]


PEERS = {
    "order": "scipy's word; here it is interpolation=",
    "mode": "scipy's word for border=",
    "cval": "scipy's word; here it is fill=",
    "zoom": "scipy's word; here it is scale=",
    "align_corners": "torch's word; for resize\\(\\) it is align=",
    "output_shape": "here it is shape= of resize\\(\\), or grid=Grid",
    "fill_value": "here it is fill=",
    "target_affine": "nilearn's word; here it is grid=Grid",
    "reference": "SimpleITK's word; here it is like=",
}


@pytest.mark.parametrize("function", [resample, resize, sample])
@pytest.mark.parametrize("keyword", PEERS)
def test_a_keyword_of_another_library_is_answered_with_ours(keyword, function):
    with pytest.raises(TypeError, match=f"takes no {keyword}=1: {keyword} is .*{PEERS[keyword]}"):
        function(**{keyword: 1})


def test_a_misspelt_keyword_is_answered_with_the_nearest_one():
    with pytest.raises(TypeError, match="did you mean interpolation="):
        resample(interpolate="linear")


def test_a_keyword_of_another_function_is_answered_with_that_function():
    with pytest.raises(TypeError, match=r"resample\(\) takes no spacing=1: .*resize\(\) takes it"):
        resample(spacing=1)


def test_signatures_are_those_that_are_documented():
    names = " ".join(inspect.signature(volux.resample).parameters)
    assert names == (
        "image grid like transform interpolation border fill outside antialias overflow dtype out "
        "threads progress"
    )


def test_an_antialias_that_is_not_given_looks_like_none():
    assert repr(inspect.signature(volux.resample).parameters["antialias"].default) == "None"


# What is called, the error, and what it says.
REFUSALS = [
    (
        lambda: resample(interpolation="bilinear"),
        ValueError,
        "torch's name .* interpolation='linear'",
    ),
    (lambda: resample(interpolation=1), TypeError, "scipy's name .* interpolation='linear'"),
    (
        lambda: resample(interpolation=3),
        TypeError,
        "interpolation=3: allowed are 'nearest', 'linear'",
    ),
    (lambda: resample(interpolation=["linear"]), TypeError, "allowed are 'nearest', 'linear'"),
    (
        lambda: resample(border="nearest"),
        ValueError,
        "scipy's name for it; here it is border='edge'",
    ),
    (
        lambda: resample(border="reflect"),
        ValueError,
        "border='reflect': allowed are 'edge' or 'constant'",
    ),
    (
        lambda: resample(outside="edge"),
        ValueError,
        "outside='edge': allowed are 'fill' or 'extend'",
    ),
    (lambda: resample(overflow="clip"), ValueError, "allowed are 'saturate' or 'wrap'"),
    (
        lambda: resample(antialias=True),
        TypeError,
        "torch's name for it; here it is antialias='auto'",
    ),
    (
        lambda: resize(align="corners"),
        ValueError,
        "torch's name for it; here it is align='centres'",
    ),
    (lambda: resize(align=False), TypeError, "here it is align='edges'"),
    (lambda: resize(align=True), TypeError, "here it is align='centres'"),
    (lambda: resample(fill="0"), TypeError, "fill='0' must be a number"),
    (
        lambda: resample(fill=0.5),
        ValueError,
        "fill=0.5: int16 holds whole numbers from -32768 to 32767",
    ),
    (lambda: resample(fill=40000), ValueError, "fill=40000: int16 holds"),
    (lambda: resample(fill=float("nan")), ValueError, "fill=nan: int16 holds"),
    (
        lambda: resample(dtype="uint8"),
        ValueError,
        r"dtype='uint8': allowed are 'int16', .*astype\('uint8'\)",
    ),
    (lambda: resample(dtype="nonsense"), TypeError, "dtype='nonsense' is no type of numpy's"),
    (lambda: resample(threads=0), ValueError, "threads=0 must be from 1 to"),
    (lambda: resample(threads=1.5), TypeError, "threads=1.5 must be a whole number"),
    (lambda: resample(threads=True), TypeError, "threads=True must be a whole number, not a bool"),
    (lambda: resample(progress=1), TypeError, "progress=1 must be called with a fraction"),
    (
        lambda: resample(transform=np.eye(4)),
        TypeError,
        "transform is a ndarray; allowed are a volux.Affine",
    ),
    (lambda: volux.resample(ARRAY), TypeError, "one of grid=, like= is required"),
    (lambda: resample(like=ARRAY), ValueError, "grid and like exclude one another"),
    (
        lambda: volux.resample(ARRAY, (2, 2, 2)),
        TypeError,
        r"grid is a tuple; it must be a volux\.Grid$",
    ),
    (lambda: volux.resample(ARRAY, IMAGE), TypeError, "like= takes images"),
    (lambda: volux.resample(ARRAY, like=GRID), TypeError, "grid= takes grids"),
    (
        lambda: volux.resample(ARRAY, like=IMAGE),
        TypeError,
        "must both be a volux.Image or both a plain",
    ),
    (lambda: volux.resample(IMAGE, like=ARRAY), TypeError, "like and image must both be a volux"),
    (lambda: volux.resize(ARRAY), TypeError, "one of shape=, spacing=, scale= is required"),
    (lambda: resize(scale=2), ValueError, "shape=.*scale=2: shape and scale exclude one another"),
    (lambda: volux.resize(ARRAY, shape=(2, 2)), ValueError, "has 2 numbers; it must be 3"),
    (lambda: volux.resize(ARRAY, shape=2), TypeError, "shape=2 must be 3 numbers"),
    (
        lambda: volux.resize(ARRAY, shape=(2, 0, 2)),
        ValueError,
        r"shape\[1\]=0 must be from 1 to 2147483647",
    ),
    (
        lambda: volux.resize(ARRAY, shape=(2, 2.5, 2)),
        TypeError,
        r"shape\[1\]=2.5 must be a whole number",
    ),
    (lambda: volux.resize(ARRAY, spacing=-1), ValueError, "spacing=-1.0 must be above 0"),
    (
        lambda: volux.resize(ARRAY, spacing=(1, np.nan, 1)),
        ValueError,
        r"spacing\[1\]=nan must be finite",
    ),
    (
        lambda: volux.resize(ARRAY, spacing=1e-9),
        ValueError,
        "spacing=.*1e-09.* more than 2147483647",
    ),
    (lambda: volux.resize(ARRAY, scale="2"), TypeError, "scale='2' must be 3 numbers"),
    (
        lambda: volux.sample(ARRAY, (0, 0)),
        ValueError,
        r"points have the shape \(2,\); .*\(\.\.\., 3\)",
    ),
    (lambda: volux.sample(ARRAY, np.zeros((3, 7))), ValueError, r"points\.T, if these are coordin"),
    (lambda: volux.sample(ARRAY, [(1j, 0, 0)]), TypeError, "points must be real numbers"),
    (lambda: volux.sample(ARRAY, "abc"), TypeError, "points must be real numbers"),
    (lambda: sample(space="voxel"), ValueError, "space='voxel': allowed are 'index' or 'world'"),
    (lambda: sample(channel=1), ValueError, "channel=1 must be from 0 to 0"),
    (lambda: sample(dtype="int32"), ValueError, "dtype='int32': allowed are 'int16', 'float32' or"),
    (
        lambda: volux.sample_gradient(ARRAY, (0, 0, 0), interpolation="label"),
        ValueError,
        "no derivatives",
    ),
    (lambda: volux.Grid((2, 2, 2), SINGULAR), ValueError, "affine=.* is singular: "),
    (lambda: volux.Grid((2, 2, 2), np.diag([1, 1, np.inf, 1])), ValueError, "must be finite"),
    (lambda: volux.Grid((2, 2, 2), np.eye(3)), ValueError, r"the shape \(3, 3\); it must be 4 x 4"),
    (lambda: volux.Grid((2, 2, 2), np.ones((4, 4))), ValueError, "the last row"),
    (lambda: volux.Grid((2, 2, 2), "eye"), TypeError, "affine must be a 4 x 4 matrix of numbers"),
    (
        lambda: volux.Grid((2, 2, 2), np.eye(4), axes="zxx"),
        ValueError,
        "axes='zxx': allowed are 'xyz'",
    ),
    (lambda: volux.Image(ARRAY, axes=0), TypeError, "axes=0: allowed are"),
    (
        lambda: volux.Image(ARRAY, channels=3),
        ValueError,
        "channels=3, but .* three axes, then none",
    ),
    (lambda: volux.Image(ARRAY[..., None], channels=3), ValueError, "three axes, then 1"),
    (lambda: volux.Affine(SINGULAR), ValueError, "matrix=.* is singular"),
    (lambda: volux.threads(0), ValueError, "n=0 must be from 1"),
    (lambda: volux.compose(1, volux.Affine(np.eye(4))), TypeError, "first is a int; allowed are"),
    (lambda: volux.reslice(ARRAY, 1), TypeError, "planes is a int; allowed are a volux.Plane"),
    (lambda: GRID[5:9], ValueError, "box has slice"),
    (lambda: GRID[::2], ValueError, "box has slice"),
    (lambda: volux.support(IMAGE, np.s_[:1], image=IMAGE), TypeError, "grid is a Image; it must"),
    (
        lambda: volux.Image.brick(ARRAY, np.eye(4)),
        TypeError,
        r"grid is a ndarray; it must be a volux\.Grid",
    ),
    (lambda: volux.resize(ARRAY, spacing=(1, "2", 1)), TypeError, r"spacing\[1\]='2' must be a n"),
    (lambda: volux.resize(ARRAY, spacing=(1, None, 1)), TypeError, r"spacing\[1\]=None must be a"),
    (lambda: GRID[1], TypeError, "must be made of slices, such as 10:20"),
    (lambda: GRID[:, :, :, :], ValueError, "has 4 slices; the grid has 3 axes"),
    (lambda: volux.Image(ARRAY, axes=ARRAY), TypeError, "axes=<ndarray>: allowed are"),
    (lambda: resize(interpolation=ARRAY), TypeError, "interpolation=<ndarray>: allowed are"),
    (lambda: resize(threads=ARRAY), TypeError, "threads=<ndarray> must be a whole number"),
    (lambda: resize(fill=ARRAY), TypeError, "fill=<ndarray> must be a number"),
    (lambda: volux.Affine(np.eye(4, dtype=complex)), TypeError, "4 x 4 matrix of numbers, not <nd"),
    (
        lambda: volux.resize(ARRAY, spacing=np.array([1, 2j, 3])),
        TypeError,
        r"spacing\[0\]=.*must be a number",
    ),
]


@pytest.mark.parametrize(
    ("call", "error", "words"), REFUSALS, ids=[words for _, _, words in REFUSALS]
)
def test_a_wrong_call_says_what_is_wrong_and_what_is_allowed(call, error, words):
    with pytest.raises(error, match=words):
        call()


# What comes for an image, the error, and what it says.
STRANGERS = [
    ([[[1, 2]]], TypeError, r"image is a list; .*np\.asarray\(image\)"),
    (None, TypeError, "image is a NoneType"),
    (np.zeros((4, 4)), ValueError, r"shape \(4, 4\).*image\[np\.newaxis\]"),
    (np.zeros((2, 2, 2, 2, 2)), ValueError, "joins the others to channels"),
    (np.zeros(4), ValueError, r"shape \(4,\); it must have three axes, and a fourth for channels$"),
    (np.zeros((0, 2, 2)), ValueError, r"shape \(0, 2, 2\), and so no voxels"),
    (np.zeros((2, 2, 2), object), TypeError, r"dtype object; .*image\.astype\('float64'\)"),
    (np.zeros((2, 2, 2), complex), TypeError, r"image\.real and image\.imag"),
    (np.zeros((2, 2, 2), ">i2"), TypeError, r"image\.astype\(image\.dtype\.newbyteorder\('='\)\)"),
    (np.zeros((2, 2, 2), np.int64), TypeError, r"dtype int64; .*image\.astype\('int32'\)"),
    (np.zeros((2, 2, 2), np.int8), TypeError, r"image\.astype\('int16'\)"),
    (np.zeros((2, 2, 2), np.float16), TypeError, r"image\.astype\('float32'\)"),
    (np.ma.zeros((2, 2, 2)), TypeError, r"masked array; image\.filled\(value\)"),
    (np.zeros(65, np.uint8)[1:].view(np.float64).reshape(2, 2, 2), ValueError, "not aligned"),
]


@pytest.mark.parametrize(
    ("image", "error", "words"), STRANGERS, ids=[words for _, _, words in STRANGERS]
)
def test_an_image_that_is_not_served_is_refused_with_the_call_that_converts(image, error, words):
    with pytest.raises(error, match=words):
        volux.resize(image, shape=(2, 2, 2))


MEMORY = np.zeros((4, 4, 8), np.int16)

# What is given for out, the error, and what it says.
OUTS = [
    ([0], TypeError, "out is a list; it must be a numpy array"),
    (np.zeros((2, 2, 3), np.int16), ValueError, r"out has the shape \(2, 2, 3\); .*\(2, 2, 2\)"),
    (
        np.zeros((2, 2, 2), np.uint8),
        ValueError,
        "out.dtype='uint8': allowed are 'int16', 'float32'",
    ),
    (np.broadcast_to(np.int16(0), (2, 2, 2)), ValueError, "out is read-only"),
    (np.zeros(17, np.uint8)[1:].view(np.int16).reshape(2, 2, 2), ValueError, "out is not aligned"),
    (
        np.lib.stride_tricks.as_strided(np.zeros(9, np.int16), (2, 2, 2), (2, 2, 4)),
        ValueError,
        "by which its own voxels overlap",
    ),
    (MEMORY[:2, :2, 4:6], ValueError, "out overlaps image: "),
]


@pytest.mark.parametrize(("out", "error", "words"), OUTS, ids=spoken(OUTS))
def test_an_out_that_can_not_be_written_is_refused_untouched(out, error, words):
    before = np.array(out)
    with pytest.raises(error, match=words):
        volux.resize(MEMORY[..., :4], shape=(2, 2, 2), out=out)
    assert np.array_equal(np.array(out), before)


def test_a_type_that_contradicts_out_is_refused():
    with pytest.raises(TypeError, match="out has the dtype int16; the result has float32"):
        resize(dtype="float32", out=np.zeros((2, 2, 2), np.int16))


def test_an_out_that_overlaps_the_vectors_of_a_transform_is_refused():
    vectors = np.zeros((4, 4, 4, 3), np.float32)
    moved = volux.Displacement(vectors, volux.Grid((4, 4, 4), np.eye(4)))
    with pytest.raises(ValueError, match="out overlaps transform's vectors"):
        volux.resample(
            ARRAY.astype("f4"), like=ARRAY.astype("f4"), transform=moved, out=vectors[..., 0]
        )


def test_an_out_that_overlaps_the_points_is_refused():
    points = np.zeros((4, 3))
    with pytest.raises(ValueError, match="out overlaps points"):
        volux.sample(ARRAY, points, out=points[:, 0])


def test_an_out_that_overlaps_points_of_another_type_is_refused():
    points = np.zeros((4, 3), np.int64)
    with pytest.raises(ValueError, match="out overlaps points"):
        volux.sample(ARRAY, points, out=points.view(np.float64)[:, 0])


def test_an_image_of_another_library_is_refused_with_the_call_that_converts():
    nibabel = pytest.importorskip("nibabel")
    sitk = pytest.importorskip("SimpleITK")
    with pytest.raises(TypeError, match=r"volux\.Image\.from_nibabel\(image\)"):
        volux.resize(nibabel.Nifti1Image(ARRAY, np.eye(4)), shape=(2, 2, 2))
    with pytest.raises(TypeError, match=r"volux\.Image\.from_sitk\(image\)"):
        volux.resize(sitk.Image(4, 4, 4, sitk.sitkInt16), shape=(2, 2, 2))
