#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
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

constexpr KernelCall<Cubic> cubic{};

// The 64 neighbours of a base, in the order in which they are read.
std::vector<Index> neighbourhood(const Index& base)
{
    std::vector<Index> all;
    for (int n = 0; n < 64; ++n)
        all.push_back({base.x - 1 + n % 4, base.y - 1 + n / 4 % 4, base.z - 1 + n / 16});
    return all;
}

// A row of four voxels, one of them 1: at a position between the middle ones it reads the weight
// of that voxel, divided by the sum of the four.
double weightOf(std::size_t voxel, double x)
{
    std::vector<double> row(4, 0.0);
    row[voxel] = 1.0;
    return cubic(WrappedVolume<double>(rowVolume(row)), {x, 0, 0}, Replication());
}

TEST(CubicKernel, HalfwayTheWeightsAreTheKnownSixteenths)
{
    EXPECT_TRUE(bitEqual(weightOf(0, 1.5), -0.0625));
    EXPECT_TRUE(bitEqual(weightOf(1, 1.5), 0.5625));
    EXPECT_TRUE(bitEqual(weightOf(2, 1.5), 0.5625));
    EXPECT_TRUE(bitEqual(weightOf(3, 1.5), -0.0625));
}

TEST(CubicKernel, AtAQuarterTheWeightsAreTheKnownOnes)
{
    EXPECT_TRUE(bitEqual(weightOf(0, 1.25), -0.0703125));
    EXPECT_TRUE(bitEqual(weightOf(1, 1.25), 0.8671875));
    EXPECT_TRUE(bitEqual(weightOf(2, 1.25), 0.2265625));
    EXPECT_TRUE(bitEqual(weightOf(3, 1.25), -0.0234375));
}

// The two pieces of the convolution kernel, below and above a distance of one.
double innerPiece(double d)
{
    const double square = d * d;
    return (1.0 - square * 2.5) + (square * 1.5) * d;
}

double outerPiece(double d)
{
    const double square = d * d;
    return (((d * 8.0 - 4.0) - square * 5.0) + square * d) * -0.5;
}

TEST(CubicKernel, TheWeightsAreNormalisedByTheirSum)
{
    // Unlike halves and quarters, these weights do not add up to exactly one.
    const double x = 1.1;
    const double w0 = outerPiece(x);
    const double w1 = innerPiece(x - 1.0);
    const double w2 = innerPiece(2.0 - x);
    const double w3 = outerPiece(3.0 - x);
    const double sum = ((w0 + w1) + w2) + w3;
    ASSERT_NE(sum, 1.0) << "the position does not tell whether the sum is divided by";
    EXPECT_TRUE(bitEqual(weightOf(0, x), w0 / sum));
    EXPECT_TRUE(bitEqual(weightOf(1, x), w1 / sum));
    EXPECT_TRUE(bitEqual(weightOf(2, x), w2 / sum));
    EXPECT_TRUE(bitEqual(weightOf(3, x), w3 / sum));
}

TEST(CubicKernel, OvershootsAtAStep)
{
    WrappedVolume<int> scene(rowVolume<int>({0, 0, 100, 100, 100, 100}));
    EXPECT_TRUE(bitEqual(cubic(scene, {2.25, 0, 0}, Replication()), 107.03125));
    EXPECT_TRUE(bitEqual(cubic(scene, {0.75, 0, 0}, Replication()), -7.03125));
}

struct BaseCase {
    double position;
    int first;
    const char* rule;
};

const BaseCase kBases[] = {
    {0.0, -1, "a whole number"},
    {-0.0, -1, "negative zero is at least zero"},
    {5.75, 4, "between two voxels"},
    {0x1p-1074, -1, "the smallest positive number"},
    {-0x1p-1074, -2, "the smallest negative number"},
    {-0.5, -2, "just below the volume"},
    {-1.0, -3, "a negative whole number is one below its floor"},
    {-1.5, -3, "a negative fraction is its floor"},
    {2147483645.0, 2147483644, "the last neighbourhood ends at INT_MAX"},
    {2147483645.75, 2147483644, "as long as the base is the same"},
    {-2147483646.0, INT_MIN, "the first neighbourhood starts at INT_MIN"},
    {-2147483646.75, INT_MIN, "as long as the base is the same"},
};

