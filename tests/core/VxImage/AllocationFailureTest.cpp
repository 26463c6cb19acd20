// What the heap is asked for, and what is left when it refuses.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "support/Allocation.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/TypedSuites.h"
#include "volux/core/Planes.h"

namespace volux::test {
namespace {

template <class T>
class AllocationFailure : public ::testing::Test {
protected:
    ImageFields<T> hugeFields()
    {
        ImageFields<T> fields;
        fields.setInterleaved(kHugeWidth, kHugeHeight, 1, 1);
        return fields;
    }

    CopyableImage<T> image;
};
TYPED_TEST_SUITE(AllocationFailure, ElementTypes, ElementTypeNames);

TYPED_TEST(AllocationFailure, OfInitializeLeavesTheNewGeometryWithoutABuffer)
{
    EXPECT_EQ(this->image.initialize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(fieldsOf(this->image), this->hugeFields());
}

TYPED_TEST(AllocationFailure, OfResizingKeepsTheCapacityAndTheSpacing)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    EXPECT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    expected.voxelSizeX = 2.0;
    expected.voxelSizeY = 3.0;
    expected.voxelSizeZ = 4.0;
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(AllocationFailure, ThenASizeWithinTheLostCapacitySucceedsWithoutABuffer)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->image.setImageSize(2, 2, 3, 4), SUCCESS);
    ImageFields<TypeParam> expected;
    expected.setInterleaved(2, 2, 3, 4);
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
    EXPECT_EQ(this->image.initialize(1, 1, 1, 1), SUCCESS) << "it counts as empty";
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
}

TYPED_TEST(AllocationFailure, ThenALargerSizeGetsABlockAgain)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->image.initialize(49, 1, 1, 1), SUCCESS);
    ASSERT_NE(this->image.getBufferPointer(), nullptr);
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 49));
}

TYPED_TEST(AllocationFailure, ThenAWrappedBlockKeepsTheLostCapacity)
{
    TypeParam voxel{};
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    ASSERT_EQ(this->image.initializeWithPointer(&voxel, 1, 1, 1, 1), SUCCESS);
    ImageFields<TypeParam> expected;
    expected.setInterleaved(1, 1, 1, 1);
    expected.buffer = &voxel;
    expected.memoryMode = 1;
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(AllocationFailure, ThenTerminateForgetsTheLostCapacity)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    this->image.terminate();
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

TYPED_TEST(AllocationFailure, OfACopyLeavesTheSourcesGeometryWithoutABuffer)
{
    VxImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(source.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    source.setImageStride(1, 2, 3, 4);
    for (const bool copyData : {true, false}) {
        VxImage<TypeParam> copy;
        EXPECT_EQ(copy.initialize(source, copyData), ERR_ALLOCATION_FAILED);
        EXPECT_EQ(fieldsOf(copy), fieldsOf(source));
    }
}

TYPED_TEST(AllocationFailure, OfACopyKeepsTheCapacity)
{
    VxImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 2), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->image.initialize(source, true), ERR_ALLOCATION_FAILED);
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(AllocationFailure, OfCopyConstructionIsSilent)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    const CopyableImage<TypeParam> copy(source);
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = fieldsOf(copy).bufferBytes;  // left open
    EXPECT_EQ(fieldsOf(copy), expected);
}

TYPED_TEST(AllocationFailure, OfAssignmentIsSilentAndKeepsTheCapacity)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    EXPECT_EQ(&(this->image = source), &this->image);
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(fieldsOf(this->image), expected);
}

TYPED_TEST(AllocationFailure, OfAssignmentToAWrappingImageForgetsTheBlock)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    std::vector<TypeParam> block = someValues<TypeParam>(8, 1);
    ASSERT_EQ(this->image.initializeWithPointer(block.data(), 2, 2, 2, 1), SUCCESS);
    this->image = source;
    EXPECT_EQ(fieldsOf(this->image), this->hugeFields());
    EXPECT_TRUE(isStamped(block.data(), 8, 1));
}

