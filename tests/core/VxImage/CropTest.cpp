// Copying a box out of a volume.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/BitExact.h"
#include "support/ContainerOracle.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();

/// Crops from a volume of 4 x 4 x 4 voxels.
template <class T>
class Crop : public ::testing::Test {
protected:
    void SetUp() override { wrap(volume, &image); }

    Volume<T> volume = someVolume<T>(padded(4, 4, 4, 1), 3);
    const Volume<T> untouched = volume;
    VxImage<T> image;
    VxImage<T> out;
};
TYPED_TEST_SUITE(Crop, ElementTypes, ElementTypeNames);

TYPED_TEST(Crop, CopiesTheBox)
{
    ASSERT_EQ(this->image.crop(Rect(1, 2, 0, 0, 0, 0), &this->out), SUCCESS);
    EXPECT_TRUE(this->out.getImageSize() == ImageSize(2, 1, 1, 1));
    EXPECT_TRUE(bitEqual(this->out(0, 0, 0, 0), this->volume.at(1, 0, 0, 0)));
    EXPECT_TRUE(bitEqual(this->out(1, 0, 0, 0), this->volume.at(2, 0, 0, 0)));
}

struct BoxCase {
    Rect box;
    const char* rule;
};

const BoxCase kBoxes[] = {
    {Rect(0, 3, 0, 3, 0, 3), "the whole volume"},
    {Rect(2, 100, 0, 3, 0, 3), "x clipped at its end"},
    {Rect(0, 3, 3, 4, 0, 3), "y clipped to one voxel"},
    {Rect(0, 3, 0, 3, 1, kMax), "z clipped at the largest index"},
    {Rect(0, kMax, 0, kMax, 0, kMax), "all clipped"},
    {Rect(3, 3, 3, 3, 3, 3), "the last voxel"},
    {Rect(0, 0, 0, 0), "the first voxel, of a box in a plane"},
    {Rect(1, 2, 1, 3, 2, 3), "the inside"},
};

TYPED_TEST(Crop, ClipsTheEndsOfTheBoxByTheTable)
{
    for (const BoxCase& entry : kBoxes) {
        VxImage<TypeParam> result;
        ASSERT_EQ(this->image.crop(entry.box, &result), SUCCESS) << entry.rule;
        EXPECT_TRUE(holds(result, naiveCrop(this->volume, entry.box))) << entry.rule;
    }
    EXPECT_TRUE(sameBlock(this->volume, this->untouched));
}

TYPED_TEST(Crop, GivesAnOwningInterleavedImageWhateverTheSource)
{
    for (const MakeLayout makeLayout : kLayouts) {
        Volume<TypeParam> source = someVolume<TypeParam>(makeLayout(4, 3, 2, 3), 3);
        VxImage<TypeParam> from;
        wrap(source, &from);
        VxImage<TypeParam> result;
        ASSERT_EQ(from.crop(Rect(1, 2, 0, 2, 1, 1), &result), SUCCESS);
        ImageFields<TypeParam> expected;
        expected.setInterleaved(2, 3, 1, 3);
        expected.buffer = result.getBufferPointer();
        expected.bufferBytes = 18 * sizeof(TypeParam);
        EXPECT_EQ(fieldsOf(result), expected) << source.name;
        EXPECT_TRUE(holds(result, naiveCrop(source, Rect(1, 2, 0, 2, 1, 1))));
    }
}

TYPED_TEST(Crop, WithoutAnOutputIsAnInvalidArgument)
{
    EXPECT_EQ(this->image.crop(Rect(0, 1, 0, 1, 0, 1), nullptr), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(this->image.crop(Rect(1, 0, 1, 0, 1, 0), nullptr), ERR_INVALID_ARGUMENT);
}

const Rect kEmptyBoxes[] = {
    {1, 0, 0, 3, 0, 3},
    {0, 3, 3, 2, 0, 3},
    {0, 3, 0, 3, kMax, 0},
    {kMax, kMax - 1, 0, 0, 0, 0},
};

TYPED_TEST(Crop, OfAnEmptyRangeLeavesTheOutputUntouched)
{
    ASSERT_EQ(this->out.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
    const auto before = fieldsOf(this->out);
    for (const Rect& box : kEmptyBoxes)
        EXPECT_EQ(this->image.crop(box, &this->out), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->out), before);
}

TYPED_TEST(Crop, OfAnEmptyRangeFailsBeforeAReservedOutputThrows)
{
    ASSERT_EQ(this->out.initialize(1, 1, 1, 1), SUCCESS);
    const auto before = fieldsOf(this->out);
    for (const Rect& box : kEmptyBoxes)
        EXPECT_EQ(this->image.crop(box, &this->out), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->out), before);
}

