// Where the results of grids lie in the world.
#include "volux/resample/Grid.h"

#include <gtest/gtest.h>

#include <cmath>

#include "resample/Expected.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

using resample::Align;
using resample::PlacedGrid;
using resample::Planes;

constexpr Align kAligns[] = {Align::EDGES, Align::CENTRES};

Geometry alongX(unsigned int width, double spacing, double origin)
{
    Geometry geometry;
    geometry.width = width;
    geometry.height = geometry.depth = 1;
    geometry.spacing.x = spacing;
    geometry.origin.x = origin;
    return geometry;
}

struct OriginCase {
    unsigned int from;
    unsigned int to;
    Align align;
    double origin;   // of the result; the source's is 10
    double spacing;  // of the result; the source's is 2
};

constexpr OriginCase kOrigins[] = {
    {4, 8, Align::EDGES, 9.5, 1.0},   // half the difference, towards the edge
    {4, 2, Align::EDGES, 11.0, 4.0},  // half the difference, away from it
    {4, 4, Align::EDGES, 10.0, 2.0},   {4, 1, Align::EDGES, 13.0, 8.0},
    {1, 1, Align::EDGES, 10.0, 2.0},   {1, 4, Align::EDGES, 9.25, 0.5},
    {5, 9, Align::CENTRES, 10.0, 1.0}, {5, 3, Align::CENTRES, 10.0, 4.0},
    {5, 1, Align::CENTRES, 14.0, 2.0},  // the middle of five centres
    {1, 3, Align::CENTRES, 8.0, 2.0},   // their middle is on the only voxel
    {1, 1, Align::CENTRES, 10.0, 2.0},
};

TEST(PlacedGrid, HasTheOriginThatItsConventionAsksFor)
{
    for (const OriginCase& entry : kOrigins) {
        const auto [grid, geometry] =
            gridOfSize(alongX(entry.from, 2.0, 10.0), entry.to, 1, 1, entry.align);
        EXPECT_EQ(geometry.origin.x, entry.origin) << entry.from << " to " << entry.to;
        EXPECT_EQ(geometry.spacing.x, entry.spacing) << entry.from << " to " << entry.to;
        EXPECT_EQ(geometry.width, entry.to);
        EXPECT_EQ(grid.width, entry.to);
    }
}

TEST(PlacedGrid, MovesTheOriginAlongDirectionsOfTheSource)
{
    Geometry source = alongX(4, 2.0, 10.0);
    source.direction[0][0] = 0.0;
    source.direction[1][0] = -1.0;  // x of the image against y of the world
    source.direction[0][1] = 1.0;
    const Geometry result = gridOfSize(source, 8, 1, 1, Align::EDGES).geometry;
    EXPECT_TRUE(sameTriple(tripleOf(result.origin), {10.0, 0.5, 0.0}));
    EXPECT_TRUE(sameTriple(columnOf(result, 0), columnOf(source, 0)));
}

void expectSameGrid(const Grid& grid, const Grid& expected)
{
    EXPECT_EQ(grid.width, expected.width);
    EXPECT_EQ(grid.height, expected.height);
    EXPECT_EQ(grid.depth, expected.depth);
    EXPECT_EQ(grid.spacing, expected.spacing);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_TRUE(bitEqual(grid.map.rows[row][column], expected.map.rows[row][column]));
}

// The extents and the spacing are the grid's, the directions are the source's, and the origin is
// where the grid reads first, added up from the documented map.
void expectPlaced(const PlacedGrid& placed, const Geometry& source)
{
    const Geometry& result = placed.geometry;
    EXPECT_EQ(result.width, placed.grid.width);
    EXPECT_EQ(result.height, placed.grid.height);
    EXPECT_EQ(result.depth, placed.grid.depth);
    EXPECT_EQ(result.spacing, placed.grid.spacing);
    const Triple spacing = tripleOf(source.spacing);
    Triple origin{};
    for (std::size_t r = 0; r < 3; ++r) {
        const auto& direction = source.direction[r];
        const auto& rows = placed.grid.map.rows;
        origin.at(r) = tripleOf(source.origin).at(r) + direction[2] * spacing[2] * rows[2][3];
        origin.at(r) = origin.at(r) + direction[1] * spacing[1] * rows[1][3];
        origin.at(r) = origin.at(r) + direction[0] * spacing[0] * rows[0][3];
    }
    EXPECT_TRUE(sameTriple(tripleOf(result.origin), origin)) << described(source);
    for (int column = 0; column < 3; ++column)
        EXPECT_TRUE(sameTriple(columnOf(result, column), columnOf(source, column)));
}

