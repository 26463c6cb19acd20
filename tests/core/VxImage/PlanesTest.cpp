// Slices out of a volume and back into it, by all three pairs of functions.
#include "volux/core/Planes.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/BitExact.h"
#include "support/ContainerOracle.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/PlaneFunctions.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

/// A volume of 4 x 3 x 5 voxels with 2 channels, in a padded layout between guards.
template <class T>
class Planes : public ::testing::Test {
protected:
    void SetUp() override { wrap(data, &volume); }

    /// A plane image of the given size whose values come from the seed.
    Volume<T> somePlane(unsigned int w, unsigned int h, unsigned int c, std::uint64_t seed)
    {
        return someVolume<T>(interleaved(w, h, 1, c), seed);
    }

    Volume<T> data = someVolume<T>(padded(4, 3, 5, 2), 1);
    const Volume<T> untouched = data;
    VxImage<T> volume;
    const AllPlaneFunctions<T> functions{};
};
/// The outer loop of zx runs along the plane's x, those of the others along its y.
template <class T>
void copyPlaneWithin(const PlaneFunctions<T>& plane, Volume<T>& volume, unsigned int index)
{
    const Layout& l = volume;
    const bool xOutermost = plane.across == Axis::Y;
    for (unsigned int n = 0; n < l.extents.width * l.extents.height; ++n) {
        const unsigned int i = xOutermost ? n / l.extents.height : n % l.extents.width;
        const unsigned int j = xOutermost ? n % l.extents.height : n / l.extents.width;
        for (unsigned int c = 0; c < l.channels; ++c) {
            volume.at(i, j, 0, c) = plane.voxel(volume, index, i, j, c);
        }
    }
}

TYPED_TEST_SUITE(Planes, ElementTypes, ElementTypeNames);

TYPED_TEST(Planes, AnXyPlaneRunsAlongXAndY)
{
    VxImage<TypeParam> plane;
    ASSERT_EQ(getXyPlane(2, this->volume, &plane), SUCCESS);
    ASSERT_TRUE(plane.getImageSize() == ImageSize(4, 3, 1, 2));
    for (int i = 0; i < 4 * 3 * 2; ++i) {
        const int x = i % 4, y = i / 4 % 3, c = i / 12;
        EXPECT_TRUE(bitEqual(plane(x, y, 0, c), this->volume(x, y, 2, c)));
    }
}

TYPED_TEST(Planes, AYzPlaneRunsAlongYAndZ)
{
    VxImage<TypeParam> plane;
    ASSERT_EQ(getYzPlane(1, this->volume, &plane), SUCCESS);
    ASSERT_TRUE(plane.getImageSize() == ImageSize(3, 5, 1, 2));
    for (int i = 0; i < 3 * 5 * 2; ++i) {
        const int y = i % 3, z = i / 3 % 5, c = i / 15;
        EXPECT_TRUE(bitEqual(plane(y, z, 0, c), this->volume(1, y, z, c)));
    }
}

TYPED_TEST(Planes, AZxPlaneRunsAlongZAndX)
{
    VxImage<TypeParam> plane;
    ASSERT_EQ(getZxPlane(0, this->volume, &plane), SUCCESS);
    ASSERT_TRUE(plane.getImageSize() == ImageSize(5, 4, 1, 2));
    for (int i = 0; i < 5 * 4 * 2; ++i) {
        const int z = i % 5, x = i / 5 % 4, c = i / 20;
        EXPECT_TRUE(bitEqual(plane(z, x, 0, c), this->volume(x, 0, z, c)));
    }
}

TYPED_TEST(Planes, EveryIndexGivesItsSlice)
{
    for (const auto& f : this->functions) {
        for (unsigned int index = 0; index < extent(this->data, f.across); ++index) {
            VxImage<TypeParam> plane;
            ASSERT_EQ(f.get(index, this->volume, &plane), SUCCESS) << f.name;
            EXPECT_TRUE(holds(plane, naiveGetPlane(f, this->data, index))) << f.name << index;
        }
    }
    EXPECT_TRUE(sameBlock(this->data, this->untouched));
}

TYPED_TEST(Planes, AnIndexBeyondTheVolumeNamesItsAxisAndLeavesThePlane)
{
    for (const auto& f : this->functions) {
        const unsigned int end = extent(this->data, f.across);
        for (const unsigned int index : {end, end + 1, 2147483648U, 4294967295U}) {
            VxImage<TypeParam> plane;
            EXPECT_EQ(f.get(index, this->volume, &plane), invalid(f.across)) << f.name << index;
            EXPECT_EQ(fieldsOf(plane), ImageFields<TypeParam>{}) << f.name;
        }
    }
}

