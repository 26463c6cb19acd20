// How an image is sized, laid out and spaced, and what it answers about that.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/BitExact.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

template <class T>
class Storage : public ::testing::Test {
protected:
    void expectExtents(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
    {
        EXPECT_EQ(image.getWidth(), w);
        EXPECT_EQ(image.getHeight(), h);
        EXPECT_EQ(image.getDepth(), d);
        EXPECT_EQ(image.getChannels(), c);
        EXPECT_TRUE(image.getImageSize() == ImageSize(w, h, d, c));
    }

    CopyableImage<T> image;
};
TYPED_TEST_SUITE(Storage, ElementTypes, ElementTypeNames);

TYPED_TEST(Storage, ADefaultImageHasTheDefaultFields)
{
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
    this->expectExtents(0, 0, 0, 0);
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
    EXPECT_EQ(this->image.getBufferSizeBytes(), 0U);
    EXPECT_TRUE(this->image.getVoxelSize() == VoxelSize(1.0, 1.0, 1.0));
}

TYPED_TEST(Storage, InitializeInterleavesTheChannels)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected;
    expected.setInterleaved(4, 3, 2, 2);
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_EQ(expected.strideX, 2U);
    EXPECT_EQ(expected.strideY, 8U);
    EXPECT_EQ(expected.strideZ, 24U);
    this->expectExtents(4, 3, 2, 2);
}

TYPED_TEST(Storage, InitializeGivesZeros)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 48));
    EXPECT_EQ(this->image.getBufferSizeBytes(), 48 * sizeof(TypeParam));
}

TYPED_TEST(Storage, InitializeKeepsTheSpacing)
{
    ASSERT_EQ(this->image.setVoxelSize(0.5, 2.0, 3.0), SUCCESS);
    ASSERT_EQ(this->image.initialize(1, 1, 1, 1), SUCCESS);
    EXPECT_TRUE(this->image.getVoxelSize() == VoxelSize(0.5, 2.0, 3.0));
}

TYPED_TEST(Storage, BothBufferPointersAreTheBlock)
{
    ASSERT_EQ(this->image.initialize(2, 1, 1, 1), SUCCESS);
    const VxImage<TypeParam>& constant = this->image;
    TypeParam* const block = constant.getBufferPointer();
    EXPECT_EQ(block, fieldsOf(this->image).buffer);
    EXPECT_EQ(this->image.getBufferPointer(), block);
}

TYPED_TEST(Storage, SizingAnEmptyImageIsInitializing)
{
    ASSERT_EQ(this->image.setImageSize(2, 3, 4, 5), SUCCESS);
    CopyableImage<TypeParam> initialized;
    ASSERT_EQ(initialized.initialize(2, 3, 4, 5), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(initialized);
    expected.buffer = this->image.getBufferPointer();
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 120));
}

TYPED_TEST(Storage, AnImageSizeIsForwardedInItsOrder)
{
    ASSERT_EQ(this->image.setImageSize(ImageSize(2, 3, 4, 5)), SUCCESS);
    this->expectExtents(2, 3, 4, 5);
}

TYPED_TEST(Storage, ASmallerSizeKeepsTheBlockAndItsValues)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    const auto before = fieldsOf(this->image);
    ASSERT_EQ(this->image.setImageSize(3, 2, 1, 1), SUCCESS);
    ImageFields<TypeParam> expected = before;
    expected.setInterleaved(3, 2, 1, 1);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
    EXPECT_TRUE(bitEqual(this->image.getValueVoxel(1, 1, 0, 0), someValue<TypeParam>(1 + 4)));
}

TYPED_TEST(Storage, ASizeOfTheSameBytesKeepsTheBlockAndItsValues)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    TypeParam* const block = this->image.getBufferPointer();
    ASSERT_EQ(this->image.setImageSize(2, 2, 3, 4), SUCCESS);
    EXPECT_EQ(this->image.getBufferPointer(), block);
    EXPECT_TRUE(isStamped(block, 48, 1));
}

TYPED_TEST(Storage, ShrinkingAndGrowingBackShowsTheOldValues)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    TypeParam* const block = this->image.getBufferPointer();
    ASSERT_EQ(this->image.setImageSize(1, 1, 1, 1), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(4, 3, 2, 2), SUCCESS);
    EXPECT_EQ(this->image.getBufferPointer(), block);
    EXPECT_TRUE(isStamped(block, 48, 1));
}

TYPED_TEST(Storage, GrowingBeyondTheCapacityGivesZeros)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    ASSERT_EQ(this->image.setImageSize(7, 7, 1, 1), SUCCESS);
    ImageFields<TypeParam> expected;
    expected.setInterleaved(7, 7, 1, 1);
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 49 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 49));
}

