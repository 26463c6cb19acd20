// What the heap is asked for, and what is left when it refuses.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "support/Allocation.h"
#include "support/ElementTypes.h"
#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "volux/core/Planes.h"

namespace volux::core {
namespace {

using namespace test;

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
    EXPECT_EQ(ERR_ALLOCATION_FAILED, this->image.initialize(kHugeWidth, kHugeHeight, 1, 1));
    EXPECT_EQ(this->hugeFields(), fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, OfResizingKeepsTheCapacityAndTheSpacing)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(SUCCESS, this->image.setVoxelSize(2.0, 3.0, 4.0));
    EXPECT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    expected.voxelSizeX = 2.0;
    expected.voxelSizeY = 3.0;
    expected.voxelSizeZ = 4.0;
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, ThenASizeWithinTheLostCapacitySucceedsWithoutABuffer)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    EXPECT_EQ(SUCCESS, this->image.setImageSize(2, 2, 3, 4));
    ImageFields<TypeParam> expected;
    expected.setInterleaved(2, 2, 3, 4);
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
    EXPECT_EQ(SUCCESS, this->image.initialize(1, 1, 1, 1)) << "it counts as empty";
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
}

TYPED_TEST(AllocationFailure, ThenALargerSizeGetsABlockAgain)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    EXPECT_EQ(SUCCESS, this->image.initialize(49, 1, 1, 1));
    ASSERT_NE(nullptr, this->image.getBufferPointer());
    EXPECT_TRUE(isZeroed(this->image.getBufferPointer(), 49));
}

TYPED_TEST(AllocationFailure, ThenAWrappedBlockKeepsTheLostCapacity)
{
    TypeParam voxel{};
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.initializeWithPointer(&voxel, 1, 1, 1, 1));
    ImageFields<TypeParam> expected;
    expected.setInterleaved(1, 1, 1, 1);
    expected.buffer = &voxel;
    expected.memoryMode = 1;
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, ThenTerminateForgetsTheLostCapacity)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    this->image.terminate();
    EXPECT_EQ(ImageFields<TypeParam>{}, fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, OfACopyLeavesTheSourcesGeometryWithoutABuffer)
{
    VxImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(SUCCESS, source.setVoxelSize(2.0, 3.0, 4.0));
    source.setImageStride(1, 2, 3, 4);
    for (const bool copyData : {true, false}) {
        VxImage<TypeParam> copy;
        EXPECT_EQ(ERR_ALLOCATION_FAILED, copy.initialize(source, copyData));
        EXPECT_EQ(fieldsOf(source), fieldsOf(copy));
    }
}

TYPED_TEST(AllocationFailure, OfACopyKeepsTheCapacity)
{
    VxImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 2));
    EXPECT_EQ(ERR_ALLOCATION_FAILED, this->image.initialize(source, true));
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, OfCopyConstructionIsSilent)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    const CopyableImage<TypeParam> copy(source);
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = fieldsOf(copy).bufferBytes;  // left open
    EXPECT_EQ(expected, fieldsOf(copy));
}

TYPED_TEST(AllocationFailure, OfAssignmentIsSilentAndKeepsTheCapacity)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    EXPECT_EQ(&this->image, &(this->image = source));
    ImageFields<TypeParam> expected = this->hugeFields();
    expected.bufferBytes = 48 * sizeof(TypeParam);
    EXPECT_EQ(expected, fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, OfAssignmentToAWrappingImageForgetsTheBlock)
{
    CopyableImage<TypeParam> source;
    failToInitialize(source);
    std::vector<TypeParam> block = someValues<TypeParam>(8, 1);
    ASSERT_EQ(SUCCESS, this->image.initializeWithPointer(block.data(), 2, 2, 2, 1));
    this->image = source;
    EXPECT_EQ(this->hugeFields(), fieldsOf(this->image));
    EXPECT_TRUE(isStamped(block.data(), 8, 1));
}