TYPED_TEST(AllocationFailure, OfAPlaneGoesUnreportedAndLeavesItsGeometryWithoutABuffer)
{
    VxImage<TypeParam> volume;
    failToInitialize(volume);
    EXPECT_EQ(getXyPlane(0, volume, &this->image), SUCCESS);
    EXPECT_EQ(fieldsOf(this->image), this->hugeFields());
}

TYPED_TEST(AllocationFailure, ThenACopyOfWhatIsLeftReadsZeros)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
    ASSERT_EQ(this->image.setImageSize(4, 3, 2, 2), SUCCESS);
    VxImage<TypeParam> copy;
    ASSERT_EQ(copy.initialize(this->image, true), SUCCESS);
    EXPECT_TRUE(isZeroed(copy.getBufferPointer(), 48));
}

TYPED_TEST(AllocationFailure, OfABufferLeavesANullPointerAndTheCapacity)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    ASSERT_EQ(callPrivate<member::FreeBuffer>(this->image), SUCCESS);
    EXPECT_EQ(callPrivate<member::AllocateBuffer>(this->image, std::size_t{1} << 60U),
              ERR_ALLOCATION_FAILED);
    expected.buffer = nullptr;
    EXPECT_EQ(fieldsOf(this->image), expected);
}

template <class T>
class HeapUse : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!AllocationWatch::kWorks)
            GTEST_SKIP() << AllocationWatch::kWhyNot;
    }

    AllocationWatch heap;
    CopyableImage<T> image;
};
TYPED_TEST_SUITE(HeapUse, ElementTypes, ElementTypeNames);

TYPED_TEST(HeapUse, InitializeTakesOneBlockOfTheExactSize)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->heap.callocCount(), 1);
    EXPECT_EQ(this->heap.callocElements(0), 1U);
    EXPECT_EQ(this->heap.callocElementBytes(0), 48 * sizeof(TypeParam));
    EXPECT_EQ(this->heap.callocResult(0), this->image.getBufferPointer());
}

TYPED_TEST(HeapUse, TheByteCountIsAProductOf64Bits)
{
    this->heap.failCalloc(1);
    EXPECT_EQ(this->image.initialize(65536, 65536, 2, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->heap.callocElementBytes(0), 0x200000000U * sizeof(TypeParam));
}

TYPED_TEST(HeapUse, TerminateFreesTheBlockOnce)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    const void* const block = this->image.getBufferPointer();
    this->image.terminate();
    EXPECT_EQ(this->heap.freeCount(block), 1);
    this->image.terminate();
    EXPECT_EQ(this->heap.freeCount(block), 1);
}

TYPED_TEST(HeapUse, DestructionFreesTheBlockOnce)
{
    {
        VxImage<TypeParam> local;
        ASSERT_EQ(local.initialize(4, 3, 2, 2), SUCCESS);
    }
    EXPECT_EQ(this->heap.freeCount(this->heap.callocResult(0)), 1);
}

TYPED_TEST(HeapUse, AWrappedBlockIsNeverAllocatedOrFreed)
{
    std::vector<TypeParam> block(8);
    this->heap.follow(block.data());
    {
        VxImage<TypeParam> wrapping;
        ASSERT_EQ(wrapping.initializeWithPointer(block.data(), 2, 2, 2, 1), SUCCESS);
        wrapping.terminate();
        ASSERT_EQ(wrapping.initializeWithPointer(block.data(), 2, 2, 2, 1), SUCCESS);
    }
    EXPECT_EQ(this->heap.freeCount(block.data()), 0);
    EXPECT_EQ(this->heap.callocCount(), 0);
}

TYPED_TEST(HeapUse, AssignmentDoesNotFreeAWrappedBlock)
{
    std::vector<TypeParam> block(8);
    this->heap.follow(block.data());
    ASSERT_EQ(this->image.initializeWithPointer(block.data(), 2, 2, 2, 1), SUCCESS);
    const CopyableImage<TypeParam>& same = this->image;
    this->image = same;
    EXPECT_EQ(this->heap.freeCount(block.data()), 0);
    EXPECT_EQ(this->heap.callocCount(), 1);
}

