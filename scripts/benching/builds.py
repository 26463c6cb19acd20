"""How the programs of the bench are built."""
from evidence import commands
from evidence.commands import ROOT

BUILD = ROOT / "build" / "bench"
COMPILER = "g++-12"
FLAGS = "-O3 -DNDEBUG"  # those of CMake's Release


def build(*targets):
    """Builds programs as Release and nothing else asks for, and returns the build's folder."""
    return commands.build(
        BUILD, "bench", targets, "-DVOLUX_DEVELOPER_MODE=OFF", "-DVOLUX_PROGRAMS=bench",
        f"-DCMAKE_CXX_COMPILER={COMPILER}", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS=",
        f"-DCMAKE_CXX_FLAGS_RELEASE={FLAGS}")
