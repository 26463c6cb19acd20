"""Memory: no task takes more than its plan has said, and no unit reads more than was looked for."""

import json
from pathlib import Path

import numpy as np
import pytest
from volux.scale import _memory
from volux.scale._plan import read
from volux.scale._support import support
from volux.scale._units import extents

from ..tool.runs import sitk, spawned, voxels
from .volumes import planned, save_ome, zarr

TURN = "0.8 -0.6 0 4.5\n0.6 0.8 0.1 -3\n0 0.05 1 1\n0 0 0 1\n"


def of_one_chunk():
    array = np.zeros((256, 512, 512), np.uint16)
    array[::3] = 1000
    return zarr.create_array("x.zarr", data=array, chunks=array.shape) and "x.zarr"


def of_shards():
    array = voxels((192, 192, 256), np.int32)
    made = zarr.create_array("x.zarr", data=array, chunks=(32,) * 3, shards=(192, 192, 256))
    return made and "x.zarr"


def of_foreign_order():
    np.save("x.npy", voxels((192, 256, 256), ">i2"))
    return "x.npy"


def of_noise():
    array = np.random.default_rng(1).random((96, 96, 96))
    return zarr.create_array("x.zarr", data=array, chunks=(32,) * 3) and "x.zarr"


def with_field():
    vectors = np.random.default_rng(5).normal(0, 2, (96, 96, 96, 3))
    vectors[40:] += 60.0
    field = sitk.GetImageFromArray(vectors, True)
    field.SetSpacing((3.0, 3.0, 3.0))
    sitk.WriteImage(field, "field.nrrd")
    return of_shards()


MAKERS = {
    "a source of one chunk": (of_one_chunk, "resize --shape 40,40,40", 40, 8),
    "a source of shards": (of_shards, "resize --scale 1.1", 128, 32),
    "another order of bytes": (of_foreign_order, "resize --scale 0.9", 128, 32),
    "a result much larger than what is read": (of_noise, "resize --scale 4", 256, 64),
    "a unit that sticks out": (of_noise, "resize --shape 96,5,5", 256, 64),
    "chunks that do not shrink": (of_noise, "resize --shape 192 --codec none", 192, 64),
    "as much read as made": (of_noise, "resize --shape 95 --codec none", 96, 32),
    "a field": (with_field, "resample --transform field.nrrd", 64, 32),
}


@pytest.mark.parametrize("name", MAKERS)
def test_no_task_takes_more_memory_than_was_projected(name):
    make, typed, unit, chunk = MAKERS[name]
    verb, *options = typed.split()
    plan = planned(*options, file=make(), verb=verb, unit=unit, chunk=chunk)
    tasks = read(plan).plan.units.tasks
    for task in {1, tasks // 2 + 1}:
        ran = spawned("run", plan, "--task", task, "--progress", "none")
        assert ran.returncode == 0, ran.stderr
    taken = [json.loads(p.read_text())["memory"] for p in Path("out.volux").rglob("[0-9]*.json")]
    assert 0 < max(taken) <= json.loads(Path(plan).read_text())["memory"]


@pytest.mark.parametrize("name", list(MAKERS)[3:7])
def test_a_task_takes_little_beside_what_it_reads_makes_and_encodes(name):
    make, typed, unit, chunk = MAKERS[name]
    verb, *options = typed.split()
    plan = planned(*options, file=make(), verb=verb, unit=unit, chunk=chunk)
    ran = spawned("run", plan, "--task", 1, "--progress", "none")
    assert ran.returncode == 0, ran.stderr
    filed = read(plan)
    record = json.loads(Path("out.volux/0/0/1.json").read_text())
    box = filed.plan.units.box(filed.plan.units.place(0))
    need = support(filed.plan.source.grid, filed.plan.target.grid, box, None, filed.plan.options)
    voxels_of = np.prod(extents(need)) + np.prod(extents(box))
    voxels_and_bytes = voxels_of * np.dtype(filed.plan.dtype).itemsize + record["size"]
    assert record["memory"] <= 1.15 * voxels_and_bytes + 150e6


def largest(plan):
    """The bytes that are read for the unit that reads most, by looking at all of them."""
    filed = read(plan)
    source, target = filed.plan.source.grid, filed.plan.target.grid
    boxes = map(filed.plan.units.box, np.ndindex(filed.plan.units.counts))
    options, transform = filed.plan.options, filed.transform()
    return max(np.prod(extents(support(source, target, b, transform, options))) for b in boxes)


@pytest.mark.parametrize("few", [0, 512])
@pytest.mark.parametrize("seed", range(4))
def test_no_unit_of_a_turned_or_bent_result_reads_more(monkeypatch, seed, few):
    monkeypatch.setattr(_memory, "_FEW", few)
    generator = np.random.default_rng(seed)
    matrix = np.eye(4)
    matrix[:3] += generator.normal(0, 0.4, (3, 4))
    matrix[:3, 3] *= 20
    np.savetxt("turn.txt", matrix)
    field = sitk.GetImageFromArray(generator.normal(0, 1 + seed, (6, 7, 8, 3)), True)
    field.SetSpacing((3.0, 4.0, 8.0))
    sitk.WriteImage(field, "field.nrrd")
    save_ome()
    for transforms in (["-t", "turn.txt"], ["-t", "turn.txt", "-t", "field.nrrd"]):
        plan = planned(*transforms, "--force", file="image.zarr", verb="resample", unit=8)
        filed = read(plan)
        found = filed.plan
        within = _memory._largest(
            found.source.grid, found.target.grid, found.units, filed.transform(), found.options
        )
        assert largest(plan) <= np.prod(within)
