"""Volumes in dask: resampled chunk by chunk, with the bits of the whole."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass
from functools import lru_cache
from importlib import import_module
from itertools import product
from typing import TYPE_CHECKING, Any

import numpy as np

import volux
from volux import Grid, Image
from volux._arrays import refuse_type, result_dtype
from volux._displacement import Transform
from volux._grid import placed
from volux._keywords import FILLING, takes
from volux._reading import reading
from volux._types import Array, Box, Ints
from volux._words import short
from volux.scale._support import support
from volux.scale._units import Units, extents

if TYPE_CHECKING:
    from volux.scale._tasks import Worker

_OPTIONS = {n: v for n, v in FILLING.items() if n not in ("out", "threads", "progress")}


@dataclass(frozen=True)
class _Job:
    """What all chunks of a result share."""

    source: Grid
    target: Grid
    units: Units
    transform: Transform | None
    options: dict[str, Any]
    dtype: np.dtype[Any]
    chunks: Any  # of the image

    def need(self, place: Ints) -> Box:
        return support(
            self.source, self.target, self.units.box(place), self.transform, self.options
        )

    def made(self, place: Ints, need: Box, voxels: Array) -> Array:
        box = self.units.box(place)
        out = np.empty(extents(box), self.dtype)
        volux.resample(
            Image.brick(np.ascontiguousarray(voxels), self.source[need]),
            self.target[box],
            transform=self.transform,
            out=out,
            threads=_threads(),
            **self.options,
        )
        return out


@takes(**_OPTIONS)
def resample(
    image: Any,
    grid: Grid | None = None,
    *,
    place: Grid | None = None,
    chunks: int | Sequence[int] = 64,
    transform: Transform | None = None,
    dtype: Any = None,
    **options: Any,
) -> Any:
    """Bring a volume that is in chunks onto a grid.

    Parameters
    ----------
    image : zarr.Array or dask.array.Array
        Three axes, z first. When a chunk is computed, what it needs is read.
    grid, place : Grid, optional
        Where the voxels of the result and those of the image lie in the world. Without `place` it
        is the index space of the array, and without `grid` both lie in the same place.
    chunks : int or three ints
        Voxels of a chunk of the result along each axis.
    transform, dtype, interpolation, border, fill, outside, antialias, overflow
        As of `volux.resample`.

    Returns
    -------
    dask.array.Array
        Chunks with the bits of the whole. A task makes one in one thread, or in all of them where
        a worker runs one task at a time.
    $raises

    Examples
    --------
    >>> import dask.array, numpy, volux.dask
    >>> image = dask.array.from_array(numpy.arange(8.0).reshape(2, 2, 2), chunks=1)
    >>> fine = volux.Grid((4, 4, 4), numpy.diag([0.5, 0.5, 0.5, 1]))
    >>> volux.dask.resample(image, fine, chunks=2, outside="extend").compute()[3, 3]
    array([6. , 6.5, 7. , 7. ])
    """
    return _graph(image, _job(image, grid, place, _chunk(chunks), transform, dtype, options))


def _job(
    image: Any,
    grid: Grid | None,
    place: Grid | None,
    chunk: Ints,
    transform: Transform | None,
    dtype: Any,
    options: dict[str, Any],
) -> _Job:
    own = placed(place) if place is not None else Grid(_checked(image), np.eye(4), axes="zyx")
    if own.shape != _checked(image):
        raise ValueError(f"place has the shape {own.shape}, and image {image.shape}")
    target = own if grid is None else grid
    if not isinstance(target, Grid):
        raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid")
    source = np.dtype(image.dtype)
    refuse_type(source, "image")
    reading(source, **options)
    wanted = result_dtype(dtype, source, None)
    units = Units(target.shape, chunk)
    own, target = own._named("zyx"), target._named("zyx")
    return _Job(own, target, units, transform, options, wanted, image.chunks)


def _checked(image: Any) -> Ints:
    if not (hasattr(image, "shape") and hasattr(image, "chunks") and hasattr(image, "dtype")):
        raise TypeError(f"image is a {type(image).__name__}; allowed are arrays of zarr and dask")
    if len(image.shape) != 3:
        raise ValueError(f"image has the shape {image.shape}; it must have three axes, z first")
    first, second, third = image.shape
    return int(first), int(second), int(third)


def _chunk(chunks: int | Sequence[int]) -> Ints:
    first, second, third = [chunks] * 3 if isinstance(chunks, int) else chunks
    if min(first, second, third) < 1:
        raise ValueError(f"chunks={short(chunks)} must be 1 or more")
    return first, second, third


def _graph(image: Any, job: _Job) -> Any:
    """Return an array whose graph has a node for each chunk, and one for what they share."""
    import dask.array
    from dask.base import tokenize
    from dask.highlevelgraph import HighLevelGraph

    name = f"volux-{tokenize(image, *vars(job).values())}"
    shared = f"{name}-job"
    layer: dict[Any, Any] = {shared: job}
    is_dask = isinstance(image, dask.array.Array)
    if not is_dask:
        layer[f"{name}-image"] = image
    a, b, c = map(range, job.units.counts)
    for place in product(a, b, c):
        how = (_made_of_blocks, shared) if is_dask else (_made, shared)
        read = _blocks(image, job.need(place)) if is_dask else f"{name}-image"
        i, j, k = place
        layer[name, i, j, k] = (*how, i, j, k, read)
    sources: list[Any] = [image] if is_dask else []
    graph = HighLevelGraph.from_collections(name, layer, sources)
    chunks = tuple(
        tuple(min(by, n - first) for first in range(0, n, by))
        for n, by in zip(job.units.shape, job.units.unit, strict=True)
    )
    array: Any = dask.array.Array
    return array(graph, name, chunks, dtype=job.dtype)


def _made(job: _Job, a: int, b: int, c: int, image: Any) -> Array:
    need = job.need((a, b, c))
    return job.made((a, b, c), need, np.asarray(image[need]))


def _spans(chunks: Any, need: Box) -> list[tuple[range, int]]:
    """Return which chunks along each axis a box meets, and where the first of them begins."""
    found = []
    for sizes, along in zip(chunks, need, strict=True):
        ends = np.cumsum(sizes)
        first = int(np.searchsorted(ends, along.start, "right"))
        last = int(np.searchsorted(ends, along.stop, "left"))
        found.append((range(first, last + 1), int(ends[first] - sizes[first])))
    return found


def _blocks(image: Any, need: Box) -> list[Any]:
    a, b, c = (span for span, _ in _spans(image.chunks, need))
    return [[[(image.name, i, j, k) for k in c] for j in b] for i in a]


def _made_of_blocks(job: _Job, a: int, b: int, c: int, blocks: Any) -> Array:
    need = job.need((a, b, c))
    starts = [start for _, start in _spans(job.chunks, need)]
    inside = tuple(slice(s.start - n, s.stop - n) for s, n in zip(need, starts, strict=True))
    return job.made((a, b, c), need, np.block(blocks)[inside])


def _threads() -> int | None:
    """One thread, unless the worker of dask runs one task at a time."""
    try:
        worker = import_module("distributed").get_worker()
    except (ImportError, ValueError):
        return 1
    return None if worker.state.nthreads == 1 else 1


def undone(plan: str) -> list[int]:
    """Return the tasks of a plan that have not been done.

    Parameters
    ----------
    plan : str
        The file that ``volux plan`` wrote.

    Returns
    -------
    list of int
        Numbers for `make`; the first task is 1.
    """
    from volux.scale import _plan, _running

    filed = _plan.read(plan)
    return list(_running.undone(filed, range(1, filed.plan.units.tasks + 1)))


def make(plan: str, task: int) -> int:
    """Make a unit of a plan, as ``volux run --task`` does; for ``client.map``.

    Parameters
    ----------
    plan : str
        The file that ``volux plan`` wrote, where the worker sees it.
    task : int
        Which unit.

    Returns
    -------
    int
        The bytes that were stored.
    """
    from volux.scale import _plan, _running

    worker = _worker(plan, _plan.digest_of_file(plan), _threads())
    _running.complete_path(worker.filed).unlink(missing_ok=True)
    return worker.make(task).size


@lru_cache(maxsize=4)
def _worker(plan: str, _digest: str, threads: int | None) -> Worker:
    """Return what makes units of a plan; a file that is written anew is another plan."""
    from volux.scale import _plan, _tasks

    return _tasks.Worker(_plan.read(plan), threads)
