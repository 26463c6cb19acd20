#include "NearestLabels.h"

#include <algorithm>

#include "FieldOfView.h"

namespace volux::resample::detail {

NearestLabels::NearestLabels(const Task& task) : centres_(task.centres), source_(task.source)
{
    source_.reading.kernel = Kernel::NEAREST;
    source_.reading.isLabels = false;
    source_.own = source_.ownNearest;
}

// Out of view a voxel is read that every brick holds, and replaced.
void NearestLabels::read(unsigned int first, unsigned int j, unsigned int k, unsigned int c,
                         std::size_t count, double* labels) const
{
    const ResampleRegion& region = source_.region;
    Block block = {};
    block.count = count;
    bool isOut[kBlock];
    for (std::size_t n = 0; n < count; ++n) {
        Position p = centres_(first + static_cast<unsigned int>(n), j, k);
        isOut[n] = source_.reading.edgeEnds && !isInView(p);
        if (isOut[n]) {
            p = {1.0 * region.brickX, 1.0 * region.brickY, 1.0 * region.brickZ};
        }
        block.x[n] = p.x;
        block.y[n] = p.y;
        block.z[n] = p.z;
    }
    source_.read(c, block);
    for (std::size_t n = 0; n < count; ++n) {
        labels[n] = isOut[n] ? source_.reading.outside.value : block.readings[n];
    }
}

bool NearestLabels::isInView(const Position& p) const
{
    const ResampleRegion& region = source_.region;
    return detail::isInView(p.x, region.sourceWidth) &&
           detail::isInView(p.y, region.sourceHeight) && detail::isInView(p.z, region.sourceDepth);
}

}  // namespace volux::resample::detail
