// Whatever the strides, a view gives the bits of a contiguous image of the same voxels.
#include "volux/resample/View.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <array>
#include <cstring>
#include <type_traits>
#include <vector>

#include "resample/Expected.h"
#include "support/GuardedPages.h"
#include "support/OwnPolicies.h"
#include "support/RandomViews.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::kAllChannels;
using resample::ResampleRegion;
using resample::Units;
using resample::viewOf;

Extents someExtents(Random& random)
{
    constexpr std::array<unsigned int, 7> extents{1, 2, 3, 4, 5, 9, 12};
    return {anyOf(random, extents), anyOf(random, extents), anyOf(random, extents)};
}

template <class T>
void expectSame(const View<const T>& actual, const View<const T>& expected, const VoxelLayout& from,
                const Options& options, const AffineMap& map)
{
    forEachElement(expected, [&](auto... at) {
        if (::testing::Test::HasFatalFailure())
            return;
        ASSERT_TRUE(bitEqual(elementOf(actual, at...), elementOf(expected, at...)))
            << described(from) << ", into " << described(actual) << ", " << described(options)
            << ", " << described(map);
    });
}

template <class T>
class ViewOf : public ::testing::Test {
protected:
    explicit ViewOf(std::uint64_t seed = 301) : random(seed) {}

    AffineMap someMap(const Extents& extents)
    {
        constexpr std::array<AffineMap (*)(Random&, const Extents&), 3> makes{axisMap, halfMap,
                                                                              hugeMap};
        return random.below(2) == 0 ? obliqueMap(random, extents)
                                    : anyOf(random, makes)(random, extents);
    }

    // Random views, with every kernel and border; call(source, result, grid, options) gets a view
    // and a contiguous image in turn.
    template <class Call>
    void compareScenes(unsigned int scenes, bool mayRepeat, const Call& call)
    {
        for (unsigned int n = 0; n < scenes && !::testing::Test::HasFatalFailure(); ++n) {
            const ViewedVolume<T> scene(random, someExtents(random), random.between(1, 3),
                                        mayRepeat);
            const Extents extents{scene.view.width, scene.view.height, scene.view.depth};
            const Grid grid = gridOf(someMap(extents), random.between(1, 21), random.between(1, 4),
                                     random.between(1, 3));
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                Options options(interpolator, border, insideValue<T>(random));
                options.threads = 1;
                VxImage<T> fromView;
                VxImage<T> fromImage;
                ASSERT_EQ(call(scene.view, &fromView, grid, options), SUCCESS)
                    << described(scene.view);
                ASSERT_EQ(call(scene.image, &fromImage, grid, options), SUCCESS);
                ASSERT_EQ(fromView.getVoxelSize(), fromImage.getVoxelSize());
                expectSame<T>(viewOf(fromView), viewOf(fromImage), scene.view, options, grid.map);
            });
        }
    }

    Seeded random;
};
TYPED_TEST_SUITE(ViewOf, ElementTypes, ElementTypeNames);

TYPED_TEST(ViewOf, AnyStridesIsResampledAsAnImage)
{
    forEachInstructionSet([this] {
        this->compareScenes(
            60, true,
            [](const auto& source, auto* result, const Grid& grid, const Options& options) {
                return resample::resample(source, grid, result, options);
            });
    });
}

TYPED_TEST(ViewOf, ConstVoxelsIsResampledAsAnImage)
{
    using T = TypeParam;
    this->compareScenes(
        20, true, [](const auto& source, auto* result, const Grid& grid, const Options& options) {
            if constexpr (std::is_same_v<decltype(source), const View<T>&>)
                return resample::resample(View<const T>(source), grid, result, options);
            else
                return resample::resample(source, grid, result, options);
        });
}

TYPED_TEST(ViewOf, VoxelsOfATypeKnownAtRunTimeIsResampledAsAnImage)
{
    using T = TypeParam;
    this->compareScenes(
        20, true, [](const auto& source, auto* result, const Grid& grid, const Options& options) {
            if constexpr (std::is_same_v<decltype(source), const View<T>&>)
                return resample::resample(View<const void>(source), grid, result, options);
            else
                return resample::resample(source, grid, result, options);
        });
}

