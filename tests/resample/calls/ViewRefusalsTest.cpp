// Views that are refused, and those that are not although their numbers are odd.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::View;

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t View<short>::*kStrides[] = {&View<short>::strideX, &View<short>::strideY,
                                                   &View<short>::strideZ, &View<short>::strideC};
constexpr unsigned int View<short>::*kExtents[] = {&View<short>::width, &View<short>::height,
                                                   &View<short>::depth, &View<short>::channels};

class ViewRefusals : public ::testing::Test {
protected:
    // The code, once it is known that a refused destination is as it was.
    ErrorType performed(const Options& options = Options())
    {
        std::fill(results.begin(), results.end(), short{-7});
        const ErrorType code = resample::resample(source, grid, destination, options);
        if (code != SUCCESS) {
            EXPECT_EQ(std::count(results.begin(), results.end(), -7), 300);
        }
        return code;
    }

    std::vector<short> voxels = std::vector<short>(200, 7);
    std::vector<short> results = std::vector<short>(300);
    View<short> source{voxels.data() + 40, 2, 2, 2, 2};
    View<short> destination{results.data() + 40, 3, 4, 5, 2};
    Grid grid = gridOf(AffineMap(), 3, 4, 5);
};

TEST_F(ViewRefusals, ViewsWithoutMemory)
{
    source.data = nullptr;
    EXPECT_EQ(performed(), ERR_NULL_POINTER);
    source.data = voxels.data();
    destination.data = nullptr;
    EXPECT_EQ(performed(), ERR_NULL_POINTER);
}

TEST_F(ViewRefusals, SourcesWithoutVoxelsOrWithTooMany)
{
    for (unsigned int View<short>::*const extent : kExtents)
        for (const unsigned int odd : {0U, 0x80000000U, static_cast<unsigned int>(-1)}) {
            const View<short> before = source;
            source.*extent = odd;
            EXPECT_EQ(performed(), ERR_INVALID_ARGUMENT);
            source = before;
        }
}

TEST_F(ViewRefusals, DestinationsOfAnotherSize)
{
    const ErrorType codes[] = {ERR_INVALID_X, ERR_INVALID_Y, ERR_INVALID_Z, ERR_INVALID_CHANNEL};
    for (int n = 0; n < 4; ++n)
        for (const unsigned int odd : {0U, 1U, 7U}) {
            const View<short> before = destination;
            destination.*kExtents[n] = odd;
            EXPECT_EQ(performed(), codes[n]);
            destination = before;
        }
}

TEST_F(ViewRefusals, StridesThatNoMemoryHasRoomFor)
{
    const std::int64_t lowest =
        -static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(source.data) / sizeof(short));
    for (View<short>* const view : {&source, &destination})
        for (std::int64_t View<short>::*const stride : kStrides)
            for (const std::int64_t odd : {kLeast, kLeast + 1, kMost, kMost / 2, kLeast / 2,
                                           std::int64_t{1} << 62U, lowest * 2}) {
                const View<short> before = *view;
                view->*stride = odd;
                EXPECT_EQ(performed(), ERR_INVALID_ARGUMENT) << odd;
                *view = before;
            }
}

TEST_F(ViewRefusals, StridesWhoseSumPassesSignedNumbers)
{
    source.strideX = std::int64_t{1} << 61U;
    source.strideY = std::int64_t{1} << 61U;
    EXPECT_EQ(performed(), ERR_INVALID_ARGUMENT);
}

TEST(ViewRefusalsOfBytes, BeginWhereSignedNumbersEnd)
{
    struct {
        double result = 0.0;  // before what the view spans
        unsigned char voxel = 7;
    } memory;
    View<const unsigned char> source(&memory.voxel, 2, 1, 1);
    const Position first = {0, 0, 0};
    for (const std::int64_t stride : {kMost - 1, kMost}) {
        source.strideX = stride;
        const ErrorType code = resample::sample(source, &first, 1, resample::Units::VOXELS, 0,
                                                &memory.result, Options(NearestNeighbor()));
        EXPECT_EQ(code, stride == kMost ? ERR_INVALID_ARGUMENT : SUCCESS);
    }
    EXPECT_EQ(memory.result, 7.0);
}

