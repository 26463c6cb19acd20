"""Too little memory wherever a verb meets it: one line with the name that the user gave."""

import pytest

from .runs import run

SHORT = {
    "_looking.info": ("info ct.nii.gz", "ct.nii.gz: there is not enough memory; crop it first"),
    "_sizes.convert": (
        "convert ct.nii.gz -n",
        "ct.nii.gz: there is not enough memory; --dry-run says how much a result needs",
    ),
    "_scaling.status": (
        "status x.plan.json",
        "x.plan.json: there is not enough memory; plan smaller units",
    ),
}


@pytest.mark.parametrize("error", [MemoryError(), ImportError("failed to map segment from x.so")])
@pytest.mark.parametrize("name", SHORT)
def test_too_little_memory_names_what_the_user_gave(name, error, monkeypatch):
    if "scal" in name:
        pytest.importorskip("zarr")

    def fail(*_, **__):
        raise error

    monkeypatch.setattr(f"volux.tool.{name}", fail)
    typed, said = SHORT[name]
    assert run(*typed.split()) == (1, "", f"volux: {said}\n")
