// Planes in the world.
#include "volux/resample/Planes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "resample/Expected.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

using resample::planeAt;
using resample::Planes;
using resample::planesAlong;
using resample::planesBetween;
using resample::planeThrough;
using resample::Slab;
using resample::stackAlong;

const VoxelSize kHalf(0.5, 0.5, 2.0);

Position positionOf(const Triple& v)
{
    return {v[0], v[1], v[2]};
}

// By numbers, so that zeros of either sign are equal.
void expectAxes(const Geometry& plane, const Triple& across, const Triple& down,
                const Triple& normal)
{
    EXPECT_EQ(columnOf(plane, 0), across) << described(plane);
    EXPECT_EQ(columnOf(plane, 1), down) << described(plane);
    EXPECT_EQ(columnOf(plane, 2), normal) << described(plane);
}

// Refused in words, and by an operation as output.
void expectRefused(Geometry plane, const std::string& what)
{
    EXPECT_NE(plane.refusal(), nullptr) << what;
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(2, 2, 2, 1);
    EXPECT_EQ(resample::resample(source, gridBetween(plane, Geometry()), &result),
              ERR_INVALID_ARGUMENT)
        << what;
    EXPECT_EQ(resample::reslice(source, planesBetween(plane, Geometry()), &result),
              ERR_INVALID_ARGUMENT)
        << what;
}

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

// The documented formulas.
Geometry expectedPlane(const Triple& centre, const Triple& normal, const Triple& up,
                       unsigned int width, unsigned int height, const VoxelSize& spacing)
{
    Geometry plane;
    const Triple n = unitOf(normal);
    const Triple across = unitOf(cross(n, unitOf(up)));
    const Triple down = cross(n, across);
    setColumn(plane, 0, across);
    setColumn(plane, 1, down);
    setColumn(plane, 2, n);
    const Triple left = minus(centre, times(across, spacing.x * ((width - 1.0) / 2)));
    plane.origin = positionOf(minus(left, times(down, spacing.y * ((height - 1.0) / 2))));
    plane.width = width;
    plane.height = height;
    plane.depth = 1;
    plane.spacing = spacing;
    return plane;
}

::testing::AssertionResult samePlane(const Geometry& actual, const Geometry& expected)
{
    const bool same = sameTriple(tripleOf(actual.origin), tripleOf(expected.origin)) &&
                      sameTriple(columnOf(actual, 0), columnOf(expected, 0)) &&
                      sameTriple(columnOf(actual, 1), columnOf(expected, 1)) &&
                      sameTriple(columnOf(actual, 2), columnOf(expected, 2)) &&
                      actual.spacing == expected.spacing && actual.width == expected.width &&
                      actual.height == expected.height && actual.depth == expected.depth;
    return (same ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
           << described(actual) << "; expected " << described(expected);
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

// How far the last plane has turned from where it should be.
double twistOfHelix(std::size_t count)
{
    constexpr double kLength = 5.0;
    const Position up = {-1, 0, 0};  // the helix's normal at t = 0
    const Geometry last = planesAlong(pointsOf(helix, count, kLength), up, 3, 3, kHalf).back();
    const double c = std::cos(kLength);
    const double s = std::sin(kLength);
    const Triple normal{-c, -s, 0};
    const Triple binormal = cross({-0.6 * s, 0.6 * c, 0.8}, normal);
    const double turned = -0.8 * kLength;
    const Triple expected =
        plus(times(normal, std::cos(turned)), times(binormal, std::sin(turned)));
    return sizeOf(plus(columnOf(last, 1), expected));  // down is -up
}

TEST(PlanesAlong, TurnsAboutAHelixAsLittleAsItCan)
{
    EXPECT_LT(twistOfHelix(4000), 4e-3);
    EXPECT_LT(twistOfHelix(16000), 1e-3);
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

// An image whose channels hold where its voxels are in the world.
void fillWithPlaces(const Geometry& geometry, VxImage<double>& image)
{
    image.terminate();
    image.initialize(geometry.width, geometry.height, geometry.depth, 3);
    const AffineMap map = geometry.toWorld();
    for (unsigned int z = 0; z < geometry.depth; ++z)
        for (unsigned int y = 0; y < geometry.height; ++y)
            for (unsigned int x = 0; x < geometry.width; ++x)
                for (int c = 0; c < 3; ++c)
                    image(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), c) =
                        tripleOf(map(x, y, z)).at(static_cast<std::size_t>(c));
}

void expectPlaces(const VxImage<double>& image, const Geometry& geometry)
{
    const AffineMap map = geometry.toWorld();
    for (unsigned int k = 0; k < image.getDepth(); ++k)
        for (unsigned int j = 0; j < image.getHeight(); ++j)
            for (unsigned int i = 0; i < image.getWidth(); ++i)
                for (unsigned int c = 0; c < 3; ++c)
                    ASSERT_NEAR(at(image, i, j, k, c), tripleOf(map(i, j, k)).at(c), 1e-9)
                        << i << ' ' << j << ' ' << k << ", " << described(geometry);
}

// Linear interpolation reads a position of the world out of positions of the world, and so does
// the mean of a slab: what a plane shows is where it is.
class Places : public ::testing::Test {
protected:
    Places() : random(427) {}

    void place()
    {
        space = randomGeometry(random);
        space.width = space.height = space.depth = 24;
        for (int column = 0; column < 3; ++column)  // sheared as well
            setColumn(space, column, plus(columnOf(space, column), times(randomUnit(random), 0.2)));
        fillWithPlaces(space, image);
    }

    // A few pixels around the middle of the image.
    Geometry plane()
    {
        const double least = std::min({space.spacing.x, space.spacing.y, space.spacing.z});
        return planeAt(space.toWorld()({11.5, 11.5, 11.5}), positionOf(randomUnit(random)),
                       positionOf(randomUnit(random)), 6, 5,
                       VoxelSize(least * 0.7, least * 0.6, least * 0.8));
    }

    Seeded random;
    Geometry space;
    VxImage<double> image;
};

TEST_F(Places, ArePlanesInTheWorld)
{
    for (int n = 0; n < 50; ++n) {
        place();
        const Geometry output = plane();
        VxImage<double> result;
        ASSERT_EQ(resample::resample(image, gridBetween(output, space), &result), SUCCESS);
        expectPlaces(result, output);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(Places, AreTheMiddlesOfSlabs)
{
    for (unsigned int n = 0; n < 50; ++n) {
        place();
        const unsigned int slab = 1 + n % 4;
        Geometry output = plane();
        output.depth = 3;
        VxImage<double> result;
        const Planes planes = planesBetween(output, space, slab);
        ASSERT_EQ(resample::reslice(image, planes, &result, Options(), Slab{slab}), SUCCESS);
        expectPlaces(result, output);
        expectPlaces(result, gridOfPlanes(space, planes, slab).geometry);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(Places, AreTheVoxelsOfAnotherSpacing)
{
    place();
    const double s = 0.75;
    const auto [grid, geometry] = gridOfSpacing(
        space, VoxelSize(space.spacing.x * s, space.spacing.y * s, space.spacing.z * s),
        resample::Align::CENTRES);
    VxImage<double> result;
    ASSERT_EQ(resample::resample(image, grid, &result), SUCCESS);
    expectPlaces(result, geometry);
}

}  // namespace
}  // namespace volux::test
