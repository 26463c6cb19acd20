#include "volux/resample/AffineMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "resample/Expected.h"

namespace volux::test {
namespace {

TEST(AffineMap, IsTheIdentityAtFirst)
{
    const Position p = AffineMap()(3, 4, 5);
    EXPECT_EQ(p.x, 3.0);
    EXPECT_EQ(p.y, 4.0);
    EXPECT_EQ(p.z, 5.0);
    EXPECT_TRUE(AffineMap().isInvertible());
}

TEST(AffineMap, AddsTheStepsInTheDocumentedOrder)
{
    Seeded random(21);
    for (int n = 0; n < 2000; ++n) {
        const AffineMap map = obliqueMap(random, {100, 90, 80}, std::ldexp(1.0, n % 60 - 30));
        const unsigned int i = random.below(1U << 31U);
        const unsigned int j = random.below(1U << 31U);
        const unsigned int k = random.below(1U << 31U);
        const Position p = map(i, j, k);
        const Position expected = positionOf(map, i, j, k);
        ASSERT_TRUE(sameBits(p.x, expected.x) && sameBits(p.y, expected.y) &&
                    sameBits(p.z, expected.z))
            << i << ' ' << j << ' ' << k << ", " << described(map);
    }
}

TEST(AffineMap, TakesFractionalIndices)
{
    const AffineMap map{{{2, 0, 0, 1}, {0, 4, 0.5, 0}, {1, 0, 1, -1}}};
    const Position p = map({0.25, -0.5, 3.0});
    EXPECT_EQ(p.x, 1.5);
    EXPECT_EQ(p.y, -0.5);
    EXPECT_EQ(p.z, 2.25);
}

TEST(AffineMap, AddsFractionalStepsInTheDocumentedOrder)
{
    Seeded random(22);
    for (int n = 0; n < 2000; ++n) {
        const AffineMap map = obliqueMap(random, {100, 90, 80}, std::ldexp(1.0, n % 60 - 30));
        const Position index = {between(random, -1e4, 1e4), between(random, -1e4, 1e4),
                                between(random, -1e4, 1e4)};
        const Position p = map(index);
        const Position expected = positionOf(map, index.x, index.y, index.z);
        ASSERT_TRUE(sameBits(p.x, expected.x) && sameBits(p.y, expected.y) &&
                    sameBits(p.z, expected.z))
            << std::hexfloat << index.x << ' ' << index.y << ' ' << index.z << ", "
            << described(map);
    }
}

TEST(AffineMap, HasNoInverseWhereItsStepsSpanNoVolume)
{
    EXPECT_FALSE((AffineMap{{{1, 2, 3, 0}, {2, 4, 6, 0}, {0, 0, 1, 0}}}).isInvertible());
    EXPECT_FALSE((AffineMap{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}}}).isInvertible());
    EXPECT_FALSE((AffineMap{{{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}}}).isInvertible());
}

TEST(AffineMap, HasAnInverseHoweverSmallOrLargeItsStepsAre)
{
    EXPECT_TRUE(
        (AffineMap{{{1e-200, 0, 0, 0}, {0, 1e-200, 0, 0}, {0, 0, 1e-200, 0}}}).isInvertible());
    EXPECT_TRUE(
        (AffineMap{{{1e300, 0, 0, 0}, {0, -1e300, 0, 0}, {0, 0, 1e300, 0}}}).isInvertible());
}

TEST(AffineMap, HasAnInverseHoweverDifferentItsStepsAre)
{
    EXPECT_TRUE(
        (AffineMap{{{1e-200, 1e-200, 1, 0}, {0, 1e-200, 1, 0}, {1e-200, 0, 1, 0}}}).isInvertible());
    EXPECT_TRUE((AffineMap{{{1e300, 2e300, 3e300, 0}, {1, -1, 1, 0}, {1e-300, 1e-300, -1e-300, 0}}})
                    .isInvertible());
    EXPECT_FALSE(
        (AffineMap{{{1e-200, 2e-200, 1, 0}, {2e-200, 4e-200, 2, 0}, {0, 0, 1, 0}}}).isInvertible());
}

TEST(AffineMap, HasNoInverseUnlessAllOfItIsFinite)
{
    for (const double odd :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column) {
                AffineMap map;
                map.rows[row][column] = odd;
                EXPECT_FALSE(map.isInvertible()) << row << ' ' << column;
            }
}

}  // namespace
}  // namespace volux::test
