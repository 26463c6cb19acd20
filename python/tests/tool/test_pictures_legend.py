"""The legend of labels: colours, numbers, names, and how many fit."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from volux.tool._pictures._labels import colour_of, counted

pytest.importorskip("PIL")

from volux.tool._pictures._legend import _SWATCH, legend
from volux.tool._pictures._style import LINE, MARGIN, PAPER


def swatches(strip, labels):
    """Which of these labels have a whole patch of their colour."""
    made = np.asarray(strip)
    patches = ((made == colour_of(label)).all(axis=2).sum() for label in labels)
    return {label for label, pixels in zip(labels, patches, strict=True) if pixels == _SWATCH**2}


def lines(strip):
    """Where something is drawn, from the top: of each line of text and of each pixel across."""
    made = (np.asarray(strip) != PAPER).any(axis=2)
    return [made[top : top + LINE].any(axis=0) for top in range(0, len(made) - LINE + 1, LINE)]


def test_each_label_has_a_patch_of_its_colour():
    sizes = dict.fromkeys([1, 2, 7, 4000], 10)
    assert swatches(legend(sizes, {}, 600, 200), sizes) == set(sizes)


def test_a_name_is_beside_its_number():
    alone, named = (legend({3: 10}, names, 400, 100) for names in ({}, {3: "Heart"}))
    assert lines(named)[0].sum() > lines(alone)[0].sum() + 20
    assert np.array_equal(np.asarray(legend({3: 10}, {4: "Liver"}, 400, 100)), np.asarray(alone))


def test_labels_of_the_most_pixels_are_shown_if_not_all_fit():
    sizes = {label: label % 50 * 100 + label for label in range(1, 101)}
    strip = legend(sizes, {}, 500, 4 * LINE)
    shown = swatches(strip, sizes)
    hidden = set(sizes) - shown
    assert len(shown) > 8
    assert min(sizes[label] for label in shown) > max(sizes[label] for label in hidden)
    assert lines(strip)[-2][-MARGIN - 60 :].any(), "it says how many more there are"


@given(
    sizes=st.dictionaries(st.integers(1, 10**6), st.integers(1, 99), min_size=1, max_size=60),
    name=st.text("abcdefghij_ W", max_size=80),
    width=st.integers(120, 900),
    height=st.integers(0, 200),
)
def test_a_legend_stays_in_its_room(sizes, name, width, height):
    strip = legend(sizes, dict.fromkeys(sizes, name), width, height)
    assert strip.width == width
    assert strip.height <= max(height, 2 * LINE) + MARGIN
    made = np.asarray(strip)
    assert (made[:, :MARGIN] == PAPER).all()
    assert (made[:, -MARGIN:] == PAPER).all()


def test_labels_are_counted_without_the_background():
    assert counted(np.array([[0, 3, 3], [0, 1, 0]])) == {1: 1, 3: 2}
