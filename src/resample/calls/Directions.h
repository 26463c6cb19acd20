// An image's directions, inverted.
#pragma once

#include "Matrix.h"

namespace volux::resample::detail {

// Takes vectors of the world apart into an image's directions, which may have any length.
class Directions {
public:
    explicit Directions(const Matrix& directions);

    // Whether they span a volume, and not by rounding alone.
    bool spanVolume() const;

    // An element of the inverse.
    double inverse(int row, int column) const;

    // How far a vector goes along one of them.
    double along(int axis, double x, double y, double z) const;

private:
    Matrix inverse_;  // of the scaled directions
    Exponents scales_;
};

}  // namespace volux::resample::detail