TYPED_TEST(HeapUse, ResizingWithinTheCapacityLeavesTheHeapAlone)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(1, 1, 1, 1), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(48, 1, 1, 1), SUCCESS);
    EXPECT_EQ(this->heap.callocCount(), 1);
    EXPECT_EQ(this->heap.liveCount(), 1);
}

TYPED_TEST(HeapUse, GrowingFreesTheOldBlockOnce)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    ASSERT_EQ(this->image.setImageSize(7, 7, 7, 7), SUCCESS);
    EXPECT_EQ(this->heap.callocCount(), 2);
    EXPECT_EQ(this->heap.liveCount(), 1);
}

TYPED_TEST(HeapUse, GrowingFreesTheOldBlockBeforeItAsksForTheNew)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    this->heap.failCalloc(1);
    EXPECT_EQ(this->image.setImageSize(7, 7, 1, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
    EXPECT_EQ(this->heap.liveCount(), 0);
    EXPECT_EQ(fieldsOf(this->image).bufferBytes, 48 * sizeof(TypeParam));
}

TYPED_TEST(HeapUse, ASizeWithinALostCapacityLeavesTheHeapAlone)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    this->heap.failCalloc(1);
    ASSERT_EQ(this->image.setImageSize(7, 7, 1, 1), ERR_ALLOCATION_FAILED);
    EXPECT_EQ(this->image.setImageSize(4, 3, 2, 2), SUCCESS);
    EXPECT_EQ(this->heap.callocCount(), 2);
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
}

TYPED_TEST(HeapUse, CopiesTakeOneBlockOfTheExtentsSize)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    const CopyableImage<TypeParam> constructed(this->image);
    VxImage<TypeParam> initialized;
    ASSERT_EQ(initialized.initialize(this->image, false), SUCCESS);
    ASSERT_EQ(this->heap.callocCount(), 3);
    for (int i = 1; i < 3; ++i) {
        EXPECT_EQ(this->heap.callocElements(i), 1U);
        EXPECT_EQ(this->heap.callocElementBytes(i), 48 * sizeof(TypeParam));
    }
}

TYPED_TEST(HeapUse, AssignmentFreesTheOldBlockOnce)
{
    CopyableImage<TypeParam> source;
    ASSERT_EQ(source.initialize(1, 1, 1, 1), SUCCESS);
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    this->heap.failCalloc(1);
    this->image = source;
    EXPECT_EQ(this->heap.freeCount(this->heap.callocResult(1)), 1);
    EXPECT_EQ(this->image.getBufferPointer(), nullptr);
    EXPECT_EQ(this->heap.liveCount(), 1) << "the source's";
}

TYPED_TEST(HeapUse, CopyFromDoesNotFreeTheOldBlock)
{
    CopyableImage<TypeParam> source;
    ASSERT_EQ(source.initialize(1, 1, 1, 1), SUCCESS);
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    TypeParam* const old = this->image.getBufferPointer();
    ASSERT_EQ(callCopyFrom<TypeParam>(this->image, source, true), SUCCESS);
    EXPECT_EQ(this->heap.freeCount(old), 0);
    std::free(old);
}

TYPED_TEST(HeapUse, AllocateBufferDoesNotFreeTheOldBlock)
{
    ASSERT_EQ(this->image.initialize(4, 3, 2, 2), SUCCESS);
    TypeParam* const old = this->image.getBufferPointer();
    ASSERT_EQ(callPrivate<member::AllocateBuffer>(this->image, std::size_t{8}), SUCCESS);
    EXPECT_NE(this->image.getBufferPointer(), old);
    EXPECT_EQ(this->heap.freeCount(old), 0);
    std::free(old);
}

TYPED_TEST(HeapUse, ARefusedCallTakesNothing)
{
    EXPECT_EQ(this->image.initialize(0, 1, 1, 1), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(this->image.initializeWithPointer(nullptr, 1, 1, 1, 1), ERR_NULL_POINTER);
    EXPECT_EQ(this->heap.callocCount(), 0);
}

}  // namespace
}  // namespace volux::test