TYPED_TEST(AllocationFailure, OfAPlaneGoesUnreportedAndLeavesItsGeometryWithoutABuffer)
{
    VxImage<TypeParam> volume;
    failToInitialize(volume);
    EXPECT_EQ(SUCCESS, getXyPlane(0, volume, &this->image));
    EXPECT_EQ(this->hugeFields(), fieldsOf(this->image));
}

TYPED_TEST(AllocationFailure, ThenACopyOfWhatIsLeftReadsZeros)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(kHugeWidth, kHugeHeight, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(4, 3, 2, 2));
    VxImage<TypeParam> copy;
    ASSERT_EQ(SUCCESS, copy.initialize(this->image, true));
    EXPECT_TRUE(isZeroed(copy.getBufferPointer(), 48));
}

TYPED_TEST(AllocationFailure, OfABufferLeavesANullPointerAndTheCapacity)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ImageFields<TypeParam> expected = fieldsOf(this->image);
    ASSERT_EQ(SUCCESS, callPrivate<member::FreeBuffer>(this->image));
    EXPECT_EQ(ERR_ALLOCATION_FAILED,
              callPrivate<member::AllocateBuffer>(this->image, std::size_t{1} << 60U));
    expected.buffer = nullptr;
    EXPECT_EQ(expected, fieldsOf(this->image));
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
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(1, this->heap.callocCount());
    EXPECT_EQ(1U, this->heap.callocElements(0));
    EXPECT_EQ(48 * sizeof(TypeParam), this->heap.callocElementBytes(0));
    EXPECT_EQ(this->image.getBufferPointer(), this->heap.callocResult(0));
}

TYPED_TEST(HeapUse, TheByteCountIsAProductOf64Bits)
{
    this->heap.failCalloc(1);
    EXPECT_EQ(ERR_ALLOCATION_FAILED, this->image.initialize(65536, 65536, 2, 1));
    EXPECT_EQ(0x200000000U * sizeof(TypeParam), this->heap.callocElementBytes(0));
}

TYPED_TEST(HeapUse, TerminateFreesTheBlockOnce)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    const void* const block = this->image.getBufferPointer();
    this->image.terminate();
    EXPECT_EQ(1, this->heap.freeCount(block));
    this->image.terminate();
    EXPECT_EQ(1, this->heap.freeCount(block));
}

TYPED_TEST(HeapUse, DestructionFreesTheBlockOnce)
{
    {
        VxImage<TypeParam> local;
        ASSERT_EQ(SUCCESS, local.initialize(4, 3, 2, 2));
    }
    EXPECT_EQ(1, this->heap.freeCount(this->heap.callocResult(0)));
}

TYPED_TEST(HeapUse, AWrappedBlockIsNeverAllocatedOrFreed)
{
    std::vector<TypeParam> block(8);
    this->heap.follow(block.data());
    {
        VxImage<TypeParam> wrapping;
        ASSERT_EQ(SUCCESS, wrapping.initializeWithPointer(block.data(), 2, 2, 2, 1));
        wrapping.terminate();
        ASSERT_EQ(SUCCESS, wrapping.initializeWithPointer(block.data(), 2, 2, 2, 1));
    }
    EXPECT_EQ(0, this->heap.freeCount(block.data()));
    EXPECT_EQ(0, this->heap.callocCount());
}

TYPED_TEST(HeapUse, AssignmentDoesNotFreeAWrappedBlock)
{
    std::vector<TypeParam> block(8);
    this->heap.follow(block.data());
    ASSERT_EQ(SUCCESS, this->image.initializeWithPointer(block.data(), 2, 2, 2, 1));
    const CopyableImage<TypeParam>& same = this->image;
    this->image = same;
    EXPECT_EQ(0, this->heap.freeCount(block.data()));
    EXPECT_EQ(1, this->heap.callocCount());
}

