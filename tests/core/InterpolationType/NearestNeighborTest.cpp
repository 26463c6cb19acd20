#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

#include "support/BitExact.h"
#include "support/KernelCalls.h"
#include "support/OwnPolicies.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

using oracle::Position;

constexpr double kDenormal = 0x1p-1074;

constexpr KernelCall<NearestNeighbor> nearest{};

struct RoundingCase {
    double position;
    int index;
    const char* rule;
};

const RoundingCase kRounding[] = {
    {0.0, 0, "a voxel centre"},
    {-0.0, 0, "negative zero"},
    {kDenormal, 0, "the smallest positive number"},
    {-kDenormal, 0, "the smallest negative number"},
    {2.4999, 2, "below the half"},
    {2.5, 3, "a half rounds up"},
    {0x1.3ffffffffffffp+1, 2, "one step below 2.5"},
    {0x1.4000000000001p+1, 3, "one step above 2.5"},
    {0.5, 1, "a half rounds up"},
    {0x1.fffffffffffffp-2, 1, "one step below 0.5 the sum rounds to 1.0"},
    {0x1.ffffffffffffep-2, 0, "two steps below 0.5 it does not"},
    {-0.49, 0, "above the negative half"},
    {-0.5, 0, "the negative half gives a sum of zero"},
    {-0x1.0000000000001p-1, -1, "one step below the negative half"},
    {-0.51, -1, "below the negative half"},
    {-0.7, -1, "a negative sum steps down"},
    {-1.0, -1, "a negative sum with a fraction is its floor"},
    {-1.4, -1, "above the next half"},
    {-1.5, -2, "a negative whole sum is one below its floor"},
    {-1.6, -2, "below the half"},
    {-2.5, -3, "as at -1.5"},
    {2147483646.0, 2147483646, "the last but one index"},
    {2147483646.5, INT_MAX, "the largest index"},
    {2147483647.25, INT_MAX, "still the largest index"},
    {2147483647.5, INT_MIN, "what does not fit is INT_MIN"},
    {2147483648.0, INT_MIN, "2^31"},
    {1e10, INT_MIN, "more than 32 bits"},
    {1e300, INT_MIN, "more than 64 bits"},
    {DBL_MAX, INT_MIN, "the largest number"},
    {kInfinity, INT_MIN, "infinity"},
    {-2147483647.0, -2147483647, "truncated to -2147483646, then one less"},
    {-2147483647.5, INT_MIN, "a negative whole sum is one below its floor"},
    {-2147483648.0, INT_MIN, "truncated to -2147483647, then one less"},
    {-2147483648.5, INT_MAX, "INT_MIN less one wraps"},
    {-1e10, INT_MAX, "less than 32 bits"},
    {-DBL_MAX, INT_MAX, "the lowest number"},
    {-kInfinity, INT_MAX, "negative infinity"},
    {std::numeric_limits<double>::quiet_NaN(), INT_MAX, "NaN"},
};

// The index that a position becomes on each axis: where inside, by the voxel read; where outside,
// by what the border is asked.
void expectIndex(const RoundingCase& entry, const Position& p, const Index& expected)
{
    WrappedVolume<short> scene(countingVolume<short>({4, 4, 4}));
    RecordingBorder border;
    const short voxel = nearest(scene, p, &border);
    if (scene.volume.holds(expected.x, expected.y, expected.z)) {
        EXPECT_TRUE(border.calls.empty()) << entry.rule;
        EXPECT_EQ(voxel, scene.volume.at(expected.x, expected.y, expected.z, 0)) << entry.rule;
    } else {
        EXPECT_EQ(border.indices(), std::vector<Index>{expected}) << entry.rule;
    }
}

TEST(NearestNeighborKernel, RoundsXByTheTable)
{
    for (const RoundingCase& entry : kRounding)
        expectIndex(entry, {entry.position, 1.0, 2.0}, {entry.index, 1, 2});
}

TEST(NearestNeighborKernel, RoundsYByTheTable)
{
    for (const RoundingCase& entry : kRounding)
        expectIndex(entry, {1.0, entry.position, 2.0}, {1, entry.index, 2});
}

TEST(NearestNeighborKernel, RoundsZByTheTable)
{
    for (const RoundingCase& entry : kRounding)
        expectIndex(entry, {1.0, 2.0, entry.position}, {1, 2, entry.index});
}

TEST(NearestNeighborKernel, TheUpperHalfOfTheLastVoxelIsOutside)
{
    WrappedVolume<int> scene(rowVolume<int>({1, 2, 3}));
    EXPECT_EQ(nearest(scene, {2.49, 0, 0}, Constant(), 7), 3);
    EXPECT_EQ(nearest(scene, {2.5, 0, 0}, Constant(), 7), 7);
}

struct ReplicationCase {
    double position;
    int voxel;
    const char* rule;
};

const ReplicationCase kReplicationOfFour[] = {
    {-0.51, 0, "just below"},
    {-1.5, 0, "index -2"},
    {3.5, 3, "just above"},
    {2147483646.5, 3, "the largest index"},
    {-2147483648.0, 0, "the lowest index"},
    {2147483648.0, 0, "beyond 32 bits the index is INT_MIN"},
    {kInfinity, 0, "so it is for infinity"},
    {-2147483648.5, 3, "below 32 bits the index is INT_MAX"},
    {-1e300, 3, "so it is far below"},
    {std::numeric_limits<double>::quiet_NaN(), 3, "and for NaN"},
};