TYPED_TEST(Planes, ANullPointerIsNamedBeforeTheIndex)
{
    for (const auto& f : this->functions) {
        for (const unsigned int index : {0U, 99U}) {
            EXPECT_EQ(f.get(index, this->volume, nullptr), ERR_NULL_POINTER) << f.name;
            EXPECT_EQ(f.set(index, this->volume, nullptr), ERR_NULL_POINTER) << f.name;
        }
    }
}

TYPED_TEST(Planes, IntoAWrappingImageThrowFromLine411)
{
    for (const auto& f : this->functions) {
        Volume<TypeParam> block = someVolume<TypeParam>(planar(9, 9, 1, 2), 4);
        const Volume<TypeParam> before = block;
        VxImage<TypeParam> wrapping;
        wrap(block, &wrapping);
        const auto fields = fieldsOf(wrapping);
        EXPECT_TRUE(
            throwsAndPrintsTwice([&] { f.get(0, this->volume, &wrapping); }, kResizeWrapping));
        EXPECT_EQ(fieldsOf(wrapping), fields) << f.name;
        EXPECT_TRUE(sameBlock(block, before)) << f.name;
    }
}

TYPED_TEST(Planes, ABadIndexIsNamedBeforeAWrappingImageThrows)
{
    for (const auto& f : this->functions) {
        TypeParam voxel{};
        VxImage<TypeParam> wrapping;
        ASSERT_EQ(wrapping.initializeWithPointer(&voxel, 1, 1, 1, 1), SUCCESS);
        EXPECT_EQ(f.get(99, this->volume, &wrapping), invalid(f.across)) << f.name;
    }
}

TYPED_TEST(Planes, NeitherReadNorWriteASpacing)
{
    ASSERT_EQ(this->volume.setVoxelSize(2.0, 3.0, 4.0), SUCCESS);
    for (const auto& f : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(plane.setVoxelSize(7.0, 8.0, 9.0), SUCCESS);
        ASSERT_EQ(f.get(0, this->volume, &plane), SUCCESS);
        EXPECT_TRUE(plane.getVoxelSize() == VoxelSize(7.0, 8.0, 9.0)) << f.name;
        ASSERT_EQ(f.set(1, plane, &this->volume), SUCCESS);
        EXPECT_TRUE(this->volume.getVoxelSize() == VoxelSize(2.0, 3.0, 4.0)) << f.name;
    }
}

TYPED_TEST(Planes, ALargerBlockIsKeptAndLaidOutAnew)
{
    for (const auto& f : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(plane.initialize(10, 10, 10, 1), SUCCESS);
        plane.setImageStride(1, 2, 3, 4);
        stamp(plane, 1000, 50);
        ImageFields<TypeParam> expected = fieldsOf(plane);
        const auto slice = naiveGetPlane(f, this->data, 1);
        expected.setInterleaved(slice.extents.width, slice.extents.height, 1, 2);
        ASSERT_EQ(f.get(1, this->volume, &plane), SUCCESS);
        EXPECT_EQ(fieldsOf(plane), expected) << f.name;
        EXPECT_TRUE(holds(plane, slice)) << f.name;
        const std::size_t used = slice.span();
        EXPECT_TRUE(isStamped(plane.getBufferPointer() + used, 1000 - used, 50 + used)) << f.name;
    }
}

TYPED_TEST(Planes, OutOfAVolumeIntoItselfReadTheNewStrides)
{
    const Volume<TypeParam> block = someVolume<TypeParam>(interleaved(4, 4, 4, 2), 5);
    const auto bytes = block.span() * sizeof(TypeParam);
    const Layout size = interleaved(3, 2, 4, 2);
    for (const auto& f : this->functions) {
        VxImage<TypeParam> image;
        ASSERT_EQ(image.initialize(4, 4, 4, 2), SUCCESS);
        ASSERT_EQ(image.setImageData(block.first(), bytes), SUCCESS);
        ASSERT_EQ(image.setImageSize(3, 2, 4, 2), SUCCESS);
        Volume<TypeParam> expected = block;
        static_cast<Layout&>(expected) = interleaved(f.planeWidth(size), f.planeHeight(size), 1, 2);
        copyPlaneWithin(f, expected, 1);
        ASSERT_EQ(f.get(1, image, &image), SUCCESS);
        const TypeParam* const first = image.getBufferPointer();
        EXPECT_TRUE(std::equal(first, first + block.span(), expected.first())) << f.name;
    }
}

