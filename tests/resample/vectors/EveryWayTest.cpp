// Small volumes, read at every quarter of a voxel in and around them, in every way there is.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

constexpr MakeLayout kLayouts[] = {interleaved, planar, zFastest, padded};
constexpr std::array<unsigned int, 5> kThreadCounts{1, 2, 3, 7, 16};

// Along the axes, and with the axes exchanged, which no shortcut serves.
const std::array<Grid, 2> kGrids{
    gridOf({{{0.25, 0, 0, -1.5}, {0, 0.25, 0, -1.5}, {0, 0, 0.25, -1.5}}}, 28, 24, 20),
    gridOf({{{0, 0, 0.25, -1.5}, {0.25, 0, 0, -1.5}, {0, 0.25, 0, -1.5}}}, 24, 20, 28)};

template <class T>
class EveryWay : public ::testing::Test {
protected:
    static void compare(const VxImage<T>& source, const Grid& grid, Options options)
    {
        VxImage<T> first;
        options.threads = 1;
        ASSERT_EQ(resample::resample(source, grid, &first, options), SUCCESS);
        expectEverySample(source, grid.map, first, options);
        forEachInstructionSet([&] {
            for (const unsigned int threads : kThreadCounts) {
                VxImage<T> result;
                options.threads = threads;
                ASSERT_EQ(resample::resample(source, grid, &result, options), SUCCESS);
                ASSERT_EQ(std::memcmp(first.getBufferPointer(), result.getBufferPointer(),
                                      std::size_t{28} * 24 * 20 * 2 * sizeof(T)),
                          0)
                    << described(options) << ", " << described(grid.map);
            }
        });
    }
};
TYPED_TEST_SUITE(EveryWay, ElementTypes, ElementTypeNames);

TYPED_TEST(EveryWay, GivesVoluxCoresBits)
{
    for (const MakeLayout makeLayout : kLayouts) {
        Seeded random(81);
        Volume<TypeParam> volume = blankVolume<TypeParam>(makeLayout(5, 4, 3, 2));
        fillAtRandom(volume, random, false);
        const WrappedVolume<TypeParam> scene(std::move(volume));
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            Options options(interpolator, border, 7);
            for (const bool extends : {false, true}) {
                options.edgeExtends = extends;
                for (const Grid& grid : kGrids)
                    this->compare(scene.image, grid, options);
            }
        });
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

}  // namespace
}  // namespace volux::test
