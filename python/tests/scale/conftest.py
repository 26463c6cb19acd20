import pytest


@pytest.fixture(autouse=True)
def _in_a_folder_of_its_own(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("NO_COLOR", "1")
