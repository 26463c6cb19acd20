"""The programs in examples/python draw what they say, here of small volumes."""

import importlib
import re
import runpy
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
import volux

for needed in ("nibabel", "SimpleITK", "PIL"):
    pytest.importorskip(needed)
Pillow = importlib.import_module("PIL.Image")
ImageSequence = importlib.import_module("PIL.ImageSequence")

ROOT = Path(__file__).parents[2]
FOLDER = ROOT / "examples" / "python"
DEMO = ROOT / "scripts" / "demo"
pytestmark = pytest.mark.skipif(not FOLDER.exists(), reason="the programs are not beside the tests")

SMALL = (32, 40, 24)
DRAWN = {
    "kernels": "mr",
    "borders": "mr",
    "warp": "mr",
    "reduced_labels": "labels",
    "resized": "ct",
}


@pytest.fixture(autouse=True)
def beside_the_programs(monkeypatch):
    monkeypatch.syspath_prepend(str(FOLDER))


def program(name):
    return importlib.import_module(name)


def head(kind):
    return volux.Image.from_nibabel(program("head").head(kind, SMALL))


def tiles_of(name, image, monkeypatch):
    """The tiles of a program's sheet: pictures as arrays, captions and planes."""
    module, found = program(name), []
    monkeypatch.setattr(module, "sheet", lambda _, tiles: found.extend(tiles))
    getattr(module, name)(image)
    return [tile._replace(picture=np.array(tile.picture)) for tile in found]


def command(name, *arguments, monkeypatch):
    monkeypatch.setattr(sys, "argv", [f"{name}.py", *map(str, arguments)])
    runpy.run_path(str(FOLDER / f"{name}.py"), run_name="__main__")


@pytest.mark.parametrize(("name", "kind"), DRAWN.items())
def test_a_program_makes_a_picture_of_a_file(name, kind, tmp_path, monkeypatch):
    scan, picture = tmp_path / "head.nii.gz", tmp_path / "picture.png"
    program("nibabel").save(program("head").head(kind, SMALL), scan)
    command(name, scan, picture, monkeypatch=monkeypatch)
    with Pillow.open(picture) as opened:
        assert len(opened.getcolors(1 << 20)) > 20


@pytest.mark.parametrize("name", [*DRAWN, "head", "rays", "turning"])
def test_a_program_that_is_not_told_enough_says_how_it_is_used(name, monkeypatch):
    with pytest.raises(SystemExit, match=rf"^Usage: python {name}\.py "):
        command(name, "one", monkeypatch=monkeypatch)


UNFIT = {
    "kernels": (np.ones((9, 9, 9)), "have different values"),
    "borders": (np.full((4, 4, 4), np.nan), "have different values"),
    "warp": (np.zeros((2, 2, 2)), "have different values"),
    "reduced_labels": (np.ones((8, 8, 2)), "have labels over 4 voxels along each axis"),
    "resized": (np.full((4, 4, 4), -1000.0), "have voxels above -300"),
    "rays": (np.zeros((5, 5, 5)), "have voxels above 650"),
    "turning": (np.full((60, 2, 1), 900.0), "have bone 8 times as wide as high at most"),
}


@pytest.mark.parametrize("name", UNFIT)
def test_a_program_says_in_a_line_what_a_volume_lacks(name, tmp_path, monkeypatch):
    array, words = UNFIT[name]
    scan = tmp_path / "scan.nii"
    program("nibabel").save(program("nibabel").Nifti1Image(array.astype("f4"), np.eye(4)), scan)
    with pytest.raises(SystemExit) as ended:
        command(name, scan, tmp_path / "x.gif", monkeypatch=monkeypatch)
    assert str(ended.value) == f"{scan}: the volume must {words}"


@pytest.mark.parametrize(
    ("array", "words"),
    [
        (None, "there is no such file"),
        (np.ones((4, 4, 4, 2)), "the volume must be one, not a series or several channels"),
        (np.eye(3)[..., None] * np.arange(3), "the volume must be 17 voxels long or longer"),
    ],
)
def test_a_file_that_has_no_volume_to_draw_is_named(array, words, tmp_path, monkeypatch):
    scan = tmp_path / "scan.nii"
    if array is not None:
        image = program("nibabel").Nifti1Image(array.astype("i2"), np.eye(4))
        program("nibabel").save(image, scan)
    with pytest.raises(SystemExit, match=f"{scan}: {words}"):
        command("kernels", scan, tmp_path / "x.png", monkeypatch=monkeypatch)


def test_a_head_of_another_kind_is_refused_in_words(monkeypatch):
    with pytest.raises(SystemExit, match="pet: must be mr, ct or labels"):
        command("head", "pet", "x.nii", monkeypatch=monkeypatch)