TEST(PlacedGrid, GivesTheDocumentedBits)
{
    Seeded random(411);
    for (int n = 0; n < 2000 && !::testing::Test::HasFailure(); ++n) {
        const Geometry source = anyGeometry(random, n);
        const ImageSize size(source.width, source.height, source.depth, 1);
        const VoxelSize wanted(between(random, 0.1, 9.0), between(random, 0.1, 9.0),
                               between(random, 0.1, 9.0));
        const unsigned int w = 1 + random.below(50);
        for (const Align align : kAligns) {
            const PlacedGrid bySize = gridOfSize(source, w, 7, 1, align);
            expectSameGrid(bySize.grid, gridOfSize(size, source.spacing, w, 7, 1, align));
            expectPlaced(bySize, source);
            const PlacedGrid bySpacing = gridOfSpacing(source, wanted, align);
            expectSameGrid(bySpacing.grid, gridOfSpacing(size, source.spacing, wanted, align));
            expectPlaced(bySpacing, source);
        }
        const core::Rect box(3, 9, 1, 1, random.below(100), 200);
        const PlacedGrid crop = gridOfCrop(source, box);
        expectSameGrid(crop.grid, [&] {
            Grid grid =
                gridOf({{{1, 0, 0, 3}, {0, 1, 0, 1}, {0, 0, 1, static_cast<double>(box.zStart)}}},
                       7, 1, 201 - box.zStart);
            grid.spacing = source.spacing;
            return grid;
        }());
        expectPlaced(crop, source);
    }
}

double sumOfSizes(const double (&row)[4], const Triple& index)
{
    return std::abs(row[0] * index[0]) + std::abs(row[1] * index[1]) + std::abs(row[2] * index[2]) +
           std::abs(row[3]);
}

// How large the numbers are that the world position of a voxel of the grid is added up from.
double worldSize(const Geometry& source, const AffineMap& map, const Position& voxel)
{
    const AffineMap toWorld = source.toWorld();
    Triple read{};
    for (std::size_t n = 0; n < 3; ++n)
        read.at(n) = sumOfSizes(map.rows[n], tripleOf(voxel));
    return sumOfSizes(toWorld.rows[0], read) + sumOfSizes(toWorld.rows[1], read) +
           sumOfSizes(toWorld.rows[2], read);
}

// Every voxel of the result is in the world where the source is that it reads.
void expectWhereItReads(const PlacedGrid& placed, const Geometry& source, Random& random)
{
    for (int n = 0; n < 4; ++n) {
        const Position voxel = {between(random, 0.0, placed.grid.width - 1.0),
                                between(random, 0.0, placed.grid.height - 1.0),
                                between(random, 0.0, placed.grid.depth - 1.0)};
        const Position read = placed.grid.map(voxel);
        ASSERT_TRUE(closeTo(placed.geometry.toWorld()(voxel), source.toWorld()(read),
                            worldSize(source, placed.grid.map, voxel)))
            << described(source) << ", " << described(placed.grid.map);
    }
}

Planes randomPlanes(Random& random)
{
    Planes planes;
    planes.origin = randomPosition(random, 40.0);
    planes.across = randomPosition(random, 2.0);
    planes.down = randomPosition(random, 2.0);
    planes.step = randomPosition(random, random.below(3) == 0 ? 0.0 : 2.0);
    planes.width = 1 + random.below(30);
    planes.height = 1 + random.below(30);
    planes.count = 1 + random.below(5);
    return planes;
}

