"""Each public call of volux, with random arguments.

A function here draws the arguments of one of them, makes the call and returns its result; what
helps to make an argument, such as a grid, is a call like any other.
"""
import contextlib
import pickle

import dask.array
import numpy as np
import volux
import volux.dask
from volux import ndimage

import places
from bits import bits, promise
from keywords import (KERNELS, extents_of, fill, filling, output, reading, threads, with_channels,
                      word)


def filled(draw, function, image, how):
    """Makes a call that makes a volume; the caller's memory must be what it returns."""
    result = draw.call(function, image, **how)
    if how.get("out") is not None:
        array = result.array if isinstance(result, volux.Image) else result
        promise(array is how["out"], "the result is not out")
    return result


def resample(draw):
    image, array = places.image(draw)
    how, extents = filling(draw, array), extents_of(array)
    where = draw.one("grid", "grid", "like", "own")
    if where == "grid":
        how["grid"] = draw.or_stranger(lambda: places.grid(draw))
        extents = getattr(how["grid"], "shape", None)
    if where == "like":
        how["like"], other = places.image(draw)
        extents = extents_of(other)
    if where == "own" or draw.chance(0.3):
        how["transform"] = draw.or_stranger(lambda: places.transform(draw))
    how |= output(draw, with_channels(extents, array), array, array)
    return filled(draw, volux.resample, image, how)


def resize(draw):
    image, array = places.image(draw)
    how, extents = filling(draw, array), None
    names = ("shape", "shape", "spacing", "scale")
    for _ in range(2 if draw.is_wrong() else 1):
        name = draw.one(*names)
        how[name] = (draw.or_stranger(draw.extents) if name == "shape" else places.steps(draw))
    if draw.chance(0.5):
        how["align"] = word(draw, "edges", "centres")
    if isinstance(how.get("shape"), tuple) and len(how["shape"]) == 3:
        extents = how["shape"]
    how |= output(draw, with_channels(extents, array), array, array)
    return filled(draw, volux.resize, image, how)


def reslice(draw):
    image, array = places.image(draw)
    how = filling(draw, array)
    kind = draw.one("plane", "plane", "planes", "stack", "grid")
    planes = {"plane": lambda: places.plane(draw), "grid": lambda: places.grid(draw),
              "planes": lambda: [places.plane(draw), places.plane(draw)],
              "stack": lambda: stack(draw)}[kind]()
    planes = draw.or_stranger(lambda: planes)
    if draw.chance(0.5):
        how["slab"] = draw.or_stranger(lambda: draw.one(None, 1, 2, 3, 5))
        how["projection"] = word(draw, "mean", "maximum", "minimum")
    place = getattr(planes, "grid", planes)
    extents = place.shape if isinstance(place, volux.Grid) else None
    if extents is None and not draw.is_wrong():
        return draw.call(volux.reslice, image, planes, **how)
    how |= output(draw, with_channels(extents or (1, 2, 2), array), array, array)
    return filled(draw, volux.reslice, image, {"planes": planes, **how})


def sample(draw):
    image, array = places.image(draw)
    points = places.points(draw)
    how = reading(draw, array) | selection(draw, array)
    is_volume = isinstance(array, np.ndarray) and array.ndim >= 3
    last = array.shape[3:] if is_volume and how.get("channel") is None else ()
    shape = (*points.shape[:-1], *last) if isinstance(points, np.ndarray) else None
    read = points if draw.chance(0.5) else array
    made = output(draw, shape, read, array)
    if "dtype" not in made and made.get("out") is not None and not draw.is_wrong():
        made["dtype"] = getattr(made["out"], "dtype", None)
    return filled(draw, volux.sample, image, {"points": points, **how, **made})


def selection(draw, array):
    """Returns some of the keywords that both calls at points take besides."""
    how = {}
    if draw.chance(0.4):
        how["space"] = word(draw, "index", "world")
    if draw.chance(0.3):
        channels = array.shape[3] if isinstance(array, np.ndarray) and array.ndim == 4 else 1
        how["channel"] = draw.or_stranger(lambda: draw.one(None, *range(channels)))
    return how


def sample_gradient(draw):
    image, array = places.image(draw)
    how = reading(draw, array) | selection(draw, array)
    return draw.call(volux.sample_gradient, image, places.points(draw), **how)


def plane(draw):
    return places.plane(draw)


def along(draw):
    shape = draw.or_stranger(lambda: draw.extents(2))
    points = places.points(draw, draw.one(1, 2, 3, 7))
    return draw.call(volux.Plane.along, points, places.triple(draw), shape, places.steps(draw))


