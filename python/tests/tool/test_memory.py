"""Results with little memory: in parts, with the bytes of the whole."""

import gzip
import json
import os
import resource
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

from .runs import PROGRAM, done, left, nibabel, oblique, run, save, sitk, voxels

UNDER_ASAN = "asan" in os.environ.get("LD_PRELOAD", "")


@pytest.fixture
def empty(monkeypatch):
    """A process that takes no memory, so that small volumes are large beside it."""
    from volux.tool import _memory

    monkeypatch.setattr(_memory, "resident", lambda: 0)
    monkeypatch.setattr(_memory, "peak", lambda: 0)
    monkeypatch.setattr(_memory, "_LATER", 0)
    monkeypatch.setattr(_memory, "_AROUND", 0)


def scaled():
    image = nibabel.Nifti1Image(voxels((20, 18, 30)), oblique())
    image.header.set_slope_inter(0.5, -3)
    image.header.set_data_dtype(np.int16)
    nibabel.save(image, "a.nii")
    with open("a.nii", "r+b") as file:  # scale factors that nibabel would choose itself
        file.seek(112)
        file.write(np.array([0.5, -3], np.float32).tobytes())


def swapped():
    image = nibabel.Nifti1Image(voxels((20, 18, 30)), oblique())
    header = image.header.as_byteswapped()
    nibabel.save(nibabel.Nifti1Image(image.dataobj, None, header), "a.nii")


def commented():
    image = nibabel.Nifti1Image(voxels((20, 18, 30)), oblique())
    image.header.extensions.append(nibabel.nifti1.Nifti1Extension("comment", b"seen"))
    nibabel.save(image, "a.nii")


def of(shape, dtype=np.int16):
    return lambda: save("a.nii", voxels(shape, dtype) % 100)


PLAIN = of((20, 18, 30))
RESLICE = "reslice a.nii --normal 0,-0.3,1 --thickness 2 --count"
CASES = {
    "finer": (PLAIN, "resize a.nii --spacing 0.7 --interp cubic"),
    "coarser": (PLAIN, "resize a.nii --scale 0.4,0.5,0.6"),
    "from centre to centre": (PLAIN, "resize a.nii --shape 33,20,41 --align centres"),
    "another type": (PLAIN, "resize a.nii --scale 1.3 --dtype uint8 --overflow wrap"),
    "a type that is held by another": (PLAIN, "resize a.nii --scale 1.3 --dtype int8"),
    "scaled": (scaled, "resize a.nii --scale 1.3"),
    "scaled, another type": (scaled, "resize a.nii --scale 1.3 --dtype int16"),
    "the other order of bytes": (swapped, "resize a.nii --scale 1.3"),
    "a comment": (commented, "resize a.nii --scale 1.3"),
    "a series": (of((20, 18, 10, 3), np.float32), "resize a.nii --scale 1.3,1.2,2.1"),
    "two more axes": (of((20, 18, 10, 1, 3)), "resize a.nii --scale 1.3,1.2,2.1"),
    "labels": (of((20, 18, 30), np.uint8), "resize a.nii --scale 0.6 --interp label"),
    "elsewhere": (PLAIN, "resample a.nii --like like.nii --fill -5"),
    "turned": (PLAIN, "resample a.nii --like like.nii --transform turn.txt --antialias mean"),
    "under a field": (PLAIN, "resample a.nii --like like.nii -t field.nrrd --interp nearest"),
    "planes": (PLAIN, f"{RESLICE} 9"),
    "a box": (PLAIN, "crop a.nii --box 2:-3,4:,3:-2"),
    "as it is": (PLAIN, "convert a.nii --dtype float64"),
}


