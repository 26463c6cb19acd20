"""What was measured, with what is needed to judge and to repeat it."""
import os
import platform
import re
import time

from evidence import package, provenance
from evidence.commands import ROOT, output_of, version

from . import builds

KEPT = ROOT / "docs" / "performance"
KEY = "provenance"


def processor():
    """Names the model and its caches, as lscpu tells them."""
    said = output_of(["lscpu"], env={**os.environ, "LC_ALL": "C"}).decode()
    model = re.search(r"^Model name:\s+(.*)$", said, re.MULTILINE)
    caches = re.findall(r"^(L\d\w?)(?: cache)?:\s+(\S+ \w+)", said, re.MULTILINE)
    return ", ".join([model[1] if model else platform.machine(),
                      *(f"{name} {size}" for name, size in caches)])


def load():
    return f"{os.getloadavg()[0]:.2f}"


def sources_today(name):
    if name in ("python", "tool", "scale"):
        return package.sources()
    return provenance.sources(with_resample=name == "bulk")


class Clock:
    """Notes how long a measurement took and how busy the machine was."""

    def __init__(self):
        self.start = time.monotonic()
        self.load = load()

    def provenance(self, command):
        return {**provenance.of_run("scripts/bench", command, time.monotonic() - self.start),
                "sources": sources_today(command[0]),
                "processor": processor(),
                "kernel": f"{platform.system()} {platform.release()}",
                "compiler": version(builds.COMPILER),
                "flags": builds.FLAGS,
                "load": [self.load, load()]}


def save(name, record):
    provenance.save(KEPT / f"{name}.json", record)


def kept(name):
    """Returns the record of a measurement, or None."""
    return provenance.load(KEPT / f"{name}.json")
