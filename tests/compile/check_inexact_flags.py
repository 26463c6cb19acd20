"""Configures the module with flags that change results: each has to stop the build with the reason.

Usage: check_inexact_flags.py COMPILER CMAKE SOURCE_FOLDER
"""
import subprocess
import sys
import tempfile

compiler, cmake, folder = sys.argv[1:]
REASON = "promises every result to the last bit"
FLAGS = ["-ffast-math", "-Ofast", "-funsafe-math-optimizations", "-fassociative-math",
         "-freciprocal-math", "-ffinite-math-only", "-fno-signed-zeros"]


def configure_fault(flag):
    with tempfile.TemporaryDirectory() as build:
        result = subprocess.run(
            [cmake, "-S", folder, "-B", build, f"-DCMAKE_CXX_COMPILER={compiler}",
             f"-DCMAKE_CXX_FLAGS=-O2 {flag}", "-DVOLUX_DEVELOPER_MODE=OFF"],
            capture_output=True, text=True)
    # CMake wraps the sentence.
    said = " ".join(result.stderr.split())
    return None if result.returncode != 0 and REASON in said else f"cmake accepts {flag}"


def source_fault(flag):
    """The sources refuse as well, for builds that are not CMake's."""
    result = subprocess.run(
        [compiler, "-std=c++17", "-fsyntax-only", flag, f"-I{folder}/include",
         f"{folder}/src/core/InterpolationType/Kernels.cpp"], capture_output=True, text=True)
    return None if result.returncode != 0 and REASON in result.stderr else f"the sources accept {flag}"


faults = [configure_fault(flag) for flag in FLAGS]
faults += [source_fault(flag) for flag in ("-ffast-math", "-Ofast", "-ffinite-math-only")]
faults = [fault for fault in faults if fault]
print("\n".join(faults) or f"{len(FLAGS)} flags refused")
sys.exit(bool(faults))
