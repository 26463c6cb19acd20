"""What goes wrong, what is said then, and that nothing is left behind."""

import os
from pathlib import Path

import numpy as np
import pytest

from .runs import left, nibabel, oblique, run, save, sitk, voxels


def nothing():
    pass


def an_empty_file():
    Path("x.nii").touch()


def a_truncated_gzip():
    whole = Path("ct.nii.gz").read_bytes()
    Path("x.nii.gz").write_bytes(whole[: len(whole) // 2])


def a_truncated_file():
    save("whole.nii")
    Path("x.nii").write_bytes(Path("whole.nii").read_bytes()[:-100])
    Path("whole.nii").unlink()


def text(name):
    def write():
        Path(name).write_text("this is a letter\n")

    return write


def a_folder():
    Path("x").mkdir()


def place(*numbers):
    """A file whose first row of the sform has other numbers."""

    def write():
        data = bytearray(Path(save("x.nii")).read_bytes())
        data[280:296] = np.array(numbers, "<f4").tobytes()
        Path("x.nii").write_bytes(data)

    return write


def complex_voxels():
    nibabel.save(nibabel.Nifti1Image(voxels(dtype=np.complex64), np.eye(4)), "x.nii")


def large_whole_numbers():
    array = np.full((2, 3, 4), 2**40)
    nibabel.save(nibabel.Nifti1Image(array, np.eye(4), dtype="int64"), "x.nii")


def an_output():
    Path("out.nii").write_text("precious")


def points(*lines):
    def write():
        Path("p.csv").write_text("".join(f"{line}\n" for line in lines))

    return write


def a_field_of_two():
    sitk.WriteImage(sitk.Image([4, 4, 4], sitk.sitkVectorFloat32, 2), "x.nrrd")


def a_spline():
    spline = sitk.BSplineTransform(3)
    sitk.WriteTransform(spline, "x.tfm")


def a_flat_transform():
    sitk.WriteTransform(sitk.TranslationTransform(2, (1.0, 2.0)), "x.tfm")


def matrix(line, name="x.txt"):
    def write():
        Path(name).write_text(f"1 0 0 0\n0 1 0 0\n0 0 1 0\n{line}\n")

    return write


RESIZE = "resize ct.nii.gz -o out.nii --spacing 1"
RESAMPLE = "resample ct.nii.gz -o out.nii"

# What is made first, what is typed, the exit code, and words that are said.
FAILURES = {
    "a missing file": (nothing, "info y.nii", 1, "y.nii: there is no such file"),
    "a name nearly right": (nothing, "info ct.nii", 1, "did you mean ct.nii.gz?"),
    "an empty file": (an_empty_file, "info x.nii", 1, "x.nii: the file is empty"),
    "a truncated gzip": (a_truncated_gzip, "info x.nii.gz", 1, "x.nii.gz: nibabel cannot read"),
    "a truncated file": (a_truncated_file, "info x.nii", 1, "x.nii: nibabel cannot read"),
    "no NIfTI": (text("x.nii"), "info x.nii", 1, "x.nii: nibabel cannot read"),
    "no gzip": (text("x.nii.gz"), "info x.nii.gz", 1, "x.nii.gz: nibabel cannot read"),
    "no NRRD": (text("x.nrrd"), "info x.nrrd", 1, "x.nrrd: SimpleITK cannot read it"),
    "an unknown format": (text("x.foo"), "info x.foo", 1, "x.foo: SimpleITK cannot read it"),
    "a folder without slices": (a_folder, "info x", 1, "x: the folder has no DICOM series"),
    "a spacing of NaN": (place(np.nan, 0, 0, 0), "info x.nii", 1, "x.nii: its place in the world"),
    "a singular place": (place(0, 0, 0, 0), "info x.nii", 1, "x.nii: its place in the world"),
    "complex voxels": (complex_voxels, "info x.nii", 1, "x.nii: its voxels are complex64"),
    "too large numbers": (large_whole_numbers, "info x.nii", 1, "that int32 cannot hold"),
    "an output that is there": (an_output, RESIZE, 1, "out.nii: is there already; --force"),
    "output is input": (nothing, "resize ct.nii.gz -o ct.nii.gz --scale 2 -f", 2, "is an input"),
    "output in no folder": (nothing, "crop ct.nii.gz -o no/x.nii --box :,:,:", 1, "no folder no"),
    "output is a folder": (a_folder, "convert ct.nii.gz -o x", 1, "x: is a folder"),
    "output in a folder of the system": (nothing, "convert ct.nii.gz -o /proc/x.nii", 1, "/proc/"),
    "output of no format": (nothing, "convert ct.nii.gz -o x.foo", 1, "x.foo: SimpleITK cannot"),
    "no output": (nothing, "convert ct.nii.gz", 2, "Missing option --output"),
    "an unknown verb": (nothing, "resise ct.nii.gz", 2, "Did you mean 'resize', 'reslice'?"),
    "an unknown option": (nothing, f"{RESIZE} --spcing 2", 2, "--spacing"),
    "an unknown kernel": (nothing, f"{RESIZE} --interp sinc", 2, "'nearest', 'linear', 'cubic'"),
    "no number": (nothing, "resize ct.nii.gz -o out.nii --spacing one", 2, "--spacing one: must"),
    "two numbers": (nothing, "resize ct.nii.gz -o out.nii --shape 3,4", 2, "--shape 3,4: must be"),
    "a centre that is no place": (
        nothing,
        "view ct.nii.gz -o out.png --centre nan,0,0",
        2,
        "must be finite",
    ),
    "half a voxel": (nothing, "resize ct.nii.gz -o out.nii --shape 3.5", 2, "whole numbers"),
    "a spacing of 0": (nothing, "resize ct.nii.gz -o out.nii --spacing 0", 2, "above 0"),
    "a negative scale": (nothing, "resize ct.nii.gz -o out.nii --scale -1", 2, "above 0"),
    "two sizes": (nothing, f"{RESIZE} --scale 2", 2, "one of --spacing, --shape and --scale"),
    "no size": (nothing, "resize ct.nii.gz -o out.nii", 2, "found: none"),
    "a fill beyond the type": (
        nothing,
        f"{RESIZE} --border constant --fill 1e9",
        2,
        "--fill 1000000000.0: int16",
    ),
    "half a fill of whole numbers": (
        nothing,
        f"{RESIZE} --border constant --fill 0.5",
        2,
        "--fill 0.5: int16 holds whole numbers",
    ),
    "an unknown type": (nothing, f"{RESIZE} --dtype int3", 2, "--dtype int3: allowed are uint8"),
    "too little memory": (nothing, f"{RESIZE} --memory 1MB", 1, "--memory allows"),
    "no size of memory": (nothing, f"{RESIZE} --memory much", 2, "--memory much: must be a size"),
    "no threads": (nothing, f"{RESIZE} --threads 0", 2, "threads"),
    "a box beyond": (nothing, "crop ct.nii.gz -o o.nii --box 0:99,:,:", 2, "not within 0:12"),
    "a box of two": (nothing, "crop ct.nii.gz -o o.nii --box 0:9,:", 2, "three ranges"),
    "no plane": (nothing, "reslice ct.nii.gz -o out.nii", 2, "give --normal, or --through"),
    "a normal of 0": (nothing, "reslice ct.nii.gz -o o.nii --normal 0,0,0", 2, "must not be 0"),
    "no target": (nothing, "resample ct.nii.gz -o out.nii", 2, "give --like, --transform"),
    "no transform": (nothing, f"{RESAMPLE} -t x.tfm", 1, "x.tfm: there is no such file"),
    "text for a transform": (text("x.tfm"), f"{RESAMPLE} -t x.tfm", 1, "x.tfm: SimpleITK cannot"),
    "words for a matrix": (text("x.txt"), f"{RESAMPLE} -t x.txt", 1, "x.txt: is no 4 x 4 matrix"),
    "a projective matrix": (matrix("0 0 1 1"), f"{RESAMPLE} -t x.txt", 1, "the last row"),
    "a matrix of FSL": (matrix("0 0 0 1", "x.mat"), f"{RESAMPLE} -t x.mat", 1, "as FSL writes it"),
    "a field of two": (a_field_of_two, f"{RESAMPLE} -t x.nrrd", 1, "x.nrrd: has 2 numbers a voxel"),
    "a spline": (a_spline, f"{RESAMPLE} -t x.tfm", 1, "TransformToDisplacementField"),
    "a flat transform": (a_flat_transform, f"{RESAMPLE} -t x.tfm", 1, "is a transform in 2-D"),
    "a missing grid": (nothing, f"{RESAMPLE} --like y.nii", 1, "y.nii: there is no such file"),
    "no points": (nothing, "sample ct.nii.gz p.csv", 1, "p.csv: there is no such file"),
    "empty points": (points(), "sample ct.nii.gz p.csv", 1, "p.csv: is empty"),
    "points of no space": (points("a,b,c"), "sample ct.nii.gz p.csv", 1, "must name the columns"),
    "points of words": (points("x,y,z", "1,2,up"), "sample ct.nii.gz p.csv", 1, "line 2 is"),
    "compared with nothing": (nothing, "compare ct.nii.gz y.nii", 1, "y.nii: there is no such"),
    "a file for a folder": (nothing, "info ct.nii.gz/x", 1, "ct.nii.gz/x"),
    "stdin for two": (nothing, "resample - -o x.nii --like -", 2, "stdin is one of them"),
    "stdin twice": (nothing, "compare - -", 2, "stdin is one of them"),
    "a type of the reader's": (
        nothing,
        "convert ct.nii.gz -o x.nii --dtype int64",
        2,
        "allowed are",
    ),
    "an option of no value": (nothing, "convert ct.nii.gz -o", 2, "`volux convert --help`"),
    "a flag with a value": (nothing, "info ct.nii.gz --json=1", 2, "`volux info --help`"),
    "no format": (nothing, "convert ct.nii.gz -o x", 1, 'ImageIO writer for "x"; .nii.gz'),
    "a flat format": (nothing, "convert ct.nii.gz -o x.jpg", 1, "write it: JPEG Writer can only"),
    "a folder of points": (a_folder, "sample ct.nii.gz x", 1, "x: there is no such file; POINTS"),
    "points and volume the wrong way": (
        points("x,y,z"),
        "sample p.csv ct.nii.gz",
        1,
        "INPUT comes before POINTS",
    ),
    "no threads for points": (
        points("x,y,z", "1,2,3"),
        "sample ct.nii.gz p.csv --threads 0",
        2,
        "--threads 0: must be from 1",
    ),
    "a tolerance of NaN": (
        nothing,
        "compare ct.nii.gz ct.nii.gz --tolerance-mm nan",
        2,
        "--tolerance-mm nan: must be 0 or above",
    ),
    "no threads where none works": (
        nothing,
        "convert ct.nii.gz -o x.nii --threads 0",
        2,
        "above 0",
    ),
    "a direction of one number": (nothing, "reslice ct.nii.gz -n --normal 1", 2, "three numbers"),
    "a plane of three extents": (
        nothing,
        "reslice ct.nii.gz -n --normal 0,0,1 --shape 5,6,7",
        2,
        "--shape 5,6,7: must be columns and rows",
    ),
    "a box from before": (nothing, "crop ct.nii.gz -n --box -30:,:,:", 2, "-30: along i is not"),
    "a negative tolerance": (
        nothing,
        "compare ct.nii.gz ct.nii.gz --tolerance -1",
        2,
        "0 or above",
    ),
}


@pytest.mark.usefixtures("ct")
@pytest.mark.parametrize("name", FAILURES)
def test_a_failure_is_one_line_that_says_what_to_do(name):
    prepare, typed, code, words = FAILURES[name]
    prepare()
    before = {path: Path(path).stat().st_mtime_ns for path in left()}
    ended = run(*typed.split())
    assert (ended.code, ended.out) == (code, "")
    assert words in ended.err
    assert ended.err.startswith("volux: ")
    assert ended.err.count("\n") == 1, ended.err
    assert {path: Path(path).stat().st_mtime_ns for path in left()} == before


def test_the_table_has_at_least_thirty_failures():
    assert len(FAILURES) >= 30


@pytest.mark.skipif(os.geteuid() == 0, reason="root writes to every folder")
def test_a_folder_that_cannot_be_written_to_is_named(ct):
    Path("locked").mkdir(mode=0o500)
    ended = run("convert", ct, "-o", "locked/x.nii")
    assert (ended.code, left("locked")) == (1, [])
    assert "locked/x.nii: the folder locked cannot be written to" in ended.err


def test_oblique_is_left_handed():
    assert np.linalg.det(oblique()[:3, :3]) < 0
