// How much stack calls need: hosts call from threads with little.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "resample/Expected.h"
#include "support/Allocation.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Resample.h"
#include "volux/resample/Warp.h"

namespace volux::test {
namespace {

constexpr std::size_t kStack = std::size_t{1} << 20U;
constexpr std::size_t kPage = 4096;
constexpr unsigned char kPaint = 0xA5;

// Runs `work` in a thread whose stack has been painted, and gives the bytes that are no longer so:
// with what the C library keeps there for each thread.
template <class Work>
std::size_t stackOf(Work work)
{
    std::vector<unsigned char> memory(kStack + kPage, kPaint);
    const std::size_t skipped = kPage - reinterpret_cast<std::uintptr_t>(memory.data()) % kPage;
    unsigned char* const stack = memory.data() + skipped;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, kStack);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const unsigned char* const lowest =
        std::find_if(stack, stack + kStack, [](unsigned char byte) { return byte != kPaint; });
    return static_cast<std::size_t>(stack + kStack - lowest);
}

template <class T>
class Stack : public ::testing::Test {
protected:
    Stack()
    {
        source.initialize(40, 40, 40, 2);
        source.fill(T{3});
        field.initialize(20, 20, 20, 3);
        positions.resize(600, {1.5, 2.5, 3.5});
        results.resize(2 * positions.size());
    }

    // Every way through the library, on the calling thread and on others.
    void callAll(const Options& options)
    {
        PeriodicBorder periodic;
        const AffineMap aligned = {{{0.5, 0, 0, -1}, {0, 0.5, 0, -1}, {0, 0, 0.5, -1}}};
        const AffineMap oblique = {{{0.5, 0.1, 0, 0}, {0, 0.5, 0.1, 0}, {0.1, 0, 0.5, 0}}};
        const AffineMap blocks = {{{2, 0, 0, 0.5}, {0, 2, 0, 0.5}, {0, 0, 2, 0.5}}};
        Options own = options;
        own.border = &periodic;
        Options means = options;
        means.subsamples = {2, 2, 2};
        VxImage<T> small;
        ASSERT_EQ(resample::resample(source, gridOf(blocks, 20, 20, 20), &small, means), SUCCESS);
        VxImage<T> result;
        for (const AffineMap& map : {aligned, oblique})
            for (const Options& each : {options, own, means})
                ASSERT_EQ(resample::resample(source, gridOf(map, 90, 80, 6), &result, each),
                          SUCCESS);
        const resample::Warp warp(field, AffineMap(), AffineMap());
        for (const Options& each : {options, own})
            ASSERT_EQ(resample::resample(source, gridOf(oblique, 90, 80, 6), warp, &result, each),
                      SUCCESS);
        resample::Planes planes;
        planes.width = planes.height = 40;
        VxImage<T> slab;
        ASSERT_EQ(reslice(source, planes, &slab, options, {4, resample::Projection::MEAN}),
                  SUCCESS);
        for (const Options& each : {options, own})
            ASSERT_EQ(sample(source, positions.data(), positions.size(), resample::Units::VOXELS,
                             resample::kAllChannels, results.data(), each),
                      SUCCESS);
        if (options.interpolator != &resample::LABELS) {  // which have no derivatives
            std::vector<resample::ReadingAndGradient> gradients(positions.size());
            ASSERT_EQ(sampleGradient(source, positions.data(), positions.size(),
                                     resample::Units::VOXELS, 0, gradients.data(), options),
                      SUCCESS);
        }
    }

    VxImage<T> source;
    VxImage<float> field;
    std::vector<Position> positions;
    std::vector<T> results;
};
TYPED_TEST_SUITE(Stack, ElementTypes, ElementTypeNames);

TYPED_TEST(Stack, IsEnoughInThreadsThatHave64KiB)
{
#if defined(VOLUX_TEST_SANITIZED_HEAP) || !defined(NDEBUG)
    GTEST_SKIP() << "frames are larger under a sanitizer and without optimisation";
#endif
    std::size_t most = 0;
    forEachInstructionSet([&] {
        for (Interpolator* const interpolator : kInterpolators)
            for (Border* const border : kBorders)
                most = std::max(most, stackOf([&] { this->callAll({interpolator, border}); }));
    });
    EXPECT_LE(most, std::size_t{64} * 1024);
}

}  // namespace
}  // namespace volux::test
