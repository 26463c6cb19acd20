#include "volux/resample/AffineMap.h"

#include <algorithm>
#include <cmath>

#include "Matrix.h"

namespace volux::resample {

namespace {

double coordinate(const double (&row)[4], double i, double j, double k)
{
    return ((row[3] + row[2] * k) + row[1] * j) + row[0] * i;
}

double determinant(const detail::Matrix& m)
{
    return (m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
            m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0])) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

}  // namespace

Position AffineMap::operator()(unsigned int i, unsigned int j, unsigned int k) const
{
    return {coordinate(rows[0], i, j, k), coordinate(rows[1], i, j, k),
            coordinate(rows[2], i, j, k)};
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
