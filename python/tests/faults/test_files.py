"""Disks that are full or broken, calls that are interrupted: nothing is lost, nothing is left.

Each call to the system about a file of a command fails once, in a run of its own. By default some
of them do, drawn by the command; with VOLUX_LONG=1 all do, which takes minutes.
"""

import errno
import json
import os
import random
import shutil
from collections import Counter
from pathlib import Path

import numpy as np
import pytest

from ..tool.runs import nibabel

pytest.importorskip("zarr", reason="plans need the extra: pip install 'volux[scale]'")

ALL = os.environ.get("VOLUX_LONG") == "1"
SOME = 3
SHORT = -1  # half of what is asked for is read or written

FAILURES = (errno.ENOSPC, errno.EIO)
# What makes a call fail, and what it must be carried on after.
FAULTS = {
    "open": (*FAILURES, errno.EMFILE),
    "read": (errno.EIO, errno.EINTR, SHORT),
    "write": (*FAILURES, errno.EINTR, SHORT),
    "fsync": (*FAILURES, errno.EINTR),
    "ftruncate": (errno.EIO, errno.EINTR),
    "rename": FAILURES,
    "link": FAILURES,
    "mkdir": FAILURES,
    "close": FAILURES,
    "mmap": (errno.ENOMEM, errno.EIO),
}
CARRIED_ON = (errno.EINTR, SHORT)

VERBS = [
    "info ct.nii",
    "info pair.img",
    "digest ct.nii.gz",
    "compare ct.nii ct.nii.gz",
    "convert ct.nii.gz -o x.nii",
    "convert ct.nii -o x.img",
    "resize ct.nii -o x.nii.gz --spacing 2",
    "resize ct.nii -o x.nrrd --scale 2",
    "resize ct.nii -o old.nii.gz --force --scale 2",
    "resize ct.nii -o pair.img --force --scale 2",
    "resample ct.nii -o x.nii --like ct.nii.gz --transform shift.txt",
    "crop ct.nii.gz -o x.mha --box 1:5,:,:",
    "reslice ct.nii.gz -o x.mgz --normal 0,0,1",
    "sample ct.nii.gz points.csv -o x.csv",
    "view ct.nii.gz -o x.png",
    "plan resize ct.nii -o new.zarr --scale 2 --chunk 8",
    "status made.plan.json",
    "verify made.plan.json",
]
# What these have made stays, and they go on from there.
GOING_ON = ["run begun.plan.json --threads 1", "pyramid made.zarr --levels 2 --quiet"]


@pytest.fixture(scope="module")
def start(tmp_path_factory, commanded):
    """A folder of inputs, of an output, and of plans that are begun and finished."""
    folder = tmp_path_factory.mktemp("start")
    voxels = np.arange(12 * 10 * 8, dtype=np.int16).reshape(12, 10, 8)
    for name in ("ct.nii", "ct.nii.gz"):
        image = nibabel.Nifti1Image(voxels, np.diag([1, 1.25, 3, 1]))
        nibabel.save(image, folder / name)
    (folder / "shift.txt").write_text("1 0 0 2\n0 1 0 0\n0 0 1 0\n0 0 0 1\n")
    (folder / "points.csv").write_text("x,y,z\n1,2,3\n")
    for typed in (
        "convert ct.nii -o old.nii.gz",
        "convert ct.nii -o pair.img",
        "plan resize ct.nii -o begun.zarr --scale 2 --unit 16,32,32 --chunk 16",
        "plan resize ct.nii -o made.zarr --scale 2 --unit 16,32,32 --chunk 16",
        "run made.plan.json",
        "verify made.plan.json",
    ):
        assert commanded(folder, typed)["code"] == 0, typed
    return folder


@pytest.fixture
def afresh(start, tmp_path):
    """Make a folder as the command finds it, and return it."""
    folder = tmp_path / "work"

    def make():
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(start, folder)
        return folder

    return make


def content(folder):
    """All that is in a folder, but for how long tasks took."""
    found = {}
    for path in sorted(Path(folder).rglob("*")):
        data = path.read_bytes() if path.is_file() else None
        if path.parent.name.isdecimal() and path.suffix == ".json" and ".volux" in str(path):
            record = json.loads(data)
            data = {key: record[key] for key in record if key not in ("seconds", "memory")}
        found[str(path.relative_to(folder))] = data
    return found


def faults_of(typed, calls):
    """Each call of a command with each fault that it may have, or some of that.

    A call is known by its name and its number among those of this name: threads that work beside
    one another change the order of the others.
    """
    every = [
        (call, n, error)
        for call, count in Counter(call for call, _ in calls).items()
        for n in range(1, count + 1)
        for error in FAULTS[call]
    ]
    return every if ALL else random.Random(typed).sample(every, min(SOME, len(every)))


def tried(commanded, afresh, typed):
    """Run a command with one fault after the other; yield the fault and how the command ended."""
    folder = afresh()
    whole = commanded(folder, typed)
    assert whole["code"] == 0, whole
    after = content(folder)
    for call, n, error in faults_of(typed, whole["calls"]):
        folder = afresh()
        before = content(folder)
        ended = commanded(folder, typed, (call, n, error))
        paths = [path for name, path in ended["calls"] if name == call]
        named = errno.errorcode.get(error, "short")
        assert len(paths) >= n, (typed, call, n, named, ended)
        about = f"{typed}: {call} {n}, {paths[n - 1]}: {named}, {ended}"
        if error in CARRIED_ON:
            assert ended["code"] == 0, about
        if ended["code"] != 0:
            assert_told(ended, about)
        yield folder, ended["code"], (before, after), about


def assert_told(ended, about):
    assert ended["code"] == 1, about
    assert ended["err"].startswith("volux: "), about
    assert ended["err"].count("\n") == 1, about
    assert "for a reason that it should have said" not in ended["err"], about


@pytest.mark.parametrize("typed", VERBS)
def test_a_call_that_fails_loses_nothing_and_leaves_nothing(typed, commanded, afresh):
    for folder, code, (before, after), about in tried(commanded, afresh, typed):
        assert content(folder) == (after if code == 0 else before), about


@pytest.mark.parametrize("typed", GOING_ON)
def test_what_a_call_that_fails_has_left_undone_is_done_by_another_run(typed, commanded, afresh):
    for folder, code, (before, after), about in tried(commanded, afresh, typed):
        left = content(folder)
        for name in before.keys() | left.keys():
            assert left[name] == after[name] or (code != 0 and left[name] == before[name]), about
        assert commanded(folder, typed)["code"] == 0, about
        assert content(folder) == after, about
