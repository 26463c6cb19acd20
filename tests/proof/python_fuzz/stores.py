"""Broken stores and plans, through the verbs for volumes beyond one machine's memory."""
import hashlib
import json
import math
import random
import shutil
from contextlib import chdir
from copy import deepcopy
from pathlib import Path

import numpy as np
from python.tests.scale.volumes import save_nifti, save_ome, zarr
from python.tests.tool.runs import done, run, voxels

from files import judge
from judging import Fault

SHAPE = (9, 10, 11)
RESULT = ("out.plan.json", "out.zarr", "out.volux")
INPUTS = ("image.zarr", "old.zarr", "plain.zarr", "ct.nii", "x.npy", "x.raw", "move.txt")

# What is typed, and which files are broken for it: those in a folder as well.
TURNS = (
    ("plan resize image.zarr -o new.zarr --scale 2 --chunk 8", "image.zarr"),
    ("plan resize image.zarr/0 -o new.zarr --spacing 1", "image.zarr"),
    ("plan resize old.zarr -o new.zarr --scale 2", "old.zarr"),
    ("plan resize plain.zarr -o new.zarr --shape 3,4,5 --voxel 1,2,3", "plain.zarr"),
    ("plan resample ct.nii -o new.zarr --like image.zarr", "image.zarr"),
    ("plan resample image.zarr -o new.zarr -t move.txt", "move.txt"),
    ("plan resize ct.nii -o new.zarr --spacing 1", "ct.nii"),
    ("plan resize x.npy -o new.zarr --scale 2", "x.npy"),
    ("plan resize x.raw --raw int16,11,10,9 -o new.zarr --scale 2", "x.raw"),
    ("run half.plan.json", "half.plan.json", "half.zarr", "half.volux"),
    ("run half.plan.json", "image.zarr"),
    ("run out.plan.json --task 1,2", *RESULT, "image.zarr"),
    ("run mapped.plan.json", "mapped.plan.json", "ct.nii", "move.txt"),
    ("status out.plan.json", *RESULT),
    ("status out.plan.json --json", *RESULT),
    ("verify out.plan.json", *RESULT),
    ("verify out.plan.json --check decoded --json", *RESULT),
    ("verify out.plan.json --store copy.zarr", "copy.zarr", "copy.volux"),
    ("pyramid out.zarr --levels 3", *RESULT[1:]),
    ("pyramid image.zarr --levels 2", "image.zarr"),
)

# What stands in JSON for something else. A plan is made however large its volumes are said to be,
# and none of the other verbs ends before it has looked at all of their units.
STRANGERS = (None, True, -1, 0, 1, 2.5, 3, 1e300, -0.0, math.nan, math.inf, "", "0", "nan", "\u00e9",
             "x" * 300, "a\nb", "zyx", [], {}, [1, 2, 3], [[]], [None], {"a": 1}, {"name": "bytes"})
LARGE = (2**31 - 1, 2**31, 2**63, 10**30)


class Stores:
    """A folder with whole stores, and a copy of it that is broken."""

    turns = TURNS

    def __init__(self):
        self.folder = Path.cwd()
        for name in ("whole", "now"):
            (self.folder / name).mkdir()
        with chdir(self.folder / "whole"):
            make_all()

    def name(self, turn):
        return turn[0].split()[0]

    def tried(self, turn, seed):
        """Returns the exit code of a verb where one or two files are broken."""
        with chdir(self.folder / "now"):
            is_our_own = self.break_files(turn, seed)
            before = bytes_of(INPUTS)
            ended = run(*turn[0].split(), *(["--quiet"] if "status" not in turn[0] else []))
            judge(ended, is_our_own)
            if turn[0].startswith("pyramid image.zarr"):
                return f"exit {ended.code}"
            if bytes_of(INPUTS) != before:
                raise Fault("an input was changed")
        return f"exit {ended.code}"

    def described(self, turn, seed):
        with chdir(self.folder / "now"):
            self.break_files(turn, seed)
        return f"volux {turn[0]}    # in {self.folder / 'now'}, which is kept"

    def break_files(self, turn, seed):
        """Breaks files of a fresh copy; returns whether one is a plan that has a true id again."""
        drawn = random.Random(seed)
        for path in Path().iterdir():
            shutil.rmtree(path) if path.is_dir() and not path.is_symlink() else path.unlink()
        shutil.copytree(self.folder / "whole", ".", dirs_exist_ok=True)
        paths = files_of(turn[1:])
        metadata = [path for path in paths if path.suffix == ".json" or path.name.startswith(".z")]
        is_our_own = False
        for _ in range(drawn.choice((1, 1, 1, 2))):
            path = drawn.choice(metadata if metadata and drawn.random() < 0.8 else paths)
            if path.is_file():
                large = LARGE if turn[0].startswith("plan") else ()
                is_our_own |= break_file(drawn, path, (*STRANGERS, *large))
        return is_our_own


