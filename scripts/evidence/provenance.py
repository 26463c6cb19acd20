"""On which sources and on which machine a result was found, and the files that keep results."""
import datetime
import hashlib
import json
import platform
import re
import shlex
from pathlib import Path

from .commands import CORES, ROOT


def is_core(file):
    """Whether a source, by its name in the repository, is volux_core's."""
    return not re.search(r"/(resample|adapt)\b", file)


# What a build leaves beside the sources of the Python package.
BUILT = {".pyc", ".so"}


def sources(with_resample, more=()):
    """Returns the first digits of a digest of the sources that a result holds for, those in more
    folders among them."""
    digest = hashlib.sha256()
    for folder in ("include", "src", *more):
        for path in sorted((ROOT / folder).rglob("*")):
            file = path.relative_to(ROOT).as_posix()
            if path.is_file() and path.suffix not in BUILT and (with_resample or is_core(file)):
                digest.update(file.encode() + b"\0" + path.read_bytes())
    return digest.hexdigest()[:12]


def machine():
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    name = cpu[1] if cpu else platform.machine()
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    return f"{name}, {CORES} cores, {system}"


def of_run(script, arguments, seconds):
    """Returns what is needed to repeat a run of a script, but for the sources."""
    words = [word for word in arguments if word != "--record"]
    return {"command": shlex.join([script, *words]), "when": datetime.date.today().isoformat(),
            "machine": machine(), "seconds": round(seconds)}


def save(path, record):
    path.parent.mkdir(parents=True, exist_ok=True)
    text = json.dumps(record, indent=1, ensure_ascii=False)
    numbers = re.compile(r"\[\s+([-+.\de]+(?:,\s+[-+.\de]+)*)\s+\]")  # a list of them is one line
    text = numbers.sub(lambda found: "[" + re.sub(r"\s+", " ", found[1]) + "]", text)
    path.write_text(text + "\n", encoding="utf-8")


def load(path):
    """Returns the record in a file, or None if there is no such file."""
    return json.loads(path.read_text(encoding="utf-8")) if path.exists() else None
