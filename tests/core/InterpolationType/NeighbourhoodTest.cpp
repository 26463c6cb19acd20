// The 2 x 2 x 2 and 4 x 4 x 4 voxels that Linear and Cubic read, in layouts of every kind and at
// every overlap with the volume.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "support/BitExact.h"
#include "support/Random.h"
#include "support/RandomScenes.h"
#include "support/SamplingOracle.h"
#include "support/SparseBlock.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"
#include "volux/core/InterpolationType.h"

namespace volux::test {
namespace {

using oracle::Position;

// For 9 x 7 x 6 voxels with two channels.
constexpr Layout kLayouts[] = {
    {"planar: rows side by side", {9, 7, 6}, 2, 1, 9, 63, 378},
    {"interleaved", {9, 7, 6}, 2, 2, 18, 126, 1},
    {"padded rows", {9, 7, 6}, 2, 1, 11, 80, 500},
    {"rows that overlap", {9, 7, 6}, 2, 1, 4, 13, 90},
    {"one voxel a row", {9, 7, 6}, 2, 0, 1, 9, 60},
    {"one row for all", {9, 7, 6}, 2, 1, 0, 0, 9},
    {"y fastest but for the gaps", {9, 7, 6}, 2, 3, 1, 40, 300},
    {"z fastest", {9, 7, 6}, 2, 42, 6, 1, 400},
};

template <class T>
Volume<T> volumeOf(const Layout& layout)
{
    Volume<T> volume{layout, std::vector<T>(layout.addressed())};
    Random random(20261121);
    fillAtRandom(volume, random, false);
    return volume;
}

template <class Kernel, class T, class B>
double sampled(const VxImage<T>& image, const Position& p, unsigned int c, B border, T value = T{5})
{
    return Kernel().template operator()<T, B>(image, p.x, p.y, p.z, c, border, value);
}

template <class T>
class Neighbourhood : public ::testing::Test {
protected:
    // From a neighbourhood wholly below the volume to one wholly beyond it, along each axis.
    template <class Compare>
    static void atEveryOverlap(const Layout& layout, Compare compare)
    {
        const WrappedVolume<T> scene(volumeOf<T>(layout));
        for (int z = -4; z < 6 + 4; ++z)
            for (int y = -4; y < 7 + 4; ++y)
                for (int x = -4; x < 9 + 4; ++x) {
                    const Position p{x + 0.3, y + 0.6, z + 0.1};
                    ASSERT_NO_FATAL_FAILURE(compare(scene, p))
                        << layout << " at " << p.x << ", " << p.y << ", " << p.z;
                }
    }

    template <class Kernel, class OracleKernel>
    static void compareWithOracle(OracleKernel oracleKernel)
    {
        const T value = someValue<T>(12345);
        for (const Layout& layout : kLayouts)
            atEveryOverlap(layout, [&](const WrappedVolume<T>& scene, const Position& p) {
                const oracle::Reader<T, oracle::ConstantOutside<T>> constant{
                    scene.volume, 1, {value}};
                const oracle::Reader<T, oracle::ReplicatedOutside<T>> edge{scene.volume, 1, {}};
                Constant constantBorder;
                Replication replication;
                Border* const atRunTime = &constantBorder;
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
        EXPECT_EQ(sampled<Linear>(image, half, c, Replication()), 60.0);
        EXPECT_EQ(sampled<Linear>(image, second, c, Constant()), 80.0);
        EXPECT_EQ(sampled<Cubic>(image, half, c, Replication()), 60.0);
        EXPECT_EQ(sampled<Cubic>(image, second, c, Constant()), 80.0);
    }

    const SparseBlock block;
    VxImage<unsigned char> image;
};

TEST_F(FarNeighbours, AreAddressedBy64BitsAlongEveryAxis)
{
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 2, 1, 1, 1), SUCCESS);
    image.setImageStride(0, 0, 0, kLargest);
    expectBoth({0.5, 0, 0}, {1, 0, 0}, 0);
    image.terminate();
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 1, 2, 1, 1), SUCCESS);
    image.setImageStride(kLargest, 0, 0, 0);
    expectBoth({0, 0.5, 0}, {0, 1, 0}, 0);
    image.terminate();
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 1, 1, 2, 1), SUCCESS);
    image.setImageStride(0, kLargest, 0, 0);
    expectBoth({0, 0, 0.5}, {0, 0, 1}, 0);
}

TEST_F(FarNeighbours, AreAddressedBy64BitsInEveryChannel)
{
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), 1, 1, 1, 2), SUCCESS);
    image.setImageStride(0, 0, kLargest, 0);
    EXPECT_EQ(sampled<Linear>(image, {0, 0, 0}, 1, Replication()), 80.0);
    EXPECT_EQ(sampled<Cubic>(image, {0, 0, 0}, 1, Replication()), 80.0);
}

TEST(FarChannels, AreReadWholeBeyond16Bits)
{
    constexpr unsigned int kChannels = 40001;
    VxImage<float> image;
    ASSERT_EQ(image.initialize(1, 1, 1, kChannels), SUCCESS);
    image(0, 0, 0, kChannels - 1) = 3.0F;
    EXPECT_EQ(sampled<Linear>(image, {0, 0, 0}, kChannels - 1, Replication()), 3.0);
    EXPECT_EQ(sampled<Cubic>(image, {0, 0, 0}, kChannels - 1, Replication()), 3.0);
    EXPECT_EQ(sampled<NearestNeighbor>(image, {0, 0, 0}, kChannels - 1, Replication()), 3.0);
}

// No address is computed for what is not read: the sanitizers would tell.
TEST(OutsideNeighbours, HaveNoAddressThatCouldOverflow)
{
    VxImage<float> image;
    ASSERT_EQ(image.initialize(4, 4, 4, 1), SUCCESS);
    image.setImageStride(kLargest, 16, kLargest, 1);
    EXPECT_EQ(sampled<Linear>(image, {0.5, 2.5, -9}, 0x7FFFFFFF, Constant()), 5.0);
    EXPECT_EQ(sampled<Cubic>(image, {0.5, 2.5, -9}, 0x7FFFFFFF, Constant()), 5.0);
}

}  // namespace
}  // namespace volux::test
