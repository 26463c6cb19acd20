"""Both sides of every row of the page for those who know another library."""

import re
import warnings

import numpy as np
import pytest
import volux

from .pages import BLOCK, FOLDER

PAGE = FOLDER / "coming-from.md"
TEXT = PAGE.read_text() if PAGE.exists() else ""
ROW = re.compile(r"^\| `(.+?)` \| `(.+?)` \| (.+?) \| (yes|inside|±1|no) \|$", re.MULTILINE)
FLIP = np.diag([-1.0, -1.0, 1.0, 1.0])
pytestmark = pytest.mark.skipif(not TEXT, reason="the pages are not beside the tests")


def rows_of_the_page():
    """Each row of each table: its section, its calls and what it says."""
    for section in TEXT.split("\n## ")[1:]:
        title = section.partition("\n")[0]
        for row in ROW.finditer(section):
            yield pytest.param(section, row[1], row[2], row[4], id=f"{title}: {row[1]}")


ROWS = list(rows_of_the_page())


@pytest.fixture(scope="module", autouse=True)
def folder(tmp_path_factory):
    """The folder of the files that rows name."""
    with pytest.MonkeyPatch.context() as patch:
        patch.chdir(tmp_path_factory.mktemp("rows"))
        yield


def names_of(section):
    """What the rows of a section refer to: the block of the page, and what only they use."""
    names = {}
    exec(BLOCK.search(TEXT)[1], names)
    module, short = re.search(r"`import ([\w.]+)(?: as (\w+))?`", section).groups()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # what others warn of while they are imported
        names[short or module] = pytest.importorskip(module)
    add = {"sitk": add_sitk, "F": add_torch, "mt": add_monai, None: add_ants}
    add.get(short, lambda _: None)(names)
    return names


def affine_of_sitk(sitk, names):
    """An affine transform in LPS, its matrix, and a field that lies where the image does."""
    lps = np.eye(4)
    lps[:3] = [[1.02, -0.01, 0, 1.1], [0.01, 0.98, -0.02, -0.5], [0, 0.01, 1.03, 0.7]]
    affine = sitk.AffineTransform(3)
    affine.SetMatrix(lps[:3, :3].ravel().tolist())
    affine.SetTranslation(lps[:3, 3].tolist())
    vectors = names["random"].normal(0.0, 0.4, (*names["array"].shape, 3))
    field = sitk.GetImageFromArray(vectors, isVector=True)
    field.CopyInformation(names["image"].to_sitk())
    return affine, lps, field


def add_sitk(names):
    affine, lps, field = affine_of_sitk(names["sitk"], names)
    names |= {"affine": affine, "lps": lps, "field": field, "flip": FLIP}
    ours = {"moving": "image", "fixed": "like", "moving_ints": "whole", "segmented": "segments"}
    names |= {theirs: names[name].to_sitk() for theirs, name in ours.items()}


def add_torch(names):
    import torch

    array = names["array"]
    grid = names["random"].uniform(-1.3, 1.3, (1, 5, 10, 10, 3))
    names |= {"grid": torch.from_numpy(grid), "zyx": grid[0, ..., ::-1]}
    names |= {"tensor": torch.from_numpy(array)[None, None], "size": np.array(array.shape)}


def turn_around(names):
    """Give the images the axes x, y, z."""
    for name in ("image", "like", "segments"):
        image = names[name]
        array = np.ascontiguousarray(image.array.T, np.float32)
        names[name] = volux.Image(array, image.affine[:, [2, 1, 0, 3]], axes="xyz")


def add_monai(names):
    import torch
    from monai.data import MetaTensor

    turn_around(names)
    for theirs, ours in (("scan", names["image"]), ("other", names["like"])):
        affine = torch.tensor(ours.affine)
        names[theirs] = MetaTensor(torch.from_numpy(ours.array.copy())[None], affine=affine)
    names["middle"] = np.eye(4)
    names["middle"][:3, 3] = (np.array(names["image"].shape) - 1) / 2
    names["nibabel"] = pytest.importorskip("nibabel")


def add_ants(names):
    sitk = pytest.importorskip("SimpleITK")
    affine, lps, field = affine_of_sitk(sitk, names)
    sitk.WriteTransform(affine, "affine.mat")
    sitk.WriteImage(field, "warp.nii.gz")
    names["affine"] = volux.Affine(FLIP @ lps @ FLIP)
    names["warp"] = volux.Displacement.from_sitk(sitk.ReadImage("warp.nii.gz"))
    turn_around(names)
    for theirs, name in (("scan", "image"), ("fixed", "like"), ("segmented", "segments")):
        place = names[name].to_sitk()
        names[theirs] = names["ants"].from_numpy(
            names[name].array,
            origin=place.GetOrigin(),
            spacing=place.GetSpacing(),
            direction=np.reshape(place.GetDirection(), (3, 3)),
        )


def voxels_and_place(result):
    """The voxels of a result, and its affine in RAS if it has one."""
    kind = type(result).__module__.partition(".")[0]
    if kind == "SimpleITK":
        result = volux.Image.from_sitk(result)
    if isinstance(result, volux.Image):
        return result.array.astype(float), result.affine
    if kind == "monai":
        return result.numpy()[0].astype(float), result.affine.numpy()
    if kind == "torch":
        return result.numpy()[0, 0], None
    if kind == "ants":
        steps = result.direction * np.array(result.spacing)
        rows = np.column_stack([steps, result.origin])
        return result.numpy().astype(float), FLIP @ np.vstack([rows, [0, 0, 0, 1]])
    return np.asarray(result, float), None


def read_inside(here, names):
    """Where our call reads no voxel of the outermost layer."""
    image = names["image"]
    inner = np.zeros(image.shape)
    inner[1:-1, 1:-1, 1:-1] = 1.0
    changed = {"array": inner, "image": volux.Image(inner, image.affine, axes=image.axes)}
    return voxels_and_place(eval(here, names | changed))[0] > 1.0 - 1e-9


def test_every_row_of_a_table_is_tried():
    lines = re.findall(r"^\| (?!theirs \|)", TEXT, re.MULTILINE)
    assert len(lines) == len(ROWS) > 0


@pytest.mark.parametrize(("section", "theirs", "here", "said"), ROWS)
def test_a_row_is_as_equal_as_the_page_says(section, theirs, here, said):
    names = names_of(section)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # what others warn of
        wanted, place = voxels_and_place(eval(theirs, names))
    made, place_here = voxels_and_place(eval(here, names))
    if place is not None and place_here is not None:
        np.testing.assert_allclose(place_here, place, rtol=0, atol=1e-9)
    assert made.shape == wanted.shape
    assert made.size == 1 or np.ptp(wanted) > 0.0
    off = np.abs(made - wanted)
    share = float(re.search(r"Within (\S+) of the greatest voxel", section)[1])
    equal = off <= share * np.abs(names["array"]).max()
    if said == "inside":
        inside = read_inside(here, names)
        assert inside.mean() > 0.1
        assert equal[inside].all()
    assert equal.all() == (said == "yes")
    assert said != "±1" or off.max() == 1.0
