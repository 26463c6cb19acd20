#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "support/BitExact.h"
#include "support/KernelCalls.h"
#include "support/OwnPolicies.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

using oracle::Position;

constexpr KernelCall<Linear> linear{};

// The eight neighbours of a base corner, in the order in which they are read.
std::vector<Index> corners(const Index& base)
{
    std::vector<Index> all;
    for (int n = 0; n < 8; ++n)
        all.push_back({base.x + (n & 1), base.y + ((n >> 1) & 1), base.z + (n >> 2)});
    return all;
}

struct BaseCase {
    double position;
    int lower;
    int upper;
    const char* rule;
};

const BaseCase kBases[] = {
    {0.0, 0, 1, "a whole number"},
    {-0.0, 0, 1, "negative zero is at least zero"},
    {0.999, 0, 1, "between two voxels"},
    {1.0, 1, 2, "a whole number"},
    {0x1p-1074, 0, 1, "the smallest positive number"},
    {-0x1p-1074, -1, 0, "the smallest negative number"},
    {-0.25, -1, 0, "just below the volume"},
    {-1.0, -2, -1, "a negative whole number is one below its floor"},
    {-1.5, -2, -1, "a negative fraction is its floor"},
    {-2.0, -3, -2, "a negative whole number is one below its floor"},
    {2147483646.5, 2147483646, INT_MAX, "the last pair that does not wrap"},
    {2147483647.0, INT_MAX, INT_MIN, "the upper neighbour wraps"},
    {2147483648.0, INT_MIN, -2147483647, "what does not fit is INT_MIN"},
    {1e300, INT_MIN, -2147483647, "far above"},
    {kInfinity, INT_MIN, -2147483647, "infinity"},
    {-2147483647.5, INT_MIN, -2147483647, "the lowest base"},
    {-2147483648.0, INT_MAX, INT_MIN, "the base wraps"},
    {-1e300, INT_MAX, INT_MIN, "far below"},
    {-kInfinity, INT_MAX, INT_MIN, "negative infinity"},
    {kNaN, INT_MAX, INT_MIN, "NaN"},
};

// Every neighbour is outside on the axes that are not looked at, so that the border sees all.
TEST(LinearKernel, ReadsTheTwoNeighboursOfEachAxisByTheTable)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    for (const BaseCase& entry : kBases) {
        RecordingBorder onX;
        RecordingBorder onY;
        RecordingBorder onZ;
        linear(scene, {entry.position, 10, 10}, &onX);
        linear(scene, {10, entry.position, 10}, &onY);
        linear(scene, {10, 10, entry.position}, &onZ);
        ASSERT_EQ(onX.calls.size(), 8U) << entry.rule;
        ASSERT_EQ(onY.calls.size(), 8U) << entry.rule;
        ASSERT_EQ(onZ.calls.size(), 8U) << entry.rule;
        EXPECT_EQ(onX.calls[0].index, (Index{entry.lower, 10, 10})) << entry.rule;
        EXPECT_EQ(onX.calls[1].index, (Index{entry.upper, 10, 10})) << entry.rule;
        EXPECT_EQ(onY.calls[0].index, (Index{10, entry.lower, 10})) << entry.rule;
        EXPECT_EQ(onY.calls[2].index, (Index{10, entry.upper, 10})) << entry.rule;
        EXPECT_EQ(onZ.calls[0].index, (Index{10, 10, entry.lower})) << entry.rule;
        EXPECT_EQ(onZ.calls[4].index, (Index{10, 10, entry.upper})) << entry.rule;
    }
}

TEST(LinearKernel, ReadsTheEightNeighboursWithXFastest)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    RecordingBorder border;
    linear(scene, {20.5, 30.5, 40.5}, &border);
    EXPECT_EQ(border.indices(), corners({20, 30, 40}));
    EXPECT_EQ(border.gets, 8);
}

TEST(LinearKernel, AsksTheBorderForTheOutsideNeighboursAlone)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    RecordingBorder border;
    linear(scene, {1.5, 0.5, 0.5}, &border);
    EXPECT_EQ(border.indices(), (std::vector<Index>{{2, 0, 0}, {2, 1, 0}, {2, 0, 1}, {2, 1, 1}}));
    EXPECT_EQ(border.gets, 4);
}

TEST(LinearKernel, ReadsNeighboursOfWeightZero)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 1, 1}));
    RecordingBorder border;
    EXPECT_EQ(linear(scene, {0.0, 0.0, 0.0}, &border), 1.0);
    EXPECT_EQ(
        border.indices(),
        (std::vector<Index>{{0, 1, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}}));
}

template <class T>
class LinearTypes : public ::testing::Test {
};
TYPED_TEST_SUITE(LinearTypes, ElementTypes, ElementTypeNames);

TYPED_TEST(LinearTypes, GiveTheVoxelAtAWholePosition)
{
    const WrappedVolume<TypeParam> scene(variedVolume<TypeParam>({3, 3, 3}));
    for (int n = 0; n < 27; ++n) {
        const Position p{n % 3 + 0.0, n / 3 % 3 + 0.0, n / 9 + 0.0};
        EXPECT_TRUE(bitEqual(linear(scene, p, Constant()),
                             static_cast<double>(scene.volume.block[static_cast<std::size_t>(n)])));
    }
}

