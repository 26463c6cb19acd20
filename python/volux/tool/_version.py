"""The version of the package."""

import os


def version() -> str:
    """Return the version of the package.

    An installed package has a folder beside it whose name says the version. Where there is none,
    as in a clone, the library that knows all ways of installing is asked; it starts slowly.
    """
    packages = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    for name in os.listdir(packages):
        if name.startswith("volux-") and name.endswith(".dist-info"):
            return name[len("volux-") : -len(".dist-info")]
    return _asked()


def _asked() -> str:
    from importlib.metadata import PackageNotFoundError
    from importlib.metadata import version as installed

    try:
        return installed("volux")
    except PackageNotFoundError:
        return "(not installed)"
