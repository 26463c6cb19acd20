"""Runs of the command, as a user types it, and files for them."""

import contextlib
import io
import os
import subprocess
import sys
from typing import NamedTuple

import numpy as np
import pytest

pytest.importorskip("typer", reason="the tool needs the extra: pip install 'volux[tool]'")
nibabel = pytest.importorskip("nibabel")
sitk = pytest.importorskip("SimpleITK")

PROGRAM = (sys.executable, "-m", "volux.tool")


class Ended(NamedTuple):
    code: int
    out: str
    err: str


def run(*arguments):
    """Run the command in this process, where that says as much and is faster."""
    from volux.tool._cli import main

    out, err = io.StringIO(), io.StringIO()
    with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
        code = main([str(argument) for argument in arguments])
    return Ended(code, out.getvalue(), err.getvalue())


def done(*arguments):
    """Run a command that must succeed, and return what it printed."""
    ended = run(*arguments)
    assert ended.code == 0, ended.err
    return ended.out


def spawned(*arguments, **options):
    """Run the command in a process of its own."""
    options = {"capture_output": True, "timeout": 120, **options}
    return subprocess.run([*PROGRAM, *map(str, arguments)], check=False, **options)


def started(*arguments, **options):
    """Start the command in a process of its own."""
    pipes = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.Popen([*PROGRAM, *map(str, arguments)], **pipes)


def oblique(spacing=(1.0, 1.25, 3.0), origin=(20.0, -3.5, 1.25)):
    """An affine of turned axes, the first of which runs to the left: left-handed."""
    c, s = np.cos(0.25), np.sin(0.25)
    affine = np.eye(4)
    affine[:3, :3] = np.array([[-1, 0, 0], [0, c, s], [0, -s, c]]) @ np.diag(spacing)
    affine[:3, 3] = origin
    return affine


def voxels(shape=(12, 10, 8), dtype=np.int16, seed=3):
    return np.random.default_rng(seed).integers(-500, 1500, shape).astype(dtype)


def save(name, array=None, affine=None, **header):
    """Save a NIfTI file with fields of its header."""
    array = voxels() if array is None else array
    affine = oblique() if affine is None else affine
    image = nibabel.Nifti1Image(array, affine)
    image.set_sform(affine, 1)
    image.set_qform(affine, 1)
    for field, value in header.items():
        image.header[field] = value
    nibabel.save(image, name)
    return str(name)


def left(folder="."):
    """The names in a folder."""
    return sorted(os.listdir(folder))
