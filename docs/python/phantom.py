"""A scan to try things on: a trunk with lungs, bones and a vessel, made of sums and products."""

from __future__ import annotations

import struct
import zlib
from pathlib import Path

import nibabel
import numpy as np
import numpy.typing as npt

SHAPE = (96, 80, 32)  # voxels along x, y and z
SPACING = np.array([1.0, 1.0, 3.0])  # mm
AFFINE = np.array(
    [
        [-1.0, 0.0, 0.0, 47.5],  # the first column lies on the patient's right: RAS, so x falls
        [0.0, -1.0, 0.0, 39.5],
        [0.0, 0.0, 3.0, -46.5],
        [0.0, 0.0, 0.0, 1.0],
    ]
)
AIR, FAT, TISSUE, LUNG, VESSEL, BONE = -1000, -90, 40, -820, 300, 700


def vessel(count: int = 40) -> npt.NDArray[np.float64]:
    """Return points on the middle of the vessel, (count, 3): x, y and z in mm, RAS+."""
    t = np.linspace(-1.0, 1.0, count)
    return np.stack([22.0 * t, 4.0 + 14.0 * t * t - 8.0 * t, 38.0 * t], axis=1)


def scan() -> nibabel.Nifti1Image:
    """Return the scan, in Hounsfield units, as a file would give it."""
    parts = _parts()
    values = np.full(SHAPE, AIR, np.int16)
    for part, value in zip(parts, (FAT, TISSUE, LUNG, BONE, VESSEL), strict=True):
        values[part] = value
    noise = np.random.default_rng(7).integers(-25, 26, SHAPE, np.int16)
    return nibabel.Nifti1Image(values + noise, AFFINE)


def segments() -> nibabel.Nifti1Image:
    """Return labels on the voxels of the scan: 1 lung, 2 bone, 3 vessel, 0 all else."""
    _, _, lung, bone, tube = _parts()
    labels = np.zeros(SHAPE, np.uint8)
    labels[lung], labels[bone], labels[tube] = 1, 2, 3
    return nibabel.Nifti1Image(labels, AFFINE)


def field() -> npt.NDArray[np.float64]:
    """Return displacements on a coarse grid, (12, 20, 24, 3), as a registration might: x, y, z."""
    z, y, x = np.meshgrid(*(np.linspace(-1.0, 1.0, n) for n in (12, 20, 24)), indexing="ij")
    calm = (1.0 - x * x) * (1.0 - y * y) * (1.0 - z * z)  # nothing moves at the rim
    return np.stack([6.0 * calm * y, -8.0 * calm * x, 5.0 * calm * (x + y)], axis=-1)


def picture(path: str, grey: npt.ArrayLike, low: float = -1000, high: float = 800) -> None:
    """Write numbers, (rows, columns), as a PNG of grey values, black at low and white at high."""
    shares = (np.asarray(grey, np.float64) - low) / (high - low)
    pixels = np.floor(np.clip(shares, 0.0, 1.0) * 255.0 + 0.5).astype(np.uint8)
    rows, columns = pixels.shape
    lines = np.concatenate([np.zeros((rows, 1), np.uint8), pixels], axis=1).tobytes()
    header = struct.pack(">IIBBBBB", columns, rows, 8, 0, 0, 0, 0)
    chunks = [(b"IHDR", header), (b"IDAT", zlib.compress(lines, 9)), (b"IEND", b"")]
    Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(_chunk(*chunk) for chunk in chunks))


def _chunk(kind: bytes, data: bytes) -> bytes:
    checked = kind + data
    return struct.pack(">I", len(data)) + checked + struct.pack(">I", zlib.crc32(checked))


def _parts() -> list[npt.NDArray[np.bool_]]:
    """Which voxels are skin and fat, tissue, lung, bone and vessel; later ones lie over earlier."""
    i, j, k = np.meshgrid(*(np.arange(n) for n in SHAPE), indexing="ij")
    x, y, z = (47.5 - i), (39.5 - j), (3.0 * k - 46.5)

    def ball(
        centre: tuple[float, float, float], radii: tuple[float, float, float]
    ) -> npt.NDArray[np.float64]:
        square = np.zeros(SHAPE)
        for place, middle, radius in zip((x, y, z), centre, radii, strict=True):
            square += ((place - middle) / radius) ** 2
        return square

    trunk = ((x / 44.0) ** 2 + (y / 36.0) ** 2, (x / 40.0) ** 2 + (y / 32.0) ** 2)
    lungs = (ball((-20, 0, 4), (13, 20, 36)) < 1) | (ball((20, 0, 8), (12, 19, 32)) < 1)
    spine = (x / 7.0) ** 2 + ((y + 24.0) / 6.0) ** 2 < 1
    discs = np.abs(z - 18.0 * np.floor(z / 18.0 + 0.5)) < 3.0
    ribs = (np.abs(trunk[1] - 0.92) < 0.07) & (np.abs(z - 15.0 * np.floor(z / 15.0 + 0.5)) < 3.0)
    near = np.full(SHAPE, np.inf)
    for cx, cy, cz in vessel(160):
        np.minimum(near, (x - cx) ** 2 + (y - cy) ** 2 + (z - cz) ** 2, out=near)
    return [trunk[0] < 1, trunk[1] < 1, lungs, (spine & ~discs) | ribs, near < 16.0]
