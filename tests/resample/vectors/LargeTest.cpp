// Volumes of more than 2^31 elements, as source and as result. The memory of all but the touched
// pages is never there.
#include <gtest/gtest.h>

#include <cstddef>

#include "resample/Expected.h"
#include "support/SparseBlock.h"

namespace volux::test {
namespace {

constexpr unsigned int kWidth = 2048;
constexpr unsigned int kHeight = 1024;
constexpr unsigned int kDepth = 1030;  // 2^31 elements are those of 1024 slices

template <class T>
class Large : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!block.exists())
            GTEST_SKIP() << "no address space for 2^31 elements";
        image.initializeWithPointer(reinterpret_cast<T*>(block.bytes()), kWidth, kHeight, kDepth,
                                    1);
    }

    // Voxels of a box around a place are no zeros.
    void fillAround(int x, int y, int z)
    {
        for (int k = z - 3; k < z + 3; ++k)
            for (int j = y - 3; j < y + 3; ++j)
                for (int i = x - 30; i < x + 30; ++i)
                    image(i, j, k, 0) = randomElement<T>(random, false);
    }

    // Every instruction set is asked, with each kernel and border.
    void compare(const AffineMap& map)
    {
        forEachInstructionSet([&] { expectEveryPolicy(image, gridOf(map, 37, 3, 3), 5); });
    }

    Seeded random{81};
    const SparseBlock block{std::size_t{kWidth} * kHeight * kDepth * sizeof(T)};
    VxImage<T> image;
};
TYPED_TEST_SUITE(Large, ElementTypes, ElementTypeNames);

TYPED_TEST(Large, SourcesAreReadAtTheirEnd)
{
    this->fillAround(2018, 1021, 1027);
    this->compare({{{0.7, 0.1, -0.2, 2022.0}, {0.02, 0.9, 0.1, 1020.5}, {0.01, 0.1, 0.8, 1027.3}}});
    this->compare({{{0.7, 0, 0, 2025.0}, {0, 0.9, 0, 1021.5}, {0, 0, 0.8, 1027.3}}});
    this->compare({{{1, 0, 0, 2014}, {0, 1, 0, 1020}, {0, 0, 1, 1026}}});
}

TYPED_TEST(Large, SourcesAreReadOnBothSidesOf31Bits)
{
    this->fillAround(30, 3, 1024);
    this->compare({{{0.7, 0.1, 0.2, 1.0}, {0.02, 0.9, 0.1, 0.5}, {-0.01, 0.1, 0.8, 1022.7}}});
    this->compare({{{0.7, 0, 0, -1.0}, {0, 0.9, 0, 0.5}, {0, 0, 0.8, 1023.3}}});
}

// Slices so far apart that the result spans the whole block.
TYPED_TEST(Large, ResultsAreWrittenThroughLongStrides)
{
    const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
    const AffineMap map = obliqueMap(this->random, scene.volume.extents);
    VxImage<TypeParam> result;
    result.initializeWithPointer(this->image.getBufferPointer(), 19, 2, 2,
                                 scene.image.getChannels());
    result.setImageStride(1U << 29U, (1U << 30U) + 7, 1U << 28U, 3);
    const Options options = Cubic();
    ASSERT_EQ(resample::resample(scene.image, gridOf(map, 19, 2, 2), &result, options), SUCCESS);
    expectEverySample(scene.image, map, result, options);
}

// The last rows of a grid of more than 2^31 voxels, from the brick that they read.
TYPED_TEST(Large, PartsOfLargeGridsAreThoseOfTheWhole)
{
    using T = TypeParam;
    const WrappedVolume<T> scene(randomVolume<T>(this->random));
    const Extents& e = scene.volume.extents;
    const auto step = [](std::int64_t from, unsigned int to) {
        return static_cast<double>(from) / to;
    };
    const AffineMap map = {{{step(e.width, 40000), 0, 0, 0.1},
                            {0, step(e.height, 50000), 0, 0.2},
                            {0, 0, step(e.depth, 3), -0.2}}};
    resample::ResampleRegion region;
    region.sourceWidth = scene.image.getWidth();
    region.sourceHeight = scene.image.getHeight();
    region.sourceDepth = scene.image.getDepth();
    region.output = Rect(39000, 39999, 49998, 49999, 2, 2);
    VxImage<T> part;
    const Options options(Linear(), Constant(), 3);
    ASSERT_EQ(resample::resample(scene.image, gridOf(map, 40000, 50000, 3), region, &part, options),
              SUCCESS);
    for (unsigned int j = 0; j < 2; ++j)
        for (unsigned int i = 0; i < 1000; ++i) {
            const Position p = map(39000 + i, 49998 + j, 2);
            ASSERT_TRUE(bitEqual(at(part, i, j, 0, 0), element(scene.image, p, 0, options)))
                << i << ' ' << j << ", " << describedCall(scene.image, p, 0, options);
        }
}

}  // namespace
}  // namespace volux::test
