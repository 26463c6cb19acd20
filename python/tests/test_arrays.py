"""Arrays are read and written where they are."""

import tracemalloc

import numpy as np
import pytest
import volux
from volux import _core

from .oracle import DTYPES
from .volumes import same_bits, volume

SHAPE = (4, 5, 6)


class Producer:
    """An array of another library, as DLPack sees it."""

    def __init__(self, array, device=1):
        self.array = array
        self.device = device

    def __dlpack__(self, **options):
        return self.array.__dlpack__(**options)

    def __dlpack_device__(self):
        return self.device, 0


def read_only(array):
    view = array.view()
    view.flags.writeable = False
    return view


def padded(array):
    memory = np.zeros(tuple(n + 3 for n in array.shape), array.dtype)
    inside = memory[1:-2, 1:-2, 1:-2]
    inside[...] = array
    return inside


def wide(array):
    memory = np.zeros((array.shape[0], 2 * array.shape[1], 3 * array.shape[2]), array.dtype)
    memory[:, ::2, ::3] = array
    return memory[:, ::2, ::3]


LAYOUTS = {
    "C": np.ascontiguousarray,
    "Fortran": np.asfortranarray,
    "slice": padded,
    "steps": wide,
    "transpose": lambda array: np.ascontiguousarray(array.transpose(1, 2, 0)).transpose(2, 0, 1),
    "negative": lambda array: np.ascontiguousarray(array[::-1, ::-1, ::-1])[::-1, ::-1, ::-1],
    "read-only": read_only,
}


@pytest.fixture
def reads(monkeypatch):
    """The arrays that the compiled part is given to read and to write."""
    seen = []

    def fill(source, destination, *args, **options):
        seen.append((source, destination))
        return compiled(source, destination, *args, **options)

    compiled = _core.fill
    monkeypatch.setattr(_core, "fill", fill)
    return seen


def bounds(array):
    begin = array.__array_interface__["data"][0]
    steps = [(n - 1) * s for n, s in zip(array.shape, array.strides, strict=True)]
    lowest = begin + sum(step for step in steps if step < 0)
    return lowest, begin + sum(step for step in steps if step > 0) + array.itemsize


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("dtype", DTYPES)
def test_an_array_of_any_layout_is_read_where_it_is(dtype, layout, reads):
    array = LAYOUTS[layout](volume(dtype, SHAPE))
    volux.resize(array, shape=(3, 3, 3))
    assert bounds(reads[0][0]) == bounds(array)


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("dtype", DTYPES)
def test_the_layout_of_an_array_changes_no_bit(dtype, layout):
    array = volume(dtype, SHAPE)
    made = volux.resize(LAYOUTS[layout](array), shape=(7, 3, 8), interpolation="cubic")
    assert same_bits(made, volux.resize(array, shape=(7, 3, 8), interpolation="cubic"))


@pytest.mark.parametrize("layout", [name for name in LAYOUTS if name != "read-only"])
@pytest.mark.parametrize("dtype", DTYPES)
def test_an_out_of_any_layout_is_written_where_it_is(dtype, layout):
    array = volume(dtype, SHAPE)
    out = LAYOUTS[layout](np.zeros((3, 7, 8), dtype))
    made = volux.resize(array, shape=(3, 7, 8), out=out)
    assert made is out
    assert np.array_equal(out, volux.resize(array, shape=(3, 7, 8)))


@pytest.mark.parametrize("dtype", DTYPES)
def test_a_dlpack_producer_on_the_cpu_is_read_where_it_is(dtype, reads):
    array = volume(dtype, SHAPE)
    volux.resize(Producer(array), shape=(3, 3, 3))
    assert bounds(reads[0][0]) == bounds(array)


def test_an_array_repeated_by_a_stride_of_zero_is_read_as_it_looks():
    row = np.arange(5, dtype=np.float32)
    repeated = np.broadcast_to(row, (3, 4, 5))
    made = volux.resize(repeated, shape=(2, 3, 7))
    assert same_bits(made, volux.resize(repeated.copy(), shape=(2, 3, 7)))


