#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::ResampleRegion;

// A volume, a grid and a way to read it; the whole result, and that of any box from the smallest
// brick that serves it.
template <class T>
class Bricks {
public:
    Bricks(const Volume<T>& volume, const Grid& grid, const Options& options)
        : scene_(volume), grid_(grid), options_(options)
    {
        region_.sourceWidth = scene_.image.getWidth();
        region_.sourceHeight = scene_.image.getHeight();
        region_.sourceDepth = scene_.image.getDepth();
        EXPECT_EQ(resample::resample(scene_.image, grid, &whole_, options), SUCCESS);
    }

    void expectSameBits(const Rect& output)
    {
        region_.output = output;
        Rect support;
        ASSERT_EQ(region_.support(grid_, &support, options_), SUCCESS);
        VxImage<T> brick;
        VxImage<T> part;
        ASSERT_EQ(perform(support, brick, part), SUCCESS);
        for (unsigned int z = 0; z < output.depth(); ++z)
            for (unsigned int y = 0; y < output.height(); ++y)
                for (unsigned int x = 0; x < output.width(); ++x)
                    for (unsigned int c = 0; c < part.getChannels(); ++c)
                        ASSERT_TRUE(bitEqual(
                            at(part, x, y, z, c),
                            at(whole_, output.xStart + x, output.yStart + y, output.zStart + z, c)))
                            << "voxel " << x << ' ' << y << ' ' << z << " channel " << c
                            << " of the box from " << output.xStart << ' ' << output.yStart << ' '
                            << output.zStart << ", " << described(options_) << ", "
                            << described(grid_.map) << ", " << scene_.volume;
        expectNoLessServes(support);
    }

private:
    ErrorType perform(const Rect& box, VxImage<T>& brick, VxImage<T>& part)
    {
        region_.brickX = box.xStart;
        region_.brickY = box.yStart;
        region_.brickZ = box.zStart;
        EXPECT_EQ(scene_.image.crop(box, &brick), SUCCESS);
        return resample::resample(brick, grid_, region_, &part, options_);
    }

    // A brick that is thinner by a voxel at any end is refused.
    void expectNoLessServes(const Rect& support)
    {
        const auto refused = [&](Rect box, ErrorType code) {
            VxImage<T> brick;
            VxImage<T> part;
            EXPECT_EQ(perform(box, brick, part), code);
            EXPECT_EQ(part.getBufferPointer(), nullptr);
        };
        for (const bool atEnd : {false, true}) {
            Rect box = support;
            (atEnd ? --box.xEnd : ++box.xStart);
            if (support.width() > 1)
                refused(box, ERR_INVALID_X);
            box = support;
            (atEnd ? --box.yEnd : ++box.yStart);
            if (support.height() > 1)
                refused(box, ERR_INVALID_Y);
            box = support;
            (atEnd ? --box.zEnd : ++box.zStart);
            if (support.depth() > 1)
                refused(box, ERR_INVALID_Z);
        }
    }

    WrappedVolume<T> scene_;
    Grid grid_;
    Options options_;
    ResampleRegion region_;
    VxImage<T> whole_;
};

template <class T>
class Region : public ::testing::Test {
protected:
    // Every box of the output whose ends are any two cuts along each axis.
    static void everyCut(Bricks<T> bricks, const Grid& grid)
    {
        for (unsigned int z0 = 0; z0 < grid.depth; ++z0)
            for (unsigned int z1 = z0; z1 < grid.depth; ++z1)
                for (unsigned int y0 = 0; y0 < grid.height; ++y0)
                    for (unsigned int y1 = y0; y1 < grid.height; ++y1)
                        for (unsigned int x0 = 0; x0 < grid.width; ++x0)
                            for (unsigned int x1 = x0; x1 < grid.width; ++x1) {
                                bricks.expectSameBits(Rect(x0, x1, y0, y1, z0, z1));
                                if (::testing::Test::HasFatalFailure())
                                    return;
                            }
    }
};
TYPED_TEST_SUITE(Region, ElementTypes, ElementTypeNames);