TYPED_TEST(ViewOf, AnyStridesIsReslicedAsAnImage)
{
    this->compareScenes(
        20, true, [](const auto& source, auto* result, const Grid& grid, const Options& options) {
            resample::Planes planes;
            planes.origin = grid.map(0, 0, 0);
            planes.across = {0.3, 0.6, 0.1};
            planes.down = {-0.6, 0.3, 0.2};
            planes.width = grid.width;
            planes.height = grid.height;
            planes.count = grid.depth;
            return resample::reslice(source, planes, result, options,
                                     {3, resample::Projection::MAXIMUM});
        });
}

TYPED_TEST(ViewOf, AnyStridesIsResizedAsAnImage)
{
    this->compareScenes(
        20, true, [](const auto& source, auto* result, const Grid& grid, const Options& options) {
            return resample::resize(source, grid.width, grid.height, grid.depth, Align::EDGES,
                                    result, options);
        });
    this->compareScenes(
        20, true, [](const auto& source, auto* result, const Grid&, const Options& options) {
            return resample::resize(source, {0.7, 0.9, 2.0}, Align::CENTRES, result, options);
        });
}

TYPED_TEST(ViewOf, AnyStridesIsSampledAsAnImage)
{
    using T = TypeParam;
    forEachInstructionSet([this] {
        for (unsigned int n = 0; n < 30; ++n) {
            const ViewedVolume<T> scene(this->random, someExtents(this->random), 2, true);
            std::vector<Position> positions;
            for (int p = 0; p < 100; ++p) {
                const oracle::Position at = randomPosition(
                    this->random, {scene.view.width, scene.view.height, scene.view.depth});
                positions.push_back({at.x, at.y, at.z});
            }
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                const Options options(interpolator, border, 3);
                std::vector<double> fromView(200);
                std::vector<double> fromImage(200);
                ASSERT_EQ(resample::sample(scene.view, positions.data(), 100, Units::PHYSICAL,
                                           kAllChannels, fromView.data(), options),
                          SUCCESS);
                ASSERT_EQ(resample::sample(scene.image, positions.data(), 100, Units::PHYSICAL,
                                           kAllChannels, fromImage.data(), options),
                          SUCCESS);
                for (std::size_t r = 0; r < 200; ++r)
                    ASSERT_TRUE(bitEqual(fromView[r], fromImage[r]))
                        << described(scene.view) << ", " << described(options);
            });
        }
    });
}

TYPED_TEST(ViewOf, AnyStridesIsABrick)
{
    using T = TypeParam;
    for (unsigned int n = 0; n < 40; ++n) {
        const ViewedVolume<T> scene(this->random, {9, 7, 5}, 2, true);
        const Grid grid = gridOf(
            n % 2 == 0 ? axisMap(this->random, {9, 7, 5}) : obliqueMap(this->random, {9, 7, 5}), 6,
            4, 3);
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            const Options options(interpolator, border, 3);
            ResampleRegion region;
            region.sourceWidth = 9;
            region.sourceHeight = 7;
            region.sourceDepth = 5;
            region.output = Rect(1, 4, 1, 2, 0, 2);
            Rect box;
            ASSERT_EQ(region.support(grid, &box, options), SUCCESS);
            region.brickX = box.xStart;
            region.brickY = box.yStart;
            region.brickZ = box.zStart;
            View<const T> brick = scene.view;
            brick.data = &elementOf(scene.view, box.xStart, box.yStart, box.zStart, 0);
            brick.width = box.width();
            brick.height = box.height();
            brick.depth = box.depth();
            VxImage<T> whole;
            VxImage<T> part;
            ASSERT_EQ(resample::resample(scene.image, grid, &whole, options), SUCCESS);
            ASSERT_EQ(resample::resample(brick, grid, region, &part, options), SUCCESS);
            forEachElement(
                viewOf(part), [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
                    ASSERT_TRUE(bitEqual(at(part, x, y, z, c), at(whole, x + 1, y + 1, z, c)))
                        << described(scene.view) << ", " << described(options) << ", "
                        << described(grid.map);
                });
        });
    }
}

