#include "volux/resample/Geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <string>

#include "resample/Expected.h"
#include "resample/WorldOracle.h"

namespace volux::test {
namespace {

void expectSameMap(const AffineMap& map, const AffineMap& expected, const Geometry& geometry)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            ASSERT_TRUE(bitEqual(map.rows[row][column], expected.rows[row][column]))
                << row << ' ' << column << ", " << described(geometry);
}

AffineMap expectedToWorld(const Geometry& geometry)
{
    AffineMap map;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c)
            map.rows[r][c] = geometry.direction[r][c] * tripleOf(geometry.spacing).at(c);
        map.rows[r][3] = tripleOf(geometry.origin).at(r);
    }
    return map;
}

AffineMap expectedToVoxels(const Geometry& geometry)
{
    const Square inverse = inverseOf(geometry);
    AffineMap map;
    for (std::size_t r = 0; r < 3; ++r) {
        double(&row)[4] = map.rows[r];
        for (std::size_t c = 0; c < 3; ++c)
            row[c] = inverse.at(r).at(c) / tripleOf(geometry.spacing).at(r);
        row[3] = -dot({row[0], row[1], row[2]}, tripleOf(geometry.origin));
    }
    return map;
}

TEST(Geometry, IsTheIdentityAtFirst)
{
    expectSameMap(Geometry().toWorld(), AffineMap(), Geometry());
    const Position p = Geometry().toVoxels()(Position{3.5, -4.0, 0.25});
    EXPECT_EQ(p.x, 3.5);
    EXPECT_EQ(p.y, -4.0);
    EXPECT_EQ(p.z, 0.25);
}

TEST(Geometry, LeadsFromVoxelsToTheWorldAndBack)
{
    Geometry image;
    image.spacing = VoxelSize(0.5, 0.5, 3.0);
    image.origin = {-64.0, -64.0, 20.0};
    image.direction[0][0] = image.direction[1][1] = -1.0;
    const Position world = image.toWorld()(Position{12.0, 32.5, 2.0});
    EXPECT_EQ(world.x, -70.0);
    EXPECT_EQ(world.y, -80.25);
    EXPECT_EQ(world.z, 26.0);
    const Position voxel = image.toVoxels()(world);
    EXPECT_EQ(voxel.x, 12.0);
    EXPECT_EQ(voxel.y, 32.5);
    EXPECT_EQ(voxel.z, 2.0);
}

