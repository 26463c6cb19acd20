// Voxels at whole positions: reading, writing and the tests of a position.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <ostream>
#include <vector>

#include "support/BitExact.h"
#include "support/ContainerOracle.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/Seeded.h"
#include "support/SparseBlock.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

/// An image of 4 x 3 x 2 voxels with 2 channels that wraps a padded block between guards.
template <class T>
class Access : public ::testing::Test {
protected:
    void SetUp() override { wrap(volume, &image); }

    T stored(int x, int y, int z, int c) const
    {
        return volume.at(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                         static_cast<unsigned int>(z), static_cast<unsigned int>(c));
    }

    bool isInside(unsigned int x, unsigned int y, unsigned int z) const
    {
        return callPrivate<member::IsInside>(image, x, y, z);
    }
    bool isInside(unsigned int x, unsigned int y, unsigned int z, unsigned int c) const
    {
        return callPrivate<member::IsInsideWithChannel>(image, x, y, z, c);
    }

    Volume<T> volume = someVolume<T>(padded(4, 3, 2, 2), 11);
    const Volume<T> untouched = volume;
    VxImage<T> image;
};
TYPED_TEST_SUITE(Access, ElementTypes, ElementTypeNames);

struct Position {
    int x, y, z, c;
};

std::ostream& operator<<(std::ostream& out, const Position& p)
{
    return out << '(' << p.x << ", " << p.y << ", " << p.z << ", " << p.c << ')';
}

template <class Visit>
void forEachInside(const Visit& visit)
{
    for (int i = 0; i < 4 * 3 * 2 * 2; ++i)
        visit(Position{i % 4, i / 4 % 3, i / 12 % 2, i / 24});
}

constexpr Position kOutside[] = {
    {-1, 0, 0, 0},      {0, -1, 0, 0},      {0, 0, -1, 0},      {0, 0, 0, -1},
    {4, 0, 0, 0},       {0, 3, 0, 0},       {0, 0, 2, 0},       {0, 0, 0, 2},
    {INT_MIN, 0, 0, 0}, {0, INT_MIN, 0, 0}, {0, 0, INT_MIN, 0}, {0, 0, 0, INT_MIN},
    {INT_MAX, 0, 0, 0}, {0, INT_MAX, 0, 0}, {0, 0, INT_MAX, 0}, {0, 0, 0, INT_MAX},
    {-1, -1, -1, -1},   {4, 3, 2, 2},       {3, 2, 1, -1},      {-4, -3, -2, -2},
};

TYPED_TEST(Access, ReadsEveryVoxelThroughTheStrides)
{
    const VxImage<TypeParam>& constant = this->image;
    forEachInside([&](const Position& p) {
        const TypeParam expected = this->stored(p.x, p.y, p.z, p.c);
        EXPECT_TRUE(bitEqual(this->image(p.x, p.y, p.z, p.c), expected)) << p;
        EXPECT_TRUE(bitEqual(constant(p.x, p.y, p.z, p.c), expected)) << p;
        EXPECT_TRUE(bitEqual(constant.getValueVoxel(p.x, p.y, p.z, p.c), expected)) << p;
        EXPECT_TRUE(this->image.hasVoxel(p.x, p.y, p.z, p.c)) << p;
    });
}

TYPED_TEST(Access, TheOperatorRefersToTheElement)
{
    const VxImage<TypeParam>& constant = this->image;
    EXPECT_EQ(&this->image(3, 2, 1, 1), &this->volume.at(3, 2, 1, 1));
    EXPECT_EQ(&constant(3, 2, 1, 1), &this->volume.at(3, 2, 1, 1));
    this->image(1, 2, 1, 0) = someValue<TypeParam>(99);
    EXPECT_TRUE(bitEqual(this->stored(1, 2, 1, 0), someValue<TypeParam>(99)));
}

TYPED_TEST(Access, TwoCoordinatesReadChannel0OfTheFirstSlice)
{
    forEachInside([&](const Position& p) {
        EXPECT_TRUE(bitEqual(this->image.getValueVoxel(p.x, p.y), this->stored(p.x, p.y, 0, 0)));
    });
}

TYPED_TEST(Access, ThreeCoordinatesReadChannel0)
{
    forEachInside([&](const Position& p) {
        EXPECT_TRUE(
            bitEqual(this->image.getValueVoxel(p.x, p.y, p.z), this->stored(p.x, p.y, p.z, 0)));
    });
}

TYPED_TEST(Access, OutsideReadsZero)
{
    for (const Position& p : kOutside) {
        EXPECT_TRUE(bitEqual(this->image.getValueVoxel(p.x, p.y, p.z, p.c), TypeParam{})) << p;
        if (p.c == 0) {
            EXPECT_TRUE(bitEqual(this->image.getValueVoxel(p.x, p.y, p.z), TypeParam{})) << p;
        }
        if (p.c == 0 && p.z == 0) {
            EXPECT_TRUE(bitEqual(this->image.getValueVoxel(p.x, p.y), TypeParam{})) << p;
        }
    }
}

