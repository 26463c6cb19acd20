// The 2 x 2 x 2 and 4 x 4 x 4 voxels that Linear and Cubic read, in layouts of every kind and at
// every overlap with the volume.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "support/BitExact.h"
#include "support/ElementTypes.h"
#include "support/Random.h"
#include "support/RandomScenes.h"
#include "support/SparseBlock.h"
#include "support/WrappedVolume.h"
#include "volux/core/InterpolationType.h"

namespace volux::test {
namespace {

using core::Constant;
using core::Cubic;
using core::Linear;
using core::Replication;
using oracle::Position;

struct RowLayout {
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;
    std::int64_t strideC;
    const char* name;
};

// For 9 x 7 x 6 voxels with two channels.
constexpr RowLayout kLayouts[] = {
    {1, 9, 63, 378, "planar: rows side by side"},
    {2, 18, 126, 1, "interleaved"},
    {1, 11, 80, 500, "padded rows"},
    {1, 4, 13, 90, "rows that overlap"},
    {0, 1, 9, 60, "one voxel a row"},
    {1, 0, 0, 9, "one row for all"},
    {3, 1, 40, 300, "y fastest but for the gaps"},
    {42, 6, 1, 400, "z fastest"},
};

template <class T>
oracle::Volume<T> volumeOf(const RowLayout& layout)
{
    oracle::Volume<T> volume;
    volume.extents = {9, 7, 6};
    volume.channels = 2;
    volume.strideX = layout.strideX;
    volume.strideY = layout.strideY;
    volume.strideZ = layout.strideZ;
    volume.strideC = layout.strideC;
    volume.block.resize(static_cast<std::size_t>(layout.strideX * 8 + layout.strideY * 6 +
                                                 layout.strideZ * 5 + layout.strideC + 1));
    Random random(20261121);
    for (T& element : volume.block)
        element = randomElement<T>(random, false);
    return volume;
}

template <class Kernel, class T, class B>
double sampled(const core::VxImage<T>& image, const Position& p, unsigned int c, B border,
               T value = T{5})
{
    return Kernel().template operator()<T, B>(image, p.x, p.y, p.z, c, border, value);
}

template <class T>
class Neighbourhood : public ::testing::Test {
protected:
    // From a neighbourhood wholly below the volume to one wholly beyond it, along each axis.
    template <class Compare>
    static void atEveryOverlap(const RowLayout& layout, Compare compare)
    {
        const WrappedVolume<T> scene(volumeOf<T>(layout));
        const oracle::Extents& e = scene.volume.extents;
        for (std::int64_t z = -4; z < e.depth + 4; ++z)
            for (std::int64_t y = -4; y < e.height + 4; ++y)
                for (std::int64_t x = -4; x < e.width + 4; ++x) {
                    const Position p{static_cast<double>(x) + 0.3, static_cast<double>(y) + 0.6,
                                     static_cast<double>(z) + 0.1};
                    ASSERT_NO_FATAL_FAILURE(compare(scene, p))
                        << layout.name << " at " << p.x << ", " << p.y << ", " << p.z;
                }
    }

