"""Whole volumes and single points through Python, volux beside other packages, driven as the C++
programs of the bench are. Times are by the wall clock."""
import dataclasses
import importlib.util
import sys
import time
from pathlib import Path

import nibabel
import nibabel.processing
import numpy
import SimpleITK
import volux
from scipy import ndimage

sys.path.insert(0, str(Path(__file__).parents[1] / "bulk"))
import bulk_scipy  # noqa: E402  (the path comes first): the voxels, the maps and the comparison
import driven  # noqa: E402  (whose folder bulk_scipy has added)

if importlib.util.find_spec("torch"):
    import torch
else:
    torch = None

BORDERS = {"A": "constant", "B": "edge"}
KERNELS = ("nearest", "linear", "cubic")
POINT = (100.25, 120.75, 90.125)
# ITK truncates a short; torch computes positions in float, off by some millionths of a voxel.
OWN_TOLERANCES = {"SimpleITK": {"short": 0.5}, "grid_sample": {"float": 0.01},
                  "interpolate": {"float": 0.01}}


@dataclasses.dataclass(frozen=True)
class Case:
    """A row, taken apart."""

    workload: str
    kind: str
    kernel: str
    threads: int

    @property
    def cube(self):
        return bulk_scipy.source(bulk_scipy.TARGETS.get(self.workload, (256,))[0], self.kind, 0)

    @property
    def target(self):
        """Matrix, offset and shape, in numpy's order of axes."""
        matrix, offset, shape = bulk_scipy.TARGETS[self.workload][1]
        return numpy.diag(matrix) if matrix.ndim == 1 else matrix, offset, shape

    @property
    def order(self):
        return bulk_scipy.ORDERS[self.kernel]


def affine_of(matrix, offset):
    affine = numpy.eye(4)
    affine[:3, :3], affine[:3, 3] = matrix, offset
    return affine


def by_volux(case, out=None):
    matrix, offset, shape = case.target
    cube, grid = case.cube, volux.Grid(shape, affine_of(matrix, offset))
    return lambda: volux.resample(
        cube, grid, interpolation=case.kernel, border=BORDERS[case.workload],
        fill=bulk_scipy.OUTSIDE, outside="extend", antialias=None, threads=case.threads, out=out)


def by_volux_into_out(case):
    return by_volux(case, numpy.empty(case.target[2], case.cube.dtype))


def by_scipy(case):
    extent, target = bulk_scipy.TARGETS[case.workload]
    cube = bulk_scipy.source(extent, case.kind, case.order)
    mode = {"constant": "constant", "edge": "nearest"}[BORDERS[case.workload]]
    return lambda: bulk_scipy.carry_out(target, cube, case.kind, case.order, mode)


def by_nibabel(case):
    matrix, offset, shape = case.target
    image = nibabel.Nifti1Image(case.cube.T, numpy.eye(4))
    place = shape[::-1], affine_of(matrix[::-1, ::-1], offset[::-1])
    mode = {"constant": "constant", "edge": "nearest"}[BORDERS[case.workload]]
    return lambda: numpy.asanyarray(nibabel.processing.resample_from_to(
        image, place, order=case.order, mode=mode, cval=bulk_scipy.OUTSIDE).dataobj).T


def by_simpleitk(case):
    matrix, offset, shape = case.target
    image = SimpleITK.GetImageFromArray(case.cube)
    transform = SimpleITK.AffineTransform(matrix[::-1, ::-1].ravel().tolist(),
                                          offset[::-1].tolist())
    kernel = {"nearest": SimpleITK.sitkNearestNeighbor, "linear": SimpleITK.sitkLinear}[case.kernel]
    resampler = SimpleITK.ResampleImageFilter()
    resampler.SetSize([int(extent) for extent in shape[::-1]])
    resampler.SetTransform(transform)
    resampler.SetInterpolator(kernel)
    resampler.SetDefaultPixelValue(bulk_scipy.OUTSIDE)
    resampler.SetNumberOfThreads(case.threads)
    return lambda: resampler.Execute(image)


def by_grid_sample(case):
    """Takes torch, whose positions run from -1 to 1 in x, y, z, and come from a matrix."""
    torch.set_num_threads(case.threads)
    cube, (matrix, offset, shape) = torch.from_numpy(case.cube)[None, None], case.target
    halves = [(numpy.array(extents[::-1]) - 1) / 2 for extents in (case.cube.shape, shape)]
    here = affine_of(numpy.diag(1 / halves[0]), [-1] * 3)
    there = affine_of(numpy.diag(halves[1]), halves[1])
    whole = here @ affine_of(matrix[::-1, ::-1], offset[::-1]) @ there
    theta = torch.from_numpy(whole[None, :3].astype(numpy.float32))
    mode = {"nearest": "nearest", "linear": "bilinear"}[case.kernel]

    def call():
        grid = torch.nn.functional.affine_grid(theta, (1, 1, *shape), align_corners=True)
        return torch.nn.functional.grid_sample(cube, grid, mode, "zeros", align_corners=True)
    return lambda: call()[0, 0].numpy()


