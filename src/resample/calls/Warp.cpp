#include "volux/resample/Warp.h"

#include <limits>

#include "Checks.h"
#include "Warps.h"
#include "resample/rows/Displacement.h"

namespace volux::resample {

namespace detail {

core::ErrorType displacementOf(const Warp& warp, std::optional<Displacement>& displacement)
{
    const core::ErrorType result = checkWarp(warp);
    if (result == core::SUCCESS) {
        displacement = {
            {untyped(warp.field), wholeOf(warp.field), Reading(), {}}, warp.toField, warp.toVoxels};
    }
    return result;
}

WarpedGrid warpedGrid(const Geometry& output, const Geometry& field, const Geometry& source,
                      VectorUnits units)
{
    const auto mapBetween = [](const Geometry& from, const Geometry& to) {
        return gridBetween(from, to).map;
    };
    WarpedGrid warped;
    warped.grid = gridBetween(output, units == VectorUnits::FIELD_VOXELS ? field : source);
    switch (units) {
        case VectorUnits::WORLD:
            warped.grid.map = output.toWorld();
            warped.warp.toField = field.toVoxels();
            warped.warp.toVoxels = source.toVoxels();
            break;
        case VectorUnits::SOURCE_VOXELS:
            warped.warp.toField = mapBetween(source, field);
            break;
        case VectorUnits::FIELD_VOXELS:
            warped.warp.toVoxels = mapBetween(field, source);
            break;
    }
    return warped;
}

}  // namespace detail

Position Warp::operator()(const Position& p) const
{
    std::optional<detail::Displacement> displacement;
    if (detail::displacementOf(*this, displacement) != core::SUCCESS) {
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        return {kNaN, kNaN, kNaN};
    }
    detail::Block block = {};  // padded with zeros
    block.x[0] = p.x;
    block.y[0] = p.y;
    block.z[0] = p.z;
    block.count = 1;
    detail::displace(*displacement, block);
    return {block.x[0], block.y[0], block.z[0]};
}

}  // namespace volux::resample
