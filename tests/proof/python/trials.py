"""Runs tests of the package again and again, each time in a child of a process that has imported
what they need beside volux, so that a trial of changed sources takes as long as its tests alone.

A request is a line of JSON, the arguments of pytest. The answer is a line: the exit code, and the
test that has failed or what else ended it. The package is found by PYTHONPATH.
"""
import json
import os
import re
import resource
import signal
import sys
import tempfile
from importlib import import_module

MODULES = ("hypothesis", "jsonschema", "nibabel", "numpy", "pytest", "scipy.ndimage",
           "skimage.transform", "SimpleITK", "PIL.Image", "typer", "dask.array", "zarr")
OPTIONS = ["-x", "-q", "--no-header", "-p", "no:cacheprovider",
           "-W", "ignore::pytest.PytestAssertRewriteWarning"]  # of the modules above
SECONDS = 120  # of the processor; the longest trial takes a quarter of it
ADDRESS_SPACE = 16 << 30  # a mistake can ask for any amount of memory


def answer(words):
    with tempfile.TemporaryFile() as said:
        child = os.fork()
        if child == 0:
            os._exit(tried(words, said.fileno()))
        _, status = os.waitpid(child, 0)
        said.seek(0)
        code = os.waitstatus_to_exitcode(status)
        return code, reason(code, said.read().decode(errors="replace"))


def reason(code, said):
    if code < 0:
        return signal.Signals(-code).name
    failed = re.search(r"^(?:FAILED|ERROR) (\S+)", said, re.MULTILINE)
    return failed[1] if failed else said.strip().rpartition("\n")[2]


def tried(words, said):
    import pytest

    os.dup2(said, 1)
    os.dup2(said, 2)
    resource.setrlimit(resource.RLIMIT_CPU, (SECONDS, SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    signal.alarm(10 * SECONDS)  # something waits for what never comes
    sys.stdin = open(os.devnull, encoding="utf-8")
    return int(pytest.main([*OPTIONS, *words]))


def main():
    for module in MODULES:
        import_module(module)
    assert "volux" not in sys.modules
    for line in sys.stdin:
        print(*answer(json.loads(line)), flush=True)


if __name__ == "__main__":
    main()
