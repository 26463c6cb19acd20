#include "volux/resample/AffineMap.h"

#include <algorithm>
#include <cmath>

#include "Matrix.h"
#include "exact/Rules.h"

namespace volux::resample {

namespace {

double determinant(const detail::Matrix& m)
{
    return (m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
            m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0])) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

}  // namespace

Position AffineMap::operator()(unsigned int i, unsigned int j, unsigned int k) const
{
    return (*this)(
        Position{static_cast<double>(i), static_cast<double>(j), static_cast<double>(k)});
}

Position AffineMap::operator()(const Position& index) const
{
    const auto coordinate = [&](const double(&row)[4]) {
        return exact::along(exact::rowStart(row, index.y, index.z), row[0], index.x);
    };
    return {coordinate(rows[0]), coordinate(rows[1]), coordinate(rows[2])};
}

AffineMap composed(const AffineMap& outer, const AffineMap& inner)
{
    const Position origin = outer(inner(0, 0, 0));
    const double origins[3] = {origin.x, origin.y, origin.z};
    AffineMap map;
    for (int row = 0; row < 3; ++row) {
        const double(&o)[4] = outer.rows[row];
        for (int column = 0; column < 3; ++column) {
            map.rows[row][column] = (o[0] * inner.rows[0][column] + o[1] * inner.rows[1][column]) +
                                    o[2] * inner.rows[2][column];
        }
        map.rows[row][3] = origins[row];
    }
    return map;
}

bool AffineMap::isInvertible() const
{
    detail::Matrix steps;
    for (int n = 0; n < 3; ++n) {
        for (const double element : rows[n]) {
            if (!std::isfinite(element)) {
                return false;
            }
        }
        std::copy_n(rows[n], 3, steps[n]);
    }
    detail::normalise(steps);
    return determinant(steps) != 0.0;
}

}  // namespace volux::resample