@pytest.mark.usefixtures("empty")
@pytest.mark.parametrize("case", CASES)
def test_parts_make_the_bytes_of_the_whole(case):
    make, typed = CASES[case]
    make()
    save("like.nii", voxels((32, 30, 28)), oblique((0.7, 0.6, 2.5), (15, 0, 3)))
    turn = [[0.98, 0.17, 0.01, 0], [-0.17, 0.98, 0, 0], [-0.01, 0, 1, 2], [0, 0, 0, 1]]
    np.savetxt("turn.txt", turn)
    vectors = np.random.default_rng(5).normal(0, 1, (9, 8, 7, 3))
    field = sitk.GetImageFromArray(vectors, isVector=True)
    field.SetSpacing((6, 6, 9))
    field.SetOrigin((-25, -10, -20))
    sitk.WriteImage(field, "field.nrrd")
    whole = json.loads(done(*typed.split(), "-n", "--json"))
    done(*typed.split(), "-o", "x.nii")
    expected = Path("x.nii").read_bytes(), Path("x.json").read_bytes()
    depths = set()
    for share in (0.9, 0.65, 0.4):
        memory = ("-o", "x.nii", "--force", "--memory", int(whole["memory"] * share))
        plan = json.loads(done(*typed.split(), *memory, "-n", "--json"))
        assert plan["memory"] <= whole["memory"] * share
        depths.add(plan["planes"])
        done(*typed.split(), *memory)
        assert (Path("x.nii").read_bytes(), Path("x.json").read_bytes()) == expected
    assert max(depths) < whole["planes"]
    assert len(depths) == 3


LITTLE = "resize a.nii -o x.nii --scale 2 --memory 100kB"


@pytest.mark.usefixtures("empty")
def test_a_plan_says_how_many_planes_are_made_at_a_time():
    PLAIN()
    said = done(*LITTLE.split(), "--dry-run")
    assert "at a time    " in said
    assert "planes of 60" in said


@pytest.mark.usefixtures("empty")
def test_progress_goes_on_from_part_to_part():
    PLAIN()
    ended = run(*LITTLE.split(), "--progress", "plain")
    lines = [line for line in ended.err.splitlines() if line.endswith("%")]
    shown = [int(line.split()[-2]) for line in lines]
    assert shown == sorted(set(shown))
    assert shown[-1] == 100


REFUSED = {
    "resize a.nii -o x.nii.gz --scale 2 --memory 100kB": "name an output .nii, which --memory",
    "resize a.nii.gz -o x.nii --scale 2 --memory 2KiB": "allows 2 KiB; gunzip it first",
    "resize a.nii -o x.nii --scale 2 --memory 2KiB": "allows 2 KiB; crop it first",
    f"{RESLICE} 60 --slab 2 -o x.nii --memory 50kB": "a slab is made at once",
}


@pytest.mark.usefixtures("empty")
@pytest.mark.parametrize("typed", REFUSED)
def test_what_does_not_fit_in_parts_either_is_refused(typed):
    PLAIN()
    save("a.nii.gz", voxels((20, 18, 30)))
    ended = run(*typed.split())
    assert (ended.code, ended.err.count("\n")) == (1, 1)
    assert REFUSED[typed] in ended.err
    assert left() == ["a.nii", "a.nii.gz"]


@pytest.mark.parametrize(
    ("count", "text"),
    [
        (0, "0 bytes"),
        (1, "1 byte"),
        (1023, "1023 bytes"),
        (1024, "1 KiB"),
        (2100000, "2 MiB"),
        (2200000, "2.1 MiB"),
        (140 << 20, "140 MiB"),
        (1023 << 20, "1023 MiB"),
        (5 << 40, "5 TiB"),
        (5 << 52, "20480 TiB"),
    ],
)
def test_a_size_is_said_as_one_reads_it(count, text):
    from volux.tool._plan import size_text

    assert size_text(count) == text


def test_a_few_bytes_are_said_as_bytes():
    PLAIN()
    ended = run("resize", "a.nii", "-o", "x.nii", "--scale", 2, "--memory", 5)
    assert "--memory allows 5 bytes; crop it first" in ended.err


