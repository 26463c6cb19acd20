"""What volux needs at run time, for pyproject.toml: it depends on how the wheel is built."""

import os


def dynamic_metadata(_settings: object, _project: object) -> dict[str, list[str]]:
    """Return the packages; a wheel for one version of CPython has the whole of nanobind in it."""
    for_one_version = os.environ.get("VOLUX_PER_VERSION", "0") not in ("", "0")
    return {"dependencies": ["numpy>=1.23"] + ["nanobind-backend>=1.0"] * (not for_one_version)}
