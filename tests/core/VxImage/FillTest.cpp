// Setting every voxel, or every voxel of one channel.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <limits>
#include <thread>

#include "support/BitExact.h"
#include "support/ContainerOracle.h"
#include "support/ImageFields.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

template <class T>
class Fill : public ::testing::Test {
protected:
    const T value = someValue<T>(77);
};
TYPED_TEST_SUITE(Fill, ElementTypes, ElementTypeNames);

TYPED_TEST(Fill, SetsEveryValueAndNothingElseInEveryLayout)
{
    for (const MakeLayout makeLayout : kLayouts) {
        Volume<TypeParam> volume = someVolume<TypeParam>(makeLayout(4, 3, 2, 3), 1);
        Volume<TypeParam> expected = volume;
        naiveFill(expected, this->value);
        VxImage<TypeParam> image;
        wrap(volume, &image);
        EXPECT_EQ(image.fill(this->value), SUCCESS);
        EXPECT_TRUE(sameBlock(volume, expected)) << volume.name;
    }
}

TYPED_TEST(Fill, OfAChannelSetsThatChannelAndNothingElseInEveryLayout)
{
    for (const MakeLayout makeLayout : kLayouts) {
        for (unsigned int channel = 0; channel < 3; ++channel) {
            Volume<TypeParam> volume = someVolume<TypeParam>(makeLayout(4, 3, 2, 3), 1);
            Volume<TypeParam> expected = volume;
            naiveFillChannel(expected, channel, this->value);
            VxImage<TypeParam> image;
            wrap(volume, &image);
            EXPECT_EQ(image.fill(channel, this->value), SUCCESS);
            EXPECT_TRUE(sameBlock(volume, expected)) << volume.name << ' ' << channel;
        }
    }
}

TYPED_TEST(Fill, OfAChannelLeavesTheOthersInAnOwningImage)
{
    VxImage<TypeParam> image;
    ASSERT_EQ(image.initialize(2, 2, 2, 3), SUCCESS);
    ASSERT_EQ(image.fill(1, this->value), SUCCESS);
    for (int i = 0; i < 24; ++i)
        EXPECT_TRUE(bitEqual(image.getBufferPointer()[i], i % 3 == 1 ? this->value : TypeParam{}));
}

TYPED_TEST(Fill, OfAMissingChannelChangesNothing)
{
    Volume<TypeParam> volume = someVolume<TypeParam>(padded(4, 3, 2, 3), 1);
    const Volume<TypeParam> before = volume;
    VxImage<TypeParam> image;
    wrap(volume, &image);
    for (const unsigned int channel : {3U, 4U, 2147483648U, 4294967295U})
        EXPECT_EQ(image.fill(channel, this->value), ERR_INVALID_CHANNEL) << channel;
    EXPECT_TRUE(sameBlock(volume, before));
}

TYPED_TEST(Fill, OfAnEmptyImageSucceedsAndTouchesNothing)
{
    VxImage<TypeParam> image;
    EXPECT_EQ(image.fill(this->value), SUCCESS);
    EXPECT_EQ(fieldsOf(image), ImageFields<TypeParam>{});
}

TYPED_TEST(Fill, OfAChannelOfAnEmptyImageFails)
{
    VxImage<TypeParam> image;
    EXPECT_EQ(image.fill(0, this->value), ERR_INVALID_CHANNEL);
}

TYPED_TEST(Fill, WithAZeroExtentNeedsNoBuffer)
{
    constexpr unsigned int kExtents[][4] = {{0, 3, 2, 2}, {4, 0, 2, 2}, {4, 3, 0, 2}, {4, 3, 2, 0}};
    for (const auto& e : kExtents) {
        ImageFields<TypeParam> fields;
        fields.setInterleaved(e[0], e[1], e[2], e[3]);
        VxImage<TypeParam> image;
        overwriteFields(image, fields);
        EXPECT_EQ(image.fill(this->value), SUCCESS);
        EXPECT_EQ(image.fill(0, this->value), e[3] == 0 ? ERR_INVALID_CHANNEL : SUCCESS);
        EXPECT_EQ(fieldsOf(image), fields);
    }
}

TYPED_TEST(Fill, WithAZeroExtentWritesNothing)
{
    constexpr unsigned int kExtents[][4] = {{0, 3, 2, 2}, {4, 0, 2, 2}, {4, 3, 0, 2}, {4, 3, 2, 0}};
    for (const auto& e : kExtents) {
        Volume<TypeParam> volume = someVolume<TypeParam>(interleaved(4, 3, 2, 2), 1);
        const Volume<TypeParam> before = volume;
        VxImage<TypeParam> image;
        wrap(volume, &image);
        ImageFields<TypeParam> fields = fieldsOf(image);
        fields.setInterleaved(e[0], e[1], e[2], e[3]);
        overwriteFields(image, fields);
        EXPECT_EQ(image.fill(this->value), SUCCESS);
        EXPECT_TRUE(sameBlock(volume, before));
    }
}

TEST(FillOfFloats, StoresNaNAndNegativeZeroAsGiven)
{
    VxImage<float> image;
    ASSERT_EQ(image.initialize(2, 1, 1, 1), SUCCESS);
    for (const float value : {-0.0F, std::numeric_limits<float>::quiet_NaN()}) {
        ASSERT_EQ(image.fill(value), SUCCESS);
        EXPECT_TRUE(bitEqual(image(1, 0, 0, 0), value));
        ASSERT_EQ(image.fill(0, -value), SUCCESS);
        EXPECT_TRUE(bitEqual(image(0, 0, 0, 0), -value));
    }
}

// 2^63 visits of one voxel do not end: a second process makes them.
TEST(FillWithoutEnd, OfMoreVoxelsThanASigned64BitNumberCountsHasBegun)
{
    void* const shared = mmap(nullptr, sizeof(unsigned char), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto* const voxel = static_cast<volatile unsigned char*>(shared);
    const pid_t filling = fork();
    ASSERT_NE(filling, -1);
    if (filling == 0) {
        VxImage<unsigned char> image;
        image.initializeWithPointer(static_cast<unsigned char*>(shared), INT_MAX, INT_MAX, 2, 2);
        image.setImageStride(0, 0, 0, 0);
        image.fill(7);
        _exit(0);
    }
    while (*voxel != 7 && waitpid(filling, nullptr, WNOHANG) == 0)
        std::this_thread::yield();
    EXPECT_EQ(*voxel, 7);
    kill(filling, SIGKILL);
    waitpid(filling, nullptr, 0);
    munmap(shared, sizeof(unsigned char));
}

}  // namespace
}  // namespace volux::test
