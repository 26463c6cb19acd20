// How an image comes to hold storage, gives it back, and refuses what its state does not allow.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <vector>

#include "support/CapturedStderr.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

template <class T>
class Lifecycle : public ::testing::Test {
protected:
    void own()
    {
        ASSERT_EQ(image.initialize(4, 3, 2, 2), SUCCESS);
        stamp(image, 48, 1);
    }

    void wrapBlock() { ASSERT_EQ(image.initializeWithPointer(block.data(), 4, 3, 2, 2), SUCCESS); }

    ImageFields<T> wrappingFields()
    {
        ImageFields<T> fields;
        fields.setInterleaved(4, 3, 2, 2);
        fields.buffer = block.data();
        fields.memoryMode = 1;
        return fields;
    }

    std::vector<T> block = someValues<T>(48, 500);
    CopyableImage<T> image;
};
TYPED_TEST_SUITE(Lifecycle, ElementTypes, ElementTypeNames);

TYPED_TEST(Lifecycle, ASecondInitializeThrowsFromLine78)
{
    this->own();
    const auto before = fieldsOf(this->image);
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.initialize(1, 1, 1, 1); }, kInitializeTwice));
    EXPECT_EQ(fieldsOf(this->image), before);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Lifecycle, InitializingAWrappingImageThrowsFromLine78)
{
    this->wrapBlock();
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.initialize(1, 1, 1, 1); }, kInitializeTwice));
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, ASecondInitializeThrowsBeforeItTestsTheSize)
{
    this->own();
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.initialize(0, 0, 0, 0); }, kInitializeTwice));
}

TYPED_TEST(Lifecycle, ASecondInitializeByCopyThrowsFromLine95)
{
    this->own();
    const auto before = fieldsOf(this->image);
    VxImage<TypeParam> other;
    ASSERT_EQ(other.initialize(1, 1, 1, 1), SUCCESS);
    for (const bool copyData : {true, false})
        EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.initialize(other, copyData); },
                                         kCopyIntoReserved));
    EXPECT_EQ(fieldsOf(this->image), before);
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Lifecycle, InitializingByCopyOfItselfThrowsFromLine95)
{
    this->wrapBlock();
    EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.initialize(this->image, true); },
                                     kCopyIntoReserved));
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, WrappingIntoAnOwningImageThrowsFromLine114)
{
    this->own();
    const auto before = fieldsOf(this->image);
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(this->block.data(), 4, 3, 2, 2); },
        kWrapIntoReserved));
    EXPECT_EQ(fieldsOf(this->image), before);
}

TYPED_TEST(Lifecycle, WrappingTwiceThrowsFromLine114)
{
    this->wrapBlock();
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(this->block.data(), 1, 1, 1, 1); },
        kWrapIntoReserved));
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, WrappingThrowsBeforeItTestsItsArguments)
{
    this->own();
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(nullptr, 4, 4, 4, 1); }, kWrapIntoReserved));
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(this->block.data(), 0, 4, 4, 1); },
        kWrapIntoReserved));
}

TYPED_TEST(Lifecycle, ResizingAWrappingImageThrowsFromLine411)
{
    this->wrapBlock();
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.setImageSize(2, 2, 2, 1); }, kResizeWrapping));
    EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.setImageSize(ImageSize(2, 2, 2, 1)); },
                                     kResizeWrapping));
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, ResizingAWrappingImageThrowsBeforeItTestsTheSize)
{
    this->wrapBlock();
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.setImageSize(0, 0, 0, 0); }, kResizeWrapping));
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.setImageSize(4, 3, 2, 2); }, kResizeWrapping));
}

TEST(ThrownByAnImage, ACopyThatTheHandlerTakesPrintsOnceMore)
{
    VxImage<short> image;
    ASSERT_EQ(image.initialize(1, 1, 1, 1), SUCCESS);
    const CapturedStderr printed;
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const base::Exception& error) {
        const base::Exception copy(error);
        EXPECT_STREQ(copy.what(), kInitializeTwice);
    }
    EXPECT_EQ(printed.lines(), std::vector<std::string>(3, kInitializeTwice));
}

TEST(ThrownByAnImage, TheNamedObjectPrintsBeforeTheHandlerRuns)
{
    VxImage<short> image;
    ASSERT_EQ(image.initialize(1, 1, 1, 1), SUCCESS);
    const CapturedStderr printed;
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), kInitializeTwice);
        EXPECT_EQ(printed.lines(), std::vector<std::string>{kInitializeTwice});
    }
}