TYPED_TEST(Planes, ASmallerBlockIsReplaced)
{
    for (const auto& f : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(plane.initialize(1, 1, 1, 1), SUCCESS);
        ASSERT_EQ(f.get(1, this->volume, &plane), SUCCESS);
        EXPECT_TRUE(holds(plane, naiveGetPlane(f, this->data, 1))) << f.name;
    }
}

TYPED_TEST(Planes, OfAPlaneArePlanesAgain)
{
    for (const auto& first : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(first.get(1, this->volume, &plane), SUCCESS);
        const auto expected = naiveGetPlane(first, this->data, 1);
        for (const auto& second : this->functions) {
            VxImage<TypeParam> line;
            ASSERT_EQ(second.get(0, plane, &line), SUCCESS);
            EXPECT_TRUE(holds(line, naiveGetPlane(second, expected, 0)));
            EXPECT_EQ(second.get(1, plane, &line),
                      second.across == Axis::Z ? invalid(Axis::Z) : SUCCESS);
        }
    }
}

/// The volume with one extent, or the channels, forced to 0 and no buffer.
template <class T>
void makeFlat(VxImage<T>& image, unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    ImageFields<T> fields;
    fields.setInterleaved(w, h, d, c);
    overwriteFields(image, fields);
}

TYPED_TEST(Planes, OfAVolumeWithoutExtentCopyNothingAndSucceed)
{
    constexpr unsigned int kExtents[][4] = {{0, 3, 5, 2}, {4, 0, 5, 2}, {4, 3, 0, 2}, {4, 3, 5, 0}};
    for (const auto& f : this->functions) {
        for (const auto& e : kExtents) {
            VxImage<TypeParam> flat;
            makeFlat(flat, e[0], e[1], e[2], e[3]);
            VxImage<TypeParam> plane;
            ASSERT_EQ(plane.initialize(2, 2, 2, 2), SUCCESS);
            const auto before = fieldsOf(plane);
            const unsigned int along = e[static_cast<int>(f.across)];
            EXPECT_EQ(f.get(0, flat, &plane), along == 0 ? invalid(f.across) : SUCCESS) << f.name;
            EXPECT_EQ(fieldsOf(plane), before) << f.name;
            EXPECT_TRUE(isZeroed(plane.getBufferPointer(), 16));
        }
    }
}

TYPED_TEST(Planes, OfAVolumeWithoutExtentStillThrowIntoAWrappingImage)
{
    TypeParam voxel{};
    VxImage<TypeParam> wrapping;
    ASSERT_EQ(wrapping.initializeWithPointer(&voxel, 1, 1, 1, 1), SUCCESS);
    VxImage<TypeParam> flat;
    makeFlat(flat, 4, 0, 5, 2);
    EXPECT_TRUE(throwsAndPrintsTwice([&] { getXyPlane(0, flat, &wrapping); }, kResizeWrapping));
}

TYPED_TEST(Planes, OfAnEmptyVolumeFailByTheIndex)
{
    const VxImage<TypeParam> empty;
    for (const auto& f : this->functions) {
        VxImage<TypeParam> other;
        EXPECT_EQ(f.get(0, empty, &other), invalid(f.across)) << f.name;
        EXPECT_EQ(f.set(0, empty, &other), invalid(f.across)) << f.name;
    }
}

TYPED_TEST(Planes, SettingWritesTheSliceAndNothingElse)
{
    for (const auto& f : this->functions) {
        const Layout& l = this->data;
        for (unsigned int index = 0; index < extent(l, f.across); ++index) {
            auto source = this->somePlane(f.planeWidth(l), f.planeHeight(l), 2, 70 + index);
            VxImage<TypeParam> plane;
            wrap(source, &plane);
            Volume<TypeParam> expected = this->data;
            naiveSetPlane(f, expected, source, index);
            const auto fields = fieldsOf(this->volume);
            ASSERT_EQ(f.set(index, plane, &this->volume), SUCCESS) << f.name;
            EXPECT_TRUE(sameBlock(this->data, expected)) << f.name << index;
            EXPECT_EQ(fieldsOf(this->volume), fields) << f.name;
        }
    }
}

TYPED_TEST(Planes, SettingReadsOnlyTheFirstSliceOfAThickPlane)
{
    for (const auto& f : this->functions) {
        const Layout& l = this->data;
        auto source = someVolume<TypeParam>(padded(f.planeWidth(l), f.planeHeight(l), 3, 2), 9);
        const auto before = source;
        VxImage<TypeParam> plane;
        wrap(source, &plane);
        Volume<TypeParam> expected = this->data;
        naiveSetPlane(f, expected, source, 2);
        ASSERT_EQ(f.set(2, plane, &this->volume), SUCCESS) << f.name;
        EXPECT_TRUE(sameBlock(this->data, expected)) << f.name;
        EXPECT_TRUE(sameBlock(source, before)) << f.name;
    }
}