def test_a_device_array_is_refused_in_words():
    with pytest.raises(TypeError, match=r"image is on a device .*image\.cpu\(\) of torch"):
        volux.resize(Producer(volume(), device=2), shape=(3, 3, 3))


def test_a_producer_that_hands_nothing_on_is_refused_with_its_reason():
    class Refusing(Producer):
        def __dlpack__(self, **options):
            raise BufferError("a tensor that requires a gradient")

    with pytest.raises(TypeError, match="through DLPack: a tensor that requires a gradient"):
        volux.resize(Refusing(volume()), shape=(3, 3, 3))


def test_a_result_owns_its_memory():
    array = volume()
    made = volux.resize(array, shape=array.shape)
    kept = made.copy()
    array[...] = 0
    del array
    assert np.array_equal(made, kept)


def test_a_result_keeps_nothing_of_its_source_alive():
    import gc
    import weakref

    class Owner(np.ndarray):
        pass

    array = volume().view(Owner)
    watched = weakref.ref(array)
    made = volux.resize(array, shape=(2, 2, 2))
    del array
    gc.collect()
    assert watched() is None
    assert made.shape == (2, 2, 2)


def test_a_call_allocates_nothing_in_python_but_its_result():
    array = np.asfortranarray(volume("int16", (200, 100, 50)))[::-1]
    volux.resize(array, shape=(2, 2, 2))
    tracemalloc.start()
    volux.resize(array, shape=(4, 4, 4))
    _, peak = tracemalloc.get_traced_memory()
    tracemalloc.stop()
    assert peak < 20_000


def private_kilobytes():
    with open("/proc/self/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("RssAnon"))


def test_a_gibibyte_on_disk_is_mapped_and_not_read_into_memory(tmp_path):
    shape = (1024, 512, 1024)
    mapped = np.memmap(tmp_path / "volume", np.int16, "w+", shape=shape)
    mapped[511, 255, 511] = 17
    volux.resize(volume(), shape=(2, 2, 2))
    before = private_kilobytes()
    made = volux.resample(mapped, volux.Grid((64, 64, 64), np.eye(4))[0:1])
    found = volux.sample(mapped, [511, 255, 511])
    assert private_kilobytes() - before < 4096
    assert made.shape == (1, 64, 64)
    assert found == 17.0


def test_bools_are_read_as_labels_and_stay_bools():
    mask = volume("bool")
    made = volux.resize(mask, shape=(8, 10, 12), interpolation="label")
    numbers = volux.resize(mask.astype(np.uint8), shape=(8, 10, 12), interpolation="label")
    assert made.dtype == bool
    assert np.array_equal(made, numbers)


def test_bools_of_the_nearest_voxel_stay_bools():
    mask = volume("bool")
    assert same_bits(volux.resample(mask, like=mask, interpolation="nearest"), mask)


def test_bools_are_written_to_an_out_of_bools():
    mask = volume("bool")
    out = np.zeros(mask.shape, bool)
    assert volux.resample(mask, like=mask, interpolation="label", out=out) is out
    assert np.array_equal(out, mask)


def test_bools_have_no_fractions():
    with pytest.raises(ValueError, match=r"interpolation='linear' of bools: .*astype\('float32'\)"):
        volux.resize(volume("bool"), shape=(2, 2, 2))


def test_the_type_of_out_is_that_of_the_result():
    array = volume("int16")
    out = np.zeros((2, 2, 2), np.float64)
    volux.resize(array, shape=(2, 2, 2), out=out)
    assert same_bits(out, volux.resize(array, shape=(2, 2, 2), dtype="float64"))


def test_an_image_in_gives_an_image_of_out():
    image = volux.Image(volume(), np.diag([2.0, 1.0, 1.0, 1.0]))
    out = np.zeros((2, 2, 2), np.int16)
    made = volux.resize(image, shape=(2, 2, 2), out=out)
    assert made.array is out
    assert made.spacing == (4.0, 2.5, 3.0)
