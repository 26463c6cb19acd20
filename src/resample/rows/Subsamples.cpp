#include "Subsamples.h"

namespace volux::resample::detail {

AffineMap finerMap(const AffineMap& map, const Subsamples& n)
{
    AffineMap finer = map;
    if (countOf(n) == 1) {
        return finer;  // to the last bit, which the sums below may not keep of a -0.0
    }
    const double counts[] = {static_cast<double>(n.x), static_cast<double>(n.y),
                             static_cast<double>(n.z)};
    for (auto& row : finer.rows) {
        for (int axis = 0; axis < 3; ++axis) {
            row[axis] /= counts[axis];
            row[3] += row[axis] * ((1.0 - counts[axis]) * 0.5);
        }
    }
    return finer;
}

}  // namespace volux::resample::detail
