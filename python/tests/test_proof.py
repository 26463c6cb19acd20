"""The program that answers the corpus of the proof through Python, on requests of a few voxels."""

import importlib.util
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
import volux

ANSWERS = Path(__file__).parents[2] / "tests" / "proof" / "digest" / "python_answers.py"

# A program that asks for what it is told, and digests the answers.
ASKING = """
import sys
requests, count = sys.argv[1].encode().splitlines(), int(sys.argv[2])
answers = b""
for request in requests:
    sys.stdout.buffer.write(request + b"\\n" + bytes.fromhex(sys.argv[3]))
    sys.stdout.flush()
    answers += sys.stdin.buffer.read(8 * count)
sys.stdout.buffer.write(b"%d the family\\n" % len(answers) + answers)
"""

SOURCE = np.arange(24, dtype=np.int16).reshape(2, 3, 4, 1) ** 2
OBLIQUE = np.array([[0.5, 0.25, 0, 1], [0, 0.5, 0.125, 0], [0.25, 0, 0.5, 0.5]])
READING = "kernel=0x1p+0 border=0x1p+0 outside=0x1.4p+2 extends=0x0p+0 wraps=0x0p+0"
ONE = "subsamples=0x1p+0,0x1p+0,0x1p+0"
TWO = "subsamples=0x1p+1,0x1p+1,0x1p+1"


def numbers(name, values):
    return f"{name}=" + ",".join(float(value).hex() for value in values)


def layout(name, number, array):
    strides = [stride // array.itemsize for stride in array.strides]
    extents = [*array.shape[2::-1], array.shape[3]]
    distances = [*strides[2::-1], strides[3]]
    words = [numbers(f"{name}Type", [number]), numbers(f"{name}Extents", extents)]
    return " ".join([*words, numbers(f"{name}Strides", distances)])


def source(array):
    unit = numbers("unit", (1, 1, 1))
    return f"{layout('source', 1, array)} {unit} source=@{array.nbytes}"


def answered(request, count):
    """What the answers are, and how they were found."""
    command = [sys.executable, str(ANSWERS), "2", sys.executable, "-c", ASKING]
    done = subprocess.run(
        [*command, f"? {request}", str(count), SOURCE.tobytes().hex()],
        capture_output=True,
        check=True,
        timeout=60,
    )
    header, _, results = done.stdout.partition(b"\n")
    assert header == b"%d the family" % len(results)
    return np.frombuffer(results), done.stderr.decode()


def filled(operation, result, *words):
    request = [operation, numbers("map", OBLIQUE.flat), source(SOURCE), READING, *words]
    return answered(" ".join([*request, layout("result", 7, result)]), result.size)


RESULT = np.empty((2, 2, 3, 1))
RESULTS = {
    "dense": RESULT,
    "backwards": RESULT[::-1, :, ::-1],
    "with gaps": np.empty((2, 4, 9, 2))[:, ::2, ::3, 1:],
    "x slowest": RESULT.transpose(2, 1, 0, 3),
}


@pytest.mark.parametrize("name", RESULTS)
def test_a_volume_is_filled_by_the_public_function(name):
    found, ways = filled("fill", RESULTS[name], ONE)
    shape = RESULTS[name].shape
    place = np.eye(4)
    place[:3] = OBLIQUE[::-1, [2, 1, 0, 3]]
    wanted = volux.resample(SOURCE, volux.Grid(shape[:3], place), fill=5, dtype="float64")
    assert found.tobytes() == wanted.tobytes()
    assert ways == "resample: 1 requests\n"


def test_sub_samples_that_no_keyword_names_go_to_the_compiled_part():
    found, ways = filled("fill", RESULT, TWO)
    assert found.shape == (12,)
    assert ways == "resample, compiled: 1 requests\n"


@pytest.mark.parametrize("planes", [1, 2])
def test_slabs_are_cut_by_the_compiled_part(planes):
    slab = f"{numbers('planes', [planes])} {numbers('projection', [1])}"
    found, ways = filled("reslice", RESULT, ONE, slab)
    finer = np.empty((planes * 2, 2, 3, 1))
    singles, _ = filled("fill", finer, ONE)
    wanted = singles.reshape(2, planes, 6).max(axis=1).ravel()
    assert found.tobytes() == wanted.tobytes()
    assert ways == "reslice, compiled: 1 requests\n"


def test_gaps_of_a_result_are_looked_at():
    spec = importlib.util.spec_from_file_location("python_answers", ANSWERS)
    answers = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(answers)
    words = layout("result", 7, RESULTS["with gaps"])
    memory = answers.Memory(answers.Fields(words, None), "result")
    assert memory.take().shape == (2, 2, 3, 1)
    memory.block[1] = 1.0
    with pytest.raises(SystemExit, match="wrote between the voxels"):
        memory.take()
