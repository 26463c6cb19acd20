"""What the pages about Python print is so, and their pictures are those that their code makes."""

import re
from pathlib import Path

import pytest

from .pages import FOLDER, PICTURES, pixels, ran

PAGES = sorted(FOLDER.glob("*.md"))
pytestmark = pytest.mark.skipif(not PAGES, reason="the pages are not beside the tests")


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.stem)
def test_a_page_prints_what_it_says_and_draws_what_it_shows(page, tmp_path, monkeypatch):
    pytest.importorskip("nibabel")
    pytest.importorskip("SimpleITK")
    monkeypatch.chdir(tmp_path)
    monkeypatch.syspath_prepend(str(FOLDER))
    for code, printed, expected in ran(page):
        assert printed == expected, code
    drawn = {path.name for path in Path(tmp_path).glob("*.png")}
    assert drawn == set(re.findall(r"\(pictures/([\w-]+\.png)\)", page.read_text(encoding="utf-8")))
    for name in drawn:
        assert pixels(tmp_path / name) == pixels(PICTURES / name), name


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.stem)
def test_a_page_links_to_what_is_there(page):
    for link in re.findall(r"\]\(([^)#]+)[^)]*\)", page.read_text(encoding="utf-8")):
        assert link.startswith("https:") or (FOLDER / link).exists(), link


def test_every_picture_is_shown():
    shown = "".join(page.read_text(encoding="utf-8") for page in PAGES)
    hidden = [path.name for path in PICTURES.glob("*") if f"(pictures/{path.name})" not in shown]
    assert hidden == []
