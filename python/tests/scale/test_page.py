"""What the page about large volumes prints is what its commands say.

As a program, ``python -m python.tests.scale.test_page`` in the folder of the clone, it writes the
page anew.
"""

import re

import pytest

from ..tool.test_page import DOCS, written

PAGE = DOCS / "scale.md"

pytestmark = pytest.mark.skipif(not PAGE.exists(), reason="the page is not beside the tests")


def printed_now(page):
    """The page with what its commands print, but for progress, which depends on the machine."""
    return re.sub(r"^volux: \w+: \d+ %\n", "", written(page), flags=re.MULTILINE)


def test_the_page_prints_what_its_commands_say():
    for package in ("zarr", "dask"):
        pytest.importorskip(package)
    page = PAGE.read_text()
    assert printed_now(page) == page


def test_the_page_links_to_what_is_there():
    for link in re.findall(r"\]\(([^)#]+)[^)]*\)", PAGE.read_text()):
        assert (DOCS / link).exists(), link


if __name__ == "__main__":
    PAGE.write_text(printed_now(PAGE.read_text()))
