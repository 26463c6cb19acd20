// The vote of sub-samples, which Labels has where other kernels have their mean.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::kAntialiased;
using resample::Labels;
using resample::Planes;
using resample::Projection;
using resample::ResampleRegion;
using resample::Slab;

template <class T>
Volume<T> labelsOf(Random& random, const Extents& extents, unsigned int labels)
{
    Volume<T> volume = blankVolume<T>(extents);
    for (T& voxel : volume.block)
        voxel = static_cast<T>(random.below(labels));
    return volume;
}

template <class T>
class LabelsVote : public ::testing::Test {
protected:
    static Options someOptions(Random& random)
    {
        Options options(Labels(), anyOf(random, kBorders), T{3});
        options.edgeExtends = random.below(2) == 0;
        options.threads = random.between(1, 3);
        options.subsamples = someSubsamples(random);
        return options;
    }

    static AffineMap someMap(Random& random, const Extents& extents)
    {
        constexpr std::array<AffineMap (*)(Random&, const Extents&), 3> makes{axisMap, halfMap,
                                                                              hugeMap};
        return random.below(3) == 0 ? obliqueMap(random, extents, 1.7)
                                    : anyOf(random, makes)(random, extents);
    }

    // The most frequent of a block; among several that of the voxel that holds the block's centre,
    // or follows it, else the lowest.
    static T modeOf(const Volume<T>& volume, const Subsamples& n, unsigned int i, unsigned int j,
                    unsigned int k)
    {
        std::map<T, int> counts;
        int most = 0;
        for (unsigned int z = k * n.z; z < (k + 1) * n.z; ++z)
            for (unsigned int y = j * n.y; y < (j + 1) * n.y; ++y)
                for (unsigned int x = i * n.x; x < (i + 1) * n.x; ++x)
                    most = std::max(most, ++counts[volume.at(x, y, z, 0)]);
        const T centre = volume.at(i * n.x + n.x / 2, j * n.y + n.y / 2, k * n.z + n.z / 2, 0);
        if (counts[centre] == most)
            return centre;
        return std::find_if(counts.begin(), counts.end(),
                            [most](const auto& entry) { return entry.second == most; })
            ->first;
    }
};
TYPED_TEST_SUITE(LabelsVote, ElementTypes, ElementTypeNames);

TYPED_TEST(LabelsVote, IsThatOfTheDefinitionByEveryInstructionSet)
{
    using T = TypeParam;
    forEachInstructionSet([this] {
        Seeded random(931);
        for (int n = 0; n < 60; ++n) {
            const Extents extents{random.between(1, 9), random.between(1, 9), random.between(1, 9)};
            const WrappedVolume<T> scene(labelsOf<T>(random, extents, random.between(2, 40)));
            const Grid grid = gridOf(this->someMap(random, extents), random.between(1, 40),
                                     random.between(1, 20), random.between(1, 3));
            const Options options = this->someOptions(random);
            VxImage<T> result;
            ASSERT_EQ(resample::resample(scene.image, grid, &result, options), SUCCESS);
            expectEveryMean(scene.image, grid.map, result, options);
            if (this->HasFatalFailure())
                return;
        }
    });
}

TYPED_TEST(LabelsVote, ByWholeFactorsIsTheModeOfEachBlock)
{
    using T = TypeParam;
    Seeded random(933);
    constexpr std::array<Subsamples, 6> factors{
        {{2, 2, 2}, {4, 4, 4}, {3, 3, 3}, {1, 5, 2}, {7, 2, 3}, {70, 1, 1}}};
    for (const Subsamples& n : factors)
        for (const unsigned int labels : {2U, 5U, 200U}) {
            const Extents extents{5 * n.x, 4 * n.y, 3 * n.z};
            const WrappedVolume<T> scene(labelsOf<T>(random, extents, labels));
            Options options{Labels()};
            options.subsamples = kAntialiased;
            VxImage<T> result;
            ASSERT_EQ(resize(scene.image, 5, 4, 3, Align::EDGES, &result, options), SUCCESS);
            for (unsigned int k = 0; k < 3; ++k)
                for (unsigned int j = 0; j < 4; ++j)
                    for (unsigned int i = 0; i < 5; ++i)
                        ASSERT_EQ(at(result, i, j, k, 0), this->modeOf(scene.volume, n, i, j, k))
                            << n.x << ' ' << n.y << ' ' << n.z << ", voxel " << i << ' ' << j << ' '
                            << k << ", " << labels << " labels";
        }
}

// Zeros of both signs, NaN, and few of anything else.
TEST(LabelsVoteOfFloats, ByWholeFactorsKeepsTheFirstZerosSign)
{
    Seeded random(934);
    constexpr std::array<float, 5> labels{0.0F, -0.0F, std::numeric_limits<float>::quiet_NaN(),
                                          3.0F, -std::numeric_limits<float>::infinity()};
    for (int n = 0; n < 60; ++n) {
        Volume<float> volume = blankVolume<float>({12, 8, 6});
        const auto few = random.between(2, 5);
        for (float& voxel : volume.block)
            voxel = labels.at(random.below(few));
        const WrappedVolume<float> scene(volume);
        Options options{Labels()};
        options.subsamples = kAntialiased;
        options.edgeExtends = true;
        VxImage<float> result;
        ASSERT_EQ(resize(scene.image, 4, 4, 3, Align::EDGES, &result, options), SUCCESS);
        const Grid grid = resample::gridOfSize(core::ImageSize(12, 8, 6, 1), VoxelSize(1, 1, 1), 4,
                                               4, 3, Align::EDGES);
        expectEveryMean(scene.image, grid.map, result, options);
    }
}

