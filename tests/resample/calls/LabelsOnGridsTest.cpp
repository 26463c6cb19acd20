// Labels on grids against its single calls, and against one linear volume for each label.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "resample/LabelOracle.h"
#include "support/OwnPolicies.h"
#include "volux/resample/Labels.h"

namespace volux::test {
namespace {

using resample::LABELS;
using resample::Labels;

template <class T>
class LabelsOnGrids : public ::testing::Test {
protected:
    static constexpr T kOutside = T{2};

    static AffineMap someMapOf(Random& random, const Extents& extents)
    {
        constexpr std::array<AffineMap (*)(Random&, const Extents&), 3> makes{axisMap, halfMap,
                                                                              hugeMap};
        return random.below(3) == 0 ? obliqueMap(random, extents, 0.2)
                                    : anyOf(random, makes)(random, extents);
    }

    // What a result of any type keeps of the labels.
    template <class R>
    static void expectKnown(const WrappedVolume<T>& scene, const VxImage<R>& result,
                            const Options& options)
    {
        std::set<R> known{static_cast<R>(static_cast<T>(options.outside))};
        for (const T label : scene.volume.block)
            if (label == label)
                known.insert(static_cast<R>(label));
        const auto size = std::size_t{result.getWidth()} * result.getHeight() * result.getDepth() *
                          result.getChannels();
        for (std::size_t n = 0; n < size; ++n) {
            const R reading = result.getBufferPointer()[n];
            ASSERT_TRUE(known.count(reading) == 1 || std::isnan(static_cast<double>(reading)))
                << withBits(reading) << ", " << described(options) << ", " << scene.volume;
        }
    }
};
TYPED_TEST_SUITE(LabelsOnGrids, ElementTypes, ElementTypeNames);

TYPED_TEST(LabelsOnGrids, AreThoseOfSingleCallsByEveryInstructionSet)
{
    using T = TypeParam;
    forEachInstructionSet([this] {
        Seeded random(905);
        for (int n = 0; n < 150; ++n) {
            const WrappedVolume<T> scene = someMap<T>(random);
            const Grid grid =
                gridOf(this->someMapOf(random, scene.volume.extents), random.between(1, 70),
                       random.between(1, 5), random.between(1, 4));
            Options options(Labels(), Constant(), this->kOutside);
            options.threads = 1;
            expectGrid(scene.image, grid, options);
            options.border = &REPLICATION;
            expectGrid(scene.image, grid, options);
            options.edgeExtends = true;
            expectGrid(scene.image, grid, options);
            if (this->HasFatalFailure())
                return;
        }
    });
}

TYPED_TEST(LabelsOnGrids, MakeNoValue)
{
    using T = TypeParam;
    Seeded random(907);
    for (int n = 0; n < 60; ++n) {
        const WrappedVolume<T> scene = someMap<T>(random);
        const Grid grid = gridOf(this->someMapOf(random, scene.volume.extents),
                                 random.between(1, 40), random.between(1, 9), 3);
        for (Border* const border : kBorders) {
            const Options options(&LABELS, border, this->kOutside);
            VxImage<T> labels;
            VxImage<double> numbers;
            VxImage<float> floats;
            ASSERT_EQ(resample::resample(scene.image, grid, &labels, options), SUCCESS);
            ASSERT_EQ(resample::resample(scene.image, grid, &numbers, options), SUCCESS);
            ASSERT_EQ(resample::resample(scene.image, grid, &floats, options), SUCCESS);
            this->expectKnown(scene, labels, options);
            this->expectKnown(scene, numbers, options);
            this->expectKnown(scene, floats, options);
        }
    }
}

TYPED_TEST(LabelsOnGrids, OfABorderOfOnesOwnAreThoseOfSingleCalls)
{
    using T = TypeParam;
    Seeded random(909);
    PeriodicBorder periodic;
    for (int n = 0; n < 30; ++n) {
        const WrappedVolume<T> scene = someMap<T>(random);
        const Grid grid = gridOf(this->someMapOf(random, scene.volume.extents), 9, 4, 3);
        expectGrid(scene.image, grid, Options(Labels(), &periodic));
    }
}

// The greatest of one linear volume for each label; where several are, by the documented rule.
short greatestOf(const std::vector<VxImage<double>>& volumes, int i, int j, int k, short nearest)
{
    double greatest = 0.0;
    for (const VxImage<double>& volume : volumes)
        greatest = std::max(greatest, volume(i, j, k, 0));
    if (volumes[static_cast<std::size_t>(nearest)](i, j, k, 0) == greatest)
        return nearest;
    short lowest = 0;
    while (volumes[static_cast<std::size_t>(lowest)](i, j, k, 0) != greatest)
        ++lowest;
    return lowest;
}

template <class Kernel>
Options extending(Kernel kernel)
{
    Options options(kernel);
    options.edgeExtends = true;
    return options;
}

// Linear, of 1 where a label is and 0 elsewhere.
void readShare(Volume<short> volume, short label, const Grid& grid, VxImage<double>* share)
{
    for (short& voxel : volume.block)
        voxel = voxel == label ? 1 : 0;
    const WrappedVolume<short> scene(std::move(volume));
    ASSERT_EQ(resample::resample(scene.image, grid, share, extending(Linear())), SUCCESS);
}

TEST(Labels, AreTheGreatestOfOneLinearVolumeForEachLabel)
{
    constexpr short kLabels = 6;
    Seeded random(911);
    for (int n = 0; n < 40; ++n) {
        const Extents extents{random.between(2, 9), random.between(2, 9), random.between(2, 9)};
        Volume<short> volume = blankVolume<short>(extents);
        for (short& voxel : volume.block)
            voxel = static_cast<short>(random.below(kLabels));
        const WrappedVolume<short> scene(volume);
        const Grid grid = gridOf(
            n % 2 == 0 ? halfMap(random, extents) : obliqueMap(random, extents, 0.3), 19, 7, 5);
        std::vector<VxImage<double>> volumes(kLabels);
        for (short label = 0; label < kLabels; ++label)
            readShare(volume, label, grid, &volumes[static_cast<std::size_t>(label)]);
        VxImage<short> labels;
        VxImage<short> nearest;
        ASSERT_EQ(resample::resample(scene.image, grid, &labels, extending(Labels())), SUCCESS);
        ASSERT_EQ(resample::resample(scene.image, grid, &nearest, extending(NearestNeighbor())),
                  SUCCESS);
        for (int k = 0; k < 5; ++k)
            for (int j = 0; j < 7; ++j)
                for (int i = 0; i < 19; ++i)
                    ASSERT_EQ(labels(i, j, k, 0), greatestOf(volumes, i, j, k, nearest(i, j, k, 0)))
                        << i << ' ' << j << ' ' << k << ", " << described(grid.map) << ", "
                        << volume;
    }
}

// A class derived from Labels may read anything, so it is the caller's own.
struct Seven : Labels {
    template <class T, class B>
    T operator()(const VxImage<T>&, double, double, double, unsigned int, B, T)
    {
        return T{7};
    }

    InterpolatorTable& get() override
    {
        static interpolator_t<Seven, Interpolator> table;
        return table;
    }
};

TEST(Labels, OfADerivedClassAreReadByItsOwnTable)
{
    const WrappedVolume<short> scene(countingVolume<short>(Extents{3, 3, 3}));
    Seven seven;
    VxImage<short> result;
    ASSERT_EQ(resample::resample(scene.image, gridOf(AffineMap(), 3, 3, 3), &result, &seven),
              SUCCESS);
    EXPECT_EQ(result(1, 1, 1, 0), 7);
}

}  // namespace
}  // namespace volux::test
