"""What holds for every verb: how it starts, what it leaves behind, and how it ends."""

import json
import os
import resource
import signal
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
import pytest

from . import texts
from .runs import PROGRAM, done, left, nibabel, run, save, spawned, started, voxels

HEAVY = ("numpy", "nibabel", "SimpleITK", "PIL", "volux._core")


@pytest.mark.parametrize(
    "typed", ["--help", "--version", "completion zsh", "resize --help", "resize --spcing"]
)
def test_what_needs_no_volume_imports_neither_numpy_nor_readers(typed):
    code = f"""
import sys
from volux.tool._cli import main
main({typed.split()!r})
print(sorted(set({HEAVY!r}) & set(sys.modules)))
"""
    ran = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert ran.stdout.splitlines()[-1] == "[]"


@pytest.mark.parametrize(
    "typed", ["--version", "--help", "-h", "view --help", "resize -h", "completion bash"]
)
def test_what_is_kept_as_text_needs_no_typer_either(typed):
    code = f"""
import sys
from volux.tool._cli import main
main({typed.split()!r})
print("typer" in sys.modules)
"""
    ran = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert ran.stdout.splitlines()[-1] == "False"


def test_messages_go_to_stderr_and_data_to_stdout(ct):
    ended = run("resize", ct, "-o", "x.nii", "--scale", 0.5)
    assert ended.out == ""
    assert ended.err == "volux: x.nii: 6 x 5 x 4 voxels written\n"


def test_quiet_says_nothing(ct):
    assert run("resize", ct, "-o", "x.nii", "--scale", 0.5, "--quiet") == (0, "", "")


@pytest.mark.parametrize("output", ["x.nii.gz", "x.nii", "x.img", "x.mgz", "x.nrrd", "x.mhd"])
def test_runs_and_numbers_of_threads_write_the_same_bytes(ct, output):
    written = []
    for n, threads in enumerate((1, 2, 7, 7)):
        folder = Path(f"run{n}")
        folder.mkdir()
        done("resize", ct, "-o", folder / output, "--spacing", 0.7, "--threads", threads)
        written.append([(file.name, file.read_bytes()) for file in sorted(folder.iterdir())])
    assert written[0] == written[1] == written[2] == written[3]


def test_no_file_says_when_where_or_by_whom_it_was_made(ct):
    done("resize", Path(ct).resolve(), "-o", Path("x.nii").resolve(), "--scale", 2)
    said = Path("x.nii").read_bytes() + Path("x.json").read_bytes()
    for word in (os.getcwd(), os.uname().nodename, time.strftime("%Y-%m")):
        assert word.encode() not in said


def test_an_output_that_is_there_is_replaced_by_force_alone(ct):
    Path("x.nii").write_text("precious")
    assert run("convert", ct, "-o", "x.nii").code == 1
    assert Path("x.nii").read_text() == "precious"
    done("convert", ct, "-o", "x.nii", "--force")
    assert nibabel.load("x.nii").shape == (12, 10, 8)


def test_a_sidecar_that_is_there_is_replaced_by_force_alone(ct):
    Path("x.json").write_text("{}")
    assert "x.json: is there already" in run("convert", ct, "-o", "x.nii").err
    assert left() == ["ct.nii.gz", "x.json"]


def test_an_input_is_not_overwritten_by_another_name_of_it_either(ct):
    Path("link.nii.gz").symlink_to(ct)
    assert run("resize", ct, "-o", "link.nii.gz", "--scale", 2, "--force").code == 2


@pytest.mark.parametrize(("inside", "output"), [("x.hdr", "x.img"), ("x.mhd", "x.raw")])
def test_no_part_of_an_input_is_overwritten(ct, inside, output):
    done("convert", ct, "-o", inside)
    ended = run("resize", inside, "-o", output, "--scale", 2, "--force")
    assert (ended.code, f"{output}: is an input" in ended.err) == (2, True)


def test_no_part_of_a_volume_that_is_there_is_overwritten(ct):
    done("convert", ct, "-o", "x.img", "--no-sidecar")
    Path("x.img").unlink()
    assert "x.hdr: is there already" in run("convert", ct, "-o", "x.img").err


def test_the_sidecar_of_an_input_is_never_replaced(ct):
    Path("ct.json").write_text('{"Manufacturer": "somebody"}')
    ended = run("convert", ct, "-o", "ct.nrrd", "--force")
    assert (ended.code, ended.err) == (
        1,
        "volux: ct.json: describes an input; --no-sidecar leaves it as it is\n",
    )
    done("convert", ct, "-o", "ct.nrrd", "--no-sidecar")
    assert Path("ct.json").read_text() == '{"Manufacturer": "somebody"}'


