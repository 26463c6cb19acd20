#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::kAntialiased;
using resample::Planes;
using resample::Projection;
using resample::Slab;

TYPED_TEST_SUITE(Antialias, ElementTypes, ElementTypeNames);

TYPED_TEST(Antialias, GivesTheMeanOfTheSubsamples)
{
    for (int n = 0; n < 300; ++n) {
        const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
        const AffineMap map = this->someMap(scene.volume.extents);
        const Grid grid = gridOf(map, this->random.between(1, 9), this->random.between(1, 4),
                                 this->random.between(1, 3));
        this->compareEveryResult(scene.image, grid, someOptions(this->random));
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

// Wider than what is folded together, by any map.
TYPED_TEST(Antialias, GivesTheMeanAlongLongRows)
{
    Volume<TypeParam> volume = blankVolume<TypeParam>({300, 5, 3});
    fillAtRandom(volume, this->random, false);
    const WrappedVolume<TypeParam> scene(volume);
    for (const unsigned int x : {1U, 2U, 3U, 7U, 63U, 64U, 65U, 257U, 300U})
        for (const double turned : {0.0, 0.01}) {
            AffineMap map;
            map.rows[0][0] = 0.4 * x;
            map.rows[0][3] = -2.0;
            map.rows[1][0] = turned;
            Options options = someOptions(this->random);
            options.subsamples = {x, 2, 1};
            this->template compare<TypeParam>(
                scene.image, gridOf(map, std::min(780 / x + 2, 290U), 2, 2), options);
        }
}

// One row after the other; more rows than are folded together.
TYPED_TEST(Antialias, GivesTheMeanOfManyRows)
{
    Volume<TypeParam> volume = blankVolume<TypeParam>({6, 150, 4}, 2);
    fillAtRandom(volume, this->random, false);
    const WrappedVolume<TypeParam> scene(volume);
    for (const unsigned int y : {2U, 3U, 17U})
        for (int repeat = 0; repeat < 4; ++repeat) {
            AffineMap map;
            map.rows[1][1] = 140.0 / 35;
            map.rows[1][3] = -9.25;
            Options options = someOptions(this->random);
            options.subsamples = {2, y, 1 + this->random.below(2)};
            this->template compare<TypeParam>(scene.image, gridOf(map, 5, 41, 3), options);
        }
}

TYPED_TEST(Antialias, OfAllInstructionSetsHasTheSameBits)
{
    forEachInstructionSet([this] {
        Seeded drawn(172);
        for (int n = 0; n < 30; ++n) {
            const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(drawn));
            const AffineMap map = n % 2 == 0 ? axisMap(drawn, scene.volume.extents)
                                             : obliqueMap(drawn, scene.volume.extents);
            this->template compare<TypeParam>(scene.image, gridOf(map, 11, 3, 2),
                                              someOptions(drawn));
        }
    });
}

struct Length {
    double step;
    unsigned int count;
    const char* rule;
};
constexpr double kMillionth = 0x1p-20;
constexpr Length kLengths[] = {{1e-300, 1, "at least one"},
                               {0.5, 1, "shorter than a voxel"},
                               {1.0, 1, "a voxel"},
                               {-1.0, 1, "backwards"},
                               {1.1, 2, "rounded up"},
                               {-2.5, 3, "rounded up backwards"},
                               {3.0000000000000004, 3, "a rounding above a whole number"},
                               {4.0F / 1.3F * 1.3F, 4, "floats"},
                               {4.0 * (1 + 0.9 * kMillionth), 4, "a millionth above"},
                               {4.0 * (1 + 1.1 * kMillionth), 5, "more than a millionth above"},
                               {5.999, 6, "below"},
                               {0x1.800018000180p+1, 3, "at the bound"}};

TEST(AntialiasCounts, AreTheLengthOfTheStepRoundedUp)
{
    Seeded random(173);
    Volume<float> volume = blankVolume<float>({40, 40, 40});
    fillAtRandom(volume, random, false);
    const WrappedVolume<float> scene(volume);
    // Along an axis of the source, and along a diagonal of length 1.
    constexpr std::array<Position, 2> directions{{{1, 0, 0}, {0.48, 0.6, 0.64}}};
    for (const Length& length : kLengths)
        for (const Position& d : directions) {
            AffineMap map;
            for (int row = 0; row < 3; ++row)
                map.rows[row][3] = 20.25;
            map.rows[0][0] = d.x * length.step;
            map.rows[1][0] = d.y * length.step;
            map.rows[2][0] = d.z * length.step;
            VxImage<float> open;
            VxImage<float> counted;
            Options options;
            options.subsamples = {0, 1, 1};
            ASSERT_EQ(resample::resample(scene.image, gridOf(map, 4, 2, 2), &open, options),
                      SUCCESS);
            options.subsamples.x = length.count;
            ASSERT_EQ(resample::resample(scene.image, gridOf(map, 4, 2, 2), &counted, options),
                      SUCCESS);
            for (int n = 0; n < 16; ++n)
                EXPECT_TRUE(bitEqual(open.getBufferPointer()[n], counted.getBufferPointer()[n]))
                    << length.rule << ": " << length.step;
        }
}

TYPED_TEST(Antialias, OfStepsThatAreNoLongerThanAVoxelChangesNothing)
{
    const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
    const AffineMap map = {{{0.25, 0, 0, -0.0}, {0, -1.0, 0, 2.5}, {0, 0, 0.75, -0.0}}};
    forEachPolicy([&](Interpolator* interpolator, Border* border) {
        Options options(interpolator, border, 3);
        VxImage<TypeParam> result;
        options.subsamples = kAntialiased;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 9, 4, 5), &result, options), SUCCESS);
        expectEverySample(scene.image, map, result, options);
    });
}

