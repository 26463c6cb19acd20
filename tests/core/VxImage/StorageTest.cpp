// How an image is sized, laid out and spaced, and what it answers about that.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/BitExact.h"
#include "support/ElementTypes.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"

namespace volux::core {
namespace {

using namespace test;

template <class T>
class Storage : public ::testing::Test {
protected:
    void expectExtents(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
    {
        EXPECT_EQ(w, image.getWidth());
        EXPECT_EQ(h, image.getHeight());
        EXPECT_EQ(d, image.getDepth());
        EXPECT_EQ(c, image.getChannels());
        EXPECT_TRUE(ImageSize(w, h, d, c) == image.getImageSize());
    }

    CopyableImage<T> image;
};
TYPED_TEST_SUITE(Storage, ElementTypes, ElementTypeNames);

TYPED_TEST(Storage, ADefaultImageHasTheDefaultFields)
{
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
    this->expectExtents(0, 0, 0, 0);
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
    EXPECT_EQ(0U, this->image.getBufferSizeBytes());
    EXPECT_TRUE(VoxelSize(1.0, 1.0, 1.0) == this->image.getVoxelSize());
}

TYPED_TEST(Storage, InitializeInterleavesTheChannels)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ImageFields<TypeParam> expected;
    expected.setInterleaved(4, 3, 2, 2);
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_EQ(2U, expected.strideX);
    EXPECT_EQ(8U, expected.strideY);
    EXPECT_EQ(24U, expected.strideZ);
    this->expectExtents(4, 3, 2, 2);
}

TYPED_TEST(Storage, InitializeGivesZeros)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 48));
    EXPECT_EQ(48 * sizeof(TypeParam), this->image.getBufferSizeBytes());
}

TYPED_TEST(Storage, InitializeKeepsTheSpacing)
{
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(0.5, 2.0, 3.0));
    ASSERT_EQ(SUCCESS, this->image.initialize(1, 1, 1, 1));
    EXPECT_TRUE(VoxelSize(0.5, 2.0, 3.0) == this->image.getVoxelSize());
}

TYPED_TEST(Storage, BothBufferPointersAreTheBlock)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(2, 1, 1, 1));
    const VxImage<TypeParam>& constant = this->image;
    TypeParam* const block = constant.getBufferPointer();
    EXPECT_EQ(fieldsOf(this->image).buffer, block);
    EXPECT_EQ(block, this->image.getBufferPointer());
}

TYPED_TEST(Storage, SizingAnEmptyImageIsInitializing)
{
    ASSERT_EQ(SUCCESS, this->image.setImageSize(2, 3, 4, 5));
    CopyableImage<TypeParam> initialized;
    ASSERT_EQ(SUCCESS, initialized.initialize(2, 3, 4, 5));
    ImageFields<TypeParam> expected = fieldsOf(initialized);
    expected.buffer = this->image.getBufferPointer();
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 120));
}

TYPED_TEST(Storage, AnImageSizeIsForwardedInItsOrder)
{
    ASSERT_EQ(SUCCESS, this->image.setImageSize(ImageSize(2, 3, 4, 5)));
    this->expectExtents(2, 3, 4, 5);
}

TYPED_TEST(Storage, ASmallerSizeKeepsTheBlockAndItsValues)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    const auto before = fieldsOf(this->image);
    ASSERT_EQ(SUCCESS, this->image.setImageSize(3, 2, 1, 1));
    ImageFields<TypeParam> expected = before;
    expected.setInterleaved(3, 2, 1, 1);
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 1, 0, 0), someValue<TypeParam>(1 + 4)));
}

TYPED_TEST(Storage, ASizeOfTheSameBytesKeepsTheBlockAndItsValues)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    TypeParam* const block = this->image.getBufferPointer();
    ASSERT_EQ(SUCCESS, this->image.setImageSize(2, 2, 3, 4));
    EXPECT_EQ(block, this->image.getBufferPointer());
    EXPECT_TRUE(isStamped(block, 48, 1));
}

TYPED_TEST(Storage, ShrinkingAndGrowingBackShowsTheOldValues)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    TypeParam* const block = this->image.getBufferPointer();
    ASSERT_EQ(SUCCESS, this->image.setImageSize(1, 1, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(4, 3, 2, 2));
    EXPECT_EQ(block, this->image.getBufferPointer());
    EXPECT_TRUE(isStamped(block, 48, 1));
}

TYPED_TEST(Storage, GrowingBeyondTheCapacityGivesZeros)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    ASSERT_EQ(SUCCESS, this->image.setImageSize(7, 7, 1, 1));
    ImageFields<TypeParam> expected;
    expected.setInterleaved(7, 7, 1, 1);
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 49 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 49));
}

TYPED_TEST(Storage, ResizingLaysTheImageOutInterleavedAgain)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    this->image.setImageStride(4, 12, 24, 1);
    ASSERT_EQ(SUCCESS, this->image.setImageSize(4, 3, 2, 2));
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    expected.setInterleaved(4, 3, 2, 2);
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(Storage, ResizingKeepsTheSpacing)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(1, 1, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(0.5, 2.0, 3.0));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(9, 9, 9, 9));
    EXPECT_TRUE(VoxelSize(0.5, 2.0, 3.0) == this->image.getVoxelSize());
}

