#include "volux/resample/Resample.h"

#include <gtest/gtest.h>

#include <array>

#include "Expected.h"

namespace volux::test {
namespace {

using MakeMap = AffineMap (*)(Random&, const oracle::Extents&);

AffineMap obliqueAsItIs(Random& random, const oracle::Extents& extents)
{
    return obliqueMap(random, extents);
}

template <class T>
class Resample : public ::testing::Test {
protected:
    // Random volumes in any layout, with every kernel and border, onto a small grid.
    static void compareScenes(MakeMap makeMap, std::uint64_t seed, unsigned int scenes)
    {
        Random random(seed);
        for (unsigned int n = 0; n < scenes; ++n) {
            const WrappedVolume<T> scene(randomVolume<T>(random));
            const AffineMap map = makeMap(random, scene.volume.extents);
            compare(scene.image,
                    gridOf(map, random.between(1, 21), random.between(1, 4), random.between(1, 3)),
                    random);
            if (::testing::Test::HasFatalFailure()) {
                ADD_FAILURE() << "scene " << n << " of seed " << seed;
                return;
            }
        }
    }

    static void compare(const core::VxImage<T>& source, const Grid& grid, Random& random)
    {
        for (core::Interpolator* const interpolator : kInterpolators)
            for (core::Border* const border : kBorders) {
                Options options(interpolator, border, insideValue<T>(random));
                options.overflow = random.below(3) == 0 ? Overflow::WRAP : Overflow::SATURATE;
                options.threads = 1;
                core::VxImage<T> result;
                ASSERT_EQ(resample::resample(source, grid, &result, options), core::SUCCESS);
                expectEverySample(source, grid.map, result, options);
                if (::testing::Test::HasFatalFailure())
                    return;
            }
    }
};
TYPED_TEST_SUITE(Resample, ElementTypes, ElementTypeNames);

TYPED_TEST(Resample, GivesTheModulesBitsOnObliqueMaps)
{
    forEachInstructionSet([] { TestFixture::compareScenes(obliqueAsItIs, 1, 150); });
}

TYPED_TEST(Resample, GivesTheModulesBitsOnMapsAlongTheAxes)
{
    forEachInstructionSet([] { TestFixture::compareScenes(axisMap, 2, 150); });
}

TYPED_TEST(Resample, GivesTheModulesBitsAtTiesAndWholePositions)
{
    forEachInstructionSet([] { TestFixture::compareScenes(halfMap, 3, 150); });
}

TYPED_TEST(Resample, GivesTheModulesBitsWhereNoIndexReaches)
{
    forEachInstructionSet([] { TestFixture::compareScenes(hugeMap, 4, 100); });
}

}  // namespace
}  // namespace volux::test
