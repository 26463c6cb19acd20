"""Volumes made box by box, from the voxels that each box reads."""

import numpy as np
import pytest
import volux
from hypothesis import given, settings
from hypothesis import strategies as st

from . import oracle
from .volumes import labels, placed, same_bits

PLACE = placed([[0.0, 0.25, 0.75, 10.0], [-0.5, 0.5, 0.0, -20.0], [1.5, 0.0, 0.25, 5.0]])
ARRAY = labels("int16", (7, 8, 9))
FINER = placed([[0.7, 0.1, 0.0, -1.5], [0.2, 0.8, 0.1, -0.5], [0.0, -0.1, 0.6, 0.25]])
GRID = volux.Grid((9, 8, 10), PLACE @ FINER, axes="zyx")
FIELD = volux.Displacement(
    np.random.default_rng(8).normal(0, 0.7, (5, 5, 5, 3)),
    volux.Grid((5, 5, 5), PLACE @ np.diag([1.5, 1.5, 1.5, 1.0]), axes="zyx"),
)
WHOLE = volux.Grid((7, 8, 9), np.eye(4), axes="zyx")
TRANSFORMS = [None, volux.Affine(placed(np.eye(3, 4) + 0.125)), FIELD]

ends = st.tuples(st.integers(0, 7), st.integers(1, 4))


@settings(max_examples=80, deadline=None)
@given(
    box=st.tuples(ends, ends, ends),
    kernel=st.sampled_from(oracle.KERNELS),
    border=st.sampled_from(["edge", "constant"]),
    outside=st.sampled_from(["fill", "extend"]),
    antialias=st.sampled_from([None, "mean"]),
    transform=st.sampled_from(TRANSFORMS),
    axes=st.sampled_from(["zyx", "xyz", "yzx"]),
)
def test_a_box_made_of_what_it_reads_has_the_bits_of_the_whole(
    box, kernel, border, outside, antialias, transform, axes
):
    order = ["zyx".index(axis) for axis in axes]
    image = volux.Image(ARRAY.transpose(order), PLACE[:, [*order, 3]], axes=axes)
    wanted = tuple(slice(start, start + count) for start, count in box)
    how = {
        "interpolation": kernel,
        "border": border,
        "outside": outside,
        "antialias": antialias,
        "transform": transform,
    }
    read = volux.support(GRID, wanted, image=image.grid, **how)
    brick = volux.Image.brick(image.array[read].copy(), image.grid[read])
    made = volux.resample(brick, GRID[wanted], **how)
    whole = volux.resample(image, GRID, **how)
    assert same_bits(made.array, np.ascontiguousarray(whole.array[wanted]))


def test_a_box_of_a_grid_that_names_no_axes_has_the_bits_of_the_whole():
    image = volux.Image(np.sqrt(ARRAY), PLACE)
    grid = volux.Grid(GRID.shape, GRID.affine)
    whole = volux.resample(image, grid).array
    for n in range(GRID.shape[0]):
        assert same_bits(
            volux.resample(image, grid[n : n + 1, 2:]).array, whole[n : n + 1, 2:].copy()
        )


def test_only_what_is_read_is_asked_for():
    grid = volux.Grid((10, 10, 10), np.eye(4))
    read = volux.support(grid, np.s_[2:5, :, 7:8], image=grid, interpolation="nearest")
    assert read == np.s_[2:5, 0:10, 7:8]


def test_the_grid_of_a_box_is_as_good_as_the_box():
    part = GRID[2:5, 3:6, 1:4]
    whole = np.s_[0:3, 0:3, 0:3]
    image = volux.Image(ARRAY, PLACE)
    assert volux.support(part, whole, image=image) == volux.support(
        GRID, np.s_[2:5, 3:6, 1:4], image=image
    )


def test_a_brick_without_what_is_read_is_refused():
    image = volux.Image(ARRAY, PLACE)
    brick = volux.Image.brick(ARRAY[:2], image.grid[:2])
    with pytest.raises(
        ValueError, match=r"image is the brick \(2, 8, 9\) at \(0, 0, 0\) of .*: volux\.support"
    ):
        volux.resample(brick, GRID, antialias=None)


@pytest.mark.parametrize("image", [volux.Image(ARRAY), volux.Image.brick(ARRAY[:4], WHOLE[:4])])
def test_a_value_error_of_the_callers_is_no_word_about_a_brick(image):
    enough = ValueError("enough")

    def stop(_fraction):
        raise enough

    with pytest.raises(ValueError, match="enough") as caught:
        volux.resample(image, WHOLE[:2], progress=stop)
    assert caught.value is enough


@pytest.mark.parametrize(
    "call",
    [
        lambda brick: volux.resize(brick, shape=(2, 2, 2)),
        lambda brick: volux.sample(brick, (0, 0, 0)),
        lambda brick: volux.sample_gradient(brick, (0, 0, 0)),
        lambda brick: volux.reslice(brick, brick.grid),
    ],
    ids=["resize", "sample", "sample_gradient", "reslice"],
)
def test_a_brick_serves_no_other_call(call):
    image = volux.Image(ARRAY, PLACE)
    brick = volux.Image.brick(ARRAY[:2], image.grid[:2])
    with pytest.raises(ValueError, match=r"image is a brick of a larger one; resample\(\) alone"):
        call(brick)


def test_a_brick_may_have_channels():
    colours = np.stack([ARRAY, -ARRAY], axis=-1)
    brick = volux.Image.brick(colours[:4], WHOLE[:4])
    made = volux.resample(brick, WHOLE[:2])
    assert same_bits(made.array, np.ascontiguousarray(colours[:2]))


def test_a_brick_has_the_shape_of_its_grid():
    with pytest.raises(
        ValueError, match=r"array has the shape \(7, 8, 9\), and the grid \(2, 8, 9\)"
    ):
        volux.Image.brick(ARRAY, volux.Grid((7, 8, 9), PLACE)[:2])


def test_the_image_is_asked_for_by_its_name():
    with pytest.raises(TypeError, match="image"):
        volux.support(GRID, np.s_[:1])
