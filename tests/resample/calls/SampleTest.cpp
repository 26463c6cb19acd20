#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::kAllChannels;
using resample::Positions;
using resample::Units;

std::vector<Position> somePositions(Random& random, const Extents& extents, std::size_t count)
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
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                compare<Result>(scene, positions,
                                Options(interpolator, border, insideValue<T>(random)), expected);
            });
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
                  SUCCESS);
        for (std::size_t n = 0; n < results.size(); ++n) {
            const Position& p = positions[n / channels];
            const Position voxels = {p.x / unit.x, p.y / unit.y, p.z / unit.z};
            ASSERT_TRUE(bitEqual(
                results[n], expected(scene.image, voxels, static_cast<int>(n % channels), options)))
                << describedCall(scene.image, voxels, static_cast<int>(n % channels), options)
                << (isPhysical ? ", in physical units" : "");
        }
    }

    Seeded random;
};
TYPED_TEST_SUITE(Sample, ElementTypes, ElementTypeNames);

TYPED_TEST(Sample, GivesVoluxCoresReadingsAtAnyPosition)
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
    EXPECT_EQ(resample::sample(scene.image, positions, 2, Units::VOXELS, 1, results), SUCCESS);
    EXPECT_EQ(results[0], 2.0);
    EXPECT_EQ(results[1], 5.0);
}

TYPED_TEST(Sample, TakesPositionsFromThreeArraysAnyStepApart)
{
    const WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({5, 4, 3}));
    const auto triples = somePositions(this->random, scene.volume.extents, this->kCount);
    for (const std::int64_t stride : {1, 2, -1, -3}) {
        const std::size_t begin =
            stride < 0 ? (this->kCount - 1) * static_cast<std::size_t>(-stride) : 0;
        std::vector<double> xyz[3];
        for (auto& numbers : xyz)
            numbers.resize(this->kCount * 3);
        for (std::size_t n = 0; n < this->kCount; ++n) {
            const auto at = static_cast<std::size_t>(static_cast<std::int64_t>(begin) +
                                                     stride * static_cast<std::int64_t>(n));
            xyz[0][at] = triples[n].x;
            xyz[1][at] = triples[n].y;
            xyz[2][at] = triples[n].z;
        }
        std::vector<double> fromTriples(this->kCount);
        std::vector<double> fromArrays(this->kCount);
        ASSERT_EQ(resample::sample(scene.image, triples.data(), this->kCount, Units::VOXELS, 0,
                                   fromTriples.data()),
                  SUCCESS);
        ASSERT_EQ(
            resample::sample(scene.image,
                             Positions(&xyz[0][begin], &xyz[1][begin], &xyz[2][begin], stride),
                             this->kCount, Units::VOXELS, 0, fromArrays.data()),
            SUCCESS);
        for (std::size_t n = 0; n < this->kCount; ++n)
            ASSERT_TRUE(bitEqual(fromArrays[n], fromTriples[n]))
                << "stride " << stride << ", position " << n;
    }
}

TEST(SampleTakes, OnePositionForEveryResult)
{
    const WrappedVolume<short> scene(countingVolume<short>({4, 1, 1}));
    const double x = 1.5;
    const double zero = 0.0;
    float results[3] = {};
    ASSERT_EQ(
        resample::sample(scene.image, Positions(&x, &zero, &zero, 0), 3, Units::VOXELS, 0, results),
        SUCCESS);
    for (const float result : results)
        EXPECT_EQ(result, 2.5F);
}

TYPED_TEST(Sample, TakesPositionsOfASpaceThatAMapLeadsFrom)
{
    forEachInstructionSet([this] {
        for (int n = 0; n < 30; ++n) {
            const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
            const AffineMap map = obliqueMap(this->random, scene.volume.extents);
            const auto positions = somePositions(this->random, scene.volume.extents, this->kCount);
            std::vector<double> results(this->kCount);
            const Options options(Linear(), Constant(), 3);
            ASSERT_EQ(resample::sample(scene.image, map, positions.data(), this->kCount, 0,
                                       results.data(), options),
                      SUCCESS);
            for (std::size_t p = 0; p < this->kCount; ++p) {
                const Position voxels =
                    positionOf(map, positions[p].x, positions[p].y, positions[p].z);
                ASSERT_TRUE(bitEqual(results[p], reading(scene.image, voxels, 0, options)))
                    << describedCall(scene.image, voxels, 0, options) << ", " << described(map);
            }
        }
    });
}

// Readings beside a half, at the ends of a type's range and beyond, and what is no number: of many
// at once, so that whole vectors are rounded as well as what is left over.
template <class T>
class SampleRounds : public ::testing::Test {
};
TYPED_TEST_SUITE(SampleRounds, ElementTypes, ElementTypeNames);

std::vector<double> delicateReadings(double lowest, double highest)
{
    std::vector<double> all{-0.0, NAN, INFINITY, -INFINITY, 1e300, -1e300, 4503599627370497.0};
    for (const double whole : {lowest - 1.0, lowest, lowest + 1.0, -2.0, -1.0, 0.0, 1.0, 2.0, 7.0,
                               highest - 1.0, highest, highest + 1.0})
        for (const double tie : {whole - 0.5, whole, whole + 0.5})
            for (const double beside : {lowest - 9.0, tie, highest + 9.0})
                all.push_back(std::nextafter(tie, beside));
    return all;
}