TEST_F(ViewRefusals, NotTheStrideOfASingleVoxel)
{
    for (std::int64_t View<short>::*const stride : kStrides)
        for (const std::int64_t odd : {kLeast, kMost}) {
            View<short> single(voxels.data(), 1, 1, 1);
            View<short> result(results.data(), 1, 1, 1);
            single.*stride = odd;
            result.*stride = odd;
            for (Interpolator* const interpolator : kInterpolators) {
                results[0] = 0;
                EXPECT_EQ(resample::resample(single, gridOf(AffineMap(), 1, 1, 1), result,
                                             Options(interpolator)),
                          SUCCESS);
                EXPECT_EQ(results[0], 7);
            }
        }
}

TEST_F(ViewRefusals, DestinationsWhoseVoxelsShareMemory)
{
    const auto into = [&](std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c) {
        destination.data = results.data() + 100;
        destination.strideX = x;
        destination.strideY = y;
        destination.strideZ = z;
        destination.strideC = c;
        return performed();
    };
    EXPECT_EQ(into(0, 6, 24, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, 0, 24, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, 6, 0, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, 6, 24, 0), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(-2, 5, 24, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, -5, 24, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, 6, -23, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(-1, 6, 24, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(2, -6, 24, -1), SUCCESS);
    EXPECT_EQ(into(-2, 6, -24, 1), SUCCESS);
}

TEST_F(ViewRefusals, MemoryThatBothShareToTheLastByte)
{
    short bytes[10] = {};
    grid = gridOf(AffineMap(), 3, 1, 1);
    source = View<short>(bytes + 5, 3, 1, 1);
    source.strideX = -1;  // elements 3 to 5
    const auto at = [&](int last) {
        destination = View<short>(bytes + last, 3, 1, 1);
        destination.strideX = -1;
        return performed();
    };
    EXPECT_EQ(at(2), SUCCESS);
    EXPECT_EQ(at(3), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(at(7), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(at(8), SUCCESS);
}

TEST_F(ViewRefusals, TypesThatAreNone)
{
    for (const int tag : {-1, 0, 8}) {
        View<void> untyped = source;
        untyped.type = static_cast<DataType>(tag);
        EXPECT_EQ(resample::resample(untyped, grid, destination), ERR_INVALID_ARGUMENT);
        untyped = destination;
        untyped.type = static_cast<DataType>(tag);
        EXPECT_EQ(resample::resample(source, grid, untyped), ERR_INVALID_ARGUMENT);
    }
}

TEST_F(ViewRefusals, NotAVoxelThatIsRepeatedWithoutEnd)
{
    source.width = source.height = source.depth = 0x7FFFFFFF;
    source.strideX = source.strideY = source.strideZ = 0;
    grid.map.rows[0][3] = grid.map.rows[1][3] = grid.map.rows[2][3] = 2e9;
    for (Interpolator* const interpolator : kInterpolators) {
        EXPECT_EQ(performed(interpolator), SUCCESS);
        EXPECT_EQ(destination.data[0], 7);
    }
    PeriodicBorder periodic;  // which sees an image
    EXPECT_EQ(performed(Options(Linear(), &periodic)), ERR_INVALID_ARGUMENT);
}

TEST_F(ViewRefusals, OnlyALackOfMemoryForTheCopyThatAPolicyOfTheCallersOwnSees)
{
    source.width = 0x7FFFFFFF;
    source.height = 0x100000;
    source.strideX = source.strideY = 0;
    source.strideZ = -2;
    PeriodicBorder periodic;
    EXPECT_EQ(performed(Options(Linear(), &periodic)), ERR_ALLOCATION_FAILED);
}

TEST_F(ViewRefusals, NoImageForItsTypeAtRunTime)
{
    VxImage<int> result;
    const View<const void> untyped = source;
    EXPECT_EQ(resample::resample(untyped, grid, &result), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result.getBufferPointer(), nullptr);
}

}  // namespace
}  // namespace volux::test
