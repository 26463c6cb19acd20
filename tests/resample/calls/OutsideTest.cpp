// Where the replicated edge ends: half a voxel beyond the outer centres, on grids and planes.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::Planes;
using resample::Projection;
using resample::ResampleRegion;
using resample::Slab;

constexpr double kOutside = 100.0;  // more than any voxel

const Options kExtending = [] {
    Options options;
    options.edgeExtends = true;
    return options;
}();

template <class T>
Volume<T> smallVoxels(const Extents& extents, unsigned int channels = 1)
{
    Seeded random(11);
    Volume<T> volume = blankVolume<T>(extents, channels);
    for (T& voxel : volume.block)
        voxel = static_cast<T>(1 + random.below(50));
    return volume;
}

struct Boundary {
    double position;
    bool isInView;
};

std::vector<Boundary> boundariesOf(unsigned int extent)
{
    const double end = extent - 0.5;
    return {{-0.5, true},
            {std::nextafter(-0.5, -1.0), false},
            {std::nextafter(-0.5, 0.0), true},
            {end, false},
            {std::nextafter(end, 0.0), true},
            {std::nextafter(end, 1e9), false},
            {-0.0, true},
            {extent - 1.0, true},
            {-1.0, false},
            {static_cast<double>(extent), false},
            {-0x1p30, false},
            {0x1p31, false},
            {-2147483649.0, false},
            {4294967296.0 + 1.0, false},
            {1e300, false},
            {-std::numeric_limits<double>::max(), false}};
}

template <class T>
class Outside : public ::testing::Test {
protected:
    // One voxel at a position on one axis, in the middle of the others: by a map along the axes,
    // and by one that is not, whose products with index 0 vanish as well.
    static void compare(const VxImage<T>& source, std::size_t axis, const Boundary& boundary)
    {
        for (const double slope : {0.0, 0.25})
            for (Interpolator* const interpolator : kInterpolators) {
                AffineMap map;
                map.rows[0][1] = map.rows[1][2] = slope;
                for (std::size_t n = 0; n < 3; ++n)
                    map.rows[n][3] = n == axis ? boundary.position : 1.0;
                const Options options(interpolator, Replication(), kOutside);
                VxImage<T> result;
                ASSERT_EQ(resample::resample(source, gridOf(map, 1, 1, 1), &result, options),
                          SUCCESS);
                const Position p = {map.rows[0][3], map.rows[1][3], map.rows[2][3]};
                const T expected =
                    boundary.isInView ? element(source, p, 0, options) : static_cast<T>(kOutside);
                ASSERT_TRUE(bitEqual(result(0, 0, 0, 0), expected))
                    << describedCall(source, p, 0, options) << ", " << described(map);
            }
    }
};
TYPED_TEST_SUITE(Outside, ElementTypes, ElementTypeNames);

TYPED_TEST(Outside, BeginsHalfAVoxelBeyondTheCentres)
{
    for (const Extents& extents : {Extents{9, 4, 5}, Extents{17, 3, 2}, Extents{8, 2, 64}}) {
        const WrappedVolume<TypeParam> scene(smallVoxels<TypeParam>(extents));
        const std::array<unsigned int, 3> sizes{extents.width, extents.height, extents.depth};
        forEachInstructionSet([&] {
            for (std::size_t axis = 0; axis < 3; ++axis)
                for (const Boundary& boundary : boundariesOf(sizes.at(axis)))
                    this->compare(scene.image, axis, boundary);
        });
    }
}

