"""Runs commands in children of a process that has imported all they need, with a fault in each.

A request is a line of JSON on stdin, and so is its answer on stdout. The library of faults must
have been loaded before all others (LD_PRELOAD).
"""

import ctypes
import json
import os
import signal
import sys
import tempfile
from importlib import import_module

MODULES = ("numpy", "nibabel", "SimpleITK", "PIL.Image", "zarr", "volux.scale._running")
MODULES += ("volux.tool._verbs", "volux.tool._making", "volux.tool._finishing")
SECONDS = 60  # after which a command hangs


def main():
    for module in MODULES:
        import_module(module)
    faults = ctypes.CDLL(None)
    faults.faults_seen.restype = ctypes.c_char_p
    for line in sys.stdin:
        print(json.dumps(answer(json.loads(line), faults)), flush=True)


def answer(request, faults):
    """What a command prints, its exit code, and the calls that could have failed."""
    with tempfile.TemporaryFile() as calls, tempfile.TemporaryFile() as said:
        child = os.fork()
        if child == 0:
            os._exit(carry_out(request, faults, calls.fileno(), said.fileno()))
        _, status = os.waitpid(child, 0)
        return {
            "code": os.waitstatus_to_exitcode(status),
            "err": content(said),
            "calls": [line.split(" ", 1) for line in content(calls).splitlines()],
        }


def carry_out(request, faults, calls, said):
    from volux.tool._cli import main

    signal.alarm(SECONDS)
    os.chdir(request["folder"])
    os.dup2(said, 2)
    os.dup2(os.open(os.devnull, os.O_RDWR), 1)
    call, at, error = request["fault"]
    faults.faults_in_files(request["folder"].encode(), call.encode(), at, error)
    code = main(request["arguments"].split())
    faults.faults_in_files(b"", b"", 0, 0)
    os.write(calls, faults.faults_seen())
    return code


def content(file):
    file.seek(0)
    return file.read().decode()


if __name__ == "__main__":
    main()
