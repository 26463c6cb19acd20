// Whole factors, which read each voxel once, and what means keep.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::kAntialiased;

template <class T>
class BlockMeans : public Antialias<T> {
};
TYPED_TEST_SUITE(BlockMeans, ElementTypes, ElementTypeNames);

// Blocks of whole voxels, added up from the definition of their mean.
template <class T>
double blockMean(const VxImage<T>& image, const Subsamples& n, unsigned int i, unsigned int j,
                 unsigned int k, unsigned int c)
{
    std::vector<double> voxels;
    for (unsigned int z = k * n.z; z < (k + 1) * n.z; ++z)
        for (unsigned int y = j * n.y; y < (j + 1) * n.y; ++y)
            for (unsigned int x = i * n.x; x < (i + 1) * n.x; ++x)
                voxels.push_back(static_cast<double>(at(image, x, y, z, c)));
    return meanOf(voxels);
}

TYPED_TEST(BlockMeans, AreThoseOfTheVoxels)
{
    using T = TypeParam;
    constexpr std::array<Subsamples, 6> factors{
        {{2, 2, 2}, {4, 4, 4}, {3, 1, 2}, {1, 5, 1}, {7, 2, 3}, {70, 1, 1}}};
    for (const Subsamples& n : factors)
        for (Interpolator* const interpolator :
             {kInterpolators[0], kInterpolators[1], kInterpolators[2]}) {  // labels have a mode
            const unsigned int width = this->random.between(1, 9);
            Volume<T> volume = blankVolume<T>({width * n.x, 4 * n.y, 2 * n.z}, 2);
            for (T& element : volume.block)
                element = someValue<T>(this->random.bits());
            const WrappedVolume<T> scene(volume);
            Options options(interpolator);
            options.subsamples = kAntialiased;
            VxImage<T> result;
            ASSERT_EQ(resize(scene.image, width, 4, 2, Align::EDGES, &result, options), SUCCESS);
            for (unsigned int k = 0; k < 2; ++k)
                for (unsigned int j = 0; j < 4; ++j)
                    for (unsigned int i = 0; i < width; ++i)
                        for (unsigned int c = 0; c < 2; ++c)
                            ASSERT_TRUE(bitEqual(
                                at(result, i, j, k, c),
                                storedReading<T>(blockMean(scene.image, n, i, j, k, c), options)))
                                << described(options) << ", factors " << n.x << ' ' << n.y << ' '
                                << n.z << ", voxel " << i << ' ' << j << ' ' << k;
        }
}

TEST(AntialiasPositions, AreEveryVoxelOnceByAnyWholeFactor)
{
    for (unsigned int factor = 1; factor <= 700; ++factor)
        for (const unsigned int extent : {1U, 2U, 3U, 5U, 10U, 49U, 333U, 1024U}) {
            const Grid grid =
                resample::gridOfSize(ImageSize(factor * extent, 1, 1, 1), VoxelSize(0.3, 1, 1),
                                     extent, 1, 1, Align::EDGES);
            const Subsamples n = subsamplesOf(grid.map, kAntialiased);
            ASSERT_EQ(n.x, factor) << extent;
            const AffineMap finer = finerMapOf(grid.map, n);
            for (unsigned int x = 0; x < factor * extent; x += 1 + x / 7)
                ASSERT_EQ(finer(x, 0, 0).x, x) << factor << " to " << extent;
        }
}

TYPED_TEST(BlockMeans, KeepConstants)
{
    using T = TypeParam;
    for (int n = 0; n < 60; ++n) {
        Volume<T> volume = blankVolume<T>({9, 8, 7});
        const T value = std::is_same_v<T, double> && n % 3 > 0 ? static_cast<T>(n / 7.0)
                                                               : someValue<T>(this->random.bits());
        std::fill(volume.block.begin(), volume.block.end(), value);
        const WrappedVolume<T> scene(volume);
        Options options(kInterpolators[0]);  // the kernel that keeps every constant itself
        options.edgeExtends = true;
        options.subsamples = someSubsamples(this->random);
        VxImage<T> result;
        const Grid grid = gridOf(this->someMap(volume.extents), 5, 4, 3);
        ASSERT_EQ(resample::resample(scene.image, grid, &result, options), SUCCESS);
        for (int at = 0; at < 5 * 4 * 3; ++at)
            ASSERT_TRUE(bitEqual(result.getBufferPointer()[at], value)) << described(options);
    }
}