def test_the_head_has_regions_on_both_sides_and_bone_around_them():
    labels, ct = head("labels"), head("ct")
    left, right = (np.unique(half[half > 0]) for half in np.split(labels.array, 2))
    assert (left % 2 == 0).all()
    assert (right % 2 == 1).all()
    assert len(left) == len(right) == 12
    assert not (labels.array[ct.array > 900] > 0).any()


def test_nothing_is_written_over_a_picture():
    paper, rng = program("paper"), np.random.default_rng(3)
    plane = volux.Plane((0, 0, 0), (0, 1, 0), (0, 0, 1), (60, 80), 1.0)
    shown = [rng.integers(0, 256, (60, 80, 3), np.uint8) for _ in range(2)]
    long = "a caption of many more words than there is room for above so small a picture as this"
    tiles = [paper.Tile(Pillow.fromarray(pixels), long, plane) for pixels in shown]
    page = np.array(paper.sheet("A title", tiles))
    places = np.lib.stride_tricks.sliding_window_view(page, (1, 80, 3))[:, :, 0]
    for pixels in shown:
        (top,), (left,) = (places == pixels[:1]).all(axis=(2, 3, 4)).nonzero()
        np.testing.assert_array_equal(page[top : top + 60, left : left + 80], pixels)


@pytest.mark.parametrize(("spacings", "bars"), [((1.0, 1.0), [20]), ((1.0, 0.25), [20, 5])])
def test_a_row_has_one_bar_for_each_scale_of_a_round_length(spacings, bars):
    paper = program("paper")
    planes = [volux.Plane((0, 0, 0), (0, 1, 0), (0, 0, 1), (60, 80), edge) for edge in spacings]
    black = Pillow.new("RGB", (80, 60))
    page = np.array(paper.sheet("", [paper.Tile(black, "", plane) for plane in planes]))
    lines = page[-paper.MARGIN - paper.LINE :]
    is_bar = (lines == paper.INK).all(axis=2).sum(axis=0) == 4
    runs = np.flatnonzero(np.diff(np.pad(is_bar.astype(int), 1))).reshape(-1, 2)
    lengths = [end - start - 1 for start, end in runs if end - start > 8]
    assert lengths == [length / edge for length, edge in zip(bars, spacings, strict=False)]


@pytest.mark.parametrize(
    ("direction", "letters"),
    [((1, 0, 0), "R"), ((0, -2, 0.1), "P"), ((0, 0, 1), "S"), ((-0.5, 0.8, 0), "AL")],
)
def test_letters_say_the_sides_of_the_patient(direction, letters):
    assert program("paper").side(np.array(direction, float)) == letters


def test_kernels_are_shown_on_the_same_part_and_nearest_has_voxels_alone(monkeypatch):
    whole, *parts = tiles_of("kernels", head("mr"), monkeypatch)
    assert {tile.picture.shape for tile in (whole, *parts)} == {(340, 340, 3)}
    assert len({tile.plane for tile in parts}) == 1
    steps = [np.mean(np.diff(tile.picture[..., 0].astype(int)) != 0) for tile in parts]
    assert steps[0] < 0.1 < 0.2 < min(steps[1:])


def test_the_frame_surrounds_the_part_that_is_magnified():
    kernels, image = program("kernels"), head("mr")
    plane = volux.Plane((0, 0, 0), kernels.NORMAL, kernels.UP, (340, 340), 0.6)
    part, (left, top, right, bottom) = kernels.telling(image, plane)
    corners = part.grid.affine @ np.array([[0, -0.5, -0.5, 1], [0, 339.5, 339.5, 1]]).T
    _, rows, columns, _ = np.linalg.solve(plane.grid.affine, corners) + 0.5
    np.testing.assert_allclose([*columns, *rows], [left, right, top, bottom], atol=1.0)


def test_outside_the_volume_there_is_the_constant_or_the_edge(monkeypatch):
    array = np.full(SMALL, 7.0)
    array[0] = 0.0  # a dark side, so that there is a window
    constant, extended = tiles_of("borders", volux.Image(array, axes="xyz"), monkeypatch)
    is_line = (constant.picture == program("paper").ACCENT).all(axis=2)
    corner = constant.picture[0, 0, 0]
    assert 0 < corner < 255
    assert is_line.any()
    assert set(np.unique(extended.picture[~is_line])) >= {0, 255}
    assert corner not in extended.picture[0]


def test_resized_slices_are_thinner(monkeypatch):
    stored, resized, *_ = tiles_of("resized", head("ct"), monkeypatch)
    changes = [
        np.count_nonzero(np.diff(tile.picture.astype(int), axis=0).any(axis=(1, 2)))
        for tile in (stored, resized)
    ]
    assert changes[0] < 24 <= 1.3 * changes[0] < changes[1]


