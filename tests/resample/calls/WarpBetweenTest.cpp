// Warps in the world, and maps that are made of two.
#include <gtest/gtest.h>

#include <vector>

#include "resample/WarpOracle.h"
#include "resample/WorldOracle.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

using resample::composed;
using resample::VectorUnits;
using resample::warpBetween;
using resample::WarpedGrid;

::testing::AssertionResult sameMap(const AffineMap& actual, const AffineMap& expected)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            if (auto same = bitEqual(actual.rows[row][column], expected.rows[row][column]); !same)
                return same << " in row " << row << ", column " << column;
    return ::testing::AssertionSuccess();
}

class WarpBetween : public ::testing::Test {
protected:
    WarpBetween() { vectors.initialize(2, 3, 4, 3); }

    WarpedGrid made(VectorUnits units) const
    {
        return warpBetween(output, field, source, vectors, units);
    }

    Seeded random{470};
    const Geometry output = randomGeometry(random);
    const Geometry field = randomGeometry(random);
    const Geometry source = shearedGeometry(random);
    VxImage<float> vectors;
};

TEST_F(WarpBetween, CountsInTheWorldUnlessToldOtherwise)
{
    const WarpedGrid warped = warpBetween(output, field, source, vectors);
    EXPECT_TRUE(sameMap(warped.grid.map, output.toWorld()));
    EXPECT_TRUE(sameMap(warped.warp.toField, field.toVoxels()));
    EXPECT_TRUE(sameMap(warped.warp.toVoxels, source.toVoxels()));
}

TEST_F(WarpBetween, CountsInVoxelsOfTheSource)
{
    const WarpedGrid warped = made(VectorUnits::SOURCE_VOXELS);
    EXPECT_TRUE(sameMap(warped.grid.map, gridBetween(output, source).map));
    EXPECT_TRUE(sameMap(warped.warp.toField, gridBetween(source, field).map));
    EXPECT_TRUE(sameMap(warped.warp.toVoxels, AffineMap()));
}

TEST_F(WarpBetween, CountsInVoxelsOfTheField)
{
    const WarpedGrid warped = made(VectorUnits::FIELD_VOXELS);
    EXPECT_TRUE(sameMap(warped.grid.map, gridBetween(output, field).map));
    EXPECT_TRUE(sameMap(warped.warp.toField, AffineMap()));
    EXPECT_TRUE(sameMap(warped.warp.toVoxels, gridBetween(field, source).map));
}

TEST_F(WarpBetween, GivesTheExtentsAndTheSpacingOfTheOutput)
{
    for (const VectorUnits units :
         {VectorUnits::WORLD, VectorUnits::SOURCE_VOXELS, VectorUnits::FIELD_VOXELS}) {
        const WarpedGrid warped = made(units);
        EXPECT_EQ(warped.grid.width, output.width);
        EXPECT_EQ(warped.grid.height, output.height);
        EXPECT_EQ(warped.grid.depth, output.depth);
        EXPECT_EQ(warped.grid.spacing, output.spacing);
        EXPECT_EQ(warped.warp.field.data, vectors.getBufferPointer());
        EXPECT_EQ(warped.warp.field.depth, 4U);
    }
}

// A field that says "five millimetres to the left" everywhere, counted three ways. The source has
// voxels of half a millimetre and points to the left along its y, the field has voxels of 2.5 mm.
TEST(WarpUnits, ThatMeanTheSameMoveGiveTheSameVoxels)
{
    Seeded random(471);
    const ViewedVolume<short> voxels(random, {20, 30, 4}, 1, false);
    Geometry source{
        20, 30, 4, VoxelSize(1, 0.5, 1), {10, 20, 30}, {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}};
    Geometry field{12, 12, 12, VoxelSize(2.5, 2.5, 2.5), {0, 0, 20}};
    const Geometry output{6, 7, 4, VoxelSize(1, 1, 1), {11, 21, 30}};
    const auto made = [&](VectorUnits units, const Triple& u) {
        VxImage<double> vectors;
        vectors.initialize(12, 12, 12, 3);
        for (int n = 0; n < 12 * 12 * 12; ++n)
            for (std::size_t c = 0; c < 3; ++c)
                vectors.getBufferPointer()[3 * static_cast<std::size_t>(n) + c] = u.at(c);
        const WarpedGrid warped = warpBetween(output, field, source, vectors, units);
        VxImage<short> result;
        EXPECT_EQ(resample::resample(voxels.view, warped.grid, warped.warp, &result), SUCCESS);
        return std::vector<short>(result.getBufferPointer(), result.getBufferPointer() + 6 * 7 * 4);
    };
    const auto expected = made(VectorUnits::WORLD, {5, 0, 0});
    EXPECT_EQ(expected[0], voxels.image(1, 12, 0, 0));  // 16 mm along the world's x
    EXPECT_EQ(made(VectorUnits::SOURCE_VOXELS, {0, 10, 0}), expected);
    EXPECT_EQ(made(VectorUnits::FIELD_VOXELS, {2, 0, 0}), expected);
}

TEST(ComposedMaps, HaveTheBitsOfTheFormula)
{
    Seeded random(472);
    for (int n = 0; n < 200; ++n) {
        const AffineMap outer = obliqueMap(random, {9, 9, 9});
        const AffineMap inner = obliqueMap(random, {9, 9, 9});
        const AffineMap made = composed(outer, inner);
        const Position origin =
            positionOf(outer, inner.rows[0][3], inner.rows[1][3], inner.rows[2][3]);
        const double origins[] = {origin.x, origin.y, origin.z};
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c) {
                volatile double sum = outer.rows[r][0] * inner.rows[0][c];
                volatile double product = outer.rows[r][1] * inner.rows[1][c];
                sum = sum + product;
                product = outer.rows[r][2] * inner.rows[2][c];
                ASSERT_TRUE(bitEqual(made.rows[r][c], sum + product)) << r << ' ' << c;
            }
            ASSERT_TRUE(bitEqual(made.rows[r][3], origins[r])) << r;
        }
    }
}

TEST(ComposedMaps, ApplyTheInnerOneFirst)
{
    AffineMap twice;
    twice.rows[0][0] = 2.0;
    AffineMap further;
    further.rows[0][3] = 3.0;
    EXPECT_EQ(composed(twice, further)(1, 0, 0).x, 8.0);
    EXPECT_EQ(composed(further, twice)(1, 0, 0).x, 5.0);
}

}  // namespace
}  // namespace volux::test
