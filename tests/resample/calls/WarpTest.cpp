// Sources read through a field of displacements.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "resample/WarpOracle.h"
#include "support/OwnPolicies.h"
#include "volux/resample.h"

namespace volux::test {
namespace {

template <class T>
class Warps : public ::testing::Test {
protected:
    template <class V>
    static void comparePolicies(std::uint64_t seed, double size)
    {
        Seeded random(seed);
        const Extents extents{9, 7, 5};
        const ViewedVolume<T> source(random, extents, 2, true);
        const WarpScene<V> scene(random, {6, 4, 5}, extents, size);
        const Grid grid = gridOf(obliqueMap(random, extents, 0.3), 21, 5, 4);
        forEachPolicy([&](Interpolator* interpolator, Border* border) {
            Options options(interpolator, border, insideValue<T>(random));
            expectWarped(source.image, scene.vectors.image, grid, scene.warp, options);
            options.edgeExtends = true;
            expectWarped(source.image, scene.vectors.image, grid, scene.warp, options);
        });
    }
};
TYPED_TEST_SUITE(Warps, ElementTypes, ElementTypeNames);

TYPED_TEST(Warps, GiveTheBitsOfSingleCallsThroughFieldsOfFloat)
{
    forEachInstructionSet([] {
        for (std::uint64_t seed = 400; seed < 406; ++seed)
            Warps<TypeParam>::template comparePolicies<float>(seed, 3.0);
    });
}

TYPED_TEST(Warps, GiveTheBitsOfSingleCallsThroughFieldsOfDouble)
{
    forEachInstructionSet([] {
        for (std::uint64_t seed = 410; seed < 416; ++seed)
            Warps<TypeParam>::template comparePolicies<double>(seed, 3.0);
    });
}

TYPED_TEST(Warps, LeadAnyDistanceAway)
{
    forEachInstructionSet([] {
        for (const double size : {100.0, 2e9, 1e18, 1e300})
            Warps<TypeParam>::template comparePolicies<double>(420, size);
    });
}

// Rows longer than a block, of which some end inside a vector.
TYPED_TEST(Warps, AreTheSameWithAnyNumberOfThreads)
{
    Seeded random(430);
    const Extents extents{40, 30, 20};
    const ViewedVolume<TypeParam> source(random, extents, 1, false);
    WarpScene<float> scene(random, {7, 6, 5}, extents, 3.0);
    scene.warp.toField = {{{0.1, 0, 0, 0}, {0, 0.2, 0, 0}, {0, 0, 0.25, 0}}};
    scene.warp.toVoxels = AffineMap();
    const Grid grid = gridOf({{{0.3, 0.01, 0, -2}, {0, 0.5, 0.1, 0}, {0, 0, 0.5, 0}}}, 157, 61, 33);
    Options options(Linear(), Replication(), 3);
    options.threads = 1;
    VxImage<TypeParam> first;
    ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &first, options), SUCCESS);
    expectEveryWarpedSample(source.image, scene.vectors.image, grid, scene.warp,
                            resample::viewOf(first), options);
    for (const unsigned int threads : {2U, 3U, 7U, 0U}) {
        VxImage<TypeParam> result;
        options.threads = threads;
        ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &result, options), SUCCESS);
        EXPECT_EQ(std::memcmp(first.getBufferPointer(), result.getBufferPointer(),
                              std::size_t{157} * 61 * 33 * sizeof(TypeParam)),
                  0)
            << threads << " threads";
    }
}

TYPED_TEST(Warps, WriteToViewsOfAnyStrides)
{
    Seeded random(440);
    const Extents extents{8, 7, 6};
    for (int n = 0; n < 20; ++n) {
        const ViewedVolume<TypeParam> source(random, extents, 2, true);
        const ViewedVolume<TypeParam> result(random, {17, 3, 4}, 2, false);
        const WarpScene<float> scene(random, {5, 4, 3}, extents, 2.0);
        const Grid grid = gridOf(obliqueMap(random, extents, 0.3), 17, 3, 4);
        const Options options(Linear(), Replication(), 3);
        ASSERT_EQ(resample::resample(View<const TypeParam>(source.view), grid, scene.warp,
                                     result.view, options),
                  SUCCESS);
        expectEveryWarpedSample(source.image, scene.vectors.image, grid, scene.warp, result.view,
                                options);
    }
}

struct WarpValues : ::testing::Test {
    WarpValues() : random(450), source(random, {9, 8, 7}, 1, false) {}

    Seeded random;
    ViewedVolume<short> source;
    WarpScene<float> scene{random, {5, 4, 6}, {9, 8, 7}, 2.0};
    Grid grid = gridOf(obliqueMap(random, {9, 8, 7}, 0.3), 14, 6, 5);
};

