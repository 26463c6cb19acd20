// Displacement fields between forbidden pages, with strides of either sign and of 0: a vector that
// reads beside the nodes ends the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "resample/WarpOracle.h"
#include "support/GuardedPages.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

template <class V>
class GuardedFields : public ::testing::Test {
protected:
    void compare(const Extents& extents, bool atEnd)
    {
        const VoxelLayout layout = randomStrides(random, extents, 3, true);
        std::int64_t before = 0;
        std::int64_t elements = 1;
        const std::pair<std::int64_t, unsigned int> axes[] = {{layout.strideX, extents.width},
                                                              {layout.strideY, extents.height},
                                                              {layout.strideZ, extents.depth},
                                                              {layout.strideC, 3}};
        for (const auto& [stride, extent] : axes) {
            before += stride < 0 ? -stride * (extent - 1) : 0;
            elements += std::abs(stride) * (extent - 1);
        }
        V* const block = pages.place<V>(static_cast<std::size_t>(elements), atEnd);
        std::generate_n(block, elements, [&] { return static_cast<V>(between(random, -3, 3)); });
        compare(View<V>(block + before, layout));
    }

private:
    void compare(const View<V>& vectors)
    {
        const Extents extents{vectors.width, vectors.height, vectors.depth};
        const Warp warp(vectors, obliqueMap(random, extents, 0.3), AffineMap());
        VxImage<V> image;
        ViewedVolume<V>::copy(vectors, image);
        const Grid grid = gridOf(obliqueMap(random, {9, 8, 7}, 0.5), 13, 3, 2);
        expectWarped(source.image, image, grid, warp, Options(Linear(), Constant(), 3));
        comparePlace(image, grid, warp);
        findSupport(grid, warp);
    }

    void comparePlace(const VxImage<V>& field, const Grid& grid, const Warp& warp)
    {
        const Position p = grid.map(random.below(13), random.below(3), random.below(2));
        const Position found = warp(p);
        const Position expected = expectedPlace(field, warp, p);
        ASSERT_TRUE(bitEqual(found.x, expected.x) && bitEqual(found.y, expected.y) &&
                    bitEqual(found.z, expected.z))
            << described(warp);
    }

    // Every vector is read that the box of the result may need.
    void findSupport(const Grid& grid, const Warp& warp)
    {
        resample::ResampleRegion region;
        region.sourceWidth = source.view.width;
        region.sourceHeight = source.view.height;
        region.sourceDepth = source.view.depth;
        region.output = Rect(0, 12, 0, 2, 0, 1);
        Rect box;
        ASSERT_EQ(region.support(grid, warp, &box), SUCCESS) << described(warp);
    }

    Seeded random{490};
    ViewedVolume<short> source{random, {9, 8, 7}, 1, false};
    const GuardedPages pages{20};
};
TYPED_TEST_SUITE(GuardedFields, RealTypes, ElementTypeNames);

TYPED_TEST(GuardedFields, AreReadInsideAlone)
{
    forEachInstructionSet([this] {
        for (unsigned int width = 1; width < 10; ++width)
            for (const unsigned int height : {1U, 3U})
                for (int n = 0; n < 20; ++n)
                    for (const bool atEnd : {false, true})
                        this->compare({width, height, 2}, atEnd);
    });
}

// Every extent along each axis, beside every one along the next.
TYPED_TEST(GuardedFields, AreReadInsideAloneWhateverTheExtents)
{
    forEachInstructionSet([this] {
        for (unsigned int n = 0; n < 81; ++n) {
            const unsigned int width = n % 9;
            const unsigned int height = n / 9;
            this->compare({width + 1, height + 1, (2 * width + height) % 9 + 1}, n % 2 == 0);
        }
    });
}

}  // namespace
}  // namespace volux::test