TYPED_TEST(LabelsVote, CountsMoreLabelsThanOnePassHasRoomFor)
{
    using T = TypeParam;
    Seeded random(935);
    for (int n = 0; n < 20; ++n) {
        // Every voxel another label, but for one that appears a second time.
        Volume<T> volume = blankVolume<T>({6, 5, 8});
        for (std::size_t voxel = 0; voxel < volume.block.size(); ++voxel)
            volume.block[voxel] = static_cast<T>(voxel);
        std::shuffle(volume.block.begin(), volume.block.end(), std::minstd_rand(random.below(99)));
        const T twice = volume.block[random.below(120)];
        volume.block[120 + random.below(120)] = twice;
        const WrappedVolume<T> scene(volume);
        Options options{Labels()};
        options.subsamples = kAntialiased;
        VxImage<T> result;
        ASSERT_EQ(resize(scene.image, 1, 1, 1, Align::EDGES, &result, options), SUCCESS);
        EXPECT_EQ(result(0, 0, 0, 0), twice);
    }
}

TYPED_TEST(LabelsVote, OfABoxIsThatOfTheWhole)
{
    using T = TypeParam;
    Seeded random(937);
    for (int n = 0; n < 40; ++n) {
        const Extents extents{random.between(6, 20), random.between(6, 20), random.between(6, 20)};
        WrappedVolume<T> scene(labelsOf<T>(random, extents, 3));
        const AffineMap map =
            n % 2 == 0 ? obliqueMap(random, extents, 1.2) : axisMap(random, extents);
        const Grid grid = gridOf(map, 9, 5, 4);
        Options options = this->someOptions(random);
        VxImage<T> whole;
        ASSERT_EQ(resample::resample(scene.image, grid, &whole, options), SUCCESS);
        ResampleRegion region;
        region.sourceWidth = extents.width;
        region.sourceHeight = extents.height;
        region.sourceDepth = extents.depth;
        region.output = core::Rect(2, 7, 1, 3, 1, 2);
        core::Rect need;
        ASSERT_EQ(region.support(grid, &need, options), SUCCESS);
        region.brickX = need.xStart;
        region.brickY = need.yStart;
        region.brickZ = need.zStart;
        VxImage<T> brick;
        VxImage<T> part;
        ASSERT_EQ(scene.image.crop(need, &brick), SUCCESS);
        ASSERT_EQ(resample::resample(brick, grid, region, &part, options), SUCCESS);
        for (unsigned int z = 0; z < 2; ++z)
            for (unsigned int y = 0; y < 3; ++y)
                for (unsigned int x = 0; x < 6; ++x)
                    ASSERT_TRUE(bitEqual(at(part, x, y, z, 0), at(whole, 2 + x, 1 + y, 1 + z, 0)))
                        << described(options) << ", " << described(map);
    }
}

Planes somePlanes(double tilt)
{
    Planes planes;
    planes.origin = {1.3, 0.7, 0.25};
    planes.across = {0.9, 0.1, tilt};
    planes.down = {-0.1, 1.1, 0.0};
    planes.step = {0.0, 0.0, 0.75};
    planes.width = 9;
    planes.height = 7;
    planes.count = 3;
    return planes;
}

// Sub-sample by sub-sample, plane by plane.
TYPED_TEST(LabelsVote, OfASlabIsThatOfAllItsPlanes)
{
    using T = TypeParam;
    Seeded random(939);
    for (int n = 0; n < 12; ++n) {
        const Extents extents{12, 11, 10};
        const WrappedVolume<T> scene(labelsOf<T>(random, extents, 4));
        const Planes planes = somePlanes(n % 2 == 0 ? 0.0 : 0.2);
        Options options = this->someOptions(random);
        options.subsamples.x = options.subsamples.y = 1;
        VxImage<T> result;
        ASSERT_EQ(resample::reslice(scene.image, planes, &result, options, Slab{4}), SUCCESS);
        const AffineMap map = resample::gridOfPlanes(planes).map;
        const unsigned int slices = options.subsamples.z;
        const AffineMap finer = finerMapOf(map, options.subsamples);
        Options nearest = options;
        nearest.interpolator = &NEAREST_NEIGHBOR;
        for (unsigned int k = 0; k < 3; ++k)
            for (unsigned int j = 0; j < 7; ++j)
                for (unsigned int i = 0; i < 9; ++i) {
                    std::vector<double> samples;
                    for (unsigned int z = 4 * k * slices; z < 4 * (k + 1) * slices; ++z)
                        samples.push_back(
                            gridReading(scene.image, positionOf(finer, i, j, z), 0, options));
                    const Position centre = positionOf(map, i, j, 4.0 * k + 1.5);
                    ASSERT_EQ(static_cast<double>(at(result, i, j, k, 0)),
                              electedOf(samples, gridReading(scene.image, centre, 0, nearest)))
                        << i << ' ' << j << ' ' << k << ", " << described(options);
                }
    }
}

TYPED_TEST(LabelsVote, WithABorderOfOnesOwnIsThatOfSingleCalls)
{
    using T = TypeParam;
    Seeded random(941);
    PeriodicBorder periodic;
    for (int n = 0; n < 20; ++n) {
        const Extents extents{random.between(2, 6), random.between(2, 6), random.between(2, 6)};
        const WrappedVolume<T> scene(labelsOf<T>(random, extents, 3));
        Options options(Labels(), &periodic);
        options.subsamples = someSubsamples(random);
        const AffineMap map = n % 2 == 0 ? obliqueMap(random, extents) : halfMap(random, extents);
        VxImage<T> result;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 9, 4, 3), &result, options), SUCCESS);
        expectEveryMean(scene.image, map, result, options);
    }
}

}  // namespace
}  // namespace volux::test