TYPED_TEST(Planes, SettingNamesTheFirstAxisThatDoesNotFit)
{
    const Layout& l = this->data;
    for (const auto& f : this->functions) {
        for (unsigned int wrong = 1; wrong < 16; ++wrong) {
            const bool badIndex = (wrong & 8U) != 0;
            const bool badWidth = (wrong & 4U) != 0;
            const bool badHeight = (wrong & 2U) != 0;
            const bool badChannels = (wrong & 1U) != 0;
            VxImage<TypeParam> plane;
            ASSERT_EQ(plane.initialize(f.planeWidth(l) + (badWidth ? 1 : 0),
                                       f.planeHeight(l) + (badHeight ? 1 : 0), 1,
                                       2 + (badChannels ? 1 : 0)),
                      SUCCESS);
            const unsigned int index = badIndex ? extent(l, f.across) : 0;
            const ErrorType expected = badIndex    ? invalid(f.across)
                                       : badWidth  ? invalid(f.planeX)
                                       : badHeight ? invalid(f.planeY)
                                                   : ERR_INVALID_CHANNEL;
            EXPECT_EQ(f.set(index, plane, &this->volume), expected) << f.name << ' ' << wrong;
        }
    }
    EXPECT_TRUE(sameBlock(this->data, this->untouched));
}

TYPED_TEST(Planes, SettingRefusesASmallerPlaneToo)
{
    const Layout& l = this->data;
    for (const auto& f : this->functions) {
        VxImage<TypeParam> narrow;
        VxImage<TypeParam> low;
        VxImage<TypeParam> grey;
        ASSERT_EQ(narrow.initialize(f.planeWidth(l) - 1, f.planeHeight(l), 1, 2), SUCCESS);
        ASSERT_EQ(low.initialize(f.planeWidth(l), f.planeHeight(l) - 1, 1, 2), SUCCESS);
        ASSERT_EQ(grey.initialize(f.planeWidth(l), f.planeHeight(l), 1, 1), SUCCESS);
        EXPECT_EQ(f.set(0, narrow, &this->volume), invalid(f.planeX)) << f.name;
        EXPECT_EQ(f.set(0, low, &this->volume), invalid(f.planeY)) << f.name;
        EXPECT_EQ(f.set(0, grey, &this->volume), ERR_INVALID_CHANNEL) << f.name;
    }
    EXPECT_TRUE(sameBlock(this->data, this->untouched));
}

TYPED_TEST(Planes, SettingWithABadIndexWritesNothing)
{
    for (const auto& f : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(f.get(0, this->volume, &plane), SUCCESS);
        ASSERT_EQ(plane.fill(someValue<TypeParam>(1234)), SUCCESS);
        const unsigned int end = extent(this->data, f.across);
        for (const unsigned int index : {end, 2147483648U, 4294967295U})
            EXPECT_EQ(f.set(index, plane, &this->volume), invalid(f.across)) << f.name << index;
    }
    EXPECT_TRUE(sameBlock(this->data, this->untouched));
}

TYPED_TEST(Planes, SettingASharedSliceWritesPlaneYThenPlaneXThenChannel)
{
    for (const MakeLayout makeLayout : {shared, collapsed}) {
        for (const auto& f : this->functions) {
            Volume<TypeParam> to = someVolume<TypeParam>(makeLayout(4, 3, 5, 2), 8);
            VxImage<TypeParam> image;
            wrap(to, &image);
            auto source = this->somePlane(f.planeWidth(to), f.planeHeight(to), 2, 6);
            VxImage<TypeParam> plane;
            wrap(source, &plane);
            Volume<TypeParam> expected = to;
            naiveSetPlane(f, expected, source, 1);
            ASSERT_EQ(f.set(1, plane, &image), SUCCESS);
            EXPECT_TRUE(sameBlock(to, expected)) << to.name << ' ' << f.name;
        }
    }
}

TYPED_TEST(Planes, WhatWasTakenOutCanBePutBack)
{
    for (const auto& f : this->functions) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(f.get(1, this->volume, &plane), SUCCESS);
        Volume<TypeParam> emptied = this->untouched;
        naiveFill(emptied, TypeParam{});
        VxImage<TypeParam> to;
        wrap(emptied, &to);
        ASSERT_EQ(f.set(1, plane, &to), SUCCESS);
        VxImage<TypeParam> again;
        ASSERT_EQ(f.get(1, to, &again), SUCCESS);
        EXPECT_TRUE(holds(again, naiveGetPlane(f, this->untouched, 1))) << f.name;
    }
}

}  // namespace
}  // namespace volux::test