def stack(draw):
    how = {}
    if draw.chance(0.5):
        how["distance"] = draw.or_stranger(lambda: draw.number(0.3, 4.0))
    if draw.chance(0.3):
        how["direction"] = places.triple(draw)
    first = places.plane(draw)
    count = draw.or_stranger(lambda: draw.one(1, 2, 5))
    return draw.call(volux.Plane.stack, first, count, **how)


def image(draw):
    """An image as nibabel and SimpleITK take it, as a pickle, and as it was."""
    made, array = places.image(draw)
    if not isinstance(made, volux.Image):
        made = draw.call(volux.Image, made, *([places.affine(draw)] if draw.chance(0.7) else []),
                         axes=places.axes(draw), channels=draw.or_stranger(lambda: None))
    how = draw.one("as it is", "as it is", "pickle", "nibabel", "sitk")
    if how == "pickle":
        return draw.call(pickle.loads, draw.call(pickle.dumps, made))
    if how == "nibabel":
        return draw.call(volux.Image.from_nibabel, draw.call(made.to_nibabel))
    if how == "sitk":
        return draw.call(volux.Image.from_sitk, draw.call(made.to_sitk)).array
    promise(np.may_share_memory(made.array, array), "an image has voxels of its own")
    return draw.call(repr, made), made.spacing, made


def foreign(draw):
    """What is no image of another library."""
    take = draw.one(volux.Image.from_nibabel, volux.Image.from_sitk, volux.Displacement.from_sitk)
    return draw.call(take, draw.one(draw.stranger(), places.voxels(draw)))


def grid(draw):
    """A grid, its box, its spacing and its pickle."""
    made = places.grid(draw)
    again = draw.call(pickle.loads, draw.call(pickle.dumps, made))
    promise(again == made and hash(again) == hash(made), "a grid is not its pickle")
    part = draw.call(volux.Grid.__getitem__, made, places.box(draw, made.shape))
    return made, part, part.spacing, draw.call(repr, part)


def of_size(draw):
    given = draw.one(places.grid(draw), places.image(draw)[0])
    align = word(draw, "edges", "centres")
    shape = draw.or_stranger(draw.extents)
    return draw.call(volux.Grid.of_size, given, shape, align=align)


def of_spacing(draw):
    given = draw.one(places.grid(draw), places.image(draw)[0])
    align = word(draw, "edges", "centres")
    return draw.call(volux.Grid.of_spacing, given, places.steps(draw), align=align)


def support_options(draw):
    how = {}
    for name, *words in (("interpolation", *KERNELS), ("border", "edge", "constant"),
                         ("outside", "fill", "extend"), ("antialias", None, "mean", "auto")):
        if draw.chance(0.5):
            how[name] = word(draw, *words)
    if draw.chance(0.4):
        how["transform"] = draw.or_stranger(lambda: places.transform(draw))
    return how


def support(draw):
    target, how = places.grid(draw), support_options(draw)
    given = draw.one(places.grid(draw), places.image(draw)[0])
    box = places.box(draw, target.shape)
    return draw.call(volux.support, draw.or_stranger(lambda: target), box, image=given, **how)


def brick(draw):
    """A box of a result, made of the box of the image that it reads, as of the whole."""
    array, how = places.voxels(draw), support_options(draw)
    whole = draw.call(volux.Image, array, places.affine(draw), axes=places.axes(draw))
    target = draw.call(volux.Grid, draw.extents(), places.affine(draw))
    box = places.box(draw, target.shape)
    need = draw.call(volux.support, target, box, image=whole, **how)
    part = draw.call(volux.Image.brick, array[need], whole.grid[need])
    how |= {"fill": fill(draw, array), "antialias": how.get("antialias")} | threads(draw)
    made = draw.call(volux.resample, part, target[box], **how)
    wanted = draw.call(volux.resample, whole, target, **how).array[box]
    promise(bits(made.array) == bits(wanted), "a brick gives other voxels than the whole")
    return made


def affine(draw):
    made = draw.call(volux.Affine, places.affine(draw))
    back = draw.call(made.inverse)
    return made, back, draw.call(back, places.points(draw))


def displacement(draw):
    made = places.field(draw)
    return draw.call(made, places.points(draw)), draw.call(repr, made)


def compose(draw):
    first, then = (draw.or_stranger(lambda: places.transform(draw)) for _ in range(2))
    made = draw.call(volux.compose, first, then)
    return draw.call(made, places.points(draw))


def digest(draw):
    image, array = places.image(draw)
    return draw.call(volux.digest, image)


