#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/BitExact.h"
#include "support/ImageFields.h"
#include "support/OwnPolicies.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

template <class T>
class Sampling : public ::testing::Test {
protected:
    // Voxel (x, y, z) holds 1 + x + 3y + 9z.
    Sampling() : scene(countingVolume<T>({3, 3, 3})), image(scene.image) {}

    WrappedVolume<T> scene;
    const VxImage<T>& image;
};
TYPED_TEST_SUITE(Sampling, ElementTypes, ElementTypeNames);

TYPED_TEST(Sampling, PhysicalPositionsAreDividedByTheSpacingOfTheirAxis)
{
    this->scene.image.setVoxelSize(2.0, 0.5, 4.0);
    const TypeParam voxel{1 + 1 + 6 + 9};
    EXPECT_EQ(this->image.getValueReal(2.0, 1.0, 4.0, 0), voxel);
    EXPECT_EQ(this->image.getValueReal(2.0, 1.0, 4.0, 0, LINEAR), voxel);
    EXPECT_EQ(this->image.getValueReal(2.0, 1.0, 4.0, 0, NEAREST_NEIGHBOR, REPLICATION, 0), voxel);
    EXPECT_EQ(this->image.getDoubleValueReal(2.0, 1.0, 4.0, 0, CUBIC), 17.0);
    EXPECT_EQ(this->image.getDoubleValueReal(1.0, 1.0, 4.0, 0, LINEAR, CONSTANT, 0), 16.5);
}

TYPED_TEST(Sampling, VoxelPositionsIgnoreTheSpacing)
{
    this->scene.image.setVoxelSize(2.0, 0.5, 4.0);
    EXPECT_EQ(this->image.getValueVoxel(2.0, 1.0, 0.0, 0, LINEAR), TypeParam{6});
    EXPECT_EQ(this->image.getValueVoxel(2.0, 1.0, 0.0, 0, CUBIC, REPLICATION, 0), TypeParam{6});
}

TYPED_TEST(Sampling, APhysicalPositionOfZeroIsTheFirstVoxel)
{
    this->scene.image.setVoxelSize(0.3, 7.0, 1e9);
    EXPECT_EQ(this->image.getValueReal(0.0, 0.0, 0.0, 0), TypeParam{1});
    EXPECT_EQ(this->image.getDoubleValueReal(0.0, 0.0, 0.0, 0, CUBIC), 1.0);
}

TYPED_TEST(Sampling, PositionsAreDividedNotMultipliedByTheReciprocal)
{
    ASSERT_NE(49.0 * (1.0 / 49.0), 1.0);
    this->scene.image.setVoxelSize(49.0, 49.0, 49.0);
    EXPECT_TRUE(bitEqual(this->image.getDoubleValueReal(49.0, 0.0, 0.0, 0, LINEAR), 2.0));
    RecordingInterpolator interpolator;
    this->image.getValueReal(49.0, 98.0, 147.0, 0, &interpolator);
    EXPECT_TRUE(bitEqual(interpolator.calls.at(0).x, 1.0));
    EXPECT_TRUE(bitEqual(interpolator.calls.at(0).y, 2.0));
    EXPECT_TRUE(bitEqual(interpolator.calls.at(0).z, 3.0));
}

TYPED_TEST(Sampling, SpacingsAtAndBesideOneGiveTheBitsOfTheDivision)
{
    const double below = std::nextafter(1.0, 0.0);
    const double above = std::nextafter(1.0, 2.0);
    const double smallest = std::numeric_limits<double>::denorm_min();
    const double largest = std::numeric_limits<double>::max();
    for (const double spacing : {1.0, below, above}) {
        this->scene.image.setVoxelSize(spacing, 1.0, below);
        for (const double at : {0.0, -0.0, 1.0, -1.0, below, above, 0.1, -2.5, smallest, largest,
                                kInfinity, -kInfinity, kNaN}) {
            RecordingInterpolator interpolator;
            this->image.getValueReal(at, at, at, 0, &interpolator);
            EXPECT_TRUE(bitEqual(interpolator.calls.at(0).x, at / spacing));
            EXPECT_TRUE(bitEqual(interpolator.calls.at(0).y, at / 1.0));
            EXPECT_TRUE(bitEqual(interpolator.calls.at(0).z, at / below));
        }
    }
}

