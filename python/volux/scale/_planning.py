"""From the options of a verb to a plan, and to a store that has its metadata."""

from __future__ import annotations

import shutil
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from volux import Affine, Grid
from volux._displacement import Transform
from volux._reading import reading
from volux._resize import target
from volux._types import Ints
from volux.scale import _memory, _ome, _raw, _sources, _store
from volux.scale._plan import (
    Filed,
    Place,
    Plan,
    digest_of_file,
    identity,
    index_places,
    relative,
    text_of,
)
from volux.scale._sources import Source
from volux.tool._errors import Misuse, Refusal

_FRACTIONS = ("float32", "float64")


@dataclass(frozen=True)
class Layout:
    """How a result is stored."""

    chunk: Ints
    unit: Ints
    codec: str = "zstd"

    def checked(self) -> Layout:
        """Return the layout, unless units are not made of whole chunks."""
        for chunk, unit in zip(self.chunk, self.unit, strict=True):
            if chunk < 1 or unit < 1 or unit % chunk:
                raise Misuse(f"--unit {self.unit}: must be whole multiples of --chunk {self.chunk}")
        return self


@dataclass(frozen=True)
class Wanted:
    """What a result shall be.

    Parameters
    ----------
    verb : str
        What the user typed.
    source, target : Place
        Where what is read and made lies, in the space in which positions are computed.
    place : Grid
        Where the result lies in the world, in mm.
    options : dict
        As `volux.resample` takes them.
    dtype : str
        The type of the voxels of the result.
    files : sequence of str
        Those of the transform.
    transform : Transform, optional
        In the world of `source`.
    """

    verb: str
    source: Place
    target: Place
    place: Grid
    options: dict[str, Any]
    dtype: str
    files: Sequence[str] = ()
    transform: Transform | None = None


def resized(source: Source, size: dict[str, Any], options: dict[str, Any], dtype: str) -> Wanted:
    """Return what `volux.resize` makes of a source."""
    shape, spacing, scale = (size.get(name) for name in ("shape", "spacing", "scale"))
    try:
        place, map_to_source = target(source.grid, shape, spacing, scale, size["align"])
    except ValueError as error:
        raise Misuse(f"--{error}") from None
    own, there = index_places(source.grid, map_to_source, place.shape)
    return Wanted("resize", own, there, place, options, dtype)


def resampled(
    source: Source, like: str | None, files: Sequence[str], options: dict[str, Any], dtype: str
) -> Wanted:
    """Return what `volux.resample` makes of a source."""
    grid = source.grid if like is None else _grid_of(like)
    transform: Transform | None = None
    if files:
        from volux.tool import _transforms

        transform = _transforms.read(files, grid)
    own, target = Place.of(source.grid), Place.of(grid)
    return Wanted("resample", own, target, grid, options, dtype, files, transform)


def _grid_of(like: str) -> Grid:
    if not Path(like).exists():
        raise Refusal(f"{like}: there is no such file")
    if Path(like).is_dir() or like.lower().endswith(".npy"):
        return _sources.opened(like).grid
    from volux.tool._files import grid_of

    found = grid_of(like)
    return _sources.straightened(found.shape, found.affine)[1]


def dtype_of(source: Source, dtype: str | None) -> str:
    """Return the type of a result."""
    own = source.dtype.name
    allowed = [own, *(name for name in _FRACTIONS if name != own)]
    if dtype is not None and dtype not in allowed:
        raise Misuse(f"--dtype {dtype}: allowed are {', '.join(allowed)}")
    return dtype or own


