"""What is read box by box: OME-Zarr, plain Zarr, NIfTI that is not compressed, and raw files."""

from __future__ import annotations

import json
from collections.abc import Sequence
from dataclasses import dataclass
from functools import cached_property
from hashlib import sha256
from pathlib import Path
from typing import Any, NamedTuple

import numpy as np

from volux import Grid
from volux._numbers import MOST_VOXELS
from volux._types import Array, Box, Matrix
from volux.scale import _ome, _raw
from volux.scale._needed import zarr
from volux.scale._reading import Chunks, Mapped, in_flight
from volux.tool._errors import Refusal, line_of

_SERVED = ("uint8", "int16", "uint16", "int32", "uint32", "float32", "float64")

# Directions that differ by less from an axis of the world are along it.
_LEVEL = 1e-7


class Axes(NamedTuple):
    """How the axes z, y and x of a volume lie in a file."""

    space: list[int]  # which axes of the file they are
    flipped: list[bool]


@dataclass(frozen=True)
class Source:
    """A volume that stays where it is.

    Parameters
    ----------
    path : str
        As the user wrote it.
    kind : str
        What the file is, such as "OME-Zarr 0.5".
    grid : Grid
        Where its voxels lie: axes "zyx", mm.
    array : array-like
        The voxels in the file.
    axes : Axes
        How those of the grid lie in the array.
    labels : bool
        Whether the numbers are names of regions.
    """

    path: str
    kind: str
    grid: Grid
    array: Any
    axes: Axes
    labels: bool
    digest: str

    @property
    def dtype(self) -> np.dtype[Any]:
        """The type of the voxels in this machine's byte order."""
        dtype: np.dtype[Any] = np.dtype(self.array.dtype)
        native: np.dtype[Any] = dtype.newbyteorder("=")
        return native

    def read(self, box: Box) -> Array:
        """Return the voxels of a box of the grid."""
        selection = [slice(0, 1)] * len(self.array.shape)
        for axis, along, flipped in zip(self.axes.space, box, self.axes.flipped, strict=True):
            extent = self.array.shape[axis]
            is_back = slice(extent - along.stop, extent - along.start)
            selection[axis] = is_back if flipped else along
        found = self._decoded(tuple(selection))
        found = found[
            tuple(slice(None) if axis in self.axes.space else 0 for axis in range(found.ndim))
        ]
        places = sorted(self.axes.space)
        found = found.transpose([places.index(axis) for axis in self.axes.space])
        turned = tuple(slice(None, None, -1 if back else 1) for back in self.axes.flipped)
        voxels: Array = found[turned]
        return voxels

    @property
    def is_bare(self) -> bool:
        """Whether the file does not say where its voxels lie."""
        return self.kind in ("raw", "NumPy", "Zarr 2", "Zarr 3")

    @property
    def at_once(self) -> int:
        """Bytes of chunks that are decoded whole, beside the voxels that are asked for."""
        return in_flight(self.array)

    @cached_property
    def _reader(self) -> Chunks | Mapped:
        return (Chunks if hasattr(self.array, "chunks") else Mapped)(self.array)

    def _decoded(self, selection: tuple[slice, ...]) -> Array:
        try:
            return self._reader.read(selection)
        except OSError:
            raise
        except Exception as error:  # whatever a codec says of bytes that are not its own
            raise Refusal(f"{self.path}: zarr cannot read it: {line_of(error)}") from None

    def in_order(self, values: Sequence[float]) -> tuple[float, float, float]:
        """Return numbers along the file's own axes as numbers along z, y and x."""
        places = sorted(self.axes.space)
        first, second, third = (values[places.index(axis)] for axis in self.axes.space)
        return first, second, third


def opened(path: str, layout: _raw.Layout = _raw.UNKNOWN) -> Source:
    """Return the volume of a file, whose voxels are not read yet."""
    where = Path(path)
    if not where.exists():
        raise Refusal(f"{path}: there is no such file")
    if where.is_dir():
        return _of_zarr(path, layout)
    if layout.dtype is not None:
        return _source(path, "raw", layout.mapped(path), layout.affine(), "")
    if path.lower().endswith(".npy"):
        return _source(path, "NumPy", _raw.numpys(path), _first_is_z(layout), "")
    return _of_nifti(path)


def _of_zarr(path: str, layout: _raw.Layout) -> Source:
    found = _open(path)
    if _is_group(found):
        levels = _ome.levels(dict(found.attrs), path)
        if not levels:
            raise Refusal(f"{path}: is a Zarr group without OME-Zarr metadata; name an array in it")
        return _of_ome(path, _open(f"{path}/{levels[0].path}"), dict(found.attrs), levels[0])
    inside = Path(path).resolve()
    group: Any = _open(str(inside.parent)) if _has_metadata(inside.parent) else None
    if _is_group(group):
        for level in _ome.levels(dict(group.attrs), path):
            if level.path == inside.name:
                return _of_ome(path, found, dict(group.attrs), level)
    return _source(
        path, f"Zarr {found.metadata.zarr_format}", found, _first_is_z(layout), _metadata(found)
    )


