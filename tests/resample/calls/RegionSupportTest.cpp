// The box that a region asks for, beside the one that its result is seen to read.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::ResampleRegion;

constexpr Extents kSource{8, 7, 6};
constexpr unsigned int kSizes[] = {kSource.width, kSource.height, kSource.depth};
constexpr unsigned int kFirst[] = {1, 2, 0};  // of the box of the result
constexpr unsigned int kLast[] = {3, 3, 1};

struct Reads {
    unsigned int first;
    unsigned int last;

    friend bool operator==(const Reads& a, const Reads& b)
    {
        return a.first == b.first && a.last == b.last;
    }
    friend std::ostream& operator<<(std::ostream& out, const Reads& reads)
    {
        return out << reads.first << " to " << reads.last;
    }
};

// Whatever its weight, a NaN that is read shows in the result.
class RegionSupport : public ::testing::Test {
protected:
    RegionSupport()
    {
        source.initialize(kSource.width, kSource.height, kSource.depth, 1);
        region.sourceWidth = kSource.width;
        region.sourceHeight = kSource.height;
        region.sourceDepth = kSource.depth;
        region.output = Rect(kFirst[0], kLast[0], kFirst[1], kLast[1], kFirst[2], kLast[2]);
        options.threads = 1;
    }

    // Along each axis the box is that of the planes that are read.
    void expectBoxOfReads(const AffineMap& map)
    {
        const Grid grid = gridOf(map, 5, 5, 3);
        Rect box;
        ASSERT_EQ(region.support(grid, &box, options), SUCCESS) << described(map);
        const Reads found[] = {
            {box.xStart, box.xEnd}, {box.yStart, box.yEnd}, {box.zStart, box.zEnd}};
        for (int axis = 0; axis < 3; ++axis)
            ASSERT_EQ(found[axis], readsAlong(axis, grid))
                << "axis " << axis << ", " << described(options) << ", " << described(map);
    }

    VxImage<float> source;
    ResampleRegion region;
    Options options;

private:
    Reads readsAlong(int axis, const Grid& grid)
    {
        Reads reads{kSizes[axis], 0};
        for (unsigned int n = 0; n < kSizes[axis]; ++n)
            if (readsPlane(axis, n, grid)) {
                reads.first = std::min(reads.first, n);
                reads.last = n;
            }
        return reads;
    }

    // Whether the result reads plane n across an axis.
    bool readsPlane(int axis, unsigned int n, const Grid& grid)
    {
        source.fill(1.0F);
        Rect plane(0, kSource.width - 1, 0, kSource.height - 1, 0, kSource.depth - 1);
        unsigned int* const ends[][2] = {{&plane.xStart, &plane.xEnd},
                                         {&plane.yStart, &plane.yEnd},
                                         {&plane.zStart, &plane.zEnd}};
        *ends[axis][0] = *ends[axis][1] = n;
        for (unsigned int z = plane.zStart; z <= plane.zEnd; ++z)
            for (unsigned int y = plane.yStart; y <= plane.yEnd; ++y)
                for (unsigned int x = plane.xStart; x <= plane.xEnd; ++x)
                    source(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), 0) =
                        std::numeric_limits<float>::quiet_NaN();
        VxImage<float> result;
        EXPECT_EQ(resample::resample(source, grid, region, &result, options), SUCCESS);
        const float* const voxels = result.getBufferPointer();
        const unsigned int count = result.getWidth() * result.getHeight() * result.getDepth();
        return std::any_of(voxels, voxels + count, [](float voxel) { return std::isnan(voxel); });
    }
};

// Leads the middle of the box of the result to that of the source.
AffineMap aboutTheMiddle(AffineMap map)
{
    for (int row = 0; row < 3; ++row) {
        map.rows[row][3] = (kSizes[row] - 1.0) / 2.0;
        for (int column = 0; column < 3; ++column)
            map.rows[row][3] -= map.rows[row][column] * (kFirst[column] + kLast[column]) / 2.0;
    }
    return map;
}