TYPED_TEST(Sampling, FormsWithoutABorderReadZeroFarOutside)
{
    const TypeParam zero{0};
    for (const double far : {-7.0, 5.5, 1e6, -2e9}) {
        EXPECT_TRUE(bitEqual(this->image.getValueVoxel(far, 0, 0, 0, NEAREST_NEIGHBOR), zero));
        EXPECT_TRUE(bitEqual(this->image.getValueVoxel(0, far, 0, 0, LINEAR), zero));
        EXPECT_TRUE(bitEqual(this->image.getValueVoxel(0, 0, far, 0, CUBIC), zero));
        EXPECT_TRUE(bitEqual(this->image.getValueReal(far, 0, 0, 0, NEAREST_NEIGHBOR), zero));
        EXPECT_TRUE(bitEqual(this->image.getValueReal(0, far, 0, 0, &LINEAR), zero));
        EXPECT_TRUE(bitEqual(this->image.getValueReal(0, 0, far, 0), zero));
        EXPECT_EQ(this->image.getDoubleValueReal(far, 0, 0, 0, &NEAREST_NEIGHBOR), 0.0);
        EXPECT_EQ(this->image.getDoubleValueReal(0, far, 0, 0, LINEAR), 0.0);
        EXPECT_EQ(this->image.getDoubleValueReal(0, 0, far, 0, &CUBIC), 0.0);
    }
}

TYPED_TEST(Sampling, FormsWithoutABorderBlendWithZeroAtTheEdge)
{
    EXPECT_EQ(this->image.getDoubleValueReal(-0.5, 1.0, 0.0, 0, LINEAR), 2.0);
    EXPECT_EQ(this->image.getDoubleValueReal(-0.5, 1.0, 0.0, 0, LINEAR, CONSTANT, 0), 2.0);
    EXPECT_EQ(this->image.getDoubleValueReal(-0.5, 1.0, 0.0, 0, LINEAR, REPLICATION, 0), 4.0);
    EXPECT_EQ(this->image.getValueReal(-0.5, 1.0, 0.0, 0), TypeParam{2});
}

TYPED_TEST(Sampling, TheValueOfTheCallIsWhatConstantReads)
{
    const TypeParam nine{9};
    EXPECT_EQ(this->image.getValueVoxel(-4, 0, 0, 0, NEAREST_NEIGHBOR, CONSTANT, nine), nine);
    EXPECT_EQ(this->image.getValueReal(-4, 0, 0, 0, LINEAR, CONSTANT, nine), nine);
    EXPECT_EQ(this->image.getDoubleValueReal(-4, 0, 0, 0, CUBIC, CONSTANT, nine), 9.0);
    EXPECT_EQ(this->image.getValueVoxel(-4, 0, 0, 0, &LINEAR, &CONSTANT, nine), nine);
}

TYPED_TEST(Sampling, ReplicationIgnoresTheValueOfTheCall)
{
    const TypeParam nine{9};
    EXPECT_EQ(this->image.getValueVoxel(-4, 1, 0, 0, NEAREST_NEIGHBOR, REPLICATION, nine),
              TypeParam{4});
    EXPECT_EQ(this->image.getValueReal(8, 1, 0, 0, LINEAR, REPLICATION, nine), TypeParam{6});
    EXPECT_EQ(this->image.getDoubleValueReal(-4, 1, 0, 0, CUBIC, &REPLICATION, nine), 4.0);
}

TYPED_TEST(Sampling, TheFormWithoutPoliciesIsLinearWithZeroOutside)
{
    this->scene.image.setVoxelSize(0.7, 1.3, 2.1);
    for (double p = -2.0; p < 6.0; p += 0.37) {
        const TypeParam plain = this->image.getValueReal(p, 0.5 * p, p + 0.2, 0);
        EXPECT_TRUE(bitEqual(plain, this->image.getValueReal(p, 0.5 * p, p + 0.2, 0, LINEAR,
                                                             CONSTANT, TypeParam{0})));
    }
}

TYPED_TEST(Sampling, TheChannelIsChosenThroughItsStride)
{
    const WrappedVolume<TypeParam> planes(countingVolume<TypeParam>(planar(3, 2, 2, 2)));
    EXPECT_EQ(planes.image.getDoubleValueReal(0.5, 0, 0, 1, LINEAR), 13.5);
    EXPECT_EQ(planes.image.getValueVoxel(2, 1, 1, 1, &CUBIC), TypeParam{24});
}

TYPED_TEST(Sampling, TheChannelIsNeverTested)
{
    const WrappedVolume<TypeParam> pairs(countingVolume<TypeParam>({6, 1, 1}, 2));
    EXPECT_EQ(pairs.image.getValueVoxel(2, 0, 0, -1, NEAREST_NEIGHBOR), TypeParam{4});
    EXPECT_EQ(pairs.image.getValueReal(2, 0, 0, -1, &LINEAR), TypeParam{4});
    EXPECT_EQ(pairs.image.getDoubleValueReal(2, 0, 0, -1, CUBIC), 4.0);
    EXPECT_EQ(pairs.image.getValueVoxel(2, 0, 0, 2, NEAREST_NEIGHBOR), TypeParam{7});
    EXPECT_EQ(pairs.image.getValueReal(2, 0, 0, 3, &LINEAR), TypeParam{8});
}

