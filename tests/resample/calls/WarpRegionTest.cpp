// Bricks under displacement fields, also where they fold.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "resample/WarpOracle.h"
#include "support/GuardedPages.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

using resample::ResampleRegion;

std::string described(const Rect& box)
{
    std::ostringstream text;
    text << "box " << box.xStart << " to " << box.xEnd << ", " << box.yStart << " to " << box.yEnd
         << ", " << box.zStart << " to " << box.zEnd;
    return text.str();
}

// A source and a result that is read from it through a field, in one piece and in parts.
template <class T, class V>
class WarpedBricks {
public:
    WarpedBricks(const ViewedVolume<T>& source, const WarpScene<V>& scene, const Grid& grid,
                 const Options& options)
        : source_(source), scene_(scene), grid_(grid), options_(options)
    {
        region_.sourceWidth = source.view.width;
        region_.sourceHeight = source.view.height;
        region_.sourceDepth = source.view.depth;
        EXPECT_EQ(resample::resample(source.view, grid, scene.warp, &whole_, options), SUCCESS);
    }

    // From the smallest brick that serves a box, between forbidden pages.
    void expectSameBits(const Rect& output)
    {
        region_.output = output;
        Rect support;
        ASSERT_EQ(region_.support(grid_, scene_.warp, &support, options_), SUCCESS);
        VxImage<T> part;
        ASSERT_EQ(perform(support, part), SUCCESS) << described(output);
        forEachElement(resample::viewOf(part), [&](auto x, auto y, auto z, auto c) {
            if (::testing::Test::HasFatalFailure())
                return;
            ASSERT_TRUE(bitEqual(at(part, x, y, z, c), at(whole_, output.xStart + x,
                                                          output.yStart + y, output.zStart + z, c)))
                << "voxel " << x << ' ' << y << ' ' << z << " of the " << described(output)
                << " from the source's " << described(support) << ", "
                << volux::test::described(options_) << ", " << volux::test::described(grid_.map)
                << ", " << volux::test::described(scene_.warp);
        });
        expectNoLessServes(support);
    }

private:
    // The brick's own memory, and nothing beside it.
    ErrorType perform(const Rect& box, VxImage<T>& part)
    {
        const Extents extents{box.width(), box.height(), box.depth()};
        const std::size_t elements =
            std::size_t{extents.width} * extents.height * extents.depth * source_.view.channels;
        isAtEnd_ = !isAtEnd_;
        const View<T> brick(pages_.place<T>(elements, isAtEnd_), extents.width, extents.height,
                            extents.depth, source_.view.channels);
        forEachElement(brick, [&](auto x, auto y, auto z, auto c) {
            elementOf(brick, x, y, z, c) =
                elementOf(source_.view, box.xStart + x, box.yStart + y, box.zStart + z, c);
        });
        region_.brickX = box.xStart;
        region_.brickY = box.yStart;
        region_.brickZ = box.zStart;
        return resample::resample(brick, grid_, scene_.warp, region_, &part, options_);
    }

    void expectNoLessServes(const Rect& support)
    {
        const auto expectRefused = [&](const Rect& box, ErrorType code) {
            VxImage<T> part;
            EXPECT_EQ(perform(box, part), code);
        };
        Rect box = support;
        if (support.width() > 1)
            expectRefused((++box.xStart, box), ERR_INVALID_X);
        box = support;
        if (support.height() > 1)
            expectRefused((--box.yEnd, box), ERR_INVALID_Y);
        box = support;
        if (support.depth() > 1)
            expectRefused((++box.zStart, box), ERR_INVALID_Z);
    }

    const ViewedVolume<T>& source_;
    const WarpScene<V>& scene_;
    Grid grid_;
    Options options_;
    ResampleRegion region_;
    VxImage<T> whole_;
    GuardedPages pages_{16};
    bool isAtEnd_ = false;
};