def by_interpolate(case):
    """Takes torch, which brings whole volumes alone: the slices that B reads are one."""
    torch.set_num_threads(case.threads)
    cube = torch.from_numpy(case.cube[16:48].copy())[None, None]
    shape = tuple(case.target[2])
    how = ({"mode": "trilinear", "align_corners": False} if case.kernel == "linear"
           else {"mode": "nearest-exact"})
    return lambda: torch.nn.functional.interpolate(cube, shape, **how)[0, 0].numpy()


def point_by_volux(case):
    cube = case.cube
    return lambda: volux.sample(cube, POINT, threads=case.threads)


def point_by_scipy(case):
    cube, place = case.cube, [[coordinate] for coordinate in POINT]
    return lambda: ndimage.map_coordinates(cube, place, output=numpy.float64, order=1,
                                           mode="nearest")


def point_by_simpleitk(case):
    image = SimpleITK.GetImageFromArray(case.cube)
    return lambda: image.EvaluateAtContinuousIndex(POINT[::-1], SimpleITK.sitkLinear)


VOLUMES = {"volux": by_volux, "volux into out": by_volux_into_out, "scipy": by_scipy,
           "nibabel": by_nibabel, "SimpleITK": by_simpleitk, "grid_sample": by_grid_sample,
           "interpolate": by_interpolate}
POINTS = {"volux": point_by_volux, "scipy": point_by_scipy, "SimpleITK": point_by_simpleitk}
ALONE = ("scipy", "nibabel")  # on one thread


def serves(competitor, case):
    """Whether a package does the same work. Its cubic kernel is another one, but scipy's is shown;
    torch takes no `short`, and its constant is zero: where it differs, nothing is compared."""
    if competitor in ALONE and case.threads > 1:
        return False
    if competitor in ("grid_sample", "interpolate"):
        workload = "A" if competitor == "grid_sample" else "B"
        return (torch is not None and case.workload == workload and case.kind == "float"
                and case.kernel != "cubic")
    return case.kernel != "cubic" or competitor in ("volux", "volux into out", "scipy")


def cases():
    """Each case's name, with the package that carries it out and its row."""
    rows = [Case(*words) for words in ((workload, kind, kernel, threads) for workload in BORDERS
            for kind in ("short", "float") for kernel in KERNELS for threads in (1, 2))]
    for case in rows:
        for competitor, make in VOLUMES.items():
            if serves(competitor, case):
                yield competitor, make, case
    for kind in ("short", "float"):
        for competitor, make in POINTS.items():
            yield competitor, make, Case("point", kind, "linear", 1)


def name_of(competitor, case):
    return "/".join([*map(str, dataclasses.astuple(case)), competitor])


CASES = {name_of(competitor, case): (competitor, make, case)
         for competitor, make, case in cases()}


def checksum(result):
    """A sum over the bits of all results in their order, as python_calls forms it."""
    bits = result.ravel().view(f"u{result.itemsize}").astype(numpy.uint64)
    return int((bits * numpy.arange(1, bits.size + 1, dtype=numpy.uint64)).sum() % 2**32)


def compared(difference, tolerance):
    """How far a result is from what volux_core gives."""
    said = {"difference": difference, "tolerance": tolerance}
    if difference > tolerance:
        said["error_message"] = f"it is {difference} off what volux_core gives"
    return said


def look_at(competitor, case, result):
    """volux by all of its bits; others as far as they mean the same, which no B-spline does."""
    if competitor.startswith("volux") and case.workload != "point":
        return {"checksum": checksum(result)}
    if case.kernel == "cubic":
        return {}
    if case.workload == "point":
        wanted = bulk_scipy.reading(case.cube, 1, numpy.array(POINT))
        return compared(abs(float(result.item()) - wanted), 1e-9)
    tolerance = {"short": 0.5 + 1e-9, "float": 1300 * 2.0**-24}[case.kind]
    tolerance += OWN_TOLERANCES.get(competitor, {}).get(case.kind, 0.0)
    target = bulk_scipy.TARGETS[case.workload][1]
    return compared(bulk_scipy.largest_difference(target, case.cube, case.order, result), tolerance)


def array_of(result):
    is_image = isinstance(result, SimpleITK.Image)
    return SimpleITK.GetArrayFromImage(result) if is_image else numpy.asarray(result)


def measure(name):
    competitor, make, case = CASES[name]
    call = make(case)
    passes, spent = driven.timed(call, time.perf_counter_ns,
                                 100 if case.workload == "point" else 1)
    result = array_of(call())
    return {"name": name, "items_per_second": result.size * passes / spent * 1e9,
            **look_at(competitor, case, result)}


if __name__ == "__main__":
    driven.drive(CASES, measure)
