"""The Python package as it is published, in an environment of its own."""
from . import commands, provenance
from .commands import ROOT, Failure, output_of

DIST = ROOT / "build" / "python" / "published"
FOLDERS = ("python/src", "python/volux")
LOG = "python-package"


def sources():
    """Returns the digest of its sources, those of the libraries among them."""
    return provenance.sources(True, FOLDERS)


def succeed(command):
    """Runs a script of ours, which says in a log what it does."""
    if commands.run(command, LOG).returncode != 0:
        raise Failure(f"{' '.join(map(str, command))} fails; see build/logs/{LOG}.log.")


def wheel(is_fresh):
    """Returns the wheel, built anew if that is wanted or if its sources have changed."""
    made_of = DIST / "made-of"
    if is_fresh or not made_of.exists() or made_of.read_text(encoding="utf-8") != sources():
        succeed([ROOT / "scripts" / "python-wheel", DIST])
        made_of.write_text(sources(), encoding="utf-8")
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
