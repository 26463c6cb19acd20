"""How the programs of the proof are built."""
from evidence import commands
from evidence.commands import ROOT, install

BUILD = ROOT / "build" / "proof"
# Highway would choose the widest instruction set of the machine: the others are not compiled.
FUZZED = ("-O1 -gline-tables-only -fno-omit-frame-pointer -fno-sanitize-recover=all "
          "-fsanitize=fuzzer-no-link,address,undefined,float-cast-overflow "
          "-DHWY_COMPILE_ONLY_STATIC -march=native")
shares = False  # the folders of scripts/test


def build(name, compiler="g++", flags="", kind="Release", targets=("volux_core",), arguments=()):
    """Builds targets in build/proof/NAME and returns the folder."""
    return commands.build(
        BUILD / name, f"proof-{name.replace('/', '-')}", targets, "-DVOLUX_DEVELOPER_MODE=OFF",
        "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=OFF", f"-DCMAKE_CXX_COMPILER={compiler}",
        f"-DCMAKE_BUILD_TYPE={kind}", f"-DCMAKE_CXX_FLAGS={flags}", *arguments)


def share_with_tests():
    """From here on, release() and fuzzers() go on in scripts/test's folders, where the libraries are
    built already: compiling them once more would take minutes. They have assertions then, and what
    the fuzzers use has the narrowest instruction set and no counters of what is reached in it."""
    global shares
    shares = True


def tests_folder(preset, compiler):
    return ROOT / "build" / f"{preset}-{compiler}-Release"


def build_beside_tests(preset, compiler, targets):
    return commands.build(
        tests_folder(preset, compiler), f"proof-{preset}-{compiler}", targets, "--preset", preset,
        "-DVOLUX_PROGRAMS=proof", "-DVOLUX_RESAMPLE=ON", f"-DCMAKE_CXX_COMPILER={compiler}",
        "-DCMAKE_BUILD_TYPE=Release")


def release(*targets, compiler="g++"):
    """Builds programs as Release, in one folder for all checks that want no other flags."""
    install("build", "resample")
    if shares:
        return build_beside_tests("release", compiler, targets)
    return build("release" if compiler == "g++" else f"release-{compiler}", compiler,
                 targets=targets, arguments=["-DVOLUX_RESAMPLE=ON"])


def fuzzers_folder():
    return tests_folder("asan", "clang++") if shares else BUILD / "fuzz"


def fuzzers(*targets):
    """Builds programs for libFuzzer, which is a part of clang++."""
    install("build", "test", "resample")
    if shares:
        return build_beside_tests("asan", "clang++", targets)
    return build("fuzz", "clang++", FUZZED, "None", targets, ["-DVOLUX_RESAMPLE=ON"])
