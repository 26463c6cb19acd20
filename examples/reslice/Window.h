// From intensities to greys.
#pragma once

#include "Volume.h"

namespace reslice {

/// Intensities up to `low` are black, from `high` on white; NaN is black.
struct Window {
    double low, high;

    /// Between 0 and 1.
    double grey(double intensity) const;
    double intensityOf(double grey) const { return low + grey * (high - low); }

    static Window ofLevel(double level, double width)
    {
        return {level - width / 2, level + width / 2};
    }
};

/// Leaves out the darkest and the brightest voxels, so that a few outliers do not flatten the rest.
Window windowOf(const Volume& volume);

}  // namespace reslice
