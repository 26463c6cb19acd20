// Threads, progress, cancelling, and what is thrown on the way.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "resample/Expected.h"
#include "support/CapturedStderr.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

constexpr std::array<unsigned int, 6> kThreadCounts{1, 2, 3, 7, 16, 0};

// Wider than a block and than several tiles, and long enough for many parts.
Grid largeGrid(const AffineMap& map)
{
    return gridOf(map, 321, 43, 11);
}

template <class T>
WrappedVolume<T> largeVolume(Random& random)
{
    Volume<T> volume = blankVolume<T>({90, 31, 17}, random.between(1, 2));
    fillAtRandom(volume, random, true);
    return WrappedVolume<T>(std::move(volume));
}

template <class T>
class Threads : public ::testing::Test {
protected:
    static void compare(const AffineMap& map, Random& random)
    {
        const WrappedVolume<T> scene = largeVolume<T>(random);
        for (Interpolator* const interpolator : kInterpolators) {
            Options options(interpolator, kBorders[random.below(2)], insideValue<T>(random));
            VxImage<T> first;
            for (const unsigned int threads : kThreadCounts) {
                options.threads = threads;
                VxImage<T> result;
                ASSERT_EQ(resample::resample(scene.image, largeGrid(map), &result, options),
                          SUCCESS);
                if (first.getBufferPointer() == nullptr) {
                    expectEverySample(scene.image, map, result, options);
                    first.initialize(result, true);
                }
                const std::size_t bytes = std::size_t{321} * 43 * 11 * result.getChannels();
                ASSERT_EQ(std::memcmp(first.getBufferPointer(), result.getBufferPointer(),
                                      bytes * sizeof(T)),
                          0)
                    << described(options) << ", " << described(map);
            }
        }
    }
};
TYPED_TEST_SUITE(Threads, ElementTypes, ElementTypeNames);

TYPED_TEST(Threads, GiveTheSameBitsHoweverMany)
{
    Seeded random(31);
    AffineMap oblique = obliqueMap(random, {90, 31, 17}, 0.2);
    oblique.rows[0][3] = oblique.rows[1][3] = 5.0;
    this->compare(oblique, random);
    this->compare({{{0.3, 0, 0, -2.5}, {0, 0.75, 0, -0.5}, {0, 0, 1.6, -1.1}}}, random);
    this->compare({{{-0.3, 0, 0, 92}, {0, -1, 0, 30}, {0, 0, 1, 3}}}, random);
}

// Larger than what the test above can compare with single calls: each kernel is worth five threads.
TEST(Rows, AlongTheAxesAreTheSameOnSeveralThreads)
{
    Seeded random(59);
    const WrappedVolume<short> scene = largeVolume<short>(random);
    const AffineMap map = {{{0.4, 0, 0, -1}, {0, 0.15, 0, -1}, {0, 0, 0.25, -1}}};
    for (Interpolator* const interpolator : kInterpolators) {
        Options options(interpolator, kBorders[random.below(2)]);
        VxImage<short> alone;
        VxImage<short> shared;
        options.threads = 1;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 200, 200, 64), &alone, options),
                  SUCCESS);
        options.threads = 5;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 200, 200, 64), &shared, options),
                  SUCCESS);
        const std::size_t bytes = std::size_t{200} * 200 * 64 * alone.getChannels() * sizeof(short);
        EXPECT_EQ(std::memcmp(alone.getBufferPointer(), shared.getBufferPointer(), bytes), 0)
            << described(options) << ", " << described(map);
    }
}

TEST(Boxes, OfAnObliqueResultLeaveNothingOut)
{
    // More columns, rows and slices than a box has, none of them a multiple.
    Seeded random(37);
    const WrappedVolume<short> scene = largeVolume<short>(random);
    AffineMap map = obliqueMap(random, {90, 31, 17}, 0.2);
    map.rows[0][3] = map.rows[1][3] = 5.0;
    for (Interpolator* const interpolator : kInterpolators)
        for (const unsigned int threads : {1U, 3U}) {
            Options options(interpolator, kBorders[random.below(2)]);
            options.threads = threads;
            VxImage<short> result;
            ASSERT_EQ(resample::resample(scene.image, gridOf(map, 277, 35, 37), &result, options),
                      SUCCESS);
            expectEverySample(scene.image, map, result, options);
        }
}

struct Asked {
    VxImage<short> source;
    VxImage<short> destination;
    Options options;
    Grid grid;

