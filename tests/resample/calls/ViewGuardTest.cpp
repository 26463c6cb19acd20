// Views of small sources and results between forbidden pages, with strides of either sign and of 0:
// a vector that reads or writes beside the voxels ends the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "support/GuardedPages.h"
#include "support/LastWords.h"
#include "support/RandomViews.h"

namespace volux::test {
namespace {

using resample::Positions;

// 1: forwards. -1: flipped. 0: one voxel over and over.
struct Signs {
    int x;
    int y;
    int z;
    int c;
};

constexpr std::array<Signs, 8> kSigns{{{-1, 1, 1, 1},
                                       {1, -1, 1, 1},
                                       {1, 1, -1, 1},
                                       {-1, -1, -1, -1},
                                       {0, 1, 1, 1},
                                       {-1, 0, 1, 1},
                                       {1, 1, 0, -1},
                                       {0, 0, 0, 0}}};

// A view whose elements lie side by side, those of a voxel first, and how many of them are before
// its first voxel and in all.
struct Packed : VoxelLayout {
    std::int64_t before = 0;
    std::int64_t elements = 1;

    Packed(const Extents& e, unsigned int ofVoxel, const Signs& signs)
    {
        width = e.width;
        height = e.height;
        depth = e.depth;
        channels = ofVoxel;
        strideC = add(signs.c, channels);
        strideX = add(signs.x, width);
        strideY = add(signs.y, height);
        strideZ = add(signs.z, depth);
    }

private:
    std::int64_t add(int sign, unsigned int extent)
    {
        const std::int64_t stride = sign == 0 ? 0 : elements;
        elements += stride * (extent - 1);
        before += sign < 0 ? stride * (extent - 1) : 0;
        return sign * stride;
    }
};

template <class T>
class GuardedViews : public ::testing::Test {
protected:
    void compare(const Extents& extents, unsigned int channels, const Signs& signs, bool atEnd)
    {
        const Packed packed(extents, channels, signs);
        const auto elements = static_cast<std::size_t>(packed.elements);
        T* const block = pages.place<T>(elements, atEnd);
        std::generate_n(block, elements, [&] { return randomElement<T>(random, false); });
        compare(View<T>(block + packed.before, packed), atEnd);
    }

    // Rows on pages of their own, the later ones before the earlier.
    void compareRows(unsigned int width, unsigned int channels, int sign, bool atEnd)
    {
        Packed packed({width, 1, 1}, channels, {sign, 1, 1, 1});
        const auto elements = static_cast<std::size_t>(packed.elements);
        packed.height = packed.depth = 2;
        packed.strideY = -static_cast<std::int64_t>(pages.stride() / sizeof(T));
        packed.strideZ = 2 * packed.strideY;
        T* last = nullptr;
        for (std::size_t row = 0; row < 4; ++row) {
            last = pages.place<T>(elements, atEnd, row);
            std::generate_n(last, elements, [&] { return randomElement<T>(random, false); });
        }
        compare(View<T>(last + packed.before, packed), atEnd);
    }

private:
    void compare(const View<T>& view, bool atEnd)
    {
        const LastWords words("seed 131, " + described(view));
        VxImage<T> image;
        ViewedVolume<T>::copy(view, image);
        const Extents extents{view.width, view.height, view.depth};
        const bool isOblique = random.below(2) == 0;
        const AffineMap map = isOblique ? obliqueMap(random, extents) : axisMap(random, extents);
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            Options options(interpolator, border, 3);
            options.edgeExtends = random.below(2) == 0;
            compareResult(view, image, gridOf(map, 9, 3, 2), options, atEnd);
        });
        compareMeans(view, image, map, atEnd);
        compareBlocks(view, image, atEnd);
    }

    // By the same map, and by the largest whole factors.
    void compareMeans(const View<T>& view, const VxImage<T>& image, const AffineMap& map,
                      bool atEnd)
    {
        Options options(anyOf(random, kInterpolators), anyOf(random, kBorders), 3);
        options.subsamples = {random.between(1, 4), random.between(1, 3), random.between(1, 2)};
        compareResult(view, image, gridOf(map, 5, 2, 2), options, atEnd);
    }
    void compareBlocks(const View<T>& view, const VxImage<T>& image, bool atEnd)
    {
        Options options(anyOf(random, kInterpolators), anyOf(random, kBorders), 3);
        const unsigned int factor = random.between(1, view.width);
        options.subsamples = {factor, view.height, view.depth};
        const AffineMap map = {{{1.0 * factor, 0, 0, (factor - 1.0) / 2},
                                {0, 1.0 * view.height, 0, (view.height - 1.0) / 2},
                                {0, 0, 1.0 * view.depth, (view.depth - 1.0) / 2}}};
        compareResult(view, image, gridOf(map, view.width / factor, 1, 1), options, atEnd);
    }