TYPED_TEST(Sampling, AnEmptyImageReadsAsOutsideEverywhere)
{
    const VxImage<TypeParam> empty;
    const TypeParam nine{9};
    EXPECT_EQ(empty.getValueVoxel(0, 0, 0, 0, NEAREST_NEIGHBOR), TypeParam{0});
    EXPECT_EQ(empty.getValueReal(0, 0, 0, 0), TypeParam{0});
    EXPECT_EQ(empty.getValueVoxel(0, 0, 0, 0, LINEAR, CONSTANT, nine), nine);
    EXPECT_EQ(empty.getDoubleValueReal(0, 0, 0, 0, &CUBIC, &CONSTANT, nine), 9.0);
}

TYPED_TEST(Sampling, GuardsAroundAWrappedVolumeAreNeverRead)
{
    auto guarded = blankVolume<TypeParam>({2, 2, 2});
    guarded.strideY = 5;
    guarded.strideZ = 20;
    guarded.origin = 8;
    guarded.block.assign(60, TypeParam{200});
    for (const std::int64_t n : {8, 9, 13, 14, 28, 29, 33, 34})
        guarded.block[static_cast<std::size_t>(n)] = TypeParam{4};
    const WrappedVolume<TypeParam> wrapped(guarded);
    for (double p = -3.0; p <= 4.0; p += 0.25) {
        EXPECT_EQ(wrapped.image.getDoubleValueReal(p, 1, 0, 0, NEAREST_NEIGHBOR, REPLICATION, 0),
                  4.0);
        EXPECT_EQ(wrapped.image.getDoubleValueReal(1, p, 0, 0, LINEAR, REPLICATION, 0), 4.0);
        EXPECT_EQ(wrapped.image.getDoubleValueReal(1, 0, p, 0, CUBIC, REPLICATION, 0), 4.0);
    }
}

TYPED_TEST(Sampling, ANaNPositionReachesTheKernel)
{
    EXPECT_EQ(this->image.getValueVoxel(kNaN, 0, 0, 0, NEAREST_NEIGHBOR, REPLICATION, 0),
              TypeParam{3});
    EXPECT_EQ(this->image.getValueReal(kNaN, 0, 0, 0, NEAREST_NEIGHBOR), TypeParam{0});
    EXPECT_TRUE(std::isnan(this->image.getDoubleValueReal(0, kNaN, 0, 0, LINEAR)));
    EXPECT_TRUE(std::isnan(this->image.getDoubleValueReal(0, 0, kNaN, 0, &CUBIC)));
}

TYPED_TEST(Sampling, ASpacingThatIsNotFiniteIsDividedByLikeAnyOther)
{
    this->scene.image.setVoxelSize(kInfinity, kNaN, 1.0);
    RecordingInterpolator interpolator;
    this->image.getValueReal(5.0, 5.0, 5.0, 0, &interpolator);
    this->image.getValueReal(-5.0, 5.0, 5.0, 0, &interpolator);
    this->image.getValueReal(kInfinity, 5.0, 5.0, 0, &interpolator);
    EXPECT_TRUE(bitEqual(interpolator.calls.at(0).x, 0.0));
    EXPECT_TRUE(bitEqual(interpolator.calls.at(1).x, -0.0));
    EXPECT_TRUE(std::isnan(interpolator.calls.at(2).x));
    EXPECT_TRUE(std::isnan(interpolator.calls.at(0).y));
    EXPECT_EQ(interpolator.calls.at(0).z, 5.0);
}

TEST(SamplingWithASpacingOfZero, PassesInfinityOrNaNToTheKernel)
{
    WrappedVolume<short> scene(rowVolume<short>({1, 2, 3}));
    ImageFields<short> fields = fieldsOf(scene.image);
    fields.voxelSizeX = 0.0;  // which no member sets
    overwriteFields(scene.image, fields);
    const VxImage<short>& image = scene.image;
    EXPECT_EQ(image.getValueReal(1.0, 0, 0, 0, NEAREST_NEIGHBOR, REPLICATION, 0), 1);
    EXPECT_EQ(image.getValueReal(-1.0, 0, 0, 0, NEAREST_NEIGHBOR, REPLICATION, 0), 3);
    EXPECT_EQ(image.getValueReal(0.0, 0, 0, 0, NEAREST_NEIGHBOR, REPLICATION, 0), 3);
    EXPECT_TRUE(std::isnan(image.getDoubleValueReal(1.0, 0, 0, 0, LINEAR)));
    EXPECT_TRUE(std::isnan(image.getDoubleValueReal(0.0, 0, 0, 0, &CUBIC)));
}

TEST(SamplingByFractions, LeavesTheReadsAtWholePositionsAsTheyAre)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    EXPECT_EQ(scene.image.getValueVoxel(2, 1, 0, 0), 6);
    EXPECT_EQ(scene.image.getValueVoxel(2, 1, 0), 6);
    EXPECT_EQ(scene.image.getValueVoxel(-1, 1, 0, 0), 0);
}

}  // namespace
}  // namespace volux::test