// Grids in which the view begins and ends within blocks, tiles and vectors.
TYPED_TEST(Outside, IsRespectedOnEveryGridByAnyNumberOfThreads)
{
    const WrappedVolume<TypeParam> scene(smallVoxels<TypeParam>({19, 7, 6}, 2));
    const std::array<Grid, 4> grids{
        gridOf({{{0.11, 0, 0, -4.3}, {0, 0.7, 0, -2.1}, {0, 0, 1.3, -2.7}}}, 301, 17, 9),
        gridOf({{{-0.13, 0, 0, 24.6}, {0, -0.9, 0, 9.3}, {0, 0, 1, -1}}}, 270, 15, 8),
        gridOf({{{0.1, 0.05, 0.02, -4.0}, {-0.02, 0.6, 0.1, 1.0}, {0.01, -0.2, 0.9, -1}}}, 301, 17,
               9),
        gridOf({{{0.1, 0.3, 0, 40}, {-0.3, 0.1, 0, 40}, {0, 0, 1, 0}}}, 140, 3, 2)};
    forEachInstructionSet([&] {
        for (const Grid& grid : grids)
            for (Interpolator* const interpolator : kInterpolators)
                for (const unsigned int threads : {1U, 2U}) {
                    Options options(interpolator, Replication(), kOutside);
                    options.threads = threads;
                    expectGrid(scene.image, grid, options);
                }
    });
}

TYPED_TEST(Outside, OfAnExtendingEdgeIsVoluxCores)
{
    const WrappedVolume<TypeParam> scene(smallVoxels<TypeParam>({9, 4, 3}));
    const AffineMap map = {{{0.7, 0.1, 0, -3}, {0, 0.9, 0.1, -3}, {0.1, 0, 0.8, -3}}};
    VxImage<TypeParam> result;
    ASSERT_EQ(resample::resample(scene.image, gridOf(map, 20, 11, 9), &result, kExtending),
              SUCCESS);
    for (unsigned int k = 0; k < 9; ++k)
        for (unsigned int j = 0; j < 11; ++j)
            for (unsigned int i = 0; i < 20; ++i)
                ASSERT_TRUE(bitEqual(at(result, i, j, k, 0),
                                     element(scene.image, map(i, j, k), 0, kExtending)))
                    << i << ' ' << j << ' ' << k;
}

TYPED_TEST(Outside, IsNoOtherWithConstantWhetherTheEdgeExtendsOrNot)
{
    const WrappedVolume<TypeParam> scene(smallVoxels<TypeParam>({9, 4, 3}));
    const AffineMap along = {{{0.7, 0, 0, -3}, {0, 0.9, 0, -3}, {0, 0, 0.8, -3}}};
    const AffineMap oblique = {{{0.7, 0.1, 0, -3}, {0, 0.9, 0.1, -3}, {0.1, 0, 0.8, -3}}};
    for (const AffineMap& map : {along, oblique})
        for (Interpolator* const interpolator : kInterpolators) {
            Options options(interpolator, Constant(), kOutside);
            VxImage<TypeParam> ending;
            VxImage<TypeParam> extending;
            const Grid grid = gridOf(map, 20, 11, 9);
            ASSERT_EQ(resample::resample(scene.image, grid, &ending, options), SUCCESS);
            options.edgeExtends = true;
            ASSERT_EQ(resample::resample(scene.image, grid, &extending, options), SUCCESS);
            ASSERT_EQ(std::memcmp(ending.getBufferPointer(), extending.getBufferPointer(),
                                  20 * 11 * 9 * sizeof(TypeParam)),
                      0);
        }
}

// A row of tens between zeros; one plane of each slab of three is out of view.
TEST(OutsideOfASlab, IsProjectedPlaneByPlane)
{
    Volume<float> volume = blankVolume<float>({9, 1, 2});
    for (float& voxel : volume.block)
        voxel = 10.0F;
    const WrappedVolume<float> scene(volume);
    Planes planes;
    planes.step = {0, 0, 1};
    planes.width = 9;
    planes.height = 1;
    const auto first = [&](Projection projection, double outside) {
        VxImage<float> result;
        EXPECT_EQ(resample::reslice(scene.image, planes, &result,
                                    Options(Linear(), Replication(), outside), {3, projection}),
                  SUCCESS);
        return result(4, 0, 0, 0);
    };
    EXPECT_EQ(first(Projection::MEAN, 0.0), static_cast<float>(20.0 / 3.0));
    EXPECT_EQ(first(Projection::MINIMUM, 0.0), 0.0F);
    EXPECT_EQ(first(Projection::MAXIMUM, 0.0), 10.0F);
    EXPECT_EQ(first(Projection::MAXIMUM, 20.0), 20.0F);
    EXPECT_EQ(first(Projection::MINIMUM, 20.0), 10.0F);
}

