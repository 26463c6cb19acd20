#include "volux/resample/Grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "resample/Expected.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::Geometry;
using resample::Planes;

void expectMap(const AffineMap& map, const AffineMap& expected)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(map.rows[row][column], expected.rows[row][column]) << row << ' ' << column;
}

void expectSize(const Grid& grid, unsigned int width, unsigned int height, unsigned int depth)
{
    EXPECT_EQ(grid.width, width);
    EXPECT_EQ(grid.height, height);
    EXPECT_EQ(grid.depth, depth);
}

TEST(GridOfSize, KeepsTheFieldOfView)
{
    const Grid grid =
        gridOfSize(ImageSize(4, 6, 5, 1), VoxelSize(1.0, 2.0, 3.0), 8, 3, 5, Align::EDGES);
    expectSize(grid, 8, 3, 5);
    expectMap(grid.map, {{{0.5, 0, 0, -0.25}, {0, 2.0, 0, 0.5}, {0, 0, 1, 0}}});
    EXPECT_EQ(grid.spacing, VoxelSize(0.5, 4.0, 3.0));
}

TEST(GridOfSize, KeepsTheFirstAndTheLastCentre)
{
    const Grid grid =
        gridOfSize(ImageSize(5, 3, 7, 1), VoxelSize(1.0, 2.0, 3.0), 9, 2, 7, Align::CENTRES);
    expectMap(grid.map, {{{0.5, 0, 0, 0}, {0, 2.0, 0, 0}, {0, 0, 1, 0}}});
    EXPECT_EQ(grid.spacing, VoxelSize(0.5, 4.0, 3.0));
}

TEST(GridOfSize, ReadsTheMiddleWhereThereIsOneVoxel)
{
    const ImageSize source(4, 5, 1, 1);
    for (const Align align : {Align::EDGES, Align::CENTRES}) {
        const Position p = gridOfSize(source, VoxelSize(1, 1, 1), 1, 1, 1, align).map(0, 0, 0);
        EXPECT_EQ(p.x, 1.5);
        EXPECT_EQ(p.y, 2.0);
        EXPECT_EQ(p.z, 0.0);
    }
}

TEST(GridOfSize, KeepsTheSpacingAroundTheOnlyCentre)
{
    const Grid grid =
        gridOfSize(ImageSize(1, 1, 1, 1), VoxelSize(1.0, 2.0, 3.0), 3, 4, 1, Align::CENTRES);
    expectSize(grid, 3, 4, 1);
    expectMap(grid.map, {{{1, 0, 0, -1}, {0, 1, 0, -1.5}, {0, 0, 1, 0}}});
    EXPECT_EQ(grid.spacing, VoxelSize(1.0, 2.0, 3.0));
}

TEST(GridOfSize, DividesTheFieldOfViewOfTheOnlyVoxel)
{
    const Grid grid =
        gridOfSize(ImageSize(1, 1, 1, 1), VoxelSize(1.0, 2.0, 3.0), 2, 4, 1, Align::EDGES);
    expectMap(grid.map, {{{0.5, 0, 0, -0.25}, {0, 0.25, 0, -0.375}, {0, 0, 1, 0}}});
    EXPECT_EQ(grid.spacing, VoxelSize(0.5, 0.5, 3.0));
}

TEST(GridOfSpacing, HasTheSpacingExactly)
{
    const ImageSize source(10, 10, 11, 1);
    const VoxelSize spacing(1.0, 1.0, 2.5);
    const VoxelSize wanted(0.5, 3.0, 1.0);
    const Grid edges = gridOfSpacing(source, spacing, wanted, Align::EDGES);
    expectSize(edges, 20, 3, 28);  // 20, 3.33 and 27.5 rounded
    EXPECT_EQ(edges.spacing, wanted);
    expectMap(edges.map, {{{0.5, 0, 0, -0.25}, {0, 3, 0, 1}, {0, 0, 0.4, 0.5 * 0.4 - 0.5}}});
    const Grid centres = gridOfSpacing(source, spacing, wanted, Align::CENTRES);
    expectSize(centres, 19, 4, 26);  // as many steps as fit 9, 9 and 25
    expectMap(centres.map, {{{0.5, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 0.4, 0}}});
}

