// Labels against its definition, written a second time, and against one linear volume a label.
#include "volux/resample/Labels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <type_traits>
#include <vector>

#include "resample/Expected.h"
#include "support/OwnPolicies.h"
#include "support/SamplingOracle.h"

namespace volux::test {
namespace {

using resample::LABELS;
using resample::Labels;

struct Voter {
    double label;
    double weight;
    bool isNearest;
};

bool isOneLabel(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

// The eight neighbours in order; read(x, y, z) gives a voxel or what is outside.
template <class Read>
std::vector<Voter> votersAt(const Read& read, const oracle::Position& p)
{
    const auto [ax, ay, az] =
        std::array{oracle::linearAxis(p.x), oracle::linearAxis(p.y), oracle::linearAxis(p.z)};
    std::vector<Voter> voters;
    for (std::size_t n = 0; n < 8; ++n) {
        const std::size_t i = n % 2, j = n / 2 % 2, k = n / 4;
        const std::int64_t x = oracle::wrapTo32Bits(ax.base + static_cast<std::int64_t>(i));
        const std::int64_t y = oracle::wrapTo32Bits(ay.base + static_cast<std::int64_t>(j));
        const std::int64_t z = oracle::wrapTo32Bits(az.base + static_cast<std::int64_t>(k));
        const double planeWeight = ax.weight[i] * ay.weight[j];
        voters.push_back({static_cast<double>(read(x, y, z)), planeWeight * az.weight[k],
                          x == oracle::nearestIndex(p.x) && y == oracle::nearestIndex(p.y) &&
                              z == oracle::nearestIndex(p.z)});
    }
    return voters;
}

double scoreOf(double label, const std::vector<Voter>& voters)
{
    std::vector<double> weights;
    for (const Voter& voter : voters)
        if (isOneLabel(voter.label, label))
            weights.push_back(voter.weight);
    double score = weights[0];
    for (std::size_t n = 1; n < weights.size(); ++n)
        score = score + weights[n];
    return std::isnan(score) ? -kInfinity : score;
}

// What the definition says: the labels of the greatest score, and one of them.
double electedOf(const std::vector<Voter>& voters)
{
    double greatest = -kInfinity;
    for (const Voter& voter : voters)
        greatest = std::max(greatest, scoreOf(voter.label, voters));
    double lowest = kNaN;
    double nearest = kNaN;
    bool isNearestTied = false;
    for (const Voter& voter : voters) {
        if (scoreOf(voter.label, voters) != greatest)
            continue;
        if (std::isnan(lowest) || voter.label < lowest)
            lowest = voter.label;
        if (voter.isNearest) {
            isNearestTied = true;
            nearest = voter.label;
        }
    }
    const double elected = isNearestTied ? nearest : lowest;
    for (const Voter& voter : voters)
        if (isOneLabel(voter.label, elected))
            return voter.label;
    return kNaN;
}

template <class T, class Outside>
T expectedAt(const Volume<T>& volume, const oracle::Position& p, std::int64_t c,
             const Outside& outside)
{
    const oracle::Reader<T, Outside> read{volume, c, outside};
    return static_cast<T>(electedOf(votersAt(read, p)));
}

// Few labels, so that they meet: numbers that no float or short holds, zeros of both signs and NaN
// where the type has them.
template <class T>
T someLabel(Random& random, unsigned int count)
{
    using Limits = std::numeric_limits<T>;
    const unsigned int n = random.below(count);
    if constexpr (std::is_floating_point_v<T>) {
        const std::array<T, 8> labels{T{0},          -T{0},
                                      T{2},          Limits::quiet_NaN(),
                                      T{1} / T{3},   -Limits::infinity(),
                                      Limits::max(), Limits::denorm_min()};
        return labels.at(n);
    } else {
        const std::array<T, 8> labels{T{3}, T{1}, Limits::max(), Limits::min(),
                                      T{0}, T{2}, T{200},        static_cast<T>(Limits::max() - 1)};
        return labels.at(n);
    }
}

// Regions of a few voxels, as maps have them, or no order at all.
template <class T>
Volume<T> labelVolume(Random& random, const Layout& layout)
{
    Volume<T> volume = blankVolume<T>(layout);
    const unsigned int count = random.between(2, 8);
    const unsigned int run = random.below(3) == 0 ? 1 : 5;
    T label = someLabel<T>(random, count);
    for (T& voxel : volume.block) {
        if (random.below(run) == 0)
            label = someLabel<T>(random, count);
        voxel = label;
    }
    return volume;
}

template <class T>
WrappedVolume<T> someMap(Random& random)
{
    constexpr std::array<unsigned int, 6> extents{1, 2, 3, 4, 5, 9};
    const Extents e{anyOf(random, extents), anyOf(random, extents), anyOf(random, extents)};
    return WrappedVolume<T>(labelVolume<T>(random, randomLayout(random, e, random.between(1, 2))));
}

template <class T>
class LabelsOf : public ::testing::Test {
protected:
    static constexpr T kOutside = T{2};

    // By value, by address, and through the image.
    template <class B>
    static void expectReading(WrappedVolume<T>& scene, const oracle::Position& p, unsigned int c,
                              B border, T expected)
    {
        Labels labels;
        const auto channel = static_cast<int>(c);
        const auto asNumber = static_cast<double>(expected);
        const auto where = [&] {
            return ::testing::Message() << std::hexfloat << p.x << ' ' << p.y << ' ' << p.z
                                        << " channel " << c << " of " << scene.volume;
        };
        ASSERT_TRUE(bitEqual(labels(scene.image, p.x, p.y, p.z, c, border, kOutside), expected))
            << where();
        ASSERT_TRUE(bitEqual(labels(scene.image, p.x, p.y, p.z, c, &border, kOutside), expected))
            << where();
        ASSERT_TRUE(bitEqual(
            scene.image.getDoubleValueReal(p.x, p.y, p.z, channel, &labels, &border, kOutside),
            asNumber))
            << where();
        ASSERT_TRUE(bitEqual(
            scene.image.getDoubleValueReal(p.x, p.y, p.z, channel, &LABELS, border, kOutside),
            asNumber))
            << where();
    }
};
TYPED_TEST_SUITE(LabelsOf, ElementTypes, ElementTypeNames);

TYPED_TEST(LabelsOf, SingleCallsAreThoseOfTheDefinition)
{
    using T = TypeParam;
    Seeded random(901);
    for (int n = 0; n < 400; ++n) {
        WrappedVolume<T> scene = someMap<T>(random);
        for (int i = 0; i < 40; ++i) {
            const oracle::Position p = randomPosition(random, scene.volume.extents);
            const unsigned int c = random.below(scene.volume.channels);
            this->expectReading(
                scene, p, c, Constant(),
                expectedAt(scene.volume, p, c, oracle::ConstantOutside<T>{this->kOutside}));
            this->expectReading(scene, p, c, Replication(),
                                expectedAt(scene.volume, p, c, oracle::ReplicatedOutside<T>{}));
            if (this->HasFatalFailure())
                return;
        }
    }
}

TYPED_TEST(LabelsOf, ABorderOfOnesOwnVotesToo)
{
    using T = TypeParam;
    Seeded random(903);
    const auto periodic = [](const Volume<T>& volume, std::int64_t x, std::int64_t y,
                             std::int64_t z, std::int64_t c) {
        const auto wrapped = [](std::int64_t index, std::int64_t extent) {
            return ((index % extent) + extent) % extent;
        };
        return volume.at(wrapped(x, volume.extents.width), wrapped(y, volume.extents.height),
                         wrapped(z, volume.extents.depth), c);
    };
    PeriodicBorder border;
    for (int n = 0; n < 2000; ++n) {
        WrappedVolume<T> scene = someMap<T>(random);
        const oracle::Position p = randomPosition(random, scene.volume.extents);
        const T expected = expectedAt(scene.volume, p, 0, periodic);
        ASSERT_TRUE(bitEqual(Labels()(scene.image, p.x, p.y, p.z, 0U, &border, T{0}), expected))
            << std::hexfloat << p.x << ' ' << p.y << ' ' << p.z << ", " << scene.volume;
        ASSERT_TRUE(
            bitEqual(scene.image.getDoubleValueReal(p.x, p.y, p.z, 0, &LABELS, &border, T{0}),
                     static_cast<double>(expected)));
    }
}

TEST(Labels, AsksABorderOncePerNeighbourOutsideInOrder)
{
    const WrappedVolume<short> scene(countingVolume<short>(Extents{2, 2, 2}));
    RecordingBorder border;
    Labels()(scene.image, -0.5, 0.5, 1.5, 0U, &border, short{7});
    const std::vector<Index> expected{{-1, 0, 1}, {-1, 1, 1}, {-1, 0, 2},
                                      {0, 0, 2},  {-1, 1, 2}, {0, 1, 2}};
    EXPECT_EQ(border.indices(), expected);
    expectPassedOn(border, scene.image, 0, 7, {2, 2, 2});
    EXPECT_EQ(Labels()(scene.image, 0.5, 0.5, 0.5, 0U, static_cast<Border*>(nullptr), short{7}), 8);
}

struct Election {
    std::array<short, 8> labels;  // x fastest
    Position position;
    short winner;
    const char* rule;
};

constexpr Election kElections[] = {
    {{5, 5, 5, 5, 9, 9, 9, 9}, {0.5, 0.5, 0.25}, 5, "the greater weight"},
    {{5, 5, 5, 5, 9, 9, 9, 9}, {0.5, 0.5, 0.5}, 9, "a tie to the nearest, where halves go up"},
    {{9, 9, 9, 9, 5, 5, 5, 5}, {0.5, 0.5, 0.5}, 5, "also if that is the lower label"},
    {{6, 6, 6, 4, 4, 4, 2, 9}, {0.5, 0.5, 0.5}, 4, "the lowest, where the nearest has less"},
    {{6, 6, 6, 8, 8, 8, 2, 9}, {0.5, 0.5, 0.5}, 6, "whatever the order"},
    {{1, 2, 3, 4, 5, 6, 7, 8}, {0.5, 0.5, 0.5}, 8, "all eight tie: the nearest"},
    {{3, 8, 3, 8, 3, 8, 3, 8}, {0.75, 0.5, 0.5}, 8, "weights, not numbers of neighbours"},
    {{1, 7, 7, 7, 7, 7, 7, 7}, {0.25, 0.25, 0.25}, 7, "the nearest loses to the sum of others"},
    {{1, 7, 7, 7, 7, 7, 7, 7}, {0.125, 0.125, 0.125}, 1, "and wins with more than half"},
    {{1, 7, 7, 7, 7, 7, 7, 7}, {0.0, 0.0, 0.0}, 1, "a voxel's centre reads that voxel"},
    {{-3, 2, 2, 2, 2, 2, 2, 2}, {-0.25, -0.25, -0.25}, -3, "beyond the edge"},
};

TEST(Labels, AreElectedByTheTable)
{
    for (const Election& entry : kElections) {
        const WrappedVolume<short> scene(
            {interleaved(2, 2, 2, 1), {entry.labels.begin(), entry.labels.end()}});
        const Position& p = entry.position;
        EXPECT_EQ(Labels()(scene.image, p.x, p.y, p.z, 0U, Replication(), short{0}), entry.winner)
            << entry.rule;
        VxImage<short> result;
        AffineMap map;
        map.rows[0][3] = p.x, map.rows[1][3] = p.y, map.rows[2][3] = p.z;
        ASSERT_EQ(resample::resample(scene.image, gridOf(map, 1, 1, 1), &result, Labels()),
                  SUCCESS);
        EXPECT_EQ(result(0, 0, 0, 0), entry.winner) << entry.rule;
    }
}

struct SignedTie {
    std::array<double, 2> row;
    double position;
    double result;
    const char* rule;
};

const SignedTie kSignedTies[] = {
    {{0.0, -0.0}, 0.75, 0.0, "one label, with the first one's sign"},
    {{-0.0, 0.0}, 0.75, -0.0, "one label, with the first one's sign"},
    {{kNaN, 3.0}, 0.25, kNaN, "NaN wins as a label does"},
    {{kNaN, 3.0}, 0.75, 3.0, "and loses as one does"},
    {{-kInfinity, 3.0}, 0.25, -kInfinity, "an infinite label does not spread"},
    {{kInfinity, 3.0}, 0.75, 3.0, "an infinite label does not spread"},
    {{kInfinity, -kInfinity}, kNaN, -kInfinity, "no number is nearest to the last voxel"},
};

TEST(Labels, WithoutAMagnitudeVoteByTheTable)
{
    for (const SignedTie& entry : kSignedTies) {
        const WrappedVolume<double> scene(rowVolume<double>({entry.row[0], entry.row[1]}));
        EXPECT_TRUE(bitEqual(
            Labels()(scene.image, entry.position, 0.0, 0.0, 0U, Replication(), 0.0), entry.result))
            << entry.rule;
    }
}

template <class T>
class LabelsOnGrids : public LabelsOf<T> {
protected:
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
        const auto with = [&](auto kernel) {
            Options options(kernel);
            options.edgeExtends = true;
            return options;
        };
        std::vector<VxImage<double>> volumes(kLabels);
        for (short label = 0; label < kLabels; ++label) {
            Volume<short> share = volume;
            for (short& voxel : share.block)
                voxel = voxel == label ? 1 : 0;
            ASSERT_EQ(resample::resample(WrappedVolume<short>(share).image, grid,
                                         &volumes[static_cast<std::size_t>(label)], with(Linear())),
                      SUCCESS);
        }
        VxImage<short> labels;
        VxImage<short> nearest;
        ASSERT_EQ(resample::resample(scene.image, grid, &labels, with(Labels())), SUCCESS);
        ASSERT_EQ(resample::resample(scene.image, grid, &nearest, with(NearestNeighbor())),
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
