"""The types that the package's signatures are written in."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from enum import Enum
from typing import Any, Literal, Protocol, SupportsFloat, SupportsIndex, TypeAlias, TypedDict

import numpy as np
import numpy.typing as npt

Array: TypeAlias = npt.NDArray[Any]
Matrix: TypeAlias = npt.NDArray[np.float64]

Interpolation: TypeAlias = Literal["nearest", "linear", "cubic", "label"]
Border: TypeAlias = Literal["edge", "constant"]
Outside: TypeAlias = Literal["fill", "extend"]
Antialias: TypeAlias = Literal["mean", "auto"]
Overflow: TypeAlias = Literal["saturate", "wrap"]
Align: TypeAlias = Literal["edges", "centres"]
Projection: TypeAlias = Literal["mean", "maximum", "minimum"]
Space: TypeAlias = Literal["index", "world"]
Axes: TypeAlias = Literal["xyz", "xzy", "yxz", "yzx", "zxy", "zyx"]

Ints: TypeAlias = tuple[int, int, int]
Floats: TypeAlias = tuple[float, float, float]
Box: TypeAlias = tuple[slice, slice, slice]

Shape: TypeAlias = Sequence[SupportsIndex] | npt.NDArray[np.integer[Any]]
Vector: TypeAlias = Sequence[SupportsFloat] | npt.NDArray[np.floating[Any] | np.integer[Any]]
Number: TypeAlias = float | np.floating[Any] | np.integer[Any]
Progress: TypeAlias = Callable[[float], object]


class NotGiven(Enum):
    """The default of a keyword whose absence differs from None."""

    NOT_GIVEN = "None"

    def __repr__(self) -> str:
        return self.value


class DLPackProducer(Protocol):
    """An array of another library: torch, JAX and others."""

    def __dlpack__(self) -> Any: ...

    def __dlpack_device__(self) -> tuple[Any, Any]: ...


class FillingOptions(TypedDict, total=False):
    """What every call that makes a volume takes."""

    interpolation: Interpolation
    border: Border
    fill: Number
    outside: Outside
    antialias: Antialias | None
    overflow: Overflow
    dtype: npt.DTypeLike | None
    out: Array | None
    threads: int | None
    progress: Progress | None