TEST(NearestNeighborKernel, ReplicationClampsTheRoundedIndexOnEachAxis)
{
    WrappedVolume<short> scene(countingVolume<short>({4, 4, 4}));
    const auto& v = scene.volume;
    for (const ReplicationCase& entry : kReplicationOfFour) {
        const double p = entry.position;
        EXPECT_EQ(nearest(scene, {p, 1, 2}, Replication()), v.at(entry.voxel, 1, 2, 0))
            << entry.rule;
        EXPECT_EQ(nearest(scene, {1, p, 2}, Replication()), v.at(1, entry.voxel, 2, 0))
            << entry.rule;
        EXPECT_EQ(nearest(scene, {1, 2, p}, Replication()), v.at(1, 2, entry.voxel, 0))
            << entry.rule;
    }
}

TEST(NearestNeighborKernel, ConstantGivesTheValueAtNegativeHalves)
{
    WrappedVolume<short> scene(countingVolume<short>({4, 1, 1}));
    EXPECT_EQ(nearest(scene, {-0.5, 0, 0}, Constant(), short{99}), 1);
    EXPECT_EQ(nearest(scene, {-1.5, 0, 0}, Constant(), short{99}), 99);
}

template <class T>
class NearestNeighborTypes : public ::testing::Test {
};
TYPED_TEST_SUITE(NearestNeighborTypes, ElementTypes, ElementTypeNames);

TYPED_TEST(NearestNeighborTypes, GiveTheElementUnchanged)
{
    using Limits = std::numeric_limits<TypeParam>;
    WrappedVolume<TypeParam> scene(
        rowVolume<TypeParam>({Limits::lowest(), Limits::max(), Limits::min()}));
    for (int x = 0; x < 3; ++x)
        EXPECT_TRUE(
            bitEqual(nearest(scene, {x + 0.25, 0, 0}, Replication()), scene.volume.at(x, 0, 0, 0)));
}

TYPED_TEST(NearestNeighborTypes, ReadTheChannelAskedForThroughTheStrides)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>(planar(3, 2, 2, 2)));
    EXPECT_EQ(nearest(scene, {2, 1, 0}, Constant(), TypeParam{0}, 1), TypeParam(12 + 3 + 2 + 1));
    EXPECT_EQ(nearest(scene, {9, 1, 0}, Replication(), TypeParam{0}, 1), TypeParam(12 + 3 + 2 + 1));
}

TYPED_TEST(NearestNeighborTypes, NeverTestTheChannel)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 1, 1}, 2));
    EXPECT_EQ(nearest(scene, {1, 0, 0}, Constant(), TypeParam{0}, 2), scene.volume.at(2, 0, 0, 0));
    EXPECT_EQ(nearest(scene, {1, 0, 0}, Constant(), TypeParam{0}, 4294967295U),
              scene.volume.at(0, 0, 0, 1));
}

TYPED_TEST(NearestNeighborTypes, AskTheBorderOncePerOutsidePosition)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 4, 5}, 2));
    RecordingBorder border;
    border.answer = [](const Index&) { return 42.0; };
    EXPECT_EQ(nearest(scene, {-7.0, 2.0, 6.0}, &border, 9, 1), TypeParam{42});
    ASSERT_EQ(border.calls.size(), 1U);
    EXPECT_EQ(border.gets, 1);
    EXPECT_EQ(border.calls[0].index, (Index{-7, 2, 6}));
    expectPassedOn(border, scene.image, 1, 9.0, {3, 4, 5});
}

TEST(NearestNeighborKernel, AsksNoBorderInside)
{
    WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    RecordingBorder border;
    EXPECT_EQ(nearest(scene, {2.0, 1.0, 0.0}, &border), 6);
    EXPECT_EQ(border.gets, 0);
    EXPECT_TRUE(border.calls.empty());
}

TEST(NearestNeighborKernel, InAnEmptyImageEveryPositionIsOutside)
{
    VxImage<short> empty;
    RecordingBorder border;
    NearestNeighbor kernel;
    EXPECT_EQ((kernel.operator()<short, Constant>(empty, 0, 0, 0, 0U, Constant(), 5)), 5);
    kernel.operator()<short, Border*>(empty, 0, 0, 0, 0U, &border, 5);
    ASSERT_EQ(border.calls.size(), 1U);
    EXPECT_EQ(border.calls[0].width, 0U);
    EXPECT_EQ(border.calls[0].height, 0U);
    EXPECT_EQ(border.calls[0].depth, 0U);
}

TEST(NearestNeighborKernel, KeepsTheSignOfZeroAndNaN)
{
    WrappedVolume<float> scene(rowVolume<float>({-0.0F, std::nanf("")}));
    EXPECT_TRUE(bitEqual(nearest(scene, {0, 0, 0}, Constant()), -0.0F));
    EXPECT_TRUE(std::isnan(nearest(scene, {1, 0, 0}, Constant())));
    EXPECT_TRUE(bitEqual(nearest(scene, {2, 0, 0}, Constant(), -0.0F), -0.0F));
}

}  // namespace
}  // namespace volux::test
