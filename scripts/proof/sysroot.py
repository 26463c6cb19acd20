"""Highway for another processor, unpacked where a cross compiler finds them.

Debian's own packages are taken, by an apt whose state is in the build folder: the machine's list
of architectures and its installed packages stay as they are.
"""
from evidence import commands
from evidence.commands import LOGS, ROOT, Failure

from .builds import BUILD

PACKAGES = ("libhwy-dev", "libhwy1")
LOG = "proof-sysroot"


def folder_of(architecture):
    return BUILD / f"sysroot-{architecture}"


def provide(architecture):
    """The folder that the packages of an architecture are unpacked in."""
    folder = folder_of(architecture)
    if (folder / "complete").exists():
        return folder
    for part in ("lists/partial", "cache/archives/partial", "packages"):
        (folder / part).mkdir(parents=True, exist_ok=True)
    apt = ["apt-get", "-o", f"APT::Architecture={architecture}",
           "-o", f"APT::Architectures={architecture}", "-o", f"Dir::State={folder}",
           "-o", f"Dir::Cache={folder / 'cache'}", "-o", "Dir::State::status=/dev/null"]
    do([*apt, "update"])
    do([*apt, "download", *PACKAGES], cwd=folder / "packages")
    for package in sorted((folder / "packages").glob("*.deb")):
        do(["dpkg-deb", "-x", package, folder])
    (folder / "complete").touch()
    return folder


def do(command, **options):
    if commands.run(command, LOG, **options).returncode != 0:
        raise Failure("Highway for another processor cannot be had (is there a network?); see "
                      f"{LOGS.relative_to(ROOT)}/{LOG}.log.")
