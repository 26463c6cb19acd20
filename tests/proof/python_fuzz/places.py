"""Random places in the world, and what lies there: matrices, grids, images, points, transforms."""
import math

import numpy as np
import volux

from draws import SERVED

AXES = ("zyx", "zyx", "xyz", "xzy", "yxz", "yzx", "zxy")


class Producer:
    """An array of another library, on some device."""

    def __init__(self, array, device):
        self.array = array
        self.device = device

    def __dlpack__(self, **keywords):
        return self.array.__dlpack__(**keywords)

    def __dlpack_device__(self):
        return self.device, 0


class Subclass(np.ndarray):
    """An array of a library that builds on numpy."""


def affine(draw):
    """Returns a matrix, in some form. Steps are such that a mean takes few samples or too many."""
    if draw.is_wrong():
        return wrong_affine(draw)
    made = np.eye(4)
    kind = draw.one("identity", "steps", "steps", "turned", "sheared", "far")
    if kind in ("steps", "turned", "far"):
        made[:3, :3] = np.diag([draw.number(0.4, 2.5) * draw.one(1, 1, -1) for _ in range(3)])
    if kind == "turned":
        made[:3, :3] = turn(draw, 0, 1) @ turn(draw, 1, 2) @ made[:3, :3]
    if kind == "sheared":
        made[:3, :3] += [[draw.number(-0.15, 0.15) for _ in range(3)] for _ in range(3)]
    if kind == "far":
        made[:3, :3] *= draw.one(1e-300, 1e-150, 1e-12, 1e12, 1e150, 1e300)
    if kind != "identity":
        far = draw.one(1.0, 1.0, 1.0, 1.0, 1e9, 1e300)
        made[:3, 3] = [draw.number() * far for _ in range(3)]
        made = made[:, [*draw.random.sample(range(3), 3), 3]] if draw.chance(0.3) else made
    with np.errstate(over="ignore"):  # a refusal of what is not finite is an answer, too
        short = made.astype("f4")
    return draw.one(made, made, made.tolist(), np.asfortranarray(made), short)


def turn(draw, one, other):
    made, angle = np.eye(3), draw.number(-3.2, 3.2)
    made[one, one] = made[other, other] = math.cos(angle)
    made[one, other], made[other, one] = -math.sin(angle), math.sin(angle)
    return made


def wrong_affine(draw):
    eye = np.eye(4)
    singular, endless, unknown, lower = eye.copy(), eye.copy(), eye.copy(), eye.copy()
    singular[1, 1], endless[0, 3], unknown[2, 2], lower[3, 0] = 0, np.inf, np.nan, 1
    nearly = np.diag([1.0, 1.0, 1e-17, 1.0])
    other = (singular, endless, unknown, lower, nearly, np.eye(3), np.ones((4, 4)), eye[:3],
             eye.astype(complex), eye.astype(object), eye.astype(str), [[1], [1, 2]], eye[None],
             np.full((4, 4), None), np.zeros((0, 4)), -eye, eye * 1e308, eye.astype(bool))
    return draw.or_stranger(lambda: draw.one(*other))


def axes(draw, *more):
    return draw.or_stranger(lambda: draw.one(*more, *AXES))


def box(draw, shape):
    """Returns slices along the axes of a grid."""
    if draw.is_wrong():
        return draw.one(slice(5, 2), slice(0, 3, 2), slice(None, None, -1), 1, ..., None, (1, 2),
                        (slice(None),) * 4, "a", (slice("a"),), (slice(1.5),), slice(2**70), ())
    made = []
    for extent in shape:
        first = draw.random.randrange(extent)
        made.append(slice(first, draw.random.randint(first + 1, extent)))
    return tuple(made)


def grid(draw, shape=None):
    if shape is None:
        shape = draw.or_stranger(lambda: draw.one(list, tuple, np.array)(draw.extents()))
    made = draw.call(volux.Grid, shape, affine(draw), axes=axes(draw, None, None, None))
    if draw.chance(0.15):
        return draw.call(volux.Grid.__getitem__, made, box(draw, made.shape))
    return made


def voxels(draw):
    """Returns an array of three axes, or with a fourth for channels."""
    shape = draw.extents()
    if draw.chance(0.3):
        shape = (*shape, draw.one(1, 2, 3, 4))
    if draw.is_wrong():
        shape = draw.one((), shape[:1], shape[:2], (*shape, 2, 2), (0, *shape[1:]),
                         (*shape[:3], 0), (0,) * 3, (1,) * 20)
    return draw.array(shape, draw.dtype())


