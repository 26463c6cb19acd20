// The voxel spacing of an image.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/BitExact.h"
#include "support/ImageFields.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr double kTiny = std::numeric_limits<double>::denorm_min();

template <class T>
class Spacing : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(image.setVoxelSize(0.5, 2.0, 3.0), SUCCESS); }

    ::testing::AssertionResult is(double x, double y, double z)
    {
        const VoxelSize size = image.getVoxelSize();
        if (sameBits(size.x, x) && sameBits(size.y, y) && sameBits(size.z, z))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << size.x << ' ' << size.y << ' ' << size.z;
    }

    VxImage<T> image;
};
TYPED_TEST_SUITE(Spacing, ElementTypes, ElementTypeNames);

struct SpacingCase {
    double x, y, z;
};

constexpr SpacingCase kRefused[] = {
    {0.0, 1.0, 1.0},    {1.0, 0.0, 1.0},   {1.0, 1.0, 0.0},        {-0.0, 1.0, 1.0},
    {1.0, -0.0, 1.0},   {1.0, 1.0, -2.0},  {-kTiny, 1.0, 1.0},     {1.0, -kInfinity, 1.0},
    {kNaN, kNaN, -0.0}, {kNaN, 0.0, kNaN}, {0.0, kNaN, kInfinity},
};

TYPED_TEST(Spacing, AtOrBelowZeroIsRefusedAndChangesNothing)
{
    const auto before = fieldsOf(this->image);
    for (const SpacingCase& entry : kRefused) {
        EXPECT_EQ(this->image.setVoxelSize(entry.x, entry.y, entry.z), ERR_INVALID_ARGUMENT);
        EXPECT_EQ(this->image.setVoxelSize(VoxelSize(entry.x, entry.y, entry.z)),
                  ERR_INVALID_ARGUMENT);
        EXPECT_EQ(fieldsOf(this->image), before) << entry.x << ' ' << entry.y << ' ' << entry.z;
    }
}

TYPED_TEST(Spacing, ADefaultVoxelSizeIsRefused)
{
    EXPECT_EQ(this->image.setVoxelSize(VoxelSize()), ERR_INVALID_ARGUMENT);
    EXPECT_TRUE(this->is(0.5, 2.0, 3.0));
}

constexpr SpacingCase kTaken[] = {
    {1.0, 2.0, 4.0},  {kTiny, 1.0, 1.0}, {1.0, kTiny, 1.0}, {1.0, 1.0, kTiny},
    {kNaN, 1.0, 1.0}, {1.0, kNaN, 1.0},  {1.0, 1.0, kNaN},  {kInfinity, 1e300, 1e-300},
};

TYPED_TEST(Spacing, WhatDoesNotCompareAtOrBelowZeroIsTaken)
{
    for (const SpacingCase& entry : kTaken) {
        EXPECT_EQ(this->image.setVoxelSize(entry.x, entry.y, entry.z), SUCCESS);
        EXPECT_TRUE(this->is(entry.x, entry.y, entry.z));
        ASSERT_EQ(this->image.setVoxelSize(9.0, 9.0, 9.0), SUCCESS);
        EXPECT_EQ(this->image.setVoxelSize(VoxelSize(entry.x, entry.y, entry.z)), SUCCESS);
        EXPECT_TRUE(this->is(entry.x, entry.y, entry.z));
    }
}

TYPED_TEST(Spacing, SettingItTouchesNothingElse)
{
    ASSERT_EQ(this->image.initialize(2, 2, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    ASSERT_EQ(this->image.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
    expected.voxelSizeX = 7.0;
    expected.voxelSizeY = 8.0;
    expected.voxelSizeZ = 9.0;
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(Spacing, IsWrittenThroughThreePointers)
{
    double x = -1.0;
    double y = -1.0;
    double z = -1.0;
    EXPECT_EQ(this->image.getVoxelSize(&x, &y, &z), SUCCESS);
    EXPECT_TRUE(bitEqual(x, 0.5));
    EXPECT_TRUE(bitEqual(y, 2.0));
    EXPECT_TRUE(bitEqual(z, 3.0));
}

TYPED_TEST(Spacing, IsWrittenThroughTwoPointers)
{
    double x = -1.0;
    double y = -1.0;
    EXPECT_EQ(this->image.getVoxelSize(&x, &y), SUCCESS);
    EXPECT_TRUE(bitEqual(x, 0.5));
    EXPECT_TRUE(bitEqual(y, 2.0));
}

TYPED_TEST(Spacing, ANullAmongThreePointersWritesNothing)
{
    for (unsigned int given = 0; given < 7; ++given) {
        double values[] = {-1.0, -2.0, -3.0};
        const auto pointer = [&](unsigned int i) {
            return (given >> i & 1U) != 0 ? &values[i] : nullptr;
        };
        EXPECT_EQ(this->image.getVoxelSize(pointer(0), pointer(1), pointer(2)), ERR_NULL_POINTER);
        EXPECT_TRUE(values[0] == -1.0 && values[1] == -2.0 && values[2] == -3.0) << given;
    }
}

TYPED_TEST(Spacing, ANullAmongTwoPointersWritesNothing)
{
    double value = -1.0;
    EXPECT_EQ(this->image.getVoxelSize(&value, nullptr), ERR_NULL_POINTER);
    EXPECT_EQ(this->image.getVoxelSize(nullptr, &value), ERR_NULL_POINTER);
    EXPECT_EQ(this->image.getVoxelSize(nullptr, nullptr), ERR_NULL_POINTER);
    EXPECT_TRUE(bitEqual(value, -1.0));
}

}  // namespace
}  // namespace volux::test
