#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <ios>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/BitExact.h"
#include "support/RandomScenes.h"
#include "support/SamplingOracle.h"
#include "support/Seeded.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

using oracle::Position;

constexpr std::size_t kThreads = 16;

// Holds threads back until all of them have arrived, so that they go on at once.
class Gate {
public:
    void pass()
    {
        ++arrived_;
        while (arrived_ < kThreads)
            std::this_thread::yield();
    }

private:
    std::atomic<std::size_t> arrived_{0};
};

// What each thread gets for the same work, begun at once.
template <class Work>
std::vector<std::vector<double>> onAllThreads(const Work& work)
{
    Gate gate;
    std::vector<std::vector<double>> results(kThreads);
    std::vector<std::thread> threads;
    for (std::vector<double>& result : results)
        threads.emplace_back([&] {
            gate.pass();
            result = work();
        });
    for (std::thread& thread : threads)
        thread.join();
    return results;
}

template <class Describe>
void expectAll(const std::vector<std::vector<double>>& results, const std::vector<double>& expected,
               const Describe& describe)
{
    for (const std::vector<double>& result : results) {
        ASSERT_EQ(result.size(), expected.size());
        for (std::size_t n = 0; n < expected.size(); ++n)
            ASSERT_TRUE(bitEqual(result[n], expected[n]))
                << "thread " << &result - &results[0] << ", " << describe(n);
    }
}

// The first calls of both get() in this program, if no other test has made them, are these. The
// position is outside, so that the border is asked too.
void expectFirstCallsToAgree(Interpolator* interpolator, Border* border, double expected)
{
    const WrappedVolume<short> scene(rowVolume<short>({10, 20, 30}));
    const auto results = onAllThreads([&] {
        return std::vector<double>{
            scene.image.getDoubleValueReal(2.5, 0, 0, 0, interpolator, border, 40)};
    });
    expectAll(results, {expected}, [](std::size_t) { return "the first call"; });
}

TEST(Threads, MakeTheFirstCallsOfNearestNeighborAndConstantAtOnce)
{
    expectFirstCallsToAgree(&NEAREST_NEIGHBOR, &CONSTANT, 40.0);
}

TEST(Threads, MakeTheFirstCallsOfLinearAndReplicationAtOnce)
{
    expectFirstCallsToAgree(&LINEAR, &REPLICATION, 30.0);
}

TEST(Threads, MakeTheFirstCallOfCubicAtOnce)
{
    // -0.0625 * 20 + 0.5625 * 30 + (0.5625 - 0.0625) * 30
    expectFirstCallsToAgree(&CUBIC, &REPLICATION, 30.625);
}

template <class T>
class ThreadsSampling : public ::testing::Test {
protected:
    static constexpr unsigned int kSamples = 200;

    ThreadsSampling() : random_(31), scene(randomVolume<T>(random_))
    {
        for (unsigned int n = 0; n < kSamples; ++n)
            positions.push_back(randomPosition(random_, scene.volume.extents));
    }

    // Each position with all policies, in the compile-time and in the run-time spelling.
    std::vector<double> sampled() const
    {
        const VxImage<T>& image = scene.image;
        std::vector<double> values;
        for (const Position& p : positions) {
            values.push_back(image.getDoubleValueReal(p.x, p.y, p.z, 0, LINEAR, CONSTANT, T{7}));
            values.push_back(image.getDoubleValueReal(p.x, p.y, p.z, 0, &CUBIC, &CONSTANT, T{7}));
            values.push_back(image.getDoubleValueReal(p.x, p.y, p.z, 0, CUBIC, REPLICATION, T{7}));
            values.push_back(
                image.getDoubleValueReal(p.x, p.y, p.z, 0, &NEAREST_NEIGHBOR, &REPLICATION, T{7}));
        }
        return values;
    }

    std::vector<double> expected() const
    {
        using oracle::Kernel;
        std::vector<double> values;
        for (const Position& p : positions) {
            values.push_back(expectedAt(p, Kernel::Linear, oracle::Border::Constant));
            values.push_back(expectedAt(p, Kernel::Cubic, oracle::Border::Constant));
            values.push_back(expectedAt(p, Kernel::Cubic, oracle::Border::Replication));
            values.push_back(expectedAt(p, Kernel::Nearest, oracle::Border::Replication));
        }
        return values;
    }

    // The place of a value, whose number modulo 4 is that of its policies.
    std::string described(std::size_t n) const
    {
        const Position& p = positions[n / 4];
        std::ostringstream text;
        text << "policies " << n % 4 << std::hexfloat << " at " << p.x << ' ' << p.y << ' ' << p.z
             << ", " << scene.volume;
        return text.str();
    }

private:
    double expectedAt(const Position& p, oracle::Kernel kernel, oracle::Border border) const
    {
        return oracle::sample<T>(scene.volume,
                                 {oracle::Form::DoubleValueReal, kernel, border, p, 0, T{7}});
    }

    Seeded random_;

protected:
    WrappedVolume<T> scene;
    std::vector<Position> positions;
};
TYPED_TEST_SUITE(ThreadsSampling, ElementTypes, ElementTypeNames);

TYPED_TEST(ThreadsSampling, OneImageGetTheSameBits)
{
    expectAll(onAllThreads([this] { return this->sampled(); }), this->expected(),
              [this](std::size_t n) { return this->described(n); });
}

}  // namespace
}  // namespace volux::test
