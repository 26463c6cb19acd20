#include "volux/resample/Sampler.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "resample/Expected.h"
#include "support/Allocation.h"
#include "support/FailingNew.h"
#include "support/GuardedPages.h"
#include "support/OwnPolicies.h"
#include "support/RandomViews.h"

namespace volux::test {
namespace {

using resample::Sampler;

Position anyPosition(Random& random, const Extents& extents)
{
    const oracle::Position p = randomPosition(random, extents);
    return {p.x, p.y, p.z};
}

// Readings of each channel at random positions, by each kernel and border.
template <class T, class Source>
void expectEveryReading(const Source& source, const VxImage<T>& image, Random& random, int count)
{
    const Extents extents{image.getWidth(), image.getHeight(), image.getDepth()};
    forEachPolicy([&](Interpolator* interpolator, Border* border) {
        const Options options(interpolator, border, insideValue<T>(random));
        for (int c = 0; c < static_cast<int>(image.getChannels()); ++c) {
            const Sampler sampler(source, options, c);
            ASSERT_EQ(sampler.error(), SUCCESS);
            for (int n = 0; n < count; ++n) {
                const Position p = anyPosition(random, extents);
                ASSERT_TRUE(bitEqual(sampler(p.x, p.y, p.z), reading(image, p, c, options)))
                    << describedCall(image, p, c, options);
            }
        }
    });
}

template <class T>
class EverySampler : public ::testing::Test {
protected:
    Seeded random{307};
};
TYPED_TEST_SUITE(EverySampler, ElementTypes, ElementTypeNames);

TYPED_TEST(EverySampler, GivesVoluxCoresReadingsOfAnyImage)
{
    forEachInstructionSet([this] {
        for (int n = 0; n < 40 && !::testing::Test::HasFatalFailure(); ++n) {
            const WrappedVolume<TypeParam> scene(randomVolume<TypeParam>(this->random));
            expectEveryReading(scene.image, scene.image, this->random, 100);
        }
    });
}

TYPED_TEST(EverySampler, GivesThemOfAnyView)
{
    forEachInstructionSet([this] {
        for (int n = 0; n < 40 && !::testing::Test::HasFatalFailure(); ++n) {
            const Extents extents{this->random.below(8) + 1, this->random.below(8) + 1,
                                  this->random.below(8) + 1};
            const ViewedVolume<TypeParam> volume(this->random, extents, this->random.below(3) + 1,
                                                 true);
            expectEveryReading(volume.view, volume.image, this->random, 100);
        }
    });
}

TYPED_TEST(EverySampler, GivesThemInsideALargerVolume)
{
    Volume<TypeParam> volume = blankVolume<TypeParam>(interleaved(40, 30, 20, 1));
    fillAtRandom(volume, this->random, false);
    const WrappedVolume<TypeParam> scene(std::move(volume));
    forEachInstructionSet(
        [&] { expectEveryReading(scene.image, scene.image, this->random, 3000); });
}

// The voxels lie at the end or at the beginning of a page, the other rows on pages of their own.
TYPED_TEST(EverySampler, ReadsNothingBesideTheRows)
{
    const GuardedPages pages{1, 16};
    forEachInstructionSet([&] {
        for (unsigned int width = 1; width < 7; ++width) {
            for (const bool atEnd : {false, true}) {
                resample::View<TypeParam> view(nullptr, width, 4, 4);
                view.strideY = static_cast<std::int64_t>(pages.stride() / sizeof(TypeParam));
                view.strideZ = 4 * view.strideY;
                for (std::size_t row = 16; row-- > 0;) {
                    view.data = pages.place<TypeParam>(width, atEnd, row);
                    for (unsigned int x = 0; x < width; ++x)
                        view.data[x] = randomElement<TypeParam>(this->random, false);
                }
                VxImage<TypeParam> image;
                ViewedVolume<TypeParam>::copy(view, image);
                expectEveryReading(view, image, this->random, 60);
            }
        }
    });
}

TYPED_TEST(EverySampler, ServesLabelsAndPoliciesOfTheCallersOwn)
{
    PeriodicBorder border;
    struct OwnKernel : Linear {
    } kernel;
    ViewedVolume<TypeParam> volume(this->random, {4, 3, 5}, 2, false);
    volume.image.setVoxelSize(1, 1, 1);
    for (const Options& options : {Options(Cubic(), &border), Options(&kernel, Constant(), 7),
                                   Options(resample::Labels(), Constant(), 7)}) {
        const Sampler sampler(volume.view, options, 1);
        ASSERT_EQ(sampler.error(), SUCCESS);
        for (int n = 0; n < 200; ++n) {
            const Position p = {between(this->random, -9.0, 9.0), between(this->random, -9.0, 9.0),
                                between(this->random, -9.0, 9.0)};
            ASSERT_TRUE(bitEqual(sampler(p.x, p.y, p.z), reading(volume.image, p, 1, options)))
                << describedCall(volume.image, p, 1, options);
        }
    }
}

TEST(SamplerOfOneVolume, ReadsInVoxelsWhateverTheSpacing)
{
    VxImage<float> image;
    ASSERT_EQ(image.initialize(3, 1, 1, 1), SUCCESS);
    image(2, 0, 0, 0) = 8.0F;
    image.setVoxelSize(0.25, 3.0, 5.0);
    EXPECT_EQ(Sampler(image)(1.5, 0.0, 0.0), 4.0);
}

TEST(SamplerOfOneVolume, GoesOnBeyondTheEdgeWhateverTheOptions)
{
    const float voxels[] = {1.0F, 2.0F};
    const Options ends(Linear(), Replication(), 50);
    ASSERT_FALSE(ends.edgeExtends);
    EXPECT_EQ(Sampler(resample::View<const float>(voxels, 2, 1, 1), ends)(9.0, 0.0, 0.0), 2.0);
}

TEST(SamplerOfOneVolume, OutlivesTheViewItWasMadeOf)
{
    const float voxels[] = {1.0F, 2.0F};
    PeriodicBorder border;
    for (const Options& options : {Options(Linear()), Options(Linear(), &border)}) {
        auto first =
            std::make_unique<Sampler>(resample::View<const float>(voxels, 2, 1, 1), options);
        const Sampler copy = *first;
        Sampler assigned(resample::View<const float>(voxels, 1, 1, 1));
        assigned = *first;
        first.reset();
        EXPECT_EQ(copy(0.5, 0.0, 0.0), 1.5);
        EXPECT_EQ(assigned(0.5, 0.0, 0.0), 1.5);
    }
}

TEST(SamplerOfOneVolume, SeesWhatIsWrittenToItsVoxels)
{
    float voxels[] = {1.0F, 2.0F};
    const Sampler sampler(resample::View<const float>(voxels, 2, 1, 1));
    voxels[1] = 5.0F;
    EXPECT_EQ(sampler(1.0, 0.0, 0.0), 5.0);
}

TEST(SamplerOfOneVolume, CopiesAViewThatNoImageDescribesForLabelsAlone)
{
    float voxels[] = {1.0F, 2.0F};
    resample::View<const float> flipped(voxels + 1, 2, 1, 1);
    flipped.strideX = -1;
    const Sampler labels(flipped, resample::Labels());
    const Sampler linear(flipped, Linear());
    voxels[1] = 5.0F;
    EXPECT_EQ(labels(0.0, 0.0, 0.0), 2.0);
    EXPECT_EQ(linear(0.0, 0.0, 0.0), 5.0);
}

TEST(SamplerOfOneVolume, CopiesNoViewOfOneVoxelThatAnAxisRepeats)
{
    float voxels[] = {1.0F, 2.0F};
    resample::View<const float> repeated(voxels, 2, 3, 1);
    repeated.strideY = 0;
    PeriodicBorder own;
    const Sampler sampler(repeated, Options(Linear(), &own));
    voxels[1] = 5.0F;
    EXPECT_EQ(sampler(1.0, 2.0, 0.0), 5.0);
}

TEST(SamplerOfOneVolume, ServesManyThreadsAtOnce)
{
    Seeded random(311);
    Volume<short> volume = blankVolume<short>(interleaved(20, 20, 20, 1));
    fillAtRandom(volume, random, false);
    const WrappedVolume<short> scene(std::move(volume));
    forEachPolicy([&](Interpolator* interpolator, Border* border) {
        const Sampler sampler(scene.image, Options(interpolator, border, -5));
        const auto work = [&](std::vector<double>& readings) {
            Seeded own(313);
            for (double& found : readings) {
                const Position p = anyPosition(own, {20, 20, 20});
                found = sampler(p.x, p.y, p.z);
            }
        };
        std::vector<std::vector<double>> results(8, std::vector<double>(2000));
        std::vector<std::thread> threads;
        for (auto& readings : results)
            threads.emplace_back([&] { work(readings); });
        for (std::thread& thread : threads)
            thread.join();
        for (const auto& readings : results)
            for (std::size_t n = 0; n < readings.size(); ++n)
                ASSERT_TRUE(bitEqual(readings[n], results[0][n])) << "reading " << n;
    });
}

TEST(SamplerOfOneVolume, AllocatesNothing)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << AllocationWatch::kWhyNot;
    Seeded random(317);
    const ViewedVolume<short> volume(random, {9, 8, 7}, 1, false);
    double sum = 0.0;
    forEachPolicyOfCore([&](Interpolator* interpolator, Border* border) {
        const AllocationWatch watch;
        newFailsIn = 1;
        const Sampler sampler(volume.view, Options(interpolator, border));
        for (int n = 0; n < 1000000; ++n)
            sum += sampler(1e-5 * n - 0.5, 2.5, 3.5);
        EXPECT_EQ(newFailsIn, 1);
        newFailsIn = 0;
        EXPECT_EQ(watch.callocCount(), 0);
    });
    EXPECT_NE(sum, 0.0);
}

struct Refusal {
    const char* what;
    ErrorType error;
    Sampler sampler;
};

TEST(SamplerThatIsRefused, SaysWhyAndReadsNaN)
{
    const short voxels[8] = {};
    const resample::View<const short> view(voxels, 2, 2, 2);
    resample::View<const short> flat = view;
    flat.height = 0;
    resample::View<const void> untyped = view;
    untyped.type = static_cast<DataType>(77);
    resample::View<const short> wide = view;
    wide.strideZ = std::numeric_limits<std::int64_t>::max();
    Options noKernel;
    noKernel.interpolator = nullptr;
    Options noBorder;
    noBorder.border = nullptr;
    const Options beyond(Linear(), Constant(), 40000);
    const Refusal refusals[] = {
        {"no voxels", ERR_NULL_POINTER, Sampler(resample::View<const short>())},
        {"no kernel", ERR_NULL_POINTER, Sampler(view, noKernel)},
        {"no border", ERR_NULL_POINTER, Sampler(view, noBorder, 1)},
        {"no rows", ERR_INVALID_ARGUMENT, Sampler(flat, Options(), 1)},
        {"no element type", ERR_INVALID_ARGUMENT, Sampler(untyped)},
        {"no memory for the strides", ERR_INVALID_ARGUMENT, Sampler(wide)},
        {"no short", ERR_INVALID_ARGUMENT, Sampler(view, beyond, 1)},
        {"no such channel", ERR_INVALID_CHANNEL, Sampler(view, Options(), 1)},
        {"a channel below 0", ERR_INVALID_CHANNEL, Sampler(view, Options(), -1)}};
    for (const Refusal& refusal : refusals) {
        EXPECT_EQ(refusal.sampler.error(), refusal.error) << refusal.what;
        EXPECT_TRUE(std::isnan(refusal.sampler(0.0, 0.0, 0.0))) << refusal.what;
    }
}

TEST(SamplerThatIsRefused, TellsThatMemoryIsMissing)
{
    if (!AllocationWatch::kWorks)
        GTEST_SKIP() << AllocationWatch::kWhyNot;
    const short voxels[8] = {};
    PeriodicBorder border;
    const Options options(Linear(), &border);
    newFailsIn = 1;
    const Sampler sampler(resample::View<const short>(voxels, 2, 2, 2), options);
    newFailsIn = 0;
    EXPECT_EQ(sampler.error(), ERR_ALLOCATION_FAILED);
    EXPECT_TRUE(std::isnan(sampler(0.0, 0.0, 0.0)));
}

}  // namespace
}  // namespace volux::test