TYPED_TEST(Lifecycle, WrappingTakesTheBlockAsItIs)
{
    this->wrapBlock();
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
    EXPECT_TRUE(bitEqual(this->image(3, 2, 1, 1), this->block[47]));
}

TYPED_TEST(Lifecycle, WrappingKeepsTheSpacing)
{
    ASSERT_EQ(this->image.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    this->wrapBlock();
    EXPECT_TRUE(this->image.getVoxelSize() == VoxelSize(2.0, 3.0, 4.0));
}

TYPED_TEST(Lifecycle, ANullPointerIsNamedBeforeABadSize)
{
    EXPECT_EQ(this->image.initializeWithPointer(nullptr, 4, 4, 4, 1), ERR_NULL_POINTER);
    EXPECT_EQ(this->image.initializeWithPointer(nullptr, 0, 0, 0, 0), ERR_NULL_POINTER);
    EXPECT_EQ(this->image.initializeWithPointer(this->block.data(), 4, 0, 4, 1),
              ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(Lifecycle, AWrappingImageWritesToTheCallersBlock)
{
    this->wrapBlock();
    const auto value = someValue<TypeParam>(9);
    ASSERT_EQ(this->image.setValueVoxel(1, 2, 1, 1, value), SUCCESS);
    EXPECT_TRUE(bitEqual(this->block[24 + 16 + 2 + 1], value));
}

TYPED_TEST(Lifecycle, TerminateReturnsToTheDefaultState)
{
    this->own();
    this->image.setImageStride(1, 2, 3, 4);
    ASSERT_EQ(this->image.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    this->image.terminate();
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(Lifecycle, TerminateForgetsTheCallersBlockAndLeavesItAlone)
{
    this->wrapBlock();
    ASSERT_EQ(this->image.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    this->image.terminate();
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
}

TYPED_TEST(Lifecycle, TerminatingADefaultImageIsHarmless)
{
    this->image.terminate();
    this->image.terminate();
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(Lifecycle, ATerminatedImageCanBeInitializedInEveryWay)
{
    VxImage<TypeParam> other;
    ASSERT_EQ(other.initialize(2, 1, 1, 1), SUCCESS);
    this->own();
    this->image.terminate();
    this->wrapBlock();
    this->image.terminate();
    EXPECT_EQ(this->image.initialize(other, true), SUCCESS);
    this->image.terminate();
    EXPECT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 48));
}

TYPED_TEST(Lifecycle, DestructionLeavesTheCallersBlockAlone)
{
    {
        VxImage<TypeParam> wrapping;
        ASSERT_EQ(wrapping.initializeWithPointer(&this->block[1], 1, 2, 3, 4), SUCCESS);
    }
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
}

TYPED_TEST(Lifecycle, ABufferIsNotAllocatedForAWrappingImage)
{
    this->wrapBlock();
    EXPECT_EQ(callPrivate<member::AllocateBuffer>(this->image, std::size_t{8}),
              ERR_EXTERNAL_MEMORY);
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, TheCallersBufferIsNotFreed)
{
    this->wrapBlock();
    EXPECT_EQ(callPrivate<member::FreeBuffer>(this->image), ERR_EXTERNAL_MEMORY);
    EXPECT_EQ(fieldsOf(this->image), this->wrappingFields());
}

TYPED_TEST(Lifecycle, AllocatingABufferSetsNothingElse)
{
    ASSERT_EQ(callPrivate<member::AllocateBuffer>(this->image, std::size_t{3 * sizeof(TypeParam)}),
              SUCCESS);
    ImageFields<TypeParam> expected;
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 3 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_NE(expected.buffer, nullptr);
    EXPECT_TRUE(isZeroed(expected.buffer, 3));
}

TYPED_TEST(Lifecycle, FreeingTheBufferChangesNothingElse)
{
    this->own();
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    expected.buffer = nullptr;
    EXPECT_EQ(callPrivate<member::FreeBuffer>(this->image), SUCCESS);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_EQ(callPrivate<member::FreeBuffer>(this->image), SUCCESS);
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(Lifecycle, FreeingTheBufferOfAnEmptyImageSucceeds)
{
    EXPECT_EQ(callPrivate<member::FreeBuffer>(this->image), SUCCESS);
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(Lifecycle, TheCapacityCountsEvenWhenTheBufferIsGone)
{
    this->own();
    ASSERT_EQ(callPrivate<member::FreeBuffer>(this->image), SUCCESS);
    EXPECT_EQ(this->image.setImageSize(4, 3, 2, 2), SUCCESS);
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
}

}  // namespace
}  // namespace volux::test