    // The result is a view between pages of its own, flipped at random.
    void compareResult(const View<T>& view, const VxImage<T>& image, const Grid& grid,
                       const Options& options, bool atEnd)
    {
        const auto sign = [&] { return random.below(2) == 0 ? 1 : -1; };
        const Signs signs{sign(), sign(), sign(), sign()};
        const Packed packed({grid.width, grid.height, grid.depth}, view.channels, signs);
        T* const block = written.place<T>(static_cast<std::size_t>(packed.elements), atEnd);
        const View<T> result(block + packed.before, packed);
        ASSERT_EQ(resample::resample(view, grid, result, options), SUCCESS) << described(view);
        VxImage<T> taken;
        ViewedVolume<T>::copy(result, taken);
        expectEveryMean(image, grid.map, taken, options);
    }

    Seeded random{131};
    const GuardedPages pages{1, 4};
    const GuardedPages written{1};
};
TYPED_TEST_SUITE(GuardedViews, ElementTypes, ElementTypeNames);

TYPED_TEST(GuardedViews, OfAnySignAreReadAndWrittenInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const unsigned int height : {1U, 3U})
                for (const unsigned int channels : {1U, 3U})
                    for (const Signs& signs : kSigns)
                        for (const bool atEnd : {false, true})
                            this->compare({width, height, 2}, channels, signs, atEnd);
    });
}

template <class T>
class GuardedViewRows : public GuardedViews<T> {
};
TYPED_TEST_SUITE(GuardedViewRows, ElementTypes, ElementTypeNames);

TYPED_TEST(GuardedViewRows, ThatLieBackwardsAreReadInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 12; ++width)
            for (const unsigned int channels : {1U, 2U, 3U})
                for (const int sign : {1, -1, 0})
                    for (const bool atEnd : {false, true})
                        this->compareRows(width, channels, sign, atEnd);
    });
}

// Three arrays of positions, each between forbidden pages.
class GuardedPositions : public ::testing::Test {
protected:
    void compare(unsigned int count, int stride, bool atEnd)
    {
        const LastWords words("seed 132, " + std::to_string(count) + " positions, stride " +
                              std::to_string(stride));
        const Positions positions = place(count, stride, atEnd);
        std::vector<float> results(std::size_t{count} * source.view.channels);
        ASSERT_EQ(resample::sample(source.view, positions, count, resample::Units::VOXELS,
                                   resample::kAllChannels, results.data(), options),
                  SUCCESS);
        std::size_t next = 0;
        for (std::int64_t n = 0; n < count; ++n)
            for (int c = 0; c < static_cast<int>(source.view.channels); ++c) {
                const std::int64_t at = n * stride;
                const Position p = {positions.x[at], positions.y[at], positions.z[at]};
                const auto expected = static_cast<float>(reading(source.image, p, c, options));
                ASSERT_TRUE(bitEqual(results[next++], expected))
                    << describedCall(source.image, p, c, options);
            }
    }

private:
    Positions place(unsigned int count, int stride, bool atEnd)
    {
        const std::size_t span = static_cast<std::size_t>(std::abs(stride)) * (count - 1) + 1;
        double* first[3] = {};
        for (std::size_t n = 0; n < 3; ++n) {
            double* const block = pages.place<double>(span, atEnd, n);
            std::generate_n(block, span, [&] { return randomCoordinate(random, 5); });
            first[n] = stride < 0 ? block + span - 1 : block;
        }
        return {first[0], first[1], first[2], stride};
    }

    Seeded random{132};
    const GuardedPages pages{1, 3};
    ViewedVolume<short> source{random, {9, 5, 4}, 2, true};
    const Options options{};
};

TEST_F(GuardedPositions, OfAnyStrideAreReadAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int count = 1; count < 40; ++count)
            for (const int stride : {1, 2, -1, -3, 0})
                for (const bool atEnd : {false, true})
                    compare(count, stride, atEnd);
    });
}

}  // namespace
}  // namespace volux::test