template <class T>
class ViewInto : public ViewOf<T> {
protected:
    // The result through a view; and that nothing but its voxels has changed.
    void compare(const Grid& grid, const ViewedVolume<T>& source, const Options& options)
    {
        VxImage<T> expected;
        ASSERT_EQ(resample::resample(source.image, grid, &expected, options), SUCCESS);
        const Extents extents{grid.width, grid.height, grid.depth};
        ViewedVolume<T> result(this->random, extents, source.view.channels, false);
        std::vector<T> before = result.block;
        ASSERT_EQ(resample::resample(source.view, grid, result.view, options), SUCCESS)
            << described(result.view);
        expectSame<T>(result.view, viewOf(expected), source.view, options, grid.map);
        View<T> copied = result.view;
        copied.data = before.data() + (result.view.data - result.block.data());
        forEachElement(
            copied, [&](auto... at) { elementOf(copied, at...) = elementOf(result.view, at...); });
        ASSERT_EQ(std::memcmp(before.data(), result.block.data(), before.size() * sizeof(T)), 0)
            << described(result.view) << ", " << described(options);
    }
};
TYPED_TEST_SUITE(ViewInto, ElementTypes, ElementTypeNames);

TYPED_TEST(ViewInto, AnyStridesIsWrittenAsAnImage)
{
    forEachInstructionSet([this] {
        for (unsigned int n = 0; n < 60 && !::testing::Test::HasFatalFailure(); ++n) {
            const ViewedVolume<TypeParam> source(this->random, someExtents(this->random),
                                                 this->random.between(1, 3), true);
            const Extents extents{source.view.width, source.view.height, source.view.depth};
            const Grid grid = gridOf(this->someMap(extents), this->random.between(1, 21),
                                     this->random.between(1, 4), this->random.between(1, 3));
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                this->compare(grid, source, Options(interpolator, border, 3));
            });
        }
    });
}

// Large enough that both threads work.
TYPED_TEST(ViewInto, AnyStridesIsWrittenByTwoThreads)
{
    const std::array<AffineMap, 2> maps{
        AffineMap{{{0.25, 0, 0, -1.5}, {0, 0.25, 0, -1.5}, {0, 0, 0.25, -1.5}}},
        AffineMap{{{0, 0, 0.25, -1.5}, {0.25, 0, 0, -1.5}, {0, 0.25, 0, -1.5}}}};
    for (const AffineMap& map : maps)
        for (unsigned int n = 0; n < 2; ++n) {
            const ViewedVolume<TypeParam> source(this->random, {5, 6, 7}, 2, true);
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                Options options(interpolator, border, 3);
                options.threads = 2;
                this->compare(gridOf(map, 60, 40, 20), source, options);
            });
        }
}

TYPED_TEST(ViewInto, AnyStridesIsReadByPoliciesOfTheCallersOwn)
{
    PeriodicBorder periodic;
    for (unsigned int n = 0; n < 20; ++n) {
        const ViewedVolume<TypeParam> source(this->random, {5, 6, 7}, 2, true);
        this->compare(gridOf(obliqueMap(this->random, {5, 6, 7}), 9, 3, 2), source,
                      Options(Cubic(), &periodic));
    }
}

