"""The shared object of volux_resample exports its interface and nothing else.
Usage: check_exports.py LIBRARY
"""
import collections
import re
import subprocess
import sys

TYPES = ("double", "float", "int", "short", "unsigned int", "unsigned short", "unsigned char")
EXPECTED = collections.Counter(
    [f"{call}<{element}>" for element in TYPES
     for call in ("resample", "resample", "reslice", "resize", "resize")]
    + [f"sample<{element}, {result}>" for element in TYPES for result in {element, "double"}]
    + 2 * ["gridOfSize", "gridOfSpacing", "gridOfPlanes", "AffineMap::operator()"]
    + ["gridBetween", "gridOfCrop", "geometryOf", "planeAt", "planeThrough", "stackAlong",
       "planesAlong", "planesBetween", "Geometry::toWorld", "Geometry::toVoxels",
       "Geometry::refusal", "AffineMap::isInvertible", "ResampleRegion::support"])


def exported(library):
    listed = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    names = (re.match(r"\S+ . (.*)", line)[1] for line in listed.splitlines())
    # Without the result of a template, the name space and the arguments.
    return collections.Counter(
        re.sub(r"^(\S+ )?volux::resample::((?:\w+::)?(?:operator\(\)|\w+)(?:<[^>]*>)?)\(.*", r"\2",
               name) for name in names)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    found = exported(sys.argv[1])
    for name in found - EXPECTED:
        print(f"exported, but not part of the interface: {name}")
    for name in EXPECTED - found:
        print(f"not exported: {name}")
    sys.exit(0 if found == EXPECTED else 1)


main()
