"""Broken files lead to a result or to a line, and never to a traceback.

VOLUX_LONG=1 tries two hundred files with each verb, and else there are some.
"""

import gzip
import os
from pathlib import Path

import numpy as np
import pytest

from .runs import run, sitk

COUNT = 200 if os.environ.get("VOLUX_LONG") else 25
VERBS = [
    "info {}",
    "digest {}",
    "convert {} -o out.nrrd -f",
    "convert {} -o out.nii -f --dtype int8 --memory 4GiB",
    "resize {} -o out.nii -f --shape 5",
    "resample {} -o out.nii -f --like ct.nii.gz",
    "resample ct.nii.gz -o out.nii -f --like {} --memory 1GiB",
    "resample ct.nii.gz -o out.nii -f --transform {}",
    "crop {} -o out.mgz -f --box 0:1,:,:",
    "reslice {} -o out.mha -f --normal 1,1,0 --shape 6 --spacing 2",
    "sample {} points.csv",
    "sample ct.nii.gz {}",
    "compare {} ct.nii.gz",
    "view {} -o out.png -f --size 32",
    "view ct.nii.gz --labels {} -o out.png -f --size 32",
]
SUFFIXES = [".nii", ".nii.gz", ".img", ".mgz", ".nrrd", ".mha", ".tfm", ".txt", ".csv", ".dcm"]


def files():
    """The bytes of a small file of each format."""
    for suffix in (".nii", ".img", ".mgh", ".nrrd", ".mha"):
        assert run("convert", "ct.nii.gz", "-o", f"whole{suffix}", "--no-sidecar").code == 0
    sitk.WriteImage(sitk.Image([4, 5], sitk.sitkUInt16), "whole.dcm")
    sitk.WriteTransform(sitk.TranslationTransform(3, (1.0, 2.0, 3.0)), "whole.tfm")
    Path("whole.csv").write_text("x,y,z\n1,2,3\n")
    Path("whole.txt").write_text("1 0 0 0\n0 1 0 0\n0 0 1 0\n0 0 0 1\n")
    made = {path.suffix: path.read_bytes() for path in Path().glob("whole.*")}
    return made | {".nii.gz": made[".nii"], ".mgz": made[".mgh"]}


def broken(random, n, whole):
    """A file with changed bytes, mostly of its header, cut short, or of noise, under some name."""
    suffix = SUFFIXES[n % len(SUFFIXES)]
    data = bytearray(whole[suffix] if n % 7 else random.bytes(600))
    for at in random.integers(0, min(len(data), 400), random.integers(0, 7)):
        data[at] = random.choice([0, 1, 127, 128, 255, random.integers(256)])
    if n % 5 == 0:
        data = data[: random.integers(0, len(data))]
    if suffix in (".nii.gz", ".mgz") and n % 3:  # so that what is inside is broken
        data = gzip.compress(data, mtime=0)
    path = Path(f"broken{suffix}")
    path.write_bytes(data)
    return path


@pytest.mark.usefixtures("ct")
@pytest.mark.filterwarnings("ignore")  # of nibabel and numpy, which the command says as lines
@pytest.mark.parametrize("verb", VERBS)
def test_a_broken_file_leads_to_a_result_or_to_a_line(verb):
    whole = files()
    Path("points.csv").write_text("x,y,z\n1,2,3\n")
    for n in range(COUNT):
        path = broken(np.random.default_rng([VERBS.index(verb), n]), n, whole)
        ended = run(*verb.format(path).split())
        path.unlink()
        assert ended.code in (0, 1, 2), (n, ended)
        assert "Traceback" not in ended.err, (n, ended)
        assert "for a reason that it should have said" not in ended.err, (n, ended)
