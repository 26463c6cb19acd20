"""The verb `view`, as it is called."""

import numpy as np
import pytest

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
        (("-o", "a.png", "--slab", "3"), "go with --normal"),
        (("-o", "a.png", "--normal", "0,0,1", "--slab", "-1"), "must be above 0"),
        (("-o", "a.png", "--montage", "4", "--normal", "0,0,1"), "leave out --centre"),
        (("-o", "a.png", "--normal", "0,0,0"), "must not be 0"),
        (("-o", "a.png", "--normal", "0,0,1", "--centre", "0,0,99"), "misses the volume"),
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
