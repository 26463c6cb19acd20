#include "resample/calls/PoliciesWithoutRtti.h"

#include <gtest/gtest.h>

#include "resample/Expected.h"

namespace volux::test {
namespace {

// Resamples a volume onto an oblique grid that begins outside of it, and compares every voxel.
void expectServed(const Options& options)
{
    const WrappedVolume<short> scene(countingVolume<short>({4, 3, 3}, 2));
    const AffineMap map = {{{0.7, 0.1, 0, -1.5}, {-0.1, 0.8, 0.2, -0.5}, {0, 0.2, 0.9, 0.25}}};
    VxImage<short> result;
    ASSERT_EQ(resample::resample(scene.image, gridOf(map, 6, 5, 4), &result, options), SUCCESS);
    expectEverySample(scene.image, map, result, options);
}

TEST(PoliciesWithoutRtti, AnInterpolatorIsServed)
{
    expectServed(Options(interpolatorWithoutRtti()));
}

TEST(PoliciesWithoutRtti, AClassDerivedFromAKernelIsServed)
{
    expectServed(Options(linearWithoutRtti(), Constant(), -3));
}

TEST(PoliciesWithoutRtti, ABorderIsServedWithEachKernel)
{
    for (Interpolator* const interpolator : kInterpolators)
        expectServed(Options(interpolator, borderWithoutRtti(), 9));
}

TEST(PoliciesWithoutRtti, PositionsAndIndicesReachThem)
{
    VxImage<short> image;
    image.initialize(2, 1, 1, 1);
    const auto sampled = [&](const Position& position, const Options& options) {
        double result = 0.0;
        EXPECT_EQ(
            resample::sample(image, &position, 1, resample::Units::VOXELS, 0, &result, options),
            SUCCESS);
        return result;
    };
    EXPECT_EQ(sampled({0.25, 0, 3}, interpolatorWithoutRtti()), 253.0);
    EXPECT_EQ(sampled({-2, 0, 0}, Options(Linear(), borderWithoutRtti(), 9)), 11.0);
}

}  // namespace
}  // namespace volux::test
