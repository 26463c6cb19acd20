"""Types that are asked for: how the numbers of one become those of another."""

import json
from fractions import Fraction
from math import floor, isinf, isnan
from pathlib import Path

import numpy as np
import pytest

from .runs import done, left, nibabel, oblique, save, voxels

WHOLE = ("uint8", "int8", "uint16", "int16", "uint32", "int32")
TYPES = (*WHOLE, "float32", "float64")


def ends(dtype):
    limits = np.iinfo(dtype)
    return limits.min, limits.max


def rule(value, dtype, overflow):
    """What an integer type stores for a number: half away from zero, then the end or the bits."""
    low, high = ends(dtype)
    if isnan(value) or (isinf(value) and overflow == "wrap"):
        return 0
    if isinf(value):
        return high if value > 0 else low
    whole = floor(abs(Fraction(value)) + Fraction(1, 2)) * (-1 if value < 0 else 1)
    if overflow == "saturate":
        return min(max(whole, low), high)
    return (whole - low) % (high - low + 1) + low


def telling(dtype):
    """Numbers of a type around the ends of all types, and halves."""
    edges = {end for other in WHOLE for end in ends(other)} | {0, 1, 2, 3, 2**33 + 5, -(2**33) - 5}
    near = {edge + step for edge in edges for step in (-1, -0.5, 0, 0.5, 1)}
    if dtype in WHOLE:
        low, high = ends(dtype)
        return np.array(sorted(n for n in near if n == int(n) and low <= n <= high), dtype)
    below = np.nextafter(np.array([0.5, 1.5, -0.5], dtype), 0)
    far = np.finfo(dtype).max
    return np.array([*sorted(near), *below, np.nan, np.inf, -np.inf, far, -far]).astype(dtype)


def stored(name):
    return np.asanyarray(nibabel.load(name).dataobj)


@pytest.mark.parametrize("overflow", ["saturate", "wrap"])
@pytest.mark.parametrize("dtype", WHOLE)
def test_an_integer_type_stores_what_the_rule_says_of_numbers_of_every_type(dtype, overflow):
    for source in TYPES:
        numbers = telling(source)
        image = nibabel.Nifti1Image(numbers.reshape(-1, 1, 1), np.eye(4), dtype=source)
        nibabel.save(image, "a.nii")
        done("convert", "a.nii", "-o", "x.nii", "-f", "--dtype", dtype, "--overflow", overflow)
        found = stored("x.nii")
        assert found.dtype == np.dtype(dtype)
        wanted = [rule(number, dtype, overflow) for number in numbers.tolist()]
        assert found.ravel().tolist() == wanted, source


@pytest.mark.parametrize("dtype", ["float32", "float64"])
def test_a_type_of_fractions_stores_the_nearest_number(dtype):
    for source in TYPES:
        numbers = telling(source).reshape(-1, 1, 1)
        nibabel.save(nibabel.Nifti1Image(numbers, np.eye(4), dtype=source), "a.nii")
        done("convert", "a.nii", "-o", "x.nii", "-f", "--dtype", dtype)
        with np.errstate(over="ignore"):
            wanted = numbers.astype(dtype)
        np.testing.assert_array_equal(stored("x.nii"), wanted, source)


@pytest.mark.parametrize("overflow", ["saturate", "wrap"])
def test_what_int8_cannot_hold_is_treated_likewise_and_counts_in_the_digest(overflow):
    array = np.where(np.indices((9, 8, 7)).sum(axis=0) % 3, 127, -128).astype(np.int8)
    nibabel.save(nibabel.Nifti1Image(array, np.eye(4)), "a.nii")
    typed = ("resize", "a.nii", "--scale", 1.7, "--interp", "cubic")
    done(*typed, "-o", "x.nii", "--overflow", overflow)
    done(*typed, "-o", "readings.nii", "--dtype", "float64")
    readings, found = stored("readings.nii"), stored("x.nii")
    assert found.dtype == np.int8
    assert (abs(readings) > 130).any()
    wanted = [rule(reading, "int8", overflow) for reading in readings.ravel().tolist()]
    assert found.ravel().tolist() == wanted
    said = json.loads(Path("x.json").read_text())["OutputDigest"]
    assert done("digest", "x.nii").split()[0] == said


@pytest.mark.parametrize("suffix", [".nii", ".nii.gz"])
@pytest.mark.parametrize("shape", [(7, 6, 5), (7, 6, 5, 3), (7, 6, 5, 1, 2), (7, 1, 1)])
def test_nibabel_writes_the_same_bytes_of_what_it_reads(shape, suffix):
    save("a.nii", voxels(shape), oblique())
    done("crop", "a.nii", "-o", f"x{suffix}", "--box", "1:-1,:,:", "--no-sidecar")
    nibabel.save(nibabel.load(f"x{suffix}"), f"y{suffix}")
    assert Path(f"x{suffix}").read_bytes() == Path(f"y{suffix}").read_bytes()
    assert left() == ["a.nii", f"x{suffix}", f"y{suffix}"]