TEST(OutsideOfAPlane, IsZeroUnlessSaid)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    Planes planes;
    planes.origin = {-1, 0, 1};
    planes.width = 5;
    planes.height = 1;
    VxImage<short> result;
    ASSERT_EQ(resample::reslice(scene.image, planes, &result), SUCCESS);
    EXPECT_EQ(result(0, 0, 0, 0), 0);
    EXPECT_EQ(result(1, 0, 0, 0), scene.image(0, 0, 1, 0));
    EXPECT_EQ(result(3, 0, 0, 0), scene.image(2, 0, 1, 0));
    EXPECT_EQ(result(4, 0, 0, 0), 0);
}

// As a float, since the source could hold no other.
TEST(OutsideOfFloats, IsTheValueAsTheSourceHoldsIt)
{
    const WrappedVolume<float> scene(countingVolume<float>({3, 3, 3}));
    const Grid grid = gridOf({{{1, 0, 0, 7}, {0, 1, 0, 0}, {0, 0, 1, 0}}}, 1, 1, 1);
    for (const double value : {0.1, -0.0, std::numeric_limits<double>::infinity(), 1e-60}) {
        VxImage<float> result;
        ASSERT_EQ(
            resample::resample(scene.image, grid, &result, Options(Cubic(), Replication(), value)),
            SUCCESS);
        EXPECT_TRUE(bitEqual(result(0, 0, 0, 0), static_cast<float>(value))) << value;
    }
}

TEST(OutsideByPoliciesOfTheCallersOwn, IsTheirs)
{
    struct OwnEdge : Replication {
    } edge;
    struct OwnKernel : Linear {
    } kernel;
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    const Grid grid = gridOf({{{1, 0, 0, 7}, {0, 1, 0, 0}, {0, 0, 1, 0}}}, 1, 1, 1);
    for (const Options& options :
         {Options(&LINEAR, &edge, -4), Options(&kernel, &REPLICATION, -4)}) {
        VxImage<short> result;
        ASSERT_EQ(resample::resample(scene.image, grid, &result, options), SUCCESS);
        EXPECT_EQ(result(0, 0, 0, 0), scene.image(2, 0, 0, 0));
    }
}

// The last of three voxels that are two apart is on the edge of five.
TEST(OutsideOfAResizedVolume, IsTheEdgeStill)
{
    WrappedVolume<short> scene(countingVolume<short>({5, 2, 2}));
    const VoxelSize spacing(2, 1, 1);
    const Grid grid = resample::gridOfSpacing(scene.image.getImageSize(), VoxelSize(1, 1, 1),
                                              spacing, Align::EDGES);
    ASSERT_EQ(grid.map(2, 0, 0).x, 4.5);
    VxImage<short> resized;
    VxImage<short> resampled;
    VxImage<short> extended;
    const Options options(Linear(), Replication(), -4);
    ASSERT_EQ(resample::resize(scene.image, spacing, Align::EDGES, &resized, options), SUCCESS);
    ASSERT_EQ(resample::resample(scene.image, grid, &resampled, options), SUCCESS);
    ASSERT_EQ(resample::resample(scene.image, grid, &extended, kExtending), SUCCESS);
    EXPECT_EQ(resized(2, 0, 0, 0), scene.image(4, 0, 0, 0));
    EXPECT_EQ(resampled(2, 0, 0, 0), -4);
    EXPECT_EQ(extended(2, 0, 0, 0), scene.image(4, 0, 0, 0));
}

TEST(OutsideAtPositions, IsTheEdgeAsVoluxCoreReadsIt)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    const Position far = {7, 0, 0};
    short result = 0;
    ASSERT_EQ(resample::sample(scene.image, &far, 1, resample::Units::VOXELS, 0, &result), SUCCESS);
    EXPECT_EQ(result, scene.image(2, 0, 0, 0));
}

