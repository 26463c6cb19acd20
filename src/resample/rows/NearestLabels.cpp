#include "NearestLabels.h"

#include "FieldOfView.h"
#include "exact/Rules.h"

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
    const auto& rows = centres_.rows;
    const auto start = [&](int axis) { return exact::rowStart(rows[axis], 1.0 * j, 1.0 * k); };
    Block block;
    block.count = count;
    fillPositions({start(0), start(1), start(2)}, {rows[0][0], rows[1][0], rows[2][0]}, first,
                  block);
    bool isOut[kBlock] = {};
    for (std::size_t n = 0; source_.reading.edgeEnds && n < count; ++n) {
        isOut[n] = !isInView({block.x[n], block.y[n], block.z[n]});
        if (isOut[n]) {
            block.x[n] = source_.region.brickX;
            block.y[n] = source_.region.brickY;
            block.z[n] = source_.region.brickZ;
        }
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
