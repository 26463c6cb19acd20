// The coordinates of columns, rows and slices, where a map runs along the axes.
#pragma once

#include <cstdint>
#include <vector>

#include "FieldOfView.h"
#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Resample.h"

namespace volux::resample::detail {

bool runsAlongAxes(const AffineMap& map);

// The positions of a box of a grid, axis by axis.
struct AxisTables {
    std::vector<double> x;  // padded with zeros to whole vectors, as the others are
    std::vector<double> y;
    std::vector<double> z;
    Range columns;  // those in view
    Range rows;
    Range slices;

    AxisTables(const AffineMap& map, const core::Rect& box);

    // Whether the map runs along the axes, the tables are short, and no position is far from zero.
    static bool serve(const AffineMap& map, const core::Rect& box);

    // Leaves in view what is inside the field of view of a region's source.
    void endEdges(const ResampleRegion& region);
};

}  // namespace volux::resample::detail
