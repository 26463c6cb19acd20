"""What calls return, as mypy and pyright read it; nothing runs."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt
import volux

if TYPE_CHECKING:
    from typing_extensions import assert_type

    Array = npt.NDArray[Any]

    def an_array_gives_an_array(array: npt.NDArray[np.int16], grid: volux.Grid) -> None:
        assert_type(volux.resample(array, grid, interpolation="cubic"), Array)
        assert_type(volux.resize(array, spacing=(1, 2.0, 3)), Array)
        assert_type(volux.reslice(array, grid, slab=3), Array)
        assert_type(volux.sample(array, [(0, 0, 0)]), Array)

    def an_image_gives_an_image(image: volux.Image, plane: volux.Plane) -> None:
        assert_type(volux.resample(image, like=image), volux.Image)
        assert_type(volux.resize(image, shape=(2, 3, 4)), volux.Image)
        assert_type(volux.reslice(image, plane), volux.Image)
        assert_type(volux.reslice(image, [plane]), list[volux.Image])

    def affines_in_a_row_are_an_affine(affine: volux.Affine, field: volux.Displacement) -> None:
        assert_type(volux.compose(affine, affine), volux.Affine)
        assert_type(volux.compose(affine, field), volux.Affine | volux.Composite)

    def a_word_of_another_library_is_an_error(array: Array, grid: volux.Grid) -> None:
        volux.resample(array, grid, order=1)  # type: ignore
        volux.resample(array, grid, border="nearest")  # type: ignore
        volux.sample(array, (0, 0, 0), interpolation="spline")  # type: ignore
