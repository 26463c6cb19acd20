#include "volux/resample/Resample.h"

#include <gtest/gtest.h>

#include <array>

#include "resample/Expected.h"

namespace volux::test {
namespace {

using MakeMap = AffineMap (*)(Random&, const Extents&);

AffineMap obliqueAsItIs(Random& random, const Extents& extents)
{
    return obliqueMap(random, extents);
}

template <class T>
class Resample : public ::testing::Test {
protected:
    // Random volumes in any layout, with every kernel and border, onto a small grid.
    static void compareScenes(MakeMap makeMap, std::uint64_t seed, unsigned int scenes)
    {
        Seeded random(seed);
        for (unsigned int n = 0; n < scenes; ++n) {
            const WrappedVolume<T> scene(randomVolume<T>(random));
            const AffineMap map = makeMap(random, scene.volume.extents);
            compare(scene.image,
                    gridOf(map, random.between(1, 21), random.between(1, 4), random.between(1, 3)),
                    random);
            if (::testing::Test::HasFatalFailure())
                return;
        }
    }

    static void compare(const VxImage<T>& source, const Grid& grid, Random& random)
    {
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            Options options(interpolator, border, insideValue<T>(random));
            options.overflow = random.below(3) == 0 ? Overflow::WRAP : Overflow::SATURATE;
            options.threads = 1;
            options.edgeExtends = random.below(2) == 0;
            expectGrid(source, grid, options);
        });
    }
};
TYPED_TEST_SUITE(Resample, ElementTypes, ElementTypeNames);

TYPED_TEST(Resample, GivesVoluxCoresBitsOnObliqueMaps)
{
    forEachInstructionSet([] { TestFixture::compareScenes(obliqueAsItIs, 1, 150); });
}

TYPED_TEST(Resample, GivesVoluxCoresBitsOnMapsAlongTheAxes)
{
    forEachInstructionSet([] { TestFixture::compareScenes(axisMap, 2, 150); });
}

// The neighbours of a vector are contiguous, from before the first voxel to behind the last: all of
// them in as many voxels as a vector has lanes, or those on one side.
TYPED_TEST(Resample, GivesVoluxCoresBitsOnShortStepsAlongTheAxes)
{
    forEachInstructionSet([] {
        Seeded random(5);
        Volume<TypeParam> volume = blankVolume<TypeParam>({19, 5, 4}, 2);
        fillAtRandom(volume, random, true);
        const WrappedVolume<TypeParam> scene(std::move(volume));
        for (const double step : {0.3, 0.8, 0.95, 1.0, 1.1}) {
            const auto columns = static_cast<unsigned int>(22.0 / step);
            const Grid there =
                gridOf({{{step, 0, 0, -1.6}, {0, 0.7, 0, -0.5}, {0, 0, 0.6, -0.4}}}, columns, 8, 7);
            const Grid back =
                gridOf({{{-step, 0, 0, 20.6}, {0, 1, 0, 0}, {0, 0, -0.6, 3}}}, columns, 5, 6);
            TestFixture::compare(scene.image, there, random);
            TestFixture::compare(scene.image, back, random);
        }
    });
}

TYPED_TEST(Resample, GivesVoluxCoresBitsAtTiesAndWholePositions)
{
    forEachInstructionSet([] { TestFixture::compareScenes(halfMap, 3, 150); });
}

TYPED_TEST(Resample, GivesVoluxCoresBitsWhereNoIndexReaches)
{
    forEachInstructionSet([] { TestFixture::compareScenes(hugeMap, 4, 100); });
}

// Voxels and positions that are zeros of either sign: the sign of a sum of zeros tells in which
// order, and with which weights, it was made.
template <class T>
class SignedZeros : public ::testing::Test {
};
TYPED_TEST_SUITE(SignedZeros, RealTypes, ElementTypeNames);

AffineMap zeroMap(Random& random)
{
    constexpr std::array<double, 4> steps{-1.0, -0.5, 0.5, 1.0};
    constexpr std::array<double, 4> starts{-0.0, -0.0, 0.0, 1.0};
    constexpr std::array<double, 6> others{-0.0, -0.0, -0.0,
                                           -0.0, -0.0, 0x1p-60};  // the last one is no axis
    AffineMap map;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            map.rows[row][column] = row == column ? anyOf(random, steps) : anyOf(random, others);
        map.rows[row][3] = anyOf(random, starts);
    }
    return map;
}

TYPED_TEST(SignedZeros, AreThoseOfVoluxCore)
{
    using T = TypeParam;
    forEachInstructionSet([] {
        Seeded random(5);
        for (int n = 0; n < 200; ++n) {
            Volume<T> volume = blankVolume<T>({4, 3, 3});
            for (T& voxel : volume.block)
                voxel = anyOf<T>(random, std::array<T, 6>{-T{0}, -T{0}, -T{0}, -T{0}, T{0}, T{1}});
            const WrappedVolume<T> scene(volume);
            const AffineMap map = zeroMap(random);
            for (Interpolator* const interpolator : kInterpolators) {
                const Options options(interpolator, kBorders[random.below(2)], -0.0);
                VxImage<T> result;
                ASSERT_EQ(resample::resample(scene.image, gridOf(map, 3, 2, 2), &result, options),
                          SUCCESS);
                expectEverySample(scene.image, map, result, options);
            }
        }
    });
}

}  // namespace
}  // namespace volux::test
