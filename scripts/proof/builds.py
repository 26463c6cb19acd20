"""How the programs of the proof are built."""
from evidence import commands
from evidence.commands import ROOT, install

BUILD = ROOT / "build" / "proof"


def build(name, compiler="g++", flags="", kind="Release", targets=("volux_core",), arguments=()):
    """Builds targets in build/proof/NAME and returns the folder."""
    return commands.build(
        BUILD / name, f"proof-{name.replace('/', '-')}", targets, "-DVOLUX_DEVELOPER_MODE=OFF",
        "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=OFF", f"-DCMAKE_CXX_COMPILER={compiler}",
        f"-DCMAKE_BUILD_TYPE={kind}", f"-DCMAKE_CXX_FLAGS={flags}", *arguments)


def release(*targets):
    """Builds programs by g++ as Release, in one folder for all checks that want no other flags."""
    install("build", "resample")
    return build("release", targets=targets, arguments=["-DVOLUX_RESAMPLE=ON"])