double projectedPlanes(const std::vector<double>& planes, Projection projection)
{
    double result = planes[0];
    for (std::size_t n = 1; n < planes.size(); ++n) {
        if (projection == Projection::MEAN)
            result = result + planes[n];
        else if (projection == Projection::MAXIMUM ? planes[n] > result : planes[n] < result)
            result = planes[n];
    }
    return projection == Projection::MEAN ? result / static_cast<double>(planes.size()) : result;
}

TYPED_TEST(Antialias, OfASlabTakesTheMeansBeforeItProjects)
{
    for (const Projection projection :
         {Projection::MEAN, Projection::MAXIMUM, Projection::MINIMUM}) {
        const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
        Planes planes;
        const AffineMap map = obliqueMap(this->random, scene.volume.extents);
        planes.origin = {map.rows[0][3], map.rows[1][3], map.rows[2][3]};
        planes.across = {map.rows[0][0], map.rows[1][0], map.rows[2][0]};
        planes.down = {map.rows[0][1], map.rows[1][1], map.rows[2][1]};
        planes.step = {map.rows[0][2], map.rows[1][2], map.rows[2][2]};
        planes.width = 140;
        planes.height = 3;
        planes.count = 5;
        Options options = someOptions(this->random);
        options.interpolator = kInterpolators[this->random.below(3)];  // labels vote instead
        VxImage<TypeParam> result;
        ASSERT_EQ(resample::reslice(scene.image, planes, &result, options, Slab{3, projection}),
                  SUCCESS);
        for (unsigned int k = 0; k < 5; ++k)
            for (unsigned int j = 0; j < 3; ++j)
                for (unsigned int i = 0; i < 140; ++i) {
                    std::vector<double> means;
                    for (unsigned int plane = 3 * k; plane < 3 * k + 3; ++plane)
                        means.push_back(meanReading(scene.image, map, i, j, plane, 0, options));
                    ASSERT_TRUE(bitEqual(
                        at(result, i, j, k, 0),
                        storedReading<TypeParam>(projectedPlanes(means, projection), options)))
                        << i << ' ' << j << ' ' << k << ", projection "
                        << static_cast<int>(projection) << ", " << described(options) << ", "
                        << described(map);
                }
    }
}

