#include "volux/resample/Geometry.h"

#include <algorithm>
#include <cmath>

#include "Checks.h"
#include "Directions.h"

namespace volux::resample {

namespace {

bool isFinite(const Position& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

bool spanVolume(const detail::Matrix& directions)
{
    return std::all_of(&directions[0][0], &directions[0][0] + 9,
                       [](double element) { return std::isfinite(element); }) &&
           detail::Directions(directions).spanVolume();
}

}  // namespace

AffineMap Geometry::toWorld() const
{
    const double spacings[3] = {spacing.x, spacing.y, spacing.z};
    const double origins[3] = {origin.x, origin.y, origin.z};
    AffineMap map;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            map.rows[row][column] = direction[row][column] * spacings[column];
        }
        map.rows[row][3] = origins[row];
    }
    return map;
}

AffineMap Geometry::toVoxels() const
{
    const double spacings[3] = {spacing.x, spacing.y, spacing.z};
    const detail::Directions directions(direction);
    AffineMap map;
    for (int n = 0; n < 3; ++n) {
        double(&row)[4] = map.rows[n];
        for (int column = 0; column < 3; ++column) {
            row[column] = directions.inverse(n, column) / spacings[n];
        }
        row[3] = -((row[0] * origin.x + row[1] * origin.y) + row[2] * origin.z);
    }
    return map;
}

const char* Geometry::refusal() const
{
    if (!detail::isSpacing(spacing)) {
        return "The spacing must be finite and above 0 along each axis.";
    }
    if (!isFinite(origin)) {
        return "The origin must be finite.";
    }
    if (!spanVolume(direction)) {
        return "The directions must be finite and span a volume: none may be 0 or lie in the plane "
               "of the other two.";
    }
    if (!toWorld().isInvertible() || !toVoxels().isInvertible()) {
        return "The directions times the spacing, or their inverse, exceed what a double holds.";
    }
    return nullptr;
}

}  // namespace volux::resample
