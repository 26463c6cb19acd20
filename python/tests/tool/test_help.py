"""What the tool says about itself is so: examples run, and JSON has the form that is committed."""

import json
import re
import shlex
from importlib.resources import files

import numpy as np
import pytest

from .runs import done, run, save, sitk, voxels

jsonschema = pytest.importorskip("jsonschema")

VERBS = re.findall(r"^  (\w+)  ", done("--help").partition("Commands:")[2], re.MULTILINE)
OF_PLANS = (
    "plan",
    "run",
    "status",
    "verify",
    "pyramid",
)  # their examples follow one another: tests/scale


@pytest.fixture
def examples():
    """The files that the examples name."""
    save("ct.nii.gz", voxels((256, 32, 16)))
    save("pet.nii.gz", voxels((32, 32, 16)))
    save("other.nii.gz", voxels((256, 32, 16)))
    sitk.WriteTransform(sitk.TranslationTransform(3, (1.0, 2.0, 3.0)), "to_pet.tfm")
    with open("points.csv", "w") as file:
        file.write("x,y,z\n0,0,0\n")


def example_of(verb):
    return done(verb, "--help").splitlines()[2].strip()


def test_all_verbs_are_listed():
    assert set(VERBS) >= {
        *("info", "resize", "resample", "reslice", "crop"),
        *("sample", "convert", "compare", "digest"),
    }


@pytest.mark.usefixtures("examples")
@pytest.mark.parametrize("verb", [verb for verb in VERBS if verb not in OF_PLANS])
def test_help_begins_with_an_example_that_runs(verb):
    program, *typed = shlex.split(example_of(verb))
    assert (program, typed[0]) == ("volux", verb)
    assert run(*typed).code == 0


@pytest.mark.parametrize("verb", VERBS)
def test_help_fits_into_80_columns(verb, monkeypatch):
    monkeypatch.setenv("COLUMNS", "80")
    assert [line for line in done(verb, "--help").splitlines() if len(line) > 80] == []


def matches(name, printed):
    schema = json.loads((files("volux.tool") / "schemas" / f"{name}.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    jsonschema.validate(json.loads(printed), schema)


PRINTED = {
    "info ct.nii.gz": "info",
    "digest ct.nii.gz": "digest",
    "compare ct.nii.gz other.nii.gz": "compare",
    "compare ct.nii.gz pet.nii.gz": "compare",
    "compare ct.nii.gz odd.nii.gz": "compare",
    "convert ct.nii.gz -o x.nrrd": "result",
    "crop ct.nii.gz -o x.nii --box 1:2,3:4,:": "result",
    "resize ct.nii.gz -o x.nii --scale 2": "result",
    "resample pet.nii.gz -o x.nii --like ct.nii.gz --transform to_pet.tfm": "result",
    "reslice ct.nii.gz -o x.nii --normal 0,1,1": "result",
    "resize ct.nii.gz --scale 0.3 --dry-run": "plan",
    "resample pet.nii.gz --like ct.nii.gz --dry-run": "plan",
    "crop ct.nii.gz --box 1:2,3:4,: --dry-run": "plan",
    "convert ct.nii.gz --dry-run": "plan",
    "reslice ct.nii.gz --normal 1,2,3 --dry-run": "plan",
}


@pytest.mark.usefixtures("examples")
@pytest.mark.parametrize("typed", PRINTED)
def test_json_has_the_form_that_is_committed(typed):
    odd = voxels((256, 32, 16), np.float32)
    odd[3, 2, 1] = np.inf
    save("odd.nii.gz", odd)
    ended = run(*typed.split(), "--json")
    assert ended.code in (0, 1)
    matches(PRINTED[typed], ended.out)


def test_a_form_refuses_what_it_does_not_know(ct):
    facts = json.loads(done("digest", ct, "--json"))
    with pytest.raises(jsonschema.ValidationError):
        matches("digest", json.dumps(facts | {"more": 1}))