TYPED_TEST(Antialias, OnAnyNumberOfThreadsHasTheSameBits)
{
    Volume<TypeParam> volume = blankVolume<TypeParam>({40, 60, 40});
    fillAtRandom(volume, this->random, true);
    const WrappedVolume<TypeParam> scene(volume);
    for (const double turned : {0.0, 0.1}) {
        const Grid grid =
            gridOf({{{2.5, turned, 0, -3}, {0, 1.5, 0, -3}, {0, 0, 3.5, -3}}}, 19, 44, 15);
        Options options = someOptions(this->random);
        options.subsamples = {3, 2, 4};
        options.threads = 1;
        VxImage<TypeParam> first;
        ASSERT_EQ(resample::resample(scene.image, grid, &first, options), SUCCESS);
        for (const unsigned int threads : {2U, 3U, 7U}) {
            VxImage<TypeParam> result;
            options.threads = threads;
            ASSERT_EQ(resample::resample(scene.image, grid, &result, options), SUCCESS);
            EXPECT_EQ(std::memcmp(first.getBufferPointer(), result.getBufferPointer(),
                                  sizeof(TypeParam) * 19 * 44 * 15),
                      0)
                << described(options);
        }
    }
}

TEST(AntialiasOwnPolicies, AreCalledForEachSubsample)
{
    struct Own : Linear {
    } own;
    Seeded random(174);
    const WrappedVolume<short> scene(countingVolume<short>({6, 5, 4}, 2));
    for (const bool isOblique : {false, true}) {
        const AffineMap map = isOblique ? obliqueMap(random, scene.volume.extents)
                                        : axisMap(random, scene.volume.extents);
        Options options(&own, Constant(), 4);
        options.subsamples = {3, 1, 2};
        VxImage<short> result;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 7, 3, 2), &result, options), SUCCESS);
        expectEveryMean(scene.image, map, result, options);
    }
}

class AntialiasRefuses : public ::testing::Test {
protected:
    AntialiasRefuses() { source.initialize(4, 4, 4, 1); }

    ErrorType perform(const Subsamples& subsamples, const Grid& grid)
    {
        Options options;
        options.subsamples = subsamples;
        VxImage<short> result;
        const ErrorType code = resample::resample(source, grid, &result, options);
        EXPECT_EQ(result.getBufferPointer() == nullptr, code != SUCCESS);
        resample::ResampleRegion region;
        region.sourceWidth = region.sourceHeight = region.sourceDepth = 4;
        core::Rect box;
        EXPECT_EQ(region.support(grid, &box, options), code);
        return code;
    }

    VxImage<short> source;
};

TEST_F(AntialiasRefuses, MoreSubsamplesThanNumbersCount)
{
    const AffineMap map;
    EXPECT_EQ(perform({2, 2, 2}, gridOf(map, 3, 4, 5)), SUCCESS);
    EXPECT_EQ(perform({0x2AAAAAABU, 1, 1}, gridOf(map, 3, 1, 1)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(perform({1, 0x20000000U, 1}, gridOf(map, 3, 4, 5)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(perform({1, 1, 0xFFFFFFFFU}, gridOf(map, 3, 4, 5)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(perform({0x8000U, 0x8000U, 2}, gridOf(map, 1, 1, 1)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(perform({0x8000U, 0x10000U, 1}, gridOf(map, 1, 1, 1)), ERR_INVALID_ARGUMENT);
}

TEST_F(AntialiasRefuses, StepsTooLongToDivide)
{
    AffineMap map;
    for (const double step : {3e9, 1e30, 1.7e308}) {
        map.rows[0][0] = step;
        EXPECT_EQ(perform({1, 1, 1}, gridOf(map, 1, 1, 1)), SUCCESS);
        EXPECT_EQ(perform(kAntialiased, gridOf(map, 1, 1, 1)), ERR_INVALID_ARGUMENT);
    }
    map.rows[1][0] = map.rows[0][0];
    map.rows[1][1] = 1e307;
    EXPECT_EQ(perform(kAntialiased, gridOf(map, 1, 1, 1)), ERR_INVALID_ARGUMENT);
}

TEST_F(AntialiasRefuses, PositionsWithoutASize)
{
    Options options;
    const resample::Position position = {1, 1, 1};
    double result = 7;
    const auto sample = [&] {
        return resample::sample(source, &position, 1, resample::Units::VOXELS, 0, &result, options);
    };
    options.subsamples = {1, 2, 1};
    EXPECT_EQ(sample(), ERR_INVALID_ARGUMENT);
    options.subsamples = kAntialiased;
    EXPECT_EQ(sample(), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(result, 7.0);
    options.subsamples = {};
    EXPECT_EQ(sample(), SUCCESS);
}

}  // namespace
}  // namespace volux::test
