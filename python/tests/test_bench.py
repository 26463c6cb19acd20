"""The programs of the bench that are in Python, at sizes that take no time. Nothing is timed."""

import json
import subprocess
import sys
from pathlib import Path

import pytest

PROGRAMS = Path(__file__).parents[2] / "bench" / "python"

# What carries out the same work within its tolerance, or bit for bit: a program that finds another
# result answers with an error.
SAME = [
    ["A/short/linear/1/volux", "A/short/linear/1/volux into out", "A/short/linear/2/volux"],
    ["B/float/nearest/1/volux", "B/float/nearest/2/volux into out"],
    ["A/float/linear/2/SimpleITK"],
    ["A/float/nearest/1/nibabel"],
    ["B/short/linear/1/scipy"],
    ["point/float/linear/1/volux"],
    ["point/float/linear/1/scipy"],
    ["point/float/linear/1/SimpleITK"],
]


def said_by(program, *arguments, asked=None):
    command = [sys.executable, str(PROGRAMS / program), *arguments]
    return subprocess.run(
        command, input=asked, capture_output=True, text=True, check=True, timeout=120
    ).stdout


@pytest.fixture(scope="module")
def answers():
    names = [name for row in SAME for name in row]
    said = said_by("volumes.py", asked="\n".join(names) + "\n").split("\nend\n")[:-1]
    found = [json.loads(answer)["benchmarks"][0] for answer in said]
    assert [answer["name"] for answer in found] == names
    return {answer["name"]: answer for answer in found}


@pytest.mark.parametrize("row", SAME, ids=lambda row: row[0])
def test_competitors_carry_out_the_same_work(answers, row):
    found = [answers[name] for name in row]
    assert all("error_message" not in answer for answer in found)
    assert all("checksum" in answer or "difference" in answer for answer in found)
    assert len({answer.get("checksum") for answer in found}) == 1


def test_the_program_names_its_cases():
    named = said_by("volumes.py", "--benchmark_list_tests").splitlines()
    assert {name for row in SAME for name in row} <= set(named)


def test_a_resize_with_its_source_and_its_result_has_little_memory_beside():
    source, result, most = map(int, said_by("memory.py", "200000000").split())
    assert result == 8 * source
    assert result == pytest.approx(200e6, rel=0.02)
    assert source + result <= most <= source + result + 50e6


def test_each_call_is_interrupted_in_its_turn():
    times = [float(line) for line in said_by("interrupts.py", "3", "2").splitlines()]
    assert len(times) == 3
    assert min(times) > 0
