"""Files that nibabel reads and writes: NIfTI, MGH and Analyze."""

from __future__ import annotations

import gzip
import logging
import sys
import warnings
from collections.abc import Iterator
from contextlib import contextmanager
from io import BytesIO
from pathlib import Path
from typing import Any

import numpy as np

from volux import Grid
from volux._types import Array, Matrix
from volux.tool._errors import Refusal, line_of, needed
from volux.tool._files import (
    STREAM,
    Scan,
    image_of,
    in_file_type,
    is_segmentation,
    placed_grid,
    suffix_of,
)

INTENT_OF_LABELS = 1002
_SHORT_EXTENT = 32767
_GZIP = b"\x1f\x8b"

# A sform and a qform that differ by less, in mm, are the same but for rounding.
_SAME = 1e-3

_KINDS = {
    "Nifti1Image": "NIfTI-1",
    "Nifti1Pair": "NIfTI-1 pair",
    "Nifti2Image": "NIfTI-2",
    "Nifti2Pair": "NIfTI-2 pair",
    "MGHImage": "MGH",
}
_ANALYZE = "Analyze"


def read(path: str) -> Scan:
    """Read a file by nibabel."""
    nibabel = needed("nibabel")
    try:
        with _overheard(nibabel) as said:
            scan = _scan(path, _loaded(path))
        return scan.made(scan.stored, notes=(*said, *scan.notes))
    except (Refusal, MemoryError):
        raise
    except Exception as error:  # of gzip, of zlib, of nibabel: whatever a broken file leads to
        raise Refusal(
            f"{path}: nibabel cannot read it: {line_of(error)}; copy or convert it again"
        ) from None


def grid_of(path: str) -> Grid:
    """Return where the voxels of a file lie."""
    try:
        with _overheard(needed("nibabel")):  # what it says of voxels, which nobody reads here
            found = _loaded(path)
    except Exception as error:  # as above
        raise Refusal(f"{path}: nibabel cannot read it: {line_of(error)}") from None
    return placed_grid(path, found.shape, found.affine)


def _loaded(path: str) -> Any:
    """Load a file, but not as Analyze because nibabel could not read what says that it is NIfTI."""
    nibabel = needed("nibabel")
    found = nibabel.load(path)
    if _kind(found) == _ANALYZE:
        for pair in (nibabel.Nifti1Pair, nibabel.Nifti2Pair):
            is_nifti, header = pair.path_maybe_image(path)
            if is_nifti or header is None:
                raise OSError("its header could not be read at once")
    return found


def read_stream() -> Scan:
    """Read NIfTI from stdin, compressed or not."""
    nibabel = needed("nibabel")
    data = sys.stdin.buffer.read()
    try:
        plain = gzip.decompress(data) if data.startswith(_GZIP) else data
        kind = nibabel.Nifti2Image if plain[:4] in _SIZES_OF_2 else nibabel.Nifti1Image
        return _scan(STREAM, kind.from_stream(BytesIO(plain)))
    except (Refusal, MemoryError):
        raise
    except Exception as error:  # as above
        raise Refusal(f"stdin: is no NIfTI that nibabel can read: {line_of(error)}") from None


_SIZES_OF_2 = (b"\x1c\x02\x00\x00", b"\x00\x00\x02\x1c")


@contextmanager
def _overheard(nibabel: Any) -> Iterator[list[str]]:
    """Collect what nibabel says about a file, in warnings and by its logger."""
    said: list[str] = []
    handler = logging.Handler()
    handler.emit = lambda record: said.append(record.getMessage())  # type: ignore[method-assign]
    logger = nibabel.imageglobals.logger
    before, logger.handlers = logger.handlers, [handler]
    try:
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            yield said
        said += [str(warning.message) for warning in caught]
    finally:
        logger.handlers = before


def _scan(path: str, found: Any) -> Scan:
    image, tail = image_of(path, _numbers(path, found), found.affine)
    slope, inter = _scaling(found)
    return Scan(
        path=path,
        stored=image,
        file_type=found.get_data_dtype().newbyteorder("="),
        kind=_kind(found),
        labels=_says_labels(found) or is_segmentation(path),
        slope=slope,
        inter=inter,
        tail=tail,
        header=found.header,
        notes=_notes(found),
    )


def _kind(found: Any) -> str:
    return _KINDS.get(type(found).__name__, _ANALYZE)


def _numbers(path: str, found: Any) -> Array:
    proxy = found.dataobj
    numbers = proxy.get_unscaled() if hasattr(proxy, "get_unscaled") else np.asanyarray(proxy)
    if numbers.dtype.kind not in "iuf":
        raise Refusal(f"{path}: its voxels are {numbers.dtype}; allowed are real numbers")
    return np.asarray(numbers)