    explicit Asked(unsigned int threads)
    {
        source.initialize(64, 64, 64, 1);
        source.fill(9);
        options.threads = threads;
        options.edgeExtends = true;  // every voxel is 9
        grid = resample::gridOfSize(source.getImageSize(), {1, 1, 1}, 128, 128, 128,
                                    resample::Align::EDGES);
    }

    ErrorType perform() { return resample::resample(source, grid, &destination, options); }

    // Rows that are finished; the others are as they were.
    int finishedRows() const
    {
        int finished = 0;
        for (int z = 0; z < 128; ++z)
            for (int y = 0; y < 128; ++y) {
                const short first = destination(0, y, z, 0);
                finished += first == 9 ? 1 : 0;
                for (int x = 0; x < 128; ++x)
                    EXPECT_EQ(destination(x, y, z, 0), first);
                EXPECT_TRUE(first == 9 || first == 0);
            }
        return finished;
    }
};

class Progress : public ::testing::TestWithParam<unsigned int> {};

TEST_P(Progress, RisesToOne)
{
    Asked asked(GetParam());
    std::vector<double> told;
    asked.options.progress = [&](double fraction) {
        told.push_back(fraction);
        return true;
    };
    EXPECT_EQ(asked.perform(), SUCCESS);
    ASSERT_GT(told.size(), 4U);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_GT(told.front(), 0.0);
    EXPECT_EQ(told.back(), 1.0);
}

TEST_P(Progress, CancelsAndLeavesWholeRows)
{
    for (const double shear : {0.0, 0.1}) {  // along the axes, and oblique
        Asked asked(GetParam());
        asked.grid.map.rows[0][1] = shear;
        int calls = 0;
        asked.options.progress = [&](double) { return ++calls < 3; };
        EXPECT_EQ(asked.perform(), resample::kCancelled);
        EXPECT_EQ(calls, 3);
        const int finished = asked.finishedRows();
        EXPECT_GT(finished, 0);
        if (GetParam() <= 4) {  // of so many threads as can be, all may have begun
            EXPECT_LT(finished, 128 * 128);
        }
    }
}

TEST_P(Progress, MayThrowOnce)
{
    Asked asked(GetParam());
    int calls = 0;
    asked.options.progress = [&](double) -> bool {
        ++calls;
        throw std::runtime_error("enough");
    };
    EXPECT_THROW(asked.perform(), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST_P(Progress, IsOverAlsoForThreadsThatWaitForTheirTurn)
{
    for (const bool throws : {false, true}) {
        Asked asked(GetParam());
        int calls = 0;
        asked.options.progress = [&](double) {
            ++calls;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            if (throws)
                throw std::runtime_error("enough");
            return false;
        };
        if (throws)
            EXPECT_THROW(asked.perform(), std::runtime_error);
        else
            EXPECT_EQ(asked.perform(), resample::kCancelled);
        EXPECT_EQ(calls, 1);
    }
}

// Notes which threads read by it.
struct Attended : Interpolator {
    template <class T, class B>
    double operator()(const VxImage<T>&, double, double, double, unsigned int, B, T)
    {
        const std::lock_guard<std::mutex> oneAtATime(mutex);
        threads.insert(std::this_thread::get_id());
        return 9.0;
    }

    Interpolator::interpolator_t<Interpolator, Interpolator::Empty>& get() override
    {
        static Interpolator::interpolator_t<Attended, Interpolator> table;
        return table;
    }

    // Whether so many have begun a part; waits for them, up to ten seconds.
    bool hasSeen(std::size_t count)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            if (const std::lock_guard<std::mutex> oneAtATime(mutex); threads.size() >= count)
                return true;
            std::this_thread::yield();
        }
        return false;
    }

    std::mutex mutex;
    std::set<std::thread::id> threads;
};

// Whoever has begun a part finishes it, and would tell of it.
TEST_P(Progress, IsOverForThreadsThatHadBegunBefore)
{
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(2, 2, 2, 1);
    for (const bool throws : {false, true}) {
        Attended attended;
        Options options(&attended);
        options.threads = GetParam();
        int calls = 0;
        options.progress = [&](double) -> bool {
            EXPECT_TRUE(attended.hasSeen(std::min(GetParam(), 3U)));
            if (++calls == 1 && throws)
                throw std::runtime_error("enough");
            return false;
        };
        const auto perform = [&] {
            return resample::resample(source, gridOf(AffineMap(), 16, 64, 64), &result, options);
        };
        if (throws)
            EXPECT_THROW(static_cast<void>(perform()), std::runtime_error);
        else
            EXPECT_EQ(perform(), resample::kCancelled);
        EXPECT_EQ(calls, 1);
    }
}

