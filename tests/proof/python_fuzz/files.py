"""Broken files, through every verb of the command that reads them.

The files and the verbs are those of python/tests/tool/test_broken.py, with other seeds.
"""
import random
import shutil
from pathlib import Path

import numpy as np
from python.tests.tool import test_broken
from python.tests.tool.runs import run, save

from judging import Fault

TURNS = test_broken.VERBS


class Files:
    """A folder with whole files, in which the command meets broken ones."""

    turns = TURNS

    def __init__(self):
        save("ct.nii.gz")
        self.whole = test_broken.files()
        Path("points.csv").write_text("x,y,z\n1,2,3\n", encoding="utf-8")
        self.names = {path.name for path in Path().iterdir()}

    def name(self, turn):
        return turn.split()[0]

    def tried(self, turn, seed):
        """Returns the exit code of a verb that is given a broken file."""
        path = self.broken(seed)
        data = path.read_bytes()
        try:
            ended = run(*turn.format(path).split())
            judge(ended)
            if path.read_bytes() != data:
                raise Fault("the input was changed")
            if ended.code != 0 and self.others() != {path.name}:
                raise Fault("a failure leaves a file behind", " ".join(self.others()))
        finally:
            self.clean()
        return f"exit {ended.code}"

    def described(self, turn, seed):
        path = self.broken(seed)
        return f"volux {turn.format(path)}    # {Path.cwd() / path} is kept"

    def broken(self, seed):
        drawn = random.Random(seed)
        return test_broken.broken(np.random.default_rng(drawn.getrandbits(64)),
                                  drawn.getrandbits(20), self.whole)

    def others(self):
        return {path.name for path in Path().iterdir()} - self.names

    def clean(self):
        for name in self.others():
            path = Path(name)
            if path.is_dir() and not path.is_symlink():
                shutil.rmtree(path)
            else:
                path.unlink()


def judge(ended, is_our_own=False):
    """Judges how the command has ended, on a file that may be one that only we would make."""
    if ended.code not in (0, 1, 2):
        raise Fault(f"exit code {ended.code}: {ended.err}")
    said = ended.out + ended.err
    if "Traceback" in said:
        raise Fault(f"a traceback: {said}", said.strip().splitlines()[-1])
    if "for a reason that it should have said" in said and not is_our_own:
        raise Fault(f"no reason of its own: {ended.err}", ended.err.partition("itself: ")[2])
    lines = ended.err.splitlines()
    strange = [line for line in lines if not line.startswith("volux: ") or len(line) < 8]
    if strange:
        raise Fault(f"a line that is not the command's: {strange[0]}", strange[0][:40])
    if not lines and (ended.code == 2 or ended.code == 1 and not ended.out):
        raise Fault("a failure without words")