def image(draw):
    """Returns an image as a call takes it, and the array of its voxels."""
    array = voxels(draw)
    kind = draw.one(*["array"] * 6, *["Image"] * 5, "producer", "subclass")
    if draw.is_wrong():
        kind = draw.one("masked", "brick", "grid", "list", "stranger", "device")
    if kind == "Image":
        keywords = {"channels": draw.one(None, 1, 2, -1, "3")} if draw.is_wrong() else {}
        given = draw.call(volux.Image, array, affine(draw), axes=axes(draw), **keywords)
    elif kind == "brick":
        given = draw.call(volux.Image.brick, array, draw.or_stranger(lambda: grid(draw)))
    else:
        given = {"array": lambda: array, "producer": lambda: Producer(array, 1),
                 "subclass": lambda: array.view(Subclass), "list": array.tolist,
                 "device": lambda: Producer(array, draw.one(2, 7, -1)),
                 "masked": lambda: np.ma.array(array), "grid": lambda: grid(draw),
                 "stranger": draw.stranger}[kind]()
    return given, array


def points(draw, count=None):
    """Returns places, in voxels or in the world."""
    if draw.is_wrong():
        return draw.one([(1j, 0, 0)], "abc", np.zeros((3, 7)), np.zeros(2), [[1, 2, 3], [4]],
                        np.zeros((2, 3), object), np.full((1, 3), None), np.zeros((0, 2)), 0.5,
                        [(10**400, 0, 0)], np.zeros((2, 3), "M8[s]"), [("a", "b", "c")], None,
                        np.full((1, 3), np.longdouble("1e4000")), [[2**64, 0, 0]])
    shape = draw.one((3,), (1, 3), (2, 3), (5, 3), (7, 3), (2, 4, 3), (0, 3), (2, 0, 3))
    if count is not None:
        shape = (count, 3)
    made = draw.array(shape, draw.one("f8", "f8", "f8", "f4", "i2", "u1", "f2", "i8", ">f8"))
    if made.flags.writeable and made.dtype == "f8" and draw.chance(0.7):
        made[...] = np.reshape([draw.number(-2, 12) for _ in range(made.size)], shape)
        draw.kept[-1] = draw.kept[-1][0], draw.kept[-1][0].tobytes()
    return made.tolist() if draw.chance(0.15) else made


def triple(draw):
    """Returns a place or a direction in the world."""
    if draw.is_wrong():
        return draw.one((0, 0, 0), (1, 2), (1, 2, math.nan), (math.inf, 0, 0), "abc", (1, "2", 3),
                        (1, None, 3), np.zeros((3, 3)), [1j, 0, 0], (1e300, -1e300, 0), {1, 2, 3},
                        (10**400, 0, 0), np.array([[1], [2], [3]]), (5e-324, 0, 0))
    made = [draw.number() for _ in range(3)]
    return draw.one(made, tuple(made), np.array(made), [float(round(n)) for n in made])


def steps(draw):
    """Returns a length, or three: tame ones, so that results are small, or hopeless ones."""
    if draw.is_wrong():
        return draw.or_stranger(lambda: draw.one(
            0, -1.0, 1e-12, 5e-324, 1e12, 1e300, (1, 2), (1, "2", 1), (1, None, 1), [1, [2], 3],
            (1, math.nan, 1), np.ones((3, 3)), np.zeros(3), (1e-12, 1, 1)))
    each = [draw.number(0.5, 3.0) for _ in range(3)]
    return draw.one(each[0], each, tuple(each), np.array(each))


def plane(draw):
    """Returns a plane; wrong pictures are of no size, or of none that memory holds."""
    shape = draw.or_stranger(lambda: draw.extents(2))
    make = draw.one(volux.Plane, volux.Plane, volux.Plane.through)
    return draw.call(make, triple(draw), triple(draw), triple(draw), shape, steps(draw))


def field(draw):
    place = grid(draw)
    shape = (*place.shape, 3)
    if draw.is_wrong():
        shape = draw.one(shape[:3], (*shape[:3], 2), (1, *shape[1:]), (2, 2, 2, 3))
    vectors = draw.array(shape, draw.dtype() if draw.is_wrong() else draw.one("f4", "f8"))
    return draw.call(volux.Displacement, vectors, draw.or_stranger(lambda: place))


def transform(draw):
    """Returns a transform of the world."""
    kind = draw.one("affine", "affine", "field", "field", "composite")
    if draw.is_wrong():
        return draw.one(np.eye(4), "eye", volux.Affine, 1, [], np.eye(3))
    if kind == "affine":
        return draw.call(volux.Affine, affine(draw))
    if kind == "field":
        return field(draw)
    return draw.call(volux.compose, transform(draw), transform(draw))


def served_array(draw):
    """Returns an array of three axes that is in order."""
    return draw.array(draw.extents(), draw.one(*SERVED))