def _first_is_z(layout: _raw.Layout) -> Matrix:
    """Return where the voxels of an array lie whose axes are those of plain arrays."""
    return _ome.affine_of(layout.voxel, (0.0, 0.0, 0.0))


def _open(path: str) -> Any:
    package = zarr()
    try:
        return package.open(path, mode="r")
    except Exception as error:  # whatever zarr says of a folder that it cannot make sense of
        raise Refusal(f"{path}: zarr cannot open it: {line_of(error)}") from None


def _is_group(found: Any) -> bool:
    return isinstance(found, zarr().Group)


def _has_metadata(folder: Path) -> bool:
    return any((folder / name).exists() for name in ("zarr.json", ".zgroup"))


def _of_ome(path: str, array: Any, about: dict[str, Any], level: _ome.Level) -> Source:
    about = about.get("ome", about)
    space = [axis for axis, name in enumerate(level.axes) if name in ("x", "y", "z")]
    if len(space) != 3 or len(level.axes) != array.ndim:
        raise Refusal(f"{path}: has the axes {', '.join(level.axes)}; z, y and x are needed")
    affine = np.zeros((4, 4))
    affine[3, 3] = 1.0
    for column, axis in enumerate(space):
        row = "xyz".index(level.axes[axis])
        affine[row, column], affine[row, 3] = level.scale[axis], level.translation[axis]
    metadata = _metadata(array) + json.dumps(level)
    version = about.get("version", "0.4")
    return _source(
        path, f"OME-Zarr {version}", array, affine, metadata, space, labels="image-label" in about
    )


def _metadata(array: Any) -> str:
    return json.dumps(array.metadata.to_dict(), sort_keys=True, default=str)


def _of_nifti(path: str) -> Source:
    from volux.tool._files import NIBABELS, read, suffix_of

    if suffix_of(path) not in (".nii", ".hdr", ".img"):
        packed = suffix_of(path) in NIBABELS
        what = "is compressed: volux convert writes .nii" if packed else "is of another format"
        raise Refusal(f"{path}: {what}; plans read OME-Zarr, Zarr, .nii, .npy and raw files")
    scan = read(path)
    if scan.tail or scan.is_scaled:
        what = "has several volumes" if scan.tail else "has scaled voxels"
        raise Refusal(f"{path}: {what}; volux convert --dtype float32 writes what plans read")
    if not _is_mapped(scan.stored.array):
        raise Refusal(f"{path}: is not stored as this machine reads it; volux convert it")
    return _source(path, scan.kind, scan.stored.array, scan.stored.affine, "", labels=scan.labels)


def _is_mapped(array: Any) -> bool:
    while array is not None and not isinstance(array, np.memmap):
        array = getattr(array, "base", None)
    return array is not None


def _source(
    path: str,
    kind: str,
    array: Any,
    affine: Matrix,
    said: str,
    space: Sequence[int] | None = None,
    *,
    labels: bool = False,
) -> Source:
    """Return a volume whose affine takes indices along axes of space to the world."""
    space = range(array.ndim - 3, array.ndim) if space is None else space
    others = [n for axis, n in enumerate(array.shape) if axis not in space]
    is_no_volume = not all(1 <= n <= MOST_VOXELS for n in array.shape)
    if array.ndim < 3 or any(n != 1 for n in others) or is_no_volume:
        raise Refusal(f"{path}: has the extents {array.shape}; plans read one volume")
    if np.dtype(array.dtype).newbyteorder("=").name not in _SERVED:
        raise Refusal(f"{path}: its voxels are {array.dtype}; allowed are {', '.join(_SERVED)}")
    axes, grid = straightened([array.shape[axis] for axis in space], affine)
    axes = Axes([space[axis] for axis in axes.space], axes.flipped)
    about = [kind, said, str(array.dtype), list(array.shape), affine.tolist(), axes]
    if Path(path).is_file():
        about.append(Path(path).stat().st_size)
    digest = sha256(json.dumps(about).encode()).hexdigest()
    return Source(path, kind, grid, array, axes, labels, digest)


def straightened(shape: Sequence[int], affine: Matrix) -> tuple[Axes, Grid]:
    """Return how the axes z, y and x lie in an array, and its grid with these.

    Where the axes of the array run along those of the world, the grid's do so, and upwards. An
    oblique array has them in its own order, the last one first.
    """
    linear = np.where(abs(affine[:3, :3]) > _LEVEL * abs(affine[:3, :3]).max(0), affine[:3, :3], 0)
    along = [np.flatnonzero(column).tolist() for column in linear.T]
    if sorted(along) != [[0], [1], [2]]:
        order, flipped, linear = [2, 1, 0], [False] * 3, affine[:3, :3]
    else:
        order = [along.index([axis]) for axis in (2, 1, 0)]
        flipped = [bool(linear[:, axis].sum() < 0) for axis in order]
    extents = [shape[axis] for axis in order]
    turned = np.eye(4)
    turned[:3, 3] = affine[:3, 3]
    for column, (axis, back) in enumerate(zip(order, flipped, strict=True)):
        turned[:3, column] = -linear[:, axis] if back else linear[:, axis]
        turned[:3, 3] += linear[:, axis] * (extents[column] - 1) * back
    return Axes(order, flipped), Grid(extents, turned + 0.0, axes="zyx")