// Steps up to a size, each of which leads forwards or backwards along its axis.
AffineMap obliqueSteps(Random& random, unsigned int signs, double size)
{
    AffineMap map;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            const double step = between(random, size / 4.0, size);
            map.rows[row][column] = (signs >> (3 * row + column)) % 2 == 0 ? step : -step;
        }
    return aboutTheMiddle(map);
}

TEST_F(RegionSupport, IsWhatAnObliqueBoxReadsWhateverTheSignsOfItsSteps)
{
    Seeded random(76);
    for (unsigned int signs = 0; signs < 512 && !HasFatalFailure(); ++signs) {
        options = Options(kInterpolators[signs % 3], kBorders[random.below(2)]);
        options.edgeExtends = random.below(2) == 0;
        options.threads = 1;
        options.subsamples = {1 + random.below(2), 1, 1 + random.below(3)};
        expectBoxOfReads(obliqueSteps(random, signs, 0.4));  // in view
        options.border = kBorders[1];
        options.edgeExtends = true;
        expectBoxOfReads(obliqueSteps(random, signs, 2.0));  // also beyond the edge
    }
}

TEST_F(RegionSupport, IsWhatABoxReadsAlongTheAxesInEitherDirection)
{
    for (Interpolator* const interpolator :
         {kInterpolators[0], kInterpolators[1], kInterpolators[2]})
        for (unsigned int signs = 0; signs < 8; ++signs)
            for (const double step : {0.4, 0.5, 1.0, 2.6, 5.0}) {
                options.interpolator = interpolator;
                options.edgeExtends = true;
                AffineMap map;
                for (int axis = 0; axis < 3; ++axis)
                    map.rows[axis][axis] = (signs >> axis) % 2 == 0 ? step : -step;
                expectBoxOfReads(aboutTheMiddle(map));
                ASSERT_FALSE(HasFatalFailure());
            }
}

// A single voxel, whose position is in view; also where indices are far, though not too far, away.
TEST_F(RegionSupport, IsWhatAVoxelReadsBesideEitherEdge)
{
    region.output = Rect(1, 1, 2, 2, 0, 0);
    for (Interpolator* const interpolator :
         {kInterpolators[0], kInterpolators[1], kInterpolators[2]})
        for (int axis = 0; axis < 3; ++axis) {
            const double end = kSizes[axis] - 0.5;
            for (const double position :
                 {-0.5, -0.3, 0.0, 0.5, 1.0, 1.3, end - 1.5, end - 1.2, end - 1.0, end - 0.8,
                  end - 0.5, end - 0.2, std::nextafter(end, 0.0), -0x1p30, 0x1p30}) {
                options = Options(interpolator, Replication());
                options.edgeExtends = std::abs(position) > 9.0;
                options.threads = 1;
                AffineMap map;
                for (int row = 0; row < 3; ++row)
                    map.rows[row][3] = (row == axis ? position : 2.5) - kFirst[row];
                expectBoxOfReads(map);
                ASSERT_FALSE(HasFatalFailure());
            }
        }
}

// A box whose nearest position to the source, along one axis, is at `nearest`: the first one of the
// box, or the last one.
AffineMap beside(int axis, double nearest, bool isFirst)
{
    AffineMap map;
    for (int row = 0; row < 3; ++row)
        map.rows[row][3] = row != axis ? 1.0 : nearest - (isFirst ? kFirst : kLast)[axis];
    return map;
}

TEST_F(RegionSupport, IsOneVoxelIfAnyAxisIsOutOfView)
{
    struct Side {
        double nearest;
        bool isFirst;
        bool isInView;
    };
    for (int axis = 0; axis < 3; ++axis) {
        const double end = kSizes[axis] - 0.5;
        for (const Side& side : {Side{-0.75, false, false}, Side{-0.5, false, true},
                                 Side{end, true, false}, Side{end - 0.25, true, true}}) {
            Rect box;
            const AffineMap map = beside(axis, side.nearest, side.isFirst);
            ASSERT_EQ(region.support(gridOf(map, 5, 5, 3), &box, options), SUCCESS);
            EXPECT_EQ(box.width() * box.height() * box.depth() > 1, side.isInView)
                << described(map);
        }
    }
}

}  // namespace
}  // namespace volux::test
