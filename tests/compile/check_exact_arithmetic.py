"""Builds volux_core with flags that change results: each must stop the build with the reason, and
contraction, which is merely overruled, must leave no fused instruction.

Usage: check_exact_arithmetic.py COMPILER CMAKE SOURCE_FOLDER
"""
import platform
import re
import subprocess
import sys
import tempfile
import unittest

FOLDER, CMAKE, COMPILER = sys.argv.pop(), sys.argv.pop(), sys.argv.pop()
REASON = "promises every result to the last bit"
FLAGS = ["-ffast-math", "-Ofast", "-funsafe-math-optimizations", "-fassociative-math",
         "-freciprocal-math", "-ffinite-math-only", "-fno-signed-zeros",
         "-fsingle-precision-constant"]
PARENT = """cmake_minimum_required(VERSION 3.18)
project(parent LANGUAGES CXX)
add_compile_options({options})
add_subdirectory("{folder}" volux_core)
"""


def run(*command):
    return subprocess.run(command, capture_output=True, text=True)


def configure(source, build, *definitions):
    return run(CMAKE, "-S", source, "-B", build, f"-DCMAKE_CXX_COMPILER={COMPILER}",
               "-DVOLUX_DEVELOPER_MODE=OFF", *definitions)


class ExactArithmetic(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = scratch.name

    def assert_refused(self, result):
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(REASON, " ".join(result.stderr.split()))  # CMake wraps the sentence

    def configure_under_parent(self, options):
        with open(f"{self.folder}/CMakeLists.txt", "w", encoding="utf-8") as out:
            out.write(PARENT.format(options=options, folder=FOLDER))
        return configure(self.folder, f"{self.folder}/build", "-DCMAKE_BUILD_TYPE=Release")

    def test_a_flag_that_changes_results_stops_the_configuration(self):
        for flag in FLAGS:
            with self.subTest(flag):
                self.assert_refused(configure(FOLDER, self.folder, f"-DCMAKE_CXX_FLAGS=-O2 {flag}"))

    def test_so_it_does_for_the_linker_which_would_add_start_up_code(self):
        self.assert_refused(configure(FOLDER, self.folder,
                                      "-DCMAKE_SHARED_LINKER_FLAGS=-ffast-math"))

    def test_so_it_does_in_a_parent_project(self):
        self.assert_refused(self.configure_under_parent("-freciprocal-math"))
        self.assert_refused(
            self.configure_under_parent('"$<$<COMPILE_LANGUAGE:CXX>:-fassociative-math>"'))

    def test_the_sources_refuse_as_well_for_other_build_systems(self):
        for flag in ("-ffast-math", "-Ofast", "-ffinite-math-only"):
            with self.subTest(flag):
                result = run(COMPILER, "-std=c++17", "-fsyntax-only", flag, f"-I{FOLDER}/include",
                             f"-I{FOLDER}/src", f"{FOLDER}/src/core/InterpolationType/Kernels.cpp")
                self.assertNotEqual(result.returncode, 0)
                self.assertIn(REASON, result.stderr)

    @unittest.skipUnless(platform.machine() == "x86_64", "looks for the instructions of x86-64")
    def test_no_parent_can_have_products_and_sums_fused(self):
        fuse = "-ffp-contract=off)\nadd_compile_options(-march=haswell -ffp-contract=fast"
        self.assertEqual(self.configure_under_parent(fuse).returncode, 0)
        build = f"{self.folder}/build"
        self.assertEqual(run(CMAKE, "--build", build, "--parallel", "2").returncode, 0)
        code = run("objdump", "-d", f"{build}/volux_core/libvolux_core.so").stdout
        self.assertRegex(code, r"\tv(add|mul)sd ")  # it is compiled for a machine that could
        self.assertIsNone(re.search(r"\tvfn?m(add|sub)", code))


if __name__ == "__main__":
    unittest.main()
