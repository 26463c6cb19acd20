"""What many calls, and long ones, leave behind: nothing."""

import contextlib
import gc
import mmap
import multiprocessing
import os
import pickle
import select
import signal
import sys
import threading
import weakref
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
import volux
from volux import ndimage

from .volumes import same_bits, volume

MANY = 100_000 if os.environ.get("VOLUX_LONG") == "1" else 2000
ARRAY = volume("int16", (48, 48, 48))
SHEAR = np.eye(4) + np.eye(4, k=1) * [[0.1], [0.1], [0.1], [0]]
GRID = volux.Grid((48, 48, 48), SHEAR)
LONG = volux.Grid((500, 500, 500), SHEAR)

SMALL = volume("int16", (4, 4, 4))
IMAGE = volux.Image(SMALL, np.diag([2.0, 1.0, 0.75, 1.0]))
FEW = volux.Grid((3, 3, 3), SHEAR)
WARP = volux.Displacement(np.full((4, 4, 4, 3), 0.25), volux.Grid((4, 4, 4), np.eye(4)))
PLANE = volux.Plane((1, 1, 1), (0, 0, 1), (0, 1, 0), (3, 3), 1.0)


def refused():
    with pytest.raises(ValueError, match="shape"):
        volux.resize(SMALL, shape=(0, 1, 1))


CALLS = {
    "resample": lambda: volux.resample(IMAGE, FEW),
    "warp": lambda: volux.resample(IMAGE, FEW, transform=WARP),
    "resize": lambda: volux.resize(SMALL, shape=(3, 3, 3)),
    "reslice": lambda: volux.reslice(IMAGE, PLANE, slab=2),
    "sample": lambda: volux.sample(SMALL, (1, 1, 1)),
    "sample_gradient": lambda: volux.sample_gradient(IMAGE, (1, 1, 1), space="world"),
    "support": lambda: volux.support(FEW, np.s_[0:1], image=IMAGE),
    "zoom": lambda: ndimage.zoom(SMALL, 2, order=1, mode="nearest"),
    "refused": refused,
}


@pytest.mark.parametrize("threads", [1, 2])
def test_ctrl_c_ends_a_call_before_its_end(threads):
    fractions, has_begun = [], threading.Event()

    def told(fraction):
        fractions.append(fraction)
        has_begun.set()

    def interrupt():
        has_begun.wait()
        os.kill(os.getpid(), signal.SIGINT)

    ctrl_c = threading.Thread(target=interrupt)
    ctrl_c.start()
    with pytest.raises(KeyboardInterrupt):
        volux.resample(
            ARRAY, LONG, interpolation="cubic", outside="extend", threads=threads, progress=told
        )
    assert fractions[-1] < 1.0
    ctrl_c.join()


def test_a_call_after_ctrl_c_gives_the_same_bits():
    wanted = volux.resample(ARRAY, GRID)

    def stop(_fraction):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        volux.resample(ARRAY, LONG, progress=stop)
    assert same_bits(volux.resample(ARRAY, GRID), wanted)


def test_what_progress_raises_is_the_very_exception():
    enough = RuntimeError("enough")

    def stop(_fraction):
        raise enough

    with pytest.raises(RuntimeError) as caught:
        volux.resample(ARRAY, LONG, progress=stop)
    assert caught.value is enough


def test_a_callback_that_keeps_what_it_raised_is_collected():
    class Watch:
        def __call__(self, _fraction):
            self.raised = RuntimeError("its traceback leads to the call, and so back here")
            raise self.raised

    watch = Watch()
    watched = weakref.ref(watch)
    with contextlib.suppress(RuntimeError):
        volux.resample(ARRAY, LONG, progress=watch)
    del watch
    gc.collect()
    assert watched() is None


def digest_of_a_child():
    """The digest that a forked process finds, or nothing if it hangs."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            os.write(writing, volux.digest(volux.resample(ARRAY, GRID, threads=2)).encode())
        finally:
            os._exit(0)
    os.close(writing)
    answered, _, _ = select.select([reading], [], [], 30)
    found = os.read(reading, 64).decode() if answered else ""
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    os.close(reading)
    return found


@pytest.mark.skipif(not hasattr(os, "fork"), reason="the system does not fork")
# From 3.12 on Python warns of forks while threads live; ours have ended with their call.
@pytest.mark.filterwarnings("ignore:.*use of fork:DeprecationWarning")
def test_each_of_20_forks_after_a_threaded_call_gives_the_same_bits():
    wanted = volux.digest(volux.resample(ARRAY, GRID, threads=2))
    assert [digest_of_a_child() for _ in range(20)] == [wanted] * 20


def private_kilobytes():
    with open("/proc/self/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("RssAnon"))


@pytest.mark.skipif(sys.platform != "linux", reason="it reads /proc")
@pytest.mark.parametrize("name", CALLS)
def test_thousands_of_calls_of_each_kind_leave_no_memory_behind(name):
    def call():
        for _ in range(MANY):
            CALLS[name]()

    call()
    gc.collect()
    before = private_kilobytes()
    call()
    gc.collect()
    assert private_kilobytes() - before < 512


def test_threads_that_call_everything_at_once_get_the_same_bits():
    def bits():
        made = [volux.resample(IMAGE, FEW), volux.resample(IMAGE, FEW, transform=WARP)]
        made += [volux.resize(SMALL, shape=(7, 7, 7)), volux.reslice(IMAGE, PLANE)]
        return [volux.digest(image) for image in made]

    alone = bits()
    with ThreadPoolExecutor(4) as pool:
        calls = [pool.submit(bits) for _ in range(200)]
    assert all(call.result() == alone for call in calls)


def test_a_result_outlives_what_it_was_made_of():
    path_less = mmap.mmap(-1, SMALL.nbytes)
    mapped = np.frombuffer(path_less, np.int16).reshape(SMALL.shape)
    mapped[...] = SMALL
    made = volux.resample(mapped, FEW)
    image = volux.resample(volux.Image(mapped), FEW)
    del mapped
    gc.collect()
    path_less.close()  # it would raise if a result still referred to it
    assert same_bits(made, volux.resample(SMALL, FEW))
    assert same_bits(image.array, made)


PICKLED = {
    "grid": FEW,
    "box": FEW[1:3],
    "affine": volux.Affine(SHEAR),
    "displacement": WARP,
    "composite": volux.compose(volux.Affine(SHEAR), WARP),
    "plane": PLANE,
    "image": IMAGE,
}


def does_the_same(thing):
    """What a pickled thing does in a process of its own."""
    if isinstance(thing, volux.Grid):
        return volux.digest(volux.resample(volux.Image(SMALL), thing))
    if isinstance(thing, volux.Plane):
        return volux.digest(volux.reslice(volux.Image(SMALL), thing))
    if isinstance(thing, volux.Image):
        return volux.digest(thing)
    return volux.digest(volux.resample(volux.Image(SMALL), FEW, transform=thing))


@pytest.mark.parametrize("protocol", range(2, pickle.HIGHEST_PROTOCOL + 1))
@pytest.mark.parametrize("name", PICKLED)
def test_what_was_pickled_does_the_same(name, protocol):
    thing = PICKLED[name]
    again = pickle.loads(pickle.dumps(thing, protocol))
    assert does_the_same(again) == does_the_same(thing)


def test_a_pool_of_processes_takes_what_was_pickled():
    # A process of its own imports volux; it gets functions of volux, since tests are no package.
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        made = pool.starmap(volux.resample, [(IMAGE, FEW)])
    assert volux.digest(made[0]) == volux.digest(volux.resample(IMAGE, FEW))
