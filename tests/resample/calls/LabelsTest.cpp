// Single calls of Labels against its definition, written a second time.
#include "volux/resample/Labels.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "resample/LabelOracle.h"
#include "support/OwnPolicies.h"

namespace volux::test {
namespace {

using resample::LABELS;
using resample::Labels;

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

}  // namespace
}  // namespace volux::test
