#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

#include "Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::kAllChannels;
using resample::Units;

std::vector<Position> somePositions(Random& random, const oracle::Extents& extents,
                                    std::size_t count)
{
    std::vector<Position> positions;
    for (std::size_t n = 0; n < count; ++n) {
        const oracle::Position p = randomPosition(random, extents);
        positions.push_back({p.x, p.y, p.z});
    }
    return positions;
}

template <class T>
class Sample : public ::testing::Test {
protected:
    static constexpr std::size_t kCount = 300;

    explicit Sample(std::uint64_t seed = 11) : random(seed) {}

    // All policies over random volumes; half of them with positions in physical units.
    template <class Result, class Expected>
    void compareScenes(unsigned int scenes, const Expected& expected)
    {
        for (unsigned int n = 0; n < scenes && !::testing::Test::HasFatalFailure(); ++n) {
            const WrappedVolume<T> scene(randomVolume<T>(random));
            const auto positions = somePositions(random, scene.volume.extents, kCount);
            for (core::Interpolator* const interpolator : kInterpolators)
                for (core::Border* const border : kBorders)
                    compare<Result>(scene, positions,
                                    Options(interpolator, border, insideValue<T>(random)),
                                    expected);
        }
    }

    template <class Result, class Expected>
    void compare(const WrappedVolume<T>& scene, const std::vector<Position>& positions,
                 const Options& options, const Expected& expected)
    {
        const Units units = random.below(2) == 0 ? Units::VOXELS : Units::PHYSICAL;
        const bool isPhysical = units == Units::PHYSICAL;
        const oracle::Position one = {1.0, 1.0, 1.0};
        const oracle::Position& unit = isPhysical ? scene.volume.spacing : one;
        const std::size_t channels = scene.image.getChannels();
        std::vector<Result> results(kCount * channels);
        ASSERT_EQ(resample::sample(scene.image, positions.data(), kCount, units, kAllChannels,
                                   results.data(), options),
                  core::SUCCESS);
        for (std::size_t n = 0; n < results.size(); ++n) {
            const Position& p = positions[n / channels];
            const Position voxels = {p.x / unit.x, p.y / unit.y, p.z / unit.z};
            ASSERT_TRUE(bitEqual(
                results[n], expected(scene.image, voxels, static_cast<int>(n % channels), options)))
                << voxels.x << ' ' << voxels.y << ' ' << voxels.z;
        }
    }

    Random random;
};
TYPED_TEST_SUITE(Sample, ElementTypes, ElementTypeNames);

TYPED_TEST(Sample, GivesTheModulesReadingsAtAnyPosition)
{
    forEachInstructionSet([this] {
        this->template compareScenes<double>(
            30, [](const auto& image, const Position& p, int c, const Options& options) {
                return reading(image, p, c, options);
            });
    });
}

TYPED_TEST(Sample, RoundsToTheElementType)
{
    forEachInstructionSet([this] {
        this->template compareScenes<TypeParam>(
            30, [](const auto& image, const Position& p, int c, const Options& options) {
                return element(image, p, c, options);
            });
    });
}

TYPED_TEST(Sample, TakesOneChannel)
{
    const WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 1, 1}, 3));
    const Position positions[] = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}};
    double results[2] = {};
    EXPECT_EQ(resample::sample(scene.image, positions, 2, Units::VOXELS, 1, results),
              core::SUCCESS);
    EXPECT_EQ(results[0], 2.0);
    EXPECT_EQ(results[1], 5.0);
}

TEST(SampleRefuses, WhatItCanNotDo)
{
    core::VxImage<short> image;
    const Position position = {0.0, 0.0, 0.0};
    double result = 7.0;
    const auto sampled = [&](int channel) {
        return resample::sample(image, &position, 1, Units::VOXELS, channel, &result);
    };
    EXPECT_EQ(sampled(0), core::ERR_NULL_POINTER);
    image.initialize(2, 2, 2, 2);
    EXPECT_EQ(sampled(2), core::ERR_INVALID_CHANNEL);
    EXPECT_EQ(sampled(-2), core::ERR_INVALID_CHANNEL);
    EXPECT_EQ(resample::sample(image, nullptr, 1, Units::VOXELS, 0, &result),
              core::ERR_NULL_POINTER);
    double* const nowhere = nullptr;
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, nowhere),
              core::ERR_NULL_POINTER);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, image.getBufferPointer()),
              core::ERR_INVALID_ARGUMENT);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, &result,
                               Options(core::Linear(), core::Constant(), 0.5)),
              core::ERR_INVALID_ARGUMENT);
    const std::size_t endless = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_EQ(resample::sample(image, &position, endless, Units::VOXELS, 0, &result),
              core::ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result, 7.0);
}

TEST(SampleRefuses, PhysicalUnitsOfASourceThatHasNone)
{
    core::VxImage<short> image;
    image.initialize(2, 2, 2, 1);
    image.setVoxelSize(1.0, 1.0, std::numeric_limits<double>::quiet_NaN());
    const Position position = {0.0, 0.0, 0.0};
    double result = 7.0;
    EXPECT_EQ(resample::sample(image, &position, 1, Units::PHYSICAL, 0, &result),
              core::ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result, 7.0);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, &result), core::SUCCESS);
}

TEST(SampleCancels, LeavingEachResultFinishedOrAsItWas)
{
    core::VxImage<short> image;
    image.initialize(2, 2, 2, 2);
    image.fill(9);
    const std::vector<Position> positions(100000, Position{0.5, 0.5, 0.5});
    std::vector<short> results(2 * positions.size(), -5);
    Options options;
    options.threads = 3;
    options.progress = [](double) { return false; };
    EXPECT_EQ(resample::sample(image, positions.data(), positions.size(), Units::VOXELS,
                               kAllChannels, results.data(), options),
              resample::kCancelled);
    std::size_t finished = 0;
    for (std::size_t n = 0; n < results.size(); n += 2) {
        ASSERT_EQ(results[n], results[n + 1]);
        ASSERT_TRUE(results[n] == 9 || results[n] == -5);
        finished += results[n] == 9 ? 1 : 0;
    }
    EXPECT_GT(finished, 0U);
    EXPECT_LT(finished, positions.size());
}

TEST(SampleTakes, NoPositionsAtAll)
{
    core::VxImage<short> image;
    image.initialize(1, 1, 1, 1);
    const std::vector<Position> positions;
    std::vector<double> results;
    EXPECT_EQ(resample::sample(image, positions.data(), 0, Units::VOXELS, 0, results.data()),
              core::SUCCESS);
}

}  // namespace
}  // namespace volux::test