// Gives the position along x.
struct Given : Interpolator {
    template <class T, class B>
    double operator()(const VxImage<T>&, double x, double, double, unsigned int, B, T)
    {
        return x;
    }

    Interpolator::interpolator_t<Interpolator, Interpolator::Empty>& get() override
    {
        static Interpolator::interpolator_t<Given, Interpolator> table;
        return table;
    }
};

TYPED_TEST(SampleRounds, HalvesAwayFromZeroAndSaturatesOrWraps)
{
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    using Reals = std::numeric_limits<double>;
    Given given;
    const bool isInteger = Limits::is_integer;
    const std::vector<double> readings =
        delicateReadings(isInteger ? static_cast<double>(Limits::lowest()) : Reals::lowest(),
                         isInteger ? static_cast<double>(Limits::max()) : Reals::max());
    std::vector<Position> positions;
    for (const double reading : readings)
        positions.push_back({reading, 0.0, 0.0});
    VxImage<T> image;
    image.initialize(1, 1, 1, 1);
    forEachInstructionSet([&] {
        for (std::size_t first = 0; first < 16; ++first) {
            Options options(&given);
            options.overflow = first % 2 == 0 ? Overflow::SATURATE : Overflow::WRAP;
            std::vector<T> results(positions.size() - first);
            ASSERT_EQ(resample::sample(image, positions.data() + first, results.size(),
                                       Units::VOXELS, 0, results.data(), options),
                      SUCCESS);
            for (std::size_t n = 0; n < results.size(); ++n)
                ASSERT_TRUE(bitEqual(results[n], element(image, positions[first + n], 0, options)))
                    << describedCall(image, positions[first + n], 0, options);
        }
    });
}

TEST(SampleRefuses, WhatItCanNotDo)
{
    VxImage<short> image;
    const Position position = {0.0, 0.0, 0.0};
    double result = 7.0;
    const auto sampled = [&](int channel) {
        return resample::sample(image, &position, 1, Units::VOXELS, channel, &result);
    };
    EXPECT_EQ(sampled(0), ERR_NULL_POINTER);
    image.initialize(2, 2, 2, 2);
    EXPECT_EQ(sampled(2), ERR_INVALID_CHANNEL);
    EXPECT_EQ(sampled(-2), ERR_INVALID_CHANNEL);
    EXPECT_EQ(resample::sample(image, nullptr, 1, Units::VOXELS, 0, &result), ERR_NULL_POINTER);
    double* const nowhere = nullptr;
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, nowhere), ERR_NULL_POINTER);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, image.getBufferPointer()),
              ERR_INVALID_ARGUMENT);
    Position written = {0.0, 0.0, 0.0};
    EXPECT_EQ(resample::sample(image, &written, 1, Units::VOXELS, 0, &written.y),
              ERR_INVALID_ARGUMENT);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, &result,
                               Options(Linear(), Constant(), 0.5)),
              ERR_INVALID_ARGUMENT);
    AffineMap flat;
    flat.rows[1][1] = 0.0;
    EXPECT_EQ(resample::sample(image, flat, &position, 1, 0, &result), ERR_INVALID_ARGUMENT);
    const Positions incomplete(&position.x, nullptr, &position.z);
    EXPECT_EQ(resample::sample(image, incomplete, 1, Units::VOXELS, 0, &result), ERR_NULL_POINTER);
    const std::int64_t far = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(resample::sample(image, Positions(&position.x, &position.y, &position.z, far), 2,
                               Units::VOXELS, 0, &result),
              ERR_INVALID_ARGUMENT);
    for (const std::uint64_t endless : {~std::uint64_t{0} / 2, (std::uint64_t{1} << 61U) + 1})
        EXPECT_EQ(resample::sample(image, &position, endless, Units::VOXELS, 0, &result),
                  ERR_INVALID_ARGUMENT)
            << endless;
    EXPECT_EQ(result, 7.0);
}

TEST(SampleRefuses, PhysicalUnitsOfASourceThatHasNone)
{
    VxImage<short> image;
    image.initialize(2, 2, 2, 1);
    image.setVoxelSize(1.0, 1.0, std::numeric_limits<double>::quiet_NaN());
    const Position position = {0.0, 0.0, 0.0};
    double result = 7.0;
    EXPECT_EQ(resample::sample(image, &position, 1, Units::PHYSICAL, 0, &result),
              ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result, 7.0);
    EXPECT_EQ(resample::sample(image, &position, 1, Units::VOXELS, 0, &result), SUCCESS);
}

TEST(SampleCancels, LeavingEachResultFinishedOrAsItWas)
{
    VxImage<short> image;
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
    VxImage<short> image;
    image.initialize(1, 1, 1, 1);
    const std::vector<Position> positions;
    std::vector<double> results;
    EXPECT_EQ(resample::sample(image, positions.data(), 0, Units::VOXELS, 0, results.data()),
              SUCCESS);
    EXPECT_EQ(resample::sample(image, positions.data(), 0, Units::VOXELS, 0, &image(0, 0, 0, 0)),
              SUCCESS);
}

}  // namespace
}  // namespace volux::test
