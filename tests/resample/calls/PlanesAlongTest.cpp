// Planes along a curve in the world.
#include "volux/resample/Planes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "resample/Expected.h"
#include "resample/PlaneOracle.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

using resample::planeAt;
using resample::planesAlong;

std::vector<Position> pointsOf(Position (*curve)(double), std::size_t count, double length)
{
    std::vector<Position> points;
    for (std::size_t n = 0; n < count; ++n)
        points.push_back(curve(length * static_cast<double>(n) / static_cast<double>(count - 1)));
    return points;
}

TEST(PlanesAlong, FollowsAStraightLineWithoutTurning)
{
    const std::vector<Position> points = {{1, 0, 0}, {2, 0, 0}, {4, 0, 0}, {8, 0, 0}};
    const std::vector<Geometry> planes = planesAlong(points, {0, 0, 1}, 3, 3, kHalf);
    ASSERT_EQ(planes.size(), 4U);
    for (std::size_t n = 0; n < 4; ++n)
        EXPECT_TRUE(samePlane(planes[n], planeAt(points[n], {1, 0, 0}, {0, 0, 1}, 3, 3, kHalf)));
}

TEST(PlanesAlong, GivesTheDocumentedBits)
{
    Seeded random(425);
    for (int n = 0; n < 500; ++n) {
        std::vector<Position> points;
        for (unsigned int left = 1 + random.below(9); left > 0; --left)
            points.push_back(randomPosition(random, 50.0));
        const Position up = randomPosition(random, 1.0);
        const std::vector<Geometry> planes = planesAlong(points, up, 5, 4, kHalf);
        ASSERT_EQ(planes.size(), points.size());
        if (points.size() < 2)
            continue;
        Triple upright = tripleOf(up);
        Triple before{};
        for (std::size_t k = 0; k < points.size(); ++k) {
            const Position& after = k + 1 < points.size() ? points[k + 1] : points[k];
            const Position& earlier = k > 0 ? points[k - 1] : points[k];
            const Triple tangent = unitOf(minus(tripleOf(after), tripleOf(earlier)));
            if (k > 0) {
                const Triple middle = unitOf(plus(before, tangent));
                upright = minus(upright, times(middle, 2 * dot(middle, upright)));
            }
            const Geometry expected =
                expectedPlane(tripleOf(points[k]), tangent, upright, 5, 4, kHalf);
            ASSERT_TRUE(samePlane(planes[k], expected)) << "point " << k;
            upright = times(columnOf(expected, 1), -1.0);
            before = tangent;
        }
    }
}

TEST(PlanesAlong, KeepsTheAxisOfACircleUp)
{
    const auto circle = [](double t) { return Position{30 * std::cos(t), 30 * std::sin(t), 0}; };
    for (const Geometry& plane : planesAlong(pointsOf(circle, 200, 9.0), {0, 0, 1}, 3, 3, kHalf)) {
        const Triple down = columnOf(plane, 1);
        EXPECT_NEAR(down[2], -1.0, 1e-13);
    }
}

// A helix with the tangent (-3 sin t, 3 cos t, 4) / 5. Against its normal and binormal, a frame
// that does not turn about it turns back by 4/5 of t.
Position helix(double t)
{
    return {3 * std::cos(t), 3 * std::sin(t), 4 * t};
}

// How far a plane is from where it should be, so many points before the end of a helix.
double errorOnHelix(std::size_t count, std::size_t before)
{
    constexpr double kLength = 5.0;
    const Position up = {-1, 0, 0};  // the helix's normal at t = 0
    const std::vector<Geometry> planes =
        planesAlong(pointsOf(helix, count, kLength), up, 3, 3, kHalf);
    const std::size_t n = count - 1 - before;
    const double t = kLength * static_cast<double>(n) / static_cast<double>(count - 1);
    const Triple normal{-std::cos(t), -std::sin(t), 0};
    const Triple binormal = cross({-0.6 * std::sin(t), 0.6 * std::cos(t), 0.8}, normal);
    const double turned = -0.8 * t;
    const Triple expected =
        plus(times(normal, std::cos(turned)), times(binormal, std::sin(turned)));
    return sizeOf(plus(columnOf(planes[n], 1), expected));  // down is -up
}

TEST(PlanesAlong, TurnsAboutAHelixAsLittleAsItCan)
{
    EXPECT_LT(errorOnHelix(501, 1), 4e-5);
    EXPECT_LT(errorOnHelix(1001, 1), 1e-5);  // a quarter
    EXPECT_LT(errorOnHelix(501, 0), 2e-3);
    EXPECT_LT(errorOnHelix(1001, 0), 1e-3);  // half
}

TEST(PlanesAlong, TakesAPointTwice)
{
    const std::vector<Position> points = {{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    for (const Geometry& plane : planesAlong(points, {0, 0, 1}, 3, 3, kHalf))
        expectAxes(plane, {0, -1, 0}, {0, 0, -1}, {1, 0, 0});
}

TEST(PlanesAlong, IsRefusedFromAPointWithoutATangentOn)
{
    const std::vector<Position> points = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const std::vector<Geometry> planes = planesAlong(points, {0, 0, 1}, 2, 2, kHalf);
    EXPECT_EQ(planes[0].refusal(), nullptr);
    EXPECT_EQ(planes[1].refusal(), nullptr);
    for (std::size_t n = 2; n < 5; ++n)
        expectRefused(planes[n], "point " + std::to_string(n));
}

TEST(PlanesAlong, IsRefusedWhereTheCurveTurnsBack)
{
    const std::vector<Position> points = {{0, 0, 0}, {2, 0, 0}, {2, 0, 0}, {0, 0, 0}};
    const std::vector<Geometry> planes = planesAlong(points, {0, 0, 1}, 2, 2, kHalf);
    EXPECT_EQ(planes[1].refusal(), nullptr);
    expectRefused(planes[2], "opposite tangent");
    expectRefused(planes[3], "after it");
}

TEST(PlanesAlong, IsEmptyForNoPointsAndRefusedForOne)
{
    EXPECT_TRUE(planesAlong({}, {0, 0, 1}, 2, 2, kHalf).empty());
    const std::vector<Geometry> planes = planesAlong({{1, 2, 3}}, {0, 0, 1}, 2, 2, kHalf);
    ASSERT_EQ(planes.size(), 1U);
    expectRefused(planes[0], "one point");
}

}  // namespace
}  // namespace volux::test