TYPED_TEST(Crop, IntoAnImageThatHoldsABufferThrowsFromLine78)
{
    ASSERT_EQ(this->out.initialize(1, 1, 1, 1), SUCCESS);
    const auto before = fieldsOf(this->out);
    EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.crop(Rect(0, 1, 0, 1, 0, 1), &this->out); },
                                     kInitializeTwice));
    EXPECT_EQ(fieldsOf(this->out), before);
}

TYPED_TEST(Crop, IntoItselfThrowsFromLine78)
{
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { this->image.crop(Rect(0, 1, 0, 1, 0, 1), &this->image); }, kInitializeTwice));
    EXPECT_TRUE(sameBlock(this->volume, this->untouched));
}

TYPED_TEST(Crop, OutsideTheVolumeThrowsWhenTheOutputIsReserved)
{
    ASSERT_EQ(this->out.initialize(1, 1, 1, 1), SUCCESS);
    EXPECT_TRUE(throwsAndPrintsTwice([&] { this->image.crop(Rect(4, 9, 0, 1, 0, 1), &this->out); },
                                     kInitializeTwice));
}

const BoxCase kOutsideBoxes[] = {
    {Rect(4, 9, 0, 3, 0, 3), "x begins just outside: extent 0"},
    {Rect(0, 3, 4, 4, 0, 3), "y begins just outside: extent 0"},
    {Rect(0, 3, 0, 3, 4, kMax), "z begins just outside: extent 0"},
    {Rect(5, 9, 0, 3, 0, 3), "x begins one further: extent 2^32 - 1"},
    {Rect(0, 3, 100, 100, 0, 3), "y begins far outside: extent 2^32 - 96"},
    {Rect(0, 3, 0, 3, 2147483652U, kMax), "z begins so far outside that its extent is 2^31"},
};

TYPED_TEST(Crop, OutsideTheVolumeIsRefusedBySize)
{
    for (const BoxCase& entry : kOutsideBoxes) {
        EXPECT_EQ(this->image.crop(entry.box, &this->out), ERR_INVALID_ARGUMENT) << entry.rule;
        EXPECT_EQ(fieldsOf(this->out), ImageFields<TypeParam>{}) << entry.rule;
    }
}

struct WrappedCase {
    Rect box;
    ImageSize size;
};

const WrappedCase kWrapped[] = {
    {Rect(kMax, kMax, 0, 3, 0, 3), ImageSize(5, 4, 4, 1)},
    {Rect(0, 3, kMax - 1, kMax, 0, 3), ImageSize(4, 6, 4, 1)},
    {Rect(0, 3, 0, 3, kMax - 9, kMax - 5), ImageSize(4, 4, 14, 1)},
    {Rect(kMax, kMax, kMax, kMax, kMax, kMax), ImageSize(5, 5, 5, 1)},
    {Rect(2, 2, 1, 2, kMax, kMax), ImageSize(1, 2, 5, 1)},
};

TYPED_TEST(Crop, BeginningSoFarOutsideThatTheSizeWrapsCopiesNothing)
{
    for (const WrappedCase& entry : kWrapped) {
        VxImage<TypeParam> result;
        ASSERT_EQ(this->image.crop(entry.box, &result), SUCCESS);
        const ImageSize& s = entry.size;
        EXPECT_TRUE(s == result.getImageSize());
        EXPECT_TRUE(isZeroed(result.getBufferPointer(), std::size_t{s.width} * s.height * s.depth));
    }
}