TYPED_TEST(Region, GivesTheBitsOfTheWholeForEveryCut)
{
    Seeded random(71);
    const std::array<Extents, 3> volumes{{{9, 5, 4}, {3, 8, 6}, {12, 2, 7}}};
    for (const Extents& extents : volumes)
        for (Interpolator* const interpolator : kInterpolators) {
            Options options(interpolator, kBorders[random.below(2)], 3);
            options.threads = 1;
            options.edgeExtends = random.below(2) == 0;
            const AffineMap map =
                random.below(2) == 0 ? obliqueMap(random, extents) : axisMap(random, extents);
            const Grid grid = gridOf(map, 5, 3, 3);
            Volume<TypeParam> volume = blankVolume<TypeParam>(extents, 2);
            fillAtRandom(volume, random, false);
            this->everyCut({volume, grid, options}, grid);
        }
}

TYPED_TEST(Region, GivesTheMeansOfTheWholeForEveryCut)
{
    Seeded random(72);
    const Extents extents{9, 8, 6};
    for (Interpolator* const interpolator : kInterpolators)
        for (const bool isOblique : {false, true}) {
            Options options(interpolator, kBorders[random.below(2)], 3);
            options.threads = 1;
            options.edgeExtends = random.below(2) == 0;
            options.subsamples = {1 + random.below(3), 2, 1 + random.below(2)};
            const AffineMap map =
                isOblique ? obliqueMap(random, extents) : axisMap(random, extents);
            const Grid grid = gridOf(map, 4, 3, 2);
            Volume<TypeParam> volume = blankVolume<TypeParam>(extents, 2);
            fillAtRandom(volume, random, false);
            this->everyCut({volume, grid, options}, grid);
        }
}

TYPED_TEST(Region, GivesTheBlocksOfTheWholeForEveryCut)
{
    Seeded random(73);
    const Grid grid = resample::gridOfSize(ImageSize(12, 6, 6, 1), VoxelSize(1, 1, 1), 4, 3, 2,
                                           resample::Align::EDGES);
    for (Interpolator* const interpolator : kInterpolators) {
        Options options(interpolator, kBorders[random.below(2)], 3);
        options.threads = 1;
        options.subsamples = resample::kAntialiased;
        Volume<TypeParam> volume = blankVolume<TypeParam>({12, 6, 6}, 2);
        fillAtRandom(volume, random, true);
        this->everyCut({volume, grid, options}, grid);
    }
}

// Boxes of a grid of 5 voxels along each axis, most of which begin and end differently on each.
template <class T>
void expectSomeCuts(Bricks<T> bricks)
{
    constexpr std::array<std::array<unsigned int, 2>, 4> cuts{{{0, 4}, {3, 4}, {0, 1}, {4, 4}}};
    for (const auto& z : cuts)
        for (const auto& y : cuts)
            for (const auto& x : {cuts[0], cuts[1]}) {
                bricks.expectSameBits(Rect(x[0], x[1], y[0], y[1], z[0], z[1]));
                if (::testing::Test::HasFatalFailure())
                    return;
            }
}

// Along one axis of the result positions run from beyond 32 bits into the source, or back. What a
// box reads depends on which rows and slices it begins and ends with.
TEST(RegionOfAFarMap, GivesTheBitsOfTheWholeForEveryBox)
{
    const Volume<short> volume = variedVolume<short>({5, 4, 3}, 2);
    for (int axis = 0; axis < 3; ++axis)
        for (const bool isBack : {false, true})
            for (const double shear : {0.0, 0.25})
                for (const unsigned int n : {1U, 2U})
                    for (Interpolator* const interpolator : kInterpolators) {
                        Options options(interpolator, Replication());
                        options.threads = 1;
                        options.edgeExtends = true;
                        options.subsamples = {n, 1, n};
                        AffineMap map = {{{1, 0, shear, -1}, {shear, 1, 0, -1}, {0, shear, 1, -1}}};
                        map.rows[axis][axis] = isBack ? -1e9 : 1e9;
                        map.rows[axis][3] = isBack ? 4e9 + 2.0 : 2.0;
                        expectSomeCuts<short>({volume, gridOf(map, 5, 5, 5), options});
                        ASSERT_FALSE(HasFatalFailure());
                    }
}

