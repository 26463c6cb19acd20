// Copies of an image: by initialize, by construction and by assignment.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

template <class T>
class Copying : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(source.initialize(4, 3, 2, 2), SUCCESS);
        ASSERT_EQ(source.setVoxelSize(0.5, 2.0, 3.0), SUCCESS);
        source.setImageStride(4, 12, 24, 1);
        stamp(source, 48, 1);
    }

    /// The source's geometry in a block of the copy's own.
    ImageFields<T> expectedIn(const VxImage<T>& copy)
    {
        ImageFields<T> expected = fieldsOf(source);
        expected.buffer = copy.getBufferPointer();
        expected.memoryMode = 0;
        expected.bufferBytes = 48 * sizeof(T);
        return expected;
    }

    ::testing::AssertionResult isDeepCopy(const VxImage<T>& copy)
    {
        if (copy.getBufferPointer() == nullptr ||
            copy.getBufferPointer() == source.getBufferPointer())
            return ::testing::AssertionFailure() << "no block of its own";
        if (!(fieldsOf(copy) == expectedIn(copy)))
            return ::testing::AssertionFailure() << fieldsOf(copy);
        return isStamped(copy.getBufferPointer(), 48, 1);
    }

    CopyableImage<T> source;
};
TYPED_TEST_SUITE(Copying, ElementTypes, ElementTypeNames);

TYPED_TEST(Copying, InitializeCopiesGeometryAndValues)
{
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    EXPECT_TRUE(this->isDeepCopy(copy));
}

TYPED_TEST(Copying, InitializeWithoutDataCopiesGeometryOverZeros)
{
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, false), SUCCESS);
    EXPECT_EQ(fieldsOf(copy), this->expectedIn(copy));
    EXPECT_TRUE(isZeroed(copy.getBufferPointer(), 48));
}

TYPED_TEST(Copying, ACopyReplacesTheSpacingSetBefore)
{
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    EXPECT_TRUE(this->isDeepCopy(copy));
}

TYPED_TEST(Copying, TheSourceStaysAsItIs)
{
    const auto before = fieldsOf(this->source);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    ASSERT_EQ(copy.fill(TypeParam{}), SUCCESS);
    EXPECT_EQ(fieldsOf(this->source), before);
    EXPECT_TRUE(isStamped(this->source.getBufferPointer(), 48, 1));
}

TYPED_TEST(Copying, ACopyOutlivesItsSource)
{
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    this->source.terminate();
    EXPECT_TRUE(isStamped(copy.getBufferPointer(), 48, 1));
}

TYPED_TEST(Copying, ACopyOfAWrappingImageOwnsItsBlock)
{
    std::vector<TypeParam> block = someValues<TypeParam>(48, 1);
    this->source.terminate();
    ASSERT_EQ(this->source.initializeWithPointer(block.data(), 4, 3, 2, 2), SUCCESS);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    EXPECT_TRUE(this->isDeepCopy(copy));
    const CopyableImage<TypeParam> constructed(this->source);
    EXPECT_TRUE(this->isDeepCopy(constructed));
    copy.terminate();
    EXPECT_TRUE(isStamped(block.data(), 48, 1));
}

TYPED_TEST(Copying, OnlyTheFirstRunOfAPaddedLayoutIsCopied)
{
    std::vector<TypeParam> block = someValues<TypeParam>(200, 1);
    VxImage<TypeParam> padded;
    ASSERT_EQ(padded.initializeWithPointer(block.data(), 4, 3, 2, 1), SUCCESS);
    padded.setImageStride(20, 80, 1, 2);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(padded, true), SUCCESS);
    EXPECT_EQ(fieldsOf(copy).strideZ, 80U);
    EXPECT_EQ(fieldsOf(copy).bufferBytes, 24 * sizeof(TypeParam));
    EXPECT_TRUE(isStamped(copy.getBufferPointer(), 24, 1));
}

TYPED_TEST(Copying, AfterShrinkingOnlyTheExtentsAreCopied)
{
    ASSERT_EQ(this->source.setImageSize(3, 1, 1, 1), SUCCESS);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, true), SUCCESS);
    EXPECT_EQ(fieldsOf(copy).bufferBytes, 3 * sizeof(TypeParam));
    EXPECT_TRUE(isStamped(copy.getBufferPointer(), 3, 1));
}

TYPED_TEST(Copying, ConstructionCopiesDeeply)
{
    const CopyableImage<TypeParam> copy(this->source);
    EXPECT_TRUE(this->isDeepCopy(copy));
}

TYPED_TEST(Copying, AssignmentToAnEmptyImageCopiesDeeply)
{
    CopyableImage<TypeParam> copy;
    EXPECT_EQ(&(copy = this->source), &copy);
    EXPECT_TRUE(this->isDeepCopy(copy));
}

TYPED_TEST(Copying, AssignmentReturnsTheImage)
{
    CopyableImage<TypeParam> copy;
    EXPECT_EQ(&copy.assign(this->source), static_cast<VxImage<TypeParam>*>(&copy));
}

