"""The verb `view`, as it is called."""

from pathlib import Path

import numpy as np
import pytest
from volux.tool._pictures._labels import colour_of

from .runs import run, save

Image = pytest.importorskip("PIL.Image")


def test_a_picture_is_a_png_and_the_same_twice(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    save("a.nii.gz", np.arange(6 * 7 * 8, dtype=np.int16).reshape(6, 7, 8))
    for name in ("one.png", "two.png"):
        made = run("view", "a.nii.gz", "-o", name, "--size", "64")
        assert made.code == 0, made.err
    assert (tmp_path / "one.png").read_bytes() == (tmp_path / "two.png").read_bytes()
    with Image.open(tmp_path / "one.png") as picture:
        assert picture.format == "PNG"


@pytest.mark.parametrize(
    ("options", "words"),
    [
        (("-o", "a.jpg"), "must end in .png"),
        (("-o", "a.png", "--window", "40"), "must be LEVEL,WIDTH"),
        (("-o", "a.png", "--window", "40,0"), "the width above 0"),
        (("-o", "a.png", "--size", "3"), "must be 16 to 8192"),
        (("-o", "a.png", "--montage", "0"), "must be 1 to 400"),
        (("-o", "a.png", "--slab", "3"), "--slab: goes with --normal"),
        (("-o", "a.png", "--up", "0,0,1"), "--up: goes with --normal"),
        (("-o", "a.png", "--projection", "mean"), "--projection: goes with --normal"),
        (("-o", "a.png", "--interp", "label", "--window", "1,2"), "a.nii.gz is drawn as labels"),
        (("-o", "a.png", "--normal", "0,0,1", "--slab", "-1"), "must be above 0"),
        (("-o", "a.png", "--montage", "4", "--normal", "0,0,1"), "leave out --centre"),
        (("-o", "a.png", "--normal", "0,0,0"), "must not be 0"),
        (("-o", "a.png", "--normal", "0,0,1", "--centre", "0,0,99"), "misses the volume"),
        (("-o", "a.png", "--volume", "1"), "a.nii.gz has 1, counted from 0"),
        (("-o", "a.png", "--labels", "a.nii.gz", "--interp", "label"), "drawn as labels itself"),
    ],
)
def test_wrong_use_is_answered_in_words(options, words, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    save("a.nii.gz", np.zeros((4, 4, 4), np.int16))
    made = run("view", "a.nii.gz", *options)
    assert made.code == 2
    assert words in made.err


@pytest.mark.parametrize(
    "options",
    [
        ("--montage", "4"),
        ("--centre", "0,0,1"),
        ("--normal", "1,1,1"),
        ("--normal", "0,0,1", "--up", "1,0,0", "--slab", "3", "--projection", "maximum"),
    ],
)
def test_each_kind_of_picture_is_drawn(options, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    save("a.nii.gz", np.arange(6 * 7 * 8, dtype=np.int16).reshape(6, 7, 8))
    made = run("view", "a.nii.gz", "-o", "a.png", "--size", "64", *options)
    assert made.code == 0, made.err
    with Image.open(tmp_path / "a.png") as picture:
        assert f"a.png: {picture.width} x {picture.height} pixels written" in made.err


def pixels(*options):
    made = run("view", *options, "-o", "a.png", "--size", "64", "--force")
    assert made.code == 0, made.err
    with Image.open("a.png") as picture:
        return np.asarray(picture), made.err


def test_the_first_of_several_volumes_is_shown_unless_another_is_named():
    voxels = np.arange(6 * 7 * 8 * 2, dtype=np.int16).reshape(6, 7, 8, 2)
    voxels[..., 1] = voxels[::-1, ..., 1]
    save("a.nii.gz", voxels)
    save("b.nii.gz", voxels[..., 1])
    first, said = pixels("a.nii.gz")
    assert "a.nii.gz: has 2 volumes or channels; the first one is shown (--volume" in said
    second, said = pixels("a.nii.gz", "--volume", "1")
    assert "is shown" not in said
    assert np.array_equal(second, pixels("b.nii.gz")[0])
    assert not np.array_equal(first, second)


def test_labels_are_known_by_name_or_option_and_drawn_in_their_colours():
    labels = np.zeros((8, 8, 8), np.uint8)
    labels[2:6, 2:6, 2:6] = 3
    save("a.nii.gz", labels)
    save("a_dseg.nii.gz", labels)
    coloured, _ = pixels("a_dseg.nii.gz")
    assert (coloured == colour_of(3)).all(axis=2).sum() > 1000
    assert np.array_equal(coloured, pixels("a.nii.gz", "--interp", "label")[0])
    assert not (pixels("a.nii.gz")[0] == colour_of(3)).all(axis=2).any()


def test_a_table_beside_labels_names_them_in_the_legend():
    save("a_dseg.nii.gz", np.full((8, 8, 8), 3, np.uint8))
    plain, _ = pixels("a_dseg.nii.gz")
    Path("a_dseg.tsv").write_text("index\tname\n3\tHeart\n")
    assert not np.array_equal(plain, pixels("a_dseg.nii.gz")[0])


def test_extremes_of_slabs_are_read_by_the_cubic_kernel():
    save("a.nii.gz")
    slab = ("a.nii.gz", "--normal", "0,0,1", "--slab", "4", "--projection")
    same = {}
    for projection in ("maximum", "mean"):
        kernels = (pixels(*slab, projection, "--interp", name)[0] for name in ("linear", "cubic"))
        made, _ = pixels(*slab, projection)
        same[projection] = [np.array_equal(made, other) for other in kernels]
    assert same == {"maximum": [False, True], "mean": [True, False]}


def test_a_projection_without_a_slab_is_that_of_all_the_volume():
    save("a.nii.gz", affine=np.diag([1, 1, 2, 1]))
    looked = ("a.nii.gz", "--normal", "0,0,-2", "--projection", "maximum")
    whole, _ = pixels(*looked, "--slab", "16")
    assert np.array_equal(pixels(*looked)[0], whole)
    assert not np.array_equal(pixels(*looked, "--slab", "4")[0], whole)
