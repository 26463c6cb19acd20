"""What help and JSON say of plans is so."""

import json
import re
import shlex
from pathlib import Path

import numpy as np
import pytest

from ..tool.runs import done, run, voxels
from .volumes import matches, planned, save_nifti, save_ome


def example_of(verb):
    return done(verb, "--help").splitlines()[2].strip()


def test_the_examples_run_one_after_the_other():
    save_nifti()
    for verb in ("plan", "run", "status", "verify", "pyramid"):
        program, *typed = shlex.split(example_of(verb))
        assert (program, typed[0]) == ("volux", verb)
        assert run(*typed).code == 0


PLANS = (
    "resize image.zarr --scale 2",
    "resize bytes.raw --raw uint8,9,8,7 --voxel 1,2,3 --shape 5 --interp label",
    "resample image.zarr --like image.zarr",
    "resample image.zarr -t move.txt --antialias mean --dtype float64",
)


@pytest.mark.parametrize("typed", PLANS)
def test_a_plan_has_the_form_that_is_committed(typed):
    save_ome()
    Path("bytes.raw").write_bytes(bytes(9 * 8 * 7))
    np.savetxt("move.txt", np.eye(4))
    printed = done("plan", *typed.split(), "-o", "out.zarr", "--json")
    matches("unit_plan", printed)
    assert printed == Path("out.plan.json").read_text()


def test_facts_have_the_forms_that_are_committed():
    plan = planned("--scale", 2)
    for _ in range(2):
        matches("run", done("run", plan, "--json", "--shard", "1/3"))
        matches("status", done("status", plan, "--json"))
        matches("verify", run("verify", plan, "--json").out)
    done("run", plan)
    matches("verify", done("verify", plan, "--json", "--check", "decoded"))
    matches("status", done("status", plan, "--json"))
    for record in Path("out.volux/0/0").glob("*.json"):
        matches("unit_record", record.read_text())


def test_status_says_how_far_a_result_is_and_its_digest_at_the_end():
    plan = planned("--scale", 2, unit=32)
    done("run", plan, "--shard", "1/2")
    assert re.search(r"units +6 of 12\nverified +no\n", done("status", plan))
    done("run", plan)
    done("verify", plan)
    assert re.search(r"units +12 of 12\nverified +yes, [0-9a-f]{64}\n", done("status", plan))


def test_quiet_says_nothing():
    save_ome()
    assert run("plan", "resize", "image.zarr", "-o", "o.zarr", "--scale", 1, "-q") == (0, "", "")
    assert run("run", "o.plan.json", "-q") == (0, "", "")
    assert run("verify", "o.plan.json", "-q") == (0, "", "")


def test_force_replaces_a_plan_its_store_and_its_records():
    save_ome()
    first = planned("--scale", 2)
    done("run", first)
    planned("--scale", 2, "--interp", "cubic", "--force", file="image.zarr")
    assert json.loads(done("status", first, "--json"))["done"] == 0
    assert not Path("out.zarr/0/c").exists()


def test_a_warning_of_skipped_detail_is_said_before_the_run():
    save_ome(array=voxels((9, 8, 7)))
    np.savetxt("wide.txt", np.diag([4, 4, 4, 1]))
    ended = run("plan", "resample", "image.zarr", "-o", "out.zarr", "-t", "wide.txt")
    assert "detail between them is skipped" in ended.err