TYPED_TEST(Crop, ThatCanNotBeAllocatedReturnsTheCodeOfInitialize)
{
    VxImage<TypeParam> huge;
    failToInitialize(huge);
    ASSERT_EQ(huge.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    EXPECT_EQ(huge.crop(Rect(0, kMax, 0, kMax, 0, 0), &this->out), ERR_ALLOCATION_FAILED);
    ImageFields<TypeParam> expected;
    expected.setInterleaved(kHugeWidth, kHugeHeight, 1, 1);
    EXPECT_EQ(fieldsOf(this->out), expected) << "the spacing, too, is as it was";
}

TYPED_TEST(Crop, OfAnEmptyImageIsRefusedForWantOfChannels)
{
    VxImage<TypeParam> empty;
    EXPECT_EQ(empty.crop(Rect(), &this->out), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(fieldsOf(this->out), ImageFields<TypeParam>{});
}

TYPED_TEST(Crop, AZeroExtentDoesNotClip)
{
    ImageFields<TypeParam> fields = fieldsOf(this->image);
    fields.width = 0;
    overwriteFields(this->image, fields);
    ASSERT_EQ(this->image.crop(Rect(1, 2, 0, 3, 0, 3), &this->out), SUCCESS);
    EXPECT_TRUE(holds(this->out, naiveCrop(this->volume, Rect(1, 2, 0, 3, 0, 3))));
}

TYPED_TEST(Crop, ABeginFrom2To31OnCountsBackwards)
{
    constexpr unsigned int kTwoBack = 4294967294U;
    constexpr unsigned int kOneBack = 4294967295U;
    const ImageFields<TypeParam> fields = fieldsOf(this->image);
    const auto expectCrop = [&](std::uint64_t stride, unsigned int ImageFields<TypeParam>::*extent,
                                const Rect& backwards, const Rect& same) {
        ImageFields<TypeParam> shifted = fields;
        shifted.buffer += 2 * stride;
        shifted.*extent = 0;
        overwriteFields(this->image, shifted);
        VxImage<TypeParam> box;
        EXPECT_EQ(this->image.crop(backwards, &box), SUCCESS);
        EXPECT_TRUE(holds(box, naiveCrop(this->volume, same)));
    };
    using Fields = ImageFields<TypeParam>;
    expectCrop(fields.strideX, &Fields::width, Rect(kTwoBack, kOneBack, 0, 2, 0, 2),
               Rect(0, 1, 0, 2, 0, 2));
    expectCrop(fields.strideY, &Fields::height, Rect(0, 2, kTwoBack, kOneBack, 0, 2),
               Rect(0, 2, 0, 1, 0, 2));
    expectCrop(fields.strideZ, &Fields::depth, Rect(0, 2, 0, 2, kTwoBack, kOneBack),
               Rect(0, 2, 0, 2, 0, 1));
    overwriteFields(this->image, fields);
}

TYPED_TEST(Crop, CopiesTheSpacing)
{
    ASSERT_EQ(this->image.setVoxelSize(0.5, 0.5, 2.0), SUCCESS);
    ASSERT_EQ(this->image.crop(Rect(0, 1, 0, 1, 0, 1), &this->out), SUCCESS);
    EXPECT_TRUE(this->out.getVoxelSize() == VoxelSize(0.5, 0.5, 2.0));
}

struct SpacingCase {
    double x, y, z;
    bool copied;
};

constexpr SpacingCase kSpacings[] = {
    {0.0, 1.0, 2.0, false},   {1.0, 0.0, 2.0, false},  {1.0, 2.0, 0.0, false},
    {-0.0, 1.0, 2.0, false},  {1.0, -3.0, 2.0, false}, {kNaN, 1.0, 0.0, false},
    {kNaN, -1.0, 1.0, false}, {kNaN, 1.0, 2.0, true},  {1.0, 2.0, kNaN, true},
    {kNaN, kNaN, kNaN, true}, {1e-300, 1e300, 5, true}};

TYPED_TEST(Crop, CopiesAllOfTheSpacingOrNone)
{
    for (const SpacingCase& entry : kSpacings) {
        ImageFields<TypeParam> fields = fieldsOf(this->image);
        fields.voxelSizeX = entry.x;
        fields.voxelSizeY = entry.y;
        fields.voxelSizeZ = entry.z;
        overwriteFields(this->image, fields);
        VxImage<TypeParam> result;
        ASSERT_EQ(result.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
        ASSERT_EQ(this->image.crop(Rect(0, 1, 0, 1, 0, 1), &result), SUCCESS);
        const VoxelSize spacing = result.getVoxelSize();
        EXPECT_TRUE(bitEqual(spacing.x, entry.copied ? entry.x : 7.0));
        EXPECT_TRUE(bitEqual(spacing.y, entry.copied ? entry.y : 8.0));
        EXPECT_TRUE(bitEqual(spacing.z, entry.copied ? entry.z : 9.0));
    }
}

TYPED_TEST(Crop, LeavesTheSourceAsItIs)
{
    const auto before = fieldsOf(this->image);
    ASSERT_EQ(this->image.crop(Rect(0, 1, 0, 1, 0, 1), &this->out), SUCCESS);
    ASSERT_EQ(this->out.fill(TypeParam{}), SUCCESS);
    EXPECT_EQ(fieldsOf(this->image), before);
    EXPECT_TRUE(sameBlock(this->volume, this->untouched));
}

}  // namespace
}  // namespace volux::test