TEST_F(WarpValues, OfTypeDoubleAreTheReadingsThemselves)
{
    VxImage<double> result;
    ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &result, Cubic()), SUCCESS);
    forEachElement(resample::viewOf(result), [&](auto i, auto j, auto k, auto c) {
        const Position s =
            expectedPlace(scene.vectors.image, scene.warp, positionOf(grid.map, i, j, k));
        EXPECT_TRUE(bitEqual(at(result, i, j, k, c), gridReading(source.image, s, 0, Cubic())));
    });
}

TEST_F(WarpValues, ComeFromPoliciesOfTheCallersOwn)
{
    PeriodicBorder periodic;
    expectWarped(source.image, scene.vectors.image, grid, scene.warp, Options(&LINEAR, &periodic));
}

TEST_F(WarpValues, AreThoseOfAPlainGridWhereTheFieldIsFarAway)
{
    scene.warp.toField.rows[1][3] = 1e6;
    scene.warp.toVoxels = AffineMap();
    VxImage<short> result;
    ASSERT_EQ(resample::resample(source.view, grid, scene.warp, &result), SUCCESS);
    expectEverySample(source.image, grid.map, result, Options());
}

TEST_F(WarpValues, AreReadWhereThePositionsAloneLead)
{
    for (int n = 0; n < 500; ++n) {
        const oracle::Position drawn = randomPosition(random, {9, 8, 7});
        const Position p = {drawn.x, drawn.y, drawn.z};
        const Position expected = expectedPlace(scene.vectors.image, scene.warp, p);
        const Position led = scene.warp(p);
        ASSERT_TRUE(bitEqual(led.x, expected.x)) << described(scene.warp);
        ASSERT_TRUE(bitEqual(led.y, expected.y)) << described(scene.warp);
        ASSERT_TRUE(bitEqual(led.z, expected.z)) << described(scene.warp);
    }
}

TEST_F(WarpValues, AreOutsideWhereAVectorIsNotFinite)
{
    for (const float odd :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        scene.set({2, 1, 3}, odd, 0.0F, 0.0F);
        expectWarped(source.image, scene.vectors.image, grid, scene.warp,
                     Options(Linear(), Replication(), 7));
        Options extending(Cubic(), Replication(), 7);
        extending.edgeExtends = true;
        expectWarped(source.image, scene.vectors.image, grid, scene.warp, extending);
        expectWarped(source.image, scene.vectors.image, grid, scene.warp,
                     Options(Linear(), Constant(), 7));
    }
}

// Each vector is (10, 20, 30), so that a place tells whether the field was read.
class WarpView : public ::testing::Test {
protected:
    WarpView()
    {
        field.initialize(5, 3, 4, 3);
        for (int n = 0; n < 5 * 3 * 4; ++n)
            for (int c = 0; c < 3; ++c)
                field.getBufferPointer()[3 * n + c] = 10.0 * (c + 1);
    }

    VxImage<double> field;
    const AffineMap identity{};
};

struct FieldEnd {
    double position;
    bool isRead;
};

TEST_F(WarpView, EndsHalfAVoxelBeyondTheOuterNodes)
{
    const Warp warp(field, identity, identity);
    const double extents[] = {5, 3, 4};
    for (int axis = 0; axis < 3; ++axis) {
        const double end = extents[axis] - 0.5;
        const FieldEnd ends[] = {{-0.5, true},
                                 {std::nextafter(-0.5, -1.0), false},
                                 {std::nextafter(-0.5, 0.0), true},
                                 {-0.0, true},
                                 {end, false},
                                 {std::nextafter(end, 0.0), true},
                                 {std::nextafter(end, 100.0), false},
                                 {-2147483649.0, false},
                                 {4294967296.0, false},
                                 {1e300, false}};
        for (const FieldEnd& at : ends) {
            double p[] = {1.0, 1.0, 1.0};
            p[axis] = at.position;
            const Position led = warp({p[0], p[1], p[2]});
            EXPECT_EQ(led.x, p[0] + (at.isRead ? 10.0 : 0.0)) << at.position << ", axis " << axis;
            EXPECT_EQ(led.y, p[1] + (at.isRead ? 20.0 : 0.0)) << at.position << ", axis " << axis;
            EXPECT_EQ(led.z, p[2] + (at.isRead ? 30.0 : 0.0)) << at.position << ", axis " << axis;
        }
    }
}

TEST_F(WarpView, HoldsNoPlaceThatIsNotANumber)
{
    const Position led = Warp(field, identity, identity)({kNaN, 1.0, 1.0});
    EXPECT_TRUE(std::isnan(led.x));
}

TEST(WarpPlaces, AreNotNumbersForAWarpThatIsRefused)
{
    const Position led = Warp()({1.0, 2.0, 3.0});
    EXPECT_TRUE(std::isnan(led.x) && std::isnan(led.y) && std::isnan(led.z));
}

}  // namespace
}  // namespace volux::test
