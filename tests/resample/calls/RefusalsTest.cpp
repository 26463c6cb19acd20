// What is refused, and that nothing has been written then.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "support/ImageFields.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

class Refusals : public ::testing::Test {
protected:
    Refusals() : grid(gridOf(AffineMap(), 3, 4, 5))
    {
        source.initialize(4, 4, 4, 2);
        destination.initialize(3, 4, 5, 2);
        destination.fill(-7);
        destination.setVoxelSize(9, 9, 9);
    }

    // The code, once it is known that the destination is as it was.
    ErrorType refused(const Options& options = Options())
    {
        const ErrorType code = resample::resample(source, grid, &destination, options);
        EXPECT_EQ(destination.getVoxelSize(), VoxelSize(9, 9, 9));
        for (int n = 0; n < 3 * 4 * 5 * 2; ++n)
            EXPECT_EQ(destination.getBufferPointer()[n], -7);
        return code;
    }

    VxImage<short> source;
    VxImage<short> destination;
    Grid grid;
};

TEST_F(Refusals, NullPointers)
{
    EXPECT_EQ(resample::resample<short>(source, grid, nullptr), ERR_NULL_POINTER);
    Options options;
    options.interpolator = nullptr;
    EXPECT_EQ(refused(options), ERR_NULL_POINTER);
    options = Options();
    options.border = nullptr;
    EXPECT_EQ(refused(options), ERR_NULL_POINTER);
    source.terminate();
    EXPECT_EQ(refused(), ERR_NULL_POINTER);
}

TEST_F(Refusals, ImpossibleSizes)
{
    for (unsigned int Grid::*const extent : {&Grid::width, &Grid::height, &Grid::depth})
        for (const unsigned int odd : {0U, 0x80000000U, static_cast<unsigned int>(-3)}) {
            const unsigned int before = grid.*extent;
            grid.*extent = odd;
            EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
            grid.*extent = before;
        }
}

