"""What a process that was killed left beside its output goes with the next one."""

import signal
import subprocess
import sys
from pathlib import Path

import pytest

from .runs import done, left

KILLED = """
import os, signal, sys
from volux.tool import _cli, _slabs
write = _slabs.write
def killed(scan, path):
    write(scan, path)
    os.kill(os.getpid(), signal.SIGKILL)
_slabs.write = killed
_cli.main(["convert", "ct.nii.gz", "-o", sys.argv[1]])
"""


def kill(output):
    """Kill a process that writes an output, and return what it left."""
    before = set(left())
    ran = subprocess.run([sys.executable, "-c", KILLED, output], check=False)
    assert ran.returncode == -signal.SIGKILL
    (folder,) = set(left()) - before
    assert left(folder) == [output]
    return folder


@pytest.mark.usefixtures("ct")
def test_what_a_killed_process_left_is_removed_by_the_next_one_with_its_output():
    folder, other = kill("x.nii"), kill("y.nii")
    done("convert", "ct.nii.gz", "-o", "x.nii", "--no-sidecar")
    assert left() == sorted([other, "ct.nii.gz", "x.nii"])
    assert folder.startswith(".x.nii.")


@pytest.mark.usefixtures("ct")
def test_what_a_living_process_writes_is_left_alone():
    from volux.tool._output import placed

    with placed("x.nii") as path:
        path.write_text("living")
        done("convert", "ct.nii.gz", "-o", "x.nii", "--no-sidecar")
        assert path.read_text() == "living"
    assert Path("x.nii").read_text() == "living"
    assert left() == ["ct.nii.gz", "x.nii"]


@pytest.mark.usefixtures("ct")
def test_nothing_else_is_removed():
    names = [".x.nii.mine", ".x.nii.partial.txt", "x.nii.partial", ".y.x.nii.1.partial"]
    for name in names:
        Path(name).mkdir()
    Path(".x.nii.1.partial").write_text("a file, which no process makes")
    Path(".x.nii.2.partial").symlink_to(".x.nii.mine")
    before = set(left())
    done("convert", "ct.nii.gz", "-o", "x.nii", "--no-sidecar")
    assert set(left()) == before | {"x.nii"}
