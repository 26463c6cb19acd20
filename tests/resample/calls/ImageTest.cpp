#include "volux/resample/Image.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "support/Names.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::Image;
using resample::View;

static_assert(std::is_nothrow_move_constructible_v<Image<short>>);
static_assert(std::is_nothrow_move_assignable_v<Image<short>>);
static_assert(!std::is_copy_constructible_v<Image<short>>);
static_assert(!std::is_copy_assignable_v<Image<short>>);
static_assert(
    std::is_same_v<decltype(*std::declval<const Image<short>&>()), const VxImage<short>&>);
static_assert(std::is_same_v<decltype(std::declval<const Image<short>&>().operator->()),
                             const VxImage<short>*>);
static_assert(
    std::is_same_v<decltype(std::declval<const Image<short>&>().view()), View<const short>>);

// A single voxel.
Image<short> imageOf(short value)
{
    Image<short> image;
    EXPECT_EQ(image->initialize(1, 1, 1, 1), SUCCESS);
    image->fill(value);
    return image;
}

TEST(Image, StaysWhereItIsInAVectorThatGrows)
{
    std::vector<Image<short>> images;
    images.push_back(imageOf(0));
    const short* const voxels = images.front()->getBufferPointer();
    for (short n = 1; n < 100; ++n)
        images.push_back(imageOf(n));
    EXPECT_EQ(images.front()->getBufferPointer(), voxels);
    for (short n = 0; n < 100; ++n)
        EXPECT_EQ((*images[static_cast<std::size_t>(n)])(0, 0, 0, 0), n);
}

TEST(Image, TellsItsSizeAndSpacingThroughAConstOwner)
{
    Image<float> image;
    image->initialize(2, 3, 4, 5);
    image->setVoxelSize(0.5, 2, 3);
    const Image<float>& owner = image;
    EXPECT_EQ(owner.size(), ImageSize(2, 3, 4, 5));
    EXPECT_EQ(owner.spacing(), VoxelSize(0.5, 2, 3));
    EXPECT_EQ(owner.view().data, owner->getBufferPointer());
    EXPECT_EQ(owner.view().strideZ, 30);
    image.view().data[0] = 7;
    EXPECT_EQ((*owner)(0, 0, 0, 0), 7);
}

TEST(Image, IsReadAndWrittenByEveryCall)
{
    const Image<short> source = imageOf(7);
    Image<short> result;
    ASSERT_EQ(resample::resize(source, 2, 2, 2, Align::EDGES, &result), SUCCESS);
    EXPECT_EQ(result.size(), ImageSize(2, 2, 2, 1));
    EXPECT_EQ(result.spacing(), VoxelSize(0.5, 0.5, 0.5));
    EXPECT_EQ((*result)(1, 1, 1, 0), 7);
    Image<double> further;
    ASSERT_EQ(resample::resize(result, {0.25, 1, 1}, Align::EDGES, &further), SUCCESS);
    EXPECT_EQ(further.size(), ImageSize(4, 1, 1, 1));
    Image<short>* const nowhere = nullptr;
    EXPECT_EQ(resample::resize(source, 2, 2, 2, Align::EDGES, nowhere), ERR_NULL_POINTER);
    EXPECT_EQ(resample::resize(Image<short>(), 2, 2, 2, Align::EDGES, &result), ERR_NULL_POINTER);
}

TEST(Image, IsRefusedByCallsOnceItHasBeenMovedFrom)
{
    Image<short> source = imageOf(7);
    Image<short> result = std::move(source);
    EXPECT_EQ(source.view().data, nullptr);
    EXPECT_EQ(resample::resize(source, 1, 1, 1, Align::EDGES, &result), ERR_NULL_POINTER);
    EXPECT_EQ(resample::resize(result, 1, 1, 1, Align::EDGES, &source), ERR_NULL_POINTER);
    source = Image<short>();
    EXPECT_EQ(resample::resize(result, 1, 1, 1, Align::EDGES, &source), SUCCESS);
    EXPECT_EQ((*source)(0, 0, 0, 0), 7);
}

}  // namespace
}  // namespace volux::test
