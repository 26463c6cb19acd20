"""The shared object of volux_resample exports its interface and nothing else.
Usage: check_exports.py LIBRARY
"""
import collections
import re
import subprocess
import sys

EXPECTED = collections.Counter(
    2 * ["gridOfSize", "gridOfSpacing", "gridOfPlanes", "AffineMap::operator()",
         "ResampleRegion::support"]
    + ["describe", "gridBetween", "gridOfCrop", "geometryOf", "planeAt", "planeThrough",
       "stackAlong", "planesAlong", "planesBetween", "Geometry::toWorld", "Geometry::toVoxels",
       "Geometry::refusal", "AffineMap::isInvertible", "composed", "Warp::operator()",
       "detail::warpedGrid", "detail::fill", "detail::makeSampler", "detail::sampleAt",
       "detail::sampleGradientAt", "detail::viewOfImage", "Labels::get", "LABELS"]
    + 7 * 3 * ["Labels::operator()"]  # each element type with each border
    + [f"{what} for {of}" for what in ("typeinfo", "typeinfo name", "vtable")
       for of in ("Labels", "interpolator_t<Labels>")]
    # For a base without a virtual function that is in one library alone.
    + [f"{what} for volux::core::Interpolator" for what in ("typeinfo", "typeinfo name")])


def exported(library):
    listed = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    names = (re.match(r"\S+ . (.*)", line)[1] for line in listed.splitlines())
    # Without the name space and the arguments, and without what a template is made of.
    names = (re.sub(r"volux::core::Interpolator::(interpolator_t)<volux::resample::(\w+), .*>",
                    r"\1<\2>", name) for name in names)
    names = (re.sub(r"^(?:[\w ]+ )?volux::resample::(\w+::operator\(\))<.*", r"\1", name)
             for name in names)
    return collections.Counter(
        re.sub(r"volux::resample::((?:\w+::)?(?:operator\(\)|\w+))(?:\(.*|$)", r"\1", name)
        for name in names)


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
