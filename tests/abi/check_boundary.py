"""Compares the built shared object with the interface: what it exports, the order of the slots of its
tables, what it needs, and that nothing of it runs when it is loaded.

Usage: check_boundary.py SHARED_OBJECT
"""
import ctypes
import re
import subprocess
import sys
import unittest

import interface

LIBRARY = sys.argv.pop()


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def exported_symbols():
    """(mangled, address) of each defined dynamic symbol."""
    lines = output("nm", "-D", "--defined-only", LIBRARY).splitlines()
    return [(fields[2], int(fields[0], 16)) for fields in map(str.split, lines)]


def demangled(names):
    result = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True,
                            check=True)
    return result.stdout.splitlines()


def section_bytes(name):
    for line in output("readelf", "-SW", LIBRARY).splitlines():
        fields = line.replace("[ ", "[").split()
        if len(fields) > 5 and fields[1] == name:
            return int(fields[5], 16)
    return 0


def table_slots(table):
    """The functions that the virtual table of a class points to, in order."""
    names, addresses = zip(*exported_symbols())
    start = addresses[demangled(names).index(f"vtable for {table}")]
    slots = {}
    for line in output("readelf", "-rW", LIBRARY).splitlines():
        match = re.match(r"([0-9a-f]+)\s+[0-9a-f]+\s+R_\w+_(?:64|ABS64)\s+[0-9a-f]+\s+(\S+) \+ 0", line)
        if match:
            slots[int(match[1], 16)] = match[2]
    found = []
    slot = start + 16  # behind the offset to top and the type information
    while slot in slots and not slots[slot].startswith("_ZT"):
        found.append(slots[slot])
        slot += 8
    return demangled(found)


class Boundary(unittest.TestCase):
    def setUp(self):
        self.exported = [name for name, _ in exported_symbols()]
        self.names = set(demangled(self.exported))

    def test_every_entity_of_the_interface_is_exported(self):
        self.assertEqual(sorted(set(interface.everything()) - self.names), [])

    def test_nothing_else_is_exported(self):
        self.assertEqual(sorted(self.names - set(interface.everything())), [])

    def test_every_entity_resolves_in_another_program(self):
        module = ctypes.CDLL(LIBRARY)
        for name in self.exported:
            self.assertTrue(hasattr(module, name), name)

    def test_each_element_type_has_117_entities(self):
        for t in interface.ELEMENT_TYPES:
            self.assertEqual(len(set(interface.per_element_type(t))), 117)

    def test_both_constructors_and_every_destructor_of_a_policy_are_exported(self):
        for policy in ("8Constant", "11Replication", "15NearestNeighbor", "6Linear", "5Cubic"):
            prefix = f"_ZN5volux4core{policy}"
            for member in ("C1Ev", "C2Ev", f"C1ERKS1_", f"C2ERKS1_", "D0Ev", "D1Ev", "D2Ev"):
                self.assertIn(prefix + member, self.exported)

    def test_the_border_table_has_its_slots_in_order(self):
        self.assertEqual(table_slots(interface.BORDER_TABLE), interface.border_table_slots())

    def test_the_interpolator_table_has_its_slots_in_order(self):
        self.assertEqual(table_slots(interface.INTERPOLATOR_TABLE),
                         interface.interpolator_table_slots())

    def test_only_the_compilers_own_entry_stands_in_the_start_up_table(self):
        self.assertEqual(section_bytes(".init_array"), 8)
        self.assertEqual(section_bytes(".fini_array"), 8)
        self.assertEqual(section_bytes(".ctors"), 0)

    def test_no_symbol_keeps_the_module_loaded(self):
        for line in output("readelf", "--dyn-syms", "-W", LIBRARY).splitlines():
            self.assertNotIn(" UNIQUE ", line)

    def test_it_needs_the_standard_library_alone(self):
        needed = re.findall(r"NEEDED.*\[(\S+)\]", output("readelf", "-dW", LIBRARY))
        self.assertLessEqual(set(needed),
                             {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6"})
        self.assertIn("libstdc++.so.6", needed)

    def test_its_name_carries_the_version(self):
        self.assertIn("[libvolux_core.so.1]", output("readelf", "-dW", LIBRARY))
        self.assertTrue(LIBRARY.endswith("libvolux_core.so.1.1.0"), LIBRARY)


if __name__ == "__main__":
    unittest.main()
