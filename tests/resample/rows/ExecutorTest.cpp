// Work on threads of the caller's.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Executor;
using Part = std::function<void(std::size_t)>;

void inOrder(std::size_t parts, const Part& part)
{
    for (std::size_t n = 0; n < parts; ++n)
        part(n);
}

void backwards(std::size_t parts, const Part& part)
{
    for (std::size_t n = parts; n-- > 0;)
        part(n);
}

void onThreads(std::size_t parts, const Part& part)
{
    std::vector<std::thread> threads;
    for (std::size_t first = 0; first < 3; ++first)
        threads.emplace_back([=, &part] {
            for (std::size_t n = first; n < parts; n += 3)
                part(n);
        });
    for (std::thread& thread : threads)
        thread.join();
}

// Two threads that take tasks from a queue, and do nothing else while somebody waits for them.
class Pool {
public:
    Pool()
    {
        for (std::thread& thread : threads_)
            thread = std::thread([this] { work(); });
    }
    ~Pool()
    {
        for (std::size_t n = 0; n < threads_.size(); ++n)
            add({});  // ends a thread
        for (std::thread& thread : threads_)
            thread.join();
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    void operator()(std::size_t parts, const Part& part)
    {
        std::atomic<std::size_t> left{parts};
        for (std::size_t n = 0; n < parts; ++n)
            add([&, n] {
                part(n);
                const std::lock_guard<std::mutex> oneAtATime(mutex_);
                --left;
                changed_.notify_all();
            });
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return left == 0; });
    }

private:
    void add(std::function<void()> task)
    {
        const std::lock_guard<std::mutex> oneAtATime(mutex_);
        tasks_.push_back(std::move(task));
        changed_.notify_all();
    }

    void work()
    {
        for (std::function<void()> task = next(); task; task = next())
            task();
    }

    std::function<void()> next()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return !tasks_.empty(); });
        std::function<void()> task = std::move(tasks_.front());
        tasks_.pop_front();
        return task;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    std::array<std::thread, 2> threads_;
};

// 128 x 128 x 64 voxels in boxes, worth many threads.
class Executors : public ::testing::Test {
protected:
    Executors()
    {
        Seeded random(43);
        source.initialize(40, 40, 40, 1);
        for (int n = 0; n < 40 * 40 * 40; ++n)
            source.getBufferPointer()[n] = static_cast<short>(random.between(1, 1000));
        grid = gridOf({{{0.3, 0.01, 0, 0}, {0, 0.3, 0.01, 0}, {0.01, 0, 0.5, 0}}}, 128, 128, 64);
        options.threads = 1;
        EXPECT_EQ(perform(), SUCCESS);
        expected.initialize(result, true);
        result.fill(0);
        options.threads = 0;
    }

    ErrorType perform() { return resample::resample(source, grid, &result, options); }

    // Whether all voxels are those of one thread.
    bool isRight() const
    {
        return std::memcmp(result.getBufferPointer(), expected.getBufferPointer(),
                           std::size_t{128} * 128 * 64 * sizeof(short)) == 0;
    }

    // Rows that are neither finished nor as they were.
    int tornRows() const
    {
        int torn = 0;
        for (std::size_t row = 0; row < std::size_t{128} * 64; ++row) {
            const short* const found = result.getBufferPointer() + row * 128;
            const std::array<short, 128> blank{};
            const bool isFinished =
                std::equal(found, found + 128, expected.getBufferPointer() + row * 128);
            torn += isFinished || std::equal(found, found + 128, blank.data()) ? 0 : 1;
        }
        return torn;
    }

    // Rows of which no voxel is as it was.
    int finishedRows() const
    {
        int finished = 0;
        for (std::size_t row = 0; row < std::size_t{128} * 64; ++row)
            finished += result.getBufferPointer()[row * 128] != 0 ? 1 : 0;
        return finished;
    }

    VxImage<short> source;
    VxImage<short> expected;
    VxImage<short> result;
    Grid grid;
    Options options;
};

TEST_F(Executors, GiveTheBitsOfOneThreadInAnyOrderOnAnyThreads)
{
    for (const auto& executor : {Executor(inOrder), Executor(backwards), Executor(onThreads)}) {
        result.fill(0);
        options.executor = executor;
        ASSERT_EQ(perform(), SUCCESS);
        EXPECT_TRUE(isRight());
    }
}

TEST_F(Executors, MayBeCalledForPositionsToo)
{
    Seeded random(47);
    std::vector<Position> positions(50000);
    for (Position& p : positions)
        p = {0.01 * random.below(4200), 0.01 * random.below(4200), 0.01 * random.below(4200)};
    std::vector<double> alone(positions.size());
    std::vector<double> shared(positions.size());
    int calls = 0;
    const auto sampleInto = [&](std::vector<double>& results) {
        return sample(source, positions.data(), positions.size(), resample::Units::VOXELS, 0,
                      results.data(), options);
    };
    ASSERT_EQ(sampleInto(alone), SUCCESS);
    options.executor = [&](std::size_t parts, const Part& part) {
        ++calls;
        onThreads(parts, part);
    };
    ASSERT_EQ(sampleInto(shared), SUCCESS);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(alone, shared);
}

