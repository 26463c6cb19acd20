#include "FieldOfView.h"

#include <cmath>

namespace volux::resample::detail {

// Each step of a position rounds, and rounding keeps the order: the least and the greatest
// coordinate of a box are those of its corners. A corner without a number says nothing; another one
// is infinite then.
Reach reachOf(const AffineMap& map, const core::Rect& box)
{
    Reach reach = {};
    for (int corner = 0; corner < 8; ++corner) {
        const Position p = map((corner & 1) != 0 ? box.xEnd : box.xStart,
                               (corner & 2) != 0 ? box.yEnd : box.yStart,
                               (corner & 4) != 0 ? box.zEnd : box.zStart);
        Position& least = reach.least;
        Position& greatest = reach.greatest;
        least = corner == 0 ? p
                            : Position{std::fmin(least.x, p.x), std::fmin(least.y, p.y),
                                       std::fmin(least.z, p.z)};
        greatest = corner == 0 ? p
                               : Position{std::fmax(greatest.x, p.x), std::fmax(greatest.y, p.y),
                                          std::fmax(greatest.z, p.z)};
    }
    return reach;
}

bool isInView(const Reach& reach, const ResampleRegion& region)
{
    const auto isAll = [](double least, double greatest, unsigned int extent) {
        return isInView(least, extent) && isInView(greatest, extent);
    };
    return isAll(reach.least.x, reach.greatest.x, region.sourceWidth) &&
           isAll(reach.least.y, reach.greatest.y, region.sourceHeight) &&
           isAll(reach.least.z, reach.greatest.z, region.sourceDepth);
}

bool isOutOfView(const Reach& reach, const ResampleRegion& region)
{
    const auto isNone = [](double least, double greatest, unsigned int extent) {
        return greatest < -0.5 || least >= extent - 0.5;
    };
    return isNone(reach.least.x, reach.greatest.x, region.sourceWidth) ||
           isNone(reach.least.y, reach.greatest.y, region.sourceHeight) ||
           isNone(reach.least.z, reach.greatest.z, region.sourceDepth);
}

}  // namespace volux::resample::detail
