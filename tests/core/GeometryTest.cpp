#include "volux/core/Geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "support/BitExact.h"
#include "support/Names.h"

namespace volux::test {
namespace {

constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();

void expectFields(const ImageSize& size, unsigned int w, unsigned int h, unsigned int d,
                  unsigned int c)
{
    EXPECT_EQ(size.width, w);
    EXPECT_EQ(size.height, h);
    EXPECT_EQ(size.depth, d);
    EXPECT_EQ(size.channels, c);
}

void expectFields(const VoxelSize& size, double x, double y, double z)
{
    EXPECT_TRUE(bitEqual(size.x, x));
    EXPECT_TRUE(bitEqual(size.y, y));
    EXPECT_TRUE(bitEqual(size.z, z));
}

void expectFields(const Rect& box, unsigned int x0, unsigned int x1, unsigned int y0,
                  unsigned int y1, unsigned int z0, unsigned int z1)
{
    EXPECT_EQ(box.xStart, x0);
    EXPECT_EQ(box.xEnd, x1);
    EXPECT_EQ(box.yStart, y0);
    EXPECT_EQ(box.yEnd, y1);
    EXPECT_EQ(box.zStart, z0);
    EXPECT_EQ(box.zEnd, z1);
}

TEST(ImageSize, IsZeroByDefault)
{
    expectFields(ImageSize(), 0, 0, 0, 0);
}

TEST(ImageSize, StoresFourValuesAsGiven)
{
    expectFields(ImageSize(1, 2, 3, 4), 1, 2, 3, 4);
    expectFields(ImageSize(kMax, 0, kMax, 1), kMax, 0, kMax, 1);
}

TEST(ImageSize, DiffersAsSoonAsOneFieldDoes)
{
    const ImageSize size(1, 2, 3, 4);
    EXPECT_TRUE(size == ImageSize(1, 2, 3, 4));
    EXPECT_FALSE(size != ImageSize(1, 2, 3, 4));
    const ImageSize others[] = {{9, 2, 3, 4}, {1, 9, 3, 4}, {1, 2, 9, 4}, {1, 2, 3, 5}};
    for (const ImageSize& other : others) {
        EXPECT_TRUE(size != other);
        EXPECT_FALSE(size == other);
    }
}

TEST(ImageSize, CopiesAndMovesItsFields)
{
    const ImageSize source(1, 2, 3, 4);
    ImageSize copied;
    EXPECT_EQ(&(copied = source), &copied);
    expectFields(copied, 1, 2, 3, 4);
    ImageSize moved;
    EXPECT_EQ(&(moved = ImageSize(5, 6, 7, 8)), &moved);
    expectFields(moved, 5, 6, 7, 8);
    expectFields(ImageSize(source), 1, 2, 3, 4);
}

TEST(VoxelSize, IsZeroByDefault)
{
    expectFields(VoxelSize(), 0.0, 0.0, 0.0);
}

TEST(VoxelSize, StoresThreeValuesAsGiven)
{
    expectFields(VoxelSize(0.5, -2.0, 1e300), 0.5, -2.0, 1e300);
    expectFields(VoxelSize(-0.0, kNaN, HUGE_VAL), -0.0, kNaN, HUGE_VAL);
}

TEST(VoxelSize, DiffersAsSoonAsOneFieldDoes)
{
    const VoxelSize size(1.0, 2.0, 3.0);
    EXPECT_TRUE(size == VoxelSize(1.0, 2.0, 3.0));
    EXPECT_FALSE(size != VoxelSize(1.0, 2.0, 3.0));
    const VoxelSize others[] = {{9.0, 2.0, 3.0}, {1.0, 9.0, 3.0}, {1.0, 2.0, 9.0}};
    for (const VoxelSize& other : others) {
        EXPECT_TRUE(size != other);
        EXPECT_FALSE(size == other);
    }
}

TEST(VoxelSize, IsComparedWithoutTolerance)
{
    const VoxelSize one(1.0, 1.0, 1.0);
    EXPECT_FALSE(one == VoxelSize(1.0, 1.0, 1.0000000001));
    EXPECT_FALSE(one == VoxelSize(1.0, std::nextafter(1.0, 2.0), 1.0));
    EXPECT_TRUE(one != VoxelSize(std::nextafter(1.0, 0.0), 1.0, 1.0));
}

TEST(VoxelSize, ZerosOfEitherSignAreEqual)
{
    EXPECT_TRUE(VoxelSize(0.0, 0.0, 0.0) == VoxelSize(-0.0, -0.0, -0.0));
    EXPECT_FALSE(VoxelSize(0.0, 0.0, 0.0) != VoxelSize(-0.0, -0.0, -0.0));
}

TEST(VoxelSize, WithANaNDiffersEvenFromItself)
{
    const VoxelSize sizes[] = {{kNaN, 1.0, 1.0}, {1.0, kNaN, 1.0}, {1.0, 1.0, kNaN}};
    for (const VoxelSize& size : sizes) {
        const VoxelSize copy = size;
        EXPECT_FALSE(size == copy);
        EXPECT_TRUE(size != copy);
        EXPECT_FALSE(size == size);
        EXPECT_TRUE(size != size);
    }
}

TEST(VoxelSize, CopiesAndMovesItsFields)
{
    const VoxelSize source(1.0, 2.0, 3.0);
    VoxelSize copied;
    EXPECT_EQ(&(copied = source), &copied);
    expectFields(copied, 1.0, 2.0, 3.0);
    VoxelSize moved;
    EXPECT_EQ(&(moved = VoxelSize(4.0, -0.0, kNaN)), &moved);
    expectFields(moved, 4.0, -0.0, kNaN);
    expectFields(VoxelSize(source), 1.0, 2.0, 3.0);
}

TEST(Rect, IsTheVoxelAtTheOriginByDefault)
{
    expectFields(Rect(), 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Rect().width(), 1U);
    EXPECT_EQ(Rect().height(), 1U);
    EXPECT_EQ(Rect().depth(), 1U);
}

TEST(Rect, OfFourValuesLiesInThePlaneZ0)
{
    expectFields(Rect(1, 2, 3, 4), 1, 2, 3, 4, 0, 0);
}

TEST(Rect, StoresSixValuesInTheirOrder)
{
    expectFields(Rect(1, 2, 3, 4, 5, 6), 1, 2, 3, 4, 5, 6);
    expectFields(Rect(9, 2, kMax, 0, 5, 4), 9, 2, kMax, 0, 5, 4);
}

struct RangeCase {
    unsigned int start;
    unsigned int end;
    unsigned int length;
    const char* rule;
};

constexpr RangeCase kRanges[] = {
    {5, 5, 1, "one voxel"},
    {0, 9, 10, "both ends count"},
    {6, 5, 0, "empty"},
    {kMax, 0, 0, "empty by far"},
    {0, kMax, 0, "2^32 wraps to 0"},
    {1, kMax, kMax, "the longest range that does not wrap"},
    {0, kMax - 1, kMax, "the same, from 0"},
    {kMax, kMax, 1, "the last index"},
    {0x7FFFFFFF, 0x80000000, 2, "across the sign bit of an int"},
};

TEST(Rect, MeasuresEachRangeByTheTable)
{
    for (const RangeCase& entry : kRanges) {
        const unsigned int a = entry.start;
        const unsigned int b = entry.end;
        EXPECT_EQ(Rect(a, b, 2, 1, 2, 1).width(), entry.length) << entry.rule;
        EXPECT_EQ(Rect(2, 1, a, b, 2, 1).height(), entry.length) << entry.rule;
        EXPECT_EQ(Rect(2, 1, 2, 1, a, b).depth(), entry.length) << entry.rule;
    }
}

TEST(Rect, MeasuresABoxInAPlane)
{
    const Rect box(5, 5, 0, 9);
    EXPECT_EQ(box.width(), 1U);
    EXPECT_EQ(box.height(), 10U);
    EXPECT_EQ(box.depth(), 1U);
}

TEST(Rect, CopiesAndMovesItsFields)
{
    const Rect source(1, 2, 3, 4, 5, 6);
    Rect copied;
    EXPECT_EQ(&(copied = source), &copied);
    expectFields(copied, 1, 2, 3, 4, 5, 6);
    Rect moved;
    EXPECT_EQ(&(moved = Rect(7, 8, 9, 10, 11, 12)), &moved);
    expectFields(moved, 7, 8, 9, 10, 11, 12);
    expectFields(Rect(source), 1, 2, 3, 4, 5, 6);
}

}  // namespace
}  // namespace volux::test
