#include "AxisTables.h"

#include <cmath>
#include <functional>

#include "resample/vectors/Channel.h"
#include "resample/vectors/Lines.h"

namespace volux::resample::detail {

namespace {

// Bounds the three tables together, so that none is as large as a volume, even a thin one.
constexpr std::uint64_t kLongestTables = 1U << 20U;

bool isNear(const Position& p)
{
    const auto near = [](double coordinate) { return std::abs(coordinate) <= kNear; };
    return near(p.x) && near(p.y) && near(p.z);
}

std::vector<double> coordinates(unsigned int extent, const std::function<double(unsigned int)>& at)
{
    std::vector<double> all(extent + kTile);
    for (unsigned int n = 0; n < extent; ++n) {
        all[n] = at(n);
    }
    return all;
}

}  // namespace

bool runsAlongAxes(const AffineMap& map)
{
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (row != column && map.rows[row][column] != 0.0) {
                return false;
            }
        }
    }
    return true;
}

bool AxisTables::serve(const AffineMap& map, const core::Rect& box)
{
    const std::uint64_t entries = std::uint64_t{box.width()} + box.height() + box.depth();
    // Coordinates run from one corner's to the other's.
    return entries <= kLongestTables && runsAlongAxes(map) &&
           isNear(map(box.xStart, box.yStart, box.zStart)) &&
           isNear(map(box.xEnd, box.yEnd, box.zEnd));
}

// The products with the other two indices are zeros of one sign: any index will do.
AxisTables::AxisTables(const AffineMap& map, const core::Rect& box)
    : x(coordinates(box.width(), [&](unsigned int n) { return map(box.xStart + n, 0, 0).x; })),
      y(coordinates(box.height(), [&](unsigned int n) { return map(0, box.yStart + n, 0).y; })),
      z(coordinates(box.depth(), [&](unsigned int n) { return map(0, 0, box.zStart + n).z; })),
      columns{0, box.width()},
      rows{0, box.height()},
      slices{0, box.depth()}
{
}

void AxisTables::endEdges(const ResampleRegion& region)
{
    columns = inView(columns, x.data(), region.sourceWidth);
    rows = inView(rows, y.data(), region.sourceHeight);
    slices = inView(slices, z.data(), region.sourceDepth);
}

}  // namespace volux::resample::detail