TEST(AntialiasMean, KeepsTheLargestDoubles)
{
    Volume<double> volume = blankVolume<double>({4, 4, 4});
    for (const double value : {1.7976931348623157e308, -1.7976931348623157e308, 5e-324, -0.0}) {
        std::fill(volume.block.begin(), volume.block.end(), value);
        const WrappedVolume<double> scene(volume);
        Options options{NearestNeighbor()};
        options.subsamples = kAntialiased;
        VxImage<double> result;
        ASSERT_EQ(resize(scene.image, 2, 2, 2, Align::EDGES, &result, options), SUCCESS);
        EXPECT_TRUE(bitEqual(result(1, 0, 1, 0), value));
    }
}

// The error of a sum may exceed the range of voxels that hardly differ.
TEST(AntialiasMean, StaysAmongDoublesThatHardlyDiffer)
{
    Seeded random(83);
    for (int round = 0; round < 4000; ++round) {
        const Subsamples n = {random.between(1, 9), random.between(1, 5), random.between(1, 4)};
        const unsigned int width = random.between(1, 6);
        Volume<double> volume = blankVolume<double>({width * n.x, n.y, n.z});
        const double fraction = static_cast<double>(random.bits()) - 0x1p63;
        const double least = std::ldexp(fraction, static_cast<int>(random.below(2090)) - 1130);
        const unsigned int steps = random.below(3);
        for (double& voxel : volume.block) {
            voxel = least;
            for (unsigned int step = random.below(steps + 1); step > 0; --step)
                voxel = std::nextafter(voxel, std::numeric_limits<double>::max());
        }
        const WrappedVolume<double> scene(volume);
        Options options(kInterpolators[random.below(2)]);
        options.subsamples = kAntialiased;
        VxImage<double> result;
        ASSERT_EQ(resize(scene.image, width, 1, 1, Align::EDGES, &result, options), SUCCESS);
        for (unsigned int i = 0; i < width; ++i)
            ASSERT_TRUE(bitEqual(at(result, i, 0, 0, 0), blockMean(scene.image, n, i, 0, 0, 0)))
                << "round " << round << ", voxel " << i;
    }
}

// Linear multiplies the next voxel by 0, also that of the next block.
TEST(AntialiasMean, IsNaNWhereASubsampleIs)
{
    for (const float odd :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        Volume<float> volume = blankVolume<float>({12, 4, 4});
        volume.block[4] = odd;  // the first voxel of the second of three blocks
        const WrappedVolume<float> scene(volume);
        Options options;
        options.subsamples = kAntialiased;
        VxImage<float> result;
        ASSERT_EQ(resize(scene.image, 3, 1, 1, Align::EDGES, &result, options), SUCCESS);
        EXPECT_TRUE(std::isnan(result(0, 0, 0, 0)));
        EXPECT_EQ(std::isnan(result(1, 0, 0, 0)), std::isnan(odd));
        EXPECT_EQ(result(2, 0, 0, 0), 0.0F);
        options.interpolator = kInterpolators[0];
        ASSERT_EQ(resize(scene.image, 3, 1, 1, Align::EDGES, &result, options), SUCCESS);
        EXPECT_EQ(result(0, 0, 0, 0), 0.0F);
    }
}

