// Which voxels of the source a box of the output reads.
#include <algorithm>
#include <cmath>

#include "Exact.h"
#include "Task.h"

namespace volux::resample::detail {

namespace {

struct Range {
    unsigned int first;
    unsigned int last;
};

// Each step of a position rounds, and rounding keeps the order: the least and the greatest
// coordinate of a box are those of its corners.
void extremes(const AffineMap& map, const core::Rect& box, Position& least, Position& greatest)
{
    for (int corner = 0; corner < 8; ++corner) {
        const Position p = map((corner & 1) != 0 ? box.xEnd : box.xStart,
                               (corner & 2) != 0 ? box.yEnd : box.yStart,
                               (corner & 4) != 0 ? box.zEnd : box.zStart);
        least = corner == 0 ? p
                            : Position{std::fmin(least.x, p.x), std::fmin(least.y, p.y),
                                       std::fmin(least.z, p.z)};
        greatest = corner == 0 ? p
                               : Position{std::fmax(greatest.x, p.x), std::fmax(greatest.y, p.y),
                                          std::fmax(greatest.z, p.z)};
    }
}

// Indices before the first neighbour of a position.
int before(Kernel kernel)
{
    return kernel == Kernel::CUBIC ? 1 : 0;
}

// The indices that the kernel reads along one axis, cut to those that there are. Where none is
// inside, Constant reads nothing, and Replication the nearer end.
Range read(Kernel kernel, double least, double greatest, unsigned int extent)
{
    constexpr double kNear = 0x1p30;
    const unsigned int last = extent - 1;
    if (!(std::abs(least) <= kNear && std::abs(greatest) <= kNear)) {
        return {0, last};  // indices may wrap, and clamp to either end
    }
    const double half = kernel == Kernel::NEAREST ? 0.5 : 0.0;
    const std::int64_t from = lowerVoxel(least + half) - before(kernel);
    const std::int64_t to = lowerVoxel(greatest + half) - before(kernel) + reach(kernel) - 1;
    const auto clamped = [&](std::int64_t index) {
        return static_cast<unsigned int>(
            std::clamp<std::int64_t>(index, 0, static_cast<std::int64_t>(last)));
    };
    return {clamped(from), clamped(to)};
}

}  // namespace

core::Rect supportOf(const AffineMap& map, const core::Rect& output, const ResampleRegion& region,
                     const Reading& reading)
{
    Position least = {};
    Position greatest = {};
    extremes(map, output, least, greatest);
    const Range x = read(reading.kernel, least.x, greatest.x, region.sourceWidth);
    const Range y = read(reading.kernel, least.y, greatest.y, region.sourceHeight);
    const Range z = read(reading.kernel, least.z, greatest.z, region.sourceDepth);
    return {x.first, x.last, y.first, y.last, z.first, z.last};
}

}  // namespace volux::resample::detail