TEST(GridOfSpacing, ReadsTheMiddleWhereThereIsOneVoxel)
{
    const ImageSize source(10, 10, 3, 1);
    const VoxelSize wanted(8, 25, 1e300);  // 1.25, 0.4 and next to no voxels
    for (const Align align : {Align::EDGES, Align::CENTRES}) {
        const Grid grid = gridOfSpacing(source, VoxelSize(1, 1, 1), wanted, align);
        const unsigned int width = align == Align::EDGES ? 1 : 2;  // 0 and 8 are two centres
        expectSize(grid, width, 1, 1);
        EXPECT_EQ(grid.spacing, wanted);
        const Position p = grid.map(0, 0, 0);
        EXPECT_EQ(p.x, width == 1 ? 4.5 : 0.0);
        EXPECT_EQ(p.y, 4.5);
        EXPECT_EQ(p.z, 1.0);
    }
}

TEST(GridOfSpacing, ReadsNothingOutsideTheFieldOfViewButForRounding)
{
    Seeded random(65);
    for (int n = 0; n < 20000; ++n) {
        const unsigned int count = 1 + random.below(40);
        const double wanted = std::exp(between(random, -3.0, 5.0));
        const Align align = random.below(2) == 0 ? Align::EDGES : Align::CENTRES;
        const Grid grid = gridOfSpacing(ImageSize(count, 1, 1, 1), VoxelSize(1, 1, 1),
                                        VoxelSize(wanted, 1, 1), align);
        const double margin = align == Align::EDGES ? 0.5 : 0.0;
        const double rounding = count * 0x1p-50;
        EXPECT_GE(grid.map(0, 0, 0).x, -margin) << count << ' ' << wanted;
        EXPECT_LE(grid.map(grid.width - 1, 0, 0).x, count - 1 + margin + rounding)
            << count << ' ' << wanted;
    }
}

TEST(GridOfSpacing, HasOneVoxelAtLeastAndNoneForOddSpacings)
{
    const ImageSize source(10, 10, 10, 1);
    const VoxelSize one(1, 1, 1);
    expectSize(gridOfSpacing(source, one, VoxelSize(100, 1, 1), Align::EDGES), 1, 10, 10);
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(gridOfSpacing(source, one, VoxelSize(1e-300, 1, 1), Align::EDGES).width, 0U);
    EXPECT_EQ(gridOfSpacing(source, one, VoxelSize(0, 1, 1), Align::EDGES).width, 0U);
    EXPECT_EQ(gridOfSpacing(source, one, VoxelSize(NAN, 1, 1), Align::CENTRES).width, 0U);
    EXPECT_EQ(gridOfSpacing(source, VoxelSize(infinity, 1, 1), one, Align::EDGES).width, 0U);
}

TEST(GridOfSpacing, LosesNoVoxelToRounding)
{
    for (unsigned int count = 2; count < 300; ++count)
        for (int n = 1; n < 60; ++n) {
            const double from = n / 10.0;
            const ImageSize source(count, count, count, 1);
            const VoxelSize spacing(from, from, from);
            const VoxelSize wanted(from, n / 20.0, n / 70.0);  // as many, twice, seven times
            for (const Align align : {Align::EDGES, Align::CENTRES}) {
                const unsigned int less = align == Align::EDGES ? 0 : 1;
                const Grid grid = gridOfSpacing(source, spacing, wanted, align);
                expectSize(grid, count, 2 * (count - less) + less, 7 * (count - less) + less);
            }
        }
}

TEST(GridOfSpacing, HasNoStepThatDoesNotFit)
{
    const ImageSize source(1000, 2, 2, 1);
    const VoxelSize one(1, 1, 1);
    const double slightlyMore = 1.0 + 0x1p-40;
    EXPECT_EQ(gridOfSpacing(source, one, VoxelSize(slightlyMore, 1, 1), Align::CENTRES).width,
              999U);
}

TEST(GridBetween, IsTheIdentityBetweenEqualGeometries)
{
    for (const double angle : {0.1, 0.3, 0.7, 1.1, 2.3}) {
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        Geometry geometry;
        geometry.width = 3;
        geometry.spacing = VoxelSize(0.3, 0.7, 1.1);
        geometry.origin = {-17.3, 4.1, 99.9};
        const double direction[3][3] = {{c, -s * c, s * s}, {s, c * c, -c * s}, {0, s, c}};
        std::copy(&direction[0][0], &direction[0][0] + 9, &geometry.direction[0][0]);
        expectMap(gridBetween(geometry, geometry).map, AffineMap());
    }
}

