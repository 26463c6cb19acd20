// Maps along the axes by the nearest voxel copy rows, wherever in memory the result's voxels are.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "resample/Expected.h"
#include "support/RandomViews.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using Order = std::array<int, 4>;  // x, y, z and the channel, from the fastest in memory on

// With as many elements between the voxels of the fastest axis, forwards or, by its bit of `flips`,
// backwards along each axis.
VoxelLayout laidOut(const Extents& e, unsigned int channels, const Order& order, unsigned int gap,
                    unsigned int flips)
{
    VoxelLayout l;
    l.width = e.width;
    l.height = e.height;
    l.depth = e.depth;
    l.channels = channels;
    std::int64_t* const strides[] = {&l.strideX, &l.strideY, &l.strideZ, &l.strideC};
    const unsigned int extents[] = {e.width, e.height, e.depth, channels};
    std::int64_t stride = 1 + gap;
    for (const int axis : order) {
        *strides[axis] = (flips >> axis) % 2 == 0 ? stride : -stride;
        stride *= extents[axis];
    }
    return l;
}

template <class R>
constexpr R kBetween{77};

template <class T>
class NearestCopy : public ::testing::Test {
protected:
    // From rows that are contiguous and rows that are not.
    template <class R>
    void compare(const Grid& grid, const VoxelLayout& layout, const Options& options)
    {
        compare<R>(planes.image, grid, layout, options);
        compare<R>(voxels.image, grid, layout, options);
    }

private:
    // Results of type R, whose memory is as it was between the voxels.
    template <class R>
    static void compare(const VxImage<T>& source, const Grid& grid, const VoxelLayout& layout,
                        const Options& options)
    {
        std::vector<R> block(elements(layout) + 1, kBetween<R>);
        std::int64_t before = 0;
        for (const auto& [stride, extent] : axesOf(layout))
            before += stride < 0 ? -stride * (extent - 1) : 0;
        const View<R> result(block.data() + before, layout);
        ASSERT_EQ(resample::resample(source, grid, result, options), SUCCESS) << described(layout);
        forEachElement(layout, [&](auto i, auto j, auto k, auto c) {
            if (::testing::Test::HasFatalFailure())
                return;
            const Position p = positionOf(grid.map, i, j, k);
            const double expected = gridReading(source, p, static_cast<int>(c), options);
            ASSERT_TRUE(bitEqual(elementOf(result, i, j, k, c), static_cast<R>(expected)))
                << "voxel " << i << ' ' << j << ' ' << k << ' ' << c << ", " << described(layout)
                << ", " << describedCall(source, p, static_cast<int>(c), options);
            elementOf(result, i, j, k, c) = kBetween<R>;
        });
        for (const R element : block)
            ASSERT_EQ(element, kBetween<R>) << described(layout);
    }

    using Axes = std::array<std::pair<std::int64_t, std::int64_t>, 4>;

    static Axes axesOf(const VoxelLayout& l)
    {
        return {{{l.strideX, l.width},
                 {l.strideY, l.height},
                 {l.strideZ, l.depth},
                 {l.strideC, l.channels}}};
    }

    static std::size_t elements(const VoxelLayout& layout)
    {
        std::int64_t elements = 1;
        for (const auto& [stride, extent] : axesOf(layout))
            elements += std::abs(stride) * (extent - 1);
        return static_cast<std::size_t>(elements);
    }

protected:
    Seeded random{141};
    const WrappedVolume<T> voxels{countingVolume<T>({9, 5, 4}, 2)};
    const WrappedVolume<T> planes{countingVolume<T>(planar(9, 5, 4, 2))};
};
TYPED_TEST_SUITE(NearestCopy, ElementTypes, ElementTypeNames);

// Steps of 1 copy whole rows at once, and steps of 1/2 every row twice.
TYPED_TEST(NearestCopy, GoesToAnyStrides)
{
    Order order{0, 1, 2, 3};
    do
        for (const unsigned int gap : {0U, 1U})
            for (const unsigned int height : {1U, 4U})
                for (const double stepX : {1.0, -1.0, 0.5})
                    for (const double stepY : {1.0, 0.5}) {
                        const AffineMap map = {{{stepX, 0, 0, stepX < 0.0 ? 8.0 : 1.0},
                                                {0, stepY, 0, 2},
                                                {0, 0, 1, 2}}};
                        const Extents extents{6 - this->random.below(6), height, 2};
                        const VoxelLayout layout =
                            laidOut(extents, 2, order, gap, this->random.below(16));
                        const Grid grid = gridOf(map, extents.width, height, 2);
                        const Options options(NearestNeighbor(), kBorders[this->random.below(2)]);
                        this->template compare<TypeParam>(grid, layout, options);
                        this->template compare<float>(grid, layout, options);
                        this->template compare<double>(grid, layout, options);
                        ASSERT_FALSE(this->HasFatalFailure());
                    }
    while (std::next_permutation(order.begin(), order.end()));
}

// One row is more work than threads are given at once.
TEST(NearestCopyOfLongRows, IsSharedOutByRows)
{
    const WrappedVolume<short> source(countingVolume<short>({20, 2, 1}));
    const AffineMap map = {{{0.001, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    expectGrid(source.image, gridOf(map, 20000, 2, 1), Options(NearestNeighbor()));
}

}  // namespace
}  // namespace volux::test
