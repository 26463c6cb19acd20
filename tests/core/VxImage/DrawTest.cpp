// Pasting one image into another.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/BitExact.h"
#include "support/ContainerOracle.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr unsigned int kMax = std::numeric_limits<unsigned int>::max();

/// Draws a source of 3 x 2 x 2 voxels into a target of 5 x 4 x 3, with 2 channels.
template <class T>
class Draw : public ::testing::Test {
protected:
    void SetUp() override
    {
        wrap(targetVolume, &target);
        wrap(sourceVolume, &source);
    }

    Volume<T> targetVolume = someVolume<T>(padded(5, 4, 3, 2), 1);
    Volume<T> sourceVolume = someVolume<T>(planar(3, 2, 2, 2), 2);
    const Volume<T> targetBefore = targetVolume;
    const Volume<T> sourceBefore = sourceVolume;
    VxImage<T> target;
    VxImage<T> source;
};
TYPED_TEST_SUITE(Draw, ElementTypes, ElementTypeNames);

TYPED_TEST(Draw, PastesAtEveryPositionClippedAtTheFarEnds)
{
    forEachVoxel(
        this->targetVolume, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int) {
            Volume<TypeParam> expected = this->targetBefore;
            naiveDraw(expected, this->sourceVolume, x, y, z);
            this->targetVolume.block = this->targetBefore.block;
            ASSERT_EQ(this->target.draw(this->source, x, y, z), SUCCESS);
            ASSERT_TRUE(sameBlock(this->targetVolume, expected)) << x << ' ' << y << ' ' << z;
        });
    EXPECT_TRUE(sameBlock(this->sourceVolume, this->sourceBefore));
}

TYPED_TEST(Draw, OfALargerSourcePastesWhatFits)
{
    Volume<TypeParam> large = someVolume<TypeParam>(interleaved(9, 9, 9, 2), 4);
    VxImage<TypeParam> from;
    wrap(large, &from);
    Volume<TypeParam> expected = this->targetBefore;
    naiveDraw(expected, large, 1, 0, 2);
    ASSERT_EQ(this->target.draw(from, 1, 0, 2), SUCCESS);
    EXPECT_TRUE(sameBlock(this->targetVolume, expected));
}

TYPED_TEST(Draw, NearTheFarCornerWritesOnlyTheCorner)
{
    VxImage<TypeParam> to;
    VxImage<TypeParam> from;
    ASSERT_EQ(to.initialize(10, 10, 10, 1), SUCCESS);
    ASSERT_EQ(from.initialize(10, 10, 10, 1), SUCCESS);
    stamp(from, 1000, 1);
    ASSERT_EQ(to.draw(from, 8, 8, 8), SUCCESS);
    for (int i = 0; i < 1000; ++i) {
        const int x = i % 10, y = i / 10 % 10, z = i / 100;
        const bool corner = x >= 8 && y >= 8 && z >= 8;
        ASSERT_TRUE(bitEqual(to(x, y, z, 0), corner ? from(x - 8, y - 8, z - 8, 0) : TypeParam{}));
    }
}