def some_threads(draw):
    """A block with a number of threads, which a call in it follows."""
    wanted = draw.or_stranger(lambda: draw.one(1, 2, 5))
    with contextlib.ExitStack() as stack:
        stack.enter_context(draw.call(volux.threads, wanted))
        return draw.call(volux.resize, places.served_array(draw), shape=draw.extents())


def scipys(draw, array):
    """Returns the keywords of the functions of volux.ndimage."""
    how = {"order": draw.or_stranger(lambda: draw.one(0, 1, 1, np.int64(1))),
           "mode": word(draw, "nearest", "nearest", "grid-constant")}
    if draw.chance(0.3):
        how["cval"] = fill(draw, array)
    if draw.chance(0.1):
        how["prefilter"] = draw.or_stranger(lambda: draw.one(True, False))
    if draw.is_wrong():
        how[draw.one("mode", "order")] = draw.one("wrap", "mirror", 3, 5, -1, 2.0, [], "1")
    return how


def scipys_output(draw, shape, array):
    made = output(draw, shape, array, array)
    return {"output": made.get("out", made.get("dtype"))} if made else {}


def given_to_scipy(draw):
    given, array = places.image(draw)
    while not draw.is_wrong() and isinstance(given, volux.Image):
        given = given.array
    if isinstance(given, np.ndarray) and given.ndim == 4 and given.shape[3] and not draw.is_wrong():
        given = array = given[..., 0]
    return given, array


def map_coordinates(draw):
    given, array = given_to_scipy(draw)
    points = places.points(draw)
    if isinstance(points, np.ndarray) and points.ndim and not draw.is_wrong():
        points = np.moveaxis(points, -1, 0)
    shape = points.shape[1:] if isinstance(points, np.ndarray) else None
    how = scipys(draw, array) | scipys_output(draw, shape, array)
    return draw.call(ndimage.map_coordinates, given, points, **how)


def affine_transform(draw):
    given, array = given_to_scipy(draw)
    matrix, how, shape = np.array(np.eye(4)), scipys(draw, array), extents_of(array)
    matrix = draw.one(places.affine(draw), matrix[:3, :3], matrix[:3], np.ones(3), [2, 1, 0.5])
    if draw.chance(0.4):
        how["offset"] = draw.one(draw.number(), places.triple(draw))
    if draw.chance(0.4):
        how["output_shape"] = shape = draw.or_stranger(draw.extents)
    shape = shape if isinstance(shape, tuple) and len(shape) == 3 else None
    how |= scipys_output(draw, shape, array)
    return draw.call(ndimage.affine_transform, given, matrix, **how)


def zoom(draw):
    given, array = given_to_scipy(draw)
    how, by = scipys(draw, array), places.steps(draw)
    if draw.chance(0.4):
        how["grid_mode"] = draw.or_stranger(lambda: draw.one(True, False))
    shape = None
    if isinstance(by, float) and isinstance(array, np.ndarray) and 0.0 < by < 4.0:
        shape = tuple(round(n * by) for n in array.shape)
    how |= scipys_output(draw, shape, array)
    return draw.call(ndimage.zoom, given, by, **how)


def in_dask(draw):
    """Chunks of a result, which have the voxels of the whole."""
    array, how = places.voxels(draw), support_options(draw)
    how |= {"fill": fill(draw, array), "antialias": how.get("antialias")}
    if not draw.chance(0.3):
        how["grid"] = draw.or_stranger(lambda: places.grid(draw))
    chunks = draw.or_stranger(lambda: draw.one(4, 7, (5, 6, 12)))
    chunked = array
    if array.ndim == 3 and array.size and array.dtype.kind in "biuf":
        chunked = dask.array.from_array(array, chunks=draw.one(3, 5, 12), name=False)
    image = draw.or_stranger(lambda: chunked)
    graph = draw.call(volux.dask.resample, image, chunks=chunks, **how)
    made = draw.call(graph.compute, scheduler="synchronous")
    own = draw.call(volux.Grid, array.shape, np.eye(4))
    whole = draw.call(volux.resample, array, **{"grid": own} | how)
    promise(bits(made) == bits(whole), "chunks have other voxels than the whole")
    return made


# How often each is called in a round.
ROUND = {
    resample: 6, resize: 4, reslice: 4, sample: 6, sample_gradient: 3, plane: 1, along: 1, stack: 1,
    image: 2, foreign: 1, grid: 2, of_size: 1, of_spacing: 1, support: 3, brick: 2, affine: 1,
    displacement: 2, compose: 2, digest: 1, some_threads: 1, map_coordinates: 2,
    affine_transform: 2, zoom: 2, in_dask: 1,
}
TURNS = [function for function, times in ROUND.items() for _ in range(times)]