def make_all():
    """Makes inputs, a plan, a result that is verified and has levels, and a copy of it."""
    array = voxels(SHAPE)
    save_ome("image.zarr", array)
    save_ome("old.zarr", array, version="0.4")
    zarr.create_array("plain.zarr", data=array, chunks=(4, 5, 6))
    save_nifti("ct.nii", voxels(SHAPE[::-1]))
    np.save("x.npy", array)
    Path("x.raw").write_bytes(array.tobytes())
    np.savetxt("move.txt", np.eye(4))
    stored = ("--chunk", 4, "--unit", 8)
    done("plan", "resize", "image.zarr", "-o", "out.zarr", "--scale", 1, *stored)
    done("plan", "resize", "image.zarr", "-o", "half.zarr", "--scale", 0.5, *stored)
    done("plan", "resample", "ct.nii", "-o", "mapped.zarr", "-t", "move.txt", *stored)
    for verb in (("run", "out.plan.json"), ("verify", "out.plan.json"),
                 ("pyramid", "out.zarr", "--levels", 2), ("run", "half.plan.json", "--task", 1)):
        done(*verb)
    shutil.copytree("out.zarr", "copy.zarr")
    shutil.copytree("out.volux", "copy.volux")


def files_of(names):
    """Returns the files of these names, or in folders of them."""
    found = [path for name in names for path in (Path(name), *sorted(Path(name).rglob("*")))]
    return [path for path in found if path.is_file()]


def bytes_of(names):
    return {path: path.read_bytes() for path in files_of(names)}


def break_file(drawn, path, strangers):
    """Breaks a file; returns whether it is a plan that has a true id again."""
    kinds = [cut, change_bytes, empty, noise, remove, replace_by_folder, nest]
    is_json = path.suffix == ".json" or path.name.startswith(".z")
    if not is_json:
        drawn.choice(kinds[:-1])(drawn, path)
        return False
    if drawn.random() < 0.3:
        drawn.choice(kinds)(drawn, path)
        return False
    try:
        facts = json.loads(path.read_bytes())
    except ValueError:  # it has been broken before
        return False
    for _ in range(drawn.choice((1, 1, 2))):
        change_fact(drawn, facts, strangers)
    is_sealed = path.name.endswith("plan.json") and drawn.random() < 0.7 and seal(facts)
    path.write_text(json.dumps(facts), encoding="utf-8")
    return is_sealed


def change_fact(drawn, facts, strangers):
    """Puts something else in a place of JSON, or takes away what is there."""
    places = list(places_in(facts))
    if not places:
        return
    holder, key = drawn.choice(places)
    if drawn.random() < 0.2:
        del holder[key]
    elif isinstance(holder, list) and drawn.random() < 0.2:
        holder.append(deepcopy(drawn.choice(strangers)))
    else:
        holder[key] = deepcopy(drawn.choice(strangers))


def places_in(facts):
    """Yields each place of JSON: what holds it, and its key."""
    inside = facts.items() if isinstance(facts, dict) else (
        enumerate(facts) if isinstance(facts, list) else ())
    for key, value in inside:
        yield facts, key
        yield from places_in(value)


def seal(facts):
    """Gives a plan that was changed its true id; returns whether it can have one."""
    facts.pop("id", None)
    try:
        text = json.dumps(facts, sort_keys=True, separators=(",", ":"), allow_nan=False)
    except ValueError:
        return False
    facts["id"] = hashlib.sha256(text.encode()).hexdigest()
    return True


def cut(drawn, path):
    data = path.read_bytes()
    path.write_bytes(data[:drawn.randrange(len(data) + 1)])


def change_bytes(drawn, path):
    data = bytearray(path.read_bytes())
    for _ in range(drawn.randint(1, 6) if data else 0):
        data[drawn.randrange(min(len(data), 400))] = drawn.choice((0, 1, 127, 128, 255, 34, 44, 93))
    path.write_bytes(data)


def empty(_, path):
    path.write_bytes(b"")


def noise(drawn, path):
    path.write_bytes(drawn.randbytes(drawn.choice((1, 40, 600))))


def remove(_, path):
    path.unlink()


def replace_by_folder(_, path):
    path.unlink()
    path.mkdir()


def nest(drawn, path):
    depth = drawn.choice((10, 100_000))
    path.write_bytes(b"[" * depth + b"]" * depth)