TYPED_TEST(LinearTypes, ConvertTheLargestElementExactly)
{
    const TypeParam largest = std::numeric_limits<TypeParam>::max();
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({largest, 0}));
    EXPECT_TRUE(bitEqual(linear(scene, {0.0, 0, 0}, Constant()), static_cast<double>(largest)));
    EXPECT_TRUE(bitEqual(linear(scene, {0.5, 0, 0}, Constant()), static_cast<double>(largest) / 2));
}

TYPED_TEST(LinearTypes, WeighByTheFractionOfEachAxis)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 2}));
    EXPECT_EQ(linear(scene, {0.25, 0, 0}, Constant()), 1.25);
    EXPECT_EQ(linear(scene, {0, 0.25, 0}, Constant()), 1.5);
    EXPECT_EQ(linear(scene, {0, 0, 0.25}, Constant()), 2.0);
    EXPECT_EQ(linear(scene, {0.5, 0.5, 0.5}, Constant()), 4.5);
}

TYPED_TEST(LinearTypes, HandTheBorderTheArgumentsOfTheCall)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 4, 5}, 2));
    RecordingBorder border;
    border.answer = [](const Index&) { return 6.0; };
    EXPECT_EQ(linear(scene, {-9.5, 0.5, 0.5}, &border, 9, 1), 6.0);
    ASSERT_EQ(border.calls.size(), 8U);
    expectPassedOn(border, scene.image, 1, 9.0, {3, 4, 5});
}

TYPED_TEST(LinearTypes, NeverTestTheChannel)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 1, 1}, 2));
    const TypeParam nextVoxel = scene.volume.at(2, 0, 0, 0);
    const TypeParam previousVoxel = scene.volume.at(0, 0, 0, 1);
    EXPECT_EQ(linear(scene, {0.5, 0, 0}, Constant(), TypeParam{0}, 2), (3.0 + nextVoxel) / 2);
    EXPECT_EQ(linear(scene, {1.5, 0, 0}, Constant(), TypeParam{0}, 4294967295U),
              (previousVoxel + 4.0) / 2);
}

TEST(LinearKernel, AtTheLastVoxelTheOutsideNeighbourWeighsNothing)
{
    WrappedVolume<int> scene(rowVolume<int>({10, 20, 30}));
    EXPECT_EQ(linear(scene, {2, 0, 0}, Constant(), 1000), 30.0);
    EXPECT_EQ(linear(scene, {2, 0, 0}, Replication()), 30.0);
}

TEST(LinearKernel, ReplicationInASingleColumnLeavesXWithoutInfluence)
{
    WrappedVolume<int> scene(rowVolume<int>({10}));
    for (const double x : {0.0, 0.25, 0.5, 1.0, 7.75, -0.5, -3.0})
        EXPECT_EQ(linear(scene, {x, 0, 0}, Replication()), 10.0) << x;
}

TEST(LinearKernel, AtANegativeWholeNumberTheUpperNeighbourWeighsAll)
{
    WrappedVolume<int> scene(rowVolume<int>({10, 20}));
    RecordingBorder border;
    border.answer = [](const Index& at) { return at.x == -1 && at.y == 0 && at.z == 0 ? 5 : 1000; };
    EXPECT_EQ(linear(scene, {-1.0, 0, 0}, &border), 5.0);
    EXPECT_EQ(border.indices(), corners({-2, 0, 0}));
}

TEST(LinearKernel, ReplicationBelowTheVolumeGivesTheFirstVoxel)
{
    WrappedVolume<int> scene(rowVolume<int>({10, 20}));
    EXPECT_EQ(linear(scene, {-0.25, 0, 0}, Replication()), 10.0);
}

TEST(LinearKernel, ConstantIsBlendedWithTheEdgeVoxel)
{
    WrappedVolume<int> scene(rowVolume<int>({10, 20}));
    EXPECT_EQ(linear(scene, {-0.5, 0, 0}, Constant(), 0), 5.0);
    EXPECT_EQ(linear(scene, {-0.25, 0, 0}, Constant(), 50), 20.0);
    EXPECT_EQ(linear(scene, {1.5, 0, 0}, Constant(), 40), 30.0);
}

TEST(LinearKernel, GroupsTheWeightOfXAndYBeforeThatOfZ)
{
    // A single voxel of 1.0 at the upper corner gives its weight alone.
    auto volume = blankVolume<double>({2, 2, 2});
    volume.block.back() = 1.0;
    WrappedVolume<double> scene(volume);
    const double fx = 0.1;
    const double fy = 0.7;
    const double fz = 0.3;
    const double xy = fx * fy;
    const double yz = fy * fz;
    ASSERT_NE(xy * fz, fx * yz) << "the fractions do not tell the groupings apart";
    EXPECT_TRUE(bitEqual(linear(scene, {fx, fy, fz}, Constant()), xy * fz));
}

