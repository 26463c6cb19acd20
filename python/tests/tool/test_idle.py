"""Options without effect are refused, and taken where they have one."""

import numpy as np
import pytest

from .runs import done, left, run, save, voxels

RESIZE = "resize a.nii -o x.nii --scale 2"
RESLICE = "reslice a.nii -o x.nii"
NORMAL = f"{RESLICE} --normal 0,1,1"
THROUGH = f"{RESLICE} --through 0,0,0 --through 1,0,0 --through 0,1,0"

# What has no effect, what is said then, and what gives it one.
IDLE = {
    f"{RESIZE} --fill 5": ("--fill 5: the edge goes on outside", "--border constant"),
    f"{NORMAL} --fill 5 --outside extend": ("--fill 5: the edge goes on", "--border constant"),
    "sample a.nii p.csv --fill 0": ("--fill 0: the edge goes on", "--border constant"),
    f"{NORMAL} --border constant --outside fill": ("--outside fill: goes with --border edge", ""),
    "convert a.nii -o x.nii --overflow wrap": ("no number changes", "--dtype uint8"),
    "crop a.nii -o x.nii --box :,:,: --overflow wrap": ("no number changes", "--dtype uint8"),
    f"{RESIZE} --dtype float32 --overflow wrap": ("the result is float32", ""),
    "resize f.nii -o x.nii --scale 2 --overflow wrap": ("result is float32", "--dtype int16"),
    f"{THROUGH} --up 0,0,1": ("--up 0,0,1: goes with --normal", ""),
    f"{NORMAL} --projection mean": ("--projection mean: goes with --slab", "--slab 3"),
    "convert a.nii -o - --json": ("--json and -o - both write to stdout", "--dry-run"),
}


@pytest.fixture(autouse=True)
def files():
    save("a.nii")
    save("f.nii", voxels(dtype=np.float32))
    with open("p.csv", "w") as points:
        points.write("x,y,z\n1,2,3\n900,2,3\n")


@pytest.mark.parametrize("typed", IDLE)
def test_an_option_without_effect_is_refused(typed):
    ended = run(*typed.split())
    assert (ended.code, ended.out, ended.err.count("\n")) == (2, "", 1)
    assert IDLE[typed][0] in ended.err
    assert left() == ["a.nii", "f.nii", "p.csv"]


@pytest.mark.parametrize(("typed", "more"), [(t, more) for t, (_, more) in IDLE.items() if more])
def test_it_is_taken_where_it_has_one(typed, more):
    if typed.startswith(NORMAL) and "--outside extend" in typed:
        typed = typed.replace("--outside extend", "")
    done(*typed.split(), *more.split())
