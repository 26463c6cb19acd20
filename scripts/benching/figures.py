"""What the measurements of the bench share: their build, and tables."""
from proof import common
from proof.common import Failure, ROOT

BUILD = ROOT / "build" / "bench"
KEPT = ROOT / "docs" / "performance"
COMPILER = "g++-12"
FLAGS = "-O3 -DNDEBUG"  # those of CMake's Release


def build(*targets):
    """Builds programs as Release and nothing else asks for; gives the build's folder."""
    log = "bench"
    (common.LOGS / f"{log}.log").unlink(missing_ok=True)
    configure = ["cmake", "-S", ROOT, "-B", BUILD, "-G", "Ninja", "-DVOLUX_DEVELOPER_MODE=OFF",
                 "-DVOLUX_PROGRAMS=bench", f"-DCMAKE_CXX_COMPILER={COMPILER}",
                 "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS=",
                 f"-DCMAKE_CXX_FLAGS_RELEASE={FLAGS}"]
    for command in (configure, ["cmake", "--build", BUILD, "--target", *targets]):
        if common.run(command, log).returncode != 0:
            raise Failure("the programs of the bench cannot be built; see "
                          f"{common.LOGS.relative_to(ROOT)}/{log}.log.")
    return BUILD


def row(cells):
    return "| " + " | ".join(map(str, cells)) + " |"


def table(columns, rows):
    return [row(columns), row(["---"] + ["---:"] * (len(columns) - 1)), *map(row, rows), ""]
