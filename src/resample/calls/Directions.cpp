#include "Directions.h"

#include <algorithm>
#include <cmath>

namespace volux::resample::detail {

namespace {

// By Cramer's rule, column by column. Not finite where the determinant is 0 but for rounding: tiny
// beside the products that it is the sum of.
void invert(const Matrix& m, Matrix& inverse)
{
    Matrix sizes;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const int r1 = (column + 1) % 3;
            const int r2 = (column + 2) % 3;
            const int c1 = (row + 1) % 3;
            const int c2 = (row + 2) % 3;
            inverse[row][column] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
            sizes[row][column] = std::abs(m[r1][c1] * m[r2][c2]) + std::abs(m[r1][c2] * m[r2][c1]);
        }
    }
    const double sum = m[0][0] * inverse[0][0] + m[0][1] * inverse[1][0] + m[0][2] * inverse[2][0];
    const double size = std::abs(m[0][0]) * sizes[0][0] + std::abs(m[0][1]) * sizes[1][0] +
                        std::abs(m[0][2]) * sizes[2][0];
    const double determinant = std::abs(sum) > size * 0x1p-48 ? sum : 0.0;
    for (auto& row : inverse) {
        for (double& element : row) {
            element /= determinant;
        }
    }
}

}  // namespace

Directions::Directions(const Matrix& directions)
{
    Matrix scaled;
    std::copy_n(&directions[0][0], 9, &scaled[0][0]);
    scales_ = normalise(scaled);
    invert(scaled, inverse_);
}

bool Directions::spanVolume() const
{
    return std::all_of(&inverse_[0][0], &inverse_[0][0] + 9,
                       [](double element) { return std::isfinite(element); });
}

double Directions::inverse(int row, int column) const
{
    return std::ldexp(inverse_[row][column], -scales_.rows[column] - scales_.columns[row]);
}

double Directions::along(int axis, double x, double y, double z) const
{
    const double(&row)[3] = inverse_[axis];
    const int(&rows)[3] = scales_.rows;
    const double sum = row[0] * std::ldexp(x, -rows[0]) + row[1] * std::ldexp(y, -rows[1]) +
                       row[2] * std::ldexp(z, -rows[2]);
    return std::ldexp(sum, -scales_.columns[axis]);
}

}  // namespace volux::resample::detail
