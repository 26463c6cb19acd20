"""What a check found, and how it is kept."""
import dataclasses
import datetime
import hashlib
import json
import platform
import re
import shlex
from pathlib import Path

from .common import CORES, ROOT

KEPT = ROOT / "docs" / "proof"


@dataclasses.dataclass
class Table:
    caption: str
    columns: list
    rows: list


@dataclasses.dataclass
class Result:
    passed: bool
    summary: str  # one sentence, with the figure that counts
    tables: list = dataclasses.field(default_factory=list)
    campaign: bool = False  # a long one, kept beside the sample of it that every whole run takes
    complete: bool = True  # nothing was left out by an option, so that it can be recorded


OF_COMPANION = ("bulk", "digest", "fuzz", "sanitizers")  # what the companion takes part in


def sources_of(check):
    """The first digits of a digest of the sources that a result holds for."""
    digest = hashlib.sha256()
    for folder in ("include", "src"):
        for path in sorted((ROOT / folder).rglob("*")):
            of_companion = "resample" in path.relative_to(ROOT).as_posix()
            if path.is_file() and (check in OF_COMPANION or not of_companion):
                digest.update(str(path.relative_to(ROOT)).encode() + b"\0" + path.read_bytes())
    return digest.hexdigest()[:12]


def machine():
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    name = cpu[1] if cpu else platform.machine()
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    return f"{name}, {CORES} cores, {system}"


@dataclasses.dataclass
class Record:
    """A result with what is needed to repeat it."""

    check: str
    command: str
    when: str
    sources: str
    machine: str
    seconds: int
    result: Result

    @staticmethod
    def of(check, arguments, result, seconds):
        words = [word for word in arguments if word != "--record"]
        return Record(check, shlex.join(["scripts/prove", *words]),
                      datetime.date.today().isoformat(), sources_of(check), machine(),
                      round(seconds), result)

    @staticmethod
    def load(path):
        fields = json.loads(path.read_text(encoding="utf-8"))
        found = fields.pop("result")
        tables = [Table(**table) for table in found.pop("tables")]
        return Record(result=Result(tables=tables, **found), **fields)

    @staticmethod
    def kept(check):
        """The campaign, where there is one, and the latest whole run."""
        paths = (KEPT / f"{check}-campaign.json", KEPT / f"{check}.json")
        return [Record.load(path) for path in paths if path.exists()]

    def save(self):
        KEPT.mkdir(parents=True, exist_ok=True)
        name = f"{self.check}-campaign" if self.result.campaign else self.check
        text = json.dumps(dataclasses.asdict(self), indent=1, ensure_ascii=False)
        (KEPT / f"{name}.json").write_text(text + "\n", encoding="utf-8")
