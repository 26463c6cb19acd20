"""Memory that is short: a MemoryError, nothing lost or changed, and the next call is right."""

import json

import pytest

CALLS = [
    "resample",
    "resample on three threads",
    "resample through a field",
    "resize",
    "resize labels",
    "reslice",
    "sample",
    "sample_gradient",
]


@pytest.fixture(scope="module")
def starved(python_with):
    """How calls have ended each of whose requests for memory has failed once."""
    with python_with("starve.py") as running:
        said = [json.loads(line) for line in running.stdout]
    assert running.returncode == 0
    return {one.pop("call"): one for one in said}


@pytest.mark.parametrize("call", CALLS)
def test_a_request_for_memory_that_fails_is_a_memory_error_and_harms_nothing(call, starved):
    assert set(starved[call]["ends"]) == {"MemoryError", "right"}
    assert starved[call]["ends"]["MemoryError"] > 1


@pytest.mark.parametrize("call", CALLS)
def test_a_request_for_memory_that_fails_leaves_no_block_behind(call, starved):
    assert starved[call]["left"] < 300  # ten passes: a block of the smallest kind is 32 bytes