TEST(Geometry, GivesTheDocumentedBits)
{
    Seeded random(401);
    for (int n = 0; n < 5000; ++n) {
        const Geometry geometry = anyGeometry(random, n);
        expectSameMap(geometry.toWorld(), expectedToWorld(geometry), geometry);
        expectSameMap(geometry.toVoxels(), expectedToVoxels(geometry), geometry);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(Geometry, HasVoxelZeroAtItsOriginExactly)
{
    Seeded random(402);
    for (int n = 0; n < 1000; ++n) {
        const Geometry geometry = shearedGeometry(random);
        ASSERT_TRUE(sameTriple(tripleOf(geometry.toWorld()(0, 0, 0)), tripleOf(geometry.origin)))
            << described(geometry);
    }
}

TEST(Geometry, ComesBackToTheVoxelButForRounding)
{
    Seeded random(403);
    for (int n = 0; n < 5000; ++n) {
        const Geometry geometry = randomGeometry(random);
        const Position voxel = randomPosition(random, 100.0);
        const Position back = geometry.toVoxels()(geometry.toWorld()(voxel));
        // Both numbers that are added up in voxels: the position, and the origin's.
        const double size = 200.0 + 600.0 / 0.1;
        ASSERT_TRUE(closeTo(back, voxel, size)) << described(geometry);
    }
}

TEST(Geometry, ReturnsFromItsOriginToVoxelZeroExactlyAlongTheAxes)
{
    Seeded random(404);
    for (int n = 0; n < 2000; ++n) {
        Geometry geometry = randomGeometry(random);
        const int turn = n % 3;
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column)
                geometry.direction[row][column] =
                    (row + turn) % 3 == column ? between(random, -2.0, 2.0) : 0.0;
        const Position voxel = geometry.toVoxels()(geometry.origin);
        ASSERT_TRUE(voxel.x == 0.0 && voxel.y == 0.0 && voxel.z == 0.0) << described(geometry);
    }
}

TEST(Geometry, LeadsFromOneImageToAnotherAsGridBetween)
{
    Seeded random(405);
    for (int n = 0; n < 2000; ++n) {
        const Geometry output = randomGeometry(random);
        const Geometry source = randomGeometry(random);
        const Position voxel = randomPosition(random, 40.0);
        const Position direct = gridBetween(output, source).map(voxel);
        const Position throughTheWorld = source.toVoxels()(output.toWorld()(voxel));
        ASSERT_TRUE(closeTo(throughTheWorld, direct, 1500.0 / 0.1))
            << described(output) << "; " << described(source);
    }
}

struct RefusedGeometry {
    const char* what;
    void (*spoil)(Geometry& geometry);
    const char* word;  // of the sentence
};

constexpr RefusedGeometry kRefused[] = {
    {"spacing of 0", [](Geometry& g) { g.spacing.y = 0.0; }, "spacing"},
    {"negative spacing", [](Geometry& g) { g.spacing.x = -1.0; }, "spacing"},
    {"infinite spacing", [](Geometry& g) { g.spacing.z = kInfinity; }, "spacing"},
    {"no spacing", [](Geometry& g) { g.spacing.x = kNaN; }, "spacing"},
    {"infinite origin", [](Geometry& g) { g.origin.z = -kInfinity; }, "origin"},
    {"no origin", [](Geometry& g) { g.origin.x = kNaN; }, "origin"},
    {"infinite direction", [](Geometry& g) { g.direction[1][2] = kInfinity; }, "directions"},
    {"no direction", [](Geometry& g) { g.direction[2][0] = kNaN; }, "directions"},
    {"direction of 0", [](Geometry& g) { g.direction[2][2] = 0.0; }, "directions"},
    {"equal directions", [](Geometry& g) { g.direction[1][0] = 1.0, g.direction[0][1] = 1.0; },
     "directions"},
    {"one direction", [](Geometry& g) { g.direction[1][1] = g.direction[2][2] = 0.0; },
     "directions"},
    {"overflow", [](Geometry& g) { g.direction[0][0] = 1e200, g.spacing.x = 1e200; }, "double"},
    {"underflow", [](Geometry& g) { g.direction[0][0] = 1e-200, g.spacing.x = 1e-200; }, "double"},
};

TEST(Geometry, IsRefusedInWordsThatNameTheCause)
{
    for (const RefusedGeometry& entry : kRefused) {
        Geometry geometry;
        entry.spoil(geometry);
        ASSERT_NE(geometry.refusal(), nullptr) << entry.what;
        EXPECT_NE(std::string(geometry.refusal()).find(entry.word), std::string::npos)
            << entry.what << ": " << geometry.refusal();
    }
}

TEST(Geometry, IsRefusedBySomeOperationWheneverItIsInWords)
{
    VxImage<short> source;
    source.initialize(2, 2, 2, 1);
    Geometry output;
    output.width = output.height = output.depth = 2;
    for (const RefusedGeometry& entry : kRefused) {
        Geometry geometry = output;
        entry.spoil(geometry);
        VxImage<short> result;
        const ErrorType asSource =
            resample::resample(source, gridBetween(output, geometry), &result);
        const ErrorType asOutput =
            resample::resample(source, gridBetween(geometry, output), &result);
        EXPECT_TRUE(asSource == ERR_INVALID_ARGUMENT || asOutput == ERR_INVALID_ARGUMENT)
            << entry.what;
    }
}

TEST(Geometry, IsTakenWithDirectionsOfAnyLengthAndHandedness)
{
    Seeded random(406);
    EXPECT_EQ(Geometry().refusal(), nullptr);
    for (int n = 0; n < 2000; ++n) {
        const Geometry geometry = anyGeometry(random, n);
        ASSERT_EQ(geometry.refusal(), nullptr) << described(geometry);
    }
}

TEST(Geometry, HasNoWayBackWhereRoundingAloneSpansAVolume)
{
    Seeded random(407);
    for (int n = 0; n < 2000; ++n) {
        Geometry flat = randomGeometry(random);
        const Triple between3 = plus(times(columnOf(flat, 0), between(random, -3.0, 3.0)),
                                     times(columnOf(flat, 1), between(random, -3.0, 3.0)));
        setColumn(flat, 2, between3);
        ASSERT_NE(flat.refusal(), nullptr) << described(flat);
        ASSERT_FALSE(flat.toVoxels().isInvertible()) << described(flat);
    }
}

// Of the six products of the determinant two are left, of 1 + `apart` and 1 - `apart`, that take
// one another away where their signs, the bits of `signs`, allow it. Element (row, column) is in
// both.
Geometry nearlyFlat(int row, int column, unsigned int signs, double apart)
{
    const int rows[] = {row, (row + 1) % 3, (row + 2) % 3};
    const int columns[] = {column, (column + 1) % 3, (column + 2) % 3};
    const auto sign = [&](unsigned int bit) { return (signs >> bit) % 2 == 0 ? 0.5 : -0.5; };
    Geometry geometry;
    for (auto& numbers : geometry.direction)
        std::fill_n(numbers, 3, 0.0);
    auto& m = geometry.direction;
    m[rows[0]][columns[0]] = sign(0);
    m[rows[1]][columns[1]] = sign(1) * (1.0 + apart);
    m[rows[2]][columns[2]] = sign(2);
    m[rows[1]][columns[2]] = sign(3) * (1.0 - apart);
    m[rows[2]][columns[1]] = sign(4);
    return geometry;
}

// Determinants at the documented bound of 2^-48, to the last bit, and one unit there above it: they
// tell in which order, and of which products, the sum beside them is made.
TEST(Geometry, SpansAVolumeFromTheDocumentedBoundOn)
{
    Geometry flat;
    Geometry least;
    const double atTheBound[3][3] = {
        {0x1.2fafc218ff6ddp-1, 0x1.9e289778e4b7bp-1, 0x1.fade313c84c99p-1},
        {0x1.f844956e96638p-1, 0x1.1c823d880083cp-1, 0x1.3716e7f91fd4cp-1},
        {0x1.f844956e96638p-1, 0x1.1c823d88008bcp-1, 0x1.3716e7f91fd4cp-1}};
    const double aboveIt[3][3] = {
        {0x1.3142134e4ee85p-1, 0x1.78eba5fc742ddp-1, 0x1.bde0157488433p-1},
        {0x1.c90a9f00ccaa8p-1, 0x1.0ed26b68afa8cp-1, 0x1.0d2191f0efe8ep-1},
        {0x1.c90a9f00ccaa8p-1, 0x1.0ed26b68afb0cp-1, 0x1.0d2191f0efe8ep-1}};
    std::copy_n(&atTheBound[0][0], 9, &flat.direction[0][0]);
    std::copy_n(&aboveIt[0][0], 9, &least.direction[0][0]);
    EXPECT_NE(flat.refusal(), nullptr);
    EXPECT_FALSE(flat.toVoxels().isInvertible());
    EXPECT_EQ(least.refusal(), nullptr);
    EXPECT_TRUE(least.toVoxels().isInvertible());
}

TEST(Geometry, SpansAVolumeByMoreThanTheDocumentedRounding)
{
    for (int element = 0; element < 9; ++element)
        for (unsigned int signs = 0; signs < 32; ++signs)
            for (const double apart : {0x1p-48, 0x1p-47}) {
                const Geometry geometry = nearlyFlat(element / 3, element % 3, signs, apart);
                const bool cancels = std::bitset<4>(signs >> 1U).count() % 2 == 0;
                const bool isVolume = !cancels || apart > 0x1p-48;
                EXPECT_EQ(geometry.refusal() == nullptr, isVolume) << described(geometry);
                EXPECT_EQ(geometry.toVoxels().isInvertible(), isVolume) << described(geometry);
            }
}

TEST(Geometry, IsTakenWithoutExtents)
{
    Geometry geometry;
    geometry.width = 0;
    EXPECT_EQ(geometry.refusal(), nullptr);
}

}  // namespace
}  // namespace volux::test
