// What is left of a call's threads, and calls that get fewer than they ask for.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "resample/Expected.h"
#include "support/Allocation.h"
#include "support/FailingNew.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

constexpr std::size_t kVoxels = std::size_t{128} * 128 * 128;

// An oblique result that is worth many threads, and the one that one thread gives. Every failure
// names it while it lives.
class Call {
public:
    explicit Call(unsigned int threads)
        : trace_(__FILE__, __LINE__, "a call with " + std::to_string(threads) + " threads")
    {
        Seeded random(53);
        source_.initialize(40, 40, 40, 1);
        for (int n = 0; n < 40 * 40 * 40; ++n)
            source_.getBufferPointer()[n] = static_cast<short>(random.between(1, 1000));
        options.threads = 1;
        EXPECT_TRUE(perform() == SUCCESS && expected_.initialize(result_, true) == SUCCESS);
        options.threads = threads;
    }

    ErrorType perform()
    {
        const AffineMap map = {{{0.3, 0.01, 0, 0}, {0, 0.3, 0.01, 0}, {0.01, 0, 0.3, 0}}};
        return resample::resample(source_, gridOf(map, 128, 128, 128), &result_, options);
    }

    bool isRight()
    {
        result_.fill(0);
        return perform() == SUCCESS &&
               std::memcmp(result_.getBufferPointer(), expected_.getBufferPointer(),
                           kVoxels * sizeof(short)) == 0;
    }

    // Parts last, so that there are some for each thread.
    void slowDown()
    {
        options.progress = [](double) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            return true;
        };
    }

    Options options = Options(Cubic());

private:
    ::testing::ScopedTrace trace_;
    VxImage<short> source_;
    VxImage<short> expected_;
    VxImage<short> result_;
};

// Whether `work` gives true in a process of its own; prints how that ended if not.
template <class Work>
::testing::AssertionResult holdsInAChild(Work work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << (WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "other voxels, or no success");
}

std::ptrdiff_t threadsOfThisProcess()
{
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/task"), Entries());
}

long residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long size = 0; word == "VmRSS:" && status >> size)
            return size;
    return -1;
}

TEST(OwnThreads, EndBeforeTheCallReturns)
{
    Call call(8);
    const std::ptrdiff_t before = threadsOfThisProcess();
    ASSERT_TRUE(call.isRight());
    EXPECT_EQ(threadsOfThisProcess(), before);
}

TEST(OwnThreads, LeaveAProcessThatMayFork)
{
    Call call(4);
    ASSERT_TRUE(call.isRight());
    EXPECT_TRUE(holdsInAChild([&] { return call.isRight(); }));
}

class Growth : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!AllocationWatch::kWorks)
            GTEST_SKIP() << "the sanitizers' own records grow";
    }

    // By how much the process grows with the calls after the first `warm` ones.
    template <class Work>
    static long kilobytes(int warm, int calls, Work work)
    {
        long before = 0;
        for (int n = 0; n < warm + calls; ++n) {
            if (n == warm)
                before = residentKilobytes();
            work();
        }
        return residentKilobytes() - before;
    }

    // Less than what a byte or two for each call would come to, with pages to spare.
    static constexpr long kSlack = 512;
};

TEST_F(Growth, IsNoneWithSmallCalls)
{
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(20, 20, 20, 1);
    const Grid grid = gridOf({{{1, 0.1, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}}, 20, 20, 20);
    for (const unsigned int threads : {0U, 4U}) {
        Options options;
        options.threads = threads;
        EXPECT_LE(
            kilobytes(
                500, 3000,
                [&] { ASSERT_EQ(resample::resample(source, grid, &result, options), SUCCESS); }),
            kSlack)
            << threads << " threads";
    }
}

TEST_F(Growth, IsNoneWithPositions)
{
    VxImage<short> source;
    source.initialize(20, 20, 20, 1);
    const std::vector<Position> positions(10000, {4.5, 5.5, 6.5});
    std::vector<double> results(positions.size());
    EXPECT_LE(kilobytes(300, 2000,
                        [&] {
                            ASSERT_EQ(sample(source, positions.data(), positions.size(),
                                             resample::Units::VOXELS, 0, results.data()),
                                      SUCCESS);
                        }),
              kSlack);
}

TEST_F(Growth, IsNoneWithThreads)
{
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(64, 64, 64, 1);
    Options options = Linear();
    options.threads = 4;
    const Grid grid = gridOf({{{1, 0.01, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}}, 64, 64, 32);
    EXPECT_LE(
        kilobytes(100, 1000,
                  [&] { ASSERT_EQ(resample::resample(source, grid, &result, options), SUCCESS); }),
        kSlack);
}

TEST(OwnThreads, OfTwoCallsAtOncePrintNothing)
{
    ::testing::internal::CaptureStderr();
    const auto callOften = [](unsigned int threads) {
        Call call(threads);
        for (int n = 0; n < 3; ++n)
            EXPECT_TRUE(call.isRight());
    };
    std::thread other(callOften, 4U);
    callOften(16);
    other.join();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// As root the limit is none: the child is somebody who has no other process.
bool becomeNobodyWith(rlim_t processes)
{
    constexpr uid_t kNobodyElse = 54321;
    const rlimit limit = {processes, processes};
    return (geteuid() != 0 || setuid(kNobodyElse) == 0) && setrlimit(RLIMIT_NPROC, &limit) == 0;
}

TEST(Refused, ThreadsAreDoneWithout)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << "the sanitizers' own threads and records have no room in such limits";
    for (const rlim_t processes : {1U, 3U, 9U})
        for (const unsigned int threads : {0U, 4U, 1024U}) {
            Call call(threads);
            call.slowDown();
            EXPECT_TRUE(holdsInAChild([&] {
                return becomeNobodyWith(processes) && call.isRight();
            })) << processes
                << " processes";
        }
}

TEST(Refused, AddressesAreDoneWithout)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << "a sanitizer needs more addresses than that";
    Call call(1024);
    call.slowDown();
    EXPECT_TRUE(holdsInAChild([&] {
        const rlimit limit = {400U << 20U, 400U << 20U};
        return setrlimit(RLIMIT_AS, &limit) == 0 && call.isRight();
    }));
}

TEST(Refused, MemoryForThreadsIsDoneWithout)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << AllocationWatch::kWhyNot;
    Call call(8);
    call.slowDown();
    int failed = 0;
    for (int nth = 1; nth == failed + 1; ++nth) {
        newFailsIn = nth;
        EXPECT_TRUE(call.isRight()) << "operator new " << nth << " failed";
        failed += newFailsIn == 0 ? 1 : 0;
    }
    newFailsIn = 0;
    EXPECT_GE(failed, 8);  // a vector and seven threads
}

// In a child, as the C library keeps the stacks of threads that have been.
TEST(Refused, MemoryWithinTheSystemsCallIsDoneWithout)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << AllocationWatch::kWhyNot;
    Call call(16);
    call.slowDown();
    for (int nth = 1; nth <= 4; ++nth)
        EXPECT_TRUE(holdsInAChild([&] {
            AllocationWatch watch;
            watch.failCalloc(nth);
            return call.isRight() && watch.callocCount() >= nth;
        })) << "calloc "
            << nth << " failed";
}

}  // namespace
}  // namespace volux::test