def test_a_disk_that_is_full_while_parts_are_written_is_told():
    save("a.nii", voxels((40, 40, 40)))
    Path("x.nii").write_text("precious")
    code = """
import sys
from volux.tool import _cli, _memory
_memory.resident = _memory.peak = lambda: 0
_memory._LATER = 0
sys.exit(_cli.main("convert a.nii -o x.nii --force --memory 200kB".split()))
"""
    ran = subprocess.run(
        [sys.executable, "-c", code],
        capture_output=True,
        check=False,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000)),
    )
    assert (ran.returncode, ran.stderr.count(b"\n")) == (1, 1)
    assert ran.stderr.startswith(b"volux: x.nii: ")
    assert Path("x.nii").read_text() == "precious"
    assert left() == ["a.nii", "x.nii"]


TYPES = ("uint8", "int8", "uint16", "int16", "uint32", "int32", "float32", "float64")

# Runs commands one after another in a process whose peak of memory begins anew each time, and whose
# arrays go back to the system when they are not needed any more.
MEASURED = """
import contextlib, io, json, re, sys
from volux.tool import _memory
from volux.tool._cli import main

def planned(words):
    with contextlib.redirect_stdout(io.StringIO()) as out:
        assert main([*words, "--dry-run", "--json", "--force"]) == 0
    return json.loads(out.getvalue())

def measured(typed):
    with open("/proc/self/clear_refs", "w") as file:
        file.write("5")
    words = typed.split()
    if words[-2:] == ["--memory", "LESS"]:
        words[-1] = str(planned(words[:-2])["memory"] - (1 << 20))
    plan = planned(words)
    assert main([*words, "--quiet", "--force"]) == 0
    peak = re.search(r"VmHWM:\\s*(\\d+) kB", open("/proc/self/status").read())[1]
    return plan["memory"], int(peak) * 1024, plan["planes"]

commands = sys.stdin.read().splitlines()
measured(commands[0])
_memory._LATER = 3 << 20  # all is loaded now
print(json.dumps([measured(typed) for typed in commands]))
"""


def of_all_types():
    """Commands for volumes and series of each type: at once, and cast in parts."""
    for dtype, shape in ((t, s) for t in TYPES for s in ((80, 80, 80), (48, 48, 80, 3))):
        array = np.random.default_rng(3).integers(0, 100, shape).astype(dtype)
        name = f"{dtype}_{len(shape)}.nii"
        nibabel.save(nibabel.Nifti1Image(array, np.eye(4), dtype=dtype), name)
        typed = f"resize {name} -o x.nii --scale 2 --interp nearest"
        yield typed
        yield f"{typed} --dtype int8 --memory LESS"


@pytest.mark.skipif(UNDER_ASAN, reason="the sanitizer takes memory")
@pytest.mark.skipif(not os.access("/proc/self/clear_refs", os.W_OK), reason="needs Linux")
def test_no_type_and_no_series_takes_more_than_its_plan():
    typed = list(of_all_types())
    ran = subprocess.run(
        [sys.executable, "-c", MEASURED],
        input="\n".join(typed),
        capture_output=True,
        text=True,
        check=True,
        env={**os.environ, "MALLOC_MMAP_THRESHOLD_": "65536"},
    )
    found = dict(zip(typed, json.loads(ran.stdout), strict=True))
    wrong = {name: row for name, row in found.items() if not row[1] <= row[0] <= 1.1 * row[1]}
    assert wrong == {}
    whole = {name: row for name, row in found.items() if "--memory" in name and row[2] == 160}
    assert whole == {}


MEMORY = [
    "resize large.nii -o x.nii --spacing 1",
    "resize large.nii -o x.nii.gz --spacing 1 --no-sidecar",
    "resize large.nii -o x.nrrd --spacing 1",
    "resize large.nii -o x.mha --scale 1.5 --interp nearest --no-sidecar",
    "resize large.nii -o x.nii --spacing 1 --dtype float64",
    "resize large.nii -o x.nii --spacing 1 --dtype uint8",
    "crop large.nii -o x.nii --box 10:-10,:,:",
]