TYPED_TEST(Copying, AssignmentReplacesAnOwnedBlock)
{
    CopyableImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(9, 9, 9, 9), SUCCESS);
    copy = this->source;
    EXPECT_TRUE(this->isDeepCopy(copy));
}

TYPED_TEST(Copying, AssignmentMakesAWrappingImageOwningAndLeavesTheBlockAlone)
{
    std::vector<TypeParam> block = someValues<TypeParam>(48, 500);
    CopyableImage<TypeParam> copy;
    ASSERT_EQ(copy.initializeWithPointer(block.data(), 2, 2, 2, 2), SUCCESS);
    copy = this->source;
    EXPECT_TRUE(this->isDeepCopy(copy));
    EXPECT_TRUE(isStamped(block.data(), 48, 500));
    EXPECT_EQ(copy.setImageSize(1, 1, 1, 1), SUCCESS);
}

TYPED_TEST(Copying, AssigningAnImageToItselfZeroesIt)
{
    ImageFields<TypeParam> expected = fieldsOf(this->source);
    const CopyableImage<TypeParam>& same = this->source;
    this->source = same;
    expected.buffer = this->source.getBufferPointer();
    EXPECT_EQ(fieldsOf(this->source), expected);
    EXPECT_TRUE(isZeroed(this->source.getBufferPointer(), 48));
}

TYPED_TEST(Copying, AssigningAWrappingImageToItselfGivesOwnedZeros)
{
    std::vector<TypeParam> block = someValues<TypeParam>(48, 500);
    CopyableImage<TypeParam> image;
    ASSERT_EQ(image.initializeWithPointer(block.data(), 4, 3, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(image);
    const CopyableImage<TypeParam>& same = image;
    image = same;
    expected.buffer = image.getBufferPointer();
    expected.memoryMode = 0;
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(image), expected);
    EXPECT_NE(image.getBufferPointer(), block.data());
    EXPECT_TRUE(isZeroed(image.getBufferPointer(), 48));
    EXPECT_TRUE(isStamped(block.data(), 48, 500));
}

/// Whether the heap gives a pointer for no bytes, as the standard leaves open, decides what a copy
/// of an empty image holds.
bool heapGivesABlockOfNoBytes()
{
    void* volatile block = std::calloc(1, 0);  // volatile, so that the call is made
    const bool given = block != nullptr;
    std::free(block);
    return given;
}

TYPED_TEST(Copying, ACopyOfAnEmptyImageHoldsABlockOfNoBytes)
{
    const CopyableImage<TypeParam> empty;
    CopyableImage<TypeParam> copy(empty);
    ImageFields<TypeParam> expected;
    expected.buffer = copy.getBufferPointer();
    EXPECT_EQ(fieldsOf(copy), expected);
    if (!heapGivesABlockOfNoBytes())
        GTEST_SKIP() << "this heap gives null for no bytes";
    EXPECT_NE(copy.getBufferPointer(), nullptr);
    EXPECT_TRUE(throwsAndPrintsTwice([&] { copy.initialize(1, 1, 1, 1); }, kInitializeTwice));
}

TYPED_TEST(Copying, InitializingFromAnEmptyImageAsksForABlockOfNoBytes)
{
    const VxImage<TypeParam> empty;
    VxImage<TypeParam> copy;
    const bool given = heapGivesABlockOfNoBytes();
    EXPECT_EQ(copy.initialize(empty, true), given ? SUCCESS : ERR_ALLOCATION_FAILED);
    EXPECT_EQ(copy.getBufferPointer() != nullptr, given);
}

TYPED_TEST(Copying, AssigningAnEmptyImageEmptiesTheGeometry)
{
    const CopyableImage<TypeParam> empty;
    this->source = empty;
    ImageFields<TypeParam> expected;
    expected.buffer = this->source.getBufferPointer();
    expected.bufferBytes = heapGivesABlockOfNoBytes() ? 0 : 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->source), expected);
}

TYPED_TEST(Copying, CopyFromMakesAWrappingImageOwning)
{
    std::vector<TypeParam> block = someValues<TypeParam>(48, 500);
    VxImage<TypeParam> image;
    ASSERT_EQ(image.initializeWithPointer(block.data(), 1, 1, 1, 1), SUCCESS);
    EXPECT_EQ(callCopyFrom<TypeParam>(image, this->source, true), SUCCESS);
    EXPECT_TRUE(this->isDeepCopy(image));
    EXPECT_TRUE(isStamped(block.data(), 48, 500));
}

TYPED_TEST(Copying, GeometryWithoutABufferIsCopiedOverZeros)
{
    ASSERT_EQ(this->source.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    ASSERT_EQ(this->source.setImageSize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->source.getBufferPointer(), nullptr);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->source, false), SUCCESS);
    EXPECT_TRUE(isZeroed(copy.getBufferPointer(), 48));
}

}  // namespace
}  // namespace volux::test
