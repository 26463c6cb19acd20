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
    ],
)
def test_wrong_use_is_answered_in_words(options, words, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    save("a.nii.gz", np.zeros((4, 4, 4), np.int16))
    made = run("view", "a.nii.gz", *options)
    assert made.code == 2
    assert words in made.err
