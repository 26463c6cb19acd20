#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Planes;
using resample::Projection;
using resample::Slab;

template <class T>
class Reslice : public ::testing::Test {
protected:
    Reslice() : random(51), scene(randomVolume<T>(random)) {}

    // Somewhere through the volume, in no special direction.
    Planes somePlanes(unsigned int count)
    {
        const auto around = [&] {
            return Position{between(random, -1, 1), between(random, -1, 1), between(random, -1, 1)};
        };
        Planes planes;
        planes.origin = around();
        planes.across = around();
        planes.down = around();
        planes.step = around();
        planes.width = 13;
        planes.height = 5;
        planes.count = count;
        return planes;
    }

    Seeded random;
    WrappedVolume<T> scene;
};
TYPED_TEST_SUITE(Reslice, ElementTypes, ElementTypeNames);

TYPED_TEST(Reslice, GivesVoluxCoresBits)
{
    for (int n = 0; n < 30; ++n) {
        const Planes planes = this->somePlanes(1 + this->random.below(3));
        Options options(kInterpolators[this->random.below(3)], kBorders[this->random.below(2)], 9);
        options.edgeExtends = this->random.below(2) == 0;
        VxImage<TypeParam> result;
        ASSERT_EQ(resample::reslice(this->scene.image, planes, &result, options), SUCCESS);
        expectEverySample(this->scene.image, resample::gridOfPlanes(planes).map, result, options);
    }
}

double projected(const std::vector<double>& samples, Projection projection)
{
    double result = samples[0];
    for (std::size_t n = 1; n < samples.size(); ++n) {
        if (projection == Projection::MEAN)
            result = result + samples[n];
        else if (projection == Projection::MAXIMUM ? samples[n] > result : samples[n] < result)
            result = samples[n];
    }
    return projection == Projection::MEAN ? result / static_cast<double>(samples.size()) : result;
}

TYPED_TEST(Reslice, ProjectsThickSlabs)
{
    using T = TypeParam;
    for (const Projection projection :
         {Projection::MEAN, Projection::MAXIMUM, Projection::MINIMUM}) {
        const Planes planes = this->somePlanes(7);  // more than are filled together
        const Options options(kInterpolators[this->random.below(3)], Replication(), 9);
        VxImage<T> result;
        ASSERT_EQ(
            resample::reslice(this->scene.image, planes, &result, options, Slab{3, projection}),
            SUCCESS);
        ASSERT_EQ(result.getDepth(), 7U);
        const AffineMap map = resample::gridOfPlanes(planes).map;
        for (unsigned int k = 0; k < 7; ++k)
            for (unsigned int j = 0; j < 5; ++j)
                for (unsigned int i = 0; i < 13; ++i) {
                    std::vector<double> samples;
                    for (unsigned int plane = 0; plane < 3; ++plane)
                        samples.push_back(
                            gridReading(this->scene.image, map(i, j, 3 * k + plane), 0, options));
                    const double value = projected(samples, projection);
                    T expected{};
                    if constexpr (std::is_floating_point_v<T>)
                        expected = static_cast<T>(value);
                    else
                        expected = saturated<T>(value);
                    ASSERT_TRUE(bitEqual(at(result, i, j, k, 0), expected))
                        << i << ' ' << j << ' ' << k << ", projection "
                        << static_cast<int>(projection) << ", " << described(options) << ", "
                        << described(map);
                }
    }
}

// The first of equal samples stays, and so does one that a NaN is compared with.
TEST(ResliceSlab, KeepsTheFirstOfWhatIsNeitherGreaterNorLess)
{
    const float zero = 0.0F;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Volume<float> volume = blankVolume<float>({4, 1, 2});
    volume.block = {zero, -zero, nan, 1.0F, -zero, zero, 1.0F, nan};
    const WrappedVolume<float> scene(volume);
    Planes planes;
    planes.step = {0, 0, 1};
    planes.width = 4;
    planes.height = 1;
    for (const Projection projection : {Projection::MAXIMUM, Projection::MINIMUM}) {
        VxImage<float> result;
        ASSERT_EQ(
            resample::reslice(scene.image, planes, &result, NearestNeighbor(), Slab{2, projection}),
            SUCCESS);
        for (int x = 0; x < 4; ++x)
            EXPECT_TRUE(bitEqual(result(x, 0, 0, 0), volume.block[static_cast<std::size_t>(x)]))
                << x;
    }
}

TEST(ReslicePlane, NeedsNoStep)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    Planes planes;
    planes.origin = {1, 0, 0};
    planes.across = {0, 1, 0};
    planes.down = {0, 0, 1};
    planes.width = planes.height = 3;
    VxImage<short> result;
    VxImage<short> expected;
    ASSERT_EQ(resample::reslice(scene.image, planes, &result), SUCCESS);
    ASSERT_EQ(core::getYzPlane(1, scene.image, &expected), SUCCESS);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(result(x, y, 0, 0), expected(x, y, 0, 0));
}

TEST(ReslicePlane, IsRefusedWhereItsAxesAreParallel)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 3, 3}));
    Planes planes;
    planes.across = planes.down = {1, 1, 0};
    planes.width = planes.height = 3;
    VxImage<short> result;
    EXPECT_EQ(resample::reslice(scene.image, planes, &result), ERR_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace volux::test
