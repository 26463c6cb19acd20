// Images in the world, as an oracle: oblique, left-handed, and far from the index 0.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "support/Seeded.h"
#include "volux/resample/Geometry.h"

namespace volux::test {

using resample::Geometry;
using resample::Position;

using Point = std::array<double, 3>;
using Matrix = std::array<Point, 3>;

/// A number from -limit to limit, with a fraction.
inline double number(Random& random, double limit)
{
    return limit * (static_cast<double>(random.below(2'000'001)) / 1e6 - 1.0);
}

/// Where an image is, as ITK and VTK say it.
struct Place {
    Point spacing, origin;
    Matrix direction;
    std::array<int, 3> first;  ///< the index that memory begins with
    std::array<unsigned int, 3> size;
};

/// Three orthogonal axes, none of them along an axis of the world.
inline Matrix obliqueAxes(Random& random, bool isLeftHanded)
{
    Matrix axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, isLeftHanded ? -1.0 : 1.0}}};
    for (unsigned int turn = 0; turn < 3; ++turn) {
        const double angle = number(random, 3.0);
        for (auto& row : axes) {
            const double across = row[turn], down = row[(turn + 1) % 3];
            row[turn] = std::cos(angle) * across - std::sin(angle) * down;
            row[(turn + 1) % 3] = std::sin(angle) * across + std::cos(angle) * down;
        }
    }
    return axes;
}

inline Place somePlace(Random& random, bool isLeftHanded)
{
    Place place{};
    place.direction = obliqueAxes(random, isLeftHanded);
    for (unsigned int axis = 0; axis < 3; ++axis) {
        place.spacing[axis] = 1.6 + number(random, 1.5);
        place.origin[axis] = number(random, 300.0);
        place.first[axis] = static_cast<int>(random.below(40)) - 20;
        place.size[axis] = random.between(1, 7);
    }
    return place;
}

/// Another place with the same middle.
inline Place placeAcross(const Place& place, Random& random, bool isLeftHanded)
{
    Place across = somePlace(random, isLeftHanded);
    const auto toMiddle = [](const Place& of, unsigned int row) {
        double sum = 0;
        for (unsigned int axis = 0; axis < 3; ++axis)
            sum += of.direction[row][axis] * of.spacing[axis] *
                   (of.first[axis] + 0.5 * (of.size[axis] - 1));
        return sum;
    };
    for (unsigned int row = 0; row < 3; ++row)
        across.origin[row] = place.origin[row] + toMiddle(place, row) - toMiddle(across, row);
    return across;
}

/// The world point of a voxel, counted from the first one of the memory: the definition of
/// Geometry.
inline Point worldOf(const Geometry& geometry, double i, double j, double k)
{
    const Point steps = {geometry.spacing.x * i, geometry.spacing.y * j, geometry.spacing.z * k};
    Point world = {geometry.origin.x, geometry.origin.y, geometry.origin.z};
    for (unsigned int row = 0; row < 3; ++row)
        for (unsigned int axis = 0; axis < 3; ++axis)
            world[row] += geometry.direction[row][axis] * steps[axis];
    return world;
}

/// To 1e-12 of the size of such coordinates; where they cancel, their rounding stays.
template <class World>
void expectSamePoint(const Point& world, const World& expected)
{
    const double size = 100.0;
    for (unsigned int row = 0; row < 3; ++row)
        EXPECT_NEAR(world[row], expected[row], 1e-12 * size) << "coordinate " << row;
}

/// Calls visit(i, j, k) for every voxel.
template <class Visit>
void forEachVoxel(const std::array<unsigned int, 3>& size, const Visit& visit)
{
    for (unsigned int k = 0; k < size[2]; ++k)
        for (unsigned int j = 0; j < size[1]; ++j)
            for (unsigned int i = 0; i < size[0]; ++i)
                visit(i, j, k);
}

/// The element that a view's strides lead to.
template <class View>
auto& element(const View& view, unsigned int i, unsigned int j, unsigned int k,
              unsigned int channel = 0)
{
    return view
        .data[view.strideX * i + view.strideY * j + view.strideZ * k + view.strideC * channel];
}

/// The sentence by which a call is refused, or "" if it is not.
template <class Call>
std::string refusal(const Call& call)
{
    try {
        call();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

/// The call is refused, by a sentence that has these words.
#define EXPECT_THAT_CALL_IS_REFUSED(call, words) \
    EXPECT_NE(refusal([&] { call; }).find(words), std::string::npos) << refusal([&] { call; })

/// Places to try, right-handed and left-handed by turns.
template <class Try>
void forSomePlaces(const Try& attempt)
{
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        Seeded random(seed);
        attempt(somePlace(random, seed % 2 == 0), random);
    }
}

}  // namespace volux::test
