// Maps and geometries as arrays: three rows of the factors of x, y and z and of a constant.
#pragma once

#include "Arrays.h"

namespace volux::python {

using Rows = nb::ndarray<const double, nb::shape<3, 4>, nb::c_contig, nb::device::cpu>;
using NewRows = nb::ndarray<nb::numpy, double, nb::shape<3, 4>>;

resample::AffineMap mapOf(const Rows& rows);

/// An array of Python's own.
nb::typed<nb::object, NewRows> rowsOf(const resample::AffineMap& map);

/// Where voxels lie whose indices `rows` takes to the world: with the lengths of the columns for
/// spacing and their directions, so that a spacing that is asked for is met exactly.
resample::Geometry geometryOf(const Rows& rows, const Extents& extents = {1, 1, 1});

void addGeometry(nb::module_& module);

}  // namespace volux::python
