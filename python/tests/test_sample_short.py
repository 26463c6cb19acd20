"""The short way of sample(), for few points of a plain array, gives what its checks give."""

import gc
import subprocess
import sys

import numpy as np
import pytest
import volux
from hypothesis import given, settings
from hypothesis import strategies as st

from . import oracle
from .test_long import private_kilobytes
from .volumes import labels, same_bits, volume

# The same call behind its short way: the checks of any call.
checked = volux.sample.__wrapped__

ARRAY = volume("int16")
POINT = (1.25, 2.5, 3.75)
POINTS = np.random.default_rng(6).uniform(-3, 9, (60, 3))

LAYOUTS = {
    "C": np.ascontiguousarray,
    "Fortran": np.asfortranarray,
    "gaps": lambda array: np.repeat(np.repeat(array, 2, 0), 3, 2)[::2, :, ::3],
    "backwards": lambda array: np.ascontiguousarray(array[::-1, :, ::-1])[::-1, :, ::-1],
    "read-only": lambda array: np.frombuffer(array.tobytes(), array.dtype).reshape(array.shape),
}


def functions_run(call):
    """How many functions of Python a call runs."""
    names = []

    def note(frame, event, _argument):
        if event == "call":
            names.append(frame.f_code.co_name)

    gc.disable()  # what it would free may run functions of its own
    sys.setprofile(note)
    try:
        call()
    finally:
        sys.setprofile(None)
        gc.enable()
    return len(names)


def runs_checks(*args, **kwargs):
    return functions_run(lambda: volux.sample(*args, **kwargs)) > 2  # the lambda and sample()


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("border", ["edge", "constant"])
@pytest.mark.parametrize("kernel", oracle.KERNELS)
@pytest.mark.parametrize("dtype", oracle.DTYPES)
def test_plain_calls_read_the_same_bits_as_checked_ones(dtype, kernel, border, layout):
    array = LAYOUTS[layout](labels(dtype) if kernel == "label" else volume(dtype))
    how = {"interpolation": kernel, "border": border, "fill": 3}
    wanted = checked(volux.Image(array, axes="zyx"), POINTS, **how)
    assert same_bits(volux.sample(array, POINTS, **how), wanted)
    for point, reading in zip(POINTS[:9], wanted, strict=False):
        assert same_bits(volux.sample(array, tuple(point.tolist()), **how), reading)
    assert not runs_checks(array, POINTS, **how)


TRIPLES = {
    "tuple": POINT,
    "list": list(POINT),
    "whole numbers": (1, 2, 3),
    "mixed": [1, 2.5, 2**62 + 1],
    "NumPy's doubles": tuple(np.array(POINT)),
    "array": np.array(POINT),
    "array with gaps": np.arange(9.0)[::4],
    "array backwards": np.arange(3.0)[::-1],
    "nowhere": (np.nan, np.inf, -0.0),
}


@pytest.mark.parametrize("name", TRIPLES)
def test_a_point_in_any_form_gives_an_array_without_axes(name):
    point = TRIPLES[name]
    found = volux.sample(ARRAY, point)
    assert type(found) is np.ndarray
    assert same_bits(found, checked(ARRAY, point))
    assert not runs_checks(ARRAY, point)


@pytest.mark.parametrize(
    "points",
    [
        POINTS[::-1],
        np.asfortranarray(POINTS),
        np.hstack([POINTS, POINTS])[:, 1:7:2],
        np.broadcast_to(POINTS[7], (50, 3)),
        POINTS[:1],
        POINTS[:0],
        np.tile(POINTS, (17, 1))[:1000],
    ],
    ids=["backwards", "Fortran", "gaps", "repeated", "one", "none", "1000"],
)
def test_rows_of_any_layout_give_one_axis(points):
    assert same_bits(volux.sample(ARRAY, points), checked(ARRAY, points.copy()))
    assert not runs_checks(ARRAY, points)


