"""scripts/check-wheel finds the faults that are planted for it. No wheel is built."""
import importlib.util
import tempfile
import unittest
import zipfile
from importlib.machinery import SourceFileLoader
from pathlib import Path
from unittest import mock

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "check-wheel"
loader = SourceFileLoader("check_wheel", str(SCRIPT))
check_wheel = importlib.util.module_from_spec(importlib.util.spec_from_loader("check_wheel", loader))
loader.exec_module(check_wheel)

NAME = "volux-1.0-cp310-abi3-manylinux_2_34_x86_64.whl"
MODULE = "volux/_core.abi3.so"
TYPES = {"volux/_core.pyi": "", "volux/py.typed": ""}
LICENCES = {f"volux-1.0.dist-info/licenses/python/{name}": f"(c) {holder}"
            for name, holder in check_wheel.LICENCES.items()}
FILES = {MODULE: "", **TYPES, **LICENCES}


class Wheel(unittest.TestCase):
    def faults(self, files=FILES, name=NAME, needed=("libc.so.6",), offered=("PyInit__core",)):
        with tempfile.TemporaryDirectory() as folder, mock.patch.multiple(
                check_wheel, needed=lambda _: set(needed), offered=lambda _: set(offered)):
            path = Path(folder) / name
            with zipfile.ZipFile(path, "w") as wheel:
                for member, text in files.items():
                    wheel.writestr(member, text)
            return list(check_wheel.faults_of(path))

    def without(self, part):
        return {name: text for name, text in FILES.items() if part not in name}

    def test_a_good_one_passes(self):
        self.assertEqual(self.faults(), [])

    def test_a_library_beyond_the_run_time_is_named(self):
        self.assertIn("libhwy.so.1", *self.faults(needed=("libc.so.6", "libhwy.so.1")))

    def test_a_name_that_others_can_see_is_named(self):
        self.assertIn("_ZN5volux", *self.faults(offered=("PyInit__core", "_ZN5volux")))

    def test_a_licence_that_is_missing_or_empty_is_named(self):
        self.assertIn("highway.txt", *self.faults(self.without("highway")))
        empty = {name: "" if "nanobind" in name else text for name, text in FILES.items()}
        self.assertIn("nanobind.txt", *self.faults(empty))

    def test_types_that_are_missing_are_named(self):
        self.assertIn("py.typed", *self.faults(self.without("py.typed")))

    def test_another_compiled_file_is_named(self):
        self.assertIn("libhwy.so.1", self.faults(FILES | {"volux.libs/libhwy.so.1": ""})[0])
        self.assertEqual(len(self.faults(self.without(MODULE))), 1)

    def test_a_wheel_for_one_python_or_one_machine_is_named(self):
        self.assertIn("cp311", *self.faults(name="volux-1.0-cp311-cp311-manylinux_2_34_x86_64.whl"))
        self.assertIn("linux", *self.faults(name="volux-1.0-cp310-abi3-linux_x86_64.whl"))

    def test_one_that_is_too_large_fails(self):
        with mock.patch.object(check_wheel, "MOST_BYTES", 100):
            self.assertIn("more than 100", *self.faults())


if __name__ == "__main__":
    unittest.main()
