import pytest


@pytest.fixture(autouse=True)
def _in_a_folder_of_its_own(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("NO_COLOR", "1")


@pytest.fixture
def ct():
    from .runs import save

    return save("ct.nii.gz")
