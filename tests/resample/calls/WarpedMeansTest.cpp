// Antialiasing through a field of displacements: every sub-sample is displaced by itself.
#include <gtest/gtest.h>

#include <algorithm>

#include "resample/AntialiasOracle.h"
#include "resample/WarpOracle.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

using resample::kAntialiased;
using resample::ResampleRegion;

template <class T>
class WarpedMeans : public ::testing::Test {
protected:
    template <class V>
    static void compare(const ViewedVolume<T>& source, const WarpScene<V>& scene, const Grid& grid,
                        const Subsamples& n, const Options& options)
    {
        VxImage<double> result;
        ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &result, options), SUCCESS);
        forEachElement(resample::viewOf(result), [&](auto i, auto j, auto k, auto c) {
            if (::testing::Test::HasFatalFailure())
                return;
            const double mean =
                meanReading(source.image, grid.map, n, i, j, k, static_cast<int>(c), options,
                            [&](const Position& p) {
                                return expectedPlace(scene.vectors.image, scene.warp, p);
                            });
            ASSERT_TRUE(bitEqual(at(result, i, j, k, c), mean))
                << "voxel " << i << ' ' << j << ' ' << k << " channel " << c << ", "
                << described(options) << ", " << described(grid.map) << ", "
                << described(scene.warp);
        });
    }
};
TYPED_TEST_SUITE(WarpedMeans, ElementTypes, ElementTypeNames);

TYPED_TEST(WarpedMeans, AreThoseOfDisplacedSubsamples)
{
    Seeded random(470);
    const Extents extents{9, 7, 5};
    forEachInstructionSet([&] {
        const ViewedVolume<TypeParam> source(random, extents, 2, true);
        const WarpScene<float> scene(random, {6, 4, 5}, extents, 2.0);
        const Grid grid = gridOf(obliqueMap(random, extents, 0.3), 19, 4, 3);
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            Options options(interpolator, border, insideValue<TypeParam>(random));
            options.subsamples = {random.between(1, 4), random.between(1, 3), random.between(1, 3)};
            this->compare(source, scene, grid, options.subsamples, options);
        });
    });
}

// The longer sides of a voxel are counted where the maps lead it, whatever the vectors do.
TYPED_TEST(WarpedMeans, CountWithTheStepsInTheSource)
{
    Seeded random(471);
    const Extents extents{9, 7, 5};
    const ViewedVolume<TypeParam> source(random, extents, 1, false);
    WarpScene<double> scene(random, {6, 4, 5}, extents, 2.0);
    scene.warp.toVoxels = {{{4, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 1.25, 0}}};
    const Grid grid = gridOf({{{0.5, 0, 0, 0.1}, {0, 2, 0, 0.2}, {0, 0, 2, 0.3}}}, 7, 4, 3);
    Options options;
    options.subsamples = kAntialiased;
    this->compare(source, scene, grid, {2, 1, 3}, options);
}

TYPED_TEST(WarpedMeans, OfABoxAreThoseOfTheWhole)
{
    Seeded random(472);
    const Extents extents{12, 9, 8};
    const ViewedVolume<TypeParam> source(random, extents, 1, false);
    const WarpScene<float> scene(random, {6, 4, 5}, extents, 1.5);
    const Grid grid = gridOf(obliqueMap(random, extents, 0.3), 10, 8, 6);
    Options options;
    options.subsamples = {2, 3, 2};
    VxImage<TypeParam> whole;
    ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &whole, options), SUCCESS);
    ResampleRegion region;
    region.sourceWidth = extents.width;
    region.sourceHeight = extents.height;
    region.sourceDepth = extents.depth;
    region.output = Rect(3, 7, 2, 6, 1, 4);
    Rect box;
    ASSERT_EQ(region.support(grid, scene.warp, &box, options), SUCCESS);
    region.brickX = box.xStart;
    region.brickY = box.yStart;
    region.brickZ = box.zStart;
    View<TypeParam> brick = source.view;
    brick.data = &elementOf(source.view, box.xStart, box.yStart, box.zStart, 0);
    brick.width = box.width();
    brick.height = box.height();
    brick.depth = box.depth();
    VxImage<TypeParam> part;
    ASSERT_EQ(resample::resample(brick, grid, scene.warp, region, &part, options), SUCCESS);
    forEachElement(resample::viewOf(part), [&](auto x, auto y, auto z, auto c) {
        EXPECT_TRUE(bitEqual(at(part, x, y, z, c), at(whole, 3 + x, 2 + y, 1 + z, c)))
            << "voxel " << x << ' ' << y << ' ' << z;
    });
}

// Quarters of a voxel are exact, so that a field which only shifts is another grid, and ties are
// decided at the centres that it leads to.
TEST(WarpedVotes, AreThoseOfTheGridThatTheFieldLeadsTo)
{
    Seeded random(473);
    VxImage<short> source;
    ASSERT_EQ(source.initialize(11, 9, 8, 1), SUCCESS);
    std::generate_n(source.getBufferPointer(), 11 * 9 * 8,
                    [&] { return static_cast<short>(random.below(4)); });
    VxImage<float> field;
    ASSERT_EQ(field.initialize(2, 2, 2, 3), SUCCESS);
    const float shift[] = {1.75F, -0.5F, 1.25F};
    for (int n = 0; n < 8; ++n)
        std::copy_n(shift, 3, field.getBufferPointer() + 3 * n);
    const Warp warp(field, {{{0.0625, 0, 0, 0}, {0, 0.0625, 0, 0}, {0, 0, 0.0625, 0}}}, {});
    const Grid grid = gridOf({{{2, 0, 0, 0.5}, {0, 2, 0, 0.25}, {0, 0, 2, 0.5}}}, 6, 5, 4);
    Grid shifted = grid;
    for (int row = 0; row < 3; ++row)
        shifted.map.rows[row][3] += static_cast<double>(shift[row]);
    Options options(resample::Labels(), Replication(), 7);
    options.subsamples = kAntialiased;
    VxImage<short> expected;
    VxImage<short> result;
    ASSERT_EQ(resample::resample(source, shifted, &expected, options), SUCCESS);
    ASSERT_EQ(resample::resample(source, grid, warp, &result, options), SUCCESS);
    forEachElement(resample::viewOf(result), [&](auto x, auto y, auto z, auto c) {
        EXPECT_EQ(at(result, x, y, z, c), at(expected, x, y, z, c))
            << "voxel " << x << ' ' << y << ' ' << z;
    });
}

}  // namespace
}  // namespace volux::test