TYPED_TEST(Draw, LeavesTheFieldsOfBothImages)
{
    ASSERT_EQ(this->source.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
    const auto targetFields = fieldsOf(this->target);
    const auto sourceFields = fieldsOf(this->source);
    ASSERT_EQ(this->target.draw(this->source, 1, 1, 1), SUCCESS);
    EXPECT_EQ(fieldsOf(this->target), targetFields);
    EXPECT_EQ(fieldsOf(this->source), sourceFields);
}

struct PositionCase {
    unsigned int x, y, z;
};

constexpr PositionCase kOutside[] = {
    {5, 0, 0},          {0, 4, 0},          {0, 0, 3},          {kMax, 0, 0},
    {0, kMax, 0},       {0, 0, kMax},       {2147483648, 0, 0}, {0, 2147483648, 0},
    {0, 0, 2147483648}, {2147483647, 0, 0}, {0, 2147483647, 0}, {0, 0, 2147483647},
};

TYPED_TEST(Draw, OutsideIsRefusedAndWritesNothing)
{
    for (const PositionCase& p : kOutside)
        EXPECT_EQ(this->target.draw(this->source, p.x, p.y, p.z), ERR_INVALID_ARGUMENT)
            << p.x << ' ' << p.y << ' ' << p.z;
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
    EXPECT_TRUE(sameBlock(this->sourceVolume, this->sourceBefore));
}

TYPED_TEST(Draw, OfOtherChannelsIsRefusedWhateverThePosition)
{
    VxImage<TypeParam> one;
    VxImage<TypeParam> three;
    ASSERT_EQ(one.initialize(2, 2, 2, 1), SUCCESS);
    ASSERT_EQ(three.initialize(2, 2, 2, 3), SUCCESS);
    EXPECT_EQ(one.draw(three, 0, 0, 0), ERR_INVALID_CHANNEL);
    EXPECT_EQ(three.draw(one, 0, 0, 0), ERR_INVALID_CHANNEL);
    EXPECT_EQ(one.draw(three, 2, kMax, 9), ERR_INVALID_CHANNEL);
    EXPECT_TRUE(isZeroed(one.getBufferPointer(), 8));
}

TYPED_TEST(Draw, WithAnEmptyImageFailsByTheChannelsThenByThePosition)
{
    VxImage<TypeParam> empty;
    VxImage<TypeParam> other;
    EXPECT_EQ(this->target.draw(empty, 0, 0, 0), ERR_INVALID_CHANNEL);
    EXPECT_EQ(empty.draw(this->source, 0, 0, 0), ERR_INVALID_CHANNEL);
    EXPECT_EQ(empty.draw(other, 0, 0, 0), ERR_INVALID_ARGUMENT);
}

TYPED_TEST(Draw, WithoutChannelsIsRefused)
{
    overwriteExtents(this->target, 5, 4, 3, 0);
    overwriteExtents(this->source, 3, 2, 2, 0);
    EXPECT_EQ(this->target.draw(this->source, 0, 0, 0), ERR_INVALID_ARGUMENT);
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
}

TYPED_TEST(Draw, ExtentsAreComparedWithThePositionAsSignedNumbers)
{
    overwriteExtents(this->target, 2147483648U, 4, 3, 2);
    EXPECT_EQ(this->target.draw(this->source, 0, 0, 0), ERR_INVALID_ARGUMENT);
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
}

TYPED_TEST(Draw, OfASourceWithoutDepthWritesNothing)
{
    overwriteExtents(this->source, 3, 2, 0, 2);
    EXPECT_EQ(this->target.draw(this->source, 1, 1, 1), SUCCESS);
    EXPECT_EQ(this->target.draw(this->source, 1, 1, 2), SUCCESS);
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
}

TYPED_TEST(Draw, OfASourceWithoutWidthOrHeightWritesNothing)
{
    overwriteExtents(this->source, 0, 2, 2, 2);
    EXPECT_EQ(this->target.draw(this->source, 1, 1, 1), SUCCESS);
    overwriteExtents(this->source, 3, 0, 2, 2);
    EXPECT_EQ(this->target.draw(this->source, 1, 1, 1), SUCCESS);
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
}

// The end of the box wraps below zero and is then clipped to the whole target, whose extents the
// source's block happens to cover here.
TYPED_TEST(Draw, OfASourceWithoutDepthAtTheOriginReadsThroughItsStrides)
{
    Volume<TypeParam> large = someVolume<TypeParam>(padded(5, 4, 3, 2), 4);
    VxImage<TypeParam> from;
    wrap(large, &from);
    overwriteExtents(from, 5, 4, 0, 2);
    Volume<TypeParam> expected = this->targetBefore;
    naiveDraw(expected, large, 0, 0, 0);
    EXPECT_EQ(this->target.draw(from, 0, 0, 0), SUCCESS);
    EXPECT_TRUE(sameBlock(this->targetVolume, expected));
}

TYPED_TEST(Draw, OfASourceSoLargeThatTheEndWrapsWritesNothing)
{
    overwriteExtents(this->source, kMax, kMax, kMax, 2);
    EXPECT_EQ(this->target.draw(this->source, 2, 2, 2), SUCCESS);
    EXPECT_TRUE(sameBlock(this->targetVolume, this->targetBefore));
}

TYPED_TEST(Draw, WritesSharedElementsInTheOrderZYXChannel)
{
    for (const MakeLayout makeLayout : {shared, collapsed}) {
        Volume<TypeParam> to = someVolume<TypeParam>(makeLayout(5, 4, 3, 2), 8);
        VxImage<TypeParam> image;
        wrap(to, &image);
        Volume<TypeParam> expected = to;
        naiveDraw(expected, this->sourceVolume, 1, 1, 1);
        ASSERT_EQ(image.draw(this->source, 1, 1, 1), SUCCESS);
        EXPECT_TRUE(sameBlock(to, expected)) << to.name;
    }
}

TYPED_TEST(Draw, UndoesACrop)
{
    VxImage<TypeParam> piece;
    ASSERT_EQ(this->target.crop(Rect(1, 3, 2, 3, 0, 1), &piece), SUCCESS);
    ASSERT_EQ(this->target.fill(TypeParam{}), SUCCESS);
    ASSERT_EQ(this->target.draw(piece, 1, 2, 0), SUCCESS);
    Volume<TypeParam> expected = this->targetBefore;
    naiveFill(expected, TypeParam{});
    naiveDraw(expected, naiveCrop(this->targetBefore, Rect(1, 3, 2, 3, 0, 1)), 1, 2, 0);
    EXPECT_TRUE(sameBlock(this->targetVolume, expected));
}

}  // namespace
}  // namespace volux::test