def large():
    return save("large.nii", voxels((160, 160, 120)))


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_a_call_and_leaves_nothing(number):
    large()
    typed = "resize large.nii -o x.nii --spacing 0.4 --interp cubic --progress plain --threads 1"
    with started(*typed.split(), text=True) as running:
        first = running.stderr.readline()
        running.send_signal(number)
        _, said = running.communicate(timeout=60)
    assert first.endswith("%\n"), first
    assert running.returncode == 130
    assert said.splitlines()[-1] == "volux: interrupted; no output was written"
    assert "Traceback" not in said
    assert left() == ["large.nii"]


@pytest.mark.usefixtures("ct")
def test_a_signal_while_it_writes_keeps_what_was_there():
    Path("x.nii.gz").write_text("precious")
    code = """
import os, signal, sys
from volux.tool import _cli, _slabs
write = _slabs.write
def interrupted(scan, path):
    write(scan, path)
    os.kill(os.getpid(), signal.SIGTERM)
_slabs.write = interrupted
sys.exit(_cli.main(["convert", "ct.nii.gz", "-o", "x.nii.gz", "--force"]))
"""
    ran = subprocess.run([sys.executable, "-c", code], capture_output=True, check=False)
    assert ran.returncode == 130
    assert Path("x.nii.gz").read_text() == "precious"
    assert left() == ["ct.nii.gz", "x.nii.gz"]


@pytest.mark.parametrize("output", ["x.nii", "x.nii.gz", "x.nrrd", "x.mgz"])
def test_a_disk_that_is_full_is_told_and_keeps_what_was_there(output):
    save("noise.nii", voxels((40, 40, 40)))
    Path(output).write_text("precious")
    ran = spawned(
        *f"convert noise.nii -o {output} --force".split(),
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000)),
    )
    assert ran.returncode == 1
    assert ran.stderr.startswith(b"volux: x.")
    assert ran.stderr.count(b"\n") == 1
    assert Path(output).read_text() == "precious"
    assert left() == ["noise.nii", output]


@pytest.mark.usefixtures("ct")
@pytest.mark.parametrize("typed", ["info x.mha", "info x.nrrd", "resample ct.nii.gz -n -t x.h5"])
def test_what_libraries_say_of_a_broken_file_is_one_line_of_ours(typed):
    for name in ("x.mha", "x.nrrd", "x.h5"):
        Path(name).write_text("NRRD0004\nObjectType = Image\nthis is a letter\n")
    ran = spawned(*typed.split())
    assert (ran.returncode, ran.stdout, ran.stderr.count(b"\n")) == (1, b"", 1)
    assert ran.stderr.startswith(f"volux: {typed.split()[-1]}: SimpleITK cannot".encode())


def test_a_long_axis_becomes_nifti_2_without_a_word_of_the_library(ct):
    ran = spawned("resize", ct, "-o", "long.nii", "--shape", "32768,1,1", "--no-sidecar")
    assert (ran.returncode, ran.stderr) == (0, b"volux: long.nii: 32768 x 1 x 1 voxels written\n")
    assert nibabel.load("long.nii").header["sizeof_hdr"] == 540


def test_a_full_stdout_is_told(ct):
    with open("/dev/full", "w") as full:
        ran = spawned("info", ct, stdout=full, stderr=subprocess.PIPE, capture_output=False)
    assert (ran.returncode, ran.stderr.count(b"\n")) == (1, 1)
    assert b"No space left" in ran.stderr


def test_a_closed_stdout_is_no_reason_for_a_traceback(ct):
    ran = subprocess.run(["sh", "-c", f"{' '.join(PROGRAM)} info {ct} >&-"], capture_output=True)
    assert ran.stderr == b""


def test_a_reader_that_goes_away_is_no_reason_for_words(ct):
    reading, writing = os.pipe()
    os.close(reading)
    ran = spawned("info", ct, stdout=writing, stderr=subprocess.PIPE, capture_output=False)
    os.close(writing)
    assert (ran.returncode, ran.stderr) == (1, b"")


def test_streams_go_from_stdin_to_stdout(ct):
    command = [*PROGRAM, "resize", "-", "-o", "-", "--scale", "2"]
    with open(ct, "rb") as file:
        ran = subprocess.run(command, stdin=file, capture_output=True, check=True)
    done("resize", ct, "-o", "x.nii", "--scale", 2)
    assert ran.stdout == Path("x.nii").read_bytes()


@pytest.mark.parametrize("data", [b"", b"this is a letter", b"\x1f\x8bbroken"])
def test_a_stream_that_is_no_nifti_is_told(data):
    ran = spawned("info", "-", input=data)
    assert (ran.returncode, ran.stdout, ran.stderr.count(b"\n")) == (1, b"", 1)
    assert ran.stderr.startswith(b"volux: stdin: is no NIfTI")


