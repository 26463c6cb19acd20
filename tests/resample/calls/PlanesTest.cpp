// Planes in the world, and stacks of them.
#include "volux/resample/Planes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "resample/Expected.h"
#include "resample/PlaneOracle.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

using resample::planeAt;
using resample::Planes;
using resample::planesBetween;
using resample::planeThrough;
using resample::stackAlong;

TEST(PlaneAt, IsCentredWithItsAxesRightHanded)
{
    const Geometry plane = planeAt({10, 20, 30}, {0, 0, 3}, {0, -2, 0}, 5, 4, kHalf);
    expectAxes(plane, {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    EXPECT_TRUE(sameTriple(tripleOf(plane.origin), {9.0, 19.25, 30.0}));
    EXPECT_EQ(plane.width, 5U);
    EXPECT_EQ(plane.height, 4U);
    EXPECT_EQ(plane.depth, 1U);
    EXPECT_EQ(plane.spacing, kHalf);
}

TEST(PlaneAt, HasItsCentreInItsOnlyPixel)
{
    const Geometry plane = planeAt({10, 20, 30}, {1, 0, 0}, {0, 0, 1}, 1, 1, kHalf);
    EXPECT_TRUE(sameTriple(tripleOf(plane.origin), {10.0, 20.0, 30.0}));
    expectAxes(plane, {0, -1, 0}, {0, 0, -1}, {1, 0, 0});
}

TEST(PlaneAt, ProjectsUpIntoThePlane)
{
    const Geometry upright = planeAt({0, 0, 0}, {0, 0, 1}, {0, -1, 0}, 3, 3, kHalf);
    const Geometry leaning = planeAt({0, 0, 0}, {0, 0, 1}, {0, -1, 64}, 3, 3, kHalf);
    for (int column = 0; column < 3; ++column)
        EXPECT_TRUE(sameTriple(columnOf(leaning, column), columnOf(upright, column)));
}

TEST(PlaneAt, GivesTheDocumentedBits)
{
    Seeded random(421);
    for (int n = 0; n < 5000; ++n) {
        const Position centre = randomPosition(random, 300.0);
        const Triple normal = times(randomUnit(random), std::exp(between(random, -600.0, 600.0)));
        const Triple up = times(randomUnit(random), std::exp(between(random, -600.0, 600.0)));
        const unsigned int width = 1 + random.below(600);
        const VoxelSize spacing(between(random, 0.1, 2.0), between(random, 0.1, 2.0), 1.0);
        ASSERT_TRUE(
            samePlane(planeAt(centre, positionOf(normal), positionOf(up), width, 31, spacing),
                      expectedPlane(tripleOf(centre), normal, up, width, 31, spacing)));
    }
}

TEST(PlaneAt, HasTheNormalTheCentreAndUpThatWereAskedFor)
{
    Seeded random(422);
    for (int n = 0; n < 2000; ++n) {
        const Position centre = randomPosition(random, 300.0);
        const Triple normal = randomUnit(random);
        const Triple up = randomUnit(random);
        const Geometry plane = planeAt(centre, positionOf(normal), positionOf(up), 101, 44, kHalf);
        ASSERT_EQ(plane.refusal(), nullptr);
        ASSERT_TRUE(closeTo(plane.toWorld()({50.0, 21.5, 0.0}), centre, 1000.0));
        const Triple across = columnOf(plane, 0);
        const Triple down = columnOf(plane, 1);
        ASSERT_TRUE(closeTo(positionOf(columnOf(plane, 2)), positionOf(normal), 1.0));
        ASSERT_TRUE(closeTo(positionOf(cross(across, down)), positionOf(normal), 4.0));
        ASSERT_TRUE(closeTo(positionOf({sizeOf(across), sizeOf(down), 0.0}), {1, 1, 0}, 4.0));
        ASSERT_LT(dot(down, up), 0.0);                // up is up in the picture,
        ASSERT_LT(std::abs(dot(across, up)), 1e-12);  // and upright
    }
}

struct DegeneratePlane {
    const char* what;
    Position normal;
    Position up;
};

const DegeneratePlane kDegenerate[] = {
    {"parallel", {1, 2, 3}, {1, 2, 3}},
    {"opposite", {1, 2, 3}, {-10, -20, -30}},
    {"parallel but for rounding", {0.1, 0.2, 0.3}, {0.3, 0.6, 0.9}},
    {"an angle of 1e-15", {0, 0, 1}, {1e-15, 0, 1}},
    {"no normal", {0, 0, 0}, {0, 1, 0}},
    {"no up", {0, 0, 1}, {0, 0, 0}},
    {"infinite normal", {kInfinity, 0, 0}, {0, 1, 0}},
    {"infinite up", {0, 0, 1}, {0, -kInfinity, 0}},
    {"a NaN", {0, 0, 1}, {0, kNaN, 1}},
};

TEST(PlaneAt, IsRefusedWithoutTwoDirections)
{
    for (const DegeneratePlane& entry : kDegenerate)
        expectRefused(planeAt({0, 0, 0}, entry.normal, entry.up, 2, 2, kHalf), entry.what);
}

TEST(PlaneAt, IsTakenAtASmallAngle)
{
    EXPECT_EQ(planeAt({0, 0, 0}, {0, 0, 1}, {1e-14, 0, 1}, 2, 2, kHalf).refusal(), nullptr);
}

TEST(PlaneThrough, RunsFromItsFirstPixelAlongAndBelow)
{
    const Geometry plane = planeThrough({1, 2, 3}, {5, 2, 3}, {40, 2, 10}, 6, 7, kHalf);
    expectAxes(plane, {1, 0, 0}, {0, 0, 1}, {0, -1, 0});
    EXPECT_TRUE(sameTriple(tripleOf(plane.origin), {1, 2, 3}));
    EXPECT_EQ(plane.width, 6U);
    EXPECT_EQ(plane.height, 7U);
    EXPECT_EQ(plane.depth, 1U);
    EXPECT_EQ(plane.spacing, kHalf);
}

TEST(PlaneThrough, GivesTheDocumentedBitsAndHoldsItsPoints)
{
    Seeded random(423);
    for (int n = 0; n < 3000; ++n) {
        const Position first = randomPosition(random, 100.0);
        const Position along = randomPosition(random, 100.0);
        const Position below = randomPosition(random, 100.0);
        const Geometry plane = planeThrough(first, along, below, 9, 9, kHalf);
        Geometry expected = plane;
        const Triple across = unitOf(minus(tripleOf(along), tripleOf(first)));
        const Triple side = unitOf(minus(tripleOf(below), tripleOf(first)));
        const Triple normal = unitOf(cross(across, side));
        setColumn(expected, 0, across);
        setColumn(expected, 1, cross(normal, across));
        setColumn(expected, 2, normal);
        expected.origin = first;
        ASSERT_TRUE(samePlane(plane, expected));
        const double rounding = 1e-9 / sizeOf(cross(across, side));
        const Position alongIn = plane.toVoxels()(along);
        const Position belowIn = plane.toVoxels()(below);
        ASSERT_NEAR(alongIn.y, 0.0, rounding) << described(plane);
        ASSERT_NEAR(alongIn.z, 0.0, rounding) << described(plane);
        ASSERT_NEAR(belowIn.z, 0.0, rounding) << described(plane);
        ASSERT_GT(alongIn.x, 0.0) << described(plane);
        ASSERT_GT(belowIn.y, 0.0) << described(plane);
    }
}

TEST(PlaneThrough, IsRefusedForPointsOnALine)
{
    const Position p = {0.1, 0.2, 0.3};
    expectRefused(planeThrough(p, {0.2, 0.4, 0.6}, {0.7, 1.4, 2.1}, 2, 2, kHalf), "on a line");
    expectRefused(planeThrough(p, p, {7, 14, 2}, 2, 2, kHalf), "no row");
    expectRefused(planeThrough(p, {7, 14, 2}, p, 2, 2, kHalf), "no rows below");
}

TEST(StackAlong, GoesOnInItsDirection)
{
    const Geometry plane = planeAt({0, 0, 0}, {0, 0, 1}, {0, -1, 0}, 1, 1, kHalf);
    const Geometry stack = stackAlong(plane, {3, 0, 4}, 2.5, 7);
    EXPECT_EQ(stack.depth, 7U);
    EXPECT_TRUE(sameTriple(tripleOf(stack.origin), tripleOf(plane.origin)));
    expectAxes(stack, {1, 0, 0}, {0, 1, 0}, {0.6, 0, 0.8});
    const Position p = stack.toWorld()(0, 0, 2);
    EXPECT_DOUBLE_EQ(p.x, 3.0);
    EXPECT_DOUBLE_EQ(p.z, 4.0);
}

TEST(StackAlong, IsRefusedForADirectionInThePlane)
{
    Seeded random(424);
    for (int n = 0; n < 500; ++n) {
        const Geometry plane = planeAt(randomPosition(random, 9), randomPosition(random, 1),
                                       randomPosition(random, 1), 2, 2, kHalf);
        const Triple inside = plus(times(columnOf(plane, 0), between(random, 0.1, 1.0)),
                                   times(columnOf(plane, 1), between(random, -1.0, 1.0)));
        expectRefused(stackAlong(plane, positionOf(inside), 1.0, 2), described(plane));
    }
    expectRefused(stackAlong(Geometry(), {0, 0, 0}, 1.0, 2), "no direction");
}

TEST(PlanesBetween, HaveTheColumnsOfTheGridWithoutASlab)
{
    Seeded random(426);
    for (int n = 0; n < 1000; ++n) {
        const Geometry output = shearedGeometry(random);
        const Geometry source = shearedGeometry(random);
        const Grid grid = gridBetween(output, source);
        const Grid found = gridOfPlanes(planesBetween(output, source));
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                ASSERT_TRUE(bitEqual(found.map.rows[row][column], grid.map.rows[row][column]))
                    << described(output) << "; " << described(source);
        ASSERT_TRUE(found.width == grid.width && found.height == grid.height &&
                    found.depth == grid.depth && found.spacing == grid.spacing);
    }
}

TEST(PlanesBetween, DivideTheDistanceOfSlabs)
{
    Geometry output;
    output.width = 4;
    output.height = 5;
    output.depth = 6;
    output.spacing = VoxelSize(1, 1, 12);
    output.origin = {0, 0, 20};
    Geometry source;
    source.spacing.z = 2;
    const Planes planes = planesBetween(output, source, 3);
    EXPECT_TRUE(sameTriple(tripleOf(planes.step), {0, 0, 2}));    // voxels: 12 / 3 / 2
    EXPECT_TRUE(sameTriple(tripleOf(planes.origin), {0, 0, 8}));  // one plane before 10
    EXPECT_EQ(planes.spacing, output.spacing);
    EXPECT_EQ(planes.count, 6U);
}

TEST(PlanesBetween, AreRefusedForASlabOfNothing)
{
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(2, 2, 2, 1);
    Geometry output;
    output.width = output.height = output.depth = 2;
    EXPECT_EQ(resample::reslice(source, planesBetween(output, Geometry(), 0), &result),
              ERR_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace volux::test