TEST(GridBetween, FollowsOriginDirectionAndSpacing)
{
    Geometry source;
    source.spacing = VoxelSize(2, 2, 4);
    source.origin = {10, 20, 30};
    Geometry output;  // its x runs along the source's y, its y against the source's x
    output.width = 7;
    output.height = 8;
    output.depth = 9;
    output.spacing = VoxelSize(1, 1, 2);
    output.origin = {12, 26, 34};
    output.direction[0][0] = output.direction[1][1] = 0;
    output.direction[1][0] = 1;
    output.direction[0][1] = -1;
    const Grid grid = gridBetween(output, source);
    expectSize(grid, 7, 8, 9);
    expectMap(grid.map, {{{0, -0.5, 0, 1}, {0.5, 0, 0, 3}, {0, 0, 0.5, 1}}});
    EXPECT_EQ(grid.spacing, VoxelSize(1, 1, 2));
}

TEST(GridBetween, IsRefusedForADirectionWithoutAnInverse)
{
    Geometry flat;
    flat.direction[2][2] = 0;
    EXPECT_FALSE(gridBetween(Geometry(), flat).map.isInvertible());
    EXPECT_FALSE(gridBetween(flat, Geometry()).map.isInvertible());
}

TEST(GridBetween, IsRefusedForADirectionThatHasAnInverseByRoundingAlone)
{
    Seeded random(64);
    for (int n = 0; n < 1000; ++n) {
        Geometry flat;
        auto& m = flat.direction;
        const double factor = between(random, -3.0, 3.0);
        for (int column = 0; column < 3; ++column) {
            m[0][column] = between(random, -1.0, 1.0);
            m[1][column] = between(random, -1.0, 1.0);
            m[2][column] = factor * m[0][column] + m[1][column];
        }
        EXPECT_FALSE(gridBetween(Geometry(), flat).map.isInvertible());
    }
}

TEST(GridBetween, TakesDirectionsOfAnyLength)
{
    Geometry source;
    source.direction[0][0] = 1e-12;
    source.direction[1][1] = 1e12;
    expectMap(gridBetween(Geometry(), source).map,
              {{{1e12, 0, 0, 0}, {0, 1e-12, 0, 0}, {0, 0, 1, 0}}});
}

// Directions whose inverse is exact: 1 -1 1/2, 0 1 -1/2, 0 0 1/2.
Geometry sheared()
{
    Geometry geometry;
    geometry.direction[0][1] = geometry.direction[1][2] = 1;
    geometry.direction[2][2] = 2;
    return geometry;
}

TEST(GridBetween, InvertsDirectionsOfVeryDifferentLengths)
{
    Geometry source = sheared();
    for (auto& row : source.direction) {
        row[0] *= 0x1p-700;
        row[1] *= 0x1p-400;
        row[2] *= 0x1p+20;
    }
    Geometry output;
    output.origin = {8, 4, 2};
    expectMap(gridBetween(output, source).map, {{{0x1p+700, -0x1p+700, 0x1p+699, 0x1.4p+702},
                                                 {0, 0x1p+400, -0x1p+399, 0x1.8p+401},
                                                 {0, 0, 0x1p-21, 0x1p-20}}});
}

// Directions of which each element is -1, 0 or 1, by the digits of a number.
Geometry ofDigits(int code)
{
    Geometry geometry;
    geometry.spacing = VoxelSize(2, 1, 0.5);
    geometry.origin = {1, 2, 3};
    for (auto& row : geometry.direction)
        for (double& number : row) {
            number = code % 3 - 1;
            code /= 3;
        }
    return geometry;
}

double determinantOf(const double (&m)[3][3])
{
    return m[0][0] * m[1][1] * m[2][2] + m[0][1] * m[1][2] * m[2][0] + m[0][2] * m[1][0] * m[2][1] -
           m[0][2] * m[1][1] * m[2][0] - m[0][1] * m[1][0] * m[2][2] - m[0][0] * m[1][2] * m[2][1];
}

// Where the source's transform takes a column of a map; a position, if the last one.
double led(const AffineMap& source, const AffineMap& map, int row, int column)
{
    const double(&w)[4] = source.rows[row];
    const auto& m = map.rows;
    return w[0] * m[0][column] + w[1] * m[1][column] + w[2] * m[2][column] +
           (column == 3 ? w[3] : 0.0);
}