def test_a_dry_run_writes_nothing_and_says_the_grid_that_comes(ct):
    plan = json.loads(done("resize", ct, "-o", "x.nii", "--spacing", 1, "--dry-run", "--json"))
    assert left() == [ct]
    done("resize", ct, "-o", "x.nii", "--spacing", 1)
    made = nibabel.load("x.nii")
    assert tuple(plan["shape"]) == made.shape
    np.testing.assert_allclose(plan["affine"], made.affine, atol=1e-5)
    np.testing.assert_allclose(plan["factors"], [1, 1 / 1.25, 1 / 3], rtol=1e-7)


def test_a_dry_run_says_how_much_lies_outside(ct):
    done("crop", ct, "-o", "half.nii", "--box", "0:6,:,:")
    plan = json.loads(done("resample", "half.nii", "--like", ct, "--dry-run", "--json"))
    assert plan["outside"] == pytest.approx(0.5, abs=0.05)


def test_larger_voxels_without_a_word_about_aliasing_are_warned_about(ct):
    done("resize", ct, "-o", "coarse.nii", "--scale", 0.25)
    typed = ("resample", ct, "--like", "coarse.nii", "-n")
    assert "--antialias mean takes means" in run(*typed).err
    assert run(*typed, "--antialias", "none").err == ""


def test_the_sidecar_says_what_a_result_was_made_of(ct):
    done("resize", ct, "-o", "x.nii.gz", "--spacing", "1,1,2")
    said = json.loads(Path("x.json").read_text())
    assert said["Sources"] == ["ct.nii.gz"]
    assert said["SpatialReference"] == "ct.nii.gz"
    assert said["Resolution"] == "1 x 1 x 2 mm, 12 x 12 x 12 voxels"
    assert said["Options"]["spacing"] == "1,1,2"
    for name, found in (("x.nii.gz", said["OutputDigest"]), (ct, said["InputDigests"][0])):
        assert done("digest", name).split()[0] == found


@pytest.mark.parametrize("output", ["x.nii", "x.mgz", "x.nrrd", "x.mha"])
def test_the_digest_of_a_sidecar_is_that_of_the_file(ct, output):
    done("resize", ct, "-o", output, "--spacing", "0.9,1.1,2")
    said = json.loads(Path("x.json").read_text())
    assert done("digest", output).split()[0] == said["OutputDigest"]


def test_without_a_sidecar_there_is_none(ct):
    done("resize", ct, "-o", "x.nii.gz", "--spacing", 1, "--no-sidecar")
    assert left() == [ct, "x.nii.gz"]


def test_plain_progress_is_lines(ct):
    ended = run("resize", ct, "-o", "x.nii", "--scale", 2, "--progress", "plain")
    assert "volux: resize: 100 %\n" in ended.err


COMPLETED = {
    "volux res": "resize resample reslice",
    "volux resize --interp l": "linear label",
    "volux resample --li": "--like",
    "volux crop --antialias ": "",
}


@pytest.mark.parametrize("typed", COMPLETED)
def test_bash_completes_verbs_options_and_their_words(typed):
    words = typed.split(" ")
    code = f"""
eval "$1"
COMP_WORDS=({" ".join(word or "''" for word in words)}) COMP_CWORD={len(words) - 1}
_volux
echo "${{COMPREPLY[*]}}"
"""
    script = done("completion", "bash")
    ran = subprocess.run(["bash", "-c", code, "bash", script], capture_output=True, check=True)
    assert ran.stdout.decode().strip() == COMPLETED[typed]


def test_the_texts_that_are_kept_are_what_the_verbs_say():
    kept = {path.name: path.read_text() for path in texts.FOLDER.iterdir()}
    assert kept == texts.texts()


def test_help_in_a_narrow_terminal_is_narrow(monkeypatch):
    monkeypatch.setenv("COLUMNS", "60")
    assert max(map(len, done("--help").splitlines())) <= 60


@pytest.mark.parametrize("shell", ["zsh", "fish"])
def test_other_shells_have_the_same_words(shell):
    script = done("completion", shell)
    for word in ("resample", "nearest linear cubic label", "dry-run"):
        assert word in script


def test_without_the_extra_one_line_says_what_to_install():
    code = """
import importlib.util, sys
from volux.tool import _cli, _running
_running.find_spec = lambda name: None
sys.exit(_cli.main(["info", "ct.nii"]))
"""
    ran = subprocess.run([sys.executable, "-c", code], capture_output=True, check=False, text=True)
    assert ran.returncode == 1
    assert ran.stderr == "volux: the package typer is not installed: pip install 'volux[tool]'\n"


def test_without_a_reader_one_line_says_what_to_install(ct, monkeypatch):
    monkeypatch.setitem(sys.modules, "nibabel", None)
    ended = run("info", ct)
    assert (ended.code, ended.out) == (1, "")
    assert ended.err == "volux: the package nibabel is not installed: pip install 'volux[tool]'\n"