TYPED_TEST(Storage, AnInvalidSizeChangesNothing)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    this->image.setImageStride(4, 12, 24, 1);
    const auto before = fieldsOf(this->image);
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageSize(0, 3, 2, 2));
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageSize(ImageSize(4, 3, 2, 0)));
    EXPECT_EQ(before, fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Storage, StridesComeInTheOrderYZCX)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(2, 2, 2, 2));
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    this->image.setImageStride(10, 20, 30, 40);
    expected.strideX = 40;
    expected.strideY = 10;
    expected.strideZ = 20;
    expected.strideC = 30;
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(Storage, StridesAreNeitherCheckedNorSignExtended)
{
    constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();
    this->image.setImageStride(kMax, 0, kMax, 0x80000000);
    const auto fields = fieldsOf(this->image);
    EXPECT_EQ(4294967295U, fields.strideY);
    EXPECT_EQ(0U, fields.strideZ);
    EXPECT_EQ(4294967295U, fields.strideC);
    EXPECT_EQ(2147483648U, fields.strideX);
}

TYPED_TEST(Storage, DotSequentialStridesComeFromTheArgumentsAlone)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(9, 9, 9, 9));
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    callPrivate<member::SetDotSequentialStride>(this->image, 4U, 3U, 77U, 2U);
    expected.strideX = 2;
    expected.strideY = 8;
    expected.strideZ = 24;
    expected.strideC = 1;
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(Storage, DotSequentialStridesAreProductsOf64Bits)
{
    callPrivate<member::SetDotSequentialStride>(this->image, 0x80000000U, 6U, 1U, 0x10000U);
    const auto fields = fieldsOf(this->image);
    EXPECT_EQ(0x10000U, fields.strideX);
    EXPECT_EQ(0x800000000000U, fields.strideY);
    EXPECT_EQ(0x3000000000000U, fields.strideZ);
}

TYPED_TEST(Storage, DataOfTheExactSizeIsCopied)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 5);
    EXPECT_EQ(SUCCESS, this->image.setImageData(data.data(), 48 * sizeof(TypeParam)));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 5));
}

TYPED_TEST(Storage, DataOfOneVoxelIsCopied)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(1, 1, 1, 1));
    const auto value = someValue<TypeParam>(5);
    EXPECT_EQ(SUCCESS, this->image.setImageData(&value, sizeof value));
    EXPECT_TRUE(bitEqual(this->image(0, 0, 0, 0), value));
}

TYPED_TEST(Storage, DataIsCopiedInOneRunWhateverTheStrides)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    this->image.setImageStride(4, 12, 24, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 5);
    EXPECT_EQ(SUCCESS, this->image.setImageData(data.data(), 48 * sizeof(TypeParam)));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 5));
    EXPECT_TRUE(bitEqual(this->image(1, 0, 0, 1), data[25]));
}

TYPED_TEST(Storage, DataOfAnotherSizeChangesNothing)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    stamp(this->image, 48, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(64, 5);
    constexpr std::size_t kBytes = 48 * sizeof(TypeParam);
    for (const std::size_t bytes : {kBytes - 1, kBytes + 1, std::size_t{0}, std::size_t{48} * 9})
        EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageData(data.data(), bytes)) << bytes;
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Storage, AfterShrinkingTheDataSizeIsThatOfTheExtents)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(3, 1, 1, 1));
    stamp(this->image, 48, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 100);
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageData(data.data(), 48 * sizeof(TypeParam)));
    EXPECT_EQ(SUCCESS, this->image.setImageData(data.data(), 3 * sizeof(TypeParam)));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 3, 100));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer() + 3, 45, 4));
}

TYPED_TEST(Storage, AnEmptyImageTakesNoData)
{
    const TypeParam data{};
    EXPECT_EQ(SUCCESS, this->image.setImageData(&data, 0));
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageData(&data, 1));
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(Storage, TheDataSizeIsAProductOf64Bits)
{
    failToInitialize(this->image);
    const TypeParam data{};
    constexpr std::uint64_t kBytes = std::uint64_t{kHugeWidth} * kHugeHeight * sizeof(TypeParam);
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.setImageData(&data, kBytes & 0xFFFFFFFFU));
    EXPECT_EQ(kBytes, this->image.getBufferSizeBytes());
}

TYPED_TEST(Storage, TheByteCountIsTheProductOfAllExtents)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(2, 3, 5, 7));
    EXPECT_EQ(210 * sizeof(TypeParam), this->image.getBufferSizeBytes());
}

TYPED_TEST(Storage, TheByteCountIsThatOfTheExtentsNotOfTheBlock)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(3, 2, 1, 1));
    EXPECT_EQ(6 * sizeof(TypeParam), this->image.getBufferSizeBytes());
    EXPECT_EQ(48 * sizeof(TypeParam), fieldsOf(this->image).bufferBytes);
}

TYPED_TEST(Storage, TheClassConstantsHaveTheirValues)
{
    EXPECT_EQ(1U, *exposed(member::DefaultSize<TypeParam>{}));
    EXPECT_EQ(0U, *exposed(member::DefaultPosition<TypeParam>{}));
    EXPECT_TRUE(bitEqual(*exposed(member::DefaultVoxelSize<TypeParam>{}), 1.0));
    EXPECT_EQ(3, *exposed(member::DefaultDimension<TypeParam>{}));
    EXPECT_EQ(4, *exposed(member::DefaultDimensionWithChannel<TypeParam>{}));
}

}  // namespace
}  // namespace volux::core
