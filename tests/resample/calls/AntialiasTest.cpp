#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::kAntialiased;
using resample::Planes;
using resample::Projection;
using resample::Slab;

Subsamples someSubsamples(Random& random)
{
    constexpr std::array<unsigned int, 8> counts{1, 1, 2, 3, 3, 4, 5, 9};
    return {anyOf(random, counts), anyOf(random, counts), anyOf(random, counts)};
}

Options someOptions(Random& random)
{
    Options options(anyOf(random, kInterpolators), anyOf(random, kBorders), 9);
    options.edgeExtends = random.below(2) == 0;
    options.overflow = random.below(2) == 0 ? Overflow::SATURATE : Overflow::WRAP;
    options.threads = random.between(1, 3);
    options.subsamples = someSubsamples(random);
    return options;
}

template <class T>
class Antialias : public ::testing::Test {
protected:
    template <class R>
    void compare(const VxImage<T>& source, const Grid& grid, const Options& options)
    {
        const LastWords call(described(options) + ", " + described(grid.map));
        VxImage<R> result;
        ASSERT_EQ((resample::resample<T, R>(source, grid, &result, options)), SUCCESS)
            << described(options) << ", " << described(grid.map);
        expectEveryMean(source, grid.map, result, options);
    }

    void compareEveryResult(const VxImage<T>& source, const Grid& grid, const Options& options)
    {
        compare<T>(source, grid, options);
        if constexpr (!std::is_same_v<T, double>)
            compare<double>(source, grid, options);
    }

    AffineMap someMap(const Extents& extents)
    {
        switch (random.below(4)) {
            case 0:
                return axisMap(random, extents);
            case 1:
                return halfMap(random, extents);
            case 2:
                return hugeMap(random, extents);
            default:
                return obliqueMap(random, extents);
        }
    }

    Seeded random{171};
};
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

TYPED_TEST(Antialias, ByWholeFactorsGivesTheMeanOfEachBlock)
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
                               {5.999, 6, "below"}};

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

TYPED_TEST(Antialias, KeepsConstants)
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

// Voxels that a weight of 0 tells apart from the sums of themselves, and rows of any layout.
TYPED_TEST(Antialias, ByWholeFactorsGivesTheMeanBesideRareVoxels)
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
TYPED_TEST(Antialias, ByWholeFactorsGivesTheMeanAlongLongRows)
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
