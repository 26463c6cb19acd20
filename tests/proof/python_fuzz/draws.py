"""Random arguments, right ones and wrong ones: a seed says which."""
import math
import random
from decimal import Decimal
from fractions import Fraction

import numpy as np

SERVED = ("uint8", "int16", "uint16", "int32", "uint32", "float32", "float64")
# Of others the bytes may be any, or nothing but zeros.
OF_BYTES = ("int8", "int64", "uint64", "float16", "complex64", "complex128", ">i2", ">u4", ">f8")
OF_ZEROS = ("longdouble", "O", "M8[s]", "m8[ns]", "U2", "S3", "V5")
EXTENTS = (1, 1, 2, 2, 3, 4, 5, 7, 8, 12)
WORTH_THREADS = (16, 24, 33)  # along an axis of a result: fewer voxels are not shared out


def strangers():
    """Returns what belongs nowhere, or in few places."""
    return (None, True, False, -1, 0, 1, 2.5, -0.0, math.nan, math.inf, 1e300, 5e-324, 2**31,
            -(2**63), 10**400, "", "1", "x\ny", b"2", 1j, [], (1, 2), [1, [2, 3]], {}, {"a": 1},
            {1, 2}, iter(()), object, len, slice(1, 2), np.float32(0.5), np.int64(2),
            np.uint8(200), np.bool_(True), np.array(3), np.array([1.5]), np.zeros((2, 2)),
            np.array(["a", "b"]), np.array([None, 1]), np.ma.zeros(3), Fraction(1, 3),
            Decimal("1.5"), Decimal("NaN"))


class Draw:
    """Draws from a seed, and makes the calls.

    The same seed draws the same again, but that so many threads work and that, where it is plain,
    each array lies in C order in memory of its own.
    """

    def __init__(self, seed, threads=None, is_plain=False):
        self.random = random.Random(seed)
        self.threads = threads
        self.is_plain = is_plain
        self.kept = []  # memory that a call reads, and the bytes in it
        self.outs = []  # arrays that a call may write, their memory and the bytes in it
        self.made = []  # calls: function, arguments and keywords
        self.raised = None  # by the last of them
        self.is_stopped = False  # a callback of ours has raised Stopped
        self.share_of_wrong = self.one(0.0, 0.0, 0.02, 0.1, 0.3)

    def call(self, function, /, *arguments, **keywords):
        """Makes a call of what is tried; what it raises is told from mistakes made here."""
        self.made.append((function, arguments, keywords))
        try:
            return function(*arguments, **keywords)
        except Exception as error:
            self.raised = error
            raise

    def one(self, *values):
        return self.random.choice(values)

    def chance(self, share):
        return self.random.random() < share

    def is_wrong(self):
        """Whether the next argument shall be a wrong one."""
        return self.chance(self.share_of_wrong)

    def stranger(self):
        return self.one(*strangers())

    def or_stranger(self, make):
        return self.stranger() if self.is_wrong() else make()

    def number(self, least=-6.0, most=6.0):
        """Returns a number, now and then a whole one or half of one, which is at a tie."""
        number = self.random.uniform(least, most)
        return round(2 * number) / 2 if self.chance(0.3) else number

    def extents(self, count=3):
        if self.chance(0.03):
            return tuple(self.one(*WORTH_THREADS) for _ in range(count))
        return tuple(self.one(*EXTENTS) for _ in range(count))

    def dtype(self):
        """Returns the name of a type that voxels may have, or of another."""
        if self.is_wrong():
            return self.one(*OF_BYTES, *OF_ZEROS)
        return "bool" if self.chance(0.07) else self.one(*SERVED)

    def array(self, shape, dtype, is_out=False):
        """Returns an array somewhere in memory, in any order, with gaps and backwards."""
        if dtype in OF_ZEROS:
            return np.zeros(shape, dtype)
        view, block = self._laid_out(shape, np.dtype(dtype))
        self._fill(view)
        laid_out = view if is_out else self._repeated(view)
        if self.is_plain:
            is_writable = laid_out.flags.writeable
            laid_out = block = np.array(laid_out, order="C")
            laid_out.flags.writeable = is_writable  # what is drawn next may depend on it
        if is_out:
            self.outs.append((laid_out, block, block.tobytes()))
        else:
            self.kept.append((block, block.tobytes()))
        if self.is_wrong() if is_out else self.chance(0.1):
            laid_out.flags.writeable = False
        return laid_out

    def _laid_out(self, shape, dtype):
        count = len(shape)
        order, steps = list(range(count)), [1] * count
        if self.chance(0.5):
            self.random.shuffle(order)
        if self.chance(0.5):
            steps = [self.one(1, 1, -1, 2, -2) for _ in shape]
        wide = [n * abs(step) for n, step in zip(shape, steps)]
        offset = 1 if self.is_wrong() else self.one(0, dtype.itemsize)
        size = math.prod(wide) * dtype.itemsize + offset
        block = np.frombuffer(self.random.randbytes(size or 1), np.uint8).copy()
        if dtype.kind == "b":
            block &= 1
        whole = np.ndarray([wide[axis] for axis in order], dtype, block, offset)
        turned = whole.transpose([order.index(axis) for axis in range(count)])
        return turned[(*(slice(None, None, step) for step in steps), ...)], block

    def _fill(self, view):
        how = self.one("any bytes", "few", "few", "many", "edges")
        drawn = np.frombuffer(self.random.randbytes(view.size), np.uint8).reshape(view.shape)
        if how == "any bytes" or view.dtype.kind == "b":
            return
        if how == "edges" and view.dtype.kind in "iuf":
            edges = edges_of(view.dtype)
            view[...] = edges[drawn % len(edges)]
        else:
            view[...] = drawn & 7 if how == "few" else drawn >> 1

    def _repeated(self, view):
        """Returns the array, or one of which a voxel stands for all along an axis."""
        if view.ndim == 0 or 0 in view.shape or not self.chance(0.07):
            return view
        axis = self.random.randrange(view.ndim)
        first = tuple(slice(1) if n == axis else slice(None) for n in range(view.ndim))
        return np.broadcast_to(view[first], view.shape)


def edges_of(dtype):
    """Returns numbers at the ends of a type."""
    if dtype.kind == "f":
        limits = np.finfo(dtype)
        return np.array([np.nan, np.inf, -np.inf, 0.0, -0.0, 1.0, 0.5, limits.max, -limits.max,
                         limits.tiny, limits.smallest_subnormal], dtype)
    limits = np.iinfo(dtype)
    return np.array([limits.min, limits.max, limits.max - 1, 0, 1], dtype)
