"""What the extra of the package brings."""

from __future__ import annotations

from typing import Any

from volux.tool._errors import needed


def zarr() -> Any:
    """Return the package zarr, or say what to install."""
    return needed("zarr", "pip install 'volux[scale]'")
