"""Processes, folders and names that are not as usual: the same bytes, or one line."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

from .runs import PROGRAM, done, left, nibabel, oblique, run, save, sitk, spawned, voxels

COMMANDS = [
    "resize ct.nii.gz -o x.nrrd --spacing 0.7,1.3,2.5",
    "resample x.nrrd -o y.mha --like ct.nii.gz -t half.tfm -t half.txt --fill -5 --border constant",
    "reslice y.mha -o z.nii.gz --centre 18.5,-3.25,9.75 --normal 0.5,0.25,1 --thickness 0.75",
    "sample z.nii.gz points.csv -o values.csv",
    "info y.mha",
    "view x.nrrd -o x.png --size 64 --window 40.5,400.5",
    "convert ct.nii.gz -o ct.mgz --dtype float32 --no-sidecar",
]

# Says what separates decimals where it is, and runs lines of stdin as commands.
RUNNING = """
import locale, sys
usual = locale.setlocale(locale.LC_NUMERIC)
locale.setlocale(locale.LC_NUMERIC, "")
print(locale.localeconv()["decimal_point"], file=sys.stderr)
locale.setlocale(locale.LC_NUMERIC, usual)
from volux.tool._cli import main
for line in sys.stdin.read().splitlines():
    assert main([*line.split()]) == 0, line
"""


def inputs(folder):
    Path(folder).mkdir(exist_ok=True)
    save(f"{folder}/ct.nii.gz")
    shift = sitk.TranslationTransform(3, (0.5, -1.25, 0.75))
    sitk.WriteTransform(shift, f"{folder}/half.tfm")
    np.savetxt(f"{folder}/half.txt", np.eye(4) + np.eye(4, k=3) * 0.5)
    Path(folder, "points.csv").write_text("name,x,y,z\na,18.5,-3.25,9.75\nb,12.125,2.5,14.5\n")


def made_in(folder, **environment):
    """What commands print and write in a folder."""
    inputs(folder)
    ran = subprocess.run(
        [sys.executable, "-c", RUNNING],
        input="\n".join(COMMANDS),
        capture_output=True,
        text=True,
        cwd=folder,
        env={**os.environ, **environment},
    )
    assert ran.returncode == 0, ran.stderr
    point, *said = ran.stderr.splitlines()
    written = {path.name: path.read_bytes() for path in Path(folder).iterdir()}
    return point, said, ran.stdout, written


@pytest.fixture(scope="module")
def usual(tmp_path_factory):
    return made_in(tmp_path_factory.mktemp("usual"), LC_ALL="C.UTF-8")


def test_a_locale_with_decimal_commas_changes_nothing(usual, tmp_path):
    if shutil.which("localedef") is None:
        pytest.skip("needs localedef")
    named = tmp_path / "locales" / "de_DE.UTF-8"
    named.parent.mkdir()
    made = subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", named], capture_output=True)
    if made.returncode:
        pytest.skip("the system has no source of a locale with decimal commas")
    found = made_in("german", LC_ALL="de_DE.UTF-8", LOCPATH=str(named.parent))
    assert (usual[0], found[0]) == (".", ",")
    assert found[1:] == usual[1:]


@pytest.mark.parametrize("name", ["ü 体積", "-d 100% quo'te\"s"])
def test_a_folder_of_any_name_is_a_folder(name, usual):
    assert made_in(name)[1:] == usual[1:]


def test_names_that_are_no_text_are_taken_or_refused():
    name = os.fsdecode(b"\xff.nii")
    save(name)
    strict = {**os.environ, "PYTHONIOENCODING": "utf-8:strict"}
    ran = spawned("info", name, env=strict)
    assert (ran.returncode, ran.stderr) == (0, b"")
    assert ran.stdout.startswith(b"file         \xff.nii\n")
    Path("\udcfe.mha").write_text("ObjectType = Image")
    for typed in (["convert", name, "-o", "\udcfe.nrrd"], ["info", "\udcfe.mha"]):
        ran = spawned(*typed)
        assert (ran.returncode, ran.stdout, ran.stderr.count(b"\n")) == (1, b"", 1)
        assert b"SimpleITK takes names in UTF-8 alone; rename it" in ran.stderr
    assert left() == ["\udcfe.mha", "\udcff.nii"]


def test_in_a_folder_that_is_gone_whole_names_are_found(ct, tmp_path):
    gone = tmp_path / "gone"
    gone.mkdir()
    code = f"rmdir {gone} && {' '.join(PROGRAM)}"
    given = {"cwd": gone, "capture_output": True, "check": False}
    typed = f"convert {tmp_path / ct} -o {tmp_path / 'x.nii'}"
    ran = subprocess.run(["sh", "-c", f"{code} {typed}"], **given)
    assert (ran.returncode, left()) == (0, [ct, "x.json", "x.nii"])
    gone.mkdir()
    ran = subprocess.run(["sh", "-c", f"{code} convert {tmp_path / ct} -o y.nii"], **given)
    assert (ran.returncode, ran.stdout, ran.stderr.count(b"\n")) == (1, b"", 1)
    assert ran.stderr.startswith(b"volux: y.nii: ")


def as_nobody(*typed, folder="."):
    """Run a command in a child that may not do everything, and return its code and its words."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            os.chdir(folder)
            if os.geteuid() == 0:
                os.setgroups([])
                os.setgid(65534)
                os.setuid(65534)
            ended = run(*typed)
            os.write(writing, ended.err.encode())
            os._exit(ended.code)
        finally:
            os._exit(99)
    os.close(writing)
    with os.fdopen(reading) as said:
        words = said.read()
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), words