def test_more_points_go_the_long_way_to_the_same_bits():
    points = np.random.default_rng(7).uniform(-3, 9, (1001, 3))
    assert runs_checks(ARRAY, points)
    both = np.concatenate([volux.sample(ARRAY, points[:1000]), volux.sample(ARRAY, points[1000:])])
    assert same_bits(volux.sample(ARRAY, points), both)


def test_a_result_belongs_to_the_caller():
    for points in (POINT, POINTS):
        first, second = volux.sample(ARRAY, points), volux.sample(ARRAY, points)
        assert first.base is None
        assert first.flags.writeable
        assert first.flags.owndata
        assert not np.shares_memory(first, second)


def test_what_an_array_became_is_read_and_not_what_it_was():
    array = volume("float64", (3, 4, 5))
    for shape in [(3, 4, 5), (5, 4, 3), (2, 5, 6)]:
        array = array.reshape(shape)
        array *= -1
        assert same_bits(volux.sample(array, POINT), checked(array.copy(), POINT))


@pytest.mark.parametrize("offset", [1, 4, 7])
@pytest.mark.parametrize("shape", [(3,), (2, 3), (1500, 3)])
def test_points_that_are_not_aligned_are_read_as_their_copy_is(shape, offset):
    array, points = volume("float64", (3, 4, 5)), np.random.default_rng(5).uniform(0, 2, shape)
    memory = np.zeros(points.nbytes + offset, np.uint8)
    askew = memory[offset:].view(np.float64).reshape(shape)
    askew[...] = points
    assert not askew.flags.aligned
    assert same_bits(volux.sample(array, askew), volux.sample(array, points))


def test_points_in_records_are_read_as_their_copy_is():
    array, records = volume("float64", (3, 4, 5)), np.zeros(4, [("name", "u1"), ("point", "f8", 3)])
    records["point"] = np.random.default_rng(6).uniform(0, 2, (4, 3))
    points = records["point"].copy()
    assert same_bits(volux.sample(array, records["point"]), volux.sample(array, points))


class Doubled(float):
    """A number that is not what it holds."""

    def __float__(self):
        return 2 * super().__float__()


def unaligned(array):
    """The same numbers at an odd address."""
    memory = np.zeros(array.nbytes + 1, np.uint8)[1:]
    memory[:] = np.frombuffer(array.tobytes(), np.uint8)
    return memory.view(array.dtype).reshape(array.shape)


# Right and wrong, plain and not, in turn.
IMAGES = [
    ARRAY,
    volume("float32"),
    volume("uint8").T,
    volume("bool"),
    volume("int16", (4, 5, 6, 2)),
    volume("int16").astype(">i2"),
    volume("int16").astype("int64"),
    volume("int16").astype("complex64"),
    volume("int16").astype(object),
    unaligned(volume("int16")),
    np.zeros((0, 3, 3)),
    np.zeros((3, 3)),
    np.zeros((3, 3, 3), [("a", "f4")]),
    np.ma.masked_less(ARRAY, 0),
    np.zeros((3, 3, 3)).view(np.recarray),
    volux.Image(ARRAY),
    ARRAY.tolist(),
    None,
]
PLACES = [
    *TRIPLES.values(),
    POINTS,
    POINTS.tolist(),
    POINTS.astype(">f8"),
    POINTS.astype("float32"),
    POINTS.reshape(4, 5, 3, 3),
    unaligned(POINTS),
    (Doubled(1), Doubled(2), Doubled(3)),
    (True, False, True),
    (2**70, 1, 1),
    (1, 2),
    (1, 2, "3"),
    (1, 2, None),
    [1j, 2, 3],
    np.zeros((3, 7)),
    np.zeros(()),
    np.zeros((2, 0)),
    np.zeros(3, "m8[s]"),
    "123",
    None,
]
WORDS = {
    "space": ["index", "world", "voxel", None, np.str_("index")],
    "interpolation": [*oracle.KERNELS, "bilinear", 1, None, [], np.str_("linear")],
    "border": ["edge", "constant", "nearest", 0, {}, None],
    "fill": [0, 7, -3, 2.5, 1e300, 2**40, 10**400, np.nan, -0.0, True, np.int8(4), "0", None],
    "channel": [None, 0, 1, -1, "0"],
    "dtype": ["float64", "float32", np.float64, None, "int16", "int8", [], "no"],
    "out": [None, np.zeros(60), np.zeros(()), 1],
    "threads": [None, 1, 2, 0, -1, 2**31 - 1, 2**31, 10**30, True, 1.0, "1", np.int64(1)],
    "order": [1],
    "interpolate": ["linear"],
    "image": [ARRAY],
    "points": [POINT],
}
words = st.fixed_dictionaries({}, optional={n: st.sampled_from(v) for n, v in WORDS.items()})


