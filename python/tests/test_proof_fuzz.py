"""What judges random calls, on calls that are wrong on purpose."""

import importlib
import os
import warnings
from pathlib import Path

import numpy as np
import pytest
import volux

FOLDER = Path(__file__).parents[2] / "tests" / "proof" / "python_fuzz"
SEEDS = [f"5eed.0.{n}" for n in range(30)]


@pytest.fixture(scope="module")
def judging():
    with pytest.MonkeyPatch.context() as patch:
        patch.syspath_prepend(FOLDER)
        yield importlib.import_module("judging")


def right(draw):
    array = draw.array((2, 3, 4), "int16")
    out = draw.array((2, 3, 4), "int16", is_out=True)
    out.flags.writeable = True
    draw.call(np.add, array, 1, out=out)
    return out


def refusing(draw):
    draw.call(volux.resize, draw.array((2, 3, 4), "int16"), shape=(0, 1, 1))


def raising(error):
    def call(draw):
        def wrong():
            raise error

        draw.call(wrong)

    return call


def of_what_is_read(draw):
    draw.array((2, 3), "uint8")
    block, _ = draw.kept[-1]
    block ^= 1


def beside_what_is_written(draw):
    draw.array((2, 3), "uint8", is_out=True)
    _, block, _ = draw.outs[-1]
    if block.size > 6:
        block[:] += 1


def of_out_before_a_refusal(draw):
    out = draw.array((2, 3), "uint8", is_out=True)
    out.flags.writeable = True
    out += 1
    draw.call(volux.resize, out, shape=(1, 1))


def by_threads(draw):
    return draw.threads == 3


def by_strides(draw):
    return draw.array((2, 3), "uint8").strides


def by_chance(_draw):
    return os.urandom(8)


def refused_by_threads(draw):
    if draw.threads:
        draw.call(volux.resize, None, shape=(1, 1, 1))


def warning(_draw):
    warnings.warn("beware", RuntimeWarning, stacklevel=1)


FAULTS = {
    "another error": (raising(KeyError("x")), "raises KeyError"),
    "an error in two lines": (raising(ValueError("one\ntwo")), "ValueError in several lines"),
    "an error without words": (raising(TypeError()), "TypeError without words"),
    "a change of what is read": (of_what_is_read, "what is read was changed"),
    "a change beside what is written": (beside_what_is_written, "between the voxels of out"),
    "a change before a refusal": (of_out_before_a_refusal, "out was written, though ValueError"),
    "other bits by threads": (by_threads, "other bits with {'threads': 3}"),
    "other bits by strides": (by_strides, "other bits with {'is_plain': True}"),
    "other bits by chance": (by_chance, "other bits with {'threads': 1}"),
    "a refusal by threads": (refused_by_threads, "refused with {'threads': 1}"),
    "a warning": (warning, "RuntimeWarning: beware"),
}


def faults_of(judging, call):
    for seed in SEEDS:
        try:
            judging.tried(call, seed)
        except judging.Fault as fault:
            yield str(fault)


@pytest.mark.parametrize("name", FAULTS)
def test_a_fault_is_found(name, judging):
    call, words = FAULTS[name]
    assert any(words in said for said in faults_of(judging, call))


@pytest.mark.parametrize(("call", "outcome"), [(right, "result"), (refusing, "refusal")])
def test_what_holds_is_counted(call, outcome, judging):
    assert {judging.tried(call, seed) for seed in SEEDS} == {outcome}


def test_a_mistake_of_the_check_itself_is_no_refusal(judging):
    def mistaken(_draw):
        raise ValueError("of the check")

    with pytest.raises(ValueError, match="of the check"):
        judging.tried(mistaken, SEEDS[0])


def test_a_seed_says_all_of_a_call(judging):
    said = [judging.described(seed, right) for seed in (SEEDS[0], SEEDS[0], SEEDS[1])]
    assert said[0] == said[1] != said[2]
    assert said[0].startswith("add(<int16 (2, 3, 4), strides ")
