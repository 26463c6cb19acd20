// That results show what is where they lie.
#include "volux/resample/Planes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "resample/Expected.h"
#include "resample/PlaneOracle.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

using resample::planeAt;
using resample::Planes;
using resample::planesBetween;
using resample::Slab;

// An image whose channels hold where its voxels are in the world.
void fillWithPlaces(const Geometry& geometry, VxImage<double>& image)
{
    image.terminate();
    image.initialize(geometry.width, geometry.height, geometry.depth, 3);
    const AffineMap map = geometry.toWorld();
    for (unsigned int z = 0; z < geometry.depth; ++z)
        for (unsigned int y = 0; y < geometry.height; ++y)
            for (unsigned int x = 0; x < geometry.width; ++x)
                for (int c = 0; c < 3; ++c)
                    image(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), c) =
                        tripleOf(map(x, y, z)).at(static_cast<std::size_t>(c));
}

void expectPlaces(const VxImage<double>& image, const Geometry& geometry)
{
    const AffineMap map = geometry.toWorld();
    for (unsigned int k = 0; k < image.getDepth(); ++k)
        for (unsigned int j = 0; j < image.getHeight(); ++j)
            for (unsigned int i = 0; i < image.getWidth(); ++i)
                for (unsigned int c = 0; c < 3; ++c)
                    ASSERT_NEAR(at(image, i, j, k, c), tripleOf(map(i, j, k)).at(c), 1e-9)
                        << i << ' ' << j << ' ' << k << ", " << described(geometry);
}

// Linear interpolation reads a position of the world out of positions of the world, and so does
// the mean of a slab: what a plane shows is where it is.
class Places : public ::testing::Test {
protected:
    Places() : random(427) {}

    void place()
    {
        space = randomGeometry(random);
        space.width = space.height = space.depth = 24;
        for (int column = 0; column < 3; ++column)  // sheared as well
            setColumn(space, column, plus(columnOf(space, column), times(randomUnit(random), 0.2)));
        fillWithPlaces(space, image);
    }

    // A few pixels around the middle of the image.
    Geometry plane()
    {
        const double least = std::min({space.spacing.x, space.spacing.y, space.spacing.z});
        return planeAt(space.toWorld()({11.5, 11.5, 11.5}), positionOf(randomUnit(random)),
                       positionOf(randomUnit(random)), 6, 5,
                       VoxelSize(least * 0.7, least * 0.6, least * 0.8));
    }

    Seeded random;
    Geometry space;
    VxImage<double> image;
};

TEST_F(Places, ArePlanesInTheWorld)
{
    for (int n = 0; n < 50; ++n) {
        place();
        const Geometry output = plane();
        VxImage<double> result;
        ASSERT_EQ(resample::resample(image, gridBetween(output, space), &result), SUCCESS);
        expectPlaces(result, output);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(Places, AreTheMiddlesOfSlabs)
{
    for (unsigned int n = 0; n < 50; ++n) {
        place();
        const unsigned int slab = 1 + n % 4;
        Geometry output = plane();
        output.depth = 3;
        VxImage<double> result;
        const Planes planes = planesBetween(output, space, slab);
        ASSERT_EQ(resample::reslice(image, planes, &result, Options(), Slab{slab}), SUCCESS);
        expectPlaces(result, output);
        expectPlaces(result, gridOfPlanes(space, planes, slab).geometry);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_F(Places, AreTheVoxelsOfAnotherSpacing)
{
    place();
    const double s = 0.75;
    const auto [grid, geometry] = gridOfSpacing(
        space, VoxelSize(space.spacing.x * s, space.spacing.y * s, space.spacing.z * s),
        resample::Align::CENTRES);
    VxImage<double> result;
    ASSERT_EQ(resample::resample(image, grid, &result), SUCCESS);
    expectPlaces(result, geometry);
}

}  // namespace
}  // namespace volux::test
