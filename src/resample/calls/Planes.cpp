#include "volux/resample/Planes.h"

#include <cmath>
#include <limits>

#include "Vectors.h"
#include "volux/resample/Grid.h"

namespace volux::resample {

namespace {

using namespace detail;  // the operators of vectors

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Position kNowhere = {kNaN, kNaN, kNaN};
constexpr double kParallel = 0x1p-48;  // the sine of an angle that may be rounding alone

// At right angles to two unit vectors; NaN where they are parallel but for rounding.
Position perpendicular(const Position& u, const Position& v)
{
    const Position product = crossProduct(u, v);
    return dotProduct(product, product) > kParallel * kParallel ? unit(product) : kNowhere;
}

void setColumn(double (&matrix)[3][3], int column, const Position& v)
{
    matrix[0][column] = v.x;
    matrix[1][column] = v.y;
    matrix[2][column] = v.z;
}

Position columnOf(const AffineMap& map, int column)
{
    return {map.rows[0][column], map.rows[1][column], map.rows[2][column]};
}

Position columnOf(const double (&matrix)[3][3], int column)
{
    return {matrix[0][column], matrix[1][column], matrix[2][column]};
}

// One plane, whose origin is left to the caller.
Geometry planeOf(const Position& across, const Position& normal, unsigned int width,
                 unsigned int height, const core::VoxelSize& spacing)
{
    Geometry plane;
    plane.width = width;
    plane.height = height;
    plane.depth = 1;
    plane.spacing = spacing;
    setColumn(plane.direction, 0, across);
    setColumn(plane.direction, 1, crossProduct(normal, across));
    setColumn(plane.direction, 2, normal);
    return plane;
}

// The smallest rotation from one unit vector to another takes a vector at right angles to the first
// where a mirror between them takes it.
Position carried(const Position& up, const Position& from, const Position& to)
{
    const Position middle = unit(from + to);
    return up - middle * (2.0 * dotProduct(middle, up));
}

}  // namespace

Geometry planeAt(const Position& centre, const Position& normal, const Position& up,
                 unsigned int width, unsigned int height, const core::VoxelSize& spacing)
{
    const Position n = unit(normal);
    Geometry plane = planeOf(perpendicular(n, unit(up)), n, width, height, spacing);
    plane.origin = (centre - columnOf(plane.direction, 0) * (spacing.x * ((width - 1.0) * 0.5))) -
                   columnOf(plane.direction, 1) * (spacing.y * ((height - 1.0) * 0.5));
    return plane;
}

Geometry planeThrough(const Position& first, const Position& along, const Position& below,
                      unsigned int width, unsigned int height, const core::VoxelSize& spacing)
{
    const Position across = unit(along - first);
    const Position normal = perpendicular(across, unit(below - first));
    Geometry plane = planeOf(across, normal, width, height, spacing);
    plane.origin = first;
    return plane;
}

Geometry stackAlong(const Geometry& plane, const Position& direction, double distance,
                    unsigned int count)
{
    Geometry stack = plane;
    stack.depth = count;
    stack.spacing.z = distance;
    const Position normal =
        perpendicular(unit(columnOf(plane.direction, 0)), unit(columnOf(plane.direction, 1)));
    const Position step = unit(direction);
    const bool leaves = std::abs(dotProduct(normal, step)) > kParallel;
    setColumn(stack.direction, 2, leaves ? step : kNowhere);
    return stack;
}

std::vector<Geometry> planesAlong(const std::vector<Position>& points, const Position& up,
                                  unsigned int width, unsigned int height,
                                  const core::VoxelSize& spacing)
{
    std::vector<Geometry> planes;
    planes.reserve(points.size());
    Position before = {};
    Position upright = up;
    for (std::size_t n = 0; n < points.size(); ++n) {
        const Position& next = points[n + 1 < points.size() ? n + 1 : n];
        const Position tangent = unit(next - points[n > 0 ? n - 1 : n]);
        if (n > 0) {
            upright = carried(columnOf(planes.back().direction, 1) * -1.0, before, tangent);
        }
        planes.push_back(planeAt(points[n], tangent, upright, width, height, spacing));
        before = tangent;
    }
    return planes;
}

Planes planesBetween(const Geometry& output, const Geometry& source, unsigned int slab)
{
    const AffineMap map = gridBetween(output, source).map;
    Planes planes;
    planes.across = columnOf(map, 0);
    planes.down = columnOf(map, 1);
    planes.step = columnOf(map, 2) / slab;
    planes.origin = columnOf(map, 3) - planes.step * ((slab - 1.0) * 0.5);
    planes.width = output.width;
    planes.height = output.height;
    planes.count = output.depth;
    planes.spacing = output.spacing;
    return planes;
}

}  // namespace volux::resample
