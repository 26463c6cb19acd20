#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "support/BitExact.h"
#include "support/SamplingSpellings.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

using oracle::Position;

// A small volume with a spacing, and a point near its edge where no two policies agree.
class Written : public ::testing::Test {
protected:
    Written() : scene(rowVolume<short>({100, 500, -300, 900}))
    {
        scene.image.setVoxelSize(2.0, 1.0, 1.0);
    }

    WrappedVolume<short> scene;
    const VxImage<short>& image = scene.image;
    Interpolator* nearest = &NEAREST_NEIGHBOR;
    Interpolator* linear = &LINEAR;
    Interpolator* cubic = &CUBIC;
    Border* constant = &CONSTANT;
    Border* replication = &REPLICATION;
};

// The three families with one spelling of the run-time interpolator for all of them.
template <class I>
double sumOfReadings(const VxImage<short>& image, Interpolator* interpolator)
{
    return image.getValueVoxel<I>(3.25, 0, 0, 0, interpolator) +
           image.getValueReal<I>(6.5, 0, 0, 0, interpolator) +
           image.getDoubleValueReal<I>(6.5, 0, 0, 0, interpolator);
}

template <class I, class B>
double sumOfBorderedReadings(const VxImage<short>& image, Interpolator* interpolator, B border)
{
    return image.getValueVoxel<I, B>(3.25, 0, 0, 0, interpolator, border, 100) +
           image.getValueReal<I, B>(6.5, 0, 0, 0, interpolator, border, 100) +
           image.getDoubleValueReal<I, B>(6.5, 0, 0, 0, interpolator, border, 100);
}

TEST_F(Written, OneSpellingOfTheRunTimeInterpolatorServesAllFamilies)
{
    EXPECT_EQ(sumOfReadings<Interpolator>(image, linear), 3 * 675.0);
    EXPECT_EQ(sumOfReadings<Interpolator*>(image, linear), 3 * 675.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator>(image, linear, CONSTANT), 3 * 700.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator*>(image, linear, CONSTANT), 3 * 700.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator>(image, linear, REPLICATION), 3 * 900.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator*>(image, linear, REPLICATION), 3 * 900.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator>(image, linear, constant), 3 * 700.0);
    EXPECT_EQ(sumOfBorderedReadings<Interpolator*>(image, linear, constant), 3 * 700.0);
}

TEST_F(Written, VoxelReadsWithTemplateArguments)
{
    EXPECT_EQ(image.getValueVoxel<NearestNeighbor>(3.25, 0, 0, 0, NEAREST_NEIGHBOR), 900);
    EXPECT_EQ(image.getValueVoxel<Linear>(3.25, 0, 0, 0, LINEAR), 675);
    EXPECT_EQ(image.getValueVoxel<Interpolator>(3.25, 0, 0, 0, linear), 675);
    EXPECT_EQ((image.getValueVoxel<Linear, Constant>(3.25, 0, 0, 0, LINEAR, CONSTANT, 100)), 700);
    EXPECT_EQ((image.getValueVoxel<Linear, Replication>(3.25, 0, 0, 0, LINEAR, REPLICATION, 0)),
              900);
    EXPECT_EQ((image.getValueVoxel<Linear, Border*>(3.25, 0, 0, 0, LINEAR, constant, 100)), 700);
    EXPECT_EQ((image.getValueVoxel<Interpolator, Constant>(3.25, 0, 0, 0, linear, CONSTANT, 100)),
              700);
    EXPECT_EQ(
        (image.getValueVoxel<Interpolator, Replication>(3.25, 0, 0, 0, linear, REPLICATION, 0)),
        900);
    EXPECT_EQ((image.getValueVoxel<Interpolator, Border*>(3.25, 0, 0, 0, linear, constant, 100)),
              700);
}

TEST_F(Written, PhysicalReadsWithTemplateArguments)
{
    EXPECT_EQ(image.getValueReal(6.5, 0, 0, 0), 675);
    EXPECT_EQ(image.getValueReal<Cubic>(3.0, 0, 0, 0, CUBIC), 50);
    EXPECT_EQ(image.getValueReal<Interpolator*>(3.0, 0, 0, 0, cubic), 50);
    EXPECT_EQ((image.getValueReal<Linear, Constant>(6.5, 0, 0, 0, LINEAR, CONSTANT, 100)), 700);
    EXPECT_EQ((image.getValueReal<Linear, Border*>(6.5, 0, 0, 0, LINEAR, replication, 0)), 900);
    EXPECT_EQ((image.getValueReal<Interpolator*, Constant>(6.5, 0, 0, 0, linear, CONSTANT, 100)),
              700);
    EXPECT_EQ(
        (image.getValueReal<Interpolator*, Replication>(6.5, 0, 0, 0, linear, REPLICATION, 0)),
        900);
    EXPECT_EQ((image.getValueReal<Interpolator*, Border*>(6.5, 0, 0, 0, linear, constant, 100)),
              700);
}