TEST(PlacedGrid, LiesWhereItReadsTheSource)
{
    Seeded random(412);
    for (int n = 0; n < 1000; ++n) {
        const Geometry source = anyGeometry(random, n);
        const VoxelSize wanted(between(random, 0.1, 9.0), between(random, 0.1, 9.0),
                               between(random, 0.1, 9.0));
        for (const Align align : kAligns) {
            expectWhereItReads(gridOfSize(source, 1 + random.below(50), 9, 2, align), source,
                               random);
            expectWhereItReads(gridOfSpacing(source, wanted, align), source, random);
        }
        expectWhereItReads(gridOfCrop(source, core::Rect(3, 9, 0, 7, 2, 2)), source, random);
        expectWhereItReads(gridOfPlanes(source, randomPlanes(random), 1 + random.below(6)), source,
                           random);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(PlacedGrid, KeepsBothEdgesInTheWorld)
{
    Seeded random(413);
    for (int n = 0; n < 2000; ++n) {
        const Geometry source = randomGeometry(random);
        const Geometry result = gridOfSize(source, 1 + random.below(60), 1 + random.below(60),
                                           1 + random.below(60), Align::EDGES)
                                    .geometry;
        const auto lastEdge = [](const Geometry& g) {
            return g.toWorld()({g.width - 0.5, g.height - 0.5, g.depth - 0.5});
        };
        const auto firstEdge = [](const Geometry& g) { return g.toWorld()({-0.5, -0.5, -0.5}); };
        const double size = worldSize(source, AffineMap(), {40, 40, 40});
        ASSERT_TRUE(closeTo(firstEdge(result), firstEdge(source), size)) << described(source);
        ASSERT_TRUE(closeTo(lastEdge(result), lastEdge(source), size)) << described(source);
    }
}

TEST(PlacedGrid, KeepsTheFirstCentreInTheWorldExactly)
{
    Seeded random(414);
    for (int n = 0; n < 1000; ++n) {
        Geometry source = randomGeometry(random);
        source.width += 1, source.height += 1, source.depth += 1;  // two centres at least
        const Geometry result = gridOfSize(source, 2, 5, 90, Align::CENTRES).geometry;
        ASSERT_TRUE(sameTriple(tripleOf(result.origin), tripleOf(source.origin)));
    }
}

TEST(PlacedGrid, HasNoExtentWhereNothingIsAskedFor)
{
    const Geometry source = alongX(4, 2.0, 10.0);
    EXPECT_EQ(gridOfSize(source, 0, 1, 1, Align::EDGES).geometry.width, 0U);
    EXPECT_EQ(gridOfSpacing(source, VoxelSize(0, 1, 1), Align::EDGES).geometry.width, 0U);
    EXPECT_EQ(gridOfCrop(source, core::Rect(3, 2, 0, 0)).geometry.width, 0U);
}

TEST(PlacedGrid, CropsWhatTheImageCrops)
{
    Seeded random(415);
    const WrappedVolume<short> scene(randomVolume<short>(random));
    Geometry source;
    source.width = scene.image.getWidth();
    source.height = scene.image.getHeight();
    source.depth = scene.image.getDepth();
    const core::Rect box(0, source.width - 1, 1, source.height - 1, 0, 0);
    VxImage<short> result;
    VxImage<short> expected;
    ASSERT_EQ(resample::resample(scene.image, gridOfCrop(source, box).grid, &result), SUCCESS);
    ASSERT_EQ(const_cast<VxImage<short>&>(scene.image).crop(box, &expected), SUCCESS);
    for (unsigned int y = 0; y < result.getHeight(); ++y)
        for (unsigned int x = 0; x < result.getWidth(); ++x)
            EXPECT_EQ(at(result, x, y, 0, 0), at(expected, x, y, 0, 0)) << x << ' ' << y;
}

TEST(GeometryOf, GivesTheDocumentedBits)
{
    Seeded random(416);
    for (int n = 0; n < 3000; ++n) {
        const Geometry source = anyGeometry(random, n);
        const Grid grid = gridOf(obliqueMap(random, {40, 30, 20}), 4, 5, 6);
        const Geometry result = geometryOf(source, grid);
        const AffineMap world = source.toWorld();
        for (int c = 0; c < 3; ++c) {
            const auto& m = grid.map.rows;
            Triple step{};
            for (std::size_t r = 0; r < 3; ++r)
                step.at(r) = dot({world.rows[r][0], world.rows[r][1], world.rows[r][2]},
                                 {m[0][c], m[1][c], m[2][c]});
            ASSERT_TRUE(sameTriple(columnOf(result, c), unitOf(step))) << described(source);
            ASSERT_TRUE(
                bitEqual(tripleOf(result.spacing).at(static_cast<std::size_t>(c)), lengthOf(step)))
                << described(source);
        }
        ASSERT_TRUE(sameTriple(tripleOf(result.origin), tripleOf(world(grid.map(0, 0, 0)))));
        EXPECT_EQ(result.width, 4U);
        EXPECT_EQ(result.height, 5U);
        EXPECT_EQ(result.depth, 6U);
    }
}

// Planes along y and z of a source, half a voxel apart in x.
Planes sagittal()
{
    Planes planes;
    planes.origin = {1, 0, 0};
    planes.across = {0, 1, 0};
    planes.down = {0, 0, -1};
    planes.step = {0.5, 0, 0};
    planes.width = 3;
    planes.height = 4;
    planes.count = 5;
    return planes;
}

Geometry tall()
{
    Geometry source;
    source.spacing = VoxelSize(2.0, 3.0, 4.0);
    source.origin = {10.0, 20.0, 30.0};
    return source;
}

TEST(GridOfPlanesInTheWorld, HasTheSpacingAndTheDirectionsOfTheSteps)
{
    const auto [grid, geometry] = gridOfPlanes(tall(), sagittal());
    EXPECT_EQ(grid.spacing, VoxelSize(3.0, 4.0, 1.0));
    EXPECT_EQ(geometry.spacing, VoxelSize(3.0, 4.0, 1.0));
    EXPECT_TRUE(sameTriple(tripleOf(geometry.origin), {12.0, 20.0, 30.0}));
    EXPECT_TRUE(sameTriple(columnOf(geometry, 0), {0.0, 1.0, 0.0}));
    EXPECT_TRUE(sameTriple(columnOf(geometry, 1), {0.0, 0.0, -1.0}));
    EXPECT_TRUE(sameTriple(columnOf(geometry, 2), {1.0, 0.0, 0.0}));
    EXPECT_EQ(geometry.depth, 5U);
}

TEST(GridOfPlanesInTheWorld, LiesInTheMiddleOfItsSlabs)
{
    const auto [grid, geometry] = gridOfPlanes(tall(), sagittal(), 4);
    EXPECT_TRUE(sameTriple(tripleOf(geometry.origin), {13.5, 20.0, 30.0}));  // 1.75 voxels
    EXPECT_EQ(geometry.spacing, VoxelSize(3.0, 4.0, 4.0));
    EXPECT_EQ(geometry.depth, 5U);
    EXPECT_EQ(grid.map(0, 0, 1).x, 3.75);
}

}  // namespace
}  // namespace volux::test