def _scaling(found: Any) -> tuple[float, float]:
    proxy = found.dataobj
    if not hasattr(proxy, "slope"):
        return 1.0, 0.0
    return float(proxy.slope), float(proxy.inter)


def _says_labels(found: Any) -> bool:
    header = found.header
    return _is_nifti(header) and int(header["intent_code"]) == INTENT_OF_LABELS


def _is_nifti(header: Any) -> bool:
    return header is not None and hasattr(header, "get_sform")


def _notes(found: Any) -> tuple[str, ...]:
    header = found.header
    if not _is_nifti(header):
        return ()
    sform, qform = header.get_sform(coded=True)[0], header.get_qform(coded=True)[0]
    if sform is None and qform is None:
        return ("has neither sform nor qform: its place in the world is a guess of nibabel's",)
    if sform is None or qform is None:
        return ()
    corner = np.array([*(n - 1 for n in (*found.shape, 1, 1)[:3]), 1])
    apart = float(np.linalg.norm((sform - qform) @ corner))
    if apart <= _SAME:
        return ()
    return (f"sform and qform differ by {apart:.3g} mm at the far corner; the sform is taken",)


def write(scan: Scan, path: Path) -> None:
    """Write MGH, or NIfTI in two files, by nibabel."""
    suffix = suffix_of(path.name)
    is_mgh = suffix in (".mgh", ".mgz")
    image = _mgh(scan) if is_mgh else image_with(in_file_type(scan), scan, suffix)
    needed("nibabel").save(image, path)


def image_with(array: Array, scan: Scan, suffix: str) -> Any:
    """Return nibabel's image of these numbers, with all that the header of a scan says."""
    kind = _class_for(scan, suffix)
    with _overheard(needed("nibabel")):  # that NIfTI-1 has become NIfTI-2
        made = kind(array, scan.stored.affine, _header(scan), dtype=array.dtype)
    header = made.header
    if scan.is_scaled:
        header.set_slope_inter(scan.slope, scan.inter)
    if scan.labels and int(header["intent_code"]) == 0:
        header.set_intent(INTENT_OF_LABELS)
    _place(made, scan)
    return made


def _class_for(scan: Scan, suffix: str) -> Any:
    nibabel = needed("nibabel")
    is_large = max(*scan.stored.shape, *scan.tail, 1) > _SHORT_EXTENT
    is_second = is_large or scan.kind.startswith("NIfTI-2")
    if suffix in (".nii", ".nii.gz"):
        return nibabel.Nifti2Image if is_second else nibabel.Nifti1Image
    return nibabel.Nifti2Pair if is_second else nibabel.Nifti1Pair


def _header(scan: Scan) -> Any:
    if not _is_nifti(scan.header):
        return None
    header = scan.header.copy()
    was = header.get_data_shape()
    if header.__class__.__name__.startswith("Nifti1") and was[:3] != scan.stored.shape:
        # Which slices were measured when counts in slices that there are no more.
        for name in ("slice_start", "slice_end", "slice_code", "slice_duration"):
            header[name] = 0
    return header


def _place(made: Any, scan: Scan) -> None:
    """Say where the voxels lie, in both forms where the second one can."""
    affine = scan.stored.affine
    header = scan.header if _is_nifti(scan.header) else None
    if header is not None and np.array_equal(header.get_best_affine(), affine):
        return  # nibabel keeps both forms as they were
    sform, qform = (0, 0) if header is None else _codes(header)
    code = sform or qform or 1
    made.set_sform(affine, code)
    made.set_qform(affine if _is_right_angled(affine) else None, code=_code_of_q(affine, code))
    if header is None:
        made.header.set_xyzt_units("mm", "sec")


def _codes(header: Any) -> tuple[int, int]:
    return int(header["sform_code"]), int(header["qform_code"])


def _code_of_q(affine: Matrix, code: int) -> int:
    return code if _is_right_angled(affine) else 0


def _is_right_angled(affine: Matrix) -> bool:
    columns = affine[:3, :3] / np.linalg.norm(affine[:3, :3], axis=0)
    return bool(np.allclose(columns.T @ columns, np.eye(3), atol=1e-6))


def _mgh(scan: Scan) -> Any:
    nibabel = needed("nibabel")
    array = in_file_type(scan.decoded(np.float32) if scan.is_scaled else scan)
    try:
        return nibabel.MGHImage(array, scan.stored.affine)
    except Exception as error:  # its types are few, and nibabel says which
        raise Refusal(
            f"{scan.path}: MGH cannot hold it ({line_of(error)}): --dtype float32"
        ) from None