Rect randomBox(Random& random, const Grid& grid)
{
    const auto interval = [&](unsigned int extent) {
        return std::minmax({random.below(extent), random.below(extent)});
    };
    const auto [x0, x1] = interval(grid.width);
    const auto [y0, y1] = interval(grid.height);
    const auto [z0, z1] = interval(grid.depth);
    return {x0, x1, y0, y1, z0, z1};
}

template <class T>
class WarpRegion : public ::testing::Test {
protected:
    // Random boxes of random scenes, whose fields `spoil` changes.
    template <class V, class Spoil>
    static void compareScenes(Random& random, double size, const Spoil& spoil)
    {
        const Extents extents{12, 9, 10};
        const ViewedVolume<T> source(random, extents, 2, true);
        WarpScene<V> scene(random, {6, 4, 5}, extents, size);
        spoil(scene);
        const Grid grid = gridOf(obliqueMap(random, extents, 0.3), 9, 5, 4);
        Options options(kInterpolators.at(random.below(3)), kBorders.at(random.below(2)), 3);
        options.edgeExtends = random.below(2) == 0;
        options.threads = 1;
        WarpedBricks<T, V> bricks(source, scene, grid, options);
        for (int n = 0; n < 12 && !::testing::Test::HasFatalFailure(); ++n)
            bricks.expectSameBits(randomBox(random, grid));
    }
};
TYPED_TEST_SUITE(WarpRegion, ElementTypes, ElementTypeNames);

TYPED_TEST(WarpRegion, GivesTheBitsOfTheWholeWhereTheFieldFolds)
{
    Seeded random(480);
    forEachInstructionSet([&] {
        for (const double size : {0.5, 3.0, 20.0})
            for (int n = 0; n < 20; ++n) {
                TestFixture::template compareScenes<float>(random, size, [](auto&) {});
                TestFixture::template compareScenes<double>(random, size, [](auto&) {});
            }
    });
}

TYPED_TEST(WarpRegion, GivesTheBitsOfTheWholeWhereVectorsLeadFarAwayOrNowhere)
{
    Seeded random(481);
    constexpr std::array<double, 7> odd{kNaN, kInfinity, -kInfinity, 1e9, -3e9, 1e200, -1.7e308};
    for (int n = 0; n < 60; ++n)
        TestFixture::template compareScenes<double>(random, 3.0, [&](auto& scene) {
            for (unsigned int node = 0; node < 1 + random.below(20); ++node)
                scene.set({random.below(6), random.below(4), random.below(5)}, anyOf(random, odd),
                          between(random, -3, 3), anyOf(random, odd));
        });
}

// Whole and half positions, and vectors of whole numbers: every rounding decides which voxel is
// read.
TYPED_TEST(WarpRegion, GivesTheBitsOfTheWholeAtTies)
{
    Seeded random(482);
    for (int n = 0; n < 100; ++n)
        TestFixture::template compareScenes<float>(random, 3.0, [&](auto& scene) {
            scene.warp.toField = halfMap(random, {6, 4, 5});
            scene.warp.toVoxels = halfMap(random, {12, 9, 10});
            forEachElement(scene.vectors.view, [&](auto... node) {
                float& u = elementOf(scene.vectors.view, node...);
                u = std::round(u * 2.0F) / 2.0F;
            });
        });
}

// A field that moves everything by so much that it takes all but a few bits of a position: what
// rounding does to it is a good part of a voxel.
TYPED_TEST(WarpRegion, GivesTheBitsOfTheWholeWherePositionsCancel)
{
    Seeded random(483);
    for (int n = 0; n < 200; ++n)
        TestFixture::template compareScenes<double>(random, 2.0, [&](auto& scene) {
            const double far = between(random, 1e13, 1e14);
            forEachElement(scene.vectors.view, [&](auto x, auto y, auto z, auto) {
                scene.set({x, y, z}, far, far, far);
            });
            scene.warp.toField = {{{0.3, 0, 0, 1}, {0, 0.2, 0, 1}, {0, 0, 0.1, 1}}};
            for (auto& row : scene.warp.toVoxels.rows)
                row[3] -= (row[0] + row[1] + row[2]) * far;
        });
}