@pytest.fixture
def loaded(ct):
    """A process that need not read modules, which another user may not."""
    for typed in (("convert", ct, "-o", "x.nii"), ("convert", ct, "-o", "x.nrrd", "-f")):
        done(*typed)
    for path in ("x.nii", "x.nrrd", "x.json"):
        Path(path).unlink()
    Path(ct).chmod(0o644)
    Path().chmod(0o755)


FORBIDDEN = {
    "convert ct.nii.gz -o locked/x.nii": "locked/x.nii: the folder locked cannot be written to",
    "convert secret.nii.gz -o open/x.nii": "secret.nii.gz: nibabel cannot read it: Could not",
    "convert ct.nii.gz -o open/x.nrrd -f": "",
    "info hidden/ct.nii.gz": "hidden/ct.nii.gz",
}


@pytest.mark.usefixtures("loaded")
@pytest.mark.parametrize("typed", FORBIDDEN)
def test_what_a_user_may_not_do_is_one_line_and_the_rest_is_done(typed):
    shutil.copy("ct.nii.gz", "secret.nii.gz")
    for name, mode in (("locked", 0o555), ("open", 0o777), ("hidden", 0o700)):
        Path(name).mkdir()
        shutil.copy("ct.nii.gz", name)
        Path(name).chmod(mode if name != "hidden" or os.geteuid() == 0 else 0o000)
    Path("secret.nii.gz").chmod(0o000)
    before = left("open"), left("locked")
    code, words = as_nobody(*typed.split())
    if FORBIDDEN[typed]:
        assert (code, words.count("\n")) == (1, 1), words
        assert words.startswith(f"volux: {FORBIDDEN[typed]}")
        assert (left("open"), left("locked")) == before
    else:
        assert (code, left("open")) == (0, ["ct.nii.gz", "x.json", "x.nrrd"]), words
    Path("hidden").chmod(0o700)


@pytest.mark.usefixtures("loaded")
def test_a_folder_that_cannot_be_read_is_no_hindrance_to_writing_in_it(ct):
    Path("blind").mkdir()
    shutil.copy(ct, "blind")
    Path("blind").chmod(0o333)
    code, words = as_nobody("convert", "ct.nii.gz", "-o", "x.nii", folder="blind")
    Path("blind").chmod(0o700)
    assert (code, words) == (0, "volux: x.nii: 12 x 10 x 8 voxels written\n")


# Runs a command with so much address space more than it has, as a line of stdin says.
LITTLE = """
import os, resource, sys
from importlib import import_module
for module in ("nibabel", "SimpleITK", "volux.tool._verbs", "volux.tool._sizes"):
    import_module(module)
from volux.tool._cli import main
size = int(open("/proc/self/statm").read().split()[0]) * resource.getpagesize()
for line in sys.stdin.read().splitlines():
    more, *typed = line.split()
    child = os.fork()
    if child == 0:
        resource.setrlimit(resource.RLIMIT_AS, (size + (int(more) << 20),) * 2)
        os._exit(main([*typed, "--quiet"]))
    code = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    print(code, flush=True)
    print(".", file=sys.stderr, flush=True)
"""


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="takes address space")
@pytest.mark.skipif(sys.platform != "linux", reason="needs Linux")
def test_little_address_space_is_one_line_and_leaves_nothing():
    nibabel.save(nibabel.Nifti1Image(voxels((96, 96, 96)), oblique()), "a.nii.gz")
    typed = ["convert a.nii.gz -o x.nii", "convert a.nii.gz -o x.nrrd", "resize a.nii.gz --scale 2"]
    lines = [f"{more} {one} -o x.nii -f" for one in typed for more in range(8, 56, 16)]
    ran = subprocess.run(
        [sys.executable, "-c", LITTLE],
        input="\n".join(lines),
        capture_output=True,
        text=True,
        env={**os.environ, "OPENBLAS_NUM_THREADS": "1"},
    )
    codes = [int(line) for line in ran.stdout.split()]
    said = ran.stderr.split(".\n")[:-1]
    assert len(codes) == len(said) == len(lines)
    assert set(codes) == {0, 1}
    for code, words in zip(codes, said, strict=True):
        assert words.count("\n") == code, words
        assert code == 0 or words.startswith("volux: a.nii.gz: "), words
        assert "a reason that it should have said" not in words
    assert [name for name in left() if not name.startswith(("a.", "x."))] == []