TYPED_TEST(Access, OutsideWritesNothing)
{
    for (const Position& p : kOutside) {
        EXPECT_EQ(this->image.setValueVoxel(p.x, p.y, p.z, p.c, someValue<TypeParam>(99)),
                  ERR_INVALID_ARGUMENT);
    }
    EXPECT_TRUE(sameBlock(this->volume, this->untouched));
}

TYPED_TEST(Access, OutsideIsWhatEveryTestSays)
{
    for (const Position& p : kOutside) {
        EXPECT_FALSE(this->image.hasVoxel(p.x, p.y, p.z, p.c)) << p;
        EXPECT_FALSE(this->isInside(static_cast<unsigned int>(p.x), static_cast<unsigned int>(p.y),
                                    static_cast<unsigned int>(p.z), static_cast<unsigned int>(p.c)))
            << p;
    }
}

TYPED_TEST(Access, WritesExactlyOneElement)
{
    Volume<TypeParam> expected = this->volume;
    std::uint64_t seed = 2000;
    forEachInside([&](const Position& p) {
        const auto value = someValue<TypeParam>(seed++);
        expected.at(static_cast<unsigned int>(p.x), static_cast<unsigned int>(p.y),
                    static_cast<unsigned int>(p.z), static_cast<unsigned int>(p.c)) = value;
        ASSERT_EQ(this->image.setValueVoxel(p.x, p.y, p.z, p.c, value), SUCCESS);
        ASSERT_TRUE(sameBlock(this->volume, expected)) << p;
    });
}

TYPED_TEST(Access, AnEmptyImageHasNoVoxel)
{
    VxImage<TypeParam> empty;
    EXPECT_TRUE(bitEqual(empty.getValueVoxel(0, 0), TypeParam{}));
    EXPECT_TRUE(bitEqual(empty.getValueVoxel(0, 0, 0), TypeParam{}));
    EXPECT_TRUE(bitEqual(empty.getValueVoxel(0, 0, 0, 0), TypeParam{}));
    EXPECT_EQ(empty.setValueVoxel(0, 0, 0, 0, TypeParam{1}), ERR_INVALID_ARGUMENT);
    EXPECT_FALSE(empty.hasVoxel(0, 0, 0, 0));
    EXPECT_FALSE(callPrivate<member::IsInside>(empty, 0U, 0U, 0U));
}

TYPED_TEST(Access, WithoutChannelsOnlyTheFormsWithAChannelFail)
{
    overwriteExtents(this->image, 4, 3, 2, 0);
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 2), this->stored(1, 2, 0, 0)));
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 2, 1), this->stored(1, 2, 1, 0)));
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 2, 1, 0), TypeParam{}));
    EXPECT_EQ(this->image.setValueVoxel(1, 2, 1, 0, TypeParam{1}), ERR_INVALID_ARGUMENT);
    EXPECT_TRUE(this->isInside(1, 2, 1));
    EXPECT_FALSE(this->isInside(1, 2, 1, 0));
    EXPECT_FALSE(this->image.hasVoxel(1, 2, 1, 0));
}

TYPED_TEST(Access, WithoutDepthTwoCoordinatesReadZero)
{
    overwriteExtents(this->image, 4, 3, 0, 2);
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 2), TypeParam{}));
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 2, 0), TypeParam{}));
}

TYPED_TEST(Access, ThreeCoordinatesAreInsideWhateverTheChannels)
{
    forEachInside([&](const Position& p) {
        EXPECT_TRUE(this->isInside(static_cast<unsigned int>(p.x), static_cast<unsigned int>(p.y),
                                   static_cast<unsigned int>(p.z)));
    });
    EXPECT_FALSE(this->isInside(4294967295U, 0, 0));
    EXPECT_FALSE(this->isInside(0, 3, 0));
    EXPECT_FALSE(this->isInside(0, 0, 2147483648U));
}

TYPED_TEST(Access, TheLargestExtentsAreTestedToTheirLastIndex)
{
    overwriteExtents(this->image, INT_MAX, INT_MAX, INT_MAX, INT_MAX);
    constexpr int kLast = INT_MAX - 1;
    EXPECT_TRUE(this->image.hasVoxel(kLast, kLast, kLast, kLast));
    EXPECT_FALSE(this->image.hasVoxel(INT_MAX, 0, 0, 0));
    EXPECT_FALSE(this->image.hasVoxel(-1, 0, 0, 0));
    EXPECT_TRUE(this->isInside(kLast, kLast, kLast, kLast));
    EXPECT_FALSE(this->isInside(0, 0, 0, INT_MAX));
    EXPECT_FALSE(this->isInside(0, 2147483648U, 0));
}

TYPED_TEST(Access, HasVoxelComparesSignedAndIsInsideUnsigned)
{
    overwriteExtents(this->image, 2147483648U, 4294967295U, 4294967295U, 4294967295U);
    EXPECT_FALSE(this->image.hasVoxel(0, 0, 0, 0));
    EXPECT_TRUE(this->isInside(0, 0, 0, 0));
    EXPECT_TRUE(this->isInside(2147483647U, 2147483648U, 4294967294U));
    EXPECT_FALSE(this->isInside(2147483648U, 0, 0));
}