// Each axis of the source is read forwards or backwards.
TEST(RegionOfAFlippedMap, GivesTheBitsOfTheWholeForEveryBox)
{
    Seeded random(75);
    const Volume<short> volume = variedVolume<short>({7, 6, 5}, 2);
    for (unsigned int flips = 0; flips < 8; ++flips)
        for (const double step : {1.0, 1.7})
            for (Interpolator* const interpolator : kInterpolators) {
                Options options(interpolator, kBorders[random.below(2)], 3);
                options.threads = 1;
                options.edgeExtends = random.below(2) == 0;
                options.subsamples.y = 1 + random.below(2);
                AffineMap map;
                for (int axis = 0; axis < 3; ++axis) {
                    const bool isBack = (flips >> axis) % 2 == 1;
                    map.rows[axis][axis] = isBack ? -step : step;
                    map.rows[axis][3] = isBack ? 5.0 : -1.0;
                }
                expectSomeCuts<short>({volume, gridOf(map, 5, 5, 5), options});
                ASSERT_FALSE(HasFatalFailure());
            }
}

class RegionRefuses : public ::testing::Test {
protected:
    RegionRefuses() : scene(countingVolume<short>({4, 4, 4}))
    {
        region.sourceWidth = region.sourceHeight = region.sourceDepth = 4;
        region.output = Rect(0, 3, 0, 3, 0, 3);
    }

    ErrorType perform(const Options& options = Options())
    {
        return resample::resample(scene.image, gridOf(AffineMap(), 4, 4, 4), region, &result,
                                  options);
    }

    WrappedVolume<short> scene;
    ResampleRegion region;
    VxImage<short> result;
};

TEST_F(RegionRefuses, NothingThatIsRight)
{
    EXPECT_EQ(perform(), SUCCESS);
}

TEST_F(RegionRefuses, AnOutputBoxBeyondTheGrid)
{
    region.output.xEnd = 4;
    EXPECT_EQ(perform(), ERR_INVALID_X);
    region.output = Rect(0, 3, 3, 2, 0, 3);
    EXPECT_EQ(perform(), ERR_INVALID_Y);
    region.output = Rect(0, 3, 0, 3, 4, 4);
    EXPECT_EQ(perform(), ERR_INVALID_Z);
}

TEST_F(RegionRefuses, ABrickBeyondTheSource)
{
    region.brickX = 1;
    EXPECT_EQ(perform(), ERR_INVALID_X);
    region.brickX = 0xFFFFFFFFU;
    EXPECT_EQ(perform(), ERR_INVALID_X);
    region.brickX = 0;
    region.sourceDepth = 3;
    EXPECT_EQ(perform(), ERR_INVALID_Z);
    region.sourceDepth = 0;
    EXPECT_EQ(perform(), ERR_INVALID_ARGUMENT);
}

TEST_F(RegionRefuses, PoliciesThatTakeABrickForAnImage)
{
    struct Own : Linear {
    } own;
    EXPECT_EQ(perform(Options(&own)), ERR_INVALID_ARGUMENT);
    Rect box;
    const Grid grid = gridOf(AffineMap(), 4, 4, 4);
    EXPECT_EQ(region.support(grid, &box, Options(&own)), ERR_INVALID_ARGUMENT);
    EXPECT_EQ(region.support(grid, nullptr), ERR_NULL_POINTER);
}

}  // namespace
}  // namespace volux::test
