// Calls in which one operator new after the other fails, on the caller's own thread.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "resample/AntialiasOracle.h"
#include "support/Allocation.h"
#include "support/FailingNew.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Gradient.h"
#include "volux/resample/Warp.h"

namespace volux::test {
namespace {

using resample::kAntialiased;
using resample::Planes;
using resample::Projection;
using resample::ReadingAndGradient;
using resample::ResampleRegion;
using resample::Slab;
using resample::View;
using resample::Warp;

constexpr Extents kExtents{12, 10, 8};
constexpr AffineMap kBlocks = {{{2, 0, 0, 0.5}, {0, 2, 0, 0.5}, {0, 0, 2, 0.5}}};
constexpr AffineMap kAlong = {{{1.3, 0, 0, 0.2}, {0, 1.7, 0, 0.1}, {0, 0, 1.9, 0.3}}};
constexpr AffineMap kOblique = {{{1.3, 0.2, 0, 0.2}, {-0.2, 1.7, 0.1, 0.1}, {0, 0.3, 1.9, 0.3}}};

class MissingMemory : public ::testing::Test {
protected:
    // Fills its results and gives its code.
    using Results = std::vector<double>;
    using Call = std::function<ErrorType(Results&)>;

    void SetUp() override
    {
        if (!AllocationWatch::kWorks)
            GTEST_SKIP() << AllocationWatch::kWhyNot;
        Seeded random(571);
        for (float& voxel : source_.volume.block)
            voxel = static_cast<float>(random.below(30));
        field_.initialize(4, 3, 2, 3);
        field_.fill(0.25F);
    }

    // By one thread. With each of its allocations missing, a call leaves each result right or as it
    // was, and no memory. At least `least` allocations can fail.
    static void expectRefusals(const std::string& what, int least, std::size_t count,
                               const Call& call)
    {
        constexpr double kUntouched = -1234.5;
        Results right(count, kUntouched);
        ASSERT_EQ(call(right), SUCCESS) << what;
        ErrorType result = ERR_ALLOCATION_FAILED;
        int failed = -1;
        while (result == ERR_ALLOCATION_FAILED) {
            Results found(count, kUntouched);
            const long before = liveNews();
            newFailsIn = ++failed + 1;
            result = call(found);
            const bool hasFailed = newFailsIn == 0;
            newFailsIn = 0;
            ASSERT_EQ(liveNews(), before) << what << ", operator new " << failed + 1;
            ASSERT_EQ(result, hasFailed ? ERR_ALLOCATION_FAILED : SUCCESS)
                << what << ", operator new " << failed + 1;
            for (std::size_t n = 0; n < count; ++n)
                ASSERT_TRUE(bitEqual(found[n], right[n]) ||
                            (hasFailed && bitEqual(found[n], kUntouched)))
                    << what << ", result " << n << ", operator new " << failed + 1;
        }
        EXPECT_GE(failed, least) << what;
    }

    template <class Perform>
    static void expectRefusals(const std::string& what, int least, const Grid& grid,
                               const Perform& perform)
    {
        const std::size_t count = std::size_t{grid.width} * grid.height * grid.depth;
        expectRefusals(what, least, count, [&](Results& results) {
            return perform(View<double>(results.data(), grid.width, grid.height, grid.depth));
        });
    }

    // With a border of volux_core's and with one of the caller's own.
    template <class Work>
    void forEachKernel(const Work& work)
    {
        for (Interpolator* const kernel : kInterpolators)
            for (Border* const border : std::array<Border*, 2>{&REPLICATION, &periodic_}) {
                Options options(kernel, border, 3);
                options.threads = 1;
                work(options, described(options));
            }
    }

    // Whether a call with sub-samples has a table of positions for each axis: along the axes, but
    // the nearest voxels alone where they are whole blocks.
    bool hasTables(const Options& options, const AffineMap& map) const
    {
        const bool isNearest = options.interpolator == &NEAREST_NEIGHBOR;
        const bool isAlong = map.rows[0][1] == 0.0 && (!isNearest || map.rows[0][0] == 2.0);
        return isAlong && options.border != &periodic_;
    }