TYPED_TEST(Access, HasVoxelComparesEachExtentAsASignedNumber)
{
    constexpr unsigned int kNegative = 2147483648U;
    overwriteExtents(this->image, kNegative, 3, 2, 2);
    EXPECT_FALSE(this->image.hasVoxel(0, 0, 0, 0));
    overwriteExtents(this->image, 4, kNegative, 2, 2);
    EXPECT_FALSE(this->image.hasVoxel(0, 0, 0, 0));
    overwriteExtents(this->image, 4, 3, kNegative, 2);
    EXPECT_FALSE(this->image.hasVoxel(0, 0, 0, 0));
    overwriteExtents(this->image, 4, 3, 2, kNegative);
    EXPECT_FALSE(this->image.hasVoxel(0, 0, 0, 0));
}

TYPED_TEST(Access, HasVoxelAgreesWithIsInsideOnTheSameBits)
{
    Seeded random(5);
    const auto coordinate = [&] {
        return static_cast<int>(static_cast<unsigned int>(random.bits() >> random.below(64)));
    };
    overwriteExtents(this->image, 100, 70000, 3, INT_MAX);
    for (int i = 0; i < 20000; ++i) {
        const Position p{coordinate(), coordinate(), coordinate() % 4, coordinate()};
        ASSERT_EQ(this->image.hasVoxel(p.x, p.y, p.z, p.c),
                  this->isInside(static_cast<unsigned int>(p.x), static_cast<unsigned int>(p.y),
                                 static_cast<unsigned int>(p.z), static_cast<unsigned int>(p.c)))
            << p;
    }
}

template <class T>
class FloatingAccess : public ::testing::Test {
};
TYPED_TEST_SUITE(FloatingAccess, RealTypes, ElementTypeNames);

TYPED_TEST(FloatingAccess, StoresEveryKindOfValueAsGiven)
{
    using Limits = std::numeric_limits<TypeParam>;
    VxImage<TypeParam> image;
    ASSERT_EQ(image.initialize(2, 1, 1, 1), SUCCESS);
    const TypeParam values[] = {-TypeParam{0}, Limits::quiet_NaN(), -Limits::infinity(),
                                Limits::denorm_min(), Limits::max()};
    for (const TypeParam value : values) {
        ASSERT_EQ(image.setValueVoxel(1, 0, 0, 0, value), SUCCESS);
        EXPECT_TRUE(bitEqual(image.getValueVoxel(1, 0, 0, 0), value));
    }
}

class AccessBeyond32Bits : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!block.exists())
            GTEST_SKIP() << "no 4 GiB of address space";
    }

    const SparseBlock block;
    VxImage<unsigned char> image;
};

TEST_F(AccessBeyond32Bits, AddressesElementsBy64Bits)
{
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 2, 65537, 2, 2), SUCCESS);
    image.setImageStride(65536, 4294967295U, 7, 1);
    ASSERT_EQ(image.setValueVoxel(0, 65536, 0, 0, 1), SUCCESS);
    EXPECT_EQ(block.bytes()[std::size_t{1} << 32U], 1);
    ASSERT_EQ(image.setValueVoxel(1, 1, 1, 1, 2), SUCCESS);
    EXPECT_EQ(block.bytes()[std::size_t{4294967295U} + 65536 + 1 + 7], 2);
    EXPECT_EQ(image(1, 1, 1, 1), 2);
    EXPECT_EQ(block.bytes()[0], 0);
}

TEST_F(AccessBeyond32Bits, StepsOverASliceThat32BitsDoNotCount)
{
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 65536, 65537, 2, 1), SUCCESS);
    ASSERT_EQ(image.setValueVoxel(0, 0, 1, 0, 3), SUCCESS);
    EXPECT_EQ(block.bytes()[std::size_t{65536} * 65537], 3);
    EXPECT_EQ(block.bytes()[65536], 0);
}

TEST_F(AccessBeyond32Bits, StepsByTheLargestStrideAlongEveryAxis)
{
    constexpr unsigned int kLargest = std::numeric_limits<unsigned int>::max();
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 2, 2, 2, 2), SUCCESS);
    image.setImageStride(0, 0, 0, kLargest);
    ASSERT_EQ(image.setValueVoxel(1, 0, 0, 0, 1), SUCCESS);
    EXPECT_EQ(block.bytes()[kLargest], 1);
    image.setImageStride(kLargest, 0, 0, 0);
    ASSERT_EQ(image.setValueVoxel(0, 1, 0, 0, 2), SUCCESS);
    EXPECT_EQ(block.bytes()[kLargest], 2);
    image.setImageStride(0, kLargest, 0, 0);
    ASSERT_EQ(image.setValueVoxel(0, 0, 1, 0, 3), SUCCESS);
    EXPECT_EQ(block.bytes()[kLargest], 3);
    image.setImageStride(0, 0, kLargest, 0);
    ASSERT_EQ(image.setValueVoxel(0, 0, 0, 1, 4), SUCCESS);
    EXPECT_EQ(block.bytes()[kLargest], 4);
}

}  // namespace
}  // namespace volux::test
