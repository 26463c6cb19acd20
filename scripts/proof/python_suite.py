"""The tests of the Python package as the checks use them."""
from evidence.commands import ROOT

TESTS = ROOT / "python" / "tests"
# Those that draw and print whole pages, look at other libraries, or wait for what takes long.
SLOW = ("test_bench.py", "test_coming_from.py", "test_examples.py", "test_long.py", "test_page.py",
        "test_pages.py", "test_peers.py", "test_running.py")


def quick_tests():
    """Returns the files of tests that are of the package proper and take little time."""
    return [path for path in sorted(TESTS.glob("test_*.py")) if path.name not in SLOW]