// Every neighbour is outside on the axes that are not looked at, so that the border sees all.
TEST(CubicKernel, ReadsFourNeighboursOfEachAxisByTheTable)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    for (const BaseCase& entry : kBases) {
        RecordingBorder onX;
        RecordingBorder onY;
        RecordingBorder onZ;
        cubic(scene, {entry.position, 20, 30}, &onX);
        cubic(scene, {20, entry.position, 30}, &onY);
        cubic(scene, {20, 30, entry.position}, &onZ);
        EXPECT_EQ(onX.indices(), neighbourhood({entry.first + 1, 20, 30})) << entry.rule;
        EXPECT_EQ(onY.indices(), neighbourhood({20, entry.first + 1, 30})) << entry.rule;
        EXPECT_EQ(onZ.indices(), neighbourhood({20, 30, entry.first + 1})) << entry.rule;
        EXPECT_EQ(onX.gets, 64);
    }
}

TEST(CubicKernel, TheLastAndTheFirstNeighbourhoodYieldTheBordersAnswer)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    EXPECT_EQ(cubic(scene, {2147483645.0, 0, 0}, Constant(), short{5}), 5.0);
    EXPECT_EQ(cubic(scene, {2147483645.5, 0, 0}, Replication()), 2.0);
    EXPECT_EQ(cubic(scene, {-2147483646.5, 0, 0}, Replication()), 1.0);
}

const double kWithoutNeighbours[] = {2147483646.0,  2147483646.5,  2147483647.0,  2147483648.0,
                                     1e10,          1e300,         DBL_MAX,       kInfinity,
                                     -2147483647.0, -2147483647.5, -2147483648.0, -1e10,
                                     -1e300,        -DBL_MAX,      -kInfinity,    kNaN};

TEST(CubicKernel, BeyondTheLastNeighbourhoodReadsNothingAndGivesNaN)
{
    WrappedVolume<short> scene(countingVolume<short>({2, 2, 2}));
    RecordingBorder border;
    for (const double v : kWithoutNeighbours) {
        EXPECT_TRUE(std::isnan(cubic(scene, {v, 9, 9}, &border))) << v;
        EXPECT_TRUE(std::isnan(cubic(scene, {9, v, 9}, &border))) << v;
        EXPECT_TRUE(std::isnan(cubic(scene, {9, 9, v}, &border))) << v;
        EXPECT_TRUE(std::isnan(cubic(scene, {v, 0, 0}, Constant(), short{5}))) << v;
        EXPECT_TRUE(std::isnan(cubic(scene, {0, 0, v}, Replication()))) << v;
    }
    EXPECT_EQ(border.gets, 0);
    EXPECT_TRUE(border.calls.empty());
}

template <class T>
class CubicTypes : public ::testing::Test {
};
TYPED_TEST_SUITE(CubicTypes, ElementTypes, ElementTypeNames);

TYPED_TEST(CubicTypes, GiveTheVoxelAtAWholePositionWhateverTheBorder)
{
    const WrappedVolume<TypeParam> scene(variedVolume<TypeParam>({3, 3, 3}));
    for (int n = 0; n < 27; ++n) {
        const Position p{n % 3 + 0.0, n / 3 % 3 + 0.0, n / 9 + 0.0};
        const double voxel = static_cast<double>(scene.volume.block[static_cast<std::size_t>(n)]);
        EXPECT_TRUE(bitEqual(cubic(scene, p, Constant(), TypeParam{77}), voxel));
        EXPECT_TRUE(bitEqual(cubic(scene, p, Replication()), voxel));
    }
}

TYPED_TEST(CubicTypes, ConvertTheLargestElementExactly)
{
    const TypeParam largest = std::numeric_limits<TypeParam>::max();
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({largest, 0}));
    EXPECT_TRUE(bitEqual(cubic(scene, {0.0, 0, 0}, Constant()), static_cast<double>(largest)));
    EXPECT_TRUE(bitEqual(cubic(scene, {0.5, 0, 0}, Constant()), largest * 0.5625));
}

TYPED_TEST(CubicTypes, HandTheBorderTheArgumentsOfTheCall)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 4, 5}, 2));
    RecordingBorder border;
    border.answer = [](const Index&) { return 6.0; };
    EXPECT_EQ(cubic(scene, {-9.5, 0.5, 0.5}, &border, 9, 1), 6.0);
    ASSERT_EQ(border.calls.size(), 64U);
    expectPassedOn(border, scene.image, 1, 9.0, {3, 4, 5});
}

TYPED_TEST(CubicTypes, NeverTestTheChannel)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({6, 1, 1}, 2));
    EXPECT_EQ(cubic(scene, {2, 0, 0}, Constant(), TypeParam{0}, 2), scene.volume.at(3, 0, 0, 0));
    EXPECT_EQ(cubic(scene, {2, 0, 0}, Constant(), TypeParam{0}, 4294967295U),
              scene.volume.at(1, 0, 0, 1));
}

TYPED_TEST(CubicTypes, GiveTheOneVoxelOfAVolumeAnywhere)
{
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({7}));
    for (const double v : {0.0, 0.25, 0.5, -0.75, -3.0, 12.5})
        EXPECT_EQ(cubic(scene, {v, v, v}, Replication()), 7.0) << v;
}