TYPED_TEST(HeapUse, ResizingWithinTheCapacityLeavesTheHeapAlone)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(1, 1, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(48, 1, 1, 1));
    EXPECT_EQ(1, this->heap.callocCount());
    EXPECT_EQ(1, this->heap.liveCount());
}

TYPED_TEST(HeapUse, GrowingFreesTheOldBlockOnce)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    ASSERT_EQ(SUCCESS, this->image.setImageSize(7, 7, 7, 7));
    EXPECT_EQ(2, this->heap.callocCount());
    EXPECT_EQ(1, this->heap.liveCount());
}

TYPED_TEST(HeapUse, GrowingFreesTheOldBlockBeforeItAsksForTheNew)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    this->heap.failCalloc(1);
    EXPECT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(7, 7, 1, 1));
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
    EXPECT_EQ(0, this->heap.liveCount());
    EXPECT_EQ(48 * sizeof(TypeParam), fieldsOf(this->image).bufferBytes);
}

TYPED_TEST(HeapUse, ASizeWithinALostCapacityLeavesTheHeapAlone)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    this->heap.failCalloc(1);
    ASSERT_EQ(ERR_ALLOCATION_FAILED, this->image.setImageSize(7, 7, 1, 1));
    EXPECT_EQ(SUCCESS, this->image.setImageSize(4, 3, 2, 2));
    EXPECT_EQ(2, this->heap.callocCount());
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
}

TYPED_TEST(HeapUse, CopiesTakeOneBlockOfTheExtentsSize)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    const CopyableImage<TypeParam> constructed(this->image);
    VxImage<TypeParam> initialized;
    ASSERT_EQ(SUCCESS, initialized.initialize(this->image, false));
    ASSERT_EQ(3, this->heap.callocCount());
    for (int i = 1; i < 3; ++i) {
        EXPECT_EQ(1U, this->heap.callocElements(i));
        EXPECT_EQ(48 * sizeof(TypeParam), this->heap.callocElementBytes(i));
    }
}

TYPED_TEST(HeapUse, AssignmentFreesTheOldBlockOnce)
{
    CopyableImage<TypeParam> source;
    ASSERT_EQ(SUCCESS, source.initialize(1, 1, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    this->heap.failCalloc(1);
    this->image = source;
    EXPECT_EQ(1, this->heap.freeCount(this->heap.callocResult(1)));
    EXPECT_EQ(nullptr, this->image.getBufferPointer());
    EXPECT_EQ(1, this->heap.liveCount()) << "the source's";
}

TYPED_TEST(HeapUse, CopyFromDoesNotFreeTheOldBlock)
{
    CopyableImage<TypeParam> source;
    ASSERT_EQ(SUCCESS, source.initialize(1, 1, 1, 1));
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    TypeParam* const old = this->image.getBufferPointer();
    ASSERT_EQ(SUCCESS, callCopyFrom<TypeParam>(this->image, source, true));
    EXPECT_EQ(0, this->heap.freeCount(old));
    std::free(old);
}

TYPED_TEST(HeapUse, AllocateBufferDoesNotFreeTheOldBlock)
{
    ASSERT_EQ(SUCCESS, this->image.initialize(4, 3, 2, 2));
    TypeParam* const old = this->image.getBufferPointer();
    ASSERT_EQ(SUCCESS, callPrivate<member::AllocateBuffer>(this->image, std::size_t{8}));
    EXPECT_NE(old, this->image.getBufferPointer());
    EXPECT_EQ(0, this->heap.freeCount(old));
    std::free(old);
}

TYPED_TEST(HeapUse, ARefusedCallTakesNothing)
{
    EXPECT_EQ(ERR_INVALID_ARGUMENT, this->image.initialize(0, 1, 1, 1));
    EXPECT_EQ(ERR_NULL_POINTER, this->image.initializeWithPointer(nullptr, 1, 1, 1, 1));
    EXPECT_EQ(0, this->heap.callocCount());
}

}  // namespace
}  // namespace volux::core
