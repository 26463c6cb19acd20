// How an image comes to hold storage, gives it back, and refuses what its state does not allow.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <vector>

#include "support/CapturedStderr.h"
#include "support/ElementTypes.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"

namespace volux::core {
namespace {

using namespace test;

template <class T>
class Lifecycle : public ::testing::Test {
protected:
    void own()
    {
        ASSERT_EQ(SUCCESS, image.initialize(4, 3, 2, 2));
        stamp(image, 48, 1);
    }

    void wrapBlock() { ASSERT_EQ(SUCCESS, image.initializeWithPointer(block.data(), 4, 3, 2, 2)); }

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
    EXPECT_EQ(before, fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Lifecycle, InitializingAWrappingImageThrowsFromLine78)
{
    this->wrapBlock();
    EXPECT_TRUE(
        throwsAndPrintsTwice([&] { this->image.initialize(1, 1, 1, 1); }, kInitializeTwice));
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
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
    ASSERT_EQ(SUCCESS, other.initialize(1, 1, 1, 1));
    for (const bool copyData : {true, false})
        EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.initialize(other, copyData); },
                                         kCopyIntoReserved));
    EXPECT_EQ(before, fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->image.getBufferPointer(), 48, 1));
}

TYPED_TEST(Lifecycle, InitializingByCopyOfItselfThrowsFromLine95)
{
    this->wrapBlock();
    EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.initialize(this->image, true); },
                                     kCopyIntoReserved));
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, WrappingIntoAnOwningImageThrowsFromLine114)
{
    this->own();
    const auto before = fieldsOf(this->image);
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(this->block.data(), 4, 3, 2, 2); },
        kWrapIntoReserved));
    EXPECT_EQ(before, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, WrappingTwiceThrowsFromLine114)
{
    this->wrapBlock();
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.initializeWithPointer(this->block.data(), 1, 1, 1, 1); },
        kWrapIntoReserved));
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
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
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
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
    ASSERT_EQ(SUCCESS, image.initialize(1, 1, 1, 1));
    const CapturedStderr printed;
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const base::Exception& error) {
        const base::Exception copy(error);
        EXPECT_STREQ(kInitializeTwice, copy.what());
    }
    EXPECT_EQ(std::vector<std::string>(3, kInitializeTwice), printed.lines());
}

TEST(ThrownByAnImage, TheNamedObjectPrintsBeforeTheHandlerRuns)
{
    VxImage<short> image;
    ASSERT_EQ(SUCCESS, image.initialize(1, 1, 1, 1));
    const CapturedStderr printed;
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const std::exception& error) {
        EXPECT_STREQ(kInitializeTwice, error.what());
        EXPECT_EQ(std::vector<std::string>{kInitializeTwice}, printed.lines());
    }
}

TYPED_TEST(Lifecycle, WrappingTakesTheBlockAsItIs)
{
    this->wrapBlock();
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
    EXPECT_TRUE(bitEqual(this->image(3, 2, 1, 1), this->block[47]));
}

TYPED_TEST(Lifecycle, WrappingKeepsTheSpacing)
{
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(2.0, 3.0, 4.0));
    this->wrapBlock();
    EXPECT_TRUE(VoxelSize(2.0, 3.0, 4.0) == this->image.getVoxelSize());
}

TYPED_TEST(Lifecycle, ANullPointerIsNamedBeforeABadSize)
{
    EXPECT_EQ(ERR_NULL_POINTER, this->image.initializeWithPointer(nullptr, 4, 4, 4, 1));
    EXPECT_EQ(ERR_NULL_POINTER, this->image.initializeWithPointer(nullptr, 0, 0, 0, 0));
    EXPECT_EQ(ERR_INVALID_ARGUMENT,
              this->image.initializeWithPointer(this->block.data(), 4, 0, 4, 1));
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, AWrappingImageWritesToTheCallersBlock)
{
    this->wrapBlock();
    const auto value = someValue<TypeParam>(9);
    ASSERT_EQ(SUCCESS, this->image.setValueVoxel(1, 2, 1, 1, value));
    EXPECT_TRUE(bitEqual(this->block[24 + 16 + 2 + 1], value));
}

TYPED_TEST(Lifecycle, TerminateReturnsToTheDefaultState)
{
    this->own();
    this->image.setImageStride(1, 2, 3, 4);
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(2.0, 3.0, 4.0));
    this->image.terminate();
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, TerminateForgetsTheCallersBlockAndLeavesItAlone)
{
    this->wrapBlock();
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(2.0, 3.0, 4.0));
    this->image.terminate();
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
}

TYPED_TEST(Lifecycle, TerminatingADefaultImageIsHarmless)
{
    this->image.terminate();
    this->image.terminate();
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, ATerminatedImageCanBeInitializedInEveryWay)
{
    VxImage<TypeParam> other;
    ASSERT_EQ(SUCCESS, other.initialize(2, 1, 1, 1));
    this->own();
    this->image.terminate();
    this->wrapBlock();
    this->image.terminate();
    EXPECT_EQ(SUCCESS, this->image.initialize(other, true));
    this->image.terminate();
    EXPECT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 48));
}

TYPED_TEST(Lifecycle, DestructionLeavesTheCallersBlockAlone)
{
    {
        VxImage<TypeParam> wrapping;
        ASSERT_EQ(SUCCESS, wrapping.initializeWithPointer(&this->block[1], 1, 2, 3, 4));
    }
    EXPECT_TRUE(isStamped(this->block.data(), 48, 500));
}

TYPED_TEST(Lifecycle, ABufferIsNotAllocatedForAWrappingImage)
{
    this->wrapBlock();
    EXPECT_EQ(ERR_EXTERNAL_MEMORY,
              callPrivate<member::AllocateBuffer>(this->image, std::size_t{8}));
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, TheCallersBufferIsNotFreed)
{
    this->wrapBlock();
    EXPECT_EQ(ERR_EXTERNAL_MEMORY, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(this->wrappingFields(), fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, AllocatingABufferSetsNothingElse)
{
    ASSERT_EQ(SUCCESS,
              callPrivate<member::AllocateBuffer>(this->image, std::size_t{3 * sizeof(TypeParam)}));
    ImageFields<TypeParam> expected;
    expected.buffer = this->image.getBufferPointer();
    expected.bufferBytes = 3 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_NE(nullptr, expected.buffer);
    EXPECT_TRUE(isZeroed(expected.buffer, 3));
}

TYPED_TEST(Lifecycle, FreeingTheBufferChangesNothingElse)
{
    this->own();
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    expected.buffer = nullptr;
    EXPECT_EQ(SUCCESS, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_EQ(SUCCESS, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, FreeingTheBufferOfAnEmptyImageSucceeds)
{
    EXPECT_EQ(SUCCESS, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(Lifecycle, TheCapacityCountsEvenWhenTheBufferIsGone)
{
    this->own();
    ASSERT_EQ(SUCCESS, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(SUCCESS, this->image.setImageSize(4, 3, 2, 2));
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
}

}  // namespace
}  // namespace volux::core