TEST(CubicKernel, AsksTheBorderForTheOutsideNeighboursAlone)
{
    WrappedVolume<short> scene(countingVolume<short>({4, 4, 4}));
    RecordingBorder border;
    cubic(scene, {1.5, 1.5, 1.5}, &border);
    EXPECT_TRUE(border.calls.empty());
    cubic(scene, {2.0, 1.5, 1.5}, &border);
    ASSERT_EQ(border.calls.size(), 16U);
    EXPECT_EQ(border.gets, 16);
    for (int n = 0; n < 16; ++n)
        EXPECT_EQ(border.calls[static_cast<std::size_t>(n)].index, (Index{4, n % 4, n / 4}));
}

TEST(CubicKernel, AtTheLastVoxelTheTwoOutsideNeighboursAreReadWithWeightZero)
{
    WrappedVolume<int> scene(rowVolume<int>({10, 20, 30}));
    RecordingBorder border;
    border.answer = [](const Index&) { return 1000.0; };
    EXPECT_EQ(cubic(scene, {2, 0, 0}, &border), 30.0);
    const std::vector<Index> asked = border.indices();
    EXPECT_EQ(std::count(asked.begin(), asked.end(), Index{3, 0, 0}), 1);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), Index{4, 0, 0}), 1);
}

TEST(CubicKernel, OutsideNeighboursCountInTheSumOfTheWeights)
{
    WrappedVolume<int> scene(rowVolume<int>({100}));
    EXPECT_EQ(cubic(scene, {0.5, 0, 0}, Constant(), 0), 56.25) << "not divided by 0.5625";
    EXPECT_EQ(cubic(scene, {-0.5, 0, 0}, Constant(), 0), 56.25);
    EXPECT_EQ(cubic(scene, {1.5, 0, 0}, Constant(), 0), -6.25);
}

TEST(CubicKernel, LosesTheSignOfNegativeZero)
{
    auto volume = blankVolume<float>({4, 4, 4});
    std::fill(volume.block.begin(), volume.block.end(), -0.0F);
    WrappedVolume<float> scene(volume);
    EXPECT_TRUE(bitEqual(cubic(scene, {1, 1, 1}, Replication()), 0.0));
    EXPECT_TRUE(bitEqual(cubic(scene, {1.5, 1.25, 1.75}, Constant()), 0.0));
}

TEST(CubicKernel, ProductsThatAreAllNegativeZeroSumToPositiveZero)
{
    auto volume = blankVolume<float>({4, 4, 4});
    for (std::size_t n = 0; n < 64; ++n) {
        const auto isNegative = [](std::size_t i) { return i == 0 || i == 3; };  // the weight
        const int negative = isNegative(n % 4) + isNegative(n / 4 % 4) + isNegative(n / 16);
        volume.block[n] = negative % 2 == 1 ? 0.0F : -0.0F;
    }
    EXPECT_TRUE(bitEqual(cubic(WrappedVolume<float>(volume), {1.5, 1.5, 1.5}, Constant()), 0.0));
}

TEST(CubicKernel, ANeighbourThatIsNotFiniteSpoilsTheResultEvenAtWeightZero)
{
    const float infinity = std::numeric_limits<float>::infinity();
    WrappedVolume<float> scene(rowVolume<float>({1, 2, 3, infinity}));
    EXPECT_TRUE(std::isnan(cubic(scene, {1, 0, 0}, Replication()))) << "two voxels away";
    EXPECT_EQ(cubic(scene, {0, 0, 0}, Replication()), 1.0) << "out of reach";
    EXPECT_TRUE(std::isnan(cubic(scene, {0, 0, 0}, Constant(), infinity))) << "outside";
    EXPECT_EQ(cubic(scene, {0, 0, 0}, Constant(), 5.0F), 1.0);
}

TEST(CubicKernel, AnExceptionOfTheBorderPassesEvenForWeightZero)
{
    WrappedVolume<int> scene(rowVolume<int>({1, 2}));
    RecordingBorder border;
    border.answer = [](const Index& at) -> double {
        if (at.y == 1)
            throw std::out_of_range("no such voxel");
        return 0.0;
    };
    EXPECT_THROW(cubic(scene, {0, 0, 0}, &border), std::out_of_range);
    EXPECT_EQ(border.calls.size(), 9U) << "two rows of four, and the call that threw";
}

TEST(CubicKernel, InAnEmptyImageEveryNeighbourIsOutside)
{
    VxImage<short> empty;
    EXPECT_EQ((Cubic().operator()<short, Constant>(empty, 0.25, 0, 0, 0U, Constant(), 5)), 5.0);
}

}  // namespace
}  // namespace volux::test
