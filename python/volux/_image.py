"""Images: voxels with a place in the world."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from volux import _nibabel, _sitk
from volux._arrays import array_of, in_xyz
from volux._axes import checked_axes
from volux._fixed import Fixed
from volux._grid import Grid
from volux._numbers import whole
from volux._types import Array, Axes, DLPackProducer, Floats, Ints, Matrix

if TYPE_CHECKING:
    import nibabel
    import SimpleITK


class Image(Fixed):
    """Voxels with a place in the world.

    Parameters
    ----------
    array : ndarray or DLPack producer, three axes, and a last one for channels
        The voxels. They stay where they are: the image refers to them.
    affine : array_like, 4 x 4, optional
        Takes an index of the array to the world: (x, y, z) in mm, RAS+. It is copied. None: the
        identity, so that the world is the index space itself, as of a plain array.
    axes : str
        What the axes of the array are called, from the first to the last: "zyx" if the last one
        is x, "xyz" for arrays of nibabel. The result of a call depends on these names, never on
        the order of the voxels in memory.
    channels : int, optional
        How many channels there must be; None takes any number. An array of three axes has none,
        so that a picture in colours, (rows, columns, 3), cannot pass for a volume.

    Attributes
    ----------
    array, affine, shape, spacing, axes, grid, channels
        `shape` and `spacing` are along the three axes of the array. `channels` is None if the
        array has three axes.

    Raises
    ------
    TypeError
        If the array is none, or of a type that is not served.
    ValueError
        If it has other axes, or the affine places no image.

    Examples
    --------
    >>> import numpy as np
    >>> import volux
    >>> ct = volux.Image(np.zeros((60, 64, 64), np.int16), np.diag([3.0, 0.5, 0.5, 1.0]))
    >>> ct.shape, ct.spacing
    ((60, 64, 64), (3.0, 0.5, 0.5))
    """

    __slots__ = ("_array", "_grid", "_voxels")
    _array: Array
    _grid: Grid
    _voxels: Array  # the same memory as the compiled part takes it: x, y, z and channel

    def __init__(
        self,
        array: Array | DLPackProducer,
        affine: npt.ArrayLike | None = None,
        *,
        axes: Axes = "zyx",
        channels: int | None = None,
    ) -> None:
        voxels = array_of(array, "array")
        place = np.eye(4) if affine is None else affine
        self._set(voxels, Grid(voxels.shape[:3], place, axes=checked_axes(axes)))
        if channels is not None and whole("channels", channels) != self.channels:
            raise ValueError(
                f"channels={channels}, but the array has the shape {self.array.shape}: three axes, "
                f"then {'none' if self.channels is None else self.channels}"
            )

    @classmethod
    def brick(cls, array: Array | DLPackProducer, grid: Grid) -> Image:
        """Return an image of the voxels of a grid, such as a box of a larger one.

        Parameters
        ----------
        array : ndarray or DLPack producer
            The voxels of the grid alone.
        grid : Grid
            Where they lie. If it is a box of another grid, the image is a part of a larger one,
            and `resample` gives the voxels that it would make of the whole.

        Returns
        -------
        Image
            It refers to the array.

        Raises
        ------
        TypeError, ValueError
            As of `Image`; also if the array has another shape than the grid.

        See Also
        --------
        support : Which box of an image is read.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> whole = volux.Grid((100, 64, 64), np.eye(4), axes="zyx")
        >>> volux.Image.brick(np.zeros((10, 64, 64)), whole[20:30]).affine[:, 0].tolist()
        [1.0, 0.0, 0.0, 0.0]
        """
        if not isinstance(grid, Grid):
            raise TypeError(f"grid is a {type(grid).__name__}; it must be a volux.Grid")
        voxels = array_of(array, "array")
        if voxels.shape[:3] != grid.shape:
            raise ValueError(f"array has the shape {voxels.shape}, and the grid {grid.shape}")
        return cls._on(voxels, grid._named("zyx"))

    @classmethod
    def _on(cls, array: Array, grid: Grid) -> Image:
        image = cls.__new__(cls)
        image._set(array, grid)
        return image

    def _set(self, array: Array, grid: Grid) -> None:
        self._array = array
        self._grid = grid
        self._voxels = in_xyz(array, grid._order)

    @property
    def array(self) -> Array:
        """The voxels, where they are."""
        return self._array

    @property
    def grid(self) -> Grid:
        """Where the voxels lie."""
        return self._grid

    @property
    def affine(self) -> Matrix:
        """Takes an index of the array to the world, 4 x 4, read-only."""
        return self.grid.affine

    @property
    def shape(self) -> Ints:
        """Voxels along the three axes of the array."""
        return self.grid.shape

    @property
    def spacing(self) -> Floats:
        """World units from a voxel to the next along the three axes of the array."""
        return self.grid.spacing

    @property
    def axes(self) -> Axes:
        """What the axes of the array are called."""
        return self._grid._order

    @property
    def channels(self) -> int | None:
        """How many channels there are; None without an axis for them."""
        return None if self.array.ndim == 3 else int(self.array.shape[3])

    @classmethod
    def from_nibabel(cls, image: Any) -> Image:
        """Return an image of nibabel's, where it is.

        Parameters
        ----------
        image : nibabel.spatialimages.SpatialImage
            Three-dimensional, or with a last axis, such as time, which becomes that of the
            channels. A file that is not compressed stays on disk: its voxels are mapped.

        Returns
        -------
        Image
            With the axes "xyz" and the affine of `image`. Voxels that the file scales are as
            nibabel scales them.

        Raises
        ------
        TypeError, ValueError
            As of `Image`.

        Examples
        --------
        >>> import nibabel
        >>> import numpy as np
        >>> import volux
        >>> nifti = nibabel.Nifti1Image(np.zeros((64, 64, 60), np.int16), np.diag([2, 2, 3, 1]))
        >>> volux.Image.from_nibabel(nifti).spacing
        (2.0, 2.0, 3.0)
        """
        array, affine = _nibabel.read(image)
        return cls(array, affine, axes="xyz")

    def to_nibabel(self) -> nibabel.Nifti1Image:
        """Return the image as nibabel's, which shares its memory.

        Returns
        -------
        nibabel.Nifti1Image
            With the axes x, y and z, whatever those of the array are. Bools become bytes.

        Raises
        ------
        ImportError
            If nibabel is not installed.
        ValueError
            If the affine has numbers beyond those of float32, in which NIfTI keeps it.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> volux.Image(np.zeros((60, 64, 32), np.int16)).to_nibabel().shape
        (32, 64, 60)
        """
        image: nibabel.Nifti1Image = _nibabel.made(self.array, self.affine, self.axes)
        return image

    @classmethod
    def from_sitk(cls, image: Any) -> Image:
        """Return an image of SimpleITK's, where it is.

        Parameters
        ----------
        image : SimpleITK.Image
            Three-dimensional, scalars or vectors. Its world is LPS; that of the result is RAS.
            Only the place is converted: numbers that count in the world, such as displacements,
            stay as they are.

        Returns
        -------
        Image
            With the axes "zyx". Its array is read-only and keeps the memory of `image` alive.

        Raises
        ------
        TypeError, ValueError
            As of `Image`.

        Examples
        --------
        >>> import SimpleITK
        >>> import volux
        >>> scan = SimpleITK.Image([64, 32, 16], SimpleITK.sitkInt16)
        >>> scan.SetOrigin([10, 20, 30])
        >>> volux.Image.from_sitk(scan).affine[:3, 3].tolist()
        [-10.0, -20.0, 30.0]
        """
        array, affine = _sitk.read(image)
        return cls(array, affine, axes="zyx")

    def to_sitk(self) -> SimpleITK.Image:
        """Return the image as SimpleITK's, with a copy of the voxels: SimpleITK owns its memory.

        Returns
        -------
        SimpleITK.Image
            In LPS. Its directions have the length 1, so the affine may differ in the last bit.
            Bools become bytes, channels vectors.

        Raises
        ------
        ImportError
            If SimpleITK is not installed.
        ValueError
            If the affine is singular for SimpleITK, which inverts it by its determinant.

        Examples
        --------
        >>> import numpy as np
        >>> import volux
        >>> volux.Image(np.zeros((16, 32, 64), np.int16), axes="zyx").to_sitk().GetSize()
        (64, 32, 16)
        """
        image: SimpleITK.Image = _sitk.made(self.array, self.affine, self.axes)
        return image

    def __repr__(self) -> str:
        channels = "" if self.channels is None else f", channels={self.channels}"
        return (
            f"<Image of {self.array.dtype}, shape={self.shape}, spacing={self.spacing}, "
            f"axes={self.axes!r}{channels}>"
        )

    def __reduce__(self) -> tuple[Any, ...]:
        return Image.brick, (self.array, self.grid)