TEST(LinearKernel, AddsTheProductsOneByOneInTheOrderOfTheNeighbours)
{
    // Halfway on each axis the weights are 1/8. Large terms swallow the small ones that are added
    // before they cancel: only the last small one of each half survives, and the first half's is
    // lost.
    auto volume = blankVolume<double>({2, 2, 2});
    volume.block = {0x1p60, 1.0, -0x1p60, 1.0, 0x1p60, 1.0, -0x1p60, 1.0};
    WrappedVolume<double> scene(volume);
    EXPECT_TRUE(bitEqual(linear(scene, {0.5, 0.5, 0.5}, Constant()), 0.125));
}

TEST(LinearKernel, KeepsTheSignOfNegativeZero)
{
    auto volume = blankVolume<float>({2, 2, 2});
    std::fill(volume.block.begin(), volume.block.end(), -0.0F);
    WrappedVolume<float> scene(volume);
    EXPECT_TRUE(bitEqual(linear(scene, {0, 0, 0}, Replication()), -0.0));
    EXPECT_TRUE(bitEqual(linear(scene, {0.5, 0.25, 0.75}, Constant()), -0.0));
    EXPECT_TRUE(bitEqual(linear(scene, {1, 1, 1}, Constant(), 0.0F), 0.0))
        << "a zero outside joins";
    EXPECT_TRUE(bitEqual(linear(scene, {-3, -3, -3}, Constant(), -0.0F), -0.0));
}

TEST(LinearKernel, ANeighbourThatIsNotFiniteSpoilsTheResultEvenAtWeightZero)
{
    const float infinity = std::numeric_limits<float>::infinity();
    WrappedVolume<float> scene(rowVolume<float>({1.0F, infinity, 3.0F}));
    EXPECT_TRUE(std::isnan(linear(scene, {0, 0, 0}, Replication()))) << "an inside neighbour";
    EXPECT_TRUE(std::isnan(linear(scene, {2, 0, 0}, Constant(), infinity))) << "an outside one";
    EXPECT_EQ(linear(scene, {2, 0, 0}, Constant(), 5.0F), 3.0);
    EXPECT_EQ(linear(scene, {0.5, 0.5, 0.5}, Replication()), kInfinity);
}

TEST(LinearKernel, ANaNCoordinateGivesNaN)
{
    WrappedVolume<int> scene(countingVolume<int>({2, 2, 2}));
    EXPECT_TRUE(std::isnan(linear(scene, {kNaN, 0, 0}, Replication())));
    EXPECT_TRUE(std::isnan(linear(scene, {0, kNaN, 0}, Constant(), 5)));
    EXPECT_TRUE(std::isnan(linear(scene, {0, 0, kNaN}, Constant(), 5)));
}

TEST(LinearKernel, AnInfiniteCoordinateGivesNaN)
{
    WrappedVolume<int> scene(countingVolume<int>({2, 2, 2}));
    EXPECT_TRUE(std::isnan(linear(scene, {kInfinity, 0, 0}, Replication())));
    EXPECT_TRUE(std::isnan(linear(scene, {-kInfinity, 0, 0}, Constant(), 5)));
}

TEST(LinearKernel, NormalisesNothingWhereTheFractionIsMeaningless)
{
    // The weights of x are -1e300 and 1e300; their products with one value cancel.
    WrappedVolume<int> scene(rowVolume<int>({10, 20}));
    EXPECT_EQ(linear(scene, {1e300, 0, 0}, Constant(), 5), 0.0);
    EXPECT_EQ(linear(scene, {1e300, 0, 0}, Replication()), 0.0) << "both clamp to the first voxel";
    // Below, the lower neighbour clamps to the last voxel and the wrapped upper one to the first:
    // 20 * 1e300 - 10 * 1e300.
    EXPECT_EQ(linear(scene, {-1e300, 0, 0}, Replication()), 20 * 1e300 - 10 * 1e300);
}

TEST(LinearKernel, ClampsNothing)
{
    // Position 2^31 + 1 has the base INT_MIN: the fraction is 2^32 + 1.
    WrappedVolume<int> scene(rowVolume<int>({3}));
    RecordingBorder border;
    border.answer = [](const Index& at) { return at.x == INT_MIN ? 0.0 : 1.0; };
    EXPECT_EQ(linear(scene, {2147483649.0, 0, 0}, &border), 4294967297.0);
}

TEST(LinearKernel, AnExceptionOfTheBorderPassesEvenForWeightZero)
{
    WrappedVolume<int> scene(rowVolume<int>({1, 2}));
    RecordingBorder border;
    border.answer = [](const Index& at) -> double {
        if (at.z == 1)
            throw std::out_of_range("no such voxel");
        return 0.0;
    };
    EXPECT_THROW(linear(scene, {0, 0, 0}, &border), std::out_of_range);
    EXPECT_EQ(border.calls.size(), 3U) << "the call that threw was the last";
}

}  // namespace
}  // namespace volux::test