TEST_F(Written, DoubleReadsWithTemplateArguments)
{
    EXPECT_EQ(image.getDoubleValueReal<Cubic>(3.0, 0, 0, 0, CUBIC), 50.0);
    EXPECT_EQ(image.getDoubleValueReal<Interpolator*>(6.25, 0, 0, 0, linear), 787.5);
    EXPECT_EQ((image.getDoubleValueReal<Linear, Constant>(6.25, 0, 0, 0, LINEAR, CONSTANT, 100)),
              800.0);
    EXPECT_EQ((image.getDoubleValueReal<Linear, Border*>(6.25, 0, 0, 0, LINEAR, constant, 100)),
              800.0);
    EXPECT_EQ(
        (image.getDoubleValueReal<Interpolator, Constant>(6.25, 0, 0, 0, linear, CONSTANT, 100)),
        800.0);
    EXPECT_EQ((image.getDoubleValueReal<Interpolator, Replication>(6.25, 0, 0, 0, linear,
                                                                   REPLICATION, 0)),
              900.0);
    EXPECT_EQ(
        (image.getDoubleValueReal<Interpolator, Border*>(6.25, 0, 0, 0, linear, constant, 100)),
        800.0);
}

TEST_F(Written, ReadsWithoutTemplateArguments)
{
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, LINEAR), 675);
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, linear), 675);
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, &LINEAR), 675);
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, LINEAR, CONSTANT, 100), 700);
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, linear, constant, 100), 700);
    EXPECT_EQ(image.getValueVoxel(3.25, 0, 0, 0, &LINEAR, &CONSTANT, 100), 700);
    EXPECT_EQ(image.getValueReal(6.5, 0, 0, 0, LINEAR, replication, 0), 900);
    EXPECT_EQ(image.getValueReal(6.5, 0, 0, 0, linear, &REPLICATION, 0), 900);
    EXPECT_EQ(image.getValueReal(6.5, 0, 0, 0, &LINEAR, REPLICATION, 0), 900);
    EXPECT_EQ(image.getDoubleValueReal(6.25, 0, 0, 0, nearest, constant, 0), 900.0);
    EXPECT_EQ(image.getDoubleValueReal(6.25, 0, 0, 0, Linear(), Constant(), 100), 800.0);
}

TEST_F(Written, KernelsCalledDirectly)
{
    EXPECT_EQ((Linear().operator()<short, Constant>(image, 3.25, 0, 0, 0U, CONSTANT, 100)), 700.0);
    EXPECT_EQ((Linear().operator()<short, Border*>(image, 3.25, 0, 0, 0U, constant, 100)), 700.0);
    EXPECT_EQ(
        (NearestNeighbor().operator()<short, Replication>(image, 9, 0, 0, 0U, REPLICATION, 0)),
        900);
    EXPECT_EQ((Cubic().operator()<short, Constant>(image, 1.5, 0, 0, 0U, CONSTANT, 0)), 50.0);
}

// Inside, at ties and edges, at negative whole numbers, outside, and where nothing is finite.
const Position kPositions[] = {
    {1.0, 1.0, 1.0},          {0.3, 1.7, 0.9},       {1.5, 0.5, 1.5},      {-0.5, 2.5, 1.0},
    {-1.0, -2.0, 0.25},       {2.75, 0.125, -0.625}, {2.0, 2.0, 2.0},      {-7.5, 1.1, 40.0},
    {1e10, 0.5, 0.5},         {0.5, -1e300, 0.5},    {std::nan(""), 1, 1}, {1, 1, INFINITY},
    {0.5, 2147483646.5, 0.5}, {-2147483648.0, 0, 0}};

template <class T>
class EverySpelling : public ::testing::Test {
protected:
    EverySpelling() : scene(source()) {}

    static Volume<T> source()
    {
        Volume<T> volume = variedVolume<T>({3, 4, 3}, 2);
        volume.spacing = {0.5, 2.0, 0.7};
        return volume;
    }

    double expected(const Spelling<T>& spelling, const Position& p, T value) const
    {
        return oracle::sample<T>(scene.volume,
                                 {spelling.form, spelling.kernel, spelling.border, p, 1, value});
    }

    WrappedVolume<T> scene;
};
TYPED_TEST_SUITE(EverySpelling, ElementTypes, ElementTypeNames);

TYPED_TEST(EverySpelling, GivesTheBitsOfTheOracle)
{
    const TypeParam value = someValue<TypeParam>(1000);
    for (const Spelling<TypeParam>& spelling : allSpellings<TypeParam>()) {
        for (const Position& p : kPositions) {
            const double sampled = spelling.sample({this->scene.image, p, 1, value});
            EXPECT_TRUE(bitEqual(sampled, this->expected(spelling, p, value)))
                << nameOf(spelling) << " at " << std::hexfloat << p.x << ' ' << p.y << ' ' << p.z;
        }
    }
}

}  // namespace
}  // namespace volux::test
