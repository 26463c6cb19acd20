"""The Python package as it is published, in an environment of its own."""
import hashlib

from . import commands, provenance
from .commands import ROOT, Failure, output_of

DIST = ROOT / "build" / "python" / "dist"
FOLDERS = ("python/src", "python/volux")
LOG = "python-package"


def sources():
    """Returns the digest of its sources, those of the libraries among them."""
    return provenance.sources(True, FOLDERS)


def succeed(command):
    """Runs a script of ours, which says in a log what it does."""
    if commands.run(command, LOG).returncode != 0:
        raise Failure(f"{' '.join(map(str, command))} fails; see build/logs/{LOG}.log.")


def ingredients():
    """Returns what tells one wheel from another: its sources, and how they are built."""
    recipes = [ROOT / "CMakeLists.txt", ROOT / "pyproject.toml", *(ROOT / "cmake").iterdir()]
    built = b"".join(path.read_bytes() for path in sorted(recipes))
    return f"{sources()} {hashlib.sha256(built).hexdigest()}"


def wheel(is_fresh=False):
    """Returns the wheel, built anew if that is wanted or if what it is made of has changed."""
    made_of = DIST.with_suffix(".made-of")
    if is_fresh or not made_of.exists() or made_of.read_text(encoding="utf-8") != ingredients():
        made_of.unlink(missing_ok=True)
        succeed([ROOT / "scripts" / "python-wheel", DIST])
        made_of.write_text(ingredients(), encoding="utf-8")
    return next(DIST.glob("*.whl"))


def environment(group):
    """Returns Python in the environment of a group of python/requirements."""
    return f"{output_of([ROOT / 'scripts' / 'python-env', group], text=True).strip()}/bin/python"


def interpreter(group, is_fresh=False):
    """Returns Python in the environment of a group of python/requirements, with the wheel in it."""
    python = environment(group)
    succeed([python, "-m", "pip", "install", "--no-index", "--no-deps", "--force-reinstall",
             wheel(is_fresh)])
    return python
