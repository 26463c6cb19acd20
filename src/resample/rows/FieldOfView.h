// Where the replicated edge ends: half a voxel beyond the outer centres, as far as the voxels
// themselves reach.
#pragma once

#include <cstddef>

#include "volux/resample/Resample.h"

namespace volux::resample::detail {

// NaN is outside. Both ends are exact.
inline bool isInView(double coordinate, unsigned int extent)
{
    return coordinate >= -0.5 && coordinate < extent - 0.5;
}

// The indices from `first` to before `end`.
struct Range {
    std::size_t first;
    std::size_t end;

    bool isEmpty() const { return first >= end; }
    bool holds(std::size_t index) const { return first <= index && index < end; }
};

// Those of a range whose coordinates along one axis are in view. The coordinates of a row never
// turn back, so they are contiguous.
inline Range inView(Range range, const double* coordinates, unsigned int extent)
{
    while (!range.isEmpty() && !isInView(coordinates[range.first], extent)) {
        ++range.first;
    }
    while (!range.isEmpty() && !isInView(coordinates[range.end - 1], extent)) {
        --range.end;
    }
    return range;
}

// The coordinates of a box of a grid, which are those of its corners or between them.
struct Reach {
    Position least;
    Position greatest;
};

Reach reachOf(const AffineMap& map, const core::Rect& box);

// Whether all positions are in view of a region's source. A reach that has a NaN is not.
bool isInView(const Reach& reach, const ResampleRegion& region);

// Whether no position is, since one axis has none.
bool isOutOfView(const Reach& reach, const ResampleRegion& region);

}  // namespace volux::resample::detail
