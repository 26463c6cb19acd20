// The maps, grids and planes that calls on whole volumes are asked for.
#pragma once

#include <array>

#include "Corpus.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Planes.h"
#include "volux/resample/Resample.h"

namespace volux::digest {

using resample::AffineMap;
using resample::Grid;
using resample::Planes;
using resample::Slab;

inline double step(Generator& random)
{
    return (random.fraction() - 0.5) * 3.0;
}

inline double start(Generator& random, unsigned int extent)
{
    return wholeCoordinate(random, extent, 2) + random.fraction();
}

inline AffineMap obliqueMap(Generator& random, const Extents& extents)
{
    AffineMap map;
    const std::array<unsigned int, 3> extent{extents.width, extents.height, extents.depth};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column)
            map.rows[row][column] = step(random);
        map.rows[row][3] = start(random, extent[row]);
    }
    return map;
}

// Whole, half and odd steps of either sign, zeros of either sign beside them.
inline AffineMap axisMap(Generator& random, const Extents& extents)
{
    constexpr std::array<double, 8> steps{1.0, -1.0, 0.5, 2.0, 0.37, -0.83, 1.6, 0.125};
    constexpr std::array<double, 5> starts{0.0, -0.5, 1.25, -2.0, 0.4};
    AffineMap map;
    const std::array<unsigned int, 3> extent{extents.width, extents.height, extents.depth};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column)
            map.rows[row][column] = random.below(2) == 0 ? 0.0 : -0.0;
        map.rows[row][row] = random.anyOf(steps);
        const double first = random.anyOf(starts);
        const bool isBackward = map.rows[row][row] < 0.0;
        map.rows[row][3] = isBackward ? extent[row] - first : first;
    }
    return map;
}

// A map whose positions pass what is finite, and the ends of the 32-bit range.
inline AffineMap farMap(Generator& random, const Extents& extents)
{
    constexpr std::array<double, 5> sizes{0x1p31, 0x1p30, 1e12, 1e100, 1e307};
    AffineMap map = random.below(2) == 0 ? obliqueMap(random, extents) : axisMap(random, extents);
    const double size = random.anyOf(sizes);
    for (auto& row : map.rows)
        for (std::size_t column = 0; column < 3; ++column)
            row[column] *= size;
    return map;
}

inline Grid gridOf(const AffineMap& map, Generator& random)
{
    Grid grid;
    grid.width = 1 + random.below(21);
    grid.height = 1 + random.below(5);
    grid.depth = 1 + random.below(3);
    grid.map = map;
    return grid;
}

inline resample::Position anyDirection(Generator& random)
{
    const double x = step(random);
    const double y = step(random);
    return {x, y, step(random)};
}

inline Planes somePlanes(Generator& random, const Extents& extents)
{
    Planes planes;
    const double x = start(random, extents.width);
    const double y = start(random, extents.height);
    planes.origin = {x, y, start(random, extents.depth)};
    planes.across = anyDirection(random);
    planes.down = anyDirection(random);
    planes.step = anyDirection(random);
    planes.width = 1 + random.below(17);
    planes.height = 1 + random.below(5);
    planes.count = 1 + random.below(2);
    return planes;
}

inline Slab someSlab(Generator& random)
{
    using resample::Projection;
    const auto projection = random.anyOf<Projection>(
        std::array<Projection, 3>{Projection::MEAN, Projection::MAXIMUM, Projection::MINIMUM});
    return {1 + random.below(4), projection};
}

}  // namespace volux::digest