    WrappedVolume<float> source_{blankVolume<float>(kExtents)};
    VxImage<float> field_;
    PeriodicBorder periodic_;
};

TEST_F(MissingMemory, IsReportedByEveryCallWithSubsamples)
{
    forEachKernel([&](Options options, const std::string& name) {
        options.subsamples = kAntialiased;
        for (const AffineMap& map : {kBlocks, kAlong, kOblique}) {
            const Grid grid = gridOf(map, 6, 5, 4);
            const int least = hasTables(options, map) ? 4 : 1;
            expectRefusals(name + ", " + described(map), least, grid, [&](const View<double>& to) {
                return resample::resample(source_.image, grid, to, options);
            });
        }
    });
}

// With a table of positions for each axis, and one of bytes for the nearest voxels.
TEST_F(MissingMemory, IsReportedByEveryCallAlongTheAxes)
{
    constexpr AffineMap backwards = {{{-0.7, 0, -0.0, 9}, {-0.0, 1, 0, -3}, {0, -0.0, -2, 7}}};
    forEachKernel([&](const Options& options, const std::string& name) {
        const bool isOwn = options.border == &periodic_;
        for (const AffineMap& map : {kBlocks, kAlong, backwards}) {
            const Grid grid = gridOf(map, 6, 5, 4);
            const int least = isOwn ? 0 : options.interpolator == &NEAREST_NEIGHBOR ? 4 : 3;
            expectRefusals(name + ", " + described(map), least, grid, [&](const View<double>& to) {
                return resample::resample(source_.image, grid, to, options);
            });
        }
    });
}

TEST_F(MissingMemory, IsReportedByEveryCallWithABox)
{
    const ResampleRegion region = {
        kExtents.width, kExtents.height, kExtents.depth, {1, 4, 1, 3, 0, 2}};
    forEachKernel([&](Options options, const std::string& name) {
        if (options.border == &periodic_)
            return;
        options.subsamples = {3, 2, 2};
        for (const AffineMap& map : {kBlocks, kAlong, kOblique})
            expectRefusals(name + ", " + described(map), 1, gridOf(map, 4, 3, 3),
                           [&](const View<double>& to) {
                               return resample::resample(source_.image, gridOf(map, 6, 5, 4),
                                                         region, to, options);
                           });
    });
}

TEST_F(MissingMemory, IsReportedByEveryCallWithSlabs)
{
    Planes planes;
    planes.width = 6;
    planes.height = 5;
    planes.count = 2;
    forEachKernel([&](Options options, const std::string& name) {
        for (const unsigned int n : {1U, 2U}) {
            options.subsamples = {n, n, n};
            for (const Projection projection : {Projection::MEAN, Projection::MAXIMUM})
                expectRefusals(
                    name, n == 1 ? 0 : 1, gridOf({}, 6, 5, 2), [&](const View<double>& to) {
                        return reslice(source_.image, planes, to, options, Slab{3, projection});
                    });
        }
    });
}

TEST_F(MissingMemory, IsReportedByEveryCallThroughAField)
{
    forEachKernel([&](Options options, const std::string& name) {
        for (const unsigned int n : {1U, 3U}) {
            options.subsamples = {n, 2 * n - 1, n};
            const Warp warp(field_, {{{0.5, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 0.5, 0}}}, {});
            const Grid grid = gridOf(kOblique, 6, 5, 4);
            expectRefusals(name, n == 1 ? 0 : 1, grid, [&](const View<double>& to) {
                return resample::resample(source_.image, grid, warp, to, options);
            });
        }
    });
}

TEST_F(MissingMemory, IsReportedBySamplesAndGradients)
{
    const std::vector<Position> positions(500, {4.5, 5.25, 6.5});
    forEachKernel([&](const Options& options, const std::string& name) {
        const bool isOwn = options.border == &periodic_;
        expectRefusals(name, isOwn ? 1 : 0, positions.size(), [&](Results& results) {
            return sample(source_.image, positions.data(), positions.size(),
                          resample::Units::VOXELS, 0, results.data(), options);
        });
        if (isOwn || options.interpolator == &resample::LABELS)
            return;
        expectRefusals(name, 0, 4 * positions.size(), [&](Results& results) {
            auto* const found = reinterpret_cast<ReadingAndGradient*>(results.data());
            return sampleGradient(source_.image, positions.data(), positions.size(),
                                  resample::Units::VOXELS, 0, found, options);
        });
    });
}

TEST_F(MissingMemory, OfTheResultLeavesItEmpty)
{
    forEachKernel([&](Options options, const std::string& name) {
        options.subsamples = kAntialiased;
        VxImage<float> result;
        result.setVoxelSize(4, 5, 6);
        AllocationWatch watch;
        watch.failCalloc(1);
        EXPECT_EQ(resample::resample(source_.image, gridOf(kOblique, 6, 5, 4), &result, options),
                  ERR_ALLOCATION_FAILED)
            << name;
        EXPECT_EQ(result.getBufferPointer(), nullptr) << name;
        EXPECT_EQ(result.getVoxelSize().y, 5.0) << name;
        EXPECT_EQ(watch.liveCount(), 0) << name;
    });
}

}  // namespace
}  // namespace volux::test