class OutsideSupport : public ::testing::Test {
protected:
    Rect supportOf(const Grid& grid, const Options& options)
    {
        ResampleRegion region;
        region.sourceWidth = 40;
        region.sourceHeight = 30;
        region.sourceDepth = 20;
        region.output = Rect(0, grid.width - 1, 0, grid.height - 1, 0, grid.depth - 1);
        Rect box;
        EXPECT_EQ(region.support(grid, &box, options), SUCCESS);
        return box;
    }

    static std::size_t voxels(const Rect& box)
    {
        return std::size_t{box.width()} * box.height() * box.depth();
    }
};

TEST_F(OutsideSupport, IsOneVoxelWhereNothingIsRead)
{
    const Grid beside = gridOf({{{1, 0.1, 0, 3}, {0, 1, 0, -60}, {0.2, 0, 1, 2}}}, 20, 20, 9);
    for (Interpolator* const interpolator : kInterpolators) {
        Options options(interpolator, Replication());
        EXPECT_EQ(voxels(supportOf(beside, options)), 1U);
        options.edgeExtends = true;
        EXPECT_GT(voxels(supportOf(beside, options)), 1U);
    }
}

// Far away indices wrap, and may lead anywhere; in view they do not.
TEST_F(OutsideSupport, IsThatOfThePositionsInView)
{
    const Grid near = gridOf({{{1, 0, 0, 37}, {0, 1, 0, 3}, {0, 0, 1, 5}}}, 1, 1, 1);
    const Grid far = gridOf({{{1e11, 0, 0, 37}, {0, 1, 0, 3}, {0, 0, 1, 5}}}, 3, 1, 1);
    const Rect fromNear = supportOf(near, Linear());
    const Rect fromFar = supportOf(far, Linear());
    EXPECT_EQ(fromNear.xStart, 37U);
    EXPECT_EQ(fromNear.xEnd, 38U);
    EXPECT_EQ(fromFar.xStart, 37U);
    EXPECT_EQ(fromFar.xEnd, 39U);
}

// Boxes of a grid far larger than the source, from the smallest brick.
TEST_F(OutsideSupport, HoldsWhatAnyBoxReads)
{
    Seeded random(29);
    WrappedVolume<short> scene(smallVoxels<short>({40, 30, 20}));
    for (int n = 0; n < 300; ++n) {
        const double zoom = anyOf(random, std::array<double, 4>{1.0, 1.0, 3.0, 1e9});
        const AffineMap map = random.below(2) == 0 ? obliqueMap(random, scene.volume.extents, zoom)
                                                   : axisMap(random, scene.volume.extents);
        const Options options(kInterpolators[random.below(3)], Replication(), kOutside);
        const Grid grid = gridOf(map, 60, 20, 20);
        ResampleRegion region;
        region.sourceWidth = 40;
        region.sourceHeight = 30;
        region.sourceDepth = 20;
        const unsigned int x = random.below(60);
        const unsigned int y = random.below(20);
        const unsigned int z = random.below(20);
        region.output = Rect(x, random.between(x, 59), y, random.between(y, 19), z, z);
        Rect box;
        VxImage<short> brick;
        VxImage<short> part;
        ASSERT_EQ(region.support(grid, &box, options), SUCCESS);
        ASSERT_EQ(scene.image.crop(box, &brick), SUCCESS);
        region.brickX = box.xStart;
        region.brickY = box.yStart;
        region.brickZ = box.zStart;
        ASSERT_EQ(resample::resample(brick, grid, region, &part, options), SUCCESS);
        for (unsigned int j = 0; j < part.getHeight(); ++j)
            for (unsigned int i = 0; i < part.getWidth(); ++i) {
                const Position p = map(x + i, y + j, z);
                ASSERT_EQ(at(part, i, j, 0, 0), gridElement(scene.image, p, 0, options))
                    << describedCall(scene.image, p, 0, options) << ", " << described(map);
            }
    }
}

}  // namespace
}  // namespace volux::test