def outcome(function, args, kwargs):
    """What a call comes to, in a form that can be compared."""
    try:
        found = function(*args, **kwargs)
    except Exception as error:
        return type(error), str(error)
    return type(found), found.dtype, found.shape, found.strides, found.tobytes()


@settings(max_examples=500, deadline=None)
@given(
    args=st.tuples(st.sampled_from(IMAGES), st.sampled_from(PLACES)),
    count=st.sampled_from([2, 2, 2, 2, 2, 1, 0]),
    kwargs=words,
)
def test_any_call_comes_to_what_its_checks_say(args, count, kwargs):
    assert outcome(volux.sample, args[:count], kwargs) == outcome(checked, args[:count], kwargs)


@pytest.mark.parametrize("image", range(len(IMAGES)))
@pytest.mark.parametrize("place", range(len(PLACES)))
def test_any_image_at_any_points_comes_to_what_the_checks_say(image, place):
    args = IMAGES[image], PLACES[place]
    assert outcome(volux.sample, args, {}) == outcome(checked, args, {})


@pytest.mark.parametrize(("word", "value"), [(w, v) for w, values in WORDS.items() for v in values])
def test_any_word_comes_to_what_the_checks_say(word, value):
    for array in (ARRAY, volume("float64")):
        for points in (POINT, POINTS):
            args, kwargs = (array, points), {word: value}
            assert outcome(volux.sample, args, kwargs) == outcome(checked, args, kwargs)


def test_words_that_are_put_together_count_as_those_that_are_written():
    how = {"".join(["inter", "polation"]): "".join(["cu", "bic"]), "".join(["fi", "ll"]): 1}
    assert same_bits(volux.sample(ARRAY, POINT, **how), checked(ARRAY, POINT, **how))
    assert not runs_checks(ARRAY, POINT, **how)


@pytest.mark.skipif(sys.platform != "linux", reason="it reads /proc")
def test_a_hundred_thousand_calls_leave_no_memory_behind():
    def call(times):
        for _ in range(times):
            volux.sample(ARRAY, POINT, border="edge", fill=12345, threads=1)
            volux.sample(ARRAY, POINTS[:2])

    call(1000)
    before = private_kilobytes()
    call(50_000)
    assert private_kilobytes() - before < 256


def test_calls_keep_nothing_of_what_they_were_given():
    held = [volume("float64"), tuple(map(float, POINT)), POINTS.copy(), 12345.5, "cubic"]

    def counts():
        return [sys.getrefcount(thing) for thing in held]

    def call():
        for points in (held[1], held[2], "no points"):
            outcome(volux.sample, (held[0], points), {"fill": held[3], "interpolation": held[4]})

    before = counts()
    for _ in range(100):
        call()
    assert counts() == before


# As interpreters end in which something written in C still has the function.
KEPT = """
import ctypes, numpy, volux
volux.sample(numpy.zeros((3, 3, 3)), (1, 1, 1))
ctypes.pythonapi.Py_IncRef(ctypes.py_object(volux.sample))
"""


def test_an_interpreter_that_ends_with_the_function_in_use_says_nothing():
    ended = subprocess.run([sys.executable, "-c", KEPT], capture_output=True, check=True)
    assert ended.stderr == b""
