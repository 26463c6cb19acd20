#include "Support.h"

#include <algorithm>
#include <cmath>

#include "exact/Rules.h"

namespace volux::resample::detail {

namespace {

struct Indices {
    unsigned int first;
    unsigned int last;
};

int firstNeighbour(Kernel kernel, double position)
{
    switch (kernel) {
        case Kernel::NEAREST:
            return exact::firstNeighbour<Kernel::NEAREST>(position);
        case Kernel::LINEAR:
            return exact::firstNeighbour<Kernel::LINEAR>(position);
        case Kernel::CUBIC:
            return exact::firstNeighbour<Kernel::CUBIC>(position);
    }
    __builtin_unreachable();  // there is no other kernel
}

// The indices that the kernel reads along one axis, cut to those that there are. Where none is
// inside, Constant reads nothing, and Replication the nearer end.
Indices read(Kernel kernel, double least, double greatest, unsigned int extent)
{
    if (!(std::abs(least) <= kNear && std::abs(greatest) <= kNear)) {
        return {0, extent - 1};  // indices may wrap, and clamp to either end
    }
    const int first = firstNeighbour(kernel, least);
    const int last = firstNeighbour(kernel, greatest) + reach(kernel) - 1;
    const auto clamped = [&](int index) {
        return static_cast<unsigned int>(exact::clamped(index, extent));
    };
    return {clamped(first), clamped(last)};
}

// What is read along one axis of a source whose edge ends. Positions on the far edge itself are out
// of view, and read what those before it do.
Indices readInView(Kernel kernel, double least, double greatest, unsigned int extent)
{
    const auto clamped = [extent](double position) {
        return std::fmin(std::fmax(position, -0.5), extent - 0.5);
    };
    return read(kernel, clamped(least), clamped(greatest), extent);
}

}  // namespace

core::Rect supportOf(const Reach& all, const ResampleRegion& region, const Reading& reading)
{
    const auto along = reading.edgeEnds ? readInView : read;
    const Indices x = along(reading.kernel, all.least.x, all.greatest.x, region.sourceWidth);
    const Indices y = along(reading.kernel, all.least.y, all.greatest.y, region.sourceHeight);
    const Indices z = along(reading.kernel, all.least.z, all.greatest.z, region.sourceDepth);
    if (reading.edgeEnds && isOutOfView(all, region)) {
        return {x.first, x.first, y.first, y.first, z.first, z.first};  // nothing, near by
    }
    return {x.first, x.last, y.first, y.last, z.first, z.last};
}

}  // namespace volux::resample::detail