TEST_P(Progress, MayRunOutOfMemory)
{
    Asked asked(GetParam());
    asked.options.progress = [](double) -> bool { throw std::bad_alloc(); };
    EXPECT_EQ(asked.perform(), ERR_ALLOCATION_FAILED);
}

// The callback must not wait for a part that waits for the callback.
TEST_P(Progress, MayWorkOnThreadsItself)
{
    Asked asked(GetParam());
    int nestedCalls = 0;
    asked.options.progress = [&nestedCalls](double) {
        return ++nestedCalls > 3 || Asked(2).perform() == SUCCESS;
    };
    EXPECT_EQ(asked.perform(), SUCCESS);
}

TEST_P(Progress, IsNotCancelledByTheLastCall)
{
    Asked asked(GetParam());
    asked.options.progress = [](double fraction) { return fraction < 1.0; };
    EXPECT_EQ(asked.perform(), SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(On, Progress, ::testing::Values(1U, 4U, 4294967295U));

TEST(Policies, WithoutATableThrowAsInVoluxCore)
{
    BareBorder border;
    const CapturedStderr silence;
    for (const unsigned int threads : {1U, 4U}) {
        Asked asked(threads);
        asked.options.border = &border;
        EXPECT_THROW(asked.perform(), base::Exception);
    }
}

// Half of what Linear gives.
struct Half : Interpolator {
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value)
    {
        return 0.5 * Linear()(image, x, y, z, c, border, value);
    }

    Interpolator::interpolator_t<Interpolator, Interpolator::Empty>& get() override
    {
        static Interpolator::interpolator_t<Half, Interpolator> table;
        return table;
    }
};

// Throws at one place.
struct Trap : Border {
    BorderTable& get() override
    {
        static Border::border_t<Trap, Border> table;
        return table;
    }

    template <class T>
    T fetch(const VxImage<T>&, int x, int y, int z, unsigned int, T value, unsigned int,
            unsigned int, unsigned int)
    {
        if (x == 700 && y == 30 && z == 0)
            throw std::runtime_error("caught");
        return value;
    }
};

TEST(Policies, MayThrowLeavingEachVoxelFinishedOrAsItWas)
{
    Trap trap;
    VxImage<short> source;
    source.initialize(2, 2, 2, 1);
    for (const unsigned int threads : {1U, 4U}) {
        VxImage<short> result;
        Options options(NearestNeighbor(), &trap, 9);
        options.threads = threads;
        EXPECT_THROW(static_cast<void>(resample::resample(source, gridOf(AffineMap(), 900, 60, 2),
                                                          &result, options)),
                     std::runtime_error);
        for (int n = 0; n < 900 * 60 * 2; ++n)
            ASSERT_TRUE(result.getBufferPointer()[n] == 9 || result.getBufferPointer()[n] == 0);
        EXPECT_EQ(result(700, 30, 0, 0), 0);
    }
}

template <class T>
class OwnPolicy : public ::testing::Test {
};
TYPED_TEST_SUITE(OwnPolicy, ElementTypes, ElementTypeNames);

TYPED_TEST(OwnPolicy, RunsThroughVoluxCore)
{
    Seeded random(41);
    PeriodicBorder periodic;
    Half half;
    const std::array<Interpolator*, 4> policies{kInterpolators[0], kInterpolators[1],
                                                kInterpolators[2], &half};
    for (int n = 0; n < 20; ++n) {
        WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(random));
        const AffineMap map = n % 2 == 0 ? obliqueMap(random, scene.volume.extents)
                                         : axisMap(random, scene.volume.extents);
        Options options(policies[random.below(4)], &periodic);
        options.threads = 2;
        if (options.interpolator == &half && random.below(2) == 0)
            options.border = kBorders[random.below(2)];
        VxImage<TypeParam> result;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 9, 3, 2), &result, options), SUCCESS);
        scene.image.setVoxelSize(1.0, 1.0, 1.0);  // for the calls that are compared with
        expectEverySample(scene.image, map, result, options);
    }
}

}  // namespace
}  // namespace volux::test
