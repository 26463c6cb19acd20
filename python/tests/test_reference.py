"""The reference says what the docstrings say, of every public name."""

import re

import pytest
import volux

from .reference import COMMAND, FOLDER, GROUPS, pages

pytestmark = pytest.mark.skipif(not FOLDER.exists(), reason="the pages are not beside the tests")
MADE = pages()


@pytest.mark.parametrize("name", MADE)
def test_a_page_is_that_of_the_docstrings(name):
    page = FOLDER / name
    assert page.exists(), f"{COMMAND} writes it"
    assert page.read_text() == MADE[name], f"{COMMAND} writes it anew"


def test_there_are_no_other_pages():
    assert {page.name for page in FOLDER.iterdir()} == set(MADE)


def test_the_contents_lead_to_headings():
    links = re.findall(r"\(([\w-]+\.md)#([\w-]+)\)", MADE["index.md"])
    assert len(links) == sum(map(len, GROUPS.values()))
    for file, anchor in links:
        headings = re.findall("^## (.+)$", MADE[file], re.MULTILINE)
        assert anchor in [heading.replace(".", "").lower() for heading in headings]


def test_every_public_name_is_on_a_page():
    things = [thing for group in GROUPS.values() for thing in group]
    public = [getattr(volux, name) for name in volux.__all__ if name != "ndimage"]
    public += [getattr(volux.ndimage, name) for name in volux.ndimage.__all__]
    assert {id(thing) for thing in things} == {id(thing) for thing in public}
