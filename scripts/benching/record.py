"""What was measured, with what is needed to judge and to repeat it."""
import datetime
import json
import os
import platform
import re
import shlex
import time

from proof.common import output_of, version
from proof.results import machine, sources_of

from . import figures

KEY = "provenance"


def processor():
    """The model and its caches, as lscpu tells them."""
    said = output_of(["lscpu"], env={**os.environ, "LC_ALL": "C"}).decode()
    model = re.search(r"^Model name:\s+(.*)$", said, re.MULTILINE)
    caches = re.findall(r"^(L\d\w?)(?: cache)?:\s+(\S+ \w+)", said, re.MULTILINE)
    return ", ".join([model[1] if model else platform.machine(),
                      *(f"{name} {size}" for name, size in caches)])


def load():
    return f"{os.getloadavg()[0]:.2f}"


class Clock:
    """Notes how long a measurement took and how busy the machine was."""

    def __init__(self):
        self.start = time.monotonic()
        self.load = load()

    def provenance(self, command):
        return {"command": shlex.join(["scripts/bench", *command]),
                "when": datetime.date.today().isoformat(),
                "sources": sources_of(command[0]),
                "seconds": round(time.monotonic() - self.start),
                "machine": machine(),
                "processor": processor(),
                "kernel": f"{platform.system()} {platform.release()}",
                "compiler": version(figures.COMPILER),
                "flags": figures.FLAGS,
                "load": [self.load, load()]}


def path(name):
    return figures.KEPT / f"{name}.json"


def save(name, record):
    figures.KEPT.mkdir(parents=True, exist_ok=True)
    text = json.dumps(record, indent=1, ensure_ascii=False)
    numbers = re.compile(r"\[\s+([-+.\de]+(?:,\s+[-+.\de]+)*)\s+\]")  # a list of them is one line
    text = numbers.sub(lambda found: "[" + re.sub(r"\s+", " ", found[1]) + "]", text)
    path(name).write_text(text + "\n", encoding="utf-8")


def kept(name):
    """The record of a measurement, or None."""
    if not path(name).exists():
        return None
    return json.loads(path(name).read_text(encoding="utf-8"))