@pytest.mark.skipif(UNDER_ASAN, reason="the sanitizer takes memory")
@pytest.mark.parametrize("typed", MEMORY)
def test_the_memory_of_a_result_is_predicted_within_a_tenth(typed):
    save("large.nii", voxels((160, 160, 120)))
    assert planned(typed)["memory"] == pytest.approx(peak_of(typed), rel=0.1)


@pytest.mark.skipif(UNDER_ASAN, reason="the sanitizer takes memory")
def test_parts_take_no_more_memory_than_is_allowed():
    save("large.nii", voxels((160, 160, 120)))
    whole = "resize large.nii -o x.nii --scale 3.2 --interp nearest"
    typed = f"{whole} --memory 120MiB"
    assert planned(whole)["memory"] > 2 * 120 * 2**20
    measured = peak_of(typed)
    assert measured <= 120 * 2**20
    assert planned(f"{typed} --force")["memory"] == pytest.approx(measured, rel=0.1)


def planned(typed):
    command = [*PROGRAM, *typed.split(), "--dry-run", "--json"]
    return json.loads(subprocess.run(command, capture_output=True, check=True).stdout)


def peak_of(typed):
    code = f"""
import re, sys
from volux.tool._cli import main
code = main({[*typed.split(), "--quiet"]!r})
print(re.search(r"VmHWM:\\s*(\\d+) kB", open("/proc/self/status").read())[1])
sys.exit(code)
"""
    ran = subprocess.run([sys.executable, "-c", code], capture_output=True, check=True)
    return int(ran.stdout) * 1024


def a_huge_nifti():
    """A header of more voxels than any memory holds, and some of them."""
    image = nibabel.Nifti1Image(voxels(dtype=np.float64), np.eye(4))
    header = bytearray(image.header.binaryblock)
    header[42:48] = np.full(3, 32767, "<i2").tobytes()
    data = bytes(header) + bytes(10000)
    Path("x.nii.gz").write_bytes(gzip.compress(data, mtime=0))


def a_huge_nrrd():
    sizes = "type: double\ndimension: 3\nsizes: 60000 60000 60000\nencoding: raw\nendian: little\n"
    Path("x.nrrd").write_text(f"NRRD0004\n{sizes}\n")


READ = "there is not enough memory to read all of it; a .nii that is not compressed is read from"
HUGE = "resize a.nii --scale 30000"
SLAB = "reslice a.nii -o x.nii --normal 0,0,1 --slab 2"
# What is made first, what is typed, and what is said.
BEYOND = {
    "a huge NIfTI": (a_huge_nifti, "info x.nii.gz", f"x.nii.gz: {READ}"),
    "a huge NRRD": (a_huge_nrrd, "digest x.nrrd", f"x.nrrd: {READ}"),
    "a huge grid": (PLAIN, f"{HUGE} -o x.nii", "there is less memory; --memory, with less than"),
    "a huge gzip": (PLAIN, f"{HUGE} -o x.nii.gz", "less memory; name an output .nii, which"),
    "a huge slab": (PLAIN, f"{SLAB} --shape 30000000", "less memory; a slab is made at once"),
}


@pytest.mark.skipif(UNDER_ASAN, reason="the sanitizer ends the process")
@pytest.mark.parametrize("name", BEYOND)
def test_what_no_memory_holds_is_refused_with_the_name_of_its_input(name):
    make, typed, words = BEYOND[name]
    make()
    before = left()
    ended = run(*typed.split())
    assert (ended.code, ended.out, ended.err.count("\n")) == (1, "", 1)
    assert ended.err.startswith(f"volux: {typed.split()[1]}: ")
    assert words in ended.err
    assert left() == before
