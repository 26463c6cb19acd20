"""How the programs of the proof are built."""
from evidence import commands
from evidence.commands import ROOT, install

BUILD = ROOT / "build" / "proof"
release_folder = None  # one that is not in BUILD


def build(name, compiler="g++", flags="", kind="Release", targets=("volux_core",), arguments=()):
    """Builds targets in build/proof/NAME and returns the folder."""
    return commands.build(
        BUILD / name, f"proof-{name.replace('/', '-')}", targets, "-DVOLUX_DEVELOPER_MODE=OFF",
        "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=OFF", f"-DCMAKE_CXX_COMPILER={compiler}",
        f"-DCMAKE_BUILD_TYPE={kind}", f"-DCMAKE_CXX_FLAGS={flags}", *arguments)


def share_with_tests():
    """From here on, release() goes on in scripts/test's folder, where the libraries are built
    already, with assertions: compiling them once more would take minutes."""
    global release_folder
    release_folder = ROOT / "build" / "release-g++-Release"


def release(*targets):
    """Builds programs by g++ as Release, in one folder for all checks that want no other flags."""
    install("build", "resample")
    if release_folder is not None:
        return commands.build(release_folder, "proof-release", targets, "--preset", "release",
                              "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=ON",
                              "-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_BUILD_TYPE=Release")
    return build("release", targets=targets, arguments=["-DVOLUX_RESAMPLE=ON"])