// Every number on the way is a double where the determinant is a power of two.
TEST(GridBetween, InvertsEveryPatternOfZerosAndOnesExactly)
{
    Geometry output = sheared();
    output.spacing = VoxelSize(1, 2, 4);
    output.origin = {8, 4, 2};
    for (int code = 0; code < 19683; ++code) {
        const Geometry source = ofDigits(code);
        const AffineMap map = gridBetween(output, source).map;
        const double size = std::abs(determinantOf(source.direction));
        ASSERT_EQ(map.isInvertible(), size != 0.0) << code;
        for (int row = 0; row < 3 && (size == 1.0 || size == 2.0 || size == 4.0); ++row)
            for (int column = 0; column < 4; ++column)
                ASSERT_EQ(led(source.toWorld(), map, row, column),
                          output.toWorld().rows[row][column])
                    << code << ", row " << row << ", column " << column;
    }
}

Geometry somewhere(Random& random)
{
    Geometry geometry;
    for (auto& row : geometry.direction)
        for (double& number : row)
            number = between(random, -1.0, 1.0);
    geometry.origin = {between(random, -9, 9), between(random, -9, 9), between(random, -9, 9)};
    geometry.spacing = VoxelSize(0.7, 0.9, 1.3);
    return geometry;
}

TEST(GridBetween, GivesTheSameBitsForSourceAxesScaledByPowersOfTwo)
{
    Seeded random(66);
    for (int n = 0; n < 2000; ++n) {
        const Geometry output = somewhere(random);
        Geometry source = somewhere(random);
        AffineMap expected = gridBetween(output, source).map;
        for (int axis = 0; axis < 3; ++axis) {
            const int power = n == 0 ? -355 : static_cast<int>(random.below(800)) - 400;
            for (int row = 0; row < 3; ++row)
                source.direction[row][axis] = std::ldexp(source.direction[row][axis], power);
            for (double& number : expected.rows[axis])
                number = std::ldexp(number, -power);
        }
        expectMap(gridBetween(output, source).map, expected);
    }
}

TEST(GridBetween, GivesTheSameBitsInAWorldScaledByPowersOfTwo)
{
    Seeded random(67);
    for (int n = 0; n < 2000; ++n) {
        Geometry output = somewhere(random);
        Geometry source = somewhere(random);
        output.origin = source.origin = {0, 0, 0};
        const AffineMap expected = gridBetween(output, source).map;
        for (int axis = 0; axis < 3; ++axis) {
            const int power = static_cast<int>(random.below(1800)) - 900;
            for (Geometry* const geometry : {&output, &source})
                for (double& number : geometry->direction[axis])
                    number = std::ldexp(number, power);
        }
        expectMap(gridBetween(output, source).map, expected);
    }
}

TEST(GridOfPlanes, HasThePlanesStepsAsColumns)
{
    Planes planes;
    planes.origin = {1, 2, 3};
    planes.across = {0, 1, 0};
    planes.down = {0, 0, 1};
    planes.step = {5, 6, 7};
    planes.width = 4;
    planes.height = 5;
    planes.count = 6;
    planes.spacing = VoxelSize(7, 8, 9);
    const Grid grid = gridOfPlanes(planes);
    expectSize(grid, 4, 5, 6);
    expectMap(grid.map, {{{0, 0, 5, 1}, {1, 0, 6, 2}, {0, 1, 7, 3}}});
    EXPECT_EQ(grid.spacing, VoxelSize(7, 8, 9));
}

TEST(GridOfPlanes, StepsAlongTheNormalUnlessToldOtherwise)
{
    Planes planes;
    planes.across = {0, 2, 0};
    planes.down = {0, 0, 3};
    expectMap(gridOfPlanes(planes).map, {{{0, 0, 6, 0}, {2, 0, 0, 0}, {0, 3, 0, 0}}});
}

TEST(GridOfPlanes, StepsAlongASingleAxisIfToldTo)
{
    for (const Position& step : {Position{4, 0, 0}, Position{0, 4, 0}, Position{0, 0, 4}}) {
        Planes planes;
        planes.step = step;
        expectMap(gridOfPlanes(planes).map,
                  {{{1, 0, step.x, 0}, {0, 1, step.y, 0}, {0, 0, step.z, 0}}});
    }
}

}  // namespace
}  // namespace volux::test
