// Warps that are refused, and that nothing has been written then.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "support/ImageFields.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

using resample::ResampleRegion;
using resample::View;
using resample::VoxelLayout;
using resample::Warp;

class WarpRefusals : public ::testing::Test {
protected:
    WarpRefusals() : grid(gridOf(AffineMap(), 3, 4, 5))
    {
        source.initialize(4, 4, 4, 2);
        field.initialize(2, 2, 2, 3);
        destination.initialize(3, 4, 5, 2);
        destination.fill(-7);
        warp.field = resample::viewOf(field);
        region.sourceWidth = region.sourceHeight = region.sourceDepth = 4;
        region.output = Rect(0, 2, 0, 3, 0, 4);
    }

    // The code of every call that takes a warp, once it is known that nothing has been written.
    ErrorType refused()
    {
        const Rect untouched(1, 2, 3, 4, 5, 6);
        Rect box = untouched;
        const ErrorType code = resample::resample(source, grid, warp, &destination);
        EXPECT_EQ(resample::resample(source, grid, warp, region, &destination), code);
        EXPECT_EQ(region.support(grid, warp, &box), code);
        EXPECT_EQ(box.xStart, untouched.xStart);
        EXPECT_EQ(box.zEnd, untouched.zEnd);
        for (int n = 0; n < 3 * 4 * 5 * 2; ++n)
            EXPECT_EQ(destination.getBufferPointer()[n], -7);
        return code;
    }

    VxImage<short> source;
    VxImage<float> field;
    VxImage<short> destination;
    Grid grid;
    Warp warp;
    ResampleRegion region;
};

TEST_F(WarpRefusals, NothingThatIsRight)
{
    Rect box;
    EXPECT_EQ(resample::resample(source, grid, warp, &destination), SUCCESS);
    EXPECT_EQ(resample::resample(source, grid, warp, region, &destination), SUCCESS);
    EXPECT_EQ(region.support(grid, warp, &box), SUCCESS);
}

TEST_F(WarpRefusals, FieldsWithoutVoxels)
{
    warp.field = View<const float>();
    EXPECT_EQ(refused(), ERR_NULL_POINTER);
    warp.field.channels = 7;
    grid.map.rows[0][0] = 0.0;  // a null pointer is found before any number
    EXPECT_EQ(refused(), ERR_NULL_POINTER);
}

TEST_F(WarpRefusals, OtherThanThreeChannels)
{
    for (const unsigned int odd : {0U, 1U, 2U, 4U}) {
        warp.field.channels = odd;
        EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT) << odd;
    }
}

TEST_F(WarpRefusals, ElementsThatAreNoFractions)
{
    for (const DataType odd : {DT_UCHAR, DT_SHORT, DT_USHORT, DT_INT, DT_UINT}) {
        warp.field.type = odd;
        EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT) << odd;
    }
    warp.field.type = static_cast<DataType>(99);
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
}

TEST_F(WarpRefusals, SizesAndStridesThatNoSourceHas)
{
    for (unsigned int VoxelLayout::*const extent :
         {&VoxelLayout::width, &VoxelLayout::height, &VoxelLayout::depth})
        for (const unsigned int odd : {0U, 0x80000000U}) {
            warp.field = resample::viewOf(field);
            warp.field.*extent = odd;
            EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
        }
    warp.field = resample::viewOf(field);
    warp.field.strideZ = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
}

TEST_F(WarpRefusals, MapsThatAreNotInvertible)
{
    for (AffineMap Warp::*const map : {&Warp::toField, &Warp::toVoxels})
        for (const double odd : {0.0, kNaN, kInfinity}) {
            (warp.*map).rows[1][1] = odd;
            EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT) << odd;
            warp.*map = AffineMap();
        }
}

TEST_F(WarpRefusals, GridsThatResampleRefuses)
{
    grid.map.rows[1][1] = 0.0;
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
}

TEST_F(WarpRefusals, DestinationsThatOverlapTheField)
{
    std::vector<float> memory(3 * 4 * 5 * 2 + 24);
    warp.field = View<float>(memory.data(), 2, 2, 2, 3);
    const auto into = [&](std::size_t first) {
        return resample::resample(source, grid, warp,
                                  View<float>(memory.data() + first, 3, 4, 5, 2));
    };
    EXPECT_EQ(into(0), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(23), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(24), SUCCESS);
}

TEST_F(WarpRefusals, ImagesThatOverlapTheField)
{
    VxImage<float> floats;
    VxImage<float> whole;
    floats.initialize(4, 4, 4, 1);
    whole.initializeWithPointer(field.getBufferPointer(), 2, 2, 2, 3);
    EXPECT_EQ(resample::resample(floats, gridOf(AffineMap(), 2, 2, 2), warp, &whole),
              ERR_INVALID_CHANNEL);  // which is found first
    whole.terminate();
    whole.initializeWithPointer(field.getBufferPointer(), 2, 2, 2, 1);
    EXPECT_EQ(resample::resample(floats, gridOf(AffineMap(), 2, 2, 2), warp, &whole),
              ERR_INVALID_ARGUMENT);
}

TEST_F(WarpRefusals, NotAFieldThatIsItselfTheSource)
{
    VxImage<float> result;
    EXPECT_EQ(resample::resample(field, grid, warp, &result), SUCCESS);
}

TEST_F(WarpRefusals, RegionsThatResampleRefuses)
{
    Rect box;
    EXPECT_EQ(region.support(grid, warp, nullptr), ERR_NULL_POINTER);
    region.output.xEnd = 3;
    EXPECT_EQ(region.support(grid, warp, &box), ERR_INVALID_X);
    EXPECT_EQ(resample::resample(source, grid, warp, region, &destination), ERR_INVALID_X);
    region.output.xEnd = 2;
    region.brickZ = 1;
    EXPECT_EQ(resample::resample(source, grid, warp, region, &destination), ERR_INVALID_Z);
}

}  // namespace
}  // namespace volux::test
