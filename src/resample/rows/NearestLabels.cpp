#include "NearestLabels.h"

#include <algorithm>
#include <memory>

#include "Displacement.h"
#include "exact/Rules.h"

namespace volux::resample::detail {

NearestLabels::NearestLabels(const Task& task) : task_(task), source_(task.source)
{
    source_.reading.kernel = Kernel::NEAREST;
    source_.reading.isLabels = false;
    source_.own = source_.ownNearest;
}

void NearestLabels::read(unsigned int first, unsigned int j, unsigned int k, unsigned int c,
                         std::size_t count, double* labels) const
{
    const auto& rows = task_.centres.rows;
    const auto start = [&](int axis) { return exact::rowStart(rows[axis], 1.0 * j, 1.0 * k); };
    // Not on the stack, which has a block of this call's samples already.
    const auto block = std::make_unique<Block>();
    block->count = count;
    fillPositions({start(0), start(1), start(2)}, {rows[0][0], rows[1][0], rows[2][0]}, first,
                  *block);
    if (task_.displacement) {
        displace(*task_.displacement, *block);
    }
    readWhereInView(source_, c, *block);
    std::copy_n(block->readings, count, labels);
}

}  // namespace volux::resample::detail