TYPED_TEST(Storage, ResizingLaysTheImageOutInterleavedAgain)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    this->image.setImageStride(4, 12, 24, 1);
    ASSERT_EQ(this->image.setImageSize(4, 3, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    expected.setInterleaved(4, 3, 2, 2);
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(Storage, ResizingKeepsTheSpacing)
{
    ASSERT_EQ(this->image.initialize(1, 1, 1, 1), SUCCESS);
    ASSERT_EQ(this->image.setVoxelSize(0.5, 2.0, 3.0), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(9, 9, 9, 9), SUCCESS);
    EXPECT_TRUE(this->image.getVoxelSize() == VoxelSize(0.5, 2.0, 3.0));
}

TYPED_TEST(Storage, AnInvalidSizeChangesNothing)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    this->image.setImageStride(4, 12, 24, 1);
    const auto before = fieldsOf(this->image);
    EXPECT_EQ(this->image.setImageSize(0, 3, 2, 2), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(this->image.setImageSize(ImageSize(4, 3, 2, 0)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->image), before);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Storage, StridesComeInTheOrderYZCX)
{
    ASSERT_EQ(this->image.initialize(2, 2, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    this->image.setImageStride(10, 20, 30, 40);
    expected.strideX = 40;
    expected.strideY = 10;
    expected.strideZ = 20;
    expected.strideC = 30;
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(Storage, StridesAreNeitherCheckedNorSignExtended)
{
    constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();
    this->image.setImageStride(kMax, 0, kMax, 0x80000000);
    const auto fields = fieldsOf(this->image);
    EXPECT_EQ(fields.strideY, 4294967295U);
    EXPECT_EQ(fields.strideZ, 0U);
    EXPECT_EQ(fields.strideC, 4294967295U);
    EXPECT_EQ(fields.strideX, 2147483648U);
}

TYPED_TEST(Storage, DotSequentialStridesComeFromTheArgumentsAlone)
{
    ASSERT_EQ(this->image.initialize(9, 9, 9, 9), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    callPrivate<member::SetDotSequentialStride>(this->image, 4U, 3U, 77U, 2U);
    expected.strideX = 2;
    expected.strideY = 8;
    expected.strideZ = 24;
    expected.strideC = 1;
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(Storage, DotSequentialStridesAreProductsOf64Bits)
{
    callPrivate<member::SetDotSequentialStride>(this->image, 0x80000000U, 6U, 1U, 0x10000U);
    const auto fields = fieldsOf(this->image);
    EXPECT_EQ(fields.strideX, 0x10000U);
    EXPECT_EQ(fields.strideY, 0x800000000000U);
    EXPECT_EQ(fields.strideZ, 0x3000000000000U);
}

TYPED_TEST(Storage, DataOfTheExactSizeIsCopied)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 5);
    EXPECT_EQ(this->image.setImageData(data.data(), 48 * sizeof(TypeParam)), SUCCESS);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 5));
}

TYPED_TEST(Storage, DataOfOneVoxelIsCopied)
{
    ASSERT_EQ(this->image.initialize(1, 1, 1, 1), SUCCESS);
    const auto value = someValue<TypeParam>(5);
    EXPECT_EQ(this->image.setImageData(&value, sizeof value), SUCCESS);
    EXPECT_TRUE(bitEqual(this->image(0, 0, 0, 0), value));
}

TYPED_TEST(Storage, DataIsCopiedInOneRunWhateverTheStrides)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    this->image.setImageStride(4, 12, 24, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 5);
    EXPECT_EQ(this->image.setImageData(data.data(), 48 * sizeof(TypeParam)), SUCCESS);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 5));
    EXPECT_TRUE(bitEqual(this->image(1, 0, 0, 1), data[25]));
}

TYPED_TEST(Storage, DataOfAnotherSizeChangesNothing)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    stamp(this->image, 48, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(64, 5);
    constexpr std::size_t kBytes = 48 * sizeof(TypeParam);
    for (const std::size_t bytes : {kBytes - 1, kBytes + 1, std::size_t{0}, std::size_t{48} * 9})
        EXPECT_EQ(this->image.setImageData(data.data(), bytes), ERR_INVALID_ARGUMENT) << bytes;
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Storage, AfterShrinkingTheDataSizeIsThatOfTheExtents)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(3, 1, 1, 1), SUCCESS);
    stamp(this->image, 48, 1);
    const std::vector<TypeParam> data = someValues<TypeParam>(48, 100);
    EXPECT_EQ(this->image.setImageData(data.data(), 48 * sizeof(TypeParam)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(this->image.setImageData(data.data(), 3 * sizeof(TypeParam)), SUCCESS);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 3, 100));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer() + 3, 45, 4));
}

TYPED_TEST(Storage, AnEmptyImageTakesNoData)
{
    const TypeParam data{};
    EXPECT_EQ(this->image.setImageData(&data, 0), SUCCESS);
    EXPECT_EQ(this->image.setImageData(&data, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(Storage, TheDataSizeIsAProductOf64Bits)
{
    failToInitialize(this->image);
    const TypeParam data{};
    constexpr std::uint64_t kBytes = std::uint64_t{kHugeWidth} * kHugeHeight * sizeof(TypeParam);
    EXPECT_EQ(this->image.setImageData(&data, kBytes & 0xFFFFFFFFU), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(this->image.getBufferSizeBytes(), kBytes);
}

TYPED_TEST(Storage, TheByteCountIsTheProductOfAllExtents)
{
    ASSERT_EQ(this->image.initialize(2, 3, 5, 7), SUCCESS);
    EXPECT_EQ(this->image.getBufferSizeBytes(), 210 * sizeof(TypeParam));
}

TYPED_TEST(Storage, TheByteCountIsThatOfTheExtentsNotOfTheBlock)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(3, 2, 1, 1), SUCCESS);
    EXPECT_EQ(this->image.getBufferSizeBytes(), 6 * sizeof(TypeParam));
    EXPECT_EQ(fieldsOf(this->image).bufferBytes, 48 * sizeof(TypeParam));
}

TYPED_TEST(Storage, TheClassConstantsHaveTheirValues)
{
    EXPECT_EQ(*exposed(member::DefaultSize<TypeParam>{}), 1U);
    EXPECT_EQ(*exposed(member::DefaultPosition<TypeParam>{}), 0U);
    EXPECT_TRUE(bitEqual(*exposed(member::DefaultVoxelSize<TypeParam>{}), 1.0));
    EXPECT_EQ(*exposed(member::DefaultDimension<TypeParam>{}), 3);
    EXPECT_EQ(*exposed(member::DefaultDimensionWithChannel<TypeParam>{}), 4);
}

}  // namespace
}  // namespace volux::test
