"""Processes with faults: a library that stands before the C library, and what serves commands."""

import json
import os
import platform
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

HERE = Path(__file__).parent


@pytest.fixture(scope="session")
def library(tmp_path_factory):
    """The library of faults, compiled."""
    if platform.libc_ver()[0] != "glibc" or shutil.which("cc") is None:
        pytest.skip("a library of faults needs glibc and a C compiler, cc")
    if "asan" in os.environ.get("LD_PRELOAD", ""):
        pytest.skip("the address sanitizer is where a library of faults would be")
    built = tmp_path_factory.mktemp("faults") / "faults.so"
    options = ["-std=c11", "-O2", "-Wall", "-Wextra", "-Werror", "-shared", "-fPIC"]
    subprocess.run(["cc", *options, HERE / "faults.c", "-ldl", "-o", built], check=True)
    return built


@pytest.fixture(scope="session")
def python_with(library):
    """Start Python on one of the files beside this one, with the library of faults in it."""

    def start(script):
        return subprocess.Popen(
            [sys.executable, HERE / script],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
            env={**os.environ, "LD_PRELOAD": str(library), "NO_COLOR": "1"},
        )

    return start


@pytest.fixture(scope="session")
def commanded(python_with):
    """Run a command in a folder with a fault, and return how it ended.

    A fault is a call's name, which call of this name fails, from 1, and the number of an error.
    """
    with python_with("serve.py") as server:

        def ask(folder, typed, fault=("", 0, 0)):
            request = {"folder": str(folder), "arguments": typed, "fault": fault}
            server.stdin.write(json.dumps(request) + "\n")
            server.stdin.flush()
            return json.loads(server.stdout.readline())

        yield ask
        server.stdin.close()