def planned(
    source: Source, wanted: Wanted, layout: Layout, files: tuple[str, str, str], raw: _raw.Layout
) -> Filed:
    """Return a plan; `files` are the plan, the store and the array in it."""
    path, output, array = files
    folder = Path(path).parent
    _refuse_input(source.path, output)
    _refuse_unplaced(output, wanted.place)
    _refuse_unread(source, wanted)
    layout = layout.checked()
    plan = Plan(
        verb=wanted.verb,
        input=input_of(source, folder, raw),
        output={"path": relative(output, folder), "array": array},
        source=wanted.source,
        target=wanted.target,
        transform=_said(wanted, folder),
        options=wanted.options,
        dtype=wanted.dtype,
        chunk=layout.chunk,
        unit=layout.unit,
        codec={"name": layout.codec, "versions": _store.versions()},
        metadata=_store.array_metadata(
            wanted.target.shape,
            wanted.dtype,
            layout.chunk,
            layout.unit,
            fill=wanted.options["fill"],
            codec=layout.codec,
        ),
        group=_group(output, array, wanted),
        memory=_memory_of(source, wanted, layout.unit),
    )
    return Filed(plan, identity(plan.facts()), folder)


def _memory_of(source: Source, wanted: Wanted, unit: Ints) -> int:
    return _memory.projected(
        wanted.source.grid,
        wanted.target.grid,
        unit,
        wanted.transform,
        wanted.options,
        (source.dtype, wanted.dtype),
        source.at_once,
    )


def _group(output: str, array: str, wanted: Wanted) -> str:
    placed = [(array, wanted.place.affine)]
    labels = wanted.options["interpolation"] == "label"
    return _store.group_metadata(_ome.attributes(Path(output).stem, placed, labels=labels))


def input_of(source: Source, folder: Path, raw: _raw.Layout) -> dict[str, Any]:
    """Return what a plan says about its input."""
    return {
        "path": relative(source.path, folder),
        "kind": source.kind,
        "digest": source.digest,
        "raw": raw.facts(),
    }


def _refuse_input(path: str, output: str) -> None:
    if not output.endswith(".zarr"):
        raise Misuse(f"{output}: OME-Zarr is written; name the output so that it ends in .zarr")
    read, written = Path(path).resolve(), Path(output).resolve()
    if read == written or written in read.parents or read in written.parents:
        raise Misuse(f"{output}: is an input, which is never overwritten; name another output")


def _refuse_unplaced(output: str, place: Grid) -> None:
    if not _ome.is_straight(place.affine):
        raise Refusal(
            f"{output}: OME-Zarr has a scale and a translation for each axis, and the result is "
            "oblique; resample it --like a volume whose axes run along x, y and z"
        )


def _refuse_unread(source: Source, wanted: Wanted) -> None:
    try:
        reading(source.dtype, **wanted.options)
    except (TypeError, ValueError) as error:
        raise Misuse(str(error)) from None


def _said(wanted: Wanted, folder: Path) -> dict[str, Any]:
    transform = wanted.transform
    if transform is None or isinstance(transform, Affine):
        return {"matrix": None if transform is None else transform.matrix.tolist(), "files": []}
    files = [{"path": relative(f, folder), "digest": digest_of_file(f)} for f in wanted.files]
    return {"matrix": None, "files": files}


def begun(filed: Filed, path: str, *, force: bool) -> None:
    """Write a plan, and the store of its result with metadata and no voxels."""
    store, records = filed.store, filed.records.parent
    _refuse_present([Path(path), store, records], force=force)
    for old in (store, records):
        if old.exists():
            shutil.rmtree(old)
    try:
        _store.put(store / _store.METADATA, filed.plan.group.encode())
        _store.put(filed.array / _store.METADATA, filed.plan.metadata.encode())
        filed.records.mkdir(parents=True)
        _store.put(Path(path), text_of(filed.plan).encode())
    except BaseException:
        for made in (store, records):
            shutil.rmtree(made, ignore_errors=True)
        Path(path).unlink(missing_ok=True)
        raise


def _refuse_present(paths: Sequence[Path], *, force: bool) -> None:
    for path in paths:
        if not path.parent.is_dir():
            raise Refusal(f"{path}: there is no folder {path.parent}; make it first")
        if path.exists() and not force:
            raise Refusal(f"{path}: is there already; --force replaces it")
        if (
            path.is_dir()
            and path.suffix != _store.RECORDS
            and not (path / _store.METADATA).exists()
        ):
            raise Refusal(f"{path}: is a folder, and no Zarr; name another one")
