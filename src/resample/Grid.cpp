#include "volux/resample/Grid.h"

#include <algorithm>
#include <cmath>

#include "Matrix.h"

namespace volux::resample {

namespace {

using detail::Exponents;
using detail::Matrix;
using detail::normalise;

// One axis of a change of size: output voxel i reads i * scale + offset.
struct AxisChange {
    unsigned int extent;
    double scale;
    double offset;
    double spacing;
};

AxisChange changeOf(unsigned int from, unsigned int to, double scale, double spacing, Align align)
{
    if (to == 1 || (from == 1 && align == Align::CENTRES)) {  // the middles meet
        return {to, scale, ((from - 1.0) - (to - 1.0) * scale) * 0.5, spacing};
    }
    return {to, scale, align == Align::EDGES ? 0.5 * scale - 0.5 : 0.0, spacing};
}

double scaleOfSize(unsigned int from, unsigned int to, Align align)
{
    if (align == Align::EDGES) {
        return static_cast<double>(from) / to;
    }
    // Without two centres to keep, the spacing stays.
    return from < 2 || to < 2 ? 1.0 : (from - 1.0) / (to - 1.0);
}

AxisChange changeOfSize(unsigned int from, unsigned int to, double spacing, Align align)
{
    const double scale = scaleOfSize(from, to, align);
    return changeOf(from, to, scale, spacing * scale, align);
}

// Whole steps in a number of them, of which rounding has taken none away.
double wholeSteps(double steps)
{
    const double nearest = std::round(steps);
    return std::abs(steps - nearest) <= nearest * 0x1p-50 ? nearest : std::floor(steps);
}

// Voxels `to` apart that cover what `count` voxels `from` apart do; 0 if no image holds so many.
unsigned int extentFor(unsigned int count, double from, double to, Align align)
{
    const double extent = align == Align::EDGES ? std::max(std::round(count * from / to), 1.0)
                                                : wholeSteps((count - 1.0) * from / to) + 1.0;
    return extent >= 1.0 && extent <= 2147483647.0 ? static_cast<unsigned int>(extent) : 0U;
}

AxisChange changeOfSpacing(unsigned int count, double from, double to, Align align)
{
    return changeOf(count, extentFor(count, from, to, align), to / from, to, align);
}

Grid gridOf(const AxisChange& x, const AxisChange& y, const AxisChange& z)
{
    Grid grid;
    grid.width = x.extent;
    grid.height = y.extent;
    grid.depth = z.extent;
    grid.spacing = core::VoxelSize(x.spacing, y.spacing, z.spacing);
    const AxisChange* const axes[] = {&x, &y, &z};
    for (int n = 0; n < 3; ++n) {
        grid.map.rows[n][n] = axes[n]->scale;
        grid.map.rows[n][3] = axes[n]->offset;
    }
    return grid;
}

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

// Takes vectors of the world apart into an image's directions, which may have any length.
class Directions {
public:
    explicit Directions(const Matrix& directions)
    {
        Matrix scaled;
        std::copy_n(&directions[0][0], 9, &scaled[0][0]);
        scales_ = normalise(scaled);
        invert(scaled, inverse_);
    }

    double along(int axis, double x, double y, double z) const
    {
        const double(&row)[3] = inverse_[axis];
        const int(&rows)[3] = scales_.rows;
        const double sum = row[0] * std::ldexp(x, -rows[0]) + row[1] * std::ldexp(y, -rows[1]) +
                           row[2] * std::ldexp(z, -rows[2]);
        return std::ldexp(sum, -scales_.columns[axis]);
    }

private:
    Matrix inverse_;
    Exponents scales_;
};

Position crossProduct(const Position& a, const Position& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

}  // namespace

Grid gridBetween(const Geometry& output, const Geometry& source)
{
    const double outputSpacing[3] = {output.spacing.x, output.spacing.y, output.spacing.z};
    const double sourceSpacing[3] = {source.spacing.x, source.spacing.y, source.spacing.z};
    const Directions directions(source.direction);
    const bool parallel =
        std::equal(&source.direction[0][0], &source.direction[0][0] + 9, &output.direction[0][0]);
    Grid grid;
    grid.width = output.width;
    grid.height = output.height;
    grid.depth = output.depth;
    grid.spacing = output.spacing;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            // Images that point the same way differ by exactly nothing in direction.
            const double turned = parallel ? (row == column ? 1.0 : 0.0)
                                           : directions.along(row, output.direction[0][column],
                                                              output.direction[1][column],
                                                              output.direction[2][column]);
            grid.map.rows[row][column] = turned * outputSpacing[column] / sourceSpacing[row];
        }
        grid.map.rows[row][3] =
            directions.along(row, output.origin.x - source.origin.x,
                             output.origin.y - source.origin.y, output.origin.z - source.origin.z) /
            sourceSpacing[row];
    }
    return grid;
}

Grid gridOfSize(const core::ImageSize& source, const core::VoxelSize& spacing, unsigned int width,
                unsigned int height, unsigned int depth, Align align)
{
    return gridOf(changeOfSize(source.width, width, spacing.x, align),
                  changeOfSize(source.height, height, spacing.y, align),
                  changeOfSize(source.depth, depth, spacing.z, align));
}

Grid gridOfSpacing(const core::ImageSize& source, const core::VoxelSize& spacing,
                   const core::VoxelSize& wanted, Align align)
{
    return gridOf(changeOfSpacing(source.width, spacing.x, wanted.x, align),
                  changeOfSpacing(source.height, spacing.y, wanted.y, align),
                  changeOfSpacing(source.depth, spacing.z, wanted.z, align));
}

Grid gridOfPlanes(const Planes& planes)
{
    Grid grid;
    grid.width = planes.width;
    grid.height = planes.height;
    grid.depth = planes.count;
    grid.spacing = planes.spacing;
    const bool alone = planes.step.x == 0.0 && planes.step.y == 0.0 && planes.step.z == 0.0;
    const Position step = alone ? crossProduct(planes.across, planes.down) : planes.step;
    const Position* const columns[4] = {&planes.across, &planes.down, &step, &planes.origin};
    for (int column = 0; column < 4; ++column) {
        grid.map.rows[0][column] = columns[column]->x;
        grid.map.rows[1][column] = columns[column]->y;
        grid.map.rows[2][column] = columns[column]->z;
    }
    return grid;
}

}  // namespace volux::resample