    template <class Kernel, class OracleKernel>
    static void compareWithOracle(OracleKernel oracleKernel)
    {
        const T value = someValue<T>(12345);
        for (const RowLayout& layout : kLayouts)
            atEveryOverlap(layout, [&](const WrappedVolume<T>& scene, const Position& p) {
                const oracle::Reader<T, oracle::ConstantOutside<T>> constant{
                    scene.volume, 1, {value}};
                const oracle::Reader<T, oracle::ReplicatedOutside<T>> edge{scene.volume, 1, {}};
                Constant constantBorder;
                Replication replication;
                core::Border* const atRunTime = &constantBorder;
                ASSERT_TRUE(bitEqual(sampled<Kernel>(scene.image, p, 1, constantBorder, value),
                                     oracleKernel(constant, p)));
                ASSERT_TRUE(bitEqual(sampled<Kernel>(scene.image, p, 1, atRunTime, value),
                                     oracleKernel(constant, p)));
                ASSERT_TRUE(bitEqual(sampled<Kernel>(scene.image, p, 1, replication, value),
                                     oracleKernel(edge, p)));
            });
    }
};
TYPED_TEST_SUITE(Neighbourhood, ElementTypes, ElementTypeNames);

TYPED_TEST(Neighbourhood, LinearReadsRowsOfEveryLayoutWholeAndInPart)
{
    this->template compareWithOracle<Linear>(
        [](const auto& read, const Position& p) { return oracle::linear(read, p); });
}

TYPED_TEST(Neighbourhood, CubicReadsRowsOfEveryLayoutWholeAndInPart)
{
    this->template compareWithOracle<Cubic>(
        [](const auto& read, const Position& p) { return oracle::cubic(read, p); });
}

constexpr unsigned int kLargest = std::numeric_limits<unsigned int>::max();

class FarNeighbours : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!block.exists())
            GTEST_SKIP() << "no 4 GiB of address space";
        block.bytes()[0] = 40;
        block.bytes()[kLargest] = 80;
    }

    // At half a voxel along an axis of two voxels, and at the second one.
    void expectBoth(const Position& half, const Position& second, unsigned int c)
    {
        EXPECT_EQ(60.0, sampled<Linear>(image, half, c, Replication()));
        EXPECT_EQ(80.0, sampled<Linear>(image, second, c, Constant()));
        EXPECT_EQ(60.0, sampled<Cubic>(image, half, c, Replication()));
        EXPECT_EQ(80.0, sampled<Cubic>(image, second, c, Constant()));
    }

    const SparseBlock block;
    core::VxImage<unsigned char> image;
};

TEST_F(FarNeighbours, AreAddressedBy64BitsAlongEveryAxis)
{
    ASSERT_EQ(core::SUCCESS, image.initializeWithPointer(block.bytes(), 2, 1, 1, 1));
    image.setImageStride(0, 0, 0, kLargest);
    expectBoth({0.5, 0, 0}, {1, 0, 0}, 0);
    image.terminate();
    ASSERT_EQ(core::SUCCESS, image.initializeWithPointer(block.bytes(), 1, 2, 1, 1));
    image.setImageStride(kLargest, 0, 0, 0);
    expectBoth({0, 0.5, 0}, {0, 1, 0}, 0);
    image.terminate();
    ASSERT_EQ(core::SUCCESS, image.initializeWithPointer(block.bytes(), 1, 1, 2, 1));
    image.setImageStride(0, kLargest, 0, 0);
    expectBoth({0, 0, 0.5}, {0, 0, 1}, 0);
}

TEST_F(FarNeighbours, AreAddressedBy64BitsInEveryChannel)
{
    ASSERT_EQ(core::SUCCESS, image.initializeWithPointer(block.bytes(), 1, 1, 1, 2));
    image.setImageStride(0, 0, kLargest, 0);
    EXPECT_EQ(80.0, sampled<Linear>(image, {0, 0, 0}, 1, Replication()));
    EXPECT_EQ(80.0, sampled<Cubic>(image, {0, 0, 0}, 1, Replication()));
}

TEST(FarChannels, AreReadWholeBeyond16Bits)
{
    constexpr unsigned int kChannels = 40001;
    core::VxImage<float> image;
    ASSERT_EQ(core::SUCCESS, image.initialize(1, 1, 1, kChannels));
    image(0, 0, 0, kChannels - 1) = 3.0F;
    EXPECT_EQ(3.0, sampled<Linear>(image, {0, 0, 0}, kChannels - 1, Replication()));
    EXPECT_EQ(3.0, sampled<Cubic>(image, {0, 0, 0}, kChannels - 1, Replication()));
    EXPECT_EQ(3.0, sampled<core::NearestNeighbor>(image, {0, 0, 0}, kChannels - 1, Replication()));
}

// No address is computed for what is not read: the sanitizers would tell.
TEST(OutsideNeighbours, HaveNoAddressThatCouldOverflow)
{
    core::VxImage<float> image;
    ASSERT_EQ(core::SUCCESS, image.initialize(4, 4, 4, 1));
    image.setImageStride(kLargest, 16, kLargest, 1);
    EXPECT_EQ(5.0, sampled<Linear>(image, {0.5, 2.5, -9}, 0x7FFFFFFF, Constant()));
    EXPECT_EQ(5.0, sampled<Cubic>(image, {0.5, 2.5, -9}, 0x7FFFFFFF, Constant()));
}

}  // namespace
}  // namespace volux::test