class WarpSupport : public ::testing::Test {
protected:
    WarpSupport()
    {
        field.initialize(10, 10, 10, 3);
        region.sourceWidth = region.sourceHeight = region.sourceDepth = 100;
    }

    // What the voxel (3, 3, 3) and its neighbours need, moved to the middle of the source.
    Rect support(const Options& options = NearestNeighbor())
    {
        AffineMap toVoxels;
        for (auto& row : toVoxels.rows)
            row[3] = 50.25;
        const Warp warp(field, AffineMap(), toVoxels);
        region.output = Rect(3, 4, 3, 4, 3, 4);
        Rect box;
        EXPECT_EQ(region.support(gridOf(AffineMap(), 8, 8, 8), warp, &box, options), SUCCESS);
        return box;
    }

    void set(int x, int y, int z, float along) { field(x, y, z, 0) = along; }

    static void expectBox(const Rect& box, unsigned int first, unsigned int last)
    {
        EXPECT_EQ(box.xStart, first);
        EXPECT_EQ(box.xEnd, last);
        EXPECT_EQ(box.yStart, 53U);
        EXPECT_EQ(box.yEnd, 54U);
        EXPECT_EQ(box.zStart, 53U);
        EXPECT_EQ(box.zEnd, 54U);
    }

    VxImage<float> field;
    ResampleRegion region;
};

TEST_F(WarpSupport, IsTheBoxItselfWithoutDisplacements)
{
    expectBox(support(), 53, 54);
}

TEST_F(WarpSupport, ReachesAsFarAsTheNodesThatTheBoxTouches)
{
    set(4, 4, 4, 10.0F);
    set(3, 4, 5, -20.0F);
    expectBox(support(), 33, 64);
}

TEST_F(WarpSupport, IgnoresNodesThatTheBoxDoesNotTouch)
{
    for (int n = 0; n < 10; ++n)
        for (const int far : {0, 1, 6, 7, 8, 9})
            set(far, n, 4, 40.0F);
    expectBox(support(), 53, 54);
}

TEST_F(WarpSupport, MovesWithAFieldThatMovesEverything)
{
    forEachElement(resample::viewOf(field), [&](auto x, auto y, auto z, auto c) {
        elementOf(resample::viewOf(field), x, y, z, c) = c == 0 ? 12.0F : 0.0F;
    });
    expectBox(support(), 65, 66);
}

TEST_F(WarpSupport, AlsoHoldsWhatLiesBeyondTheField)
{
    for (int n = 0; n < 1000; ++n)
        field.getBufferPointer()[3 * n] = 12.0F;
    AffineMap toField;
    toField.rows[1][3] = 6.0;  // row 4 is beyond the last node
    AffineMap toVoxels;
    for (auto& row : toVoxels.rows)
        row[3] = 50.25;
    region.output = Rect(3, 4, 3, 4, 3, 4);
    Rect box;
    ASSERT_EQ(region.support(gridOf(AffineMap(), 8, 8, 8), Warp(field, toField, toVoxels), &box,
                             NearestNeighbor()),
              SUCCESS);
    expectBox(box, 53, 66);
}

TEST_F(WarpSupport, IsAnyVoxelWhereAVectorIsNotFiniteAndTheEdgeExtends)
{
    set(4, 4, 4, std::numeric_limits<float>::infinity());
    expectBox(support(), 53, 54);
    Options extending = NearestNeighbor();
    extending.edgeExtends = true;
    const Rect box = support(extending);
    EXPECT_EQ(box.xStart, 0U);
    EXPECT_EQ(box.xEnd, 99U);
}

TEST_F(WarpSupport, IsOneVoxelWhereNoVectorIsANumber)
{
    for (int n = 0; n < 3000; ++n)
        field.getBufferPointer()[n] = std::numeric_limits<float>::quiet_NaN();
    const Rect box = support();
    EXPECT_EQ(box.width(), 1U);
    EXPECT_EQ(box.height(), 1U);
    EXPECT_EQ(box.depth(), 1U);
}

}  // namespace
}  // namespace volux::test