TEST_F(Executors, AreLeftAloneBySmallCallsAndByOneThread)
{
    int calls = 0;
    options.executor = [&](std::size_t parts, const Part& part) {
        ++calls;
        inOrder(parts, part);
    };
    options.threads = 1;
    EXPECT_EQ(perform(), SUCCESS);
    EXPECT_EQ(calls, 0);
    VxImage<short> small;
    options.threads = 0;
    EXPECT_EQ(resample::resample(source, gridOf(AffineMap(), 20, 20, 20), &small, options),
              SUCCESS);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(perform(), SUCCESS);
    EXPECT_EQ(calls, 1);
}

TEST_F(Executors, ThatLeaveAPartOutHaveCancelled)
{
    for (const std::size_t left : {std::size_t{1}, std::size_t{30}}) {
        result.fill(0);
        options.executor = [=](std::size_t parts, const Part& part) {
            onThreads(parts - left, part);
        };
        EXPECT_EQ(perform(), resample::kCancelled);
        EXPECT_EQ(tornRows(), 0);
        EXPECT_FALSE(isRight());
    }
}

TEST_F(Executors, MayRunAPartTwiceWhichIsDoneOnce)
{
    std::vector<double> told;
    options.progress = [&](double fraction) {
        told.push_back(fraction);
        return true;
    };
    std::size_t offered = 0;
    options.executor = [&](std::size_t parts, const Part& part) {
        offered = parts;
        inOrder(parts, part);
        backwards(parts, part);
        part(parts + 7);
    };
    EXPECT_EQ(perform(), SUCCESS);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(told.size(), offered);
    EXPECT_EQ(told.back(), 1.0);
}

TEST_F(Executors, SeeNoExceptionOfTheCallback)
{
    options.progress = [](double) -> bool { throw std::runtime_error("enough"); };
    int seen = 0;
    options.executor = [&](std::size_t parts, const Part& part) {
        try {
            inOrder(parts, part);
        } catch (...) {
            ++seen;
        }
    };
    EXPECT_THROW(perform(), std::runtime_error);
    EXPECT_EQ(seen, 0);
    EXPECT_EQ(tornRows(), 0);
}

// A part that ends while the callback is about to throw tells nobody, and no further part begins.
TEST_F(Executors, AreStoppedByAnExceptionOfTheCallback)
{
    std::function<void()> next;
    options.executor = [&](std::size_t parts, const Part& part) {
        next = [&part] { part(0); };
        inOrder(parts, part);
    };
    int calls = 0;
    int finished = 0;
    options.progress = [&](double) -> bool {
        ++calls;
        next();
        finished = finishedRows();
        throw std::runtime_error("enough");
    };
    EXPECT_THROW(perform(), std::runtime_error);
    EXPECT_EQ(calls, 1);
    EXPECT_GT(finished, 0);
    EXPECT_EQ(finishedRows(), finished);
    EXPECT_EQ(tornRows(), 0);
}

TEST_F(Executors, MayThrow)
{
    options.executor = [](std::size_t, const Part& part) {
        part(0);
        throw std::runtime_error("no threads today");
    };
    EXPECT_THROW(perform(), std::runtime_error);
    EXPECT_EQ(tornRows(), 0);
    options.executor = [](std::size_t, const Part&) { throw std::bad_alloc(); };
    EXPECT_EQ(perform(), ERR_ALLOCATION_FAILED);
}

TEST_F(Executors, AreStoppedByTheCallback)
{
    int calls = 0;
    options.progress = [&](double) { return ++calls < 3; };
    options.executor = inOrder;
    EXPECT_EQ(perform(), resample::kCancelled);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(tornRows(), 0);
}

// One thread of the pool waits in the callback, for tasks that the other one must take.
TEST_F(Executors, MayBeUsedByTheCallbackToo)
{
    Pool pool;
    options.executor = std::ref(pool);
    std::vector<double> told;
    options.progress = [&](double fraction) {
        told.push_back(fraction);
        Options nested;
        nested.executor = options.executor;
        VxImage<short> other;
        return resample::resample(source, grid, &other, nested) == SUCCESS;
    };
    EXPECT_EQ(perform(), SUCCESS);
    EXPECT_TRUE(isRight());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), 1.0);
}

// As a pool does whose threads take tasks while they wait.
TEST_F(Executors, MayRunFurtherPartsWithinTheCallback)
{
    std::function<void()> next;
    options.executor = [&](std::size_t parts, const Part& part) {
        next = [&part] { part(0); };
        inOrder(parts, part);
    };
    int depth = 0;
    options.progress = [&](double) {
        EXPECT_EQ(++depth, 1);
        next();
        --depth;
        return true;
    };
    EXPECT_EQ(perform(), SUCCESS);
    EXPECT_TRUE(isRight());
}

// Whose answer does not depend on what other threads have finished before it.
TEST_F(Executors, AreStoppedByTheCallbackThoughNothingIsLeft)
{
    std::function<void()> rest;
    options.executor = [&](std::size_t parts, const Part& part) {
        rest = [=, &part] { inOrder(parts, part); };
        part(0);
    };
    options.progress = [&](double fraction) {
        EXPECT_LT(fraction, 1.0);
        rest();
        return false;
    };
    EXPECT_EQ(perform(), resample::kCancelled);
    EXPECT_TRUE(isRight());
}

}  // namespace
}  // namespace volux::test