def test_only_means_of_numbers_invent_labels(monkeypatch):
    module, labels = program("reduced_labels"), head("labels")
    counts = [
        int(tile.caption.endswith("none invented"))
        for tile in tiles_of("reduced_labels", labels, monkeypatch)
    ]
    assert counts == [0, 1, 1, 0]
    blocks = np.zeros((4, 4, 8), np.uint8)
    blocks[..., 4:] = 3
    small = volux.Image(np.array([[[3, 3]]], np.uint8))
    assert module.invented(volux.Image(blocks), small).tolist() == [[[True, False]]]


def test_a_grid_is_bent_by_the_field_and_by_nothing_else(monkeypatch):
    module, image = program("warp"), head("mr")
    bent, straight = tiles_of("warp", image, monkeypatch)
    assert (bent.picture != straight.picture).any()
    monkeypatch.setattr(module, "STRENGTH", 0.0)
    first, second = tiles_of("warp", image, monkeypatch)
    np.testing.assert_allclose(first.picture.astype(int), second.picture, atol=2)  # rounding


def ball(radius, extent=32):
    """A ball that grows denser inwards, by 100 a mm, and is 0 on its surface."""
    axes = np.meshgrid(*[np.arange(extent) - (extent - 1) / 2] * 3, indexing="ij")
    return volux.Image(100.0 * (radius - np.sqrt(sum(axis**2 for axis in axes))))


@pytest.mark.parametrize("degrees", [0.0, 37.0, 90.0])
def test_rays_meet_a_ball_within_half_a_voxel_of_its_surface(degrees):
    surface, image = program("surface"), ball(10.0)
    seen = surface.view(image, degrees, 0.5)
    met, places = surface.surface(image, seen, 0.0)
    distances = np.linalg.norm(places - 15.5, axis=1)
    assert met.sum() * 0.25 == pytest.approx(np.pi * 10.0**2, rel=0.05)
    np.testing.assert_allclose(distances, 10.0, atol=0.5)
    gaze = np.array([np.sin(np.radians(degrees)), -np.cos(np.radians(degrees)), 0.0])
    assert ((places - 15.5) @ gaze < 0.5).all()  # the near side


def test_rays_see_a_head_as_long_as_it_is_from_the_side(monkeypatch):
    monkeypatch.setattr(program("rays"), "PIXELS", 60)
    front, between, left = tiles_of("rays", head("ct"), monkeypatch)
    paper = program("paper").PAPER
    widths = [(tile.picture != paper).any(axis=(0, 2)).sum() for tile in (front, left)]
    assert widths[1] / widths[0] == pytest.approx(88 / 70, rel=0.1)
    assert between.plane.shape[0] == front.plane.shape[0] == 60


def test_a_surface_is_lit_from_above_the_left_shoulder():
    surface, image = program("surface"), ball(10.0)
    light = np.array(surface.shaded(image, surface.view(image, 0.0, 0.5), 0.0)).sum(axis=2)
    rows, columns = (light == light.max()).nonzero()
    assert rows.mean() < light.shape[0] / 2
    assert columns.mean() < light.shape[1] / 2


def test_what_is_far_from_compact_bone_is_left_out():
    array = np.full((24, 60, 24), -1000, np.int16)
    array[4:20, 4:20, 4:20] = 1000
    array[4:20, 50:52, 4:20] = 500  # a headrest
    bones = program("surface").bones_of(volux.Image(array))
    assert (bones.array == 1000).sum() == 16**3
    assert not (bones.array == 500).any()


def test_a_turning_skull_has_as_many_frames_as_sides(tmp_path):
    turning = program("turning")
    turning.save(turning.frames(head("ct"), count=5, pixels=60), tmp_path / "skull.gif")
    with Pillow.open(tmp_path / "skull.gif") as animation:
        shown = [frame.convert("RGB").tobytes() for frame in ImageSequence.Iterator(animation)]
        assert animation.info["loop"] == 0
    assert len(shown) == len(set(shown)) == 5


def test_the_demo_runs_every_program_that_draws():
    drawing = {path.stem for path in FOLDER.glob("*.py")} - {"paper", "surface", "head"}
    assert set(re.findall(r'^ *program ".*" (\w+)', DEMO.read_text(), re.MULTILINE)) == drawing


@pytest.mark.parametrize(
    ("arguments", "status", "words"),
    [
        (["--help"], 0, "Usage: scripts/demo [FILE]"),
        (["--wrong"], 2, "Usage: scripts/demo [FILE]"),
        (["a", "b"], 2, "Usage: scripts/demo [FILE]"),
        (["missing.nii"], 1, "missing.nii: there is no such file"),
    ],
)
def test_the_demo_answers_wrong_use_before_it_installs_anything(arguments, status, words):
    done = subprocess.run([DEMO, *arguments], capture_output=True, text=True)
    assert done.returncode == status
    assert words in done.stdout + done.stderr