// Voxels that a weight of 0 tells apart from the sums of themselves, and rows of any layout.
TYPED_TEST(BlockMeans, BesideRareVoxelsAreThoseOfTheSubsamples)
{
    using T = TypeParam;
    for (int n = 0; n < 150; ++n) {
        const Subsamples factors = {this->random.between(1, 9), this->random.between(1, 3),
                                    this->random.between(1, 3)};
        const Extents extents{factors.x * this->random.between(1, 5),
                              factors.y * this->random.between(1, 20),
                              factors.z * this->random.between(1, 3)};
        Volume<T> volume = randomVolume<T>(
            this->random, randomLayout(this->random, extents, this->random.between(1, 2)));
        if (n % 3 == 0)
            std::fill(volume.block.begin(), volume.block.end(), static_cast<T>(-0.0));
        volume.block[this->random.below(static_cast<unsigned int>(volume.block.size()))] =
            rareElement<T>(this->random);
        WrappedVolume<T> scene(volume);
        const Grid grid = resample::gridOfSize(
            scene.image.getImageSize(), VoxelSize(1, 1, 1), extents.width / factors.x,
            extents.height / factors.y, extents.depth / factors.z, Align::EDGES);
        Options options(anyOf(this->random, kInterpolators), anyOf(this->random, kBorders),
                        std::is_floating_point_v<T> && n % 2 == 0 ? INFINITY : 9);
        options.subsamples = kAntialiased;
        options.threads = this->random.between(1, 3);
        this->compareEveryResult(scene.image, grid, options);
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

// More blocks than are added up together, of each width that has a loop of its own.
TYPED_TEST(BlockMeans, AlongLongRowsAreThoseOfTheSubsamples)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width <= 10; ++width) {
            Volume<TypeParam> volume = blankVolume<TypeParam>({width * 270, 2, 2});
            fillAtRandom(volume, this->random, width % 2 == 0);
            WrappedVolume<TypeParam> scene(volume);
            const Grid grid = resample::gridOfSize(scene.image.getImageSize(), VoxelSize(1, 1, 1),
                                                   270, 1, 2, Align::EDGES);
            Options options(anyOf(this->random, kInterpolators));
            options.subsamples = kAntialiased;
            this->template compare<TypeParam>(scene.image, grid, options);
        }
    });
}

// A zone plate, whose frequency along each axis grows from 0 in the middle to 1/2 at the edges.
// Where it passes 1/8 along any of them, a quarter of the voxels cannot hold it, and what is left
// of it is aliased.
class AntialiasZonePlate : public ::testing::Test {
protected:
    explicit AntialiasZonePlate(unsigned int depth = 1)
        : volume(blankVolume<float>({kExtent, kExtent, depth}))
    {
        constexpr double kPi = 3.14159265358979323846;
        float* element = volume.block.data();
        for (unsigned int z = 0; z < depth; ++z)
            for (unsigned int y = 0; y < kExtent; ++y)
                for (unsigned int x = 0; x < kExtent; ++x) {
                    const double square =
                        squareOf(x, kExtent) + squareOf(y, kExtent) + squareOf(z, depth);
                    *element++ = static_cast<float>(std::cos(kPi * square / kExtent));
                }
    }

    // The mean square of the voxels that are aliased, of a quarter of the voxels along each axis.
    double aliased(const Options& options)
    {
        const WrappedVolume<float> scene(volume);
        VxImage<float> result;
        const unsigned int depth = std::max(volume.extents.depth / 4, 1U);
        EXPECT_EQ(
            resize(scene.image, kExtent / 4, kExtent / 4, depth, Align::EDGES, &result, options),
            SUCCESS);
        double energy = 0.0;
        unsigned int count = 0;
        for (unsigned int z = 0; z < depth; ++z)
            for (unsigned int y = 0; y < kExtent / 4; ++y)
                for (unsigned int x = 0; x < kExtent / 4; ++x)
                    if (std::max({squareOf(x, kExtent / 4), squareOf(y, kExtent / 4),
                                  squareOf(z, depth)}) > (kExtent / 32.0) * (kExtent / 32.0)) {
                        const auto voxel = static_cast<double>(at(result, x, y, z, 0));
                        energy += voxel * voxel;
                        ++count;
                    }
        return energy / count;
    }

    static Options antialiased()
    {
        Options options;
        options.subsamples = kAntialiased;
        return options;
    }

private:
    static constexpr unsigned int kExtent = 128;

    static double squareOf(unsigned int n, unsigned int extent)
    {
        const double distance = n - (extent - 1) / 2.0;
        return distance * distance;
    }

    Volume<float> volume;
};

struct AntialiasZoneVolume : AntialiasZonePlate {
    AntialiasZoneVolume() : AntialiasZonePlate(128) {}
};

TEST_F(AntialiasZonePlate, KeepsAtMostATenthOfTheAliasedEnergy)
{
    const double single = aliased(NearestNeighbor());
    EXPECT_NEAR(single, 0.5, 0.02);  // that of the plate itself
    EXPECT_LE(aliased(antialiased()), single / 10.0);
}

TEST_F(AntialiasZoneVolume, KeepsAtMostATenthOfTheAliasedEnergy)
{
    EXPECT_LE(aliased(antialiased()), aliased(NearestNeighbor()) / 10.0);
    EXPECT_LE(aliased(antialiased()), aliased(Linear()) / 10.0);
    EXPECT_LE(aliased(antialiased()), aliased(Cubic()) / 10.0);
}

}  // namespace
}  // namespace volux::test