TEST_F(Refusals, SlabsThatAreNone)
{
    resample::Planes planes;
    planes.width = planes.height = planes.count = 3;
    VxImage<short> result;
    EXPECT_EQ(resample::reslice(source, planes, &result, Options(), {0}), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(resample::reslice(source, planes, &result, Options(), {0x80000000U}),
              ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result.getBufferPointer(), nullptr);
}

TEST_F(Refusals, SlabsWhoseSubsamplesNobodyCounts)
{
    resample::Planes planes;
    planes.width = planes.height = 1;
    planes.count = 1U << 20U;
    Options options;
    options.subsamples = {1, 1, 4};
    VxImage<short> result;
    EXPECT_EQ(resample::reslice(source, planes, &result, options, {1U << 10U}),
              ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result.getBufferPointer(), nullptr);
}

TEST_F(Refusals, SingularAndInfiniteMaps)
{
    grid.map.rows[1][1] = 0.0;
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
    grid.map.rows[1][1] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
    grid.map = AffineMap();
    grid.map.rows[2][3] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
}

TEST_F(Refusals, SpacingsThatAreNoDistances)
{
    for (const double odd : {0.0, -1.0, std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()}) {
        grid.spacing = VoxelSize(1, odd, 1);
        EXPECT_EQ(refused(), ERR_INVALID_ARGUMENT);
    }
}

TEST_F(Refusals, SourcesWithoutADistanceBetweenVoxels)
{
    for (const double odd :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        source.setVoxelSize(1, odd, 1);
        EXPECT_EQ(resize(source, 3, 4, 5, resample::Align::EDGES, &destination),
                  ERR_INVALID_ARGUMENT);
        EXPECT_EQ(resize(source, VoxelSize(1, 1, 1), resample::Align::CENTRES, &destination),
                  ERR_INVALID_ARGUMENT);
        VxImage<short> result;  // a grid needs no spacing of the source's
        EXPECT_EQ(resample::resample(source, grid, &result), SUCCESS);
    }
}

TEST_F(Refusals, ConstantsThatTheTypeDoesNotHold)
{
    const auto constant = [](double value) { return Options(Linear(), Constant(), value); };
    for (const double odd :
         {0.5, 32768.0, -32769.0, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(refused(constant(odd)), ERR_INVALID_ARGUMENT) << odd;
    EXPECT_EQ(resample::resample(source, grid, &destination, constant(-32768.0)), SUCCESS);
    EXPECT_EQ(resample::resample(source, grid, &destination, constant(32767.0)), SUCCESS);
}

TEST_F(Refusals, DestinationsOfAnotherSize)
{
    grid.width = 4;
    EXPECT_EQ(refused(), ERR_INVALID_X);
    grid.width = 3;
    grid.height = 5;
    EXPECT_EQ(refused(), ERR_INVALID_Y);
    grid.height = 4;
    grid.depth = 4;
    EXPECT_EQ(refused(), ERR_INVALID_Z);
    grid.depth = 5;
    source.terminate();
    source.initialize(4, 4, 4, 1);
    EXPECT_EQ(refused(), ERR_INVALID_CHANNEL);
}

TEST_F(Refusals, MemoryThatBothShare)
{
    VxImage<short> inside;
    inside.initializeWithPointer(&source(3, 3, 3, 1), 1, 1, 1, 1);
    VxImage<short> single;
    single.initializeWithPointer(source.getBufferPointer(), 4, 4, 4, 1);
    single.setImageStride(8, 32, 1, 2);
    grid = gridOf(AffineMap(), 1, 1, 1);
    EXPECT_EQ(resample::resample(single, grid, &inside), SUCCESS);  // behind its last element
    inside.terminate();
    inside.initializeWithPointer(&source(2, 3, 3, 1), 1, 1, 1, 1);
    EXPECT_EQ(resample::resample(single, grid, &inside), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(resample::resize(source, 4, 4, 4, resample::Align::EDGES, &source),
              ERR_INVALID_ARGUMENT);
}

TEST_F(Refusals, DestinationsWhoseVoxelsShareMemory)
{
    std::vector<short> block(200, -7);
    VxImage<short> wrapped;
    wrapped.initializeWithPointer(block.data(), 3, 4, 5, 2);
    const auto into = [&](unsigned int y, unsigned int z, unsigned int c, unsigned int x) {
        wrapped.setImageStride(y, z, c, x);
        return resample::resample(source, grid, &wrapped);
    };
    EXPECT_EQ(into(0, 24, 1, 2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(5, 24, 1, 2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(6, 23, 1, 2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(6, 24, 0, 2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(into(6, 24, 1, 0), ERR_INVALID_ARGUMENT);
    for (const short element : block)
        ASSERT_EQ(element, -7);
    EXPECT_EQ(into(10, 2, 1, 40), SUCCESS);
    EXPECT_EQ(into(6, 24, 1, 2), SUCCESS);
}

TEST(RefusalsOfSharedMemory, CountToTheLastByte)
{
    unsigned char bytes[8] = {};
    VxImage<unsigned char> source;
    source.initializeWithPointer(bytes + 3, 2, 1, 1, 1);
    const auto at = [&](int first) {
        VxImage<unsigned char> destination;
        destination.initializeWithPointer(bytes + first, 2, 1, 1, 1);
        return resample::resample(source, gridOf(AffineMap(), 2, 1, 1), &destination);
    };
    EXPECT_EQ(at(1), SUCCESS);
    EXPECT_EQ(at(2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(at(4), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(at(5), SUCCESS);
}

constexpr unsigned int kMost = 0x7FFFFFFF;
const Grid kUncountable = gridOf(AffineMap(), kMost, kMost, kMost);  // bytes, by 64 bits
const Grid kUnobtainable = gridOf(AffineMap(), kMost, kMost, 1);

TEST_F(Refusals, MoreBytesThanCanBeCounted)
{
    VxImage<short> empty;
    empty.setVoxelSize(2, 3, 4);
    const auto before = fieldsOf(empty);
    EXPECT_EQ(resample::resample(source, kUncountable, &empty), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(empty), before);
}

TEST_F(Refusals, MoreBytesThanCanBeCountedForAnImageWhoseAllocationFailed)
{
    ASSERT_EQ(destination.setImageSize(0x7FFFFFFF, 0x7FFFFFFF, 1, 1), ERR_ALLOCATION_FAILED);
    const auto before = fieldsOf(destination);
    EXPECT_EQ(resample::resample(source, kUncountable, &destination), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(destination), before);
    EXPECT_EQ(resample::resample(source, grid, &destination), SUCCESS);
    EXPECT_EQ(destination(2, 3, 3, 1), 0);
}

TEST_F(Refusals, ResultsThatNoMemoryHolds)
{
    VxImage<short> empty;
    empty.setVoxelSize(2, 3, 4);
    const auto before = fieldsOf(empty);
    EXPECT_EQ(resample::resample(source, kUnobtainable, &empty), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(fieldsOf(empty), before);
}

TEST_F(Refusals, NotAGridOutsideTheSource)
{
    source.fill(7);
    grid.map.rows[1][3] = -100.0;
    EXPECT_EQ(resample::resample(source, grid, &destination), SUCCESS);
    EXPECT_EQ(destination(2, 3, 4, 1), 0);
    Options extending;
    extending.edgeExtends = true;
    EXPECT_EQ(resample::resample(source, grid, &destination, extending), SUCCESS);
    EXPECT_EQ(destination(2, 3, 4, 1), 7);
    EXPECT_EQ(resample::resample(source, grid, &destination, Options(Linear(), Constant(), -4)),
              SUCCESS);
    EXPECT_EQ(destination(2, 3, 4, 1), -4);
}

TEST_F(Refusals, NothingElse)
{
    EXPECT_EQ(resample::resample(source, grid, &destination), SUCCESS);
    EXPECT_EQ(destination(0, 0, 0, 0), 0);
}

}  // namespace
}  // namespace volux::test
