"""Plans: everything that the voxels of a result depend on, in a file."""

from __future__ import annotations

import json
import os
from dataclasses import asdict, dataclass, replace
from hashlib import sha256
from pathlib import Path
from typing import Any

import numpy as np

from volux import Affine, Grid
from volux._displacement import Transform
from volux._types import Floats, Ints, Matrix
from volux.scale import _raw, _sources, _store
from volux.scale._units import Units
from volux.tool._errors import Refusal
from volux.tool._version import version

FORMAT = 1


@dataclass(frozen=True)
class Place:
    """A grid of axes zyx in a file."""

    shape: Ints
    affine: tuple[Floats, ...]

    @classmethod
    def of(cls, grid: Grid) -> Place:
        """Return where the voxels of a grid lie."""
        return cls(grid.shape, tuple(map(tuple, grid.affine.tolist())))

    @property
    def grid(self) -> Grid:
        """The grid."""
        return Grid(self.shape, self.affine, axes="zyx")


@dataclass(frozen=True)
class Plan:
    """A result that is made unit by unit.

    Parameters
    ----------
    verb : str
        What the user typed.
    input : dict
        The path from the folder of the plan, what the file is, and the digest of its metadata.
    output : dict
        The path from the folder of the plan, and the array in it.
    source, target : Place
        Where the voxels that are read and made lie. A change of size has both in the index space
        of the source, so that its positions are exact.
    transform : dict
        A matrix, or the files of a displacement field; the world is that of `source`.
    options : dict
        As `volux.resample` takes them.
    dtype : str
        The type of the voxels of the result.
    chunk, unit : three ints
        What is decoded at once, and what is written at once.
    codec : dict
        The codec's name, and the versions of the packages that encode.
    metadata, group : str
        The metadata of the array that is written, and of the group in which it is the first; ""
        for others.
    memory : int
        Bytes that a task needs at most, as projected.
    """

    verb: str
    input: dict[str, Any]
    output: dict[str, str]
    source: Place
    target: Place
    transform: dict[str, Any]
    options: dict[str, Any]
    dtype: str
    chunk: Ints
    unit: Ints
    codec: dict[str, Any]
    metadata: str
    group: str
    memory: int

    @property
    def units(self) -> Units:
        """The units of the result."""
        return Units(self.target.shape, self.unit)

    def facts(self) -> dict[str, Any]:
        """Return the plan as JSON has it, without its own id."""
        said = json.loads(json.dumps(asdict(self)))
        said["options"]["fill"] = _store.strict(self.options["fill"])
        return {"format": FORMAT, "volux": version(), **said}


@dataclass(frozen=True)
class Filed:
    """A plan in a file."""

    plan: Plan
    id: str
    folder: Path
    copy: Path | None = None

    @property
    def store(self) -> Path:
        """The folder of the result, or of a copy of it."""
        return self.copy or self.folder / self.plan.output["path"]

    def moved(self, store: str) -> Filed:
        """Return the plan for a copy of the result, beside which lie the copied records."""
        if not Path(store).is_dir():
            raise Refusal(f"{store}: there is no such folder")
        return replace(self, copy=Path(store))

    @property
    def array(self) -> Path:
        """The folder of the array that is written."""
        return self.store / self.plan.output["array"]

    @property
    def records(self) -> Path:
        """The folder beside the result that says what has been done."""
        array = self.plan.output["array"]
        return _store.records_of(self.store) / array

    def source(self) -> _sources.Source:
        """Return the input, unless it is not the one that the plan was made for."""
        about = self.plan.input
        raw = about["raw"]
        layout = _raw.Layout(raw["dtype"], tuple(raw["shape"]), tuple(raw["voxel"]))
        found = _sources.opened(str(self.folder / about["path"]), layout)
        if found.digest != about["digest"]:
            raise Refusal(f"{about['path']}: is not the input that was planned; plan again")
        return found

    def transform(self) -> Transform | None:
        """Return the transform."""
        about = self.plan.transform
        if about["matrix"] is not None:
            return Affine(about["matrix"])
        if not about["files"]:
            return None
        from volux.tool import _transforms

        paths = [str(self.folder / file["path"]) for file in about["files"]]
        for path, file in zip(paths, about["files"], strict=True):
            if digest_of_file(path) != file["digest"]:
                raise Refusal(f"{file['path']}: is not the transform that was planned; plan again")
        return _transforms.read(paths, self.plan.target.grid)


def digest_of_file(path: str) -> str:
    """Return the SHA-256 of the bytes of a file."""
    from volux.tool._sidecar import file_digest

    with open(path, "rb") as file:
        return file_digest(file)


def identity(facts: dict[str, Any]) -> str:
    """Return the id of a plan: the SHA-256 of its canonical text."""
    text = json.dumps(facts, sort_keys=True, separators=(",", ":"), allow_nan=False)
    return sha256(text.encode()).hexdigest()


def text_of(plan: Plan) -> str:
    """Return the text of a plan's file."""
    facts = plan.facts()
    return json.dumps({"id": identity(facts), **facts}, indent=2) + "\n"


def read(path: str) -> Filed:
    """Read a plan, and check that it is whole and of this format."""
    if Path(path).is_dir():
        raise Refusal(f"{path}: is a folder; name the file that volux plan has written")
    try:
        facts = _store.parsed(Path(path).read_text(encoding="utf-8"))
        given = facts.pop("id")
        if identity(facts) != given:
            raise Refusal(f"{path}: was changed after it was made; plan again")
        form = facts.pop("format")
        if form != FORMAT:
            raise Refusal(f"{path}: is a plan of format {form}; this volux reads {FORMAT}")
        made_by = facts.pop("volux")
        plan = _plan(facts)
    except (ValueError, TypeError, KeyError, AttributeError) as error:
        raise Refusal(f"{path}: is no plan that volux plan made: {error}") from None
    _refuse_other_versions(path, made_by, plan)
    return Filed(plan, given, Path(path).parent)


def _plan(facts: dict[str, Any]) -> Plan:
    for name in ("source", "target"):
        place = facts[name]
        facts[name] = Place(tuple(place["shape"]), tuple(map(tuple, place["affine"])))
    for name in ("chunk", "unit"):
        facts[name] = tuple(facts[name])
    facts["options"]["fill"] = _store.loose(facts["options"]["fill"])
    return Plan(**facts)


def _refuse_other_versions(path: str, made_by: str, plan: Plan) -> None:
    # Other codecs may write other bytes, and the digests of the store would not say why.
    now = {"volux": version(), **_store.versions()}
    then = {"volux": made_by, **plan.codec["versions"]}
    for name in then:
        if then[name] != now.get(name):
            raise Refusal(
                f"{path}: was made with {name} {then[name]}, and here is {now.get(name)}; "
                "install that one, or plan again"
            )


def relative(path: str, folder: Path) -> str:
    """Return a path as seen from the folder of a plan."""
    return os.path.relpath(path, folder)


def index_places(source: Grid, map_to_source: Matrix, shape: Ints) -> tuple[Place, Place]:
    """Return the places of a change of size in the index space of the source."""
    to_source = np.eye(4)
    to_source[:3, [2, 1, 0, 3]] = map_to_source[[2, 1, 0]]
    own = Grid(source.shape, np.eye(4), axes="zyx")
    return Place.of(own), Place.of(Grid(shape, to_source, axes="zyx"))
