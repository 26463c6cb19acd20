// Three by three numbers, as a map's steps or an image's directions.
#pragma once

#include <algorithm>
#include <cmath>

namespace volux::resample::detail {

using Matrix = double[3][3];

// Divides three numbers by the power of two that leaves the largest of them between 1/2 and 1, and
// returns its exponent. Zeros stay.
inline int normalise(double& a, double& b, double& c)
{
    int exponent = 0;
    std::frexp(std::max(std::abs(a), std::max(std::abs(b), std::abs(c))), &exponent);
    for (double* const number : {&a, &b, &c}) {
        *number = std::ldexp(*number, -exponent);
    }
    return exponent;
}

// The exponents of the powers of two that a matrix was divided by.
struct Exponents {
    int rows[3];
    int columns[3];
};

// Divides each row and then each column by a power of two, so that the products of a determinant
// neither overflow nor lose digits below the least double. Nothing else of its rounding changes.
inline Exponents normalise(Matrix& m)
{
    Exponents exponents = {};
    for (int n = 0; n < 3; ++n) {
        exponents.rows[n] = normalise(m[n][0], m[n][1], m[n][2]);
    }
    for (int n = 0; n < 3; ++n) {
        exponents.columns[n] = normalise(m[0][n], m[1][n], m[2][n]);
    }
    return exponents;
}

}  // namespace volux::resample::detail
