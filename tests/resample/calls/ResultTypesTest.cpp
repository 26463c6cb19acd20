// Results of another type than the source's: the readings of a double result, converted.
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <vector>

#include "resample/Expected.h"
#include "support/OwnPolicies.h"
#include "support/RandomViews.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Units;
using resample::viewOf;

template <class T>
class ResultTypes : public ::testing::Test {
protected:
    static void compare(const VxImage<T>& source, const Grid& grid, const Options& options)
    {
        VxImage<float> narrow;
        VxImage<double> wide;
        ASSERT_EQ(resample::resample(source, grid, &narrow, options), SUCCESS);
        ASSERT_EQ(resample::resample(source, grid, &wide, options), SUCCESS);
        ASSERT_EQ(wide.getVoxelSize(), grid.spacing);
        forEachElement(
            viewOf(wide), [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
                const Position p = grid.map(x, y, z);
                const double expected = gridReading(source, p, static_cast<int>(c), options);
                ASSERT_TRUE(bitEqual(at(wide, x, y, z, c), expected))
                    << describedCall(source, p, static_cast<int>(c), options);
                ASSERT_TRUE(bitEqual(at(narrow, x, y, z, c), static_cast<float>(expected)))
                    << describedCall(source, p, static_cast<int>(c), options);
            });
    }
};
TYPED_TEST_SUITE(ResultTypes, ElementTypes, ElementTypeNames);

TYPED_TEST(ResultTypes, FloatAndDoubleKeepTheReadingItself)
{
    Seeded random(401);
    forEachInstructionSet([&] {
        for (unsigned int n = 0; n < 40 && !::testing::Test::HasFatalFailure(); ++n) {
            const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(random));
            const Extents& extents = scene.volume.extents;
            const AffineMap map =
                n % 2 == 0 ? axisMap(random, extents) : obliqueMap(random, extents);
            Grid grid = gridOf(map, random.between(1, 21), random.between(1, 4), 2);
            grid.spacing = VoxelSize(0.5, 2, 3);
            forEachPolicy([&](Interpolator* interpolator, Border* border) {
                Options options(interpolator, border, insideValue<TypeParam>(random));
                options.overflow = random.below(2) == 0 ? Overflow::WRAP : Overflow::SATURATE;
                this->compare(scene.image, grid, options);
            });
        }
    });
}

TYPED_TEST(ResultTypes, FloatAndDoubleTakePoliciesOfTheCallersOwn)
{
    Seeded random(402);
    RecordingInterpolator given;
    given.result = 0.3;
    Options options(&given);
    options.threads = 1;
    const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(random));
    this->compare(scene.image, gridOf(AffineMap(), 3, 2, 1), options);
}

TYPED_TEST(ResultTypes, SamplesKeepTheReadingItself)
{
    const WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 1, 1}));
    const Position positions[] = {{0.3, 0, 0}, {1.9, 0, 0}};
    float narrow[2] = {};
    double wide[2] = {};
    ASSERT_EQ(resample::sample(scene.image, positions, 2, Units::VOXELS, 0, narrow), SUCCESS);
    ASSERT_EQ(resample::sample(scene.image, positions, 2, Units::VOXELS, 0, wide), SUCCESS);
    for (int n = 0; n < 2; ++n) {
        EXPECT_TRUE(bitEqual(wide[n], reading(scene.image, positions[n], 0, Options())));
        EXPECT_TRUE(bitEqual(narrow[n], static_cast<float>(wide[n])));
    }
}

// What the compiler accepts and what a call accepts at run time are one table.
TYPED_TEST(ResultTypes, AreRefusedAtRunTimeWhereTheyAreByTheCompiler)
{
    using T = TypeParam;
    const T voxel = 7;
    const resample::View<const void> source = resample::View<const T>(&voxel, 1, 1, 1);
    forEachElementType([&](auto zero) {
        using R = decltype(zero);
        R stored = 1;
        const bool isServed = std::is_same_v<R, T> || std::is_floating_point_v<R>;
        const ErrorType code = isServed ? SUCCESS : ERR_INVALID_ARGUMENT;
        EXPECT_EQ(resample::resample(source, gridOf(AffineMap(), 1, 1, 1),
                                     resample::View<R>(&stored, 1, 1, 1)),
                  code);
        EXPECT_EQ(stored, isServed ? R{7} : R{1});
        stored = 1;
        const Position place = {0, 0, 0};
        EXPECT_EQ(resample::sample(source, &place, 1, Units::VOXELS, 0, &stored), code);
        EXPECT_EQ(stored, isServed ? R{7} : R{1});
    });
}

TEST(OutsideValue, MustBeHeldByTheSourcesType)
{
    VxImage<short> source;
    source.initialize(1, 1, 1, 1);
    VxImage<float> result;
    const Grid grid = gridOf(AffineMap(), 2, 1, 1);
    for (const double odd : {0.5, 40000.0})
        EXPECT_EQ(resample::resample(source, grid, &result, Options(Linear(), Constant(), odd)),
                  ERR_INVALID_ARGUMENT);
    EXPECT_EQ(resample::resample(source, grid, &result, Options(Linear(), Constant(), -1024)),
              SUCCESS);
    EXPECT_EQ(result(1, 0, 0, 0), -1024.0F);
}

}  // namespace
}  // namespace volux::test
