// Everything with everything: element types, layouts, kernels, borders, instruction sets and
// numbers of threads, on grids that are cut into several parts.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "Expected.h"

namespace volux::test {
namespace {

constexpr std::array<Layout, 4> kLayouts{Layout::Interleaved, Layout::Planar, Layout::ZFastest,
                                         Layout::Padded};
constexpr std::array<unsigned int, 5> kThreadCounts{1, 2, 3, 7, 16};

// No part holds more than 2^14 samples.
const Grid kSize = gridOf(AffineMap(), 401, 7, 3);

template <class T>
oracle::Volume<T> volumeIn(Layout layout, Random& random)
{
    oracle::Volume<T> v;
    v.extents = {11, 6, 5};
    v.channels = 2;
    layOut(v, layout, random);
    const std::int64_t last = v.strideX * 10 + v.strideY * 5 + v.strideZ * 4 + v.strideC;
    v.block.resize(static_cast<std::size_t>(last + 1));
    for (T& element : v.block)
        element = randomElement<T>(random, false);
    return v;
}

template <class T>
std::vector<T> expectedOf(const core::VxImage<T>& source, const Grid& grid, const Options& options)
{
    std::vector<T> all;
    for (unsigned int k = 0; k < grid.depth; ++k)
        for (unsigned int j = 0; j < grid.height; ++j)
            for (unsigned int i = 0; i < grid.width; ++i)
                for (int c = 0; c < 2; ++c)
                    all.push_back(element(source, grid.map(i, j, k), c, options));
    return all;
}

template <class T>
class Matrix : public ::testing::Test {
protected:
    static void compare(const AffineMap& map, std::uint64_t seed)
    {
        Random random(seed);
        Grid grid = kSize;
        grid.map = map;
        for (const Layout layout : kLayouts) {
            const WrappedVolume<T> scene(volumeIn<T>(layout, random));
            for (core::Interpolator* const interpolator : kInterpolators)
                for (core::Border* const border : kBorders)
                    compare(scene.image, grid, Options(interpolator, border, 3));
        }
    }

private:
    static void compare(const core::VxImage<T>& source, const Grid& grid, Options options)
    {
        const std::vector<T> expected = expectedOf(source, grid, options);
        forEachInstructionSet([&] {
            for (const unsigned int threads : kThreadCounts) {
                options.threads = threads;
                core::VxImage<T> result;
                ASSERT_EQ(resample::resample(source, grid, &result, options), core::SUCCESS);
                ASSERT_EQ(std::memcmp(expected.data(), result.getBufferPointer(),
                                      expected.size() * sizeof(T)),
                          0)
                    << threads << " threads";
            }
        });
    }
};
TYPED_TEST_SUITE(Matrix, ElementTypes, ElementTypeNames);

TYPED_TEST(Matrix, GivesTheModulesBitsOnAnObliqueMap)
{
    this->compare({{{0.027, 0.3, -0.7, 1.2}, {-0.013, 0.8, 0.4, 0.1}, {0.008, -0.2, 1.3, 0.4}}},
                  91);
}

TYPED_TEST(Matrix, GivesTheModulesBitsAlongTheAxes)
{
    this->compare({{{0.03, 0, 0, -0.7}, {0, -0.8, 0, 5.2}, {0, 0, 1.5, 0.6}}}, 92);
}

}  // namespace
}  // namespace volux::test