template <class T>
class GuardedView : public ViewOf<T> {
protected:
    // Two rows in each of two slices, each on a page of its own, all axes flipped or not.
    void compare(unsigned int width, std::int64_t strideX, unsigned int channels,
                 unsigned int flips, bool atEnd)
    {
        const auto pitch = static_cast<std::int64_t>(pages.stride() / sizeof(T));
        const auto elements = static_cast<std::size_t>(strideX * (width - 1) + channels);
        View<T> view(pages.place<T>(elements, atEnd, 0), width, 2, 2, channels);
        view.strideX = strideX;
        view.strideY = pitch;
        view.strideZ = 2 * pitch;
        for (std::size_t row = 0; row < 4; ++row)
            std::generate_n(pages.place<T>(elements, atEnd, row), elements,
                            [&] { return randomElement<T>(this->random, false); });
        flip(flips & 1U, view.width, view.strideX, view);
        flip(flips & 2U, view.height, view.strideY, view);
        flip(flips & 4U, view.depth, view.strideZ, view);
        flip(flips & 8U, view.channels, view.strideC, view);
        VxImage<T> image;
        ViewedVolume<T>::copy(view, image);
        const Extents extents{width, 2, 2};
        for (const AffineMap& map :
             {obliqueMap(this->random, extents), axisMap(this->random, extents)})
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                const Options options(interpolator, border, 3);
                VxImage<T> fromView;
                VxImage<T> fromImage;
                const Grid grid = gridOf(map, 9, 3, 2);
                ASSERT_EQ(resample::resample(view, grid, &fromView, options), SUCCESS);
                ASSERT_EQ(resample::resample(image, grid, &fromImage, options), SUCCESS);
                expectSame<T>(viewOf(fromView), viewOf(fromImage), view, options, map);
            });
    }

private:
    static void flip(bool isFlipped, unsigned int extent, std::int64_t& stride, View<T>& view)
    {
        if (!isFlipped)
            return;
        view.data += stride * (extent - 1);
        stride = -stride;
    }

    const GuardedPages pages{1, 4};
};
TYPED_TEST_SUITE(GuardedView, ElementTypes, ElementTypeNames);

TYPED_TEST(GuardedView, IsReadInsideItsRowsAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (unsigned int flips = 1; flips < 16; ++flips)
                for (const unsigned int gap : {0U, 1U})
                    this->compare(width, 1 + this->random.below(2) + gap, 1 + gap, flips,
                                  this->random.below(2) == 0);
    });
}

TEST(ReadOnlyMemory, IsServed)
{
    const GuardedPages pages{1, 1};
    short* const voxels = pages.place<short>(24, false);
    for (short n = 0; n < 24; ++n)
        voxels[n] = n;
    ASSERT_EQ(mprotect(voxels, GuardedPages::kPage, PROT_READ), 0);
    const View<const short> view(voxels, 2, 3, 4);
    PeriodicBorder periodic;
    for (Border* const border :
         {static_cast<Border*>(&CONSTANT), static_cast<Border*>(&periodic)}) {
        VxImage<short> result;
        ASSERT_EQ(resample::resize(view, 2, 3, 4, Align::EDGES, &result, Options(Linear(), border)),
                  SUCCESS);
        EXPECT_EQ(result(1, 2, 3, 0), 23);
    }
    ASSERT_EQ(mprotect(voxels, GuardedPages::kPage, PROT_READ | PROT_WRITE), 0);
}

TEST(ViewOfAnImage, HasItsBufferStridesAndSpacing)
{
    VxImage<short> image;
    image.initialize(2, 3, 4, 5);
    image.setImageStride(60, 1, 12, 4);
    image.setVoxelSize(0.5, 2, 3);
    const View<short> view = viewOf(image);
    EXPECT_EQ(view.data, image.getBufferPointer());
    EXPECT_EQ(described(view), "view of 2 3 4 voxels with 5 channels, strides 4 60 1 12");
    EXPECT_EQ(view.spacing, VoxelSize(0.5, 2, 3));
    const VxImage<short>& constant = image;
    static_assert(std::is_same_v<decltype(viewOf(constant)), View<const short>>);
    EXPECT_EQ(described(viewOf(constant)), described(view));
    EXPECT_EQ(viewOf(VxImage<float>()).data, nullptr);
}

TEST(ViewOfAType, KeepsItAtRunTime)
{
    float voxel = 0;
    const View<void> writable = View<float>(&voxel, 1, 1, 1);
    const View<const void> readable = writable;
    EXPECT_EQ(writable.type, DT_FLOAT);
    EXPECT_EQ(readable.type, DT_FLOAT);
    EXPECT_EQ(readable.data, &voxel);
    static_assert(View<const unsigned char>::type == DT_UCHAR);
}

}  // namespace
}  // namespace volux::test
